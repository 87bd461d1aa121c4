// Elements: typed lists beside the children, look-up and creation by name, attributes by name,
// neighbours, element lists, indexed access and the preserve-space state.
#include "dom/DomFixtures.h"

namespace lorvane {
namespace {

using test::AddElementWith;
using test::ChildNames;
using test::Names;

class DomElement : public test::LiveObjectsTest {
protected:
  void TearDown() override {
    FTop.reset();
    LiveObjectsTest::TearDown();
  }
  /// An element "root" under a plain node: a root element keeps declarations in scope only when
  /// it has a parent.
  TLxDOMElement* Root() {
    if (!FTop) {
      FTop.reset(New<TLxDOMNode>());
      FRoot = AddElementWith(FTop.get(), u"root");
    }
    return FRoot;
  }
  TOwned<TLxDOMNode> FTop;
  TLxDOMElement* FRoot = nullptr;
};

TEST_F(DomElement, ANewElementHasEmptyTypedLists) {
  EXPECT_EQ(Root()->Attributes()->Count(), 0);
  EXPECT_EQ(Root()->Elements()->Count(), 0);
  EXPECT_EQ(Root()->CharNodes()->Count(), 0);
  EXPECT_EQ(Root()->Namespaces()->Count(), 0);
  EXPECT_FALSE(Root()->HasAttributes());
}

TEST_F(DomElement, TypedListsFollowThePositionRulesEachOnItsOwn) {
  TLxDOMElement* B = Root()->AddElement(u"b");
  Root()->AddAttribute(u"x");
  Root()->InsertElement(u"a", ldpBefore, B);
  // A reference that isn't an attribute: first among the attributes, beside it among children.
  Root()->AddChild(New<TLxDOMAttribute>(), B, ldpBefore)->SetQualifiedName(u"w");
  Root()->AddChild(New<TLxDOMAttribute>(), B, ldpAfter)->SetQualifiedName(u"y");
  EXPECT_EQ(ChildNames(Root()), "a,w,b,y,x");
  EXPECT_EQ(Names(Root()->Attributes()), "w,x,y");
  EXPECT_EQ(Names(Root()->Elements()), "a,b");
  EXPECT_TRUE(Root()->HasAttributes());
}

TEST_F(DomElement, LookUpFindsTheLastOfOneNameUnderEitherCollation) {
  TLxDOMElement* First = Root()->AddElement(u"Item");
  TLxDOMElement* Second = Root()->AddElement(u"item");
  EXPECT_EQ(Root()->FindElement(u"ITEM"), Second);
  EXPECT_EQ(Root()->FirstElement(), First);
  EXPECT_EQ(Root()->Elements()->GetItem(0), First);
  EXPECT_EQ(Root()->FindElement(u"Item", {soCaseSensitive}), First);
  DefaultXPathCollation = TLxXPathCollationCodepoint::StaticClass();
  EXPECT_EQ(Root()->FindElement(u"Item"), First);
  EXPECT_EQ(Root()->FindElement(u"ITEM"), nullptr);
  EXPECT_EQ(Root()->FindElement(u"ITEM", {soCaseInsensitive}), Second);
  DefaultXPathCollation = TLxXPathCollationASCIICI::StaticClass();
}

TEST_F(DomElement, ByNameCreatesOnlyWhenAskedAndRaisesOnlyWhenAsked) {
  EXPECT_EQ(Root()->ElementByName(u"a", {soLocalName}), nullptr);
  TLxDOMElement* Made = Root()->ElementByName(u"a", {soCreate});
  EXPECT_EQ(Made->ParentNode(), Root());
  EXPECT_EQ(Root()->ElementByName(u"A", {soCreate}), Made);
  test::ExpectRaises<ELxDomNotFound>([&] { Root()->AttributeByName(u"z", {soRaise}); },
                                     u"There is no node for the given name \"z\".");
  test::ExpectRaises<Exception>([&] { Root()->FindElement(u"a", {soCreate}); },
                                u"It is not possible to specify soCreate!");
  test::ExpectRaises<EInvalidCast>(
      [&] { Root()->ElementByName(u"b", {soCreate}, TLxDOMAttribute::StaticClass()); },
      u"Invalid class typecast");
  EXPECT_EQ(Root()->ElementCount(), 1);
}

TEST_F(DomElement, ReadingAMissingAttributeCreatesItEmpty) {
  EXPECT_EQ(Root()->GetAttribute(u"id"), u"");
  EXPECT_TRUE(Root()->HasAttribute(u"id"));
  Root()->SetAttribute(u"id", u"a\"b'c<");
  EXPECT_EQ(Root()->GetAttribute(u"ID"), u"a\"b'c<");
  EXPECT_EQ(Root()->FindAttribute(u"id")->GetStoredValue(), u"a&quot;b'c&lt;");
  EXPECT_EQ(Root()->AttributeCount(), 1);
}

TEST_F(DomElement, MissingByNamespaceRaisesWithLocalNameAndURI) {
  test::ExpectRaises<ELxDomNotFound>(
      [&] { Root()->GetAttributeNS(u"urn:x", u"a"); },
      u"There is no child with the localname \"a\" and namespace \"urn:x\"!");
  test::ExpectRaises<ELxDomNotFound>(
      [&] { Root()->RemoveElement(u"urn:x", u"e"); },
      u"There is no child with the localname \"e\" and namespace \"urn:x\"!");
  EXPECT_EQ(Root()->ElementByName(u"urn:x", u"e", coReturnNil), nullptr);
  Root()->RemoveElement(u"nothing"); // a missing name does nothing
  Root()->RemoveAttribute(u"nothing");
}

TEST_F(DomElement, SetAttributeNSDeclaresANewNamespaceRightBeforeTheAttribute) {
  Root()->AddAttribute(u"first");
  Root()->SetAttributeNS(u"urn:p", u"p:a", u"1");
  EXPECT_EQ(Names(Root()->Attributes()), "first,xmlns:p,p:a");
  EXPECT_EQ(Root()->GetAttribute(u"xmlns:p"), u"urn:p");
  EXPECT_EQ(Root()->GetAttributeNS(u"urn:p", u"a"), u"1");
  Root()->SetAttributeNS(u"urn:p", u"p:a", u"2"); // found: no second declaration
  EXPECT_EQ(Names(Root()->Attributes()), "first,xmlns:p,p:a");
}

TEST_F(DomElement, RemoveChildOfAStrangerIsAnAssertionFailure) {
  TOwned<TLxDOMElement> Other(New<TLxDOMElement>());
  TLxDOMElement* Child = Other->AddElement(u"c");
  test::ExpectRaises<EAssertionFailed>([&] { Root()->RemoveChild(Child); },
                                       u"The specified ChildNode is not a child of this element!");
  Root()->RemoveChild(nullptr);
  EXPECT_EQ(Child->ParentNode(), Other.get());
}

TEST_F(DomElement, NeighboursSkipTheOtherKinds) {
  TLxDOMElement* A = Root()->AddElement(u"a");
  TLxDOMAttribute* X = Root()->AddAttribute(u"x");
  TLxDOMElement* B = Root()->AddElement(u"b");
  TLxDOMAttribute* Y = Root()->AddAttribute(u"y");
  EXPECT_EQ(A->NextElement(), B);
  EXPECT_EQ(B->PreviousElement(), A);
  EXPECT_EQ(B->NextElement(), nullptr);
  EXPECT_EQ(X->NextAttribute(), Y);
  EXPECT_EQ(Y->PreviousAttribute(), X);
  EXPECT_EQ(A->NextSibling(), X);
  EXPECT_EQ(A->ParentElement(), Root());
  EXPECT_EQ(Root()->ParentElement(), nullptr); // its parent is no element
}

TEST_F(DomElement, ClearLeavesNoAttributesElementsOrLists) {
  Root()->AddAttribute(u"x");
  Root()->AddElement(u"a")->AddElement(u"b");
  Root()->Clear();
  EXPECT_EQ(Root()->NodeCount(), 0);
  EXPECT_EQ(Root()->AttributeCount(), 0);
  EXPECT_EQ(Root()->ElementCount(), 0);
}

TEST_F(DomElement, ElementListsHoldTheElementThenItsDescendantsInDocumentOrder) {
  TLxDOMElement* A = Root()->AddElement(u"p:item");
  A->AddElement(u"item");
  Root()->AddElement(u"other")->AddElement(u"p:item");
  TOwned<TLxDOMElementList> ByName(Root()->CreateElementList(u"p:item", true));
  EXPECT_EQ(ByName->Count(), 2);
  EXPECT_EQ(ByName->GetItem(0), A);
  TOwned<TLxDOMElementList> All(Root()->CreateElementList(u"*", true));
  EXPECT_EQ(Names(All.get()), "root,item,other");
  TOwned<TLxDOMElementList> Any(Root()->CreateElementList(u"*:*", true));
  EXPECT_EQ(Names(Any.get()), "root,p:item,item,other,p:item");
  TOwned<TLxDOMElementList> Shallow(Root()->CreateElementList(u"*:*", false));
  EXPECT_EQ(Names(Shallow.get()), "root");
  TOwned<TLxDOMElementList> NoNamespace(Root()->CreateElementList(u"", u"item", true));
  EXPECT_EQ(Names(NoNamespace.get()), "p:item,item,p:item");
}

TEST_F(DomElement, ElementListIndexesByNumberNameOrDot) {
  TLxDOMElement* A = Root()->AddElement(u"a");
  TLxDOMElement* B = Root()->AddElement(u"p:b");
  TLxDOMElementList* List = Root()->Elements();
  EXPECT_EQ(List->GetItem(Variant(1)), B);
  EXPECT_EQ(List->GetItem(Variant(u"A")), A);
  EXPECT_EQ(List->GetItem(Variant(u"p:B")), B);
  EXPECT_EQ(List->GetItem(Variant(u"b")), B); // no colon: by local name
  EXPECT_EQ(List->GetItem(Variant(u".")), Root());
  EXPECT_EQ(List->GetItemEx(Variant(u"zz"), coReturnNil), nullptr);
  test::ExpectRaises<ELxDomNotFound>([&] { List->GetItem(Variant(u"zz")); },
                                     u"There is no node for the given name \"zz\".");
  TLxDOMElement* Made = List->GetItemEx(Variant(u"c"), coCreate);
  EXPECT_EQ(Made->ParentNode(), Root());
  for (const Variant& Bad : {Variant(1.5), Variant(true)})
    test::ExpectRaises<EListError>([&] { List->GetItem(Bad); }, u"Invalid idx value");
  test::ExpectRaises<EListError>([&] { List->GetItem(Variant(7)); },
                                 u"List index out of bounds (7)");
  TOwned<TLxDOMElementList> Loose(New<TLxDOMElementList>());
  test::ExpectRaises<EListError>([&] { Loose->GetItem(Variant(u".")); },
                                 u"There is no childelement with the name .!");
}

TEST_F(DomElement, NodePathNamesAttributesAndIdentifiesElements) {
  TLxDOMElement* E = Root()->AddElement(u"e");
  E->SetAttribute(u"ID", u"7");
  TLxDOMAttribute* B = Root()->AddAttribute(u"b");
  EXPECT_EQ(B->NodePath(false, u""), u"/root/@b"); // the plain parent has an empty name
  EXPECT_EQ(E->NodePath(false, u"id"), u"/root/e[@id=\"7\"]");
  EXPECT_EQ(E->NodePath(true, u"missing"), u"/root/e");
}

TEST_F(DomElement, PreserveSpaceGoesDownToElementsWithoutTheirOwnSetting) {
  TLxDOMElement* Child = Root()->AddElement(u"child");
  TLxDOMElement* Grandchild = Child->AddElement(u"grandchild");
  TLxDOMElement* Own = Root()->AddElement(u"own");
  Own->SetAttribute(u"xml:space", u"default");
  TLxDOMElement* BelowOwn = Own->AddElement(u"below");
  Root()->SetPreseveSpace(true);
  EXPECT_EQ(Root()->GetAttribute(u"xml:space"), u"preserve");
  EXPECT_TRUE(Grandchild->GetPreserveSpace());
  EXPECT_FALSE(Own->GetPreserveSpace());
  EXPECT_FALSE(BelowOwn->GetPreserveSpace());
  // Setting the attribute alone changes the attribute only; linking anew reads it.
  Child->SetAttribute(u"xml:space", u"DEFAULT");
  EXPECT_TRUE(Child->GetPreserveSpace());
  Own->AppendChild(Child);
  EXPECT_FALSE(Child->GetPreserveSpace());
  EXPECT_FALSE(Grandchild->GetPreserveSpace());
}

TEST_F(DomElement, TextViewsTellOwnTextFromDescendantsAndComments) {
  Root()->AddText(u"a<b");
  Root()->AddComment(u"note--");
  Root()->AddElement(u"child")->AddText(u"inner");
  Root()->AddCDATA(u"<raw>");
  EXPECT_EQ(Root()->GetNodeValue(), u"a<b<raw>");
  EXPECT_EQ(Root()->GetText(), u"a<bnote--<raw>inner"); // own text first, not interleaved
  EXPECT_EQ(static_cast<TLxDOMText*>(Root()->CharNodes()->First())->GetStoredValue(), u"a&lt;b");
  EXPECT_EQ(Names(Root()->CharNodes()), "#text,#comment,#cdata-section");
}

TEST_F(DomElement, CharacterDataGoesBesideTheReferenceAndFirstOrLastInItsList) {
  Root()->AddText(u"t1");
  TLxDOMElement* E = Root()->AddElement(u"e");
  Root()->InsertComment(u"c", ldpBefore, E);
  Root()->InsertText(u"t2", ldpAfter, E);
  EXPECT_EQ(ChildNames(Root()), "#text,#comment,e,#text");
  // E is no character data: before it means first, after it last among the character data.
  EXPECT_EQ(Root()->CharNodes()->First()->GetNodeValue(), u"c");
  EXPECT_EQ(Root()->CharNodes()->Last()->GetNodeValue(), u"t2");
}

TEST_F(DomElement, GetCDATAAddsTheNextOneAndRefusesBeyondIt) {
  Root()->AddText(u"t");
  TLxDOMCDATA* First = Root()->GetCDATA(0);
  EXPECT_EQ(First->GetNodeValue(), u"");
  EXPECT_EQ(Root()->GetCDATA(0), First);
  EXPECT_EQ(Root()->GetCDATACount(), 1);
  test::ExpectRaises<EListError>([&] { Root()->GetCDATA(2); },
                                 u"There is no CDATA element with index 2!");
}

TEST_F(DomElement, NormalizeMergesNeighbouringTextOnly) {
  Root()->AddText(u"a&");
  Root()->AddText(u"b");
  Root()->AddComment(u"c");
  Root()->AddText(u"d");
  Root()->AddCDATA(u"e");
  Root()->AddText(u"f");
  Root()->NormalizeTextNodes();
  EXPECT_EQ(ChildNames(Root()), "#text,#comment,#text,#cdata-section,#text");
  EXPECT_EQ(Root()->CharNodes()->First()->GetNodeValue(), u"a&b");
}

TEST_F(DomElement, TheInterfaceWorksOnTheSameTree) {
  auto* Free = New<TLxDOMElement>();
  IPtr<ILxDOMElement> Element = DOMInterface<ILxDOMElement>(Free); // owned by its interface
  IPtr<ILxDOMElement> Child = Element->AddElement(u"child");
  Child->SetAttrib(u"a", u"1");
  Element->AddAttribute(u"x");
  EXPECT_EQ(Element->FindElement(u"CHILD")->GetAttrib(u"a"), u"1");
  EXPECT_EQ(Element->GetElements()->GetElement(Variant(0)).Get(), Child.Get());
  EXPECT_EQ(Element->GetAttributes()->GetAttribute(0)->GetLocalName(), u"x");
  EXPECT_EQ(Child->ParentElement().Get(), Element.Get());
  EXPECT_EQ(Child->AddText(u"x")->GetNodeValue(), u"x");
  EXPECT_EQ(Child->GetCDATA(0)->GetNodeType(), ntCDATA);
  Element->RemoveElement(Child.Get());
  EXPECT_EQ(Element->ElementCount(), 0);
  EXPECT_EQ(Child->ParentNode(), nullptr);
}

} // namespace
} // namespace lorvane
