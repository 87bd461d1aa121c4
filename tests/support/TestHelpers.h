// Checks shared by the test programs: exact exceptions, and the checks on live objects.
#pragma once

#include "lorvane/platform/SysUtils.h"

#include <gtest/gtest.h>

#include <string_view>
#include <typeinfo>

namespace lorvane::test {

/// AAction must raise exactly class E (not a descendant) with exactly AMessage.
template <class E, class F> void ExpectRaises(F&& AAction, std::u16string_view AMessage) {
  try {
    AAction();
    ADD_FAILURE() << "nothing raised; expected " << StringToUTF8(AMessage);
  } catch (const E& Error) {
    EXPECT_EQ(typeid(Error), typeid(E));
    EXPECT_EQ(StringToUTF8(Error.Message()), StringToUTF8(AMessage));
  }
}

/// ExpectRaises for the library's failures that carry an error code: the code must be ACode.
template <class E, class F>
void ExpectRaisesWithCode(F&& AAction, std::u16string_view AMessage, int ACode) {
  try {
    AAction();
    ADD_FAILURE() << "nothing raised; expected " << StringToUTF8(AMessage);
  } catch (const E& Error) {
    EXPECT_EQ(typeid(Error), typeid(E));
    EXPECT_EQ(StringToUTF8(Error.Message()), StringToUTF8(AMessage));
    EXPECT_EQ(Error.ErrorCode(), ACode);
  }
}

/// Whether the library was built to count live objects; TObject::LiveInstances() answers -1
/// when it wasn't.
inline bool CountsLiveInstances() noexcept { return TObject::LiveInstances() >= 0; }

/// Fails a test that ends with more or fewer objects alive than it started with. Its tests
/// compare counts of objects throughout, so in a library built without the count they are
/// reported skipped: they can neither pass on counts nobody kept nor fail on them.
class LiveObjectsTest : public ::testing::Test {
protected:
  void SetUp() override {
    if (!CountsLiveInstances())
      GTEST_SKIP() << "the library keeps no live-instance count in this build";
    FLiveAtStart = TObject::LiveInstances();
  }
  void TearDown() override {
    if (CountsLiveInstances()) {
      EXPECT_EQ(TObject::LiveInstances(), FLiveAtStart) << "leaked";
    }
  }
  /// Objects made by this test and still alive.
  Int64 Alive() const { return TObject::LiveInstances() - FLiveAtStart; }

private:
  Int64 FLiveAtStart = 0;
};

/// For a test that checks other things besides the objects it leaves: the objects made since
/// construction and still alive must be AMade, which is checked only where the library counts.
class TLiveCount {
public:
  TLiveCount() noexcept : FAtStart(TObject::LiveInstances()) {}
  void ExpectMadeSince(Int64 AMade, const char* AWhat = "leaked") const {
    if (FAtStart >= 0) {
      EXPECT_EQ(TObject::LiveInstances() - FAtStart, AMade) << AWhat;
    }
  }

private:
  Int64 FAtStart;
};

} // namespace lorvane::test
