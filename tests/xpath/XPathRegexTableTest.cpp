// matches, replace and tokenize against what Python's re gives for the same patterns, where the
// two dialects agree: the table and the script that made it are in tests/xpath/data/.
#include "lorvane/uLxXPath.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include "xpath/XPathFunctionFixture.h"

namespace lorvane {
namespace {

/// A field of the table: \t, \n, \r and \\ stand for themselves.
std::string Unescape(const std::string& AField) {
  std::string Result;
  for (size_t I = 0; I < AField.size(); ++I) {
    if (AField[I] != '\\' || I + 1 == AField.size()) {
      Result += AField[I];
      continue;
    }
    const char Next = AField[++I];
    Result += Next == 't' ? '\t' : Next == 'n' ? '\n' : Next == 'r' ? '\r' : Next;
  }
  return Result;
}

std::vector<std::string> SplitTabs(const std::string& ALine) {
  std::vector<std::string> Fields;
  std::string Field;
  std::istringstream Stream(ALine);
  while (std::getline(Stream, Field, '\t'))
    Fields.push_back(Unescape(Field));
  if (!ALine.empty() && ALine.back() == '\t')
    Fields.emplace_back();
  return Fields;
}

class XPathRegexTable : public test::XPathFunctionFixture {};

TEST_F(XPathRegexTable, AgreesWithPythonWhereTheDialectsAgree) {
  const std::string Path = LORVANE_TEST_DATA_DIR "/../xpath/data/regex_table.tsv";
  std::ifstream Table(Path, std::ios::binary);
  ASSERT_TRUE(Table) << "missing " << Path;
  std::string Line;
  int Rows = 0;
  int Failed = 0;
  std::map<std::string, int> PerFunction;
  while (std::getline(Table, Line)) {
    if (Line.empty() || Line[0] == '#')
      continue;
    const std::vector<std::string> F = SplitTabs(Line);
    ASSERT_EQ(F.size(), 6u) << Line;
    const UnicodeString Input = UTF8ToString(F[2]);
    const UnicodeString Pattern = UTF8ToString(F[3]);
    const UnicodeString Flags = UTF8ToString(F[1]);
    UnicodeString Expression;
    std::string Expected;
    if (F[0] == "matches") {
      Expression = u"matches(\"" + Input + u"\", \"" + Pattern + u"\", \"" + Flags + u"\")";
      Expected = F[5] == "true" ? "Boolean:True" : "Boolean:False";
    } else if (F[0] == "replace") {
      Expression = u"replace(\"" + Input + u"\", \"" + Pattern + u"\", \"" + UTF8ToString(F[4]) +
                   u"\", \"" + Flags + u"\")";
      Expected = "UnicodeString:" + F[5];
    } else {
      ASSERT_EQ(F[0], "tokenize");
      Expression = u"tokenize(\"" + Input + u"\", \"" + Pattern + u"\", \"" + Flags + u"\")";
      Expected = "UnicodeString:" + F[5];
    }
    ++Rows;
    ++PerFunction[F[0]];
    const std::string Actual = Evaluate(Expression, Number());
    if (Actual != Expected && ++Failed <= 20)
      ADD_FAILURE() << StringToUTF8(Expression) << "\n  gives " << Actual << "\n  Python "
                    << Expected;
  }
  EXPECT_EQ(Failed, 0) << "of " << Rows << " rows";
  // The table covers each function many times over; a truncated file shows here.
  EXPECT_GT(PerFunction["matches"], 1000);
  EXPECT_GT(PerFunction["replace"], 5000);
  EXPECT_GT(PerFunction["tokenize"], 1000);
  std::cout << "[ table    ] " << Rows << " rows agree with Python's re\n";
}

} // namespace
} // namespace lorvane
