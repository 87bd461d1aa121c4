// Simple JSON values: a Variant typed by the JSON type it is written as, converted on request.
#include "lorvane/json/LxJSONValues.h"

#include "lorvane/classes/LxVariants.h"
#include "lorvane/json/LxJSONOutput.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "xmlutils/internal/VariantForms.h"
#include "json/LxJSONWriter.h"

namespace lorvane {

using xmlvalues::MainKind;
using xmlvalues::MainTypeKind;

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
  const MainKind Kind = MainTypeKind(FValue);
  if (Kind == MainKind::String)
    return FValue.AsString();
  switch (FJSONType) {
  case jdtNull:
    return LxJSONString();
  case jdtString:
    // A date reads as it is written: its XML form without zone.
    if (Kind == MainKind::DateTime)
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
  switch (MainTypeKind(AValue)) {
  case MainKind::Integer:
  case MainKind::Float:
    FJSONType = jdtNumber;
    break;
  case MainKind::String:
  case MainKind::DateTime:
    FJSONType = jdtString;
    break;
  case MainKind::Boolean:
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
