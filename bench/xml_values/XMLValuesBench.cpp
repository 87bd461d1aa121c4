// Integers, floats and date-times to XML Schema text and back, per call, beside std::from_chars and
// std::to_chars on the same values (the rivals' date-times go through std::chrono).
#include "lorvane/uLxXMLUtils.h"
#include "support/Ratios.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace lorvane;
namespace chr = std::chrono;

constexpr std::size_t Count = 1024;

struct Sample {
  std::vector<Integer> Ints;
  std::vector<double> Doubles;
  std::vector<double> Moments;
  std::vector<UnicodeString> IntTexts, DoubleTexts, MomentTexts;
  std::vector<std::string> IntChars, DoubleChars, MomentChars;
};

const Sample& Values() {
  static const Sample S = [] {
    Sample R;
    std::mt19937_64 Random(7);
    for (std::size_t I = 0; I < Count; ++I) {
      R.Ints.push_back(static_cast<Integer>(Random()) >> (Random() % 31));
      R.Doubles.push_back(std::ldexp(static_cast<double>(Random() % 100000000) - 5e7,
                                     static_cast<int>(Random() % 40) - 30));
      R.Moments.push_back(
          EncodeDateTime(static_cast<Word>(1950 + Random() % 100),
                         static_cast<Word>(1 + Random() % 12), static_cast<Word>(1 + Random() % 28),
                         static_cast<Word>(Random() % 24), static_cast<Word>(Random() % 60),
                         static_cast<Word>(Random() % 60), static_cast<Word>(Random() % 1000)));
      R.IntTexts.push_back(LxIntToXML(R.Ints.back()));
      R.DoubleTexts.push_back(LxDoubleToXML(R.Doubles.back()));
      R.MomentTexts.push_back(LxDateTimeToXML(R.Moments.back(), tzfNone));
      R.IntChars.push_back(StringToUTF8(R.IntTexts.back()));
      R.DoubleChars.push_back(StringToUTF8(R.DoubleTexts.back()));
      R.MomentChars.push_back(StringToUTF8(R.MomentTexts.back()));
    }
    return R;
  }();
  return S;
}

// --- the rivals ----------------------------------------------------------------------------------
constexpr chr::sys_days DayZero = chr::sys_days(chr::year(1899) / 12 / 30);

int ParseField(const char* AFirst, int ALength) {
  int Value = 0;
  std::from_chars(AFirst, AFirst + ALength, Value);
  return Value;
}

// "yyyy-mm-ddThh:mm:ss.mmm" with from_chars per field, then days and milliseconds by chrono.
double ChronoFromText(const std::string& AText) {
  const char* P = AText.data();
  const chr::year_month_day Date{chr::year(ParseField(P, 4)),
                                 chr::month(static_cast<unsigned>(ParseField(P + 5, 2))),
                                 chr::day(static_cast<unsigned>(ParseField(P + 8, 2)))};
  const long MSecs =
      ((ParseField(P + 11, 2) * 60L + ParseField(P + 14, 2)) * 60 + ParseField(P + 17, 2)) * 1000 +
      ParseField(P + 20, 3);
  return static_cast<double>((chr::sys_days(Date) - DayZero).count()) + MSecs / 86400000.0;
}

char* PutPadded(char* AOut, int AValue, int AWidth) {
  char Digits[12];
  const int Length = static_cast<int>(std::to_chars(Digits, Digits + 12, AValue).ptr - Digits);
  for (int I = Length; I < AWidth; ++I)
    *AOut++ = '0';
  for (int I = 0; I < Length; ++I)
    *AOut++ = Digits[I];
  return AOut;
}

// The day and time by chrono, each field by to_chars.
std::size_t ChronoToText(double AValue, char* AOut) {
  const long long MSecs = std::llround(AValue * 86400000.0);
  const chr::sys_time<chr::milliseconds> Moment = DayZero + chr::milliseconds(MSecs);
  const chr::sys_days Day = chr::floor<chr::days>(Moment);
  const chr::year_month_day Date(Day);
  const chr::hh_mm_ss Time(Moment - Day);
  char* P = AOut;
  P = PutPadded(P, static_cast<int>(Date.year()), 4);
  *P++ = '-';
  P = PutPadded(P, static_cast<int>(static_cast<unsigned>(Date.month())), 2);
  *P++ = '-';
  P = PutPadded(P, static_cast<int>(static_cast<unsigned>(Date.day())), 2);
  *P++ = 'T';
  P = PutPadded(P, static_cast<int>(Time.hours().count()), 2);
  *P++ = ':';
  P = PutPadded(P, static_cast<int>(Time.minutes().count()), 2);
  *P++ = ':';
  P = PutPadded(P, static_cast<int>(Time.seconds().count()), 2);
  *P++ = '.';
  P = PutPadded(P, static_cast<int>(Time.subseconds().count()), 3);
  return static_cast<std::size_t>(P - AOut);
}

// The rivals' text as the same result type as ours, for the "with string" rows.
UnicodeString Widen(const char* AText, std::size_t ALength) {
  return UnicodeString(AText, AText + ALength);
}

// --- text to value -------------------------------------------------------------------------------
void Lorvane_XMLToInt(benchmark::State& AState) {
  for (auto _ : AState)
    for (const UnicodeString& Text : Values().IntTexts)
      benchmark::DoNotOptimize(LxXMLToInt(Text));
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_FromCharsInt(benchmark::State& AState) {
  for (auto _ : AState)
    for (const std::string& Text : Values().IntChars) {
      int Value = 0;
      std::from_chars(Text.data(), Text.data() + Text.size(), Value);
      benchmark::DoNotOptimize(Value);
    }
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Lorvane_XMLToDouble(benchmark::State& AState) {
  for (auto _ : AState)
    for (const UnicodeString& Text : Values().DoubleTexts)
      benchmark::DoNotOptimize(LxXMLToDouble(Text));
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_FromCharsDouble(benchmark::State& AState) {
  for (auto _ : AState)
    for (const std::string& Text : Values().DoubleChars) {
      double Value = 0;
      std::from_chars(Text.data(), Text.data() + Text.size(), Value);
      benchmark::DoNotOptimize(Value);
    }
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Lorvane_XMLToDateTime(benchmark::State& AState) {
  for (auto _ : AState)
    for (const UnicodeString& Text : Values().MomentTexts)
      benchmark::DoNotOptimize(LxXMLToDateTime(Text, tzfNone));
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_FromCharsDateTime(benchmark::State& AState) {
  for (auto _ : AState)
    for (const std::string& Text : Values().MomentChars)
      benchmark::DoNotOptimize(ChronoFromText(Text));
  AState.SetItemsProcessed(AState.iterations() * Count);
}

// --- value to text -------------------------------------------------------------------------------
void Lorvane_IntToXML(benchmark::State& AState) {
  for (auto _ : AState)
    for (Integer Value : Values().Ints)
      benchmark::DoNotOptimize(LxIntToXML(Value));
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_ToCharsInt(benchmark::State& AState) {
  char Buffer[16];
  for (auto _ : AState)
    for (Integer Value : Values().Ints) {
      benchmark::DoNotOptimize(std::to_chars(Buffer, Buffer + 16, Value).ptr);
      benchmark::ClobberMemory();
    }
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_ToCharsIntString(benchmark::State& AState) {
  char Buffer[16];
  for (auto _ : AState)
    for (Integer Value : Values().Ints)
      benchmark::DoNotOptimize(
          Widen(Buffer, std::to_chars(Buffer, Buffer + 16, Value).ptr - Buffer));
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Lorvane_DoubleToXML(benchmark::State& AState) {
  for (auto _ : AState)
    for (double Value : Values().Doubles)
      benchmark::DoNotOptimize(LxDoubleToXML(Value));
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_ToCharsDouble(benchmark::State& AState) {
  char Buffer[32];
  for (auto _ : AState)
    for (double Value : Values().Doubles) {
      benchmark::DoNotOptimize(
          std::to_chars(Buffer, Buffer + 32, Value, std::chars_format::general, 15).ptr);
      benchmark::ClobberMemory();
    }
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_ToCharsDoubleString(benchmark::State& AState) {
  char Buffer[32];
  for (auto _ : AState)
    for (double Value : Values().Doubles)
      benchmark::DoNotOptimize(Widen(
          Buffer,
          std::to_chars(Buffer, Buffer + 32, Value, std::chars_format::general, 15).ptr - Buffer));
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Lorvane_DateTimeToXML(benchmark::State& AState) {
  for (auto _ : AState)
    for (double Value : Values().Moments)
      benchmark::DoNotOptimize(LxDateTimeToXML(Value, tzfNone));
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_ToCharsDateTime(benchmark::State& AState) {
  char Buffer[32];
  for (auto _ : AState)
    for (double Value : Values().Moments) {
      benchmark::DoNotOptimize(ChronoToText(Value, Buffer));
      benchmark::ClobberMemory();
    }
  AState.SetItemsProcessed(AState.iterations() * Count);
}
void Rival_ToCharsDateTimeString(benchmark::State& AState) {
  char Buffer[32];
  for (auto _ : AState)
    for (double Value : Values().Moments)
      benchmark::DoNotOptimize(Widen(Buffer, ChronoToText(Value, Buffer)));
  AState.SetItemsProcessed(AState.iterations() * Count);
}

BENCHMARK(Lorvane_XMLToInt);
BENCHMARK(Rival_FromCharsInt);
BENCHMARK(Lorvane_XMLToDouble);
BENCHMARK(Rival_FromCharsDouble);
BENCHMARK(Lorvane_XMLToDateTime);
BENCHMARK(Rival_FromCharsDateTime);
BENCHMARK(Lorvane_IntToXML);
BENCHMARK(Rival_ToCharsInt);
BENCHMARK(Rival_ToCharsIntString);
BENCHMARK(Lorvane_DoubleToXML);
BENCHMARK(Rival_ToCharsDouble);
BENCHMARK(Rival_ToCharsDoubleString);
BENCHMARK(Lorvane_DateTimeToXML);
BENCHMARK(Rival_ToCharsDateTime);
BENCHMARK(Rival_ToCharsDateTimeString);

// Every rival must compute what Lorvane computes before its time counts.
bool RivalsAgree() {
  const Sample& S = Values();
  for (std::size_t I = 0; I < Count; ++I) {
    int Int = 0;
    double Double = 0;
    const std::string& IntText = S.IntChars[I];
    const std::string& DoubleText = S.DoubleChars[I];
    std::from_chars(IntText.data(), IntText.data() + IntText.size(), Int);
    std::from_chars(DoubleText.data(), DoubleText.data() + DoubleText.size(), Double);
    char Buffer[32];
    const std::size_t Length = ChronoToText(S.Moments[I], Buffer);
    if (Int != LxXMLToInt(S.IntTexts[I]) || Double != LxXMLToDouble(S.DoubleTexts[I]) ||
        ChronoFromText(S.MomentChars[I]) != LxXMLToDateTime(S.MomentTexts[I], tzfNone) ||
        Widen(Buffer, Length) != S.MomentTexts[I]) {
      std::fprintf(stderr, "rival disagrees on sample %zu\n", I);
      return false;
    }
  }
  return true;
}

} // namespace

int main(int argc, char** argv) {
  setenv("TZ", "UTC", 1);
  if (!RivalsAgree())
    return 1;
  return lorvane::bench::RunWithRatios(argc, argv,
                                       {{"Lorvane_XMLToInt", "Rival_FromCharsInt"},
                                        {"Lorvane_XMLToDouble", "Rival_FromCharsDouble"},
                                        {"Lorvane_XMLToDateTime", "Rival_FromCharsDateTime"},
                                        {"Lorvane_IntToXML", "Rival_ToCharsInt"},
                                        {"Lorvane_IntToXML", "Rival_ToCharsIntString"},
                                        {"Lorvane_DoubleToXML", "Rival_ToCharsDouble"},
                                        {"Lorvane_DoubleToXML", "Rival_ToCharsDoubleString"},
                                        {"Lorvane_DateTimeToXML", "Rival_ToCharsDateTime"},
                                        {"Lorvane_DateTimeToXML", "Rival_ToCharsDateTimeString"}});
}
