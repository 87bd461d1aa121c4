// JSON read as XML events: the elements each kind of value becomes, member names made XML names,
// several top-level values, the failures and what the locator says about them, nesting far
// deeper than any call stack, and the same events from UTF-8, UTF-16 and UTF-16 big endian.
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxSAX.h"
#include "support/EventRecorder.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

using test::LiveObjectsTest;

const std::string Declarations = "xmlns:xsi=|http://www.w3.org/2001/XMLSchema-instance,"
                                 "xmlns:xsd=|http://www.w3.org/2001/XMLSchema";
const std::string XSD = "http://www.w3.org/2001/XMLSchema";

std::string Start(const std::string& AName, const std::string& AAttributes = "") {
  return "startElement(|" + AName + "|" + AName + "|[" + AAttributes + "])\n";
}
std::string End(const std::string& AName) { return "endElement(|" + AName + "|" + AName + ")\n"; }
std::string Simple(const std::string& AName, const std::string& AType, const std::string& AText) {
  const std::string Attribute = AType == "nil" ? "xsi:nil=http://www.w3.org/2001/"
                                                 "XMLSchema-instance|true"
                                               : "xsd:type=" + XSD + "|" + AType;
  return Start(AName, Attribute) + "characters(" + AText + ")\n" + End(AName);
}
std::string Document(const std::string& ARoot, const std::string& AContent) {
  return "startDocument\n" + Start(ARoot, Declarations) + AContent + End(ARoot) + "endDocument\n";
}

struct Wired {
  Wired() : Recorder(New<test::TEventRecorder>()), Reader(New<TLxSAXJSONReader>()) {
    Recorder->Attach(Reader.get());
  }
  /// The transcript of AText, read as UTF-16; a failure leaves its class and code in Failure.
  std::string Read(const LxXMLString& AText) {
    return Run([&] { Reader->Parse(AText); });
  }
  std::string ReadBytes(const std::string& ABytes, Word ACodePage) {
    return Run([&] { Reader->Parse(RawByteString(ABytes), ACodePage); });
  }
  template <class F> std::string Run(F&& AParse) {
    Recorder->Transcript.clear();
    Failure.clear();
    try {
      AParse();
    } catch (const ELxTextParserEOF&) {
      Failure = "EOF";
    } catch (const ELxJSONException& E) {
      Failure = "code " + std::to_string(E.ErrorCode()) + ": " + StringToUTF8(E.Message());
    }
    return Recorder->Transcript;
  }
  TOwned<test::TEventRecorder> Recorder;
  TOwned<TLxSAXJSONReader> Reader;
  std::string Failure;
};

std::string LastLine(const std::string& ATranscript) {
  const std::size_t Start = ATranscript.rfind('\n', ATranscript.size() - 2);
  return ATranscript.substr(Start == std::string::npos ? 0 : Start + 1);
}

class TRaising : public test::TEventRecorder {
  LX_CLASS(TRaising, test::TEventRecorder)
public:
  void Characters(const LxXMLString&) override { throw EConvertError(u"no text here"); }

protected:
  ~TRaising() override = default;
};

class SaxJSONReader : public LiveObjectsTest {};

TEST_F(SaxJSONReader, EveryKindOfValueHasItsElement) {
  Wired W;
  EXPECT_EQ(W.Read(u"{\"s\":\"a\\\"b\",\"d\":-1.5e3,\"t\":true,\"f\":false,\"n\":null,"
                   u"\"o\":{\"b\":2},\"l\":[1,[2],{\"c\":3},[]],\"e\":{}}"),
            Document("object", Simple("s", "string", "a\\\"b") + Simple("d", "decimal", "-1.5e3") +
                                   Simple("t", "boolean", "true") +
                                   Simple("f", "boolean", "false") + Simple("n", "nil", "null") +
                                   Start("o") + Simple("b", "decimal", "2") + End("o") +
                                   Start("lArray") + Simple("l", "decimal", "1") + Start("lArray") +
                                   Simple("l", "decimal", "2") + End("lArray") + Start("l") +
                                   Simple("c", "decimal", "3") + End("l") + Start("lArray") +
                                   End("lArray") + End("lArray") + Start("e") + End("e")));
  EXPECT_EQ(W.Failure, "");
}

TEST_F(SaxJSONReader, ArraysNameTheirItemsAfterTheNameTheyWereEnteredWith) {
  Wired W;
  EXPECT_EQ(W.Read(u"[1,\"x\"]"),
            Document("array", Simple("array", "decimal", "1") + Simple("array", "string", "x")));
  EXPECT_EQ(W.Read(u"{\"a\":[[1]]}"),
            Document("object", Start("aArray") + Start("aArray") + Simple("a", "decimal", "1") +
                                   End("aArray") + End("aArray")));
  EXPECT_EQ(W.Read(u"{\"a\":[{\"b\":[true]}]}"),
            Document("object", Start("aArray") + Start("a") + Start("bArray") +
                                   Simple("b", "boolean", "true") + End("bArray") + End("a") +
                                   End("aArray")));
  EXPECT_EQ(W.Read(u"[[],{}]"), Document("array", Start("arrayArray") + End("arrayArray") +
                                                      Start("array") + End("array")));
}

TEST_F(SaxJSONReader, EmptyContainersAndForgivenCommasGiveTheRootAlone) {
  Wired W;
  const std::pair<const char16_t*, const char*> Roots[] = {
      {u"[]", "array"}, {u"{}", "object"}, {u"  \r\n[ ]", "array"}, {u"x{}", "object"}};
  for (const auto& [Text, Root] : Roots)
    EXPECT_EQ(W.Read(Text), Document(Root, "")) << StringToUTF8(Text);
  EXPECT_EQ(W.Read(u"[1,]"), Document("array", Simple("array", "decimal", "1")));
  // Nothing checks a number; what stands behind it up to a delimiter is dropped.
  EXPECT_EQ(W.Read(u"[1e+-2.3x y,2]"), Document("array", Simple("array", "decimal", "1e+-2.3") +
                                                             Simple("array", "decimal", "2")));
}

TEST_F(SaxJSONReader, MemberNamesBecomeXMLNames) {
  const struct {
    std::u16string_view Raw;
    std::u16string_view XML;
  } Cases[] = {
      {u"a", u"a"},
      {u"1a", u"_1a"},
      {u"a b", u"a_b"},
      {u"", u"_"},
      {u"a\\nb", u"a_nb"},       // raw: the backslash goes
      {u"-x.y", u"_-x.y"},       // may follow, not start
      {u"a:b", u"a_b"},          // no colon
      {u"\u00B7", u"_\u00B7"},   // a NameChar, not a NameStartChar
      {u"\u0300x", u"_\u0300x"}, // likewise
      {u"\u00D7\u00F7", u"__"},  // neither
      {u"\u00E9t\u00E9", u"\u00E9t\u00E9"},
      {u"\U0001F600", u"__"},   // each unit of a pair
      {u"\uFFFE\uFDD0", u"__"}, // outside the ranges
      {u"\u3001\uFFFD", u"\u3001\uFFFD"},
  };
  for (const auto& C : Cases) {
    LxXMLString Name = u"left over";
    LxJSONNameToXMLName(C.Raw, Name);
    EXPECT_EQ(StringToUTF8(Name), StringToUTF8(UnicodeString(C.XML))) << StringToUTF8(C.Raw);
  }
  Wired W;
  EXPECT_EQ(W.Read(u"{\"1a\":1,\"a b\":[2],\"\":{}}"),
            Document("object", Simple("_1a", "decimal", "1") + Start("a_bArray") +
                                   Simple("a_b", "decimal", "2") + End("a_bArray") + Start("_") +
                                   End("_")));
}

TEST_F(SaxJSONReader, SeveralTopLevelValuesShareTheFirstOnesRoot) {
  Wired W;
  EXPECT_EQ(W.Read(u"{\"a\":1}{\"b\":2}"),
            Document("object", Simple("a", "decimal", "1") + Simple("b", "decimal", "2")));
  EXPECT_EQ(W.Read(u"{\"a\":1}\n [2]"),
            Document("object", Simple("a", "decimal", "1") + Simple("object", "decimal", "2")));
  // The one character behind a value is stepped over unseen; a second one is looked at.
  EXPECT_EQ(W.Read(u"{\"a\":1}]"), Document("object", Simple("a", "decimal", "1")));
  EXPECT_EQ(W.Failure, "");
  EXPECT_EQ(W.Read(u"{\"a\":1} ]"), "startDocument\n" + Start("object", Declarations) +
                                        Simple("a", "decimal", "1") + "fatalError(1:9)\n");
  EXPECT_EQ(W.Failure,
            "code 2: The document is not wellformed!\r\n\"\" expected, but \"]\" found!");
}

TEST_F(SaxJSONReader, FailuresNameWhatWasExpectedAndFound) {
  const struct {
    std::u16string_view Text;
    std::string Failure;
    std::string Transcript; // behind startDocument and the root
  } Cases[] = {
      {u"{\"a\":tru}", "\"e\" expected, but \"}\" found!", ""},
      {u"[nul", "\"l\" expected, but \"\" found!", ""},
      {u"[1,x]", "\"\", t, f, n, 0..9, ., + or -\" expected, but \"x\" found!",
       Simple("array", "decimal", "1")},
      {u"[\"a\\q\"]", "\"\", \\, /, b, f, n, r, t or u\" expected, but \"q\" found!", ""},
      {u"[1,", "\"\", t, f, n, 0..9, ., + or -\" expected, but \"\" found!",
       Simple("array", "decimal", "1")},
      {u"{\"a\":1,}", "\"\"\" expected, but \"\" found!", Simple("a", "decimal", "1")},
  };
  for (const auto& C : Cases) {
    Wired W;
    const std::string Got = W.Read(UnicodeString(C.Text));
    EXPECT_EQ(W.Failure, "code 2: The document is not wellformed!\r\n" + C.Failure)
        << StringToUTF8(C.Text);
    const std::string Head =
        "startDocument\n" + Start(C.Text[0] == u'[' ? "array" : "object", Declarations);
    EXPECT_EQ(Got.substr(0, Head.size() + C.Transcript.size()), Head + C.Transcript)
        << StringToUTF8(C.Text);
    // The error handler sees the failure, and nothing open is closed after it.
    EXPECT_EQ(LastLine(Got).rfind("fatalError(", 0), 0u) << StringToUTF8(C.Text);
    EXPECT_EQ(Got.find("endDocument"), std::string::npos);
  }
  // Without '[' or '{' the document has started when the text fails.
  Wired W;
  EXPECT_EQ(W.Read(u"  \"just a string\""), "startDocument\nfatalError(1:18)\n");
  EXPECT_EQ(W.Failure, "code 2: The document is not wellformed!\r\n\"\" expected, but \"\" found!");
}

TEST_F(SaxJSONReader, ATextEndingInsideAContainerReportsLineAndColumnZero) {
  Wired W;
  for (const char16_t* Text : {u"{\"a\":1", u"[1,2", u"{\"a\":[{}", u"[\"open", u"{\"a\"", u"{"}) {
    const std::string Got = W.Read(Text);
    EXPECT_EQ(W.Failure, "EOF") << StringToUTF8(Text);
    EXPECT_EQ(LastLine(Got), "fatalError(0:0)\n") << StringToUTF8(Text);
    EXPECT_EQ(W.Reader->GetLineNr(), 0);
    EXPECT_EQ(W.Reader->GetColNr(), 0);
  }
  // Another failure: the cursor's place during the parse, -1 behind it.
  EXPECT_EQ(LastLine(W.Read(u"{\"a\":\n  tru}")), "fatalError(2:6)\n");
  EXPECT_EQ(W.Reader->GetLineNr(), -1);
  EXPECT_EQ(W.Reader->GetColNr(), -1);
  // A parse that succeeds leaves nothing of the failure before it.
  EXPECT_EQ(W.Read(u"[1]"), Document("array", Simple("array", "decimal", "1")));
}

TEST_F(SaxJSONReader, MissingHandlersAreRefusedBeforeReading) {
  Wired W;
  W.Reader->SetErrorHandler(nullptr);
  W.Read(u"[1]");
  EXPECT_EQ(W.Failure, "code 4: No errorhandler has been assigned!");
  W.Reader->SetContentHandler(nullptr);
  W.Read(u"[1]");
  EXPECT_EQ(W.Failure, "code 3: No contenthandler has been assigned!");
  EXPECT_EQ(W.Recorder->Transcript, "");
}

TEST_F(SaxJSONReader, AHandlersOwnFailureTakesTheFailureRoad) {
  TOwned<TRaising> Handler(New<TRaising>());
  TOwned<TLxSAXJSONReader> Reader(New<TLxSAXJSONReader>());
  Handler->Attach(Reader.get());
  test::ExpectRaises<EConvertError>([&] { Reader->Parse(LxXMLString(u"[1]")); }, u"no text here");
  EXPECT_EQ(StringToUTF8(Handler->LastFatalMessage), "no text here");
}

TEST_F(SaxJSONReader, EveryEncodingGivesTheSameEvents) {
  const std::u16string Text = u"{\"\u00E9\":[\"\u4E2D\U0001F600\",1],\"n\":null}";
  const std::string Expected =
      Document("object", Start("\xC3\xA9"
                               "Array") +
                             Simple("\xC3\xA9", "string", "\xE4\xB8\xAD\xF0\x9F\x98\x80") +
                             Simple("\xC3\xA9", "decimal", "1") +
                             End("\xC3\xA9"
                                 "Array") +
                             Simple("n", "nil", "null"));
  std::string BigEndian, LittleEndian;
  for (char16_t C : Text) {
    BigEndian += {char(C >> 8), char(C & 0xFF)};
    LittleEndian += {char(C & 0xFF), char(C >> 8)};
  }
  Wired W;
  EXPECT_EQ(W.Read(LxXMLString(Text)), Expected);
  EXPECT_EQ(W.ReadBytes(StringToUTF8(Text), CP_UTF8), Expected);
  EXPECT_EQ(W.ReadBytes(StringToUTF8(Text), 0), Expected) << "the JSON cursor finds UTF-8";
  EXPECT_EQ(W.ReadBytes(LittleEndian, 0), Expected) << "and UTF-16";
  EXPECT_EQ(W.ReadBytes(BigEndian, CP_UTF16BE), Expected);
  EXPECT_EQ(W.Failure, "");
  // Big endian found by sniffing alone stays refused, before any event.
  W.Recorder->Transcript.clear();
  test::ExpectRaises<Exception>([&] { W.Reader->Parse(RawByteString(BigEndian), 0); },
                                u"The specified encoding is not supported!");
  EXPECT_EQ(W.Recorder->Transcript, "");
}

/// Counts events instead of recording them: a million levels would make a transcript of tens of
/// megabytes.
class TCounter : public TLxSAXDefaultHandler {
  LX_CLASS(TCounter, TLxSAXDefaultHandler)
public:
  TCounter() { SetAutoDestroy(false); }
  Int64 Starts = 0, Ends = 0, Depth = 0, Deepest = 0;
  LxXMLString Innermost, Text;
  void StartElement(const LxXMLString&, const LxXMLString& ALocalName, const LxXMLString&,
                    ILxSAXAttributes*) override {
    ++Starts;
    Deepest = std::max(Deepest, ++Depth);
    if (Depth == Deepest)
      Innermost = ALocalName;
  }
  void EndElement(const LxXMLString&, const LxXMLString&, const LxXMLString&) override {
    ++Ends;
    --Depth;
  }
  void Characters(const LxXMLString& AText) override { Text = AText; }

protected:
  ~TCounter() override = default;
};

TEST_F(SaxJSONReader, NestingAMillionDeepIsReadWithoutRecursion) {
  constexpr std::size_t Levels = 1000000;
  TOwned<TCounter> Counter(New<TCounter>());
  TOwned<TLxSAXJSONReader> Reader(New<TLxSAXJSONReader>());
  Reader->SetContentHandler(Counter.get());
  Reader->SetErrorHandler(Counter.get());
  // Arrays: the root, then one "arrayArray" per inner level, the 1 as "array".
  std::string Arrays = std::string(Levels, '[') + "1" + std::string(Levels, ']');
  Reader->Parse(RawByteString(Arrays), CP_UTF8);
  EXPECT_EQ(Counter->Starts, Int64(Levels) + 1);
  EXPECT_EQ(Counter->Ends, Counter->Starts);
  EXPECT_EQ(Counter->Deepest, Int64(Levels) + 1);
  EXPECT_EQ(StringToUTF8(Counter->Innermost), "array");
  // Objects: one element per member, each inside the one before.
  std::string Objects;
  for (std::size_t I = 0; I < Levels; ++I)
    Objects += "{\"k\":";
  Objects += "true" + std::string(Levels, '}');
  Counter->Starts = Counter->Ends = Counter->Depth = Counter->Deepest = 0;
  Reader->Parse(RawByteString(Objects), CP_UTF8);
  EXPECT_EQ(Counter->Starts, Int64(Levels) + 1);
  EXPECT_EQ(Counter->Ends, Counter->Starts);
  EXPECT_EQ(StringToUTF8(Counter->Text), "true");
  // Cut short, the same depth ends in ELxTextParserEOF, not in a crash.
  Arrays.resize(Levels + 1);
  EXPECT_THROW(Reader->Parse(RawByteString(Arrays), CP_UTF8), ELxTextParserEOF);
}

} // namespace
} // namespace lorvane
