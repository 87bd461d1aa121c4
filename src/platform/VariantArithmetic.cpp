// Variant arithmetic and comparison: the operators, the families they compute in, and
// VarCompareValue.
#include "lorvane/platform/Variants.h"

#include "platform/VariantCore.h"

namespace lorvane {

using namespace variants;

namespace {

// --- arithmetic ----------------------------------------------------------------------------------
enum class TOp { Add, Subtract, Multiply, Divide };

double ApplyFloat(TOp AOp, double A, double B) noexcept {
  switch (AOp) {
  case TOp::Add:
    return A + B;
  case TOp::Subtract:
    return A - B;
  case TOp::Multiply:
    return A * B;
  case TOp::Divide:
    break;
  }
  return A / B;
}

Int128 ApplyInteger(TOp AOp, Int128 A, Int128 B) {
  Int128 Result = 0;
  bool Overflow = false;
  switch (AOp) {
  case TOp::Add:
    Overflow = __builtin_add_overflow(A, B, &Result);
    break;
  case TOp::Subtract:
    Overflow = __builtin_sub_overflow(A, B, &Result);
    break;
  case TOp::Multiply:
  case TOp::Divide:
    Overflow = __builtin_mul_overflow(A, B, &Result);
    break;
  }
  if (Overflow)
    RaiseArithmeticOverflow();
  return Result;
}

// The codes that compute in 32 bits and widen only on overflow.
bool IsSmallInteger(TVarType AType) noexcept {
  return AType == varEmpty || AType == varBoolean || AType == varSmallint || AType == varInteger ||
         AType == varShortInt || AType == varByte || AType == varWord;
}

Variant PackInteger(Int128 AValue, bool ASmall, bool AUnsigned) {
  if (ASmall && AValue >= std::numeric_limits<Integer>::min() &&
      AValue <= std::numeric_limits<Integer>::max())
    return VA::MakeInt(varInteger, static_cast<Int64>(AValue));
  if (AUnsigned) {
    if (AValue >= 0 && AValue <= std::numeric_limits<UInt64>::max())
      return VA::MakeUInt(varUInt64, static_cast<UInt64>(AValue));
  } else if (AValue >= std::numeric_limits<Int64>::min() &&
             AValue <= std::numeric_limits<Int64>::max()) {
    return VA::MakeInt(varInt64, static_cast<Int64>(AValue));
  }
  RaiseArithmeticOverflow();
}

Variant PackCurrency(Int128 AScaled) {
  if (AScaled < std::numeric_limits<Int64>::min() || AScaled > std::numeric_limits<Int64>::max())
    RaiseArithmeticOverflow();
  return VA::MakeInt(varCurrency, static_cast<Int64>(AScaled));
}

Variant JoinTexts(const Variant& A, const Variant& B) {
  const TVarType TypeA = VarType(A), TypeB = VarType(B);
  const TVarType Type = TypeA == varEmpty                     ? TypeB
                        : TypeB == varEmpty || TypeA == TypeB ? TypeA
                                                              : varUString;
  if (Type == varString) {
    const RawByteString Empty;
    const RawByteString& BytesA = TypeA == varEmpty ? Empty : VA::Bytes(A);
    const RawByteString& BytesB = TypeB == varEmpty ? Empty : VA::Bytes(B);
    return VA::MakeBytes(BytesA + BytesB);
  }
  UnicodeString BufferA, BufferB;
  const std::u16string_view TextA =
      TypeA == varEmpty ? std::u16string_view() : VA::TextView(A, BufferA);
  const std::u16string_view TextB =
      TypeB == varEmpty ? std::u16string_view() : VA::TextView(B, BufferB);
  UnicodeString Joined;
  Joined.reserve(TextA.size() + TextB.size());
  Joined.append(TextA).append(TextB);
  return VA::MakeText(Type, std::move(Joined));
}

Variant BinaryOp(const Variant& A, const Variant& B, TOp AOp) {
  const TVarKind KindA = VarKind(A), KindB = VarKind(B);
  if (KindA == TVarKind::vkNull || KindB == TVarKind::vkNull)
    return VA::MakeNull();
  if (KindA == TVarKind::vkArray || KindA == TVarKind::vkUnknown || KindB == TVarKind::vkArray ||
      KindB == TVarKind::vkUnknown)
    RaiseInvalidOp();
  if (KindA == TVarKind::vkEmpty && KindB == TVarKind::vkEmpty)
    return Variant();
  if (AOp == TOp::Add && (IsTextKind(KindA) || KindA == TVarKind::vkEmpty) &&
      (IsTextKind(KindB) || KindB == TVarKind::vkEmpty))
    return JoinTexts(A, B);

  if (KindA == TVarKind::vkDate || KindB == TVarKind::vkDate) {
    const double Result = ApplyFloat(AOp, ToDouble(A, varDouble), ToDouble(B, varDouble));
    const bool StaysDate =
        (AOp == TOp::Add || AOp == TOp::Subtract) &&
        !(AOp == TOp::Subtract && KindA == TVarKind::vkDate && KindB == TVarKind::vkDate);
    return VA::MakeDouble(StaysDate ? varDate : varDouble, Result);
  }
  auto IsFloatLike = [](TVarKind AKind) {
    return AKind == TVarKind::vkSingle || AKind == TVarKind::vkDouble || IsTextKind(AKind);
  };
  if (AOp == TOp::Divide || IsFloatLike(KindA) || IsFloatLike(KindB))
    return VA::MakeDouble(varDouble,
                          ApplyFloat(AOp, ToDouble(A, varDouble), ToDouble(B, varDouble)));

  if (KindA == TVarKind::vkCurrency || KindB == TVarKind::vkCurrency) {
    const Int128 ScaledA = ToCurrency(A), ScaledB = ToCurrency(B);
    if (AOp != TOp::Multiply)
      return PackCurrency(ApplyInteger(AOp, ScaledA, ScaledB));
    // Scale once: one side as an integer where it is one, else round the product half to even.
    if (KindA != TVarKind::vkCurrency)
      return PackCurrency(ApplyInteger(AOp, ToInteger(A, varCurrency), ScaledB));
    if (KindB != TVarKind::vkCurrency)
      return PackCurrency(ApplyInteger(AOp, ScaledA, ToInteger(B, varCurrency)));
    const Int128 Product = ApplyInteger(AOp, ScaledA, ScaledB);
    Int128 Quotient = Product / CurrencyScale;
    const Int128 Remainder = Product % CurrencyScale;
    const Int128 Twice = 2 * (Remainder < 0 ? -Remainder : Remainder);
    if (Twice > CurrencyScale || (Twice == CurrencyScale && (Quotient & 1) != 0))
      Quotient += Remainder < 0 ? -1 : 1;
    return PackCurrency(Quotient);
  }

  const Int128 Result = ApplyInteger(AOp, ToInteger(A, varInt64), ToInteger(B, varInt64));
  const TVarType TypeA = VarType(A), TypeB = VarType(B);
  return PackInteger(Result, IsSmallInteger(TypeA) && IsSmallInteger(TypeB),
                     TypeA == varUInt64 && TypeB == varUInt64);
}

// --- comparison ----------------------------------------------------------------------------------
template <class T> TVariantRelationship Relate(const T& A, const T& B) noexcept {
  if (A < B)
    return vrLessThan;
  if (B < A)
    return vrGreaterThan;
  return A == B ? vrEqual : vrNotEqual;
}

// A text beside an integer: as integers when the text is one, so that large values stay exact.
TVariantRelationship RelateTextToInteger(const Variant& AText, const Variant& AInteger,
                                         bool ATextFirst) {
  UnicodeString Buffer;
  Int64 Value;
  if (TryStrToInt64(VA::TextView(AText, Buffer), Value)) {
    const Int128 Other = ToInteger(AInteger, varInt64);
    return ATextFirst ? Relate<Int128>(Value, Other) : Relate<Int128>(Other, Value);
  }
  const double Text = ToDouble(AText, varDouble), Other = ToDouble(AInteger, varDouble);
  return ATextFirst ? Relate(Text, Other) : Relate(Other, Text);
}

} // namespace

Variant& Variant::operator+=(const Variant& AOther) { return *this = *this + AOther; }
Variant& Variant::operator-=(const Variant& AOther) { return *this = *this - AOther; }
Variant& Variant::operator*=(const Variant& AOther) { return *this = *this * AOther; }
Variant& Variant::operator/=(const Variant& AOther) { return *this = *this / AOther; }

// --- operators -----------------------------------------------------------------------------------
Variant operator+(const Variant& A, const Variant& B) { return BinaryOp(A, B, TOp::Add); }
Variant operator-(const Variant& A, const Variant& B) { return BinaryOp(A, B, TOp::Subtract); }
Variant operator*(const Variant& A, const Variant& B) { return BinaryOp(A, B, TOp::Multiply); }
Variant operator/(const Variant& A, const Variant& B) { return BinaryOp(A, B, TOp::Divide); }

Variant operator-(const Variant& A) {
  switch (VarKind(A)) {
  case TVarKind::vkNull:
  case TVarKind::vkEmpty:
    return A;
  case TVarKind::vkSigned:
  case TVarKind::vkUnsigned:
  case TVarKind::vkBoolean:
    return PackInteger(-ToInteger(A, varInt64), IsSmallInteger(VarType(A)), false);
  case TVarKind::vkSingle:
    return Variant(-VA::Single(A));
  case TVarKind::vkDouble:
  case TVarKind::vkDate:
    return VA::MakeDouble(VarType(A), -VA::Double(A));
  case TVarKind::vkCurrency:
    return PackCurrency(-static_cast<Int128>(VA::Int(A)));
  case TVarKind::vkText:
  case TVarKind::vkBytes:
    return Variant(-ToDouble(A, varDouble));
  default:
    RaiseInvalidOp();
  }
}

TVariantRelationship VarCompareValue(const Variant& A, const Variant& B) {
  const TVarKind KindA = VarKind(A), KindB = VarKind(B);
  if (KindA == TVarKind::vkNull || KindB == TVarKind::vkNull) {
    if (KindA == KindB)
      return vrEqual;
    return KindA == TVarKind::vkNull ? vrLessThan : vrGreaterThan;
  }
  if (KindA == TVarKind::vkArray || KindB == TVarKind::vkArray)
    RaiseInvalidOp();
  if (KindA == TVarKind::vkUnknown || KindB == TVarKind::vkUnknown) {
    if (KindA != KindB)
      RaiseInvalidOp();
    return VA::Unknown(A) == VA::Unknown(B) ? vrEqual : vrNotEqual;
  }
  if (KindA == TVarKind::vkEmpty && KindB == TVarKind::vkEmpty)
    return vrEqual;
  const bool TextA = IsTextKind(KindA), TextB = IsTextKind(KindB);
  if ((TextA || KindA == TVarKind::vkEmpty) && (TextB || KindB == TVarKind::vkEmpty)) {
    UnicodeString BufferA, BufferB;
    const std::u16string_view ViewA = TextA ? VA::TextView(A, BufferA) : std::u16string_view();
    const std::u16string_view ViewB = TextB ? VA::TextView(B, BufferB) : std::u16string_view();
    const int Order = ViewA.compare(ViewB);
    return Order < 0 ? vrLessThan : Order > 0 ? vrGreaterThan : vrEqual;
  }
  const bool BoolA = KindA == TVarKind::vkBoolean, BoolB = KindB == TVarKind::vkBoolean;
  if ((BoolA || TextA || KindA == TVarKind::vkEmpty) &&
      (BoolB || TextB || KindB == TVarKind::vkEmpty))
    return Relate<int>(ToBoolean(A), ToBoolean(B));
  if (KindA == TVarKind::vkDate && TextB)
    return Relate(VA::Double(A), ToDateTime(B));
  if (TextA && KindB == TVarKind::vkDate)
    return Relate(ToDateTime(A), VA::Double(B));
  if (IsIntegerKind(KindA) && IsIntegerKind(KindB))
    return Relate(ToInteger(A, varInt64), ToInteger(B, varInt64));
  if (TextA && IsIntegerKind(KindB))
    return RelateTextToInteger(A, B, true);
  if (IsIntegerKind(KindA) && TextB)
    return RelateTextToInteger(B, A, false);
  if (KindA == TVarKind::vkCurrency && KindB == TVarKind::vkCurrency)
    return Relate(VA::Int(A), VA::Int(B));
  return Relate(ToDouble(A, varDouble), ToDouble(B, varDouble));
}

bool operator==(const Variant& A, const Variant& B) { return VarCompareValue(A, B) == vrEqual; }
bool operator!=(const Variant& A, const Variant& B) { return VarCompareValue(A, B) != vrEqual; }
bool operator<(const Variant& A, const Variant& B) { return VarCompareValue(A, B) == vrLessThan; }
bool operator<=(const Variant& A, const Variant& B) {
  const TVariantRelationship Relation = VarCompareValue(A, B);
  return Relation == vrLessThan || Relation == vrEqual;
}
bool operator>(const Variant& A, const Variant& B) {
  return VarCompareValue(A, B) == vrGreaterThan;
}
bool operator>=(const Variant& A, const Variant& B) {
  const TVariantRelationship Relation = VarCompareValue(A, B);
  return Relation == vrGreaterThan || Relation == vrEqual;
}

} // namespace lorvane
