// The XML event reader over 20 MB documents (records with attributes and references, and long
// text), in UTF-8 and UTF-16LE, and over the MIME database of the machine (a real markup-dense
// file, skipped with a note where it is missing), beside expat and libxml2's SAX2 reader on the
// same bytes.
//
// `bench_xml_reader --once=READER [--doc=records|records16|mime]` parses a 2 MB records document
// (in UTF-8, or UTF-16LE with records16, or the MIME database) once with one reader (lorvane, expat
// or libxml2) and runs no benchmark: for callgrind, whose counts are exactly repeatable, e.g.
//   valgrind --tool=callgrind --toggle-collect='*ParseWith*' bench_xml_reader --once=lorvane
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxSAX.h"
#include "support/Documents.h"
#include "support/Ratios.h"

#ifdef LORVANE_BENCH_EXPAT
#include <expat.h>
#endif
#ifdef LORVANE_BENCH_LIBXML2
#include <libxml/parser.h>
#endif

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace lorvane;

using bench::RecordsDocument;
using bench::TextDocument;

/// The same text as UTF-16LE bytes behind a byte order mark. The reader, given code page 1200,
/// passes over the mark as text before the first '<'; expat and libxml2 read it as a mark.
std::string ToUtf16LE(const std::string& AUtf8) {
  const UnicodeString Wide = UTF8ToString(AUtf8);
  std::string Bytes = "\xFF\xFE";
  Bytes.append(reinterpret_cast<const char*>(Wide.data()), Wide.size() * 2);
  return Bytes;
}

struct Document {
  std::string Name;
  std::string Bytes;
  Word CodePage;
  bool Wide;
  std::int64_t Elements = 0; // as Lorvane counts them; every rival must agree
};

/// The shared MIME database of the machine (Debian's shared-mime-info): real, markup-dense,
/// 2.4 MB of UTF-8 with many languages. Empty where it is missing.
const char* const MimeDatabasePath = "/usr/share/mime/packages/freedesktop.org.xml";

std::string MimeDatabase() {
  std::ifstream In(MimeDatabasePath, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>());
}

std::vector<Document>& Documents() {
  static std::vector<Document> Docs = [] {
    const std::string Records = RecordsDocument(), Text = TextDocument();
    std::vector<Document> D;
    D.push_back({"records/UTF-8", Records, CP_UTF8, false});
    D.push_back({"records/UTF-16LE", ToUtf16LE(Records), CP_UTF16LE, true});
    D.push_back({"text/UTF-8", Text, CP_UTF8, false});
    D.push_back({"text/UTF-16LE", ToUtf16LE(Text), CP_UTF16LE, true});
    if (std::string Mime = MimeDatabase(); !Mime.empty())
      D.push_back({"mime/UTF-8", std::move(Mime), CP_UTF8, false});
    else
      std::printf("note: %s is missing; the MIME database is not measured\n", MimeDatabasePath);
    return D;
  }();
  return Docs;
}

struct Counts {
  std::int64_t Elements = 0;
  std::int64_t TextUnits = 0;
};

/// Counts events and the length of every string it is given.
class TCountingHandler : public TLxSAXDefaultHandler {
  LX_CLASS(TCountingHandler, TLxSAXDefaultHandler)
  TCountingHandler() { SetAutoDestroy(false); }

  void Characters(const LxXMLString& AText) override { C.TextUnits += Int64(AText.size()); }
  void EndElement(const LxXMLString&, const LxXMLString&, const LxXMLString& AQName) override {
    C.TextUnits += Int64(AQName.size());
  }
  void IgnorableWhitespace(const LxXMLString& AText) override {
    C.TextUnits += Int64(AText.size());
  }
  void StartElement(const LxXMLString&, const LxXMLString&, const LxXMLString& AQName,
                    ILxSAXAttributes* AAttributes) override {
    ++C.Elements;
    C.TextUnits += Int64(AQName.size());
    for (PLxSAXXMAttribute A = AAttributes->FirstAttribute(); A; A = A->Next)
      C.TextUnits += Int64(A->QName.size() + A->Value.size());
  }

  Counts C;

protected:
  ~TCountingHandler() override = default;
};

Counts ParseWithLorvane(const Document& ADoc) {
  TOwned<TCountingHandler> Handler(New<TCountingHandler>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  Reader->SetContentHandler(Handler.get());
  Reader->SetErrorHandler(Handler.get());
  Reader->ParseBuffer(ADoc.Bytes.data(), Cardinal(ADoc.Bytes.size()), ADoc.CodePage);
  Reader.reset();
  return Handler->C;
}

#ifdef LORVANE_BENCH_EXPAT
Counts ParseWithExpat(const Document& ADoc) {
  Counts C;
  XML_Parser Parser = XML_ParserCreate(ADoc.Wide ? "UTF-16LE" : nullptr);
  XML_SetUserData(Parser, &C);
  XML_SetElementHandler(
      Parser,
      [](void* AUser, const XML_Char* AName, const XML_Char** AAttributes) {
        auto& Count = *static_cast<Counts*>(AUser);
        ++Count.Elements;
        Count.TextUnits += Int64(std::char_traits<char>::length(AName));
        for (const XML_Char** A = AAttributes; *A; ++A)
          Count.TextUnits += Int64(std::char_traits<char>::length(*A));
      },
      [](void* AUser, const XML_Char* AName) {
        static_cast<Counts*>(AUser)->TextUnits += Int64(std::char_traits<char>::length(AName));
      });
  XML_SetCharacterDataHandler(Parser, [](void* AUser, const XML_Char*, int ALength) {
    static_cast<Counts*>(AUser)->TextUnits += ALength;
  });
  const bool Ok = XML_Parse(Parser, ADoc.Bytes.data(), int(ADoc.Bytes.size()), 1) == XML_STATUS_OK;
  XML_ParserFree(Parser);
  if (!Ok)
    C.Elements = -1;
  return C;
}
#endif

#ifdef LORVANE_BENCH_LIBXML2
Counts ParseWithLibxml2(const Document& ADoc) {
  Counts C;
  xmlSAXHandler Handler{};
  Handler.initialized = XML_SAX2_MAGIC;
  Handler.startElementNs = [](void* AUser, const xmlChar* ALocalName, const xmlChar*,
                              const xmlChar*, int, const xmlChar**, int AAttributeCount, int,
                              const xmlChar** AAttributes) {
    auto& Count = *static_cast<Counts*>(AUser);
    ++Count.Elements;
    Count.TextUnits += xmlStrlen(ALocalName);
    // Five pointers per attribute: local name, prefix, URI, value start, value end.
    for (int I = 0; I < AAttributeCount; ++I)
      Count.TextUnits +=
          xmlStrlen(AAttributes[I * 5]) + (AAttributes[I * 5 + 4] - AAttributes[I * 5 + 3]);
  };
  Handler.endElementNs = [](void* AUser, const xmlChar* ALocalName, const xmlChar*,
                            const xmlChar*) {
    static_cast<Counts*>(AUser)->TextUnits += xmlStrlen(ALocalName);
  };
  Handler.characters = [](void* AUser, const xmlChar*, int ALength) {
    static_cast<Counts*>(AUser)->TextUnits += ALength;
  };
  if (xmlSAXUserParseMemory(&Handler, &C, ADoc.Bytes.data(), int(ADoc.Bytes.size())) != 0)
    C.Elements = -1;
  return C;
}
#endif

template <class TParse>
void Measure(benchmark::State& AState, const Document& ADoc, TParse AParse) {
  for (auto _ : AState) {
    const Counts C = AParse(ADoc);
    benchmark::DoNotOptimize(C.TextUnits);
    if (C.Elements != ADoc.Elements) {
      AState.SkipWithError(("element count " + std::to_string(C.Elements) + ", Lorvane's " +
                            std::to_string(ADoc.Elements))
                               .c_str());
      break;
    }
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(ADoc.Bytes.size()));
}

/// One parse of one document by one reader, for callgrind; 0 when the reader read it.
int ParseOnce(const std::string& AReader, const std::string& ADoc) {
  Document Doc{ADoc, ADoc == "mime" ? MimeDatabase() : RecordsDocument(2u << 20), CP_UTF8, false};
  if (ADoc == "records16")
    Doc = {ADoc, ToUtf16LE(Doc.Bytes), CP_UTF16LE, true};
  if (Doc.Bytes.empty()) {
    std::printf("note: %s is missing\n", MimeDatabasePath);
    return 1;
  }
  Counts C;
  if (AReader == "lorvane")
    C = ParseWithLorvane(Doc);
#ifdef LORVANE_BENCH_EXPAT
  else if (AReader == "expat")
    C = ParseWithExpat(Doc);
#endif
#ifdef LORVANE_BENCH_LIBXML2
  else if (AReader == "libxml2")
    C = ParseWithLibxml2(Doc);
#endif
  else
    return 2;
  std::printf("%s/%s: %zu bytes, %lld elements, %lld string units\n", AReader.c_str(), ADoc.c_str(),
              Doc.Bytes.size(), static_cast<long long>(C.Elements),
              static_cast<long long>(C.TextUnits));
  return C.Elements > 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
  std::string Once, OnceDoc = "records";
  for (int I = 1; I < argc; ++I) {
    if (std::strncmp(argv[I], "--once=", 7) == 0)
      Once = argv[I] + 7;
    else if (std::strncmp(argv[I], "--doc=", 6) == 0)
      OnceDoc = argv[I] + 6;
  }
  if (!Once.empty())
    return ParseOnce(Once, OnceDoc);
  std::vector<std::pair<std::string, std::string>> Pairs;
  for (Document& Doc : Documents()) {
    Doc.Elements = ParseWithLorvane(Doc).Elements;
    const std::string Ours = "Lorvane/" + Doc.Name;
    benchmark::RegisterBenchmark(Ours.c_str(),
                                 [&Doc](benchmark::State& S) { Measure(S, Doc, ParseWithLorvane); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
#ifdef LORVANE_BENCH_EXPAT
    benchmark::RegisterBenchmark(("expat/" + Doc.Name).c_str(),
                                 [&Doc](benchmark::State& S) { Measure(S, Doc, ParseWithExpat); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    Pairs.emplace_back(Ours, "expat/" + Doc.Name);
#endif
#ifdef LORVANE_BENCH_LIBXML2
    benchmark::RegisterBenchmark(("libxml2/" + Doc.Name).c_str(),
                                 [&Doc](benchmark::State& S) { Measure(S, Doc, ParseWithLibxml2); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    Pairs.emplace_back(Ours, "libxml2/" + Doc.Name);
#endif
  }
  return lorvane::bench::RunWithRatios(argc, argv, Pairs);
}
