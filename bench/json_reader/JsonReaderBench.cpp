// The JSON event reader over three 20 MB documents in memory, beside RapidJSON's Reader and
// nlohmann/json's SAX parser, each with a handler that only counts; ratios of the times.
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxJSON.h"
#include "support/JSONDocuments.h"
#include "support/Ratios.h"

#ifdef LORVANE_BENCH_RAPIDJSON
#include <rapidjson/reader.h>
#endif
#ifdef LORVANE_BENCH_NLOHMANN
#include <nlohmann/json.hpp>
#endif

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace lorvane;

const std::vector<std::pair<std::string, std::string>>& Inputs() {
  static const std::vector<std::pair<std::string, std::string>> Docs = {
      {"mixed", bench::MixedDocument()},
      {"numbers", bench::NumbersDocument()},
      {"strings", bench::StringsDocument()}};
  return Docs;
}

class TCounter : public TLxJSONDefaultHandler {
  LX_CLASS(TCounter, TLxJSONDefaultHandler)
  TCounter() { SetAutoDestroy(false); }
  long long Events = 0;
  void StartObject() override { ++Events; }
  void StartMember(const LxJSONString& AName) override { Events += 1 + (AName.size() & 1); }
  void StartArray() override { ++Events; }
  void Value(TLxJSONDataType, const LxJSONString& AValue) override {
    Events += 1 + (AValue.size() & 1);
  }

protected:
  ~TCounter() override = default;
};

void Lorvane(benchmark::State& AState, const std::string& AText) {
  TOwned<TCounter> Counter(New<TCounter>());
  TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
  Reader->SetContentHandler(Counter.get());
  Reader->SetErrorHandler(Counter.get());
  for (auto _ : AState)
    Reader->ParseBuffer(AText.data(), Cardinal(AText.size()), CP_UTF8);
  benchmark::DoNotOptimize(Counter->Events);
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(AText.size()));
  Reader.reset();
}

#ifdef LORVANE_BENCH_RAPIDJSON
struct TRapidCounter : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, TRapidCounter> {
  long long Events = 0;
  bool Default() { return ++Events, true; }
  bool String(const char*, rapidjson::SizeType ALength, bool) {
    return Events += 1 + (ALength & 1), true;
  }
  bool Key(const char*, rapidjson::SizeType ALength, bool) {
    return Events += 1 + (ALength & 1), true;
  }
};

void RapidJSON(benchmark::State& AState, const std::string& AText) {
  TRapidCounter Counter;
  for (auto _ : AState) {
    rapidjson::Reader Reader;
    rapidjson::StringStream Stream(AText.c_str());
    if (!Reader.Parse(Stream, Counter))
      AState.SkipWithError("RapidJSON refused the text");
  }
  benchmark::DoNotOptimize(Counter.Events);
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(AText.size()));
}
#endif

#ifdef LORVANE_BENCH_NLOHMANN
struct TNlohmannCounter : nlohmann::json_sax<nlohmann::json> {
  long long Events = 0;
  bool null() override { return ++Events, true; }
  bool boolean(bool) override { return ++Events, true; }
  bool number_integer(number_integer_t) override { return ++Events, true; }
  bool number_unsigned(number_unsigned_t) override { return ++Events, true; }
  bool number_float(number_float_t, const string_t&) override { return ++Events, true; }
  bool string(string_t& AValue) override { return Events += 1 + (AValue.size() & 1), true; }
  bool binary(binary_t&) override { return ++Events, true; }
  bool start_object(std::size_t) override { return ++Events, true; }
  bool key(string_t& AName) override { return Events += 1 + (AName.size() & 1), true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return ++Events, true; }
  bool end_array() override { return true; }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
    return false;
  }
};

void Nlohmann(benchmark::State& AState, const std::string& AText) {
  TNlohmannCounter Counter;
  for (auto _ : AState)
    if (!nlohmann::json::sax_parse(AText, &Counter))
      AState.SkipWithError("nlohmann refused the text");
  benchmark::DoNotOptimize(Counter.Events);
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(AText.size()));
}
#endif

} // namespace

int main(int argc, char** argv) {
  std::vector<std::pair<std::string, std::string>> Pairs;
  for (const auto& [Name, Text] : Inputs()) {
    const auto Add = [&](const std::string& ASide,
                         void (*ARun)(benchmark::State&, const std::string&)) {
      benchmark::RegisterBenchmark((ASide + "/" + Name).c_str(), ARun, Text)
          ->Unit(benchmark::kMillisecond)
          ->MeasureProcessCPUTime()
          ->Repetitions(3)
          ->ReportAggregatesOnly(true);
    };
    Add("Lorvane", Lorvane);
#ifdef LORVANE_BENCH_RAPIDJSON
    Add("RapidJSON", RapidJSON);
    Pairs.emplace_back("Lorvane/" + Name, "RapidJSON/" + Name);
#endif
#ifdef LORVANE_BENCH_NLOHMANN
    Add("nlohmann", Nlohmann);
    Pairs.emplace_back("Lorvane/" + Name, "nlohmann/" + Name);
#endif
  }
  return lorvane::bench::RunWithRatios(argc, argv, Pairs);
}
