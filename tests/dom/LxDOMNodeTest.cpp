// Nodes: names, linking at positions, moving, cycles, removal, cloning, siblings and paths.
#include "dom/DomFixtures.h"

namespace lorvane {
namespace {

using test::Append;
using test::ChildNames;
using test::MakeNode;

class DomNode : public test::LiveObjectsTest {};

TEST_F(DomNode, QualifiedNameSplitsAtTheFirstColon) {
  TOwned<TLxDOMNode> Node(MakeNode(u"a:b:c"));
  EXPECT_EQ(Node->GetPrefix(), u"a");
  EXPECT_EQ(Node->GetLocalName(), u"b:c");
  EXPECT_EQ(Node->GetQualifiedName(), u"a:b:c");
  Node->SetQualifiedName(u"plain");
  EXPECT_EQ(Node->GetPrefix(), u"");
  EXPECT_EQ(Node->GetNodeName(), u"plain");
  Node->SetPrefix(u"p");
  EXPECT_EQ(Node->GetQualifiedName(), u"p:plain");
  Node->SetQualifiedName(u":x"); // no prefix before the colon: kept whole, so it writes back
  EXPECT_EQ(Node->GetPrefix(), u"");
  EXPECT_EQ(Node->GetQualifiedName(), u":x");
}

TEST_F(DomNode, ANodeRenamedByItsOwnNameReadsNoNameItGaveUp) {
  // Names live in records that a rename lets go: a rename by the node's own strings must read
  // them before it drops the record they are in.
  for (TLxDOMNodeClass Class :
       {TLxDOMNode::StaticClass(), TLxDOMElement::StaticClass(), TLxDOMAttribute::StaticClass()}) {
    TOwned<TLxDOMNode> Node(static_cast<TLxDOMNode*>(Class->CreateDefault()));
    Node->SetQualifiedName(u"p:only-this-node-is-named-so");
    Node->SetQualifiedName(Node->GetLocalName());
    EXPECT_EQ(Node->GetQualifiedName(), u"only-this-node-is-named-so");
    Node->SetPrefix(u"q");
    Node->SetQualifiedName(Node->GetPrefix());
    EXPECT_EQ(Node->GetQualifiedName(), u"q");
    Node->SetPrefix(Node->GetLocalName());
    EXPECT_EQ(Node->GetQualifiedName(), u"q:q");
  }
}

TEST_F(DomNode, ChildrenGoWhereThePositionAndReferenceSay) {
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  TLxDOMNode* B = Append(Root.get(), u"b");
  Root->AddChild(MakeNode(u"a"), nullptr, ldpFirst);
  Root->AddChild(MakeNode(u"d"), nullptr, ldpLast);
  Root->InsertBefore(MakeNode(u"c"), Root->ChildNodes()->Last());
  Root->AddChild(MakeNode(u"b2"), B, ldpAfter);
  EXPECT_EQ(ChildNames(Root.get()), "a,b,b2,c,d");
  // A reference that is no child: before goes to the front, after to the end.
  TOwned<TLxDOMNode> Stranger(MakeNode(u"x"));
  Root->AddChild(MakeNode(u"front"), Stranger.get(), ldpBefore);
  Root->AddChild(MakeNode(u"end"), Stranger.get(), ldpAfter);
  Root->AddChild(MakeNode(u"nilbefore"), nullptr, ldpBefore);
  EXPECT_EQ(ChildNames(Root.get()), "nilbefore,front,a,b,b2,c,d,end");
}

TEST_F(DomNode, AddChildByClassConstructsThatClass) {
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  TLxDOMNode* Made = Root->AddChild(TLxDOMNode::StaticClass(), nullptr, ldpLast);
  EXPECT_EQ(Made->ParentNode(), Root.get());
  EXPECT_EQ(Made->ClassName(), u"TLxDOMNode");
  test::ExpectRaises<EInvalidCast>(
      [&] { Root->AddChild(TLxDOMNodeList::StaticClass(), nullptr, ldpLast); },
      u"Invalid class typecast");
  EXPECT_EQ(Root->NodeCount(), 1);
}

TEST_F(DomNode, AddingALinkedNodeMovesIt) {
  TOwned<TLxDOMNode> First(MakeNode(u"first"));
  TOwned<TLxDOMNode> Second(MakeNode(u"second"));
  TLxDOMNode* Moved = Append(First.get(), u"moved");
  Append(Moved, u"inner");
  Second->AppendChild(Moved);
  EXPECT_EQ(First->NodeCount(), 0);
  EXPECT_EQ(Moved->ParentNode(), Second.get());
  EXPECT_EQ(ChildNames(Moved), "inner");
}

TEST_F(DomNode, ANodeCantBeAddedBelowItself) {
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  TLxDOMNode* Child = Append(Root.get(), u"child");
  TLxDOMNode* Grandchild = Append(Child, u"grandchild");
  for (TLxDOMNode* Below : {Child, Grandchild})
    test::ExpectRaises<ELxDomException>(
        [&] { Below->AppendChild(Child); },
        u"A node can't be added below itself or one of its descendants.");
  EXPECT_EQ(Child->ParentNode(), Root.get());
}

TEST_F(DomNode, RemovingANodeThatIsNoChildRaises) {
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  TOwned<TLxDOMNode> Other(MakeNode(u"other"));
  TLxDOMNode* Child = Append(Other.get(), u"child");
  test::ExpectRaises<ELxDomNotFound>([&] { Root->RemoveChild(Child); },
                                     u"The node to remove is not a child of this node.");
  EXPECT_EQ(Child->ParentNode(), Other.get());
}

TEST_F(DomNode, KindsWithoutValueOrInnerXMLRefuseToSetThem) {
  TOwned<TLxDOMNode> Node(MakeNode(u"n"));
  test::ExpectRaises<ELxDomNotSupported>([&] { Node->SetNodeValue(u"v"); },
                                         u"The SetNodeValue is not supported by the TLxDomNode");
  test::ExpectRaises<ELxDomNotSupported>([&] { Node->SetInnerXML(u"<a/>"); },
                                         u"The SetInnerXML is not supported by the TLxDomNode");
  EXPECT_EQ(Node->GetInnerXML(), u"");
  EXPECT_EQ(Node->GetNodeValue(), u"");
}

TEST_F(DomNode, ClearRemovesEveryChildAndDestroysThem) {
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  for (auto Name : {u"a", u"b", u"c"})
    Append(Append(Root.get(), Name), u"inner");
  const Int64 Before = Alive();
  Root->Clear();
  EXPECT_FALSE(Root->HasChilds());
  EXPECT_EQ(Alive(), Before - 9); // three nodes, their lists and their children
}

TEST_F(DomNode, ADeepCloneKeepsOrderAndAShallowOneTheNameAlone) {
  TOwned<TLxDOMNode> Root(MakeNode(u"p:root"));
  for (auto Name : {u"c", u"a", u"b"})
    Append(Append(Root.get(), Name), UnicodeString(Name) + u"1");
  TOwned<TLxDOMNode> Deep(Root->CloneNode(true));
  EXPECT_EQ(Deep->GetQualifiedName(), u"p:root");
  EXPECT_EQ(ChildNames(Deep.get()), "c,a,b");
  EXPECT_EQ(ChildNames(Deep->ChildNodes()->GetItem(2)), "b1");
  EXPECT_EQ(Deep->ParentNode(), nullptr);
  EXPECT_EQ(Deep->DOMImpl(), nullptr);
  TOwned<TLxDOMNode> Shallow(Root->ChildNodes()->First()->CloneNode(false));
  EXPECT_EQ(Shallow->GetQualifiedName(), u"c");
  EXPECT_EQ(Shallow->NodeCount(), 0);
  EXPECT_EQ(Shallow->ParentNode(), nullptr);
}

TEST_F(DomNode, SiblingsEndInNil) {
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  TLxDOMNode* A = Append(Root.get(), u"a");
  TLxDOMNode* B = Append(Root.get(), u"b");
  EXPECT_EQ(A->NextSibling(), B);
  EXPECT_EQ(B->PreviousSibling(), A);
  EXPECT_EQ(B->NextSibling(), nullptr);
  EXPECT_EQ(A->PreviousSibling(), nullptr);
  EXPECT_EQ(Root->NextSibling(), nullptr);
  EXPECT_EQ(Root->PreviousSibling(), nullptr);
}

TEST_F(DomNode, NodePathJoinsTheNamesFromTheRoot) {
  TOwned<TLxDOMNode> Root(MakeNode(u"a"));
  TLxDOMNode* Leaf = Append(Append(Root.get(), u"p:b"), u"c");
  EXPECT_EQ(Leaf->NodePath(false, u""), u"a/p:b/c");
  EXPECT_EQ(Leaf->NodePath(true, u""), u"a/b/c");
  EXPECT_EQ(Root->NodePath(false, u""), u"a");
}

TEST_F(DomNode, NodesWithoutParentOrDocumentFollowTheDefaults) {
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  TLxDOMNode* Child = Append(Root.get(), u"child");
  EXPECT_FALSE(Child->GetCaseSensitive());
  EXPECT_FALSE(Child->GetPreserveSpace());
  EXPECT_EQ(Child->GetSelectMatchOption(), soQualifiedName);
  DefaultXPathCollation = TLxXPathCollationCodepoint::StaticClass();
  DefaultPreserveCase = true;
  DefaultSelectMatchOption = soLocalName;
  EXPECT_TRUE(Child->GetCaseSensitive());
  EXPECT_TRUE(Child->GetPreserveSpace());
  EXPECT_EQ(Child->GetSelectMatchOption(), soLocalName);
  DefaultXPathCollation = TLxXPathCollationASCIICI::StaticClass();
  DefaultPreserveCase = false;
  DefaultSelectMatchOption = soQualifiedName;
}

TEST_F(DomNode, TheInterfaceTurnsNodesIntoInterfacesAndBack) {
  TLxDOMNode* Root = MakeNode(u"root");
  IPtr<ILxDOMNode> RootIntf = DOMInterface<ILxDOMNode>(Root);
  IPtr<ILxDOMNode> Child = RootIntf->AppendChild(DOMInterface<ILxDOMNode>(MakeNode(u"b")).Get());
  RootIntf->InsertBefore(DOMInterface<ILxDOMNode>(MakeNode(u"a")).Get(), Child.Get());
  EXPECT_EQ(ChildNames(Root), "a,b");
  EXPECT_EQ(Child->PreviousSibling()->GetLocalName(), u"a");
  EXPECT_EQ(Child->NextSibling(), nullptr);
  EXPECT_EQ(Child->ParentNode().Get(), RootIntf.Get());
  EXPECT_EQ(RootIntf->GetChildNodes()->Count(), 2);
  IPtr<ILxDOMNode> Clone = RootIntf->CloneNode(true);
  EXPECT_EQ(Clone->NodeCount(), 2);
  EXPECT_EQ(Clone->ParentNode(), nullptr);
}

TEST_F(DomNode, ASubtreeTakesTheDocumentItIsLinkedIntoAtEveryDepth) {
  // A deep chain whose links carry attributes, text and a leaf beside them: every node of
  // every kind follows the subtree into a document, out of it, and into another.
  TOwned<TLxDOMDocument> First(TLxDOMDocument::CreateFromXML(u"<a/>"));
  TOwned<TLxDOMDocument> Second(TLxDOMDocument::CreateFromXML(u"<b/>"));
  TOwned<TLxDOMElement> Holder(New<TLxDOMElement>());
  Holder->SetQualifiedName(u"holder");
  auto* Top = New<TLxDOMElement>();
  Top->SetQualifiedName(u"top");
  TLxDOMElement* Link = Top;
  for (int I = 0; I < 20000; ++I) {
    Link->AddAttribute(u"i")->SetNodeValue(IntToStr(I));
    Link->AddText(u"t");
    Link->AddElement(u"leaf");
    Link = Link->AddElement(u"n");
  }
  Holder->AppendChild(Top);
  // Every node of the subtree, kinds other than elements included, is in ADocument.
  auto AllIn = [&](TLxDOMDocument* ADocument) {
    Int64 Nodes = 0;
    for (std::vector<TLxDOMNode*> Pending{Top}; !Pending.empty();) {
      TLxDOMNode* Node = Pending.back();
      Pending.pop_back();
      if (Node->GetDocument() != ADocument)
        return std::string("not in it: ") + StringToUTF8(Node->NodePath(true, u""));
      ++Nodes;
      if (Node->HasChilds())
        for (TLxDOMNode* Child : *Node->ChildNodes())
          Pending.push_back(Child);
    }
    return std::to_string(Nodes) + " nodes";
  };
  const std::string AllNodes = std::to_string(1 + 20000 * 4) + " nodes";
  EXPECT_EQ(AllIn(nullptr), AllNodes);
  First->GetRootNode()->AppendChild(Top);
  EXPECT_EQ(AllIn(First.get()), AllNodes);
  Second->GetRootNode()->AppendChild(Top);
  EXPECT_EQ(AllIn(Second.get()), AllNodes);
  Holder->AppendChild(Top);
  EXPECT_EQ(AllIn(nullptr), AllNodes);
}

} // namespace
} // namespace lorvane
