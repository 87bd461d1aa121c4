// Variant: storage, conversions between the type codes, arithmetic, comparison and arrays.
#include "lorvane/platform/Variants.h"

#include "lorvane/platform/CodePages.h"
#include "platform/internal/SmallObjectPool.h"

#include <atomic>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

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

namespace {

__extension__ typedef __int128 Int128;

// Far beyond any real use, and small enough that a length read from a hostile document can't
// exhaust memory.
constexpr Int64 MaxArrayElements = Int64{1} << 26;
constexpr Int64 CurrencyScale = 10000;

[[noreturn]] void RaiseCast(TVarType AFrom, TVarType ATo) {
  throw EVariantTypeCastError(u"Could not convert variant of type (" + VarTypeAsText(AFrom) +
                              u") into type (" + VarTypeAsText(ATo) + u")");
}
[[noreturn]] void RaiseConvertOverflow(TVarType AFrom, TVarType ATo) {
  throw EVariantOverflowError(u"Overflow while converting variant of type (" +
                              VarTypeAsText(AFrom) + u") into type (" + VarTypeAsText(ATo) + u")");
}
[[noreturn]] void RaiseInvalidOp() { throw EVariantInvalidOpError(u"Invalid variant operation"); }
[[noreturn]] void RaiseArithmeticOverflow() { throw EVariantOverflowError(u"Variant overflow"); }
[[noreturn]] void RaiseBadIndex() {
  throw EVariantBadIndexError(u"Variant or safe array index out of bounds");
}
[[noreturn]] void RaiseBadVarType() { throw EVariantBadVarTypeError(u"Invalid variant type"); }
[[noreturn]] void RaiseArrayCreate() {
  throw EVariantArrayCreateError(u"Error creating variant or safe array");
}
[[noreturn]] void RaiseNotArray() { throw EVariantNotAnArrayError(u"Variant is not an array"); }

// What a Variant holds, by the family of its code.
enum class TKind {
  Empty,
  Null,
  Signed,
  Unsigned,
  Single,
  Double,
  Currency,
  Date,
  Boolean,
  Text,
  Bytes,
  Unknown,
  Array
};

TKind KindOfCode(TVarType AType) noexcept {
  if (AType & varArray)
    return TKind::Array;
  switch (AType) {
  case varEmpty:
    return TKind::Empty;
  case varNull:
    return TKind::Null;
  case varSmallint:
  case varInteger:
  case varShortInt:
  case varInt64:
    return TKind::Signed;
  case varByte:
  case varWord:
  case varLongWord:
  case varUInt64:
    return TKind::Unsigned;
  case varSingle:
    return TKind::Single;
  case varDouble:
    return TKind::Double;
  case varCurrency:
    return TKind::Currency;
  case varDate:
    return TKind::Date;
  case varBoolean:
    return TKind::Boolean;
  case varOleStr:
  case varUString:
    return TKind::Text;
  case varString:
    return TKind::Bytes;
  default:
    return TKind::Unknown;
  }
}

bool IsTextKind(TKind AKind) noexcept { return AKind == TKind::Text || AKind == TKind::Bytes; }
bool IsIntegerKind(TKind AKind) noexcept {
  return AKind == TKind::Signed || AKind == TKind::Unsigned || AKind == TKind::Boolean ||
         AKind == TKind::Empty;
}

// A byte string carries no code page of its own: it stands in the process default.
UnicodeString BytesToText(std::string_view ABytes) {
  return CodePageToUnicode(ABytes.data(), ABytes.size(), CP_ACP);
}

RawByteString TextToBytes(std::u16string_view AText) { return UnicodeToCodePage(AText, CP_ACP); }

bool IsValidElementType(TVarType AType) noexcept {
  switch (AType) {
  case varSmallint:
  case varInteger:
  case varSingle:
  case varDouble:
  case varCurrency:
  case varDate:
  case varOleStr:
  case varBoolean:
  case varVariant:
  case varUnknown:
  case varShortInt:
  case varByte:
  case varWord:
  case varLongWord:
  case varInt64:
  case varUInt64:
    return true;
  default:
    return false;
  }
}

} // namespace

// Private access for the free functions of this file.
struct VariantAccess {
  static TKind Kind(const Variant& AValue) noexcept { return KindOfCode(AValue.FType); }
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
      ABuffer = BytesToText(AValue.FData.Bytes->Value);
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

namespace {

using VA = VariantAccess;

// --- conversions ---------------------------------------------------------------------------------
UnicodeString ToText(const Variant& AValue, TVarType ATo) {
  switch (VA::Kind(AValue)) {
  case TKind::Empty:
    return UnicodeString();
  case TKind::Signed:
    return IntToStr(VA::Int(AValue));
  case TKind::Unsigned:
    return UIntToStr(VA::UInt(AValue));
  case TKind::Single:
    return FloatToStr(VA::Single(AValue));
  case TKind::Double:
    return FloatToStr(VA::Double(AValue));
  case TKind::Currency:
    return FloatToStr(static_cast<double>(VA::Int(AValue)) / CurrencyScale);
  case TKind::Date:
    return DateTimeToStr(VA::Double(AValue));
  case TKind::Boolean:
    return VA::Bool(AValue) ? u"True" : u"False";
  case TKind::Text:
  case TKind::Bytes: {
    UnicodeString Buffer;
    return UnicodeString(VA::TextView(AValue, Buffer));
  }
  default:
    RaiseCast(VarType(AValue), ATo);
  }
}

double ToDouble(const Variant& AValue, TVarType ATo) {
  switch (VA::Kind(AValue)) {
  case TKind::Empty:
    return 0;
  case TKind::Signed:
    return static_cast<double>(VA::Int(AValue));
  case TKind::Unsigned:
    return static_cast<double>(VA::UInt(AValue));
  case TKind::Single:
    return VA::Single(AValue);
  case TKind::Double:
  case TKind::Date:
    return VA::Double(AValue);
  case TKind::Currency:
    return static_cast<double>(VA::Int(AValue)) / CurrencyScale;
  case TKind::Boolean:
    return VA::Bool(AValue) ? -1 : 0;
  case TKind::Text:
  case TKind::Bytes: {
    UnicodeString Buffer;
    const std::u16string_view Text = VA::TextView(AValue, Buffer);
    double Result;
    if (TryStrToFloat(Text, Result))
      return Result;
    Int64 Integral; // '$' hexadecimal
    if (TryStrToInt64(Text, Integral))
      return static_cast<double>(Integral);
    [[fallthrough]];
  }
  default:
    RaiseCast(VarType(AValue), ATo);
  }
}

// A float rounded half to even, or the overflow failure when no 64-bit integer holds it.
Int128 RoundToInteger(double AValue, TVarType AFrom, TVarType ATo) {
  constexpr double TwoPow64 = 18446744073709551616.0;
  if (!(std::fabs(AValue) < TwoPow64))
    RaiseConvertOverflow(AFrom, ATo);
  return static_cast<Int128>(std::nearbyint(AValue));
}

// Currency to an integer, rounded half to even without leaving integer arithmetic.
Int128 CurrencyToInteger(Int64 AScaled) {
  Int128 Quotient = AScaled / CurrencyScale;
  const Int64 Remainder = AScaled % CurrencyScale;
  const Int64 Twice = 2 * (Remainder < 0 ? -Remainder : Remainder);
  if (Twice > CurrencyScale || (Twice == CurrencyScale && (Quotient & 1) != 0))
    Quotient += Remainder < 0 ? -1 : 1;
  return Quotient;
}

// Any value as an integer wide enough for every 64-bit code; callers check the range.
Int128 ToInteger(const Variant& AValue, TVarType ATo) {
  switch (VA::Kind(AValue)) {
  case TKind::Empty:
    return 0;
  case TKind::Signed:
    return VA::Int(AValue);
  case TKind::Unsigned:
    return VA::UInt(AValue);
  case TKind::Boolean:
    return VA::Bool(AValue) ? -1 : 0;
  case TKind::Currency:
    return CurrencyToInteger(VA::Int(AValue));
  case TKind::Single:
  case TKind::Double:
  case TKind::Date:
    return RoundToInteger(ToDouble(AValue, ATo), VarType(AValue), ATo);
  case TKind::Text:
  case TKind::Bytes: {
    UnicodeString Buffer;
    const std::u16string_view Text = VA::TextView(AValue, Buffer);
    Int64 Signed;
    if (TryStrToInt64(Text, Signed))
      return Signed;
    UInt64 Unsigned;
    if (TryStrToUInt64(Text, Unsigned))
      return Unsigned;
    double Float;
    if (TryStrToFloat(Text, Float))
      return RoundToInteger(Float, VarType(AValue), ATo);
    [[fallthrough]];
  }
  default:
    RaiseCast(VarType(AValue), ATo);
  }
}

template <class T> T ToIntegerOf(const Variant& AValue, TVarType ATo) {
  const Int128 Value = ToInteger(AValue, ATo);
  if (Value < std::numeric_limits<T>::min() || Value > std::numeric_limits<T>::max())
    RaiseConvertOverflow(VarType(AValue), ATo);
  return static_cast<T>(Value);
}

bool ToBoolean(const Variant& AValue) {
  switch (VA::Kind(AValue)) {
  case TKind::Empty:
    return false;
  case TKind::Signed:
  case TKind::Currency:
    return VA::Int(AValue) != 0;
  case TKind::Unsigned:
    return VA::UInt(AValue) != 0;
  case TKind::Single:
    return VA::Single(AValue) != 0;
  case TKind::Double:
  case TKind::Date:
    return VA::Double(AValue) != 0;
  case TKind::Boolean:
    return VA::Bool(AValue);
  case TKind::Text:
  case TKind::Bytes: {
    UnicodeString Buffer;
    bool Result;
    if (TryStrToBool(VA::TextView(AValue, Buffer), Result))
      return Result;
    [[fallthrough]];
  }
  default:
    RaiseCast(VarType(AValue), varBoolean);
  }
}

double ToDateTime(const Variant& AValue) {
  if (IsTextKind(VA::Kind(AValue))) {
    UnicodeString Buffer;
    const std::u16string_view Text = VA::TextView(AValue, Buffer);
    TDateTime Result;
    if (TryStrToDateTime(Text, Result))
      return Result;
    double Number;
    if (TryStrToFloat(Text, Number))
      return Number;
    RaiseCast(VarType(AValue), varDate);
  }
  return ToDouble(AValue, varDate);
}

Int64 ToCurrency(const Variant& AValue) {
  const TKind Kind = VA::Kind(AValue);
  if (Kind == TKind::Currency)
    return VA::Int(AValue);
  if (IsIntegerKind(Kind)) {
    const Int128 Scaled = ToInteger(AValue, varCurrency) * CurrencyScale;
    if (Scaled < std::numeric_limits<Int64>::min() || Scaled > std::numeric_limits<Int64>::max())
      RaiseConvertOverflow(VarType(AValue), varCurrency);
    return static_cast<Int64>(Scaled);
  }
  const Int128 Scaled =
      RoundToInteger(ToDouble(AValue, varCurrency) * CurrencyScale, VarType(AValue), varCurrency);
  if (Scaled < std::numeric_limits<Int64>::min() || Scaled > std::numeric_limits<Int64>::max())
    RaiseConvertOverflow(VarType(AValue), varCurrency);
  return static_cast<Int64>(Scaled);
}

Variant ZeroOf(TVarType AType) {
  switch (AType) {
  case varVariant:
    return Variant();
  case varUnknown:
    return Variant(static_cast<IInterface*>(nullptr));
  default:
    return VarAsType(Variant(), AType);
  }
}

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
  const TKind KindA = VA::Kind(A), KindB = VA::Kind(B);
  if (KindA == TKind::Null || KindB == TKind::Null)
    return VA::MakeNull();
  if (KindA == TKind::Array || KindA == TKind::Unknown || KindB == TKind::Array ||
      KindB == TKind::Unknown)
    RaiseInvalidOp();
  if (KindA == TKind::Empty && KindB == TKind::Empty)
    return Variant();
  if (AOp == TOp::Add && (IsTextKind(KindA) || KindA == TKind::Empty) &&
      (IsTextKind(KindB) || KindB == TKind::Empty))
    return JoinTexts(A, B);

  if (KindA == TKind::Date || KindB == TKind::Date) {
    const double Result = ApplyFloat(AOp, ToDouble(A, varDouble), ToDouble(B, varDouble));
    const bool StaysDate = (AOp == TOp::Add || AOp == TOp::Subtract) &&
                           !(AOp == TOp::Subtract && KindA == TKind::Date && KindB == TKind::Date);
    return VA::MakeDouble(StaysDate ? varDate : varDouble, Result);
  }
  auto IsFloatLike = [](TKind AKind) {
    return AKind == TKind::Single || AKind == TKind::Double || IsTextKind(AKind);
  };
  if (AOp == TOp::Divide || IsFloatLike(KindA) || IsFloatLike(KindB))
    return VA::MakeDouble(varDouble,
                          ApplyFloat(AOp, ToDouble(A, varDouble), ToDouble(B, varDouble)));

  if (KindA == TKind::Currency || KindB == TKind::Currency) {
    const Int128 ScaledA = ToCurrency(A), ScaledB = ToCurrency(B);
    if (AOp != TOp::Multiply)
      return PackCurrency(ApplyInteger(AOp, ScaledA, ScaledB));
    // Scale once: one side as an integer where it is one, else round the product half to even.
    if (KindA != TKind::Currency)
      return PackCurrency(ApplyInteger(AOp, ToInteger(A, varCurrency), ScaledB));
    if (KindB != TKind::Currency)
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

// --- Variant members -----------------------------------------------------------------------------
Variant::Variant(const Variant& AOther) : FType(AOther.FType), FData(AOther.FData) {
  if (OwnsPayload())
    AddRefPayload();
}

Variant& Variant::operator=(const Variant& AOther) {
  if (this != &AOther) {
    Variant Copy(AOther);
    *this = std::move(Copy);
  }
  return *this;
}

Variant& Variant::operator=(Variant&& AOther) noexcept {
  if (this != &AOther) {
    if (OwnsPayload())
      ReleasePayload();
    FType = AOther.FType;
    FData = AOther.FData;
    AOther.FType = varEmpty;
  }
  return *this;
}

Variant::Variant(std::u16string_view AValue) : FType(varUString) {
  FData.Text = detail::TVarText::Make(AValue);
}

Variant::Variant(const RawByteString& AValue) : FType(varString) {
  FData.Bytes = new detail::TVarBytes{{1}, AValue};
}

void Variant::AddRefPayload() {
  if (FType & varArray) {
    FData.Array = new detail::TVarArray(*FData.Array);
    return;
  }
  switch (FType) {
  case varUString:
  case varOleStr:
    if (FData.Text)
      FData.Text->Refs.fetch_add(1, std::memory_order_relaxed);
    break;
  case varString:
    FData.Bytes->Refs.fetch_add(1, std::memory_order_relaxed);
    break;
  case varUnknown:
    if (FData.Unknown)
      FData.Unknown->_AddRef();
    break;
  default:
    break;
  }
}

void Variant::ReleasePayload() noexcept {
  if (FType & varArray) {
    delete FData.Array;
    return;
  }
  switch (FType) {
  case varUString:
  case varOleStr:
    detail::TVarText::Release(FData.Text);
    break;
  case varString:
    if (FData.Bytes->Refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
      delete FData.Bytes;
    break;
  case varUnknown:
    if (FData.Unknown)
      FData.Unknown->_Release();
    break;
  default:
    break;
  }
}

UnicodeString Variant::AsString() const { return ToText(*this, varUString); }
Integer Variant::AsInteger() const { return ToIntegerOf<Integer>(*this, varInteger); }
Int64 Variant::AsInt64() const { return ToIntegerOf<Int64>(*this, varInt64); }
UInt64 Variant::AsUInt64() const { return ToIntegerOf<UInt64>(*this, varUInt64); }
double Variant::AsDouble() const { return ToDouble(*this, varDouble); }
bool Variant::AsBoolean() const { return ToBoolean(*this); }
TDateTime Variant::AsDateTime() const { return ToDateTime(*this); }

IPtr<IInterface> Variant::AsInterface() const {
  if (FType == varUnknown)
    return IPtr<IInterface>(FData.Unknown);
  if (FType == varEmpty)
    return nullptr;
  RaiseCast(FType, varUnknown);
}

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
  switch (VA::Kind(A)) {
  case TKind::Null:
  case TKind::Empty:
    return A;
  case TKind::Signed:
  case TKind::Unsigned:
  case TKind::Boolean:
    return PackInteger(-ToInteger(A, varInt64), IsSmallInteger(VarType(A)), false);
  case TKind::Single:
    return Variant(-VA::Single(A));
  case TKind::Double:
  case TKind::Date:
    return VA::MakeDouble(VarType(A), -VA::Double(A));
  case TKind::Currency:
    return PackCurrency(-static_cast<Int128>(VA::Int(A)));
  case TKind::Text:
  case TKind::Bytes:
    return Variant(-ToDouble(A, varDouble));
  default:
    RaiseInvalidOp();
  }
}

TVariantRelationship VarCompareValue(const Variant& A, const Variant& B) {
  const TKind KindA = VA::Kind(A), KindB = VA::Kind(B);
  if (KindA == TKind::Null || KindB == TKind::Null) {
    if (KindA == KindB)
      return vrEqual;
    return KindA == TKind::Null ? vrLessThan : vrGreaterThan;
  }
  if (KindA == TKind::Array || KindB == TKind::Array)
    RaiseInvalidOp();
  if (KindA == TKind::Unknown || KindB == TKind::Unknown) {
    if (KindA != KindB)
      RaiseInvalidOp();
    return VA::Unknown(A) == VA::Unknown(B) ? vrEqual : vrNotEqual;
  }
  if (KindA == TKind::Empty && KindB == TKind::Empty)
    return vrEqual;
  const bool TextA = IsTextKind(KindA), TextB = IsTextKind(KindB);
  if ((TextA || KindA == TKind::Empty) && (TextB || KindB == TKind::Empty)) {
    UnicodeString BufferA, BufferB;
    const std::u16string_view ViewA = TextA ? VA::TextView(A, BufferA) : std::u16string_view();
    const std::u16string_view ViewB = TextB ? VA::TextView(B, BufferB) : std::u16string_view();
    const int Order = ViewA.compare(ViewB);
    return Order < 0 ? vrLessThan : Order > 0 ? vrGreaterThan : vrEqual;
  }
  const bool BoolA = KindA == TKind::Boolean, BoolB = KindB == TKind::Boolean;
  if ((BoolA || TextA || KindA == TKind::Empty) && (BoolB || TextB || KindB == TKind::Empty))
    return Relate<int>(ToBoolean(A), ToBoolean(B));
  if (KindA == TKind::Date && TextB)
    return Relate(VA::Double(A), ToDateTime(B));
  if (TextA && KindB == TKind::Date)
    return Relate(ToDateTime(A), VA::Double(B));
  if (IsIntegerKind(KindA) && IsIntegerKind(KindB))
    return Relate(ToInteger(A, varInt64), ToInteger(B, varInt64));
  if (TextA && IsIntegerKind(KindB))
    return RelateTextToInteger(A, B, true);
  if (IsIntegerKind(KindA) && TextB)
    return RelateTextToInteger(B, A, false);
  if (KindA == TKind::Currency && KindB == TKind::Currency)
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

// --- type tests ----------------------------------------------------------------------------------
Variant Null() noexcept { return VA::MakeNull(); }
Variant Unassigned() noexcept { return Variant(); }

bool VarIsNull(const Variant& AValue) noexcept { return VarType(AValue) == varNull; }
bool VarIsEmpty(const Variant& AValue) noexcept { return VarType(AValue) == varEmpty; }
bool VarIsClear(const Variant& AValue) noexcept {
  return VarType(AValue) == varEmpty || (VarType(AValue) == varUnknown && !VA::Unknown(AValue));
}
bool VarIsArray(const Variant& AValue) noexcept { return (VarType(AValue) & varArray) != 0; }
bool VarIsOrdinal(const Variant& AValue) noexcept {
  const TKind Kind = VA::Kind(AValue);
  return Kind == TKind::Signed || Kind == TKind::Unsigned || Kind == TKind::Boolean;
}
bool VarIsFloat(const Variant& AValue) noexcept {
  const TKind Kind = VA::Kind(AValue);
  return Kind == TKind::Single || Kind == TKind::Double || Kind == TKind::Currency;
}
bool VarIsNumeric(const Variant& AValue) noexcept {
  return VarIsOrdinal(AValue) || VarIsFloat(AValue);
}
bool VarIsStr(const Variant& AValue) noexcept { return IsTextKind(VA::Kind(AValue)); }

UnicodeString VarTypeAsText(TVarType AVarType) {
  struct TName {
    TVarType Type;
    const char16_t* Name;
  };
  static constexpr TName Names[] = {{varEmpty, u"Empty"},
                                    {varNull, u"Null"},
                                    {varSmallint, u"Smallint"},
                                    {varInteger, u"Integer"},
                                    {varSingle, u"Single"},
                                    {varDouble, u"Double"},
                                    {varCurrency, u"Currency"},
                                    {varDate, u"Date"},
                                    {varOleStr, u"OleStr"},
                                    {varDispatch, u"Dispatch"},
                                    {varError, u"Error"},
                                    {varBoolean, u"Boolean"},
                                    {varVariant, u"Variant"},
                                    {varUnknown, u"Unknown"},
                                    {varDecimal, u"Decimal"},
                                    {varShortInt, u"ShortInt"},
                                    {varByte, u"Byte"},
                                    {varWord, u"Word"},
                                    {varLongWord, u"Cardinal"},
                                    {varInt64, u"Int64"},
                                    {varUInt64, u"UInt64"},
                                    {varString, u"String"},
                                    {varUString, u"UnicodeString"}};
  const TVarType Base = AVarType & varTypeMask;
  UnicodeString Result = u"$" + IntToHex(Base, 4);
  for (const TName& Entry : Names)
    if (Entry.Type == Base)
      Result = Entry.Name;
  if (AVarType & varArray)
    Result.insert(0, u"Array ");
  return Result;
}

// --- conversion entry points ---------------------------------------------------------------------
Variant VarAsType(const Variant& AValue, TVarType AVarType) {
  if (AVarType & ~(varTypeMask | varArray))
    RaiseBadVarType();
  if (AVarType & varArray) {
    const TVarType ElementType = AVarType & varTypeMask;
    if (!IsValidElementType(ElementType))
      RaiseBadVarType();
    if (!VarIsArray(AValue))
      RaiseCast(VarType(AValue), AVarType);
    const detail::TVarArray& Source = VA::Array(AValue);
    std::vector<Variant> Items;
    Items.reserve(Source.Items.size());
    for (const Variant& Item : Source.Items)
      Items.push_back(ElementType == varVariant ? Item : VarAsType(Item, ElementType));
    return VA::MakeArray(ElementType, Source.LowBound, std::move(Items));
  }
  if (VarType(AValue) == AVarType)
    return AValue;
  switch (AVarType) {
  case varEmpty:
    return Variant();
  case varNull:
    return VA::MakeNull();
  case varSmallint:
    return VA::MakeInt(varSmallint, ToIntegerOf<SmallInt>(AValue, AVarType));
  case varInteger:
    return VA::MakeInt(varInteger, ToIntegerOf<Integer>(AValue, AVarType));
  case varShortInt:
    return VA::MakeInt(varShortInt, ToIntegerOf<ShortInt>(AValue, AVarType));
  case varInt64:
    return VA::MakeInt(varInt64, ToIntegerOf<Int64>(AValue, AVarType));
  case varByte:
    return VA::MakeUInt(varByte, ToIntegerOf<Byte>(AValue, AVarType));
  case varWord:
    return VA::MakeUInt(varWord, ToIntegerOf<Word>(AValue, AVarType));
  case varLongWord:
    return VA::MakeUInt(varLongWord, ToIntegerOf<LongWord>(AValue, AVarType));
  case varUInt64:
    return VA::MakeUInt(varUInt64, ToIntegerOf<UInt64>(AValue, AVarType));
  case varSingle: {
    const double Value = ToDouble(AValue, AVarType);
    if (std::isfinite(Value) && std::fabs(Value) > FLT_MAX)
      RaiseConvertOverflow(VarType(AValue), AVarType);
    return Variant(static_cast<float>(Value));
  }
  case varDouble:
    return VA::MakeDouble(varDouble, ToDouble(AValue, AVarType));
  case varCurrency:
    return VA::MakeInt(varCurrency, ToCurrency(AValue));
  case varDate:
    return VA::MakeDouble(varDate, ToDateTime(AValue));
  case varOleStr:
  case varUString:
    return VA::MakeText(AVarType, ToText(AValue, AVarType));
  case varString:
    return VA::MakeBytes(TextToBytes(ToText(AValue, AVarType)));
  case varBoolean:
    return Variant(ToBoolean(AValue));
  case varVariant:
    return AValue;
  case varUnknown:
    if (VarIsEmpty(AValue))
      return VA::MakeUnknown(nullptr);
    RaiseCast(VarType(AValue), AVarType);
  case varDispatch:
  case varError:
  case varDecimal:
    RaiseCast(VarType(AValue), AVarType);
  default:
    RaiseBadVarType();
  }
}

UnicodeString VarToStr(const Variant& AValue) {
  return VarIsNull(AValue) ? UnicodeString() : AValue.AsString();
}

std::u16string_view VarWideTextView(const Variant& AValue) noexcept {
  const TVarType Type = VarType(AValue);
  if (Type != varUString && Type != varOleStr)
    return {};
  UnicodeString Unused;
  return VA::TextView(AValue, Unused);
}

UnicodeString VarToStrDef(const Variant& AValue, std::u16string_view ADefault) {
  return VarIsNull(AValue) ? UnicodeString(ADefault) : AValue.AsString();
}

// --- arrays --------------------------------------------------------------------------------------
namespace {

detail::TVarArray& ArrayOf(const Variant& AValue) {
  if (!VarIsArray(AValue))
    RaiseNotArray();
  return VA::Array(AValue);
}

std::size_t SlotOf(const detail::TVarArray& AArray, Integer AIndex) {
  const Int64 Slot = Int64{AIndex} - AArray.LowBound;
  if (Slot < 0 || Slot >= static_cast<Int64>(AArray.Items.size()))
    RaiseBadIndex();
  return static_cast<std::size_t>(Slot);
}

std::size_t ElementCount(Integer ALowBound, Integer AHighBound) {
  const Int64 Count = Int64{AHighBound} - ALowBound + 1;
  if (Count < 0 || Count > MaxArrayElements)
    RaiseArrayCreate();
  return static_cast<std::size_t>(Count);
}

} // namespace

Variant VarArrayCreate(std::initializer_list<Integer> ABounds, TVarType AVarType) {
  if (ABounds.size() != 2)
    RaiseArrayCreate();
  if (!IsValidElementType(AVarType))
    RaiseBadVarType();
  const Integer Low = ABounds.begin()[0];
  const std::size_t Count = ElementCount(Low, ABounds.begin()[1]);
  return VA::MakeArray(AVarType, Low, std::vector<Variant>(Count, ZeroOf(AVarType)));
}

Variant VarArrayOf(std::initializer_list<Variant> AValues) {
  return VA::MakeArray(varVariant, 0, std::vector<Variant>(AValues));
}

Variant VarArrayOf(const std::vector<Variant>& AValues) {
  if (static_cast<Int64>(AValues.size()) > MaxArrayElements)
    RaiseArrayCreate();
  return VA::MakeArray(varVariant, 0, AValues);
}

Integer VarArrayDimCount(const Variant& AValue) noexcept { return VarIsArray(AValue) ? 1 : 0; }

Integer VarArrayLowBound(const Variant& AValue, Integer ADim) {
  const detail::TVarArray& Array = ArrayOf(AValue);
  if (ADim != 1)
    RaiseBadIndex();
  return Array.LowBound;
}

Integer VarArrayHighBound(const Variant& AValue, Integer ADim) {
  const detail::TVarArray& Array = ArrayOf(AValue);
  if (ADim != 1)
    RaiseBadIndex();
  return static_cast<Integer>(Array.LowBound + static_cast<Int64>(Array.Items.size()) - 1);
}

Variant VarArrayGet(const Variant& AArray, Integer AIndex) {
  const detail::TVarArray& Array = ArrayOf(AArray);
  return Array.Items[SlotOf(Array, AIndex)];
}

void VarArrayPut(Variant& AArray, const Variant& AValue, Integer AIndex) {
  detail::TVarArray& Array = ArrayOf(AArray);
  const std::size_t Slot = SlotOf(Array, AIndex);
  Array.Items[Slot] =
      Array.ElementType == varVariant ? AValue : VarAsType(AValue, Array.ElementType);
}

void VarArrayRedim(Variant& AArray, Integer AHighBound) {
  detail::TVarArray& Array = ArrayOf(AArray);
  Array.Items.resize(ElementCount(Array.LowBound, AHighBound), ZeroOf(Array.ElementType));
}

} // namespace lorvane
