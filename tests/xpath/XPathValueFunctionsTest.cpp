// The numeric, string and regular expression functions of filters: results with their Variant
// types, argument counts and their messages, the collation's part, and the order of registration.
#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/platform/RegularExpressions.h"
#include "lorvane/uLxXPath.h"
#include "xpath/LxXPathSelect.h"

#include <gtest/gtest.h>

#include "support/TestHelpers.h"
#include "xpath/XPathFunctionFixture.h"

namespace lorvane {
namespace {

using test::TFunctionCase;
using test::XPathFunctionFixture;

class XPathValueFunctions : public XPathFunctionFixture {};

TEST_F(XPathValueFunctions, NumbersByTheKindOfTheirArgument) {
  const TFunctionCase Cases[] = {
      {u"abs(5)", "Int64:5"},
      {u"abs(\"5\")", "Null"},
      {u"abs(2.5)", "Double:2.5"},
      {u"abs(true())", "Integer:1"},
      {u"abs(())", "Null"},
      {u"ceiling(2.1)", "Integer:3"},
      {u"ceiling(7)", "Integer:7"},
      {u"floor(2.9)", "Integer:2"},
      {u"floor(\"3\")", "Null"},
      {u"floor(false())", "Integer:0"},
      {u"round(3.5)", "Int64:4"},
      {u"round(2.5)", "Int64:2"},
      {u"round(2.51)", "Int64:3"},
      {u"round(7)", "Int64:7"},
      {u"half-to-even(2.5)", "Int64:2"},
      {u"half-to-even(0.5)", "Int64:0"},
      {u"number(\"12.5\")", "Double:12.5"},
      {u"number(7)", "Double:7"},
      {u"number()", "Double:12.5"},
      {u"number(.)", "Double:12.5"},
      {u"number(zz[0])", "XPath XPDY0002: The node parameter of function \"fn:number(arg)\" may "
                         "not be nil!"},
      {u"number(\"x\")",
       "Variant: Could not convert variant of type (UnicodeString) into type (Double)"},
      {u"number(1, 2)",
       "Syntax: The \"fn:number(arg)\" function may contain 0 or 1 parameter, but not more!"},
      {u"round(99999999999999999999.5)",
       "Variant: Overflow while converting variant of type (Double) into type (Int64)"},
      {u"ceiling(3000000000.5)",
       "Variant: Overflow while converting variant of type (Double) into type (Integer)"},
  };
  ExpectResults(Cases, Number());
}

TEST_F(XPathValueFunctions, TextsAndCodepoints) {
  const TFunctionCase Cases[] = {
      {u"codepoints-to-string((72, 105))", "UnicodeString:Hi"},
      {u"codepoints-to-string(())", "UnicodeString:"},
      {u"codepoints-to-string((72, \"x\"))", "Null"},
      {u"codepoints-to-string()", "Null"},
      {u"codepoints-to-string((128512))", "UnicodeString:\xEF\x98\x80"}, // cut to U+F600
      {u"string-to-codepoints(\"AB\")", "UnicodeString:(65, 66)"},
      {u"string-to-codepoints(\"\")", "UnicodeString:()"},
      {u"string-to-codepoints(\"\U0001F600\")", "UnicodeString:(55357, 56832)"},
      {u"string-to-codepoints(5)", "Null"},
      {u"codepoint-equal(\"a\", \"a\")", "Boolean:True"},
      {u"codepoint-equal(\"a\", \"A\")", "Boolean:False"},
      {u"codepoint-equal(\"1\", 1)", "Null"},
      {u"concat(\"a\", \"b\", \"c\")", "UnicodeString:abc"},
      {u"concat()", "UnicodeString:"},
      {u"concat(\"1\", 2)", "Double:3"},
      {u"concat(\"a\", zz)", "Null"},
      {u"concat(\"a\", 1)",
       "Variant: Could not convert variant of type (UnicodeString) into type (Double)"},
      {u"string-join((\"a\", \"b\", \"c\"), \"-\")", "UnicodeString:a-b-c"},
      {u"string-join((\"a\", \"b\"))", "UnicodeString:ab"},
      {u"string-join(\"abc\", \"-\")", "UnicodeString:a-b-c"},
      {u"string-join(())", "UnicodeString:"},
      {u"substring(\"12345\", 2)", "UnicodeString:2345"},
      {u"substring(\"12345\", 2, 2)", "UnicodeString:23"},
      {u"substring(\"12345\", 0, 2)", "UnicodeString:12"},
      {u"substring(\"12345\", 9)", "UnicodeString:"},
      {u"substring(\"12345\", 2, 0)", "UnicodeString:"},
      {u"substring(\"12345\")", "UnicodeString:"},
      {u"substring()", "UnicodeString:"},
      {u"substring(\"12345\", \"2\")", "Null"},
      {u"substring(5, 1)", "Null"},
      // a value of the wrong kind ends it before the count is looked at
      {u"substring(\"12345\", 2, \"x\", 1)", "Null"},
      {u"string-length(\"abc\")", "Integer:3"},
      {u"string-length(\"\U0001F600\")", "Integer:2"},
      {u"normalize-space(\"  a  b \")", "UnicodeString:a b"},
      {u"normalize-space(\"a\tb  c\")", "UnicodeString:a\tb c"},
      {u"normalize-space(\"   \")", "UnicodeString:"},
      {u"normalize-unicode(\"e\u0301\")", "UnicodeString:\xC3\xA9"},
      {u"normalize-unicode(\"\u00E9\", \"NFD\")", "UnicodeString:e\xCC\x81"},
      {u"normalize-unicode(\"\uFB01\", \"NFKC\")", "UnicodeString:fi"},
      {u"normalize-unicode(\"\uFB01\", \"NFKD\")", "UnicodeString:fi"},
      {u"normalize-unicode(\"e\u0301\", \"\")", "UnicodeString:e\xCC\x81"},
      {u"simplify(\"Cr\u00E8me BR\u00DBL\u00C9E\")", "UnicodeString:creme brulee"},
      {u"simplify(5)", "Null"},
      {u"upper-case(\"ab\u00E9\")", "UnicodeString:AB\xC3\xA9"},
      {u"lower-case(\"AB\u00C9\")", "UnicodeString:ab\xC3\x89"},
      {u"lower-case(1)", "Null"},
      {u"translate(\"abcab\", \"ab\", \"x\")", "UnicodeString:xcx"},
      {u"translate(\"aAa\", \"a\", \"b\")", "UnicodeString:bAb"},
      {u"translate(\"abc\", \"\", \"x\")", "UnicodeString:abc"},
  };
  ExpectResults(Cases, Text());
}

TEST_F(XPathValueFunctions, CandidateTextWithoutArgument) {
  const TFunctionCase Cases[] = {
      {u"string-length()", "Integer:7"},
      {u"normalize-space()", "UnicodeString:a b"},
      {u"normalize-unicode()", "UnicodeString:  a  b "},
      {u"tokenize(string())", "UnicodeString:(\"a\", \"b\")"},
  };
  ExpectResults(Cases, Text());
}

TEST_F(XPathValueFunctions, TheFilterCollationDecidesCaseWhereTheTableSaysSo) {
  const struct {
    const char16_t* Expression;
    const char* Default;
    const char* Codepoint;
  } Cases[] = {
      {u"compare(\"a\", \"B\")", "Integer:-1", "Integer:1"},
      {u"compare(\"a\", \"A\")", "Integer:0", "Integer:1"},
      {u"compare(\"a\", zz)", "Null", "Null"},
      {u"contains(\"ABC\", \"b\")", "Boolean:True", "Boolean:False"},
      {u"contains(\"abc\", \"\")", "Boolean:False", "Boolean:False"},
      {u"starts-with(\"abc\", \"AB\")", "Boolean:True", "Boolean:False"},
      {u"starts-with(\"aab\", \"ab\")", "Boolean:False", "Boolean:False"},
      {u"ends-with(\"ABC\", \"c\")", "Boolean:False", "Boolean:False"},
      {u"ends-with(\"abc\", \"bc\")", "Boolean:True", "Boolean:True"},
      {u"ends-with(\"a\", \"abc\")", "Boolean:False", "Boolean:False"},
      {u"substring-before(\"abcbc\", \"B\")", "UnicodeString:a", "UnicodeString:"},
      {u"substring-before(\"abc\", \"x\")", "UnicodeString:", "UnicodeString:"},
      {u"substring-after(\"abcbc\", \"B\")", "UnicodeString:cbc", "UnicodeString:"},
      {u"substring-after(\"abc\", \"c\")", "UnicodeString:", "UnicodeString:"},
      {u"substring-after(\"abc\", \"x\")", "UnicodeString:", "UnicodeString:"},
      // the flags are found by the collation too: "I" is "i" only case-insensitively
      {u"matches(\"ABC\", \"b\", \"I\")", "Boolean:True", "Boolean:False"},
  };
  for (const auto& Case : Cases) {
    EXPECT_EQ(Evaluate(Case.Expression, Text()), Case.Default) << StringToUTF8(Case.Expression);
    EXPECT_EQ(Evaluate(Case.Expression, Text(), TLxXPathCollationCodepoint::StaticClass()),
              Case.Codepoint)
        << StringToUTF8(Case.Expression);
  }
  // A third argument names the collation.
  EXPECT_EQ(
      Evaluate(u"compare(\"a\", \"B\", \"" + UnicodeString(cLxCollationCodepoint) + u"\")", Text()),
      "Integer:1");
  EXPECT_EQ(Evaluate(u"compare(\"a\", \"b\", \"urn:x\")", Text()),
            "Syntax: The collation \"urn:x\" is not supported!");
}

TEST_F(XPathValueFunctions, RegularExpressions) {
  const TFunctionCase Cases[] = {
      {u"matches(\"ABC\", \"b\", \"i\")", "Boolean:True"},
      {u"matches(\"ABC\", \"b\", \"z\")", "Boolean:False"},
      {u"matches(\"ABC\", \"b\")", "Boolean:False"},
      {u"matches(\"a\nb\", \"^b$\", \"m\")", "Boolean:True"},
      {u"matches(\"a\nb\", \"a.b\", \"s\")", "Boolean:True"},
      {u"matches(\"ab\", \"a b\", \"x\")", "Boolean:True"},
      {u"replace(\"2024-01-15\", \"(\\d+)-(\\d+)-(\\d+)\", \"$3.$2.\\1\")",
       "UnicodeString:15.01.2024"},
      {u"replace(\"aXa\", \"x\", \"-\", \"i\")", "UnicodeString:a-a"},
      // "q" is explicit capture here, not quoting
      {u"replace(\"ab\", \"(a)(?<n>b)\", \"[$1]\", \"q\")", "UnicodeString:[b]"},
      {u"tokenize(\"a b\")", "UnicodeString:(\"a\", \"b\")"},
      {u"tokenize(\"  a   b  \")", "UnicodeString:(\"a\", \"b\")"},
      {u"tokenize()", "UnicodeString:()"},
      {u"tokenize(\"   \")", "UnicodeString:()"},
      {u"tokenize(\"a,b,,c\", \",\")", "UnicodeString:(\"a\", \"b\", \"\", \"c\")"},
      {u"tokenize(\"aXbxc\", \"x\", \"i\")", "UnicodeString:(\"a\", \"b\", \"c\")"},
      {u"matches(\"a\", \"(\")",
       "RegEx: Error in regular expression at offset 1: missing closing parenthesis"},
      {u"tokenize(\"a\", \"[\")", "RegEx: Error in regular expression at offset 1: missing "
                                  "terminating ] for character class"},
  };
  ExpectResults(Cases, Text());
}

TEST_F(XPathValueFunctions, WrongArgumentCountsRaiseWhenEvaluated) {
  const TFunctionCase Cases[] = {
      {u"abs()", "Syntax: The \"fn:abs(num)\" function must contain 1 parameter!"},
      {u"ceiling(1, 2)", "Syntax: The \"fn:ceiling(num)\" function must contain 1 parameter!"},
      {u"floor()", "Syntax: The \"fn:floor(num)\" function must contain 1 parameter!"},
      {u"round()", "Syntax: The \"fn:round(num)\" function must contain 1 parameter!"},
      {u"half-to-even(1, 2)",
       "Syntax: The \"fn:half-to-even(num)\" function must contain 1 parameter!"},
      {u"codepoints-to-string(72)",
       "Syntax: The \"fn:codepoints-to-string((int,int,...))\" requires a list of integers!"},
      {u"codepoints-to-string((72), (73))",
       "Syntax: The \"fn:codepoints-to-string((int,int,...))\" function may contain 0 or 1 "
       "parameter, but not more!"},
      {u"string-to-codepoints()",
       "Syntax: The \"fn:string-to-codepoints(string)\" function must contain 1 parameter!"},
      {u"compare(\"a\")", "Syntax: The \"fn:compare(comp1, comp2, collation*)\" function must "
                          "contain at least parameters!"},
      {u"compare(1, 2, 3, 4)", "Syntax: The \"fn:compare(comp1, comp2, collation*)\" function "
                               "has a maximum of 3 paramaters!"},
      {u"codepoint-equal(\"a\")",
       "Syntax: The \"fn:codepoint-equal(comp1, comp2)\" function must contain 2 parameters!"},
      {u"string-join()", "Syntax: The \"fn:string-join((string,string,...),sep*)\" function must "
                         "contain at least 1 parameter!"},
      {u"string-join((\"a\"), \"-\", \"x\")",
       "Syntax: The \"fn:string-join((string,string,...),sep*)\" function may not contain more "
       "than 2 parameters!"},
      {u"substring(\"12345\", 2, 2, 1)",
       "Syntax: The \"fn:substring(string,start,len)\" function must contain 3 or less "
       "parameters!"},
      {u"string-length(\"a\", \"b\")",
       "Syntax: Too many parameters specified for \"fn:string-length(string)\"!"},
      {u"normalize-space(\"a\", \"b\")",
       "Syntax: Too many parameters specified for \"fn:normalize-space(string)\"!"},
      {u"normalize-unicode(\"a\", \"NFC\", \"x\")",
       "Syntax: Too many parameters specified for \"fn:normalize-unicode(string, "
       "normalizationForm)\"!"},
      {u"normalize-unicode(\"a\", \"nfc\")",
       "Syntax: An unsupported normalizationForm was specified for \"fn:normalize-unicode(string, "
       "normalizationForm)\"!"},
      {u"simplify()", "Syntax: The \"fn:simplify(string)\" function must have a single parameter!"},
      {u"upper-case(\"a\", \"b\")",
       "Syntax: The \"fn:upper-case(string)\" function must have a single parameter!"},
      {u"lower-case()",
       "Syntax: The \"fn:lower-case(string)\" function must have a single parameter!"},
      {u"translate(\"a\", \"b\")",
       "Syntax: The \"fn:translate(string1,string2,string3)\" function must have 3 parameters!"},
      {u"contains(\"a\")",
       "Syntax: The \"fn:contains(string1,string2)\" function must have 2 parameters!"},
      {u"starts-with(\"a\")",
       "Syntax: The \"fn:starts-with(string1,string2)\" function must have 2 parameters!"},
      {u"ends-with(\"a\", \"b\", \"c\")",
       "Syntax: The \"fn:ends-with(string1,string2)\" function must have 2 parameters!"},
      {u"substring-before()",
       "Syntax: The \"fn:substring-before(string1,string2)\" function must have 2 parameters!"},
      {u"substring-after(\"a\")",
       "Syntax: The \"fn:substring-after(string1,string2)\" function must have 2 parameters!"},
      {u"matches(\"a\")", "Syntax: Invalid parameter for \"fn:matches(string,pattern,flags*)\"!"},
      {u"matches(\"a\", \"b\", \"c\", \"d\")",
       "Syntax: Invalid parameter for \"fn:matches(string,pattern,flags*)\"!"},
      {u"replace(\"a\", \"b\")",
       "Syntax: Invalid parameter for \"fn:replace(input,pattern,replacement,flags*)\"!"},
      {u"tokenize(\"a\", \"b\", \"c\", \"d\")", "Syntax: Invalid parameter for \"fn:tokenize()\"!"},
  };
  ExpectResults(Cases, Text());
  // The count is tested by Value: a filter that is never evaluated raises nothing.
  TOwned<TLxDOMNodeList> None(Doc->CreateNodeList(u"r/zz[abs()]"));
  EXPECT_EQ(None->Count(), 0);
}

TEST_F(XPathValueFunctions, FunctionsWorkInsideSelections) {
  EXPECT_EQ(Select(u"r/*[matches(., \"^\\d+\\.\\d+$\")]"), "n");
  EXPECT_EQ(Select(u"r/*[string-length() > 5]"), "t");
  EXPECT_EQ(Select(u"r/*[contains(node-name(), \"N\")]"), "n");
  EXPECT_EQ(Select(u"r/n[round(number(.)) = 12]"), "n");
  EXPECT_EQ(Select(u"r/*[upper-case(normalize-space()) = \"A B\"]", {soCaseSensitive}), "t");
}

TEST_F(XPathValueFunctions, AFilterOverManyNodesCompilesItsPatternOnce) {
  UnicodeString Text(u"<r>");
  for (int I = 0; I < 5000; ++I)
    Text += u"<v>" + IntToStr(I) + u"</v>";
  Text += u"</r>";
  TOwned<TLxDOMDocument> Many(TLxDOMDocument::CreateFromXML(Text));
  const UInt64 Before = TRegEx::CompiledOnThisThread();
  TOwned<TLxDOMNodeList> Found(Many->CreateNodeList(u"r/v[matches(., \"^4\\d\\d7$\")]"));
  EXPECT_EQ(Found->Count(), 100);
  EXPECT_EQ(TRegEx::CompiledOnThisThread() - Before, 1u);
}

TEST_F(XPathValueFunctions, RegisteredInTheLibraryOrder) {
  const std::vector<UnicodeString> Names = RegisteredXPathFunctionNames();
  const std::vector<UnicodeString> Expected = {u"text",
                                               u"node-name",
                                               u"nilled",
                                               u"string",
                                               u"data",
                                               u"base-uri",
                                               u"document-uri",
                                               u"error",
                                               u"trace",
                                               u"abs",
                                               u"ceiling",
                                               u"floor",
                                               u"round",
                                               u"half-to-even",
                                               u"number",
                                               u"codepoints-to-string",
                                               u"string-to-codepoints",
                                               u"compare",
                                               u"codepoint-equal",
                                               u"concat",
                                               u"string-join",
                                               u"substring",
                                               u"string-length",
                                               u"normalize-space",
                                               u"normalize-unicode",
                                               u"simplify",
                                               u"upper-case",
                                               u"lower-case",
                                               u"translate",
                                               u"contains",
                                               u"starts-with",
                                               u"ends-with",
                                               u"substring-before",
                                               u"substring-after",
                                               u"matches",
                                               u"replace",
                                               u"tokenize",
                                               u"true",
                                               u"false",
                                               u"boolean",
                                               u"not",
                                               u"years-from-duration",
                                               u"months-from-duration",
                                               u"days-from-duration",
                                               u"hours-from-duration",
                                               u"minutes-from-duration",
                                               u"seconds-from-duration",
                                               u"dateTime",
                                               u"year-from-dateTime",
                                               u"month-from-dateTime",
                                               u"day-from-dateTime",
                                               u"hours-from-dateTime",
                                               u"minutes-from-dateTime",
                                               u"seconds-from-dateTime",
                                               u"timezone-from-dateTime",
                                               u"year-from-date",
                                               u"month-from-date",
                                               u"day-from-date",
                                               u"timezone-from-date",
                                               u"hours-from-time",
                                               u"minutes-from-time",
                                               u"seconds-from-time",
                                               u"timezone-from-time",
                                               u"adjust-dateTime-to-timezone",
                                               u"adjust-date-to-timezone",
                                               u"adjust-time-to-timezone"};
  // Other tests of this program may register names of their own behind the library's.
  ASSERT_GE(Names.size(), Expected.size());
  EXPECT_EQ(std::vector<UnicodeString>(Names.begin(), Names.begin() + Expected.size()), Expected);
}

} // namespace
} // namespace lorvane
