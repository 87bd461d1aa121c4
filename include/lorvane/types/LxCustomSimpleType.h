/// TLxCustomSimpleType: the base of small value classes that wrap one simple value (a number, a
/// text, a date) and may hold no value at all. The serializers write such an object as its value.
#pragma once

#include "lorvane/classes/LxObjectEx.h"
#include "lorvane/types/LxTypes.h"

namespace lorvane {

class TLxCustomSimpleType : public TLxObjectEx {
  LX_CLASS(TLxCustomSimpleType, TLxObjectEx)

  /// The type of the value that objects of AClass wrap; nil for a class that isn't a
  /// TLxCustomSimpleType or can't be made without arguments (the answer comes from a
  /// short-lived object of the class, as C++ has no virtual class operations).
  static const TLxTypeInfo* ValueTypeInfoOf(TClass AClass);
  /// The type of the wrapped value.
  virtual const TLxTypeInfo* GetValueTypeInfo() const = 0;
  /// The value as a Variant; Empty when no value is set.
  virtual Variant GetValueAsVariant() const = 0;
  /// Sets the value from AValue, converted to the wrapped type; an empty AValue clears it.
  virtual void SetValueFrom(const TValue& AValue) = 0;

protected:
  TLxCustomSimpleType() = default;
  ~TLxCustomSimpleType() override = default;
};

} // namespace lorvane
