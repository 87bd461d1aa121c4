// Counted components: the count of construction, counted interface references and the owner's
// say over destruction.
#include "lorvane/classes/LxComponent.h"

namespace lorvane {

void TLxComponent::AfterConstruction() {
  // The owner's notification may take and drop an interface: the count of 1 must still stand.
  TComponent::AfterConstruction();
  FRefCount.fetch_sub(1, std::memory_order_release);
}

void TLxComponent::BeforeDestruction() {
  FRefCount.fetch_add(1, std::memory_order_relaxed);
  TComponent::BeforeDestruction();
}

HRESULT TLxComponent::QueryInterface(const TGUID& AIID, void** AObj) {
  const HRESULT Result = TComponent::QueryInterface(AIID, AObj);
  // TComponent hands out uncounted references; the caller here owns one.
  if (Result == S_OK)
    _AddRef();
  return Result;
}

Integer TLxComponent::_AddRef() { return FRefCount.fetch_add(1, std::memory_order_relaxed) + 1; }

Integer TLxComponent::_Release() {
  const Integer Count = FRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (Count == 0 && GetAutoDestroy())
    Free();
  return Count;
}

bool TLxComponent::GetAutoDestroy() const { return FAutoDestroy && !GetOwner(); }

} // namespace lorvane
