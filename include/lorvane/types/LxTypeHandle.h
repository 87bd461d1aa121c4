/// TypeHandle<T>(): the identity of a C++ type, and what the type says of itself before anybody
/// describes it. Built-in types describe themselves completely:
///   whole numbers (Byte ... UInt64), Single, Double, the text kinds (UnicodeString, WideChar,
///   AnsiChar, std::string as UTF-8), bool, TDateTime/TDate/TTime, Variant, TValue,
///   std::vector<T> (dynamic array), std::array<T, N> (array), TSet<E> (set), IPtr<I>
///   (interface), TClass (class reference), other raw pointers (pointer), and a TObject
///   descendant held by pointer (its class, through the metaclass).
/// Enumerations, records and interfaces get their kind and a name from the compiler
/// ("Shop::TColor" gives "TColor" and "Shop.TColor"); their value names, members and annotations
/// come from LxDescribe.h.
#pragma once

#include "lorvane/platform/DateUtils.h"
#include "lorvane/platform/Variants.h"
#include "lorvane/types/LxTypeInfo.h"

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace lorvane {

class TValue;

/// Marker types: a date, time or date-time that the serializers write in UTC with a "Z".
struct TLxUTCDate : TDate {
  using TDate::TDate;
};
struct TLxUTCTime : TTime {
  using TTime::TTime;
};
struct TLxUTCDateTime : TDateTime {
  using TDateTime::TDateTime;
};

/// The handle of the class AClass, made on first use (thread-safe).
TLxTypeHandle LxClassTypeHandle(TClass AClass);

namespace detail {

template <class T>
concept IsObjectClass = std::is_class_v<T> && std::is_base_of_v<TObject, T>;

template <class T> struct IsStdVector : std::false_type {};
template <class E, class A> struct IsStdVector<std::vector<E, A>> : std::true_type {};
template <class T> struct IsStdArray : std::false_type {};
template <class E, std::size_t N> struct IsStdArray<std::array<E, N>> : std::true_type {};
template <class T> struct IsLxSet : std::false_type {};
template <class E, std::size_t N> struct IsLxSet<TSet<E, N>> : std::true_type {
  using Element = E;
  /// The ordinals that both the set and a mask hold: asking a narrower set beyond its size
  /// would throw out of its noexcept operations.
  static constexpr unsigned MaskOrdinals = N < 64 ? static_cast<unsigned>(N) : 64;
};
template <class T> struct IsIPtr : std::false_type {};
template <class T> struct IsFunction : std::false_type {};
template <class R, class... A> struct IsFunction<std::function<R(A...)>> : std::true_type {};
template <class I> struct IsIPtr<IPtr<I>> : std::true_type { using Interface = I; };

/// The type's name as the compiler spells it, "Shop::TColor".
template <class T> constexpr std::string_view CompilerTypeName() noexcept {
  constexpr std::string_view Function = __PRETTY_FUNCTION__;
  constexpr std::string_view Marker = "T = ";
  constexpr std::size_t Start = Function.find(Marker) + Marker.size();
  constexpr std::size_t End = Function.find_first_of(";]", Start);
  return Function.substr(Start, End - Start);
}

/// Names from the compiler's spelling: the last part short, the whole with dots qualified.
void SetCompilerNames(TLxTypeDescription& ADescription, std::string_view ASpelling);
/// Names, kinds and XML Schema name of a built-in simple type of kind AKind.
void DescribeBuiltIn(TLxTypeDescription& ADescription, TLxTypeKind AKind);
/// A date marker type: the kind of its date type, its own name.
void DescribeDateMarker(TLxTypeDescription& ADescription, TLxTypeKind AKind,
                        std::u16string_view AName);
/// "TArray<E>" / "System.TArray<E>" and "array[0..N-1] of E" forms, from the element's names.
void DescribeArray(TLxTypeDescription& ADescription, TLxTypeHandle AElement, bool ADynamic,
                   Integer AFixedLength);
void DescribeSet(TLxTypeDescription& ADescription, TLxTypeHandle AElement);
void DescribeTValue(TLxTypeDescription& ADescription);
void DescribeVariant(TLxTypeDescription& ADescription);

template <class T> constexpr TLxTypeKind IntegerKind() noexcept {
  if constexpr (std::is_signed_v<T>)
    return sizeof(T) == 1   ? ltkShortInt
           : sizeof(T) == 2 ? ltkSmallInt
           : sizeof(T) == 4 ? ltkInteger
                            : ltkInt64;
  else
    return sizeof(T) == 1   ? ltkByte
           : sizeof(T) == 2 ? ltkWord
           : sizeof(T) == 4 ? ltkLongWord
                            : ltkUInt64;
}

template <class T> void SetOrdinalAccess(TLxValueAccess& AAccess) {
  AAccess.GetOrdinal = [](const void* AData) {
    return static_cast<Int64>(*static_cast<const T*>(AData));
  };
  AAccess.SetOrdinal = [](void* AData, Int64 AValue) {
    *static_cast<T*>(AData) = static_cast<T>(AValue);
  };
}

template <class T> void DescribeShape(TLxTypeDescription& ADescription);

} // namespace detail

/// One identity per C++ type, shared by every translation unit.
template <class T> struct TLxTypeIdentityOf {
  static void Describe(TLxTypeDescription& ADescription) { detail::DescribeShape<T>(ADescription); }
  static inline constinit TLxTypeIdentity Identity{&LxValueOpsOf<T>, &Describe, nullptr};
};

/// The handle of T. A class is held by pointer: TypeHandle<TCustomer*>() is the class
/// TCustomer, and shares the identity that the registry gives the class's metaclass.
template <class T> TLxTypeHandle TypeHandle() {
  using V = std::remove_cv_t<T>;
  if constexpr (std::is_pointer_v<V> && detail::IsObjectClass<std::remove_pointer_t<V>>) {
    static const TLxTypeHandle Handle =
        LxClassTypeHandle(std::remove_cv_t<std::remove_pointer_t<V>>::StaticClass());
    return Handle;
  } else {
    static_assert(!detail::IsObjectClass<V>,
                  "objects are held by pointer: use TypeHandle<T*>() for a class");
    static_assert(!std::is_reference_v<V> && !std::is_void_v<V>, "no type of values");
    return &TLxTypeIdentityOf<V>::Identity;
  }
}

namespace detail {

template <class T> void DescribeShape(TLxTypeDescription& ADescription) {
  TLxValueAccess& Access = ADescription.MutableAccess();
  if constexpr (std::is_same_v<T, bool>) {
    DescribeBuiltIn(ADescription, ltkBoolean);
    SetOrdinalAccess<T>(Access);
  } else if constexpr (std::is_same_v<T, WideChar> || std::is_same_v<T, AnsiChar>) {
    DescribeBuiltIn(ADescription, std::is_same_v<T, WideChar> ? ltkText0 : ltkText1);
    SetOrdinalAccess<std::make_unsigned_t<T>>(Access);
    Access.GetText = [](const void* AData) {
      return UnicodeString(1, static_cast<WideChar>(static_cast<std::make_unsigned_t<T>>(
                                  *static_cast<const T*>(AData))));
    };
    Access.SetText = [](void* AData, std::u16string_view AValue) {
      *static_cast<T*>(AData) = AValue.empty() ? T() : static_cast<T>(AValue.front());
    };
  } else if constexpr (std::is_integral_v<T>) {
    static_assert(!std::is_same_v<T, wchar_t> && !std::is_same_v<T, char8_t> &&
                      !std::is_same_v<T, char32_t>,
                  "this character type has no built-in description");
    DescribeBuiltIn(ADescription, IntegerKind<T>());
    SetOrdinalAccess<T>(Access);
  } else if constexpr (std::is_floating_point_v<T>) {
    static_assert(sizeof(T) <= sizeof(double), "long double has no built-in description");
    DescribeBuiltIn(ADescription, std::is_same_v<T, float> ? ltkSingle : ltkDouble);
    Access.GetFloat = [](const void* AData) { return double(*static_cast<const T*>(AData)); };
    Access.SetFloat = [](void* AData, double AValue) {
      *static_cast<T*>(AData) = static_cast<T>(AValue);
    };
  } else if constexpr (std::is_same_v<T, TLxUTCDate> || std::is_same_v<T, TLxUTCTime> ||
                       std::is_same_v<T, TLxUTCDateTime>) {
    DescribeDateMarker(ADescription,
                       std::is_same_v<T, TLxUTCDate>   ? ltkDate
                       : std::is_same_v<T, TLxUTCTime> ? ltkTime
                                                       : ltkDateTime,
                       std::is_same_v<T, TLxUTCDate>   ? u"TLxUTCDate"
                       : std::is_same_v<T, TLxUTCTime> ? u"TLxUTCTime"
                                                       : u"TLxUTCDateTime");
    Access.GetFloat = [](const void* AData) { return static_cast<const T*>(AData)->Value; };
    Access.SetFloat = [](void* AData, double AValue) { static_cast<T*>(AData)->Value = AValue; };
  } else if constexpr (std::is_same_v<T, TDateTime> || std::is_same_v<T, TDate> ||
                       std::is_same_v<T, TTime>) {
    DescribeBuiltIn(ADescription, std::is_same_v<T, TDate>   ? ltkDate
                                  : std::is_same_v<T, TTime> ? ltkTime
                                                             : ltkDateTime);
    Access.GetFloat = [](const void* AData) { return static_cast<const T*>(AData)->Value; };
    Access.SetFloat = [](void* AData, double AValue) { static_cast<T*>(AData)->Value = AValue; };
  } else if constexpr (std::is_same_v<T, UnicodeString>) {
    DescribeBuiltIn(ADescription, ltkText3);
    Access.GetText = [](const void* AData) { return *static_cast<const UnicodeString*>(AData); };
    Access.SetText = [](void* AData, std::u16string_view AValue) {
      static_cast<UnicodeString*>(AData)->assign(AValue);
    };
  } else if constexpr (std::is_same_v<T, std::string>) {
    DescribeBuiltIn(ADescription, ltkText4);
    Access.GetText = [](const void* AData) {
      return UTF8ToString(*static_cast<const std::string*>(AData));
    };
    Access.SetText = [](void* AData, std::u16string_view AValue) {
      *static_cast<std::string*>(AData) = StringToUTF8(AValue);
    };
  } else if constexpr (std::is_same_v<T, Variant>) {
    DescribeVariant(ADescription);
  } else if constexpr (std::is_same_v<T, TValue>) {
    DescribeTValue(ADescription);
  } else if constexpr (std::is_same_v<T, TClass>) {
    DescribeBuiltIn(ADescription, ltkClassRef);
  } else if constexpr (std::is_enum_v<T>) {
    SetCompilerNames(ADescription, CompilerTypeName<T>());
    ADescription.SetKinds(ltkEnumeration, tkEnumeration, lsdEnumeration);
    SetOrdinalAccess<T>(Access);
  } else if constexpr (IsLxSet<T>::value) {
    using E = typename IsLxSet<T>::Element;
    constexpr unsigned Ordinals = IsLxSet<T>::MaskOrdinals;
    DescribeSet(ADescription, TypeHandle<E>());
    Access.GetOrdinal = [](const void* AData) {
      const T& Set = *static_cast<const T*>(AData);
      UInt64 Mask = 0;
      for (unsigned Ordinal = 0; Ordinal < Ordinals; ++Ordinal)
        if (Set.Contains(static_cast<E>(Ordinal)))
          Mask |= UInt64(1) << Ordinal;
      return static_cast<Int64>(Mask);
    };
    Access.SetOrdinal = [](void* AData, Int64 AValue) {
      T Set;
      for (unsigned Ordinal = 0; Ordinal < Ordinals; ++Ordinal)
        if ((static_cast<UInt64>(AValue) >> Ordinal) & 1)
          Set.Include(static_cast<E>(Ordinal));
      *static_cast<T*>(AData) = Set;
    };
  } else if constexpr (IsStdVector<T>::value) {
    using E = typename T::value_type;
    static_assert(!std::is_same_v<E, bool>, "std::vector<bool> holds no elements to address");
    DescribeArray(ADescription, TypeHandle<E>(), /*ADynamic=*/true, 0);
    Access.GetLength = [](const void* AData) {
      return static_cast<Integer>(static_cast<const T*>(AData)->size());
    };
    Access.SetLength = [](void* AData, Integer ALength) {
      static_cast<T*>(AData)->resize(static_cast<std::size_t>(ALength));
      return true;
    };
    Access.ElementAddress = [](void* AData, Integer AIndex) -> void* {
      return static_cast<T*>(AData)->data() + AIndex;
    };
  } else if constexpr (IsStdArray<T>::value) {
    using E = typename T::value_type;
    constexpr Integer Length = static_cast<Integer>(std::tuple_size_v<T>);
    DescribeArray(ADescription, TypeHandle<E>(), /*ADynamic=*/false, Length);
    Access.GetLength = [](const void*) { return Length; };
    Access.SetLength = [](void*, Integer ALength) { return ALength == Length; };
    Access.ElementAddress = [](void* AData, Integer AIndex) -> void* {
      return static_cast<T*>(AData)->data() + AIndex;
    };
  } else if constexpr (IsIPtr<T>::value) {
    using I = typename IsIPtr<T>::Interface;
    SetCompilerNames(ADescription, CompilerTypeName<I>());
    ADescription.SetKinds(ltkInterface, tkInterface, lsdObject);
    ADescription.SetInterfaceID(I::IID);
    Access.GetInterface = [](const void* AData) -> IInterface* {
      return static_cast<const T*>(AData)->Get();
    };
    Access.SetInterface = [](void* AData, IInterface* AValue) {
      T Queried = T::From(AValue);
      if (AValue && !Queried)
        return false;
      *static_cast<T*>(AData) = std::move(Queried);
      return true;
    };
  } else if constexpr (IsFunction<T>::value) {
    // An event type: its parameters come from LxDescribeEvent.
    SetCompilerNames(ADescription, CompilerTypeName<T>());
    ADescription.SetKinds(ltkUnknown, tkMethod, lsdNone);
  } else if constexpr (std::is_pointer_v<T>) {
    DescribeBuiltIn(ADescription, ltkPointer);
    Access.GetOrdinal = [](const void* AData) {
      return static_cast<Int64>(reinterpret_cast<std::intptr_t>(*static_cast<const T*>(AData)));
    };
    Access.SetOrdinal = [](void* AData, Int64 AValue) {
      *static_cast<T*>(AData) = reinterpret_cast<T>(static_cast<std::intptr_t>(AValue));
    };
  } else if constexpr (std::is_class_v<T>) {
    SetCompilerNames(ADescription, CompilerTypeName<T>());
    ADescription.SetKinds(ltkRecord, tkRecord, lsdObject);
  } else {
    static_assert(sizeof(T) == 0, "this type has no description");
  }
}

} // namespace detail

} // namespace lorvane
