// Building, walking and destroying a tree of 1,000,000 nodes through object references, and the
// heap it takes per node, beside pugixml building the same shape.
#include "lorvane/uLxXMLDOM.h"
#include "support/Ratios.h"

#ifdef LORVANE_BENCH_PUGIXML
#include <pugixml.hpp>
#endif

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <time.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

using namespace lorvane;

// Deep: a root with Groups children of ItemsPerGroup children each. Flat: a root with FlatItems
// children. Both give exactly 1,000,000 nodes below the root.
constexpr int Groups = 1000;
constexpr int ItemsPerGroup = 999;
constexpr int FlatItems = 1000000;
constexpr Int64 NodesBelowRoot = 1000000;

const UnicodeString RootName = u"root", GroupName = u"group", ItemName = u"item";

/// What a walk saw: every side must see the same.
struct Counts {
  Int64 Nodes = 0;
  Int64 NameSum = 0; // the first character of every name, so that each name is read
  bool operator==(const Counts&) const = default;
};

/// The calling thread's CPU time in seconds. Wall time on a machine shared with other work counts
/// the time this thread waits for a core, which swamps the differences measured here.
double ThreadSeconds() {
  timespec T{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &T);
  return double(T.tv_sec) + double(T.tv_nsec) * 1e-9;
}

/// Bytes the heap hands out at the moment, small blocks and mapped ones; -1 where it can't tell.
long long HeapInUse() {
#if defined(__GLIBC__)
  const struct mallinfo2 M = mallinfo2();
  return static_cast<long long>(M.uordblks + M.hblkhd);
#else
  return -1;
#endif
}

// --- Lorvane ------------------------------------------------------------------------------------

struct LorvaneTree {
  using Tree = TLxDOMNode*;

  static TLxDOMNode* NewNode(const UnicodeString& AName) {
    TLxDOMNode* Node = New<TLxDOMNode>();
    Node->SetQualifiedName(AName);
    return Node;
  }

  static Tree Build(bool AFlat) {
    TLxDOMNode* Root = NewNode(RootName);
    if (AFlat) {
      for (int I = 0; I < FlatItems; ++I)
        Root->AppendChild(NewNode(ItemName));
      return Root;
    }
    for (int G = 0; G < Groups; ++G) {
      TLxDOMNode* Group = Root->AppendChild(NewNode(GroupName));
      for (int I = 0; I < ItemsPerGroup; ++I)
        Group->AppendChild(NewNode(ItemName));
    }
    return Root;
  }

  // The tree is three levels deep, so plain recursion is safe. A leaf is not asked for its
  // ChildNodes(): that would make it an empty list.
  static void WalkBelow(TLxDOMNode* ANode, Counts& ACounts) {
    for (TLxDOMNode* Child : *ANode->ChildNodes()) {
      ++ACounts.Nodes;
      ACounts.NameSum += Child->GetLocalName()[0];
      if (Child->HasChilds())
        WalkBelow(Child, ACounts);
    }
  }

  static Counts Walk(const Tree& ATree) {
    Counts C;
    WalkBelow(ATree, C);
    return C;
  }

  static void Destroy(Tree& ATree) { FreeAndNil(ATree); }
};

// --- pugixml ------------------------------------------------------------------------------------

#ifdef LORVANE_BENCH_PUGIXML
struct PugixmlTree {
  using Tree = std::unique_ptr<pugi::xml_document>;

  static Tree Build(bool AFlat) {
    auto Doc = std::make_unique<pugi::xml_document>();
    pugi::xml_node Root = Doc->append_child("root");
    if (AFlat) {
      for (int I = 0; I < FlatItems; ++I)
        Root.append_child("item");
      return Doc;
    }
    for (int G = 0; G < Groups; ++G) {
      pugi::xml_node Group = Root.append_child("group");
      for (int I = 0; I < ItemsPerGroup; ++I)
        Group.append_child("item");
    }
    return Doc;
  }

  static void WalkBelow(pugi::xml_node ANode, Counts& ACounts) {
    for (pugi::xml_node Child = ANode.first_child(); Child; Child = Child.next_sibling()) {
      ++ACounts.Nodes;
      ACounts.NameSum += Child.name()[0];
      if (Child.first_child())
        WalkBelow(Child, ACounts);
    }
  }

  static Counts Walk(const Tree& ATree) {
    Counts C;
    WalkBelow(ATree->first_child(), C);
    return C;
  }

  static void Destroy(Tree& ATree) { ATree.reset(); }
};
#endif

// --- measurements -------------------------------------------------------------------------------

/// The counts of a walk over the deep and the flat tree, as Lorvane sees them.
Counts ExpectedDeep, ExpectedFlat;

/// Heap bytes per node of each side's tree, deep and flat, for the counters.
std::map<std::string, double> BytesPerNode;

/// Time per node in nanoseconds, from the manual times of the iterations.
void ReportPerNode(benchmark::State& AState, double ASeconds) {
  if (AState.iterations() > 0)
    AState.counters["ns_per_node"] =
        ASeconds * 1e9 / double(AState.iterations()) / double(NodesBelowRoot);
}

template <class Side> void MeasureBuild(benchmark::State& AState, bool AFlat) {
  double Total = 0;
  for (auto _ : AState) {
    const double Start = ThreadSeconds();
    typename Side::Tree Tree = Side::Build(AFlat);
    const double Elapsed = ThreadSeconds() - Start;
    AState.SetIterationTime(Elapsed);
    Total += Elapsed;
    Side::Destroy(Tree);
  }
  ReportPerNode(AState, Total);
}

template <class Side> void MeasureWalk(benchmark::State& AState) {
  typename Side::Tree Tree = Side::Build(false);
  double Total = 0;
  for (auto _ : AState) {
    const double Start = ThreadSeconds();
    const Counts C = Side::Walk(Tree);
    benchmark::DoNotOptimize(C);
    const double Elapsed = ThreadSeconds() - Start;
    AState.SetIterationTime(Elapsed);
    Total += Elapsed;
    if (C != ExpectedDeep) {
      AState.SkipWithError("the walk saw another tree");
      break;
    }
  }
  Side::Destroy(Tree);
  ReportPerNode(AState, Total);
}

template <class Side> void MeasureDestroy(benchmark::State& AState) {
  double Total = 0;
  for (auto _ : AState) {
    typename Side::Tree Tree = Side::Build(false);
    const double Start = ThreadSeconds();
    Side::Destroy(Tree);
    const double Elapsed = ThreadSeconds() - Start;
    AState.SetIterationTime(Elapsed);
    Total += Elapsed;
  }
  ReportPerNode(AState, Total);
}

template <class Side> void MeasureWhole(benchmark::State& AState) {
  double Total = 0;
  for (auto _ : AState) {
    const double Start = ThreadSeconds();
    typename Side::Tree Tree = Side::Build(false);
    const Counts C = Side::Walk(Tree);
    benchmark::DoNotOptimize(C);
    Side::Destroy(Tree);
    const double Elapsed = ThreadSeconds() - Start;
    AState.SetIterationTime(Elapsed);
    Total += Elapsed;
    if (C != ExpectedDeep) {
      AState.SkipWithError("the walk saw another tree");
      break;
    }
  }
  ReportPerNode(AState, Total);
}

/// Heap bytes that a built tree holds, per node below the root; the walk's counts come back in
/// ACounts. The heap is measured before the first node (or document) is made, so the root's and
/// the document's own share is included: on a million nodes it is lost in the rounding.
template <class Side> double MeasureBytesPerNode(bool AFlat, Counts& ACounts) {
  const long long Before = HeapInUse();
  typename Side::Tree Tree = Side::Build(AFlat);
  const long long After = HeapInUse();
  ACounts = Side::Walk(Tree);
  Side::Destroy(Tree);
  return Before < 0 ? -1.0 : double(After - Before) / double(NodesBelowRoot);
}

/// Heap bytes per leaf that a walk adds when it asks every node, leaves too, for ChildNodes().
double BytesPerLeafOfCarelessWalk() {
  TLxDOMNode* Root = LorvaneTree::Build(false);
  const long long Before = HeapInUse();
  Int64 Leaves = 0;
  for (TLxDOMNode* Group : *Root->ChildNodes())
    for (TLxDOMNode* Item : *Group->ChildNodes())
      Leaves += Item->ChildNodes()->Count() == 0;
  const long long After = HeapInUse();
  LorvaneTree::Destroy(Root);
  return Before < 0 || Leaves == 0 ? -1.0 : double(After - Before) / double(Leaves);
}

/// Registers the five measurements of one side under "<ASide>/<work>".
template <class Side> void RegisterSide(const std::string& ASide) {
  const auto Add = [&](const std::string& AWork, auto AFunction) {
    benchmark::RegisterBenchmark((ASide + "/" + AWork).c_str(), AFunction)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        // Fixed: left to itself the library would rebuild the tree thousands of times to time
        // pugixml's destruction, which frees a few thousand pages.
        ->Iterations(10);
  };
  Add("build", [ASide](benchmark::State& S) {
    MeasureBuild<Side>(S, false);
    S.counters["bytes_per_node"] = BytesPerNode[ASide + "/deep"];
  });
  Add("walk", [](benchmark::State& S) { MeasureWalk<Side>(S); });
  Add("destroy", [](benchmark::State& S) { MeasureDestroy<Side>(S); });
  Add("whole", [](benchmark::State& S) { MeasureWhole<Side>(S); });
  Add("flat build", [ASide](benchmark::State& S) {
    MeasureBuild<Side>(S, true);
    S.counters["bytes_per_node"] = BytesPerNode[ASide + "/flat"];
  });
}

/// Measures one side's memory and checks its walks against Lorvane's; false on a mismatch.
template <class Side> bool CheckAndMeasure(const std::string& ASide) {
  Counts Deep, Flat;
  BytesPerNode[ASide + "/deep"] = MeasureBytesPerNode<Side>(false, Deep);
  BytesPerNode[ASide + "/flat"] = MeasureBytesPerNode<Side>(true, Flat);
  if (Deep == ExpectedDeep && Flat == ExpectedFlat)
    return true;
  std::fprintf(stderr,
               "%s sees %lld and %lld nodes (name sums %lld and %lld), Lorvane %lld and %lld "
               "(%lld and %lld)\n",
               ASide.c_str(), (long long)Deep.Nodes, (long long)Flat.Nodes, (long long)Deep.NameSum,
               (long long)Flat.NameSum, (long long)ExpectedDeep.Nodes,
               (long long)ExpectedFlat.Nodes, (long long)ExpectedDeep.NameSum,
               (long long)ExpectedFlat.NameSum);
  return false;
}

} // namespace

int main(int argc, char** argv) {
  // Lorvane's own walks set what every side must see; they must see the shape that was built.
  BytesPerNode["Lorvane/deep"] = MeasureBytesPerNode<LorvaneTree>(false, ExpectedDeep);
  BytesPerNode["Lorvane/flat"] = MeasureBytesPerNode<LorvaneTree>(true, ExpectedFlat);
  if (ExpectedDeep.Nodes != NodesBelowRoot || ExpectedFlat.Nodes != NodesBelowRoot) {
    std::fprintf(stderr, "Lorvane walked %lld and %lld nodes instead of %lld\n",
                 (long long)ExpectedDeep.Nodes, (long long)ExpectedFlat.Nodes,
                 (long long)NodesBelowRoot);
    return EXIT_FAILURE;
  }
  RegisterSide<LorvaneTree>("Lorvane");

  std::vector<std::pair<std::string, std::string>> Pairs;
  std::vector<std::string> Rivals;
#ifdef LORVANE_BENCH_PUGIXML
  if (!CheckAndMeasure<PugixmlTree>("pugixml"))
    return EXIT_FAILURE;
  RegisterSide<PugixmlTree>("pugixml");
  Rivals.push_back("pugixml");
#endif
  for (const std::string& Rival : Rivals)
    for (const char* Work : {"build", "walk", "destroy", "whole", "flat build"})
      Pairs.emplace_back(std::string("Lorvane/") + Work, Rival + "/" + Work);

  const int Result = lorvane::bench::RunWithRatios(argc, argv, Pairs);

  std::printf("\n%-44s %-36s %s\n", "heap bytes per node", "", "ratio (ours / rival)");
  for (const char* Shape : {"deep", "flat"}) {
    const double Ours = BytesPerNode[std::string("Lorvane/") + Shape];
    std::printf("Lorvane/%-36s %-36.1f\n", Shape, Ours);
    for (const std::string& Rival : Rivals) {
      const double Theirs = BytesPerNode[Rival + "/" + Shape];
      std::printf("%-44s %-36.1f %.2f\n", (Rival + "/" + Shape).c_str(), Theirs, Ours / Theirs);
    }
  }
  std::printf("sizeof(TLxDOMNode) %zu; a walk that asks each leaf for ChildNodes() adds %.1f "
              "bytes per leaf\n",
              sizeof(TLxDOMNode), BytesPerLeafOfCarelessWalk());
  return Result;
}
