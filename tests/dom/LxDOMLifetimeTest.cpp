// Who owns a node: faces made on the first interface and gone with the last, the parent pin,
// detaching by Clear, free-standing nodes owned by their interfaces, and the destructor guard.
#include "dom/DomFixtures.h"

namespace lorvane {
namespace {

using test::Append;
using test::MakeNode;

class DomLifetime : public test::LiveObjectsTest {};

IPtr<ILxDOMNode> Intf(TLxDOMNode* ANode) { return DOMInterface<ILxDOMNode>(ANode); }

TEST_F(DomLifetime, TwoCastsShareOneFaceAndItsCount) {
  TLxDOMNode* Root = MakeNode(u"root");
  IPtr<ILxDOMNode> RootIntf = Intf(Root); // keeps the tree alive while faces come and go
  TLxDOMNode* Child = Append(Root, u"child");
  {
    IPtr<ILxDOMNode> First = Intf(Child);
    IPtr<ILxDOMNode> Second = Intf(Child);
    EXPECT_EQ(First.Get(), Second.Get());
    ASSERT_NE(Child->DOMImpl(), nullptr);
    EXPECT_EQ(Child->DOMImpl()->RefCount(), 2);
    // The child's face pins the root's face.
    EXPECT_EQ(Root->DOMImpl()->RefCount(), 2);
  }
  // The child stays in the tree without a face; a new cast makes a new one.
  EXPECT_EQ(Child->DOMImpl(), nullptr);
  EXPECT_EQ(Root->NodeCount(), 1);
  EXPECT_EQ(Root->DOMImpl()->RefCount(), 1);
  const Int64 Faces = TLxDOMObjectImpl::FacesMade();
  EXPECT_EQ(Intf(Child)->GetLocalName(), u"child");
  EXPECT_EQ(TLxDOMObjectImpl::FacesMade(), Faces + 1);
}

TEST_F(DomLifetime, InterfaceOnDeepChildKeepsTheWholeTreeAlive) {
  TLxDOMNode* Root = MakeNode(u"root");
  IPtr<ILxDOMNode> RootIntf = Intf(Root);
  TLxDOMNode* Deep = Root;
  for (int I = 0; I < 5; ++I)
    Deep = Append(Deep, u"n" + IntToStr(I));
  IPtr<ILxDOMNode> DeepIntf = Intf(Deep);
  RootIntf = nullptr;
  EXPECT_EQ(Alive(), 6 + 5 + 6); // six nodes, five child lists, a face on each node
  EXPECT_EQ(DeepIntf->NodePath(false, u""), u"root/n0/n1/n2/n3/n4");
  EXPECT_EQ(DeepIntf->ParentNode()->ParentNode()->GetLocalName(), u"n2");
  DeepIntf = nullptr; // the last interface: the whole tree goes (the fixture checks)
}

TEST_F(DomLifetime, ClearDetachesAChildOnWhichAnInterfaceIsHeld) {
  TLxDOMNode* Root = MakeNode(u"root");
  IPtr<ILxDOMNode> RootIntf = Intf(Root);
  Append(Root, u"a");
  TLxDOMNode* Kept = Append(Root, u"b");
  Append(Kept, u"grandchild");
  Append(Root, u"c");
  IPtr<ILxDOMNode> KeptIntf = Intf(Kept);
  const Int64 Before = Alive();
  Root->Clear();
  EXPECT_EQ(Root->NodeCount(), 0);
  EXPECT_EQ(Alive(), Before - 2); // a and c are gone
  EXPECT_EQ(KeptIntf->ParentNode(), nullptr);
  EXPECT_EQ(KeptIntf->NodeCount(), 1);
  EXPECT_EQ(Root->DOMImpl()->RefCount(), 1); // the pin moved away with the child
  const Int64 WithKept = Alive();
  KeptIntf = nullptr; // owned by its interface now: b, its list, grandchild and b's face go
  EXPECT_EQ(Alive(), WithKept - 4);
}

TEST_F(DomLifetime, DestroyingAParentDetachesAChildThatAnInterfaceHolds) {
  TLxDOMNode* Root = MakeNode(u"root");
  TLxDOMNode* Child = Append(Root, u"child");
  Append(Root, u"other");
  IPtr<ILxDOMNode> ChildIntf = Intf(Child);
  Root->Free();
  EXPECT_EQ(ChildIntf->ParentNode(), nullptr);
  EXPECT_EQ(ChildIntf->GetLocalName(), u"child");
  EXPECT_EQ(Alive(), 2); // the child and its face
}

TEST_F(DomLifetime, AFreeStandingNodeIsOwnedByItsInterfaces) {
  TLxDOMNode* Node = MakeNode(u"n");
  Append(Node, u"child");
  IPtr<ILxDOMNode> NodeIntf = Intf(Node);
  IPtr<ILxDOMNode> Copy = NodeIntf;
  NodeIntf = nullptr;
  EXPECT_EQ(Copy->GetLocalName(), u"n");
  Copy = nullptr; // destroys the node and its subtree (the fixture checks)
}

TEST_F(DomLifetime, ReleasingAChildInterfaceOfAnUnheldTreeDestroysTheTree) {
  // Holding a tree by object reference and dropping an interface taken on it ends the tree:
  // the root got a face through the pin, and its last release destroys it.
  TLxDOMNode* Root = MakeNode(u"root");
  TLxDOMNode* Child = Append(Root, u"child");
  Intf(Child)->GetLocalName();
  EXPECT_EQ(Alive(), 0);
}

TEST_F(DomLifetime, DestroyingANodeThatAnInterfaceHoldsRaisesAndLeavesItToTheInterface) {
  TLxDOMNode* Root = MakeNode(u"root");
  TLxDOMNode* Child = Append(Root, u"child");
  Append(Child, u"grandchild");
  IPtr<ILxDOMNode> ChildIntf = Intf(Child);
  IPtr<ILxDOMNode> RootIntf = Intf(Root);
  test::ExpectRaises<Exception>(
      [&] { Child->Free(); },
      u"An instance of TLxDOMNode is destroyed while it's refcount is not 0!");
  // Its children are gone and it has left its parent, as the message promises.
  EXPECT_EQ(Root->NodeCount(), 0);
  EXPECT_EQ(ChildIntf->NodeCount(), 0);
  EXPECT_EQ(ChildIntf->ParentNode(), nullptr);
  ChildIntf = nullptr;
  RootIntf = nullptr;
}

TEST_F(DomLifetime, ReleaseOnADataObjectWithoutFaceRaises) {
  TOwned<TLxDOMNode> Node(MakeNode(u"n"));
  test::ExpectRaises<Exception>(
      [&] { static_cast<IInterface*>(Node.get())->_Release(); },
      u"DOM Objects do not support interfaces. All interface requests should be handled by the "
      u"DOMIMpl object.");
}

TEST_F(DomLifetime, NodeTurnsOnlyNodeInterfacesBackIntoNodes) {
  TLxDOMNode* Root = MakeNode(u"root");
  IPtr<ILxDOMNode> RootIntf = Intf(Root);
  EXPECT_EQ(TLxDOMObjectImpl::Node(RootIntf.Get()), Root);
  EXPECT_EQ(TLxDOMObjectImpl::Node(static_cast<IInterface*>(Root)), Root);
  EXPECT_EQ(TLxDOMObjectImpl::Node(nullptr), nullptr);
  IPtr<ILxDOMNodeList> Children = RootIntf->GetChildNodes();
  test::ExpectRaises<EInvalidCast>([&] { TLxDOMObjectImpl::Node(Children.Get()); },
                                   u"Invalid class typecast");
}

TEST_F(DomLifetime, RemoveChildDestroysAChildUnlessAnInterfaceHoldsIt) {
  TLxDOMNode* Root = MakeNode(u"root");
  IPtr<ILxDOMNode> RootIntf = Intf(Root);
  TLxDOMNode* Gone = Append(Root, u"gone");
  TLxDOMNode* Held = Append(Root, u"held");
  IPtr<ILxDOMNode> HeldIntf = Intf(Held);
  const Int64 Before = Alive();
  Root->RemoveChild(Gone);
  EXPECT_EQ(Alive(), Before - 1);
  RootIntf->RemoveChild(HeldIntf.Get());
  EXPECT_EQ(Alive(), Before - 1);
  EXPECT_EQ(Root->NodeCount(), 0);
  EXPECT_EQ(HeldIntf->ParentNode(), nullptr);
}

TEST_F(DomLifetime, AnUnansweredInterfaceRequestLeavesNoFaceBehind) {
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  TLxDOMNode* Child = Append(Root.get(), u"child");
  EXPECT_EQ(DOMInterface<ILxDOMElement>(Child), nullptr); // a plain node is no element
  EXPECT_EQ(Child->DOMImpl(), nullptr);
  EXPECT_EQ(Root->DOMImpl(), nullptr); // and nothing above it was pinned
  Root.reset();                        // the tree goes with its owner (the fixture checks)
}

TEST_F(DomLifetime, TheObjectRoadMakesNoFace) {
  const Int64 Faces = TLxDOMObjectImpl::FacesMade();
  TOwned<TLxDOMNode> Root(MakeNode(u"root"));
  for (int I = 0; I < 1000; ++I) {
    TLxDOMNode* Branch = Append(Root.get(), u"branch");
    for (int J = 0; J < 99; ++J)
      Append(Branch, u"leaf");
  }
  Integer Leaves = 0;
  for (TLxDOMNode* Branch : *Root->ChildNodes())
    for (TLxDOMNode* Leaf = Branch->ChildNodes()->First(); Leaf; Leaf = Leaf->NextSibling())
      Leaves += Leaf->GetLocalName() == u"leaf" ? 1 : 0;
  EXPECT_EQ(Leaves, 99000);
  TOwned<TLxDOMNode> Clone(Root->CloneNode(true));
  EXPECT_EQ(Clone->NodeCount(), 1000);
  EXPECT_EQ(TLxDOMObjectImpl::FacesMade(), Faces);
}

TEST_F(DomLifetime, AChainAMillionDeepIsFacedReleasedClonedAndDestroyedWithoutRecursion) {
  TLxDOMNode* Root = MakeNode(u"root");
  IPtr<ILxDOMNode> RootIntf = Intf(Root);
  TLxDOMNode* Deep = Root;
  for (int I = 0; I < 1000000; ++I)
    Deep = Append(Deep, u"n");
  {
    IPtr<ILxDOMNode> DeepIntf = Intf(Deep); // a face on every ancestor, made from the top
    EXPECT_EQ(DeepIntf->NodePath(true, u"").size(), 4u + 2u * 1000000u);
  } // the chain of faces unwinds
  EXPECT_EQ(Root->DOMImpl()->RefCount(), 1);
  TLxDOMNode* Clone = Root->CloneNode(true);
  Clone->Free();
  RootIntf = nullptr;
}

TEST_F(DomLifetime, ReleasingADeepInterfaceEndsTheFacesUpToTheFirstOneStillHeld) {
  TLxDOMNode* Root = MakeNode(u"root"); // free-standing: owned by the faces once they exist
  TLxDOMNode* Middle = nullptr;
  TLxDOMNode* Deep = Root;
  for (int I = 0; I < 200000; ++I) {
    Deep = Append(Deep, u"n");
    if (I == 100000)
      Middle = Deep;
  }
  IPtr<ILxDOMNode> MiddleIntf = Intf(Middle);
  {
    IPtr<ILxDOMNode> DeepIntf = Intf(Deep); // faces from Deep up to Middle, which had one
    EXPECT_EQ(Middle->DOMImpl()->RefCount(), 2);
  }
  // The chain of faces below Middle is gone; Middle's face and its pins up to the root stay.
  EXPECT_EQ(Deep->DOMImpl(), nullptr);
  EXPECT_EQ(Deep->ParentNode()->DOMImpl(), nullptr);
  ASSERT_NE(Middle->DOMImpl(), nullptr);
  EXPECT_EQ(Middle->DOMImpl()->RefCount(), 1);
  ASSERT_NE(Root->DOMImpl(), nullptr);
  EXPECT_EQ(Root->DOMImpl()->RefCount(), 1);
  EXPECT_EQ(MiddleIntf->NodeCount(), 1);
  MiddleIntf = nullptr; // the last interface: the faces and the whole tree go (the fixture checks)
}

TEST_F(DomLifetime, DestroyingAWideDeepTreeFreesAllButTheBranchAnInterfaceHolds) {
  // Three branches, each a chain with a leaf beside every link; an interface is held halfway
  // down the middle one.
  constexpr int Depth = 20000;
  TLxDOMNode* Root = MakeNode(u"root");
  TLxDOMNode* Branch = nullptr;
  TLxDOMNode* Held = nullptr;
  for (int B = 0; B < 3; ++B) {
    TLxDOMNode* Node = Append(Root, u"b" + IntToStr(B));
    if (B == 1)
      Branch = Node;
    for (int I = 0; I < Depth; ++I) {
      Append(Node, u"leaf");
      Node = Append(Node, u"n");
      if (B == 1 && I == Depth / 2)
        Held = Node;
    }
  }
  IPtr<ILxDOMNode> HeldIntf = Intf(Held);
  // What must stay: the branch, every node and child list in it, and a face on each node from
  // the held one up to the branch.
  Int64 Kept = 0;
  for (std::vector<TLxDOMNode*> Pending{Branch}; !Pending.empty();) {
    TLxDOMNode* Node = Pending.back();
    Pending.pop_back();
    Kept += Node->HasChilds() ? 2 : 1;
    if (Node->HasChilds())
      for (TLxDOMNode* Child : *Node->ChildNodes())
        Pending.push_back(Child);
  }
  for (TLxDOMNode* Node = Held; Node != Root; Node = Node->ParentNode())
    Kept += 1;
  Root->Free();
  EXPECT_EQ(Alive(), Kept);
  EXPECT_EQ(Branch->ParentNode(), nullptr);
  EXPECT_EQ(HeldIntf->NodePath(true, u"").size(), 2u + (Depth / 2 + 1) * 2u);
  EXPECT_EQ(HeldIntf->NodeCount(), 2);
  HeldIntf = nullptr; // the branch goes with its last interface (the fixture checks)
}

} // namespace
} // namespace lorvane
