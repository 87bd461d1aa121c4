// Checks shared by the test programs: exact exceptions, and a fixture that counts live objects.
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

/// Fails a test that ends with more or fewer objects alive than it started with.
class LiveObjectsTest : public ::testing::Test {
protected:
  void SetUp() override { FLiveAtStart = TObject::LiveInstances(); }
  void TearDown() override { EXPECT_EQ(TObject::LiveInstances(), FLiveAtStart) << "leaked"; }
  /// Objects made by this test and still alive.
  Int64 Alive() const { return TObject::LiveInstances() - FLiveAtStart; }

private:
  Int64 FLiveAtStart = 0;
};

} // namespace lorvane::test
