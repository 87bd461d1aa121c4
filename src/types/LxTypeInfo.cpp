// Type descriptions: annotations, members, the description's look-ups along the ancestors, the
// names and kinds of the built-in types, and the schema name of a type.
#include "lorvane/types/LxTypeInfo.h"

#include "lorvane/types/LxTypes.h"

namespace lorvane {

// --- annotations ---------------------------------------------------------------------------------
TLxAttributeList::~TLxAttributeList() {
  for (TCustomAttribute* Attribute : FItems)
    Free(Attribute);
}

void TLxAttributeList::Add(TCustomAttribute* AAttribute) {
  if (!AAttribute)
    return;
  try {
    FItems.push_back(AAttribute);
  } catch (...) {
    Free(AAttribute);
    throw;
  }
}

const SerializerHint* TLxAttributeList::FindHint(TSerializerHintOption AOption) const noexcept {
  for (TCustomAttribute* Attribute : FItems)
    if (Attribute->InheritsFrom(SerializerHint::StaticClass()))
      if (auto* Hint = static_cast<const SerializerHint*>(Attribute); Hint->GetOption() == AOption)
        return Hint;
  return nullptr;
}

// --- members -------------------------------------------------------------------------------------
const TLxTypeInfo* TLxFieldDescription::GetFieldType() const {
  return TLxTypes::GetTypeInfo(FType);
}

TValue TLxFieldDescription::GetValue(const void* AInstance) const {
  return TValue::Make(GetAddress(AInstance), FType);
}

void TLxFieldDescription::SetValue(void* AInstance, const TValue& AValue) const {
  if (AValue.GetTypeInfo() == FType && FType) {
    // A value of the field's own type goes in as it is: no conversion, no copy between.
    FType->Ops->Assign(GetAddress(AInstance), AValue.GetReferenceToRawData());
    return;
  }
  TValue Converted;
  if (!AValue.ToType(FType, Converted))
    throw EInvalidCast(u"Invalid class typecast");
  FType->Ops->Assign(GetAddress(AInstance), Converted.GetReferenceToRawData());
}

const TLxTypeInfo* TLxPropertyDescription::GetPropertyType() const {
  return TLxTypes::GetTypeInfo(FType);
}

const TLxTypeInfo* TLxIndexedPropertyDescription::GetPropertyType() const {
  return TLxTypes::GetTypeInfo(FType);
}

const TLxTypeInfo* TLxParameterDescription::GetParamType() const {
  return TLxTypes::GetTypeInfo(FType);
}

const TLxTypeInfo* TLxMethodDescription::GetReturnType() const {
  return TLxTypes::GetTypeInfo(FReturn);
}

// --- the description -----------------------------------------------------------------------------
TLxTypeDescription::~TLxTypeDescription() {
  for (auto* Field : FFields)
    delete Field;
  for (auto* Property : FProperties)
    delete Property;
  for (auto* Property : FIndexedProperties)
    delete Property;
  for (auto* Method : FMethods)
    delete Method;
}

namespace {

// Own members first, then each ancestor's from the nearest upward.
template <class M, class Own>
std::vector<const M*> AlongAncestors(const TLxTypeDescription* AFrom, Own AOwnMembers) {
  std::vector<const M*> Result;
  for (const TLxTypeDescription* Description = AFrom; Description;) {
    for (const M* Member : AOwnMembers(*Description))
      Result.push_back(Member);
    const TLxTypeInfo* Base = Description->BaseType();
    Description = Base ? Base->GetDescription() : nullptr;
  }
  return Result;
}

// The first member named AName in the order of AlongAncestors, without collecting them.
template <class M, class Own>
const M* FirstNamed(const TLxTypeDescription* AFrom, Own AOwnMembers, std::u16string_view AName) {
  for (const TLxTypeDescription* Description = AFrom; Description;) {
    for (const M* Member : AOwnMembers(*Description))
      if (SameText(Member->GetName(), AName))
        return Member;
    const TLxTypeInfo* Base = Description->BaseType();
    Description = Base ? Base->GetDescription() : nullptr;
  }
  return nullptr;
}

} // namespace

template <class M>
const M* TLxTypeDescription::FindByName(const std::vector<M*>& AMembers,
                                        std::u16string_view AName) noexcept {
  for (const M* Member : AMembers)
    if (SameText(Member->GetName(), AName))
      return Member;
  return nullptr;
}

std::vector<const TLxPropertyDescription*> TLxTypeDescription::GetProperties() const {
  return AlongAncestors<TLxPropertyDescription>(
      this, [](const TLxTypeDescription& D) -> const auto& { return D.FProperties; });
}

std::vector<const TLxFieldDescription*> TLxTypeDescription::GetFields() const {
  return AlongAncestors<TLxFieldDescription>(
      this, [](const TLxTypeDescription& D) -> const auto& { return D.FFields; });
}

const TLxFieldDescription* TLxTypeDescription::GetField(std::u16string_view AName) const {
  return FirstNamed<TLxFieldDescription>(
      this, [](const TLxTypeDescription& D) -> const auto& { return D.FFields; }, AName);
}

const TLxPropertyDescription* TLxTypeDescription::GetProperty(std::u16string_view AName) const {
  return FirstNamed<TLxPropertyDescription>(
      this, [](const TLxTypeDescription& D) -> const auto& { return D.FProperties; }, AName);
}

const TLxIndexedPropertyDescription*
TLxTypeDescription::GetIndexedProperty(std::u16string_view AName) const {
  return FirstNamed<TLxIndexedPropertyDescription>(
      this, [](const TLxTypeDescription& D) -> const auto& { return D.FIndexedProperties; }, AName);
}

const TLxMethodDescription* TLxTypeDescription::GetMethod(std::u16string_view AName) const {
  for (const TLxTypeDescription* Description = this; Description;) {
    // An ancestor's constructor would make an object of the ancestor: a class that its
    // metaclass can't make has no "Create".
    if (const TLxMethodDescription* Found = FindByName(Description->FMethods, AName))
      if (Description == this || !Found->GetIsConstructor())
        return Found;
    const TLxTypeInfo* Base = Description->BaseType();
    Description = Base ? Base->GetDescription() : nullptr;
  }
  return nullptr;
}

const TLxTypeInfo* TLxTypeDescription::ElementType() const {
  return TLxTypes::GetTypeInfo(FElementType);
}

const TLxTypeInfo* TLxTypeDescription::BaseType() const {
  if (const TLxTypeInfo* Known = FBaseType.load(std::memory_order_acquire))
    return Known;
  if (!FMetaclass || !FMetaclass->Parent)
    return nullptr;
  const TLxTypeInfo* Base = TLxTypes::GetTypeInfo(FMetaclass->Parent);
  FBaseType.store(Base, std::memory_order_release);
  return Base;
}

UnicodeString TLxTypeDescription::GetEnumName(Int64 AOrdinal) const {
  if (AOrdinal < 0 || AOrdinal >= static_cast<Int64>(FEnumNames.size()))
    return {};
  return FEnumNames[static_cast<std::size_t>(AOrdinal)];
}

Int64 TLxTypeDescription::GetEnumValue(std::u16string_view AName) const noexcept {
  for (std::size_t I = 0; I < FEnumNames.size(); ++I)
    if (SameText(FEnumNames[I], AName))
      return static_cast<Int64>(I);
  return -1;
}

void TLxTypeDescription::SetNames(std::u16string_view AName, std::u16string_view AQualifiedName) {
  FName = AName;
  FQualifiedName = AQualifiedName;
}

void TLxTypeDescription::SetKinds(TLxTypeKind ATypeKind, TTypeKind AKind,
                                  TLxSchemaDataType ASchemaDataType) {
  FTypeKind = ATypeKind;
  FKind = AKind;
  FSchemaDataType = ASchemaDataType;
}

namespace {
template <class M> M& Adopt(std::vector<M*>& AMembers, M* AMember) {
  try {
    AMembers.push_back(AMember);
  } catch (...) {
    delete AMember;
    throw;
  }
  return *AMember;
}
} // namespace

TLxFieldDescription& TLxTypeDescription::AddField(TLxFieldDescription* AField) {
  return Adopt(FFields, AField);
}
TLxPropertyDescription& TLxTypeDescription::AddProperty(TLxPropertyDescription* AProperty) {
  return Adopt(FProperties, AProperty);
}
TLxIndexedPropertyDescription&
TLxTypeDescription::AddIndexedProperty(TLxIndexedPropertyDescription* AProperty) {
  return Adopt(FIndexedProperties, AProperty);
}
TLxMethodDescription& TLxTypeDescription::AddMethod(TLxMethodDescription* AMethod) {
  return Adopt(FMethods, AMethod);
}

TLxMemberDescription* TLxTypeDescription::FindOwnMember(std::u16string_view AName) noexcept {
  for (TLxFieldDescription* Field : FFields)
    if (SameText(Field->GetName(), AName))
      return Field;
  for (TLxPropertyDescription* Property : FProperties)
    if (SameText(Property->GetName(), AName))
      return Property;
  return nullptr;
}

// --- the type information ------------------------------------------------------------------------
TLxTypeInfo::~TLxTypeInfo() = default;

TLxMainTypeKind TLxTypeInfo::GetMainTypeKind() const noexcept {
  return TLxTypes::ToMainTypeKind(FTypeKind);
}

UnicodeString TLxTypeInfo::SchemaName(std::u16string_view APrefix) const {
  const TLxTypeDescription& Description = *FDescription;
  UnicodeString Name = Description.GetAlias();
  if (Name.empty())
    Name = Description.GetXmlSchemaName();
  if (Name.empty() && LxIsArrayKind(Description.GetTypeKind()))
    if (const TLxTypeInfo* Element = Description.ElementType()) {
      UnicodeString ElementName = Element->SchemaName();
      if (!ElementName.empty() && ElementName[0] >= u'a' && ElementName[0] <= u'z')
        ElementName[0] = static_cast<WideChar>(ElementName[0] - (u'a' - u'A'));
      Name = u"ArrayOf" + ElementName;
    }
  if (Name.empty())
    Name = Description.GetName();
  if (APrefix.empty())
    return Name;
  UnicodeString Result(APrefix);
  Result += u':';
  Result += Name;
  return Result;
}

// --- built-in names and kinds --------------------------------------------------------------------
namespace detail {

namespace {
struct TBuiltIn {
  TLxTypeKind TypeKind;
  std::u16string_view Name;
  std::u16string_view XmlSchemaName;
  TTypeKind Kind;
  TLxSchemaDataType SchemaDataType;
};

// Names of the library's own vocabulary, whatever the C++ types are called; the qualified name
// is "System." and the short name.
constexpr TBuiltIn BuiltIns[] = {
    {ltkByte, u"Byte", u"unsignedByte", tkInteger, lsdByte},
    {ltkWord, u"Word", u"unsignedShort", tkInteger, lsdWord},
    {ltkLongWord, u"Cardinal", u"unsignedInt", tkInteger, lsdLongWord},
    {ltkUInt64, u"UInt64", u"unsignedLong", tkInt64, lsdUInt64},
    {ltkShortInt, u"ShortInt", u"byte", tkInteger, lsdShortInt},
    {ltkSmallInt, u"SmallInt", u"short", tkInteger, lsdSmallInt},
    {ltkInteger, u"Integer", u"int", tkInteger, lsdInteger},
    {ltkInt64, u"Int64", u"long", tkInt64, lsdInt64},
    {ltkSingle, u"Single", u"float", tkFloat, lsdSingle},
    {ltkDouble, u"Double", u"double", tkFloat, lsdDouble},
    {ltkText0, u"Char", u"string", tkWChar, lsdChar},
    {ltkText1, u"AnsiChar", u"string", tkChar, lsdChar},
    {ltkText3, u"string", u"string", tkUString, lsdString},
    {ltkText4, u"UTF8String", u"string", tkLString, lsdString},
    {ltkBoolean, u"Boolean", u"boolean", tkEnumeration, lsdBoolean},
    {ltkDate, u"TDate", u"date", tkFloat, lsdDate},
    {ltkTime, u"TTime", u"time", tkFloat, lsdTime},
    {ltkDateTime, u"TDateTime", u"dateTime", tkFloat, lsdDateTime},
    {ltkClassRef, u"TClass", u"", tkClassRef, lsdNone},
    {ltkPointer, u"Pointer", u"", tkPointer, lsdNone},
};

UnicodeString Qualified(std::u16string_view ANamespace, std::u16string_view AName) {
  UnicodeString Result(ANamespace);
  Result += u'.';
  Result += AName;
  return Result;
}
} // namespace

void DescribeBuiltIn(TLxTypeDescription& ADescription, TLxTypeKind AKind) {
  for (const TBuiltIn& Entry : BuiltIns)
    if (Entry.TypeKind == AKind) {
      ADescription.SetNames(Entry.Name, Qualified(u"System", Entry.Name));
      ADescription.SetXmlSchemaName(Entry.XmlSchemaName);
      ADescription.SetKinds(Entry.TypeKind, Entry.Kind, Entry.SchemaDataType);
      if (AKind == ltkBoolean)
        ADescription.SetEnumNames({u"False", u"True"});
      ADescription.MarkDescribed();
      return;
    }
}

void DescribeDateMarker(TLxTypeDescription& ADescription, TLxTypeKind AKind,
                        std::u16string_view AName) {
  DescribeBuiltIn(ADescription, AKind);
  ADescription.SetNames(AName, Qualified(u"Lorvane", AName));
}

void SetCompilerNames(TLxTypeDescription& ADescription, std::string_view ASpelling) {
  // The last "::" outside template arguments separates the namespaces from the short name.
  std::size_t ShortStart = 0;
  int Depth = 0;
  for (std::size_t I = 0; I + 1 < ASpelling.size(); ++I) {
    if (ASpelling[I] == '<')
      ++Depth;
    else if (ASpelling[I] == '>')
      --Depth;
    else if (Depth == 0 && ASpelling[I] == ':' && ASpelling[I + 1] == ':')
      ShortStart = I + 2;
  }
  const UnicodeString Spelling = AsciiToString(ASpelling);
  UnicodeString QualifiedName = StringReplaceAll(Spelling, u"::", u".");
  ADescription.SetNames(std::u16string_view(Spelling).substr(ShortStart), QualifiedName);
}

void DescribeArray(TLxTypeDescription& ADescription, TLxTypeHandle AElement, bool ADynamic,
                   Integer AFixedLength) {
  const TLxTypeInfo* Element = TLxTypes::GetTypeInfo(AElement);
  ADescription.SetElementType(AElement, AFixedLength);
  if (ADynamic) {
    ADescription.SetNames(u"TArray<" + Element->GetName() + u">",
                          u"System.TArray<" + Element->GetQualifiedName() + u">");
    ADescription.SetKinds(ltkDynArray, tkDynArray, lsdArray);
  } else {
    const UnicodeString Bounds = u"array[0.." + IntToStr(AFixedLength - 1) + u"] of ";
    ADescription.SetNames(Bounds + Element->GetName(), Bounds + Element->GetQualifiedName());
    ADescription.SetKinds(ltkArray, tkArray, lsdArray);
  }
}

void DescribeSet(TLxTypeDescription& ADescription, TLxTypeHandle AElement) {
  const TLxTypeInfo* Element = TLxTypes::GetTypeInfo(AElement);
  ADescription.SetElementType(AElement);
  ADescription.SetNames(u"TSet<" + Element->GetName() + u">",
                        u"System.TSet<" + Element->GetQualifiedName() + u">");
  ADescription.SetKinds(ltkSet, tkSet, lsdNone);
}

void DescribeTValue(TLxTypeDescription& ADescription) {
  ADescription.SetNames(u"TValue", u"System.Rtti.TValue");
  ADescription.SetKinds(ltkRecord, tkRecord, lsdNone);
  ADescription.MarkDescribed();
}

void DescribeVariant(TLxTypeDescription& ADescription) {
  ADescription.SetNames(u"Variant", u"System.Variant");
  ADescription.SetXmlSchemaName(u"anyType");
  ADescription.SetKinds(ltkVariant, tkVariant, lsdNone);
  ADescription.MarkDescribed();
}

} // namespace detail

// --- kind names ----------------------------------------------------------------------------------
std::u16string_view TypeKindName(TTypeKind AKind) noexcept {
  static constexpr std::u16string_view Names[] = {
      u"tkUnknown", u"tkInteger",  u"tkChar",    u"tkEnumeration", u"tkFloat",   u"tkString",
      u"tkSet",     u"tkClass",    u"tkMethod",  u"tkWChar",       u"tkLString", u"tkWString",
      u"tkVariant", u"tkArray",    u"tkRecord",  u"tkInterface",   u"tkInt64",   u"tkDynArray",
      u"tkUString", u"tkClassRef", u"tkPointer", u"tkProcedure"};
  return AKind < std::size(Names) ? Names[AKind] : std::u16string_view(u"tkUnknown");
}

std::u16string_view LxTypeKindName(TLxTypeKind AKind) noexcept {
  static constexpr std::u16string_view Names[] = {
      u"ltkUnknown",    u"ltkByte",     u"ltkWord",       u"ltkLongWord",   u"ltkUInt64",
      u"ltkShortInt",   u"ltkSmallInt", u"ltkInteger",    u"ltkInt64",      u"ltkSingle",
      u"ltkDouble",     u"ltkExtended", u"ltkText0",      u"ltkText1",      u"ltkText2",
      u"ltkText3",      u"ltkText4",    u"ltkText5",      u"ltkBoolean",    u"ltkEnumeration",
      u"ltkSet",        u"ltkDate",     u"ltkTime",       u"ltkDateTime",   u"ltkVariant",
      u"ltkArray",      u"ltkDynArray", u"ltkRecord",     u"ltkClass",      u"ltkInterface",
      u"ltkReserved30", u"ltkPointer",  u"ltkReserved32", u"ltkReserved33", u"ltkClassRef"};
  return AKind < std::size(Names) ? Names[AKind] : std::u16string_view(u"ltkUnknown");
}

} // namespace lorvane
