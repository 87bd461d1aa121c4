// The JSON format class: braces and brackets, "className", member names, and the text of every
// simple kind.
#include "lorvane/serializer/LxJSONSerializer.h"

#include "serializer/ValueTexts.h"

#include "lorvane/serializer/LxSerialization.h"

#include "lorvane/classes/LxStrings.h"
#include "lorvane/classes/LxVariants.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/xmlutils/LxXMLValues.h"

namespace lorvane {

namespace {

constexpr std::u16string_view cBasicTypesOnRoot =
    u"Basic types are only allowed on the Root level (For serialing basic values)";
// The short name of the type whose text is JSON already.
constexpr std::u16string_view cJSONStringType = u"LxJSONString";

UnicodeString Quoted(std::u16string_view AText) {
  UnicodeString Result(1, u'"');
  AppendJSONEscaped(Result, AText);
  Result += u'"';
  return Result;
}

bool IsJSONStringType(const TLxTypeInfo* AType) noexcept {
  return AType && AType->GetName() == cJSONStringType;
}

} // namespace

bool TLxJSONSerializer::IsInterfaceInRecord(const TLxTypeInfo* ATypeInfo) const noexcept {
  const TLxTypeInfo* ParentType = FParent ? FParent->GetInstanceTypeInfo() : nullptr;
  return ATypeInfo && ATypeInfo->GetTypeKind() == ltkInterface && ParentType &&
         ParentType->GetTypeKind() == ltkRecord;
}

void TLxJSONSerializer::SerializeName(std::u16string_view AMemberName, TLxSerializerMemberType,
                                      TLxTypeKind, TLxTypeKind) {
  // Names come from descriptions and shoName hints: escaped, so that any hint stays valid JSON.
  Write(FPrefix + Quoted(LxCharCase(AMemberName, 7, u" ")) + u":");
  FPrefix = u",";
}

void TLxJSONSerializer::SerializeStartType(std::u16string_view AMemberName,
                                           const TLxTypeInfo* ATypeInfo, Integer AIdx) {
  if (IsInterfaceInRecord(ATypeInfo))
    return;
  const TLxTypeKind Kind = ATypeInfo ? ATypeInfo->GetTypeKind() : ltkUnknown;
  if (LxIsArrayKind(Kind) && AMemberName.empty()) {
    Write(u"[");
    return;
  }
  if (!LxIsComplexKind(Kind)) {
    if (FParent)
      RaiseAssertionFailed(cBasicTypesOnRoot);
    return;
  }
  if (LxIsArrayKind(Kind)) {
    Write(u"[");
    FPrefix.clear();
    return;
  }
  UnicodeString Text;
  if (!AMemberName.empty())
    Text = AIdx < 1 ? FPrefix : UnicodeString(u",");
  Text += u"{\"className\":" + Quoted(ATypeInfo->SchemaName(u""));
  Write(Text);
  FPrefix = u",";
}

void TLxJSONSerializer::SerializeEndType(std::u16string_view, const TLxTypeInfo* ATypeInfo,
                                         Integer) {
  if (IsInterfaceInRecord(ATypeInfo))
    return;
  const TLxTypeKind Kind = ATypeInfo ? ATypeInfo->GetTypeKind() : ltkUnknown;
  if (!LxIsComplexKind(Kind)) {
    if (FParent)
      RaiseAssertionFailed(cBasicTypesOnRoot);
    return;
  }
  Write(LxIsArrayKind(Kind) ? u"]" : u"}");
  FPrefix = u",";
}

void TLxJSONSerializer::SerializeValue(std::u16string_view AMemberName,
                                       const TLxTypeInfo* AMemberTypeInfo, const TValue& AValue,
                                       Integer AIdx,
                                       const std::vector<TCustomAttribute*>* AAttribs) {
  const TLxTypeInfo* Declared = AMemberTypeInfo ? AMemberTypeInfo : AValue.LxTypeInfo();
  UnicodeString Text = AIdx > 0 ? u"," : u"";
  if (!Declared)
    Text += u"null"; // a value without a type is a missing one
  else if (Declared->GetTypeKind() == ltkVariant && !AValue.IsNull()) {
    // What a Variant holds goes out as a value of its own type; the comma is written above.
    const TLxTypeInfo* Held = AValue.LxTypeInfo();
    TValue Inner = AValue;
    if (Held->GetTypeKind() == ltkVariant) {
      Inner = TValue::FromVariant(AValue.AsVariant());
      Held = Inner.LxTypeInfo();
    }
    if (!Held || Held->GetTypeKind() == ltkVariant)
      // Variant arrays: no type of their own to write them as.
      throw Exception(u"Unsupported TypeKind detected!");
    Write(Text);
    SerializeValue(AMemberName, Held, Inner, -1, AAttribs);
    return;
  } else
    Text += ValueText(Declared, AValue, AAttribs);
  Write(Text);
  FPrefix = u",";
}

UnicodeString TLxJSONSerializer::ValueText(const TLxTypeInfo* ADeclared, const TValue& AValue,
                                           const std::vector<TCustomAttribute*>* AAttribs) {
  const TLxTypeKind Kind = ADeclared->GetTypeKind();
  const bool Empty = AValue.GetIsEmpty();
  switch (Kind) {
  case ltkEnumeration:
  case ltkSet:
    return OrdinalObject(ADeclared, AValue);
  case ltkArray:
  case ltkDynArray:
    if (Empty)
      return u"[]";
    throw Exception(u"JSON Arrays must be serialized by a ChildSerializer!");
  case ltkRecord:
  case ltkClass:
  case ltkInterface:
  case ltkPointer:
  case ltkClassRef: {
    const TLxMainTypeKind Main = AValue.MainTypeKind();
    if (Main == lmkInteger || Main == lmkString) {
      if (AValue.IsNull())
        return u"null";
      if (Main == lmkInteger)
        return IntToStr(AValue.ToInt64());
      if (IsJSONStringType(AValue.LxTypeInfo()))
        return AValue.ToWideString();
      return Quoted(AValue.ToWideString());
    }
    if (AValue.IsNull())
      return u"{}";
    throw Exception(u"JSON Ojbects must be serialized by a ChildSerializer!");
  }
  case ltkVariant:
    return u"null"; // IsNull: the others went through SerializeValue again
  default:
    break;
  }

  const bool IsNumberOrText = (Kind >= ltkByte && Kind <= ltkExtended) || LxIsTextKind(Kind) ||
                              Kind == ltkBoolean || Kind == ltkDate || Kind == ltkTime ||
                              Kind == ltkDateTime;
  if (!IsNumberOrText) {
    if (IsJSONStringType(AValue.LxTypeInfo()))
      return AValue.ToString();
    throw Exception(u"Unsupported TypeKind detected!");
  }
  if (Empty)
    return u"null";
  switch (Kind) {
  case ltkByte:
  case ltkWord:
  case ltkLongWord:
  case ltkUInt64:
  case ltkShortInt:
  case ltkSmallInt:
  case ltkInteger:
  case ltkInt64:
  case ltkSingle:
  case ltkDouble:
  case ltkExtended:
  case ltkBoolean:
    return valuetext::ScalarText(Kind, AValue);
  case ltkDate:
  case ltkTime:
  case ltkDateTime: {
    if (AValue.MainTypeKind() == lmkString)
      return Quoted(AValue.ToString());
    return u"\"" + valuetext::MomentText(ADeclared, Kind, TDateTime(AValue.ToDouble()), AAttribs) +
           u"\"";
  }
  default: // the text kinds
    if (IsJSONStringType(ADeclared))
      return u"\"" + AValue.ToWideString() + u"\"";
    return Quoted(AValue.ToWideString());
  }
}

UnicodeString TLxJSONSerializer::OrdinalObject(const TLxTypeInfo* ADeclared, const TValue& AValue) {
  const TLxTypeDescription& Description = *ADeclared->GetDescription();
  const bool Empty = AValue.GetIsEmpty();
  UnicodeString Text;
  if (ADeclared->GetTypeKind() == ltkEnumeration) {
    if (Empty)
      Text = Description.GetEnumName(0);
    else if (AValue.TypeKind() == ltkEnumeration)
      Text = AValue.ToString();
    else if (AValue.MainTypeKind() == lmkInteger)
      Text = Description.GetEnumName(AValue.ToInt64());
    else
      Text = AValue.ToString();
  } else if (!Empty)
    Text = AValue.ToString();
  if (ADeclared->GetTypeKind() == ltkEnumeration) {
    if (const SerializerHint* Prefix = Description.FindHint(shoEnumPrefix))
      Text.erase(0, std::min(Text.size(), Prefix->GetValue().size()));
  } else if (const TLxTypeInfo* Element = Description.ElementType()) {
    // A set's names carry its element's prefix, which comes off each of them, as in XML: the
    // reader puts it back on each name.
    if (const SerializerHint* Prefix = Element->GetDescription()->FindHint(shoEnumPrefix))
      Text = valuetext::WithoutPrefixes(Text, Prefix->GetValue());
  }
  if (ADeclared->GetTypeKind() == ltkSet && (Text.empty() || Text.front() != u'['))
    Text = u"[" + Text + u"]";
  return u"{\"className\":" + Quoted(ADeclared->SchemaName(u"")) + u",\"asString\":" +
         Quoted(Text) + u",\"asInt\":" + IntToStr(Empty ? Int64(0) : AValue.ToInt64()) + u"}";
}

void LxJSONSerializerStartup() {
  // The deserializer is left nil until the JSON reading side registers itself.
  LxRegisterSerializer(ldsJSON, TLxTypeHandle(nullptr), TLxJSONSerializer::StaticClass(), nullptr);
}

} // namespace lorvane
