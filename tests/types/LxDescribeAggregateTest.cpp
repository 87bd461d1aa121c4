// Aggregates described in one line: names, order and types from the compiler, fields read and
// written in place, nested aggregates, hints by name, and the types that are refused.
#include "lorvane/uLxTypes.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <any>
#include <array>
#include <optional>
#include <string>
#include <vector>

using namespace lorvane;
using lorvane::test::ExpectRaises;

namespace Geo {
enum class TShape { shDot, shLine, shArea };
using TShapes = TSet<TShape>;

struct TPoint {
  Integer X = 0;
  Integer Y = 0;
};

// One member of each kind that a serializer tells apart, in an order that mixes sizes.
struct TSample {
  Byte Small = 0;
  Double Ratio = 0;
  bool Flag = false;
  UnicodeString Title;
  std::string Utf8;
  Int64 Big = 0;
  std::vector<Integer> Scores;
  TShape Shape = TShape::shDot;
  TShapes Shapes;
  TDateTime When;
  TPoint Origin;
  std::array<Word, 3> Triple{};
  Variant Any;
};

struct TSixteen {
  Integer F01 = 1, F02 = 2, F03 = 3, F04 = 4, F05 = 5, F06 = 6, F07 = 7, F08 = 8;
  Integer F09 = 9, F10 = 10, F11 = 11, F12 = 12, F13 = 13, F14 = 14, F15 = 15;
  UnicodeString F16 = u"sixteen";
};

struct TSegment {
  TPoint From;
  TPoint To;
  UnicodeString Label;
};

template <class A, class B> struct TPair {
  A First{};
  B Second{};
};
} // namespace Geo

namespace {
struct TLocal {
  Integer Count = 0;
  std::vector<UnicodeString> Names;
};
} // namespace

namespace {

const TLxTypeDescription& DescriptionOf(const TLxTypeInfo* AInfo) {
  EXPECT_NE(AInfo, nullptr);
  return *AInfo->GetDescription();
}

std::vector<UnicodeString> FieldNames(const TLxTypeDescription& ADescription) {
  std::vector<UnicodeString> Names;
  for (const TLxFieldDescription* Field : ADescription.GetFields())
    Names.push_back(Field->GetName());
  return Names;
}

// --- names, order, types -------------------------------------------------------------------------

TEST(DescribeAggregate, FieldsAreNamedTypedAndOrderedAsDeclared) {
  const TLxTypeInfo* Info = LxDescribeAggregate<Geo::TSample>(u"Geo.TSample").TypeInfo();
  EXPECT_EQ(Info, TLxTypes::GetTypeInfo<Geo::TSample>());
  EXPECT_EQ(Info->GetQualifiedName(), u"Geo.TSample");
  EXPECT_EQ(Info->GetName(), u"TSample");
  EXPECT_EQ(Info->GetTypeKind(), ltkRecord);
  const TLxTypeDescription& Description = DescriptionOf(Info);
  EXPECT_TRUE(Description.GetIsDescribed());
  EXPECT_EQ(
      FieldNames(Description),
      (std::vector<UnicodeString>{u"Small", u"Ratio", u"Flag", u"Title", u"Utf8", u"Big", u"Scores",
                                  u"Shape", u"Shapes", u"When", u"Origin", u"Triple", u"Any"}));
  const std::vector<TLxTypeKind> Kinds{
      ltkByte,        ltkDouble, ltkBoolean,  ltkText3,  ltkText4, ltkInt64,  ltkDynArray,
      ltkEnumeration, ltkSet,    ltkDateTime, ltkRecord, ltkArray, ltkVariant};
  std::vector<TLxTypeKind> Seen;
  for (const TLxFieldDescription* Field : Description.GetFields()) {
    Seen.push_back(Field->GetFieldType()->GetTypeKind());
    EXPECT_EQ(Field->GetVisibility(), mvPublic) << StringToUTF8(Field->GetName());
  }
  EXPECT_EQ(Seen, Kinds);
  EXPECT_EQ(Description.GetField(u"scores")->GetFieldType(),
            TLxTypes::GetTypeInfo<std::vector<Integer>>());
  EXPECT_EQ(Description.GetField(u"TRIPLE")->GetFieldType()->GetDescription()->GetFixedLength(), 3);
  // Like LxDescribeRecord, it makes the record's dynamic array known by its schema name.
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"ArrayOfTSample", ltnSchema, false, lmkArray),
            TLxTypes::GetTypeInfo<std::vector<Geo::TSample>>());
}

TEST(DescribeAggregate, NamesComeThroughTemplatesAndAnonymousNamespaces) {
  using TIntText = Geo::TPair<Integer, UnicodeString>;
  const TLxTypeDescription& Pair =
      DescriptionOf(LxDescribeAggregate<TIntText>(u"Geo.TIntText").TypeInfo());
  EXPECT_EQ(FieldNames(Pair), (std::vector<UnicodeString>{u"First", u"Second"}));
  EXPECT_EQ(Pair.GetField(u"Second")->GetFieldType()->GetTypeKind(), ltkText3);

  const TLxTypeDescription& Local =
      DescriptionOf(LxDescribeAggregate<TLocal>(u"Test.TLocal").TypeInfo());
  EXPECT_EQ(FieldNames(Local), (std::vector<UnicodeString>{u"Count", u"Names"}));
  EXPECT_EQ(Local.GetField(u"Names")->GetFieldType()->GetTypeKind(), ltkDynArray);
}

TEST(DescribeAggregate, TakesSixteenFieldsAndReachesEachInPlace) {
  const TLxTypeDescription& Description =
      DescriptionOf(LxDescribeAggregate<Geo::TSixteen>(u"Geo.TSixteen").TypeInfo());
  ASSERT_EQ(Description.GetFields().size(), 16u);
  Geo::TSixteen Value;
  // Each field's address is its own member's: a wrong index in the binding shows here.
  const std::array<const void*, 16> Addresses{&Value.F01, &Value.F02, &Value.F03, &Value.F04,
                                              &Value.F05, &Value.F06, &Value.F07, &Value.F08,
                                              &Value.F09, &Value.F10, &Value.F11, &Value.F12,
                                              &Value.F13, &Value.F14, &Value.F15, &Value.F16};
  for (std::size_t I = 0; I < 16; ++I) {
    const TLxFieldDescription* Field = Description.GetFields()[I];
    EXPECT_EQ(Field->GetAddress(&Value), Addresses[I]) << I;
    EXPECT_EQ(Field->GetName(),
              UnicodeString(I < 9 ? u"F0" : u"F1") + static_cast<char16_t>(u'0' + (I + 1) % 10))
        << I;
  }
  EXPECT_EQ(Description.GetField(u"F15")->GetValue(&Value).AsInteger(), 15);
  EXPECT_EQ(Description.GetField(u"F16")->GetValue(&Value).AsString(), u"sixteen");
}

TEST(DescribeAggregate, AnEmptyAggregateIsARecordWithoutFields) {
  struct TNothing {};
  const TLxTypeInfo* Info = LxDescribeAggregate<TNothing>(u"Test.TNothing").TypeInfo();
  EXPECT_EQ(Info->GetTypeKind(), ltkRecord);
  EXPECT_TRUE(Info->GetDescription()->GetFields().empty());
}

// --- reading and writing in place ----------------------------------------------------------------

TEST(DescribeAggregate, FieldsReadAndWriteTheInstanceInPlace) {
  struct TRow {
    Integer Id = 0;
    UnicodeString Name;
    std::vector<UnicodeString> Tags;
    Double Weight = 0;
    Geo::TShape Shape = Geo::TShape::shDot;
  };
  const TLxTypeDescription& Description =
      DescriptionOf(LxDescribeAggregate<TRow>(u"Test.TRow").TypeInfo());
  LxDescribeEnum<Geo::TShape>(u"Geo.TShape", {u"shDot", u"shLine", u"shArea"});
  TRow Row{7, u"seven", {u"a", u"b"}, 2.5, Geo::TShape::shLine};

  EXPECT_EQ(Description.GetField(u"id")->GetAddress(&Row), &Row.Id);
  EXPECT_EQ(Description.GetField(u"Name")->GetAddress(&Row), &Row.Name);
  EXPECT_EQ(Description.GetField(u"Shape")->GetAddress(&Row), &Row.Shape);
  EXPECT_EQ(Description.GetField(u"Id")->GetValue(&Row).AsInteger(), 7);
  EXPECT_EQ(Description.GetField(u"Name")->GetValue(&Row).AsString(), u"seven");
  EXPECT_EQ(Description.GetField(u"Weight")->GetValue(&Row).ToDouble(), 2.5);
  EXPECT_EQ(Description.GetField(u"Shape")->GetValue(&Row).ToString(), u"shLine");

  // Writes convert as TValue::ToType does and land in the instance itself.
  Description.GetField(u"Id")->SetValue(&Row, TValue::From(u"42"));
  Description.GetField(u"Name")->SetValue(&Row, TValue::From(u"forty-two"));
  Description.GetField(u"Shape")->SetValue(&Row, TValue::From(u"shArea"));
  Description.GetField(u"Weight")->SetValue(&Row, TValue::From(0.25));
  EXPECT_EQ(Row.Id, 42);
  EXPECT_EQ(Row.Name, u"forty-two");
  EXPECT_EQ(Row.Shape, Geo::TShape::shArea);
  EXPECT_EQ(Row.Weight, 0.25);

  // A vector member: read as an array value, grown, and written back whole.
  TValue Tags = Description.GetField(u"Tags")->GetValue(&Row);
  ASSERT_EQ(Tags.GetArrayLength(), 2);
  EXPECT_EQ(Tags.GetArrayElement(1).AsString(), u"b");
  Tags.SetArrayLength(3);
  Tags.SetArrayElement(2, TValue::From(u"c"));
  Description.GetField(u"Tags")->SetValue(&Row, Tags);
  EXPECT_EQ(Row.Tags, (std::vector<UnicodeString>{u"a", u"b", u"c"}));

  // A value that doesn't convert leaves the field as it was.
  ExpectRaises<EInvalidCast>(
      [&] { Description.GetField(u"Id")->SetValue(&Row, TValue::From(u"many")); },
      u"Invalid class typecast");
  EXPECT_EQ(Row.Id, 42);
}

TEST(DescribeAggregate, StringMembersOfBothWidthsRoundTrip) {
  struct TNote {
    std::string Utf8;
    UnicodeString Text;
  };
  const TLxTypeDescription& Description =
      DescriptionOf(LxDescribeAggregate<TNote>(u"Test.TNote").TypeInfo());
  TNote Note;
  Description.GetField(u"Utf8")->SetValue(&Note, TValue::From(u"caf\u00e9"));
  Description.GetField(u"Text")->SetValue(&Note, TValue::From(u"\u00e9t\u00e9"));
  EXPECT_EQ(Note.Utf8, "caf\xc3\xa9");
  EXPECT_EQ(Note.Text, u"\u00e9t\u00e9");
  EXPECT_EQ(Description.GetField(u"Utf8")->GetValue(&Note).ToWideString(), u"caf\u00e9");
}

TEST(DescribeAggregate, NestedAggregatesAreReachedThroughTheirOwnDescription) {
  LxDescribeAggregate<Geo::TPoint>(u"Geo.TPoint");
  const TLxTypeDescription& Segment =
      DescriptionOf(LxDescribeAggregate<Geo::TSegment>(u"Geo.TSegment").TypeInfo());
  Geo::TSegment Value{{1, 2}, {3, 4}, u"diagonal"};

  const TLxFieldDescription* To = Segment.GetField(u"To");
  ASSERT_EQ(To->GetFieldType(), TLxTypes::GetTypeInfo<Geo::TPoint>());
  const TLxTypeDescription& Point = *To->GetFieldType()->GetDescription();
  EXPECT_EQ(FieldNames(Point), (std::vector<UnicodeString>{u"X", u"Y"}));

  // In place, two levels down: the record field's address is the instance of the inner record.
  void* InnerTo = To->GetAddress(&Value);
  EXPECT_EQ(InnerTo, &Value.To);
  Point.GetField(u"Y")->SetValue(InnerTo, TValue::From(40));
  EXPECT_EQ(Value.To.Y, 40);
  EXPECT_EQ(Value.From.Y, 2);

  // As a value, a record is a copy: changing the copy leaves the instance alone until written.
  TValue From = Segment.GetField(u"From")->GetValue(&Value);
  EXPECT_EQ(From.TypeKind(), ltkRecord);
  Point.GetField(u"X")->SetValue(From.GetReferenceToRawData(), TValue::From(10));
  EXPECT_EQ(Value.From.X, 1);
  Segment.GetField(u"From")->SetValue(&Value, From);
  EXPECT_EQ(Value.From.X, 10);
  EXPECT_EQ(Value.From.Y, 2);
}

// --- hints ---------------------------------------------------------------------------------------

TEST(DescribeAggregate, HintsGoOnTheTypeOrOnAFieldByName) {
  struct TContact {
    UnicodeString Name;
    UnicodeString Email;
    UnicodeString Secret;
  };
  auto Builder = LxDescribeAggregate<TContact>(u"Test.TContact");
  Builder.Hint(shoName, u"contact")
      .HintOn(u"EMAIL", shoName, u"mail")
      .HintOn(u"Secret", shoDoNotSerialize)
      .HintOn(u"Email", shoRequired);
  const TLxTypeDescription& Description = DescriptionOf(Builder.TypeInfo());

  // Nothing was described through the builder, so Hint annotated the type, not the last field.
  ASSERT_NE(Description.FindHint(shoName), nullptr);
  EXPECT_EQ(Description.FindHint(shoName)->GetValue(), u"contact");
  EXPECT_EQ(Description.GetField(u"Name")->GetAttributes().size(), 0u);

  const TLxFieldDescription* Email = Description.GetField(u"Email");
  ASSERT_EQ(Email->GetAttributes().size(), 2u);
  EXPECT_EQ(Email->FindHint(shoName)->GetValue(), u"mail");
  EXPECT_NE(Email->FindHint(shoRequired), nullptr);
  EXPECT_NE(Description.GetField(u"Secret")->FindHint(shoDoNotSerialize), nullptr);
  EXPECT_EQ(Description.GetField(u"Secret")->FindHint(shoName), nullptr);

  ExpectRaises<EArgumentException>([&] { Builder.HintOn(u"Phone", shoRequired); },
                                   u"Type Test.TContact has no field or property Phone");
}

TEST(DescribeAggregate, FurtherMembersFollowAndHintOnFindsProperties) {
  struct TRange {
    Integer Low = 0;
    Integer High = 0;
    Integer Width() const { return High - Low; }
  };
  auto Builder = LxDescribeAggregate<TRange>(u"Test.TRange").Property(u"Width", &TRange::Width);
  // Hint follows the property just described; HintOn reaches a field described before it.
  Builder.Hint(shoName, u"width").HintOn(u"low", shoName, u"from");
  const TLxTypeDescription& Description = DescriptionOf(Builder.TypeInfo());
  EXPECT_EQ(FieldNames(Description), (std::vector<UnicodeString>{u"Low", u"High"}));
  EXPECT_EQ(Description.GetProperty(u"Width")->FindHint(shoName)->GetValue(), u"width");
  EXPECT_EQ(Description.GetField(u"Low")->FindHint(shoName)->GetValue(), u"from");
  EXPECT_EQ(Description.FindHint(shoName), nullptr);
  TRange Range{3, 10};
  EXPECT_EQ(Description.GetProperty(u"Width")->GetValue(&Range).AsInteger(), 7);
  Builder.HintOn(u"WIDTH", shoRequired);
  EXPECT_NE(Description.GetProperty(u"Width")->FindHint(shoRequired), nullptr);
}

TEST(DescribeAggregate, DescribingTwiceRaises) {
  struct TOnce {
    Integer A = 0;
  };
  LxDescribeAggregate<TOnce>(u"Test.TOnce");
  ExpectRaises<EInvalidOperation>([] { LxDescribeAggregate<TOnce>(u"Test.TOnceAgain"); },
                                  u"Type Test.TOnce is already described");
  ExpectRaises<EInvalidOperation>([] { LxDescribeRecord<TOnce>(u"Test.TOnceAgain"); },
                                  u"Type Test.TOnce is already described");
  EXPECT_EQ(TLxTypes::GetTypeInfo<TOnce>()->GetDescription()->GetFields().size(), 1u);
}

// --- what is refused -----------------------------------------------------------------------------
// LxDescribeAggregate turns each fault into a static_assert with its reason; these pin the
// detection that decides which one fires.

struct TBase {
  Integer A = 0;
};
struct TDerived : TBase {
  Integer B = 0;
};
struct TDerivedOnly : TBase {};
struct TWithConstructor {
  TWithConstructor() {}
  Integer A = 0;
};
class TWithPrivate {
  Integer A = 0;

public:
  Integer B = 0;
};
struct TWithReference {
  Integer& A;
};
struct TWithConstReference {
  const Integer& A;
  Integer B;
};
struct TWithConst {
  const Integer A = 0;
};
struct TWithBits {
  Integer A : 3;
  Integer B : 5;
};
struct TWithCArray {
  Integer A[3];
  Integer B;
};
struct TSeventeen {
  Integer F01, F02, F03, F04, F05, F06, F07, F08, F09, F10, F11, F12, F13, F14, F15, F16, F17;
};
union TUnion {
  Integer A;
  Double B;
};
struct TWithOptional {
  Integer A = 0;
  std::optional<Integer> B;
};
struct TWithAnyFirst {
  std::any Payload;
  Integer B = 0;
};

using detail::CheckAggregate;
using enum detail::TAggregateFault;

TEST(DescribeAggregate, RefusesWhatItCannotDescribeMemberByMember) {
  EXPECT_EQ(CheckAggregate<Geo::TSample>(), None);
  EXPECT_EQ(CheckAggregate<Geo::TSixteen>(), None);
  EXPECT_EQ(CheckAggregate<TWithConstructor>(), NotAggregate);
  EXPECT_EQ(CheckAggregate<TWithPrivate>(), NotAggregate);
  EXPECT_EQ(CheckAggregate<TUnion>(), NotAggregate);
  EXPECT_EQ(CheckAggregate<Integer>(), NotAggregate);
  EXPECT_EQ(CheckAggregate<TDerived>(), BaseClass);
  EXPECT_EQ(CheckAggregate<TDerivedOnly>(), BaseClass);
  // A first member that takes anything would pass for a base.
  EXPECT_EQ(CheckAggregate<TWithAnyFirst>(), None);
  EXPECT_EQ(CheckAggregate<TSeventeen>(), TooManyMembers);
  EXPECT_EQ(CheckAggregate<TWithReference>(), NotCopyable);
  EXPECT_EQ(CheckAggregate<TWithConstReference>(), NotCopyable);
  EXPECT_EQ(CheckAggregate<TWithConst>(), NotCopyable);
  EXPECT_EQ(CheckAggregate<TWithCArray>(), CArray);
  EXPECT_EQ(CheckAggregate<TWithBits>(), BitField);
}

TEST(DescribeAggregate, CountsMembersOfEveryKindThatItTakes) {
  EXPECT_EQ(detail::CountMembers<Geo::TSample>(), 13u);
  EXPECT_EQ(detail::CountMembers<Geo::TSegment>(), 3u);
  EXPECT_EQ(detail::CountMembers<TSeventeen>(), cMaxAggregateFields + 1);
  // A C array takes a value per element but one {} only: the two counts tell it apart.
  EXPECT_EQ(detail::CountMembers<TWithCArray>(), 2u);
  EXPECT_EQ(detail::CountInitializers<TWithCArray>(), 4u);
  // A member that takes any value through a constructor template is still counted and reached.
  EXPECT_EQ(CheckAggregate<TWithOptional>(), None);
  const TLxTypeDescription& Description =
      DescriptionOf(LxDescribeAggregate<TWithOptional>(u"Test.TWithOptional").TypeInfo());
  EXPECT_EQ(FieldNames(Description), (std::vector<UnicodeString>{u"A", u"B"}));
  TWithOptional Value;
  EXPECT_EQ(Description.GetField(u"B")->GetAddress(&Value), &Value.B);
}

} // namespace
