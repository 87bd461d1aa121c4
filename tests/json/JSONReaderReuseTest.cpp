// One JSON reader, or one form post reader, parsing text after text: whatever the former parse
// left, also one that failed midway, the next parse must read as a new reader would.
#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "support/JSONEventRecorder.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

using test::TJSONEventRecorder;

template <class TReader> struct Reader {
  Reader() : Recorder(New<TJSONEventRecorder>()), JSONReader(New<TReader>()) {
    Recorder->Attach(JSONReader.get());
  }
  /// The transcript of one parse, failure included, and where the locator stands afterwards.
  std::string Parse(const LxJSONString& AText) {
    Recorder->Transcript.clear();
    std::string Outcome;
    try {
      JSONReader->Parse(AText);
    } catch (const Exception& E) {
      Outcome = " raised(" + StringToUTF8(E.Message()) + ")";
    }
    return Recorder->Transcript + Outcome + " locator(" + std::to_string(JSONReader->GetLineNr()) +
           ":" + std::to_string(JSONReader->GetColNr()) + ") eof(" +
           std::to_string(JSONReader->GetUnexpectedEOF()) + ")";
  }
  TOwned<TJSONEventRecorder> Recorder;
  TOwned<TReader> JSONReader; // freed first: it holds interfaces on the recorder
};

template <class TReader>
void ExpectEveryReuseReadsFresh(std::initializer_list<const char16_t*> AFirsts,
                                std::initializer_list<const char16_t*> ASeconds) {
  for (const char16_t* First : AFirsts) {
    for (const char16_t* Second : ASeconds) {
      SCOPED_TRACE(StringToUTF8(First) + " then " + StringToUTF8(Second));
      Reader<TReader> Reused;
      Reused.Parse(First);
      Reader<TReader> Fresh;
      EXPECT_EQ(Reused.Parse(Second), Fresh.Parse(Second));
      Reader<TReader> FreshFirst;
      EXPECT_EQ(Reused.Parse(First), FreshFirst.Parse(First));
    }
  }
}

TEST(JSONReaderReuse, AParseAfterAFailedOneReadsAsANewReaderWould) {
  ExpectEveryReuseReadsFresh<TLxJSONReader>(
      {
          u"[[{\"a\":[1,",    // ends four containers deep
          u"{\"a\":[{\"b\":", // ends behind a name
          u"[1, x]",          // a value that can't start there
          u"{\"a\":\"\\q\"}", // a bad escape
          u"[tru]",           // a wrong keyword letter
          u"1 2",             // text behind a top-level value
          u"{\"a\":",
          u"",
      },
      {u"[1,{\"x\":[true]}]", u"{\"a\":null}", u"\"s\"", u"[]"});
}

TEST(JSONReaderReuse, AFormAfterAFailedOneReadsAsANewReaderWould) {
  ExpectEveryReuseReadsFresh<TLxFormURLEncodedJSONReader>(
      {
          u"a[b][c]=1&a%5Gx=2", // a bad encoded bracket
          u"a=%E2%82",          // a UTF-8 sequence cut short
          u"a[0][x]=%zz",       // bad hex digits
          u"a[x]=1&a[y",
      },
      {u"a[b][c]=1&a[b][d]=2", u"a[]=1&a[]=2&b=3", u"x=y"});
}

} // namespace
} // namespace lorvane
