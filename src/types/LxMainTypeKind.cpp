// The main kind of a Variant's value.
#include "lorvane/types/LxMainTypeKind.h"

namespace lorvane {

TLxMainTypeKind VarMainTypeKind(const Variant& AValue) noexcept {
  const TVarType Type = VarType(AValue);
  if (Type & varArray)
    return lmkArray;
  switch (Type) {
  case varSmallint:
  case varInteger:
  case varShortInt:
  case varByte:
  case varWord:
  case varLongWord:
  case varInt64:
  case varUInt64:
    return lmkInteger;
  case varSingle:
  case varDouble:
  case varCurrency:
  case varDecimal:
    return lmkFloat;
  case varOleStr:
  case varString:
  case varUString:
    return lmkString;
  case varBoolean:
    return lmkBoolean;
  case varDate:
    return lmkDateTime;
  default:
    return lmkNone;
  }
}

} // namespace lorvane
