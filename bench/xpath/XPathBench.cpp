// Path selection over the ~20 MB records document: every record with a given attribute value, a
// three-step child path, and the first match alone, beside pugixml's select_nodes and libxml2's
// xmlXPathEvalExpression on the same bytes with the equivalent expressions.
#include "lorvane/core/LxStreams.h"
#include "lorvane/uLxXPath.h"
#include "support/Documents.h"
#include "support/Ratios.h"

#ifdef LORVANE_BENCH_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef LORVANE_BENCH_LIBXML2
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace lorvane;

const std::string& Text() {
  static const std::string Document = bench::RecordsDocument();
  return Document;
}

// The same selections in each library's language: positions here count from 0.
constexpr char16_t OursByAttribute[] = u"//record[@x:kind=\"k3\"]";
constexpr char OthersByAttribute[] = "//record[@x:kind='k3']";
constexpr char16_t OursChildPath[] = u"records/record/name";
constexpr char OthersChildPath[] = "/records/record/name";
constexpr char16_t OursFirst[] = u"records/record[@x:kind=\"k3\"]";
constexpr char OthersFirst[] = "/records/record[@x:kind='k3'][1]";

/// The number of matches each library must agree on; set by the first library that runs.
size_t& Expected(int AWhich) {
  static size_t Counts[3] = {0, 0, 0};
  return Counts[AWhich];
}

void Check(size_t ACount, int AWhich, const char* AWho) {
  if (ACount == 0 || (Expected(AWhich) != 0 && Expected(AWhich) != ACount)) {
    std::fprintf(stderr, "%s selected %zu nodes, expected %zu\n", AWho, ACount, Expected(AWhich));
    std::exit(1);
  }
  Expected(AWhich) = ACount;
}

TLxDOMDocument* Ours() {
  static TLxDOMDocument* Document = [] {
    TOwned<TLxMemoryStream> Input(New<TLxMemoryStream>(static_cast<const void*>(Text().data()),
                                                       static_cast<Int64>(Text().size())));
    TLxDOMDocument* D = New<TLxDOMDocument>();
    D->LoadFromStream(Input.get());
    return D;
  }();
  return Document;
}

void OursList(benchmark::State& AState, const char16_t* APath, int AWhich) {
  TLxDOMDocument* Document = Ours();
  const UnicodeString Path(APath);
  for (auto _ : AState) {
    TOwned<TLxDOMNodeList> List(Document->CreateNodeList(Path, {soCaseSensitive}));
    Check(static_cast<size_t>(List->Count()), AWhich, "lorvane");
  }
}

void BM_Lorvane_ByAttribute(benchmark::State& S) { OursList(S, OursByAttribute, 0); }
void BM_Lorvane_ChildPath(benchmark::State& S) { OursList(S, OursChildPath, 1); }
void BM_Lorvane_First(benchmark::State& AState) {
  TLxDOMDocument* Document = Ours();
  const UnicodeString Path(OursFirst);
  for (auto _ : AState) {
    TLxDOMNode* Found = Document->SelectSingleNode(Path, {soCaseSensitive});
    Check(Found ? 1 : 0, 2, "lorvane");
  }
}
BENCHMARK(BM_Lorvane_ByAttribute)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lorvane_ChildPath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lorvane_First)->Unit(benchmark::kMillisecond);

#ifdef LORVANE_BENCH_PUGIXML
pugi::xml_document& Pugi() {
  static pugi::xml_document* Document = [] {
    auto* D = new pugi::xml_document();
    D->load_buffer(Text().data(), Text().size());
    return D;
  }();
  return *Document;
}

void PugiList(benchmark::State& AState, const char* APath, int AWhich) {
  pugi::xml_document& Document = Pugi();
  const pugi::xpath_query Query(APath);
  for (auto _ : AState) {
    pugi::xpath_node_set Set = Query.evaluate_node_set(Document);
    Check(Set.size(), AWhich, "pugixml");
  }
}
void BM_Pugixml_ByAttribute(benchmark::State& S) { PugiList(S, OthersByAttribute, 0); }
void BM_Pugixml_ChildPath(benchmark::State& S) { PugiList(S, OthersChildPath, 1); }
void BM_Pugixml_First(benchmark::State& AState) {
  pugi::xml_document& Document = Pugi();
  for (auto _ : AState) {
    pugi::xpath_node Found = Document.select_node(OthersFirst);
    Check(Found ? 1 : 0, 2, "pugixml");
  }
}
BENCHMARK(BM_Pugixml_ByAttribute)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pugixml_ChildPath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pugixml_First)->Unit(benchmark::kMillisecond);
#endif

#ifdef LORVANE_BENCH_LIBXML2
xmlDocPtr Libxml2() {
  static xmlDocPtr Document = xmlReadMemory(Text().data(), static_cast<int>(Text().size()),
                                            "records.xml", nullptr, XML_PARSE_HUGE);
  return Document;
}

size_t Libxml2Count(const char* APath) {
  xmlXPathContextPtr Context = xmlXPathNewContext(Libxml2());
  xmlXPathRegisterNs(Context, reinterpret_cast<const xmlChar*>("x"),
                     reinterpret_cast<const xmlChar*>("urn:x"));
  xmlXPathObjectPtr Result =
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(APath), Context);
  const size_t Count = Result && Result->nodesetval ? Result->nodesetval->nodeNr : 0;
  xmlXPathFreeObject(Result);
  xmlXPathFreeContext(Context);
  return Count;
}

void BM_Libxml2_ByAttribute(benchmark::State& AState) {
  for (auto _ : AState)
    Check(Libxml2Count(OthersByAttribute), 0, "libxml2");
}
void BM_Libxml2_ChildPath(benchmark::State& AState) {
  for (auto _ : AState)
    Check(Libxml2Count(OthersChildPath), 1, "libxml2");
}
void BM_Libxml2_First(benchmark::State& AState) {
  for (auto _ : AState)
    Check(Libxml2Count(OthersFirst), 2, "libxml2");
}
BENCHMARK(BM_Libxml2_ByAttribute)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Libxml2_ChildPath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Libxml2_First)->Unit(benchmark::kMillisecond);
#endif

} // namespace

int main(int argc, char** argv) {
  return lorvane::bench::RunWithRatios(argc, argv,
                                       {{"BM_Lorvane_ByAttribute", "BM_Pugixml_ByAttribute"},
                                        {"BM_Lorvane_ByAttribute", "BM_Libxml2_ByAttribute"},
                                        {"BM_Lorvane_ChildPath", "BM_Pugixml_ChildPath"},
                                        {"BM_Lorvane_ChildPath", "BM_Libxml2_ChildPath"},
                                        {"BM_Lorvane_First", "BM_Pugixml_First"},
                                        {"BM_Lorvane_First", "BM_Libxml2_First"}});
}
