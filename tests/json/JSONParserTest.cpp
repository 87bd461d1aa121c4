// The JSON event component: events through callbacks, OnStart/OnFinished around every form, the
// form post flag, and what a failed parse leaves behind.
#include "lorvane/uLxJSON.h"

#include "support/JSONEventRecorder.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

namespace lorvane {
namespace {

std::string U(const LxJSONString& AText) { return StringToUTF8(AText); }

/// A component with every event wired to a transcript line.
struct WiredParser {
  WiredParser() : Parser(New<TLxJSONParser>(nullptr)) {
    TLxJSONParser* P = Parser.get();
    auto Notify = [this](const char* AName) {
      return [this, AName](TObject* ASender) {
        EXPECT_EQ(ASender, Parser.get()) << AName;
        Line(AName);
      };
    };
    P->SetOnStart(Notify("start"));
    P->SetOnFinished(Notify("finished"));
    auto Plain = [this](const char* AName) { return [this, AName] { Line(AName); }; };
    P->SetOnStartDocument(Plain("startDocument"));
    P->SetOnStartObject(Plain("startObject"));
    P->SetOnStartArray(Plain("startArray"));
    P->SetOnEndArray(Plain("endArray"));
    P->SetOnEndMember(Plain("endMember"));
    P->SetOnEndObject(Plain("endObject"));
    P->SetOnEndDocument(Plain("endDocument"));
    P->SetOnStartMember(
        [this](const LxJSONString& AName) { Line("startMember(" + U(AName) + ")"); });
    P->SetOnValue([this](TLxJSONSimpleDataType AType, const LxJSONString& AValue) {
      Line(std::string("value(") + test::TJSONEventRecorder::TypeName(AType) + "|" + U(AValue) +
           ")");
    });
    P->SetOnFatalError([this](ILxJSONLocator* ALocator, const LxJSONString& AMessage) {
      Line("fatalError(" + std::to_string(ALocator->GetLineNr()) + ":" +
           std::to_string(ALocator->GetColNr()) + "|" + U(AMessage) + ")");
    });
  }
  void Line(const std::string& AText) {
    if (!Transcript.empty())
      Transcript += ' ';
    Transcript += AText;
  }

  TOwned<TLxJSONParser> Parser;
  std::string Transcript;
};

/// A file in the test's temporary folder, removed with the object.
struct TempFile {
  explicit TempFile(const std::string& ABytes) {
    static int Count = 0;
    Path = ::testing::TempDir() + "lorvane_jsonparser_" + std::to_string(++Count) + ".json";
    std::ofstream(Path, std::ios::binary) << ABytes;
  }
  ~TempFile() { std::remove(Path.c_str()); }
  TFileName Name() const { return UTF8ToString(Path); }
  std::string Path;
};

class JSONParser : public test::LiveObjectsTest {};

TEST_F(JSONParser, EveryFormFiresTheReadersEventsBetweenOneStartAndOneFinished) {
  const std::string Bytes = "{\"a\\n\":[1,\"x\",true,null]}";
  const LxJSONString Text = u"{\"a\\n\":[1,\"x\",true,null]}";
  const std::string UTF16(reinterpret_cast<const char*>(Text.data()), Text.size() * 2);
  TempFile File("\xEF\xBB\xBF" + Bytes);
  TempFile UTF16File("\xFF\xFE" + UTF16);
  const std::string Events =
      "start startDocument startObject startMember(a\\n) startArray value(jdtNumber|1) "
      "value(jdtString|x) value(jdtBoolean|true) value(jdtNull|null) endArray endMember "
      "endObject endDocument finished";
  const struct {
    const char* Form;
    std::function<void(TLxJSONParser*)> Run;
  } Cases[] = {
      {"Parse(string)", [&](TLxJSONParser* P) { P->Parse(Text); }},
      {"Parse(bytes)", [&](TLxJSONParser* P) { P->Parse(Bytes, 65001); }},
      {"ParseBuffer",
       [&](TLxJSONParser* P) { P->ParseBuffer(Bytes.data(), Cardinal(Bytes.size()), 0); }},
      {"ParseBuffer UTF-16",
       [&](TLxJSONParser* P) { P->ParseBuffer(UTF16.data(), Cardinal(UTF16.size()), 1200); }},
      {"ParseStream",
       [&](TLxJSONParser* P) {
         TOwned<TMemoryStream> S(New<TMemoryStream>());
         S->WriteBuffer(("xx" + Bytes).data(), Int64(Bytes.size() + 2));
         S->SetPosition(2); // from the position on
         P->ParseStream(S.get(), 65001);
       }},
      {"ParseFile with UTF-8 mark",
       [&](TLxJSONParser* P) { P->ParseFile(File.Name(), fmOpenRead | fmShareDenyWrite); }},
      {"ParseFile with UTF-16 mark",
       [&](TLxJSONParser* P) { P->ParseFile(UTF16File.Name(), fmOpenRead | fmShareDenyWrite); }},
  };
  for (const auto& Case : Cases) {
    WiredParser W;
    Case.Run(W.Parser.get());
    EXPECT_EQ(W.Transcript, Events) << Case.Form;
    EXPECT_EQ(W.Parser->GetReader(), nullptr) << Case.Form;
  }
}

TEST_F(JSONParser, FormPostFlagReadsPairsAsOneObject) {
  const std::string Form = "a=1&b[]=x+y";
  // The form reader's closing calls don't pair with its opening ones; the component passes them
  // on as they come.
  const std::string AsForm = "start startDocument startObject startMember(a) value(jdtString|1) "
                             "endMember startMember(b) startArray value(jdtString|x y) endObject "
                             "endArray endObject endObject endDocument finished";
  // Without the flag the same bytes are JSON, and fail where a value must start.
  const std::string AsJSON =
      "start startDocument fatalError(1:1|The document is not wellformed!\r\n\"\", t, f, n, "
      "0..9, ., + or -\" expected, but \"a\" found!)";
  for (bool Flag : {true, false})
    for (bool FromStream : {false, true}) {
      WiredParser W;
      try {
        if (FromStream) {
          TOwned<TMemoryStream> S(New<TMemoryStream>());
          S->WriteBuffer(Form.data(), Int64(Form.size()));
          S->SetPosition(0);
          W.Parser->ParseStream(S.get(), 65001, Flag);
        } else {
          W.Parser->ParseBuffer(Form.data(), Cardinal(Form.size()), 65001, Flag);
        }
        EXPECT_TRUE(Flag) << "JSON text must fail";
      } catch (const ELxJSONParseError&) {
        EXPECT_FALSE(Flag) << "a form post must not fail";
      }
      EXPECT_EQ(W.Transcript, Flag ? AsForm : AsJSON) << "stream: " << FromStream;
    }
}

TEST_F(JSONParser, FailureReachesTheCallerAfterOnFatalErrorWithoutOnFinished) {
  WiredParser W;
  try {
    W.Parser->Parse(LxJSONString(u"{\"a\":\n  [nul]}"));
    ADD_FAILURE() << "nothing raised";
  } catch (const ELxJSONParseError& E) {
    EXPECT_EQ(E.ErrorCode(), cLxJSONErrNotWellFormed);
    EXPECT_EQ(U(E.Message()),
              "The document is not wellformed!\r\n\"l\" expected, but \"]\" found!");
  }
  EXPECT_EQ(W.Transcript, "start startDocument startObject startMember(a) startArray "
                          "fatalError(2:7|The document is not wellformed!\r\n\"l\" expected, but "
                          "\"]\" found!)");
  EXPECT_EQ(W.Parser->GetReader(), nullptr);

  // The end of the text inside an object: after the failure the locator is -1.
  W.Transcript.clear();
  test::ExpectRaises<ELxTextParserEOF>([&] { W.Parser->Parse(std::string("{\"a\":1"), 65001); },
                                       u"Unexpected end of the text");
  EXPECT_EQ(W.Transcript, "start startDocument startObject startMember(a) value(jdtNumber|1) "
                          "endMember endObject fatalError(-1:-1|Unexpected end of the text)");

  // Failures before the text is read don't pass the error handler.
  W.Transcript.clear();
  const std::string UTF16BE("\0{\0}", 4);
  test::ExpectRaises<Exception>([&] { W.Parser->Parse(UTF16BE, 0); },
                                u"The specified encoding is not supported!");
  EXPECT_THROW(W.Parser->ParseFile(u"/nonexistent/lorvane.json", fmOpenRead), EFOpenError);
  EXPECT_EQ(W.Transcript, "start start");

  // The next parse runs as if nothing had happened.
  W.Transcript.clear();
  W.Parser->Parse(LxJSONString(u"[]"));
  EXPECT_EQ(W.Transcript, "start startDocument startArray endArray endDocument finished");
}

TEST_F(JSONParser, ExceptionOfAnEventTakesTheFatalRoadAndOnFatalErrorMayReplaceIt) {
  WiredParser W;
  W.Parser->SetOnStartMember(
      [](const LxJSONString& AName) { throw EConvertError(u"no member " + AName); });
  test::ExpectRaises<EConvertError>([&] { W.Parser->Parse(LxJSONString(u"{\"k\":1}")); },
                                    u"no member k");
  EXPECT_EQ(W.Transcript, "start startDocument startObject fatalError(1:4|no member k)");

  W.Parser->SetOnFatalError([](ILxJSONLocator*, const LxJSONString& AMessage) {
    throw EInvalidOperation(u"handler: " + AMessage);
  });
  test::ExpectRaises<EInvalidOperation>([&] { W.Parser->Parse(LxJSONString(u"x")); },
                                        u"handler: The document is not wellformed!\r\n\"\", t, "
                                        u"f, n, 0..9, ., + or -\" expected, but \"x\" found!");
  EXPECT_EQ(W.Parser->GetReader(), nullptr);
}

TEST_F(JSONParser, EventsFindTheRunningReaderAndANestedParseGetsItsOwn) {
  WiredParser W;
  W.Parser->SetOnStart(nullptr);
  W.Parser->SetOnFinished(nullptr);
  TLxJSONReader* Outer = nullptr;
  W.Parser->SetOnValue([&](TLxJSONSimpleDataType, const LxJSONString& AValue) {
    TLxJSONReader* R = W.Parser->GetReader();
    ASSERT_NE(R, nullptr);
    W.Line("value(" + U(AValue) + ")@" + std::to_string(R->GetLineNr()) + ":" +
           std::to_string(R->GetColNr()) + "|" + U(R->GetPublicID()));
    if (AValue == u"1") {
      Outer = R;
      W.Parser->Parse(LxJSONString(u"[9]"), u"inner");
      EXPECT_EQ(W.Parser->GetReader(), Outer);
    }
  });
  W.Parser->Parse(LxJSONString(u"[1,\n 2]"), u"outer");
  EXPECT_EQ(W.Transcript, "startDocument startArray value(1)@1:3|outer startDocument startArray "
                          "value(9)@1:3|inner endArray endDocument value(2)@2:3|outer endArray "
                          "endDocument");
  EXPECT_EQ(W.Parser->GetReader(), nullptr);
}

TEST_F(JSONParser, AnswersTheHandlerInterfacesUncounted) {
  TOwned<TLxJSONParser> P(New<TLxJSONParser>(nullptr));
  for (const TGUID& IID : {ILxJSONErrorHandler::IID, ILxJSONContentHandler::IID, IInterface::IID}) {
    void* Obj = nullptr;
    EXPECT_EQ(P->QueryInterface(IID, &Obj), S_OK);
    EXPECT_NE(Obj, nullptr);
  }
  void* Obj = &Obj;
  EXPECT_EQ(P->QueryInterface(ILxJSONLocator::IID, &Obj), E_NOINTERFACE);
  EXPECT_EQ(Obj, nullptr);
  EXPECT_EQ(IPtr<ILxJSONContentHandler>::From(static_cast<ILxJSONErrorHandler*>(P.get())).Get(),
            static_cast<ILxJSONContentHandler*>(P.get()));
  EXPECT_EQ(static_cast<ILxJSONContentHandler*>(P.get())->_AddRef(), -1);
  EXPECT_EQ(static_cast<ILxJSONContentHandler*>(P.get())->_Release(), -1);
}

TEST_F(JSONParser, ErrorMethodsPassLocatorAndMessageAndUnassignedEventsCostNothing) {
  // The locator goes last: the component holds a reference to it.
  TOwned<TLxJSONReader> Locator(New<TLxJSONReader>());
  WiredParser W;
  std::string Seen;
  auto Record = [&](const char* AName) {
    return [&, AName](ILxJSONLocator* ALocator, const LxJSONString& AMessage) {
      EXPECT_EQ(ALocator, static_cast<ILxJSONLocator*>(Locator.get()));
      Seen += std::string(AName) + "(" + U(AMessage) + ")";
    };
  };
  W.Parser->SetOnWarning(Record("warning"));
  W.Parser->SetOnError(Record("error"));
  W.Parser->Warning(Locator.get(), u"w");
  W.Parser->Error(Locator.get(), u"e");
  W.Parser->SetDocumentLocator(Locator.get());
  EXPECT_EQ(Seen, "warning(w)error(e)");
  EXPECT_EQ(W.Transcript, "");

  // No event at all: the parse only checks the text.
  TOwned<TLxJSONParser> Bare(New<TLxJSONParser>(nullptr));
  Bare->Parse(LxJSONString(u"{\"a\":[1,{}]}"));
  Bare->Warning(Locator.get(), u"w");
  EXPECT_THROW(Bare->Parse(LxJSONString(u"[tru]")), ELxJSONParseError);
}

TEST_F(JSONParser, SubclassReplacesHandlerMethodsAndOwnerFreesIt) {
  class TCounter : public TLxJSONParser {
  public:
    using TLxJSONParser::TLxJSONParser;
    void Value(TLxJSONDataType AType, const LxJSONString& AValue) override {
      ++Values;
      TLxJSONParser::Value(AType, AValue);
    }
    void StartMember(const LxJSONString&) override { ++Members; }
    ILxJSONLocator* Locator() const { return FLocator.Get(); }
    int Values = 0, Members = 0;
  };
  TOwned<TComponent> Owner(New<TComponent>(nullptr));
  TCounter* C = New<TCounter>(Owner.get());
  int Fired = 0;
  C->SetOnValue([&](TLxJSONSimpleDataType, const LxJSONString&) { ++Fired; });
  C->SetOnStartMember([](const LxJSONString&) { ADD_FAILURE() << "the override decides"; });
  C->Parse(LxJSONString(u"{\"a\":1,\"b\":[2,3]}"));
  EXPECT_EQ(C->Values, 3);
  EXPECT_EQ(C->Members, 2);
  EXPECT_EQ(Fired, 3);
  TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
  C->SetDocumentLocator(Reader.get());
  EXPECT_EQ(C->Locator(), static_cast<ILxJSONLocator*>(Reader.get()));
  Owner.reset(); // frees the component, which releases the locator before the reader goes
}

} // namespace
} // namespace lorvane
