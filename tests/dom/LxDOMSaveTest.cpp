// Saving to streams: every save has written all its text when it returns, a stream that fails
// part way leaves nothing behind for the next save, saves nest, and text of any length reaches
// the stream whole in every code page.
#include "dom/DomFixtures.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"

#include <functional>
#include <limits>
#include <string>

namespace lorvane {
namespace {

class DomSave : public test::LiveObjectsTest {
protected:
  void TearDown() override {
    FDocument.reset();
    LiveObjectsTest::TearDown();
  }
  /// Loads a document of ACount items, far more text than the writer holds at once, and gives
  /// the compact text it must save to: the input with the double quotes of single-quoted values
  /// as references, and empty elements with a blank before "/>".
  UnicodeString LoadItems(int ACount) {
    UnicodeString Input = u"<?xml version=\"1.0\"?><root>";
    UnicodeString Expected = Input;
    for (int I = 0; I < ACount; ++I) {
      const UnicodeString Id = IntToStr(I);
      Input += u"<item id=\"" + Id + u"\" note='say \"hi\"'>caf\u00e9 \U0001F600 &amp; " +
               u"<![CDATA[<" + Id + u">]]><!--c" + Id + u"--><?pi " + Id + u"?><e/></item>";
      Expected += u"<item id=\"" + Id + u"\" note=\"say &quot;hi&quot;\">caf\u00e9 \U0001F600 " +
                  u"&amp; <![CDATA[<" + Id + u">]]><!--c" + Id + u"--><?pi " + Id +
                  u"?><e /></item>";
    }
    Input += u"</root>";
    Expected += u"</root>";
    FDocument.reset(TLxDOMDocument::CreateFromXML(Input));
    return Expected;
  }
  TOwned<TLxDOMDocument> FDocument;
};

/// A memory stream that runs OnWrite before each write and takes no byte past Limit, so that
/// WriteBuffer raises EWriteError there.
class THookedStream : public TMemoryStream {
  LX_CLASS(THookedStream, TMemoryStream)
  Int64 Write(const void* ABuffer, Int64 ACount) override {
    ++Writes;
    if (OnWrite)
      OnWrite();
    if (GetPosition() + ACount > Limit)
      return 0;
    return TMemoryStream::Write(ABuffer, ACount);
  }
  std::string Bytes() {
    return std::string(reinterpret_cast<const char*>(Memory()),
                       static_cast<std::size_t>(GetSize()));
  }
  std::function<void()> OnWrite;
  Int64 Limit = std::numeric_limits<Int64>::max();
  int Writes = 0;

protected:
  ~THookedStream() override = default;
};

std::string InCodePage(std::u16string_view AText, Word ACodePage) {
  if (ACodePage == 1200)
    return std::string(reinterpret_cast<const char*>(AText.data()), AText.size() * 2);
  if (ACodePage == 65001)
    return StringToUTF8(AText);
  return UnicodeToCodePage(AText, ACodePage);
}

TEST_F(DomSave, EverySaveHasWrittenAllItsTextWhenItReturns) {
  const UnicodeString Document = LoadItems(400);
  TLxDOMElement* Root = FDocument->GetRootNode();
  const UnicodeString RootText = Document.substr(Document.find(u"<root>"));
  // The same text in a document owned by its interface, for the faces' saves.
  IPtr<ILxDOMDocument> Faced = LxCreateDOM(FDocument->GetXML());
  const std::string Before = "before";
  struct TCase {
    const char* Name;
    std::function<void(TStream*)> Save;
    std::string Expected;
  };
  const TCase Cases[] = {
      {"node, UTF-8", [&](TStream* S) { Root->SaveToStream(S, 65001, false); },
       InCodePage(RootText, 65001)},
      {"node, UTF-16", [&](TStream* S) { Root->SaveToStream(S, 1200, false); },
       InCodePage(RootText, 1200)},
      {"node, Windows-1252", [&](TStream* S) { Root->SaveToStream(S, 1252, false); },
       InCodePage(RootText, 1252)},
      {"node at a level",
       [&](TStream* S) {
         Integer Level = -1;
         Root->_SaveToStream(S, 65001, false, Level);
         EXPECT_EQ(Level, -1); // the walk gives the level back as it found it
       },
       InCodePage(RootText, 65001)},
      {"node face", [&](TStream* S) { Faced->GetRootNode()->SaveToStream(S, 1200, false); },
       InCodePage(RootText, 1200)},
      {"document with mark", [&](TStream* S) { FDocument->SaveToStream(S, 65001, false, true); },
       "\xEF\xBB\xBF" + InCodePage(Document, 65001)},
      {"document in its encoding",
       [&](TStream* S) { FDocument->SaveToStreamInEncoding(S, false, false); },
       InCodePage(Document, 65001)},
      {"document face", [&](TStream* S) { Faced->SaveToStreamEx(S, false, true); },
       "\xEF\xBB\xBF" + InCodePage(Document, 65001)},
  };
  for (const TCase& Case : Cases) {
    SCOPED_TRACE(Case.Name);
    TOwned<THookedStream> Stream(New<THookedStream>());
    Stream->WriteBuffer(Before.data(), Int64(Before.size()));
    Case.Save(Stream.get());
    // Read at once: nothing may still be on its way.
    const Int64 Size = Before.size() + Case.Expected.size();
    EXPECT_EQ(Stream->GetSize(), Size);
    EXPECT_EQ(Stream->GetPosition(), Size);
    EXPECT_TRUE(Stream->Bytes() == Before + Case.Expected);
    EXPECT_GT(Stream->Writes, 3); // the text went out in several blocks
  }
}

TEST_F(DomSave, LongTextReachesTheStreamWholeWithPairsAcrossBlockEdges) {
  // Values longer than the writer's block, with a surrogate pair or a lone surrogate placed at
  // and around the edges of the blocks it is written and converted in; short ones put them at
  // and around the edges of the eight-unit runs that UTF-8 output narrows at once.
  const std::u16string Pair = u"\U0001F600";
  const std::size_t Lengths[] = {0,    1,    7,    8,    9,    15,   16,   17,
                                 4094, 4095, 4096, 4097, 8190, 8191, 12287};
  for (const std::size_t Length : Lengths) {
    for (const std::u16string& Tail :
         {Pair, std::u16string(u"\xD83D"), std::u16string(u"\xDE00x")}) {
      const std::u16string Value = std::u16string(Length, u'a') + Tail + Pair + u"\u00e9";
      TOwned<TLxDOMElement> Element(New<TLxDOMElement>());
      Element->SetQualifiedName(u"t");
      Element->AddText(u"")->SetStoredValue(Value);
      Element->AddAttribute(u"v")->SetStoredValue(Value);
      const UnicodeString Expected = u"<t v=\"" + Value + u"\">" + Value + u"</t>";
      for (const Word CodePage : {Word(65001), Word(1200), Word(1252)}) {
        SCOPED_TRACE(testing::Message() << Length << " units, tail " << StringToUTF8(Tail).size()
                                        << " bytes, code page " << CodePage);
        TOwned<THookedStream> Stream(New<THookedStream>());
        Element->SaveToStream(Stream.get(), CodePage, false);
        EXPECT_TRUE(Stream->Bytes() == InCodePage(Expected, CodePage));
      }
    }
  }
}

TEST_F(DomSave, AStreamThatFailsPartWayLeavesNothingForTheNextSave) {
  const UnicodeString Big = LoadItems(400);
  TOwned<TLxDOMDocument> Small(TLxDOMDocument::CreateFromXML(u"<small a=\"1\">x</small>"));
  const std::string BigBytes = InCodePage(Big, 65001);
  for (const Int64 Limit : {Int64(0), Int64(5), Int64(9000), Int64(BigBytes.size() - 1)}) {
    SCOPED_TRACE(Limit);
    TOwned<THookedStream> Failing(New<THookedStream>());
    Failing->Limit = Limit;
    test::ExpectRaises<EWriteError>(
        [&] { FDocument->SaveToStream(Failing.get(), 65001, false, false); },
        u"Stream write error");
    // What went out before the failure is the start of the text, and no more than the stream took.
    const std::string Written = Failing->Bytes();
    EXPECT_LE(Int64(Written.size()), Limit);
    EXPECT_TRUE(BigBytes.compare(0, Written.size(), Written) == 0);
    // The next saves, to another stream and to the same one, hold their own text only.
    TOwned<THookedStream> Next(New<THookedStream>());
    Small->SaveToStream(Next.get(), 65001, false, false);
    EXPECT_EQ(Next->Bytes(), "<small a=\"1\">x</small>");
    Failing->Limit = std::numeric_limits<Int64>::max();
    Failing->SetSize(0);
    Failing->SetPosition(0);
    Small->SaveToStream(Failing.get(), 65001, false, false);
    EXPECT_EQ(Failing->Bytes(), "<small a=\"1\">x</small>");
  }
}

TEST_F(DomSave, ASaveStartedWhileAnotherRunsWritesToItsOwnStream) {
  // The outer stream saves another tree to a second stream on each of its writes, as a stream
  // that logs what passes through it might.
  const UnicodeString Big = LoadItems(300);
  TOwned<TLxDOMDocument> Log(TLxDOMDocument::CreateFromXML(u"<log><entry n=\"\u00e9\"/></log>"));
  TOwned<THookedStream> Outer(New<THookedStream>());
  std::vector<std::string> Logged;
  Outer->OnWrite = [&] {
    TOwned<THookedStream> Inner(New<THookedStream>());
    Log->SaveToStream(Inner.get(), 65001, /*AFormatted=*/true, false);
    Logged.push_back(Inner->Bytes());
  };
  FDocument->SaveToStream(Outer.get(), 1200, /*AFormatted=*/false, false);
  EXPECT_TRUE(Outer->Bytes() == InCodePage(Big, 1200));
  ASSERT_GT(Logged.size(), 3u);
  for (const std::string& Text : Logged)
    EXPECT_EQ(Text, "<log>\r\n  <entry n=\"\xC3\xA9\" />\r\n</log>");
}

TEST_F(DomSave, FormattedSavesLookAtWhatTheStreamAlreadyHolds) {
  // Whether an element or instruction starts on a new line depends on the stream's position and
  // size, which must count the text of the same save still on its way.
  TOwned<TLxDOMDocument> Doc(TLxDOMDocument::CreateFromXML(u"<?xml version=\"1.0\"?><a><b/></a>"));
  TLxDOMElement* A = Doc->GetRootNode();
  struct TCase {
    const char* Name;
    std::string Before;
    std::function<void(TStream*)> Save;
    std::string Expected;
  };
  const std::string Utf16Mark("\xFF\xFE", 2);
  TOwned<TLxDOMDocument> Prolog(TLxDOMDocument::CreateFromXML(u"<!--c--><?p x?><a/>"));
  const TCase Cases[] = {
      {"instruction behind a comment of the same save", "",
       [&](TStream* S) { Prolog->SaveToStream(S, 65001, true, false); },
       "\r\n<!--c-->\r\n<?p x?>\r\n<a />"},
      {"element on an empty stream", "", [&](TStream* S) { A->SaveToStream(S, 65001, true); },
       "<a>\r\n  <b />\r\n</a>"},
      {"element behind a UTF-16 mark", Utf16Mark,
       [&](TStream* S) { A->SaveToStream(S, 1200, true); },
       Utf16Mark + InCodePage(u"<a>\r\n  <b />\r\n</a>", 1200)},
      {"element behind other text", "x", [&](TStream* S) { A->SaveToStream(S, 65001, true); },
       "x\r\n<a>\r\n  <b />\r\n</a>"},
      {"document behind a UTF-16 mark", "",
       [&](TStream* S) { Doc->SaveToStream(S, 1200, true, true); },
       Utf16Mark + InCodePage(u"<?xml version=\"1.0\"?>\r\n<a>\r\n  <b />\r\n</a>", 1200)},
      {"document behind two other bytes", "xy",
       [&](TStream* S) { Doc->SaveToStream(S, 65001, true, false); },
       "xy<?xml version=\"1.0\"?>\r\n<a>\r\n  <b />\r\n</a>"},
      {"document behind five other bytes", "12345",
       [&](TStream* S) { Doc->SaveToStream(S, 65001, true, false); },
       "12345\r\n<?xml version=\"1.0\"?>\r\n<a>\r\n  <b />\r\n</a>"},
  };
  for (const TCase& Case : Cases) {
    SCOPED_TRACE(Case.Name);
    TOwned<THookedStream> Stream(New<THookedStream>());
    Stream->WriteBuffer(Case.Before.data(), Int64(Case.Before.size()));
    Case.Save(Stream.get());
    EXPECT_EQ(Stream->Bytes(), Case.Expected);
  }
  EXPECT_EQ(A->GetFormattedInnerXML(), u"<b />");
  A->AppendChild(New<TLxDOMElement>())->SetQualifiedName(u"c");
  EXPECT_EQ(A->GetFormattedInnerXML(), u"<b />\r\n<c />");
}

} // namespace
} // namespace lorvane
