/// Shared by the two value conversion sources: the coarse kind of a Variant and the failure of
/// the Variant forms.
#pragma once

#include "lorvane/platform/Variants.h"

#include <string_view>

namespace lorvane::xmlvalues {

/// The coarse kind of a Variant's value, by which the Variant forms choose their path. The type
/// registry will own this classification; until it exists it lives here.
enum class MainKind : Byte { None, Integer, Float, String, Boolean, DateTime, Array };
MainKind MainTypeKind(const Variant& AValue) noexcept;

/// EConvertError "The given value is not a valid <ATypeName> value!".
[[noreturn]] void RaiseNotValid(std::u16string_view ATypeName);

/// The Variant form of a date conversion: Null gives ADefault; integers, floats and dates are a
/// day count as they stand; text goes to AFromText; anything else raises RaiseNotValid(AName).
template <class TFromText>
TDateTime VariantToDateTime(const Variant& AValue, TDateTime ADefault, std::u16string_view AName,
                            TFromText AFromText) {
  if (VarIsNull(AValue))
    return ADefault;
  switch (MainTypeKind(AValue)) {
  case MainKind::Integer:
  case MainKind::Float:
  case MainKind::DateTime:
    return AValue.AsDouble();
  case MainKind::String:
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
