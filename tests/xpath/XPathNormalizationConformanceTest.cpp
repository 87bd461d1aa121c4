// normalize-unicode in its four forms against the Unicode conformance file NormalizationTest.txt,
// which Debian's unicode-data package installs compressed (run.sh installs it and bzip2).
#include "lorvane/uLxXPath.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "xpath/XPathFunctionFixture.h"

namespace lorvane {
namespace {

constexpr const char* cNormalizationTest = "/usr/share/unicode/NormalizationTest.txt.bz2";

/// The lines of the file, through bzip2; none when it can't be read.
std::vector<std::string> ReadCompressed(const char* APath) {
  std::vector<std::string> Lines;
  if (FILE* Probe = std::fopen(APath, "rb"))
    std::fclose(Probe);
  else
    return Lines;
  FILE* Pipe = popen((std::string("bzip2 -dc ") + APath).c_str(), "r");
  if (!Pipe)
    return Lines;
  std::string Text;
  char Buffer[65536];
  for (size_t Read; (Read = std::fread(Buffer, 1, sizeof Buffer, Pipe)) > 0;)
    Text.append(Buffer, Read);
  if (pclose(Pipe) != 0)
    return {};
  std::istringstream Stream(Text);
  for (std::string Line; std::getline(Stream, Line);)
    Lines.push_back(std::move(Line));
  return Lines;
}

/// "1E0A 0323" as UTF-16.
UnicodeString CodePoints(const std::string& AField) {
  UnicodeString Result;
  std::istringstream Stream(AField);
  std::string Hex;
  while (Stream >> Hex) {
    char32_t Code = static_cast<char32_t>(std::stoul(Hex, nullptr, 16));
    if (Code < 0x10000) {
      Result += static_cast<char16_t>(Code);
      continue;
    }
    Code -= 0x10000;
    Result += static_cast<char16_t>(0xD800 + (Code >> 10));
    Result += static_cast<char16_t>(0xDC00 + (Code & 0x3FF));
  }
  return Result;
}

class XPathNormalizationConformance : public test::XPathFunctionFixture {};

TEST_F(XPathNormalizationConformance, EveryLineOfTheUnicodeTestFilePasses) {
  const std::vector<std::string> File = ReadCompressed(cNormalizationTest);
  ASSERT_FALSE(File.empty()) << cNormalizationTest
                             << " is missing or unreadable: install Debian's unicode-data and "
                                "bzip2 packages (run.sh does)";
  // One filter per form, evaluated on a comment node that holds each column in turn: the
  // function reads the candidate's text, as string() gives it, unchanged.
  const char16_t* Forms[] = {u"NFC", u"NFD", u"NFKC", u"NFKD"};
  std::array<TOwned<TLxXPathEquation>, 4> Filters;
  for (size_t I = 0; I < 4; ++I)
    Filters[I] = TLxXPathEquation::Parse(
        u"[normalize-unicode(string(), \"" + UnicodeString(Forms[I]) + u"\")]", soQualifiedName,
        TLxXPathCollationCodepoint::StaticClass());
  TOwned<TLxDOMComment> Candidate(New<TLxDOMComment>());
  const TLxXPathNodes Candidates{Candidate.get()};
  auto Normalize = [&](size_t AForm, const UnicodeString& AText) {
    Candidate->SetNodeValue(AText);
    return VarToStr(Filters[AForm]->Term()->Value(Candidates, 0));
  };

  int Lines = 0;
  int Failed = 0;
  for (std::string Line : File) {
    const size_t Comment = Line.find('#');
    if (Comment != std::string::npos)
      Line.erase(Comment);
    if (Line.empty() || Line[0] == '@')
      continue;
    std::array<UnicodeString, 5> C;
    std::istringstream Stream(Line);
    std::string Field;
    for (UnicodeString& Column : C) {
      std::getline(Stream, Field, ';');
      Column = CodePoints(Field);
    }
    // The conformance rules: c2 is NFC and c3 NFD of c1..c3, c4 NFC and c5 NFD of c4..c5, c4
    // NFKC and c5 NFKD of all five.
    bool Passed = true;
    for (size_t I = 0; I < 5; ++I) {
      Passed = Passed && Normalize(0, C[I]) == (I < 3 ? C[1] : C[3]) &&
               Normalize(1, C[I]) == (I < 3 ? C[2] : C[4]) && Normalize(2, C[I]) == C[3] &&
               Normalize(3, C[I]) == C[4];
    }
    ++Lines;
    if (!Passed && ++Failed <= 10)
      ADD_FAILURE() << "fails: " << Line;
  }
  EXPECT_EQ(Failed, 0) << "of " << Lines << " lines";
  EXPECT_GT(Lines, 15000) << "the file looks truncated";
  std::cout << "[ unicode  ] " << Lines - Failed << " of " << Lines
            << " lines of NormalizationTest.txt pass in all four forms\n";
}

} // namespace
} // namespace lorvane
