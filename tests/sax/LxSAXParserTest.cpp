// The event component: event order through callbacks, the parse forms' OnStart/OnFinished, the
// format decision on the first character, and what a failed parse leaves behind.
#include "lorvane/uLxSAX.h"
#include "support/TestHelpers.h"
#include "support/TestStreams.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

namespace lorvane {
namespace {

using test::LiveObjectsTest;

std::string U(const LxXMLString& AText) { return StringToUTF8(AText); }

/// A component with every event wired to a transcript line; each event checks its sender.
struct WiredParser {
  WiredParser() : Parser(New<TLxSAXParser>(nullptr)) {
    TLxSAXParser* P = Parser.get();
    auto Notify = [this](const char* AName) {
      return [this, AName](TObject* ASender) {
        EXPECT_EQ(ASender, Parser.get()) << AName;
        Line(AName);
      };
    };
    P->SetOnStart(Notify("start"));
    P->SetOnFinished(Notify("finished"));
    P->SetOnStartDocument(Notify("startDocument"));
    P->SetOnEndDocument(Notify("endDocument"));
    P->SetOnEndProlog(Notify("endProlog"));
    P->SetOnStartDTD(Notify("startDTD"));
    P->SetOnEndDTD(Notify("endDTD"));
    P->SetOnStartCDATA(Notify("startCDATA"));
    P->SetOnEndCDATA(Notify("endCDATA"));
    auto Text = [this](const char* AName) {
      return [this, AName](TObject* ASender, const LxXMLString& AText) {
        EXPECT_EQ(ASender, Parser.get()) << AName;
        Line(std::string(AName) + "(" + U(AText) + ")");
      };
    };
    P->SetOnCharacters(Text("characters"));
    P->SetOnIgnorableWhitespace(Text("ignorableWhitespace"));
    P->SetOnComment(Text("comment"));
    P->SetOnEndPrefixMapping(Text("endPrefixMapping"));
    P->SetOnProcessingInstruction(
        [this](TObject*, const LxXMLString& ATarget, const LxXMLString& AData) {
          Line("processingInstruction(" + U(ATarget) + "|" + U(AData) + ")");
        });
    P->SetOnStartPrefixMapping(
        [this](TObject*, const LxXMLString& APrefix, const LxXMLString& AURI) {
          Line("startPrefixMapping(" + U(APrefix) + "|" + U(AURI) + ")");
        });
    P->SetOnStartElement([this](TObject* ASender, const LxXMLString& AURI,
                                const LxXMLString& ALocalName, const LxXMLString& AQName,
                                ILxSAXAttributes* AAttributes) {
      EXPECT_EQ(ASender, Parser.get());
      std::string Attributes;
      for (PLxSAXXMAttribute A = AAttributes->FirstAttribute(); A; A = A->Next)
        Attributes.append(Attributes.empty() ? "" : ",")
            .append(U(A->QName))
            .append("=")
            .append(U(A->Value));
      Line("startElement(" + U(AURI) + "|" + U(ALocalName) + "|" + U(AQName) + "|[" + Attributes +
           "])");
    });
    P->SetOnEndElement([this](TObject*, const LxXMLString& AURI, const LxXMLString& ALocalName,
                              const LxXMLString& AQName) {
      Line("endElement(" + U(AURI) + "|" + U(ALocalName) + "|" + U(AQName) + ")");
    });
    P->SetOnFatalError([this](ILxSAXLocator* ALocator, const LxXMLString& AMessage) {
      Line("fatalError(" + std::to_string(ALocator->GetLineNr()) + ":" +
           std::to_string(ALocator->GetColNr()) + "|" + U(AMessage) + ")");
    });
  }
  void Line(const std::string& AText) { Transcript += AText + "\n"; }

  TOwned<TLxSAXParser> Parser;
  std::string Transcript;
};

/// Runs AAction, which must raise ELxXMLParseError with ACode and AMessage.
void ExpectParseError(const std::function<void()>& AAction, Integer ACode,
                      std::u16string_view AMessage) {
  try {
    AAction();
    ADD_FAILURE() << "nothing raised";
  } catch (const ELxXMLParseError& E) {
    EXPECT_EQ(E.ErrorCode(), ACode);
    EXPECT_EQ(U(E.Message()), U(LxXMLString(AMessage)));
  }
}

/// A file in the test's temporary folder, removed with the object.
struct TempFile {
  explicit TempFile(const std::string& ABytes) {
    static int Count = 0;
    Path = ::testing::TempDir() + "lorvane_saxparser_" + std::to_string(++Count) + ".xml";
    std::ofstream(Path, std::ios::binary) << ABytes;
  }
  ~TempFile() { std::remove(Path.c_str()); }
  TFileName Name() const { return UTF8ToString(Path); }
  std::string Path;
};

class SaxParser : public LiveObjectsTest {};

TEST_F(SaxParser, WholeDocumentFiresEventsInReadingOrder) {
  WiredParser W;
  W.Parser->Parse(LxXMLString(u"<?xml version=\"1.0\"?><!--c--><!DOCTYPE r>\n"
                              u"<p:r xmlns:p='u' xmlns='d' a='1'><![CDATA[x]]> <e/>t</p:r>"
                              u"<?after?>"));
  EXPECT_EQ(W.Transcript,
            "start\nstart\nstartDocument\nprocessingInstruction(xml|version=\"1.0\")\n"
            "comment(c)\nstartDTD\nendDTD\nstartPrefixMapping(p|u)\nstartPrefixMapping(|d)\n"
            "startElement(u|r|p:r|[xmlns:p=u,xmlns=d,a=1])\nstartCDATA\ncharacters(x)\n"
            "endCDATA\nignorableWhitespace( )\nstartElement(d|e|e|[])\nendElement(d|e|e)\n"
            "characters(t)\nendElement(u|r|p:r)\nendPrefixMapping()\nendPrefixMapping(p)\n"
            "processingInstruction(after|)\nendDocument\nfinished\nfinished\n")
      << "OnEndProlog is never fired";
}

TEST_F(SaxParser, EveryFormButParseStreamFiresStartAndFinishedTwice) {
  const std::string Bytes = "<a/>";
  const LxXMLString Text = u"<a/>";
  TempFile File(Bytes);
  const char* const Frame = "startDocument\nstartElement(|a|a|[])\nendElement(|a|a)\nendDocument\n";
  const struct {
    const char* Form;
    std::function<void(TLxSAXParser*)> Run;
    int Frames;
  } Cases[] = {
      {"Parse(string)", [&](TLxSAXParser* P) { P->Parse(Text); }, 2},
      {"Parse(bytes)", [&](TLxSAXParser* P) { P->Parse(Bytes, 65001); }, 2},
      {"ParseBuffer",
       [&](TLxSAXParser* P) { P->ParseBuffer(Bytes.data(), Cardinal(Bytes.size()), 0); }, 2},
      {"ParseFile", [&](TLxSAXParser* P) { P->ParseFile(File.Name(), fmOpenRead); }, 2},
      {"ParseStream",
       [&](TLxSAXParser* P) {
         TOwned<TLxStringStream> S(New<TLxStringStream>(std::string_view(Bytes), Word(65001)));
         P->ParseStream(S.get(), 65001);
       },
       1},
  };
  for (const auto& C : Cases) {
    WiredParser W;
    C.Run(W.Parser.get());
    const std::string Starts = C.Frames == 2 ? "start\nstart\n" : "start\n";
    const std::string Ends = C.Frames == 2 ? "finished\nfinished\n" : "finished\n";
    EXPECT_EQ(W.Transcript, Starts + Frame + Ends) << C.Form;
  }
}

TEST_F(SaxParser, FirstCharacterAboveBlankDecidesTheFormat) {
  const char* const XmlEvents = "startElement(|a|a|[])\n";
  const struct {
    const char* Name;
    std::string Bytes;
    Word CodePage;
    Int64 Chunk; // bytes per Read of the stream
    bool Xml;
  } Cases[] = {
      {"blanks and controls, then <", std::string("\x01 \t\r\n<a>", 8), 65001, 1 << 20, true},
      {"UTF-16, a byte at a time", test::Utf16Bytes(u"\u3000 <a>").substr(2), 1200, 1, true},
      {"UTF-8 mark", "\xEF\xBB\xBF<a>", 65001, 1 << 20, false},
      {"UTF-16 mark", test::Utf16Bytes(u"\uFEFF<a>"), 1200, 1 << 20, false},
      {"object", " {\"a\":1}", 65001, 1 << 20, false},
      {"array", "[<a>]", 65001, 1 << 20, false},
      {"other text", "x<a>", 65001, 1 << 20, false},
      {"U+3000 is above the blank", test::Utf16Bytes(u"\u3000<a>"), 1200, 1 << 20, false},
      {"U+3C20: low byte blank, high byte <", test::Utf16Bytes(u"\u3c20<a>"), 1200, 1 << 20, false},
      {"only blanks", "  \n", 65001, 1 << 20, false},
      {"empty", "", 0, 1 << 20, false},
  };
  for (const auto& C : Cases) {
    WiredParser W;
    TOwned<test::TChunkedStream> Stream(New<test::TChunkedStream>(C.Bytes, C.Chunk));
    if (C.Xml) {
      W.Parser->ParseStream(Stream.get(), C.CodePage);
      EXPECT_EQ(W.Transcript,
                std::string("start\nstartDocument\n") + XmlEvents + "endDocument\nfinished\n")
          << C.Name;
    } else {
      // The JSON reader takes the text: it starts the document, then finds its '{' or fails.
      std::string Outcome = "parsed";
      try {
        W.Parser->ParseStream(Stream.get(), C.CodePage);
      } catch (const ELxJSONParseError& E) {
        Outcome = "code " + std::to_string(E.ErrorCode());
      }
      EXPECT_EQ(W.Transcript.substr(0, 20), "start\nstartDocument\n") << C.Name;
      EXPECT_EQ(Outcome, std::string(C.Name) == "object" ? "parsed" : "code 2") << C.Name;
    }
  }
}

TEST_F(SaxParser, MarksAreSteppedOverByTheCallerOrByParseFile) {
  const std::string Text = "\xEF\xBB\xBF <a>";
  {
    WiredParser W;
    TOwned<TLxStringStream> S(New<TLxStringStream>(std::string_view(Text), Word(0)));
    const Word CodePage = LxGetCodePage(S.get());
    W.Parser->ParseStream(S.get(), CodePage);
    EXPECT_EQ(W.Transcript, "start\nstartDocument\nstartElement(|a|a|[])\nendDocument\nfinished\n");
  }
  for (const std::string& Bytes : {Text, std::string("\xFF\xFE") + test::Utf16Bytes(u" <a>")}) {
    TempFile File(Bytes);
    WiredParser W;
    W.Parser->ParseFile(File.Name(), fmOpenRead | fmShareDenyWrite);
    EXPECT_EQ(W.Transcript, "start\nstart\nstartDocument\nstartElement(|a|a|[])\nendDocument\n"
                            "finished\nfinished\n");
  }
}

TEST_F(SaxParser, StringCodePageBeatsTheDeclaredEncoding) {
  WiredParser W;
  W.Parser->SetOnStart(nullptr);
  W.Parser->SetOnFinished(nullptr);
  W.Parser->Parse(
      LxXMLString(u"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\u00e9t\u00e9</a>"));
  EXPECT_NE(W.Transcript.find("characters(" + U(u"\u00e9t\u00e9") + ")"), std::string::npos)
      << W.Transcript;
}

TEST_F(SaxParser, FailureReachesTheCallerAfterOnFatalErrorWithoutOnFinished) {
  WiredParser W;
  ExpectParseError([&] { W.Parser->Parse(LxXMLString(u"<a>\n <b x=1/></a>")); }, 7,
                   u"The document is not wellformed!\r\nMissing attribute value.");
  EXPECT_EQ(W.Transcript, "start\nstart\nstartDocument\nstartElement(|a|a|[])\n"
                          "ignorableWhitespace(\n )\nfatalError(2:9|The document is not "
                          "wellformed!\r\nMissing attribute value.)\n");

  // The end of the text inside character data: the locator points where the run began, at the
  // line break behind <a>.
  W.Transcript.clear();
  test::ExpectRaises<ELxTextParserEOF>([&] { W.Parser->Parse(std::string("<a>\nxy"), 65001); },
                                       u"Unexpected end of the text");
  EXPECT_EQ(W.Transcript, "start\nstart\nstartDocument\nstartElement(|a|a|[])\n"
                          "fatalError(1:4|Unexpected end of the text)\n");

  // Without any event the exception is the only report.
  TOwned<TLxSAXParser> Bare(New<TLxSAXParser>(nullptr));
  test::ExpectRaises<ELxTextParserEOF>([&] { Bare->Parse(LxXMLString(u"<a>x")); },
                                       u"Unexpected end of the text");
}

TEST_F(SaxParser, OnFatalErrorMayRaiseItsOwnException) {
  WiredParser W;
  W.Parser->SetOnFatalError([](ILxSAXLocator*, const LxXMLString& AMessage) {
    throw EConvertError(u"handler: " + AMessage);
  });
  test::ExpectRaises<EConvertError>([&] { W.Parser->Parse(LxXMLString(u"<a/><b/>")); },
                                    u"handler: The document is not wellformed!\r\nA XML document "
                                    u"may not contain multiple root elements.");
}

TEST_F(SaxParser, ExceptionOfAnEventTakesTheFatalRoad) {
  WiredParser W;
  W.Parser->SetOnCharacters(
      [](TObject*, const LxXMLString& AText) { throw EConvertError(u"no text: " + AText); });
  test::ExpectRaises<EConvertError>([&] { W.Parser->Parse(LxXMLString(u"<a>\n<b>x</b></a>")); },
                                    u"no text: x");
  EXPECT_EQ(W.Transcript, "start\nstart\nstartDocument\nstartElement(|a|a|[])\n"
                          "ignorableWhitespace(\n)\nstartElement(|b|b|[])\n"
                          "fatalError(2:5|no text: x)\n");
}

TEST_F(SaxParser, ParsesAgainAfterAFailure) {
  WiredParser W;
  // The failed parse leaves a prefix bound inside its reader; the next parse mustn't see it.
  EXPECT_THROW(W.Parser->Parse(LxXMLString(u"<p:a xmlns:p='u'><b")), ELxTextParserEOF);
  W.Transcript.clear();
  W.Parser->Parse(LxXMLString(u"<p:a/>"));
  EXPECT_EQ(W.Transcript, "start\nstart\nstartDocument\nstartElement(|a|p:a|[])\n"
                          "endElement(|a|p:a)\nendDocument\nfinished\nfinished\n");
}

TEST_F(SaxParser, ParseStartedFromAnEventRunsOnAReaderOfItsOwn) {
  WiredParser W;
  W.Parser->SetOnStart(nullptr);
  W.Parser->SetOnFinished(nullptr);
  bool Nested = false;
  W.Parser->SetOnEndElement(
      [&](TObject*, const LxXMLString& AURI, const LxXMLString& ALocalName, const LxXMLString&) {
        W.Line("endElement(" + U(AURI) + "|" + U(ALocalName) + ")");
        if (!Nested) {
          Nested = true;
          W.Parser->Parse(LxXMLString(u"<inner/>"));
        }
      });
  W.Parser->Parse(LxXMLString(u"<x xmlns='u'><y/></x>"));
  EXPECT_EQ(W.Transcript,
            "startDocument\nstartPrefixMapping(|u)\nstartElement(u|x|x|[xmlns=u])\n"
            "startElement(u|y|y|[])\nendElement(u|y)\n"
            "startDocument\nstartElement(|inner|inner|[])\nendElement(|inner)\nendDocument\n"
            "endElement(u|x)\nendPrefixMapping()\nendDocument\n");
}

TEST_F(SaxParser, AnswersTheHandlerInterfacesUncounted) {
  TOwned<TLxSAXParser> P(New<TLxSAXParser>(nullptr));
  for (const TGUID& IID : {ILxSAXErrorHandler::IID, ILxSAXContentHandler::IID,
                           ILxSAXLexicalHandler::IID, IInterface::IID}) {
    void* Obj = nullptr;
    EXPECT_EQ(P->QueryInterface(IID, &Obj), S_OK);
    EXPECT_NE(Obj, nullptr);
  }
  void* Obj = &Obj;
  EXPECT_EQ(P->QueryInterface(ILxSAXLocator::IID, &Obj), E_NOINTERFACE);
  EXPECT_EQ(Obj, nullptr);
  EXPECT_EQ(IPtr<ILxSAXContentHandler>::From(static_cast<ILxSAXLexicalHandler*>(P.get())).Get(),
            static_cast<ILxSAXContentHandler*>(P.get()));
  EXPECT_EQ(static_cast<ILxSAXContentHandler*>(P.get())->_AddRef(), -1);
  EXPECT_EQ(static_cast<ILxSAXContentHandler*>(P.get())->_Release(), -1);
}

TEST_F(SaxParser, ErrorMethodsPassLocatorAndMessageAndEntityMethodsDoNothing) {
  // The locator goes last: the component holds a reference to it.
  TOwned<TLxSAXXMLReader> Locator(New<TLxSAXXMLReader>());
  WiredParser W;
  std::string Seen;
  auto Record = [&](const char* AName) {
    return [&, AName](ILxSAXLocator* ALocator, const LxXMLString& AMessage) {
      EXPECT_EQ(ALocator, static_cast<ILxSAXLocator*>(Locator.get()));
      Seen += std::string(AName) + "(" + U(AMessage) + ")";
    };
  };
  W.Parser->SetOnWarning(Record("warning"));
  W.Parser->SetOnError(Record("error"));
  W.Parser->Warning(Locator.get(), u"w");
  W.Parser->Error(Locator.get(), u"e");
  W.Parser->StartEntity(u"x");
  W.Parser->EndEntity(u"x");
  W.Parser->SkippedEntity(u"x");
  W.Parser->SetDocumentLocator(Locator.get());
  EXPECT_EQ(Seen, "warning(w)error(e)");
  EXPECT_EQ(W.Transcript, "");
}

TEST_F(SaxParser, SubclassReplacesHandlerMethodsAndKeepsTheLocator) {
  class TCounter : public TLxSAXParser {
  public:
    using TLxSAXParser::TLxSAXParser;
    void StartElement(const LxXMLString&, const LxXMLString&, const LxXMLString&,
                      ILxSAXAttributes*) override {
      ++Elements;
    }
    ILxSAXLocator* Locator() const { return FLocator.Get(); }
    int Elements = 0;
  };
  TOwned<TComponent> Owner(New<TComponent>(nullptr));
  TCounter* C = New<TCounter>(Owner.get());
  C->SetOnStartElement([](TObject*, const LxXMLString&, const LxXMLString&, const LxXMLString&,
                          ILxSAXAttributes*) { ADD_FAILURE() << "the override decides"; });
  C->Parse(LxXMLString(u"<a><b/><c/></a>"));
  EXPECT_EQ(C->Elements, 3);
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  C->SetDocumentLocator(Reader.get());
  EXPECT_EQ(C->Locator(), static_cast<ILxSAXLocator*>(Reader.get()));
  Owner.reset(); // frees the component, which releases the locator before the reader goes
}

} // namespace
} // namespace lorvane
