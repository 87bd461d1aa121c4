/// TLxComponent: a component whose interfaces are reference counted as TLxObject's are, with the
/// owner deciding its lifetime while it has one.
#pragma once

#include "lorvane/platform/Classes.h"

#include <atomic>

namespace lorvane {

/// Counts interface references atomically, where a plain TComponent doesn't count at all. The
/// count starts at 1 while the constructor chain runs (interfaces taken and dropped there can't
/// destroy the component) and drops to 0 in AfterConstruction, after the owner has been told of
/// the new component. When a release brings the count to 0 and GetAutoDestroy is true, the
/// component frees itself.
///
/// GetAutoDestroy is the AutoDestroy flag (true after construction) and having no owner: an owned
/// component is never freed by a release, because its owner frees it. Once its owner lets it go
/// (RemoveComponent), a component with AutoDestroy true is freed again by the release that brings
/// the count to 0; a count already at 0 stays so, and the caller frees it. A component freed by
/// its owner or by Free while interfaces are still held leaves them dangling, as with TLxObject.
///
/// Descendants that answer further interfaces in QueryInterface take the reference themselves
/// (_AddRef) for their own IIDs and pass the rest to this class's QueryInterface.
class TLxComponent : public TComponent {
  LX_CLASS(TLxComponent, TComponent)
  explicit TLxComponent(TComponent* AOwner) : TComponent(AOwner) {}

  /// Tells the owner (as TComponent does), then lowers the count by the 1 of construction.
  void AfterConstruction() override;
  /// Raises the count by 1 for the rest of the destruction, so that interfaces taken and dropped
  /// there (in the owner's notifications, say) can't free the component a second time.
  void BeforeDestruction() override;

  /// IInterface, with a counted reference.
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  Integer _AddRef() override;
  /// Gives the new count; at 0 with GetAutoDestroy true the component is gone when this returns.
  Integer _Release() override;

  /// AutoDestroy, and no owner.
  virtual bool GetAutoDestroy() const;
  void SetAutoDestroy(bool AValue) noexcept { FAutoDestroy = AValue; }
  Integer RefCount() const noexcept { return FRefCount.load(std::memory_order_acquire); }

protected:
  ~TLxComponent() override = default;
  std::atomic<Integer> FRefCount{1};

private:
  bool FAutoDestroy = true;
};

} // namespace lorvane
