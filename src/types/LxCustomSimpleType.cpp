// The class-level question of a value class: which type it wraps.
#include "lorvane/types/LxCustomSimpleType.h"

namespace lorvane {

const TLxTypeInfo* TLxCustomSimpleType::ValueTypeInfoOf(TClass AClass) {
  if (!AClass || !TObject::ClassInheritsFrom(AClass, StaticClass()) || !AClass->CreateDefault)
    return nullptr;
  TOwned<TObject> Probe(AClass->CreateDefault());
  return static_cast<TLxCustomSimpleType*>(Probe.get())->GetValueTypeInfo();
}

} // namespace lorvane
