// The JSON event reader: its forgiving grammar by transcript, failures and where they go, the
// sources and the locator.
#include "lorvane/json/LxJSONReader.h"

#include "lorvane/json/LxFormURLEncodedJSONReader.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/json/LxJSONDefaultHandler.h"
#include "support/JSONEventRecorder.h"
#include "support/TestHelpers.h"
#include "support/TestStreams.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace lorvane {
namespace {

using test::TJSONEventRecorder;

const std::string NotWellFormed = "The document is not wellformed!\r\n";
const std::string CantStartValue =
    NotWellFormed + "\"\", t, f, n, 0..9, ., + or -\" expected, but ";

class JSONReader : public test::LiveObjectsTest {
protected:
  void SetUp() override {
    LiveObjectsTest::SetUp();
    FReader = New<TLxJSONReader>();
    FRecorder = New<TJSONEventRecorder>();
    FRecorder->Attach(FReader);
  }
  void TearDown() override {
    lorvane::Free(FReader);
    lorvane::Free(FRecorder);
    LiveObjectsTest::TearDown();
  }

  /// The transcript of reading AJSON as UTF-16; a failure shows as its fatalError line, and the
  /// exception's class must then be E.
  template <class E = ELxJSONParseError> std::string Read(std::u16string_view AJSON) {
    FRecorder->Transcript.clear();
    try {
      FReader->Parse(LxJSONString(AJSON));
    } catch (const E&) {
    }
    return FRecorder->Transcript;
  }

  TLxJSONReader* FReader = nullptr;
  TJSONEventRecorder* FRecorder = nullptr;
};

struct TGrammarCase {
  std::u16string_view JSON;
  std::string Transcript;
};

TEST_F(JSONReader, DeliversNamesAndValuesRaw) {
  const TGrammarCase Cases[] = {
      {u"", "startDocument endDocument"},
      {u"  {}", "startDocument startObject endObject endDocument"},
      {uR"({"a\n":"x\"y","b":[1,-2.5e3,true,false,null]})",
       R"(startDocument startObject startMember(a\n) value(jdtString|x\"y) endMember )"
       "startMember(b) startArray value(jdtNumber|1) value(jdtNumber|-2.5e3) "
       "value(jdtBoolean|true) value(jdtBoolean|false) value(jdtNull|null) endArray endMember "
       "endObject endDocument"},
      {u"[[],{}, [ [ ] ] ]",
       "startDocument startArray startArray endArray startObject endObject startArray "
       "startArray endArray endArray endArray endDocument"},
      {u"[1.2.3,--,e,+5]", "startDocument startArray value(jdtNumber|1.2.3) value(jdtNumber|--) "
                           "value(jdtNumber|e) value(jdtNumber|+5) endArray endDocument"},
      {u"\"a\nb\"", "startDocument value(jdtString|a\nb) endDocument"},
      {u"5", "startDocument value(jdtNumber|5) endDocument"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(Read(Case.JSON), Case.Transcript) << StringToUTF8(Case.JSON);
}

TEST_F(JSONReader, PassesOverWhatItDoesntLookFor) {
  const TGrammarCase Cases[] = {
      {u"{}\r\n", "startDocument startObject endObject endDocument"},
      {u"{}{}", "startDocument startObject endObject startObject endObject endDocument"},
      {u"[1,]", "startDocument startArray value(jdtNumber|1) endArray endDocument"},
      {uR"({"a" 1, "b": 2})",
       "startDocument startObject startMember(a) value(jdtNumber|2) endMember endObject "
       "endDocument"},
      {uR"({"a":1 "b":2})", "startDocument startObject startMember(a) value(jdtNumber|1) "
                            "endMember endObject endDocument"},
      {u"{'a':1}", "startDocument startObject endObject endDocument"},
      {u"[1 /* x */]", "startDocument startArray value(jdtNumber|1) endArray endDocument"},
      {u"[truex]", "startDocument startArray value(jdtBoolean|true) endArray endDocument"},
      {u"truex", "startDocument value(jdtBoolean|true) endDocument"},
      {u"5 x", "startDocument value(jdtNumber|5) endDocument"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(Read(Case.JSON), Case.Transcript) << StringToUTF8(Case.JSON);
}

TEST_F(JSONReader, MalformedTextIsReportedToTheErrorHandlerAndRaised) {
  const TGrammarCase Cases[] = {
      {u"\n[1]", "startDocument fatalError(" + CantStartValue + "\"\n\" found!)"},
      {u"[,1]", "startDocument startArray fatalError(" + CantStartValue + "\",\" found!)"},
      {u"[1]]", "startDocument startArray value(jdtNumber|1) endArray fatalError(" +
                    CantStartValue + "\"]\" found!)"},
      {u"{\"a\":'x'}",
       "startDocument startObject startMember(a) fatalError(" + CantStartValue + "\"'\" found!)"},
      {u"/* x */ 1", "startDocument fatalError(" + CantStartValue + "\"/\" found!)"},
      {u"[nul]", "startDocument startArray fatalError(" + NotWellFormed +
                     "\"l\" expected, but \"]\" found!)"},
      {u"[True]", "startDocument startArray fatalError(" + CantStartValue + "\"T\" found!)"},
      {u"{\"a\":1,}", "startDocument startObject startMember(a) value(jdtNumber|1) endMember "
                      "fatalError(" +
                          NotWellFormed + "\"\"\" expected, but \"\" found!)"},
      {u"[\"\\q\"]", "startDocument startArray fatalError(" + NotWellFormed +
                         "\"\", \\, /, b, f, n, r, t or u\" expected, but \"q\" found!)"},
      {u"true x", "startDocument value(jdtBoolean|true) fatalError(" + NotWellFormed +
                      "\"\" expected, but \"x\" found!)"},
      {u"\"a\"b", "startDocument value(jdtString|a) fatalError(" + NotWellFormed +
                      "\"\" expected, but \"b\" found!)"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(Read(Case.JSON), Case.Transcript) << StringToUTF8(Case.JSON);
}

TEST_F(JSONReader, TextThatEndsInsideAContainerRaisesEndOfText) {
  const TGrammarCase Cases[] = {
      {u"{\"a\":1", "startDocument startObject startMember(a) value(jdtNumber|1) endMember "
                    "endObject fatalError(Unexpected end of the text)"},
      {u"[1",
       "startDocument startArray value(jdtNumber|1) endArray fatalError(Unexpected end of the "
       "text)"},
      // The four characters behind \u are stepped over unseen, the closing quote among them.
      {u"[\"\\u12\"]", "startDocument startArray value(jdtString|\\u12\"]) endArray "
                       "fatalError(Unexpected end of the text)"},
  };
  for (const auto& Case : Cases) {
    EXPECT_EQ(Read<ELxTextParserEOF>(Case.JSON), Case.Transcript) << StringToUTF8(Case.JSON);
    EXPECT_TRUE(FReader->GetUnexpectedEOF());
    EXPECT_EQ(FRecorder->FatalLineNr, -1);
    EXPECT_EQ(FReader->GetLineNr(), -1);
  }
  Read(u"[x]");
  EXPECT_FALSE(FReader->GetUnexpectedEOF());
}

TEST_F(JSONReader, LocatorReportsTheCursorDuringTheParse) {
  Read(u"[1,\n  x]");
  EXPECT_EQ(FRecorder->FatalLineNr, 2);
  EXPECT_EQ(FRecorder->FatalColNr, 3);
  EXPECT_EQ(FReader->GetLineNr(), -1);
  EXPECT_EQ(FReader->GetColNr(), -1);
}

TEST_F(JSONReader, FailureAtTheEndOfOneTextDoesntMoveTheNextParsesLocator) {
  Read<ELxTextParserEOF>(u"[1");
  ASSERT_TRUE(FReader->GetUnexpectedEOF());
  Read(u"[1,\n  x]");
  EXPECT_EQ(FRecorder->FatalLineNr, 2);
  EXPECT_EQ(FRecorder->FatalColNr, 3);
  Read<ELxTextParserEOF>(u"{");
  FReader->Parse(LxJSONString(u"[]"));
  EXPECT_FALSE(FReader->GetUnexpectedEOF()) << "a parse that succeeds is the last one";
}

TEST_F(JSONReader, AHandlerSetDuringAParseTakesTheNextEvents) {
  // The outer handler hands the reader to a helper at member "b", and the helper hands it back
  // when b's value has ended (a simple value, or the end of its object or array); the reader's
  // reference is the helper's only one, and must last until that last event has returned. The
  // form reader delivers through the same rule.
  struct THelper : public TJSONEventRecorder {
    TLxJSONReader* Reader = nullptr;
    ILxJSONContentHandler* Back = nullptr;
    bool* Gone = nullptr;
    int Depth = 0;
    THelper() { SetAutoDestroy(true); }
    ~THelper() override { *Gone = true; }
    void HandBackAtDepth0() {
      if (Depth == 0)
        Reader->SetContentHandler(Back);
      Transcript += " still here";
    }
    void StartObject() override { ++Depth; }
    void StartArray() override { ++Depth; }
    void Value(TLxJSONDataType AType, const LxJSONString& AValue) override {
      TJSONEventRecorder::Value(AType, AValue);
      HandBackAtDepth0();
    }
    void EndObject() override { --Depth, HandBackAtDepth0(); }
    void EndArray() override { --Depth, HandBackAtDepth0(); }
  };
  struct TOuter : public TJSONEventRecorder {
    TLxJSONReader* Reader = nullptr;
    bool HelperGone = false;
    void StartMember(const LxJSONString& AName) override {
      TJSONEventRecorder::StartMember(AName);
      if (AName != u"b")
        return;
      HelperGone = false;
      auto* Helper = New<THelper>();
      Helper->Reader = Reader;
      Helper->Back = this;
      Helper->Gone = &HelperGone;
      Reader->SetContentHandler(Helper);
    }
  };
  const std::string Around = "startDocument startObject startMember(a) value(jdtNumber|1) "
                             "endMember startMember(b) endMember startMember(c) "
                             "value(jdtBoolean|true) endMember endObject endDocument";
  const std::string FormAround = "startDocument startObject startMember(a) value(jdtString|1) "
                                 "endMember startMember(b) endMember startMember(c) "
                                 "value(jdtString|true) endMember endObject endDocument";
  // The form reader closes a member of nested keys with its object alone, without an endMember.
  std::string FormAroundNested = FormAround;
  FormAroundNested.erase(FormAroundNested.find("startMember(b) endMember ") + 15, 10);
  struct TCase {
    bool Form;
    std::u16string_view Text;
    const std::string& OuterSees;
  };
  for (const auto& [Form, Text, OuterSees] :
       {TCase{false, u"{\"a\":1,\"b\":{\"x\":[1,{}],\"y\":{}},\"c\":true}", Around},
        TCase{false, u"{\"a\":1,\"b\":[[],{\"z\":2}],\"c\":true}", Around},
        TCase{false, u"{\"a\":1,\"b\":\"s\",\"c\":true}", Around},
        TCase{false, u"{\"a\":1,\"b\":{},\"c\":true}", Around},
        TCase{true, u"a=1&b[x]=2&b[y]=3&c=true", FormAroundNested},
        TCase{true, u"a=1&b=s&c=true", FormAround}}) {
    TOwned<TOuter> Outer(New<TOuter>());
    TOwned<TLxJSONReader> Reader(Form ? New<TLxFormURLEncodedJSONReader>() : New<TLxJSONReader>());
    Outer->Reader = Reader.get();
    Outer->Attach(Reader.get());
    Reader->Parse(LxJSONString(Text));
    EXPECT_EQ(Outer->Transcript, OuterSees) << StringToUTF8(LxJSONString(Text));
    EXPECT_TRUE(Outer->HelperGone) << "the reader let the helper go when it had handed back";
    EXPECT_EQ(Reader->GetContentHandler().Get(), static_cast<ILxJSONContentHandler*>(Outer.get()));
  }
}

TEST_F(JSONReader, HandlersSetAsideDuringAParseStillHearIt) {
  // At the first array the handler takes itself and the error handler out of the reader: the
  // parse goes on delivering to the handler it began with, and the failure behind is raised
  // without an error handler to tell.
  struct TLeaveAtArray : public TJSONEventRecorder {
    TLxJSONReader* Reader = nullptr;
    void StartArray() override {
      Reader->SetContentHandler(nullptr);
      Reader->SetErrorHandler(nullptr);
      TJSONEventRecorder::StartArray();
    }
  };
  TOwned<TLeaveAtArray> Leaver(New<TLeaveAtArray>());
  Leaver->Reader = FReader;
  for (const auto& [JSON, Fails] : {std::pair{u"{\"a\":[1,true]}", false}, {u"[1,x]", true}}) {
    FRecorder->Attach(FReader);
    const std::string Expected = Read(JSON);
    Leaver->Transcript.clear();
    Leaver->Attach(FReader);
    if (Fails)
      EXPECT_THROW(FReader->Parse(LxJSONString(JSON)), ELxJSONParseError);
    else
      FReader->Parse(LxJSONString(JSON));
    EXPECT_EQ(FReader->GetContentHandler(), nullptr);
    EXPECT_EQ(Leaver->Transcript,
              Fails ? Expected.substr(0, Expected.find(" fatalError")) : Expected)
        << StringToUTF8(JSON);
  }
  FRecorder->Attach(FReader); // the leaver goes before the reader
}

TEST_F(JSONReader, MissingHandlersRaiseBeforeReadingWithoutTheErrorHandler) {
  FReader->SetContentHandler(nullptr);
  test::ExpectRaises<ELxJSONException>([&] { FReader->Parse(LxJSONString(u"[]")); },
                                       u"No contenthandler has been assigned!");
  FReader->SetContentHandler(FRecorder);
  FReader->SetErrorHandler(nullptr);
  try {
    FReader->Parse(LxJSONString(u"[]"));
    ADD_FAILURE() << "no error handler must raise";
  } catch (const ELxJSONException& E) {
    EXPECT_EQ(E.ErrorCode(), 4);
    EXPECT_EQ(StringToUTF8(E.Message()), "No errorhandler has been assigned!");
  }
  EXPECT_EQ(FRecorder->Transcript, "");
  EXPECT_EQ(FReader->GetParser(), nullptr);
}

TEST_F(JSONReader, ErrorCodesOfMalformedText) {
  test::ExpectRaisesWithCode<ELxJSONParseError>(
      [&] { FReader->Parse(LxJSONString(u"[nul]")); },
      UTF8ToString(NotWellFormed + "\"l\" expected, but \"]\" found!"), 2);
}

TEST_F(JSONReader, ReadsEverySource) {
  const std::string Expected =
      "startDocument startArray value(jdtString|\xc3\xa9) endArray endDocument";
  auto Check = [&](auto AParse) {
    FRecorder->Transcript.clear();
    AParse();
    EXPECT_EQ(FRecorder->Transcript, Expected);
  };
  const std::string UTF8 = "[\"\xc3\xa9\"]";
  const std::string UTF16("[\0\"\0\xe9\0\"\0]\0", 10);
  Check([&] { FReader->Parse(UTF8, 0); }); // a single-byte code page is decided by the bytes
  Check([&] { FReader->Parse(UTF8, 65001); });
  Check([&] { FReader->Parse(UTF16, 0); });
  Check([&] { FReader->ParseBuffer(UTF16.data(), Cardinal(UTF16.size()), 1200); });
  Check([&] {
    TOwned<TLxStringStream> Stream(New<TLxStringStream>(std::string_view("xx" + UTF8), 0));
    Stream->SetPosition(2);
    FReader->ParseStream(Stream.get(), 0);
  });
  const std::string Path = ::testing::TempDir() + "reader_test.json";
  for (const std::string& Content : {"\xef\xbb\xbf" + UTF8, "\xff\xfe" + UTF16, UTF8}) {
    std::ofstream(Path, std::ios::binary) << Content;
    Check([&] { FReader->ParseFile(UTF8ToString(Path), fmOpenRead); });
  }
  std::remove(Path.c_str());
}

TEST_F(JSONReader, StreamsReadInSmallPiecesGiveTheSameEvents) {
  // Odd piece sizes split UTF-16 units, UTF-8 sequences, escapes and delimiters.
  std::u16string JSON = u"[";
  for (int I = 0; I < 300; ++I)
    JSON += u"{\"k\u00e9y\" : \"v\\\"a\\u00e9l \U0001F600\", \"n\":[-1.5e3, true,null ,false]},";
  JSON += u"\"end\"]";
  const std::string UTF8 = StringToUTF8(JSON);
  std::string UTF16(JSON.size() * 2, '\0');
  std::memcpy(UTF16.data(), JSON.data(), UTF16.size());

  FReader->Parse(LxJSONString(JSON));
  const std::string Expected = FRecorder->Transcript;
  ASSERT_NE(Expected.find("value(jdtString|end) endArray endDocument"), std::string::npos);
  for (Int64 Piece : {1, 7, 4096}) {
    for (const auto& [Bytes, CodePage] : {std::pair{UTF8, Word(65001)}, {UTF16, Word(1200)}}) {
      FRecorder->Transcript.clear();
      TOwned<test::TChunkedStream> Stream(New<test::TChunkedStream>(Bytes, Piece));
      FReader->ParseStream(Stream.get(), CodePage);
      EXPECT_EQ(FRecorder->Transcript, Expected) << "pieces of " << Piece << ", " << CodePage;
    }
  }
}

TEST_F(JSONReader, UnsupportedEncodingGoesStraightToTheCaller) {
  test::ExpectRaises<Exception>([&] { FReader->Parse(std::string("5"), 0); },
                                u"The specified encoding is not supported!");
  EXPECT_EQ(FRecorder->Transcript, "");
}

TEST_F(JSONReader, PublicIdIsTheReadersAddressUntilAParseNamesOne) {
  EXPECT_EQ(FReader->GetPublicID(),
            IntToStr(static_cast<Int64>(reinterpret_cast<std::uintptr_t>(FReader))));
  FReader->Parse(LxJSONString(u"[]"), u"doc-1");
  EXPECT_EQ(FReader->GetPublicID(), u"doc-1");
}

// Counts events instead of recording them, for texts with millions of them.
class TEventCounter : public TLxJSONDefaultHandler {
  LX_CLASS(TEventCounter, TLxJSONDefaultHandler)
  TEventCounter() { SetAutoDestroy(false); }
  Int64 Starts = 0, Ends = 0, Values = 0;
  void StartObject() override { ++Starts; }
  void StartArray() override { ++Starts; }
  void Value(TLxJSONDataType, const LxJSONString&) override { ++Values; }
  void EndArray() override { ++Ends; }
  void EndObject() override { ++Ends; }

protected:
  ~TEventCounter() override = default;
};

TEST_F(JSONReader, NestingAMillionDeepNeedsNoStack) {
  constexpr Int64 Depth = 1000000;
  TOwned<TEventCounter> Counter(New<TEventCounter>());
  FReader->SetContentHandler(Counter.get());
  FReader->SetErrorHandler(Counter.get());
  const std::string Open(Depth, '[');
  EXPECT_THROW(FReader->Parse(Open, 65001), ELxJSONParseError);
  EXPECT_EQ(Counter->Starts, Depth);

  std::string Nested;
  for (Int64 Level = 0; Level < Depth / 2; ++Level)
    Nested += "{\"a\":[";
  Nested += "1";
  for (Int64 Level = 0; Level < Depth / 2; ++Level)
    Nested += "]}";
  Counter->Starts = 0;
  FReader->Parse(Nested, 65001);
  EXPECT_EQ(Counter->Starts, Depth);
  EXPECT_EQ(Counter->Ends, Depth);
  EXPECT_EQ(Counter->Values, 1);
  FRecorder->Attach(FReader); // the counter goes before the reader
}

} // namespace
} // namespace lorvane
