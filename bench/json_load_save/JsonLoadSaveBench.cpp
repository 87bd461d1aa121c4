// Loading three 20 MB JSON documents from memory into a value tree and writing the tree back,
// compact and formatted, beside RapidJSON, nlohmann/json and simdjson (loading only) on the same
// bytes; CPU time of each phase and the heap the tree takes per input byte.
#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxJSON.h"
#include "support/JSONDocuments.h"
#include "support/Ratios.h"
#include "support/Throughput.h"

#ifdef LORVANE_BENCH_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif
#ifdef LORVANE_BENCH_NLOHMANN
#include <nlohmann/json.hpp>
#endif
#ifdef LORVANE_BENCH_SIMDJSON
#include <simdjson.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace lorvane;

constexpr int Repetitions = 5;

struct Input {
  std::string Name;
  std::string Bytes;
  long long Values = 0; // as Lorvane's tree has them; every other tree must agree
};

std::vector<Input>& Inputs() {
  static std::vector<Input> Docs = [] {
    std::vector<Input> D;
    D.push_back({"mixed", bench::MixedDocument()});
    D.push_back({"numbers", bench::NumbersDocument()});
    D.push_back({"strings", bench::StringsDocument()});
    for (bench::TJSONFile& File : bench::JSONFileDocuments())
      D.push_back({File.Name, std::move(File.Bytes)});
    return D;
  }();
  return Docs;
}

// --- the sides: Load (bytes to tree, empty on failure), CountValues, Save ------------------------

struct LorvaneSide {
  using Tree = TOwned<TLxJSONDocument>;
  static constexpr bool Saves = true;

  static Tree Load(const std::string& ABytes) {
    Tree Doc(New<TLxJSONDocument>());
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(ABytes.data()), Int64(ABytes.size())));
    Doc->LoadFromStream(Stream.get(), CP_UTF8, /*AIsUrlFormEncoded=*/false);
    return Doc;
  }
  static long long CountValues(const Tree& ADoc) {
    long long Count = 0;
    std::vector<TLxJSONBase*> Pending;
    if (TLxJSONBase* Root = ADoc->GetRootValue())
      Pending.push_back(Root);
    while (!Pending.empty()) {
      TLxJSONBase* Value = Pending.back();
      Pending.pop_back();
      ++Count;
      if (Value->GetJSONType() == jdtObject)
        for (Integer I = 0; I < Value->Count(); ++I)
          Pending.push_back(Value->Item(I)->GetValueObj());
      else if (Value->GetJSONType() == jdtArray)
        for (Integer I = 0; I < Value->Count(); ++I)
          Pending.push_back(Value->Item(I));
    }
    return Count;
  }
  static std::size_t Save(Tree& ADoc, bool AFormatted, std::size_t AReserve) {
    TOwned<TLxMemoryStream> Out(New<TLxMemoryStream>(Int64(AReserve)));
    ADoc->SaveToStream(Out.get(), AFormatted, CP_UTF8, /*AWriteBOM=*/false);
    return std::size_t(Out->GetSize());
  }
};

#ifdef LORVANE_BENCH_RAPIDJSON
struct RapidJSONSide {
  using Tree = std::unique_ptr<rapidjson::Document>;
  static constexpr bool Saves = true;

  static Tree Load(const std::string& ABytes) {
    auto Doc = std::make_unique<rapidjson::Document>();
    Doc->Parse(ABytes.data(), ABytes.size());
    if (Doc->HasParseError())
      Doc.reset();
    return Doc;
  }
  static long long CountBelow(const rapidjson::Value& AValue) {
    long long Count = 1;
    if (AValue.IsObject())
      for (const auto& Member : AValue.GetObject())
        Count += CountBelow(Member.value);
    else if (AValue.IsArray())
      for (const auto& Item : AValue.GetArray())
        Count += CountBelow(Item);
    return Count;
  }
  static long long CountValues(const Tree& ADoc) { return CountBelow(*ADoc); }
  static std::size_t Save(Tree& ADoc, bool AFormatted, std::size_t AReserve) {
    rapidjson::StringBuffer Out(nullptr, AReserve);
    if (AFormatted) {
      rapidjson::PrettyWriter<rapidjson::StringBuffer> Writer(Out);
      Writer.SetIndent(' ', 2);
      ADoc->Accept(Writer);
    } else {
      rapidjson::Writer<rapidjson::StringBuffer> Writer(Out);
      ADoc->Accept(Writer);
    }
    return Out.GetSize();
  }
};
#endif

#ifdef LORVANE_BENCH_NLOHMANN
struct NlohmannSide {
  using Tree = std::unique_ptr<nlohmann::json>;
  static constexpr bool Saves = true;

  static Tree Load(const std::string& ABytes) {
    return std::make_unique<nlohmann::json>(nlohmann::json::parse(ABytes, nullptr, false));
  }
  static long long CountBelow(const nlohmann::json& AValue) {
    if (AValue.is_discarded())
      return -1;
    long long Count = 1;
    if (AValue.is_structured())
      for (const auto& Item : AValue)
        Count += CountBelow(Item);
    return Count;
  }
  static long long CountValues(const Tree& ADoc) { return CountBelow(*ADoc); }
  static std::size_t Save(Tree& ADoc, bool AFormatted, std::size_t) {
    return ADoc->dump(AFormatted ? 2 : -1).size();
  }
};
#endif

#ifdef LORVANE_BENCH_SIMDJSON
struct SimdjsonSide {
  // The parser owns the document it parsed last; the input is copied into padding once.
  struct Parsed {
    simdjson::dom::parser Parser;
    simdjson::dom::element Root;
  };
  using Tree = std::unique_ptr<Parsed>;
  static constexpr bool Saves = false;

  static Tree Load(const std::string& ABytes) {
    static std::map<const std::string*, simdjson::padded_string> Padded;
    auto& Text = Padded[&ABytes];
    if (Text.size() != ABytes.size())
      Text = simdjson::padded_string(ABytes);
    auto Result = std::make_unique<Parsed>();
    if (Result->Parser.parse(Text).get(Result->Root) != simdjson::SUCCESS)
      Result.reset();
    return Result;
  }
  static long long CountBelow(simdjson::dom::element AValue) {
    long long Count = 1;
    if (AValue.is_object())
      for (auto Field : AValue.get_object())
        Count += CountBelow(Field.value);
    else if (AValue.is_array())
      for (auto Item : AValue.get_array())
        Count += CountBelow(Item);
    return Count;
  }
  static long long CountValues(const Tree& ATree) { return CountBelow(ATree->Root); }
  static std::size_t Save(Tree&, bool, std::size_t) { return 0; }
};
#endif

// --- measurements -------------------------------------------------------------------------------

enum class Phase { Load, SaveCompact, SaveFormatted };
const char* const PhaseNames[] = {"load", "save compact", "save formatted"};

std::string BenchName(const std::string& ASide, const Input& AInput, Phase APhase) {
  return ASide + "/" + AInput.Name + "/" + PhaseNames[int(APhase)];
}

std::map<std::string, double> HeapPerInputByte;

/// The heap that one load of AInput keeps, measured in a child process, so that memory an
/// allocator kept from earlier trees doesn't hide it.
template <class Side> double MeasureHeap(const Input& AInput) {
  int Pipe[2];
  if (pipe(Pipe) != 0)
    return -1;
  const pid_t Child = fork();
  if (Child == 0) {
    const long long Before = bench::HeapInUse();
    typename Side::Tree Tree = Side::Load(AInput.Bytes);
    const double PerByte = double(bench::HeapInUse() - Before) / double(AInput.Bytes.size());
    ssize_t Written = write(Pipe[1], &PerByte, sizeof PerByte);
    _exit(Written == sizeof PerByte ? 0 : 1);
  }
  double PerByte = -1;
  if (read(Pipe[0], &PerByte, sizeof PerByte) != sizeof PerByte)
    PerByte = -1;
  close(Pipe[0]);
  close(Pipe[1]);
  waitpid(Child, nullptr, 0);
  return PerByte;
}

template <class Side> bool CheckSide(const std::string& ASide, Input& AInput) {
  typename Side::Tree Tree = Side::Load(AInput.Bytes);
  const long long Count = Tree ? Side::CountValues(Tree) : -1;
  if (ASide == "Lorvane")
    AInput.Values = Count;
  if (Count != AInput.Values || Count <= 0) {
    std::fprintf(stderr, "%s/%s: %lld values, Lorvane's tree has %lld\n", ASide.c_str(),
                 AInput.Name.c_str(), Count, AInput.Values);
    return false;
  }
  HeapPerInputByte[ASide + "/" + AInput.Name] = MeasureHeap<Side>(AInput);
  return true;
}

template <class Side> void MeasureLoad(benchmark::State& AState, const Input& AInput) {
  for (auto _ : AState) {
    const double Start = bench::ThreadSeconds();
    typename Side::Tree Tree = Side::Load(AInput.Bytes);
    AState.SetIterationTime(bench::ThreadSeconds() - Start);
    if (!Tree) {
      AState.SkipWithError("the document didn't load");
      break;
    }
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(AInput.Bytes.size()));
}

template <class Side>
void MeasureSave(benchmark::State& AState, const Input& AInput, bool AFormatted) {
  typename Side::Tree Tree = Side::Load(AInput.Bytes);
  for (auto _ : AState) {
    const double Start = bench::ThreadSeconds();
    const std::size_t Written = Side::Save(Tree, AFormatted, AInput.Bytes.size() * 2);
    AState.SetIterationTime(bench::ThreadSeconds() - Start);
    if (Written < AInput.Bytes.size() / 8) { // indented input shrinks a lot when compact
      AState.SkipWithError("the output is too short");
      break;
    }
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(AInput.Bytes.size()));
}

template <class Side> bool AddSide(const std::string& ASide, std::vector<std::string>& ASides) {
  for (Input& Doc : Inputs())
    if (!CheckSide<Side>(ASide, Doc))
      return false;
  for (const Input& Doc : Inputs()) {
    const auto Add = [&](Phase APhase, std::function<void(benchmark::State&)> AFunction) {
      benchmark::RegisterBenchmark(BenchName(ASide, Doc, APhase).c_str(), std::move(AFunction))
          ->Unit(benchmark::kMillisecond)
          ->UseManualTime()
          ->Iterations(1)
          ->Repetitions(Repetitions)
          ->ReportAggregatesOnly(true);
    };
    Add(Phase::Load, [&Doc](benchmark::State& S) { MeasureLoad<Side>(S, Doc); });
    if (Side::Saves) {
      Add(Phase::SaveCompact, [&Doc](benchmark::State& S) { MeasureSave<Side>(S, Doc, false); });
      Add(Phase::SaveFormatted, [&Doc](benchmark::State& S) { MeasureSave<Side>(S, Doc, true); });
    }
  }
  ASides.push_back(ASide);
  return true;
}

void PrintSummary(const std::map<std::string, double>& ATimes,
                  const std::vector<std::string>& ASides) {
  std::vector<bench::TTableDocument> Documents;
  for (const Input& Doc : Inputs())
    Documents.push_back({Doc.Name, Doc.Bytes.size()});
  bench::PrintThroughputTables(ATimes, ASides, Documents,
                               {PhaseNames[0], PhaseNames[1], PhaseNames[2]}, Repetitions);

  std::printf("\nTree heap per input byte (mallinfo2 growth during one load in a fresh process); "
              "ratio ours / rival: above 1 Lorvane takes more\n");
  for (const Input& Doc : Inputs()) {
    const double Ours = HeapPerInputByte["Lorvane/" + Doc.Name];
    for (const std::string& Side : ASides) {
      const double Theirs = HeapPerInputByte[Side + "/" + Doc.Name];
      std::printf("%-26s %8.2f", (Side + "/" + Doc.Name).c_str(), Theirs);
      if (Side != "Lorvane" && Theirs > 0)
        std::printf("   ratio %.2f", Ours / Theirs);
      std::printf("\n");
    }
    std::printf("%-26s %8zu bytes, %lld values\n", ("input/" + Doc.Name).c_str(), Doc.Bytes.size(),
                Doc.Values);
  }
}

/// One load (or save) of one document by one side and nothing else, for instruction counts:
/// valgrind --tool=callgrind --toggle-collect='*CallgrindRun*' bench_json_load_save
/// --callgrind=SIDE:PHASE:DOCUMENT, SIDE lorvane, rapidjson or nlohmann, PHASE load, compact or
/// formatted, DOCUMENT a generated one (cut to 2 MB) or a file's name.
template <class Side>
[[gnu::noinline]] std::size_t CallgrindRun(typename Side::Tree& ATree, const std::string& ABytes,
                                           const std::string& APhase) {
  if (APhase == "load") {
    ATree = Side::Load(ABytes);
    return ATree ? 1 : 0;
  }
  return Side::Save(ATree, APhase == "formatted", ABytes.size() * 2);
}

template <class Side> int CallgrindSide(const std::string& APhase, const std::string& ABytes) {
  typename Side::Tree Tree;
  if (APhase != "load")
    Tree = Side::Load(ABytes);
  const std::size_t Result = CallgrindRun<Side>(Tree, ABytes, APhase);
  std::printf("%zu input bytes, result %zu\n", ABytes.size(), Result);
  return Result ? EXIT_SUCCESS : EXIT_FAILURE;
}

int CallgrindMain(const std::string& AWhat) {
  const std::size_t Colon1 = AWhat.find(':'), Colon2 = AWhat.find(':', Colon1 + 1);
  if (Colon1 == std::string::npos || Colon2 == std::string::npos)
    return EXIT_FAILURE;
  const std::string Side = AWhat.substr(0, Colon1);
  const std::string Phase = AWhat.substr(Colon1 + 1, Colon2 - Colon1 - 1);
  const std::string Name = AWhat.substr(Colon2 + 1);
  constexpr std::size_t Small = 2 * 1024 * 1024;
  std::string Bytes = Name == "mixed"     ? bench::MixedDocument(Small)
                      : Name == "numbers" ? bench::NumbersDocument(Small)
                      : Name == "strings" ? bench::StringsDocument(Small)
                                          : std::string();
  if (Bytes.empty())
    for (bench::TJSONFile& File : bench::JSONFileDocuments())
      if (File.Name == Name)
        Bytes = std::move(File.Bytes);
  if (Bytes.empty())
    return EXIT_FAILURE;
  if (Side == "lorvane")
    return CallgrindSide<LorvaneSide>(Phase, Bytes);
#ifdef LORVANE_BENCH_RAPIDJSON
  if (Side == "rapidjson")
    return CallgrindSide<RapidJSONSide>(Phase, Bytes);
#endif
#ifdef LORVANE_BENCH_NLOHMANN
  if (Side == "nlohmann")
    return CallgrindSide<NlohmannSide>(Phase, Bytes);
#endif
  return EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]).rfind("--callgrind=", 0) == 0)
    return CallgrindMain(std::string(argv[1]).substr(12));
  std::vector<std::string> Sides;
  if (!AddSide<LorvaneSide>("Lorvane", Sides))
    return EXIT_FAILURE;
#ifdef LORVANE_BENCH_RAPIDJSON
  if (!AddSide<RapidJSONSide>("RapidJSON", Sides))
    return EXIT_FAILURE;
#endif
#ifdef LORVANE_BENCH_NLOHMANN
  if (!AddSide<NlohmannSide>("nlohmann", Sides))
    return EXIT_FAILURE;
#endif
#ifdef LORVANE_BENCH_SIMDJSON
  if (!AddSide<SimdjsonSide>("simdjson", Sides))
    return EXIT_FAILURE;
#endif
  ::benchmark::Initialize(&argc, argv);
  lorvane::bench::TimeCollector Reporter;
  ::benchmark::RunSpecifiedBenchmarks(&Reporter);
  PrintSummary(Reporter.Times, Sides);
  ::benchmark::Shutdown();
  return 0;
}
