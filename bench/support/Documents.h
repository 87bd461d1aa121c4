/// The generated XML documents that several benchmarks read, in UTF-8, the same bytes every run:
///   RecordsDocument  markup-dense records with attributes, a namespace, references and CDATA
///   TextDocument     long paragraphs of text with references and a few inline elements
///   DeepDocument     towers of nested elements, each a few hundred levels deep
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace lorvane::bench {

constexpr std::size_t DocumentBytes = 20u << 20;

/// A fixed pseudo-random sequence, so that every run parses the same bytes.
struct Sequence {
  std::uint32_t State = 12345;
  std::uint32_t Next(std::uint32_t ABound) {
    State = State * 1664525u + 1013904223u;
    return (State >> 8) % ABound;
  }
};

inline const char* const Words[] = {
    "lorem",       "ipsum",        "dolor", "sit",    "amet",
    "caf\xC3\xA9", "na\xC3\xAFve", "&amp;", "&#233;", "tempor",
    "&lt;",        "elit",         "magna", "aliqua", "\xE6\x97\xA5\xE6\x9C\xAC",
    "veniam"};

inline void AppendWords(std::string& AOut, Sequence& ASeq, int ACount) {
  for (int I = 0; I < ACount; ++I) {
    if (I)
      AOut += ' ';
    AOut += Words[ASeq.Next(std::size(Words))];
  }
}

/// Records with a namespace declaration, prefixed and plain attributes, references and CDATA;
/// a little over ABytes long.
inline std::string RecordsDocument(std::size_t ABytes = DocumentBytes) {
  Sequence Seq;
  std::string S = "<?xml version=\"1.0\"?>\n<records>\n";
  S.reserve(ABytes + 4096);
  for (int Id = 0; S.size() < ABytes; ++Id) {
    S += "<record id=\"" + std::to_string(Id) + "\" xmlns:x=\"urn:x\" x:kind=\"k" +
         std::to_string(Seq.Next(7)) + "\">\n  <name first=\"";
    AppendWords(S, Seq, 1);
    S += "\" last=\"";
    AppendWords(S, Seq, 1);
    S += "\">";
    AppendWords(S, Seq, 3);
    S += "</name>\n  <value unit=\"kg\" x:scale=\"2\">" + std::to_string(Seq.Next(100000)) +
         ".5</value>\n  <tags><tag>a</tag><tag>b&amp;c</tag></tags>\n";
    if (Id % 8 == 0)
      S += "  <note><![CDATA[a < b && c > d]]></note>\n";
    S += "</record>\n";
  }
  return S + "</records>\n";
}

/// Long paragraphs of text with a few inline elements; a little over ABytes long.
inline std::string TextDocument(std::size_t ABytes = DocumentBytes) {
  Sequence Seq;
  std::string S = "<?xml version=\"1.0\"?>\n<book>\n";
  S.reserve(ABytes + 4096);
  while (S.size() < ABytes) {
    S += "<p>";
    for (int Sentence = 0; Sentence < 12; ++Sentence) {
      AppendWords(S, Seq, 14);
      S += Seq.Next(4) == 0 ? " <em>emphasis</em>. " : ". ";
    }
    S += "</p>\n";
  }
  return S + "</book>\n";
}

/// Towers of 50 to 97 nested elements, each level with an attribute and a word of text; a little
/// over ABytes long. The depth stays below 100, the nesting tinyxml2 reads at most.
inline std::string DeepDocument(std::size_t ABytes = DocumentBytes) {
  Sequence Seq;
  std::string S = "<?xml version=\"1.0\"?>\n<deep>\n";
  S.reserve(ABytes + 16384);
  while (S.size() < ABytes) {
    const int Depth = 50 + int(Seq.Next(48));
    for (int Level = 0; Level < Depth; ++Level) {
      S += "<n d=\"" + std::to_string(Level) + "\">";
      AppendWords(S, Seq, 1);
    }
    for (int Level = 0; Level < Depth; ++Level)
      S += "</n>";
    S += '\n';
  }
  return S + "</deep>\n";
}

} // namespace lorvane::bench
