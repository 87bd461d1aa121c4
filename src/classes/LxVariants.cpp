// Lenient Variant reading: the default for empty values, and for failed conversions on request.
#include "lorvane/classes/LxVariants.h"

namespace lorvane {

namespace {

template <class T, class F>
T Convert(const Variant& AValue, T ADefault, bool ARaiseError, F AConvert) {
  if (LxVarIsEmpty(AValue))
    return ADefault;
  try {
    return AConvert(AValue);
  } catch (const EVariantError&) {
    if (ARaiseError)
      throw;
    return ADefault;
  }
}

} // namespace

bool LxVarIsEmpty(const Variant& AValue) noexcept {
  return VarIsEmpty(AValue) || VarIsNull(AValue);
}

Integer LxVarArrayCount(const Variant& AValue) noexcept {
  if (!VarIsArray(AValue))
    return 0;
  // One dimension always: the bounds can't raise here.
  return static_cast<Integer>(static_cast<Int64>(VarArrayHighBound(AValue, 1)) -
                              VarArrayLowBound(AValue, 1) + 1);
}

UnicodeString LxVarToStr(const Variant& AValue, std::u16string_view ADefault, bool ARaiseError) {
  return Convert(AValue, UnicodeString(ADefault), ARaiseError,
                 [](const Variant& V) { return V.AsString(); });
}

bool LxVarToBool(const Variant& AValue, bool ADefault, bool ARaiseError) {
  return Convert(AValue, ADefault, ARaiseError, [](const Variant& V) { return V.AsBoolean(); });
}

bool LxVarBool(const Variant& AValue, bool ADefault) {
  return LxVarToBool(AValue, ADefault, /*ARaiseError=*/false);
}

Integer LxVarToInt(const Variant& AValue, Integer ADefault, bool ARaiseError) {
  return Convert(AValue, ADefault, ARaiseError, [](const Variant& V) { return V.AsInteger(); });
}

Int64 LxVarToInt64(const Variant& AValue, Int64 ADefault, bool ARaiseError) {
  return Convert(AValue, ADefault, ARaiseError, [](const Variant& V) { return V.AsInt64(); });
}

Double LxVarToDouble(const Variant& AValue, Double ADefault, bool ARaiseError) {
  return Convert(AValue, ADefault, ARaiseError, [](const Variant& V) { return V.AsDouble(); });
}

Extended LxVarToExtended(const Variant& AValue, Extended ADefault, bool ARaiseError) {
  return LxVarToDouble(AValue, ADefault, ARaiseError);
}

} // namespace lorvane
