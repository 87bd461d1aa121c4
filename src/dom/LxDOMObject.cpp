// Data objects and their faces: how they find, keep and free each other.
#include "lorvane/dom/LxDOMObject.h"

#include "lorvane/dom/LxDOMNode.h"
#include "platform/internal/SmallObjectPool.h"

#include <utility>
#include <vector>

namespace lorvane {

TLxDOMSelectMatchOption DefaultSelectMatchOption = soQualifiedName;
bool DefaultPreserveCase = false;
TLxDOMSelectCheckOption DefaultSelectCheckOption = coRaise;
// Initialized before main; nothing in the library reads it before then.
TLxXPathCollationClass DefaultXPathCollation = TLxXPathCollationASCIICI::StaticClass();
const std::array<std::u16string_view, 13> LxDOMNodeTypes{
    u"Unknown", u"Element",   u"Attribute",    u"Text",
    u"CDATA",   u"EntityRef", u"Entity",       u"ProcessingInstruction",
    u"Comment", u"Document",  u"DocumentType", u"DocumentFragment",
    u"Notation"};

namespace {

std::atomic<Int64> FaceCount{0};

} // namespace

// --- TLxDOMObject -------------------------------------------------------------------------------

void* TLxDOMObject::operator new(std::size_t ASize) { return smallpool::Allocate(ASize); }

void TLxDOMObject::operator delete(void* AMemory, std::size_t ASize) noexcept {
  smallpool::Release(AMemory, ASize);
}

TLxDOMObject::~TLxDOMObject() {
  if (FDOMImpl)
    FDOMImpl->Free();
}

void TLxDOMObject::BeforeDestruction() {
  FDestroying = true;
  inherited::BeforeDestruction();
}

TLxDOMObjectImpl* TLxDOMObject::RequireDOMImpl() {
  if (!FDOMImpl)
    SetDOMImpl(CreateDOMImpl(this));
  return FDOMImpl;
}

HRESULT TLxDOMObject::QueryInterface(const TGUID& AIID, void** AObj) {
  const bool Made = !FDOMImpl;
  HRESULT Result = RequireDOMImpl()->QueryInterface(AIID, AObj);
  if (Result == E_NOINTERFACE)
    Result = inherited::QueryInterface(AIID, AObj);
  // A face made for a question that got no answer has no reference and holds no pin: it goes.
  if (Result != S_OK && Made && FDOMImpl && FDOMImpl->RefCount() == 0)
    FDOMImpl->Free();
  return Result;
}

Integer TLxDOMObject::_AddRef() { return RequireDOMImpl()->_AddRef(); }

Integer TLxDOMObject::_Release() {
  if (!FDOMImpl)
    throw Exception(u"DOM Objects do not support interfaces. All interface requests should be "
                    u"handled by the DOMIMpl object.");
  return FDOMImpl->_Release();
}

bool TLxDOMObject::CanAutoDestroy() {
  if (FParent && !FParent->FDestroying)
    return false;
  if (RefCount() != 0)
    return false;
  return !FDestroying;
}

bool TLxDOMObject::GetCaseSensitive() {
  return GetCollation() != TLxXPathCollationASCIICI::StaticClass();
}

TLxXPathCollationClass TLxDOMObject::GetCollation() {
  return FDOMDocument ? FDOMDocument->GetCollation() : DefaultXPathCollation;
}

TLxDOMSelectMatchOption TLxDOMObject::GetSelectMatchOption() {
  return FDOMDocument ? FDOMDocument->GetSelectMatchOption() : DefaultSelectMatchOption;
}

void TLxDOMObject::CheckCaseOptions(TLxDOMSelectOptions AOptions) {
  if (AOptions.Contains(soCaseSensitive) && AOptions.Contains(soCaseInsensitive))
    throw Exception(u"It is not possible to specify both soCaseSensitive and soCaseInsensitive!");
}

TLxXPathCollationClass TLxDOMObject::CollationFor(TLxDOMSelectOptions AOptions) {
  if (AOptions.Contains(soCaseSensitive))
    return TLxXPathCollationCodepoint::StaticClass();
  if (AOptions.Contains(soCaseInsensitive))
    return TLxXPathCollationASCIICI::StaticClass();
  return GetCollation();
}

bool TLxDOMObject::ByLocalName(TLxDOMSelectOptions AOptions) {
  if (AOptions.Contains(soLocalName))
    return true;
  return !AOptions.Contains(soQualifiedName) && GetSelectMatchOption() == soLocalName;
}

void TLxDOMObject::SetDOMImpl(TLxDOMObjectImpl* AImpl) { FDOMImpl = AImpl; }

void TLxDOMObject::SetDOMDocument(TLxDOMObject* ADoc) { FDOMDocument = ADoc; }

void TLxDOMObject::SetParentNode(TLxDOMObject* AParent) {
  FParent = AParent;
  if (FDestroying)
    return;
  if (!AParent)
    SetDOMDocument(nullptr);
  else if (AParent->FDOMDocument != FDOMDocument)
    SetDOMDocument(AParent->FDOMDocument);
  if (FDOMImpl)
    FDOMImpl->PinParent(AParent);
}

// --- TLxDOMObjectImpl ---------------------------------------------------------------------------

TLxDOMObjectImpl::TLxDOMObjectImpl(TLxDOMObject* ADOMObject) : FDOMObject(ADOMObject) {
  FaceCount.fetch_add(1, std::memory_order_relaxed);
  SetAutoDestroy(false);
}

Integer TLxDOMObjectImpl::_AddRef() {
  const Integer Count = inherited::_AddRef();
  // The pin is taken with the first reference rather than in the constructor: a face nobody
  // holds then never keeps its ancestors alive.
  if (Count == 1 && !FPinned && FDOMObject && FDOMObject->FParent)
    PinAncestors();
  return Count;
}

void TLxDOMObjectImpl::PinAncestors() {
  // The ancestors up to the first that is held already (or the root), pinned from the top down,
  // each by its child's face: no step recurses into the next, so depth costs no stack.
  std::vector<TLxDOMObject*> Chain{FDOMObject};
  for (TLxDOMObject* Ancestor = FDOMObject->FParent; Ancestor; Ancestor = Ancestor->FParent) {
    Chain.push_back(Ancestor);
    if (Ancestor->FDOMImpl && Ancestor->FDOMImpl->RefCount() > 0)
      break;
  }
  for (std::size_t I = Chain.size() - 1; I > 0; --I) {
    TLxDOMObjectImpl* Above = Chain[I]->RequireDOMImpl();
    TLxDOMObjectImpl* Below = Chain[I - 1]->RequireDOMImpl();
    Above->TLxObject::_AddRef();
    Below->FPinned = Chain[I];
  }
}

TLxDOMObjectImpl::~TLxDOMObjectImpl() {
  if (FDOMObject)
    FDOMObject->SetDOMImpl(nullptr);
  ReleasePin(std::exchange(FPinned, nullptr));
}

void TLxDOMObjectImpl::PinParent(TLxDOMObject* AParent) {
  // Only a held face is pinned; one without references gets its pin with its first.
  TLxDOMObject* Old = std::exchange(FPinned, nullptr);
  if (AParent && RefCount() > 0) {
    AParent->_AddRef();
    FPinned = AParent;
  }
  ReleasePin(Old);
}

void TLxDOMObjectImpl::ReleasePin(TLxDOMObject* APinned) {
  // Releasing a pin may end the pinned object's face, whose destructor would release that
  // face's own pin, and so on up a chain as long as the tree is deep. The chain is followed
  // here instead: a face that this release ends gives up its pin first, and that pin is
  // released next, so its destructor has none left to release.
  while (APinned) {
    TLxDOMObject* Next = nullptr;
    if (TLxDOMObjectImpl* Face = APinned->FDOMImpl; Face && Face->RefCount() == 1)
      Next = std::exchange(Face->FPinned, nullptr);
    APinned->_Release();
    APinned = Next;
  }
}

Integer TLxDOMObjectImpl::_Release() {
  const Integer Count = inherited::_Release();
  if (Count != 0)
    return Count;
  TLxDOMObject* Object = FDOMObject;
  Object->SetDOMImpl(nullptr);
  if (Object->CanAutoDestroy())
    Object->Free();
  FDOMObject = nullptr;
  Free();
  return 0;
}

Int64 TLxDOMObjectImpl::FacesMade() noexcept { return FaceCount.load(std::memory_order_relaxed); }

TLxDOMNode* TLxDOMObjectImpl::Node(IInterface* AInterface) {
  if (!AInterface)
    return nullptr;
  IPtr<ILxObject> Object = IPtr<ILxObject>::From(AInterface);
  if (!Object)
    throw EInvalidCast(UnicodeString(SInvalidCast));
  TObject* Implementor = Object->Implementor();
  if (auto* Face = dynamic_cast<TLxDOMNodeImpl*>(Implementor))
    Implementor = Face->DOMObject();
  if (auto* Result = dynamic_cast<TLxDOMNode*>(Implementor))
    return Result;
  throw EInvalidCast(UnicodeString(SInvalidCast));
}

// --- TLxDOMObjectList ---------------------------------------------------------------------------

void TLxDOMObjectList::Assign(const TLxDOMObjectList& AList) {
  Clear();
  SetCapacity(AList.GetCapacity());
  for (TLxDOMObject* Item : AList)
    Add(Item);
}

} // namespace lorvane
