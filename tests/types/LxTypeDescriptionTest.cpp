// Type descriptions: members along the ancestors, look-ups by name, values read and written
// through fields and properties, indexed properties, methods and constructors, annotations,
// element types, enumerations, sets, interfaces and simple value classes.
#include "ShopTypes.h"
#include "support/TestHelpers.h"

#include <array>
#include <optional>

using namespace lorvane;
using namespace lorvane::test;
using namespace Shop;

namespace {

std::string Utf8(std::u16string_view AText) { return StringToUTF8(AText); }

const TLxTypeDescription& DescriptionOf(TLxTypeHandle AHandle) {
  return *TLxTypes::GetTypeInfo(AHandle)->GetDescription();
}

template <class M> std::vector<std::string> NamesOf(const std::vector<const M*>& AMembers) {
  std::vector<std::string> Names;
  for (const M* Member : AMembers)
    Names.push_back(Utf8(Member->GetName()));
  return Names;
}

class TypeDescription : public LiveObjectsTest {
protected:
  // The description's annotations live as long as the process: made before the count starts.
  void SetUp() override {
    DescribeShop();
    LiveObjectsTest::SetUp();
  }
};

/// A value class that wraps an Integer and may be unset.
class TNullableInteger : public TLxCustomSimpleType {
  LX_CLASS(TNullableInteger, TLxCustomSimpleType)
  TNullableInteger() = default;
  const TLxTypeInfo* GetValueTypeInfo() const override { return TLxTypes::GetTypeInfo<Integer>(); }
  Variant GetValueAsVariant() const override { return FValue ? Variant(*FValue) : Variant(); }
  void SetValueFrom(const TValue& AValue) override {
    if (AValue.GetIsEmpty())
      FValue.reset();
    else
      FValue = AValue.ToInteger();
  }

protected:
  ~TNullableInteger() override = default;

private:
  std::optional<Integer> FValue;
};

} // namespace

TEST_F(TypeDescription, OwnMembersComeFirstThenEachAncestorsFromTheNearest) {
  struct TRow {
    TLxTypeHandle Handle;
    std::vector<std::string> Properties, Fields;
  };
  const TRow Rows[] = {
      {TypeHandle<TParty*>(), {"Name", "Display"}, {"FId"}},
      {TypeHandle<TCustomer*>(),
       {"Display", "Level", "Secret", "Name", "Display"},
       {"Address", "Scores", "Colors", "Color", "FId"}},
      {TypeHandle<TVipCustomer*>(),
       {"Display", "Level", "Secret", "Name", "Display"},
       {"Address", "Scores", "Colors", "Color", "FId"}},
      {TypeHandle<TAddress>(), {"City"}, {"Street", "Zip"}},
      {TypeHandle<TShape*>(), {}, {}},
  };
  for (const TRow& Row : Rows) {
    const TLxTypeDescription& Description = DescriptionOf(Row.Handle);
    SCOPED_TRACE(Utf8(Description.GetQualifiedName()));
    EXPECT_EQ(NamesOf(Description.GetProperties()), Row.Properties);
    EXPECT_EQ(NamesOf(Description.GetFields()), Row.Fields);
  }
  // The overriding property is the one found, and it reads through the override.
  const TLxTypeDescription& Customer = DescriptionOf(TypeHandle<TCustomer*>());
  const TLxTypeDescription& Party = DescriptionOf(TypeHandle<TParty*>());
  EXPECT_EQ(Customer.GetProperty(u"Display"), Customer.GetProperties()[0]);
  EXPECT_NE(Customer.GetProperty(u"Display"), Party.GetProperty(u"Display"));
  EXPECT_EQ(Customer.GetProperty(u"Name"), Party.GetProperty(u"Name"));
  TOwned<TCustomer> Ann(New<TCustomer>());
  Ann->SetName(u"Ann");
  EXPECT_EQ(Customer.GetProperty(u"display")->GetValue(Ann.get()).AsString(), u"customer Ann");
}

TEST_F(TypeDescription, LookUpsIgnoreLetterCase) {
  const TLxTypeDescription& Vip = DescriptionOf(TypeHandle<TVipCustomer*>());
  struct TRow {
    const TLxMemberDescription* Found;
    const char* Expected;
  };
  const TRow Rows[] = {
      {Vip.GetProperty(u"name"), "Name"},
      {Vip.GetProperty(u"NAME"), "Name"},
      {Vip.GetProperty(u"lEvEl"), "Level"},
      {Vip.GetProperty(u"Address"), nullptr},
      {Vip.GetProperty(u""), nullptr},
      {Vip.GetField(u"fid"), "FId"},
      {Vip.GetField(u"ADDRESS"), "Address"},
      {Vip.GetField(u"Name"), nullptr},
      {Vip.GetIndexedProperty(u"items"), "Items"},
      {Vip.GetIndexedProperty(u"Name"), nullptr},
      {Vip.GetMethod(u"ADD"), "Add"},
      {Vip.GetMethod(u"rename"), "Rename"},
      {Vip.GetMethod(u"create"), "Create"},
      {Vip.GetMethod(u"Nothing"), nullptr},
      {DescriptionOf(TypeHandle<TAddress>()).GetField(u"zip"), "Zip"},
      {DescriptionOf(TypeHandle<TAddress>()).GetMethod(u"LABEL"), "Label"},
      {DescriptionOf(TypeHandle<TAddress>()).GetMethod(u"Create"), nullptr},
  };
  for (std::size_t I = 0; I < std::size(Rows); ++I) {
    SCOPED_TRACE("row " + std::to_string(I));
    if (!Rows[I].Expected) {
      EXPECT_EQ(Rows[I].Found, nullptr);
      continue;
    }
    ASSERT_NE(Rows[I].Found, nullptr);
    EXPECT_EQ(Utf8(Rows[I].Found->GetName()), Rows[I].Expected);
  }
}

TEST_F(TypeDescription, MembersKnowTheirTypesVisibilityAndAccess) {
  const TLxTypeDescription& Customer = DescriptionOf(TypeHandle<TCustomer*>());
  struct TFieldRow {
    std::u16string_view Name;
    TLxTypeHandle Type;
    TLxMemberVisibility Visibility;
  };
  for (const TFieldRow& Row : {TFieldRow{u"FId", TypeHandle<Integer>(), mvPrivate},
                               TFieldRow{u"Address", TypeHandle<TAddress>(), mvPublic},
                               TFieldRow{u"Scores", TypeHandle<std::vector<Integer>>(), mvPublic},
                               TFieldRow{u"Colors", TypeHandle<TColors>(), mvPublic},
                               TFieldRow{u"Color", TypeHandle<TColor>(), mvPublic}}) {
    const TLxFieldDescription* Field = Customer.GetField(Row.Name);
    ASSERT_NE(Field, nullptr) << Utf8(Row.Name);
    EXPECT_EQ(Field->GetFieldType(), TLxTypes::GetTypeInfo(Row.Type)) << Utf8(Row.Name);
    EXPECT_EQ(Field->GetVisibility(), Row.Visibility) << Utf8(Row.Name);
  }
  struct TPropertyRow {
    std::u16string_view Name;
    TLxTypeHandle Type;
    TLxMemberVisibility Visibility;
    bool Readable, Writable;
  };
  for (const TPropertyRow& Row :
       {TPropertyRow{u"Name", TypeHandle<UnicodeString>(), mvStreamable, true, true},
        TPropertyRow{u"Display", TypeHandle<UnicodeString>(), mvStreamable, true, false},
        TPropertyRow{u"Level", TypeHandle<Integer>(), mvPublic, true, true},
        TPropertyRow{u"Secret", TypeHandle<Integer>(), mvStreamable, false, true}}) {
    const TLxPropertyDescription* Property = Customer.GetProperty(Row.Name);
    ASSERT_NE(Property, nullptr) << Utf8(Row.Name);
    EXPECT_EQ(Property->GetPropertyType(), TLxTypes::GetTypeInfo(Row.Type)) << Utf8(Row.Name);
    EXPECT_EQ(Property->GetVisibility(), Row.Visibility) << Utf8(Row.Name);
    EXPECT_EQ(Property->GetIsReadable(), Row.Readable) << Utf8(Row.Name);
    EXPECT_EQ(Property->GetIsWritable(), Row.Writable) << Utf8(Row.Name);
  }
}

TEST_F(TypeDescription, FieldsAndPropertiesReadAndWriteInPlaceWithConversion) {
  const TLxTypeDescription& Customer = DescriptionOf(TypeHandle<TCustomer*>());
  TOwned<TCustomer> Ann(New<TCustomer>());
  TObject* Instance = Ann.get();

  Customer.GetProperty(u"Name")->SetValue(Instance, TValue::From(u"Ann"));
  Customer.GetProperty(u"Level")->SetValue(Instance, TValue::From(u"7"));
  Customer.GetProperty(u"Secret")->SetValue(Instance, TValue::From(Int64(9)));
  Customer.GetField(u"FId")->SetValue(Instance, TValue::From(Byte(42)));
  Customer.GetField(u"Colors")->SetValue(Instance, TValue::From(u"[clRed, clBlue]"));
  Customer.GetField(u"Color")->SetValue(Instance, TValue::From(u"CLGREEN"));
  EXPECT_EQ(Ann->FName, u"Ann");
  EXPECT_EQ(Ann->Level, 7);
  EXPECT_EQ(Ann->FSecret, 9);
  EXPECT_EQ(Ann->FId, 42);
  EXPECT_TRUE(Ann->Colors == TColors({TColor::clRed, TColor::clBlue}));
  EXPECT_EQ(Ann->Color, TColor::clGreen);
  EXPECT_EQ(Customer.GetProperty(u"Name")->GetValue(Instance).AsString(), u"Ann");
  EXPECT_EQ(Customer.GetProperty(u"Level")->GetValue(Instance).AsInteger(), 7);
  EXPECT_EQ(Customer.GetField(u"Colors")->GetValue(Instance).ToString(), u"[clRed,clBlue]");
  EXPECT_EQ(Customer.GetField(u"Color")->GetValue(Instance).ToString(), u"clGreen");
  Customer.GetField(u"Color")->SetValue(Instance, TValue::From(2));
  EXPECT_EQ(Ann->Color, TColor::clBlue);

  // A record field is read as a copy and written back whole.
  const TLxTypeDescription& Address = DescriptionOf(TypeHandle<TAddress>());
  TValue Home = Customer.GetField(u"Address")->GetValue(Instance);
  Address.GetField(u"Street")->SetValue(Home.GetReferenceToRawData(), TValue::From(u"Main St"));
  Address.GetProperty(u"City")->SetValue(Home.GetReferenceToRawData(), TValue::From(u"Ghent"));
  EXPECT_EQ(Ann->Address.Street, u"");
  Customer.GetField(u"Address")->SetValue(Instance, Home);
  EXPECT_EQ(Ann->Address.Street, u"Main St");
  EXPECT_EQ(Ann->Address.City, u"Ghent");
  EXPECT_EQ(Address.GetProperty(u"City")->GetValue(&Ann->Address).AsString(), u"Ghent");

  // What doesn't convert leaves the member as it was.
  struct TBad {
    const char* What;
    std::function<void()> Action;
    std::u16string_view Message;
  };
  const TBad Failures[] = {
      {"text into an Integer property",
       [&] { Customer.GetProperty(u"Level")->SetValue(Instance, TValue::From(u"x")); },
       u"Invalid class typecast"},
      {"ordinal outside the enumeration",
       [&] { Customer.GetField(u"Color")->SetValue(Instance, TValue::From(5)); },
       u"Invalid class typecast"},
      {"unknown set element",
       [&] { Customer.GetField(u"Colors")->SetValue(Instance, TValue::From(u"[clPink]")); },
       u"Invalid class typecast"},
      {"object into an Integer field",
       [&] { Customer.GetField(u"FId")->SetValue(Instance, TValue::From(Ann.get())); },
       u"Invalid class typecast"},
      {"record of another type",
       [&] { Customer.GetField(u"Address")->SetValue(Instance, TValue::From(5)); },
       u"Invalid class typecast"},
  };
  for (const TBad& Bad : Failures) {
    SCOPED_TRACE(Bad.What);
    ExpectRaises<EInvalidCast>(Bad.Action, Bad.Message);
  }
  EXPECT_EQ(Ann->Level, 7);
  EXPECT_EQ(Ann->Color, TColor::clBlue);
  EXPECT_EQ(Ann->FId, 42);
  ExpectRaises<EInvalidOperation>(
      [&] { Customer.GetProperty(u"Display")->SetValue(Instance, TValue::From(u"x")); },
      u"Property Display is read-only");
  ExpectRaises<EInvalidOperation>([&] { Customer.GetProperty(u"Secret")->GetValue(Instance); },
                                  u"Property Secret is not readable");
}

TEST_F(TypeDescription, IndexedPropertiesTakeExactlyOneIndex) {
  const TLxTypeDescription& Customer = DescriptionOf(TypeHandle<TCustomer*>());
  TOwned<TCustomer> Ann(New<TCustomer>());
  const TLxIndexedPropertyDescription* Items = Customer.GetIndexedProperty(u"Items");
  const TLxIndexedPropertyDescription* Score = Customer.GetIndexedProperty(u"Score");
  ASSERT_NE(Items, nullptr);
  ASSERT_NE(Score, nullptr);
  EXPECT_EQ(Items->GetPropertyType(), TLxTypes::GetTypeInfo<UnicodeString>());
  EXPECT_EQ(Items->GetVisibility(), mvPublic);
  EXPECT_EQ(Items->GetValue(Ann.get(), {TValue::From(1)}).AsString(), u"b");
  EXPECT_EQ(Items->GetValue(Ann.get(), {TValue::From(u"2")}).AsString(), u"c");
  Items->SetValue(Ann.get(), {TValue::From(Byte(0))}, TValue::From(u"z"));
  EXPECT_EQ(Ann->FItems[0], u"z");
  EXPECT_EQ(Score->GetValue(Ann.get(), {TValue::From(u"abcd")}).AsInteger(), 4);

  const std::vector<TValue> NoIndex;
  const std::vector<TValue> TwoIndexes{TValue::From(0), TValue::From(1)};
  ExpectRaises<EInvalidCast>([&] { Items->GetValue(Ann.get(), NoIndex); },
                             u"Parameter count mismatch");
  ExpectRaises<EInvalidCast>([&] { Items->SetValue(Ann.get(), TwoIndexes, TValue::From(u"q")); },
                             u"Parameter count mismatch");
  ExpectRaises<EInvalidCast>([&] { Items->GetValue(Ann.get(), {TValue::From(u"one")}); },
                             u"Invalid class typecast");
  ExpectRaises<EInvalidCast>([&] { Score->SetValue(Ann.get(), NoIndex, TValue::From(1)); },
                             u"Parameter count mismatch");
  ExpectRaises<EInvalidOperation>(
      [&] { Score->SetValue(Ann.get(), {TValue::From(u"a")}, TValue::From(1)); },
      u"Property Score is read-only");
  EXPECT_EQ(Ann->FItems, (std::vector<UnicodeString>{u"z", u"b", u"c"}));
}

TEST_F(TypeDescription, MethodsDescribeTheirParametersAndInvoke) {
  const TLxTypeDescription& Vip = DescriptionOf(TypeHandle<TVipCustomer*>());
  TOwned<TVipCustomer> Bob(New<TVipCustomer>());
  const TLxMethodDescription* Add = Vip.GetMethod(u"Add");
  const TLxMethodDescription* Rename = Vip.GetMethod(u"Rename");
  ASSERT_NE(Add, nullptr);
  ASSERT_NE(Rename, nullptr);
  EXPECT_FALSE(Add->GetIsConstructor());
  EXPECT_EQ(Add->GetReturnType(), TLxTypes::GetTypeInfo<Integer>());
  EXPECT_EQ(Rename->GetReturnType(), nullptr);
  struct TParameterRow {
    const TLxMethodDescription* Method;
    std::vector<std::string> Names;
    std::vector<TLxTypeHandle> Types;
  };
  for (const TParameterRow& Row :
       {TParameterRow{Add, {"A", "B"}, {TypeHandle<Integer>(), TypeHandle<Integer>()}},
        TParameterRow{
            Rename, {"APrefix", "A2"}, {TypeHandle<UnicodeString>(), TypeHandle<Integer>()}}}) {
    SCOPED_TRACE(Utf8(Row.Method->GetName()));
    ASSERT_EQ(Row.Method->GetParameters().size(), Row.Names.size());
    for (std::size_t I = 0; I < Row.Names.size(); ++I) {
      EXPECT_EQ(Utf8(Row.Method->GetParameters()[I].GetName()), Row.Names[I]);
      EXPECT_EQ(Row.Method->GetParameters()[I].GetParamType(), TLxTypes::GetTypeInfo(Row.Types[I]));
    }
  }

  EXPECT_EQ(Add->Invoke(Bob.get(), {TValue::From(2), TValue::From(u"3")}).AsInteger(), 5);
  const TValue Nothing = Rename->Invoke(Bob.get(), {TValue::From(u"guest"), TValue::From(7.0)});
  EXPECT_TRUE(Nothing.GetIsEmpty());
  EXPECT_EQ(Bob->FName, u"guest7");
  TAddress Home{u"Main St", 9000, u"Ghent"};
  EXPECT_EQ(DescriptionOf(TypeHandle<TAddress>()).GetMethod(u"Label")->Invoke(&Home, {}).AsString(),
            u"Main St, Ghent");

  const std::vector<TValue> One{TValue::From(1)};
  const std::vector<TValue> Three{TValue::From(1), TValue::From(2), TValue::From(3)};
  ExpectRaises<EInvalidCast>([&] { Add->Invoke(Bob.get(), One); }, u"Parameter count mismatch");
  ExpectRaises<EInvalidCast>([&] { Add->Invoke(Bob.get(), Three); }, u"Parameter count mismatch");
  ExpectRaises<EInvalidCast>(
      [&] {
        Add->Invoke(Bob.get(), {TValue::From(1), TValue::From(u"x")});
      },
      u"Invalid class typecast");
  ExpectRaises<EInvalidCast>(
      [&] {
        Rename->Invoke(Bob.get(), {TValue::From(Bob.get()), TValue::From(1)});
      },
      u"Invalid class typecast");
  EXPECT_EQ(Bob->FName, u"guest7");
}

TEST_F(TypeDescription, CreateMakesAnObjectOfExactlyTheClass) {
  struct TRow {
    TClass Class;
    std::size_t Parameters;
  };
  for (const TRow& Row : {TRow{TCustomer::StaticClass(), 0}, TRow{TVipCustomer::StaticClass(), 0},
                          TRow{TWidget::StaticClass(), 1}}) {
    const TLxTypeDescription& Description = *TLxTypes::GetTypeInfo(Row.Class)->GetDescription();
    SCOPED_TRACE(Utf8(Description.GetName()));
    const TLxMethodDescription* Create = Description.GetMethod(u"Create");
    ASSERT_NE(Create, nullptr);
    EXPECT_TRUE(Create->GetIsConstructor());
    EXPECT_EQ(Create->GetReturnType(), TLxTypes::GetTypeInfo(Row.Class));
    ASSERT_EQ(Create->GetParameters().size(), Row.Parameters);
    std::vector<TValue> Arguments;
    if (Row.Parameters == 1) {
      EXPECT_EQ(Create->GetParameters()[0].GetName(), u"AOwner");
      EXPECT_EQ(Create->GetParameters()[0].GetParamType(), TLxTypes::GetTypeInfo<TComponent*>());
      Arguments.push_back(TValue::Empty());
    }
    TValue Made = Create->Invoke(nullptr, Arguments);
    EXPECT_EQ(Made.GetTypeInfo(), LxClassTypeHandle(Row.Class));
    TOwned<TObject> Object(Made.AsObject());
    ASSERT_NE(Object, nullptr);
    EXPECT_EQ(Object->ClassType(), Row.Class);
  }

  // With an owner, the owner frees what it made.
  const TLxMethodDescription* CreateWidget =
      DescriptionOf(TypeHandle<TWidget*>()).GetMethod(u"Create");
  {
    TOwned<TComponent> Owner(New<TComponent>(nullptr));
    TObject* Widget = CreateWidget->Invoke(nullptr, {TValue::From(Owner.get())}).AsObject();
    ASSERT_EQ(Owner->GetComponentCount(), 1);
    EXPECT_EQ(Owner->GetComponents(0), Widget);
  }
  ExpectRaises<EInvalidCast>([&] { CreateWidget->Invoke(nullptr, {}); },
                             u"Parameter count mismatch");
  ExpectRaises<EInvalidCast>([&] { CreateWidget->Invoke(nullptr, {TValue::From(1)}); },
                             u"Invalid class typecast");

  // A class that its metaclass can't make has no constructor, not even an ancestor's.
  EXPECT_EQ(DescriptionOf(TypeHandle<TShape*>()).GetMethod(u"Create"), nullptr);
}

TEST_F(TypeDescription, AnnotationsKeepTheirDeclaredOrder) {
  const TLxFieldDescription* Zip = DescriptionOf(TypeHandle<TAddress>()).GetField(u"Zip");
  ASSERT_EQ(Zip->GetAttributes().size(), 2u);
  struct TRow {
    TSerializerHintOption Option;
    std::u16string_view Value;
  };
  const TRow Expected[] = {{shoName, u"zip"}, {shoRequired, u""}};
  for (std::size_t I = 0; I < 2; ++I) {
    TCustomAttribute* Attribute = Zip->GetAttributes()[I];
    ASSERT_TRUE(Attribute->InheritsFrom(SerializerHint::StaticClass()));
    auto* Hint = static_cast<SerializerHint*>(Attribute);
    EXPECT_EQ(Hint->GetOption(), Expected[I].Option);
    EXPECT_EQ(Hint->GetValue(), Expected[I].Value);
  }
  EXPECT_EQ(Zip->FindHint(shoRequired), Zip->GetAttributes()[1]);
  EXPECT_EQ(Zip->FindHint(shoEnumPrefix), nullptr);
  EXPECT_TRUE(DescriptionOf(TypeHandle<TAddress>()).GetField(u"Street")->GetAttributes().empty());

  // A hint before any member annotates the type.
  const TLxTypeDescription& Party = DescriptionOf(TypeHandle<TParty*>());
  ASSERT_EQ(Party.GetAttributes().size(), 1u);
  EXPECT_EQ(Party.FindHint(shoNodeType)->GetValue(), u"party");
  EXPECT_TRUE(Party.GetField(u"FId")->GetAttributes().empty());
  EXPECT_EQ(DescriptionOf(TypeHandle<TColor>()).FindHint(shoEnumPrefix)->GetValue(), u"cl");
  EXPECT_TRUE(DescriptionOf(TypeHandle<TCustomer*>()).GetAttributes().empty());
}

TEST_F(TypeDescription, ElementTypesAndMetaclasses) {
  struct TRow {
    TLxTypeHandle Handle;
    TLxTypeHandle Element;
    Integer FixedLength;
    TClass Metaclass;
  };
  const TRow Rows[] = {
      {TypeHandle<std::vector<Integer>>(), TypeHandle<Integer>(), 0, nullptr},
      {TypeHandle<std::array<UnicodeString, 2>>(), TypeHandle<UnicodeString>(), 2, nullptr},
      {TypeHandle<std::vector<TCustomer*>>(), TypeHandle<TCustomer*>(), 0, nullptr},
      {TypeHandle<TColors>(), TypeHandle<TColor>(), 0, nullptr},
      {TypeHandle<TFewColors>(), TypeHandle<TColor>(), 0, nullptr},
      {TypeHandle<Integer>(), nullptr, 0, nullptr},
      {TypeHandle<TAddress>(), nullptr, 0, nullptr},
      {TypeHandle<TCustomer*>(), nullptr, 0, TCustomer::StaticClass()},
      {TypeHandle<TObject*>(), nullptr, 0, TObject::StaticClass()},
  };
  for (const TRow& Row : Rows) {
    const TLxTypeDescription& Description = DescriptionOf(Row.Handle);
    SCOPED_TRACE(Utf8(Description.GetQualifiedName()));
    EXPECT_EQ(Description.ElementType(), TLxTypes::GetTypeInfo(Row.Element));
    EXPECT_EQ(Description.GetFixedLength(), Row.FixedLength);
    EXPECT_EQ(Description.MetaclassType(), Row.Metaclass);
  }
  EXPECT_EQ(DescriptionOf(TypeHandle<TObject*>()).BaseType(), nullptr);
}

TEST_F(TypeDescription, RecordsEnumerationsSetsAndInterfaces) {
  struct TRow {
    TLxTypeHandle Handle;
    std::u16string_view Name, QualifiedName;
    TLxTypeKind TypeKind;
    TTypeKind Kind;
    bool Described;
  };
  const TRow Rows[] = {
      {TypeHandle<TAddress>(), u"TAddress", u"Shop.TAddress", ltkRecord, tkRecord, true},
      {TypeHandle<TColor>(), u"TColor", u"Shop.TColor", ltkEnumeration, tkEnumeration, true},
      {TypeHandle<TColors>(), u"TColors", u"Shop.TColors", ltkSet, tkSet, true},
      {TypeHandle<TFewColors>(), u"TSet<TColor>", u"System.TSet<Shop.TColor>", ltkSet, tkSet,
       false},
      {TypeHandle<IPtr<IGreeter>>(), u"IGreeter", u"Shop.IGreeter", ltkInterface, tkInterface,
       true},
      {TypeHandle<IPtr<IUnsupported>>(), u"IUnsupported", u"Shop.IUnsupported", ltkInterface,
       tkInterface, false},
  };
  for (const TRow& Row : Rows) {
    const TLxTypeInfo* Info = TLxTypes::GetTypeInfo(Row.Handle);
    SCOPED_TRACE(Utf8(Row.QualifiedName));
    EXPECT_EQ(Info->GetName(), Row.Name);
    EXPECT_EQ(Info->GetQualifiedName(), Row.QualifiedName);
    EXPECT_EQ(Info->GetTypeKind(), Row.TypeKind);
    EXPECT_EQ(Info->GetKind(), Row.Kind);
    EXPECT_EQ(Info->GetDescription()->GetIsDescribed(), Row.Described);
  }
  EXPECT_TRUE(DescriptionOf(TypeHandle<IPtr<IGreeter>>()).GetInterfaceID() == IGreeter::IID);

  const TLxTypeDescription& Color = DescriptionOf(TypeHandle<TColor>());
  EXPECT_EQ(Color.GetEnumNames(), (std::vector<UnicodeString>{u"clRed", u"clGreen", u"clBlue"}));
  EXPECT_EQ(Color.GetMinValue(), 0);
  EXPECT_EQ(Color.GetMaxValue(), 2);
  struct TNameRow {
    Int64 Ordinal;
    std::u16string_view Name;
  };
  for (const TNameRow& Row :
       {TNameRow{0, u"clRed"}, TNameRow{2, u"clBlue"}, TNameRow{3, u""}, TNameRow{-1, u""}})
    EXPECT_EQ(Color.GetEnumName(Row.Ordinal), Row.Name) << Row.Ordinal;
  struct TValueRow {
    std::u16string_view Name;
    Int64 Ordinal;
  };
  for (const TValueRow& Row : {TValueRow{u"CLBLUE", 2}, TValueRow{u"clgreen", 1},
                               TValueRow{u"Blue", -1}, TValueRow{u"", -1}})
    EXPECT_EQ(Color.GetEnumValue(Row.Name), Row.Ordinal) << Utf8(Row.Name);
  EXPECT_EQ(DescriptionOf(TypeHandle<bool>()).GetEnumNames(),
            (std::vector<UnicodeString>{u"False", u"True"}));
}

TEST_F(TypeDescription, SimpleValueClassesNameTheTypeTheyWrap) {
  EXPECT_EQ(TLxCustomSimpleType::ValueTypeInfoOf(TNullableInteger::StaticClass()),
            TLxTypes::GetTypeInfo<Integer>());
  EXPECT_EQ(TLxCustomSimpleType::ValueTypeInfoOf(TCustomer::StaticClass()), nullptr);
  EXPECT_EQ(TLxCustomSimpleType::ValueTypeInfoOf(TLxCustomSimpleType::StaticClass()), nullptr);
  EXPECT_EQ(TLxCustomSimpleType::ValueTypeInfoOf(nullptr), nullptr);

  TOwned<TNullableInteger> Number(New<TNullableInteger>());
  EXPECT_TRUE(VarIsEmpty(Number->GetValueAsVariant()));
  Number->SetValueFrom(TValue::From(u"12"));
  EXPECT_EQ(Number->GetValueAsVariant().AsInteger(), 12);
  Number->SetValueFrom(TValue::Empty());
  EXPECT_TRUE(VarIsEmpty(Number->GetValueAsVariant()));
}
