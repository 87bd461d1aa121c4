// Code pages: round trips through every page, names, the default page, replacement rules and
// use from several threads.
#include "lorvane/platform/CodePages.h"

#include "support/ScopeGuards.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace lorvane {
namespace {

struct TPageSample {
  Word CodePage;
  std::u16string Text;  // characters of the page's repertoire
  std::string Expected; // the bytes, where the test pins them; empty: round trip only
};

const std::vector<TPageSample>& PageSamples() {
  static const std::vector<TPageSample> Samples = {
      {1200, u"A\u00e9\u4e2d\U0001F600", std::string("A\0\xe9\0\x2d\x4e\x3d\xd8\x00\xde", 10)},
      {1201, u"A\u00e9\u4e2d\U0001F600", std::string("\0A\0\xe9\x4e\x2d\xd8\x3d\xde\x00", 10)},
      {65001, u"A\u00e9\u4e2d\U0001F600", "A\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80"},
      {20127, u"Hello, ~world!", "Hello, ~world!"},
      {28591, u"caf\u00e9 \u00ff\u0080", "caf\xe9 \xff\x80"},
      {28592, u"\u0141\u00f3d\u017a",
       "\xa3\xf3"
       "d\xbc"},
      {28593, u"\u0126\u011d\u00e0", ""},
      {28594, u"\u0100\u0138\u00e5", ""},
      {28595, u"\u041f\u0440\u0438\u0432\u0435\u0442", "\xbf\xe0\xd8\xd2\xd5\xe2"},
      {28596, u"\u0645\u0631\u062d\u0628\u0627", ""},
      {28597, u"\u0391\u03b8\u03ae\u03bd\u03b1", ""},
      {28598, u"\u05e9\u05dc\u05d5\u05dd", ""},
      {28599, u"\u011f\u0130\u015f", ""},
      {28603, u"\u0104\u017d\u201d", ""},
      {28605, u"\u20ac\u0160\u0153", "\xa4\xa6\xbd"},
      {1250, u"\u0141\u00f3d\u017a\u20ac", ""},
      {1251, u"\u041f\u0440\u0438\u0432\u0435\u0442\u20ac", "\xcf\xf0\xe8\xe2\xe5\xf2\x88"},
      {1252, u"\u20ac\u2019\u00e9\u0153", "\x80\x92\xe9\x9c"},
      {1253, u"\u0391\u03b8\u03ae", ""},
      {1254, u"\u011f\u0130\u015f", ""},
      {1255, u"\u05e9\u05dc\u05d5\u05dd\u20aa", ""},
      {1256, u"\u0645\u0631\u062d\u0628\u0627\u067e", ""},
      {1257, u"\u0104\u017d\u0113", ""},
      {1258, u"\u01a1\u01b0\u20ab", ""},
      {437, u"\u00c7\u2591\u03c0", "\x80\xb0\xe3"},
      {850, u"\u00c7\u00f8\u00d0", "\x80\x9b\xd1"},
      {866, u"\u041f\u0440\u0438\u2591", "\x8f\xe0\xa8\xb0"},
      {874, u"\u0e2a\u0e27\u0e31\u0e2a\u0e14\u0e35", ""},
      {20866, u"\u041f\u0440\u0438\u0432\u0435\u0442", "\xf0\xd2\xc9\xd7\xc5\xd4"},
      {21866, u"\u0404\u0456\u0457\u0491", ""},
      {932, u"\u65e5\u672c\u8a9e\uff76", "\x93\xfa\x96\x7b\x8c\xea\xb6"},
      {936, u"\u4e2d\u6587", "\xd6\xd0\xce\xc4"},
      {949, u"\ud55c\uad6d\uc5b4", "\xc7\xd1\xb1\xb9\xbe\xee"},
      {950, u"\u7e41\u9ad4", "\xc1\x63\xc5\xe9"},
      {51932, u"\u65e5\u672c\u8a9e", "\xc6\xfc\xcb\xdc\xb8\xec"},
      {54936, u"\u4e2d\U0001F600\u20ac", ""},
  };
  return Samples;
}

TEST(CodePages, EachPageRoundTripsASampleOfItsRepertoire) {
  for (const TPageSample& Sample : PageSamples()) {
    SCOPED_TRACE(Sample.CodePage);
    const RawByteString Bytes = UnicodeToCodePage(Sample.Text, Sample.CodePage);
    if (!Sample.Expected.empty()) {
      EXPECT_EQ(Bytes, Sample.Expected);
    }
    if (Sample.CodePage != 1200 && Sample.CodePage != 1201) {
      EXPECT_EQ(Bytes.find('?'), std::string::npos) << "a character went unmapped";
    }
    EXPECT_EQ(CodePageToUnicode(Bytes.data(), Bytes.size(), Sample.CodePage), Sample.Text);
  }
}

TEST(CodePages, SingleBytePagesDecodeEveryByteAndEncodeItBack) {
  for (const TPageSample& Sample : PageSamples()) {
    if (!IsSingleByteCodePage(Sample.CodePage))
      continue;
    SCOPED_TRACE(Sample.CodePage);
    const char16_t* Table = SingleByteTable(Sample.CodePage);
    ASSERT_NE(Table, nullptr);
    for (int B = 0; B < 256; ++B) {
      const char Byte1 = static_cast<char>(B);
      const UnicodeString Char = CodePageToUnicode(&Byte1, 1, Sample.CodePage);
      ASSERT_EQ(Char, UnicodeString(1, Table[B])) << "byte " << B;
      if (Table[B] != 0xFFFD) {
        EXPECT_EQ(UnicodeToCodePage(Char, Sample.CodePage), std::string(1, Byte1)) << "byte " << B;
      }
    }
  }
}

TEST(CodePages, SingleByteTableIsBuiltOnceAndOnlyForSingleBytePages) {
  EXPECT_EQ(SingleByteTable(1252)[0x80], u'\u20ac');
  EXPECT_EQ(SingleByteTable(28591)[0xe9], u'\u00e9');
  EXPECT_EQ(SingleByteTable(20127)[0x41], u'A');
  EXPECT_EQ(SingleByteTable(20127)[0x80], u'\ufffd');
  EXPECT_EQ(SingleByteTable(1252), SingleByteTable(1252));
  EXPECT_EQ(SingleByteTable(0), SingleByteTable(1252));
  for (Word CodePage : {1200, 1201, 65001, 932, 54936, 1234})
    EXPECT_EQ(SingleByteTable(CodePage), nullptr) << CodePage;
}

TEST(CodePages, NamesMatchInAnyLetterCase) {
  const std::pair<std::u16string, Word> Cases[] = {
      {u"UTF-8", 65001},       {u"utf8", 65001},         {u"Utf-16", 1200},
      {u"UTF-16LE", 1200},     {u"UTF-16BE", 1201},      {u"unicodeFFFE", 1201},
      {u"US-ASCII", 20127},    {u"Ascii", 20127},        {u"ISO-8859-1", 28591},
      {u"LATIN1", 28591},      {u"iso-8859-9", 28599},   {u"ISO-8859-13", 28603},
      {u"ISO-8859-15", 28605}, {u"Latin-9", 28605},      {u"Windows-1250", 1250},
      {u"WINDOWS-1258", 1258}, {u"IBM437", 437},         {u"ibm850", 850},
      {u"CP866", 866},         {u"Windows-874", 874},    {u"Shift_JIS", 932},
      {u"SJIS", 932},          {u"Windows-31J", 932},    {u"GBK", 936},
      {u"GB2312", 936},        {u"KS_C_5601-1987", 949}, {u"EUC-KR", 949},
      {u"Big5", 950},          {u"KOI8-R", 20866},       {u"koi8-U", 21866},
      {u"EUC-JP", 51932},      {u"GB18030", 54936},
  };
  for (const auto& [Name, CodePage] : Cases) {
    Word Found = 0;
    EXPECT_TRUE(TryCodePageFromName(Name, Found)) << StringToUTF8(Name);
    EXPECT_EQ(Found, CodePage) << StringToUTF8(Name);
    EXPECT_EQ(CodePageFromName(Name), CodePage) << StringToUTF8(Name);
  }
}

TEST(CodePages, EveryPageIsFoundByItsOwnName) {
  for (const TPageSample& Sample : PageSamples())
    EXPECT_EQ(CodePageFromName(CodePageName(Sample.CodePage)), Sample.CodePage);
  EXPECT_EQ(CodePageName(65001), u"utf-8");
  EXPECT_EQ(CodePageName(1200), u"utf-16");
  EXPECT_EQ(CodePageName(1252), u"windows-1252");
}

TEST(CodePages, UnknownNamesRaiseWithTheName) {
  for (std::u16string Name : {u"utf-7", u"", u"utf-8 ", u"utf", u"utf-8x", u"\u00fctf-8"}) {
    Word Found = 1;
    EXPECT_FALSE(TryCodePageFromName(Name, Found));
    try {
      CodePageFromName(Name);
      ADD_FAILURE() << "no exception for " << StringToUTF8(Name);
    } catch (const EEncodingError& E) {
      EXPECT_EQ(E.Message(), u"Unknown encoding name \"" + Name + u"\"");
    }
  }
}

TEST(CodePages, UnknownCodePagesRaise) {
  EXPECT_FALSE(IsKnownCodePage(1234));
  TCPInfo Info{};
  EXPECT_FALSE(GetCPInfo(1234, Info));
  for (auto Call : {+[] { UnicodeToCodePage(u"a", 1234); },
                    +[] { CodePageToUnicode("a", 1, 1234); }, +[] { CodePageName(1234); }}) {
    try {
      Call();
      ADD_FAILURE() << "no exception";
    } catch (const EEncodingError& E) {
      EXPECT_EQ(E.Message(), u"Unsupported code page 1234");
    }
  }
}

TEST(CodePages, LongestCharacterPerPage) {
  const std::pair<Word, Integer> Cases[] = {
      {0, 1},     {1252, 1}, {28591, 1}, {20127, 1}, {437, 1}, {20866, 1}, {1200, 2},  {1201, 2},
      {65001, 4}, {932, 2},  {936, 2},   {949, 2},   {950, 2}, {51932, 3}, {54936, 4},
  };
  for (const auto& [CodePage, MaxCharSize] : Cases) {
    TCPInfo Info{};
    ASSERT_TRUE(GetCPInfo(CodePage, Info)) << CodePage;
    EXPECT_EQ(Info.MaxCharSize, MaxCharSize) << CodePage;
    EXPECT_EQ(IsSingleByteCodePage(CodePage), MaxCharSize == 1) << CodePage;
  }
}

TEST(CodePages, UnmappableCharactersBecomeQuestionMarks) {
  EXPECT_EQ(UnicodeToCodePage(u"a\u4e2db", 1252), "a?b");
  EXPECT_EQ(UnicodeToCodePage(u"a\U0001F600b", 1252), "a?b");
  EXPECT_EQ(UnicodeToCodePage(u"\u00e9\u0100", 28591), "\xe9?");
  EXPECT_EQ(UnicodeToCodePage(u"\u00e9~", 20127), "?~");
  EXPECT_EQ(UnicodeToCodePage(u"\u0e01x", 932), "?x");
  EXPECT_EQ(UnicodeToCodePage(u"\u0e01x", 936), "?x");
  EXPECT_EQ(UnicodeToCodePage(u"a\xd800"
                              u"b",
                              932),
            "a?b");
  EXPECT_EQ(UnicodeToCodePage(u"a\xd800"
                              u"b",
                              65001),
            "a\xef\xbf\xbd"
            "b");
  EXPECT_EQ(UnicodeToCodePage(u"a\xd800", 1200), std::string("a\0\0\xd8", 4));
}

TEST(CodePages, BytesThatDontDecodeBecomeReplacementCharacters) {
  const struct {
    Word CodePage;
    std::string Bytes;
    std::u16string Expected;
  } Cases[] = {
      {20127,
       "a\x80"
       "b",
       u"a\ufffd"
       "b"},
      {65001,
       "a\xff"
       "b",
       u"a\ufffd"
       "b"},
      {65001, "a\xe4\xb8", u"a\ufffd"},
      {1200, std::string("A\0B", 3), u"A\ufffd"},
      {1201, std::string("\0A\0", 3), u"A\ufffd"},
      {932, "a\x81", u"a\ufffd"}, // lead byte without its trail
      {936, "a\x81", u"a\ufffd"},
      {949, "a\x81", u"a\ufffd"},
      {950, "a\x81", u"a\ufffd"},
      {51932, "a\x8e", u"a\ufffd"},
      {54936, "a\x81\x30", u"a\ufffd"},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(Case.CodePage);
    const UnicodeString Text =
        CodePageToUnicode(Case.Bytes.data(), Case.Bytes.size(), Case.CodePage);
    // Multi-byte decoders may take the bad sequence as one or two characters; both are U+FFFD.
    EXPECT_EQ(Text.substr(0, Case.Expected.size()), Case.Expected);
    EXPECT_EQ(Text.find_first_not_of(u"\ufffd", Case.Expected.size()), UnicodeString::npos);
  }
}

TEST(CodePages, EmptyInputGivesEmptyOutput) {
  for (const TPageSample& Sample : PageSamples()) {
    EXPECT_EQ(UnicodeToCodePage(u"", Sample.CodePage), "");
    EXPECT_EQ(CodePageToUnicode(nullptr, 0, Sample.CodePage), u"");
  }
}

class DefaultCodePage : public ::testing::Test {
protected:
  const test::TDefaultCodePageScope FSaved;
};

TEST_F(DefaultCodePage, IsWindows1252UntilSet) {
  EXPECT_EQ(GetDefaultCodePage(), 1252);
  EXPECT_EQ(ResolveCodePage(0), 1252);
  EXPECT_EQ(ResolveCodePage(65001), 65001);
  EXPECT_EQ(UnicodeToCodePage(u"\u20ac", 0), "\x80");
  EXPECT_EQ(CodePageToUnicode("\x80", 1, 0), u"\u20ac");
  EXPECT_EQ(CodePageName(0), u"windows-1252");
}

TEST_F(DefaultCodePage, SettingItChangesWhatZeroMeans) {
  SetDefaultCodePage(1251);
  EXPECT_EQ(GetDefaultCodePage(), 1251);
  EXPECT_EQ(UnicodeToCodePage(u"\u041f", 0), "\xcf");
  EXPECT_EQ(CodePageToUnicode("\xcf", 1, 0), u"\u041f");
  EXPECT_EQ(SingleByteTable(0), SingleByteTable(1251));
  SetDefaultCodePage(28591);
  EXPECT_EQ(UnicodeToCodePage(u"\u00e9", 0), "\xe9");
}

TEST_F(DefaultCodePage, OnlyAKnownSingleBytePageCanBeTheDefault) {
  const std::pair<Word, std::u16string> Cases[] = {
      {65001, u"Code page 65001 can't be the default: it isn't a single-byte code page"},
      {1200, u"Code page 1200 can't be the default: it isn't a single-byte code page"},
      {932, u"Code page 932 can't be the default: it isn't a single-byte code page"},
      {54936, u"Code page 54936 can't be the default: it isn't a single-byte code page"},
      {1234, u"Unsupported code page 1234"},
      {0, u"Unsupported code page 0"},
  };
  for (const auto& [CodePage, Message] : Cases) {
    try {
      SetDefaultCodePage(CodePage);
      ADD_FAILURE() << "no exception for " << CodePage;
    } catch (const EEncodingError& E) {
      EXPECT_EQ(E.Message(), Message);
    }
    EXPECT_EQ(GetDefaultCodePage(), 1252);
  }
}

TEST(CodePages, ConvertersServeSeveralThreadsAtOnce) {
  const std::u16string Text = u"\u65e5\u672c\u8a9e \u4e2d\u6587 abc";
  const Word Pages[] = {932, 936, 54936, 866};
  std::vector<std::thread> Threads;
  std::vector<int> Failures(8, 0);
  for (int T = 0; T < 8; ++T)
    Threads.emplace_back([&, T] {
      for (int I = 0; I < 200; ++I)
        for (Word CodePage : Pages) {
          const RawByteString Bytes = UnicodeToCodePage(Text, CodePage);
          const UnicodeString Back = CodePageToUnicode(Bytes.data(), Bytes.size(), CodePage);
          if (CodePage != 866 ? Back != Text : Back.size() != Text.size())
            ++Failures[T];
        }
    });
  for (std::thread& Thread : Threads)
    Thread.join();
  for (int T = 0; T < 8; ++T)
    EXPECT_EQ(Failures[T], 0) << "thread " << T;
}

} // namespace
} // namespace lorvane
