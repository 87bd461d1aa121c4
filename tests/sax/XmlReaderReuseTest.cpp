// One XML reader parsing document after document: whatever the former parse left, also one that
// failed midway or ended with elements open, the next parse must read as a new reader would.
#include "lorvane/uLxSAX.h"
#include "support/EventRecorder.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

using test::TEventRecorder;

/// The transcript of one parse of AXML by AReader (recorded by ARecorder), failure included,
/// and where the locator stands afterwards.
std::string ParseRecorded(TLxSAXXMLReader* AReader, TEventRecorder* ARecorder,
                          const LxXMLString& AXML) {
  ARecorder->Transcript.clear();
  std::string Outcome;
  try {
    AReader->Parse(AXML);
  } catch (const Exception& E) {
    Outcome = "raised(" + StringToUTF8(E.Message()) + ")\n";
  }
  return ARecorder->Transcript + Outcome + "locator(" + std::to_string(AReader->GetLineNr()) + ":" +
         std::to_string(AReader->GetColNr()) + ")";
}

struct Reader {
  explicit Reader(bool ASingleRoot)
      : Recorder(New<TEventRecorder>()), XMLReader(New<TLxSAXXMLReader>()) {
    XMLReader->SetSingleRoot(ASingleRoot);
    Recorder->Attach(XMLReader.get());
  }
  std::string Parse(const LxXMLString& AXML) {
    return ParseRecorded(XMLReader.get(), Recorder.get(), AXML);
  }
  TOwned<TEventRecorder> Recorder;
  TOwned<TLxSAXXMLReader> XMLReader; // freed first: it holds interfaces on the recorder
};

struct ReuseCase {
  const char16_t* First; // fails, or leaves elements open
  bool SingleRoot;
};

TEST(XmlReaderReuse, AParseAfterAnyFirstOneReadsAsANewReaderWould) {
  const ReuseCase Cases[] = {
      {u"<e xmlns=\"urn:stale\"", true},                   // ends inside the tag
      {u"<e xmlns=\"urn:stale\"><f", true},                // ends inside a child
      {u"<p:e xmlns:p=\"urn:p\" xmlns=\"urn:d\"><", true}, // two bindings, ends at a '<'
      {u"<e xmlns=\"urn:stale\"><f <g/></f></e>", true},   // element not closed before '<'
      {u"<e xmlns=\"urn:stale\">text", true},              // text runs to the end
      {u"<e xmlns=\"urn:stale\"/><x/>", true},             // a second root
      {u"<e xmlns=\"urn:stale\"><!DOCTYPE a></e>", true},
      {u"<e xmlns=\"urn:stale\" a=>", true}, // attribute without a value
      {u"<e xmlns=\"urn:stale\">", false},   // ends well with the element open
      {u"<e xmlns:a=\"urn:stale\"><a:f>", false},
      {u"<!--", true},
      {u"", true},
  };
  // The good documents use the default and the prefix that the first ones bound.
  const char16_t* const Seconds[] = {
      u"<a/>",
      u"<a><a:b xmlns:a=\"urn:fresh\"/><p:c/></a>",
      u"<r a:x=\"1\" p:y=\"2\"><f/></r>",
  };
  for (const ReuseCase& C : Cases) {
    for (const char16_t* Second : Seconds) {
      SCOPED_TRACE(StringToUTF8(C.First) + " then " + StringToUTF8(Second));
      Reader Reused(C.SingleRoot);
      Reused.Parse(C.First);
      Reader Fresh(C.SingleRoot);
      const std::string Expected = Fresh.Parse(Second);
      EXPECT_EQ(Reused.Parse(Second), Expected);
      // And a failure read again after the good one gives its transcript of a new reader too.
      Reader FreshFirst(C.SingleRoot);
      EXPECT_EQ(Reused.Parse(C.First), FreshFirst.Parse(C.First));
    }
  }
}

TEST(XmlReaderReuse, TheStaleDefaultNamespaceNoLongerReachesTheNextDocument) {
  Reader Reused(true);
  Reused.Parse(u"<e xmlns=\"urn:stale\"");
  const std::string Second = Reused.Parse(u"<a/>");
  EXPECT_EQ(Second.find("urn:stale"), std::string::npos) << Second;
  EXPECT_NE(Second.find("startElement(|a|a|[])"), std::string::npos) << Second;
}

} // namespace
} // namespace lorvane
