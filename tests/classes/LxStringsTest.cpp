// Text helpers: choosing, cutting, padding, splitting, unquoting and reading files as text.
#include "lorvane/classes/LxStrings.h"

#include "lorvane/platform/CodePages.h"
#include "lorvane/platform/Streams.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

namespace lorvane {
namespace {

using test::ExpectRaises;
using Lines = std::vector<UnicodeString>;

Lines LinesOf(const TStrings& AStrings) { return Lines(AStrings.begin(), AStrings.end()); }

TEST(LxStrings, ChoosingCuttingAndPadding) {
  EXPECT_EQ(LxIf(true, u"a", u"b"), u"a");
  EXPECT_EQ(LxIf(false, u"a", u"b"), u"b");
  EXPECT_EQ(LxIf(false, u'x', u'y'), u'y');
  EXPECT_EQ(LxLeft(u"abc", 2), u"ab");
  EXPECT_EQ(LxLeft(u"abc", 9), u"abc");
  EXPECT_EQ(LxLeft(u"abc", -1), u"");
  EXPECT_EQ(LxPadLeft(u"", 4, u' '), u"    ") << "an indentation run";
  EXPECT_EQ(LxPadLeft(u"7", 3, u'0'), u"007");
  EXPECT_EQ(LxPadLeft(u"1234", 3, u'0'), u"1234") << "longer text isn't cut";
  EXPECT_EQ(LxPadLeft(u"ab", -2, u'0'), u"ab");
}

TEST(LxStrings, CharCaseModes) {
  struct Case {
    std::u16string_view Text;
    Integer Mode;
    std::u16string_view Separators, Expected;
  };
  const Case Cases[] = {
      {u"ClassName", 7, u" ", u"className"},
      {u"className", 7, u" ", u"className"},
      {u"URL", 7, u" ", u"uRL"},
      {u"string", 6, u" ", u"String"},
      {u"TCustomer", 6, u" ", u"TCustomer"},
      {u"", 7, u" ", u""},
      {u"", 6, u" ", u""},
      {u"_x", 6, u" ", u"_x"},
      {u"été", 6, u" ", u"été"},
      {u"ÉTÉ", 1, u" ", u"ÉtÉ"},
      {u"MiXed 1a", 0, u" ", u"MiXed 1a"},
      {u"MiXed 1a", 1, u" ", u"mixed 1a"},
      {u"MiXed 1a", 2, u" ", u"MIXED 1A"},
      {u"heLLo wORLD-foo", 3, u" ", u"Hello World-foo"},
      {u"heLLo wORLD-foo", 3, u" -", u"Hello World-Foo"},
      {u"heLLo  wORLD", 4, u" ", u"HeLLo  WORLD"},
      {u" lead", 4, u" ", u" Lead"},
      {u"heLLo wORLD", 5, u" ", u"Hello world"},
      {u"a b", 6, u"", u"A b"},
  };
  for (const Case& C : Cases)
    EXPECT_EQ(LxCharCase(C.Text, C.Mode, C.Separators), C.Expected)
        << StringToUTF8(C.Text) << " mode " << C.Mode;
  for (Integer Mode : {-1, 8})
    ExpectRaises<EArgumentOutOfRangeException>([&] { LxCharCase(u"a", Mode, u" "); },
                                               u"LxCharCase has no mode " + IntToStr(Mode));
}

TEST(LxStrings, TokenizeKeepsEmptyPartsAndTakesDelimitersWhole) {
  struct Case {
    std::u16string_view Value, Delimiter;
    Lines Expected;
  };
  const Case Cases[] = {
      {u"a b c", u" ", {u"a", u"b", u"c"}},
      {u"a,,b", u",", {u"a", u"", u"b"}},
      {u",a,", u",", {u"", u"a", u""}},
      {u",", u",", {u"", u""}},
      {u"", u",", {}},
      {u"abc", u",", {u"abc"}},
      {u"abc", u"", {u"abc"}},
      {u"x::y::", u"::", {u"x", u"y", u""}},
      {u"a:b", u"::", {u"a:b"}},
      {u"aaa", u"aa", {u"", u"a"}},
  };
  TOwned<TStringList> List(New<TStringList>());
  for (const Case& C : Cases) {
    SCOPED_TRACE(StringToUTF8(C.Value) + " / " + StringToUTF8(C.Delimiter));
    List->Add(u"left over");
    LxTokenize(C.Value, List.get(), C.Delimiter, nullptr);
    EXPECT_EQ(LinesOf(*List), C.Expected);
  }
}

TEST(LxStrings, TokenizeAlsoAppendsToASecondListAndNeedsAList) {
  TOwned<TStringList> List(New<TStringList>());
  TOwned<TStringList> All(New<TStringList>());
  LxTokenize(u"a|b", List.get(), u"|", All.get());
  LxTokenize(u"c", List.get(), u"|", All.get());
  EXPECT_EQ(LinesOf(*List), Lines({u"c"}));
  EXPECT_EQ(LinesOf(*All), Lines({u"a", u"b", u"c"}));
  ExpectRaises<EArgumentException>([] { LxTokenize(u"a", nullptr, u",", nullptr); },
                                   u"LxTokenize needs a list for the parts");
}

TEST(LxStrings, TokenizeByPatternCutsAtMatchesWithTheOptions) {
  TOwned<TStringList> List(New<TStringList>());
  LxTokenize(List.get(), u"a1b22c", u"\\d+", {});
  EXPECT_EQ(LinesOf(*List), Lines({u"a", u"b", u"c"}));
  LxTokenize(List.get(), u"aXbxc", u"x", {roIgnoreCase});
  EXPECT_EQ(LinesOf(*List), Lines({u"a", u"b", u"c"}));
  LxTokenize(List.get(), u"", u",", {});
  EXPECT_EQ(LinesOf(*List), Lines{});
  // A refused pattern raises before the list is cleared.
  LxTokenize(List.get(), u"a,b", u",", {});
  EXPECT_THROW(LxTokenize(List.get(), u"a", u"(", {}), ERegularExpressionError);
  EXPECT_EQ(LinesOf(*List), Lines({u"a", u"b"}));
  ExpectRaises<EArgumentException>([] { LxTokenize(nullptr, u"a", u",", {}); },
                                   u"LxTokenize needs a list for the parts");
}

TEST(LxStrings, NormalizeAndSimplify) {
  EXPECT_EQ(LxNormalizeString(u"e\u0301", NormalizationC), u"\u00E9");
  EXPECT_EQ(LxNormalizeString(u"\u00E9", NormalizationD), u"e\u0301");
  EXPECT_EQ(LxNormalizeString(u"\uFB01\u00B2", NormalizationKC), u"fi2");
  EXPECT_EQ(LxNormalizeString(u"e\u0301", NormalizationOther), u"e\u0301");
  // A lone surrogate passes through every form.
  EXPECT_EQ(LxNormalizeString(u"a\xD800"
                              u"e\u0301",
                              NormalizationC),
            u"a\xD800\u00E9");
  EXPECT_EQ(LxSimplifyString(u"Cr\u00E8me BR\u00DBL\u00C9E"), u"creme brulee");
  EXPECT_EQ(LxSimplifyString(u"Stra\u00DFe \uFF21\uFB01"), u"strasse afi");
  EXPECT_EQ(LxSimplifyString(u"\u00C5ngstr\u00F6m, 1-2"), u"angstrom, 1-2");
  EXPECT_EQ(LxSimplifyString(u""), u"");
}

TEST(LxStrings, StripLiteralsRemovesOnlyMatchingOuterQuotes) {
  const std::pair<std::u16string_view, std::u16string_view> Cases[] = {
      {u"'abc'", u"abc"},   {u"\"abc\"", u"abc"}, {u"''", u""},       {u"'it''s'", u"it''s"},
      {u"'a\"b'", u"a\"b"}, {u"abc", u"abc"},     {u"'abc", u"'abc"}, {u"'abc\"", u"'abc\""},
      {u"'", u"'"},         {u" 'a' ", u" 'a' "}, {u"", u""},
  };
  for (const auto& [Value, Expected] : Cases)
    EXPECT_EQ(LxStripLiterals(Value), Expected) << StringToUTF8(Value);
}

// --- files ---------------------------------------------------------------------------------------
class LoadStringFromFile : public ::testing::Test {
protected:
  void TearDown() override { std::remove(StringToUTF8(FName).c_str()); }
  const UnicodeString& Write(std::string_view ABytes) {
    TOwned<TFileStream> File(New<TFileStream>(FName, fmCreate));
    File->WriteBuffer(ABytes.data(), Int64(ABytes.size()));
    return FName;
  }
  const UnicodeString FName = UTF8ToString(std::string(::testing::TempDir()) + "lorvane_text." +
                                           std::to_string(::getpid()));
};

TEST_F(LoadStringFromFile, MarkDecidesElseTheCodePage) {
  struct Case {
    const char* What;
    std::string_view Bytes;
    Word CodePage;
    std::u16string_view Expected;
  };
  using namespace std::string_view_literals;
  const Case Cases[] = {
      {"UTF-8 mark beats 1252", "\xEF\xBB\xBFh\xC3\xA9", 1252, u"h\u00e9"},
      {"UTF-16LE mark", "\xFF\xFEh\0\xE9\0"sv, 65001, u"h\u00e9"},
      {"UTF-16BE mark", "\xFE\xFF\0h\0\xE9"sv, 0, u"h\u00e9"},
      {"no mark, 1252", "h\xE9", 1252, u"h\u00e9"},
      {"no mark, UTF-8", "h\xC3\xA9", 65001, u"h\u00e9"},
      {"no mark, 0 is the default", "\x80", 0, u"\u20ac"},
      {"no mark, 1200", "h\0"sv, 1200, u"h"},
      {"only a mark", "\xEF\xBB\xBF", 0, u""},
      {"empty", "", 65001, u""},
      {"bad UTF-8", "a\xFF", 65001, u"a\ufffd"},
  };
  for (const Case& C : Cases) {
    SCOPED_TRACE(C.What);
    EXPECT_EQ(LxLoadStringFromFile(Write(C.Bytes), C.CodePage), C.Expected);
  }
}

TEST_F(LoadStringFromFile, MissingFileAndUnknownCodePageRaise) {
  ExpectRaises<EFOpenError>([&] { LxLoadStringFromFile(FName, 0); },
                            u"Cannot open file \"" + FName + u"\". No such file or directory");
  Write("\xEF\xBB\xBF");
  ExpectRaises<EEncodingError>([&] { LxLoadStringFromFile(FName, 12345); },
                               u"Unsupported code page 12345");
}

} // namespace
} // namespace lorvane
