// Escaping and unescaping of JSON strings, and the encoding decision of the JSON text cursor.
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/json/LxJSONTextParser.h"

#include "lorvane/core/LxStreams.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

struct TEscapeCase {
  std::u16string_view Plain;
  std::u16string_view Escaped;
};

TEST(JSONStrings, StrToJSONLiteralEscapesAsLittleAsJSONAllows) {
  struct TCase {
    std::u16string_view Text;
    std::string Literal;
  };
  const TCase Cases[] = {
      {u"", "\"\""},
      {u"plain", "\"plain\""},
      {u"q\"b\\", "\"q\\\"b\\\\\""},
      // '/', DEL and the controls LxStrToJSON writes as letters or drops all differ here.
      {u"a/b\u007f", "\"a/b\x7f\""},
      {std::u16string_view(u"\0\b\t\n\u0001\u001f ", 7),
       "\"\\u0000\\u0008\\u0009\\u000A\\u0001\\u001F \""},
      {u"\u00e9\u20ac\uabcd", "\"\xC3\xA9\xE2\x82\xAC\xEA\xAF\x8D\""},
      {u"\U0001F600", "\"\xF0\x9F\x98\x80\""}, // a pair is one character
      // Lone halves: a high one at the end or before anything but a low one, and a low one
      // without a high one before it; the text around them stays whole.
      {u"x\xD83D", "\"x\\uD83D\""},
      {u"\xD83Dy\xDE00", "\"\\uD83Dy\\uDE00\""},
      {u"\xDE00\xD83D\xDE00", "\"\\uDE00\xF0\x9F\x98\x80\""},
      {u"\xD83D\xD83D\xDE00\\", "\"\\uD83D\xF0\x9F\x98\x80\\\\\""},
  };
  for (const TCase& Case : Cases)
    EXPECT_EQ(LxStrToJSONLiteral(Case.Text), Case.Literal) << StringToUTF8(Case.Text);
}

TEST(JSONStrings, StrToJSONEscapesByUnit) {
  const TEscapeCase Cases[] = {
      {u"", u""},
      {u"plain", u"plain"},
      {u"a/b", u"a\\/b"},
      {u"q\"b\\", u"q\\\"b\\\\"},
      {u"\b\t\n\f\r", u"\\b\\t\\n\\f\\r"},
      {u"x\u0001\u0007y", u"xy"}, // U+0001..U+0007 are dropped
      {std::u16string_view(u"\0\u000b\u001f", 3), std::u16string_view(u"\0\u000b\u001f", 3)},
      {u"\u00e9\u00ff", u"\u00e9\u00ff"},   // below U+0100 stays
      {u"\u0100\uabcd", u"\\u0100\\uABCD"}, // upper-case digits
      {u"\U0001F600", u"\\uD83D\\uDE00"},   // each half on its own
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(LxStrToJSON(Case.Plain), Case.Escaped) << StringToUTF8(Case.Plain);
}

TEST(JSONStrings, JSONtoStrUndoesEscapes) {
  struct TCase {
    std::u16string_view Raw;
    TLxJSONDataType Type;
    std::u16string_view Plain;
  };
  const TCase Cases[] = {
      {u"", jdtString, u""},
      {u"no escapes", jdtString, u"no escapes"},
      {u"\\n\\r\\t\\f\\b", jdtString, u"\n\r\t\f\b"},
      {u"\\\\\\/\\\"", jdtString, u"\\/\""},
      {u"\\q", jdtString, u"q"},
      {u"\\u00E9\\u00e9", jdtString, u"\u00e9\u00e9"},
      {u"\\uD83D\\uDE00", jdtString, u"\U0001F600"},
      {u"50%", jdtString, u"50%"},
      {u"50%41", jdtString, u"50%41"},
      {u"50%41", jdtNumber, u"50A"},           // bare percent groups only for numbers
      {u"\\%41\\%e9", jdtBoolean, u"A\u00e9"}, // escaped ones for any type
      {u"a\\", jdtString, std::u16string_view(u"a\0", 2)},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(LxJSONtoStr(Case.Raw, Case.Type), Case.Plain) << StringToUTF8(Case.Raw);
}

TEST(JSONStrings, JSONtoStrPassesALoneSurrogateThrough) {
  const char16_t Lone[] = {0xD800, u'x'};
  EXPECT_EQ(LxJSONtoStr(u"\\uD800x", jdtString), UnicodeString(Lone, 2));
}

TEST(JSONStrings, JSONtoStrRaisesOnDigitsThatArentHex) {
  for (std::u16string_view Raw : {u"\\uZZZZ", u"\\u12", u"\\%G1"})
    EXPECT_THROW(LxJSONtoStr(Raw, jdtString), EConvertError) << StringToUTF8(Raw);
  EXPECT_THROW(LxJSONtoStr(u"1%", jdtNumber), EConvertError);
}

TEST(JSONStrings, EscapingRoundTripsEveryUnitThatIsntDropped) {
  UnicodeString All;
  for (char32_t C = 0; C < 0x10000; ++C)
    if (C < 1 || C > 7)
      All.push_back(static_cast<char16_t>(C));
  EXPECT_EQ(LxJSONtoStr(LxStrToJSON(All), jdtString), All);
}

// --- the text cursor's encoding decision -----------------------------------------------------

class JSONTextParser : public test::LiveObjectsTest {
protected:
  /// A cursor over ABytes given in ACodePage; the character set and code page it decided on.
  static std::pair<TLxCharacterSetType, Word> Decide(std::string_view ABytes, Word ACodePage) {
    TOwned<TLxJSONTextParser> Parser(New<TLxJSONTextParser>(New<TLxStringStream>(ABytes, ACodePage),
                                                            /*AStreamOwner=*/true, ACodePage));
    return {Parser->GetCharacterSetType(), Parser->GetContentCodePage()};
  }
};

TEST_F(JSONTextParser, SingleByteCodePagesAreReadAsUTF8OrUTF16) {
  using namespace std::string_view_literals;
  EXPECT_EQ(Decide("[]", 0), std::make_pair(csUTF8, Word(65001)));
  EXPECT_EQ(Decide("", 0), std::make_pair(csUTF8, Word(65001)));
  EXPECT_EQ(Decide("{\"a\":1}", 1252), std::make_pair(csUTF8, Word(65001)));
  EXPECT_EQ(Decide("[\0]\0"sv, 0), std::make_pair(csWide, Word(1200)));
  // Code pages that aren't single-byte are taken as given.
  EXPECT_EQ(Decide("[\0]\0"sv, 65001), std::make_pair(csUTF8, Word(65001)));
  EXPECT_EQ(Decide("[]", 1200), std::make_pair(csWide, Word(1200)));
}

TEST_F(JSONTextParser, RefusesUTF32AndBigEndianUTF16) {
  using namespace std::string_view_literals;
  for (std::string_view Bytes : {"\0\0\0["sv, "\0[\0]"sv, "[\0\0\0"sv, "5"sv})
    test::ExpectRaises<Exception>([&] { Decide(Bytes, 0); },
                                  u"The specified encoding is not supported!");
}

TEST_F(JSONTextParser, CursorStandsOnTheFirstCharacterAfterTheDecision) {
  TOwned<TLxJSONTextParser> Parser(
      New<TLxJSONTextParser>(New<TLxStringStream>(std::string_view("[1]"), 0), true, 0));
  EXPECT_EQ(Parser->CurrCharW(), u'[');
  EXPECT_TRUE(Parser->CheckCurrChar(Parser->FBracketO, false));
  EXPECT_FALSE(Parser->CheckCurrChar(Parser->FBraceO, false));
  test::ExpectRaises<ELxJSONParseError>(
      [&] { Parser->CheckCurrChar(Parser->FBraceO, true); },
      u"The document is not wellformed!\r\n\"{\" expected, but \"[\" found!");
  Parser->SkipWhile(spNotEqual, Parser->FBracketC);
  EXPECT_EQ(Parser->CurrCharW(), u']');
}

} // namespace
} // namespace lorvane
