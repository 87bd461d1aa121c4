/// The coarse class of a value, by which conversions and comparisons choose their path:
///   TLxMainTypeKind   lmkNone ... lmkArray (one byte; lmkNone as an argument means any)
///   VarMainTypeKind   the main kind of what a Variant holds
#pragma once

#include "lorvane/platform/Variants.h"

namespace lorvane {

enum TLxMainTypeKind : Byte {
  lmkNone = 0,
  lmkInteger = 1,
  lmkFloat = 2,
  lmkString = 3,
  lmkBoolean = 4,
  lmkDateTime = 5,
  lmkArray = 6
};

/// Whole numbers of any width are lmkInteger, Currency counts as lmkFloat, every text
/// form is lmkString; Empty, Null and interfaces are lmkNone; any array is lmkArray.
TLxMainTypeKind VarMainTypeKind(const Variant& AValue) noexcept;

} // namespace lorvane
