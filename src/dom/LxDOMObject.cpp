// Data objects and their faces: how they find, keep and free each other.
#include "lorvane/dom/LxDOMObject.h"

#include "lorvane/dom/LxDOMNode.h"

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

// A face releases its pin on the parent when it goes, which may end the parent's face, and so
// on up the chain. Releases that happen while one is running are queued and run by the
// outermost, so a chain as deep as the tree costs no stack.
thread_local std::vector<IInterface*>* PendingPinReleases = nullptr;

std::atomic<Int64> FaceCount{0};

void ReleasePin(IInterface* APin) {
  if (!APin)
    return;
  if (PendingPinReleases) {
    PendingPinReleases->push_back(APin);
    return;
  }
  std::vector<IInterface*> Pending{APin};
  PendingPinReleases = &Pending;
  struct TReset {
    ~TReset() { PendingPinReleases = nullptr; }
  } Reset;
  while (!Pending.empty()) {
    IInterface* Pin = Pending.back();
    Pending.pop_back();
    Pin->_Release();
  }
}

} // namespace

// --- TLxDOMObject -------------------------------------------------------------------------------

TLxDOMObject::~TLxDOMObject() {
  if (FDOMImpl)
    FDOMImpl->Free();
}

void TLxDOMObject::BeforeDestruction() {
  FDestroying = true;
  inherited::BeforeDestruction();
}

TLxDOMObjectImpl* TLxDOMObject::RequireDOMImpl() {
  if (FDOMImpl)
    return FDOMImpl;
  if (FParent && !FParent->FDOMImpl) {
    std::vector<TLxDOMObject*> Missing;
    for (TLxDOMObject* Ancestor = FParent; Ancestor && !Ancestor->FDOMImpl;
         Ancestor = Ancestor->FParent)
      Missing.push_back(Ancestor);
    for (auto It = Missing.rbegin(); It != Missing.rend(); ++It)
      (*It)->SetDOMImpl((*It)->CreateDOMImpl(*It));
  }
  SetDOMImpl(CreateDOMImpl(this));
  return FDOMImpl;
}

HRESULT TLxDOMObject::QueryInterface(const TGUID& AIID, void** AObj) {
  const HRESULT Result = RequireDOMImpl()->QueryInterface(AIID, AObj);
  if (Result != E_NOINTERFACE)
    return Result;
  return inherited::QueryInterface(AIID, AObj);
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
  if (ADOMObject->FParent)
    FParent = IPtr<IInterface>(static_cast<IInterface*>(ADOMObject->FParent));
}

TLxDOMObjectImpl::~TLxDOMObjectImpl() {
  if (FDOMObject)
    FDOMObject->SetDOMImpl(nullptr);
  ReleasePin(FParent.Detach());
}

void TLxDOMObjectImpl::PinParent(TLxDOMObject* AParent) {
  IInterface* Old = FParent.Detach();
  if (AParent)
    FParent = IPtr<IInterface>(static_cast<IInterface*>(AParent));
  ReleasePin(Old);
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
