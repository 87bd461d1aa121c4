/// The runtime's dynamic value: Variant with the platform's 16-bit type codes, its conversions,
/// arithmetic and comparison, the type tests, and one-dimensional arrays with bounds.
///
/// Rules that later code relies on:
/// - Conversions are the member functions AsString, AsInteger, AsInt64, AsUInt64, AsDouble,
///   AsBoolean, AsDateTime and AsInterface, and VarAsType for a Variant of another code. They are
///   strict: Null raises EVariantTypeCastError, "Could not convert variant of type (Null) into
///   type (Double)"; Empty gives 0, false or "". VarToStr is the lenient text: Null gives "".
/// - Text to number goes through StrToFloat (or StrToInt64 where an integer is wanted, '$' hex
///   too) with FormatSettings; a text that isn't a number raises EVariantTypeCastError naming
///   the two types as VarTypeAsText does. True is -1 as a number; a number is true when not 0; a
///   text is a boolean when it is "true"/"false" in any case or a number. As text, a boolean is
///   "True"/"False", a float FloatToStr, a date DateTimeToStr.
/// - A number too big for the target raises EVariantOverflowError, "Overflow while converting
///   variant of type (Double) into type (Integer)". Floats go to integers rounded half to even.
/// - A byte string (varString) holds bytes in the process default code page (1252 unless the
///   application sets another); characters that code page can't hold become '?'.
/// - Arithmetic: Null in, Null out. Empty is 0 (and "" beside a string); Empty with Empty stays
///   Empty. '+' joins two texts; otherwise a text takes part as a Double. Integers stay integers
///   (the small ones and Integer give Integer, widening to Int64 when 32 bits overflow; Int64
///   overflow raises EVariantOverflowError "Variant overflow"); a float or a text makes Double;
///   a Currency with integers stays Currency; a date plus or minus a number is a date, a date
///   minus a date a Double. '/' always divides as floats (1/0 is INF). Arrays and interfaces
///   raise EVariantInvalidOpError "Invalid variant operation".
/// - Comparison: Null equals only Null and is less than everything else. Texts compare by UTF-16
///   unit, case-sensitive. A text beside a number compares as a number, beside a boolean as a
///   boolean, beside a date as a date (a failed conversion raises as above). Booleans compare
///   false < true; a boolean beside a number is -1 or 0. NaN compares vrNotEqual. Arrays raise
///   EVariantInvalidOpError; two interfaces are equal when they are the same pointer.
#pragma once

#include "lorvane/platform/DateUtils.h"
#include "lorvane/platform/SysUtils.h"
#include "lorvane/platform/System.h"

#include <initializer_list>
#include <string_view>
#include <type_traits>
#include <vector>

namespace lorvane {

using TVarType = Word;

constexpr TVarType varEmpty = 0x0000;
constexpr TVarType varNull = 0x0001;
constexpr TVarType varSmallint = 0x0002;
constexpr TVarType varInteger = 0x0003;
constexpr TVarType varSingle = 0x0004;
constexpr TVarType varDouble = 0x0005;
constexpr TVarType varCurrency = 0x0006;
constexpr TVarType varDate = 0x0007;
constexpr TVarType varOleStr = 0x0008;
constexpr TVarType varDispatch = 0x0009;
constexpr TVarType varError = 0x000A;
constexpr TVarType varBoolean = 0x000B;
constexpr TVarType varVariant = 0x000C;
constexpr TVarType varUnknown = 0x000D;
constexpr TVarType varDecimal = 0x000E;
constexpr TVarType varShortInt = 0x0010;
constexpr TVarType varByte = 0x0011;
constexpr TVarType varWord = 0x0012;
constexpr TVarType varLongWord = 0x0013;
constexpr TVarType varInt64 = 0x0014;
constexpr TVarType varUInt64 = 0x0015;
constexpr TVarType varString = 0x0100;
constexpr TVarType varUString = 0x0102;
constexpr TVarType varTypeMask = 0x0FFF;
constexpr TVarType varArray = 0x2000;
constexpr TVarType varByRef = 0x4000;

enum TVariantRelationship { vrEqual, vrLessThan, vrGreaterThan, vrNotEqual };

/// The family of a type code: what a Variant of that code holds, as its conversions, arithmetic
/// and comparison treat it. Code that handles Variants by family derives its own coarser view
/// from this, so that the list of codes is kept in one place.
enum class TVarKind : Byte {
  vkEmpty,    ///< varEmpty
  vkNull,     ///< varNull
  vkSigned,   ///< varShortInt, varSmallint, varInteger, varInt64
  vkUnsigned, ///< varByte, varWord, varLongWord, varUInt64
  vkSingle,   ///< varSingle
  vkDouble,   ///< varDouble
  vkCurrency, ///< varCurrency
  vkDate,     ///< varDate
  vkBoolean,  ///< varBoolean
  vkText,     ///< varOleStr, varUString
  vkBytes,    ///< varString
  /// varUnknown (an interface), and every code without a family of its own: varDispatch,
  /// varError, varVariant, varDecimal, varByRef combinations and codes with no name. No Variant
  /// holds one of the latter (VarAsType refuses them).
  vkUnknown,
  vkArray ///< any code with varArray set, whatever its element code
};

/// The family of the code AVarType.
constexpr TVarKind VarKindOf(TVarType AVarType) noexcept {
  if (AVarType & varArray)
    return TVarKind::vkArray;
  switch (AVarType) {
  case varEmpty:
    return TVarKind::vkEmpty;
  case varNull:
    return TVarKind::vkNull;
  case varSmallint:
  case varInteger:
  case varShortInt:
  case varInt64:
    return TVarKind::vkSigned;
  case varByte:
  case varWord:
  case varLongWord:
  case varUInt64:
    return TVarKind::vkUnsigned;
  case varSingle:
    return TVarKind::vkSingle;
  case varDouble:
    return TVarKind::vkDouble;
  case varCurrency:
    return TVarKind::vkCurrency;
  case varDate:
    return TVarKind::vkDate;
  case varBoolean:
    return TVarKind::vkBoolean;
  case varOleStr:
  case varUString:
    return TVarKind::vkText;
  case varString:
    return TVarKind::vkBytes;
  default:
    return TVarKind::vkUnknown;
  }
}

/// An array type code that no array can have, or a code no Variant can take.
class EVariantBadVarTypeError : public EVariantError {
public:
  using EVariantError::EVariantError;
};
/// Bounds that make no array.
class EVariantArrayCreateError : public EVariantError {
public:
  using EVariantError::EVariantError;
};
/// An array operation on a Variant that holds no array.
class EVariantNotAnArrayError : public EVariantError {
public:
  using EVariantError::EVariantError;
};

namespace detail {
struct TVarText;
struct TVarBytes;
struct TVarArray;
template <class T>
concept VariantInteger =
    std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
    !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char8_t> && !std::is_same_v<T, char16_t> &&
    !std::is_same_v<T, char32_t>;
} // namespace detail

/// A value of dynamic type, 16 bytes. Scalars are stored inline and copy without allocation;
/// text is shared between copies (it is never changed in place); an array is copied with the
/// Variant, as the platform's arrays are; an interface holds a counted reference.
class Variant {
public:
  /// Empty (unassigned).
  Variant() noexcept : FType(varEmpty) { FData.Int = 0; }
  Variant(const Variant& AOther);
  Variant(Variant&& AOther) noexcept : FType(AOther.FType), FData(AOther.FData) {
    AOther.FType = varEmpty;
  }
  Variant& operator=(const Variant& AOther);
  Variant& operator=(Variant&& AOther) noexcept;
  ~Variant() {
    if (OwnsPayload())
      ReleasePayload();
  }

  Variant(bool AValue) noexcept : FType(varBoolean) { FData.Bool = AValue; }
  /// Each integer type takes its own code: int8 varShortInt, uint8 varByte, int16 varSmallint,
  /// uint16 varWord, int32 varInteger, uint32 varLongWord, int64 varInt64, uint64 varUInt64.
  template <detail::VariantInteger T> Variant(T AValue) noexcept {
    if constexpr (std::is_signed_v<T>) {
      FType = sizeof(T) == 1   ? varShortInt
              : sizeof(T) == 2 ? varSmallint
              : sizeof(T) == 4 ? varInteger
                               : varInt64;
      FData.Int = AValue;
    } else {
      FType = sizeof(T) == 1   ? varByte
              : sizeof(T) == 2 ? varWord
              : sizeof(T) == 4 ? varLongWord
                               : varUInt64;
      FData.UInt = AValue;
    }
  }
  Variant(float AValue) noexcept : FType(varSingle) { FData.Single = AValue; }
  Variant(double AValue) noexcept : FType(varDouble) { FData.Double = AValue; }
  /// TDate and TTime too.
  Variant(TDateTime AValue) noexcept : FType(varDate) { FData.Double = AValue.Value; }
  Variant(std::u16string_view AValue);
  Variant(const UnicodeString& AValue) : Variant(std::u16string_view(AValue)) {}
  /// Nil is the empty text.
  Variant(const char16_t* AValue)
      : Variant(AValue ? std::u16string_view(AValue) : std::u16string_view()) {}
  /// A text of one character.
  Variant(WideChar AValue) : Variant(std::u16string_view(&AValue, 1)) {}
  /// A byte string (varString).
  Variant(const RawByteString& AValue);
  /// Holds a counted reference; nil gives varUnknown holding nil.
  Variant(IInterface* AValue) noexcept : FType(varUnknown) {
    FData.Unknown = AValue;
    if (AValue)
      AValue->_AddRef();
  }
  template <class I> Variant(const IPtr<I>& AValue) noexcept : Variant(AValue.Get()) {}
  /// Keeps other pointers (and char text) from becoming a boolean.
  template <class T>
  requires(!std::is_convertible_v<T*, IInterface*> &&
           !std::is_same_v<std::remove_cv_t<T>, char16_t>) Variant(T*)
  = delete;

  /// Text; Empty gives "", Null and values without a text form raise EVariantTypeCastError.
  UnicodeString AsString() const;
  /// Rounded and range-checked; raises as the class comment says.
  Integer AsInteger() const;
  Int64 AsInt64() const;
  UInt64 AsUInt64() const;
  double AsDouble() const;
  bool AsBoolean() const;
  TDateTime AsDateTime() const;
  /// The held interface (nil for Empty); anything else raises EVariantTypeCastError.
  IPtr<IInterface> AsInterface() const;

  Variant& operator+=(const Variant& AOther);
  Variant& operator-=(const Variant& AOther);
  Variant& operator*=(const Variant& AOther);
  Variant& operator/=(const Variant& AOther);

private:
  friend TVarType VarType(const Variant& AValue) noexcept;
  friend struct VariantAccess;

  bool OwnsPayload() const noexcept {
    return (FType & varArray) != 0 || FType == varUString || FType == varOleStr ||
           FType == varString || FType == varUnknown;
  }
  void AddRefPayload();
  void ReleasePayload() noexcept;

  union TPayload {
    Int64 Int;
    UInt64 UInt;
    double Double;
    float Single;
    bool Bool;
    detail::TVarText* Text;
    detail::TVarBytes* Bytes;
    detail::TVarArray* Array;
    IInterface* Unknown;
  };
  TVarType FType;
  TPayload FData;
};

Variant operator+(const Variant& A, const Variant& B);
Variant operator-(const Variant& A, const Variant& B);
Variant operator*(const Variant& A, const Variant& B);
Variant operator/(const Variant& A, const Variant& B);
Variant operator-(const Variant& A);

/// Equal, less, greater, or vrNotEqual for values without an order between them (NaN, two
/// different interfaces). Raises as the class comment says.
TVariantRelationship VarCompareValue(const Variant& A, const Variant& B);
bool operator==(const Variant& A, const Variant& B);
bool operator!=(const Variant& A, const Variant& B);
bool operator<(const Variant& A, const Variant& B);
bool operator<=(const Variant& A, const Variant& B);
bool operator>(const Variant& A, const Variant& B);
bool operator>=(const Variant& A, const Variant& B);

Variant Null() noexcept;
Variant Unassigned() noexcept;

inline TVarType VarType(const Variant& AValue) noexcept { return AValue.FType; }
/// The family of the value's code, as VarKindOf gives it.
inline TVarKind VarKind(const Variant& AValue) noexcept { return VarKindOf(VarType(AValue)); }
bool VarIsNull(const Variant& AValue) noexcept;
bool VarIsEmpty(const Variant& AValue) noexcept;
/// Empty, or an interface Variant holding nil.
bool VarIsClear(const Variant& AValue) noexcept;
bool VarIsArray(const Variant& AValue) noexcept;
/// The integer codes and varBoolean, as on the platform.
bool VarIsOrdinal(const Variant& AValue) noexcept;
/// varSingle, varDouble, varCurrency (not varDate).
bool VarIsFloat(const Variant& AValue) noexcept;
/// Ordinal or float.
bool VarIsNumeric(const Variant& AValue) noexcept;
/// varOleStr, varString, varUString.
bool VarIsStr(const Variant& AValue) noexcept;

/// The value converted to the code AVarType, which may be an array code (each element is then
/// converted). Unknown codes raise EVariantBadVarTypeError "Invalid variant type"; conversions
/// fail as the class comment says.
Variant VarAsType(const Variant& AValue, TVarType AVarType);
/// The text of the value; Null gives "".
UnicodeString VarToStr(const Variant& AValue);
/// The characters of a varUString or varOleStr value without a copy, valid while the Variant
/// lives unchanged; an empty view for every other code.
std::u16string_view VarWideTextView(const Variant& AValue) noexcept;
/// ADefault for Null, else VarToStr.
UnicodeString VarToStrDef(const Variant& AValue, std::u16string_view ADefault);
/// "Integer", "UnicodeString", "Array Variant", ...; a code without a name gives "$" and four
/// hexadecimal digits.
UnicodeString VarTypeAsText(TVarType AVarType);

// --- arrays --------------------------------------------------------------------------------------
/// ABounds is one pair {low, high}; high may be low - 1 for an empty array. Elements start as the
/// element type's zero (Empty for varVariant). Raises EVariantArrayCreateError "Error creating
/// variant or safe array" for other bounds, EVariantBadVarTypeError for an element type that
/// arrays can't hold (varEmpty, varNull, varString, varUString and unknown codes).
Variant VarArrayCreate(std::initializer_list<Integer> ABounds, TVarType AVarType);
/// An array of varVariant with bounds 0 to count - 1.
Variant VarArrayOf(std::initializer_list<Variant> AValues);
Variant VarArrayOf(const std::vector<Variant>& AValues);
/// 1 for an array, 0 for any other value.
Integer VarArrayDimCount(const Variant& AValue) noexcept;
/// A non-array raises EVariantNotAnArrayError "Variant is not an array"; a dimension other than
/// 1 raises EVariantBadIndexError "Variant or safe array index out of bounds".
Integer VarArrayLowBound(const Variant& AValue, Integer ADim);
Integer VarArrayHighBound(const Variant& AValue, Integer ADim);
/// An index outside the bounds raises EVariantBadIndexError "Variant or safe array index out of
/// bounds"; a non-array raises EVariantNotAnArrayError.
Variant VarArrayGet(const Variant& AArray, Integer AIndex);
/// The value is converted to the element type first (conversion failures raise as usual).
void VarArrayPut(Variant& AArray, const Variant& AValue, Integer AIndex);
/// New high bound; elements beyond the old one start as zero. A high bound below low - 1
/// raises EVariantArrayCreateError.
void VarArrayRedim(Variant& AArray, Integer AHighBound);

} // namespace lorvane
