// The JSON format class of reading: an event consumer that hands the reader to a child
// deserializer for each member of complex type. JSON has no attributes, so the class of an object
// to make is found by peeking at the text ahead of the reader.
#include "lorvane/serializer/LxJSONDeserializer.h"

#include "lorvane/core/LxTextParser.h"
#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "lorvane/json/LxJSONReader.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "lorvane/xmlutils/LxXMLVariants.h"

namespace lorvane {

namespace {

/// How far ahead of the reader a class name is looked for.
constexpr Integer ClassNameLookAhead = 255;

bool IsBlankOrBracket(std::u16string_view AText) {
  for (const char16_t C : AText)
    if (C > 0x20 && C != u'[' && C != u']')
      return false;
  return true;
}

} // namespace

HRESULT TLxJSONDeserializer::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONContentHandler, ILxJSONErrorHandler>(
      this, AIID, AObj, [&] { return TLxDeserializer::QueryInterface(AIID, AObj); });
}

TLxJSONDeserializer::~TLxJSONDeserializer() {
  if (FOwnsReader)
    lorvane::Free(FJSONReader);
}

void TLxJSONDeserializer::SetParent(TLxCustomSerializer* AParent) {
  TLxDeserializer::SetParent(AParent);
  if (!AParent || !AParent->InheritsFrom(TLxJSONDeserializer::StaticClass()))
    return;
  auto* Parent = static_cast<TLxJSONDeserializer*>(AParent);
  if (Parent->GetAutoDestroy())
    FParentRef = IPtr<ILxObject>(static_cast<ILxObject*>(Parent));
  FJSONReader = Parent->FJSONReader;
  if (FJSONReader) {
    // The reader's reference is this child's only owner from here on.
    SetAutoDestroy(true);
    FJSONReader->SetContentHandler(this);
  }
}

void TLxJSONDeserializer::HandBack() {
  if (FJSONReader && FParent)
    FJSONReader->SetContentHandler(static_cast<TLxJSONDeserializer*>(FParent));
}

bool TLxJSONDeserializer::IsUrlEncoded() const {
  if (FJSONReader)
    return FJSONReader->InheritsFrom(TLxFormURLEncodedJSONReader::StaticClass());
  const UnicodeString Option = const_cast<TLxJSONDeserializer*>(this)->GetParam(u"UrlEncoded");
  return SameText(Option, u"True") || Option == u"1";
}

TLxJSONReader* TLxJSONDeserializer::CreateJSONReader() {
  if (HasParam(u"UrlEncoded") && IsUrlEncoded())
    return New<TLxFormURLEncodedJSONReader>();
  return New<TLxJSONReader>();
}

// --- class names ---------------------------------------------------------------------------------
bool TLxJSONDeserializer::ReadClassName(UnicodeString& AName) {
  AName.clear();
  TLxTextParser* Cursor = FJSONReader ? FJSONReader->GetParser() : nullptr;
  if (!Cursor)
    return true;
  // In an array the reader has passed the object's "{" when it tells of it.
  std::string Ahead = Cursor->PeekStringUTF8(ClassNameLookAhead);
  if (FAtElementObject)
    Ahead.insert(Ahead.begin(), '{');
  TOwned<TLxTextParser> Parser(
      New<TLxTextParser>(Ahead.data(), static_cast<Int64>(Ahead.size()), Word(65001)));
  ReadClassName(Parser.get(), AName);
  return true;
}

void TLxJSONDeserializer::ReadClassName(TLxTextParser* AParser, UnicodeString& AName) {
  AName.clear();
  if (AParser->_GetEOF())
    return;
  UnicodeString Key;
  if (!IsUrlEncoded()) {
    // The character at the cursor is the "{" of the object, or the quote that ends the name of
    // the member it is the value of; the first key follows behind a colon and the brace. An
    // object that ends first ("{}") names no class, whatever follows it.
    AParser->NextChar();
    while (!AParser->_GetEOF() && (AParser->CurrCharW() <= u' ' || AParser->CurrCharW() == u':' ||
                                   AParser->CurrCharW() == u'{'))
      AParser->NextChar();
    if (AParser->_GetEOF() || AParser->CurrCharW() != u'"')
      return;
    AParser->NextChar();
    AParser->SetMark(tpMark1);
    AParser->SkipWhile(spNotEqual, u'"');
    Key = AParser->Selected(tpMark1, tpCurrent, true);
    if (AParser->_GetEOF() || Key != u"className")
      return;
    AParser->SkipWhile(spNotEqual, u':');
    AParser->SkipWhile(spNotEqual, u'"');
    if (AParser->_GetEOF())
      return;
    AParser->NextChar();
    AParser->SetMark(tpMark1);
    // A name cut by the end of the look-ahead is what stands up to the cut.
    AParser->SkipWhile(spNotEqual, u'"');
    AName = AParser->Selected(tpMark1, tpCurrent, true);
    return;
  }
  while (!AParser->_GetEOF() && (AParser->CurrCharW() <= u' ' || AParser->CurrCharW() == u'&'))
    AParser->NextChar();
  if (AParser->_GetEOF())
    return;
  const WideChar First = AParser->CurrCharW();
  AParser->NextChar();
  if (First == u'%') {
    if (AParser->PeekString(2) != u"5B" && AParser->PeekString(2) != u"5b")
      return;
    AParser->NextChar();
    AParser->NextChar();
    AParser->SetMark(tpMark1);
    AParser->SkipWhile(spNotEqual, u'%');
  } else if (First == u'[') {
    AParser->SetMark(tpMark1);
    AParser->SkipWhile(spNotEqual, u']');
  } else {
    return;
  }
  Key = AParser->Selected(tpMark1, tpCurrent, true);
  if (AParser->_GetEOF() || Key != u"className")
    return;
  AParser->SkipWhile(spNotEqual, u'=');
  if (AParser->_GetEOF())
    return;
  AParser->NextChar();
  AParser->SetMark(tpMark1);
  AParser->SkipWhile(spNotEqual, u'&');
  AName = AParser->Selected(tpMark1, tpCurrent, true);
}

// --- the run -------------------------------------------------------------------------------------
void TLxJSONDeserializer::DoDeserialize() {
  FDisabledCnt = 0;
  FJSONReader = CreateJSONReader();
  FOwnsReader = true;
  struct TFreeReader {
    TLxJSONDeserializer* Self;
    ~TFreeReader() {
      Self->FOwnsReader = false;
      FreeAndNil(Self->FJSONReader);
    }
  } FreeReader{this};
  FJSONReader->SetErrorHandler(this);
  FJSONReader->SetContentHandler(this);
  FJSONReader->ParseStream(FStream, 65001, u"");
}

// --- values --------------------------------------------------------------------------------------
Integer TLxJSONDeserializer::ValueToInt(std::u16string_view AValue) { return LxXMLToInt(AValue); }
Int64 TLxJSONDeserializer::ValueToInt64(std::u16string_view AValue) { return LxXMLToInt64(AValue); }
Double TLxJSONDeserializer::ValueToFloat(std::u16string_view AValue) {
  return LxXMLToDouble(AValue);
}
UnicodeString TLxJSONDeserializer::ValueToStr(std::u16string_view AValue) {
  return LxJSONtoStr(AValue, jdtString);
}
TDateTime TLxJSONDeserializer::ValueToDate(std::u16string_view AValue) {
  return LxXMLToDate(AValue);
}
TDateTime TLxJSONDeserializer::ValueToTime(std::u16string_view AValue) {
  return LxXMLToTime(AValue, tzfNone);
}
TDateTime TLxJSONDeserializer::ValueToDateTime(std::u16string_view AValue) {
  return LxXMLToDateTime(AValue, tzfNone);
}
bool TLxJSONDeserializer::ValueToBool(std::u16string_view AValue) { return LxXMLToBool(AValue); }
Variant TLxJSONDeserializer::ValueToVar(std::u16string_view AValue,
                                        std::u16string_view AQualifiedTypeName) {
  const TVarType Code = TLxTypes::GetVarType(AQualifiedTypeName, ltnQualified, 13);
  // A JSON string is JSON text: its escapes are decoded as the string member's are.
  if (Code == varUString || Code == varOleStr)
    return Variant(ValueToStr(AValue));
  return LxXMLToVariant(AValue, Code);
}

TValue TLxJSONDeserializer::ValueToVal(std::u16string_view AValue,
                                       std::u16string_view AQualifiedTypeName) {
  const TLxTypeInfo* Type = TLxTypes::GetTypeInfo(AQualifiedTypeName, ltnQualified, true, lmkNone);
  const TLxTypeHandle Handle = Type->GetHandle();
  switch (Type->GetKind()) {
  case tkInteger:
  case tkEnumeration:
  case tkSet:
    return TValue::FromOrdinal(Handle, ValueToInt(AValue));
  case tkInt64:
    return TValue::FromOrdinal(Handle, ValueToInt64(AValue));
  case tkFloat: {
    TValue Value = TValue::Make(nullptr, Handle);
    Type->GetDescription()->Access().SetFloat(Value.GetReferenceToRawData(), ValueToFloat(AValue));
    return Value;
  }
  case tkChar:
  case tkWChar:
    return TValue::FromOrdinal(Handle, AValue.empty() ? 0 : AValue.front());
  case tkString:
  case tkLString:
  case tkWString:
  case tkUString: {
    TValue Value = TValue::Make(nullptr, Handle);
    Type->GetDescription()->Access().SetText(Value.GetReferenceToRawData(), ValueToStr(AValue));
    return Value;
  }
  case tkVariant:
    return TValue::From(Variant(ValueToStr(AValue)));
  default:
    throw Exception(u"Failed to convert \"%s\" into a TValue!\r\nThe type %s is not supported.",
                    {UnicodeString(AValue), UnicodeString(AQualifiedTypeName)});
  }
}

// --- events --------------------------------------------------------------------------------------
void TLxJSONDeserializer::StartObject() {
  if (FDisabledCnt > 0) {
    ++FDisabledCnt;
    return;
  }
  if (IsArraySerializer()) {
    FAtElementObject = true;
    struct TReset {
      bool& Flag;
      ~TReset() { Flag = false; }
    } Reset{FAtElementObject};
    InitializeArrayElement(u"", FMemberName);
    // An element object that no instance takes: its members go nowhere.
    if (FMemberTypeInfo && FMemberTypeInfo->GetTypeKind() == ltkClass && !FMemberValue.AsObject()) {
      ++FDisabledCnt;
      return;
    }
  } else if (!FMemberName.empty() && FCanDeserialize == desYes && FMemberTypeInfo &&
             FMemberTypeInfo->GetTypeKind() == ltkClass) {
    // No child took the object of a class member (no instance could be made for a nil one):
    // its members go nowhere, and its end doesn't end this object.
    ++FDisabledCnt;
    return;
  }
  if (FMemberTypeInfo && (FMemberTypeInfo->GetTypeKind() == ltkEnumeration ||
                          FMemberTypeInfo->GetTypeKind() == ltkSet))
    CreateChildDeserializer(u"enum", TLxJSONEnumDeserializer::StaticClass(), FInstancePtr,
                            FInstanceTypeInfo, nullptr);
}

void TLxJSONDeserializer::StartArray() {
  // Dropped containers count whatever their kind: the form post reader closes an item's object
  // with EndArray when its list ends.
  if (FDisabledCnt > 0) {
    ++FDisabledCnt;
    return;
  }
  FCanDeserialize = desYes;
}

void TLxJSONDeserializer::StartMember(const LxJSONString& AName) {
  if (FDisabledCnt > 0)
    return;
  FCanDeserialize = desNo;
  FMemberName = AName;
  FDataType.clear();
  if (!IsArraySerializer()) {
    UnicodeString Name = FMemberName;
    FCanDeserialize = CanDeserialize(FNamespace, Name, FDataType, true);
  }
}

void TLxJSONDeserializer::Value(TLxJSONDataType AType, const LxJSONString& AValue) {
  if (FDisabledCnt > 0)
    return;
  DoValue(AType, AValue);
}

void TLxJSONDeserializer::DoValue(TLxJSONDataType AType, const LxJSONString& AValue) {
  TLxTypeKind ElementKind = ltkUnknown;
  if (IsArraySerializer(&ElementKind) && !LxIsArrayKind(ElementKind) && ElementKind != ltkRecord &&
      ElementKind != ltkClass) {
    if (AValue.empty()) {
      InitializeArrayElement(u"", FMemberName);
      FCanDeserialize = desIgnore;
    } else {
      if (!IsBlankOrBracket(AValue))
        InitializeArrayElement(u"", FMemberName);
      FCanDeserialize = desYes;
    }
  }
  if (FCanDeserialize == desIgnore)
    return;
  const TLxTypeKind Kind = FInstanceTypeInfo ? FInstanceTypeInfo->GetTypeKind() : ltkUnknown;
  if (FInstancePtr && FInstanceTypeInfo && FMemberName.empty()) {
    if (LxIsArrayKind(Kind)) {
      // An array written as a string, read into the parent's member this array is.
      auto* Parent = dynamic_cast<TLxJSONDeserializer*>(FParent);
      if (Parent && Parent->FInstanceTypeInfo != FInstanceTypeInfo &&
          Parent->FMemberTypeInfo == FInstanceTypeInfo && !AValue.empty() &&
          AValue.front() == u'[') {
        const TValue Read = LxDeserialize(ldsJSON, Parent->FMemberValue, StringToUTF8(AValue));
        FInstanceTypeInfo->GetDescription()->GetOps()->Assign(
            FInstancePtr, const_cast<TValue&>(Read).GetReferenceToRawData());
        EndArray();
        return;
      }
    } else if (Kind == ltkRecord &&
               FInstanceTypeInfo->GetQualifiedName() == u"System.Rtti.TValue") {
      TValue Read;
      if (AType == jdtNumber) {
        if (AValue.find(u'.') != LxJSONString::npos)
          Read = TValue::From(static_cast<Extended>(LxXMLToDouble(AValue)));
        else
          Read = TValue::From(LxXMLToInt64(AValue));
      } else if (AType == jdtBoolean) {
        Read = TValue::From(LxXMLToBool(AValue));
      } else {
        Read = TValue::From(LxJSONtoStr(AValue, jdtString));
      }
      *static_cast<TValue*>(FInstancePtr) = std::move(Read);
      // The value goes back to the member it was read for.
      DeserializeEndType();
      HandBack();
      return;
    } else if (LxHasMembers(Kind)) {
      if (AType != jdtNull) {
        const UnicodeString TypeName = FInstanceTypeInfo->GetQualifiedName();
        bool Handled = false;
        if (FCHelper)
          FCHelper->DeserializeValue(this, u"", u"", AValue, TypeName, Handled);
        if (!Handled && FIHelper)
          FIHelper->DeserializeValue(this, u"", u"", AValue, TypeName, Handled);
        if (!Handled && !AValue.empty()) {
          if (AValue.front() != u'{')
            throw Exception(u"Record/Object data must start with \"{\".");
          // An object written as a string.
          LxDeserializeEx(ldsJSON, FInstancePtr, FInstanceTypeInfo, StringToUTF8(AValue));
        }
      } else if (Kind == ltkRecord) {
        throw Exception(u"Records are not nillable! Use \"{}\" if you want to use empty records "
                        u"instead of \"Null\".");
      }
      EndObject();
      return;
    }
  }
  switch (AType) {
  case jdtString:
    DeserializeValue(u"", FMemberName, AValue, u"System.string");
    return;
  case jdtNumber:
    // A number with a fraction or an exponent is a float.
    DeserializeValue(u"", FMemberName, AValue,
                     AValue.find_first_of(u".eE") != LxJSONString::npos ? u"System.Extended"
                                                                        : u"System.Int64");
    return;
  case jdtBoolean:
    DeserializeValue(u"", FMemberName, AValue, u"System.Boolean");
    return;
  default:
    break;
  }
  // null: a class member becomes nil and a text empty; a member of another type keeps its value.
  if (!FMemberTypeInfo)
    return;
  const TLxTypeKind MemberKind = FMemberTypeInfo->GetTypeKind();
  if (MemberKind == ltkClass || LxIsTextKind(MemberKind))
    DeserializeValue(u"", FMemberName, u"", FDataType);
}

void TLxJSONDeserializer::EndArray() {
  if (FDisabledCnt > 0) {
    --FDisabledCnt;
    return;
  }
  if (FParent) {
    DeserializeEndType();
    HandBack();
  }
}

void TLxJSONDeserializer::EndObject() {
  if (FDisabledCnt > 0) {
    --FDisabledCnt;
    return;
  }
  if (FParent) {
    DeserializeEndType();
    HandBack();
  }
}

// --- enumerations and sets in their object form --------------------------------------------------
void TLxJSONEnumDeserializer::DeserializeStartType() {
  if (auto* Parent = dynamic_cast<TLxDeserializer*>(FParent))
    FMemberTypeInfo = Parent->GetMemberTypeInfo();
}

void TLxJSONEnumDeserializer::StartMember(const LxJSONString& AName) {
  FMemberName = AName;
  if (!SameText(AName, u"className") && !SameText(AName, u"asString") && !SameText(AName, u"asInt"))
    throw Exception(u"\"The JSON Enum Deserializer expected \"asString\" or \"asInt\", but the "
                    u"member \"%s\" was deserialized instead!",
                    {UnicodeString(AName)});
}

void TLxJSONEnumDeserializer::Value(TLxJSONDataType AType, const LxJSONString& AValue) {
  auto* Parent = static_cast<TLxJSONDeserializer*>(FParent);
  if (AType == jdtString && SameText(FMemberName, u"asString"))
    Parent->DeserializeValue(u"", FMemberName, AValue, u"System.string");
  else if ((AType == jdtString || AType == jdtNumber) && SameText(FMemberName, u"asInt"))
    Parent->DeserializeValue(u"", FMemberName, AValue, u"System.Integer");
}

void TLxJSONEnumDeserializer::EndObject() { HandBack(); }

void LxJSONDeserializerStartup() {
  const TLxRegisteredSerializers* Registered = TLxTypes::FindSerializers(nullptr, ldsJSON);
  LxRegisterSerializer(ldsJSON, TLxTypeHandle(nullptr),
                       Registered ? Registered->SerializerClass : nullptr,
                       TLxJSONDeserializer::StaticClass());
}

} // namespace lorvane
