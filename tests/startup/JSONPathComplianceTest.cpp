// The JSONPath Compliance Test Suite (RFC 9535, tests/corpora/jsonpath-cts) through the JSON path
// of the value tree: every case, kept or left out by triage.py, runs through CreateNodeList and
// ends in a result or a documented failure; the kept cases select what the suite says, in order.
#include "lorvane/uLxJSON.h"
#include "support/DocumentedFailures.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace lorvane {
namespace {

const std::string SuiteDir = std::string(LORVANE_CORPUS_DIR) + "/jsonpath-cts/";

/// triage.tsv: the verdict of each case by its index.
std::map<Integer, std::string> ReadTriage() {
  std::map<Integer, std::string> Verdicts;
  std::ifstream In(SuiteDir + "triage.tsv");
  std::string Line;
  while (std::getline(In, Line)) {
    if (Line.empty() || Line[0] == '#')
      continue;
    std::istringstream Fields(Line);
    std::string Index, Verdict;
    std::getline(Fields, Index, '\t');
    std::getline(Fields, Verdict, '\t');
    Verdicts[std::stoi(Index)] = Verdict;
  }
  return Verdicts;
}

/// The text of a string member of a case (the tree holds string values with escapes undone).
UnicodeString Text(TLxJSONBase* ACase, std::u16string_view AName) {
  return ACase->GetMember(LxJSONString(AName))->GetAsString();
}

/// Each value's compact text; nil as null.
std::vector<std::string> Texts(TLxJSONBase* AList) {
  std::vector<std::string> Out;
  for (Integer I = 0; I < AList->Count(); ++I) {
    TLxJSONBase* Item = AList->Item(I);
    Out.push_back(Item ? StringToUTF8(Item->GetAsJSON()) : "null");
  }
  return Out;
}

TEST(JSONPathCompliance, KeptCasesSelectWhatTheSuiteSaysAndNoCaseFailsUndocumented) {
  TOwned<TLxJSONDocument> Suite(
      TLxJSONDocument::CreateFromFile(UTF8ToString(SuiteDir + "cts-dev.json")));
  TLxJSONBase* Cases = Suite->GetMember(u"tests")->GetValueObj();
  const std::map<Integer, std::string> Verdicts = ReadTriage();
  ASSERT_EQ(static_cast<Integer>(Verdicts.size()), Cases->Count()) << "triage.tsv is stale";
  // Selectors the RFC refuses have no document: they run on this one.
  constexpr char16_t Sample[] = uR"({"a":[1,{"b":2,"c":[3]}],"d":"e","f":{"g":null}})";
  Integer Kept = 0, Passed = 0, Failed = 0;
  for (Integer I = 0; I < Cases->Count(); ++I) {
    TLxJSONBase* Case = Cases->Item(I);
    const UnicodeString Selector = Text(Case, u"selector");
    SCOPED_TRACE(std::to_string(I) + " " + StringToUTF8(Text(Case, u"name")) + ": " +
                 StringToUTF8(Selector));
    const bool Keep = Verdicts.at(I) == "keep";
    TLxJSONMember* Document = Case->FindMember(u"document");
    TOwned<TLxJSONDocument> Tree(TLxJSONDocument::CreateFromJSON(
        Document ? Document->GetValueObj()->GetAsJSON() : LxJSONString(Sample)));
    std::vector<std::string> Got;
    try {
      TOwned<TLxJSONArray> Found(Tree->CreateNodeList(Selector, TLxJDOCSelectOptions{}));
      Got = Texts(Found.get());
    } catch (const std::exception& E) {
      ++Failed;
      EXPECT_TRUE(documented::IsDocumented(documented::TEntry::JSONPathSelect, E))
          << typeid(E).name() << ": " << E.what();
      EXPECT_FALSE(Keep) << "a kept case failed: " << E.what();
      continue;
    }
    if (!Keep)
      continue;
    ++Kept;
    bool Matches = false;
    if (TLxJSONMember* Result = Case->FindMember(u"result")) {
      Matches = Got == Texts(Result->GetValueObj());
    } else {
      TLxJSONBase* Alternatives = Case->GetMember(u"results")->GetValueObj();
      for (Integer A = 0; A < Alternatives->Count() && !Matches; ++A)
        Matches = Got == Texts(Alternatives->Item(A));
    }
    EXPECT_TRUE(Matches) << "selected " << ::testing::PrintToString(Got);
    Passed += Matches;
  }
  std::printf("JSONPath compliance: %d cases, %d kept, %d kept passed, %d failed documented\n",
              Cases->Count(), Kept, Passed, Failed);
  EXPECT_GT(Kept, 30);
}

} // namespace
} // namespace lorvane
