// The main kind of a Variant's value, coarsened from the platform's families of type codes.
#include "lorvane/types/LxMainTypeKind.h"

namespace lorvane {

TLxMainTypeKind VarMainTypeKind(const Variant& AValue) noexcept {
  switch (VarKind(AValue)) {
  case TVarKind::vkSigned:
  case TVarKind::vkUnsigned:
    return lmkInteger;
  case TVarKind::vkSingle:
  case TVarKind::vkDouble:
  case TVarKind::vkCurrency:
    return lmkFloat;
  case TVarKind::vkText:
  case TVarKind::vkBytes:
    return lmkString;
  case TVarKind::vkBoolean:
    return lmkBoolean;
  case TVarKind::vkDate:
    return lmkDateTime;
  case TVarKind::vkArray:
    return lmkArray;
  default:
    return lmkNone;
  }
}

} // namespace lorvane
