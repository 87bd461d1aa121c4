// The text cursor: end-of-text rules, skips, marks and selection, lines and columns, and stream
// sources whose buffer is refilled under a selection.
#include "lorvane/core/LxTextParser.h"
#include "lorvane/platform/SysUtils.h"
#include "support/TestHelpers.h"
#include "support/TestStreams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

namespace lorvane {
namespace {

using test::TChunkedStream;
using test::Utf16Bytes;

// Every behaviour is checked on a memory block and on streams that deliver 1, 3 and many bytes
// per read, so that buffer refills fall on every possible boundary.
struct SourceKind {
  const char* Name;
  Int64 Chunk; // 0: a memory block
};

class TextParser : public ::testing::TestWithParam<SourceKind> {
protected:
  /// A parser on ABytes in ACodePage; the bytes live as long as the fixture.
  TLxTextParser* Open(std::string ABytes, Word ACodePage) {
    FBytes = std::make_unique<std::string>(std::move(ABytes));
    if (GetParam().Chunk == 0)
      FParser.reset(New<TLxTextParser>(FBytes->data(), Int64(FBytes->size()), ACodePage));
    else
      FParser.reset(New<TLxTextParser>(New<TChunkedStream>(*FBytes, GetParam().Chunk),
                                       /*AStreamOwner=*/true, ACodePage));
    return FParser.get();
  }
  TLxTextParser* OpenWide(std::u16string_view AText) { return Open(Utf16Bytes(AText), 1200); }

  std::unique_ptr<std::string> FBytes;
  TOwned<TLxTextParser> FParser;
};

TEST_P(TextParser, EmptySourceIsAtTheEndAndOnlyStepsBeyondItRaise) {
  for (Word CodePage : {Word(1252), Word(1200), Word(65001)}) {
    TLxTextParser* P = Open("", CodePage);
    EXPECT_TRUE(P->_GetEOF());
    EXPECT_EQ(P->CurrChar()[0], 0);
    EXPECT_EQ(P->PeekChar()[0], 0);
    EXPECT_EQ(P->CurrCharA(), 0);
    EXPECT_EQ(P->ReadCharW(), 0);
    EXPECT_EQ(P->ReadChar()[0], 0);
    EXPECT_EQ(P->PeekString(3), u"");
    P->SkipWhile(spNotEqual, u'x');
    P->SkipSet(spNotInSet, TLxCharSet{'x'});
    const std::u16string_view EndOfText = u"Unexpected end of the text";
    test::ExpectRaisesWithCode<ELxTextParserEOF>([&] { P->NextChar(); }, EndOfText, 1);
    test::ExpectRaisesWithCode<ELxTextParserEOF>([&] { P->MoveNext(); }, EndOfText, 1);
    test::ExpectRaisesWithCode<ELxTextParserEOF>([&] { P->SkipChars(1); }, EndOfText, 1);
    test::ExpectRaisesWithCode<ELxTextParserEOF>([&] { P->CheckEOF(); }, EndOfText, 1);
  }
}

TEST_P(TextParser, StepOntoTheEndIsFreeAndTheStepBeyondRaisesWithCode) {
  TLxTextParser* P = Open("ab", 65001);
  P->SkipChars(2);
  EXPECT_TRUE(P->_GetEOF());
  try {
    P->NextChar();
    FAIL() << "no exception";
  } catch (const ELxTextParserEOF& E) {
    EXPECT_EQ(E.Message(), u"Unexpected end of the text");
    EXPECT_EQ(E.ErrorCode(), 1);
  }
}

TEST_P(TextParser, ReadingTheLastCharacterLeavesItBehindTheCursor) {
  for (Word CodePage : {Word(1252), Word(1200), Word(65001)}) {
    TLxTextParser* P = CodePage == 1200 ? OpenWide(u"ab") : Open("ab", CodePage);
    P->SetMark(tpMark1);
    EXPECT_EQ(P->ReadCharW(), u'a');
    EXPECT_EQ(P->ReadCharW(), u'b');
    EXPECT_TRUE(P->_GetEOF());
    EXPECT_EQ(P->PrevCharW(), u'b');
    EXPECT_EQ(P->Selected(tpMark1, tpPrev, true), u"a");
    EXPECT_EQ(P->GetPos(tpMark1), 0) << "the mark is cleared";
    EXPECT_EQ(P->Selected(tpMark1, tpCurrent, false), u"") << "a cleared mark selects nothing";
  }
}

TEST_P(TextParser, PeekInUTF8IsThePeekedTextInUTF8) {
  // ASCII runs, well-formed sequences of each length, and ill-formed bytes (a lone continuation,
  // a cut sequence, an overlong form, an encoded surrogate), peeked from every position and for
  // counts that stop inside and after each.
  const std::string Text = "ab\xC3\xA9xyz\xE2\x82\xAC\xF0\x9F\x98\x80q\x80r\xE2\x82s"
                           "\xC0\xAFt\xED\xA0\x80u\xEF\xBF\xBDv";
  for (Integer Skip = 0; Skip < 20; ++Skip)
    for (Integer Count : {1, 2, 5, 40}) {
      TLxTextParser* P = Open(Text, 65001);
      for (Integer I = 0; I < Skip && !P->_GetEOF(); ++I)
        P->NextChar();
      EXPECT_EQ(P->PeekStringUTF8(Count), StringToUTF8(P->PeekString(Count)))
          << Skip << " " << Count;
    }
  TLxTextParser* Wide = Open(Utf16Bytes(u"\u00e9t\U0001F600"), 1200);
  EXPECT_EQ(Wide->PeekStringUTF8(2), "\xC3\xA9t");
}

TEST_P(TextParser, PeekDoesNotMoveAndShortensNearTheEnd) {
  TLxTextParser* P = Open("abcd", 1252);
  P->SkipChars(2);
  EXPECT_EQ(P->PeekString(3), u"cd");
  EXPECT_EQ(P->PeekChar()[0], u'd');
  EXPECT_EQ(P->CurrCharW(), u'c');
  P->NextChar();
  EXPECT_EQ(P->PeekChar()[0], 0);
}

TEST_P(TextParser, SkipToAbsentCharacterStopsAtTheEndWithoutRaising) {
  TLxTextParser* P = Open("<a b='1'/>", 65001);
  P->SkipWhile(spNotEqual, u'#');
  EXPECT_TRUE(P->_GetEOF());
}

TEST_P(TextParser, SkipOperatorsCompareAsDocumented) {
  for (Word CodePage : {Word(1252), Word(1200), Word(65001)}) {
    const std::u16string Text = u"  \t\r\n x";
    TLxTextParser* P = CodePage == 1200 ? OpenWide(Text) : Open(StringToUTF8(Text), CodePage);
    P->SkipWhile(spEqual, u' ');
    EXPECT_EQ(P->CurrCharW(), u'\t') << "spEqual with a blank stops at a tab";
    P->SkipWhile(spLessEqual, u' ');
    EXPECT_EQ(P->CurrCharW(), u'x') << "spLessEqual skips every control character and blank";
    P->First();
    P->SkipWhile(spNotEqual, u'x');
    EXPECT_EQ(P->GetColNr(), 2);
    EXPECT_EQ(P->GetLineNr(), 2) << "CR LF counts once";
  }
}

TEST_P(TextParser, SetSkipsTreatCharactersAboveLatin1AsNonMembers) {
  const TLxCharSet Letters = TLxCharSet::Range('a', 'z') + TLxCharSet{char(0xE9)};
  const std::u16string Text = u"ab\u00e9c\u0141d;";
  for (Word CodePage : {Word(1200), Word(65001)}) {
    TLxTextParser* P = CodePage == 1200 ? OpenWide(Text) : Open(StringToUTF8(Text), CodePage);
    P->SetMark(tpMark1);
    P->SkipSet(spInSet, Letters);
    EXPECT_EQ(P->CurrCharW(), u'\u0141') << "in-set skip stops at a character above U+00FF";
    EXPECT_EQ(P->Selected(tpMark1, tpCurrent, true), u"ab\u00e9c");
    P->SkipSet(spNotInSet, TLxCharSet{';'});
    EXPECT_EQ(P->CurrCharW(), u';') << "not-in-set skip passes over it";
    EXPECT_THROW(P->SkipSet(spEqual, Letters), EArgumentOutOfRangeException);
  }
}

TEST_P(TextParser, Utf8SelectionDecodesAndRawSelectionKeepsTheBytes) {
  const std::string Bytes = "x\xC3\xA9\xF0\x9F\x98\x80y";
  TLxTextParser* P = Open(Bytes, 65001);
  P->SetMark(tpMark1);
  EXPECT_EQ(P->ReadCharW(), u'x');
  EXPECT_EQ(std::u16string(P->CurrChar()), u"\u00e9");
  P->NextChar();
  EXPECT_EQ(std::u16string(P->PeekChar()), u"y");
  EXPECT_EQ(std::u16string(P->CurrChar()), u"\U0001F600") << "a surrogate pair";
  P->NextChar();
  EXPECT_EQ(P->PrevCharW(), u'\xD83D');
  EXPECT_EQ(P->Selected(tpMark1, tpNext, false), u"x\u00e9\U0001F600y");
  EXPECT_EQ(P->SelectedA(tpMark1, tpNext, false), Bytes);
  EXPECT_EQ(P->GetColNr(), 4) << "a column is a code point";
}

TEST_P(TextParser, IllFormedUtf8BecomesReplacementCharacters) {
  TLxTextParser* P = Open("a\xFF\xE2\x82z", 65001);
  P->SetMark(tpMark1);
  P->SkipWhile(spNotEqual, u'z');
  EXPECT_EQ(P->Selected(tpMark1, tpCurrent, true), u"a\uFFFD\uFFFD");
  P->First();
  P->SkipChars(2);
  EXPECT_EQ(P->CurrCharW(), u'\uFFFD') << "a truncated sequence is one character";
  P->NextChar();
  EXPECT_EQ(P->CurrCharW(), u'z');
}

TEST_P(TextParser, AnsiSourceDecodesThroughTheContentCodePage) {
  TLxTextParser* P = Open("caf\xE9!", 28591);
  P->SetMark(tpMark1);
  P->SkipWhile(spNotEqual, u'!');
  EXPECT_EQ(P->Selected(tpMark1, tpCurrent, true), u"caf\u00e9");
  EXPECT_EQ(P->PrevCharW(), u'\u00e9');
  EXPECT_EQ(P->SelectedA(tpPrev, tpCurrent, false), "\xE9");
}

TEST_P(TextParser, WideSourceIgnoresAStrayLastByte) {
  TLxTextParser* P = Open(Utf16Bytes(u"ab") + "\x01", 1200);
  P->SkipChars(2);
  EXPECT_TRUE(P->_GetEOF());
  P->Last();
  EXPECT_TRUE(P->_GetEOF());
  EXPECT_EQ(P->PrevCharW(), u'b');
}

TEST_P(TextParser, MarksCutATextInTwoAndLinesCountEveryLineEnd) {
  TLxTextParser* P = Open("ab\ncd\r\nef\rgh", 1252);
  P->SetMark(tpMark1);
  P->SkipWhile(spNotEqual, u'd');
  P->SetMark(tpMark2);
  P->SkipWhile(spNotEqual, u'h');
  EXPECT_EQ(P->Selected(tpMark1, tpMark2, false), u"ab\nc");
  EXPECT_EQ(P->Selected(tpMark2, tpCurrent, true), u"d\r\nef\rg");
  EXPECT_EQ(P->GetLineNr(), 4);
  EXPECT_EQ(P->GetColNr(), 2);
  EXPECT_EQ(P->Selected(tpMark2, tpCurrent, false), u"");
  EXPECT_EQ(P->GetCurPos(), P->GetPos(tpCurrent));
  P->SetMark(tpMark3);
  EXPECT_EQ(P->GetCurPos(), P->GetPos(tpMark3));
  EXPECT_THROW(P->SetMark(tpCurrent), EArgumentOutOfRangeException);
  P->Last();
  EXPECT_TRUE(P->_GetEOF());
  EXPECT_EQ(P->GetColNr(), 3);
  P->First();
  EXPECT_EQ(P->CurrCharW(), u'a');
  EXPECT_EQ(P->GetLineNr(), 1);
  EXPECT_EQ(P->GetColNr(), 1);
  EXPECT_EQ(P->GetPos(tpMark3), 0) << "First clears the marks";
}

TEST_P(TextParser, SelectionSpanningManyBuffersStaysWhole) {
  // Far more text than one buffer holds, with multi-byte characters on every boundary.
  std::string Body;
  for (int I = 0; I < 40000; ++I)
    Body += I % 3 ? "\xC3\xA9-" : "line\n";
  const std::string Bytes = "<" + Body + ">tail";
  TLxTextParser* P = Open(Bytes, 65001);
  P->NextChar();
  P->SetMark(tpMark1);
  P->SkipWhile(spNotEqual, u'>');
  const UnicodeString Text = P->Selected(tpMark1, tpCurrent, true);
  EXPECT_EQ(Text, UTF8ToString(Body));
  EXPECT_EQ(P->GetLineNr(), 13335);
  P->NextChar();
  P->SetMark(tpMark1);
  P->Last();
  EXPECT_EQ(P->SelectedA(tpMark1, tpCurrent, true), "tail");
}

TEST_P(TextParser, WideSourceSkipsAndSelectsAcrossBuffers) {
  std::u16string Body(100000, u'\u0416');
  Body[54321] = u'\n';
  TLxTextParser* P = OpenWide(Body + u"\U0001F600;");
  P->SetMark(tpMark1);
  P->SkipWhile(spNotEqual, u';');
  EXPECT_EQ(P->Selected(tpMark1, tpCurrent, false), Body + u"\U0001F600");
  EXPECT_EQ(P->GetLineNr(), 2);
  EXPECT_EQ(P->GetColNr(), int(Body.size()) - 54321 + 1) << "a surrogate pair is one column";
}

TEST_P(TextParser, PositionsAndPlacesCompareAsTheCursorMoves) {
  TLxTextParser* P = Open("xyz", 1252);
  P->SetMark(tpMark1);
  EXPECT_EQ(P->GetCurPos(), P->GetPos(tpMark1));
  EXPECT_EQ(P->GetPos(tpPrev), P->GetCurPos()) << "nothing before the first character";
  P->NextChar();
  EXPECT_NE(P->GetCurPos(), P->GetPos(tpMark1));
  EXPECT_EQ(P->GetPos(tpPrev), P->GetPos(tpMark1));
  EXPECT_EQ(P->GetPosition(), 1);
  EXPECT_EQ(P->Selected(tpCurrent, tpNext, false), u"y");
  EXPECT_EQ(P->Selected(tpNext, tpCurrent, false), u"") << "a reversed range is empty";
}

TEST_P(TextParser, BigEndianUTF16ReadsAsLittleEndian) {
  // Long enough that blocks are dropped under the cursor and First must read the start again;
  // pairs, line ends and an odd byte at the end on every block boundary the chunks make.
  std::u16string Text;
  for (int I = 0; Text.size() < 70000; ++I)
    Text += u"ab\r\n\u00E9\U0001F600x" + std::u16string(I % 7, u' ');
  std::string BigEndian;
  for (char16_t C : Text)
    BigEndian += {char(C >> 8), char(C & 0xFF)};
  TLxTextParser* P = Open(BigEndian + "\x41", 1201);
  EXPECT_EQ(P->GetCharacterSetType(), csWide);
  EXPECT_EQ(P->GetContentCodePage(), 1200);
  std::u16string Read;
  P->SetMark(tpMark1);
  while (!P->_GetEOF()) {
    Read += P->CurrCharW(); // a step in UTF-16 is one unit
    P->MoveNext();
  }
  EXPECT_TRUE(Read == Text) << "the odd byte at the end is no character";
  EXPECT_EQ(P->GetLineNr(), 1 + Int64(std::count(Text.begin(), Text.end(), u'\n')));
  EXPECT_TRUE(P->Selected(tpMark1, tpCurrent, true) == Text);
  P->First();
  EXPECT_EQ(P->CurrCharW(), u'a');
  P->SkipChars(3);
  EXPECT_EQ(P->CurrCharW(), u'\n');
  EXPECT_EQ(P->PeekString(3), u"\n\u00E9\U0001F600");
}

INSTANTIATE_TEST_SUITE_P(Sources, TextParser,
                         ::testing::Values(SourceKind{"Memory", 0}, SourceKind{"Stream1", 1},
                                           SourceKind{"Stream3", 3},
                                           SourceKind{"StreamBlocks", 1 << 20}),
                         [](const auto& AInfo) { return std::string(AInfo.param.Name); });

TEST(TextParserStream, StartsAtTheStreamPositionAndFirstReturnsThere) {
  // Small enough to stay in the first buffer, then large enough to force a seek back.
  for (std::size_t Size : {std::size_t(10), std::size_t(300000)}) {
    std::string Bytes = "skip" + std::string(Size, 'a') + "!";
    auto* Stream = New<TChunkedStream>(Bytes, 4096);
    Stream->SetPosition(4);
    TOwned<TLxTextParser> P(New<TLxTextParser>(Stream, /*AStreamOwner=*/true, 65001));
    EXPECT_EQ(P->CurrCharW(), u'a');
    P->SkipWhile(spNotEqual, u'!');
    EXPECT_EQ(P->GetPosition(), Int64(Size));
    P->First();
    EXPECT_EQ(P->GetPosition(), 0);
    EXPECT_EQ(P->PeekString(2), u"aa");
    P->SkipWhile(spNotEqual, u'!');
    EXPECT_EQ(P->CurrCharW(), u'!');
  }
}

TEST(TextParserStream, FirstOnAStreamThatCannotSeekBackRaisesOnceTheStartIsGone) {
  TOwned<TLxTextParser> Short(
      New<TLxTextParser>(New<TChunkedStream>("<?xml?><a/>", 4, false), true, 65001));
  Short->SkipChars(5);
  Short->First();
  EXPECT_EQ(Short->CurrCharW(), u'<') << "the start is still held";

  TOwned<TLxTextParser> Long(
      New<TLxTextParser>(New<TChunkedStream>(std::string(500000, 'x'), 65536, false), true, 65001));
  Long->Last();
  try {
    Long->First();
    FAIL() << "no exception";
  } catch (const EReadError& E) {
    EXPECT_EQ(E.Message(), u"The stream can't return to the start of the text");
  }
}

TEST(TextParserMemory, WideCurrentCharacterPointsIntoTheSource) {
  std::u16string Text = u"ab";
  TOwned<TLxTextParser> P(New<TLxTextParser>(Text.data(), Int64(Text.size() * 2), 1200));
  P->NextChar();
  EXPECT_EQ(P->CurrChar(), Text.data() + 1);
  EXPECT_EQ(P->RawCurrWide(), Text.data() + 1);
  Text[1] = u'z';
  EXPECT_EQ(P->CurrCharW(), u'z');
}

TEST(TextParserMemory, SwitchingTheCharacterSetAfterAProbeReadsTheTextAnew) {
  const std::string Bytes = Utf16Bytes(u"{\"k\":1}");
  TOwned<TLxTextParser> P(New<TLxTextParser>(Bytes.data(), Int64(Bytes.size()), 0));
  EXPECT_EQ(P->ReadCharA(), '{');
  EXPECT_EQ(P->ReadCharA(), 0) << "the high byte of the first unit";
  P->SetCharacterSetType(csWide);
  P->SetContentCodePage(1200);
  P->First();
  P->SetMark(tpMark1);
  P->Last();
  EXPECT_EQ(P->Selected(tpMark1, tpCurrent, true), u"{\"k\":1}");
}

TEST(CharSet, MembershipIsByteWiseAndWideCharactersAboveLatin1AreInNoSet) {
  const TLxCharSet Set{'A', char(0xE9)};
  EXPECT_TRUE(LxCharInSet(u'A', Set));
  EXPECT_FALSE(LxCharInSet(u'\u0141', Set)) << "U+0141 shares its low byte with 'A'";
  EXPECT_TRUE(LxCharInSet(char(0xE9), Set));
  EXPECT_TRUE(LxCharInSet(u'\u00e9', Set));
  EXPECT_FALSE(LxCharInSet('B', Set));
  EXPECT_EQ(TLxCharSet::Range('a', 'c'), (TLxCharSet{'a', 'b', 'c'}));
  EXPECT_TRUE(LxSameText(u"Utf-8", u"UTF-8"));
  EXPECT_FALSE(LxSameText(u"UTF-8", u"UTF-16"));
}

} // namespace
} // namespace lorvane
