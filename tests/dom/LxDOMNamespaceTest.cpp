// Namespaces in the tree: resolution by prefix through the declarations in scope, and what
// moved, detached and relinked nodes keep. Trees hang under a plain node and are refreshed by
// hand, as linking into a document does.
#include "dom/DomFixtures.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/core/LxWellKnownNames.h"

namespace lorvane {
namespace {

using test::AddElementWith;
using test::Names;

class DomNamespaces : public test::LiveObjectsTest {
protected:
  void TearDown() override {
    FTops.clear();
    LiveObjectsTest::TearDown();
  }
  /// A plain node to hang a tree under; refreshed by Refresh().
  TLxDOMNode* Top() { return FTops.emplace_back(New<TLxDOMNode>()).get(); }
  void Refresh() {
    for (auto& T : FTops)
      T->RefreshNamespaces();
  }
  std::vector<TOwned<TLxDOMNode>> FTops;
};

TEST_F(DomNamespaces, AnUnprefixedChildDoesNotTakeOverTheDefaultNamespace) {
  TLxDOMElement* A = AddElementWith(Top(), u"a", {{u"xmlns", u"u"}, {u"x", u"1"}});
  TLxDOMElement* B = A->AddElement(u"b");
  Refresh();
  EXPECT_EQ(A->GetNamespaceURI(), u"u");
  EXPECT_EQ(B->GetNamespaceURI(), u"");
  EXPECT_EQ(B->AttributeCount(), 0); // and it gets no attribute for it
  // An unprefixed attribute reports the default namespace in scope.
  EXPECT_EQ(A->FindAttribute(u"x")->GetNamespaceURI(), u"u");
}

TEST_F(DomNamespaces, ChildrenResolveByPrefix) {
  TLxDOMElement* A = AddElementWith(Top(), u"p:a", {{u"xmlns:p", u"u"}, {u"xmlns", u"v"}});
  TLxDOMElement* PB = A->AddElement(u"p:b");
  TLxDOMElement* B = A->AddElement(u"b");
  TLxDOMAttribute* Lang = B->AddAttribute(u"xml:lang");
  Refresh();
  EXPECT_EQ(PB->GetNamespaceURI(), u"u");
  EXPECT_EQ(PB->NamespaceDeclaration(), A->NamespaceDeclaration()); // shared
  EXPECT_EQ(B->GetNamespaceURI(), u"v");
  EXPECT_EQ(Lang->GetNamespaceURI(), cLxNsXML);
  // A change of the declaration's value is seen at once by every node linked to it.
  A->SetAttribute(u"xmlns:p", u"changed");
  EXPECT_EQ(PB->GetNamespaceURI(), u"changed");
  EXPECT_EQ(Names(B->Namespaces()), "xmlns:p,xmlns");
}

TEST_F(DomNamespaces, AnOwnDeclarationReplacesTheInheritedEntryInTheChildOnly) {
  TLxDOMElement* A = AddElementWith(Top(), u"a", {{u"xmlns:p", u"u"}, {u"xmlns:q", u"w"}});
  TLxDOMElement* B = AddElementWith(A, u"p:b", {{u"xmlns:p", u"v"}});
  Refresh();
  EXPECT_EQ(Names(A->Namespaces()), "xmlns:p,xmlns:q");
  EXPECT_EQ(Names(B->Namespaces()), "xmlns:q,xmlns:p");
  EXPECT_EQ(B->GetNamespaceURI(), u"v");
  EXPECT_EQ(B->Namespaces()->GetItem(1)->ParentNode(), B);
}

TEST_F(DomNamespaces, SetAttributeOfADeclarationRefreshesAndAddAttributeDoesNot) {
  TLxDOMElement* A = AddElementWith(Top(), u"p:a");
  Refresh();
  A->AddAttribute(u"xmlns:p")->SetNodeValue(u"u");
  EXPECT_EQ(A->GetNamespaceURI(), u""); // named before linking: no refresh yet
  Refresh();
  EXPECT_EQ(A->GetNamespaceURI(), u"u");
  TLxDOMElement* B = AddElementWith(A, u"q:b");
  B->SetAttribute(u"xmlns:q", u"w"); // named after linking: its element refreshes
  EXPECT_EQ(B->GetNamespaceURI(), u"w");
}

TEST_F(DomNamespaces, AMovedElementDeclaresThePrefixItNeedsAtItsNewPlace) {
  TLxDOMElement* A = AddElementWith(Top(), u"p:a", {{u"xmlns:p", u"u"}});
  TLxDOMElement* Moved = AddElementWith(A, u"p:b");
  TLxDOMElement* C = AddElementWith(Top(), u"c");
  Refresh();
  ASSERT_EQ(Moved->GetNamespaceURI(), u"u");
  C->AppendChild(Moved);
  EXPECT_EQ(Names(Moved->Attributes()), "xmlns:p");
  EXPECT_EQ(Moved->GetNamespaceURI(), u"u");
  EXPECT_EQ(Moved->NamespaceDeclaration()->ParentNode(), Moved);
}

TEST_F(DomNamespaces, AnElementWithoutNamespaceMovedUnderADefaultOneSaysSoInTheText) {
  TLxDOMElement* Plain = AddElementWith(AddElementWith(Top(), u"x"), u"b");
  TLxDOMElement* A = AddElementWith(Top(), u"a", {{u"xmlns", u"u"}});
  Refresh();
  A->AppendChild(Plain);
  Refresh();
  EXPECT_EQ(Plain->GetAttribute(u"xmlns"), u"");
  EXPECT_EQ(Plain->GetNamespaceURI(), u"");
  EXPECT_EQ(Plain->NamespaceDeclaration()->ParentNode(), Plain);
}

TEST_F(DomNamespaces, ADetachedChildKeepsItsURIAndForgetsTheTreeItLeft) {
  TLxDOMElement* A = AddElementWith(Top(), u"p:a", {{u"xmlns:p", u"u"}});
  TLxDOMElement* B = AddElementWith(A, u"p:b");
  TLxDOMElement* Deep = AddElementWith(B, u"p:c");
  Refresh();
  IPtr<ILxDOMElement> Held = DOMInterface<ILxDOMElement>(B);
  IPtr<ILxDOMNode> TopHeld = DOMInterface<ILxDOMNode>(A->ParentNode()); // the top got a face
  A->Clear();
  FTops.back().release(); // owned by TopHeld now
  FTops.pop_back();
  EXPECT_EQ(Held->ParentNode(), nullptr);
  EXPECT_EQ(Held->GetNamespaceURI(), u"u");
  EXPECT_EQ(B->Namespaces()->Count(), 0);
  EXPECT_EQ(Deep->NamespaceDeclaration(), nullptr); // it named an attribute of the old tree
  TopHeld = nullptr;
  // Relinked, the kept URI is declared again where it's missing. The new tree is owned by an
  // interface: the one held on B will pin it, and its release would end a tree held otherwise.
  auto* NewTop = New<TLxDOMNode>();
  IPtr<ILxDOMNode> NewTopHeld = DOMInterface<ILxDOMNode>(NewTop);
  AddElementWith(NewTop, u"c")->AppendChild(B);
  EXPECT_EQ(Names(B->Attributes()), "xmlns:p");
  NewTop->RefreshNamespaces();
  EXPECT_EQ(Deep->GetNamespaceURI(), u"u");
}

TEST_F(DomNamespaces, NamespaceFormsDeclareWhatTheyUse) {
  TLxDOMElement* Root = AddElementWith(Top(), u"root", {{u"xmlns:p", u"urn:p"}});
  Refresh();
  TLxDOMElement* Known = Root->ElementByName(u"urn:p", u"e", coCreate);
  EXPECT_EQ(Known->GetQualifiedName(), u"p:e");
  TLxDOMElement* Fresh = Root->AddElement(u"urn:q", u"q:f");
  EXPECT_EQ(Names(Fresh->Attributes()), "xmlns:q");
  EXPECT_EQ(Fresh->GetNamespaceURI(), u"urn:q");
  TLxDOMElement* Created = Root->ElementByName(u"urn:r", u"r:g", true);
  EXPECT_EQ(Created->GetAttribute(u"xmlns:r"), u"urn:r");
  EXPECT_EQ(Root->FindNamespace(u"urn:p"), Root->FindAttribute(u"xmlns:p"));
  EXPECT_EQ(Created->FindNamespace(u"urn:p"), Root->FindAttribute(u"xmlns:p"));
  EXPECT_EQ(Root->FindNamespace(u"urn:none"), nullptr);
  TLxDOMAttribute* Attr = Root->AddAttribute(u"urn:s", u"s:a");
  EXPECT_EQ(Names(Root->Attributes()), "xmlns:p,xmlns:s,s:a");
  EXPECT_EQ(Attr->GetNamespaceURI(), u"urn:s");
}

TEST_F(DomNamespaces, DeclarationsAreRecognisedWithoutRegardToCase) {
  TOwned<TLxDOMElement> E(New<TLxDOMElement>());
  struct Case {
    const char16_t* Name;
    bool IsDeclaration;
    const char16_t* Prefix;
  } Cases[] = {{u"xmlns", true, u""},    {u"XMLNS", true, u""},        {u"xmlns:p", true, u"p"},
               {u"Xmlns:q", true, u"q"}, {u"p:xmlns", false, nullptr}, {u"xmlnsx", false, nullptr}};
  for (const Case& C : Cases) {
    TLxDOMAttribute* A = E->AddAttribute(C.Name);
    EXPECT_EQ(A->IsNamespace(), C.IsDeclaration) << StringToUTF8(C.Name);
    if (C.IsDeclaration)
      EXPECT_EQ(A->NamespacePrefix(), C.Prefix);
    else
      test::ExpectRaises<EAssertionFailed>([&] { A->NamespacePrefix(); },
                                           u"The attribute is no namespace declaration");
  }
}

TEST_F(DomNamespaces, TheDeclarationOfAPrefixIsFoundAsBySearchingItsJoinedName) {
  // The look-up of a prefix's declaration matches the name in its parts; it must agree with the
  // search for "xmlns:" prefix by qualified name under either collation, whatever the case.
  TOwned<TLxDOMDocument> Doc(New<TLxDOMDocument>());
  Doc->LoadFromXML(u"<r xmlns=\"d\" xmlns:p=\"1\" XMLNS:Q=\"2\" xmlns:pp=\"3\" xmlns:P=\"4\" "
                   u"Xmlns=\"5\"/>");
  TLxDOMAttrList* Scope = Doc->GetRootNode()->Namespaces();
  for (const bool CaseSensitive : {false, true}) {
    Doc->SetCaseSensitive(CaseSensitive);
    int Found = 0;
    for (const char16_t* Prefix : {u"", u"p", u"P", u"q", u"Q", u"pp", u"pP", u"x", u"xmlns"}) {
      const UnicodeString P(Prefix);
      TLxDOMNode* Expected =
          Scope->Find(P.empty() ? UnicodeString(u"xmlns") : u"xmlns:" + P, {soQualifiedName});
      EXPECT_EQ(Scope->FindDeclaration(P), Expected)
          << StringToUTF8(P) << (CaseSensitive ? " (case-sensitive)" : "");
      Found += Expected != nullptr;
    }
    EXPECT_GT(Found, 0);
  }
  Doc->SetCaseSensitive(false);
  ASSERT_NE(Scope->FindDeclaration(u"q"), nullptr);
  EXPECT_EQ(Scope->FindDeclaration(u"q")->GetNodeValue(), u"2");
}

/// Each element and attribute below ANode in document order: its name, its namespace URI in
/// braces, "*" after an element that preserves space, a "/" where an element's list ends.
std::string NamespaceOutline(TLxDOMNode* ANode) {
  std::string Result;
  std::vector<std::pair<TLxDOMNode*, bool>> Pending{{ANode, false}};
  while (!Pending.empty()) {
    auto [Node, Closing] = Pending.back();
    Pending.pop_back();
    if (Closing) {
      Result += "/ ";
      continue;
    }
    if (Node != ANode) {
      Result += StringToUTF8(Node->GetQualifiedName()) + "{" +
                StringToUTF8(Node->GetNamespaceURI()) + "}";
      if (Node->GetNodeType() == ntElement && Node->GetPreserveSpace())
        Result += "*";
      Result += " ";
    }
    if (Node->GetNodeType() != ntElement && Node->GetNodeType() != ntDocument)
      continue;
    Pending.emplace_back(Node, true);
    if (TLxDOMNodeList* Children = Node->HasChilds() ? Node->ChildNodes() : nullptr)
      for (Integer I = Children->Count() - 1; I >= 0; --I)
        if (Children->GetItem(I)->GetNodeType() == ntElement ||
            Children->GetItem(I)->GetNodeType() == ntAttribute)
          Pending.emplace_back(Children->GetItem(I), false);
  }
  return Result;
}

TEST_F(DomNamespaces, ALoadLinksNodesAsLinkingThemOneByOneDoes) {
  // Loading links each element with its attributes in one step; what it resolves must be what
  // the general linking rules give: own declarations, shared scopes, default declarations for
  // unprefixed attributes, "xml:space" (read where it stands) and preserve-space passed down.
  // A prefix bound anew in one subtree ("s") must not leak into a later sibling ("v").
  const UnicodeString Text =
      u"<r xmlns=\"u\" xmlns:p=\"v\" a=\"1\" p:b=\"2\">"
      u"<c d=\"3\"><p:e f=\"4\" p:g=\"5\"/></c>"
      u"<p:h xmlns:p=\"w\" p:i=\"6\"><j xml:space=\"preserve\" k=\"7\"><l> t </l></j></p:h>"
      u"<m xmlns=\"x\"><n/><P:o/></m><s xmlns:p=\"y\"><t p:u=\"8\"/></s><v p:w=\"9\"/>"
      u"<q xml:space=\"default\"/></r>";
  struct Case {
    const char* Name;
    const char16_t* Into; // the element of the document loaded into; nil: the document
    std::string Outline;
  } Cases[] = {
      {"into a document", nullptr,
       "r{u} xmlns{u} xmlns:p{} a{u} p:b{v} c{} d{u} p:e{v} f{u} p:g{v} / / p:h{w} xmlns:p{} "
       "p:i{w} j{u}* xml:space{http://www.w3.org/XML/1998/namespace} k{u} l{}* / / / m{x} "
       "xmlns{x} n{} / P:o{v} / / s{} xmlns:p{} t{} p:u{y} / / v{} p:w{v} / q{} "
       "xml:space{http://www.w3.org/XML/1998/namespace} / / / "},
      {"into an element of a document", u"z",
       "z{} r{u} xmlns{u} xmlns:p{} a{u} p:b{v} c{} d{u} p:e{v} f{u} p:g{v} / / p:h{w} "
       "xmlns:p{} p:i{w} j{u}* xml:space{http://www.w3.org/XML/1998/namespace} k{u} l{}* / / "
       "/ m{x} xmlns{x} n{} / P:o{v} / / s{} xmlns:p{} t{} p:u{y} / / v{} p:w{v} / q{} "
       "xml:space{http://www.w3.org/XML/1998/namespace} / / / / "},
  };
  for (const Case& C : Cases) {
    TOwned<TLxDOMDocument> Doc(New<TLxDOMDocument>());
    TLxDOMNode* Target = Doc.get();
    if (C.Into) {
      Doc->LoadFromXML(UnicodeString(u"<") + C.Into + u"/>");
      Target = Doc->GetRootNode();
    }
    const RawByteString Bytes = StringToUTF8(Text);
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(Bytes.data()), Int64(Bytes.size())));
    Target->LoadFromStream(Stream.get(), 65001);
    EXPECT_EQ(NamespaceOutline(Doc.get()), C.Outline) << C.Name;
    // A text node below a preserving element keeps its blanks.
    TLxDOMElement* R = C.Into ? Doc->GetRootNode()->FindElement(u"r") : Doc->GetRootNode();
    ASSERT_NE(R, nullptr) << C.Name;
    EXPECT_EQ(R->FindElement(u"p:h")->FindElement(u"j")->FindElement(u"l")->GetText(), u" t ")
        << C.Name;
  }
}

} // namespace
} // namespace lorvane
