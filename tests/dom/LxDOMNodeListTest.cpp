// Node lists: positions, neighbours, searches by name with their options, and list lifetime.
#include "dom/DomFixtures.h"

namespace lorvane {
namespace {

using test::MakeNode;

class DomNodeList : public test::LiveObjectsTest {
protected:
  void SetUp() override {
    LiveObjectsTest::SetUp();
    FList.reset(New<TLxDOMNodeList>());
  }
  void TearDown() override {
    FList.reset();
    FNodes.clear();
    LiveObjectsTest::TearDown();
  }

  /// A free-standing list over free-standing nodes named ANames, all owned by the fixture.
  TLxDOMNodeList* ListOf(std::initializer_list<const char16_t*> ANames) {
    for (auto Name : ANames)
      FList->Add(FNodes.emplace_back(MakeNode(Name)).get(), ldpLast);
    return FList.get();
  }
  std::string Names() const { return test::Names(FList.get()); }
  TLxDOMNode* Own(TLxDOMNode* ANode) { return FNodes.emplace_back(ANode).get(); }

  TOwned<TLxDOMNodeList> FList;
  std::vector<TOwned<TLxDOMNode>> FNodes;
};

TEST_F(DomNodeList, AddPlacesByPositionAndReference) {
  TLxDOMNodeList* List = ListOf({u"a", u"b"});
  TLxDOMNode* A = List->GetItem(0);
  List->Add(Own(MakeNode(u"after-a")), A, ldpAfter);
  List->Add(Own(MakeNode(u"before-a")), ldpBefore, A);
  List->Add(Own(MakeNode(u"nil-after")), nullptr, ldpAfter);
  List->Add(Own(MakeNode(u"nil-before")), nullptr, ldpBefore);
  List->Add(Own(MakeNode(u"first")), ldpFirst);
  EXPECT_EQ(Names(), "first,nil-before,before-a,a,after-a,b,nil-after");
  test::ExpectRaises<EAssertionFailed>([&] { List->Add(A, ldpAfter, nullptr); },
                                       u"A relative position needs a reference node");
}

TEST_F(DomNodeList, NeighboursAtTheEndsAndOfStrangers) {
  TLxDOMNodeList* List = ListOf({u"a", u"b"});
  TOwned<TLxDOMNode> Stranger(MakeNode(u"x"));
  EXPECT_EQ(List->Next(List->GetItem(0)), List->GetItem(1));
  EXPECT_EQ(List->Next(List->GetItem(1)), nullptr);
  EXPECT_EQ(List->Previous(List->GetItem(0)), nullptr);
  EXPECT_EQ(List->Next(Stranger.get()), List->GetItem(0)); // not listed: the first item
  test::ExpectRaises<EListError>([&] { List->Previous(Stranger.get()); },
                                 u"The specified referencenode is not part of this list!");
  List->Clear();
  EXPECT_EQ(List->Next(Stranger.get()), nullptr);
  for (auto Action : {&TLxDOMNodeListBase::First, &TLxDOMNodeListBase::Last})
    test::ExpectRaises<ELxDomNotFound>([&] { (List->*Action)(); },
                                       u"Failed to get the first node!\r\nThe list contains no "
                                       u"nodes.");
  test::ExpectRaises<EListError>([&] { List->GetItem(0); }, u"List index out of bounds (0)");
}

TEST_F(DomNodeList, FindTakesTheLastMatchByTheChosenNameAndCollation) {
  TLxDOMNodeList* List = ListOf({u"p:Item", u"q:item", u"other"});
  TLxDOMNode* PItem = List->GetItem(0);
  TLxDOMNode* QItem = List->GetItem(1);
  struct Case {
    const char16_t* Name;
    TLxDOMSelectOptions Options;
    TLxDOMNode* Expected;
  } Cases[] = {
      {u"item", {soLocalName}, QItem},                    // the later of two
      {u"Item", {soLocalName, soCaseSensitive}, PItem},   // case decides
      {u"ITEM", {soLocalName, soCaseInsensitive}, QItem}, //
      {u"p:item", {soQualifiedName}, PItem},              // default collation ignores case
      {u"p:item", {soQualifiedName, soCaseSensitive}, nullptr},
      {u"item", {soQualifiedName}, nullptr}, // prefixed names need the prefix
      {u"item", {}, nullptr},                // match option: qualified by default
      {u"OTHER", {}, List->GetItem(2)},      // unprefixed: same either way
  };
  for (const Case& C : Cases)
    EXPECT_EQ(List->Find(C.Name, C.Options), C.Expected) << StringToUTF8(C.Name);
  DefaultSelectMatchOption = soLocalName;
  EXPECT_EQ(List->Find(u"item", TLxDOMSelectOptions{}), QItem);
  DefaultXPathCollation = TLxXPathCollationCodepoint::StaticClass();
  EXPECT_EQ(List->Find(u"Item", TLxDOMSelectOptions{}), PItem);
  DefaultSelectMatchOption = soQualifiedName;
  DefaultXPathCollation = TLxXPathCollationASCIICI::StaticClass();
}

TEST_F(DomNodeList, FindRefusesContradictoryOptionsAndRaisesOnlyWhenAsked) {
  TLxDOMNodeList* List = ListOf({u"a"});
  test::ExpectRaises<Exception>(
      [&] {
        List->Find(u"a", {soCaseSensitive, soCaseInsensitive});
      },
      u"It is not possible to specify both soCaseSensitive and soCaseInsensitive!");
  test::ExpectRaises<Exception>([&] { List->Find(u"a", {soCreate}); },
                                u"It is not possible to specify soCreate!");
  test::ExpectRaises<ELxDomNotFound>([&] { List->Find(u"zz", {soRaise}); },
                                     u"There is no node for the given name \"zz\".");
  EXPECT_EQ(List->Find(u"zz", {soLocalName}), nullptr);
}

TEST_F(DomNodeList, FindByNamespaceWithAnEmptyURIMatchesAnyNamespace) {
  TLxDOMNodeList* List = ListOf({u"p:a", u"q:a", u"b"});
  EXPECT_EQ(List->Find(u"", u"A"), List->GetItem(1));
  EXPECT_EQ(List->Find(u"urn:none", u"a"), nullptr);
  EXPECT_EQ(List->Find(u"", u"c"), nullptr);
}

TEST_F(DomNodeList, DeleteTakesTheNodeOutAndLeavesItAlive) {
  TLxDOMNodeList* List = ListOf({u"a", u"b", u"a"});
  TLxDOMNode* LastA = List->GetItem(2);
  EXPECT_EQ(List->Delete(u"a", {soLocalName}), LastA);
  EXPECT_EQ(Names(), "a,b");
  EXPECT_EQ(LastA->GetLocalName(), u"a");
  EXPECT_EQ(List->Delete(LastA), nullptr);
  EXPECT_EQ(List->Delete(u"", u"b")->GetLocalName(), u"b");
  EXPECT_EQ(Names(), "a");
}

TEST_F(DomNodeList, ItemsKeepTheirOrderAcrossGrowthInsertsAndDeletes) {
  // The items' array grows by doubling and leaves the pool past 32 items: every step is checked
  // against a plain vector, through growth, shrinking, emptying and reuse.
  std::vector<TLxDOMNode*> Model;
  TLxDOMNodeList* List = FList.get();
  auto Check = [&](int AStep) {
    ASSERT_EQ(List->Count(), Integer(Model.size())) << "step " << AStep;
    for (std::size_t I = 0; I < Model.size(); ++I)
      ASSERT_EQ(List->GetItem(Integer(I)), Model[I]) << "step " << AStep << ", item " << I;
    test::ExpectRaises<EListError>([&] { List->GetItem(Integer(Model.size())); },
                                   u"List index out of bounds (" + IntToStr(Integer(Model.size())) +
                                       u")");
    test::ExpectRaises<EListError>([&] { List->DeleteAt(-1); }, u"List index out of bounds (-1)");
  };
  unsigned Seed = 7;
  for (int Step = 0; Step < 400; ++Step) {
    Seed = Seed * 1103515245u + 12345u;
    const unsigned Roll = (Seed >> 16) % 10;
    if (Step == 200) {
      List->Clear();
      Model.clear();
    } else if (Roll < 2 || (Step < 200 && Roll < 7)) {
      TLxDOMNode* Node = Own(MakeNode(u"n"));
      if (Roll % 3 == 0) {
        List->Add(Node, ldpFirst);
        Model.insert(Model.begin(), Node);
      } else if (Roll % 3 == 1 && !Model.empty()) {
        TLxDOMNode* Ref = Model[Model.size() / 2];
        List->Add(Node, Ref, ldpAfter);
        Model.insert(Model.begin() + Model.size() / 2 + 1, Node);
      } else {
        List->Add(Node, ldpLast);
        Model.push_back(Node);
      }
    } else if (!Model.empty()) {
      const std::size_t At = (Seed >> 8) % Model.size();
      if (Roll % 2 == 0) {
        List->DeleteAt(Integer(At));
      } else {
        EXPECT_EQ(List->Delete(Model[At]), Model[At]);
        EXPECT_EQ(List->IndexOf(Model[At]), -1);
      }
      Model.erase(Model.begin() + At);
    }
    Check(Step);
  }
}

TEST_F(DomNodeList, TheEnumeratorReadsTheCountAnewAtEveryStep) {
  TLxDOMNodeList* List = ListOf({u"a", u"b"});
  TLxDOMNodeListBaseEnumerator Walk = List->GetEnumerator();
  std::string Seen;
  while (Walk.MoveNext()) {
    Seen += StringToUTF8(Walk.GetCurrent()->GetLocalName());
    if (List->Count() < 4)
      List->Add(Own(MakeNode(u"x")), ldpLast);
  }
  EXPECT_EQ(Seen, "abxx");
}

TEST_F(DomNodeList, AFreeStandingListGoesWithItsLastInterfaceAndAChildListNever) {
  // A free-standing node would go with the interface the list hands out on it: keep it in a tree
  // that an interface holds.
  IPtr<ILxDOMNode> Holder = DOMInterface<ILxDOMNode>(MakeNode(u"holder"));
  TLxDOMNode* Node = test::Append(TLxDOMObjectImpl::Node(Holder.Get()), u"n");
  TLxDOMNodeList* Loose = New<TLxDOMNodeList>();
  Loose->Add(Node, ldpLast);
  const Int64 Before = Alive();
  {
    IPtr<ILxDOMNodeList> LooseIntf = DOMInterface<ILxDOMNodeList>(Loose);
    EXPECT_EQ(LooseIntf->First()->GetLocalName(), u"n");
  }
  EXPECT_EQ(Alive(), Before - 1); // the list went with its face; the node stays

  TLxDOMNode* Root = MakeNode(u"root");
  IPtr<ILxDOMNodeList> Children = DOMInterface<ILxDOMNodeList>(Root->ChildNodes());
  // The list's face pins its node: dropping the node's own interface leaves the tree alive.
  DOMInterface<ILxDOMNode>(Root)->AppendChild(DOMInterface<ILxDOMNode>(MakeNode(u"c")).Get());
  EXPECT_EQ(Children->Count(), 1);
  EXPECT_EQ(
      IPtr<ILxDOMNamedNodeList>::From(Children)->Find(u"C", TLxDOMSelectOptions{})->GetLocalName(),
      u"c");
  Children = nullptr; // the last interface: the root goes, and its list with it
}

} // namespace
} // namespace lorvane
