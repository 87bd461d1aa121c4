// Simple JSON values: a Variant typed by the JSON type it is written as, converted on request.
#include "lorvane/json/LxJSONValues.h"

#include "lorvane/classes/LxVariants.h"
#include "lorvane/json/LxJSONOutput.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "json/LxJSONWriter.h"

namespace lorvane {

TLxJSONSimpleType::TLxJSONSimpleType(TLxJSONBase* AOwner)
    : TLxJSONBase(AOwner, TKind::Simple), FValue(Null()) {}

HRESULT TLxJSONSimpleType::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONSimpleType>(
      this, AIID, AObj, [&] { return TLxJSONBase::QueryInterface(AIID, AObj); });
}

bool TLxJSONSimpleType::GetAsBoolean() {
  return LxVarToBool(FValue, /*ADefault=*/false, /*ARaiseError=*/false);
}
Double TLxJSONSimpleType::GetAsDouble() {
  return LxVarToDouble(FValue, 0.0, /*ARaiseError=*/false);
}
Integer TLxJSONSimpleType::GetAsInteger() { return LxVarToInt(FValue, 0, /*ARaiseError=*/false); }
Int64 TLxJSONSimpleType::GetAsLargeInt() { return LxVarToInt64(FValue, 0, /*ARaiseError=*/false); }
Variant TLxJSONSimpleType::GetAsVariant() { return FValue; }

LxJSONString TLxJSONSimpleType::GetAsString() {
  // Held text is the answer whatever the type says: a parsed null gives "null".
  const TLxMainTypeKind Kind = VarMainTypeKind(FValue);
  if (Kind == lmkString)
    return FValue.AsString();
  switch (FJSONType) {
  case jdtNull:
    return LxJSONString();
  case jdtString:
    // A date reads as it is written: its XML form without zone.
    if (Kind == lmkDateTime)
      return LxDateTimeToXML(FValue.AsDateTime(), tzfNone);
    return LxVarToStr(FValue, u"", /*ARaiseError=*/false);
  case jdtNumber:
    return LxVarToJSON(FValue);
  case jdtBoolean:
    return LxVarToBool(FValue, /*ADefault=*/false, /*ARaiseError=*/false) ? u"true" : u"false";
  default:
    throw ELxJSONException(_cLxJSONUnexpectedType, cLxJSONErrUnexpectedType);
  }
}

void TLxJSONSimpleType::SetAsBoolean(bool AValue) {
  FValue = AValue;
  FJSONType = jdtBoolean;
}

void TLxJSONSimpleType::SetAsDouble(Double AValue) {
  FValue = AValue;
  FJSONType = jdtNumber;
}

void TLxJSONSimpleType::SetAsInteger(Integer AValue) {
  FValue = AValue;
  FJSONType = jdtNumber;
}

void TLxJSONSimpleType::SetAsString(const LxJSONString& AValue) {
  FValue = AValue;
  FJSONType = jdtString;
}

void TLxJSONSimpleType::SetAsLargeInt(Int64 AValue) {
  FValue = AValue;
  FJSONType = jdtNumber;
}

void TLxJSONSimpleType::SetAsVariant(const Variant& AValue) {
  FValue = AValue;
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
  case lmkFloat:
    FJSONType = jdtNumber;
    break;
  case lmkString:
  case lmkDateTime:
    FJSONType = jdtString;
    break;
  case lmkBoolean:
    FJSONType = jdtBoolean;
    break;
  default:
    FJSONType = jdtNull;
    break;
  }
}

void TLxJSONSimpleType::SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                                     bool AAddLeadingSpace) {
  jsonwriter::SaveValue(this, AStream, AFormatted, ADepth, AAddLeadingSpace);
}

} // namespace lorvane
