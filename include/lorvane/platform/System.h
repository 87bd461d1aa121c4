/// The runtime's basic vocabulary: scalar and text types, the root class with its metaclass,
/// construction and destruction hooks, interfaces with counted references, and sets over enums.
#pragma once

#include <atomic>
#include <bitset>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace lorvane {

// --- scalar types
// ---------------------------------------------------------------------------------
using Byte = std::uint8_t;
using ShortInt = std::int8_t;
using Word = std::uint16_t;
using SmallInt = std::int16_t;
using Cardinal = std::uint32_t;
using LongWord = std::uint32_t;
using Integer = std::int32_t;
using Int64 = std::int64_t;
using UInt64 = std::uint64_t;
using NativeInt = std::intptr_t;
using NativeUInt = std::uintptr_t;
using Single = float;
using Double = double;
/// 64-bit, as on the platform the library was first written for.
using Extended = double;
using Pointer = void*;
using HRESULT = std::int32_t;

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);

// --- text
// -----------------------------------------------------------------------------------------
using WideChar = char16_t;
using AnsiChar = char;
/// UTF-16 text; an empty and a missing string are the same thing.
using UnicodeString = std::u16string;
using WideString = UnicodeString;
using TFileName = UnicodeString;
/// Bytes; the code page travels beside the string.
using RawByteString = std::string;
using AnsiString = std::string;
using UTF8String = std::string;

// --- classes and metaclasses
// ----------------------------------------------------------------------
class TObject;
class TComponent;

/// One record per class: its name, its parent and its virtual constructors: without arguments,
/// and for a TComponent with its owner; each nil where the class can't be made that way.
struct TMetaClass {
  const char* Name;
  const TMetaClass* Parent;
  TObject* (*CreateDefault)();
  TObject* (*CreateWithOwner)(TComponent* AOwner);
  /// Kept for the type registry: the handle it gives this class, once given, so that looking
  /// a class up on every object written or read takes no lock.
  mutable std::atomic<const void*> RegistryHandle{nullptr};
};
using TClass = const TMetaClass*;

template <class T, class... Args> T* New(Args&&... AArgs);

namespace detail {
template <class T> TObject* CreateDefaultInstance() { return New<T>(); }
template <class T> constexpr TObject* (*DefaultFactory())() {
  if constexpr (!std::is_abstract_v<T> && requires { new T(); })
    return &CreateDefaultInstance<T>;
  else
    return nullptr;
}
template <class T> TObject* CreateOwnedInstance(TComponent* AOwner) { return New<T>(AOwner); }
// Only components take an owner: a constructor of another class that happens to accept a
// pointer (or a bool) is no owner constructor.
template <class T> constexpr TObject* (*OwnerFactory())(TComponent*) {
  if constexpr (std::is_base_of_v<TComponent, T> && !std::is_abstract_v<T> &&
                requires(TComponent * AOwner) { new T(AOwner); })
    return &CreateOwnedInstance<T>;
  else
    return nullptr;
}
} // namespace detail

/// Declares the metaclass of a class. Put it first in the class body; it leaves access public.
#define LX_CLASS(Self, Base)                                                                       \
public:                                                                                            \
  using inherited = Base;                                                                          \
  static ::lorvane::TClass StaticClass() noexcept {                                                \
    static const ::lorvane::TMetaClass Meta{#Self, Base::StaticClass(),                            \
                                            ::lorvane::detail::DefaultFactory<Self>(),             \
                                            ::lorvane::detail::OwnerFactory<Self>()};              \
    return &Meta;                                                                                  \
  }                                                                                                \
  ::lorvane::TClass ClassType() const noexcept override { return StaticClass(); }

/// Root of all classes. Objects are made with New<T>() (which runs AfterConstruction once the
/// whole constructor chain is done) and destroyed with Free() (which runs BeforeDestruction
/// before the destructor chain); the protected destructor keeps a bare delete from compiling.
class TObject {
public:
  TObject() noexcept;
  TObject(const TObject&) = delete;
  TObject& operator=(const TObject&) = delete;

  static TClass StaticClass() noexcept;
  virtual TClass ClassType() const noexcept { return StaticClass(); }
  UnicodeString ClassName() const;
  TClass ClassParent() const noexcept { return ClassType()->Parent; }
  bool InheritsFrom(TClass AClass) const noexcept;
  static bool ClassInheritsFrom(TClass AClass, TClass AAncestor) noexcept;

  virtual void AfterConstruction() {}
  virtual void BeforeDestruction() {}
  /// Runs BeforeDestruction, then destroys the object.
  void Free();

  /// Objects alive in this process; tests use it to prove that nothing leaks or dies early.
  /// Only builds of the library configured to count (the LORVANE_COUNT_INSTANCES option, off by
  /// default) keep the count, since it costs an atomic update per object made and freed; other
  /// builds answer -1.
  static Int64 LiveInstances() noexcept;

protected:
  virtual ~TObject();
};

/// The name of a class as the metaclass records it.
UnicodeString ClassNameOf(TClass AClass);

template <class T, class... Args> T* New(Args&&... AArgs) {
  T* Instance = new T(std::forward<Args>(AArgs)...);
  try {
    Instance->AfterConstruction();
  } catch (...) {
    Instance->Free();
    throw;
  }
  return Instance;
}

/// Nil-safe destruction.
inline void Free(TObject* AObject) {
  if (AObject)
    AObject->Free();
}
template <class T> void FreeAndNil(T*& AObject) {
  T* Object = AObject;
  AObject = nullptr;
  Free(Object);
}

/// Owns an object for a scope and frees it with Free().
struct TFreeDeleter {
  void operator()(TObject* AObject) const { Free(AObject); }
};
template <class T> using TOwned = std::unique_ptr<T, TFreeDeleter>;

// --- interfaces
// -----------------------------------------------------------------------------------
struct TGUID {
  std::uint32_t D1;
  std::uint16_t D2;
  std::uint16_t D3;
  std::uint8_t D4[8];
  friend constexpr bool operator==(const TGUID& A, const TGUID& B) noexcept {
    if (A.D1 != B.D1 || A.D2 != B.D2 || A.D3 != B.D3)
      return false;
    for (int I = 0; I < 8; ++I)
      if (A.D4[I] != B.D4[I])
        return false;
    return true;
  }
};

/// The root interface. Each interface derives from its parent and declares a fixed IID.
class IInterface {
public:
  static constexpr TGUID IID{0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  virtual HRESULT QueryInterface(const TGUID& AIID, void** AObj) = 0;
  virtual Integer _AddRef() = 0;
  virtual Integer _Release() = 0;

protected:
  ~IInterface() = default;
};

/// A counted interface reference: copying adds a reference, destruction releases it.
template <class I> class IPtr {
public:
  IPtr() noexcept = default;
  IPtr(std::nullptr_t) noexcept {}
  /// Takes a new reference on AIntf.
  IPtr(I* AIntf) noexcept : FIntf(AIntf) {
    if (FIntf)
      FIntf->_AddRef();
  }
  IPtr(const IPtr& AOther) noexcept : IPtr(AOther.FIntf) {}
  IPtr(IPtr&& AOther) noexcept : FIntf(std::exchange(AOther.FIntf, nullptr)) {}
  template <class J, class = std::enable_if_t<std::is_convertible_v<J*, I*>>>
  IPtr(const IPtr<J>& AOther) noexcept : IPtr(static_cast<I*>(AOther.Get())) {}
  ~IPtr() { Reset(); }

  IPtr& operator=(const IPtr& AOther) noexcept {
    IPtr(AOther).Swap(*this);
    return *this;
  }
  IPtr& operator=(IPtr&& AOther) noexcept {
    IPtr(std::move(AOther)).Swap(*this);
    return *this;
  }
  IPtr& operator=(std::nullptr_t) noexcept {
    Reset();
    return *this;
  }

  /// Queries AIntf for I; nil when it doesn't support it.
  template <class J> static IPtr From(J* AIntf) {
    IPtr Result;
    if (AIntf)
      AIntf->QueryInterface(I::IID, reinterpret_cast<void**>(&Result.FIntf));
    return Result;
  }
  template <class J> static IPtr From(const IPtr<J>& AIntf) { return From(AIntf.Get()); }

  /// Adopts a reference that the caller already holds (as QueryInterface hands one out).
  static IPtr Attach(I* AIntf) noexcept {
    IPtr Result;
    Result.FIntf = AIntf;
    return Result;
  }

  void Reset() noexcept {
    if (I* Old = std::exchange(FIntf, nullptr))
      Old->_Release();
  }
  /// Gives up the reference without releasing it; the caller now holds it.
  I* Detach() noexcept { return std::exchange(FIntf, nullptr); }
  void Swap(IPtr& AOther) noexcept { std::swap(FIntf, AOther.FIntf); }
  I* Get() const noexcept { return FIntf; }
  I* operator->() const noexcept { return FIntf; }
  I& operator*() const noexcept { return *FIntf; }
  explicit operator bool() const noexcept { return FIntf != nullptr; }
  friend bool operator==(const IPtr& A, const IPtr& B) noexcept { return A.FIntf == B.FIntf; }
  friend bool operator==(const IPtr& A, std::nullptr_t) noexcept { return A.FIntf == nullptr; }

private:
  I* FIntf = nullptr;
};

/// Whether AIntf supports the interface AIID; *AObj receives the counted reference (nil if not).
/// There is no form without AObj: an untyped answer can't be released safely, since an
/// interface's IInterface sits at an offset that only its type knows. Use Supports<I>(AIntf).
inline bool Supports(IInterface* AIntf, const TGUID& AIID, void** AObj) {
  *AObj = nullptr;
  if (!AIntf)
    return false;
  if (AIntf->QueryInterface(AIID, AObj) != S_OK || !*AObj) {
    *AObj = nullptr;
    return false;
  }
  return true;
}
/// Whether AIntf supports I; the answer's reference is released through I.
template <class I> bool Supports(IInterface* AIntf) {
  return static_cast<bool>(IPtr<I>::From(AIntf));
}
template <class I, class J> bool Supports(J* AIntf, IPtr<I>& AResult) {
  AResult = IPtr<I>::From(AIntf);
  return static_cast<bool>(AResult);
}
template <class I, class J> bool Supports(const IPtr<J>& AIntf, IPtr<I>& AResult) {
  return Supports(AIntf.Get(), AResult);
}

/// The answer of a QueryInterface that knows no more interfaces: *AObj nil and E_NOINTERFACE.
inline HRESULT RefuseInterface(void** AObj) noexcept {
  *AObj = nullptr;
  return E_NOINTERFACE;
}

namespace detail {
// The first of Is whose IID is AIID receives ASelf in *AObj. A static_cast from the concrete
// class: interfaces derive virtually from IInterface, so each one sits at its own offset.
template <class... Is, class TSelf>
bool PlaceInterface(TSelf* ASelf, const TGUID& AIID, void** AObj) noexcept {
  static_assert(sizeof...(Is) > 0, "name at least one interface");
  static_assert((std::is_base_of_v<IInterface, Is> && ...), "only interfaces can be answered");
  return ((AIID == Is::IID && (*AObj = static_cast<Is*>(ASelf), true)) || ...);
}
} // namespace detail

/// The body of a QueryInterface that answers the interfaces Is of ASelf (its `this`): for the IID
/// of one of them *AObj receives ASelf as that interface, one reference is taken with _AddRef and
/// the answer is S_OK; any other IID is passed to AOthers, which answers as the inherited
/// QueryInterface does (a refusal leaves *AObj nil there, RefuseInterface at the root).
///
///     return AnswerInterfaces<ILxDOMText>(this, AIID, AObj,
///                                         [&] { return inherited::QueryInterface(AIID, AObj); });
template <class... Is, class TSelf, class TOthers>
HRESULT AnswerInterfaces(TSelf* ASelf, const TGUID& AIID, void** AObj, TOthers&& AOthers) {
  if (!detail::PlaceInterface<Is...>(ASelf, AIID, AObj))
    return std::forward<TOthers>(AOthers)();
  ASelf->_AddRef();
  return S_OK;
}

/// AnswerInterfaces for a class that hands out uncounted references (a TComponent, whose owner
/// decides its lifetime): no reference is taken.
template <class... Is, class TSelf, class TOthers>
HRESULT AnswerUncountedInterfaces(TSelf* ASelf, const TGUID& AIID, void** AObj, TOthers&& AOthers) {
  if (!detail::PlaceInterface<Is...>(ASelf, AIID, AObj))
    return std::forward<TOthers>(AOthers)();
  return S_OK;
}

// --- sets
// -----------------------------------------------------------------------------------------
/// A set over the ordinals of an enumeration (at most 256 of them).
template <class E, std::size_t N = 256> class TSet {
public:
  constexpr TSet() noexcept = default;
  TSet(std::initializer_list<E> AItems) noexcept {
    for (E Item : AItems)
      Include(Item);
  }
  bool Contains(E AItem) const noexcept { return FBits.test(Ordinal(AItem)); }
  TSet& Include(E AItem) noexcept {
    FBits.set(Ordinal(AItem));
    return *this;
  }
  TSet& Exclude(E AItem) noexcept {
    FBits.reset(Ordinal(AItem));
    return *this;
  }
  bool Empty() const noexcept { return FBits.none(); }
  std::size_t Count() const noexcept { return FBits.count(); }
  friend TSet operator+(TSet A, const TSet& B) noexcept {
    A.FBits |= B.FBits;
    return A;
  }
  friend TSet operator-(TSet A, const TSet& B) noexcept {
    A.FBits &= ~B.FBits;
    return A;
  }
  friend TSet operator*(TSet A, const TSet& B) noexcept {
    A.FBits &= B.FBits;
    return A;
  }
  friend bool operator==(const TSet& A, const TSet& B) noexcept { return A.FBits == B.FBits; }

private:
  static std::size_t Ordinal(E AItem) noexcept { return static_cast<std::size_t>(AItem); }
  std::bitset<N> FBits;
};

} // namespace lorvane
