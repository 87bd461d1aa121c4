// A small tree and the evaluation of one function call on a candidate of it, shared by the tests
// of the path functions.
#pragma once

#include "lorvane/platform/RegularExpressions.h"
#include "lorvane/uLxXPath.h"

#include <gtest/gtest.h>

#include <string>

#include "support/TestHelpers.h"

namespace lorvane::test {

/// An expression of a filter and what it gives: "Type:text" of the Variant ("Null", "Empty"),
/// or "Kind: message" of what it raised ("XPath CODE: message" for ELxXPathException).
struct TFunctionCase {
  const char16_t* Expression;
  const char* Expected;
};

class XPathFunctionFixture : public ::testing::Test {
protected:
  void SetUp() override {
    Doc.reset(TLxDOMDocument::CreateFromXML(u"<r><n>12.5</n><t>  a  b </t><e/></r>"));
  }
  void TearDown() override {
    Doc.reset();
    FLive.ExpectMadeSince(0);
  }

  /// The element n ("12.5"), t ("  a  b ") or e (empty).
  TLxDOMNode* Number() { return Doc->GetRootNode()->ChildNodes()->GetItem(0); }
  TLxDOMNode* Text() { return Doc->GetRootNode()->ChildNodes()->GetItem(1); }

  static std::string Describe(const Variant& AValue) {
    if (VarIsNull(AValue))
      return "Null";
    if (VarIsEmpty(AValue))
      return "Empty";
    return StringToUTF8(VarTypeAsText(VarType(AValue)) + u":" + VarToStr(AValue));
  }

  /// AExpression as the only term of a filter, evaluated once for ACandidate.
  static std::string
  Evaluate(const UnicodeString& AExpression, TLxDOMNode* ACandidate,
           TLxXPathCollationClass ACollation = TLxXPathCollationASCIICI::StaticClass()) {
    try {
      TOwned<TLxXPathEquation> Equation =
          TLxXPathEquation::Parse(u"[" + AExpression + u"]", soQualifiedName, ACollation);
      const TLxXPathNodes Candidates{ACandidate};
      return Describe(Equation->Term()->Value(Candidates, 0));
    } catch (const ELxXPathException& E) {
      return "XPath " + StringToUTF8(E.ErrorCode()) + ": " + StringToUTF8(E.Message());
    } catch (const ELxDomSyntax& E) {
      return "Syntax: " + StringToUTF8(E.Message());
    } catch (const ERegularExpressionError& E) {
      return "RegEx: " + StringToUTF8(E.Message());
    } catch (const EVariantError& E) {
      return "Variant: " + StringToUTF8(E.Message());
    } catch (const EConvertError& E) {
      return "Convert: " + StringToUTF8(E.Message());
    } catch (const EListError& E) {
      return "List: " + StringToUTF8(E.Message());
    } catch (const Exception& E) {
      return "Exception: " + StringToUTF8(E.Message());
    }
  }

  template <size_t N>
  static void ExpectResults(const TFunctionCase (&ACases)[N], TLxDOMNode* ACandidate) {
    for (const TFunctionCase& Case : ACases)
      EXPECT_EQ(Evaluate(Case.Expression, ACandidate), Case.Expected)
          << StringToUTF8(Case.Expression);
  }

  /// The local names of what APath selects from the document, joined by blanks.
  std::string Select(const UnicodeString& APath, TLxDOMSelectOptions AOptions = {}) {
    TOwned<TLxDOMNodeList> List(Doc->CreateNodeList(APath, AOptions));
    std::string Names;
    for (TLxDOMNode* Node : *List)
      Names.append(Names.empty() ? "" : " ").append(StringToUTF8(Node->GetLocalName()));
    return Names;
  }

  TOwned<TLxDOMDocument> Doc;

private:
  TLiveCount FLive;
};

} // namespace lorvane::test
