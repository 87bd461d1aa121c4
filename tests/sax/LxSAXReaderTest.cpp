// The XML reader: event transcripts of what it accepts, each failure with its code, message and
// locator, the parse forms, and documents deep or long enough to expose recursion.
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxSAX.h"
#include "support/EventRecorder.h"
#include "support/TestHelpers.h"
#include "support/TestStreams.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lorvane {
namespace {

using test::TEventRecorder;

/// A reader with a recorder attached, freed with the test; the reader, which holds interfaces on
/// the recorder, goes first.
struct ReaderWithRecorder {
  ReaderWithRecorder(bool ASingleRoot = true)
      : Recorder(New<TEventRecorder>()), Reader(New<TLxSAXXMLReader>()) {
    Reader->SetSingleRoot(ASingleRoot);
    Recorder->Attach(Reader.get());
  }
  TOwned<TEventRecorder> Recorder;
  TOwned<TLxSAXXMLReader> Reader;
};

std::string Transcript(std::u16string_view AXML, bool ASingleRoot = true) {
  ReaderWithRecorder R(ASingleRoot);
  R.Reader->Parse(LxXMLString(AXML));
  return R.Recorder->Transcript;
}

struct AcceptedCase {
  const char16_t* XML;
  bool SingleRoot;
  const char* Events; // without the startDocument/endDocument frame
};

const AcceptedCase AcceptedCases[] = {
    {u"<a><b/>x</a>", true,
     "startElement(|a|a|[])\nstartElement(|b|b|[])\nendElement(|b|b)\ncharacters(x)\n"
     "endElement(|a|a)\n"},
    {u"junk without markup <a/>", true, "startElement(|a|a|[])\nendElement(|a|a)\n"},
    {u"<a>   </a>  \r\n", true,
     "startElement(|a|a|[])\nignorableWhitespace(   )\nendElement(|a|a)\n"},
    {u"<a> x </a>", true, "startElement(|a|a|[])\ncharacters( x )\nendElement(|a|a)\n"},
    {u"<a><!-- c -->x?y</a>", true,
     "startElement(|a|a|[])\ncomment( c )\ncharacters(x?y)\nendElement(|a|a)\n"},
    {u"<a>&amp;</a>", true, "startElement(|a|a|[])\ncharacters(&amp;)\nendElement(|a|a)\n"},
    {u"<a v='<>\"'/>", true, "startElement(|a|a|[v=|<>\"])\nendElement(|a|a)\n"},
    {u"<a b='1' >", true, "startElement(|a|a|[b=|1])\n"},
    {u"<a\n b='1'/>", true,
     "startElement(|a|a|[b=|1])\nendElement(|a|a)\n"}, // the trim takes the line break
    {u"<a></b>", true, "startElement(|a|a|[])\nendElement(|b|b)\n"},
    {u"<a/><b/>x", false,
     "startElement(|a|a|[])\nendElement(|a|a)\nstartElement(|b|b|[])\nendElement(|b|b)\n"
     "characters(x)\nignorableWhitespace()\n"},
    {u"<a/><!--c--><?p d?><![CDATA[z]]>", true,
     "startElement(|a|a|[])\nendElement(|a|a)\ncomment(c)\nprocessingInstruction(p|d)\n"
     "startCDATA\ncharacters(z)\nendCDATA\n"},
    {u"<a>", true, "startElement(|a|a|[])\n"},
    {u"<?pi a?b?><a/>", true,
     "processingInstruction(pi|a)\nstartElement(|a|a|[])\nendElement(|a|a)\n"},
    {u"<?xml version=\"1.0\"?>\n<!DOCTYPE a [<!ENTITY e \"<x>\">]>\n< noise<a/>", true,
     "processingInstruction(xml|version=\"1.0\")\nstartDTD\nendDTD\nstartElement(|a|a|[])\n"
     "endElement(|a|a)\n"},
    {u"<a><![CDATA[]]><![CDATA[<&>]]></a>", true,
     "startElement(|a|a|[])\nstartCDATA\ncharacters()\nendCDATA\nstartCDATA\n"
     "characters(<&>)\nendCDATA\nendElement(|a|a)\n"},
    {u"<p:a xmlns:p='u1' xmlns='u2' p:x='1' y='2'><b xmlns:P='u3'/></p:a>", true,
     "startPrefixMapping(p|u1)\nstartPrefixMapping(|u2)\n"
     "startElement(u1|a|p:a|[xmlns:p=|u1,xmlns=|u2,p:x=u1|1,y=u2|2])\n"
     "startPrefixMapping(P|u3)\nstartElement(u2|b|b|[xmlns:P=|u3])\nendElement(u2|b|b)\n"
     "endPrefixMapping(P)\nendElement(u1|a|p:a)\nendPrefixMapping()\nendPrefixMapping(p)\n"},
    {u"<a q:x='1' xmlns:q='u'><q:b/></a>", true,
     "startPrefixMapping(q|u)\nstartElement(|a|a|[q:x=|1,xmlns:q=|u])\n"
     "startElement(u|b|q:b|[])\nendElement(u|b|q:b)\nendElement(|a|a)\nendPrefixMapping(q)\n"},
    {u"<a xmlns='u'><b xmlns=''><c/></b></a>", true,
     "startPrefixMapping(|u)\nstartElement(u|a|a|[xmlns=|u])\nstartPrefixMapping(|)\n"
     "startElement(|b|b|[xmlns=|])\nstartElement(|c|c|[])\nendElement(|c|c)\n"
     "endElement(|b|b)\nendPrefixMapping()\nendElement(u|a|a)\nendPrefixMapping()\n"},
    {u"<a:b:c/>", true, "startElement(|b:c|a:b:c|[])\nendElement(|b:c|a:b:c)\n"},
    {u"<a/>\r\n <!--x-->\t", true, "startElement(|a|a|[])\nendElement(|a|a)\ncomment(x)\n"},
    {u"<r/><a><!--x-->  <c/></a>", false,
     "startElement(|r|r|[])\nendElement(|r|r)\nstartElement(|a|a|[])\ncomment(x)\n"
     "startElement(|c|c|[])\nendElement(|c|c)\nendElement(|a|a)\n"},
};

TEST(XmlReader, AcceptedDocumentsGiveTheirTranscripts) {
  for (const AcceptedCase& C : AcceptedCases)
    EXPECT_EQ(Transcript(C.XML, C.SingleRoot),
              "startDocument\n" + std::string(C.Events) + "endDocument\n")
        << StringToUTF8(C.XML);
}

struct FailureCase {
  const char16_t* XML;
  bool SingleRoot;
  Integer Code; // 0 for the end-of-text failure
  const char16_t* Message;
  Integer Line, Col;
};

const FailureCase FailureCases[] = {
    {u"", true, 2, u"The document is not wellformed!\r\n\"<\" expected, but \"\" found!", 1, 1},
    {u"<?xml version='1.0'?>", true, 2,
     u"The document is not wellformed!\r\n\"<\" expected, but \"\" found!", 1, 1},
    {u"<a<b/>", true, 8,
     u"The document is not wellformed!\r\nAn element was not closed correctly (Row: 1, Col: "
     u"1).",
     1, 1},
    {u"<1a/>", true, 3, u"The current character \"1\" is not a valid NameStartChar!", 1, 1},
    {u"<a>\n  <:b/></a>", true, 3,
     u"The current character \":\" is only a valid NameStartChar when NameSpaces are not "
     u"supported!",
     2, 3},
    {u"<a b>", true, 7, u"The document is not wellformed!\r\nMissing attribute value.", 1, 1},
    {u"<a b=1>", true, 7, u"The document is not wellformed!\r\nMissing attribute value.", 1, 1},
    {u"<a\n>", true, 7, u"The document is not wellformed!\r\nMissing attribute value.", 1, 1},
    {u"<a></a x>", true, 2, u"The document is not wellformed!\r\n\">\" expected, but \"x\" found!",
     1, 4},
    {u"<!ELEMENT x><a/>", true, 5, u"\"DOCTYPE\" expected, but \"ELEMENT\" found", 1, 1},
    {u"<a><!x></a>", true, 6, u"![CDATA[ expected, but \"!x></a>\" found", 1, 5},
    {u"<a/><b/>", true, 9,
     u"The document is not wellformed!\r\nA XML document may not contain multiple root "
     u"elements.",
     1, 1},
    {u"<a/>x", true, 12,
     u"The document is not wellformed!\r\nAn invalid token was detected at the root level of "
     u"the document.",
     1, 1},
    {u"<a>\n x", true, 0, u"Unexpected end of the text", 1, 4},
    {u"<a><!-- open", true, 0, u"Unexpected end of the text", 1, 5},
    {u"<a><![CDATA[ open", true, 0, u"Unexpected end of the text", 1, 5},
    {u"<a b='1'", true, 0, u"Unexpected end of the text", 1, 4},
};

TEST(XmlReader, FailuresCarryCodeMessageAndPlace) {
  for (const FailureCase& C : FailureCases) {
    SCOPED_TRACE(StringToUTF8(C.XML));
    ReaderWithRecorder R(C.SingleRoot);
    try {
      R.Reader->Parse(LxXMLString(C.XML));
      ADD_FAILURE() << "no exception";
      continue;
    } catch (const ELxXMLParseError& E) {
      EXPECT_EQ(E.ErrorCode(), C.Code);
      EXPECT_EQ(E.Message(), C.Message);
    } catch (const ELxTextParserEOF& E) {
      EXPECT_EQ(C.Code, 0);
      EXPECT_EQ(E.Message(), C.Message);
    }
    EXPECT_EQ(R.Recorder->LastFatalMessage, C.Message) << "the error handler saw it first";
    if (C.Code == 0) {
      // After the end of the text the locator points where the construct began.
      EXPECT_EQ(R.Reader->GetLineNr(), C.Line);
      EXPECT_EQ(R.Reader->GetColNr(), C.Col);
    }
    EXPECT_EQ(R.Recorder->Transcript.find("endDocument"), std::string::npos);
  }
}

TEST(XmlReader, Utf8TagsReadInPlaceGiveWhatTheCharacterScanGives) {
  // UTF-8 tags are scanned in the raw text where they are ordinary and by characters where they
  // aren't; UTF-16 always goes by characters. Every event, the locator at it, and every failure
  // must be the same, also when a tag straddles the blocks of a stream (where it goes by
  // characters).
  struct TPlacedRecorder : public TEventRecorder {
    TLxSAXReader* Reader = nullptr;
    bool WithPosition = false; // byte offsets compare only between texts of one encoding
    void Place() {
      Transcript += std::to_string(Reader->GetLineNr()) + ":" + std::to_string(Reader->GetColNr());
      if (WithPosition)
        Transcript += "@" + std::to_string(Reader->GetPosition());
      Transcript += " ";
    }
    void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                      const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
      Place();
      TEventRecorder::StartElement(AURI, ALocalName, AQName, AAttributes);
    }
    void EndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName) override {
      Place();
      TEventRecorder::EndElement(AURI, ALocalName, AQName);
    }
    void StartPrefixMapping(const LxXMLString& APrefix, const LxXMLString& AURI) override {
      Place();
      TEventRecorder::StartPrefixMapping(APrefix, AURI);
    }
    void Characters(const LxXMLString& AText) override {
      Place();
      TEventRecorder::Characters(AText);
    }
    void IgnorableWhitespace(const LxXMLString& AText) override {
      Place();
      TEventRecorder::IgnorableWhitespace(AText);
    }
  };
  // Run gives the transcript with places, the failure and the locator after it.
  auto Run = [](auto AParse, bool AWithPosition = true) {
    TOwned<TPlacedRecorder> Recorder(New<TPlacedRecorder>());
    TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
    Recorder->Reader = Reader.get();
    Recorder->WithPosition = AWithPosition;
    Recorder->Attach(Reader.get());
    std::string Failure;
    try {
      AParse(Reader.get());
    } catch (const Exception& E) {
      Failure = StringToUTF8(E.Message()) + " at " + std::to_string(Reader->GetLineNr()) + ":" +
                std::to_string(Reader->GetColNr());
    }
    return Recorder->Transcript + Failure;
  };
  std::vector<LxXMLString> Texts;
  for (const AcceptedCase& C : AcceptedCases)
    if (C.SingleRoot)
      Texts.emplace_back(C.XML);
  for (const FailureCase& C : FailureCases)
    if (C.SingleRoot)
      Texts.emplace_back(C.XML);
  // The edges of the in-place scan: blanks inside attribute names, colons, bytes from 0x80 on
  // in names and values, a name or value that reaches the end of the text.
  for (const char16_t* Text : {u"<a\tb='1'\r\n c = \"2\"\t/>",
                               u"<a  b='1'c='2'  ></a  >",
                               u"<a b::c='1' xmlns:b='u'/>",
                               u"<p:a xmlns:p='u'>\n<p:b p:c='\u00e9' XMLNS='v'>\u65e5</p:b></p:a>",
                               u"<\u00e9l \u00e0='1'/>",
                               u"<a \u00e0:b='1'/>",
                               u"<a b='1' \u00e0='2'/>",
                               u"<a:\u00e9/>",
                               u"<a:1/>",
                               u"<a::b/>",
                               u"<a:b:/>",
                               u"<a b='1'/ >",
                               u"<a b='1'x>",
                               u"<a b='1' c>",
                               u"<a b='1' c='>",
                               u"<a b",
                               u"<a:",
                               u"<a ",
                               u"</",
                               u"<a></a",
                               u"<a></a ",
                               u"<a>\n</a\n>",
                               u"<a xmlns:='u' :b='1'/>",
                               u"<a/>",
                               u"<ab/>"})
    Texts.emplace_back(Text);
  // More names than the name cache keeps, many of them alike, each coming back later: every
  // entry is replaced and hit, and names that share their ends must not be taken for each other.
  LxXMLString Many = u"<r xmlns:p='u'>";
  for (int Round = 0; Round < 3; ++Round)
    for (int I = 0; I < 150; I += 1 + Round) {
      const LxXMLString N = UTF8ToString(std::to_string(I));
      Many += u"<e" + N + u" p:a" + N + u"='" + N + u"' a" + N + u"x='1'\n b" + N + u"=''><p:e" +
              N + u"/></e" + N + u">";
    }
  Texts.push_back(Many + u"</r>");
  for (const LxXMLString& Text : Texts) {
    SCOPED_TRACE(StringToUTF8(Text).substr(0, 80));
    const RawByteString Utf8 = StringToUTF8(Text);
    EXPECT_EQ(Run([&](TLxSAXXMLReader* R) { R->Parse(Utf8, CP_UTF8); }, false),
              Run([&](TLxSAXXMLReader* R) { R->Parse(Text); }, false));
    const std::string Expected = Run([&](TLxSAXXMLReader* R) { R->Parse(Utf8, CP_UTF8); });
    for (Int64 Chunk : {1, 2, 3, 5, 8}) {
      TOwned<test::TChunkedStream> Stream(New<test::TChunkedStream>(Utf8, Chunk));
      EXPECT_EQ(Run([&](TLxSAXXMLReader* R) { R->ParseStream(Stream.get(), CP_UTF8); }), Expected)
          << "in blocks of " << Chunk;
    }
  }
}

TEST(XmlReader, MissingHandlersRaiseBeforeAnyEvent) {
  TOwned<TEventRecorder> Recorder(New<TEventRecorder>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  test::ExpectRaises<ELxXMLParseError>([&] { Reader->Parse(LxXMLString(u"<a/>")); },
                                       u"No contenthandler has been assigned!");
  Reader->SetContentHandler(Recorder.get());
  try {
    Reader->Parse(LxXMLString(u"<a/>"));
    FAIL();
  } catch (const ELxXMLParseError& E) {
    EXPECT_EQ(E.ErrorCode(), 11);
    EXPECT_EQ(E.Message(), u"No errorhandler has been assigned!");
  }
  EXPECT_EQ(Recorder->Transcript, "");
}

TEST(XmlReader, HandlerExceptionsTakeTheFatalRoad) {
  struct TStopAtB : public TEventRecorder {
    void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                      const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
      if (ALocalName == u"b")
        throw EConvertError(u"stop");
      TEventRecorder::StartElement(AURI, ALocalName, AQName, AAttributes);
    }
  };
  TOwned<TStopAtB> Stopper(New<TStopAtB>());
  ReaderWithRecorder R;
  Stopper->Attach(R.Reader.get());
  EXPECT_THROW(R.Reader->Parse(LxXMLString(u"<a x='1'><b/></a>")), EConvertError);
  EXPECT_EQ(Stopper->LastFatalMessage, u"stop");
  EXPECT_EQ(R.Reader->GetLineNr(), -1) << "outside a parse, after a failure other than the end";
  // The reader can parse again.
  Stopper->Transcript.clear();
  R.Reader->Parse(LxXMLString(u"<c/>"));
  EXPECT_EQ(Stopper->Transcript,
            "startDocument\nstartElement(|c|c|[])\nendElement(|c|c)\nendDocument\n");
}

TEST(XmlReader, AHandlerSetDuringAParseTakesTheNextEvents) {
  // The outer handler hands the reader to a helper at <b> (even the empty <b/>, whose end tag is
  // part of the same construct), and the helper hands it back at the end of b; the reader's
  // reference is the helper's only one, and must last until that end tag's event returns.
  struct THelper : public TEventRecorder {
    TLxSAXReader* Reader = nullptr;
    ILxSAXContentHandler* Back = nullptr;
    bool* Gone = nullptr;
    THelper() { SetAutoDestroy(true); }
    ~THelper() override { *Gone = true; }
    void EndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName) override {
      TEventRecorder::EndElement(AURI, ALocalName, AQName);
      if (ALocalName == u"b")
        Reader->SetContentHandler(Back);
      Transcript += "still here\n";
    }
  };
  struct TOuter : public TEventRecorder {
    TLxSAXReader* Reader = nullptr;
    bool HelperGone = false;
    void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                      const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
      TEventRecorder::StartElement(AURI, ALocalName, AQName, AAttributes);
      if (ALocalName != u"b")
        return;
      auto* Helper = New<THelper>();
      Helper->Reader = Reader;
      Helper->Back = this;
      Helper->Gone = &HelperGone;
      Reader->SetContentHandler(Helper);
    }
  };
  for (const auto& [Text, OuterSees] :
       {std::pair{u"<a><b><c/>t</b><d/></a>",
                  "startDocument\nstartElement(|a|a|[])\nstartElement(|b|b|[])\n"
                  "startElement(|d|d|[])\nendElement(|d|d)\nendElement(|a|a)\nendDocument\n"},
        {u"<a><b/><d/></a>", "startDocument\nstartElement(|a|a|[])\nstartElement(|b|b|[])\n"
                             "startElement(|d|d|[])\nendElement(|d|d)\nendElement(|a|a)\n"
                             "endDocument\n"}}) {
    TOwned<TOuter> Outer(New<TOuter>());
    TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
    Outer->Reader = Reader.get();
    Outer->Attach(Reader.get());
    Reader->Parse(LxXMLString(Text));
    EXPECT_EQ(Outer->Transcript, OuterSees);
    EXPECT_TRUE(Outer->HelperGone) << "the reader let the helper go when it had handed back";
  }
}

TEST(XmlReader, HandlersSetAsideDuringAParseStillHearIt) {
  // A handler that takes itself and the error handler out of the reader at <b>: the parse goes
  // on delivering to the handlers it began with, and a failure behind that is raised without an
  // error handler to tell.
  struct TLeaveAtB : public TEventRecorder {
    TLxSAXReader* Reader = nullptr;
    void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                      const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
      if (ALocalName == u"b") {
        Reader->SetContentHandler(nullptr);
        Reader->SetLexicalHandler(nullptr);
        Reader->SetErrorHandler(nullptr);
      }
      TEventRecorder::StartElement(AURI, ALocalName, AQName, AAttributes);
    }
  };
  const std::u16string_view Good = u"<a><b/><!--c--><d/></a>";
  const std::string Expected = Transcript(Good);
  {
    TOwned<TLeaveAtB> Leaver(New<TLeaveAtB>());
    TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
    Leaver->Reader = Reader.get();
    Leaver->Attach(Reader.get());
    Reader->Parse(LxXMLString(Good));
    EXPECT_EQ(Leaver->Transcript, Expected);
  }
  {
    TOwned<TLeaveAtB> Leaver(New<TLeaveAtB>());
    TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
    Leaver->Reader = Reader.get();
    Leaver->Attach(Reader.get());
    EXPECT_THROW(Reader->Parse(LxXMLString(u"<a><b/><1/></a>")), Exception);
    EXPECT_EQ(Leaver->Transcript.find("fatalError"), std::string::npos);
    EXPECT_EQ(Leaver->LastFatalMessage, u"");
  }
}

TEST(XmlReader, FailureAtTheEndOfOneTextDoesntMoveTheNextParsesLocator) {
  // Where the locator stands at each start tag, on a fresh reader and on one whose last parse ran
  // out of text: the end of one text says nothing about the next.
  struct TLinesAtStart : public TEventRecorder {
    TLxSAXReader* Reader = nullptr;
    std::string Places;
    void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                      const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
      Places +=
          std::to_string(Reader->GetLineNr()) + ":" + std::to_string(Reader->GetColNr()) + " ";
      TEventRecorder::StartElement(AURI, ALocalName, AQName, AAttributes);
    }
  };
  const LxXMLString Good = u"<a>\n <b/>\n</a>";
  auto PlacesOn = [&](bool AFailFirst) {
    TOwned<TLinesAtStart> Recorder(New<TLinesAtStart>());
    TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
    Recorder->Reader = Reader.get();
    Recorder->Attach(Reader.get());
    if (AFailFirst) {
      EXPECT_THROW(Reader->Parse(LxXMLString(u"<a>\n\n  <b")), ELxTextParserEOF);
      EXPECT_EQ(Reader->GetLineNr(), 3) << "where <b begins";
      Recorder->Places.clear();
    }
    Reader->Parse(Good);
    EXPECT_EQ(Reader->GetLineNr(), -1) << "outside a parse";
    return Recorder->Places;
  };
  const std::string Fresh = PlacesOn(false);
  EXPECT_EQ(Fresh.find("-1"), std::string::npos) << Fresh;
  EXPECT_EQ(PlacesOn(true), Fresh);
}

TEST(XmlReader, AttributeListsAnswerLookupsDuringStartElement) {
  struct TLookup : public TEventRecorder {
    void StartElement(const LxXMLString&, const LxXMLString& ALocalName, const LxXMLString&,
                      ILxSAXAttributes* A) override {
      if (ALocalName != u"e")
        return;
      EXPECT_EQ(A->Count(), 3);
      EXPECT_EQ(A->GetValue(u"XSI:NIL"), u"true") << "names ignore ASCII case";
      EXPECT_EQ(A->GetValue(u"*", u"a"), u"1") << "the first local name whatever its URI";
      EXPECT_EQ(A->GetValue(u"urn:q", u"a"), u"2");
      EXPECT_EQ(A->GetIndex(u"urn:q", u"a"), 1);
      EXPECT_EQ(A->GetIndex(u"none"), -1);
      EXPECT_EQ(A->GetURI(2), u"urn:x");
      EXPECT_EQ(A->GetType(0), TLxSAXAttributeType::CDATA);
      test::ExpectRaises<ELxXMLParseError>([&] { A->GetValue(3); },
                                           u"List index (3) out of bounds!");
      test::ExpectRaises<ELxXMLParseError>([&] { A->GetType(u"b"); },
                                           u"List index (b) out of bounds!");
      test::ExpectRaises<ELxXMLParseError>([&] { A->GetValue(u"u", u"b"); },
                                           u"List index (u-b) out of bounds!");
      ++Seen;
    }
    int Seen = 0;
  };
  TOwned<TLookup> Lookup(New<TLookup>());
  ReaderWithRecorder R;
  R.Reader->SetContentHandler(Lookup.get());
  R.Reader->Parse(LxXMLString(u"<r xmlns:p='urn:p' xmlns:q='urn:q' xmlns:xsi='urn:x'>"
                              u"<e p:a='1' q:a='2' xsi:nil='true'/></r>"));
  EXPECT_EQ(Lookup->Seen, 1);
}

TEST(XmlReader, EmptyAttributeListIsSharedAndEmpty) {
  TOwned<TLxSAXXMAttributes> Empty(New<TLxSAXXMAttributes>());
  EXPECT_EQ(Empty->Count(), 0);
  EXPECT_EQ(Empty->FirstAttribute(), nullptr);
  EXPECT_EQ(Empty->GetIndex(u"a"), -1);
  Empty->Add(u"a", u"p:a", u"u", u"1", TLxSAXAttributeType::CDATA);
  Empty->Add(u"a", u"p:a", u"u", u"2", TLxSAXAttributeType::CDATA);
  EXPECT_EQ(Empty->GetValue(u"p:a"), u"1") << "no test for duplicates; the first wins";
  EXPECT_EQ(Empty->GetAttribute(1)->Prev, Empty->FirstAttribute());
  Empty->Clear();
  EXPECT_EQ(Empty->Count(), 0);
}

TEST(XmlReader, NamespaceBindingsNestAndEndNewestFirst) {
  ReaderWithRecorder R;
  TLxSAXNamespaceList* List = R.Reader->GetNamespaceList();
  List->AddURI(1, u"p", u"outer");
  List->AddURI(2, u"P", u"inner");
  List->AddURI(2, u"p", u"again");
  EXPECT_EQ(List->GetURI(u"p"), u"again");
  List->AddURI(3, u"q", u"deep");
  List->RemoveLevel(2);
  EXPECT_EQ(List->GetURI(u"p"), u"outer");
  EXPECT_EQ(List->GetURI(u"q"), u"") << "deeper levels go too";
  EXPECT_EQ(List->GetNamespace(u"xml"), nullptr) << "nothing is bound by default";
  EXPECT_EQ(R.Recorder->Transcript,
            "startPrefixMapping(p|outer)\nstartPrefixMapping(P|inner)\nstartPrefixMapping(p|again)"
            "\nstartPrefixMapping(q|deep)\nendPrefixMapping(q)\nendPrefixMapping(p)\n"
            "endPrefixMapping(P)\n");
}

TEST(XmlReader, ParseFormsReadTheirSources) {
  const std::string Expected =
      "startDocument\nprocessingInstruction(xml|version='1.0' encoding='ISO-8859-1')\n"
      "startElement(|a|a|[])\ncharacters(\xC3\xA9)\nendElement(|a|a)\nendDocument\n";
  const RawByteString Latin1 = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>";
  {
    ReaderWithRecorder R;
    R.Reader->Parse(Latin1, 0);
    EXPECT_EQ(R.Recorder->Transcript, Expected) << "the declaration decides";
  }
  {
    ReaderWithRecorder R;
    R.Reader->ParseBuffer(Latin1.data(), Cardinal(Latin1.size()), 28591, u"id");
    EXPECT_EQ(R.Recorder->Transcript, Expected);
    EXPECT_EQ(R.Reader->GetPublicID(), u"id");
  }
  {
    const UnicodeString Path = UTF8ToString(::testing::TempDir()) + u"lorvane_reader.xml";
    TOwned<TFileStream> File(New<TFileStream>(Path, fmCreate));
    File->WriteBuffer("\xEF\xBB\xBF<a>\xC3\xA9</a>", 13);
    File.reset();
    ReaderWithRecorder R;
    R.Reader->ParseFile(Path, fmOpenRead);
    EXPECT_EQ(R.Recorder->Transcript,
              "startDocument\nstartElement(|a|a|[])\ncharacters(\xC3\xA9)\nendElement(|a|a)\n"
              "endDocument\n");
    test::ExpectRaises<EFOpenError>([&] { R.Reader->ParseFile(Path + u".none", fmOpenRead); },
                                    u"Cannot open file \"" + Path +
                                        u".none\". No such file or directory");
  }
  {
    TOwned<TMemoryStream> Stream(New<TMemoryStream>());
    Stream->WriteBuffer("xx<a/>", 6);
    Stream->SetPosition(2);
    ReaderWithRecorder R;
    R.Reader->ParseStream(Stream.get(), 65001, u"");
    EXPECT_EQ(R.Recorder->Transcript,
              "startDocument\nstartElement(|a|a|[])\nendElement(|a|a)\nendDocument\n");
  }
}

TEST(XmlParser, EncodingDecisionFollowsMarkThenCallerThenDeclaration) {
  struct Case {
    std::string Bytes;
    bool ReadBOM;
    Word CodePage;
    TLxCharacterSetType CharSet;
    Word Content;
  };
  const std::string Utf16WithMark = "\xFF\xFE" + std::string("<\0?\0x\0m\0l\0 \0", 12);
  const Case Cases[] = {
      {Utf16WithMark, true, 0, csWide, 1200},
      {"<?xml version='1.0' encoding=\"windows-1252\"?><a/>", false, 0, csAnsi, 1252},
      {"<?xml version='1.0' ENCODING = 'Latin1' ?>", false, 0, csAnsi, 28591},
      {"junk <?xml encoding='utf-8'?>", false, 0, csUTF8, 65001},
      {"<?xml\tencoding='iso-8859-1'?>", false, 0, csUTF8, 65001},
      {"<a/>", false, 0, csUTF8, 65001},
      {"<?xml encoding='iso-8859-1'?>", false, 65001, csUTF8, 65001},
      {"<?xml encoding=x?>", false, 0, csUTF8, 65001},
  };
  for (const Case& C : Cases) {
    SCOPED_TRACE(C.Bytes);
    TOwned<TLxXMLParser> P(
        New<TLxXMLParser>(New<TLxMemoryStream>(C.Bytes.data(), Int64(C.Bytes.size())),
                          /*AStreamOwner=*/true, C.ReadBOM, C.CodePage));
    EXPECT_EQ(P->GetCharacterSetType(), C.CharSet);
    EXPECT_EQ(P->GetContentCodePage(), C.Content);
    EXPECT_EQ(P->GetPosition(), 0) << "back at the start of the text";
  }
  const std::string Unknown = "<?xml encoding='klingon'?><a/>";
  EXPECT_THROW(New<TLxXMLParser>(New<TLxMemoryStream>(Unknown.data(), Int64(Unknown.size())), true,
                                 false, 0),
               EEncodingError);
}

TEST(XmlParser, ChecksOnTheCurrentCharacter) {
  const std::u16string Text = u"_\u00c0\u00d7:1";
  TOwned<TLxXMLParser> P(
      New<TLxXMLParser>(New<TLxStringStream>(std::u16string_view(Text)), true, false, 1200));
  P->CheckValidNameStartChar();
  P->NextChar();
  P->CheckValidNameStartChar();
  P->NextChar();
  test::ExpectRaises<ELxXMLParseError>([&] { P->CheckValidNameStartChar(); },
                                       u"The current character \"\u00d7\" is not a valid "
                                       u"NameStartChar!");
  EXPECT_FALSE(P->CheckCurrChar(P->FLt, false));
  test::ExpectRaises<ELxXMLParseError>(
      [&] { P->CheckCurrChar(P->FGt, true); },
      u"The document is not wellformed!\r\n\">\" expected, but \"\u00d7\" found!");
  P->Last();
  EXPECT_FALSE(P->CheckCurrChar(P->FLt, false)) << "at the end, without raising";
}

TEST(XmlReader, DeepNestingCostsNoStack) {
  constexpr int Depth = 1000000;
  std::string XML;
  XML.reserve(Depth * 7 + 8);
  for (int I = 0; I < Depth; ++I)
    XML += "<a>";
  XML += "x";
  for (int I = 0; I < Depth; ++I)
    XML += "</a>";
  struct TCounter : public TEventRecorder {
    void StartElement(const LxXMLString&, const LxXMLString&, const LxXMLString&,
                      ILxSAXAttributes*) override {
      ++Starts;
    }
    void EndElement(const LxXMLString&, const LxXMLString&, const LxXMLString&) override { ++Ends; }
    int Starts = 0, Ends = 0;
  };
  TOwned<TCounter> Counter(New<TCounter>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  Counter->Attach(Reader.get());
  Reader->Parse(XML, 65001);
  EXPECT_EQ(Counter->Starts, Depth);
  EXPECT_EQ(Counter->Ends, Depth);

  // Many extra roots, which a literal reading would nest one call deeper each.
  std::string Roots;
  for (int I = 0; I < 200000; ++I)
    Roots += "<r/>";
  Reader->SetSingleRoot(false);
  Counter->Starts = 0;
  Reader->Parse(Roots, 65001);
  EXPECT_EQ(Counter->Starts, 200000);
}

} // namespace
} // namespace lorvane
