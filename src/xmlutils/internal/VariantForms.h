/// What the Variant forms of the XML and JSON value conversions share: the failure of a value of
/// the wrong kind, the date form over the main kind, and the Def forms.
#pragma once

#include "lorvane/platform/Variants.h"
#include "lorvane/types/LxMainTypeKind.h"

#include <string_view>

namespace lorvane::xmlvalues {

/// EConvertError "The given value is not a valid <ATypeName> value!".
[[noreturn]] void RaiseNotValid(std::u16string_view ATypeName);

/// The Variant form of a date conversion: Null gives ADefault; integers, floats and dates are a
/// day count as they stand; text goes to AFromText; anything else raises RaiseNotValid(AName).
template <class TFromText>
TDateTime VariantToDateTime(const Variant& AValue, TDateTime ADefault, std::u16string_view AName,
                            TFromText AFromText) {
  if (VarIsNull(AValue))
    return ADefault;
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
  case lmkFloat:
  case lmkDateTime:
    return AValue.AsDouble();
  case lmkString:
    return AFromText(AValue.AsString());
  default:
    RaiseNotValid(AName);
  }
}

/// The Def forms: the strict parse, or the default for any failure.
template <class TParse> TDateTime OrDefault(TParse AParse, TDateTime ADefault) noexcept {
  try {
    return AParse();
  } catch (...) {
    return ADefault;
  }
}

} // namespace lorvane::xmlvalues
