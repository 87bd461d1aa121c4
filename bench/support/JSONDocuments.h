/// Generated JSON documents of about 20 MiB for the benchmarks, the same bytes on every run:
///   MixedDocument    an array of records: numbers, strings, booleans, nulls, nested objects
///                    and arrays
///   NumbersDocument  arrays of integers and floats
///   StringsDocument  objects of long strings with escapes and non-ASCII text
/// and real documents read from files where they are installed (JSONFileDocuments).
#pragma once

#include "support/Documents.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace lorvane::bench {

inline const char* const JSONWords[] = {
    "alpha",          "beta",    "caf\xC3\xA9", "na\xC3\xAFve",    "\\\"quoted\\\"",
    "back\\\\slash",  "line\\n", "tab\\t",      "\\u00e9t\\u00e9", "\xE6\x97\xA5\xE6\x9C\xAC",
    "\\ud83d\\ude00", "plain",   "text"};

inline std::string MixedDocument(std::size_t ABytes = DocumentBytes) {
  Sequence Seq;
  std::string S = "[";
  S.reserve(ABytes + 4096);
  for (int Id = 0; S.size() < ABytes; ++Id) {
    if (Id)
      S += ",\n";
    S += "{\"id\": " + std::to_string(Id) + ", \"name\": \"user" +
         std::to_string(Seq.Next(1000000)) + "\", \"score\": " + std::to_string(Seq.Next(100000)) +
         "." + std::to_string(Seq.Next(100)) + ", \"active\": " + (Seq.Next(2) ? "true" : "false") +
         ", \"tags\": [\"t" + std::to_string(Seq.Next(50)) + "\", \"t" +
         std::to_string(Seq.Next(50)) +
         "\"], \"note\": null, \"address\": " + "{\"city\": \"City " +
         std::to_string(Seq.Next(1000)) + "\", \"zip\": \"" +
         std::to_string(10000 + Seq.Next(89999)) + "\"}}";
  }
  return S + "]";
}

inline std::string NumbersDocument(std::size_t ABytes = DocumentBytes) {
  Sequence Seq;
  std::string S = "[";
  S.reserve(ABytes + 4096);
  for (int Row = 0; S.size() < ABytes; ++Row) {
    S += Row ? ",\n[" : "[";
    for (int I = 0; I < 16; ++I) {
      if (I)
        S += ", ";
      if (Seq.Next(2))
        S += std::to_string(int(Seq.Next(2000000)) - 1000000);
      else
        S += std::to_string(Seq.Next(100000)) + "." + std::to_string(Seq.Next(1000000)) + "e" +
             std::to_string(int(Seq.Next(20)) - 10);
    }
    S += "]";
  }
  return S + "]";
}

inline std::string StringsDocument(std::size_t ABytes = DocumentBytes) {
  Sequence Seq;
  std::string S = "[";
  S.reserve(ABytes + 4096);
  for (int Id = 0; S.size() < ABytes; ++Id) {
    S += Id ? ",\n{\"text\": \"" : "{\"text\": \"";
    const int Count = 10 + int(Seq.Next(40));
    for (int I = 0; I < Count; ++I) {
      if (I)
        S += ' ';
      S += JSONWords[Seq.Next(std::size(JSONWords))];
    }
    S += "\", \"title\": \"";
    S += JSONWords[Seq.Next(std::size(JSONWords))];
    S += "\"}";
  }
  return S + "]";
}

struct TJSONFile {
  std::string Name;
  std::string Bytes;
};

/// Where the examples of real JSON (twitter.json, citm_catalog.json, canada.json) are unpacked;
/// the bench script fetches them, nothing in the repository carries them.
#ifndef LORVANE_BENCH_JSON_EXAMPLES
#define LORVANE_BENCH_JSON_EXAMPLES "jsonexamples"
#endif

/// The real documents that are there: the examples and Debian's iso-codes tables. A missing file
/// is skipped with a note on stderr.
inline std::vector<TJSONFile> JSONFileDocuments() {
  const std::string Examples = LORVANE_BENCH_JSON_EXAMPLES;
  const std::string IsoCodes = "/usr/share/iso-codes/json/";
  const std::pair<const char*, std::string> Files[] = {
      {"twitter", Examples + "/twitter.json"},    {"citm_catalog", Examples + "/citm_catalog.json"},
      {"canada", Examples + "/canada.json"},      {"iso_3166-2", IsoCodes + "iso_3166-2.json"},
      {"iso_639-3", IsoCodes + "iso_639-3.json"},
  };
  std::vector<TJSONFile> Result;
  for (const auto& [Name, Path] : Files) {
    std::ifstream In(Path, std::ios::binary);
    if (!In) {
      std::fprintf(stderr, "note: %s is missing, %s skipped\n", Path.c_str(), Name);
      continue;
    }
    std::ostringstream Bytes;
    Bytes << In.rdbuf();
    Result.push_back({Name, Bytes.str()});
  }
  return Result;
}

} // namespace lorvane::bench
