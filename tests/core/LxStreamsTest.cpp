// The memory stream over a block and on its own memory, the string builder in its code pages,
// and the UTF-16 to UTF-8 adapter.
#include "lorvane/core/LxStreams.h"

#include "lorvane/core/LxEncoding.h"
#include "lorvane/platform/CodePages.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace lorvane {
namespace {

std::string ContentOf(TLxMemoryStream* AStream) {
  if (AStream->GetSize() == 0)
    return std::string();
  return std::string(reinterpret_cast<const char*>(AStream->Memory()),
                     static_cast<std::size_t>(AStream->GetSize()));
}

/// The bytes of a UTF-16 text as a 1200 stream holds them.
std::string BytesOf(std::u16string_view AText) {
  return std::string(reinterpret_cast<const char*>(AText.data()), AText.size() * 2);
}

// --- TLxMemoryStream
// ------------------------------------------------------------------------------
TEST(LxMemoryStream, OverABlockReadsAndWritesInPlaceAndNeverMovesOrFreesIt) {
  const test::TLiveCount Live;
  char Block[8] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
  auto* Stream = New<TLxMemoryStream>(static_cast<void*>(Block), Int64(8));
  EXPECT_EQ(Stream->GetPosition(), 0);
  EXPECT_EQ(Stream->GetSize(), 8);
  EXPECT_FALSE(Stream->OwnsMemory());
  char Read[3] = {};
  EXPECT_EQ(Stream->Read(Read, 3), 3);
  EXPECT_EQ(std::string(Read, 3), "abc");
  Stream->WriteBuffer("XY", 2);
  Stream->WriteWord(0x5A57); // "WZ"
  EXPECT_EQ(Stream->Memory(), reinterpret_cast<Byte*>(Block));
  EXPECT_EQ(std::string(Block, 8), "abcXYWZh");
  Stream->Free(); // a free of a stack block would be caught by the sanitizer build
  EXPECT_EQ(std::string(Block, 8), "abcXYWZh");
  Live.ExpectMadeSince(0);
}

TEST(LxMemoryStream, OverABlockWritesStopAtItsEnd) {
  char Block[4] = {'a', 'b', 'c', 'd'};
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(static_cast<void*>(Block), Int64(4)));
  Stream->SetPosition(2);
  EXPECT_EQ(Stream->Write("XYZ", 3), 2);
  EXPECT_EQ(std::string(Block, 4), "abXY");
  EXPECT_EQ(Stream->GetSize(), 4);
  EXPECT_EQ(Stream->Write("Q", 1), 0);
  try {
    Stream->WriteBuffer("Q", 1);
    FAIL() << "no exception";
  } catch (const EWriteError& E) {
    EXPECT_EQ(E.Message(), u"Stream write error");
  }
  EXPECT_THROW(Stream->WriteWord(1), EWriteError);
  EXPECT_EQ(std::string(Block, 4), "abXY");

  Stream->SetSize(2); // shrinking is fine, and growing back up to the block
  EXPECT_EQ(Stream->GetPosition(), 2);
  Stream->SetSize(4);
  try {
    Stream->SetSize(5);
    FAIL() << "no exception";
  } catch (const EStreamError& E) {
    EXPECT_EQ(E.Message(), u"Stream size can't be changed");
  }
}

TEST(LxMemoryStream, OverAReadOnlyBlockRefusesWrites) {
  static const char Block[] = "const";
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(static_cast<const void*>(Block), Int64(5)));
  EXPECT_EQ(Stream->Write("x", 1), 0);
  EXPECT_THROW(Stream->WriteWord(1), EWriteError);
  char Read[5];
  Stream->ReadBuffer(Read, 5);
  EXPECT_EQ(std::string(Read, 5), "const");
  EXPECT_EQ(Stream->Read(Read, 5), 0);
}

TEST(LxMemoryStream, OnItsOwnMemoryGrowsAndZeroFillsGaps) {
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Int64(1024)));
  EXPECT_TRUE(Stream->OwnsMemory());
  EXPECT_EQ(Stream->GetSize(), 0);
  std::string Expected;
  for (int I = 0; I < 5000; ++I) {
    Stream->WriteWord(static_cast<Word>(0x4100 + (I % 26)));
    Expected += static_cast<char>(I % 26);
    Expected += 'A';
  }
  EXPECT_EQ(ContentOf(Stream.get()), Expected);
  Stream->Seek(4, soEnd);
  Stream->WriteBuffer("!", 1);
  EXPECT_EQ(ContentOf(Stream.get()), Expected + std::string(4, '\0') + "!");
  Stream->SetSize(2);
  EXPECT_EQ(Stream->GetPosition(), 2);
  Stream->SetSize(4);
  EXPECT_EQ(ContentOf(Stream.get()), std::string("\0A\0\0", 4));
  EXPECT_EQ(Stream->Seek(-10, soCurrent), 0);
}

TEST(LxMemoryStream, WriteWordIsLittleEndianAtAnyCapacity) {
  for (Int64 Capacity : {0, 1, 2, 3}) {
    TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Capacity));
    Stream->WriteWord(0x1234);
    Stream->WriteWord(0xABCD);
    EXPECT_EQ(ContentOf(Stream.get()), "\x34\x12\xcd\xab") << Capacity;
  }
}

// --- TLxStringStream
// ------------------------------------------------------------------------------
const std::u16string NonAscii = u"caf\u00e9 \u65e5\u672c \U0001F600!";
const std::string NonAsciiUTF8 = "caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac \xf0\x9f\x98\x80!";

TEST(LxStringStream, InUTF8GivesTheTextBackAndItsBytes) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(65001), Int64(16)));
  Stream->Add(NonAscii.substr(0, 5));
  for (char16_t Char : NonAscii.substr(5))
    Stream->AddChar(Char);
  EXPECT_EQ(Stream->GetCodePage(), 65001);
  EXPECT_EQ(Stream->GetWString(), NonAscii);
  EXPECT_EQ(Stream->GetAsString(), NonAscii);
  EXPECT_EQ(Stream->GetAString(), NonAsciiUTF8);
  EXPECT_EQ(Stream->GetAsUTF8(), NonAsciiUTF8);
  EXPECT_EQ(Stream->GetSize(), static_cast<Int64>(NonAsciiUTF8.size()));
  EXPECT_EQ(Stream->GetPosition(), Stream->GetSize());
  EXPECT_EQ(Stream->StringData(1200), BytesOf(NonAscii));
  EXPECT_EQ(Stream->StringData(1252), "caf\xe9 ?? ?!");
}

TEST(LxStringStream, SurrogatePairsSplitAcrossAddsStayOneCharacter) {
  const struct {
    Word CodePage;
    std::string Expected;
  } Cases[] = {
      {65001, "a\xf0\x9f\x98\x80"
              "b"},
      {54936, "a\x94\x39\xfc\x36"
              "b"},
      {1252, "a?b"},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(Case.CodePage);
    TOwned<TLxStringStream> ByChar(New<TLxStringStream>(Case.CodePage, Int64(16)));
    for (char16_t Char : std::u16string(u"a\U0001F600b"))
      ByChar->AddChar(Char);
    EXPECT_EQ(ByChar->GetAString(), Case.Expected);
    TOwned<TLxStringStream> ByText(New<TLxStringStream>(Case.CodePage, Int64(16)));
    ByText->Add(u"a\xd83d");
    ByText->Add(u"\xde00"
                u"b");
    EXPECT_EQ(ByText->GetAString(), Case.Expected);
  }
}

TEST(LxStringStream, LoneSurrogatesInUTF8BecomeReplacementCharacters) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(65001), Int64(16)));
  Stream->AddChar(0xD83D);
  EXPECT_EQ(Stream->GetAString(), "\xef\xbf\xbd"); // the high half alone, so far
  Stream->AddChar(u'x');
  Stream->AddChar(0xDE00); // too late: 'x' came between
  Stream->Add(u"\xd83d");
  Stream->Add(std::string_view("|")); // raw bytes end the wait too
  Stream->Add(u"\xde00");
  EXPECT_EQ(Stream->GetAString(), "\xef\xbf\xbdx\xef\xbf\xbd\xef\xbf\xbd|\xef\xbf\xbd");
  EXPECT_EQ(Stream->GetWString(), u"\ufffdx\ufffd\ufffd|\ufffd");
}

TEST(LxStringStream, InUTF16HoldsTheCharactersAsTheyAre) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(1200), Int64(16)));
  Stream->Add(u"ab");
  Stream->AddChar(0xD83D); // lone surrogates stay: UTF-16 is the library's own form
  Stream->Add(std::u16string_view(u"\u00e9"));
  const std::u16string Run = u"run";
  Stream->Write(Run.data(), static_cast<Int64>(Run.size() * 2));
  const std::u16string Expected = u"ab\xd83d\u00e9run";
  EXPECT_EQ(Stream->GetWString(), Expected);
  EXPECT_EQ(Stream->GetAString(), BytesOf(Expected));
  EXPECT_EQ(Stream->StringData(1200), BytesOf(Expected));
  EXPECT_EQ(Stream->StringData(28591), "ab?\xe9run");
  EXPECT_EQ(Stream->StringData(65001), "ab\xef\xbf\xbd\xc3\xa9run");
  EXPECT_EQ(Stream->GetAsUTF8(), "ab\xef\xbf\xbd\xc3\xa9run");
}

TEST(LxStringStream, InASingleBytePageConvertsOnTheWayInAndOut) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(1251), Int64(0)));
  Stream->Add(u"\u041f\u0440\u0438");
  Stream->AddChar(u'\u20ac');
  Stream->AddChar(u'\u4e2d');
  Stream->Add(std::string_view("\xe2")); // a byte of the page, unconverted: U+0432
  EXPECT_EQ(Stream->GetAString(), "\xcf\xf0\xe8\x88?\xe2");
  EXPECT_EQ(Stream->GetWString(), u"\u041f\u0440\u0438\u20ac?\u0432");
  EXPECT_EQ(Stream->GetAsUTF8(), StringToUTF8(u"\u041f\u0440\u0438\u20ac?\u0432"));
  EXPECT_EQ(Stream->GetDataString(), u"\u00cf\u00f0\u00e8\u0088?\u00e2");
}

TEST(LxStringStream, CodePageZeroIsTheDefault) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(0), Int64(16)));
  Stream->Add(u"\u20ac");
  EXPECT_EQ(Stream->GetCodePage(), 0);
  EXPECT_EQ(Stream->GetAString(), "\x80");
  EXPECT_EQ(Stream->GetWString(), u"\u20ac");
  EXPECT_EQ(Stream->StringData(0), "\x80");
}

TEST(LxStringStream, ConstructorsCopyTheirContentAndStartAtZero) {
  TOwned<TLxStringStream> FromText(New<TLxStringStream>(std::u16string_view(u"h\u00e9")));
  EXPECT_EQ(FromText->GetCodePage(), 1200);
  EXPECT_EQ(FromText->GetSize(), 4);
  EXPECT_EQ(FromText->GetPosition(), 0);
  EXPECT_EQ(FromText->GetWString(), u"h\u00e9");

  std::string Bytes = "caf\xe9";
  TOwned<TLxStringStream> FromBytes(New<TLxStringStream>(std::string_view(Bytes), Word(28591)));
  Bytes[0] = 'X';
  EXPECT_EQ(FromBytes->GetPosition(), 0);
  EXPECT_EQ(FromBytes->GetWString(), u"caf\u00e9");

  const char Block[] = "\xc3\xa9t\xc3\xa9 and more";
  TOwned<TLxStringStream> FromBlock(New<TLxStringStream>(Block, Integer(5), Word(65001)));
  EXPECT_EQ(FromBlock->GetPosition(), 0);
  EXPECT_EQ(FromBlock->GetWString(), u"\u00e9t\u00e9");
  EXPECT_NE(FromBlock->Memory(), reinterpret_cast<const Byte*>(Block));

  // Add appends behind the content, whatever the position.
  FromBlock->Add(u"!");
  EXPECT_EQ(FromBlock->GetWString(), u"\u00e9t\u00e9!");
  FromText->AddChar(u'!');
  EXPECT_EQ(FromText->GetWString(), u"h\u00e9!");
}

TEST(LxStringStream, DataStringGivesOneCharacterPerByte) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(std::string_view("Zm9v\xff"), Word(65001)));
  EXPECT_EQ(Stream->GetDataString(), u"Zm9v\u00ff");
  TOwned<TLxStringStream> Empty(New<TLxStringStream>(Word(65001), Int64(16)));
  EXPECT_EQ(Empty->GetDataString(), u"");
  EXPECT_EQ(Empty->GetWString(), u"");
  EXPECT_EQ(Empty->GetAString(), "");
}

// --- TLxUTF8StreamAdapter
// -------------------------------------------------------------------------
struct AdapterRun {
  TOwned<TLxMemoryStream> Target{New<TLxMemoryStream>(Int64(16))};
  TOwned<TLxUTF8StreamAdapter> Adapter;
  explicit AdapterRun(bool AWriteMark)
      : Adapter(New<TLxUTF8StreamAdapter>(Target.get(), false, AWriteMark)) {}
  void Write(std::string_view ABytes) {
    Adapter->WriteBuffer(ABytes.data(), static_cast<Int64>(ABytes.size()));
  }
  std::string Output() { return ContentOf(Target.get()); }
};

TEST(LxUTF8StreamAdapter, WritesTheMarkOnceBeforeTheFirstBytes) {
  AdapterRun Run(/*AWriteMark=*/true);
  EXPECT_EQ(Run.Output(), "");
  Run.Write(BytesOf(u"ab"));
  Run.Write(BytesOf(u"\u00e9"));
  EXPECT_EQ(Run.Output(), "\xEF\xBB\xBF"
                          "ab\xc3\xa9");

  AdapterRun NoMark(/*AWriteMark=*/false);
  NoMark.Write(BytesOf(u"ab"));
  EXPECT_EQ(NoMark.Output(), "ab");
}

TEST(LxUTF8StreamAdapter, JoinsUnitsAndSurrogatePairsSplitAcrossWrites) {
  const std::string Bytes = BytesOf(u"a\U0001F600\u00e9\u65e5");
  const std::string Expected = "a\xf0\x9f\x98\x80\xc3\xa9\xe6\x97\xa5";
  for (std::size_t Step : {1, 2, 3, 5, 7}) {
    AdapterRun Run(/*AWriteMark=*/false);
    for (std::size_t I = 0; I < Bytes.size(); I += Step)
      Run.Write(Bytes.substr(I, Step));
    EXPECT_EQ(Run.Output(), Expected) << "step " << Step;
    EXPECT_EQ(Run.Adapter->GetPosition(), static_cast<Int64>(Bytes.size()));
  }
}

TEST(LxUTF8StreamAdapter, LoneSurrogatesBecomeReplacementCharacters) {
  AdapterRun Run(/*AWriteMark=*/false);
  Run.Write(BytesOf(u"\xd83d"));
  Run.Write(BytesOf(u"x\xde00y\xd83d"));
  EXPECT_EQ(Run.Output(), "\xef\xbf\xbdx\xef\xbf\xbdy");
  Run.Adapter->Flush();
  EXPECT_EQ(Run.Output(), "\xef\xbf\xbdx\xef\xbf\xbdy\xef\xbf\xbd");
}

TEST(LxUTF8StreamAdapter, FreeWritesAHighSurrogateStillWaiting) {
  AdapterRun Run(/*AWriteMark=*/false);
  Run.Write(BytesOf(u"a\xd83d"));
  Run.Adapter.reset();
  EXPECT_EQ(Run.Output(), "a\xef\xbf\xbd");
}

// Runs of ASCII are narrowed many units at a time: every mix and position of other units, and
// every split of the writes, must come out as one conversion of the whole text would.
TEST(LxUTF8StreamAdapter, MixedRunsComeOutAsOneConversion) {
  const char16_t Pieces[] = {u'a', u'~', 0x7F, 0x80, 0xE9, 0x65E5, 0xD83D, 0xDE00, 0xDC00};
  std::u16string Text;
  unsigned Seed = 7;
  for (int I = 0; I < 5000; ++I) {
    Seed = Seed * 1103515245u + 12345u;
    const unsigned Pick = (Seed >> 16) % 40;
    Text += Pick < 9 ? Pieces[Pick] : char16_t(u'a' + Pick % 26); // mostly ASCII
  }
  const std::string Bytes = BytesOf(Text);
  AdapterRun Whole(/*AWriteMark=*/false);
  Whole.Write(Bytes);
  Whole.Adapter->Flush();
  for (std::size_t Step : {3, 17, 64, 1001}) {
    AdapterRun Run(/*AWriteMark=*/false);
    for (std::size_t I = 0; I < Bytes.size(); I += Step)
      Run.Write(Bytes.substr(I, Step));
    Run.Adapter->Flush();
    EXPECT_EQ(Run.Output(), Whole.Output()) << "step " << Step;
  }
  // The reference: every unit on its own, which the run path never sees.
  AdapterRun Single(/*AWriteMark=*/false);
  for (std::size_t I = 0; I < Bytes.size(); I += 2)
    Single.Write(Bytes.substr(I, 2));
  Single.Adapter->Flush();
  EXPECT_EQ(Whole.Output(), Single.Output());
}

TEST(LxUTF8StreamAdapter, CopiesALargeStringStream) {
  std::u16string Text;
  for (int I = 0; I < 3000; ++I)
    Text += u"x\u00e9\u65e5\U0001F600";
  TOwned<TLxStringStream> Source(New<TLxStringStream>(std::u16string_view(Text)));
  AdapterRun Run(/*AWriteMark=*/true);
  Run.Adapter->CopyFrom(Source.get(), 0);
  EXPECT_EQ(Run.Output(), "\xEF\xBB\xBF" + StringToUTF8(Text));
}

TEST(LxUTF8StreamAdapter, FreesTheTargetOnlyWhenItOwnsIt) {
  const test::TLiveCount Live;
  auto* Target = New<TLxMemoryStream>(Int64(16));
  New<TLxUTF8StreamAdapter>(Target, true, false)->Free();
  Live.ExpectMadeSince(0);

  TOwned<TLxMemoryStream> Kept(New<TLxMemoryStream>(Int64(16)));
  New<TLxUTF8StreamAdapter>(Kept.get(), false, false)->Free();
  Live.ExpectMadeSince(1, "the adapter freed a target it doesn't own");
  Kept->WriteBuffer("still here", 10);
}

TEST(LxUTF8StreamAdapter, CanOnlyBeWritten) {
  AdapterRun Run(/*AWriteMark=*/false);
  char Buffer[4];
  try {
    Run.Adapter->Read(Buffer, 4);
    FAIL() << "no exception";
  } catch (const EStreamError& E) {
    EXPECT_EQ(E.Message(), u"The UTF-8 adapter can only be written");
  }
  Run.Write(BytesOf(u"ab"));
  EXPECT_EQ(Run.Adapter->GetSize(), 4);
  EXPECT_EQ(Run.Adapter->Seek(0, soEnd), 4);
  try {
    Run.Adapter->SetPosition(0);
    FAIL() << "no exception";
  } catch (const EStreamError& E) {
    EXPECT_EQ(E.Message(), u"The UTF-8 adapter can't seek");
  }
}

} // namespace
} // namespace lorvane
