// The JSON test suite under tests/corpora loaded into XML trees, by three roads: CreateFromJSON on
// the text, the document's detecting stream load on the bytes, and the event component on the
// bytes. Every case must end loaded or with a failure that the readers document; every case that
// must be accepted and has an object or array at the top must load, and its tree must save as
// XML that expat finds well-formed.
#include "lorvane/core/LxStreams.h"
#include "lorvane/uLxSAX.h"
#include "lorvane/uLxXMLDOM.h"

#include "support/DocumentedFailures.h"
#include "support/TestHelpers.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace lorvane {
namespace {

struct TSuiteCase {
  std::string File;
  std::string Expect; // accept, accept(behaviour free), reject or either
};

std::vector<TSuiteCase> ReadSuite() {
  std::ifstream In(LORVANE_CORPUS_DIR "/json-test-suite/manifest.tsv");
  std::vector<TSuiteCase> Cases;
  std::string Line;
  std::getline(In, Line); // column names
  while (std::getline(In, Line)) {
    std::stringstream Fields(Line);
    std::string File, Kind, Expect;
    std::getline(Fields, File, '\t');
    std::getline(Fields, Kind, '\t');
    std::getline(Fields, Expect, '\t');
    Cases.push_back({File, Expect});
  }
  return Cases;
}

std::string ReadFile(const std::string& APath) {
  std::ifstream In(APath, std::ios::binary);
  return {std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>()};
}

/// "loaded", or the failure; a failure the entry point doesn't document fails the test.
template <class F>
std::string Outcome(documented::TEntry AEntry, const std::string& ACase, F&& ARun) {
  try {
    ARun();
    return "loaded";
  } catch (const std::exception& E) {
    EXPECT_TRUE(documented::IsDocumented(AEntry, E)) << ACase << ": " << E.what();
    if (dynamic_cast<const ELxDomSyntax*>(&E))
      return "ELxDomSyntax";
    if (dynamic_cast<const ELxTextParserEOF*>(&E))
      return "ELxTextParserEOF";
    if (const auto* JSON = dynamic_cast<const ELxJSONException*>(&E))
      return "ELxJSONParseError code " + std::to_string(JSON->ErrorCode());
    return E.what();
  }
}

std::string SavedXML(TLxDOMDocument* ADocument) {
  TOwned<TMemoryStream> Stream(New<TMemoryStream>());
  ADocument->SaveToStream(Stream.get(), 65001, /*AFormatted=*/true, /*AWriteBOM=*/false);
  return std::string(reinterpret_cast<const char*>(Stream->Memory()),
                     static_cast<std::size_t>(Stream->GetSize()));
}

/// Expat's message for the text, empty when it is well-formed.
std::string ExpatError(const std::string& AXML) {
  XML_Parser Parser = XML_ParserCreate(nullptr);
  const bool Ok = XML_Parse(Parser, AXML.data(), static_cast<int>(AXML.size()), 1) == XML_STATUS_OK;
  std::string Message = Ok ? "" : XML_ErrorString(XML_GetErrorCode(Parser));
  XML_ParserFree(Parser);
  return Message;
}

/// The first character above U+0020, for text that starts with UTF-8 or ASCII.
char FirstSignificant(const std::string& ABytes) {
  for (char C : ABytes)
    if (static_cast<unsigned char>(C) > 0x20)
      return C;
  return 0;
}

// Must-accept cases that no XML document can hold: the character isn't one of XML's.
const std::map<std::string, std::string> NotXML = {
    {"test_parsing/y_string_nonCharacterInUTF-8_U+FFFF.json",
     "U+FFFF stands raw in a string, and XML 1.0 has no such character"},
};

class JSONAsXMLCorpus : public test::LiveObjectsTest {};

TEST_F(JSONAsXMLCorpus, EveryCaseLoadsOrFailsAsDocumentedAndAcceptedTreesAreWellFormedXML) {
  using documented::TEntry;
  const std::vector<TSuiteCase> Cases = ReadSuite();
  ASSERT_GT(Cases.size(), 200u);
  std::map<std::string, int> Counts;
  int MustAccept = 0, WellFormed = 0;
  for (const TSuiteCase& Case : Cases) {
    const std::string Bytes = ReadFile(LORVANE_CORPUS_DIR "/json-test-suite/" + Case.File);
    const UnicodeString Text = UTF8ToString(Bytes);

    TLxDOMDocument* Created = nullptr;
    const std::string FromText = Outcome(TEntry::XMLDocumentLoad, Case.File,
                                         [&] { Created = TLxDOMDocument::CreateFromJSON(Text); });
    TOwned<TLxDOMDocument> Document(Created);
    const std::string FromStream = Outcome(TEntry::XMLDocumentLoad, Case.File, [&] {
      TOwned<TLxDOMDocument> Loaded(New<TLxDOMDocument>());
      TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Bytes.data(), Int64(Bytes.size())));
      Loaded->LoadFromStream(Stream.get());
    });
    const std::string FromComponent = Outcome(TEntry::SAXJSONReader, Case.File, [&] {
      TOwned<TLxSAXParser> Parser(New<TLxSAXParser>());
      Parser->ParseBuffer(Bytes.data(), Cardinal(Bytes.size()), 0);
    });
    Counts["CreateFromJSON " + FromText]++;
    Counts["LoadFromStream " + FromStream]++;
    Counts["TLxSAXParser " + FromComponent]++;

    const char First = FirstSignificant(Bytes);
    if (Case.Expect.rfind("accept", 0) != 0 || (First != '[' && First != '{'))
      continue;
    ++MustAccept;
    EXPECT_EQ(FromText, "loaded") << Case.File;
    EXPECT_EQ(FromStream, "loaded") << Case.File;
    EXPECT_EQ(FromComponent, "loaded") << Case.File;
    if (!Document)
      continue;
    const std::string XML = SavedXML(Document.get());
    const std::string Error = ExpatError(XML);
    if (NotXML.count(Case.File)) {
      EXPECT_NE(Error, "") << Case.File << " is listed as no XML, yet expat takes it";
      continue;
    }
    EXPECT_EQ(Error, "") << Case.File << "\n" << XML;
    WellFormed += Error.empty();
  }
  std::cout << "[json-test-suite as XML] cases: " << Cases.size()
            << ", must accept with an object or array at the top: " << MustAccept
            << ", saved as well-formed XML: " << WellFormed << "\n";
  for (const auto& [Outcome, Count] : Counts)
    std::cout << "[json-test-suite as XML]   " << Outcome << ": " << Count << "\n";
  EXPECT_EQ(WellFormed + int(NotXML.size()), MustAccept);
}

} // namespace
} // namespace lorvane
