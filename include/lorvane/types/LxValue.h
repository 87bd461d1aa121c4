/// TValue: one value of any described type together with its type handle, or empty. It owns a
/// copy of the value (records and arrays too), which GetReferenceToRawData lets a caller change
/// in place.
///
///   TValue::From(42), TValue::From(UnicodeString(u"x")), TValue::From(Customer)   make one
///   AsType<T>(), AsInteger(), AsString(), AsObject() ...   read it as what it holds (strict)
///   ToInteger(ARaise, ADefault), ToWideString(...) ...     convert it, whatever it holds
///   GetArrayLength, GetArrayElement, SetArrayElement        arrays in place
///
/// Strict reads (the As... operations) accept what the value holds and the same kind of value
/// in another width (AsInteger of a Byte, AsOrdinal of an enumeration); anything else raises
/// EInvalidCast "Invalid class typecast". The ToX helpers convert across kinds through the
/// Variant rules (Variants.h): a text "12" is the number 12, true is -1, an enumeration is its
/// ordinal as a number and its name as text, a set its names in brackets ("[a,b]"); a value that
/// doesn't convert raises EConvertError "Cannot convert a value of type %s to %s" when ARaise is
/// true and gives ADefault otherwise.
#pragma once

#include "lorvane/platform/Variants.h"
#include "lorvane/types/LxTypeHandle.h"

#include <cstring>
#include <string_view>
#include <type_traits>
#include <vector>

namespace lorvane {

class TValue {
public:
  TValue() noexcept = default;
  TValue(const TValue& AOther);
  TValue(TValue&& AOther) noexcept;
  TValue& operator=(const TValue& AOther);
  TValue& operator=(TValue&& AOther) noexcept;
  ~TValue() { Clear(); }

  static TValue Empty() noexcept { return TValue(); }
  /// A copy of the value at AData, which is of the type AHandle. A nil handle gives the empty
  /// value; a nil AData gives the type's zero value.
  static TValue Make(const void* AData, TLxTypeHandle AHandle);
  /// The value of the type of AValue. A class pointer is held as the object (type: its class as
  /// declared), a text literal as UnicodeString.
  template <class T> static TValue From(T&& AValue);
  /// A nil text pointer is the empty text, as it is to a Variant.
  static TValue From(const char16_t* AValue) {
    return From(AValue ? UnicodeString(AValue) : UnicodeString());
  }
  /// The Variant's content as a value of its own type: whole numbers of their width, floats,
  /// TDateTime, Boolean, UnicodeString (byte strings too), an interface as IPtr<IInterface>.
  /// Empty and Null give the empty value; arrays stay a Variant.
  static TValue FromVariant(const Variant& AValue);
  /// A whole number, character, enumeration, Boolean or set type (a set takes its bit mask);
  /// other types raise EInvalidCast "Invalid class typecast".
  static TValue FromOrdinal(TLxTypeHandle AHandle, Int64 AOrdinal);

  /// The handle of the value's type; nil when empty.
  TLxTypeHandle GetTypeInfo() const noexcept { return FHandle; }
  /// The language kind of the value's type; tkUnknown when empty.
  TTypeKind GetTypeKind() const noexcept;
  bool GetIsEmpty() const noexcept { return FHandle == nullptr; }

  /// A class value's object; nil when empty. Other kinds raise EInvalidCast.
  TObject* AsObject() const;
  /// An interface value, or a class value's object queried for IInterface; nil when empty.
  IPtr<IInterface> AsInterface() const;
  /// A class reference's class; nil when empty.
  TClass AsClass() const;
  /// Simple values as a Variant of their own code (an enumeration as its ordinal, a set as its
  /// mask, a Variant as itself, an interface as varUnknown); Empty when empty. Records, arrays
  /// and classes raise EInvalidCast.
  Variant AsVariant() const;
  /// The text kinds; other kinds raise EInvalidCast.
  UnicodeString AsString() const;
  /// Whole numbers, characters, enumerations and Boolean that fit 32 bits.
  Integer AsInteger() const;
  /// Boolean values only.
  bool AsBoolean() const;
  /// Whole numbers, characters, enumerations, Boolean, and sets (their mask).
  Int64 AsOrdinal() const;
  /// The value as T: T itself, or what the As... operations allow for T's kind; a class pointer
  /// type accepts an object of that class or a descendant (and nil).
  template <class T> T AsType() const;
  /// Whether AsType<T> would succeed.
  template <class T> bool IsType() const;

  /// The address of the stored value (for a class value: of the object pointer); nil when
  /// empty. A record or array changed through it changes this value.
  void* GetReferenceToRawData() noexcept { return FHandle ? Data() : nullptr; }
  const void* GetReferenceToRawData() const noexcept { return FHandle ? Data() : nullptr; }

  /// Arrays only (others raise EInvalidCast); an index outside the array raises
  /// EArgumentOutOfRangeException "Array index out of range (%d)".
  Integer GetArrayLength() const;
  TValue GetArrayElement(Integer AIndex) const;
  /// AValue is converted to the element type as ToType does.
  void SetArrayElement(Integer AIndex, const TValue& AValue);
  /// Dynamic arrays take any length; a fixed array raises EInvalidCast for another length.
  void SetArrayLength(Integer ALength);

  /// The value as text: "(empty)" when empty; an enumeration's name, a set's names between
  /// brackets separated by a comma ("[]" when empty); numbers, Boolean and dates as the Variant
  /// rules write them; "(record)", "(array)", "(dynamic array)"; an object "(TClassName @ hex)".
  UnicodeString ToString() const;

  // Conversions, whatever the value holds (see the header comment).
  Byte ToByte(bool ARaise = true, Byte ADefault = 0) const;
  ShortInt ToShortInt(bool ARaise = true, ShortInt ADefault = 0) const;
  Word ToWord(bool ARaise = true, Word ADefault = 0) const;
  SmallInt ToSmallInt(bool ARaise = true, SmallInt ADefault = 0) const;
  LongWord ToLongWord(bool ARaise = true, LongWord ADefault = 0) const;
  Integer ToInteger(bool ARaise = true, Integer ADefault = 0) const;
  Int64 ToInt64(bool ARaise = true, Int64 ADefault = 0) const;
  UInt64 ToUInt64(bool ARaise = true, UInt64 ADefault = 0) const;
  Single ToSingle(bool ARaise = true, Single ADefault = 0) const;
  Double ToDouble(bool ARaise = true, Double ADefault = 0) const;
  Extended ToExtended(bool ARaise = true, Extended ADefault = 0) const;
  bool ToBoolean(bool ARaise = true, bool ADefault = false) const;
  UnicodeString ToWideString(bool ARaise = true, std::u16string_view ADefault = {}) const;
  /// The value converted to the type AHandle: true with AResult, or false (AResult untouched).
  /// AResult may be this value itself. Whole numbers must fit the target; an enumeration takes
  /// an ordinal within its names or a name (letter case ignored); a set takes a mask of
  /// ordinals within its element's names or its text form; a class takes an object of it or a
  /// descendant; an interface a value that supports it; a Variant and a TValue take any simple
  /// value; records and arrays only a value of their own type.
  bool ToType(TLxTypeHandle AHandle, TValue& AResult) const;
  /// Empty; a nil object, pointer or interface; a Variant that is Empty or Null.
  bool IsNull() const noexcept;
  /// The library kind of the value's type (ltkVariant for a Variant); ltkUnknown when empty.
  TLxTypeKind TypeKind() const noexcept;
  /// The main kind of what the value holds: of a Variant its content's.
  TLxMainTypeKind MainTypeKind() const noexcept;
  /// The TLxTypeInfo of the value's type; nil when empty.
  const TLxTypeInfo* LxTypeInfo() const;

private:
  // Values whose moves can't throw and that fit here live inline; the rest on the heap.
  static constexpr std::size_t InlineSize = 32;
  static bool FitsInline(const TLxValueOps* AOps) noexcept {
    return AOps->Size <= InlineSize && AOps->Align <= alignof(std::max_align_t) &&
           AOps->MoveConstruct != nullptr;
  }
  void* Data() noexcept { return FOnHeap ? FHeap : static_cast<void*>(FInline); }
  const void* Data() const noexcept { return FOnHeap ? FHeap : static_cast<const void*>(FInline); }
  /// Storage for a value of AHandle's type, not yet constructed.
  void* Allocate(TLxTypeHandle AHandle);
  /// Gives back what Allocate took, once no value lives in it.
  void FreeStorage(const TLxValueOps* AOps) noexcept;
  void Clear() noexcept;
  const TLxTypeDescription& Description() const;
  [[noreturn]] static void InvalidCast();
  /// The strict conversion of the As... operations: the same kind of value in another width.
  bool CastTo(TLxTypeHandle AHandle, TValue& AResult) const;
  /// ToType into an empty AResult that isn't this value.
  bool ConvertTo(TLxTypeHandle AHandle, TValue& AResult) const;
  Variant ConversionSource() const;
  template <class T> T ConvertedTo(TVarType AVarType, bool ARaise, T ADefault) const;
  template <class T> static TValue MakeTyped(T&& AValue);

  TLxTypeHandle FHandle = nullptr;
  bool FOnHeap = false;
  union {
    alignas(std::max_align_t) unsigned char FInline[InlineSize];
    void* FHeap;
  };
};

template <class T> TValue TValue::MakeTyped(T&& AValue) {
  using V = std::remove_cvref_t<T>;
  TValue Result;
  void* Storage = Result.Allocate(TypeHandle<V>());
  try {
    ::new (Storage) V(std::forward<T>(AValue));
  } catch (...) {
    Result.FreeStorage(TypeHandle<V>()->Ops);
    throw;
  }
  Result.FHandle = TypeHandle<V>();
  return Result;
}

template <class T> TValue TValue::From(T&& AValue) {
  using V = std::remove_cvref_t<T>;
  if constexpr (std::is_pointer_v<V> && detail::IsObjectClass<std::remove_pointer_t<V>>) {
    // Objects are held as their TObject address under the handle of their declared class.
    TObject* Object = AValue;
    TValue Result;
    ::new (Result.Allocate(TypeHandle<V>())) TObject*(Object);
    Result.FHandle = TypeHandle<V>();
    return Result;
  } else {
    return MakeTyped(std::forward<T>(AValue));
  }
}

template <class T> T TValue::AsType() const {
  using V = std::remove_cv_t<T>;
  if constexpr (std::is_pointer_v<V> && detail::IsObjectClass<std::remove_pointer_t<V>>) {
    TObject* Object = AsObject();
    if (Object && !Object->InheritsFrom(std::remove_pointer_t<V>::StaticClass()))
      InvalidCast();
    return static_cast<V>(Object);
  } else {
    if (FHandle == TypeHandle<V>())
      return *static_cast<const V*>(Data());
    TValue Converted;
    if (!CastTo(TypeHandle<V>(), Converted))
      InvalidCast();
    return *static_cast<const V*>(Converted.Data());
  }
}

template <class T> bool TValue::IsType() const {
  using V = std::remove_cv_t<T>;
  if constexpr (std::is_pointer_v<V> && detail::IsObjectClass<std::remove_pointer_t<V>>) {
    if (TypeKind() != ltkClass)
      return GetIsEmpty();
    const TObject* Object = *static_cast<TObject* const*>(Data());
    return !Object || Object->InheritsFrom(std::remove_pointer_t<V>::StaticClass());
  } else {
    TValue Converted;
    return FHandle == TypeHandle<V>() || CastTo(TypeHandle<V>(), Converted);
  }
}

} // namespace lorvane
