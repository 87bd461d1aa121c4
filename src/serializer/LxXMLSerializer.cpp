// The XML format class: root and member elements, xsi:type and xsi:nil, and the text of every
// simple kind.
#include "lorvane/serializer/LxXMLSerializer.h"

#include "serializer/ValueTexts.h"

#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/serializer/LxXMLDeserializer.h"

#include "lorvane/classes/LxVariants.h"
#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/xmlutils/LxXMLEscape.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "lorvane/xmlutils/LxXMLVariants.h"

namespace lorvane {

Integer DefDateTimeFormat = 2;

namespace {

constexpr std::u16string_view cBasicTypesOnRoot =
    u"Basic types are only allowed on the Root level (For serialing basic values)";

/// The default namespace of a run: "urn:" and the program's file name without directory and
/// extension.
UnicodeString ProgramNamespace() {
  return u"urn:" + ChangeFileExt(ExtractFileName(ProgramFileName()), u"");
}

} // namespace

void TLxXMLSerializer::SetParent(TLxCustomSerializer* AParent) {
  TLxSerializer::SetParent(AParent);
  if (!AParent) {
    if (GetParam(u"excludenamespaces") != u"true") {
      SetParam(u"excludenamespaces", u"false");
      const std::pair<std::u16string_view, UnicodeString> Defaults[] = {
          {u"xsi-namespace", UnicodeString(cLxNsXSI)},
          {u"xsi-prefix", u"xsi"},
          {u"xsd-namespace", UnicodeString(cLxNsXSD)},
          {u"xsd-prefix", u"xsd"},
          {u"xmlns", ProgramNamespace()}};
      for (const auto& [Name, Value] : Defaults)
        if (GetParam(Name).empty())
          SetParam(Name, Value);
    } else {
      for (std::u16string_view Name :
           {u"xsi-namespace", u"xsi-prefix", u"xsd-namespace", u"xsd-prefix", u"xmlns"})
        SetParam(Name, u"");
    }
  }
  // A child without options of its own reads what its parent read, unless an option changed
  // since: the walk makes a child per nested value.
  const auto* Parent = AParent && AParent->InheritsFrom(TLxXMLSerializer::StaticClass())
                           ? static_cast<const TLxXMLSerializer*>(AParent)
                           : nullptr;
  if (Parent && !HasOwnParams() && Parent->FOptionsReadAt == Parent->ParamChangesAlongParents()) {
    FExcludeNamespaces = Parent->FExcludeNamespaces;
    FDefaultNamespace = Parent->FDefaultNamespace;
    FXSINamespace = Parent->FXSINamespace;
    FXSIPrefix = Parent->FXSIPrefix;
    FXSDNamespace = Parent->FXSDNamespace;
    FXSDPrefix = Parent->FXSDPrefix;
  } else {
    FExcludeNamespaces = GetParam(u"excludenamespaces") == u"true";
    FDefaultNamespace = GetParam(u"xmlns");
    FXSINamespace = GetParam(u"xsi-namespace");
    FXSIPrefix = GetParam(u"xsi-prefix");
    FXSDNamespace = GetParam(u"xsd-namespace");
    FXSDPrefix = GetParam(u"xsd-prefix");
  }
  FOptionsReadAt = ParamChangesAlongParents();
}

UnicodeString TLxXMLSerializer::GetRootElementName(TLxTypeKind ATypeKind) {
  switch (ATypeKind) {
  case ltkRecord:
    return u"record";
  case ltkClass:
    return u"object";
  default:
    return u"array";
  }
}

bool TLxXMLSerializer::WriteRootAttributes(std::u16string_view) { return true; }
bool TLxXMLSerializer::WriteValueAttributes(std::u16string_view, Integer) { return true; }

void TLxXMLSerializer::SerializeStartType(std::u16string_view AMemberName,
                                          const TLxTypeInfo* ATypeInfo, Integer) {
  if (!ATypeInfo || !LxIsComplexKind(ATypeInfo->GetTypeKind())) {
    if (FParent)
      RaiseAssertionFailed(cBasicTypesOnRoot);
    return;
  }
  UnicodeString Text = u"<";
  if (!AMemberName.empty()) {
    Text += AMemberName;
    if (WriteRootAttributes(AMemberName) && !FExcludeNamespaces)
      Text += u" " + FXSIPrefix + u":type=\"" + ATypeInfo->SchemaName(FXSDPrefix) + u"\"";
  } else {
    Text += GetRootElementName(ATypeInfo->GetTypeKind());
    if (WriteRootAttributes(u"") && !FExcludeNamespaces) {
      Text += u" xmlns:" + FXSIPrefix + u"=\"" + FXSINamespace + u"\" xmlns:" + FXSDPrefix +
              u"=\"" + FXSDNamespace + u"\" " + FXSIPrefix + u":type=\"" +
              ATypeInfo->SchemaName(FXSDPrefix) + u"\"";
      if (!FDefaultNamespace.empty())
        Text += u" xmlns=\"" + FDefaultNamespace + u"\"";
    }
  }
  Text += u'>';
  Write(Text);
}

void TLxXMLSerializer::SerializeEndType(std::u16string_view AMemberName,
                                        const TLxTypeInfo* ATypeInfo, Integer) {
  if (!ATypeInfo || !LxIsComplexKind(ATypeInfo->GetTypeKind())) {
    if (FParent)
      RaiseAssertionFailed(cBasicTypesOnRoot);
    return;
  }
  UnicodeString Text = u"</";
  Text += AMemberName.empty() ? GetRootElementName(ATypeInfo->GetTypeKind())
                              : UnicodeString(AMemberName);
  Text += u'>';
  Write(Text);
}

void TLxXMLSerializer::SerializeValue(std::u16string_view AMemberName,
                                      const TLxTypeInfo* AMemberTypeInfo, const TValue& AValue,
                                      Integer AIdx,
                                      const std::vector<TCustomAttribute*>* AAttribs) {
  const TLxTypeInfo* Declared = AMemberTypeInfo ? AMemberTypeInfo : AValue.LxTypeInfo();
  if (!Declared)
    return;
  const TLxTypeKind DeclaredKind = Declared->GetTypeKind();
  // The type whose name and text form the element gets.
  const TLxTypeInfo* Type = Declared;
  switch (DeclaredKind) {
  case ltkVariant:
    if (!AValue.GetIsEmpty()) {
      Type = AValue.LxTypeInfo();
      if (Type->GetTypeKind() == ltkVariant && !AValue.IsNull())
        Type = TLxTypes::VarTypeInfo(AValue.AsVariant());
    }
    break;
  case ltkRecord:
  case ltkClass:
  case ltkInterface:
  case ltkPointer:
    if (const TLxMainTypeKind Main = AValue.MainTypeKind(); Main == lmkInteger || Main == lmkString)
      Type = AValue.LxTypeInfo();
    break;
  case ltkClassRef:
    Type = TLxTypes::GetTypeInfo<UnicodeString>();
    break;
  default:
    break;
  }

  const bool Null = AValue.IsNull();
  UnicodeString Text;
  if (!AMemberName.empty()) {
    Text = u"<";
    Text += AMemberName;
    if (!WriteValueAttributes(AMemberName, AIdx) || FExcludeNamespaces) {
      Text += Null ? u"/>" : u">";
    } else {
      Text += u" " + FXSIPrefix + u":type=\"" + Type->SchemaName(FXSDPrefix) + u"\"";
      if (Null)
        Text += u" " + FXSIPrefix + u":nil=\"true\"/>";
      else {
        if (DeclaredKind == ltkEnumeration || DeclaredKind == ltkSet)
          Text += u" value=\"" + IntToStr(AValue.ToInt64()) + u"\"";
        Text += u'>';
      }
    }
  }
  if (!Null) {
    Text += DeclaredKind == ltkClassRef
                ? LxStrToXML(AValue.AsClass() ? ClassNameOf(AValue.AsClass()) : UnicodeString(),
                             true, true)
                : ValueText(Declared, Type, AValue, AAttribs, AMemberName);
    if (!AMemberName.empty())
      Text += u"</" + UnicodeString(AMemberName) + u">";
  }
  Write(Text);
}

UnicodeString TLxXMLSerializer::ValueText(const TLxTypeInfo* ADeclared, const TLxTypeInfo* AType,
                                          const TValue& AValue,
                                          const std::vector<TCustomAttribute*>* AAttribs,
                                          std::u16string_view AMemberName) {
  const TLxTypeKind Kind = AType->GetTypeKind();
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
  case ltkEnumeration: {
    UnicodeString Name;
    const TLxTypeDescription& Enumeration = *AType->GetDescription();
    if (AValue.TypeKind() == ltkEnumeration)
      Name = AValue.ToString();
    else if (AValue.TypeKind() == ltkVariant) {
      const Variant Held = AValue.AsVariant();
      const Integer Ordinal = LxVarToInt(Held, -1, false);
      Name = Ordinal != -1 ? Enumeration.GetEnumName(Ordinal) : LxVarToStr(Held, u"", false);
    } else if (AValue.MainTypeKind() == lmkInteger)
      Name = Enumeration.GetEnumName(AValue.ToInt64());
    else
      Name = AValue.ToString();
    if (const SerializerHint* Prefix = ADeclared->GetDescription()->FindHint(shoEnumPrefix))
      Name.erase(0, std::min(Name.size(), Prefix->GetValue().size()));
    return LxStrToXML(Name, true, true);
  }
  case ltkSet: {
    UnicodeString Text = AValue.ToString();
    const TLxTypeInfo* Element = AType->GetDescription()->ElementType();
    if (const SerializerHint* Prefix =
            Element ? Element->GetDescription()->FindHint(shoEnumPrefix) : nullptr)
      Text = valuetext::WithoutPrefixes(Text, Prefix->GetValue());
    if (ADeclared->GetTypeKind() == ltkSet && (Text.empty() || Text.front() != u'['))
      Text = u"[" + Text + u"]";
    return LxStrToXML(Text, true, true);
  }
  case ltkDate:
  case ltkTime:
  case ltkDateTime: {
    if (AValue.MainTypeKind() == lmkString)
      return AValue.ToString();
    return valuetext::MomentText(ADeclared, Kind, TDateTime(AValue.ToDouble()), AAttribs);
  }
  case ltkArray:
  case ltkDynArray:
    throw Exception(u"XML Arrays must be serialized by a ChildSerializer!");
  case ltkRecord:
  case ltkClass:
  case ltkInterface:
  case ltkPointer:
    if (const TLxMainTypeKind Main = AValue.MainTypeKind(); Main == lmkInteger || Main == lmkString)
      return LxStrToXML(AValue.ToWideString(), true, true);
    throw Exception(u"XML ComplexTypes must be serialized by a ChildSerializer!");
  default:
    if (LxIsTextKind(Kind))
      return LxStrToXML(AValue.ToWideString(), true, true);
    throw ELxSerializeException(u"Serialization failure at \"%s\"\r\nThe field \"%s\" of type "
                                u"\"%s\" cannot be serialized!",
                                {FPath, UnicodeString(AMemberName), ADeclared->GetQualifiedName()});
  }
}

void LxXMLSerializerStartup() {
  LxRegisterSerializer(ldsXML, TLxTypeHandle(nullptr), TLxXMLSerializer::StaticClass(),
                       TLxXMLDeserializer::StaticClass());
}

} // namespace lorvane
