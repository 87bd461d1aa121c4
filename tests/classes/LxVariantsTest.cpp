// Lenient Variant reading: empty values, conversions, and the flag that turns defaults into
// failures.
#include "lorvane/classes/LxVariants.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <functional>

namespace lorvane {
namespace {

using test::ExpectRaises;

TEST(LxVariants, EmptinessAndArrayCount) {
  EXPECT_TRUE(LxVarIsEmpty(Variant()));
  EXPECT_TRUE(LxVarIsEmpty(Null()));
  EXPECT_FALSE(LxVarIsEmpty(Variant(0)));
  EXPECT_FALSE(LxVarIsEmpty(Variant(u"")));
  EXPECT_FALSE(LxVarIsEmpty(Variant(static_cast<IInterface*>(nullptr))));

  EXPECT_EQ(LxVarArrayCount(VarArrayOf({1, u"a", 2.5})), 3);
  EXPECT_EQ(LxVarArrayCount(VarArrayCreate({5, 7}, varInteger)), 3) << "bounds not from 0";
  EXPECT_EQ(LxVarArrayCount(VarArrayCreate({1, 0}, varVariant)), 0);
  EXPECT_EQ(LxVarArrayCount(Variant(u"abc")), 0) << "not an array";
}

TEST(LxVariants, ConversionsWithoutTheFlag) {
  // Each row: the value, then what the integer, 64-bit, double and boolean readers give with
  // the defaults 7, 7, 7.5 and true.
  struct Case {
    const char* What;
    Variant Value;
    Integer Int;
    Int64 Int64Value;
    double Double;
    bool Bool;
  };
  const Case Cases[] = {
      {"empty", Variant(), 7, 7, 7.5, true},
      {"null", Null(), 7, 7, 7.5, true},
      {"integer", Variant(12), 12, 12, 12, true},
      {"zero", Variant(0), 0, 0, 0, false},
      {"half to even", Variant(2.5), 2, 2, 2.5, true},
      {"true is -1", Variant(true), -1, -1, -1, true},
      {"false", Variant(false), 0, 0, 0, false},
      {"text with blanks", Variant(u" 12 "), 12, 12, 12, true},
      {"text float", Variant(u"1.5"), 2, 2, 1.5, true},
      {"text hex", Variant(u"$1F"), 31, 31, 31, true},
      {"text boolean", Variant(u"FALSE"), 7, 7, 7.5, false},
      {"text no number", Variant(u"abc"), 7, 7, 7.5, true},
      {"empty text", Variant(u""), 7, 7, 7.5, true},
      {"too big for 32 bits", Variant(Int64(1) << 40), 7, Int64(1) << 40, 1099511627776.0, true},
      {"array", VarArrayOf({1}), 7, 7, 7.5, true},
  };
  for (const Case& C : Cases) {
    SCOPED_TRACE(C.What);
    EXPECT_EQ(LxVarToInt(C.Value, 7, false), C.Int);
    EXPECT_EQ(LxVarToInt64(C.Value, 7, false), C.Int64Value);
    EXPECT_EQ(LxVarToDouble(C.Value, 7.5, false), C.Double);
    EXPECT_EQ(LxVarToExtended(C.Value, 7.5, false), C.Double);
    EXPECT_EQ(LxVarToBool(C.Value, true, false), C.Bool);
    EXPECT_EQ(LxVarBool(C.Value, true), C.Bool);
  }
}

TEST(LxVariants, TextOfValues) {
  EXPECT_EQ(LxVarToStr(Variant(), u"d", false), u"d");
  EXPECT_EQ(LxVarToStr(Null(), u"d", true), u"d") << "null gives the default even with the flag";
  EXPECT_EQ(LxVarToStr(Variant(u""), u"d", false), u"") << "an empty text is a text";
  EXPECT_EQ(LxVarToStr(Variant(u" a "), u"d", false), u" a ");
  EXPECT_EQ(LxVarToStr(Variant(-12), u"d", false), u"-12");
  EXPECT_EQ(LxVarToStr(Variant(1.5), u"d", false), u"1.5");
  EXPECT_EQ(LxVarToStr(Variant(true), u"d", false), u"True");
  EXPECT_EQ(LxVarToStr(Variant(EncodeDate(2024, 2, 29)), u"d", false), u"2024-02-29");
  EXPECT_EQ(LxVarToStr(VarArrayOf({1}), u"d", false), u"d");
}

TEST(LxVariants, FlagRaisesTheVariantFailureInsteadOfTheDefault) {
  struct Case {
    const char* What;
    std::function<void()> Action;
    std::u16string_view Message;
  };
  const Case Casts[] = {
      {"double of text", [] { LxVarToExtended(Variant(u"abc"), 0.0, true); },
       u"Could not convert variant of type (UnicodeString) into type (Double)"},
      {"int of empty text", [] { LxVarToInt(Variant(u""), 0, true); },
       u"Could not convert variant of type (UnicodeString) into type (Integer)"},
      {"bool of text", [] { LxVarToBool(Variant(u"yes"), false, true); },
       u"Could not convert variant of type (UnicodeString) into type (Boolean)"},
      {"text of array", [] { LxVarToStr(VarArrayOf({1}), u"", true); },
       u"Could not convert variant of type (Array Variant) into type (UnicodeString)"},
  };
  for (const Case& C : Casts) {
    SCOPED_TRACE(C.What);
    ExpectRaises<EVariantTypeCastError>(C.Action, C.Message);
  }
  ExpectRaises<EVariantOverflowError>(
      [] { LxVarToInt(Variant(1e10), 0, true); },
      u"Overflow while converting variant of type (Double) into type (Integer)");
  EXPECT_EQ(LxVarToExtended(Variant(u" 2.5 "), 0.0, true), 2.5);
  EXPECT_EQ(LxVarToInt64(Null(), 9, true), 9);
}

} // namespace
} // namespace lorvane
