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

} // namespace lorvane::xmlvalues
