// Structural edits on loaded trees: declarations that leave or change keep no element pointing
// at them, a parent that only a child's face keeps alive survives the edit that takes the child
// away, and an edit that fails leaves the tree as it was.
#include "dom/DomFixtures.h"

namespace lorvane {
namespace {

using test::Names;

// Documents are owned by an interface: a tree that interfaces on its nodes pin goes with the
// last of them, so an owner by object reference would be left with a dangling one.
class DomTreeEdits : public test::LiveObjectsTest {
protected:
  void TearDown() override {
    FHeld = nullptr;
    LiveObjectsTest::TearDown();
  }
  static TLxDOMDocument* Doc(const IPtr<ILxDOMDocument>& AHeld) {
    return static_cast<TLxDOMDocument*>(TLxDOMObjectImpl::Node(AHeld.Get()));
  }
  TLxDOMDocument* Load(const UnicodeString& AXML) {
    FHeld = LxCreateDOM(AXML);
    FDocument = Doc(FHeld);
    return FDocument;
  }
  TLxDOMElement* Root() { return FDocument->GetRootNode(); }
  IPtr<ILxDOMDocument> FHeld;
  TLxDOMDocument* FDocument = nullptr;
};

TEST_F(DomTreeEdits, ARemovedDeclarationLeavesEveryScopeAndEveryLink) {
  struct Case {
    const char16_t* XML;
    const char16_t* Declaration;
    const char16_t* Saved;
  } Cases[] = {
      {u"<r xmlns:x=\"u\"><a/></r>", u"xmlns:x", u"<r b=\"1\"><a c=\"2\" /></r>"},
      {u"<r xmlns=\"u\"><a/></r>", u"xmlns", u"<r b=\"1\"><a c=\"2\" /></r>"},
      {u"<x:r xmlns:x=\"u\" x:k=\"v\"><x:a/></x:r>", u"xmlns:x",
       u"<x:r x:k=\"v\" b=\"1\"><x:a c=\"2\" /></x:r>"},
  };
  for (const Case& C : Cases) {
    SCOPED_TRACE(StringToUTF8(C.XML));
    Load(C.XML);
    TLxDOMElement* A = Root()->FirstElement();
    A->Namespaces(); // the child's own copy of the scope holds the declaration too
    Root()->RemoveAttribute(UnicodeString(C.Declaration));
    EXPECT_EQ(Root()->Namespaces()->Count(), 0);
    EXPECT_EQ(A->Namespaces()->Count(), 0);
    EXPECT_EQ(Root()->NamespaceDeclaration(), nullptr);
    EXPECT_EQ(A->NamespaceDeclaration(), nullptr);
    // Both look the gone declaration up by name in their scope.
    Root()->SetAttribute(u"b", u"1");
    A->SetAttribute(u"c", u"2");
    EXPECT_EQ(Root()->GetNamespaceURI(), u"");
    EXPECT_EQ(A->GetNamespaceURI(), u"");
    EXPECT_EQ(FDocument->GetXML(), C.Saved);
  }
}

TEST_F(DomTreeEdits, AnAttributeThatStopsDeclaringLeavesItsElement) {
  // Each way of renaming takes "xmlns" out of the declarations; the element must drop it
  // before the attribute goes, or the removal and the moves after it read a freed node.
  struct Case {
    const char* Way;
    void (*Rename)(TLxDOMAttribute*);
  } Cases[] = {
      {"SetPrefix", [](TLxDOMAttribute* A) { A->SetPrefix(u"p"); }},
      {"SetQualifiedName", [](TLxDOMAttribute* A) { A->SetQualifiedName(u"p:xmlns"); }},
      {"SetNodeName", [](TLxDOMAttribute* A) { A->SetNodeName(u"p:xmlns"); }},
  };
  for (const Case& C : Cases) {
    SCOPED_TRACE(C.Way);
    Load(u"<r xmlns=\"u\"><a/><b/></r>");
    TLxDOMElement* B = Root()->LastElement();
    ASSERT_NE(Root()->NamespaceDeclaration(), nullptr);
    C.Rename(Root()->FindAttribute(u"xmlns"));
    EXPECT_EQ(Root()->NamespaceDeclaration(), nullptr);
    EXPECT_EQ(Root()->Namespaces()->Count(), 0);
    EXPECT_EQ(Root()->GetNamespaceURI(), u"");
    Root()->RemoveAttribute(u"p:xmlns");
    Root()->FirstElement()->AppendChild(B); // a move reads the links of what moves
    EXPECT_EQ(FDocument->GetXML(), u"<r><a><b /></a></r>");
    FDocument->Clear();
  }
}

TEST_F(DomTreeEdits, AnAttributeRenamedIntoADeclarationJoinsTheScope) {
  Load(u"<p:r p=\"u\"><p:a/></p:r>");
  TLxDOMElement* A = Root()->FirstElement();
  EXPECT_EQ(A->GetNamespaceURI(), u"");
  Root()->FindAttribute(u"p")->SetPrefix(u"xmlns");
  EXPECT_EQ(Names(Root()->Namespaces()), "xmlns:p");
  EXPECT_EQ(Root()->GetNamespaceURI(), u"u");
  EXPECT_EQ(A->GetNamespaceURI(), u"u");
}

TEST_F(DomTreeEdits, AParentKeptOnlyByAChildsFaceSurvivesTheMoveThatTakesTheChild) {
  Load(u"<r><a><b/><c/></a></r>");
  TLxDOMElement* A = Root()->FirstElement();
  IPtr<ILxDOMElement> B = DOMInterface<ILxDOMElement>(A->FirstElement());
  Root()->RemoveChild(A); // only b's face keeps a alive now
  const Int64 WithA = Alive();
  FDocument->AddChild(TLxDOMObjectImpl::Node(B.Get()), nullptr, ldpLast);
  EXPECT_EQ(FDocument->GetXML(), u"<r /><b />");
  EXPECT_EQ(B->ParentNode()->GetNodeType(), ntDocument);
  // a, its child list, its typed list, c, and a's face went with the last hold on a.
  EXPECT_EQ(Alive(), WithA - 5);
}

TEST_F(DomTreeEdits, ADocumentKeptOnlyByItsRootsFaceLastsUntilItsClearIsDone) {
  TLxDOMDocument* Document = Load(u"<r><a/></r>");
  IPtr<ILxDOMElement> RootHeld = DOMInterface<ILxDOMElement>(Document->GetRootNode());
  FHeld = nullptr; // only the root's face keeps the document now
  Document->Clear();
  EXPECT_EQ(RootHeld->ParentNode(), nullptr);
  EXPECT_EQ(RootHeld->Document(), nullptr);
  EXPECT_EQ(RootHeld->GetXML(), u"<r><a /></r>");
  RootHeld = nullptr;
  EXPECT_EQ(Alive(), 0);
}

TEST_F(DomTreeEdits, AParentKeptOnlyByAChildsFaceSurvivesEditsOfItsOwnChildren) {
  // By object reference, on an element that a held child's face alone keeps alive: the edit
  // takes that child away, and the element must last until the edit is done.
  struct Case {
    const char* Edit;
    void (*Run)(TLxDOMElement* AParent, TLxDOMElement* AHeld);
  } Cases[] = {
      {"SetInnerXML", [](TLxDOMElement* P, TLxDOMElement*) { P->SetInnerXML(u"<x/><y/>"); }},
      {"Clear", [](TLxDOMElement* P, TLxDOMElement*) { P->Clear(); }},
      {"RemoveChild", [](TLxDOMElement* P, TLxDOMElement* H) { P->RemoveChild(H); }},
      {"reorder", [](TLxDOMElement* P, TLxDOMElement* H) { P->AddChild(H, nullptr, ldpFirst); }},
      {"move below a sibling",
       [](TLxDOMElement* P, TLxDOMElement* H) { P->LastElement()->AppendChild(H); }},
  };
  for (const Case& C : Cases) {
    SCOPED_TRACE(C.Edit);
    Load(u"<r><a><b/><c/></a></r>");
    TLxDOMElement* A = Root()->FirstElement();
    TLxDOMElement* BNode = A->FirstElement();
    IPtr<ILxDOMElement> B = DOMInterface<ILxDOMElement>(BNode);
    Root()->RemoveChild(A);
    C.Run(A, BNode);
    B = nullptr; // whatever is left is owned by b or by nobody: all of it goes
    FHeld = nullptr;
    EXPECT_EQ(Alive(), 0);
  }
}

TEST_F(DomTreeEdits, DestroyingAnElementDetachesAHeldChildWhileItsDeclarationsAreThere) {
  TLxDOMNode* Top = New<TLxDOMNode>();
  IPtr<ILxDOMNode> TopHeld = DOMInterface<ILxDOMNode>(Top);
  TLxDOMElement* Element = test::AddElementWith(Top, u"t");
  TLxDOMElement* A = Element->AddElement(u"x:a");
  Element->SetAttribute(u"xmlns:x", u"u"); // behind a among the children: it goes first
  ASSERT_EQ(A->NamespaceDeclaration(), Element->FindAttribute(u"xmlns:x"));
  IPtr<ILxDOMElement> Held = DOMInterface<ILxDOMElement>(A);
  Element->Free();
  EXPECT_EQ(Top->NodeCount(), 0);
  EXPECT_EQ(Held->ParentNode(), nullptr);
  EXPECT_EQ(Held->GetNamespaceURI(), u"u"); // kept from the declaration as it left
}

TEST_F(DomTreeEdits, ADeclarationFreedBesideOneThatDoesNotDecodeStillLeaves) {
  // Its destruction can't stop halfway: where the refresh of the scope would fail, the links to
  // it are dropped instead.
  Load(u"<r xmlns:p=\"&#;\" xmlns:q=\"u\"><q:c q:a=\"1\"/></r>");
  TLxDOMElement* C = Root()->FirstElement();
  ASSERT_NE(C->NamespaceDeclaration(), nullptr);
  Root()->FindAttribute(u"xmlns:q")->Free();
  EXPECT_EQ(Root()->AttributeCount(), 1);
  EXPECT_EQ(C->NamespaceDeclaration(), nullptr);
  EXPECT_EQ(C->FindAttribute(u"q:a")->NamespaceDeclaration(), nullptr);
  EXPECT_EQ(Root()->Namespaces()->Count(), 1);
  EXPECT_EQ(FDocument->GetXML(), u"<r xmlns:p=\"&#;\"><q:c q:a=\"1\" /></r>");
}

TEST_F(DomTreeEdits, HeldChildrenLeaveTheirDestroyedParentEvenWhereTheirPlaceDoesNotDecode) {
  // A destruction can't stop halfway: each held child keeps what decodes of its place.
  Load(u"<r xmlns:p=\"&#;\" p:a=\"1\"><p:c/></r>");
  TLxDOMElement* R = Root();
  IPtr<ILxDOMNode> A = DOMInterface<ILxDOMNode>(R->FindAttribute(u"p:a"));
  IPtr<ILxDOMElement> C = DOMInterface<ILxDOMElement>(R->FirstElement());
  R->Free();
  EXPECT_EQ(FDocument->NodeCount(), 0);
  EXPECT_EQ(C->ParentNode(), nullptr);
  EXPECT_EQ(C->GetNamespaceURI(), u"");
  EXPECT_EQ(A->GetNamespaceURI(), u"");
  EXPECT_EQ(C->GetXML(), u"<p:c />");
}

TEST_F(DomTreeEdits, AHeldElementWhoseDestructionIsRefusedKeepsNoLinkToWhatWasFreed) {
  Load(u"<p:r xmlns:p=\"u\"><p:a/>t</p:r>");
  TLxDOMElement* A = Root()->FirstElement();
  IPtr<ILxDOMElement> Held = DOMInterface<ILxDOMElement>(A);
  A->Attributes();
  A->SetAttribute(u"p:k", u"1"); // linked to the root's declaration
  TLxDOMElement* R = Root();
  R->CharNodes();
  IPtr<ILxDOMElement> RootHeld = DOMInterface<ILxDOMElement>(R);
  test::ExpectRaises<Exception>(
      [&] { R->Free(); },
      u"An instance of TLxDOMElement is destroyed while it's refcount is not 0!");
  // Its children are gone, a detached first: lists, declaration and document follow.
  EXPECT_EQ(RootHeld->ElementCount(), 0);
  EXPECT_EQ(RootHeld->AttributeCount(), 0);
  EXPECT_EQ(R->CharNodes()->Count(), 0);
  EXPECT_EQ(R->NamespaceDeclaration(), nullptr);
  EXPECT_EQ(R->GetDocument(), nullptr);
  EXPECT_EQ(Held->ParentNode(), nullptr);
  EXPECT_EQ(A->FindAttribute(u"p:k")->NamespaceDeclaration(), nullptr);
  FHeld = nullptr; // the document goes; nothing the held nodes keep points into it
  EXPECT_EQ(RootHeld->GetXML(), u"<p:r />");
  EXPECT_EQ(Held->GetXML(), u"<p:a p:k=\"1\" />");
}

TEST_F(DomTreeEdits, ARemovalThatFailsLeavesTheTreeAsItWas) {
  // The element's kept namespace comes from a declaration that doesn't decode: the removal
  // raises before anything moved.
  Load(u"<r xmlns:p=\"&#;\"><p:c/><d/></r>");
  TLxDOMElement* C = Root()->FirstElement(); // makes the typed list
  test::ExpectRaises<EConvertError>([&] { Root()->RemoveChild(C); },
                                    u"'' is not a valid integer value");
  EXPECT_EQ(C->ParentNode(), Root());
  EXPECT_EQ(Root()->ElementCount(), 2);
  EXPECT_EQ(Root()->Elements()->GetItem(0), C);
  EXPECT_EQ(Root()->NodeCount(), 3);
  EXPECT_EQ(FDocument->GetXML(), u"<r xmlns:p=\"&#;\"><p:c /><d /></r>");
}

TEST_F(DomTreeEdits, AMoveOrInsertThatFailsLeavesBothPlacesAsTheyWere) {
  // Leaving needs the URI of the element's declaration, arriving the URIs in scope at the new
  // place: where one of them doesn't decode, the edit raises before anything moved.
  struct Case {
    const char* Edit;
    const char16_t* XML;
    void (*Run)(TLxDOMElement* ARoot, TLxDOMElement* AOther);
  } Cases[] = {
      {"move out", u"<r xmlns:p=\"&#;\"><p:c/><d/></r>",
       [](TLxDOMElement* R, TLxDOMElement* O) { O->AppendChild(R->FirstElement()); }},
      {"move within", u"<r xmlns:p=\"&#;\"><p:c/><d/></r>",
       [](TLxDOMElement* R, TLxDOMElement*) { R->LastElement()->AppendChild(R->FirstElement()); }},
      {"move in", u"<r xmlns:p=\"&#;\"><d/></r>",
       [](TLxDOMElement* R, TLxDOMElement* O) {
         R->FirstElement()->AppendChild(O->FirstElement());
       }},
      {"insert", u"<r xmlns:p=\"&#;\"><d/></r>",
       [](TLxDOMElement* R, TLxDOMElement*) { R->FirstElement()->AddElement(u"urn:x", u"x:e"); }},
  };
  for (const Case& C : Cases) {
    SCOPED_TRACE(C.Edit);
    Load(C.XML);
    IPtr<ILxDOMDocument> OtherHeld = LxCreateDOM(u"<s><q:c xmlns:q=\"v\"/></s>");
    TLxDOMDocument* Other = Doc(OtherHeld);
    Root()->Elements();
    Other->GetRootNode()->Elements();
    const UnicodeString Before = FDocument->GetXML(), OtherBefore = Other->GetXML();
    EXPECT_THROW(C.Run(Root(), Other->GetRootNode()), EConvertError);
    EXPECT_EQ(FDocument->GetXML(), Before);
    EXPECT_EQ(Other->GetXML(), OtherBefore);
    // Every child is where its parent's lists say it is.
    for (TLxDOMElement* Parent : {Root(), Other->GetRootNode()}) {
      Integer Elements = 0;
      for (TLxDOMNode* Child : *Parent->ChildNodes()) {
        EXPECT_EQ(Child->ParentNode(), Parent);
        Elements += Child->GetNodeType() == ntElement ? 1 : 0;
      }
      EXPECT_EQ(Parent->Elements()->Count(), Elements);
    }
  }
}

} // namespace
} // namespace lorvane
