// Between the value tree's objects and its interfaces: the interface of a result, and the object
// behind an interface argument.
#pragma once

#include "lorvane/json/LxJSONValues.h"
#include "lorvane/platform/Generics.h"

namespace lorvane::jsonfaces {

/// AObject as the interface I; nil for nil.
template <class I, class T> IPtr<I> Face(T* AObject) {
  return AObject ? IPtr<I>(static_cast<I*>(AObject)) : IPtr<I>();
}

/// The object behind AInterface, of the class asked for; nil for nil. Any other object raises
/// EInvalidCast "Invalid class typecast".
template <class T> T* ObjectOf(IInterface* AInterface) {
  if (!AInterface)
    return nullptr;
  IPtr<ILxObject> Object = IPtr<ILxObject>::From(AInterface);
  if (auto* Result = Object ? dynamic_cast<T*>(Object->Implementor()) : nullptr)
    return Result;
  throw EInvalidCast(UnicodeString(SInvalidCast));
}

} // namespace lorvane::jsonfaces
