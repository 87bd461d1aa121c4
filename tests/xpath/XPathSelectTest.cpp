// Path selection over a small tree: step forms, filters, functions, options and their failures,
// on objects and on interfaces. This program links the path module without the umbrella, so it
// provides the start-up routine itself with the module's registrations.
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/platform/Logging.h"
#include "lorvane/uLxXPath.h"
#include "xpath/LxXPathSelect.h"

#include <gtest/gtest.h>

#include "support/TestHelpers.h"

namespace lorvane {

void RunLibraryStartup() { LxXPathStartup(); }

namespace {

using test::ExpectRaises;

constexpr char16_t SampleXML[] = u"<r xmlns:p=\"urn:p\">"
                                 u"<a id=\"1\" k=\"ABC\">t1<b n=\"1\">x</b><b n=\"2\">y</b></a>"
                                 u"<a id=\"2\" p:k=\"10\"><c><b n=\"3\">z</b></c></a>"
                                 u"<p:a id=\"3\"/>"
                                 u"<A id=\"4\">text<![CDATA[cd]]></A>"
                                 u"</r>";

/// A node as the tables write it: an element by its name and its id or n attribute, an attribute
/// as @name=value, character data in quotes.
std::string Describe(TLxDOMNode* ANode) {
  switch (ANode->GetNodeType()) {
  case ntElement: {
    auto* Element = static_cast<TLxDOMElement*>(ANode);
    std::string Text = StringToUTF8(Element->GetQualifiedName());
    for (const char16_t* Key : {u"id", u"n"})
      if (TLxDOMAttribute* Id = Element->FindAttribute(Key))
        Text.append(1, '#').append(StringToUTF8(Id->GetNodeValue()));
    return Text;
  }
  case ntAttribute:
    return std::string(1, '@')
        .append(StringToUTF8(ANode->GetQualifiedName()))
        .append(1, '=')
        .append(StringToUTF8(ANode->GetNodeValue()));
  case ntDocument:
    return "/";
  default:
    return std::string(1, '\'').append(StringToUTF8(ANode->GetNodeValue())).append(1, '\'');
  }
}

std::string Describe(TLxDOMNodeListBase* AList) {
  std::string Text;
  for (TLxDOMNode* Node : *AList)
    Text.append(Text.empty() ? 0 : 1, ' ').append(Describe(Node));
  return Text;
}

class XPathSelect : public test::LiveObjectsTest {
protected:
  void SetUp() override {
    LiveObjectsTest::SetUp();
    Doc.reset(TLxDOMDocument::CreateFromXML(SampleXML));
  }
  void TearDown() override {
    Doc.reset();
    LiveObjectsTest::TearDown();
  }
  std::string Select(TLxDOMNode* AStart, const UnicodeString& APath,
                     TLxDOMSelectOptions AOptions = {}) {
    TOwned<TLxDOMNodeList> List(AStart->CreateNodeList(APath, AOptions));
    return Describe(List.get());
  }
  TLxDOMElement* Root() { return Doc->GetRootNode(); }
  TOwned<TLxDOMDocument> Doc;
};

struct TSelectCase {
  const char16_t* Path;
  TLxDOMSelectOptions Options;
  const char* Expected;
};

TEST_F(XPathSelect, StepFormsAndFiltersFromTheDocument) {
  const TSelectCase Cases[] = {
      // names: case-insensitive and qualified out of the box
      {u"r", {}, "r"},
      {u"r/a", {}, "a#1 a#2 A#4"},
      {u"r/a", {soCaseSensitive}, "a#1 a#2"},
      {u"r/a", {soLocalName}, "a#1 a#2 p:a#3 A#4"},
      {u"r/p:a", {}, "p:a#3"},
      {u"r/P:A", {soCaseSensitive}, ""},
      {u" r / a ", {soCaseSensitive}, "a#1 a#2"},
      {u"r/*", {}, "a#1 a#2 p:a#3 A#4"},
      {u"r/p:*", {}, "p:a#3"},
      {u"r/zz", {}, ""},
      // fixed forms
      {u"r/a/text()", {soCaseSensitive}, "'t1'"},
      {u"r/A/TEXT()", {soCaseSensitive}, "'text' 'cd'"},
      {u"r/a/text()", {}, "'t1' 'text' 'cd'"},
      {u"r/a/node()", {soCaseSensitive}, "'t1' b#1 b#2 c"},
      {u"r/a/b/..", {}, "a#1"},
      {u"r/a/.", {soCaseSensitive}, "a#1 a#2"},
      {u"r/./.", {}, ""},
      {u"r/a/@id", {}, "@id=1 @id=2 @id=4"},
      {u"r/a/@*", {soCaseSensitive}, "@id=1 @k=ABC @id=2 @p:k=10"},
      {u"r/a/@p:k", {}, "@p:k=10"},
      {u"r/a/p:@k", {}, "@p:k=10"},
      {u"r/a/@k", {}, "@k=ABC"},
      {u"r/a/@k", {soLocalName, soCaseSensitive}, "@k=ABC @p:k=10"},
      {u"r/@*", {}, ""},
      {u"r/@*", {soLocalName}, "@xmlns:p=urn:p"},
      // descendants: matches among one parent's children first, then down child by child
      {u"//b", {}, "b#1 b#2 b#3"},
      {u"r//b", {}, "b#1 b#2 b#3"},
      {u"r/a//", {soCaseSensitive}, "'t1' b#1 b#2 'x' 'y' c b#3 'z'"},
      {u"//.",
       {soCaseSensitive},
       "/ r a#1 't1' b#1 'x' b#2 'y' a#2 c b#3 'z' p:a#3 A#4 'text' 'cd'"},
      // alternatives: in order, each node once
      {u"r/p:a|r/a[0]", {}, "p:a#3 a#1"},
      {u"r/a | r/a[1]", {}, "a#1 a#2 A#4"},
      {u"r/zz|r/p:a", {}, "p:a#3"},
      // a parenthesised group as the last step
      {u"r/(a/b)", {}, "b#1 b#2"},
      {u"r/(a/b)[1]", {}, "b#2"},
      // positions from 0, filters one after another
      {u"r/a[0]", {}, "a#1"},
      {u"r/a[1]", {}, "a#2"},
      {u"r/a[1][0]", {}, "a#2"},
      {u"r/a[position()=1]", {}, "a#1"},
      {u"r/a[last()]", {}, "A#4"},
      {u"r/a[first()]", {}, "a#1"},
      {u"r/a[99999999999999]", {}, ""},
      {u"r/a/b[node()]", {}, "b#1 b#2"},
      // comparisons
      {u"r/a[@k=\"abc\"]", {}, "a#1"},
      {u"r/a[@k=\"abc\"]", {soCaseSensitive}, ""},
      {u"r/a[@p:k=10]", {}, "a#2"},
      {u"r/a[@p:k=10.0]", {}, "a#2"},
      {u"r/a[@p:k>9]", {}, "a#2"},
      {u"r/a[@p:k>\"9\"]", {}, ""},
      {u"r/a[@id &gt;= 2]", {}, "a#2 A#4"},
      {u"r/a[@id &lt; 2]", {}, "a#1"},
      {u"r/a[@id<>1]", {}, "a#2 A#4"},
      {u"r/a[b=\"y\"]", {}, "a#1"},
      {u"r/a[b!=\"x\"]", {}, "a#1"},
      {u"r/a[b=\"x\" and b!=\"x\"]", {}, "a#1"},
      {u"r/a[\"1\" = @id]", {}, "a#1"},
      {u"r/a[@id = @id]", {}, "a#1 a#2 A#4"},
      {u"r/a[.1 < @id]", {}, "a#1 a#2 A#4"},
      // paths as tests
      {u"r/a[b]", {}, "a#1"},
      {u"r/a[c/b]", {}, "a#2"},
      {u"r/a[c[b]]", {}, "a#2"},
      {u"r/a[@k]", {}, "a#1"},
      {u"r/a[not(b)]", {}, "a#2 A#4"},
      {u"r/a[not @k]", {}, "a#2 A#4"},
      {u"r/a[nOt(b)]", {}, "a#2 A#4"},
      // and/or: one rank, left to right; a missing comparison value rejects the node
      {u"r/a[@id=1 or @id=2 and @k]", {}, "a#1"},
      {u"r/a[@id=2 or @id=1 aNd @k]", {}, "a#1"},
      {u"r/a[@id=1 or(@id=2)]", {}, "a#1 a#2"},
      {u"r/a[b and@id]", {}, "a#1"},
      {u"r/a[x=1 or @id=2]", {}, ""},
      {u"r/a[(x=1) or @id=2]", {}, "a#2"},
      {u"r/a[not(x=1)]", {}, ""},
      {u"r/a[not(x)]", {}, "a#1 a#2 A#4"},
      {u"r/a[(b) and (@id=1)]", {}, "a#1"},
      {u"r/a[( )]", {}, ""},
      {u"r/a[b", {}, "a#1"},
      // a "/" behind the first "]" of a filter ends the step, even inside quotes
      {u"r/a[c[b]/b]", {}, ""},
      {u"r/a[@k=\"A/B\"]", {}, ""},
      // functions
      {u"r/a[text()]", {}, "a#1 A#4"},
      {u"r/a[node-name()=\"a\"]", {soCaseSensitive}, "a#1 a#2"},
      {u"r/*[node-name()=\"p:a\"]", {}, "p:a#3"},
      {u"r/*[node-name()=\"a\"]", {soLocalName}, "a#1 a#2 p:a#3 A#4"},
      {u"r/a[1][node-name(c)=\"c\"]", {}, "a#2"},
      {u"r/a[string()=\"t1\"]", {}, "a#1"},
      {u"r/a[fn:string(.)=\"t1\"]", {}, "a#1"},
      {u"r/a[data(@id)=\"2\"]", {}, "a#2"},
      {u"r/a[string(\"z\")=\"z\"]", {}, "a#1 a#2 A#4"},
      {u"r/a[true()]", {}, "a#1 a#2 A#4"},
      {u"r/a[false()]", {}, ""},
      {u"r/a[boolean((b))]", {}, "a#1 a#2 A#4"},
      {u"r/a[boolean(())]", {}, ""},
      {u"r/a[boolean(\"\")]", {}, ""},
      {u"r/a[boolean(0)]", {}, ""},
      {u"r/a[boolean(2.5)]", {}, "a#1 a#2 A#4"},
      {u"r/a[@id=not(0)]", {}, "a#1 a#2 A#4"},
      {u"r/a[@id=not(1)]", {}, ""},
      {u"r/a[true() or error()]", {}, "a#1 a#2 A#4"},
      {u"r/a[nilled()=true()]", {}, ""},
      {u"r/a[@id=nilled()]", {}, ""},
  };
  for (const TSelectCase& Case : Cases)
    EXPECT_EQ(Select(Doc.get(), Case.Path, Case.Options), Case.Expected) << StringToUTF8(Case.Path);
}

TEST_F(XPathSelect, StartNodesOfTheAlternatives) {
  TLxDOMElement* A2 = Root()->SelectSingleElement(u"a[1]");
  ASSERT_NE(A2, nullptr);
  EXPECT_EQ(Select(A2, u"/"), "a#2");
  EXPECT_EQ(Select(A2, u"c/b"), "b#3");
  EXPECT_EQ(Select(A2, u"/r/p:a"), "p:a#3");
  EXPECT_EQ(Select(A2, u"//c"), "c");
  EXPECT_EQ(Select(A2, u".."), "r");
  EXPECT_EQ(Select(Doc.get(), u".."), "");
  // The element entry points start at the root element; the node ones at the document.
  TOwned<TLxDOMElementList> FromRoot(Doc->CreateElementList(u"a/b"));
  EXPECT_EQ(Describe(FromRoot.get()), "b#1 b#2");
  EXPECT_EQ(Select(Doc.get(), u"r/a/b"), "b#1 b#2");
  EXPECT_EQ(Describe(Doc->SelectSingleElement(u"a[1]")), "a#2");
  // A path that ends at attributes lists attributes, also in an element list.
  TOwned<TLxDOMElementList> Attributes(Root()->CreateElementList(u"a/@id", {soCaseSensitive}));
  EXPECT_EQ(Describe(Attributes.get()), "@id=1 @id=2");
  // A detached node has no document to start a document-relative path from.
  TOwned<TLxDOMElement> Loose(New<TLxDOMElement>());
  Loose->SetQualifiedName(u"x");
  Loose->AddElement(u"y");
  EXPECT_EQ(Select(Loose.get(), u"y"), "y");
  EXPECT_EQ(Select(Loose.get(), u"/y"), "");
}

TEST_F(XPathSelect, DescendantsAreBreadthFirstWithinOneParent) {
  TOwned<TLxDOMDocument> Nested(
      TLxDOMDocument::CreateFromXML(u"<x><y n=\"1\"><y n=\"2\"/></y><y n=\"3\"/></x>"));
  EXPECT_EQ(Select(Nested.get(), u"//y"), "y#1 y#3 y#2");
  EXPECT_EQ(Select(Nested.get(), u"//y[0]"), "y#1 y#2");
  EXPECT_EQ(Describe(Nested->SelectSingleNode(u"//y[1]")), "y#3");
}

TEST_F(XPathSelect, SingleFormsStopBehindTheFirstAlternativeThatFinds) {
  EXPECT_EQ(Describe(Doc->SelectSingleNode(u"r/zz|r/a|r/p:a")), "a#1");
  EXPECT_EQ(Doc->SelectSingleNode(u"r/zz"), nullptr);
  EXPECT_EQ(Root()->SelectSingleElement(u"zz"), nullptr);
  ExpectRaises<EInvalidCast>([&] { Root()->SelectSingleElement(u"a/text()"); },
                             u"Invalid class typecast");
}

struct TFailureCase {
  const char16_t* Path;
  TLxDOMSelectOptions Options;
  int Kind; // 0 Exception, 1 ELxDomSyntax, 2 ELxDomNotFound
  const char16_t* Message;
};

TEST_F(XPathSelect, FailuresOfPathsAndFilters) {
  const TFailureCase Cases[] = {
      {u"", {}, 1, u"The XPath expression is not valid!"},
      {u"r|", {}, 1, u"The XPath expression is not valid!"},
      {u"r/", {}, 1, u"The XPath expression does not return a DOM Node!"},
      {u"r//a/", {}, 1, u"The XPath expression does not return a DOM Node!"},
      {u"r///a", {}, 1, u"The specified nodePath started with an unexpected token (/)!"},
      {u"(r/a)/b", {}, 1, u"The XPath expression is not valid!"},
      {u"r/.x",
       {},
       1,
       u"The XPath expression contains an error at \".x\"!\r\na \"/\" or \"[\" was expected "
       u"after the \"..\"."},
      {u"r/*x",
       {},
       1,
       u"The XPath expression contains an error at \"*x\"!\r\na \"/\" or \"[\" was expected "
       u"after the \"*\"."},
      {u"//..",
       {},
       1,
       u"The XPath expression contains an error at \"..\"!\r\nThe \"//\" cannot be used in "
       u"combination with \"..\"."},
      {u"r/a[1 = b]", {}, 0, u"\"[1 = b]\" is an invalid filter expression!"},
      {u"r/a[b andb]", {}, 0, u"\"[b andb]\" is an invalid filter expression!"},
      {u"r/a[b And c]", {}, 0, u"\"[b And c]\" is an invalid filter expression!"},
      {u"r/a[b) c]", {}, 0, u"\"[b) c]\" is an invalid filter expression!"},
      {u"r/a[]", {}, 1, u"The specified XPath statement is not valid!"},
      {u"r/a[Abs(1)]", {}, 1, u"The filter contains an unsupported function (Abs)!"},
      {u"r/a[@id =< 1]",
       {},
       1,
       u"The filter \"[@id =< 1]\" contains an invalid compare operator (=<)!"},
      {u"r/a[@id = 1.2.3]", {}, 1, u"Either a number or a string was expected!"},
      {u"r/a[node-name(b, c)]",
       {},
       1,
       u"The \"fn:node-name(node)\" function may only have 1 parameter!"},
      {u"r/a[trace(1)]",
       {},
       1,
       u"The \"fn:trace(value, label)\" function must contain 2 parameters!"},
      {u"r/a[boolean()]", {}, 1, u"The \"fn:boolean(arg)\" function must have 1 parameter!"},
      {u"r/a[error(1,2,3,4)]",
       {},
       1,
       u"The \"fn:error()\" function has a maximum of 3 parameters!"},
      {u"r/a",
       {soCaseSensitive, soCaseInsensitive},
       0,
       u"It is not possible to specify both soCaseSensitive and soCaseInsensitive!"},
      {u"r/a", {soRaise, soCreate}, 0, u"It is not possible to specify both soRaise and soCreate!"},
      {u"r/zz", {soRaise}, 2, u"There are no nodes for the given path \"r/zz!."},
      {u"r/zz[1]",
       {soCreate},
       2,
       u"The given path \"r/zz[1]\" was too complex to use the soCreate option!"},
  };
  for (const TFailureCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Path));
    auto Run = [&] { Select(Doc.get(), Case.Path, Case.Options); };
    if (Case.Kind == 0)
      ExpectRaises<Exception>(Run, Case.Message);
    else if (Case.Kind == 1)
      ExpectRaises<ELxDomSyntax>(Run, Case.Message);
    else
      ExpectRaises<ELxDomNotFound>(Run, Case.Message);
  }
  // A filter is parsed only when there are candidates to filter.
  EXPECT_EQ(Select(Doc.get(), u"r/zz[1 = b]"), "");
  EXPECT_EQ(Select(Doc.get(), u"r/zz[]"), "");
}

TEST_F(XPathSelect, MessagesOfTheSingleAndElementForms) {
  ExpectRaises<ELxDomNotFound>([&] { Doc->SelectSingleNode(u"r/zz", {soRaise}); },
                               u"There is no node for the given path \"r/zz\"!");
  ExpectRaises<ELxDomNotFound>([&] { Root()->CreateElementList(u"zz", {soRaise}); },
                               u"There are no nodes for the given path \"zz\"!");
  ExpectRaises<ELxDomNotFound>(
      [&] { Doc->SelectSingleNode(u"r/@zz", {soCreate}); },
      u"The given path \"r/@zz\" was too complex to use the soCreate option!");
  ExpectRaises<ELxDomNotFound>([&] { Doc->SelectSingleElement(u""); },
                               u"The specified nodePath is empty!");
  TOwned<TLxDOMDocument> Empty(New<TLxDOMDocument>());
  ExpectRaises<ELxDomNotFound>([&] { Empty->SelectSingleElement(u"a", {soRaise}); },
                               u"There is no node for the given path \"a\".");
  ExpectRaises<ELxDomNotFound>(
      [&] { Empty->CreateElementList(u"a", {soCreate}); },
      u"It is not possible to use XPath statements on documents without rootnode!");
  TOwned<TLxDOMElementList> None(Empty->CreateElementList(u"a"));
  EXPECT_EQ(None->Count(), 0);
}

TEST_F(XPathSelect, CreateAddsThePlainNamesOfAPath) {
  TLxDOMElement* Made = Root()->SelectSingleElement(u"x/p:y", {soCreate});
  ASSERT_NE(Made, nullptr);
  EXPECT_EQ(StringToUTF8(Made->GetQualifiedName()), "p:y");
  EXPECT_EQ(Select(Root(), u"x/p:y"), "p:y");
  // A second call finds what the first made.
  EXPECT_EQ(Root()->SelectSingleElement(u"x/p:y", {soCreate}), Made);
  EXPECT_NE(Root()->SelectSingleElement(u"x/z[0]", {soCreate}), nullptr);
  ExpectRaises<Exception>([&] { Root()->SelectSingleNode(u"//q", {soCreate}); },
                          u"The soCreate option cannot be used in combination with the \"//\" "
                          u"search option!");
  // A group under "//" would create below each new element without end.
  ExpectRaises<Exception>([&] { Root()->SelectSingleNode(u"x//(q)[1]", {soCreate}); },
                          u"The soCreate option cannot be used in combination with the \"//\" "
                          u"search option!");
  ExpectRaises<Exception>([&] { Root()->SelectSingleNode(u"x//./q", {soCreate}); },
                          u"The soCreate option cannot be used in combination with the \"//\" "
                          u"search option!");
  // Steps made before the walk gives up stay.
  ExpectRaises<ELxDomNotFound>([&] { Root()->SelectSingleNode(u"m/n[@k]", {soCreate}); },
                               u"The given path \"m/n[@k]\" was too complex to use the soCreate "
                               u"option!");
  EXPECT_EQ(Select(Root(), u"m/n"), "");
  EXPECT_EQ(Select(Root(), u"m"), "m");
}

TEST_F(XPathSelect, FunctionFailuresCarryTheirCodes) {
  struct TCodeCase {
    const char16_t* Path;
    const char* Code;
    const char* Message;
  } Cases[] = {
      {u"r/a[error(\"X1\", \"m\", \"o\")]", "X1", "m"},
      {u"r/a[error()]", "FOER0000", "An exception was raised"},
      {u"r/a[string((b))]", "XPTY0004",
       "The arg parameter of function \"fn:string(arg)\" may not be a sequence!"},
      {u"r/a[string([b])]", "FOTY0014",
       "The arg parameter of function \"fn:string(arg)\" may not be a map or array!"},
      {u"r/a[0][string(b)]", "XPTY0004",
       "The node parameter of function \"fn:string(arg)\" must be a single node!"},
      {u"r/a[node-name(zz)]", "XPDY0002",
       "The node parameter of function \"fn:node-name(node)\" may not be nil!"},
      {u"r/a[nilled(1)]", "XPTY0004",
       "The node parameter of function \"fn:nilled(node)\" must be a node!"},
      {u"r/a[base-uri(1)]", "XPTY0004",
       "The arg parameter of function \"fn:base-uri(arg)\" must be a node!"},
      {u"r/a[boolean(b)]", "FORG0006", "An invalid parameter was passed to fn:boolean(arg)"},
  };
  for (const TCodeCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Path));
    try {
      Select(Doc.get(), Case.Path);
      ADD_FAILURE() << "nothing raised";
    } catch (const ELxXPathException& E) {
      EXPECT_EQ(StringToUTF8(E.ErrorCode()), Case.Code);
      EXPECT_EQ(StringToUTF8(E.Message()), Case.Message);
      EXPECT_EQ(StringToUTF8(E.ErrorObject()), Case.Code == std::string("X1") ? "o" : "");
    }
  }
}

TEST_F(XPathSelect, UrisOfNodesAndDocuments) {
  Doc->SetDocumentURI(u"urn:d");
  TOwned<TLxDOMDocument> Spaced(
      TLxDOMDocument::CreateFromXML(u"<p:r xmlns:p=\"urn:r\"><p:a/></p:r>"));
  EXPECT_EQ(Select(Doc.get(), u"r/a[base-uri()=\"urn:d\"]"), "a#1 a#2 A#4");
  EXPECT_EQ(Select(Doc.get(), u"r/a[0][document-uri(b[0])=\"urn:d\"]"), "a#1");
  EXPECT_EQ(Select(Spaced.get(), u"p:r/p:a[base-uri()=\"urn:r\"]"), "p:a");
}

TEST_F(XPathSelect, TraceWritesToTheXPathLogger) {
  std::vector<std::string> Lines;
  TLogSink Before =
      Logger().SetSink([&](std::u16string_view ALogger, TLogLevel, std::u16string_view AMessage) {
        Lines.push_back(StringToUTF8(ALogger).append(": ").append(StringToUTF8(AMessage)));
      });
  EXPECT_EQ(Select(Doc.get(), u"r/a[trace(@id, \"id\")=2]"), "a#2");
  EXPECT_EQ(Select(Doc.get(), u"r/a[0][trace(zz, \"none\")]"), "");
  Logger().SetSink(Before);
  EXPECT_EQ(Lines, (std::vector<std::string>{"XPath: id; value=1", "XPath: id; value=2",
                                             "XPath: id; value=4", "XPath: none"}));
}

TEST_F(XPathSelect, RegistriesAnswerByExactName) {
  EXPECT_EQ(FindXPathCollation(UnicodeString(cLxCollationCodepoint)),
            TLxXPathCollationCodepoint::StaticClass());
  EXPECT_EQ(FindXPathCollation(UnicodeString(cLxCollationAsciiCI)),
            TLxXPathCollationASCIICI::StaticClass());
  ExpectRaises<ELxDomSyntax>([] { FindXPathCollation(u"urn:none"); },
                             u"The collation \"urn:none\" is not supported!");
  // An application's function; its later duplicate never wins over it.
  RegisterXPathFunction(u"twice-id", &XPathFunctionClass<TLxXPathFnTrue>);
  RegisterXPathFunction(u"twice-id", &XPathFunctionClass<TLxXPathFnFalse>);
  EXPECT_EQ(Select(Doc.get(), u"r/a[twice-id()]"), "a#1 a#2 A#4");
  ExpectRaises<ELxDomSyntax>([&] { Select(Doc.get(), u"r/a[Twice-id()]"); },
                             u"The filter contains an unsupported function (Twice-id)!");
}

TEST_F(XPathSelect, InterfacesForwardAndOwnTheirLists) {
  // A free-standing document is owned by its interfaces once it has one.
  IPtr<ILxDOMDocument> Face = DOMInterface<ILxDOMDocument>(Doc.release());
  IPtr<ILxDOMNodeList> List = Face->CreateNodeList(u"r/a");
  ASSERT_EQ(List->Count(), 3);
  EXPECT_EQ(List->GetItem(2)->GetQualifiedName(), u"A");
  EXPECT_EQ(Face->SelectSingleNode(u"r/p:a")->GetQualifiedName(), u"p:a");
  EXPECT_EQ(Face->SelectSingleNode(u"r/zz"), nullptr);
  IPtr<ILxDOMElement> Root = Face->SelectSingleElement(u".");
  ASSERT_NE(Root, nullptr);
  EXPECT_EQ(Root->GetQualifiedName(), u"r");
  EXPECT_EQ(Root->CreateElementList(u"a", {soCaseSensitive})->Count(), 2);
  EXPECT_EQ(Face->CreateElementList(u"a/b")->Count(), 2);
  // The name form with its recursive flag is still reached.
  EXPECT_EQ(Root->CreateElementList(u"b", true)->Count(), 3);
  ExpectRaises<ELxDomNotFound>([&] { Face->SelectSingleNode(u"zz", {soRaise}); },
                               u"There is no node for the given path \"zz\"!");
  // A result list owns no node: it goes first, and the document with its last interface.
  List = nullptr;
  Root = nullptr;
  Face = nullptr;
  EXPECT_EQ(Alive(), 0);
}

TEST_F(XPathSelect, HostileNestingRaisesInsteadOfExhaustingTheStack) {
  const UnicodeString Parens(100000, u'(');
  ExpectRaises<ELxDomSyntax>([&] { Select(Doc.get(), u"r/" + Parens + u"a"); },
                             u"The XPath expression is nested too deeply!");
  ExpectRaises<ELxDomSyntax>([&] { Select(Doc.get(), u"r/a[" + Parens + u"b]"); },
                             u"The XPath expression is nested too deeply!");
  ExpectRaises<ELxDomSyntax>([&] { Select(Doc.get(), u"r/a[b=" + Parens + u"]"); },
                             u"The XPath expression is nested too deeply!");
  UnicodeString Filters = u"r/a";
  for (int I = 0; I < 2000; ++I)
    Filters += u"[.";
  ExpectRaises<ELxDomSyntax>([&] { Select(Doc.get(), Filters); },
                             u"The XPath expression is nested too deeply!");
  // Long chains and long paths are no nesting: they run.
  UnicodeString Chain = u"r/a[@id";
  for (int I = 0; I < 100000; ++I)
    Chain += u" and @id";
  EXPECT_EQ(Select(Doc.get(), Chain + u"]"), "a#1 a#2 A#4");
  UnicodeString Steps = u"r";
  for (int I = 0; I < 20000; ++I)
    Steps += u"/p:a/..";
  EXPECT_EQ(Select(Doc.get(), Steps), "r");
}

TEST_F(XPathSelect, DeepDocumentsWalkWithoutRecursion) {
  UnicodeString Text;
  const int Depth = 50000;
  for (int I = 0; I < Depth; ++I)
    Text += u"<d>";
  Text += u"<leaf/>";
  for (int I = 0; I < Depth; ++I)
    Text += u"</d>";
  TOwned<TLxDOMDocument> Deep(TLxDOMDocument::CreateFromXML(Text));
  EXPECT_EQ(Select(Deep.get(), u"//leaf"), "leaf");
  TOwned<TLxDOMNodeList> All(Deep->CreateNodeList(u"//d"));
  EXPECT_EQ(All->Count(), Depth);
}

} // namespace
} // namespace lorvane
