// Object lists that may own their items, and the list errors shared by all containers.
#include "lorvane/platform/Generics.h"

namespace lorvane {

void RaiseListIndexError(Integer AIndex) { throw EListError(SListIndexError, {AIndex}); }

void RaiseListCapacityError(Integer ACapacity) {
  throw EListError(SListCapacityError, {ACapacity});
}

TObjectList::~TObjectList() { Clear(); }

void TObjectList::Release(TObject* AObject) {
  if (FOwnsObjects)
    lorvane::Free(AObject);
}

Integer TObjectList::Add(TObject* AObject) {
  FItems.push_back(AObject);
  return GetCount() - 1;
}

void TObjectList::Insert(Integer AIndex, TObject* AObject) {
  if (AIndex < 0 || AIndex > GetCount())
    RaiseListIndexError(AIndex);
  FItems.insert(FItems.begin() + AIndex, AObject);
}

void TObjectList::Delete(Integer AIndex) {
  CheckIndex(AIndex);
  TObject* Item = FItems[static_cast<std::size_t>(AIndex)];
  FItems.erase(FItems.begin() + AIndex);
  Release(Item);
}

Integer TObjectList::Remove(TObject* AObject) {
  const Integer Index = IndexOf(AObject);
  if (Index >= 0)
    Delete(Index);
  return Index;
}

TObject* TObjectList::Extract(TObject* AObject) {
  const Integer Index = IndexOf(AObject);
  if (Index < 0)
    return nullptr;
  FItems.erase(FItems.begin() + Index);
  return AObject;
}

Integer TObjectList::IndexOf(const TObject* AObject) const noexcept {
  const auto It = std::find(FItems.begin(), FItems.end(), AObject);
  return It == FItems.end() ? -1 : static_cast<Integer>(It - FItems.begin());
}

void TObjectList::Clear() {
  // One at a time from the end, so that an item's destructor that looks at (or removes itself
  // from) this list finds it consistent.
  while (!FItems.empty()) {
    TObject* Item = FItems.back();
    FItems.pop_back();
    Release(Item);
  }
  FItems.shrink_to_fit();
}

void TObjectList::SetCapacity(Integer ACapacity) {
  if (ACapacity < GetCount())
    RaiseListCapacityError(ACapacity);
  if (ACapacity > GetCapacity()) {
    FItems.reserve(static_cast<std::size_t>(ACapacity));
  } else if (ACapacity < GetCapacity()) {
    std::vector<TObject*> Smaller;
    Smaller.reserve(static_cast<std::size_t>(ACapacity));
    Smaller.assign(FItems.begin(), FItems.end());
    FItems.swap(Smaller);
  }
}

void TObjectList::SetItems(Integer AIndex, TObject* AObject) {
  CheckIndex(AIndex);
  TObject* Old = std::exchange(FItems[static_cast<std::size_t>(AIndex)], AObject);
  if (Old != AObject)
    Release(Old);
}

void TObjectList::Exchange(Integer AIndex1, Integer AIndex2) {
  CheckIndex(AIndex1);
  CheckIndex(AIndex2);
  std::swap(FItems[static_cast<std::size_t>(AIndex1)], FItems[static_cast<std::size_t>(AIndex2)]);
}

} // namespace lorvane
