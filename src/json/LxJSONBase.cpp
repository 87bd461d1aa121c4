// The base of the JSON value tree: ownership, the unsupported error, reading text into a value.
#include "lorvane/json/LxJSONValues.h"

#include "lorvane/core/LxEncoding.h"
#include "lorvane/core/LxStreams.h"
#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "lorvane/json/LxJSONHandler.h"
#include "lorvane/json/LxJSONReader.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/platform/Generics.h"
#include "platform/internal/SmallObjectPool.h"
#include "json/LxJSONFaces.h"
#include "json/LxJSONWriter.h"

#include <algorithm>
#include <new>

namespace lorvane {

void TJSONChildList::erase(std::size_t AIndex) noexcept {
  if (!HasBlock()) {
    FOne = nullptr;
    return;
  }
  TBlock* Items = Block();
  TLxJSONBase** At = Items->Items();
  std::copy(At + AIndex + 1, At + Items->Count, At + AIndex);
  --Items->Count;
}

void TJSONChildList::Grow(TLxJSONBase* AItem) {
  const std::uint32_t Count = static_cast<std::uint32_t>(size());
  if (Count > UINT32_MAX / 2 - 1)
    throw std::bad_alloc();
  // Capacities 5, 11, 23, ... fill the pool's sizes with the count in front; most objects of a
  // document have a handful of members.
  const std::uint32_t Capacity = HasBlock() ? Count * 2 + 1 : 5;
  auto* Items = static_cast<TBlock*>(smallpool::Allocate(BlockBytes(Capacity)));
  Items->Count = Count + 1;
  Items->Capacity = Capacity;
  std::copy(data(), data() + Count, Items->Items());
  Items->Items()[Count] = AItem;
  if (HasBlock())
    FreeBlock(Block());
  FOne = reinterpret_cast<TLxJSONBase*>(reinterpret_cast<std::uintptr_t>(Items) + 1);
}

void TJSONChildList::FreeBlock(TBlock* ABlock) noexcept {
  smallpool::Release(ABlock, BlockBytes(ABlock->Capacity));
}

TJSONName::TJSONName(std::u16string_view AText) {
  if (AText.empty())
    return;
  void* Memory = smallpool::Allocate(sizeof(TText) + AText.size() * sizeof(char16_t));
  FText = new (Memory) TText{{1}, AText.size()};
  std::copy(AText.begin(), AText.end(), FText->Chars());
}

TJSONName::TJSONName(std::string_view AText) {
  if (AText.empty())
    return;
  void* Memory = smallpool::Allocate(sizeof(TText) + AText.size() * sizeof(char16_t));
  FText = new (Memory) TText{{1}, AText.size()};
  char16_t* Out = FText->Chars();
  for (const char C : AText)
    *Out++ = static_cast<unsigned char>(C);
}

void TJSONName::Release(TText* AText) noexcept {
  if (AText->Refs.fetch_sub(1, std::memory_order_acq_rel) != 1)
    return;
  const std::size_t Size = sizeof(TText) + AText->Length * sizeof(char16_t);
  AText->~TText();
  smallpool::Release(AText, Size);
}

HRESULT TLxJSONBase::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONBase>(this, AIID, AObj,
                                       [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

void* TLxJSONBase::operator new(std::size_t ASize) { return smallpool::Allocate(ASize); }

void TLxJSONBase::operator delete(void* AMemory, std::size_t ASize) noexcept {
  smallpool::Release(AMemory, ASize);
}

void TLxJSONBase::BeforeDestruction() {
  DestroyObjects();
  if (TLxJSONBase* Owner = std::exchange(FOwner, nullptr))
    Owner->RemoveObject(this);
  TLxObject::BeforeDestruction();
}

void TLxJSONBase::InsertObject(TLxJSONBase* AObject) {
  FObjects.push_back(AObject);
  AObject->FRefCount.fetch_add(1, std::memory_order_relaxed);
}

void TLxJSONBase::RemoveObject(TLxJSONBase* AObject) {
  // From the back: destruction and the handler take children off the end.
  std::size_t Index = FObjects.size();
  while (Index > 0 && FObjects[Index - 1] != AObject)
    --Index;
  if (Index == 0)
    return;
  FObjects.erase(Index - 1);
  // The owner's hold goes without a release: the caller decides what happens to the object.
  AObject->FRefCount.fetch_sub(1, std::memory_order_acq_rel);
}

void TLxJSONBase::FreeObject() {
  if (TLxJSONBase* Owner = FOwner) {
    Owner->RemoveObject(this);
    FOwner = nullptr;
  }
  if (RefCount() > 0)
    SetAutoDestroy(true);
  else
    Free();
}

void TLxJSONBase::DestroyObjects() {
  // Values listed by a value that doesn't own its children belong elsewhere: only the list's
  // hold on them goes.
  const auto Forget = [](TLxJSONBase* AList) {
    // A path's result took no hold on what it lists.
    if (!AList->FDestroyChilds && !AList->FSelection)
      for (TLxJSONBase* Child : AList->FObjects) {
        Child->FRefCount.fetch_sub(1, std::memory_order_acq_rel);
        if (Child->FOwner == AList)
          Child->FOwner = nullptr;
      }
    AList->FObjects.clear();
  };
  // The children go as FreeObject on each from the last to the first would take them, a value's
  // own children before the value, but over a stack of our own: a tree may be as deep as any
  // input.
  std::vector<TLxJSONBase*> Pending;
  TLxJSONBase* Node = this;
  for (;;) {
    if (Node->FDestroyChilds && !Node->FObjects.empty()) {
      const std::size_t Count = Node->FObjects.size();
      // The walk is bound by memory latency: ask for the next siblings while this one goes.
      if (Count > 2)
        __builtin_prefetch(Node->FObjects[Count - 3], 1);
      TLxJSONBase* Child = Node->FObjects.back();
      Node->RemoveObject(Child);
      Child->FOwner = nullptr;
      if (Child->RefCount() > 0) {
        Child->SetAutoDestroy(true);
      } else {
        Pending.push_back(Node);
        Node = Child;
      }
      continue;
    }
    Forget(Node);
    if (Node == this)
      return;
    TLxJSONBase* Done = Node;
    Node = Pending.back();
    Pending.pop_back();
    // Without children or owner left, its own destruction walks nothing.
    Done->Free();
  }
}

[[noreturn]] void TLxJSONBase::RaiseNotSupported(std::u16string_view ALabel) {
  throw ELxJSONException(_cLxJSONMethodNotSupported, {ClassName(), UnicodeString(ALabel)},
                         cLxJSONErrMethodNotSupported);
}

TLxJSONBase* TLxJSONBase::ChildAt(Integer AIdx) const {
  if (AIdx < 0 || static_cast<std::size_t>(AIdx) >= FObjects.size())
    RaiseListIndexError(AIdx);
  return FObjects[static_cast<std::size_t>(AIdx)];
}

// --- text ----------------------------------------------------------------------------------------

LxJSONString TLxJSONBase::GetAsJSON() { return jsonwriter::TextOf(this, /*AFormatted=*/false); }

LxJSONString TLxJSONBase::GetFormattedJSON() {
  return jsonwriter::TextOf(this, /*AFormatted=*/true);
}

void TLxJSONBase::SetAsJSON(const LxJSONString& AJSON) {
  if (AJSON.empty()) {
    DestroyObjects();
    return;
  }
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(AJSON));
  LoadFromStream(Stream.get(), CP_UTF16LE, /*AIsUrlFormEncoded=*/false);
}

void TLxJSONBase::LoadFromStream(TStream* AStream) {
  const Word CodePage = LxGetCodePage(AStream);
  LoadFromStream(AStream, CodePage, /*AIsUrlFormEncoded=*/false);
}

void TLxJSONBase::LoadFromStream(TStream* AStream, Word ACodePage, bool AIsUrlFormEncoded) {
  if (AStream->GetSize() == 0) {
    DestroyObjects();
    return;
  }
  TOwned<TLxJSONReader> Reader(AIsUrlFormEncoded ? New<TLxFormURLEncodedJSONReader>()
                                                 : New<TLxJSONReader>());
  TOwned<TLxJSONHandler> Handler(New<TLxJSONHandler>(Reader.get(), this));
  Handler->SetAutoDestroy(false);
  Handler->FDeferNullValues = true;
  Reader->SetContentHandler(Handler.get());
  Reader->SetErrorHandler(Handler.get());
  Reader->FTreeBuilder = Handler.get();
  // The reader lets go of the handler before either is freed, also when the parse fails.
  struct TDetach {
    TLxJSONReader* Reader;
    ~TDetach() {
      Reader->FTreeBuilder = nullptr;
      Reader->SetContentHandler(nullptr);
      Reader->SetErrorHandler(nullptr);
    }
  } Detach{Reader.get()};
  try {
    Reader->ParseStream(AStream, ACodePage, LxJSONString());
  } catch (...) {
    // A member the failure left waiting has its null value, as if made with the member.
    Handler->Settle();
    throw;
  }
  Handler->Settle();
}

void TLxJSONBase::SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                               bool AAddLeadingSpace) {
  jsonwriter::SaveValue(this, AStream, AFormatted, ADepth, AAddLeadingSpace);
}

// --- operations that only some classes support -----------------------------------------------

LxJSONString TLxJSONBase::GetName() { RaiseNotSupported(u"GetName"); }
TLxJSONBase* TLxJSONBase::GetValueObj() { RaiseNotSupported(u"GetValue"); }
void TLxJSONBase::SetValue(TLxJSONBase*) { RaiseNotSupported(u"SetValue"); }
void TLxJSONBase::SetName(const LxJSONString&) { RaiseNotSupported(u"SetName"); }
bool TLxJSONBase::GetAsBoolean() { RaiseNotSupported(u"GetAsBoolean"); }
Double TLxJSONBase::GetAsDouble() { RaiseNotSupported(u"GetAsDouble"); }
Integer TLxJSONBase::GetAsInteger() { RaiseNotSupported(u"GetAsInteger"); }
Int64 TLxJSONBase::GetAsLargeInt() { RaiseNotSupported(u"GetAsLargeInt"); }
LxJSONString TLxJSONBase::GetAsString() { RaiseNotSupported(u"GetAsString"); }
Variant TLxJSONBase::GetAsVariant() { RaiseNotSupported(u"GetAsVariant"); }
TLxJSONObject* TLxJSONBase::GetAsObject() { RaiseNotSupported(u"GetAsObject"); }
TLxJSONArray* TLxJSONBase::GetAsArray() { RaiseNotSupported(u"GetAsArray"); }
void TLxJSONBase::SetAsBoolean(bool) { RaiseNotSupported(u"SetAsBoolean"); }
void TLxJSONBase::SetAsDouble(Double) { RaiseNotSupported(u"SetAsDouble"); }
void TLxJSONBase::SetAsInteger(Integer) { RaiseNotSupported(u"SetAsInteger"); }
void TLxJSONBase::SetAsString(const LxJSONString&) { RaiseNotSupported(u"SetAsString"); }
void TLxJSONBase::SetAsLargeInt(Int64) { RaiseNotSupported(u"SetAsLargeInt"); }
void TLxJSONBase::SetAsVariant(const Variant&) { RaiseNotSupported(u"SetAsVariant"); }
Integer TLxJSONBase::Count() { RaiseNotSupported(u"Count"); }

TLxJSONBase* TLxJSONBase::AddValue(TLxJSONDataType AValueType) {
  // A member without a value takes one this way too.
  if (FKind == TKind::Member) {
    auto* Member = static_cast<TLxJSONMember*>(this);
    if (!Member->GetValueObj())
      return Member->CreateValue(AValueType);
  }
  RaiseNotSupported(u"AddValue");
}
TLxJSONBase* TLxJSONBase::AddValue(TLxJSONDataType, const LxJSONString&) {
  RaiseNotSupported(u"AddValue");
}
TLxJSONBase* TLxJSONBase::AddValue(const Variant&) { RaiseNotSupported(u"AddValue"); }
void TLxJSONBase::RemoveValue(TLxJSONBase*) { RaiseNotSupported(u"RemoveValue"); }
void TLxJSONBase::DeleteValue(Integer) { RaiseNotSupported(u"DeleteValue"); }
TLxJSONMember* TLxJSONBase::AddMember(const LxJSONString&) { RaiseNotSupported(u"AddMember"); }
TLxJSONMember* TLxJSONBase::AddMember(const LxJSONString&, TLxJSONDataType) {
  RaiseNotSupported(u"AddMember");
}
TLxJSONMember* TLxJSONBase::AddMember(const LxJSONString&, TLxJSONDataType, const LxJSONString&) {
  RaiseNotSupported(u"AddMember");
}
TLxJSONMember* TLxJSONBase::AddMember(const LxJSONString&, const Variant&) {
  RaiseNotSupported(u"AddMember");
}
void TLxJSONBase::DeleteMember(Integer) { RaiseNotSupported(u"DeleteMember"); }
void TLxJSONBase::RemoveMember(TLxJSONMember*) { RaiseNotSupported(u"RemoveMember"); }
TLxJSONMember* TLxJSONBase::DoFindMember(const LxJSONString&, bool) {
  RaiseNotSupported(u"FindMember");
}
TLxJSONMember* TLxJSONBase::DoGetMember(const LxJSONString&, TLxJDOCSelectOptions) {
  RaiseNotSupported(u"Member");
}
TLxJSONBase* TLxJSONBase::DoItem(Integer) { RaiseNotSupported(u"Item"); }

// --- navigation ----------------------------------------------------------------------------------

TLxJSONDocument* TLxJSONBase::GetDocument() {
  TLxJSONBase* Value = this;
  while (Value && Value->FKind != TKind::Document)
    Value = Value->FOwner;
  if (!Value)
    throw EInvalidCast(UnicodeString(SInvalidCast));
  return static_cast<TLxJSONDocument*>(Value);
}

// --- interface faces -----------------------------------------------------------------------------

using jsonfaces::Face;

IPtr<ILxJSONBase> TLxJSONBase::GetValue() { return Face<ILxJSONBase>(GetValueObj()); }

IPtr<ILxJSONBase> TLxJSONBase::GetMemberEx(const LxJSONString& AName) {
  return Face<ILxJSONBase>(GetMember(AName, {jsoCreate}));
}

IPtr<ILxJSONBase> TLxJSONBase::GetItem(Integer AIdx) { return Face<ILxJSONBase>(Item(AIdx)); }

IPtr<ILxJSONObject> TLxJSONBase::GetAsObjectIntf() { return Face<ILxJSONObject>(GetAsObject()); }

IPtr<ILxJSONArray> TLxJSONBase::GetAsArrayIntf() { return Face<ILxJSONArray>(GetAsArray()); }

IPtr<ILxJSONMember> TLxJSONBase::FindMemberIntf(const LxJSONString& AName, bool ACaseInsensitive) {
  return Face<ILxJSONMember>(FindMember(AName, ACaseInsensitive));
}

bool TLxJSONBase::HasMember(const LxJSONString& AName, bool ACaseInsensitive) {
  return FindMember(AName, ACaseInsensitive) != nullptr;
}

IPtr<ILxJSONMember> TLxJSONBase::GetMemberIntf(const LxJSONString& AName,
                                               TLxJDOCSelectOptions ASelectOptions) {
  return Face<ILxJSONMember>(GetMember(AName, ASelectOptions));
}

} // namespace lorvane
