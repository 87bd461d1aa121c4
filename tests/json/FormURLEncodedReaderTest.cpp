// The form post reader: pairs, bracket names, percent characters, and its failures, by transcript.
#include "lorvane/json/LxFormURLEncodedJSONReader.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/json/LxJSONValues.h"
#include "support/JSONEventRecorder.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

class FormReader : public test::LiveObjectsTest {
protected:
  void SetUp() override {
    LiveObjectsTest::SetUp();
    FReader = New<TLxFormURLEncodedJSONReader>();
    FRecorder = New<test::TJSONEventRecorder>();
    FReader->SetContentHandler(FRecorder);
  }
  void TearDown() override {
    lorvane::Free(FReader);
    lorvane::Free(FRecorder);
    LiveObjectsTest::TearDown();
  }
  /// The events between the opening StartDocument StartObject and the closing EndObject
  /// EndDocument, which every form has.
  std::string Read(const std::string& AForm) {
    FRecorder->Transcript.clear();
    FReader->Parse(AForm, 65001);
    const std::string Open = "startDocument startObject", Close = "endObject endDocument";
    const std::string& T = FRecorder->Transcript;
    EXPECT_EQ(T.substr(0, Open.size()), Open);
    EXPECT_EQ(T.substr(T.size() - Close.size()), Close);
    if (T.size() <= Open.size() + Close.size() + 1)
      return "";
    return T.substr(Open.size() + 1, T.size() - Open.size() - Close.size() - 2);
  }

  TLxFormURLEncodedJSONReader* FReader = nullptr;
  test::TJSONEventRecorder* FRecorder = nullptr;
};

TEST_F(FormReader, PairsBecomeMembersWithStringValues) {
  const std::pair<std::string, std::string> Cases[] = {
      {"a=1&b=2", "startMember(a) value(jdtString|1) endMember startMember(b) "
                  "value(jdtString|2) endMember"},
      {"a=x+y%21", "startMember(a) value(jdtString|x y!) endMember"},
      {"a=%0Ab", "startMember(a) value(jdtString|b) endMember"},
      {"a=l1\r\nl2", "startMember(a) value(jdtString|l1l2) endMember"},
      {"a=%C3%A9%E2%82%AC", "startMember(a) value(jdtString|\xc3\xa9\\u20AC) endMember"},
      {"a=\"q\"/", "startMember(a) value(jdtString|\\\"q\\\"\\/) endMember"},
      {"a=[1,2]", "startMember(a) value(jdtString|[1,2]) endMember"},
      {"a={\"x\":\"\\\\\"}", "startMember(a) value(jdtString|{\"x\":\"\\\\\"}) endMember"},
      {"a%26b=1&a&b=2", "startMember(a&b) value(jdtString|1) endMember startMember(a&b) "
                        "value(jdtString|2) endMember"},
      {"a=1&", "startMember(a) value(jdtString|1) endMember"},
      {"a=1&a=2", "startMember(a) value(jdtString|1) endMember startMember(a) "
                  "value(jdtString|2) endMember"},
      {"a=1&_=123", "startMember(a) value(jdtString|1) endMember"},
      {"_=123", "startMember(_) value(jdtString|123) endMember"},
      {"a=1&b=2&_x=3&c=4", "startMember(a) value(jdtString|1) endMember startMember(b) "
                           "value(jdtString|2) endMember"},
  };
  for (const auto& [Form, Events] : Cases)
    EXPECT_EQ(Read(Form), Events) << Form;
}

TEST_F(FormReader, BracketNamesBuildStructure) {
  const std::pair<std::string, std::string> Cases[] = {
      {"a[b]=1&a[c]=2", "startMember(a) startObject startMember(b) value(jdtString|1) endMember "
                        "startMember(c) value(jdtString|2) endMember endObject"},
      {"a%5Bb%5D=1&a%5Bc%5D=2",
       "startMember(a) startObject startMember(b) value(jdtString|1) endMember "
       "startMember(c) value(jdtString|2) endMember endObject"},
      {"a[]=1&a[]=2", "startMember(a) startArray value(jdtString|1) value(jdtString|2) "
                      "endObject endArray endObject"},
      {"a[0][x]=1&a[1][x]=2",
       "startMember(a) startArray startObject startMember(x) value(jdtString|1) endMember "
       "endObject startObject startMember(x) value(jdtString|2) endMember endObject endArray "
       "endObject"},
      {"a[b]=1&z=2", "startMember(a) startObject startMember(b) value(jdtString|1) endMember "
                     "endObject startMember(z) value(jdtString|2) endMember"},
  };
  for (const auto& [Form, Events] : Cases)
    EXPECT_EQ(Read(Form), Events) << Form;
}

TEST_F(FormReader, FailuresGoStraightToTheCaller) {
  FReader->SetErrorHandler(FRecorder);
  test::ExpectRaises<Exception>(
      [&] { FReader->Parse(std::string("a]x=1"), 65001); },
      u"The parser expected to read a \"[\" character, but \"]x=\", was read instead!");
  test::ExpectRaises<Exception>([&] { FReader->Parse(std::string("a=%C3x"), 65001); },
                                u"Invalid UTF8 Encoding detected");
  EXPECT_THROW(FReader->Parse(std::string("a=%G1"), 65001), EConvertError);
  EXPECT_THROW(FReader->Parse(std::string("a"), 65001), ELxTextParserEOF);
  EXPECT_EQ(FRecorder->Transcript.find("fatalError"), std::string::npos);
  FReader->SetContentHandler(nullptr);
  test::ExpectRaises<ELxJSONException>([&] { FReader->Parse(std::string("a=1"), 65001); },
                                       u"No contenthandler has been assigned!");
}

// The closing calls of a form don't always pair with the opening ones; the tree still gets
// every pair where its name says.
TEST_F(FormReader, FormsLoadIntoAValueTree) {
  const std::pair<std::string_view, std::u16string_view> Cases[] = {
      {"name=J%C3%BCrgen+M&tags[]=a&tags[]=b&addr[city]=Bonn",
       u"{\"name\": \"J\u00fcrgen M\", \"tags\": [\"a\", \"b\"], \"addr\": {\"city\": \"Bonn\"}}"},
      {"a[]=1&x=2", u"{\"a\": [\"1\"], \"x\": \"2\"}"},
      {"a[0]=x&a[1]=y", u"{\"a\": [\"x\", \"y\"]}"},
      {"a[]=1", u"{\"a\": [\"1\"]}"},
      {"a[0][x]=1&a[1][x]=2&b=3", u"{\"a\": [{\"x\": \"1\"}, {\"x\": \"2\"}], \"b\": \"3\"}"},
  };
  for (const auto& [Form, JSON] : Cases) {
    TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
    TOwned<TLxStringStream> Stream(New<TLxStringStream>(Form, 0));
    Document->LoadFromStream(Stream.get(), 65001, /*AIsUrlFormEncoded=*/true);
    EXPECT_EQ(Document->GetAsJSON(), JSON) << Form;
  }
}

} // namespace
} // namespace lorvane
