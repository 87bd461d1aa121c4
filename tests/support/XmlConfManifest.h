// The W3C conformance documents under tests/corpora/xmlconf: their manifest, their bytes, and a
// keyword search that sees through UTF-16. A test program that uses it defines
// LORVANE_CORPUS_DIR.
#pragma once

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace lorvane::test {

/// The folder of the corpus, with a slash at the end; manifest paths are relative to it.
inline std::string XmlConfDir() { return LORVANE_CORPUS_DIR "/xmlconf/"; }

struct XmlConfDocument {
  std::string Id;
  std::string Type;     // valid, invalid, not-wf or error
  std::string Entities; // none, general, parameter or both
  std::string Input;    // relative to XmlConfDir()
};

/// Every row of manifest.tsv; empty when the manifest isn't there.
inline std::vector<XmlConfDocument> ReadXmlConfManifest() {
  std::ifstream In(XmlConfDir() + "manifest.tsv");
  std::vector<XmlConfDocument> Documents;
  std::string Line;
  std::getline(In, Line); // column names
  while (std::getline(In, Line)) {
    std::vector<std::string> Columns;
    std::stringstream Fields(Line);
    for (std::string Field; std::getline(Fields, Field, '\t');)
      Columns.push_back(Field);
    if (Columns.size() >= 10)
      Documents.push_back({Columns[0], Columns[2], Columns[3], Columns[9]});
  }
  return Documents;
}

inline std::string ReadBytes(const std::string& APath) {
  std::ifstream In(APath, std::ios::binary);
  return {std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>()};
}

/// Whether the text holds the ASCII keyword, in UTF-8 or in either UTF-16 byte order.
inline bool HasKeyword(const std::string& ABytes, const std::string& AKeyword) {
  std::string LittleEndian, BigEndian;
  for (char C : AKeyword) {
    LittleEndian.append({C, '\0'});
    BigEndian.append({'\0', C});
  }
  for (const std::string& Form : {AKeyword, LittleEndian, BigEndian})
    if (ABytes.find(Form) != std::string::npos)
      return true;
  return false;
}

} // namespace lorvane::test
