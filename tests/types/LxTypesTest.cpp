// The type registry: built-in names and kinds, look-ups by every name type, prefixes, aliases,
// the undeclared "ArrayOf..." arrays, the serializer table and the Variant type codes.
#include "ShopTypes.h"
#include "support/TestHelpers.h"

#include <array>

using namespace lorvane;
using namespace lorvane::test;
using namespace Shop;

namespace Billing {
struct TInvoice {
  Integer Number = 0;
};
enum class TStatus { stOpen, stPaid };
} // namespace Billing

namespace {

// Stand-ins for serializer classes: the table only stores and hands back metaclasses.
class TFakeSerializer : public TObject {
  LX_CLASS(TFakeSerializer, TObject)
};
class TFakeDeserializer : public TObject {
  LX_CLASS(TFakeDeserializer, TObject)
};
class TOtherSerializer : public TObject {
  LX_CLASS(TOtherSerializer, TObject)
};

std::string Utf8(std::u16string_view AText) { return StringToUTF8(AText); }

} // namespace

TEST(TypeRegistry, BuiltInTypesHaveTheirNamesAndKinds) {
  struct TRow {
    TLxTypeHandle Handle;
    std::u16string_view Name, QualifiedName, SchemaName;
    TLxTypeKind TypeKind;
    TTypeKind Kind;
    TLxMainTypeKind MainKind;
    bool Simple;
  };
  const TRow Rows[] = {
      {TypeHandle<UnicodeString>(), u"string", u"System.string", u"string", ltkText3, tkUString,
       lmkString, true},
      {TypeHandle<Integer>(), u"Integer", u"System.Integer", u"int", ltkInteger, tkInteger,
       lmkInteger, true},
      {TypeHandle<Int64>(), u"Int64", u"System.Int64", u"long", ltkInt64, tkInt64, lmkInteger,
       true},
      {TypeHandle<bool>(), u"Boolean", u"System.Boolean", u"boolean", ltkBoolean, tkEnumeration,
       lmkBoolean, true},
      {TypeHandle<Byte>(), u"Byte", u"System.Byte", u"unsignedByte", ltkByte, tkInteger, lmkInteger,
       true},
      {TypeHandle<Word>(), u"Word", u"System.Word", u"unsignedShort", ltkWord, tkInteger,
       lmkInteger, true},
      {TypeHandle<LongWord>(), u"Cardinal", u"System.Cardinal", u"unsignedInt", ltkLongWord,
       tkInteger, lmkInteger, true},
      {TypeHandle<UInt64>(), u"UInt64", u"System.UInt64", u"unsignedLong", ltkUInt64, tkInt64,
       lmkInteger, true},
      {TypeHandle<ShortInt>(), u"ShortInt", u"System.ShortInt", u"byte", ltkShortInt, tkInteger,
       lmkInteger, true},
      {TypeHandle<SmallInt>(), u"SmallInt", u"System.SmallInt", u"short", ltkSmallInt, tkInteger,
       lmkInteger, true},
      {TypeHandle<Single>(), u"Single", u"System.Single", u"float", ltkSingle, tkFloat, lmkFloat,
       true},
      {TypeHandle<Double>(), u"Double", u"System.Double", u"double", ltkDouble, tkFloat, lmkFloat,
       true},
      {TypeHandle<TDateTime>(), u"TDateTime", u"System.TDateTime", u"dateTime", ltkDateTime,
       tkFloat, lmkDateTime, true},
      {TypeHandle<TDate>(), u"TDate", u"System.TDate", u"date", ltkDate, tkFloat, lmkDateTime,
       true},
      {TypeHandle<TTime>(), u"TTime", u"System.TTime", u"time", ltkTime, tkFloat, lmkDateTime,
       true},
      {TypeHandle<WideChar>(), u"Char", u"System.Char", u"string", ltkText0, tkWChar, lmkString,
       true},
      {TypeHandle<AnsiChar>(), u"AnsiChar", u"System.AnsiChar", u"string", ltkText1, tkChar,
       lmkString, true},
      {TypeHandle<std::string>(), u"UTF8String", u"System.UTF8String", u"string", ltkText4,
       tkLString, lmkString, true},
      {TypeHandle<Variant>(), u"Variant", u"System.Variant", u"anyType", ltkVariant, tkVariant,
       lmkNone, true},
      {TypeHandle<TValue>(), u"TValue", u"System.Rtti.TValue", u"TValue", ltkRecord, tkRecord,
       lmkNone, false},
      {TypeHandle<TClass>(), u"TClass", u"System.TClass", u"TClass", ltkClassRef, tkClassRef,
       lmkNone, true},
      {TypeHandle<Pointer>(), u"Pointer", u"System.Pointer", u"Pointer", ltkPointer, tkPointer,
       lmkNone, false},
      {TypeHandle<std::vector<UnicodeString>>(), u"TArray<string>", u"System.TArray<System.string>",
       u"ArrayOfString", ltkDynArray, tkDynArray, lmkArray, false},
      {TypeHandle<std::vector<Variant>>(), u"TArray<Variant>", u"System.TArray<System.Variant>",
       u"ArrayOfAnyType", ltkDynArray, tkDynArray, lmkArray, false},
      {TypeHandle<std::array<Integer, 3>>(), u"array[0..2] of Integer",
       u"array[0..2] of System.Integer", u"ArrayOfInt", ltkArray, tkArray, lmkArray, false},
  };
  for (const TRow& Row : Rows) {
    SCOPED_TRACE(Utf8(Row.QualifiedName));
    const TLxTypeInfo* Info = TLxTypes::GetTypeInfo(Row.Handle);
    ASSERT_NE(Info, nullptr);
    EXPECT_EQ(TLxTypes::GetTypeInfo(Row.Handle), Info);
    EXPECT_EQ(Info->GetHandle(), Row.Handle);
    EXPECT_EQ(Utf8(Info->GetName()), Utf8(Row.Name));
    EXPECT_EQ(Utf8(Info->GetQualifiedName()), Utf8(Row.QualifiedName));
    EXPECT_EQ(Utf8(Info->SchemaName()), Utf8(Row.SchemaName));
    EXPECT_EQ(Utf8(Info->SchemaName(u"xsd")), "xsd:" + Utf8(Row.SchemaName));
    EXPECT_EQ(LxTypeKindName(Info->GetTypeKind()), LxTypeKindName(Row.TypeKind));
    EXPECT_EQ(TypeKindName(Info->GetKind()), TypeKindName(Row.Kind));
    EXPECT_EQ(Info->GetMainTypeKind(), Row.MainKind);
    EXPECT_EQ(Info->GetIsSimpleType(), Row.Simple);
    EXPECT_EQ(TLxTypes::GetTypeInfo(Row.QualifiedName, ltnQualified), Info);
    EXPECT_EQ(Info->GetDescription()->GetTypeInfo(), Info);
    EXPECT_EQ(TLxTypes::GetTypeInfo(Info->GetDescription()), Info);
  }
  EXPECT_EQ(TLxTypes::GetTypeInfo(TLxTypeHandle(nullptr)), nullptr);
  EXPECT_EQ(TLxTypes::GetTypeInfo(TClass(nullptr)), nullptr);
  EXPECT_EQ(TLxTypes::GetTypeInfo(static_cast<const TLxTypeDescription*>(nullptr)), nullptr);
}

TEST(TypeRegistry, KindSetsAndMainKinds) {
  // Every kind: complex or not, and its main kind.
  struct TRow {
    TLxTypeKind Kind;
    std::u16string_view Name;
    bool Complex;
    TLxMainTypeKind Main;
  };
  const TRow Rows[] = {
      {ltkUnknown, u"ltkUnknown", false, lmkNone},
      {ltkByte, u"ltkByte", false, lmkInteger},
      {ltkWord, u"ltkWord", false, lmkInteger},
      {ltkLongWord, u"ltkLongWord", false, lmkInteger},
      {ltkUInt64, u"ltkUInt64", false, lmkInteger},
      {ltkShortInt, u"ltkShortInt", false, lmkInteger},
      {ltkSmallInt, u"ltkSmallInt", false, lmkInteger},
      {ltkInteger, u"ltkInteger", false, lmkInteger},
      {ltkInt64, u"ltkInt64", false, lmkInteger},
      {ltkSingle, u"ltkSingle", false, lmkFloat},
      {ltkDouble, u"ltkDouble", false, lmkFloat},
      {ltkExtended, u"ltkExtended", false, lmkFloat},
      {ltkText0, u"ltkText0", false, lmkString},
      {ltkText1, u"ltkText1", false, lmkString},
      {ltkText2, u"ltkText2", false, lmkString},
      {ltkText3, u"ltkText3", false, lmkString},
      {ltkText4, u"ltkText4", false, lmkString},
      {ltkText5, u"ltkText5", false, lmkString},
      {ltkBoolean, u"ltkBoolean", false, lmkBoolean},
      {ltkEnumeration, u"ltkEnumeration", false, lmkNone},
      {ltkSet, u"ltkSet", false, lmkNone},
      {ltkDate, u"ltkDate", false, lmkDateTime},
      {ltkTime, u"ltkTime", false, lmkDateTime},
      {ltkDateTime, u"ltkDateTime", false, lmkDateTime},
      {ltkVariant, u"ltkVariant", false, lmkNone},
      {ltkArray, u"ltkArray", true, lmkArray},
      {ltkDynArray, u"ltkDynArray", true, lmkArray},
      {ltkRecord, u"ltkRecord", true, lmkNone},
      {ltkClass, u"ltkClass", true, lmkNone},
      {ltkInterface, u"ltkInterface", true, lmkNone},
      {ltkReserved30, u"ltkReserved30", false, lmkNone},
      {ltkPointer, u"ltkPointer", true, lmkNone},
      {ltkReserved32, u"ltkReserved32", false, lmkNone},
      {ltkReserved33, u"ltkReserved33", false, lmkNone},
      {ltkClassRef, u"ltkClassRef", false, lmkNone},
  };
  ASSERT_EQ(std::size(Rows), 35u);
  for (std::size_t I = 0; I < std::size(Rows); ++I) {
    const TRow& Row = Rows[I];
    SCOPED_TRACE(Utf8(Row.Name));
    EXPECT_EQ(static_cast<std::size_t>(Row.Kind), I);
    EXPECT_EQ(LxTypeKindName(Row.Kind), Row.Name);
    EXPECT_EQ(LxIsComplexKind(Row.Kind), Row.Complex);
    EXPECT_EQ(TLxTypes::ToMainTypeKind(Row.Kind), Row.Main);
  }
  EXPECT_EQ(static_cast<int>(tkProcedure), 21);
  EXPECT_EQ(TypeKindName(tkUnknown), u"tkUnknown");
  EXPECT_EQ(TypeKindName(tkClassRef), u"tkClassRef");
  EXPECT_EQ(TypeKindName(tkProcedure), u"tkProcedure");
}

TEST(TypeRegistry, LooksUpByEveryNameTypeIgnoringCase) {
  DescribeShop();
  struct TRow {
    std::u16string_view Name;
    TLxTypeNameType NameType;
    TLxMainTypeKind MainKind;
    TLxTypeHandle Expected;
  };
  const TRow Rows[] = {
      {u"STRING", ltnName, lmkNone, TypeHandle<UnicodeString>()},
      {u"string", ltnSchema, lmkNone, TypeHandle<UnicodeString>()},
      {u"string", ltnSchema, lmkString, TypeHandle<UnicodeString>()},
      {u"string", ltnSchema, lmkInteger, nullptr},
      {u"string", ltnQualified, lmkNone, nullptr},
      {u"system.int64", ltnQualified, lmkNone, TypeHandle<Int64>()},
      {u"long", ltnSchema, lmkNone, TypeHandle<Int64>()},
      {u"xsd:int", ltnSchema, lmkNone, TypeHandle<Integer>()},
      {u"xsd:int", ltnName, lmkNone, nullptr},
      {u"tcustomer", ltnName, lmkNone, TypeHandle<TCustomer*>()},
      {u"Shop.TCustomer", ltnQualified, lmkNone, TypeHandle<TCustomer*>()},
      {u"ns:TCustomer", ltnSchema, lmkNone, TypeHandle<TCustomer*>()},
      {u"ns:TCustomer", ltnSchema, lmkArray, nullptr},
      {u"TVipCustomer", ltnName, lmkNone, TypeHandle<TVipCustomer*>()},
      {u"tcolor", ltnName, lmkNone, TypeHandle<TColor>()},
      {u"SHOP.TCOLOR", ltnQualified, lmkNone, TypeHandle<TColor>()},
      {u"Shop.TColors", ltnQualified, lmkNone, TypeHandle<TColors>()},
      {u"ArrayOfString", ltnSchema, lmkArray, TypeHandle<std::vector<UnicodeString>>()},
      {u"ns:arrayofstring", ltnSchema, lmkArray, TypeHandle<std::vector<UnicodeString>>()},
      {u"ArrayOfInt", ltnSchema, lmkArray, TypeHandle<std::vector<Integer>>()},
      {u"ArrayOfTAddress", ltnSchema, lmkArray, TypeHandle<std::vector<TAddress>>()},
      {u"ArrayOfTCustomer", ltnSchema, lmkNone, TypeHandle<std::vector<TCustomer*>>()},
      {u"Nothing", ltnName, lmkNone, nullptr},
      {u"ns:Nothing", ltnSchema, lmkNone, nullptr},
      {u"", ltnName, lmkNone, nullptr},
  };
  for (const TRow& Row : Rows) {
    SCOPED_TRACE(Utf8(Row.Name) + " as " + std::to_string(Row.NameType) + " kind " +
                 std::to_string(Row.MainKind));
    EXPECT_EQ(TLxTypes::GetTypeInfo(Row.Name, Row.NameType, false, Row.MainKind),
              TLxTypes::GetTypeInfo(Row.Expected));
  }
}

TEST(TypeRegistry, UnknownNameRaisesWhenAsked) {
  ExpectRaises<EArgumentException>(
      [] { TLxTypes::GetTypeInfo(u"ns:Nothing", ltnSchema, /*ARaiseIfNotFound=*/true); },
      u"Unknown type \"ns:Nothing\"");
  ExpectRaises<EArgumentException>(
      [] { TLxTypes::GetTypeInfo(u"string", ltnSchema, /*ARaiseIfNotFound=*/true, lmkArray); },
      u"Unknown type \"string\"");
}

TEST(TypeRegistry, ArrayOfAnUndeclaredElementIsMadeFromItsName) {
  DescribeShop();
  // Nobody declares std::vector<TColor> in these tests.
  const TLxTypeInfo* Array = TLxTypes::GetTypeInfo(u"ns:ArrayOfTColor", ltnSchema, false, lmkArray);
  ASSERT_NE(Array, nullptr);
  EXPECT_EQ(Array->GetTypeKind(), ltkDynArray);
  EXPECT_EQ(Array->GetKind(), tkDynArray);
  EXPECT_EQ(Array->GetDescription()->ElementType(), TLxTypes::GetTypeInfo<TColor>());
  EXPECT_EQ(Array->GetQualifiedName(), u"System.TArray<Shop.TColor>");
  EXPECT_EQ(Array->SchemaName(), u"ArrayOfTColor");
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"arrayoftcolor", ltnSchema), Array);
  EXPECT_EQ(TLxTypes::GetTypeInfo(Array->GetHandle()), Array);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"ArrayOfTColor", ltnSchema, false, lmkInteger), nullptr);
  // It serves names and element types; a value of it can't be made.
  ExpectRaises<EInvalidCast>([&] { TValue::Make(nullptr, Array->GetHandle()); },
                             u"Values of type System.TArray<Shop.TColor> can't be made");

  const TLxTypeInfo* Nested = TLxTypes::GetTypeInfo(u"ArrayOfArrayOfTColor", ltnSchema);
  ASSERT_NE(Nested, nullptr);
  EXPECT_EQ(Nested->GetDescription()->ElementType(), Array);
  EXPECT_EQ(Nested->SchemaName(u"ns"), u"ns:ArrayOfArrayOfTColor");
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"ArrayOfNothing", ltnSchema), nullptr);

  // A document may nest the prefix as often as it likes; the registry makes only so many levels.
  auto Nesting = [](std::size_t ADepth) {
    UnicodeString Name;
    for (std::size_t I = 0; I < ADepth; ++I)
      Name += u"ArrayOf";
    return Name + u"TColor";
  };
  const auto Deepest = static_cast<std::size_t>(cLxMaxUndeclaredArrayDepth);
  const TLxTypeInfo* Deep = TLxTypes::GetTypeInfo(Nesting(Deepest), ltnSchema);
  ASSERT_NE(Deep, nullptr);
  EXPECT_EQ(Utf8(Deep->SchemaName()), Utf8(Nesting(Deepest)));
  EXPECT_EQ(TLxTypes::GetTypeInfo(Nesting(Deepest + 1), ltnSchema), nullptr);
  EXPECT_EQ(TLxTypes::GetTypeInfo(Nesting(100000), ltnSchema, false, lmkArray), nullptr);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"ArrayOf", ltnSchema), nullptr);
}

TEST(TypeRegistry, SchemaNameOfAClassFindsTheClassAgain) {
  DescribeShop();
  for (TLxTypeHandle Handle :
       {TypeHandle<TCustomer*>(), TypeHandle<TVipCustomer*>(), TypeHandle<TShape*>(),
        TypeHandle<TWidget*>(), TypeHandle<std::vector<TCustomer*>>()}) {
    const TLxTypeInfo* Info = TLxTypes::GetTypeInfo(Handle);
    SCOPED_TRACE(Utf8(Info->GetQualifiedName()));
    for (std::u16string_view Prefix : {u"", u"ns", u"tns1"}) {
      const UnicodeString Name = Info->SchemaName(Prefix);
      EXPECT_EQ(Name.find(u':') != UnicodeString::npos, !Prefix.empty());
      EXPECT_EQ(TLxTypes::GetTypeInfo(Name, ltnSchema), Info) << Utf8(Name);
    }
  }
  EXPECT_EQ(TLxTypes::GetTypeInfo<TCustomer*>()->SchemaName(u"ns"), u"ns:TCustomer");
  EXPECT_EQ(TLxTypes::GetTypeInfo<std::vector<TCustomer*>>()->SchemaName(), u"ArrayOfTCustomer");
}

TEST(TypeRegistry, ClassesAreOneTypeByHandleClassAndName) {
  DescribeShop();
  const TLxTypeInfo* Info = TLxTypes::GetTypeInfo<TCustomer*>();
  EXPECT_EQ(TLxTypes::GetTypeInfo(TCustomer::StaticClass()), Info);
  EXPECT_EQ(TypeHandle<TCustomer*>(), LxClassTypeHandle(TCustomer::StaticClass()));
  EXPECT_EQ(Info->GetTypeKind(), ltkClass);
  EXPECT_EQ(Info->GetKind(), tkClass);
  EXPECT_EQ(Info->GetQualifiedName(), u"Shop.TCustomer");
  EXPECT_EQ(Info->GetDescription()->MetaclassType(), TCustomer::StaticClass());
  EXPECT_EQ(Info->GetDescription()->BaseType(), TLxTypes::GetTypeInfo<TParty*>());
  // A class that nobody described is named by its metaclass.
  const TLxTypeInfo* Vip = TLxTypes::GetTypeInfo(TVipCustomer::StaticClass());
  EXPECT_EQ(Vip->GetName(), u"TVipCustomer");
  EXPECT_EQ(Vip->GetQualifiedName(), u"TVipCustomer");
  EXPECT_FALSE(Vip->GetDescription()->GetIsDescribed());
  EXPECT_EQ(Vip->GetDescription()->BaseType(), Info);
}

TEST(TypeRegistry, VirtualArrayTypeSharesHandleAndNames) {
  DescribeShop();
  const TLxTypeInfo* Info = TLxTypes::GetTypeInfo<TCustomer*>();
  const TLxTypeInfo* View = Info->VirtualType(lsdArray);
  ASSERT_NE(View, Info);
  EXPECT_EQ(View->GetTypeKind(), ltkDynArray);
  EXPECT_EQ(View->GetKind(), tkDynArray);
  EXPECT_EQ(View->GetHandle(), Info->GetHandle());
  EXPECT_EQ(View->GetQualifiedName(), u"Shop.TCustomer");
  EXPECT_EQ(Info->VirtualType(lsdArray), View);
  EXPECT_EQ(Info->VirtualType(lsdObject), Info);
  EXPECT_EQ(Info->VirtualType(lsdNone), Info);
}

TEST(TypeRegistry, AliasesNameTheTypeInDocuments) {
  LxDescribeRecord<Billing::TInvoice>(u"Billing.TInvoice")
      .Field(u"Number", &Billing::TInvoice::Number);
  const TLxTypeHandle Invoice = TypeHandle<Billing::TInvoice>();
  TLxTypes::RegisterTypeAlias(Invoice, {u"invoice", u"bill"});
  TLxTypes::RegisterTypeAlias(Invoice, u"receipt");
  const TLxTypeInfo* Info = TLxTypes::GetTypeInfo(Invoice);
  EXPECT_EQ(Info->SchemaName(), u"invoice");
  EXPECT_EQ(Info->SchemaName(u"b"), u"b:invoice");
  for (std::u16string_view Name : {u"invoice", u"BILL", u"b:receipt", u"TInvoice"})
    EXPECT_EQ(TLxTypes::GetTypeInfo(Name, ltnSchema), Info) << Utf8(Name);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"bill", ltnName), nullptr);
  // The array of an aliased element is named after the alias.
  EXPECT_EQ(TLxTypes::GetTypeInfo<std::vector<Billing::TInvoice>>()->SchemaName(),
            u"ArrayOfInvoice");
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"ArrayOfInvoice", ltnSchema, false, lmkArray),
            TLxTypes::GetTypeInfo<std::vector<Billing::TInvoice>>());

  // Aliases given before the type is described stay.
  TLxTypes::RegisterTypeAlias(TypeHandle<Billing::TStatus>(), {u"status", u"state"});
  LxDescribeEnum<Billing::TStatus>(u"Billing.TStatus", {u"stOpen", u"stPaid"});
  const TLxTypeInfo* Status = TLxTypes::GetTypeInfo<Billing::TStatus>();
  EXPECT_EQ(Status->SchemaName(), u"status");
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"status", ltnSchema), Status);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"state", ltnSchema), Status);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"TStatus", ltnName), Status);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"Billing.TStatus", ltnQualified), Status);
}

TEST(TypeRegistry, DescribingATypeTwiceRaises) {
  DescribeShop();
  ExpectRaises<EInvalidOperation>([] { LxDescribeEnum<TColor>(u"Shop.TColor", {u"clRed"}); },
                                  u"Type Shop.TColor is already described");
  ExpectRaises<EInvalidOperation>([] { LxDescribeRecord<TValue>(u"Shop.TValue"); },
                                  u"Type System.Rtti.TValue is already described");
  // The first description stands.
  EXPECT_EQ(TLxTypes::GetTypeInfo<TColor>()->GetDescription()->GetEnumNames().size(), 3u);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"Shop.TValue", ltnQualified), nullptr);
}

TEST(TypeRegistry, FindSerializersFallsBackAlongAncestorsToTheDefault) {
  DescribeShop();
  const TLxRegisteredSerializers Default{TFakeSerializer::StaticClass(),
                                         TFakeDeserializer::StaticClass()};
  const TLxRegisteredSerializers ForParty{TOtherSerializer::StaticClass(), nullptr};
  const TLxRegisteredSerializers ForCustomer{nullptr, TOtherSerializer::StaticClass()};
  const TLxRegisteredSerializers ForInteger{TOtherSerializer::StaticClass(),
                                            TOtherSerializer::StaticClass()};
  TLxTypes::RegisterTypeSerializers(nullptr, ldsFormat3, Default);
  TLxTypes::RegisterTypeSerializers(TypeHandle<TParty*>(), ldsFormat3, ForParty);
  TLxTypes::RegisterTypeSerializers(TypeHandle<TCustomer*>(), ldsFormat4, ForCustomer);
  TLxTypes::RegisterTypeSerializers(TypeHandle<Integer>(), ldsFormat3, ForInteger);

  struct TRow {
    const TLxTypeInfo* Info;
    TLxDataSerializationFormatType Format;
    const TLxRegisteredSerializers* Expected;
  };
  const TRow Rows[] = {
      {nullptr, ldsFormat3, &Default},
      {nullptr, ldsFormat2, nullptr},
      {nullptr, ldsFormat4, nullptr},
      {TLxTypes::GetTypeInfo<TParty*>(), ldsFormat3, &ForParty},
      {TLxTypes::GetTypeInfo<TCustomer*>(), ldsFormat3, &ForParty},
      {TLxTypes::GetTypeInfo<TVipCustomer*>(), ldsFormat3, &ForParty},
      {TLxTypes::GetTypeInfo<TVipCustomer*>(), ldsFormat4, &ForCustomer},
      {TLxTypes::GetTypeInfo<TParty*>(), ldsFormat4, nullptr},
      {TLxTypes::GetTypeInfo<TShape*>(), ldsFormat3, &Default},
      {TLxTypes::GetTypeInfo<Integer>(), ldsFormat3, &ForInteger},
      {TLxTypes::GetTypeInfo<Int64>(), ldsFormat3, &Default},
      {TLxTypes::GetTypeInfo<TCustomer*>(), ldsFormat2, nullptr},
  };
  for (std::size_t I = 0; I < std::size(Rows); ++I) {
    SCOPED_TRACE("row " + std::to_string(I));
    const TLxRegisteredSerializers* Found = TLxTypes::FindSerializers(Rows[I].Info, Rows[I].Format);
    if (!Rows[I].Expected) {
      EXPECT_EQ(Found, nullptr);
      continue;
    }
    ASSERT_NE(Found, nullptr);
    EXPECT_EQ(Found->SerializerClass, Rows[I].Expected->SerializerClass);
    EXPECT_EQ(Found->DeserializerClass, Rows[I].Expected->DeserializerClass);
  }

  // Registering again replaces the entry.
  TLxTypes::RegisterTypeSerializers(TypeHandle<TParty*>(), ldsFormat3, ForCustomer);
  const TLxRegisteredSerializers* Replaced =
      TLxTypes::FindSerializers(TLxTypes::GetTypeInfo<TVipCustomer*>(), ldsFormat3);
  ASSERT_NE(Replaced, nullptr);
  EXPECT_EQ(Replaced->SerializerClass, nullptr);
  EXPECT_EQ(Replaced->DeserializerClass, TOtherSerializer::StaticClass());
}

TEST(TypeRegistry, VariantTypeCodesOfNamedTypes) {
  DescribeShop();
  struct TRow {
    std::u16string_view Name;
    TLxTypeNameType NameType;
    TVarType Expected;
  };
  const TRow Rows[] = {
      {u"int", ltnSchema, varInteger},
      {u"xsd:int", ltnSchema, varInteger},
      {u"string", ltnSchema, varUString},
      {u"dateTime", ltnSchema, varDate},
      {u"date", ltnSchema, varDate},
      {u"boolean", ltnSchema, varBoolean},
      {u"anyType", ltnSchema, varVariant},
      {u"long", ltnSchema, varInt64},
      {u"unsignedByte", ltnSchema, varByte},
      {u"byte", ltnSchema, varShortInt},
      {u"short", ltnSchema, varSmallint},
      {u"unsignedInt", ltnSchema, varLongWord},
      {u"unsignedLong", ltnSchema, varUInt64},
      {u"double", ltnSchema, varDouble},
      {u"float", ltnSchema, varSingle},
      {u"Integer", ltnName, varInteger},
      {u"System.Int64", ltnQualified, varInt64},
      {u"Char", ltnName, varUString},
      {u"TCustomer", ltnSchema, varError},
      {u"TColor", ltnName, varError},
      {u"ArrayOfString", ltnSchema, varError},
      {u"nothing", ltnSchema, varError},
  };
  for (const TRow& Row : Rows)
    EXPECT_EQ(TLxTypes::GetVarType(Row.Name, Row.NameType, varError), Row.Expected)
        << Utf8(Row.Name);
}

TEST(TypeRegistry, TypeAndMainKindOfWhatAVariantHolds) {
  TOwned<TLxObject> Object(New<TLxObject>());
  Object->SetAutoDestroy(false);
  struct TRow {
    Variant Value;
    TLxTypeHandle Expected;
    TLxMainTypeKind MainKind;
  };
  const TRow Rows[] = {
      {Variant(), TypeHandle<Variant>(), lmkNone},
      {Null(), TypeHandle<Variant>(), lmkNone},
      {Variant(Integer(5)), TypeHandle<Integer>(), lmkInteger},
      {Variant(Int64(5)), TypeHandle<Int64>(), lmkInteger},
      {Variant(Byte(5)), TypeHandle<Byte>(), lmkInteger},
      {Variant(UInt64(5)), TypeHandle<UInt64>(), lmkInteger},
      {Variant(SmallInt(5)), TypeHandle<SmallInt>(), lmkInteger},
      {Variant(1.5), TypeHandle<Double>(), lmkFloat},
      {Variant(1.5f), TypeHandle<Single>(), lmkFloat},
      {Variant(u"x"), TypeHandle<UnicodeString>(), lmkString},
      {Variant(RawByteString("x")), TypeHandle<UnicodeString>(), lmkString},
      {Variant(true), TypeHandle<bool>(), lmkBoolean},
      {Variant(TDateTime(2.5)), TypeHandle<TDateTime>(), lmkDateTime},
      {Variant(static_cast<IInterface*>(Object.get())), TypeHandle<IPtr<IInterface>>(), lmkNone},
      {VarArrayOf({Variant(1), Variant(2)}), TypeHandle<Variant>(), lmkArray},
  };
  for (std::size_t I = 0; I < std::size(Rows); ++I) {
    SCOPED_TRACE("row " + std::to_string(I));
    EXPECT_EQ(TLxTypes::VarTypeInfo(Rows[I].Value), TLxTypes::GetTypeInfo(Rows[I].Expected));
    EXPECT_EQ(TLxTypes::VarMainTypeKind(Rows[I].Value), Rows[I].MainKind);
  }
}
