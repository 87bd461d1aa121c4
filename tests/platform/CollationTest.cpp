// The invariant text orders: code point order, case folding beyond ASCII, the collator's order
// with its tie-break, order laws over a sample set, and use from several threads.
#include "lorvane/platform/Collation.h"

#include "lorvane/platform/SysUtils.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace lorvane {
namespace {

struct TOrderCase {
  std::u16string A;
  std::u16string B;
  Integer Expected; // Compare(A, B); Compare(B, A) must give the opposite
};

std::string Show(const TOrderCase& ACase) {
  return StringToUTF8(ACase.A) + " | " + StringToUTF8(ACase.B);
}

void CheckOrderCases(const std::vector<TOrderCase>& ACases, bool AIgnoreCase) {
  for (const TOrderCase& Case : ACases) {
    SCOPED_TRACE(Show(Case));
    EXPECT_EQ(CompareStringInvariant(Case.A, Case.B, AIgnoreCase), Case.Expected);
    EXPECT_EQ(CompareStringInvariant(Case.B, Case.A, AIgnoreCase), -Case.Expected);
    EXPECT_EQ(SameStringInvariant(Case.A, Case.B, AIgnoreCase), Case.Expected == 0);
    EXPECT_EQ(SameStringInvariant(Case.B, Case.A, AIgnoreCase), Case.Expected == 0);
  }
}

TEST(Collation, CaseSensitiveOrderIsCodePointOrder) {
  CheckOrderCases(
      {
          {u"", u"", 0},
          {u"", u"a", -1},
          {u"a", u"B", 1},
          {u"abc", u"abd", -1},
          {u"ab", u"abc", -1},
          {u"\u00e9", u"\u00c9", 1},
          // UTF-16 unit order would put the surrogates below U+E000..U+FFFF.
          {u"\U0001F600", u"\uFF5E", 1},
          {u"x\U0001F600", u"x\uE000y", 1},
          {u"\U0001F600", u"\U0001F601", -1},
          {u"\U00010400", u"\U0001F600", -1},
          {u"\U0001F600a", u"\U0001F600b", -1},
          // Lone surrogates count as the code points of their values.
          {u"\xD800", u"\uE000", -1},
          {u"\xD800", u"\uD7FF", 1},
          {u"\xD83D", u"\U0001F600", -1},
          {u"\xD83Dx", u"\U0001F600", -1},
          {u"\U0001F600", u"\xD83D\uE000", 1},
          {u"\xD83Dx", u"\xD83Dy", -1},
          {u"\xDE00", u"\U0001F600", -1},
          {u"a\xD83D", u"a\xD83D", 0},
      },
      /*AIgnoreCase=*/false);
}

TEST(Collation, IgnoringCaseEqualsExactlyUnderSimpleFolding) {
  // Expected 0: equal after simple folding. Non-zero pairs are checked for sign only where the
  // collator decides; the following test pins the rule's own results.
  CheckOrderCases(
      {
          {u"", u"", 0},
          {u"a", u"A", 0},
          {u"a", u"B", -1},
          {u"Name", u"nAME", 0},
          {u"\u00c9t\u00c9", u"\u00e9T\u00e9", 0},
          {u"\u03a3", u"\u03c3", 0}, // capital sigma, small sigma
          {u"\u03c2", u"\u03c3", 0}, // final sigma folds to small sigma
          {u"\u03a3\u039f\u03a6\u039f\u03a3", u"\u03c3\u03bf\u03c6\u03bf\u03c2", 0},
          {u"\u212a", u"k", 0},              // KELVIN SIGN
          {u"\u017f", u"S", 0},              // LATIN SMALL LETTER LONG S
          {u"\U00010400", u"\U00010428", 0}, // DESERET capital and small long I
          {u"x\U00010400y", u"X\U00010428Y", 0},
          {u"a\xD83D", u"A\xD83D", 0},
          {u"\xD83Dq", u"\xD83DQ", 0},
      },
      /*AIgnoreCase=*/true);
}

TEST(Collation, IgnoringCaseOrdersByCollatorThenByCodePoint) {
  CheckOrderCases(
      {
          // The collator, not code points: letters before their accented forms before the next
          // letter, whatever the case.
          {u"\u00e9", u"f", -1},
          {u"\u00c9", u"f", -1},
          {u"e", u"\u00c9", -1},
          {u"Zebra", u"apple", 1},
          // Canonically equivalent texts tie in the collator: code points of the folded texts
          // decide ("e" + COMBINING ACUTE below U+00E9).
          {u"e\u0301", u"\u00e9", -1},
          {u"E\u0301", u"\u00c9", -1},
          // Control characters are ignorable for the collator.
          {u"a\u0001b", u"ab", -1},
          {u"A\u0001B", u"ab", -1},
          {u"ab\u0001", u"AB", 1},
          {u"a", std::u16string(u"a\0", 2), -1},
          // Only simple folding counts: full and Turkic foldings stay apart, and the collator
          // puts each variant after its base letter.
          {u"\u00df", u"ss", 1},
          {u"\u0130", u"i", 1},
          {u"\u0131", u"i", 1},
          {u"\U00010400", u"\U00010401", -1},
          // ASCII pairs 0x20 apart that aren't letters.
          {u"@", u"`", -1},
          {u"[", u"{", -1},
          {u"^", u"~", -1},
      },
      /*AIgnoreCase=*/true);
}

// Order laws over a sample set that mixes case, accents, ignorables, surrogates and prefixes.
const std::vector<std::u16string>& Samples() {
  static const std::vector<std::u16string> Texts = {
      u"",           u"a",          u"A",      u"b",          u"B",       u"ab",      u"aB",
      u"a\u0001b",   u"\u00e9",     u"\u00c9", u"e\u0301",    u"E\u0301", u"f",       u"\u00df",
      u"ss",         u"SS",         u"\u212a", u"k",          u"\u03a3",  u"\u03c2",  u"\u03c3",
      u"\U00010400", u"\U00010428", u"\uFF5E", u"\U0001F600", u"\xD83D",  u"\xD83Dx", u"_",
      u"1",          u"\u0130",     u"i",      u"\u0131",     u"I",       u"\u017f",  u"s",
  };
  return Texts;
}

void CheckOrderLaws(bool AIgnoreCase) {
  const auto& Texts = Samples();
  const std::size_t N = Texts.size();
  std::vector<Integer> Table(N * N);
  for (std::size_t I = 0; I < N; ++I)
    for (std::size_t J = 0; J < N; ++J) {
      const Integer R = CompareStringInvariant(Texts[I], Texts[J], AIgnoreCase);
      Table[I * N + J] = R;
      SCOPED_TRACE(StringToUTF8(Texts[I]) + " | " + StringToUTF8(Texts[J]));
      ASSERT_TRUE(R == -1 || R == 0 || R == 1);
      EXPECT_EQ(R == 0, SameStringInvariant(Texts[I], Texts[J], AIgnoreCase));
      if (!AIgnoreCase) {
        EXPECT_EQ(R == 0, Texts[I] == Texts[J]);
      }
    }
  for (std::size_t I = 0; I < N; ++I)
    for (std::size_t J = 0; J < N; ++J) {
      ASSERT_EQ(Table[I * N + J], -Table[J * N + I]) << I << " " << J;
      for (std::size_t K = 0; K < N; ++K) {
        if (Table[I * N + J] <= 0 && Table[J * N + K] <= 0) {
          ASSERT_LE(Table[I * N + K], 0) << I << " " << J << " " << K;
        }
      }
    }
}

TEST(Collation, BothOrdersAreTotalAndAgreeWithEquality) {
  CheckOrderLaws(/*AIgnoreCase=*/false);
  CheckOrderLaws(/*AIgnoreCase=*/true);
}

TEST(Collation, ThreadsCompareWithTheirOwnCollators) {
  const auto& Texts = Samples();
  std::vector<Integer> Expected;
  for (const auto& A : Texts)
    for (const auto& B : Texts)
      Expected.push_back(CompareStringInvariant(A, B, /*AIgnoreCase=*/true));
  std::vector<int> Mismatches(4, 0);
  std::vector<std::thread> Threads;
  for (std::size_t T = 0; T < Mismatches.size(); ++T)
    Threads.emplace_back([&, T] {
      for (int Round = 0; Round < 20; ++Round) {
        std::size_t At = 0;
        for (const auto& A : Texts)
          for (const auto& B : Texts)
            if (CompareStringInvariant(A, B, /*AIgnoreCase=*/true) != Expected[At++])
              ++Mismatches[T];
      }
    });
  for (auto& Thread : Threads)
    Thread.join();
  EXPECT_EQ(Mismatches, std::vector<int>(4, 0));
}

} // namespace
} // namespace lorvane
