// TRegEx: the five options, the replacement syntax, splitting, refused patterns, the match limit
// and the per-thread cache of compiled patterns.
#include "lorvane/platform/RegularExpressions.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/TestHelpers.h"

namespace lorvane {
namespace {

using test::ExpectRaises;

TEST(RegEx, OptionsChangeWhatMatches) {
  const struct {
    const char16_t* Input;
    const char16_t* Pattern;
    TRegExOptions Options;
    bool Expected;
  } Cases[] = {
      {u"ABC", u"b", {}, false},
      {u"ABC", u"b", {roIgnoreCase}, true},
      {u"\u00C9T\u00C9", u"\u00e9t\u00e9", {roIgnoreCase}, true},
      {u"a\nb", u"^b$", {}, false},
      {u"a\nb", u"^b$", {roMultiLine}, true},
      {u"a\nb", u"a.b", {}, false},
      {u"a\nb", u"a.b", {roSingleLine}, true},
      {u"ab", u"a b # comment", {}, false},
      {u"ab", u"a b # comment", {roIgnorePatternSpace}, true},
      // Unicode classes: a letter of any script is \w, an Arabic-Indic digit is \d
      {u"\u0436", u"^\\w$", {}, true},
      {u"\u0663", u"^\\d$", {}, true},
      // a surrogate pair is one character; a lone surrogate in a subject matches only itself
      {u"\U0001F600", u"^.$", {}, true},
      {u"a\xD800z", u"a.z", {}, false},
      {u"a\xD800z", u"z$", {}, true},
      {u"", u"^$", {}, true},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(TRegEx::IsMatch(Case.Input, Case.Pattern, Case.Options), Case.Expected)
        << StringToUTF8(Case.Pattern) << " on " << StringToUTF8(Case.Input);
}

TEST(RegEx, ReplacementSyntax) {
  const struct {
    const char16_t* Input;
    const char16_t* Pattern;
    const char16_t* Replacement;
    TRegExOptions Options;
    const char16_t* Expected;
  } Cases[] = {
      {u"John Smith", u"(\\w+) (\\w+)", u"$2, $1", {}, u"Smith, John"},
      {u"John Smith", u"(\\w+) (\\w+)", u"\\2 \\1", {}, u"Smith John"},
      {u"John Smith", u"(?<first>\\w+) (?<last>\\w+)", u"${last} \\{first}", {}, u"Smith John"},
      {u"abc", u"b", u"[$&|$0|$`|$'|$_]", {}, u"a[b|b|a|c|abc]c"},
      {u"abc", u"b", u"$$ \\\\ $x \\q", {}, u"a$ \\ $x \\qc"},
      // two digits only where the group exists
      {u"abcdefghijkl", u"(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)(k)", u"$11|$12", {}, u"k|a2l"},
      // an unknown or unmatched group is empty, a trailing "$" is itself
      {u"ab", u"(a)|(z)", u"[$2$9${none}]$", {}, u"[]$b"},
      // explicit capture: unnamed groups don't count
      {u"ab", u"(a)(?<n>b)", u"$1", {roExplicitCapture}, u"b"},
      // empty matches, Perl style: also directly behind a non-empty one
      {u"abc", u"x*", u"-", {}, u"-a-b-c-"},
      {u"abxd", u"x*", u"-", {}, u"-a-b--d-"},
      {u"\U0001F600", u"", u"-", {}, u"-\U0001F600-"},
      {u"aaa", u"a", u"", {}, u""},
      {u"", u"^", u"x", {}, u"x"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(
        StringToUTF8(TRegEx::Replace(Case.Input, Case.Pattern, Case.Replacement, Case.Options)),
        StringToUTF8(Case.Expected))
        << StringToUTF8(Case.Pattern) << " with " << StringToUTF8(Case.Replacement);
}

TEST(RegEx, SplitKeepsEmptyPartsButNotEmptyMatches) {
  using Parts = std::vector<UnicodeString>;
  EXPECT_EQ(TRegEx::Split(u"a,b,,c", u","), (Parts{u"a", u"b", u"", u"c"}));
  EXPECT_EQ(TRegEx::Split(u",a,", u","), (Parts{u"", u"a", u""}));
  EXPECT_EQ(TRegEx::Split(u"a1b22c", u"\\d*"), (Parts{u"a", u"b", u"c"}));
  EXPECT_EQ(TRegEx::Split(u"abc", u"x*"), (Parts{u"abc"}));
  EXPECT_EQ(TRegEx::Split(u"", u","), Parts{});
  EXPECT_EQ(TRegEx::Split(u"aXbxc", u"x", {roIgnoreCase}), (Parts{u"a", u"b", u"c"}));
}

TEST(RegEx, RefusedPatternsRaiseWithTheOffset) {
  ExpectRaises<ERegularExpressionError>(
      [] { TRegEx::IsMatch(u"a", u"a(b"); },
      u"Error in regular expression at offset 3: missing closing parenthesis");
  ExpectRaises<ERegularExpressionError>(
      [] { TRegEx::IsMatch(u"a", u"*"); },
      u"Error in regular expression at offset 0: quantifier does not follow a repeatable item");
  ExpectRaises<ERegularExpressionError>(
      [] { TRegEx(u"a\xDC00"); },
      u"Error in regular expression at offset 1: UTF-16 error: isolated low surrogate");
  // A refused pattern isn't cached: it raises every time.
  EXPECT_THROW(TRegEx::Replace(u"a", u"(", u"x"), ERegularExpressionError);
  EXPECT_THROW(TRegEx::Replace(u"a", u"(", u"x"), ERegularExpressionError);
}

TEST(RegEx, CatastrophicBacktrackingStopsAtTheMatchLimit) {
  const UnicodeString Input = UnicodeString(40, u'a') + u"!";
  const auto Start = std::chrono::steady_clock::now();
  ExpectRaises<ERegularExpressionError>([&] { TRegEx::IsMatch(Input, u"^(a+)+$"); },
                                        u"Error matching the regex: match limit exceeded");
  ExpectRaises<ERegularExpressionError>([&] { TRegEx::Replace(Input, u"(a|aa)+$", u"x"); },
                                        u"Error matching the regex: match limit exceeded");
  // Unbounded, the first would take about 2^40 steps; the limit ends it within seconds even in
  // a sanitizer build.
  EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(60));
}

TEST(RegEx, EachThreadCompilesAPatternOnce) {
  const UInt64 Before = TRegEx::CompiledOnThisThread();
  for (int I = 0; I < 1000; ++I)
    ASSERT_TRUE(TRegEx::IsMatch(u"x42", u"\\d+$"));
  EXPECT_EQ(TRegEx::CompiledOnThisThread() - Before, 1u);
  // The same text with other options is another pattern.
  TRegEx::IsMatch(u"x42", u"\\d+$", {roIgnoreCase});
  EXPECT_EQ(TRegEx::CompiledOnThisThread() - Before, 2u);

  // Beyond the cache's size the least recently used pattern goes; results stay the same.
  for (Integer I = 0; I < cRegExCacheSize + 8; ++I) {
    UnicodeString Pattern(u"^");
    Pattern.append(IntToStr(I)).append(u"$");
    ASSERT_TRUE(TRegEx::IsMatch(IntToStr(I), Pattern));
    ASSERT_FALSE(TRegEx::IsMatch(u"x", Pattern));
  }
  const UInt64 AfterFill = TRegEx::CompiledOnThisThread();
  EXPECT_EQ(AfterFill - Before, 2u + cRegExCacheSize + 8);
  TRegEx::IsMatch(u"1", u"^1$");  // evicted: compiled again
  TRegEx::IsMatch(u"1", u"^70$"); // recent: kept
  EXPECT_EQ(TRegEx::CompiledOnThisThread() - AfterFill, 1u);

  // Another thread has a cache of its own, and an instance made here serves it.
  const TRegEx Shared(u"b+");
  UInt64 OtherCompiled = 0;
  UnicodeString OtherResult;
  std::thread Other([&] {
    TRegEx::IsMatch(u"x42", u"\\d+$");
    OtherCompiled = TRegEx::CompiledOnThisThread();
    OtherResult = Shared.Replace(u"abbc", u"-");
  });
  Other.join();
  EXPECT_EQ(OtherCompiled, 1u);
  EXPECT_EQ(OtherResult, u"a-c");
}

} // namespace
} // namespace lorvane
