// Collations of the document tree: Pos under each notion of case, SameText against Compare,
// class references and the default equality of a collation that brings only Compare.
#include "lorvane/dom/LxDOMCollation.h"

#include "lorvane/platform/SysUtils.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lorvane {
namespace {

TLxXPathCollationClass CaseInsensitive() { return TLxXPathCollationASCIICI::StaticClass(); }
TLxXPathCollationClass Codepoint() { return TLxXPathCollationCodepoint::StaticClass(); }

TEST(XPathCollation, PosFoldsOnlyAToZWhenIgnoringCase) {
  struct TCase {
    std::u16string SubStr;
    std::u16string Str;
    Integer CaseInsensitive;
    Integer Codepoint;
  };
  const std::vector<TCase> Cases = {
      {u"b", u"abc", 2, 2},
      {u"B", u"abc", 2, 0},
      {u"cD", u"abCdcd", 3, 0},
      {u"abc", u"ABC", 1, 0},
      {u"x", u"abc", 0, 0},
      {u"abcd", u"abc", 0, 0},
      {u"", u"abc", 0, 0},
      {u"a", u"", 0, 0},
      {u"[", u"{", 0, 0},           // 0x20 apart, but not letters
      {u"\u00c9", u"\u00e9", 0, 0}, // no folding beyond ASCII
      {u"\u00e9", u"x\u00e9", 2, 2},
      {u"k", u"\u212a", 0, 0},
      {u"\u00c9T\u00c9", u"\u00c9t\u00c9", 1, 0},
      {u"z", u"\U0001F600Z", 3, 0}, // positions count UTF-16 units
  };
  for (const TCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.SubStr) + " in " + StringToUTF8(Case.Str));
    EXPECT_EQ(CaseInsensitive()->Pos(Case.SubStr, Case.Str), Case.CaseInsensitive);
    EXPECT_EQ(Codepoint()->Pos(Case.SubStr, Case.Str), Case.Codepoint);
  }
}

TEST(XPathCollation, SameTextAgreesWithCompare) {
  struct TCase {
    std::u16string A;
    std::u16string B;
    bool SameIgnoringCase;
    bool SameCodepoint;
  };
  const std::vector<TCase> Cases = {
      {u"", u"", true, true},
      {u"item", u"ITEM", true, false},
      {u"item", u"items", false, false},
      {u"@", u"`", false, false},
      {u"\u00c9l\u00e8ve", u"\u00e9L\u00c8VE", true, false},
      {u"\u03c2", u"\u03a3", true, false},
      {u"\u212a", u"k", true, false},
      {u"\u00df", u"ss", false, false},
      {u"\U00010400", u"\U00010428", true, false},
      {u"e\u0301", u"\u00e9", false, false}, // the collator ties them; equality doesn't
      {u"a\u0001b", u"ab", false, false},
  };
  for (const TCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.A) + " | " + StringToUTF8(Case.B));
    for (TLxXPathCollationClass Collation : {CaseInsensitive(), Codepoint()}) {
      SCOPED_TRACE(StringToUTF8(Collation->ClassName()));
      const bool Expected =
          Collation == CaseInsensitive() ? Case.SameIgnoringCase : Case.SameCodepoint;
      EXPECT_EQ(Collation->SameText(Case.A, Case.B), Expected);
      EXPECT_EQ(Collation->SameText(Case.B, Case.A), Expected);
      EXPECT_EQ(Collation->Compare(Case.A, Case.B) == 0, Expected);
      EXPECT_EQ(Collation->Compare(Case.A, Case.B), -Collation->Compare(Case.B, Case.A));
    }
  }
}

TEST(XPathCollation, ClassReferencesNameOneInstancePerClass) {
  EXPECT_EQ(TLxXPathCollationASCIICI::StaticClass(), TLxXPathCollationASCIICI::StaticClass());
  EXPECT_EQ(TLxXPathCollationCodepoint::StaticClass(), TLxXPathCollationCodepoint::StaticClass());
  EXPECT_NE(CaseInsensitive(), Codepoint());
  EXPECT_EQ(StringToUTF8(CaseInsensitive()->ClassName()), "TLxXPathCollationASCIICI");
  EXPECT_EQ(StringToUTF8(Codepoint()->ClassName()), "TLxXPathCollationCodepoint");
  EXPECT_EQ(CaseInsensitive()->Compare(u"a", u"B"), -1);
  EXPECT_EQ(Codepoint()->Compare(u"a", u"B"), 1);
}

// A collation that brings only Compare and Pos: SameText follows Compare.
class TLengthCollation final : public TLxXPathCollation {
public:
  static TLxXPathCollationClass StaticClass() noexcept {
    static constinit const TLengthCollation Instance;
    return &Instance;
  }
  Integer Compare(const UnicodeString& AValue1, const UnicodeString& AValue2) const override {
    if (AValue1.size() == AValue2.size())
      return 0;
    return AValue1.size() < AValue2.size() ? -1 : 1;
  }
  Integer Pos(const UnicodeString&, const UnicodeString&) const override { return 0; }
  UnicodeString ClassName() const override { return u"TLengthCollation"; }
};

TEST(XPathCollation, SameTextDefaultsToCompare) {
  TLxXPathCollationClass Collation = TLengthCollation::StaticClass();
  EXPECT_TRUE(Collation->SameText(u"abc", u"xyz"));
  EXPECT_FALSE(Collation->SameText(u"abc", u"ab"));
}

} // namespace
} // namespace lorvane
