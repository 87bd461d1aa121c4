// Elements: typed child lists, look-up and creation by name, text views and preserve-space.
#include "lorvane/dom/LxDOMElement.h"

#include <algorithm>
#include <vector>

namespace lorvane {

namespace {

constexpr std::u16string_view SpaceAttribute = u"xml:space";

/// Splits a qualified name at the first ":" into prefix and local name.
std::pair<UnicodeString, UnicodeString> SplitQualifiedName(std::u16string_view AName) {
  const auto Colon = AName.find(u':');
  if (Colon == std::u16string_view::npos)
    return {UnicodeString(), UnicodeString(AName)};
  return {UnicodeString(AName.substr(0, Colon)), UnicodeString(AName.substr(Colon + 1))};
}

UnicodeString DeclarationName(const UnicodeString& APrefix) {
  return APrefix.empty() ? UnicodeString(u"xmlns") : u"xmlns:" + APrefix;
}

[[noreturn]] void RaiseNoChild(std::u16string_view ALocalName, std::u16string_view AURI) {
  throw ELxDomNotFound(u"There is no child with the localname \"%s\" and namespace \"%s\"!",
                       {UnicodeString(ALocalName), UnicodeString(AURI)});
}

template <class T> T* Make(TLxDOMNodeClass AClass) {
  if (!AClass)
    return New<T>();
  TObject* Made = AClass->CreateDefault ? AClass->CreateDefault() : nullptr;
  if (auto* Result = dynamic_cast<T*>(Made))
    return Result;
  Free(Made);
  throw EInvalidCast(UnicodeString(SInvalidCast));
}

bool IsCharacterData(TLxDOMNodeType AType) {
  return AType == ntText || AType == ntCDATA || AType == ntComment;
}

} // namespace

TLxDOMElement::TLxDOMElement() noexcept : FPreserveSpace(DefaultPreserveCase) {
  FNodeType = ntElement;
}

TLxDOMElement::~TLxDOMElement() {
  lorvane::Free(FAttributes);
  lorvane::Free(FNamespaces);
  lorvane::Free(FElements);
  lorvane::Free(FCharNodes);
}

TLxDOMObjectImpl* TLxDOMElement::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMElementImpl>(static_cast<TLxDOMElement*>(ADOMObject));
}

// --- typed lists --------------------------------------------------------------------------------

template <class L> static L* OwnedList(L*& AList, TLxDOMElement* AOwner) {
  if (!AList) {
    AList = New<L>();
    AList->SetOwner(AOwner);
  }
  return AList;
}

TLxDOMAttrList* TLxDOMElement::Attributes() {
  return static_cast<TLxDOMAttrList*>(RequireList(TChildKind::Attribute));
}
TLxDOMElementList* TLxDOMElement::Elements() {
  return static_cast<TLxDOMElementList*>(RequireList(TChildKind::Element));
}
TLxDOMNodeList* TLxDOMElement::CharNodes() {
  return static_cast<TLxDOMNodeList*>(RequireList(TChildKind::CharacterData));
}
TLxDOMAttrList* TLxDOMElement::Namespaces() {
  if (FScopeOwner != this) {
    TLxDOMAttrList* Own = OwnedList(FNamespaces, this);
    Own->Clear();
    if (TLxDOMAttrList* Shared = ScopeList())
      for (TLxDOMNode* Declaration : *Shared)
        Own->Add(Declaration, ldpLast);
    FScopeOwner = this;
  }
  return FNamespaces;
}

TLxDOMElement::TChildKind TLxDOMElement::KindOf(const TLxDOMNode* ANode) noexcept {
  const TLxDOMNodeType Type = ANode->GetNodeType();
  if (Type == ntAttribute)
    return TChildKind::Attribute;
  if (Type == ntElement)
    return TChildKind::Element;
  return IsCharacterData(Type) ? TChildKind::CharacterData : TChildKind::None;
}

TLxDOMNodeListBase* TLxDOMElement::ExistingList(TChildKind AKind) const noexcept {
  switch (AKind) {
  case TChildKind::Attribute:
    return FAttributes;
  case TChildKind::Element:
    return FElements;
  case TChildKind::CharacterData:
    return FCharNodes;
  case TChildKind::None:
    break;
  }
  return nullptr;
}

TLxDOMNodeListBase* TLxDOMElement::RequireList(TChildKind AKind) {
  if (TLxDOMNodeListBase* List = ExistingList(AKind))
    return List;
  TLxDOMNodeListBase* List;
  switch (AKind) {
  case TChildKind::Attribute:
    List = OwnedList(FAttributes, this);
    break;
  case TChildKind::Element:
    List = OwnedList(FElements, this);
    break;
  default:
    List = OwnedList(FCharNodes, this);
    break;
  }
  // Until now every child of this kind went in at a place that keeps their order among the
  // children (see AddChild), so the children give the list as it would have been kept.
  if (FChildNodes)
    for (TLxDOMNode* Child : *FChildNodes)
      if (KindOf(Child) == AKind)
        List->Add(Child, ldpLast);
  return List;
}

Integer TLxDOMElement::CountOf(TChildKind AKind) const noexcept {
  if (const TLxDOMNodeListBase* List = ExistingList(AKind))
    return List->Count();
  Integer Count = 0;
  if (FChildNodes)
    for (TLxDOMNode* Child : *FChildNodes)
      Count += KindOf(Child) == AKind ? 1 : 0;
  return Count;
}

TLxDOMNode* TLxDOMElement::AddChild(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos) {
  // The old parent may be this element, or hold it in its subtree.
  TEditHold Hold(ANode ? ANode->ParentNode() : nullptr);
  PrepareToAdd(ANode);
  const TChildKind Kind = KindOf(ANode);
  TLxDOMNodeListBase* List = ExistingList(Kind);
  // A reference of another kind puts the node first or last in its typed list but beside the
  // reference among the children: from then on the typed list keeps its own order.
  if (!List && Kind != TChildKind::None && ARefNode && (APos == ldpBefore || APos == ldpAfter) &&
      KindOf(ARefNode) != Kind)
    List = RequireList(Kind);
  if (List)
    List->Add(ANode, ARefNode, APos);
  return LinkChild(ANode, ARefNode, APos);
}

TLxDOMAttribute* TLxDOMElement::AddLoadedAttribute(const TLxDOMName::TRef& AName) {
  // As AddAttribute, where the element is in no tree: renaming an unlinked attribute finds no
  // scope, and linking it to an element without document refreshes nothing.
  TOwned<TLxDOMAttribute> Attribute(New<TLxDOMAttribute>());
  Attribute->AssignName(AName);
  AppendLoadedLeaf(Attribute.get(), FAttributes);
  return Attribute.release();
}

bool TLxDOMElement::AppendLoadedElement(TLxDOMElement* AChild, TLoadScopes& AScopes) {
  if (!FDOMDocument || FDestroying)
    return false;
  // An "xml:space" of its own is read while linking, and its value may not decode: that takes
  // the general road. The test is OwnSpaceAttribute's own first filter. The same pass finds
  // whether AChild declares anything, by IsNamespace's names ("xmlns", "xmlns:...").
  bool Declares = AChild->FNamespaces != nullptr;
  if (TLxDOMNodeList* Own = AChild->FChildNodes)
    for (TLxDOMNode* Node : *Own) {
      const std::size_t PrefixSize = Node->GetPrefix().size();
      const std::size_t LocalSize = Node->GetLocalName().size();
      if (PrefixSize + 1 + LocalSize == SpaceAttribute.size())
        return false;
      if (!Declares && (PrefixSize == 5 || (PrefixSize == 0 && LocalSize == 5)))
        Declares = static_cast<TLxDOMAttribute*>(Node)->IsNamespace();
    }
  // What AddChild and SetParentNode do for a fresh element under an element of a document: its
  // own declaration of its URI (the only link it has) is kept as it is, and the document goes
  // to it and its attributes.
  if (FElements)
    FElements->Append(AChild);
  (FChildNodes ? FChildNodes : ChildNodes())->Append(AChild);
  try {
    AChild->FParent = this;
    AChild->SetDOMDocument(FDOMDocument);
    if (Declares)
      LinkLoadedDeclarations(AChild, AScopes);
    else
      LinkLoadedNamespaces(AChild, AScopes);
    // Without "xml:space" the state comes from here; below AChild there is no element yet.
    AChild->FPreserveSpace = FPreserveSpace;
    if (!AChild->FNamespaceURI.empty()) {
      AScopes.Clear();
      AChild->SetNamespaceURI(AChild->FNamespaceURI);
    }
  } catch (...) {
    AScopes.Clear();
    // Back out as LinkChild does.
    ForgetChild(AChild);
    if (AChild->FParent) {
      AChild->ForgetOutsideLinks();
      AChild->TLxDOMObject::SetParentNode(nullptr);
    }
    throw;
  }
  return true;
}

void TLxDOMElement::RemoveChild(TLxDOMNode* AChildNode) {
  if (!AChildNode)
    return;
  Assert(AChildNode->ParentObject() == this,
         u"The specified ChildNode is not a child of this element!");
  inherited::RemoveChild(AChildNode);
}

void TLxDOMElement::UnlinkChild(TLxDOMNode* AChildNode) {
  // A declaration that leaves takes itself out of the scopes here and below by a refresh, whose
  // values are checked first: a failure comes before anything changed.
  const bool Declaration = !FDestroying && AChildNode->ParentObject() == this &&
                           AChildNode->GetNodeType() == ntAttribute &&
                           static_cast<TLxDOMAttribute*>(AChildNode)->IsNamespace();
  bool Refresh = Declaration;
  if (Declaration && !AChildNode->Destroying()) {
    CheckNamespaceValues(this);
  } else if (Declaration) {
    // A declaration being destroyed leaves whatever its scope holds: where the refresh could
    // fail, its links are only dropped.
    try {
      CheckNamespaceValues(this);
    } catch (const EConvertError&) {
      Refresh = false;
    }
  }
  inherited::UnlinkChild(AChildNode);
  if (Refresh)
    RefreshNamespaces();
  else if (Declaration)
    DropDeclaration(static_cast<TLxDOMAttribute*>(AChildNode));
}

void TLxDOMElement::ForgetChild(TLxDOMNode* ANode) {
  // Children leave from the end when an element is cleared, so the search starts there.
  TLxDOMNodeListBase* List = ExistingList(KindOf(ANode));
  if (const Integer Index = List ? List->LastIndexOf(ANode) : -1; Index >= 0)
    List->DeleteAt(Index);
  inherited::ForgetChild(ANode);
}

// --- creating children --------------------------------------------------------------------------

template <class T>
T* TLxDOMElement::InsertCharacterData(const UnicodeString& AValue, TLxDOMPosition APosition,
                                      TLxDOMElement* ARefChild) {
  TOwned<T> Node(New<T>());
  AddChild(Node.get(), ARefChild, APosition);
  T* Result = Node.release();
  Result->SetNodeValue(AValue);
  return Result;
}

TLxDOMText* TLxDOMElement::AddText(const UnicodeString& AValue) {
  return InsertCharacterData<TLxDOMText>(AValue, ldpLast, /*ARefChild=*/nullptr);
}
TLxDOMCDATA* TLxDOMElement::AddCDATA(const UnicodeString& AValue) {
  return InsertCharacterData<TLxDOMCDATA>(AValue, ldpLast, /*ARefChild=*/nullptr);
}
TLxDOMComment* TLxDOMElement::AddComment(const UnicodeString& AComment) {
  return InsertCharacterData<TLxDOMComment>(AComment, ldpLast, /*ARefChild=*/nullptr);
}
TLxDOMText* TLxDOMElement::InsertText(const UnicodeString& AValue, TLxDOMPosition APosition,
                                      TLxDOMElement* ARefChild) {
  return InsertCharacterData<TLxDOMText>(AValue, APosition, ARefChild);
}
TLxDOMCDATA* TLxDOMElement::InsertCDATA(const UnicodeString& AValue, TLxDOMPosition APosition,
                                        TLxDOMElement* ARefChild) {
  return InsertCharacterData<TLxDOMCDATA>(AValue, APosition, ARefChild);
}
TLxDOMComment* TLxDOMElement::InsertComment(const UnicodeString& AComment, TLxDOMPosition APosition,
                                            TLxDOMElement* ARefChild) {
  return InsertCharacterData<TLxDOMComment>(AComment, APosition, ARefChild);
}

TLxDOMCDATA* TLxDOMElement::GetCDATA(Integer idx) {
  Integer Number = 0;
  TLxDOMNode* Found = nullptr;
  AnyOf(TChildKind::CharacterData, [&](TLxDOMNode* ANode) {
    if (ANode->GetNodeType() == ntCDATA && Number++ == idx)
      Found = ANode;
    return Found != nullptr;
  });
  if (Found)
    return static_cast<TLxDOMCDATA*>(Found);
  if (idx == Number)
    return AddCDATA(UnicodeString());
  throw EListError(u"There is no CDATA element with index %d!", {idx});
}

Integer TLxDOMElement::GetCDATACount() const noexcept {
  Integer Count = 0;
  AnyOf(TChildKind::CharacterData, [&](TLxDOMNode* ANode) {
    Count += ANode->GetNodeType() == ntCDATA ? 1 : 0;
    return false;
  });
  return Count;
}

void TLxDOMElement::NormalizeTextNodes() {
  if (CountOf(TChildKind::CharacterData) < 2)
    return;
  TEditHold Hold(this);
  for (Integer I = 0; I + 1 < FChildNodes->Count();) {
    TLxDOMNode* Node = FChildNodes->GetItem(I);
    TLxDOMNode* Next = FChildNodes->GetItem(I + 1);
    if (Node->GetNodeType() != ntText || Next->GetNodeType() != ntText) {
      ++I;
      continue;
    }
    Node->SetNodeValue(Node->GetNodeValue() + Next->GetNodeValue());
    RemoveChild(Next);
  }
}

TLxDOMElement* TLxDOMElement::AddElement(const UnicodeString& ATagName) {
  return InsertElement(ATagName, ldpLast, /*ARefChild=*/nullptr);
}

TLxDOMElement* TLxDOMElement::AddElement(std::u16string_view ANamespaceURI,
                                         std::u16string_view AQualifiedName) {
  return InsertElement(ANamespaceURI, AQualifiedName, ldpLast, /*ARefChild=*/nullptr);
}

TLxDOMElement* TLxDOMElement::InsertElement(const UnicodeString& ATagName, TLxDOMPosition APosition,
                                            TLxDOMElement* ARefChild) {
  TOwned<TLxDOMElement> Element(New<TLxDOMElement>());
  Element->SetQualifiedName(ATagName);
  AddChild(Element.get(), ARefChild, APosition);
  return Element.release();
}

TLxDOMElement* TLxDOMElement::InsertElement(std::u16string_view ANamespaceURI,
                                            std::u16string_view AQualifiedName,
                                            TLxDOMPosition APosition, TLxDOMElement* ARefChild) {
  TOwned<TLxDOMElement> Element(New<TLxDOMElement>());
  Element->SetQualifiedName(UnicodeString(AQualifiedName));
  // Still unlinked: the URI is kept, and linking applies it.
  Element->SetNamespaceURI(UnicodeString(ANamespaceURI));
  AddChild(Element.get(), ARefChild, APosition);
  return Element.release();
}

TLxDOMAttribute* TLxDOMElement::AddAttribute(const UnicodeString& AAttibuteName) {
  TOwned<TLxDOMAttribute> Attribute(New<TLxDOMAttribute>());
  Attribute->SetQualifiedName(AAttibuteName);
  AppendChild(Attribute.get());
  return Attribute.release();
}

TLxDOMAttribute* TLxDOMElement::AddAttribute(std::u16string_view ANamespaceURI,
                                             std::u16string_view AQualifiedName) {
  TOwned<TLxDOMAttribute> Attribute(New<TLxDOMAttribute>());
  Attribute->SetQualifiedName(UnicodeString(AQualifiedName));
  Attribute->SetNamespaceURI(UnicodeString(ANamespaceURI));
  AppendChild(Attribute.get());
  return Attribute.release();
}

// --- look-up by name ----------------------------------------------------------------------------

TLxDOMNode* TLxDOMElement::NodeByName(TLxDOMNodeListBase* AList, const UnicodeString& ANodeName,
                                      TLxDOMSelectOptions ASelectOptions,
                                      TLxDOMNodeClass ANodeClass) {
  if (TLxDOMNode* Found = AList->Find(ANodeName, ASelectOptions - TLxDOMSelectOptions{soCreate}))
    return Found;
  if (!ASelectOptions.Contains(soCreate))
    return nullptr;
  TOwned<TLxDOMNode> Node(AList == ExistingList(TChildKind::Element)
                              ? static_cast<TLxDOMNode*>(Make<TLxDOMElement>(ANodeClass))
                              : Make<TLxDOMAttribute>(ANodeClass));
  AddChild(Node.get(), /*ARefNode=*/nullptr, ldpAfter);
  TLxDOMNode* Linked = Node.release();
  Linked->SetQualifiedName(ANodeName);
  return Linked;
}

TLxDOMElement* TLxDOMElement::FindElement(const UnicodeString& ANodeName,
                                          TLxDOMSelectOptions ASelectOptions) {
  return static_cast<TLxDOMElement*>(Elements()->Find(ANodeName, ASelectOptions));
}

TLxDOMElement* TLxDOMElement::FindElement(std::u16string_view ANamespaceURI,
                                          std::u16string_view ALocalName) {
  return static_cast<TLxDOMElement*>(Elements()->Find(ANamespaceURI, ALocalName));
}

TLxDOMAttribute* TLxDOMElement::FindAttribute(const UnicodeString& ANodeName,
                                              TLxDOMSelectOptions ASelectOptions) {
  return static_cast<TLxDOMAttribute*>(Attributes()->Find(ANodeName, ASelectOptions));
}

TLxDOMAttribute* TLxDOMElement::FindAttribute(std::u16string_view ANamespaceURI,
                                              std::u16string_view ALocalName) {
  return static_cast<TLxDOMAttribute*>(Attributes()->Find(ANamespaceURI, ALocalName));
}

TLxDOMElement* TLxDOMElement::ElementByName(const UnicodeString& ANodeName,
                                            TLxDOMSelectOptions ASelectOptions,
                                            TLxDOMNodeClass ANodeClass) {
  return static_cast<TLxDOMElement*>(NodeByName(Elements(), ANodeName, ASelectOptions, ANodeClass));
}

TLxDOMAttribute* TLxDOMElement::AttributeByName(const UnicodeString& ANodeName,
                                                TLxDOMSelectOptions ASelectOptions,
                                                TLxDOMNodeClass ANodeClass) {
  return static_cast<TLxDOMAttribute*>(
      NodeByName(Attributes(), ANodeName, ASelectOptions, ANodeClass));
}

TLxDOMElement* TLxDOMElement::ElementByName(std::u16string_view ANamespaceURI,
                                            std::u16string_view ALocalName,
                                            TLxDOMSelectCheckOption ACheckOption) {
  if (TLxDOMElement* Found = FindElement(ANamespaceURI, ALocalName))
    return Found;
  switch (ACheckOption) {
  case coReturnNil:
    return nullptr;
  case coRaise:
    RaiseNoChild(ALocalName, ANamespaceURI);
  case coCreate:
    break;
  }
  const UnicodeString LocalName(ALocalName);
  TLxDOMAttrList* Scope = ScopeList();
  if (TLxDOMAttribute* Declaration =
          Scope ? Scope->FindNamespace(UnicodeString(ANamespaceURI)) : nullptr) {
    const UnicodeString Prefix = Declaration->NamespacePrefix();
    return AddElement(Prefix.empty() ? LocalName : Prefix + u':' + LocalName);
  }
  return AddElement(ANamespaceURI, ALocalName);
}

TLxDOMElement* TLxDOMElement::ElementByName(std::u16string_view ANamespaceURI,
                                            std::u16string_view AQualifiedName,
                                            bool ACreateWhenNotFound) {
  auto [Prefix, LocalName] = SplitQualifiedName(AQualifiedName);
  if (TLxDOMElement* Found = FindElement(ANamespaceURI, LocalName))
    return Found;
  if (!ACreateWhenNotFound)
    RaiseNoChild(LocalName, ANamespaceURI);
  TOwned<TLxDOMElement> Made(New<TLxDOMElement>());
  Made->FName = TLxDOMName::Make(Prefix, LocalName);
  AddChild(Made.get(), /*ARefNode=*/nullptr, ldpAfter);
  TLxDOMElement* Element = Made.release();
  const UnicodeString URI(ANamespaceURI);
  if (TLxDOMAttrList* Scope = Element->ScopeList(); !Scope || !Scope->FindNamespace(URI)) {
    TOwned<TLxDOMAttribute> Declared(New<TLxDOMAttribute>());
    Element->AddChild(Declared.get(), /*ARefNode=*/nullptr, ldpAfter);
    TLxDOMAttribute* Declaration = Declared.release();
    Declaration->SetQualifiedName(DeclarationName(Prefix));
    Declaration->SetNodeValue(URI);
  }
  return Element;
}

TLxDOMAttribute* TLxDOMElement::AttributeByName(std::u16string_view ANamespaceURI,
                                                std::u16string_view ALocalName) {
  if (TLxDOMAttribute* Found = FindAttribute(ANamespaceURI, ALocalName))
    return Found;
  RaiseNoChild(ALocalName, ANamespaceURI);
}

TLxDOMAttribute* TLxDOMElement::AttributeByName(std::u16string_view ANamespaceURI,
                                                std::u16string_view AQualifiedName,
                                                bool ACreateWhenNotFound) {
  auto [Prefix, LocalName] = SplitQualifiedName(AQualifiedName);
  if (TLxDOMAttribute* Found = FindAttribute(ANamespaceURI, LocalName))
    return Found;
  if (!ACreateWhenNotFound)
    RaiseNoChild(LocalName, ANamespaceURI);
  TOwned<TLxDOMAttribute> Made(New<TLxDOMAttribute>());
  Made->FName = TLxDOMName::Make(Prefix, LocalName);
  AddChild(Made.get(), /*ARefNode=*/nullptr, ldpAfter);
  TLxDOMAttribute* Attribute = Made.release();
  const UnicodeString URI(ANamespaceURI);
  if (TLxDOMAttrList* Scope = ScopeList(); !Scope || !Scope->FindNamespace(URI)) {
    // The declaration stands directly before the attribute that needs it.
    TOwned<TLxDOMAttribute> Declared(New<TLxDOMAttribute>());
    AddChild(Declared.get(), Attribute, ldpBefore);
    TLxDOMAttribute* Declaration = Declared.release();
    Declaration->SetQualifiedName(DeclarationName(Prefix));
    Declaration->SetNodeValue(URI);
  }
  return Attribute;
}

bool TLxDOMElement::HasChildElement(const UnicodeString& ANodeName,
                                    TLxDOMSelectOptions ASelectOptions) {
  return FindElement(ANodeName, ASelectOptions) != nullptr;
}

bool TLxDOMElement::HasChildElement(std::u16string_view ANamespaceURI,
                                    std::u16string_view AQualifiedName) {
  return FindElement(ANamespaceURI, AQualifiedName) != nullptr;
}

bool TLxDOMElement::HasAttribute(const UnicodeString& ANodeName,
                                 TLxDOMSelectOptions ASelectOptions) {
  return FindAttribute(ANodeName, ASelectOptions) != nullptr;
}

bool TLxDOMElement::HasAttribute(std::u16string_view ANamespaceURI,
                                 std::u16string_view AQualifiedName) {
  return FindAttribute(ANamespaceURI, AQualifiedName) != nullptr;
}

TLxDOMElement* TLxDOMElement::FirstElement() {
  return static_cast<TLxDOMElement*>(Elements()->First());
}
TLxDOMElement* TLxDOMElement::LastElement() {
  return static_cast<TLxDOMElement*>(Elements()->Last());
}
TLxDOMAttribute* TLxDOMElement::FirstAttribute() {
  return static_cast<TLxDOMAttribute*>(Attributes()->First());
}
TLxDOMAttribute* TLxDOMElement::LastAttribute() {
  return static_cast<TLxDOMAttribute*>(Attributes()->Last());
}

TLxDOMElement* TLxDOMElement::NextElement() const {
  TLxDOMElement* Parent = ParentElement();
  return Parent ? static_cast<TLxDOMElement*>(Parent->Elements()->Next(this)) : nullptr;
}

TLxDOMElement* TLxDOMElement::PreviousElement() const {
  TLxDOMElement* Parent = ParentElement();
  return Parent ? static_cast<TLxDOMElement*>(Parent->Elements()->Previous(this)) : nullptr;
}

// --- attributes by name -------------------------------------------------------------------------

UnicodeString TLxDOMElement::GetAttribute(const UnicodeString& AAttribName) {
  return AttributeByName(AAttribName, {soCreate, soQualifiedName})->GetNodeValue();
}

void TLxDOMElement::SetAttribute(const UnicodeString& AAttribName, const UnicodeString& Value) {
  AttributeByName(AAttribName, {soCreate, soQualifiedName})->SetNodeValue(Value);
}

UnicodeString TLxDOMElement::GetAttributeNS(std::u16string_view ANamespaceURI,
                                            std::u16string_view ALocalName) {
  return AttributeByName(ANamespaceURI, ALocalName, /*ACreateWhenNotFound=*/false)->GetNodeValue();
}

void TLxDOMElement::SetAttributeNS(std::u16string_view ANamespaceURI,
                                   std::u16string_view ALocalName, const UnicodeString& Value) {
  AttributeByName(ANamespaceURI, ALocalName, /*ACreateWhenNotFound=*/true)->SetNodeValue(Value);
}

void TLxDOMElement::RemoveElement(const UnicodeString& AElementName) {
  RemoveChild(ElementByName(AElementName, {soQualifiedName}));
}

void TLxDOMElement::RemoveElement(std::u16string_view ANamespaceURI,
                                  std::u16string_view ALocalName) {
  RemoveChild(ElementByName(ANamespaceURI, ALocalName, coRaise));
}

void TLxDOMElement::RemoveAttribute(const UnicodeString& AAttribName) {
  RemoveChild(AttributeByName(AAttribName, {soQualifiedName}));
}

void TLxDOMElement::RemoveAttribute(std::u16string_view ANamespaceURI,
                                    std::u16string_view ALocalName) {
  RemoveChild(AttributeByName(ANamespaceURI, ALocalName));
}

// --- element lists ------------------------------------------------------------------------------

TLxDOMElementList* TLxDOMElement::CreateElementList(const UnicodeString& nodeName,
                                                    bool ARecursive) {
  const auto [Prefix, LocalName] = SplitQualifiedName(nodeName);
  TOwned<TLxDOMElementList> List(New<TLxDOMElementList>());
  _GetChildElements(List.get(), Prefix, LocalName, ARecursive, TLxDOMSelectOptions{});
  return List.release();
}

TLxDOMElementList* TLxDOMElement::CreateElementList(std::u16string_view namespaceURI,
                                                    std::u16string_view localName,
                                                    bool ARecursive) {
  TOwned<TLxDOMElementList> List(New<TLxDOMElementList>());
  _GetChildElements(List.get(), namespaceURI, localName, ARecursive);
  return List.release();
}

namespace {
/// Visits AStart and, with ARecursive, its descendant elements in document order.
template <class F> void VisitElements(TLxDOMElement* AStart, bool ARecursive, F&& AVisit) {
  std::vector<TLxDOMElement*> Pending{AStart};
  while (!Pending.empty()) {
    TLxDOMElement* Element = Pending.back();
    Pending.pop_back();
    AVisit(Element);
    if (ARecursive) {
      const std::size_t Mark = Pending.size();
      Element->VisitChildElements([&](TLxDOMElement* AChild) { Pending.push_back(AChild); });
      std::reverse(Pending.begin() + static_cast<std::ptrdiff_t>(Mark), Pending.end());
    }
  }
}
} // namespace

void TLxDOMElement::_GetChildElements(TLxDOMElementList* AList, std::u16string_view ANamespaceURI,
                                      std::u16string_view ALocalName, bool ARecursive) {
  const UnicodeString URI(ANamespaceURI), LocalName(ALocalName);
  VisitElements(this, ARecursive, [&](TLxDOMElement* AElement) {
    const TLxXPathCollationClass Collation = AElement->GetCollation();
    if (Collation->SameText(AElement->GetNamespaceURI(), URI) &&
        Collation->SameText(AElement->GetLocalName(), LocalName))
      AList->Add(AElement, ldpLast);
  });
}

void TLxDOMElement::_GetChildElements(TLxDOMElementList* AList, std::u16string_view APrefix,
                                      std::u16string_view ALocalName, bool ARecursive,
                                      TLxDOMSelectOptions ASelectOptions) {
  CheckCaseOptions(ASelectOptions);
  if (ASelectOptions.Contains(soRaise) || ASelectOptions.Contains(soCreate))
    throw Exception(u"It is not possible to specify either soRaise or soCreate!");
  const TLxXPathCollationClass Collation = CollationFor(ASelectOptions);
  const bool ByLocal = ByLocalName(ASelectOptions);
  const UnicodeString Prefix(APrefix), LocalName(ALocalName);
  VisitElements(this, ARecursive, [&](TLxDOMElement* AElement) {
    const bool LocalMatches =
        LocalName == u"*" || Collation->SameText(AElement->GetLocalName(), LocalName);
    const bool PrefixMatches =
        ByLocal || Prefix == u"*" || Collation->SameText(AElement->GetPrefix(), Prefix);
    if (LocalMatches && PrefixMatches)
      AList->Add(AElement, ldpLast);
  });
}

// --- text views ---------------------------------------------------------------------------------

UnicodeString TLxDOMElement::GetNodeValue() {
  UnicodeString Result;
  AnyOf(TChildKind::CharacterData, [&](TLxDOMNode* ANode) {
    if (ANode->GetNodeType() != ntComment)
      Result += ANode->GetNodeValue();
    return false;
  });
  return Result;
}

UnicodeString TLxDOMElement::GetText() {
  // Each element's own character data, then its child elements' text, in order: a walk that
  // visits elements in document order gives exactly that.
  UnicodeString Result;
  VisitElements(this, /*ARecursive=*/true, [&](TLxDOMElement* AElement) {
    AElement->AnyOf(TChildKind::CharacterData, [&](TLxDOMNode* ANode) {
      Result += ANode->GetNodeValue();
      return false;
    });
  });
  return Result;
}

// --- preserve-space -----------------------------------------------------------------------------

TLxDOMAttribute* TLxDOMElement::OwnSpaceAttribute() {
  if (FAttributes)
    return static_cast<TLxDOMAttribute*>(
        FAttributes->Find(UnicodeString(SpaceAttribute), {soQualifiedName}));
  // As that look-up does, the last one found wins; names of other lengths are passed over first.
  TLxDOMAttribute* Found = nullptr;
  const UnicodeString Name(SpaceAttribute);
  AnyOf(TChildKind::Attribute, [&](TLxDOMNode* ANode) {
    if (ANode->GetPrefix().size() + 1 + ANode->GetLocalName().size() == Name.size() &&
        GetCollation()->SameText(ANode->GetQualifiedName(), Name))
      Found = static_cast<TLxDOMAttribute*>(ANode);
    return false;
  });
  return Found;
}

void TLxDOMElement::SetPreseveSpace(bool Value) {
  FPreserveSpace = Value;
  SetAttribute(UnicodeString(SpaceAttribute), Value ? u"preserve" : u"default");
  PassPreserveSpaceDown(Value);
}

void TLxDOMElement::PassPreserveSpaceDown(bool Value) {
  std::vector<TLxDOMElement*> Pending;
  VisitChildElements([&](TLxDOMElement* AChild) { Pending.push_back(AChild); });
  while (!Pending.empty()) {
    TLxDOMElement* Element = Pending.back();
    Pending.pop_back();
    if (Element->OwnSpaceAttribute())
      continue; // its subtree keeps the state it has
    Element->FPreserveSpace = Value;
    Element->VisitChildElements([&](TLxDOMElement* AChild) { Pending.push_back(AChild); });
  }
}

} // namespace lorvane
