// TValue: making values, strict reads, records and arrays changed in place, the lenient
// conversions, ToType across kinds, text, null tests, and copies and moves of stored values.
#include "ShopTypes.h"
#include "support/TestHelpers.h"

#include <array>
#include <functional>
#include <stdexcept>

using namespace lorvane;
using namespace lorvane::test;
using namespace Shop;

namespace Storage {
/// Too big to live inside a TValue.
struct TBig {
  UnicodeString A, B, C, D;
};
/// Aligned beyond what the inline storage offers.
struct alignas(64) TAligned {
  Int64 Value = 0;
};
/// Small, but its move may throw: kept on the heap.
struct TThrowingMove {
  UnicodeString Text;
  TThrowingMove() = default;
  explicit TThrowingMove(const UnicodeString& AText) : Text(AText) {}
  TThrowingMove(const TThrowingMove&) = default;
  TThrowingMove(TThrowingMove&& AOther) noexcept(false) : Text(AOther.Text) {}
  TThrowingMove& operator=(const TThrowingMove&) = default;
  TThrowingMove& operator=(TThrowingMove&&) = default;
};
/// Big, and its copy fails.
struct TFailingCopy {
  std::array<char, 64> Pad{};
  TFailingCopy() = default;
  TFailingCopy(const TFailingCopy&) { throw std::runtime_error("no copy"); }
  TFailingCopy(TFailingCopy&&) noexcept = default;
  TFailingCopy& operator=(const TFailingCopy&) = default;
  TFailingCopy& operator=(TFailingCopy&&) = default;
};
} // namespace Storage

namespace {

std::string Utf8(std::u16string_view AText) { return StringToUTF8(AText); }

class Value : public LiveObjectsTest {
protected:
  // The description's annotations live as long as the process: made before the count starts.
  void SetUp() override {
    DescribeShop();
    LiveObjectsTest::SetUp();
  }
};

bool StartsWith(const UnicodeString& AText, std::u16string_view APrefix) {
  return std::u16string_view(AText).substr(0, APrefix.size()) == APrefix;
}

} // namespace

TEST_F(Value, MadeFromValuesVariantsAndOrdinals) {
  TValue Number = TValue::From(42);
  EXPECT_EQ(Number.GetTypeInfo(), TypeHandle<Integer>());
  EXPECT_EQ(Number.GetTypeKind(), tkInteger);
  EXPECT_EQ(Number.TypeKind(), ltkInteger);
  EXPECT_EQ(Number.LxTypeInfo(), TLxTypes::GetTypeInfo<Integer>());
  EXPECT_FALSE(Number.GetIsEmpty());
  EXPECT_EQ(TValue::From(u"x").GetTypeInfo(), TypeHandle<UnicodeString>());
  const TValue NoText = TValue::From(static_cast<const char16_t*>(nullptr));
  EXPECT_EQ(NoText.GetTypeInfo(), TypeHandle<UnicodeString>());
  EXPECT_EQ(NoText.AsString(), u"");
  const TValue Empty = TValue::Empty();
  EXPECT_TRUE(Empty.GetIsEmpty());
  EXPECT_EQ(Empty.GetTypeInfo(), nullptr);
  EXPECT_EQ(Empty.GetTypeKind(), tkUnknown);
  EXPECT_EQ(Empty.TypeKind(), ltkUnknown);
  EXPECT_EQ(Empty.LxTypeInfo(), nullptr);
  EXPECT_EQ(Empty.GetReferenceToRawData(), nullptr);
  EXPECT_TRUE(TValue::Make(nullptr, nullptr).GetIsEmpty());
  EXPECT_EQ(TValue::Make(nullptr, TypeHandle<Integer>()).AsInteger(), 0);
  const UnicodeString Text = u"copied";
  EXPECT_EQ(TValue::Make(&Text, TypeHandle<UnicodeString>()).AsString(), u"copied");

  TOwned<TLxObject> Object(New<TLxObject>());
  Object->SetAutoDestroy(false);
  struct TVariantRow {
    Variant Source;
    TLxTypeHandle Handle;
    std::u16string_view Text;
  };
  const TVariantRow Variants[] = {
      {Variant(Integer(5)), TypeHandle<Integer>(), u"5"},
      {Variant(SmallInt(-5)), TypeHandle<SmallInt>(), u"-5"},
      {Variant(ShortInt(-6)), TypeHandle<ShortInt>(), u"-6"},
      {Variant(Byte(7)), TypeHandle<Byte>(), u"7"},
      {Variant(Word(8)), TypeHandle<Word>(), u"8"},
      {Variant(LongWord(4000000000u)), TypeHandle<LongWord>(), u"4000000000"},
      {Variant(Int64(1) << 40), TypeHandle<Int64>(), u"1099511627776"},
      {Variant(UInt64(18446744073709551615ull)), TypeHandle<UInt64>(), u"18446744073709551615"},
      {Variant(1.5f), TypeHandle<Single>(), u"1.5"},
      {Variant(2.25), TypeHandle<Double>(), u"2.25"},
      {Variant(true), TypeHandle<bool>(), u"True"},
      {Variant(u"text"), TypeHandle<UnicodeString>(), u"text"},
      {Variant(RawByteString("bytes")), TypeHandle<UnicodeString>(), u"bytes"},
      {Variant(), nullptr, u"(empty)"},
      {Null(), nullptr, u"(empty)"},
  };
  for (const TVariantRow& Row : Variants) {
    SCOPED_TRACE(Utf8(Row.Text));
    const TValue Made = TValue::FromVariant(Row.Source);
    EXPECT_EQ(Made.GetTypeInfo(), Row.Handle);
    EXPECT_EQ(Made.ToString(), Row.Text);
  }
  EXPECT_EQ(TValue::FromVariant(Variant(TDateTime(2.5))).GetTypeInfo(), TypeHandle<TDateTime>());
  EXPECT_EQ(TValue::FromVariant(VarArrayOf({Variant(1)})).GetTypeInfo(), TypeHandle<Variant>());
  const TValue Held = TValue::FromVariant(Variant(static_cast<IInterface*>(Object.get())));
  EXPECT_EQ(Held.GetTypeInfo(), TypeHandle<IPtr<IInterface>>());
  EXPECT_EQ(Held.AsInterface().Get(), static_cast<IInterface*>(Object.get()));

  EXPECT_EQ(TValue::FromOrdinal(TypeHandle<TColor>(), 1).ToString(), u"clGreen");
  EXPECT_EQ(TValue::FromOrdinal(TypeHandle<TColors>(), 5).ToString(), u"[clRed,clBlue]");
  EXPECT_EQ(TValue::FromOrdinal(TypeHandle<bool>(), 1).AsBoolean(), true);
  EXPECT_EQ(TValue::FromOrdinal(TypeHandle<WideChar>(), 65).AsString(), u"A");
  EXPECT_EQ(TValue::FromOrdinal(TypeHandle<Byte>(), 200).AsInteger(), 200);
  for (TLxTypeHandle NotOrdinal : {TypeHandle<UnicodeString>(), TypeHandle<Double>(),
                                   TypeHandle<TAddress>(), TypeHandle<TCustomer*>()})
    ExpectRaises<EInvalidCast>([&] { TValue::FromOrdinal(NotOrdinal, 1); },
                               u"Invalid class typecast");
}

TEST_F(Value, StrictReadsAcceptTheKindInAnotherWidthOnly) {
  TOwned<TCustomer> Ann(New<TCustomer>());
  TOwned<TParty> Party(New<TParty>());
  TOwned<TGreeter> Greeter(New<TGreeter>());
  Greeter->SetAutoDestroy(false);
  const IPtr<IGreeter> Greeting(static_cast<IGreeter*>(Greeter.get()));

  EXPECT_EQ(TValue::From(Byte(200)).AsInteger(), 200);
  EXPECT_EQ(TValue::From(Int64(-5)).AsInteger(), -5);
  EXPECT_EQ(TValue::From(TColor::clBlue).AsInteger(), 2);
  EXPECT_EQ(TValue::From(true).AsInteger(), 1);
  EXPECT_EQ(TValue::From(WideChar(u'A')).AsInteger(), 65);
  EXPECT_EQ(TValue::From(TColors{TColor::clRed, TColor::clBlue}).AsOrdinal(), 5);
  EXPECT_EQ(TValue::From(Int64(1) << 40).AsOrdinal(), Int64(1) << 40);
  EXPECT_TRUE(TValue::From(true).AsBoolean());
  EXPECT_EQ(TValue::From(std::string("utf-8")).AsString(), u"utf-8");
  EXPECT_EQ(TValue::From(WideChar(u'q')).AsString(), u"q");
  EXPECT_EQ(TValue::From(Ann.get()).AsObject(), Ann.get());
  EXPECT_EQ(TValue::Empty().AsObject(), nullptr);
  EXPECT_EQ(TValue::From(Greeting).AsInterface().Get(), Greeting.Get());
  EXPECT_EQ(TValue::From(static_cast<TObject*>(Greeter.get())).AsInterface(),
            IPtr<IInterface>(static_cast<IInterface*>(Greeter.get())));
  EXPECT_EQ(TValue::Empty().AsInterface(), nullptr);
  EXPECT_EQ(TValue::From(TCustomer::StaticClass()).AsClass(), TCustomer::StaticClass());
  EXPECT_EQ(TValue::Empty().AsClass(), nullptr);

  struct TVariantRow {
    TValue Source;
    Variant Expected;
    TVarType VarType;
  };
  const TVariantRow VariantRows[] = {
      {TValue::From(5), Variant(5), varInteger},
      {TValue::From(Word(5)), Variant(Word(5)), varWord},
      {TValue::From(TColor::clBlue), Variant(2), varInteger},
      {TValue::From(TColors{TColor::clRed, TColor::clBlue}), Variant(Int64(5)), varInt64},
      {TValue::From(true), Variant(true), varBoolean},
      {TValue::From(1.5), Variant(1.5), varDouble},
      {TValue::From(u"s"), Variant(u"s"), varUString},
      {TValue::From(Variant(u"v")), Variant(u"v"), varUString},
      {TValue::Empty(), Variant(), varEmpty},
  };
  for (const TVariantRow& Row : VariantRows) {
    SCOPED_TRACE(Utf8(Row.Source.ToString()));
    const Variant Read = Row.Source.AsVariant();
    EXPECT_EQ(VarType(Read), Row.VarType);
    EXPECT_TRUE(Read == Row.Expected);
  }

  EXPECT_EQ(TValue::From(Byte(7)).AsType<Int64>(), 7);
  EXPECT_EQ(TValue::From(WideChar(u'x')).AsType<UnicodeString>(), u"x");
  EXPECT_EQ(TValue::From(Ann.get()).AsType<TParty*>(), Ann.get());
  EXPECT_EQ(TValue::From(static_cast<TObject*>(Ann.get())).AsType<TCustomer*>(), Ann.get());
  EXPECT_EQ(TValue::Empty().AsType<TCustomer*>(), nullptr);
  EXPECT_TRUE(TValue::From(5).AsType<Variant>() == Variant(5));
  EXPECT_EQ(TValue::From(TAddress{u"Main St", 1, u""}).AsType<TAddress>().Street, u"Main St");
  EXPECT_EQ(TValue::From(Greeting).AsType<IPtr<IGreeter>>()->Greet(), u"hello");
  struct TIsRow {
    const char* What;
    bool Actual, Expected;
  };
  const TIsRow IsRows[] = {
      {"Int64 of Byte", TValue::From(Byte(7)).IsType<Int64>(), true},
      {"Byte of 300", TValue::From(300).IsType<Byte>(), false},
      {"string of Integer", TValue::From(3).IsType<UnicodeString>(), false},
      {"TParty of TCustomer", TValue::From(Ann.get()).IsType<TParty*>(), true},
      {"TCustomer of TParty", TValue::From(Party.get()).IsType<TCustomer*>(), false},
      {"TCustomer of nil", TValue::From(static_cast<TCustomer*>(nullptr)).IsType<TCustomer*>(),
       true},
      {"TCustomer of Integer", TValue::From(1).IsType<TCustomer*>(), false},
      {"TCustomer of empty", TValue::Empty().IsType<TCustomer*>(), true},
      {"TAddress of Integer", TValue::From(1).IsType<TAddress>(), false},
      {"Integer of empty", TValue::Empty().IsType<Integer>(), false},
  };
  for (const TIsRow& Row : IsRows)
    EXPECT_EQ(Row.Actual, Row.Expected) << Row.What;

  // Everything else is an invalid cast.
  struct TFailure {
    const char* What;
    std::function<void()> Read;
  };
  const TValue Address = TValue::From(TAddress{});
  const TFailure Failures[] = {
      {"AsInteger of a big Int64", [] { TValue::From(Int64(1) << 40).AsInteger(); }},
      {"AsInteger of a big UInt64", [] { TValue::From(UInt64(1) << 63).AsInteger(); }},
      {"AsInteger of a big LongWord", [] { TValue::From(LongWord(0xFFFFFFFFu)).AsInteger(); }},
      {"AsInteger of text", [] { TValue::From(u"1").AsInteger(); }},
      {"AsInteger of a float", [] { TValue::From(1.0).AsInteger(); }},
      {"AsInteger of a set", [] { TValue::From(TColors{TColor::clRed}).AsInteger(); }},
      {"AsInteger of empty", [] { TValue::Empty().AsInteger(); }},
      {"AsOrdinal of text", [] { TValue::From(u"1").AsOrdinal(); }},
      {"AsBoolean of an Integer", [] { TValue::From(1).AsBoolean(); }},
      {"AsString of an Integer", [] { TValue::From(1).AsString(); }},
      {"AsString of empty", [] { TValue::Empty().AsString(); }},
      {"AsObject of an Integer", [] { TValue::From(1).AsObject(); }},
      {"AsInterface of an Integer", [] { TValue::From(1).AsInterface(); }},
      {"AsClass of an object", [&] { TValue::From(Ann.get()).AsClass(); }},
      {"AsVariant of a record", [&] { Address.AsVariant(); }},
      {"AsVariant of an object", [&] { TValue::From(Ann.get()).AsVariant(); }},
      {"AsVariant of an array", [] { TValue::From(std::vector<Integer>{1}).AsVariant(); }},
      {"AsType<Byte> of 300", [] { TValue::From(300).AsType<Byte>(); }},
      {"AsType<string> of an Integer", [] { TValue::From(1).AsType<UnicodeString>(); }},
      {"AsType<TCustomer*> of a TParty", [&] { TValue::From(Party.get()).AsType<TCustomer*>(); }},
      {"AsType<TAddress> of an Integer", [] { TValue::From(1).AsType<TAddress>(); }},
      {"AsType<IGreeter> of a plain object",
       [&] { TValue::From(Ann.get()).AsType<IPtr<IGreeter>>(); }},
  };
  for (const TFailure& Failure : Failures) {
    SCOPED_TRACE(Failure.What);
    ExpectRaises<EInvalidCast>(Failure.Read, u"Invalid class typecast");
  }
}

TEST_F(Value, RecordsAndArraysChangeInPlace) {
  const TLxTypeDescription& Address = *TLxTypes::GetTypeInfo<TAddress>()->GetDescription();
  TValue Home = TValue::From(TAddress{u"Main St", 9000, u"Ghent"});
  auto* Raw = static_cast<TAddress*>(Home.GetReferenceToRawData());
  Raw->Zip = 9050;
  EXPECT_EQ(Address.GetField(u"Zip")->GetValue(Home.GetReferenceToRawData()).AsInteger(), 9050);
  EXPECT_EQ(Home.AsType<TAddress>().Zip, 9050);
  TValue Copy = Home;
  static_cast<TAddress*>(Copy.GetReferenceToRawData())->Street = u"Side St";
  EXPECT_EQ(Home.AsType<TAddress>().Street, u"Main St");
  EXPECT_EQ(Copy.AsType<TAddress>().Street, u"Side St");

  TValue Scores = TValue::From(std::vector<Integer>{1, 2, 3});
  EXPECT_EQ(Scores.GetArrayLength(), 3);
  EXPECT_EQ(Scores.GetArrayElement(1).AsInteger(), 2);
  Scores.SetArrayElement(1, TValue::From(u"20"));
  Scores.SetArrayLength(4);
  auto* Vector = static_cast<std::vector<Integer>*>(Scores.GetReferenceToRawData());
  EXPECT_EQ(*Vector, (std::vector<Integer>{1, 20, 3, 0}));
  Vector->push_back(5);
  EXPECT_EQ(Scores.GetArrayLength(), 5);
  EXPECT_EQ(Scores.GetArrayElement(4).AsInteger(), 5);
  Scores.SetArrayLength(0);
  EXPECT_EQ(Scores.GetArrayLength(), 0);

  TValue Pair = TValue::From(std::array<UnicodeString, 2>{u"a", u"b"});
  Pair.SetArrayLength(2);
  Pair.SetArrayElement(0, TValue::From(7));
  EXPECT_EQ(Pair.GetArrayElement(0).AsString(), u"7");
  using TPair = std::array<UnicodeString, 2>;
  EXPECT_EQ(static_cast<TPair*>(Pair.GetReferenceToRawData())->at(1), u"b");

  TOwned<TCustomer> Ann(New<TCustomer>());
  TValue People = TValue::From(std::vector<TCustomer*>{Ann.get(), nullptr});
  EXPECT_EQ(People.GetArrayElement(0).AsObject(), Ann.get());
  EXPECT_TRUE(People.GetArrayElement(1).IsNull());

  struct TFailure {
    const char* What;
    std::function<void()> Action;
    std::u16string_view Message;
    bool OutOfRange;
  };
  const TFailure Failures[] = {
      {"element past the end", [&] { Scores.GetArrayElement(0); }, u"Array index out of range (0)",
       true},
      {"negative element", [&] { Pair.GetArrayElement(-1); }, u"Array index out of range (-1)",
       true},
      {"set past the end", [&] { Pair.SetArrayElement(2, TValue::From(1)); },
       u"Array index out of range (2)", true},
      {"element that doesn't convert",
       [&] {
         Scores.SetArrayLength(1);
         Scores.SetArrayElement(0, TValue::From(u"x"));
       },
       u"Invalid class typecast", false},
      {"fixed array of another length", [&] { Pair.SetArrayLength(3); }, u"Invalid class typecast",
       false},
      {"negative length", [&] { Scores.SetArrayLength(-1); }, u"Invalid class typecast", false},
      {"length of an Integer", [] { TValue::From(1).GetArrayLength(); }, u"Invalid class typecast",
       false},
      {"element of a record", [&] { Home.GetArrayElement(0); }, u"Invalid class typecast", false},
      {"length of empty", [] { TValue::Empty().SetArrayLength(1); }, u"Invalid class typecast",
       false},
  };
  for (const TFailure& Failure : Failures) {
    SCOPED_TRACE(Failure.What);
    if (Failure.OutOfRange)
      ExpectRaises<EArgumentOutOfRangeException>(Failure.Action, Failure.Message);
    else
      ExpectRaises<EInvalidCast>(Failure.Action, Failure.Message);
  }
  EXPECT_EQ(Scores.GetArrayElement(0).AsInteger(), 0);
  EXPECT_EQ(Pair.GetArrayLength(), 2);
}

TEST_F(Value, ConversionsRaiseOrGiveTheDefault) {
  // Each conversion with its default for the rows that fail, and the name that messages give.
  struct TConversion {
    const char* Name;
    std::function<Variant(const TValue&, bool)> Convert;
    Variant Default;
    std::u16string_view Target;
  };
  const TConversion ToByte{"ToByte", [](const TValue& V, bool R) { return V.ToByte(R, 77); },
                           Variant(Byte(77)), u"Byte"};
  const TConversion ToShortInt{"ToShortInt",
                               [](const TValue& V, bool R) { return V.ToShortInt(R, -7); },
                               Variant(ShortInt(-7)), u"ShortInt"};
  const TConversion ToWord{"ToWord", [](const TValue& V, bool R) { return V.ToWord(R, 777); },
                           Variant(Word(777)), u"Word"};
  const TConversion ToSmallInt{"ToSmallInt",
                               [](const TValue& V, bool R) { return V.ToSmallInt(R, -777); },
                               Variant(SmallInt(-777)), u"Smallint"};
  const TConversion ToLongWord{"ToLongWord",
                               [](const TValue& V, bool R) { return V.ToLongWord(R, 7777); },
                               Variant(LongWord(7777)), u"Cardinal"};
  const TConversion ToInteger{"ToInteger",
                              [](const TValue& V, bool R) { return V.ToInteger(R, -7777); },
                              Variant(Integer(-7777)), u"Integer"};
  const TConversion ToInt64{"ToInt64", [](const TValue& V, bool R) { return V.ToInt64(R, -77); },
                            Variant(Int64(-77)), u"Int64"};
  const TConversion ToUInt64{"ToUInt64",
                             [](const TValue& V, bool R) { return V.ToUInt64(R, 77777); },
                             Variant(UInt64(77777)), u"UInt64"};
  const TConversion ToSingle{"ToSingle",
                             [](const TValue& V, bool R) { return V.ToSingle(R, 7.5f); },
                             Variant(7.5f), u"Single"};
  const TConversion ToDouble{"ToDouble",
                             [](const TValue& V, bool R) { return V.ToDouble(R, 7.25); },
                             Variant(7.25), u"Double"};
  const TConversion ToExtended{"ToExtended",
                               [](const TValue& V, bool R) { return V.ToExtended(R, 7.125); },
                               Variant(7.125), u"Double"};
  const TConversion ToBoolean{"ToBoolean",
                              [](const TValue& V, bool R) { return V.ToBoolean(R, true); },
                              Variant(true), u"Boolean"};
  const TConversion ToWideString{"ToWideString",
                                 [](const TValue& V, bool R) { return V.ToWideString(R, u"dflt"); },
                                 Variant(u"dflt"), u"UnicodeString"};

  TOwned<TCustomer> Ann(New<TCustomer>());
  const Variant Fails; // Empty: the row's conversion fails
  struct TRow {
    TValue Source;
    const TConversion& Conversion;
    Variant Expected;
    std::u16string_view SourceName = {};
  };
  const TRow Rows[] = {
      {TValue::From(200), ToByte, Variant(Byte(200))},
      {TValue::From(u"255"), ToByte, Variant(Byte(255))},
      {TValue::From(300), ToByte, Fails, u"Integer"},
      {TValue::From(-1), ToByte, Fails, u"Integer"},
      {TValue::From(-128), ToShortInt, Variant(ShortInt(-128))},
      {TValue::From(u"200"), ToShortInt, Fails, u"string"},
      {TValue::From(Word(65535)), ToWord, Variant(Word(65535))},
      {TValue::From(65536), ToWord, Fails, u"Integer"},
      {TValue::From(SmallInt(-5)), ToSmallInt, Variant(SmallInt(-5))},
      {TValue::From(u"40000"), ToSmallInt, Fails, u"string"},
      {TValue::From(5), ToLongWord, Variant(LongWord(5))},
      {TValue::From(-5), ToLongWord, Fails, u"Integer"},
      {TValue::From(u"12"), ToInteger, Variant(12)},
      {TValue::From(3.5), ToInteger, Variant(4)},
      {TValue::From(2.5), ToInteger, Variant(2)},
      {TValue::From(true), ToInteger, Variant(-1)},
      {TValue::From(TColor::clBlue), ToInteger, Variant(2)},
      {TValue::From(WideChar(u'7')), ToInteger, Variant(7)},
      {TValue::From(Variant(u"8")), ToInteger, Variant(8)},
      {TValue::Empty(), ToInteger, Variant(0)},
      {TValue::From(u"x"), ToInteger, Fails, u"string"},
      {TValue::From(Int64(1) << 40), ToInteger, Fails, u"Int64"},
      {TValue::From(TAddress{}), ToInteger, Fails, u"TAddress"},
      {TValue::From(Ann.get()), ToInteger, Fails, u"TCustomer"},
      {TValue::From(Null()), ToInteger, Fails, u"Variant"},
      {TValue::From(TColors{TColor::clRed, TColor::clBlue}), ToInt64, Variant(Int64(5))},
      {TValue::From(u"-9"), ToInt64, Variant(Int64(-9))},
      {TValue::From(UInt64(18446744073709551615ull)), ToUInt64,
       Variant(UInt64(18446744073709551615ull))},
      {TValue::From(Int64(-1)), ToUInt64, Fails, u"Int64"},
      {TValue::From(3), ToSingle, Variant(3.0f)},
      {TValue::From(u"x"), ToSingle, Fails, u"string"},
      {TValue::From(u"1.5"), ToDouble, Variant(1.5)},
      {TValue::From(TDateTime(2.5)), ToDouble, Variant(2.5)},
      {TValue::From(std::vector<Integer>{}), ToDouble, Fails, u"TArray<Integer>"},
      {TValue::From(u"2.25"), ToExtended, Variant(2.25)},
      {TValue::From(u"x"), ToExtended, Fails, u"string"},
      {TValue::From(u"true"), ToBoolean, Variant(true)},
      {TValue::From(u"FALSE"), ToBoolean, Variant(false)},
      {TValue::From(0), ToBoolean, Variant(false)},
      {TValue::From(2), ToBoolean, Variant(true)},
      {TValue::From(u"maybe"), ToBoolean, Fails, u"string"},
      {TValue::From(42), ToWideString, Variant(u"42")},
      {TValue::From(true), ToWideString, Variant(u"True")},
      {TValue::From(TColor::clGreen), ToWideString, Variant(u"clGreen")},
      {TValue::From(TColors{TColor::clRed, TColor::clBlue}), ToWideString,
       Variant(u"[clRed,clBlue]")},
      {TValue::From(std::string("abc")), ToWideString, Variant(u"abc")},
      {TValue::From(WideChar(u'q')), ToWideString, Variant(u"q")},
      {TValue::Empty(), ToWideString, Variant(u"")},
      {TValue::From(TAddress{}), ToWideString, Fails, u"TAddress"},
      {TValue::From(Ann.get()), ToWideString, Fails, u"TCustomer"},
  };
  for (const TRow& Row : Rows) {
    SCOPED_TRACE(std::string(Row.Conversion.Name) + " of " + Utf8(Row.Source.ToString()));
    if (Row.SourceName.empty()) {
      EXPECT_TRUE(Row.Conversion.Convert(Row.Source, true) == Row.Expected);
      EXPECT_TRUE(Row.Conversion.Convert(Row.Source, false) == Row.Expected);
      continue;
    }
    ExpectRaises<EConvertError>([&] { Row.Conversion.Convert(Row.Source, true); },
                                u"Cannot convert a value of type " + UnicodeString(Row.SourceName) +
                                    u" to " + UnicodeString(Row.Conversion.Target));
    EXPECT_TRUE(Row.Conversion.Convert(Row.Source, false) == Row.Conversion.Default);
  }
}

TEST_F(Value, ToTypeConvertsAcrossKindsOrLeavesTheResultAlone) {
  TOwned<TCustomer> Ann(New<TCustomer>());
  TOwned<TParty> Party(New<TParty>());
  TOwned<TGreeter> Greeter(New<TGreeter>());
  Greeter->SetAutoDestroy(false);
  struct TRow {
    TValue Source;
    TLxTypeHandle Target;
    bool Converts;
    std::u16string_view Text = {};
  };
  const TRow Rows[] = {
      {TValue::From(5), TypeHandle<Byte>(), true, u"5"},
      {TValue::From(300), TypeHandle<Byte>(), false},
      {TValue::From(Int64(-1)), TypeHandle<UInt64>(), false},
      {TValue::From(UInt64(1) << 63), TypeHandle<Int64>(), false},
      {TValue::From(u"42"), TypeHandle<Integer>(), true, u"42"},
      {TValue::From(u"x"), TypeHandle<Integer>(), false},
      {TValue::From(2.5), TypeHandle<Integer>(), true, u"2"},
      {TValue::From(TAddress{}), TypeHandle<Integer>(), false},
      {TValue::From(2), TypeHandle<TColor>(), true, u"clBlue"},
      {TValue::From(3), TypeHandle<TColor>(), false},
      {TValue::From(u"CLGREEN"), TypeHandle<TColor>(), true, u"clGreen"},
      {TValue::From(u"1"), TypeHandle<TColor>(), true, u"clGreen"},
      {TValue::From(Variant(u"clRed")), TypeHandle<TColor>(), true, u"clRed"},
      {TValue::From(u"clPink"), TypeHandle<TColor>(), false},
      {TValue::From(TColor::clBlue), TypeHandle<Integer>(), true, u"2"},
      {TValue::From(5), TypeHandle<TColors>(), true, u"[clRed,clBlue]"},
      {TValue::From(u"[clGreen]"), TypeHandle<TColors>(), true, u"[clGreen]"},
      {TValue::From(u"clRed clBlue"), TypeHandle<TColors>(), true, u"[clRed,clBlue]"},
      {TValue::From(u"[]"), TypeHandle<TColors>(), true, u"[]"},
      {TValue::From(8), TypeHandle<TColors>(), false},
      {TValue::From(u"[clPink]"), TypeHandle<TColors>(), false},
      {TValue::From(1.5), TypeHandle<TColors>(), false},
      {TValue::From(u"[clBlue]"), TypeHandle<TFewColors>(), true, u"[clBlue]"},
      {TValue::From(TColors{TColor::clGreen}), TypeHandle<UnicodeString>(), true, u"[clGreen]"},
      {TValue::From(1), TypeHandle<bool>(), true, u"True"},
      {TValue::From(u"false"), TypeHandle<bool>(), true, u"False"},
      {TValue::From(TAddress{}), TypeHandle<bool>(), false},
      {TValue::From(5), TypeHandle<Double>(), true, u"5"},
      {TValue::From(u"1.5"), TypeHandle<Single>(), true, u"1.5"},
      {TValue::From(u"x"), TypeHandle<Double>(), false},
      {TValue::From(5), TypeHandle<UnicodeString>(), true, u"5"},
      {TValue::From(true), TypeHandle<UnicodeString>(), true, u"True"},
      {TValue::From(TColor::clBlue), TypeHandle<std::string>(), true, u"clBlue"},
      {TValue::From(u"xy"), TypeHandle<WideChar>(), true, u"x"},
      {TValue::From(Ann.get()), TypeHandle<UnicodeString>(), false},
      {TValue::From(5), TypeHandle<Variant>(), true, u"5"},
      {TValue::From(TAddress{}), TypeHandle<Variant>(), false},
      {TValue::From(5), TypeHandle<TValue>(), true, u"5"},
      {TValue::From(TAddress{}), TypeHandle<TAddress>(), true, u"(record)"},
      {TValue::From(5), TypeHandle<TAddress>(), false},
      {TValue::From(std::vector<Integer>{1}), TypeHandle<std::vector<Int64>>(), false},
      {TValue::From(Ann.get()), TypeHandle<TParty*>(), true},
      {TValue::From(Party.get()), TypeHandle<TCustomer*>(), false},
      {TValue::From(5), TypeHandle<TCustomer*>(), false},
      {TValue::Empty(), TypeHandle<TCustomer*>(), true, u"nil"},
      {TValue::Empty(), TypeHandle<Integer>(), true, u"0"},
      {TValue::From(5), TypeHandle<TClass>(), false},
      {TValue::From(static_cast<TObject*>(Greeter.get())), TypeHandle<IPtr<IGreeter>>(), true},
      {TValue::From(static_cast<TObject*>(Greeter.get())), TypeHandle<IPtr<IUnsupported>>(), false},
      {TValue::From(5), TypeHandle<IPtr<IGreeter>>(), false},
      {TValue::From(TValue::From(u"7")), TypeHandle<Integer>(), true, u"7"},
  };
  for (std::size_t I = 0; I < std::size(Rows); ++I) {
    const TRow& Row = Rows[I];
    SCOPED_TRACE("row " + std::to_string(I) + ": " + Utf8(Row.Source.ToString()) + " to " +
                 Utf8(TLxTypes::GetTypeInfo(Row.Target)->GetName()));
    TValue Result = TValue::From(u"untouched");
    ASSERT_EQ(Row.Source.ToType(Row.Target, Result), Row.Converts);
    if (!Row.Converts) {
      EXPECT_EQ(Result.GetTypeInfo(), TypeHandle<UnicodeString>());
      EXPECT_EQ(Result.AsString(), u"untouched");
      continue;
    }
    EXPECT_EQ(Result.GetTypeInfo(), Row.Target);
    if (!Row.Text.empty()) {
      EXPECT_EQ(Utf8(Result.ToString()), Utf8(Row.Text));
    }
  }
  EXPECT_FALSE(TValue::From(5).ToType(nullptr, *std::make_unique<TValue>()));
  TValue Greeting;
  ASSERT_TRUE(TValue::From(static_cast<TObject*>(Greeter.get()))
                  .ToType(TypeHandle<IPtr<IGreeter>>(), Greeting));
  EXPECT_EQ(Greeting.AsType<IPtr<IGreeter>>()->Greet(), u"hello");
}

TEST_F(Value, ToTypeIntoTheValueItself) {
  struct TRow {
    TValue Source;
    TLxTypeHandle Target;
    std::u16string_view Text;
  };
  const TRow Rows[] = {
      {TValue::From(u"a text long enough to live on the heap"), TypeHandle<std::string>(),
       u"a text long enough to live on the heap"},
      {TValue::From(std::string("bytes")), TypeHandle<UnicodeString>(), u"bytes"},
      {TValue::From(u"12"), TypeHandle<Integer>(), u"12"},
      {TValue::From(7), TypeHandle<Double>(), u"7"},
      {TValue::From(u"2.5"), TypeHandle<Double>(), u"2.5"},
      {TValue::From(u"clBlue"), TypeHandle<TColor>(), u"clBlue"},
      {TValue::From(u"[clRed]"), TypeHandle<TColors>(), u"[clRed]"},
      {TValue::From(TColor::clGreen), TypeHandle<UnicodeString>(), u"clGreen"},
      {TValue::From(3), TypeHandle<bool>(), u"True"},
  };
  for (const TRow& Row : Rows) {
    SCOPED_TRACE(Utf8(Row.Text));
    TValue Converted = Row.Source;
    ASSERT_TRUE(Converted.ToType(Row.Target, Converted));
    EXPECT_EQ(Converted.GetTypeInfo(), Row.Target);
    EXPECT_EQ(Utf8(Converted.ToString()), Utf8(Row.Text));
  }
}

TEST_F(Value, TextOfEveryKind) {
  TOwned<TCustomer> Ann(New<TCustomer>());
  struct TRow {
    TValue Source;
    std::u16string_view Text;
  };
  const TRow Rows[] = {
      {TValue::Empty(), u"(empty)"},
      {TValue::From(42), u"42"},
      {TValue::From(-1.5), u"-1.5"},
      {TValue::From(true), u"True"},
      {TValue::From(u"text"), u"text"},
      {TValue::From(TColor::clGreen), u"clGreen"},
      {TValue::FromOrdinal(TypeHandle<TColor>(), 7), u"7"},
      {TValue::From(TColors{TColor::clRed, TColor::clBlue}), u"[clRed,clBlue]"},
      {TValue::From(TColors{}), u"[]"},
      {TValue::From(TFewColors{TColor::clGreen}), u"[clGreen]"},
      {TValue::From(TFewColors{}), u"[]"},
      {TValue::From(TAddress{}), u"(record)"},
      {TValue::From(std::vector<Integer>{1}), u"(dynamic array)"},
      {TValue::From(std::array<Integer, 1>{1}), u"(array)"},
      {TValue::From(static_cast<TCustomer*>(nullptr)), u"nil"},
      {TValue::From(TCustomer::StaticClass()), u"TCustomer"},
      {TValue::From(TClass(nullptr)), u"nil"},
      {TValue::From(Variant(u"v")), u"v"},
      {TValue::From(TValue::From(5)), u"5"},
  };
  for (const TRow& Row : Rows)
    EXPECT_EQ(Utf8(Row.Source.ToString()), Utf8(Row.Text));
  EXPECT_TRUE(StartsWith(TValue::From(Ann.get()).ToString(), u"(TCustomer @ "));
  int Local = 0;
  EXPECT_TRUE(StartsWith(TValue::From(static_cast<void*>(&Local)).ToString(), u"(pointer @ "));
  EXPECT_TRUE(StartsWith(TValue::From(Pointer(nullptr)).ToString(), u"(pointer @ "));
  EXPECT_TRUE(StartsWith(TValue::From(IPtr<IGreeter>()).ToString(), u"(interface @ "));
}

TEST_F(Value, NullAndMainKinds) {
  TOwned<TCustomer> Ann(New<TCustomer>());
  int Local = 0;
  struct TRow {
    const char* What;
    TValue Source;
    bool Null;
    TLxTypeKind TypeKind;
    TLxMainTypeKind MainKind;
  };
  const TRow Rows[] = {
      {"empty", TValue::Empty(), true, ltkUnknown, lmkNone},
      {"nil object", TValue::From(static_cast<TCustomer*>(nullptr)), true, ltkClass, lmkNone},
      {"object", TValue::From(Ann.get()), false, ltkClass, lmkNone},
      {"nil pointer", TValue::From(Pointer(nullptr)), true, ltkPointer, lmkNone},
      {"pointer", TValue::From(static_cast<Pointer>(&Local)), false, ltkPointer, lmkNone},
      {"nil interface", TValue::From(IPtr<IGreeter>()), true, ltkInterface, lmkNone},
      {"Empty Variant", TValue::From(Variant()), true, ltkVariant, lmkNone},
      {"Null Variant", TValue::From(Null()), true, ltkVariant, lmkNone},
      {"Variant 0", TValue::From(Variant(0)), false, ltkVariant, lmkInteger},
      {"Variant text", TValue::From(Variant(u"")), false, ltkVariant, lmkString},
      {"Variant date", TValue::From(Variant(TDateTime(1.0))), false, ltkVariant, lmkDateTime},
      {"Variant array", TValue::From(VarArrayOf({Variant(1)})), false, ltkVariant, lmkArray},
      {"Integer 0", TValue::From(0), false, ltkInteger, lmkInteger},
      {"empty text", TValue::From(u""), false, ltkText3, lmkString},
      {"float", TValue::From(0.0), false, ltkDouble, lmkFloat},
      {"Boolean", TValue::From(false), false, ltkBoolean, lmkBoolean},
      {"date", TValue::From(TDate(1.0)), false, ltkDate, lmkDateTime},
      {"set", TValue::From(TColors{}), false, ltkSet, lmkNone},
      {"array", TValue::From(std::vector<Integer>{}), false, ltkDynArray, lmkArray},
      {"record", TValue::From(TAddress{}), false, ltkRecord, lmkNone},
      {"TValue of a float", TValue::From(TValue::From(1.5)), false, ltkRecord, lmkFloat},
  };
  for (const TRow& Row : Rows) {
    SCOPED_TRACE(Row.What);
    EXPECT_EQ(Row.Source.IsNull(), Row.Null);
    EXPECT_EQ(Row.Source.TypeKind(), Row.TypeKind);
    EXPECT_EQ(Row.Source.MainTypeKind(), Row.MainKind);
  }
}

TEST_F(Value, CopiesAndMovesOfInlineAndHeapValues) {
  using namespace Storage;
  // Each row: a value, and a check that a copy holds the same.
  struct TRow {
    const char* What;
    std::function<TValue()> Make;
    std::function<bool(const TValue&)> Holds;
    std::size_t Alignment;
  };
  const UnicodeString Long(100, u'x');
  const TRow Rows[] = {
      {"Integer", [] { return TValue::From(7); },
       [](const TValue& V) { return V.AsInteger() == 7; }, alignof(Integer)},
      {"long text", [&] { return TValue::From(Long); },
       [&](const TValue& V) { return V.AsString() == Long; }, alignof(UnicodeString)},
      {"vector", [] { return TValue::From(std::vector<Integer>(50, 3)); },
       [](const TValue& V) {
         return V.GetArrayLength() == 50 && V.GetArrayElement(49).AsInteger() == 3;
       },
       alignof(std::vector<Integer>)},
      {"big record",
       [&] {
         return TValue::From(TBig{Long, u"b", u"c", Long});
       },
       [&](const TValue& V) {
         const auto& Big = *static_cast<const TBig*>(V.GetReferenceToRawData());
         return Big.A == Long && Big.B == u"b" && Big.D == Long;
       },
       alignof(TBig)},
      {"aligned record", [] { return TValue::From(TAligned{5}); },
       [](const TValue& V) {
         return static_cast<const TAligned*>(V.GetReferenceToRawData())->Value == 5;
       },
       64},
      {"throwing move", [&] { return TValue::From(TThrowingMove(Long)); },
       [&](const TValue& V) {
         return static_cast<const TThrowingMove*>(V.GetReferenceToRawData())->Text == Long;
       },
       alignof(TThrowingMove)},
  };
  for (const TRow& Row : Rows) {
    SCOPED_TRACE(Row.What);
    TValue Original = Row.Make();
    ASSERT_TRUE(Row.Holds(Original));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(Original.GetReferenceToRawData()) % Row.Alignment,
              0u);

    TValue Copy(Original);
    EXPECT_TRUE(Row.Holds(Copy));
    EXPECT_NE(Copy.GetReferenceToRawData(), Original.GetReferenceToRawData());

    TValue Moved(std::move(Copy));
    EXPECT_TRUE(Row.Holds(Moved));
    EXPECT_TRUE(Copy.GetIsEmpty()); // NOLINT(bugprone-use-after-move): moved from is empty

    TValue Assigned = TValue::From(TBig{Long, Long, Long, Long});
    Assigned = Original;
    EXPECT_TRUE(Row.Holds(Assigned));
    Assigned = TValue::From(TBig{});
    Assigned = std::move(Moved);
    EXPECT_TRUE(Row.Holds(Assigned));
    EXPECT_TRUE(Moved.GetIsEmpty()); // NOLINT(bugprone-use-after-move)
    TValue& Self = Assigned;
    Assigned = Self;
    EXPECT_TRUE(Row.Holds(Assigned));
    Assigned = std::move(Self);
    EXPECT_TRUE(Row.Holds(Assigned));
    Assigned = TValue();
    EXPECT_TRUE(Assigned.GetIsEmpty());
    EXPECT_TRUE(Row.Holds(Original));
  }

  // A value holds an object without owning it.
  TOwned<TCustomer> Ann(New<TCustomer>());
  const Int64 Before = TObject::LiveInstances();
  {
    TValue Held = TValue::From(Ann.get());
    TValue Copy = Held;
    TValue Moved = std::move(Held);
  }
  EXPECT_EQ(TObject::LiveInstances(), Before);
}

TEST_F(Value, AFailingCopyLeavesNothingBehind) {
  using namespace Storage;
  const TFailingCopy Source;
  EXPECT_THROW(TValue::From(Source), std::runtime_error);
  EXPECT_THROW(TValue::Make(&Source, TypeHandle<TFailingCopy>()), std::runtime_error);
  const TValue Held = TValue::From(TFailingCopy{});
  EXPECT_THROW(TValue Copy(Held), std::runtime_error);
  TValue Target = TValue::From(5);
  EXPECT_THROW(Target = Held, std::runtime_error);
  EXPECT_EQ(Target.AsInteger(), 5);
}
