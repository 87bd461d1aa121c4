// Escaping values for a document and decoding references, in the UTF-16, byte and stream forms.
#include "lorvane/uLxXMLUtils.h"

#include "lorvane/platform/CodePages.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace lorvane {
namespace {

// A literal of each character type picks its own form, and nothing is ambiguous.
static_assert(std::is_same_v<decltype(LxStrToXML(u"a", true, true)), UnicodeString>);
static_assert(std::is_same_v<decltype(LxStrToXML("a", true, true)), RawByteString>);
static_assert(std::is_same_v<decltype(LxXMLToStr(u"a")), UnicodeString>);
static_assert(std::is_same_v<decltype(LxXMLToStr("a")), RawByteString>);
static_assert(std::is_same_v<decltype(LxXMLToStr(UnicodeString())), UnicodeString>);
static_assert(std::is_same_v<decltype(LxXMLToStr(RawByteString())), RawByteString>);

static_assert(std::is_base_of_v<ELxException, ELxSAXException>);
static_assert(std::is_base_of_v<ELxSAXException, ELxSAXNotRecognizedException>);
static_assert(std::is_base_of_v<ELxSAXException, ELxSAXNotSupportedException>);

UnicodeString Repeat(char16_t AChar, std::size_t ACount) { return UnicodeString(ACount, AChar); }

// --- LxStrToXML
// -----------------------------------------------------------------------------------
struct EscapeCase {
  std::u16string_view Value;
  bool Apos, Quote;
  std::u16string_view Expected;
};

TEST(LxStrToXML, ReplacesMarkupControlsAndQuotesAsAsked) {
  const EscapeCase Cases[] = {
      {u"", true, true, u""},
      {u"plain text", true, true, u"plain text"},
      {u"a<b>c&d", false, false, u"a&lt;b&gt;c&amp;d"},
      {u"'\"", true, true, u"&apos;&quot;"},
      {u"'\"", false, true, u"'&quot;"},
      {u"'\"", true, false, u"&apos;\""},
      {u"'\"", false, false, u"'\""},
      {u"a\tb\nc\rd", false, false, u"a&#9;b&#10;c&#13;d"},
      {u"\u0001\u0009\u000A\u001F", false, false, u"&#1;&#9;&#10;&#31;"},
      // Blank, DEL, Latin-1, the euro sign, a surrogate pair and a lone surrogate all pass.
      {u" \u007F\u00e9\u20ac\U0001F600\xDC00", true, true, u" \u007F\u00e9\u20ac\U0001F600\xDC00"},
      // Already escaped text is escaped again.
      {u"&amp;", true, true, u"&amp;amp;"},
  };
  for (const EscapeCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Value));
    EXPECT_EQ(LxStrToXML(Case.Value, Case.Apos, Case.Quote), Case.Expected);
  }
}

TEST(LxStrToXML, EveryControlCharacterBecomesItsDecimalReference) {
  for (char16_t C = 1; C < 32; ++C) {
    UnicodeString Expected(u"&#");
    Expected += AsciiToString(std::to_string(C));
    Expected += u';';
    EXPECT_EQ(LxStrToXML(UnicodeString(1, C), true, true), Expected);
  }
}

TEST(LxStrToXML, StringFormDropsNulButByteAndRunFormsKeepIt) {
  EXPECT_EQ(LxStrToXML(UnicodeString(u"a\0<b\0", 5), true, true), u"a&lt;b");
  EXPECT_EQ(LxStrToXML(RawByteString("a\0<b", 4), true, true), RawByteString("a\0&lt;b", 7));
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(CP_UTF16LE, 16));
  LxStrToXML(u"a\0<", 3, Stream.get(), true, true);
  EXPECT_EQ(Stream->GetWString(), UnicodeString(u"a\0&lt;", 6));
}

// A replaced character at every place of a text longer than the blocks that are tested at once;
// characters that only share a byte with a replaced one must pass.
TEST(LxStrToXML, FindsReplacedCharactersAtEveryPlaceAndPassesLookalikes) {
  struct {
    char16_t Char;
    std::u16string_view Replacement;
  } const Chars[] = {{u'<', u"&lt;"},        {u'>', u"&gt;"},        {u'&', u"&amp;"},
                     {u'\'', u"&apos;"},     {u'"', u"&quot;"},      {u'\n', u"&#10;"},
                     {u'\u2026', u"\u2026"}, {u'\u013C', u"\u013C"}, {u'\u8000', u"\u8000"},
                     {u'\uFF1F', u"\uFF1F"}, {u'\u0020', u"\u0020"}, {u'\u0126', u"\u0126"}};
  constexpr std::size_t Length = 40;
  for (const auto& C : Chars)
    for (std::size_t At = 0; At < Length; ++At) {
      const UnicodeString Value = Repeat(u'x', At) + C.Char + Repeat(u'y', Length - At - 1);
      const UnicodeString Expected =
          Repeat(u'x', At) + UnicodeString(C.Replacement) + Repeat(u'y', Length - At - 1);
      ASSERT_EQ(LxStrToXML(Value, true, true), Expected) << "at " << At;
    }
}

TEST(LxStrToXML, ByteFormWorksByteByByteAndPassesMultiByteText) {
  const std::pair<std::string_view, std::string_view> Cases[] = {
      {"", ""},
      {"caf\xC3\xA9 <b>", "caf\xC3\xA9 &lt;b&gt;"},
      {"'\"&", "&apos;&quot;&amp;"},
      {"\t\r\n\x1F", "&#9;&#13;&#10;&#31;"},
      {"\x80\xFF\xBC\xA6", "\x80\xFF\xBC\xA6"},
  };
  for (const auto& [Value, Expected] : Cases)
    EXPECT_EQ(LxStrToXML(Value, true, true), Expected);
  EXPECT_EQ(LxStrToXML("'\"", false, true), "'&quot;");
  // Past the first block of 16 bytes too.
  const std::string Long = std::string(37, 'x') + "<" + std::string(5, '\xE9');
  EXPECT_EQ(LxStrToXML(Long, false, false), std::string(37, 'x') + "&lt;" + std::string(5, '\xE9'));
}

TEST(LxStrToXML, RunFormAppendsToTheStreamInItsCodePage) {
  TOwned<TLxStringStream> Wide(New<TLxStringStream>(CP_UTF16LE, 16));
  Wide->Add(u"<keep>");
  LxStrToXML(u"a'b\"c", 5, Wide.get(), /*AEscapeApos=*/false, /*AEscapeQuote=*/true);
  EXPECT_EQ(Wide->GetWString(), u"<keep>a'b&quot;c");

  TOwned<TLxStringStream> Utf8(New<TLxStringStream>(CP_UTF8, 16));
  LxStrToXML(u"\u00e9&\U0001F600", 4, Utf8.get(), true, true);
  EXPECT_EQ(Utf8->GetAString(), "\xC3\xA9&amp;\xF0\x9F\x98\x80");

  // Only the given count is read.
  TOwned<TLxStringStream> Part(New<TLxStringStream>(CP_UTF16LE, 16));
  LxStrToXML(u"ab<cd", 3, Part.get(), true, true);
  EXPECT_EQ(Part->GetWString(), u"ab&lt;");
}

TEST(LxStrToXML, RunFormWritesNothingForNoCharactersAndRefusesANilStream) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(CP_UTF16LE, 16));
  LxStrToXML(u"<", 0, Stream.get(), true, true);
  LxStrToXML(u"<", -5, Stream.get(), true, true);
  LxStrToXML(nullptr, 0, Stream.get(), true, true);
  EXPECT_EQ(Stream->GetSize(), 0);
  test::ExpectRaises<EAssertionFailed>([] { LxStrToXML(u"<", 1, nullptr, true, true); },
                                       u"LxStrToXML needs a stream to write to");
  test::ExpectRaises<EAssertionFailed>(
      [&Stream] { LxStrToXML(nullptr, 2, Stream.get(), true, true); },
      u"LxStrToXML needs a buffer for a run of characters");
}

// --- LxXMLToStr on UTF-16
// -------------------------------------------------------------------------
struct DecodeCase {
  std::u16string_view Text;
  std::u16string_view Expected;
};

TEST(LxXMLToStr, DecodesReferencesAndLeavesTheRestAsItStands) {
  const DecodeCase Cases[] = {
      {u"", u""},
      {u"no references", u"no references"},
      {u"&lt;", u"<"},
      {u"a&lt;b&gt;c", u"a<b>c"},
      {u"&lt;&gt;&amp;&quot;&apos;", u"<>&\"'"},
      {u"&amp;lt;", u"&lt;"},
      {u"&euro; &apos;", u"\u20ac '"},
      {u"&nbsp;&yuml;&thetasym;", u"\u00a0\u00ff\u03d1"},
      // The scan from '&' stops at a blank or runs to the end: no reference.
      {u"a & b", u"a & b"},
      {u"a &b", u"a &b"},
      {u"&lt", u"&lt"},
      {u"&lt &gt;", u"&lt >"},
      // Only the blank stops it: a tab or a line break is part of the name.
      {u"&l\tt; &g\nt;", u"&l\tt; &g\nt;"},
      // Unknown, empty and too long names stay.
      {u"&unknown;", u"&unknown;"},
      {u"&;", u"&;"},
      {u"&toolongname;", u"&toolongname;"},
      {u"&thetasymx;", u"&thetasymx;"},
      {u"&LT;", u"&LT;"},
      // The scan from the first '&' runs over the second, to a name that is unknown.
      {u"&x&amp;", u"&x&amp;"},
      {u"&x&amp; &amp;", u"&x&amp; &"},
      // Numeric references, decimal and hexadecimal in both letter cases.
      {u"&#65;&#x41;&#X41;&#0065;&#x6a;&#x6A;", u"AAAAjj"},
      {u"&#x20AC;&#8364;", u"\u20ac\u20ac"},
      {u"&#+66;", u"B"},
  };
  for (const DecodeCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Text));
    EXPECT_EQ(LxXMLToStr(Case.Text), Case.Expected);
  }
}

TEST(LxXMLToStr, NumericReferenceKeepsTheLow16BitsOfItsValue) {
  EXPECT_EQ(LxXMLToStr(u"&#x1F600;"), u"\uF600");
  EXPECT_EQ(LxXMLToStr(u"&#65601;"), u"A");
  EXPECT_EQ(LxXMLToStr(u"&#-1;"), u"\uFFFF");
  EXPECT_EQ(LxXMLToStr(u"a&#0;b"), UnicodeString(u"a\0b", 3));
}

TEST(LxXMLToStr, DigitsThatStrToIntRefusesRaiseItsConvertError) {
  const std::pair<std::u16string_view, std::u16string_view> Cases[] = {
      {u"&#;", u"'' is not a valid integer value"},
      {u"&#x;", u"'$' is not a valid integer value"},
      {u"text &#12a; more", u"'12a' is not a valid integer value"},
      {u"&#xg;", u"'$g' is not a valid integer value"},
      {u"&#X-1;", u"'$-1' is not a valid integer value"},
      {u"&#99999999999;", u"'99999999999' is not a valid integer value"},
      {u"&lt;&#\t1;", u"'\t1' is not a valid integer value"},
  };
  for (const auto& [Text, Message] : Cases)
    test::ExpectRaises<EConvertError>([Text = Text] { LxXMLToStr(Text); }, Message);
}

// Names are found by their folded key alone. A short name's key is the name itself, so a
// longer name's key can be spelled as a short name with the folded bytes as its characters.
TEST(LxXMLToStr, ANameThatFoldsToAKnownKeyGetsThatEntitysCharacter) {
  // "Agrave": 'A', 'g', 'r' + 'e' = 0xD7, 'a' + 'v' = 0xD7.
  EXPECT_EQ(LxXMLToStr(u"&Ag\u00D7\u00D7;"), u"\u00C0");
  // Only the low byte of a character counts: U+016C folds as 'l'.
  EXPECT_EQ(LxXMLToStr(u"&\u016Ct;"), u"<");
}

TEST(LxXMLToStr, FindsAReferenceAtEveryPlaceOfALongText) {
  constexpr std::size_t Length = 40;
  for (std::size_t At = 0; At < Length; ++At) {
    const UnicodeString Text = Repeat(u'\u2026', At) + u"&gt;" + Repeat(u'y', Length - At);
    ASSERT_EQ(LxXMLToStr(Text), Repeat(u'\u2026', At) + u">" + Repeat(u'y', Length - At))
        << "at " << At;
  }
  const UnicodeString Plain = Repeat(u'\u0126', 1000);
  EXPECT_EQ(LxXMLToStr(Plain), Plain);
}

// --- LxXMLToStr on bytes
// --------------------------------------------------------------------------
TEST(LxXMLToStrBytes, KnowsOnlyTheFirstLetterBehindTheAmpersand) {
  const std::pair<std::string_view, std::string_view> Cases[] = {
      {"", ""},
      {"&amp;&AMP;&aM;", "&&&"},
      {"&apos;&anything;&a;", "'''"},
      {"&gt;&G;&lt;&Lxx;&quot;&Q;", ">><<\"\""},
      {"&longer_than_eight_letters;", "<"},
      {"&euro; &unknown; &;", "&euro; &unknown; &;"},
      {"a & b", "a & b"},
      {"a &lt", "a &lt"},
      {"&x&amp;", "&x&amp;"},
      {"&#65;&#x41;&#X41;", "AAA"},
      {"caf\xC3\xA9 &lt;", "caf\xC3\xA9 <"},
  };
  for (const auto& [Text, Expected] : Cases) {
    SCOPED_TRACE(Text);
    EXPECT_EQ(LxXMLToStr(Text), Expected);
  }
}

TEST(LxXMLToStrBytes, NumericReferenceIsACharacterOfTheDefaultCodePage) {
  ASSERT_EQ(GetDefaultCodePage(), 1252);
  EXPECT_EQ(LxXMLToStr("&#233;&#x20AC;"), "\xE9\x80");
  EXPECT_EQ(LxXMLToStr("&#x4E00;"), "?");
  test::ExpectRaises<EConvertError>([] { LxXMLToStr("&#;"); }, u"'' is not a valid integer value");
  test::ExpectRaises<EConvertError>([] { LxXMLToStr("&#x\xE9;"); },
                                    u"'$\u00e9' is not a valid integer value");
}

// --- round trip
// -----------------------------------------------------------------------------------
TEST(LxXMLEscapeRoundTrip, DecodingTheEscapedValueGivesTheValue) {
  UnicodeString Controls;
  for (char16_t C = 1; C < 32; ++C)
    Controls += C;
  const std::vector<UnicodeString> Values = {
      u"",
      Controls,
      u"<a href=\"x\">it's &amp; that</a>",
      u"&#65; &lt; &; & ; &&",
      u"caf\u00e9 \u20ac \u65e5\u672c \U0001F600 \xD800 x \xDFFF",
      Repeat(u'&', 33) + u";" + Repeat(u'\u00e9', 20),
      u"line one\r\nline two\ttabbed",
  };
  for (const UnicodeString& Value : Values) {
    SCOPED_TRACE(StringToUTF8(Value));
    EXPECT_EQ(LxXMLToStr(LxStrToXML(Value, true, true)), Value);
  }
}

TEST(LxXMLEscapeRoundTrip, ByteFormsRoundTripEveryByteButNul) {
  std::string Bytes;
  for (int B = 1; B < 256; ++B)
    Bytes += static_cast<char>(B);
  EXPECT_EQ(LxXMLToStr(LxStrToXML(Bytes, true, true)), Bytes);
}

// --- constants and exceptions
// ---------------------------------------------------------------------
TEST(LxXMLUtils, CDATAEndConstantsAreTheTwoClosingCharacters) {
  EXPECT_EQ(cLxCDATAEndA, std::string_view("]>"));
  EXPECT_EQ(cLxCDATAEndW, std::u16string_view(u"]>"));
}

TEST(LxXMLUtils, SAXExceptionsCarryMessageAndCodeAndCatchAsTheirBase) {
  try {
    throw ELxSAXNotSupportedException(u"feature", 7);
  } catch (const ELxSAXException& Error) {
    EXPECT_EQ(Error.Message(), u"feature");
    EXPECT_EQ(Error.ErrorCode(), 7);
  }
}

} // namespace
} // namespace lorvane
