// Format with the library's message texts, number conversions both ways, and text helpers.
#include "lorvane/platform/SysUtils.h"

#include "support/ScopeGuards.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace lorvane {
namespace {

TEST(Format, FillsTheMessageTextsOfTheReaders) {
  EXPECT_EQ(
      Format(u"The document is not wellformed!\r\n\"%s\" expected, but \"%s\" found!", {u">", u""}),
      u"The document is not wellformed!\r\n\">\" expected, but \"\" found!");
  EXPECT_EQ(Format(u"Row: %d, Col: %d.", {12, -3}), u"Row: 12, Col: -3.");
  EXPECT_EQ(Format(u"List index (%s-%s) out of bounds!", {u"a", "b"}),
            u"List index (a-b) out of bounds!");
  EXPECT_EQ(Format(u"%s", {u'\u00e9'}), u"\u00e9");
  EXPECT_EQ(Format(u"100%% %x %X %u", {255, 255, 7u}), u"100% ff FF 7");
  EXPECT_EQ(Format(u"[%5s|%-3d|%1:.3d|%0:s]", {u"ab", 7}), u"[   ab|7  |007|ab]")
      << "width, left justification, precision and an argument index";
}

TEST(Format, MismatchedOrMissingArgumentsRaise) {
  for (const char16_t* Bad : {u"%d", u"%s %s", u"%", u"%q"}) {
    try {
      Format(Bad, {u"text"});
      ADD_FAILURE() << "no exception";
    } catch (const EConvertError& E) {
      EXPECT_EQ(E.Message(),
                u"Format '" + UnicodeString(Bad) + u"' invalid or incompatible with argument");
    }
  }
}

TEST(Format, EachSpecifierRendersItsArgument) {
  const test::TFormatSettingsScope Comma(u',');
  const struct {
    const char16_t* Format;
    std::vector<TVarRec> Args;
    const char16_t* Expected;
  } Cases[] = {
      {u"%.4d|%.4d|%.1d", {-7, 7, 123}, u"-0007|0007|123"},
      {u"%u|%u", {-1, 5ull}, u"4294967295|5"},
      {u"%.4x|%X|%x", {255, 0xABCDEFull, 0}, u"00ff|ABCDEF|0"},
      {u"%.2s|%.9s|%-4s|%4s", {u"abcdef", u"abc", "ab", u'c'}, u"ab|abc|ab  |   c"},
      {u"%f|%.3f|%e|%g", {1.5, 2.0, 1.5, 0.25}, u"1,50|2,000|1,50000000000000e+00|0,25"},
      {u"%S %D %U", {u"up", 3, 4u}, u"up 3 4"},
      {u"%1:s %s %0:s %s", {u"a", u"b", u"c"}, u"b c a b"},
      {u"%s", {"\xC3\xA9"}, u"\u00e9"},
      {u"%%%s%%%%", {u"x"}, u"%x%%"},
      {u"no specifiers", {}, u"no specifiers"},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Format));
    EXPECT_EQ(Format(Case.Format, Case.Args.data(), static_cast<Integer>(Case.Args.size()) - 1),
              Case.Expected);
  }
}

TEST(Format, SpecifiersThatDontFitRaise) {
  const struct {
    const char16_t* Format;
    std::vector<TVarRec> Args;
  } Cases[] = {
      {u"%1:", {1, 2}},   {u"%5", {1}},      {u"%-", {1}},    {u"%.", {1}},
      {u"%100001d", {1}}, {u"%2:d", {1, 2}}, {u"%f", {1}},    {u"%d", {1.5}},
      {u"%x", {u"1"}},    {u"%s", {1}},      {u"%d %d", {1}}, {u"abc%", {}},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Format));
    test::ExpectRaises<EConvertError>(
        [&] { Format(Case.Format, Case.Args.data(), static_cast<Integer>(Case.Args.size()) - 1); },
        u"Format '" + UnicodeString(Case.Format) + u"' invalid or incompatible with argument");
  }
}

TEST(IntegerText, ParsesDecimalAndHexadecimalWithinRange) {
  struct Case {
    const char16_t* Text;
    bool Ok;
    Int64 Value;
  };
  const Case Cases[] = {
      {u"42", true, 42},
      {u"-42", true, -42},
      {u"+7", true, 7},
      {u"$FF", true, 255},
      {u"0x10", false, 0},
      {u" 12", false, 0},
      {u"", false, 0},
      {u"12 ", false, 0},
      {u"1.5", false, 0},
      {u"-", false, 0},
      {u"2147483647", true, 2147483647},
      {u"2147483648", false, 0},
      {u"-2147483648", true, -2147483648LL},
      {u"$", false, 0},
  };
  for (const Case& C : Cases) {
    Integer Value = 0;
    EXPECT_EQ(TryStrToInt(C.Text, Value), C.Ok) << StringToUTF8(C.Text);
    if (C.Ok) {
      EXPECT_EQ(Value, C.Value);
    }
    EXPECT_EQ(StrToIntDef(C.Text, -99), C.Ok ? C.Value : -99);
  }
  EXPECT_EQ(StrToInt64(u"-9223372036854775808"), std::numeric_limits<Int64>::min());
  EXPECT_EQ(StrToInt64Def(u"9223372036854775808", 5), 5);
  try {
    StrToInt(u"x1");
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), u"'x1' is not a valid integer value");
  }
}

TEST(FloatText, GeneralFormatWithFifteenDigits) {
  struct Case {
    double Value;
    const char16_t* Text;
  };
  const Case Cases[] = {
      {0, u"0"},
      {1.5, u"1.5"},
      {-0.25, u"-0.25"},
      {100, u"100"},
      {1e20, u"1E20"},
      {1.5e-7, u"1.5E-7"},
      {0.00001, u"0.00001"},
      {0.000001, u"1E-6"},
      {123456789012345.0, u"123456789012345"},
      {1234567890123456.0, u"1.23456789012346E15"},
      {0.1 + 0.2, u"0.3"},
      {1.0 / 3, u"0.333333333333333"},
      {-1e-300, u"-1E-300"},
  };
  for (const Case& C : Cases)
    EXPECT_EQ(FloatToStr(C.Value), C.Text) << C.Value;
  EXPECT_EQ(FloatToStr(std::numeric_limits<double>::quiet_NaN()), u"NAN");
  EXPECT_EQ(FloatToStr(-std::numeric_limits<double>::infinity()), u"-INF");
}

TEST(FloatText, ParsingFollowsTheDecimalSeparatorOfTheSettings) {
  EXPECT_EQ(StrToFloat(u"1.5e3"), 1500);
  EXPECT_EQ(StrToFloat(u" -2.5 "), -2.5);
  EXPECT_TRUE(std::isinf(StrToFloat(u"-INF")));
  EXPECT_EQ(StrToFloat(u"1e-400"), 0) << "underflow gives zero";
  for (const char16_t* Bad : {u"", u"1,5", u".", u"1e", u"e5", u"1e400", u"0x10", u"--1"})
    EXPECT_EQ(StrToFloatDef(Bad, -1), -1) << StringToUTF8(Bad);
  try {
    StrToFloat(u"abc");
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), u"'abc' is not a valid floating point value");
  }
  const test::TFormatSettingsScope Comma(u',');
  EXPECT_EQ(StrToFloat(u"1,5"), 1.5);
  EXPECT_EQ(StrToFloatDef(u"1.5", -1), -1);
  EXPECT_EQ(FloatToStr(2.25), u"2,25");
  EXPECT_EQ(FloatToStr(2.5e-9), u"2,5E-9");
}

TEST(Text, TrimCopyPosAndCase) {
  EXPECT_EQ(Trim(u"\t a b \r\n"), u"a b");
  EXPECT_EQ(Trim(u" \x01 "), u"");
  EXPECT_EQ(Copy(u"abcdef", 0, 2), u"ab") << "a position below 1 means 1";
  EXPECT_EQ(Copy(u"abcdef", 5, 100), u"ef");
  EXPECT_EQ(Copy(u"abc", 4, 1), u"");
  EXPECT_EQ(Pos(u"cd", u"abcdcd"), 3);
  EXPECT_EQ(Pos(u"x", u"abc"), 0);
  EXPECT_EQ(Pos(u"", u"abc"), 0);
  EXPECT_TRUE(SameText(u"Encoding", u"eNCODING"));
  EXPECT_FALSE(SameText(u"\u00e9", u"\u00c9")) << "only ASCII letters fold";
  EXPECT_LT(CompareText(u"apple", u"Banana"), 0);
  EXPECT_EQ(UpperCase(u"utf-8 \u00e9"), u"UTF-8 \u00e9");
  EXPECT_EQ(StringReplaceAll(u"a&b&c", u"&", u"&amp;"), u"a&amp;b&amp;c");
}

TEST(Text, Utf8ConversionReplacesIllFormedInput) {
  EXPECT_EQ(UTF8ToString("a\xC3\xA9\xF0\x9F\x98\x80"), u"a\u00e9\U0001F600");
  EXPECT_EQ(UTF8ToString("\xC0\xAF\xED\xA0\x80x"), u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDx")
      << "overlong forms and encoded surrogates are ill-formed";
  EXPECT_EQ(StringToUTF8(u"\u00e9\U0001F600"), "\xC3\xA9\xF0\x9F\x98\x80");
  EXPECT_EQ(StringToUTF8(std::u16string(1, u'\xD800') + u"a"), "\xEF\xBF\xBD"
                                                               "a");
  // A high surrogate that ends the text, after a run long enough for the word-at-a-time path,
  // and one followed by anything but a low surrogate.
  EXPECT_EQ(StringToUTF8(u"abcdefgh" + std::u16string(1, u'\xD83D')), "abcdefgh\xEF\xBF\xBD");
  EXPECT_EQ(StringToUTF8(std::u16string(u"abcd\xD83Dxyzw\xDE00")),
            "abcd\xEF\xBF\xBDxyzw\xEF\xBF\xBD");
  EXPECT_TRUE(StrToBool(u" TRUE "));
  EXPECT_FALSE(StrToBool(u"0"));
  EXPECT_THROW(StrToBool(u"yes"), EConvertError);
}

TEST(Text, Utf16ToUtf8RoundTripsAtEveryAlignment) {
  // Every kind of unit (ASCII, two- and three-byte, pairs) after ASCII runs of every length up to
  // a few words, so that each kind meets the word-at-a-time path at each offset.
  const std::u16string Kinds[] = {u"\u00e9", u"\u20ac", u"\U0001F600", u"\u007f", u"\uffff"};
  for (std::size_t Run = 0; Run < 12; ++Run)
    for (const std::u16string& Kind : Kinds) {
      const std::u16string Text =
          std::u16string(Run, u'a') + Kind + std::u16string(Run, u'b') + Kind;
      EXPECT_EQ(UTF8ToString(StringToUTF8(Text)), Text) << Run;
    }
}

} // namespace
} // namespace lorvane
