// JSON path on a loaded value tree: "$..id" over every depth of the 20 MB mixed document, a
// child path through every record, a filter over 100,000 items, and single values, each beside a
// hand-written walk over the same Lorvane tree that collects the same values (the floor), and
// the single values beside nlohmann/json's json_pointer on its own tree of the same bytes.
#include "lorvane/uLxJSON.h"
#include "support/JSONDocuments.h"
#include "support/Ratios.h"

#ifdef LORVANE_BENCH_NLOHMANN
#include <nlohmann/json.hpp>
#endif

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace lorvane;

TLxJSONDocument* LoadTree(const std::string& AText) {
  return TLxJSONDocument::CreateFromJSON(UTF8ToString(AText));
}

/// The 20 MB array of records (id, name, score, active, tags, note, address{city, zip}).
TLxJSONDocument& Mixed() {
  static TLxJSONDocument* Document = LoadTree(bench::MixedDocument());
  return *Document;
}

/// 100,000 items {"n": 0..9, "v": "..."}.
const std::string& FilterText() {
  static const std::string Text = [] {
    std::string S = "[";
    for (int I = 0; I < 100000; ++I) {
      if (I)
        S += ',';
      S += "{\"n\": ";
      S += std::to_string(I * 7 % 10);
      S += ", \"v\": \"item";
      S += std::to_string(I);
      S += "\"}";
    }
    return S + "]";
  }();
  return Text;
}

TLxJSONDocument& Filtered() {
  static TLxJSONDocument* Document = LoadTree(FilterText());
  return *Document;
}

/// Fails the run when the two sides disagree on what they select.
void Agree(std::size_t AOurs, std::size_t AFloor, const char* AWhat) {
  if (AOurs != AFloor) {
    std::fprintf(stderr, "%s: the path selects %zu values, the walk %zu\n", AWhat, AOurs, AFloor);
    std::exit(1);
  }
}

std::size_t Selected(TLxJSONBase* AFrom, const char16_t* APath) {
  TOwned<TLxJSONArray> Found(AFrom->CreateNodeList(APath, TLxJDOCSelectOptions{}));
  return static_cast<std::size_t>(Found->Count());
}

// --- every depth ---------------------------------------------------------------------------------

/// Every value of a member "id", in document order, over a stack of our own.
std::size_t WalkIds(TLxJSONBase* ARoot, std::vector<TLxJSONBase*>& AOut) {
  AOut.clear();
  std::vector<TLxJSONBase*> Stack{ARoot};
  while (!Stack.empty()) {
    TLxJSONBase* Node = Stack.back();
    Stack.pop_back();
    const Integer Count = Node->Count();
    if (Node->GetJSONType() == jdtObject)
      for (Integer I = 0; I < Count; ++I) {
        auto* Member = static_cast<TLxJSONMember*>(Node->Item(I));
        if (Member->GetName() == u"id")
          AOut.push_back(Member->GetValueObj());
      }
    for (Integer I = Count; I-- > 0;) {
      TLxJSONBase* Child = Node->Item(I);
      if (Node->GetJSONType() == jdtObject)
        Child = Child->GetValueObj();
      if (Child->GetJSONType() == jdtObject || Child->GetJSONType() == jdtArray)
        Stack.push_back(Child);
    }
  }
  return AOut.size();
}

void BM_Lorvane_Path_Descendants(benchmark::State& AState) {
  std::size_t Count = 0;
  for (auto _ : AState)
    benchmark::DoNotOptimize(Count = Selected(&Mixed(), u"$..id"));
  std::vector<TLxJSONBase*> Floor;
  Agree(Count, WalkIds(Mixed().GetRootValue(), Floor), "$..id");
  AState.counters["values"] = double(Count);
}

void BM_Walk_Descendants(benchmark::State& AState) {
  std::vector<TLxJSONBase*> Found;
  for (auto _ : AState)
    benchmark::DoNotOptimize(WalkIds(Mixed().GetRootValue(), Found));
}

// --- a child path through every record -----------------------------------------------------------

void BM_Lorvane_Path_Children(benchmark::State& AState) {
  std::size_t Count = 0;
  for (auto _ : AState)
    benchmark::DoNotOptimize(Count = Selected(&Mixed(), u"$[*].address.city"));
  AState.counters["values"] = double(Count);
}

std::size_t WalkCities(TLxJSONBase* ARoot, std::vector<TLxJSONBase*>& AOut) {
  AOut.clear();
  const Integer Count = ARoot->Count();
  for (Integer I = 0; I < Count; ++I)
    if (TLxJSONMember* Address = ARoot->Item(I)->FindMember(u"address"))
      if (TLxJSONMember* City = Address->GetValueObj()->FindMember(u"city"))
        AOut.push_back(City->GetValueObj());
  return AOut.size();
}

void BM_Walk_Children(benchmark::State& AState) {
  std::vector<TLxJSONBase*> Found;
  std::size_t Count = 0;
  for (auto _ : AState)
    benchmark::DoNotOptimize(Count = WalkCities(Mixed().GetRootValue(), Found));
  Agree(Selected(&Mixed(), u"$[*].address.city"), Count, "$[*].address.city");
}

// --- a filter ------------------------------------------------------------------------------------

void BM_Lorvane_Path_Filter(benchmark::State& AState) {
  std::size_t Count = 0;
  for (auto _ : AState)
    benchmark::DoNotOptimize(Count = Selected(&Filtered(), u"$[?(@.n>5)]"));
  AState.counters["values"] = double(Count);
}

std::size_t WalkAboveFive(TLxJSONBase* ARoot, std::vector<TLxJSONBase*>& AOut) {
  AOut.clear();
  const Integer Count = ARoot->Count();
  for (Integer I = 0; I < Count; ++I) {
    TLxJSONBase* Item = ARoot->Item(I);
    if (TLxJSONMember* N = Item->FindMember(u"n"))
      if (N->GetAsInteger() > 5)
        AOut.push_back(Item);
  }
  return AOut.size();
}

void BM_Walk_Filter(benchmark::State& AState) {
  std::vector<TLxJSONBase*> Found;
  std::size_t Count = 0;
  for (auto _ : AState)
    benchmark::DoNotOptimize(Count = WalkAboveFive(Filtered().GetRootValue(), Found));
  Agree(Selected(&Filtered(), u"$[?(@.n>5)]"), Count, "$[?(@.n>5)]");
}

// --- single values -------------------------------------------------------------------------------

/// Three single values deep in the mixed document, and the same by hand and by json_pointer.
constexpr const char16_t* SinglePaths[] = {u"$[1000].address.city", u"$[50000].tags[1]",
                                           u"$[-1].name"};

void BM_Lorvane_Path_Single(benchmark::State& AState) {
  for (auto _ : AState)
    for (const char16_t* Path : SinglePaths)
      benchmark::DoNotOptimize(Mixed().SelectSingleNode(Path));
}

void BM_Walk_Single(benchmark::State& AState) {
  TLxJSONBase* Root = Mixed().GetRootValue();
  for (auto _ : AState) {
    benchmark::DoNotOptimize(
        Root->Item(1000)->FindMember(u"address")->GetValueObj()->FindMember(u"city"));
    benchmark::DoNotOptimize(Root->Item(50000)->FindMember(u"tags")->GetValueObj()->Item(1));
    benchmark::DoNotOptimize(Root->Item(Root->Count() - 1)->FindMember(u"name"));
  }
}

#ifdef LORVANE_BENCH_NLOHMANN
void BM_Nlohmann_Pointer_Single(benchmark::State& AState) {
  static const nlohmann::json Tree = nlohmann::json::parse(bench::MixedDocument());
  std::string Last = "/";
  Last += std::to_string(Tree.size() - 1);
  Last += "/name";
  const nlohmann::json::json_pointer Pointers[] = {
      nlohmann::json::json_pointer("/1000/address/city"),
      nlohmann::json::json_pointer("/50000/tags/1"), nlohmann::json::json_pointer(Last)};
  for (auto _ : AState)
    for (const auto& Pointer : Pointers)
      benchmark::DoNotOptimize(&Tree.at(Pointer));
}
BENCHMARK(BM_Nlohmann_Pointer_Single)->Unit(benchmark::kMicrosecond);

/// Parsing the pointer text is part of the work, as the path's text is for Lorvane.
void BM_Nlohmann_PointerText_Single(benchmark::State& AState) {
  static const nlohmann::json Tree = nlohmann::json::parse(bench::MixedDocument());
  std::string Last = "/";
  Last += std::to_string(Tree.size() - 1);
  Last += "/name";
  for (auto _ : AState) {
    benchmark::DoNotOptimize(&Tree.at(nlohmann::json::json_pointer("/1000/address/city")));
    benchmark::DoNotOptimize(&Tree.at(nlohmann::json::json_pointer("/50000/tags/1")));
    benchmark::DoNotOptimize(&Tree.at(nlohmann::json::json_pointer(Last)));
  }
}
BENCHMARK(BM_Nlohmann_PointerText_Single)->Unit(benchmark::kMicrosecond);
#endif

BENCHMARK(BM_Lorvane_Path_Descendants)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Walk_Descendants)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lorvane_Path_Children)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Walk_Children)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lorvane_Path_Filter)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Walk_Filter)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lorvane_Path_Single)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Walk_Single)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
  return lorvane::bench::RunWithRatios(
      argc, argv,
      {{"BM_Lorvane_Path_Descendants", "BM_Walk_Descendants"},
       {"BM_Lorvane_Path_Children", "BM_Walk_Children"},
       {"BM_Lorvane_Path_Filter", "BM_Walk_Filter"},
       {"BM_Lorvane_Path_Single", "BM_Walk_Single"},
       {"BM_Lorvane_Path_Single", "BM_Nlohmann_Pointer_Single"},
       {"BM_Lorvane_Path_Single", "BM_Nlohmann_PointerText_Single"}});
}
