// The root class: metaclass walk, the two construction hooks and the live-instance count.
#include "lorvane/platform/System.h"

#include "lorvane/platform/SysUtils.h"

namespace lorvane {

// The count costs an atomic update in every constructor and destructor, so only builds that
// ask for it (the project's own test builds) keep it.
#if defined(LORVANE_COUNT_INSTANCES) && LORVANE_COUNT_INSTANCES
namespace {
std::atomic<Int64> LiveInstanceCount{0};
} // namespace

TObject::TObject() noexcept { LiveInstanceCount.fetch_add(1, std::memory_order_relaxed); }

TObject::~TObject() { LiveInstanceCount.fetch_sub(1, std::memory_order_relaxed); }

Int64 TObject::LiveInstances() noexcept {
  return LiveInstanceCount.load(std::memory_order_relaxed);
}
#else
TObject::TObject() noexcept = default;

TObject::~TObject() = default;

Int64 TObject::LiveInstances() noexcept { return -1; }
#endif

TClass TObject::StaticClass() noexcept {
  static const TMetaClass Meta{"TObject", nullptr, detail::DefaultFactory<TObject>(), nullptr};
  return &Meta;
}

UnicodeString TObject::ClassName() const { return ClassNameOf(ClassType()); }

bool TObject::ClassInheritsFrom(TClass AClass, TClass AAncestor) noexcept {
  for (TClass C = AClass; C; C = C->Parent)
    if (C == AAncestor)
      return true;
  return false;
}

bool TObject::InheritsFrom(TClass AClass) const noexcept {
  return ClassInheritsFrom(ClassType(), AClass);
}

void TObject::Free() {
  BeforeDestruction();
  delete this;
}

UnicodeString ClassNameOf(TClass AClass) {
  return AClass ? AsciiToString(AClass->Name) : UnicodeString();
}

} // namespace lorvane
