/// Containers of the runtime: TList<T> (an array list of values), TObjectList (an array list of
/// objects that may own them), TDictionary<K,V> (a hash map that iterates in insertion order) and
/// TObjectDictionary<K,V> (one that may own its keys and values), with the list messages.
#pragma once

#include "lorvane/platform/SysUtils.h"

#include <algorithm>
#include <concepts>
#include <iterator>
#include <list>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lorvane {

// --- messages ------------------------------------------------------------------------------------
inline constexpr std::u16string_view SListIndexError = u"List index out of bounds (%d)";
inline constexpr std::u16string_view SListCapacityError = u"List capacity out of bounds (%d)";
inline constexpr std::u16string_view SGenericDuplicateItem = u"Duplicates not allowed";
inline constexpr std::u16string_view SGenericItemNotFound = u"Item not found";
inline constexpr std::u16string_view SInvalidCast = u"Invalid class typecast";

/// Raises EListError "List index out of bounds (AIndex)".
[[noreturn]] void RaiseListIndexError(Integer AIndex);
/// Raises EListError "List capacity out of bounds (ACapacity)".
[[noreturn]] void RaiseListCapacityError(Integer ACapacity);

// --- TList<T> ------------------------------------------------------------------------------------
/// An ordered array list of values. Not a TObject: it lives by value or inside its owner. Every
/// index outside 0..Count-1 (0..Count for Insert) raises EListError "List index out of bounds
/// (%d)".
template <class T> class TList {
public:
  using value_type = T;
  using reference = typename std::vector<T>::reference;
  using const_reference = typename std::vector<T>::const_reference;
  using iterator = typename std::vector<T>::iterator;
  using const_iterator = typename std::vector<T>::const_iterator;

  TList() = default;
  TList(std::initializer_list<T> AItems) : FItems(AItems) {}
  virtual ~TList() = default;
  TList(const TList&) = default;
  TList(TList&&) noexcept = default;
  TList& operator=(const TList&) = default;
  TList& operator=(TList&&) noexcept = default;

  /// Appends AValue; gives its index.
  Integer Add(const T& AValue) {
    FItems.push_back(AValue);
    return GetCount() - 1;
  }
  Integer Add(T&& AValue) {
    FItems.push_back(std::move(AValue));
    return GetCount() - 1;
  }
  /// AIndex may be Count, which appends.
  void Insert(Integer AIndex, const T& AValue) {
    if (AIndex < 0 || AIndex > GetCount())
      RaiseListIndexError(AIndex);
    FItems.insert(FItems.begin() + AIndex, AValue);
  }
  void Delete(Integer AIndex) {
    CheckIndex(AIndex);
    FItems.erase(FItems.begin() + AIndex);
  }
  /// Takes out the first item equal to AValue; gives the index it had, or -1 when there is none.
  Integer Remove(const T& AValue) {
    const Integer Index = IndexOf(AValue);
    if (Index >= 0)
      FItems.erase(FItems.begin() + Index);
    return Index;
  }
  /// The index of the first item equal to AValue; -1 when there is none.
  Integer IndexOf(const T& AValue) const {
    const auto It = std::find(FItems.begin(), FItems.end(), AValue);
    return It == FItems.end() ? -1 : static_cast<Integer>(It - FItems.begin());
  }
  bool Contains(const T& AValue) const { return IndexOf(AValue) >= 0; }
  void Clear() noexcept { FItems.clear(); }

  /// The first item; an empty list raises EListError with index 0.
  const_reference First() const { return GetItems(0); }
  /// The last item; an empty list raises EListError with index -1.
  const_reference Last() const { return GetItems(GetCount() - 1); }
  Integer GetCount() const noexcept { return static_cast<Integer>(FItems.size()); }
  Integer GetCapacity() const noexcept { return static_cast<Integer>(FItems.capacity()); }
  /// A capacity below Count raises EListError "List capacity out of bounds (%d)".
  void SetCapacity(Integer ACapacity) {
    if (ACapacity < GetCount())
      RaiseListCapacityError(ACapacity);
    if (ACapacity > GetCapacity()) {
      FItems.reserve(static_cast<std::size_t>(ACapacity));
    } else if (ACapacity < GetCapacity()) {
      std::vector<T> Smaller;
      Smaller.reserve(static_cast<std::size_t>(ACapacity));
      std::move(FItems.begin(), FItems.end(), std::back_inserter(Smaller));
      FItems.swap(Smaller);
    }
  }

  const_reference GetItems(Integer AIndex) const {
    CheckIndex(AIndex);
    return FItems[static_cast<std::size_t>(AIndex)];
  }
  void SetItems(Integer AIndex, const T& AValue) {
    CheckIndex(AIndex);
    FItems[static_cast<std::size_t>(AIndex)] = AValue;
  }
  /// The default indexed property, checked like GetItems.
  reference operator[](Integer AIndex) {
    CheckIndex(AIndex);
    return FItems[static_cast<std::size_t>(AIndex)];
  }
  const_reference operator[](Integer AIndex) const { return GetItems(AIndex); }

  void Exchange(Integer AIndex1, Integer AIndex2) {
    CheckIndex(AIndex1);
    CheckIndex(AIndex2);
    std::swap(FItems[static_cast<std::size_t>(AIndex1)], FItems[static_cast<std::size_t>(AIndex2)]);
  }
  /// Orders by operator<; equal items keep their order.
  void Sort() { std::stable_sort(FItems.begin(), FItems.end()); }
  /// AComparer(A, B) gives <0, 0 or >0 like the platform's comparers; equal items keep their order.
  template <class Comparer> void Sort(Comparer AComparer) {
    std::stable_sort(FItems.begin(), FItems.end(),
                     [&](const T& A, const T& B) { return AComparer(A, B) < 0; });
  }

  iterator begin() noexcept { return FItems.begin(); }
  iterator end() noexcept { return FItems.end(); }
  const_iterator begin() const noexcept { return FItems.begin(); }
  const_iterator end() const noexcept { return FItems.end(); }

private:
  void CheckIndex(Integer AIndex) const {
    if (AIndex < 0 || AIndex >= GetCount())
      RaiseListIndexError(AIndex);
  }
  std::vector<T> FItems;
};

// --- TObjectList ---------------------------------------------------------------------------------
/// An ordered array list of objects. An owning list frees (through Free) each object it lets go
/// of: on Delete, Remove, Clear, when SetItems replaces it, and at its own destruction; an item
/// leaves the list before it is freed, so its destructor sees the list without it. Extract takes
/// an item out without freeing it. Nil items are allowed. Index errors raise EListError
/// "List index out of bounds (%d)".
class TObjectList : public TObject {
  LX_CLASS(TObjectList, TObject)
  using const_iterator = std::vector<TObject*>::const_iterator;

  explicit TObjectList(bool AOwnsObjects = true) noexcept : FOwnsObjects(AOwnsObjects) {}

  Integer Add(TObject* AObject);
  /// AIndex may be Count, which appends.
  void Insert(Integer AIndex, TObject* AObject);
  void Delete(Integer AIndex);
  /// Takes out the first occurrence of AObject; gives the index it had, or -1.
  Integer Remove(TObject* AObject);
  /// Takes out the first occurrence of AObject without freeing it; gives AObject, or nil when it
  /// isn't in the list.
  TObject* Extract(TObject* AObject);
  /// -1 when AObject isn't in the list.
  Integer IndexOf(const TObject* AObject) const noexcept;
  bool Contains(const TObject* AObject) const noexcept { return IndexOf(AObject) >= 0; }
  /// Takes out all items, the last first.
  void Clear();

  /// An empty list raises EListError with index 0.
  TObject* First() const { return GetItems(0); }
  /// An empty list raises EListError with index -1.
  TObject* Last() const { return GetItems(GetCount() - 1); }
  Integer GetCount() const noexcept { return static_cast<Integer>(FItems.size()); }
  Integer GetCapacity() const noexcept { return static_cast<Integer>(FItems.capacity()); }
  /// A capacity below Count raises EListError "List capacity out of bounds (%d)".
  void SetCapacity(Integer ACapacity);
  bool GetOwnsObjects() const noexcept { return FOwnsObjects; }
  void SetOwnsObjects(bool AValue) noexcept { FOwnsObjects = AValue; }

  TObject* GetItems(Integer AIndex) const {
    CheckIndex(AIndex);
    return FItems[static_cast<std::size_t>(AIndex)];
  }
  /// An owning list frees the item that AObject replaces (unless it is AObject itself).
  void SetItems(Integer AIndex, TObject* AObject);
  TObject* operator[](Integer AIndex) const { return GetItems(AIndex); }

  void Exchange(Integer AIndex1, Integer AIndex2);
  /// AComparer(A, B) gives <0, 0 or >0; equal items keep their order.
  template <class Comparer> void Sort(Comparer AComparer) {
    std::stable_sort(FItems.begin(), FItems.end(),
                     [&](TObject* A, TObject* B) { return AComparer(A, B) < 0; });
  }

  const_iterator begin() const noexcept { return FItems.begin(); }
  const_iterator end() const noexcept { return FItems.end(); }

protected:
  ~TObjectList() override;

private:
  void CheckIndex(Integer AIndex) const {
    if (AIndex < 0 || AIndex >= GetCount())
      RaiseListIndexError(AIndex);
  }
  /// Frees AObject when the list owns its items.
  void Release(TObject* AObject);

  std::vector<TObject*> FItems;
  bool FOwnsObjects;
};

// --- TDictionary<K,V> ----------------------------------------------------------------------------
template <class K, class V> struct TPair {
  K Key;
  V Value;
};

enum class TCollectionNotification : Byte { cnAdded, cnRemoved, cnExtracted };
using enum TCollectionNotification;

/// Read-only view of a dictionary's keys or values, in the dictionary's order; valid while the
/// dictionary lives and isn't changed.
template <class Dictionary, class T, bool IsKey> class TDictionaryCollection {
public:
  explicit TDictionaryCollection(const Dictionary& ADictionary) noexcept
      : FDictionary(&ADictionary) {}
  Integer GetCount() const noexcept { return FDictionary->GetCount(); }
  std::vector<T> ToArray() const {
    std::vector<T> Result;
    Result.reserve(static_cast<std::size_t>(GetCount()));
    for (const auto& Pair : *FDictionary)
      Result.push_back(Pick(Pair));
    return Result;
  }

  class const_iterator {
  public:
    using Base = typename Dictionary::const_iterator;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    const_iterator() = default;
    explicit const_iterator(Base AIt) : FIt(AIt) {}
    const T& operator*() const { return Pick(*FIt); }
    const_iterator& operator++() {
      ++FIt;
      return *this;
    }
    const_iterator operator++(int) { return const_iterator(FIt++); }
    friend bool operator==(const const_iterator& A, const const_iterator& B) {
      return A.FIt == B.FIt;
    }

  private:
    Base FIt{};
  };
  const_iterator begin() const { return const_iterator(FDictionary->begin()); }
  const_iterator end() const { return const_iterator(FDictionary->end()); }

private:
  template <class Pair> static const T& Pick(const Pair& APair) {
    if constexpr (IsKey)
      return APair.Key;
    else
      return APair.Value;
  }
  const Dictionary* FDictionary;
};

/// A hash map. It iterates in the order in which keys were first added, so that what is built
/// from it (serialized text, key and value arrays) comes out the same on every run; Keys and
/// Values run in the same order. Hash and KeyEqual choose the key identity (std::hash works for
/// UnicodeString, numbers and pointers).
template <class K, class V, class Hash = std::hash<K>, class KeyEqual = std::equal_to<K>>
class TDictionary {
  using TItems = std::list<TPair<K, V>>;

public:
  using value_type = TPair<K, V>;
  using const_iterator = typename TItems::const_iterator;
  using TKeyCollection = TDictionaryCollection<TDictionary, K, true>;
  using TValueCollection = TDictionaryCollection<TDictionary, V, false>;

  TDictionary() = default;
  TDictionary(const TDictionary&) = delete;
  TDictionary& operator=(const TDictionary&) = delete;
  virtual ~TDictionary() = default;

  /// An existing key raises EListError "Duplicates not allowed".
  void Add(const K& AKey, const V& AValue) {
    if (FIndex.find(AKey) != FIndex.end())
      throw EListError(UnicodeString(SGenericDuplicateItem));
    Append(AKey, AValue);
  }
  /// Adds the pair, or gives an existing key the new value.
  void AddOrSetValue(const K& AKey, const V& AValue) {
    const auto Found = FIndex.find(AKey);
    if (Found == FIndex.end())
      Append(AKey, AValue);
    else
      Replace(Found->second, AValue);
  }
  bool TryGetValue(const K& AKey, V& AValue) const {
    const auto Found = FIndex.find(AKey);
    if (Found == FIndex.end())
      return false;
    AValue = Found->second->Value;
    return true;
  }
  bool ContainsKey(const K& AKey) const { return FIndex.find(AKey) != FIndex.end(); }
  /// Nothing happens for a missing key.
  void Remove(const K& AKey) {
    const auto Found = FIndex.find(AKey);
    if (Found == FIndex.end())
      return;
    TPair<K, V> Pair = std::move(*Found->second);
    FItems.erase(Found->second);
    FIndex.erase(Found);
    KeyNotify(Pair.Key, cnRemoved);
    ValueNotify(Pair.Value, cnRemoved);
  }
  /// Takes the pair out without the removal notifications (an owning dictionary doesn't free
  /// it). A missing key gives the key with a default value.
  TPair<K, V> ExtractPair(const K& AKey) {
    const auto Found = FIndex.find(AKey);
    if (Found == FIndex.end())
      return TPair<K, V>{AKey, V{}};
    TPair<K, V> Pair = std::move(*Found->second);
    FItems.erase(Found->second);
    FIndex.erase(Found);
    KeyNotify(Pair.Key, cnExtracted);
    ValueNotify(Pair.Value, cnExtracted);
    return Pair;
  }
  /// Takes out all pairs, the oldest first.
  void Clear() {
    TItems Items;
    Items.swap(FItems);
    FIndex.clear();
    for (auto& Pair : Items) {
      KeyNotify(Pair.Key, cnRemoved);
      ValueNotify(Pair.Value, cnRemoved);
    }
  }
  Integer GetCount() const noexcept { return static_cast<Integer>(FItems.size()); }

  /// A missing key raises EListError "Item not found".
  const V& GetItems(const K& AKey) const { return Lookup(AKey)->Value; }
  /// A missing key raises EListError "Item not found".
  void SetItems(const K& AKey, const V& AValue) { Replace(Lookup(AKey), AValue); }
  const V& operator[](const K& AKey) const { return GetItems(AKey); }

  TKeyCollection GetKeys() const noexcept { return TKeyCollection(*this); }
  TValueCollection GetValues() const noexcept { return TValueCollection(*this); }

  const_iterator begin() const noexcept { return FItems.begin(); }
  const_iterator end() const noexcept { return FItems.end(); }

protected:
  /// Hooks called after a key or value came in or went out.
  virtual void KeyNotify(const K& /*AKey*/, TCollectionNotification /*AAction*/) {}
  virtual void ValueNotify(const V& /*AValue*/, TCollectionNotification /*AAction*/) {}

private:
  using TSlot = typename TItems::iterator;

  void Append(const K& AKey, const V& AValue) {
    FItems.push_back(TPair<K, V>{AKey, AValue});
    const TSlot Slot = std::prev(FItems.end());
    try {
      FIndex.emplace(Slot->Key, Slot);
    } catch (...) {
      FItems.pop_back();
      throw;
    }
    KeyNotify(Slot->Key, cnAdded);
    ValueNotify(Slot->Value, cnAdded);
  }
  void Replace(TSlot ASlot, const V& AValue) {
    // Setting the value a key already has changes nothing; an owning dictionary must not free it.
    if constexpr (std::equality_comparable<V>)
      if (ASlot->Value == AValue)
        return;
    V Old = std::exchange(ASlot->Value, AValue);
    ValueNotify(Old, cnRemoved);
    ValueNotify(ASlot->Value, cnAdded);
  }
  TSlot Lookup(const K& AKey) const {
    const auto Found = FIndex.find(AKey);
    if (Found == FIndex.end())
      throw EListError(UnicodeString(SGenericItemNotFound));
    return Found->second;
  }

  TItems FItems;
  std::unordered_map<K, TSlot, Hash, KeyEqual> FIndex;
};

// --- TObjectDictionary<K,V> ----------------------------------------------------------------------
enum class TDictionaryOwnership : Byte { doOwnsKeys, doOwnsValues };
using enum TDictionaryOwnership;
using TDictionaryOwnerships = TSet<TDictionaryOwnership, 2>;

/// A dictionary that frees (through Free) the keys and/or values it owns when they go out: on
/// Remove, Clear, when a value is replaced by another, and at its destruction. ExtractPair hands
/// a pair over without freeing. Owning keys or values that aren't object pointers raises
/// EInvalidCast "Invalid class typecast" at construction.
template <class K, class V, class Hash = std::hash<K>, class KeyEqual = std::equal_to<K>>
class TObjectDictionary : public TDictionary<K, V, Hash, KeyEqual> {
public:
  explicit TObjectDictionary(TDictionaryOwnerships AOwnerships) : FOwnerships(AOwnerships) {
    if ((FOwnerships.Contains(doOwnsKeys) && !std::is_convertible_v<K, TObject*>) ||
        (FOwnerships.Contains(doOwnsValues) && !std::is_convertible_v<V, TObject*>))
      throw EInvalidCast(UnicodeString(SInvalidCast));
  }
  ~TObjectDictionary() override { this->Clear(); }

  TDictionaryOwnerships GetOwnerships() const noexcept { return FOwnerships; }

protected:
  void KeyNotify(const K& AKey, TCollectionNotification AAction) override {
    if constexpr (std::is_convertible_v<K, TObject*>)
      if (AAction == cnRemoved && FOwnerships.Contains(doOwnsKeys))
        Free(AKey);
  }
  void ValueNotify(const V& AValue, TCollectionNotification AAction) override {
    if constexpr (std::is_convertible_v<V, TObject*>)
      if (AAction == cnRemoved && FOwnerships.Contains(doOwnsValues))
        Free(AValue);
  }

private:
  TDictionaryOwnerships FOwnerships;
};

} // namespace lorvane
