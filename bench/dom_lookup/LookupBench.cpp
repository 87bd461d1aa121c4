// Finding a child element by name among 10,000 and an attribute by name among 20, beside
// pugixml's child() and attribute() on the same trees.
#include "lorvane/uLxXMLDOM.h"
#include "support/Ratios.h"

#ifdef LORVANE_BENCH_PUGIXML
#include <pugixml.hpp>
#endif

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace lorvane;

constexpr int Children = 10000;
constexpr int Attributes = 20;

std::string NameOf(const char* APrefix, int AIndex) { return APrefix + std::to_string(AIndex); }

/// Names looked up: spread over the list, so that neither search direction is favoured.
const int Probes[] = {0, 2500, 5000, 7500, 9999};
const int AttributeProbes[] = {0, 5, 10, 15, 19};

struct LorvaneTree {
  TOwned<TLxDOMElement> Parent{New<TLxDOMElement>()};
  TLxDOMElement* WithAttributes = nullptr;
  LorvaneTree() {
    Parent->SetQualifiedName(u"root");
    for (int I = 0; I < Children; ++I)
      Parent->AddElement(UTF8ToString(NameOf("item", I)));
    WithAttributes = Parent->AddElement(u"attributes");
    for (int I = 0; I < Attributes; ++I)
      WithAttributes->SetAttribute(UTF8ToString(NameOf("attr", I)), u"v");
  }
};

void Check(bool AOk, const char* AWhat) {
  if (!AOk) {
    std::fprintf(stderr, "lookup mismatch: %s\n", AWhat);
    std::exit(1);
  }
}

void BM_Lorvane_ChildByName(benchmark::State& AState) {
  LorvaneTree Tree;
  UnicodeString Names[std::size(Probes)];
  for (std::size_t I = 0; I < std::size(Probes); ++I)
    Names[I] = UTF8ToString(NameOf("item", Probes[I]));
  for (auto _ : AState)
    for (const UnicodeString& Name : Names) {
      TLxDOMElement* Found = Tree.Parent->FindElement(Name);
      benchmark::DoNotOptimize(Found);
      Check(Found != nullptr, "child");
    }
}
BENCHMARK(BM_Lorvane_ChildByName);

void BM_Lorvane_AttributeByName(benchmark::State& AState) {
  LorvaneTree Tree;
  UnicodeString Names[std::size(AttributeProbes)];
  for (std::size_t I = 0; I < std::size(AttributeProbes); ++I)
    Names[I] = UTF8ToString(NameOf("attr", AttributeProbes[I]));
  for (auto _ : AState)
    for (const UnicodeString& Name : Names) {
      TLxDOMAttribute* Found = Tree.WithAttributes->FindAttribute(Name);
      benchmark::DoNotOptimize(Found);
      Check(Found != nullptr, "attribute");
    }
}
BENCHMARK(BM_Lorvane_AttributeByName);

#ifdef LORVANE_BENCH_PUGIXML
struct PugiTree {
  pugi::xml_document Document;
  pugi::xml_node Parent, WithAttributes;
  PugiTree() {
    Parent = Document.append_child("root");
    for (int I = 0; I < Children; ++I)
      Parent.append_child(NameOf("item", I).c_str());
    WithAttributes = Parent.append_child("attributes");
    for (int I = 0; I < Attributes; ++I)
      WithAttributes.append_attribute(NameOf("attr", I).c_str()) = "v";
  }
};

void BM_Pugixml_ChildByName(benchmark::State& AState) {
  PugiTree Tree;
  std::string Names[std::size(Probes)];
  for (std::size_t I = 0; I < std::size(Probes); ++I)
    Names[I] = NameOf("item", Probes[I]);
  for (auto _ : AState)
    for (const std::string& Name : Names) {
      pugi::xml_node Found = Tree.Parent.child(Name.c_str());
      benchmark::DoNotOptimize(Found);
      Check(!Found.empty(), "pugixml child");
    }
}
BENCHMARK(BM_Pugixml_ChildByName);

void BM_Pugixml_AttributeByName(benchmark::State& AState) {
  PugiTree Tree;
  std::string Names[std::size(AttributeProbes)];
  for (std::size_t I = 0; I < std::size(AttributeProbes); ++I)
    Names[I] = NameOf("attr", AttributeProbes[I]);
  for (auto _ : AState)
    for (const std::string& Name : Names) {
      pugi::xml_attribute Found = Tree.WithAttributes.attribute(Name.c_str());
      benchmark::DoNotOptimize(Found);
      Check(!Found.empty(), "pugixml attribute");
    }
}
BENCHMARK(BM_Pugixml_AttributeByName);
#endif

} // namespace

int main(int argc, char** argv) {
  return lorvane::bench::RunWithRatios(
      argc, argv,
      {{"BM_Lorvane_ChildByName", "BM_Pugixml_ChildByName"},
       {"BM_Lorvane_AttributeByName", "BM_Pugixml_AttributeByName"}});
}
