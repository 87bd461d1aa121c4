// What the Variant sources share: the payloads a Variant points to, private access to its
// fields, the failures with their messages, and the conversions that the arithmetic, the
// comparison and the arrays build on.
#pragma once

#include "lorvane/platform/Variants.h"

#include "platform/internal/SmallObjectPool.h"

#include <atomic>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <vector>

namespace lorvane {

namespace detail {
// Text is shared between copies and never changed in place; nil stands for the empty text.
// The characters follow the header in the same allocation: a text costs one allocation.
struct TVarText {
  std::atomic<Integer> Refs{1};
  std::size_t Length;

  static TVarText* Make(std::u16string_view AText) {
    if (AText.empty())
      return nullptr;
    void* Memory = smallpool::Allocate(SizeFor(AText.size()));
    auto* Text = new (Memory) TVarText{{1}, AText.size()};
    std::memcpy(Text->Chars(), AText.data(), AText.size() * sizeof(char16_t));
    return Text;
  }
  static void Release(TVarText* AText) noexcept {
    if (AText && AText->Refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      const std::size_t Size = SizeFor(AText->Length);
      AText->~TVarText();
      smallpool::Release(AText, Size);
    }
  }
  static std::size_t SizeFor(std::size_t ALength) noexcept {
    return sizeof(TVarText) + ALength * sizeof(char16_t);
  }
  char16_t* Chars() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
  std::u16string_view View() noexcept { return {Chars(), Length}; }
};
struct TVarBytes {
  std::atomic<Integer> Refs{1};
  RawByteString Value;
};
struct TVarArray {
  TVarType ElementType;
  Integer LowBound;
  std::vector<Variant> Items;
};
} // namespace detail

namespace variants {

__extension__ typedef __int128 Int128;

// Far beyond any real use, and small enough that a length read from a hostile document can't
// exhaust memory.
constexpr Int64 MaxArrayElements = Int64{1} << 26;
constexpr Int64 CurrencyScale = 10000;

[[noreturn]] void RaiseCast(TVarType AFrom, TVarType ATo);
[[noreturn]] void RaiseConvertOverflow(TVarType AFrom, TVarType ATo);
[[noreturn]] void RaiseInvalidOp();
[[noreturn]] void RaiseArithmeticOverflow();
[[noreturn]] void RaiseBadIndex();
[[noreturn]] void RaiseBadVarType();
[[noreturn]] void RaiseArrayCreate();
[[noreturn]] void RaiseNotArray();

inline bool IsTextKind(TVarKind AKind) noexcept {
  return AKind == TVarKind::vkText || AKind == TVarKind::vkBytes;
}
inline bool IsIntegerKind(TVarKind AKind) noexcept {
  return AKind == TVarKind::vkSigned || AKind == TVarKind::vkUnsigned ||
         AKind == TVarKind::vkBoolean || AKind == TVarKind::vkEmpty;
}

/// A byte string carries no code page of its own: it stands in the process default.
UnicodeString BytesToText(std::string_view ABytes);
RawByteString TextToBytes(std::u16string_view AText);
/// The codes that an array may hold.
bool IsValidElementType(TVarType AType) noexcept;

} // namespace variants

// Private access to a Variant's fields for the Variant sources.
struct VariantAccess {
  static Int64 Int(const Variant& AValue) noexcept { return AValue.FData.Int; }
  static UInt64 UInt(const Variant& AValue) noexcept { return AValue.FData.UInt; }
  static double Double(const Variant& AValue) noexcept { return AValue.FData.Double; }
  static float Single(const Variant& AValue) noexcept { return AValue.FData.Single; }
  static bool Bool(const Variant& AValue) noexcept { return AValue.FData.Bool; }
  static IInterface* Unknown(const Variant& AValue) noexcept { return AValue.FData.Unknown; }
  static detail::TVarArray& Array(const Variant& AValue) noexcept { return *AValue.FData.Array; }

  // The text of a text kind; bytes are decoded into ABuffer.
  static std::u16string_view TextView(const Variant& AValue, UnicodeString& ABuffer) {
    if (AValue.FType == varString) {
      ABuffer = variants::BytesToText(AValue.FData.Bytes->Value);
      return ABuffer;
    }
    return AValue.FData.Text ? AValue.FData.Text->View() : std::u16string_view();
  }
  static const RawByteString& Bytes(const Variant& AValue) noexcept {
    return AValue.FData.Bytes->Value;
  }

  static Variant MakeInt(TVarType AType, Int64 AValue) noexcept {
    Variant Result;
    Result.FType = AType;
    Result.FData.Int = AValue;
    return Result;
  }
  static Variant MakeUInt(TVarType AType, UInt64 AValue) noexcept {
    Variant Result;
    Result.FType = AType;
    Result.FData.UInt = AValue;
    return Result;
  }
  static Variant MakeDouble(TVarType AType, double AValue) noexcept {
    Variant Result;
    Result.FType = AType;
    Result.FData.Double = AValue;
    return Result;
  }
  static Variant MakeText(TVarType AType, UnicodeString AValue) {
    Variant Result;
    Result.FData.Text = detail::TVarText::Make(AValue);
    Result.FType = AType;
    return Result;
  }
  static Variant MakeBytes(RawByteString AValue) {
    Variant Result;
    Result.FData.Bytes = new detail::TVarBytes{{1}, std::move(AValue)};
    Result.FType = varString;
    return Result;
  }
  static Variant MakeArray(TVarType AElementType, Integer ALowBound, std::vector<Variant> AItems) {
    Variant Result;
    Result.FData.Array = new detail::TVarArray{AElementType, ALowBound, std::move(AItems)};
    Result.FType = varArray | AElementType;
    return Result;
  }
  static Variant MakeNull() noexcept {
    Variant Result;
    Result.FType = varNull;
    return Result;
  }
  static Variant MakeUnknown(IInterface* AValue) noexcept { return Variant(AValue); }
};

namespace variants {

using VA = VariantAccess;

// The conversions behind the As... members and VarAsType; ATo names the target in failures.
UnicodeString ToText(const Variant& AValue, TVarType ATo);
double ToDouble(const Variant& AValue, TVarType ATo);
/// Any value as an integer wide enough for every 64-bit code; callers check the range.
Int128 ToInteger(const Variant& AValue, TVarType ATo);
template <class T> T ToIntegerOf(const Variant& AValue, TVarType ATo) {
  const Int128 Value = ToInteger(AValue, ATo);
  if (Value < std::numeric_limits<T>::min() || Value > std::numeric_limits<T>::max())
    RaiseConvertOverflow(VarType(AValue), ATo);
  return static_cast<T>(Value);
}
bool ToBoolean(const Variant& AValue);
double ToDateTime(const Variant& AValue);
/// The value scaled by CurrencyScale.
Int64 ToCurrency(const Variant& AValue);
/// The zero of an element type: what new array elements start as.
Variant ZeroOf(TVarType AType);

} // namespace variants

} // namespace lorvane
