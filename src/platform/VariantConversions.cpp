// Variant: storage, the type tests and names, and the conversions between the type codes.
#include "lorvane/platform/Variants.h"

#include "platform/VariantCore.h"

#include "lorvane/platform/CodePages.h"

#include <cfloat>
#include <cmath>

namespace lorvane {

namespace variants {

// --- failures ------------------------------------------------------------------------------------
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

namespace {

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

} // namespace

// --- conversions ---------------------------------------------------------------------------------
UnicodeString ToText(const Variant& AValue, TVarType ATo) {
  switch (VarKind(AValue)) {
  case TVarKind::vkEmpty:
    return UnicodeString();
  case TVarKind::vkSigned:
    return IntToStr(VA::Int(AValue));
  case TVarKind::vkUnsigned:
    return UIntToStr(VA::UInt(AValue));
  case TVarKind::vkSingle:
    return FloatToStr(VA::Single(AValue));
  case TVarKind::vkDouble:
    return FloatToStr(VA::Double(AValue));
  case TVarKind::vkCurrency:
    return FloatToStr(static_cast<double>(VA::Int(AValue)) / CurrencyScale);
  case TVarKind::vkDate:
    return DateTimeToStr(VA::Double(AValue));
  case TVarKind::vkBoolean:
    return VA::Bool(AValue) ? u"True" : u"False";
  case TVarKind::vkText:
  case TVarKind::vkBytes: {
    UnicodeString Buffer;
    return UnicodeString(VA::TextView(AValue, Buffer));
  }
  default:
    RaiseCast(VarType(AValue), ATo);
  }
}

double ToDouble(const Variant& AValue, TVarType ATo) {
  switch (VarKind(AValue)) {
  case TVarKind::vkEmpty:
    return 0;
  case TVarKind::vkSigned:
    return static_cast<double>(VA::Int(AValue));
  case TVarKind::vkUnsigned:
    return static_cast<double>(VA::UInt(AValue));
  case TVarKind::vkSingle:
    return VA::Single(AValue);
  case TVarKind::vkDouble:
  case TVarKind::vkDate:
    return VA::Double(AValue);
  case TVarKind::vkCurrency:
    return static_cast<double>(VA::Int(AValue)) / CurrencyScale;
  case TVarKind::vkBoolean:
    return VA::Bool(AValue) ? -1 : 0;
  case TVarKind::vkText:
  case TVarKind::vkBytes: {
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

Int128 ToInteger(const Variant& AValue, TVarType ATo) {
  switch (VarKind(AValue)) {
  case TVarKind::vkEmpty:
    return 0;
  case TVarKind::vkSigned:
    return VA::Int(AValue);
  case TVarKind::vkUnsigned:
    return VA::UInt(AValue);
  case TVarKind::vkBoolean:
    return VA::Bool(AValue) ? -1 : 0;
  case TVarKind::vkCurrency:
    return CurrencyToInteger(VA::Int(AValue));
  case TVarKind::vkSingle:
  case TVarKind::vkDouble:
  case TVarKind::vkDate:
    return RoundToInteger(ToDouble(AValue, ATo), VarType(AValue), ATo);
  case TVarKind::vkText:
  case TVarKind::vkBytes: {
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

bool ToBoolean(const Variant& AValue) {
  switch (VarKind(AValue)) {
  case TVarKind::vkEmpty:
    return false;
  case TVarKind::vkSigned:
  case TVarKind::vkCurrency:
    return VA::Int(AValue) != 0;
  case TVarKind::vkUnsigned:
    return VA::UInt(AValue) != 0;
  case TVarKind::vkSingle:
    return VA::Single(AValue) != 0;
  case TVarKind::vkDouble:
  case TVarKind::vkDate:
    return VA::Double(AValue) != 0;
  case TVarKind::vkBoolean:
    return VA::Bool(AValue);
  case TVarKind::vkText:
  case TVarKind::vkBytes: {
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
  if (IsTextKind(VarKind(AValue))) {
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
  const TVarKind Kind = VarKind(AValue);
  if (Kind == TVarKind::vkCurrency)
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

} // namespace variants

using namespace variants;

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
  const TVarKind Kind = VarKind(AValue);
  return Kind == TVarKind::vkSigned || Kind == TVarKind::vkUnsigned || Kind == TVarKind::vkBoolean;
}
bool VarIsFloat(const Variant& AValue) noexcept {
  const TVarKind Kind = VarKind(AValue);
  return Kind == TVarKind::vkSingle || Kind == TVarKind::vkDouble || Kind == TVarKind::vkCurrency;
}
bool VarIsNumeric(const Variant& AValue) noexcept {
  return VarIsOrdinal(AValue) || VarIsFloat(AValue);
}
bool VarIsStr(const Variant& AValue) noexcept { return IsTextKind(VarKind(AValue)); }

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

} // namespace lorvane
