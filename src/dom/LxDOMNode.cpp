// Nodes: linking and unlinking, destruction of subtrees, cloning, siblings and paths.
#include "lorvane/dom/LxDOMNode.h"

#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/dom/LxDOMParser.h"
#include "platform/internal/SmallObjectPool.h"

#include <algorithm>
#include <vector>

namespace lorvane {

struct TLxDOMParseEvents {
  TLxDOMParseError OnParseWarning;
  TLxDOMParseError OnParseError;
  TLxDOMParseError OnParseFatalError;
};

TSparseString::TBlock::TBlock(const UnicodeString& AValue) : Value(AValue) {}
TSparseString::TBlock::~TBlock() = default;

TLxDOMParseEvents& TSparseString::RequireEvents() {
  if (!FBlock)
    FBlock = std::make_unique<TBlock>(UnicodeString());
  if (!FBlock->Events)
    FBlock->Events = std::make_unique<TLxDOMParseEvents>();
  return *FBlock->Events;
}

// --- names --------------------------------------------------------------------------------------

void* TLxDOMName::operator new(std::size_t ASize) { return smallpool::Allocate(ASize); }

void TLxDOMName::operator delete(void* AMemory, std::size_t ASize) noexcept {
  smallpool::Release(AMemory, ASize);
}

TLxDOMName::TRef TLxDOMName::Lasting(std::u16string_view ALocalName) {
  // Made once per kind and never freed: nodes of the kind may be freed as late as static
  // destruction.
  auto* Name = new TLxDOMName({}, ALocalName);
  Name->FLasting = true;
  return TRef::Adopt(Name);
}

const UnicodeString& TLxDOMName::TRef::Empty() noexcept {
  static const UnicodeString Value;
  return Value;
}

// --- lifetime -----------------------------------------------------------------------------------

TLxDOMNode::TLxDOMNode() noexcept = default;

TLxDOMNode::~TLxDOMNode() { lorvane::Free(FChildNodes); }

void TLxDOMNode::BeforeDestruction() {
  FDestroying = true;
  Clear();
  if (FParent)
    static_cast<TLxDOMNode*>(FParent)->RemoveChild(this);
  if (FDOMImpl && FDOMImpl->RefCount() > 0) {
    // The node stays alive as a free-standing node owned by the interfaces held on it: what the
    // destruction skipped (lists and links of the freed children, document and pin of the
    // parent left) is done now.
    FDestroying = false;
    ForgetAfterStoppedDestruction();
    TLxDOMObject::SetParentNode(nullptr);
    throw Exception(u"An instance of %s is destroyed while it's refcount is not 0!", {ClassName()});
  }
  inherited::BeforeDestruction();
}

bool TLxDOMNode::CanAutoDestroy() { return !FDOMImpl && inherited::CanAutoDestroy(); }

void TLxDOMNode::Clear() {
  if (!FChildNodes || FChildNodes->Count() == 0)
    return;
  if (!FDestroying) {
    TEditHold Hold(this); // a held child's pin may be all that keeps this node
    // Each child leaves through RemoveChild, which destroys it unless an interface holds it.
    for (Integer I = FChildNodes->Count() - 1; I >= 0; --I)
      RemoveChild(FChildNodes->GetItem(I));
    return;
  }
  // Held children leave first, while everything they may link to (declarations of this node and
  // of the subtree) is still there to be read; a held descendant has held ancestors up to here.
  for (Integer I = FChildNodes->Count() - 1; I >= 0; --I)
    if (TLxDOMNode* Child = FChildNodes->GetItem(I); !Child->CanAutoDestroy())
      RemoveChild(Child);
  // The node being destroyed destroys its whole subtree itself, children before parents and last
  // child first, by an explicit stack of the nodes being emptied: each node is freed only once it
  // has no children left, so no destruction runs inside another, however deep the tree. Ancestors
  // stay alive until their subtree is gone, so a held descendant is unlinked from a whole tree.
  std::vector<TLxDOMNode*> Emptying{this};
  while (true) {
    TLxDOMNode* Node = Emptying.back();
    TLxDOMNodeList* Children = Node->FChildNodes;
    if (!Children || Children->Count() == 0) {
      Emptying.pop_back();
      if (Emptying.empty())
        break;
      FreeDetached(Emptying.back(), Node);
      continue;
    }
    TLxDOMNode* Child = Children->GetItem(Children->Count() - 1);
    if (!Child->CanAutoDestroy()) {
      Node->RemoveChild(Child);
    } else if (Child->NodeCount() > 0) {
      // Marked as its own destruction would mark it, so that its children may go with it.
      Child->FDestroying = true;
      Emptying.push_back(Child);
    } else {
      FreeDetached(Node, Child);
    }
  }
}

void TLxDOMNode::FreeDetached(TLxDOMNode* AParent, TLxDOMNode* AChild) {
  // It leaves without the unlinking that would keep the parent's lists right, since they go with
  // the parent. (Typed lists may hold its address until then; nothing reads it.)
  // The walk takes children from the end: the last item is nearly always the one.
  TLxDOMNodeList* Children = AParent->FChildNodes;
  const Integer Last = Children->Count() - 1;
  Children->DeleteAt(Children->GetItem(Last) == AChild ? Last : Children->LastIndexOf(AChild));
  AChild->FParent = nullptr;
  AChild->Free();
}

TLxDOMNode::TEditHold::TEditHold(TLxDOMNode* ANode) {
  // Only a node whose face is counted can lose its last owner to a pin release; taking a count
  // on any other would make a face where the object road makes none.
  if (ANode && !ANode->FDestroying && ANode->FDOMImpl && ANode->FDOMImpl->RefCount() > 0)
    FHold = IPtr<IInterface>(static_cast<IInterface*>(ANode));
}

// --- faces --------------------------------------------------------------------------------------

TLxDOMObjectImpl* TLxDOMNode::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMNodeImpl>(static_cast<TLxDOMNode*>(ADOMObject));
}

TLxDOMNodeImpl* TLxDOMNode::DOMNodeImpl() const noexcept {
  return static_cast<TLxDOMNodeImpl*>(FDOMImpl);
}

// --- linking ------------------------------------------------------------------------------------

void TLxDOMNode::SetDOMDocument(TLxDOMObject* ADoc) {
  inherited::SetDOMDocument(ADoc);
  if (!FChildNodes)
    return;
  // Leaves (attributes, text) take the document at once; only nodes with children of their own
  // go on the stack, which a freshly loaded element never needs. Each node below takes it as
  // the object base gives it: this walk is the only one (node kinds don't override it).
  std::vector<TLxDOMNode*> Pending;
  for (TLxDOMNode* Node = this;;) {
    for (TLxDOMNode* Child : *Node->FChildNodes) {
      Child->TLxDOMObject::SetDOMDocument(ADoc);
      if (Child->FChildNodes && Child->FChildNodes->Count() > 0)
        Pending.push_back(Child);
    }
    if (Pending.empty())
      break;
    Node = Pending.back();
    Pending.pop_back();
  }
}

void TLxDOMNode::SetParentNode(TLxDOMObject* AParent) {
  inherited::SetParentNode(AParent);
  // A load links elements before their children: only they refresh then, which saves the
  // refresh per text node.
  if (!FDestroying && FDOMDocument &&
      (GetDocument()->GetLoadState() != lsLoading || FNodeType == ntElement))
    RefreshNamespaces();
}

void TLxDOMNode::RefreshNamespaces() {
  // Parents first, children in order, by an explicit stack: a subtree linked into a document may
  // be as deep as any input. A leaf is refreshed in its turn without going on the stack.
  RefreshOwnNamespaces();
  std::vector<TLxDOMNode*> Pending;
  for (TLxDOMNode* Node = this;;) {
    if (Node->FChildNodes) {
      const std::size_t Mark = Pending.size();
      for (TLxDOMNode* Child : *Node->FChildNodes) {
        if (Child->FChildNodes && Child->FChildNodes->Count() > 0) {
          Pending.push_back(Child);
        } else {
          // Later siblings with children are refreshed after this leaf; a leaf's refresh reads
          // only its parent's state, so the order among siblings doesn't change the outcome.
          Child->RefreshOwnNamespaces();
        }
      }
      std::reverse(Pending.begin() + static_cast<std::ptrdiff_t>(Mark), Pending.end());
    }
    if (Pending.empty())
      break;
    Node = Pending.back();
    Pending.pop_back();
    Node->RefreshOwnNamespaces();
  }
}

TLxDOMNodeList* TLxDOMNode::ChildNodes() {
  if (!FChildNodes) {
    FChildNodes = New<TLxDOMNodeList>();
    FChildNodes->SetOwner(this);
  }
  return FChildNodes;
}

TLxDOMNode* TLxDOMNode::AddChild(TLxDOMNodeClass ANodeClass, TLxDOMNode* ARefNode,
                                 TLxDOMPosition APos) {
  TObject* Made = ANodeClass && ANodeClass->CreateDefault ? ANodeClass->CreateDefault() : nullptr;
  auto* Node = dynamic_cast<TLxDOMNode*>(Made);
  if (!Node) {
    lorvane::Free(Made);
    throw EInvalidCast(UnicodeString(SInvalidCast));
  }
  try {
    return AddChild(Node, ARefNode, APos);
  } catch (...) {
    Node->Free();
    throw;
  }
}

void TLxDOMNode::PrepareToAdd(TLxDOMNode* ANode) {
  Assert(ANode != nullptr, u"A nil node can't be added");
  // Only a node with children can be an ancestor of this one, and only one of the same document
  // (a free node, as every node a load makes, is in none).
  if (ANode == this ||
      (ANode->HasChilds() && (!FDOMDocument || ANode->FDOMDocument == FDOMDocument))) {
    for (const TLxDOMObject* Ancestor = this; Ancestor; Ancestor = Ancestor->ParentObject())
      if (Ancestor == ANode)
        throw ELxDomException(u"A node can't be added below itself or one of its descendants.");
  }
  if (ANode->FParent) {
    // A node that moves can't go back once it has left, so what its link reads is checked first.
    CheckNamespaceValues(ANode);
    static_cast<TLxDOMNode*>(ANode->FParent)->UnlinkChild(ANode);
  }
}

TLxDOMNode* TLxDOMNode::AddChild(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos) {
  // The old parent may be this node, or hold it in its subtree.
  TEditHold Hold(ANode ? ANode->ParentNode() : nullptr);
  PrepareToAdd(ANode);
  return LinkChild(ANode, ARefNode, APos);
}

TLxDOMNode* TLxDOMNode::LinkChild(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos) {
  ChildNodes()->Add(ANode, ARefNode, APos);
  try {
    ANode->SetParentNode(this);
  } catch (...) {
    // Back out as it came: out of the lists, then off this node, whose pin goes last (it may be
    // the last hold on this node).
    ForgetChild(ANode);
    if (ANode->FParent) {
      ANode->ForgetOutsideLinks();
      ANode->TLxDOMObject::SetParentNode(nullptr);
    }
    throw;
  }
  return ANode;
}

void TLxDOMNode::AppendLoadedLeaf(TLxDOMNode* ALeaf, TLxDOMNodeListBase* ATypedList) {
  // What AddChild comes to for such a node: no cycle or old parent to check, no face to pin,
  // nothing below it to pass the document to, and a leaf without namespace links refreshes
  // nothing.
  if (ATypedList)
    ATypedList->Append(ALeaf);
  (FChildNodes ? FChildNodes : ChildNodes())->Append(ALeaf);
  ALeaf->FParent = this;
  ALeaf->FDOMDocument = FDOMDocument;
}

void TLxDOMNode::ForgetChild(TLxDOMNode* ANode) {
  // Children leave from the end when a node is cleared, so the search starts there.
  if (const Integer Index = FChildNodes ? FChildNodes->LastIndexOf(ANode) : -1; Index >= 0)
    FChildNodes->DeleteAt(Index);
}

TLxDOMNode* TLxDOMNode::AppendChild(TLxDOMNode* newChild) {
  return AddChild(newChild, nullptr, ldpLast);
}

TLxDOMNode* TLxDOMNode::InsertBefore(TLxDOMNode* newChild, TLxDOMNode* refChild) {
  return AddChild(newChild, refChild, ldpBefore);
}

void TLxDOMNode::UnlinkChild(TLxDOMNode* AChildNode) {
  if (AChildNode->FParent != this)
    throw ELxDomNotFound(u"The node to remove is not a child of this node.");
  // The child works out what it keeps of its place before it changes anything, so a failure
  // there leaves it where it was.
  AChildNode->SetParentNode(nullptr);
  ForgetChild(AChildNode);
}

void TLxDOMNode::RemoveChild(TLxDOMNode* AChildNode) {
  TEditHold Hold(this);
  UnlinkChild(AChildNode);
  if (AChildNode->CanAutoDestroy())
    AChildNode->Free();
}

// --- values and names ---------------------------------------------------------------------------

bool TLxDOMNode::GetPreserveSpace() {
  return FParent ? static_cast<TLxDOMNode*>(FParent)->GetPreserveSpace() : DefaultPreserveCase;
}

UnicodeString TLxDOMNode::GetNodeValue() { return {}; }
UnicodeString TLxDOMNode::GetText() { return {}; }
UnicodeString TLxDOMNode::GetInnerXML() { return {}; }
UnicodeString TLxDOMNode::GetFormattedInnerXML() { return {}; }

UnicodeString TLxDOMNode::GetNamespaceURI() {
  return FParent ? static_cast<TLxDOMNode*>(FParent)->GetNamespaceURI() : FNamespaceURI;
}

void TLxDOMNode::SetNodeValue(const UnicodeString&) {
  throw ELxDomNotSupported(u"The SetNodeValue is not supported by the TLxDomNode");
}

void TLxDOMNode::SetInnerXML(const UnicodeString&) {
  throw ELxDomNotSupported(u"The SetInnerXML is not supported by the TLxDomNode");
}

void TLxDOMNode::SetPrefix(const UnicodeString& Value) {
  // Value may be this node's own prefix: an equal one keeps the record.
  if (Value != GetPrefix())
    FName = TLxDOMName::Make(Value, GetLocalName());
}

namespace {

/// The names last given by hand on this thread, so that nodes named alike share a record as the
/// nodes of a load do. A cache, not a set: a record whose slot another name takes lives on in
/// its nodes, and the cache holds at most Slots records.
struct TNameCache {
  static constexpr std::size_t Slots = 64;
  struct TSlot {
    UnicodeString QName;
    TLxDOMName::TRef Name;
  };
  TSlot Slot[Slots];
};

// Per thread, so that naming takes no lock: a node named by hand has no document or parent yet
// that could carry a table. A cache only: what it holds decides which nodes share a record, never
// a name any node reports.
thread_local TNameCache NameCache;

} // namespace

void TLxDOMNode::AssignQualifiedName(const UnicodeString& AValue) {
  std::size_t Hash = AValue.size();
  for (const char16_t Unit : AValue)
    Hash = Hash * 31 + Unit;
  TNameCache::TSlot& Slot = NameCache.Slot[(Hash ^ (Hash >> 7)) & (TNameCache::Slots - 1)];
  if (Slot.QName != AValue) {
    Slot.Name = TLxDOMName::FromQualifiedName(AValue);
    Slot.QName = AValue;
  }
  FName = Slot.Name;
}

void TLxDOMNode::SetQualifiedName(const UnicodeString& Value) {
  AssignQualifiedName(Value);
  SetPrefix(GetPrefix());
}

UnicodeString TLxDOMNode::GetQualifiedName() const {
  const UnicodeString& Prefix = GetPrefix();
  const UnicodeString& LocalName = GetLocalName();
  if (Prefix.empty())
    return LocalName;
  UnicodeString Result;
  Result.reserve(Prefix.size() + 1 + LocalName.size());
  return Result.append(Prefix).append(1, u':').append(LocalName);
}

// --- loading ------------------------------------------------------------------------------------

void TLxDOMNode::LoadFromStream(TStream* AStream, Word AStreamCodePage) {
  TOwned<TLxDOMParser> Parser(New<TLxDOMParser>(this));
  Parser->SetOnParseWarning(GetOnParseWarning());
  Parser->SetOnParseError(GetOnParseError());
  Parser->SetOnParseFatalError(GetOnParseFatalError());
  Parser->Parse(AStream, AStreamCodePage);
}

TLxDOMDocument* TLxDOMNode::GetDocument() const noexcept {
  return static_cast<TLxDOMDocument*>(FDOMDocument);
}

namespace {
const TLxDOMParseError NoParseHandler;
}

const TLxDOMParseError& TLxDOMNode::GetOnParseWarning() const noexcept {
  const TLxDOMParseEvents* Events = FNamespaceURI.Events();
  return Events ? Events->OnParseWarning : NoParseHandler;
}
const TLxDOMParseError& TLxDOMNode::GetOnParseError() const noexcept {
  const TLxDOMParseEvents* Events = FNamespaceURI.Events();
  return Events ? Events->OnParseError : NoParseHandler;
}
const TLxDOMParseError& TLxDOMNode::GetOnParseFatalError() const noexcept {
  const TLxDOMParseEvents* Events = FNamespaceURI.Events();
  return Events ? Events->OnParseFatalError : NoParseHandler;
}
void TLxDOMNode::SetOnParseWarning(TLxDOMParseError AHandler) {
  FNamespaceURI.RequireEvents().OnParseWarning = std::move(AHandler);
}
void TLxDOMNode::SetOnParseError(TLxDOMParseError AHandler) {
  FNamespaceURI.RequireEvents().OnParseError = std::move(AHandler);
}
void TLxDOMNode::SetOnParseFatalError(TLxDOMParseError AHandler) {
  FNamespaceURI.RequireEvents().OnParseFatalError = std::move(AHandler);
}

// --- cloning ------------------------------------------------------------------------------------

TLxDOMNode* TLxDOMNode::CreateClone() {
  auto* Clone = static_cast<TLxDOMNode*>(ClassType()->CreateDefault());
  try {
    Clone->SetQualifiedName(GetQualifiedName());
  } catch (...) {
    Clone->Free();
    throw;
  }
  return Clone;
}

TLxDOMNode* TLxDOMNode::CloneNode(bool AIncludeChildNodes) {
  TOwned<TLxDOMNode> Result(CreateClone());
  if (AIncludeChildNodes) {
    // An explicit stack: the source's depth is the input's.
    std::vector<std::pair<TLxDOMNode*, TLxDOMNode*>> Pending{{this, Result.get()}};
    while (!Pending.empty()) {
      auto [Source, Dest] = Pending.back();
      Pending.pop_back();
      if (!Source->FChildNodes)
        continue;
      for (TLxDOMNode* Child : *Source->FChildNodes) {
        TLxDOMNode* Clone = Child->CreateClone();
        Dest->AddChild(Clone, nullptr, ldpAfter);
        Pending.emplace_back(Child, Clone);
      }
    }
  }
  return Result.release();
}

// --- walking ------------------------------------------------------------------------------------

Integer TLxDOMNode::NodeCount() const noexcept { return FChildNodes ? FChildNodes->Count() : 0; }

TLxDOMNode* TLxDOMNode::ParentNode() const noexcept { return static_cast<TLxDOMNode*>(FParent); }

TLxDOMElement* TLxDOMNode::ParentElement() const noexcept {
  return FParent && ParentNode()->FNodeType == ntElement ? static_cast<TLxDOMElement*>(FParent)
                                                         : nullptr;
}

TLxDOMNode* TLxDOMNode::NextSibling() const {
  return FParent ? ParentNode()->FChildNodes->Next(this) : nullptr;
}

TLxDOMNode* TLxDOMNode::PreviousSibling() const {
  return FParent ? ParentNode()->FChildNodes->Previous(this) : nullptr;
}

bool TLxDOMNode::HasAttributes() const {
  return FNodeType == ntElement && static_cast<const TLxDOMElement*>(this)->AttributeCount() > 0;
}

UnicodeString TLxDOMNode::NodePath(bool ALocalNames, const UnicodeString& AIdAttribName) const {
  std::vector<const TLxDOMNode*> Chain;
  for (const TLxDOMNode* Node = this; Node; Node = Node->ParentNode())
    Chain.push_back(Node);
  UnicodeString Result;
  for (auto It = Chain.rbegin(); It != Chain.rend(); ++It) {
    const TLxDOMNode* Node = *It;
    if (Node->FNodeType == ntDocument) {
      Result.clear();
      continue;
    }
    if (Node->FParent)
      Result += u'/';
    if (Node->FNodeType == ntAttribute)
      Result += u'@';
    Result += ALocalNames ? Node->GetLocalName() : Node->GetQualifiedName();
    if (Node->FNodeType == ntElement && !AIdAttribName.empty()) {
      TLxDOMSelectOptions Options{soCaseInsensitive};
      if (ALocalNames)
        Options.Include(soLocalName);
      auto* Element = const_cast<TLxDOMElement*>(static_cast<const TLxDOMElement*>(Node));
      if (TLxDOMAttribute* Id = Element->FindAttribute(AIdAttribName, Options))
        Result.append(u"[@")
            .append(AIdAttribName)
            .append(u"=\"")
            .append(Id->GetNodeValue())
            .append(u"\"]");
    }
  }
  return Result;
}

} // namespace lorvane
