// The XML format class of reading: an event consumer that tells an event's meaning by its depth,
// and hands the reader to a child deserializer for each member of complex type.
#include "lorvane/serializer/LxXMLDeserializer.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/core/LxTextParser.h"
#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/sax/LxSAXReader.h"
#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/xmlutils/LxXMLEscape.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "lorvane/xmlutils/LxXMLVariants.h"

#include <algorithm>

namespace lorvane {

namespace {

constexpr std::u16string_view cSchemaHost = u"www.w3.org";

/// Declarations and the schema instance's own attributes are not members.
bool IsMemberAttribute(const TLxXMLDeserializer::TAttribute& AAttribute) {
  return AAttribute.URI.find(cSchemaHost) == UnicodeString::npos;
}

std::vector<TLxXMLDeserializer::TAttribute> CopyAttributes(ILxSAXAttributes* AAttribs) {
  std::vector<TLxXMLDeserializer::TAttribute> Copies;
  if (!AAttribs)
    return Copies;
  const Integer Count = AAttribs->Count();
  Copies.reserve(static_cast<std::size_t>(Count));
  for (Integer I = 0; I < Count; ++I)
    Copies.push_back({AAttribs->GetURI(I), AAttribs->GetLocalName(I), AAttribs->GetQName(I),
                      AAttribs->GetValue(I)});
  return Copies;
}

} // namespace

HRESULT TLxXMLDeserializer::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxSAXContentHandler, ILxSAXLexicalHandler, ILxSAXErrorHandler>(
      this, AIID, AObj, [&] { return TLxDeserializer::QueryInterface(AIID, AObj); });
}

TLxXMLDeserializer::~TLxXMLDeserializer() {
  lorvane::Free(FXMLString);
  if (FOwnsReader)
    lorvane::Free(FSAXReader);
}

void TLxXMLDeserializer::SetParent(TLxCustomSerializer* AParent) {
  TLxDeserializer::SetParent(AParent);
  if (!AParent || !AParent->InheritsFrom(TLxXMLDeserializer::StaticClass()))
    return;
  auto* Parent = static_cast<TLxXMLDeserializer*>(AParent);
  if (Parent->GetAutoDestroy())
    FParentRef = IPtr<ILxObject>(static_cast<ILxObject*>(Parent));
  FLevel = Parent->FLevel - 1;
  FSAXReader = Parent->FSAXReader;
  if (FSAXReader) {
    // The reader's reference is this child's only owner from here on.
    SetAutoDestroy(true);
    FSAXReader->SetContentHandler(this);
  }
}

void TLxXMLDeserializer::FatalError(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) {
  // The reader reports every failure of the parse here, also one of our own events; that one
  // the reader raises again as it was.
  if (FEventFailed)
    return;
  throw EParserError(u"Line %d, column %d: %s", {ALocator ? ALocator->GetLineNr() : -1,
                                                 ALocator ? ALocator->GetColNr() : -1, AErrMsg});
}

// --- class names ---------------------------------------------------------------------------------
bool TLxXMLDeserializer::ReadClassName(UnicodeString& AName) {
  AName.clear();
  bool Found = false;
  for (const TAttribute& Attribute : FAttribs) {
    if (Attribute.LocalName == u"type") {
      AName = Attribute.Value;
      Found = true;
    } else if (Attribute.LocalName == u"nil" && LxXMLToBool(Attribute.Value)) {
      // A nil element names no class, and no instance is made for it.
      AName.clear();
      return true;
    }
  }
  return Found;
}

void TLxXMLDeserializer::ReadClassName(TLxTextParser* AParser, UnicodeString& AName) {
  AName.clear();
  while (!AParser->_GetEOF()) {
    AParser->SkipWhile(spNotEqual, u'x');
    if (AParser->_GetEOF())
      return;
    if (AParser->PeekString(8) != u"xsi:type") {
      AParser->NextChar();
      continue;
    }
    AParser->SkipWhile(spNotEqual, u'"');
    if (AParser->_GetEOF())
      return;
    AParser->NextChar();
    AParser->SetMark(tpMark1);
    AParser->SkipWhile(spNotEqual, u'"');
    if (AParser->_GetEOF())
      return;
    AName = AParser->Selected(tpMark1, tpCurrent, true);
    return;
  }
}

// --- the run -------------------------------------------------------------------------------------
void TLxXMLDeserializer::DoDeserialize() {
  FLevel = -1;
  FEventFailed = false;
  FSAXReader = New<TLxSAXXMLReader>();
  FOwnsReader = true;
  struct TFreeReader {
    TLxXMLDeserializer* Self;
    ~TFreeReader() {
      Self->FOwnsReader = false;
      FreeAndNil(Self->FSAXReader);
    }
  } FreeReader{this};
  FSAXReader->SetContentHandler(this);
  FSAXReader->SetLexicalHandler(this);
  FSAXReader->SetErrorHandler(this);
  FSAXReader->ParseStream(FStream, 65001, u"");
}

void TLxXMLDeserializer::CreateChildDeserializerIfNeeded(std::u16string_view AName) {
  TLxDeserializer::CreateChildDeserializerIfNeeded(AName);
  if (FDataType.empty() || !FSAXReader)
    return;
  // The child, if one was made, is the reader's handler now.
  IPtr<ILxSAXContentHandler> Handler = FSAXReader->GetContentHandler();
  auto* Child = dynamic_cast<TLxXMLDeserializer*>(Handler.Get());
  if (!Child || Child == this || Child->FParent != this)
    return;
  if (const TLxTypeInfo* Type = TLxTypes::GetTypeInfo(FDataType, ltnQualified, false, lmkNone);
      Type && Type->GetIsSimpleType()) {
    Child->FProcessRootChars = true;
    Child->FDataType = FDataType;
  }
}

// --- values --------------------------------------------------------------------------------------
Integer TLxXMLDeserializer::ValueToInt(std::u16string_view AValue) { return LxXMLToInt(AValue); }
Int64 TLxXMLDeserializer::ValueToInt64(std::u16string_view AValue) { return LxXMLToInt64(AValue); }
Double TLxXMLDeserializer::ValueToFloat(std::u16string_view AValue) {
  return LxXMLToDouble(AValue);
}
UnicodeString TLxXMLDeserializer::ValueToStr(std::u16string_view AValue) {
  return LxXMLToStr(AValue);
}
TDateTime TLxXMLDeserializer::ValueToDate(std::u16string_view AValue) {
  return LxXMLToDate(AValue);
}
TDateTime TLxXMLDeserializer::ValueToTime(std::u16string_view AValue) {
  return LxXMLToTime(AValue, tzfNone);
}
TDateTime TLxXMLDeserializer::ValueToDateTime(std::u16string_view AValue) {
  return LxXMLToDateTime(AValue, tzfNone);
}
bool TLxXMLDeserializer::ValueToBool(std::u16string_view AValue) { return LxXMLToBool(AValue); }
Variant TLxXMLDeserializer::ValueToVar(std::u16string_view AValue,
                                       std::u16string_view AQualifiedTypeName) {
  return LxXMLToVariant(AValue, AQualifiedTypeName);
}
TValue TLxXMLDeserializer::ValueToVal(std::u16string_view AValue,
                                      std::u16string_view AQualifiedTypeName) {
  return LxXMLToValue(AValue, AQualifiedTypeName);
}

// --- events --------------------------------------------------------------------------------------
void TLxXMLDeserializer::ReadAttributesAsMembers(TLxXMLDeserializer* ATarget,
                                                 const std::vector<TAttribute>& AAttribs) {
  if (AAttribs.empty())
    return;
  FDeserializingAttribs = true;
  struct TFlagOff {
    bool& Flag;
    ~TFlagOff() { Flag = false; }
  } Off{FDeserializingAttribs};
  for (const TAttribute& Attribute : AAttribs) {
    if (!IsMemberAttribute(Attribute))
      continue;
    ATarget->StartElement(Attribute.URI, Attribute.LocalName, Attribute.QName, nullptr);
    ATarget->Characters(Attribute.Value);
    ATarget->EndElement(Attribute.URI, Attribute.LocalName, Attribute.QName);
  }
}

// The reader hands any failure of a handler to the error handler as a parse failure; the events
// note theirs first, so that it leaves the run as it was raised.
void TLxXMLDeserializer::NoteEventFailure() noexcept {
  for (TLxCustomSerializer* At = this; At && At->InheritsFrom(TLxXMLDeserializer::StaticClass());
       At = At->GetParent()) {
    auto* XML = static_cast<TLxXMLDeserializer*>(At);
    if (XML->FOwnsReader) {
      XML->FEventFailed = true;
      return;
    }
  }
}

void TLxXMLDeserializer::StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                                      const LxXMLString& AQName, ILxSAXAttributes* AAttribs) {
  try {
    DoStartElement(AURI, ALocalName, AQName, AAttribs);
  } catch (...) {
    NoteEventFailure();
    throw;
  }
}

void TLxXMLDeserializer::Characters(const LxXMLString& AText) {
  try {
    DoCharacters(AText);
  } catch (...) {
    NoteEventFailure();
    throw;
  }
}

void TLxXMLDeserializer::EndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                                    const LxXMLString& AQName) {
  try {
    DoEndElement(AURI, ALocalName, AQName);
  } catch (...) {
    NoteEventFailure();
    throw;
  }
}

void TLxXMLDeserializer::DoStartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                                        const LxXMLString& AQName, ILxSAXAttributes* AAttribs) {
  ++FLevel;
  if (FLevel == 0) {
    ReadAttributesAsMembers(this, CopyAttributes(AAttribs));
    return;
  }
  if (FLevel == 1) {
    FCanDeserialize = desNo;
    FURI = AURI;
    FLocalName = ALocalName;
    FAttribs = CopyAttributes(AAttribs);
    FDataType.clear();
    struct TReleaseAttribs {
      std::vector<TAttribute>& Attribs;
      ~TReleaseAttribs() { Attribs.clear(); }
    } Release{FAttribs};
    if (IsArraySerializer()) {
      InitializeArrayElement(AURI, ALocalName);
      FCanDeserialize = desYes;
      const TTypeKind Kind = FMemberValue.GetTypeKind();
      // A nil element has no object to take its attributes; a deserializer made for it would
      // make one, which nobody would own.
      // Most elements carry only xsi:type: nothing to read into the element's value.
      if (std::any_of(FAttribs.begin(), FAttribs.end(), IsMemberAttribute) &&
          ((Kind == tkClass && FMemberValue.AsObject()) || Kind == tkRecord)) {
        TOwned<TLxDeserializer> Made(LxCreateDeserializer(Format(), FMemberValue));
        auto* Temporary = static_cast<TLxXMLDeserializer*>(Made.get());
        Temporary->FProcessRootChars = true;
        Temporary->CheckInstance();
        Temporary->FLevel = 0;
        ReadAttributesAsMembers(Temporary, FAttribs);
        if (Kind == tkRecord)
          // The element's value lives here and its child reads into it: copied in place.
          FMemberValue.LxTypeInfo()->GetDescription()->GetOps()->Assign(
              FMemberValue.GetReferenceToRawData(), Temporary->GetInstance());
      }
      return;
    }
    for (const TAttribute& Attribute : FAttribs)
      // Documents spell the namespace exactly as a rule: compared as it is before without case.
      if (SameText(Attribute.LocalName, u"type") &&
          (Attribute.URI == cLxNsXSI || SameText(Attribute.URI, cLxNsXSI))) {
        if (const TLxTypeInfo* Type =
                TLxTypes::GetTypeInfo(Attribute.Value, ltnSchema, false, lmkNone))
          FDataType = Type->GetQualifiedName();
        break;
      }
    UnicodeString URI = FURI;
    UnicodeString Name = FLocalName;
    FCanDeserialize = CanDeserialize(URI, Name, FDataType, !FDeserializingAttribs);
    return;
  }
  if (!FXMLString)
    FXMLString = New<TLxStringStream>(Word(1200), Int64(0));
  FXMLString->AddChar(u'<');
  FXMLString->Add(AQName);
  for (const TAttribute& Attribute : CopyAttributes(AAttribs)) {
    FXMLString->AddChar(u' ');
    FXMLString->Add(Attribute.QName);
    FXMLString->Add(u"=\"");
    FXMLString->Add(Attribute.Value);
    FXMLString->AddChar(u'"');
  }
  FXMLString->AddChar(u'>');
}

void TLxXMLDeserializer::OwnText(const LxXMLString& AText) {
  if (FProcessRootChars) {
    if (FCanDeserialize != desIgnore)
      DeserializeValue(FURI, FLocalName, AText, FDataType);
    return;
  }
  if (FInstanceTypeInfo && LxHasMembers(FInstanceTypeInfo->GetTypeKind())) {
    const TLxTypeDescription& Description = *FInstanceTypeInfo->GetDescription();
    const TLxMemberDescription* Target = nullptr;
    const auto IsNodeValue = [](const TLxMemberDescription* AMember) {
      const SerializerHint* Hint = AMember->FindHint(shoNodeType);
      return Hint && SameText(Hint->GetValue(), u"NodeValue");
    };
    for (const TLxPropertyDescription* Property : Description.GetProperties())
      if (IsNodeValue(Property)) {
        Target = Property;
        break;
      }
    if (!Target)
      for (const TLxFieldDescription* Field : Description.GetFields())
        if (IsNodeValue(Field)) {
          Target = Field;
          break;
        }
    if (Target) {
      UnicodeString URI = FURI;
      UnicodeString Name = Target->GetName();
      if (CanDeserialize(URI, Name, FDataType, false) == desYes) {
        DeserializeValue(FURI, Target->GetName(), AText, FDataType);
        return;
      }
    }
  }
  const UnicodeString TypeName =
      FInstanceTypeInfo ? FInstanceTypeInfo->GetQualifiedName() : UnicodeString();
  bool Handled = false;
  if (FCHelper)
    FCHelper->DeserializeValue(this, FURI, FLocalName, AText, TypeName, Handled);
  if (FIHelper)
    FIHelper->DeserializeValue(this, FURI, FLocalName, AText, TypeName, Handled);
}

void TLxXMLDeserializer::DoCharacters(const LxXMLString& AText) {
  if (FLevel == 1) {
    if (FCanDeserialize != desIgnore)
      DeserializeValue(FURI, FLocalName, AText, FDataType);
  } else if (FLevel >= 2) {
    Assert(FXMLString != nullptr, u"Assertion failure");
    FXMLString->Add(AText);
  } else if (FLevel == 0) {
    OwnText(AText);
  }
}

void TLxXMLDeserializer::DoEndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                                      const LxXMLString& AQName) {
  if (FLevel >= 2 && FXMLString) {
    FXMLString->Add(u"</");
    FXMLString->Add(AQName);
    FXMLString->AddChar(u'>');
    if (FLevel == 2) {
      const UnicodeString Markup = FXMLString->GetWString();
      FreeAndNil(FXMLString);
      if (FCanDeserialize != desIgnore)
        DeserializeValue(AURI, ALocalName, Markup, u"System.string");
    }
  }
  --FLevel;
  if (FLevel < 0 && FParent) {
    DeserializeEndType();
    auto* Parent = static_cast<TLxXMLDeserializer*>(FParent);
    --Parent->FLevel;
    // Handing back drops the reader's reference to this child: nothing here touches it after.
    if (FSAXReader)
      FSAXReader->SetContentHandler(Parent);
  }
}

} // namespace lorvane
