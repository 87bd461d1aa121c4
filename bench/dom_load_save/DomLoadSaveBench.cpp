// Loading a document from memory into a tree, freeing the tree, and saving it back to memory,
// compact and formatted, beside pugixml, libxml2 and tinyxml2 on the same bytes; CPU time of each
// phase and the heap the tree takes per input byte. The documents: three generated ones of 20 MB
// and real files of this machine's Debian packages, each skipped with a note when missing.
//
// --probe=DOC,MB,PHASE runs only Lorvane's side of one phase (load, free or save) once, on the
// generated DOC (records, text, deep) of MB megabytes or on the file DOC, for callgrind:
//   valgrind --tool=callgrind --toggle-collect='*ProbePhase*' bench_dom_load_save
//   --probe=records,2,load
#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxXMLDOM.h"
#include "support/Documents.h"
#include "support/Ratios.h"
#include "support/Throughput.h"

#ifdef LORVANE_BENCH_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef LORVANE_BENCH_LIBXML2
#include <libxml/parser.h>
#include <libxml/tree.h>
#endif
#ifdef LORVANE_BENCH_TINYXML2
#include <tinyxml2.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace lorvane;

/// Each phase is timed this many times; the median counts.
constexpr int Repetitions = 5;

struct Input {
  std::string Name;
  std::string Bytes;
  Int64 Elements = 0; // as Lorvane's tree has them; every other tree must agree
  /// How often each timed phase runs on a smaller document, so that every phase handles about
  /// as many bytes as on the generated ones; the times add up.
  int Rounds = 1;
  /// A file of this machine rather than a generated document: a rival that can't read it is
  /// left out there (some files are not well-formed, and readers differ in what they let pass).
  bool Real = false;
};

/// The whole file, or empty when it can't be read.
std::string ReadFile(const char* APath) {
  std::ifstream File(APath, std::ios::binary);
  return File ? std::string(std::istreambuf_iterator<char>(File), {}) : std::string();
}

/// The real documents: large files of the Debian packages that run.sh installs for benchmarks.
constexpr std::pair<const char*, const char*> RealFiles[] = {
    {"mime", "/usr/share/mime/packages/freedesktop.org.xml"},
    {"iso_3166-2", "/usr/share/xml/iso-codes/iso_3166-2.xml"},
    {"GLib.gir", "/usr/share/gir-1.0/GLib-2.0.gir"},
    {"Gio.gir", "/usr/share/gir-1.0/Gio-2.0.gir"},
};

std::vector<Input>& Inputs() {
  static std::vector<Input> Docs = [] {
    std::vector<Input> D;
    D.push_back({"records", bench::RecordsDocument()});
    D.push_back({"text", bench::TextDocument()});
    D.push_back({"deep", bench::DeepDocument()});
    for (const auto& [Name, Path] : RealFiles) {
      std::string Bytes = ReadFile(Path);
      if (Bytes.empty()) {
        std::fprintf(stderr, "note: %s is missing, the %s document is skipped\n", Path, Name);
        continue;
      }
      const int Rounds = int(std::max<std::size_t>(1, bench::DocumentBytes / Bytes.size()));
      D.push_back({Name, std::move(Bytes), 0, Rounds, true});
    }
    return D;
  }();
  return Docs;
}

// --- the sides ----------------------------------------------------------------------------------
//
// Each side gives: Tree, an owning handle that frees the tree; Load (bytes to tree, an empty
// handle on failure); CountElements; and for saving an Output made outside the timed phase
// (Prepare), filled by Save and read by Text.

struct LorvaneSide {
  using Tree = TOwned<TLxDOMDocument>;
  using Output = TOwned<TLxMemoryStream>;

  static Tree Load(const std::string& ABytes) {
    Tree Doc(New<TLxDOMDocument>());
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(ABytes.data()), Int64(ABytes.size())));
    Doc->LoadFromStream(Stream.get(), CP_UTF8);
    return Doc;
  }

  static Int64 CountElements(const Tree& ADoc) {
    Int64 Count = 0;
    std::vector<TLxDOMElement*> Pending;
    if (TLxDOMElement* Root = ADoc->GetRootNode())
      Pending.push_back(Root);
    while (!Pending.empty()) {
      TLxDOMElement* Element = Pending.back();
      Pending.pop_back();
      ++Count;
      // Elements() would make an empty list on a leaf.
      if (const Integer Children = Element->ElementCount(); Children > 0) {
        TLxDOMElementList* List = Element->Elements();
        for (Integer I = 0; I < Children; ++I)
          Pending.push_back(List->GetItem(I));
      }
    }
    return Count;
  }

  static Output Prepare(std::size_t AReserve, bool) {
    return Output(New<TLxMemoryStream>(Int64(AReserve)));
  }
  static void Save(Tree& ADoc, bool AFormatted, Output& AOut) {
    ADoc->SaveToStream(AOut.get(), CP_UTF8, AFormatted, /*AWriteBOM=*/false);
  }
  static std::string_view Text(const Output& AOut) {
    return {reinterpret_cast<const char*>(AOut->Memory()), std::size_t(AOut->GetSize())};
  }
};

#ifdef LORVANE_BENCH_PUGIXML
struct PugixmlSide {
  using Tree = std::unique_ptr<pugi::xml_document>;
  using Output = std::string;

  static Tree Load(const std::string& ABytes) {
    auto Doc = std::make_unique<pugi::xml_document>();
    if (!Doc->load_buffer(ABytes.data(), ABytes.size(), pugi::parse_default, pugi::encoding_utf8))
      Doc.reset();
    return Doc;
  }

  static Int64 CountElements(const Tree& ADoc) {
    Int64 Count = 0;
    std::vector<pugi::xml_node> Pending{*ADoc};
    while (!Pending.empty()) {
      const pugi::xml_node Node = Pending.back();
      Pending.pop_back();
      for (pugi::xml_node Child = Node.first_child(); Child; Child = Child.next_sibling())
        if (Child.type() == pugi::node_element) {
          ++Count;
          Pending.push_back(Child);
        }
    }
    return Count;
  }

  struct StringWriter : pugi::xml_writer {
    std::string& Out;
    explicit StringWriter(std::string& AOut) : Out(AOut) {}
    void write(const void* AData, size_t ASize) override {
      Out.append(static_cast<const char*>(AData), ASize);
    }
  };

  static Output Prepare(std::size_t AReserve, bool) {
    std::string Out;
    Out.reserve(AReserve);
    return Out;
  }
  static void Save(Tree& ADoc, bool AFormatted, Output& AOut) {
    StringWriter Writer(AOut);
    ADoc->save(Writer, "  ", AFormatted ? pugi::format_indent : pugi::format_raw,
               pugi::encoding_utf8);
  }
  static std::string_view Text(const Output& AOut) { return AOut; }
};
#endif

#ifdef LORVANE_BENCH_LIBXML2
struct Libxml2Side {
  struct FreeDoc {
    void operator()(xmlDoc* ADoc) const { xmlFreeDoc(ADoc); }
  };
  using Tree = std::unique_ptr<xmlDoc, FreeDoc>;
  struct Dump {
    xmlChar* Memory = nullptr;
    int Size = 0;
    Dump() = default;
    Dump(Dump&& AOther) noexcept : Memory(AOther.Memory), Size(AOther.Size) {
      AOther.Memory = nullptr;
    }
    ~Dump() { xmlFree(Memory); }
  };
  using Output = Dump;

  // Without blank text between elements, as the other trees are, and as formatted output needs.
  static Tree Load(const std::string& ABytes) {
    return Tree(xmlReadMemory(ABytes.data(), int(ABytes.size()), nullptr, "UTF-8",
                              XML_PARSE_NOBLANKS | XML_PARSE_NONET));
  }

  static Int64 CountElements(const Tree& ADoc) {
    Int64 Count = 0;
    std::vector<const xmlNode*> Pending{reinterpret_cast<const xmlNode*>(ADoc.get())};
    while (!Pending.empty()) {
      const xmlNode* Node = Pending.back();
      Pending.pop_back();
      for (const xmlNode* Child = Node->children; Child; Child = Child->next)
        if (Child->type == XML_ELEMENT_NODE) {
          ++Count;
          Pending.push_back(Child);
        }
    }
    return Count;
  }

  // libxml2 allocates the dump itself; nothing to reserve.
  static Output Prepare(std::size_t, bool) { return {}; }
  static void Save(Tree& ADoc, bool AFormatted, Output& AOut) {
    if (AFormatted)
      xmlDocDumpFormatMemory(ADoc.get(), &AOut.Memory, &AOut.Size, 1);
    else
      xmlDocDumpMemory(ADoc.get(), &AOut.Memory, &AOut.Size);
  }
  static std::string_view Text(const Output& AOut) {
    return {reinterpret_cast<const char*>(AOut.Memory), std::size_t(AOut.Size)};
  }
};
#endif

#ifdef LORVANE_BENCH_TINYXML2
struct Tinyxml2Side {
  using Tree = std::unique_ptr<tinyxml2::XMLDocument>;
  using Output = std::unique_ptr<tinyxml2::XMLPrinter>;

  static Tree Load(const std::string& ABytes) {
    auto Doc = std::make_unique<tinyxml2::XMLDocument>();
    if (Doc->Parse(ABytes.data(), ABytes.size()) != tinyxml2::XML_SUCCESS)
      Doc.reset();
    return Doc;
  }

  static Int64 CountElements(const Tree& ADoc) {
    Int64 Count = 0;
    std::vector<const tinyxml2::XMLNode*> Pending{ADoc.get()};
    while (!Pending.empty()) {
      const tinyxml2::XMLNode* Node = Pending.back();
      Pending.pop_back();
      for (const tinyxml2::XMLElement* Child = Node->FirstChildElement(); Child;
           Child = Child->NextSiblingElement()) {
        ++Count;
        Pending.push_back(Child);
      }
    }
    return Count;
  }

  // The printer grows its own buffer; compact or not is fixed when it is made.
  static Output Prepare(std::size_t, bool AFormatted) {
    return std::make_unique<tinyxml2::XMLPrinter>(nullptr, !AFormatted);
  }
  static void Save(Tree& ADoc, bool, Output& AOut) { ADoc->Print(AOut.get()); }
  static std::string_view Text(const Output& AOut) {
    return {AOut->CStr(), std::size_t(AOut->CStrSize() - 1)};
  }
};
#endif

// --- measurements -------------------------------------------------------------------------------

enum class Phase { Load, Free, SaveCompact, SaveFormatted };
const char* const PhaseNames[] = {"load", "free", "save compact", "save formatted"};

std::string BenchName(const std::string& ASide, const Input& AInput, Phase APhase) {
  return ASide + "/" + AInput.Name + "/" + PhaseNames[int(APhase)];
}

/// What the checks before the timing found, per "<side>/<document>".
struct Facts {
  double HeapPerInputByte = -1;
  std::size_t CompactBytes = 0;
  std::size_t FormattedBytes = 0;
};
std::map<std::string, Facts> FactsOf;

/// The tree that the save phases of a "<side>/<document>" write, loaded on first use and freed
/// after the last run of the formatted save, so that one big tree at a time is alive.
std::map<std::string, std::shared_ptr<void>> Trees;
std::map<std::string, int> FormattedSaveRuns;

template <class Side> typename Side::Tree& TreeOf(const std::string& AKey, const Input& AInput) {
  std::shared_ptr<void>& Tree = Trees[AKey];
  if (!Tree) {
    auto Loaded = std::make_shared<typename Side::Tree>(Side::Load(AInput.Bytes));
    // One save outside the timing: tinyxml2 decodes references and line ends only when a string
    // is first read, which is loading work.
    typename Side::Output Out = Side::Prepare(AInput.Bytes.size() * 2, false);
    Side::Save(*Loaded, false, Out);
    Tree = Loaded;
  }
  return *static_cast<typename Side::Tree*>(Tree.get());
}

/// The load phase, or with AFree the free phase: each round loads a tree and frees it, and only
/// the one step counts.
template <class Side>
void MeasureLoadOrFree(benchmark::State& AState, const Input& AInput, bool AFree) {
  for (auto _ : AState) {
    double Elapsed = 0;
    for (int Round = 0; Round < AInput.Rounds; ++Round) {
      double Start = bench::ThreadSeconds();
      typename Side::Tree Tree = Side::Load(AInput.Bytes);
      if (!AFree)
        Elapsed += bench::ThreadSeconds() - Start;
      const Int64 Count = Round > 0 ? AInput.Elements : Tree ? Side::CountElements(Tree) : -1;
      if (Count != AInput.Elements) {
        AState.SkipWithError(("element count " + std::to_string(Count) + ", Lorvane's " +
                              std::to_string(AInput.Elements))
                                 .c_str());
        return;
      }
      Start = bench::ThreadSeconds();
      Tree = {};
      if (AFree)
        Elapsed += bench::ThreadSeconds() - Start;
    }
    AState.SetIterationTime(Elapsed);
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(AInput.Bytes.size()) * AInput.Rounds);
}

template <class Side>
void MeasureSave(benchmark::State& AState, const std::string& AKey, const Input& AInput,
                 bool AFormatted) {
  typename Side::Tree& Tree = TreeOf<Side>(AKey, AInput);
  const Facts& Expected = FactsOf[AKey];
  for (auto _ : AState) {
    double Elapsed = 0;
    for (int Round = 0; Round < AInput.Rounds; ++Round) {
      typename Side::Output Out = Side::Prepare(AInput.Bytes.size() * 2, AFormatted);
      const double Start = bench::ThreadSeconds();
      Side::Save(Tree, AFormatted, Out);
      Elapsed += bench::ThreadSeconds() - Start;
      if (Side::Text(Out).size() !=
          (AFormatted ? Expected.FormattedBytes : Expected.CompactBytes)) {
        AState.SkipWithError("the output is not as long as the checked one");
        return;
      }
    }
    AState.SetIterationTime(Elapsed);
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(AInput.Bytes.size()) * AInput.Rounds);
  if (AFormatted && ++FormattedSaveRuns[AKey] == Repetitions)
    Trees.erase(AKey);
}

/// Loads the document once, measuring the heap the tree takes and counting its elements, saves
/// it both ways and loads each output back, which must give the same count. False, with a
/// message, when a count differs.
template <class Side> bool CheckSide(const std::string& ASide, Input& AInput) {
  const std::string Key = ASide + "/" + AInput.Name;
  Facts& F = FactsOf[Key];
  const long long Before = bench::HeapInUse();
  typename Side::Tree Tree = Side::Load(AInput.Bytes);
  const long long After = bench::HeapInUse();
  if (Before >= 0)
    F.HeapPerInputByte = double(After - Before) / double(AInput.Bytes.size());
  const Int64 Count = Tree ? Side::CountElements(Tree) : -1;
  if (ASide == "Lorvane")
    AInput.Elements = Count;
  if (Count != AInput.Elements || Count <= 0) {
    std::fprintf(stderr, "%s: %lld elements, Lorvane's tree has %lld\n", Key.c_str(),
                 (long long)Count, (long long)AInput.Elements);
    return false;
  }
  std::string Texts[2];
  for (bool Formatted : {false, true}) {
    typename Side::Output Out = Side::Prepare(AInput.Bytes.size() * 2, Formatted);
    Side::Save(Tree, Formatted, Out);
    Texts[Formatted] = Side::Text(Out);
    (Formatted ? F.FormattedBytes : F.CompactBytes) = Texts[Formatted].size();
  }
  Tree = {};
  for (bool Formatted : {false, true}) {
    typename Side::Tree Again = Side::Load(Texts[Formatted]);
    const Int64 AgainCount = Again ? Side::CountElements(Again) : -1;
    if (AgainCount != Count) {
      std::fprintf(stderr, "%s: its %s output loads back with %lld elements instead of %lld\n",
                   Key.c_str(), Formatted ? "formatted" : "compact", (long long)AgainCount,
                   (long long)Count);
      return false;
    }
  }
  return true;
}

template <class Side> void RegisterSide(const std::string& ASide, const Input& AInput) {
  const std::string Key = ASide + "/" + AInput.Name;
  const auto Add = [&](Phase APhase, std::function<void(benchmark::State&)> AFunction) {
    benchmark::RegisterBenchmark(BenchName(ASide, AInput, APhase).c_str(), std::move(AFunction))
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(Repetitions)
        ->ReportAggregatesOnly(true);
  };
  Add(Phase::Load, [&AInput](benchmark::State& S) { MeasureLoadOrFree<Side>(S, AInput, false); });
  Add(Phase::Free, [&AInput](benchmark::State& S) { MeasureLoadOrFree<Side>(S, AInput, true); });
  Add(Phase::SaveCompact,
      [Key, &AInput](benchmark::State& S) { MeasureSave<Side>(S, Key, AInput, false); });
  Add(Phase::SaveFormatted,
      [Key, &AInput](benchmark::State& S) { MeasureSave<Side>(S, Key, AInput, true); });
}

template <class Side> bool AddSide(const std::string& ASide, std::vector<std::string>& ASides) {
  std::vector<const Input*> Read;
  for (Input& Doc : Inputs()) {
    if (CheckSide<Side>(ASide, Doc))
      Read.push_back(&Doc);
    else if (!Doc.Real || ASide == "Lorvane")
      return false;
    else
      std::fprintf(stderr, "note: %s is left out on %s\n", ASide.c_str(), Doc.Name.c_str());
  }
  for (const Input* Doc : Read)
    RegisterSide<Side>(ASide, *Doc);
  ASides.push_back(ASide);
  return true;
}

void PrintSummary(const std::map<std::string, double>& ATimes,
                  const std::vector<std::string>& ASides) {
  std::vector<bench::TTableDocument> Documents;
  for (const Input& Doc : Inputs())
    Documents.push_back({Doc.Name, Doc.Bytes.size() * std::size_t(Doc.Rounds)});
  bench::PrintThroughputTables(ATimes, ASides, Documents,
                               {PhaseNames[0], PhaseNames[1], PhaseNames[2], PhaseNames[3]},
                               Repetitions);

  std::printf("\nFreeing a tree, its time divided by its load time\n%-26s", "document");
  for (const std::string& Side : ASides)
    std::printf(" %12s", Side.c_str());
  std::printf("\n");
  for (const Input& Doc : Inputs()) {
    std::printf("%-26s", Doc.Name.c_str());
    for (const std::string& Side : ASides) {
      const std::string Key = Side + "/" + Doc.Name + "/";
      const auto Load = ATimes.find(Key + "load"), Free = ATimes.find(Key + "free");
      const bool Known = Load != ATimes.end() && Free != ATimes.end() && Load->second > 0;
      std::printf(" %12.2f", Known ? Free->second / Load->second : 0.0);
    }
    std::printf("\n");
  }

  std::printf("\nTree heap per input byte (mallinfo2 growth during the load); ratio ours / rival: "
              "above 1 Lorvane takes more\n");
  for (const Input& Doc : Inputs()) {
    const double Ours = FactsOf["Lorvane/" + Doc.Name].HeapPerInputByte;
    for (const std::string& Side : ASides) {
      const Facts& F = FactsOf[Side + "/" + Doc.Name];
      if (F.CompactBytes == 0)
        continue; // the side couldn't read this document
      std::printf("%-26s %8.2f", (Side + "/" + Doc.Name).c_str(), F.HeapPerInputByte);
      if (Side != "Lorvane")
        std::printf("   ratio %.2f", Ours / F.HeapPerInputByte);
      std::printf("   output bytes: compact %zu, formatted %zu\n", F.CompactBytes,
                  F.FormattedBytes);
    }
    std::printf("%-26s %8zu bytes, %lld elements, %d rounds per timed phase\n",
                ("input/" + Doc.Name).c_str(), Doc.Bytes.size(), (long long)Doc.Elements,
                Doc.Rounds);
  }
}

// --- the probe for callgrind ---------------------------------------------------------------------

[[gnu::noinline]] void ProbePhase(const std::string& APhase, const std::string& ABytes,
                                  LorvaneSide::Tree& ATree) {
  if (APhase == "load") {
    ATree = LorvaneSide::Load(ABytes);
  } else if (APhase == "free") {
    ATree = {};
  } else {
    LorvaneSide::Output Out = LorvaneSide::Prepare(ABytes.size() * 2, false);
    LorvaneSide::Save(ATree, APhase == "save-formatted", Out);
  }
}

/// Runs one phase of Lorvane's side once (--probe=DOC,MB,PHASE); gives the exit code.
int Probe(const std::string& ASpec) {
  const std::size_t Comma1 = ASpec.find(','), Comma2 = ASpec.rfind(',');
  if (Comma1 == std::string::npos || Comma2 == Comma1) {
    std::fprintf(stderr, "--probe=DOC,MB,PHASE\n");
    return EXIT_FAILURE;
  }
  const std::string Doc = ASpec.substr(0, Comma1), Phase = ASpec.substr(Comma2 + 1);
  const std::size_t Bytes = std::size_t(std::stod(ASpec.substr(Comma1 + 1)) * (1 << 20));
  const std::string Text = Doc == "records" ? bench::RecordsDocument(Bytes)
                           : Doc == "text"  ? bench::TextDocument(Bytes)
                           : Doc == "deep"  ? bench::DeepDocument(Bytes)
                                            : ReadFile(Doc.c_str());
  LorvaneSide::Tree Tree;
  if (Phase != "load")
    Tree = LorvaneSide::Load(Text);
  const long long Before = bench::HeapInUse();
  ProbePhase(Phase, Text, Tree);
  const long long Growth = bench::HeapInUse() - Before;
  std::printf("%s %s: %zu bytes, %lld elements, heap growth %.2f bytes per input byte\n",
              Doc.c_str(), Phase.c_str(), Text.size(),
              Tree ? (long long)LorvaneSide::CountElements(Tree) : 0LL,
              double(Growth) / double(Text.size()));
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
  for (int I = 1; I < argc; ++I)
    if (std::strncmp(argv[I], "--probe=", 8) == 0)
      return Probe(argv[I] + 8);
#ifdef LORVANE_BENCH_LIBXML2
  xmlInitParser();
#endif
  std::vector<std::string> Sides;
  // Lorvane's trees set the element counts that every rival must reach.
  if (!AddSide<LorvaneSide>("Lorvane", Sides))
    return EXIT_FAILURE;
#ifdef LORVANE_BENCH_PUGIXML
  if (!AddSide<PugixmlSide>("pugixml", Sides))
    return EXIT_FAILURE;
#endif
#ifdef LORVANE_BENCH_LIBXML2
  if (!AddSide<Libxml2Side>("libxml2", Sides))
    return EXIT_FAILURE;
#endif
#ifdef LORVANE_BENCH_TINYXML2
  if (!AddSide<Tinyxml2Side>("tinyxml2", Sides))
    return EXIT_FAILURE;
#endif

  ::benchmark::Initialize(&argc, argv);
  lorvane::bench::TimeCollector Reporter;
  ::benchmark::RunSpecifiedBenchmarks(&Reporter);
  PrintSummary(Reporter.Times, Sides);
  ::benchmark::Shutdown();
  Trees.clear();
#ifdef LORVANE_BENCH_LIBXML2
  xmlCleanupParser();
#endif
  return 0;
}
