/// What the load and save benchmarks share: CPU time of the calling thread, the heap in use, and
/// the tables of throughput and speed ratios that they print after Google Benchmark's own.
/// Benchmarks are named "<side>/<document>/<phase>", and the first side is Lorvane.
#pragma once

#include <cstddef>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <time.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace lorvane::bench {

/// The calling thread's CPU time in seconds: wall time on a shared machine counts the waits for a
/// core.
inline double ThreadSeconds() {
  timespec T{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &T);
  return double(T.tv_sec) + double(T.tv_nsec) * 1e-9;
}

/// Bytes the heap hands out at the moment, small blocks and mapped ones; -1 where it can't tell.
inline long long HeapInUse() {
#if defined(__GLIBC__)
  const struct mallinfo2 M = mallinfo2();
  return static_cast<long long>(M.uordblks + M.hblkhd);
#else
  return -1;
#endif
}

struct TTableDocument {
  std::string Name;
  std::size_t Bytes;
};

/// MiB/s of each side for each document and phase, then Lorvane's speed divided by each rival's
/// (above 1 Lorvane is faster). ATimes holds milliseconds by benchmark name; a phase a side
/// doesn't run shows 0.
inline void PrintThroughputTables(const std::map<std::string, double>& ATimes,
                                  const std::vector<std::string>& ASides,
                                  const std::vector<TTableDocument>& ADocuments,
                                  const std::vector<std::string>& APhases, int ARepetitions) {
  const auto MiBPerSecond = [&](const std::string& ASide, const TTableDocument& ADoc,
                                const std::string& APhase) {
    const auto It = ATimes.find(ASide + "/" + ADoc.Name + "/" + APhase);
    return It == ATimes.end() || It->second <= 0
               ? 0.0
               : double(ADoc.Bytes) / (It->second / 1e3) / double(1 << 20);
  };
  std::printf("\nThroughput in MiB/s of the input document (median CPU time of %d runs)\n",
              ARepetitions);
  std::printf("%-26s", "document / phase");
  for (const std::string& Side : ASides)
    std::printf(" %12s", Side.c_str());
  std::printf("\n");
  for (const TTableDocument& Doc : ADocuments)
    for (const std::string& Phase : APhases) {
      std::printf("%-26s", (Doc.Name + " / " + Phase).c_str());
      for (const std::string& Side : ASides)
        std::printf(" %12.1f", MiBPerSecond(Side, Doc, Phase));
      std::printf("\n");
    }

  std::printf("\nSpeed ratio, Lorvane's MiB/s divided by the rival's: above 1 Lorvane is faster\n");
  std::printf("%-26s", "document / phase");
  for (std::size_t I = 1; I < ASides.size(); ++I)
    std::printf(" %12s", ("vs " + ASides[I]).c_str());
  std::printf("\n");
  for (const TTableDocument& Doc : ADocuments)
    for (const std::string& Phase : APhases) {
      std::printf("%-26s", (Doc.Name + " / " + Phase).c_str());
      const double Ours = MiBPerSecond(ASides[0], Doc, Phase);
      for (std::size_t I = 1; I < ASides.size(); ++I) {
        const double Theirs = MiBPerSecond(ASides[I], Doc, Phase);
        std::printf(" %12.2f", Theirs > 0 ? Ours / Theirs : 0.0);
      }
      std::printf("\n");
    }
}

} // namespace lorvane::bench
