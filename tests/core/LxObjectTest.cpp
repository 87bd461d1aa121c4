// The counted base object: the three ownership patterns, interface queries and the readers' base
// exception.
#include "lorvane/core/LxObject.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

/// Takes an interface on itself inside its constructor and drops it again.
class TProbe : public TLxObject {
  LX_CLASS(TProbe, TLxObject)
  TProbe() {
    IPtr<ILxObject> Self(static_cast<ILxObject*>(this));
    CountInConstructor = RefCount();
  }
  Integer CountInConstructor = 0;

protected:
  ~TProbe() override = default;
};

using LxObject = test::LiveObjectsTest;

TEST_F(LxObject, InterfaceTakenInsideTheConstructorDoesNotDestroyIt) {
  TProbe* Probe = New<TProbe>();
  EXPECT_EQ(Probe->CountInConstructor, 2) << "1 while constructing, plus the interface";
  EXPECT_EQ(Probe->RefCount(), 0);
  EXPECT_EQ(Alive(), 1);
  Probe->Free();
}

TEST_F(LxObject, LastReleaseDestroysOnlyWithAutoDestroy) {
  {
    IPtr<ILxObject> Intf(New<TProbe>());
    EXPECT_EQ(Alive(), 1);
  }
  EXPECT_EQ(Alive(), 0) << "AutoDestroy is true after construction";

  TProbe* Owned = New<TProbe>();
  Owned->SetAutoDestroy(false);
  Owned->_AddRef();
  EXPECT_EQ(Owned->_Release(), 0);
  EXPECT_EQ(Alive(), 1) << "survives its last release";
  Owned->Free();
}

TEST_F(LxObject, OwnerLettingGoLeavesDestructionToTheLastInterface) {
  // The owner pattern: free at once when nobody holds an interface, else hand over to the
  // last release.
  auto LetGo = [](TLxObject* AObject) {
    if (AObject->RefCount() != 0)
      AObject->SetAutoDestroy(true);
    else
      AObject->Free();
  };
  TProbe* Held = New<TProbe>();
  Held->SetAutoDestroy(false);
  IPtr<ILxObject> Intf(Held);
  LetGo(Held);
  EXPECT_EQ(Alive(), 1);
  Intf = nullptr;
  EXPECT_EQ(Alive(), 0);

  TProbe* Unheld = New<TProbe>();
  Unheld->SetAutoDestroy(false);
  LetGo(Unheld);
  EXPECT_EQ(Alive(), 0);
}

TEST_F(LxObject, QueryInterfaceLeadsBackToTheImplementor) {
  TProbe* Probe = New<TProbe>();
  IPtr<IInterface> Root(static_cast<IInterface*>(Probe));
  IPtr<ILxObject> Lx = IPtr<ILxObject>::From(Root);
  ASSERT_TRUE(Lx);
  EXPECT_EQ(Lx->Implementor(), Probe);
  EXPECT_EQ(Probe->RefCount(), 2);
  void* Nothing = reinterpret_cast<void*>(1);
  EXPECT_EQ(Probe->QueryInterface(TGUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}, &Nothing),
            E_NOINTERFACE);
  EXPECT_EQ(Nothing, nullptr);
  EXPECT_TRUE(Supports<ILxObject>(Root.Get()));
  EXPECT_EQ(Probe->RefCount(), 2) << "Supports without a result takes no reference";
  EXPECT_TRUE(Probe->InheritsFrom(TLxObject::StaticClass()));
  EXPECT_EQ(Probe->ClassName(), u"TProbe");
}

TEST(LxException, BothConstructorsCarryMessageAndCode) {
  const ELxException Plain(u"bad", 7);
  EXPECT_EQ(Plain.Message(), u"bad");
  EXPECT_EQ(Plain.ErrorCode(), 7);
  const TVarRec Args[] = {u"x", 3};
  const ELxException Formatted(u"%s at %d", Args, /*AArgsHigh=*/1, 12);
  EXPECT_EQ(Formatted.Message(), u"x at 3");
  EXPECT_EQ(Formatted.ErrorCode(), 12);
  EXPECT_STREQ(Formatted.what(), "x at 3");
  EXPECT_THROW(ELxException(u"%s at %d", Args, /*AArgsHigh=*/0, 1), EConvertError)
      << "a format that asks for more arguments than given";
}

} // namespace
} // namespace lorvane
