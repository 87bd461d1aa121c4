// Counted components: the count of construction, the last release, and the owner's say.
#include "lorvane/classes/LxComponent.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <thread>

namespace lorvane {
namespace {

IPtr<IInterface> IntfOf(TComponent* AComponent) {
  return IPtr<IInterface>::From(static_cast<IInterface*>(AComponent));
}

/// Takes an interface on itself and drops it again while it is made and while it is destroyed,
/// and, as an owner, on each component that joins it.
class TProbe : public TLxComponent {
  LX_CLASS(TProbe, TLxComponent)
  explicit TProbe(TComponent* AOwner) : TLxComponent(AOwner) {
    IntfOf(this);
    CountInConstructor = RefCount();
  }
  void BeforeDestruction() override {
    TLxComponent::BeforeDestruction();
    IntfOf(this);
  }
  void Notification(TComponent* AComponent, TOperation AOperation) override {
    if (AOperation == opInsert) {
      const IPtr<IInterface> Taken = IntfOf(AComponent);
      CountSeenOnInsert = static_cast<TLxComponent*>(AComponent)->RefCount();
    }
    TLxComponent::Notification(AComponent, AOperation);
  }
  Integer CountInConstructor = 0;
  Integer CountSeenOnInsert = 0;

protected:
  ~TProbe() override = default;
};

using LxComponent = test::LiveObjectsTest;

TEST_F(LxComponent, CountsFromOneDuringConstructionToZeroAfter) {
  TProbe* Probe = New<TProbe>(nullptr);
  EXPECT_EQ(Probe->CountInConstructor, 1);
  EXPECT_EQ(Probe->RefCount(), 0);
  {
    IPtr<IInterface> A = IntfOf(Probe);
    IPtr<IInterface> B = A;
    EXPECT_EQ(Probe->RefCount(), 2) << "queries and copies count";
    void* Nothing = reinterpret_cast<void*>(1);
    EXPECT_EQ(Probe->QueryInterface(TGUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}, &Nothing),
              E_NOINTERFACE);
    EXPECT_EQ(Nothing, nullptr);
    EXPECT_EQ(Probe->RefCount(), 2) << "a failed query takes no reference";
  }
  EXPECT_EQ(Alive(), 0) << "without an owner the last release frees it";
}

TEST_F(LxComponent, AutoDestroyFalseSurvivesTheLastRelease) {
  TProbe* Probe = New<TProbe>(nullptr);
  Probe->SetAutoDestroy(false);
  EXPECT_FALSE(Probe->GetAutoDestroy());
  IntfOf(Probe);
  EXPECT_EQ(Alive(), 1);
  Probe->Free();
  EXPECT_EQ(Alive(), 0) << "an interface taken during destruction doesn't free it twice";
}

TEST_F(LxComponent, OwnedComponentIsLeftToItsOwner) {
  TProbe* Owner = New<TProbe>(nullptr);
  Owner->SetAutoDestroy(false);
  TProbe* Child = New<TProbe>(Owner);
  EXPECT_EQ(Owner->CountSeenOnInsert, 2) << "told while the count of construction stands";
  EXPECT_EQ(Child->RefCount(), 0);
  EXPECT_FALSE(Child->GetAutoDestroy());
  IntfOf(Child);
  EXPECT_EQ(Alive(), 2) << "a release doesn't free an owned component";

  IPtr<IInterface> Held = IntfOf(Child);
  Owner->RemoveComponent(Child);
  EXPECT_TRUE(Child->GetAutoDestroy()) << "let go, it decides for itself again";
  Held = nullptr;
  EXPECT_EQ(Alive(), 1);

  New<TProbe>(Owner);
  New<TProbe>(Owner);
  Owner->Free();
  EXPECT_EQ(Alive(), 0) << "the owner frees what it owns";
}

TEST_F(LxComponent, CountsAtomicallyAcrossThreads) {
  TOwned<TProbe> Probe(New<TProbe>(nullptr));
  Probe->SetAutoDestroy(false);
  auto Churn = [&] {
    for (int I = 0; I < 20000; ++I) {
      Probe->_AddRef();
      Probe->_Release();
    }
  };
  Probe->_AddRef();
  std::thread Other(Churn);
  Churn();
  Other.join();
  EXPECT_EQ(Probe->_Release(), 0);
}

} // namespace
} // namespace lorvane
