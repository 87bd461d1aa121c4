// Simple JSON values: a Variant typed by the JSON type it is written as, converted on request.
#include "lorvane/json/LxJSONValues.h"

#include "lorvane/classes/LxVariants.h"
#include "lorvane/json/LxJSONOutput.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "json/LxJSONWriter.h"

#include <cstring>
#include <new>

namespace lorvane {

TLxJSONSimpleType::~TLxJSONSimpleType() {
  if (!HoldsShortText())
    FValue.~Variant();
}

Variant TLxJSONSimpleType::AsVariant() const {
  if (!HoldsShortText())
    return FValue;
  char16_t Buffer[ShortCapacity];
  return Variant(ShortText(Buffer));
}

std::u16string_view TLxJSONSimpleType::ShortText(char16_t* ABuffer) const noexcept {
  for (std::size_t I = 0; I < FShortLength; ++I)
    ABuffer[I] = static_cast<unsigned char>(FShort[I]);
  return {ABuffer, FShortLength};
}

void TLxJSONSimpleType::SetText(std::u16string_view AText) {
  if (AText.size() <= ShortCapacity) {
    // Narrowed first and checked once: one loop without branches.
    char Narrow[ShortCapacity] = {};
    char16_t Units = 0;
    for (std::size_t I = 0; I < AText.size(); ++I) {
      Units |= AText[I];
      Narrow[I] = static_cast<char>(AText[I]);
    }
    if (Units < 0x100) {
      StoreShort(Narrow, AText.size());
      return;
    }
  }
  SetVariant(Variant(AText));
}

bool TLxJSONSimpleType::SetShortRawText(std::u16string_view AText, bool APercent) noexcept {
  if (AText.size() > ShortCapacity)
    return false;
  // Width and escapes in the same one pass.
  char Narrow[ShortCapacity] = {};
  char16_t Units = 0;
  bool Escaped = false;
  for (std::size_t I = 0; I < AText.size(); ++I) {
    const char16_t Unit = AText[I];
    Units |= Unit;
    Escaped |= Unit == u'\\' || (APercent && Unit == u'%');
    Narrow[I] = static_cast<char>(Unit);
  }
  if (Units >= 0x100 || Escaped)
    return false;
  StoreShort(Narrow, AText.size());
  return true;
}

void TLxJSONSimpleType::StoreShort(const char* ANarrow, std::size_t ALength) noexcept {
  if (!HoldsShortText())
    FValue.~Variant();
  // All of it, so that the writer may widen the whole buffer in one go.
  std::memcpy(FShort, ANarrow, ShortCapacity);
  FShortLength = static_cast<std::uint8_t>(ALength);
}

void TLxJSONSimpleType::SetVariant(const Variant& AValue) {
  if (HoldsShortText()) {
    new (&FValue) Variant(AValue);
    FShortLength = NoShortText;
  } else {
    FValue = AValue;
  }
}

HRESULT TLxJSONSimpleType::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONSimpleType>(
      this, AIID, AObj, [&] { return TLxJSONBase::QueryInterface(AIID, AObj); });
}

bool TLxJSONSimpleType::GetAsBoolean() {
  return LxVarToBool(AsVariant(), /*ADefault=*/false, /*ARaiseError=*/false);
}
Double TLxJSONSimpleType::GetAsDouble() {
  return LxVarToDouble(AsVariant(), 0.0, /*ARaiseError=*/false);
}
Integer TLxJSONSimpleType::GetAsInteger() {
  return LxVarToInt(AsVariant(), 0, /*ARaiseError=*/false);
}
Int64 TLxJSONSimpleType::GetAsLargeInt() {
  return LxVarToInt64(AsVariant(), 0, /*ARaiseError=*/false);
}
Variant TLxJSONSimpleType::GetAsVariant() { return AsVariant(); }

LxJSONString TLxJSONSimpleType::GetAsString() {
  // Held text is the answer whatever the type says: a parsed null gives "null".
  if (HoldsShortText()) {
    char16_t Buffer[ShortCapacity];
    return LxJSONString(ShortText(Buffer));
  }
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
  SetVariant(Variant(AValue));
  FJSONType = jdtBoolean;
}

void TLxJSONSimpleType::SetAsDouble(Double AValue) {
  SetVariant(Variant(AValue));
  FJSONType = jdtNumber;
}

void TLxJSONSimpleType::SetAsInteger(Integer AValue) {
  SetVariant(Variant(AValue));
  FJSONType = jdtNumber;
}

void TLxJSONSimpleType::SetAsString(const LxJSONString& AValue) {
  SetVariant(Variant(AValue));
  FJSONType = jdtString;
}

void TLxJSONSimpleType::SetAsLargeInt(Int64 AValue) {
  SetVariant(Variant(AValue));
  FJSONType = jdtNumber;
}

void TLxJSONSimpleType::SetAsVariant(const Variant& AValue) {
  SetVariant(AValue);
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
