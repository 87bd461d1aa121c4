// Node lists: positions, neighbours, searches by name, and their faces.
#include "lorvane/dom/LxDOMNodeList.h"

#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/platform/Collation.h"
#include "platform/internal/SmallObjectPool.h"

#include <cstring>

namespace lorvane {

namespace {
constexpr std::u16string_view EmptyListMessage =
    u"Failed to get the first node!\r\nThe list contains no nodes.";

/// A fast test of equality by a collation: for the two built-in ones, texts of other lengths
/// never match (their folding keeps the length), and neither do texts whose last ASCII units
/// differ in more than letter case; names that share a beginning mostly differ at the end.
class TNameMatcher {
public:
  TNameMatcher(TLxXPathCollationClass ACollation, const UnicodeString& AName)
      : FCollation(ACollation), FName(AName),
        FBuiltIn(ACollation == TLxXPathCollationASCIICI::StaticClass() ||
                 ACollation == TLxXPathCollationCodepoint::StaticClass()) {}

  bool Matches(const UnicodeString& ACandidate) const {
    if (FBuiltIn) {
      if (ACandidate.size() != FName.size())
        return false;
      if (!FName.empty()) {
        const char16_t A = ACandidate.back(), B = FName.back();
        if (A != B && (A | B) < 0x80 &&
            ((A | 0x20) != (B | 0x20) || static_cast<char16_t>((A | 0x20) - u'a') > 25))
          return false;
      }
    }
    return FCollation->SameText(ACandidate, FName);
  }

  /// Matches against APrefix ":" ALocalName without building that text where the collation is a
  /// built-in one: their equality works code point by code point, and ':' folds to itself.
  bool Matches(const UnicodeString& APrefix, const UnicodeString& ALocalName) const {
    if (!FBuiltIn)
      return Matches(APrefix + u':' + ALocalName);
    const std::size_t Colon = APrefix.size();
    if (FName.size() != Colon + 1 + ALocalName.size() || FName[Colon] != u':')
      return false;
    const bool IgnoreCase = FCollation == TLxXPathCollationASCIICI::StaticClass();
    const std::u16string_view Name(FName);
    return SameStringInvariant(Name.substr(Colon + 1), ALocalName, IgnoreCase) &&
           SameStringInvariant(Name.substr(0, Colon), APrefix, IgnoreCase);
  }

private:
  TLxXPathCollationClass FCollation;
  const UnicodeString& FName;
  bool FBuiltIn;
};
} // namespace

bool TLxDOMNodeListBaseEnumerator::MoveNext() { return ++FIndex < FList->Count(); }

TLxDOMNode* TLxDOMNodeListBaseEnumerator::GetCurrent() const { return FList->GetItem(FIndex); }

// --- items -------------------------------------------------------------------------------------

void TLxDOMNodeArray::Grow() {
  // Two items fit the pool's smallest chunk; most parents of a loaded tree hold one or two.
  const std::uint32_t Capacity = FCapacity == 0 ? 2 : FCapacity * 2;
  auto** Items = static_cast<TLxDOMNode**>(smallpool::Allocate(Capacity * sizeof(TLxDOMNode*)));
  if (FCount != 0)
    std::memcpy(Items, FItems, FCount * sizeof(TLxDOMNode*));
  Release();
  FItems = Items;
  FCapacity = Capacity;
}

void TLxDOMNodeArray::Release() noexcept {
  if (FItems)
    smallpool::Release(FItems, FCapacity * sizeof(TLxDOMNode*));
}

void TLxDOMNodeArray::Insert(Integer AIndex, TLxDOMNode* ANode) {
  if (static_cast<std::uint32_t>(AIndex) > FCount)
    RaiseListIndexError(AIndex);
  if (FCount == FCapacity)
    Grow();
  std::memmove(FItems + AIndex + 1, FItems + AIndex, (FCount - AIndex) * sizeof(TLxDOMNode*));
  FItems[AIndex] = ANode;
  ++FCount;
}

void TLxDOMNodeArray::Delete(Integer AIndex) {
  if (static_cast<std::uint32_t>(AIndex) >= FCount)
    RaiseListIndexError(AIndex);
  // The last item goes without a move: freeing a tree takes its children from the end.
  if (static_cast<std::uint32_t>(AIndex) != --FCount)
    std::memmove(FItems + AIndex, FItems + AIndex + 1, (FCount - AIndex) * sizeof(TLxDOMNode*));
}

Integer TLxDOMNodeArray::IndexOf(const TLxDOMNode* ANode) const noexcept {
  for (std::uint32_t I = 0; I < FCount; ++I)
    if (FItems[I] == ANode)
      return static_cast<Integer>(I);
  return -1;
}

TLxDOMObjectImpl* TLxDOMNodeListBase::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMNodeListImpl>(static_cast<TLxDOMNodeListBase*>(ADOMObject));
}

bool TLxDOMNodeListBase::CanAutoDestroy() {
  return !FDOMImpl && inherited::CanAutoDestroy() && !FParent;
}

TLxXPathCollationClass TLxDOMNodeListBase::GetCollation() {
  return FParent ? FParent->GetCollation() : DefaultXPathCollation;
}

TLxDOMSelectMatchOption TLxDOMNodeListBase::GetSelectMatchOption() {
  return FParent ? FParent->GetSelectMatchOption() : DefaultSelectMatchOption;
}

// --- positions ----------------------------------------------------------------------------------

TLxDOMNode* TLxDOMNodeListBase::Add(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos) {
  switch (APos) {
  case ldpFirst:
    FList.Insert(0, ANode);
    return ANode;
  case ldpLast:
    FList.Add(ANode);
    return ANode;
  case ldpBefore:
  case ldpAfter:
    if (ARefNode)
      return Add(ANode, APos, ARefNode);
    return Add(ANode, APos == ldpBefore ? ldpFirst : ldpLast);
  }
  return ANode;
}

TLxDOMNode* TLxDOMNodeListBase::Add(TLxDOMNode* ANode, TLxDOMAbsPosition APos) {
  return Add(ANode, /*ARefNode=*/nullptr, APos);
}

TLxDOMNode* TLxDOMNodeListBase::Add(TLxDOMNode* ANode, TLxDOMRelPosition APos,
                                    TLxDOMNode* ARefNode) {
  Assert(ARefNode != nullptr, u"A relative position needs a reference node");
  const Integer Index = IndexOf(ARefNode);
  if (APos == ldpBefore)
    FList.Insert(Index < 0 ? 0 : Index, ANode);
  else if (Index < 0)
    FList.Add(ANode);
  else
    FList.Insert(Index + 1, ANode);
  return ANode;
}

TLxDOMNode* TLxDOMNodeListBase::Delete(TLxDOMNode* ANode) {
  const Integer Index = IndexOf(ANode);
  if (Index < 0)
    return nullptr;
  FList.Delete(Index);
  return ANode;
}

TLxDOMNode* TLxDOMNodeListBase::Delete(const UnicodeString& ANodeName,
                                       TLxDOMSelectOptions ASelectOptions) {
  TLxDOMNode* Found = Find(ANodeName, ASelectOptions);
  return Found ? Delete(Found) : nullptr;
}

TLxDOMNode* TLxDOMNodeListBase::Delete(std::u16string_view ANamespaceURI,
                                       std::u16string_view ALocalName) {
  TLxDOMNode* Found = Find(ANamespaceURI, ALocalName);
  return Found ? Delete(Found) : nullptr;
}

TLxDOMNode* TLxDOMNodeListBase::First() const {
  if (FList.GetCount() == 0)
    throw ELxDomNotFound(UnicodeString(EmptyListMessage));
  return FList.GetItems(0);
}

TLxDOMNode* TLxDOMNodeListBase::Last() const {
  if (FList.GetCount() == 0)
    throw ELxDomNotFound(UnicodeString(EmptyListMessage));
  return FList.GetItems(FList.GetCount() - 1);
}

TLxDOMNode* TLxDOMNodeListBase::Next(const TLxDOMNode* ARefNode) const {
  const Integer Index = IndexOf(ARefNode);
  return Index + 1 < FList.GetCount() ? FList.GetItems(Index + 1) : nullptr;
}

TLxDOMNode* TLxDOMNodeListBase::Previous(const TLxDOMNode* ARefNode) const {
  const Integer Index = IndexOf(ARefNode);
  if (Index < 0)
    throw EListError(u"The specified referencenode is not part of this list!");
  return Index == 0 ? nullptr : FList.GetItems(Index - 1);
}

bool TLxDOMNodeListBase::ContainsNode(const TLxDOMNode* ANode) const { return IndexOf(ANode) >= 0; }

Integer TLxDOMNodeListBase::IndexOf(const TLxDOMNode* ANode) const { return FList.IndexOf(ANode); }

Integer TLxDOMNodeListBase::LastIndexOf(const TLxDOMNode* ANode) const noexcept {
  for (Integer I = FList.GetCount() - 1; I >= 0; --I)
    if (FList.GetItems(I) == ANode)
      return I;
  return -1;
}

// --- searches by name ---------------------------------------------------------------------------

TLxDOMNode* TLxDOMNodeListBase::Find(const UnicodeString& ANodeName,
                                     TLxDOMSelectOptions ASelectOptions) {
  CheckCaseOptions(ASelectOptions);
  if (ASelectOptions.Contains(soCreate))
    throw Exception(u"It is not possible to specify soCreate!");
  const bool ByLocal = ByLocalName(ASelectOptions);
  const TLxXPathCollationClass Collation = CollationFor(ASelectOptions);
  const TNameMatcher Name(Collation, ANodeName);
  for (auto It = FList.end(); It != FList.begin();) {
    TLxDOMNode* Node = *--It;
    const bool Matches = ByLocal || Node->GetPrefix().empty()
                             ? Name.Matches(Node->GetLocalName())
                             : Name.Matches(Node->GetPrefix(), Node->GetLocalName());
    if (Matches)
      return Node;
  }
  if (ASelectOptions.Contains(soRaise))
    throw ELxDomNotFound(u"There is no node for the given name \"%s\".", {ANodeName});
  return nullptr;
}

TLxDOMNode* TLxDOMNodeListBase::FindDeclaration(const UnicodeString& APrefix) {
  const TLxXPathCollationClass Collation = GetCollation();
  const bool IgnoreCase = Collation == TLxXPathCollationASCIICI::StaticClass();
  if (!IgnoreCase && Collation != TLxXPathCollationCodepoint::StaticClass())
    return Find(APrefix.empty() ? UnicodeString(u"xmlns") : u"xmlns:" + APrefix, {soQualifiedName});
  // The built-in collations compare code point by code point and keep ':' as it is, so the
  // declaration's name can be matched in its parts: "xmlns" as prefix and APrefix as local name
  // (or "xmlns" alone as local name). A candidate named some other way only matches when its
  // joined name has the right length, which names of a load never have; it is joined then.
  constexpr std::u16string_view Xmlns = u"xmlns";
  const std::size_t Length = APrefix.empty() ? Xmlns.size() : Xmlns.size() + 1 + APrefix.size();
  for (auto It = FList.end(); It != FList.begin();) {
    TLxDOMNode* Node = *--It;
    const UnicodeString& Prefix = Node->GetPrefix();
    const UnicodeString& Local = Node->GetLocalName();
    bool Matches;
    if (Prefix.size() == Xmlns.size() && !APrefix.empty())
      Matches = Local.size() == APrefix.size() && SameStringInvariant(Local, APrefix, IgnoreCase) &&
                SameStringInvariant(Prefix, Xmlns, IgnoreCase);
    else if (Prefix.empty() && APrefix.empty())
      Matches = SameStringInvariant(Local, Xmlns, IgnoreCase);
    else if ((Prefix.empty() ? Local.size() : Prefix.size() + 1 + Local.size()) != Length)
      Matches = false;
    else
      Matches = SameStringInvariant(Prefix.empty() ? Local : Prefix + u':' + Local,
                                    APrefix.empty() ? UnicodeString(Xmlns) : u"xmlns:" + APrefix,
                                    IgnoreCase);
    if (Matches)
      return Node;
  }
  return nullptr;
}

TLxDOMNode* TLxDOMNodeListBase::Find(std::u16string_view ANamespaceURI,
                                     std::u16string_view ALocalName) {
  const TLxXPathCollationClass Collation = GetCollation();
  const UnicodeString LocalName(ALocalName), NamespaceURI(ANamespaceURI);
  const TNameMatcher Name(Collation, LocalName);
  for (auto It = FList.end(); It != FList.begin();) {
    TLxDOMNode* Node = *--It;
    if (Name.Matches(Node->GetLocalName()) &&
        (NamespaceURI.empty() || Collation->SameText(Node->GetNamespaceURI(), NamespaceURI)))
      return Node;
  }
  return nullptr;
}

// --- element and attribute lists ---------------------------------------------------------------

TLxDOMElement* TLxDOMElementListEnumerator::GetCurrent() const {
  return static_cast<TLxDOMElement*>(TLxDOMNodeListBaseEnumerator::GetCurrent());
}

TLxDOMObjectImpl* TLxDOMElementList::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMElementListImpl>(static_cast<TLxDOMElementList*>(ADOMObject));
}

TLxDOMElement* TLxDOMElementList::GetItem(Integer idx) const {
  return static_cast<TLxDOMElement*>(TLxDOMNodeListBase::GetItem(idx));
}

TLxDOMElement* TLxDOMElementList::GetItem(const Variant& idx) {
  TLxDOMDocument* Document = FParent ? static_cast<TLxDOMNode*>(FParent)->GetDocument() : nullptr;
  return GetItemEx(idx, Document ? Document->GetSelectCheckOption() : DefaultSelectCheckOption);
}

TLxDOMElement* TLxDOMElementList::GetItemEx(const Variant& idx, TLxDOMSelectCheckOption AOption) {
  if (VarIsOrdinal(idx) && VarType(idx) != varBoolean)
    return GetItem(idx.AsInteger());
  if (!VarIsStr(idx))
    throw EListError(u"Invalid idx value");
  const UnicodeString Name = VarToStr(idx);
  TLxDOMSelectOptions Options{GetCaseSensitive() ? soCaseSensitive : soCaseInsensitive};
  if (AOption == coCreate)
    Options.Include(soCreate);
  else if (AOption == coRaise)
    Options.Include(soRaise);
  Options.Include(Name.find(u':') == UnicodeString::npos ? soLocalName : soQualifiedName);

  auto* Owner = FParent && static_cast<TLxDOMNode*>(FParent)->GetNodeType() == ntElement
                    ? static_cast<TLxDOMElement*>(FParent)
                    : nullptr;
  TLxDOMElement* Result;
  if (Name == u".")
    Result = Owner;
  else if (AOption == coCreate)
    Result = Owner ? Owner->ElementByName(Name, Options) : nullptr;
  else
    Result = static_cast<TLxDOMElement*>(Find(Name, Options));
  if (!Result && AOption == coRaise)
    throw EListError(u"There is no childelement with the name %s!", {Name});
  return Result;
}

TLxDOMObjectImpl* TLxDOMAttrList::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMAttrListImpl>(static_cast<TLxDOMAttrList*>(ADOMObject));
}

TLxDOMAttribute* TLxDOMAttrList::GetItem(Integer idx) const {
  return static_cast<TLxDOMAttribute*>(TLxDOMNodeListBase::GetItem(idx));
}

TLxDOMAttribute* TLxDOMAttrList::FindNamespace(const UnicodeString& ANamespaceURI) {
  const TLxXPathCollationClass Collation = GetCollation();
  for (TLxDOMNode* Node : FList) {
    auto* Attribute = static_cast<TLxDOMAttribute*>(Node);
    if (Attribute->Declares(ANamespaceURI, Collation))
      return Attribute;
  }
  return nullptr;
}

HRESULT TLxDOMElementListImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMElementList>(this, AIID, AObj,
                                             [&] { return inherited::QueryInterface(AIID, AObj); });
}

IPtr<ILxDOMElement> TLxDOMElementListImpl::GetElement(const Variant& idx) {
  return DOMInterface<ILxDOMElement>(static_cast<TLxDOMElementList*>(DOMList())->GetItem(idx));
}

HRESULT TLxDOMAttrListImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMAttrList>(this, AIID, AObj,
                                          [&] { return inherited::QueryInterface(AIID, AObj); });
}

IPtr<ILxDOMAttribute> TLxDOMAttrListImpl::GetAttribute(Integer idx) {
  return DOMInterface<ILxDOMAttribute>(static_cast<TLxDOMAttrList*>(DOMList())->GetItem(idx));
}

IPtr<ILxDOMAttribute> TLxDOMAttrListImpl::FindNamespace(const UnicodeString& ANamespaceURI) {
  return DOMInterface<ILxDOMAttribute>(
      static_cast<TLxDOMAttrList*>(DOMList())->FindNamespace(ANamespaceURI));
}

// --- face ---------------------------------------------------------------------------------------

namespace {
IPtr<ILxDOMNode> NodeInterface(TLxDOMNode* ANode) { return DOMInterface<ILxDOMNode>(ANode); }
TLxDOMNode* NodeOf(ILxDOMNode* ANode) { return TLxDOMObjectImpl::Node(ANode); }
} // namespace

HRESULT TLxDOMNodeListImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMNamedNodeList, ILxDOMNodeList>(
      this, AIID, AObj, [&] { return inherited::QueryInterface(AIID, AObj); });
}

IPtr<ILxDOMNode> TLxDOMNodeListImpl::GetItem(Integer idx) {
  return NodeInterface(DOMList()->GetItem(idx));
}
void TLxDOMNodeListImpl::Clear() { DOMList()->Clear(); }
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Add(ILxDOMNode* ANode, ILxDOMNode* ARefNode,
                                         TLxDOMPosition APos) {
  return NodeInterface(DOMList()->Add(NodeOf(ANode), NodeOf(ARefNode), APos));
}
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Add(ILxDOMNode* ANode, TLxDOMAbsPosition APos) {
  return NodeInterface(DOMList()->Add(NodeOf(ANode), APos));
}
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Add(ILxDOMNode* ANode, TLxDOMRelPosition APos,
                                         ILxDOMNode* ARefNode) {
  return NodeInterface(DOMList()->Add(NodeOf(ANode), APos, NodeOf(ARefNode)));
}
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Delete(ILxDOMNode* ANode) {
  return NodeInterface(DOMList()->Delete(NodeOf(ANode)));
}
Integer TLxDOMNodeListImpl::Count() { return DOMList()->Count(); }
IPtr<ILxDOMNode> TLxDOMNodeListImpl::First() { return NodeInterface(DOMList()->First()); }
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Last() { return NodeInterface(DOMList()->Last()); }
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Next(ILxDOMNode* ARefNode) {
  return NodeInterface(DOMList()->Next(NodeOf(ARefNode)));
}
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Previous(ILxDOMNode* ARefNode) {
  return NodeInterface(DOMList()->Previous(NodeOf(ARefNode)));
}
bool TLxDOMNodeListImpl::ContainsNode(ILxDOMNode* ANode) {
  return DOMList()->ContainsNode(NodeOf(ANode));
}
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Find(const UnicodeString& ANodeName,
                                          TLxDOMSelectOptions ASelectOptions) {
  return NodeInterface(DOMList()->Find(ANodeName, ASelectOptions));
}
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Find(std::u16string_view ANamespaceURI,
                                          std::u16string_view ALocalName) {
  return NodeInterface(DOMList()->Find(ANamespaceURI, ALocalName));
}
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Delete(const UnicodeString& ANodeName,
                                            TLxDOMSelectOptions ASelectOptions) {
  return NodeInterface(DOMList()->Delete(ANodeName, ASelectOptions));
}
IPtr<ILxDOMNode> TLxDOMNodeListImpl::Delete(std::u16string_view ANamespaceURI,
                                            std::u16string_view ALocalName) {
  return NodeInterface(DOMList()->Delete(ANamespaceURI, ALocalName));
}

} // namespace lorvane
