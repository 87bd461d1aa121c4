// TValue's lenient conversions: the ToX helpers through the Variant rules, the text of
// enumerations and sets, and ToType across kinds.
#include "lorvane/types/LxTypes.h"

#include "lorvane/platform/Variants.h"

namespace lorvane {

namespace {

bool StartsWithDigit(std::u16string_view AText) noexcept {
  return !AText.empty() && AText[0] >= u'0' && AText[0] <= u'9';
}

/// "[a,b]", "a, b" or "a b": the names of a set's text form, brackets and blanks ignored.
bool ParseSetNames(std::u16string_view AText, const TLxTypeDescription& AElement, Int64& AMask) {
  const UnicodeString Trimmed = Trim(AText);
  std::u16string_view Rest = Trimmed;
  if (!Rest.empty() && Rest.front() == u'[')
    Rest.remove_prefix(1);
  if (!Rest.empty() && Rest.back() == u']')
    Rest.remove_suffix(1);
  UInt64 Mask = 0;
  while (!Rest.empty()) {
    const auto End = Rest.find_first_of(u", ");
    const std::u16string_view Name = Rest.substr(0, End);
    Rest.remove_prefix(End == std::u16string_view::npos ? Rest.size() : End + 1);
    if (Name.empty())
      continue;
    const Int64 Ordinal = AElement.GetEnumValue(Name);
    if (Ordinal < 0 || Ordinal >= 64)
      return false;
    Mask |= UInt64(1) << Ordinal;
  }
  AMask = static_cast<Int64>(Mask);
  return true;
}

UnicodeString SetText(Int64 AMask, const TLxTypeDescription* AElement) {
  UnicodeString Text = u"[";
  for (unsigned Ordinal = 0; Ordinal < 64; ++Ordinal)
    if ((static_cast<UInt64>(AMask) >> Ordinal) & 1) {
      if (Text.size() > 1)
        Text += u',';
      const UnicodeString Name = AElement ? AElement->GetEnumName(Ordinal) : UnicodeString();
      Text += Name.empty() ? IntToStr(Ordinal) : Name;
    }
  Text += u']';
  return Text;
}

} // namespace

// The value as a Variant for the number and truth conversions: an enumeration is its ordinal,
// a set its mask, a TValue its content.
Variant TValue::ConversionSource() const { return AsVariant(); }

template <class T> T TValue::ConvertedTo(TVarType AVarType, bool ARaise, T ADefault) const {
  try {
    const Variant Converted = VarAsType(ConversionSource(), AVarType);
    if constexpr (std::is_same_v<T, bool>)
      return Converted.AsBoolean();
    else if constexpr (std::is_floating_point_v<T>)
      return static_cast<T>(Converted.AsDouble());
    else if constexpr (std::is_same_v<T, UInt64>)
      return Converted.AsUInt64();
    else
      return static_cast<T>(Converted.AsInt64());
  } catch (const Exception&) {
    if (!ARaise)
      return ADefault;
    throw EConvertError(
        u"Cannot convert a value of type %s to %s",
        {FHandle ? LxTypeInfo()->GetName() : UnicodeString(u"(empty)"), VarTypeAsText(AVarType)});
  }
}

Byte TValue::ToByte(bool ARaise, Byte ADefault) const {
  return ConvertedTo<Byte>(varByte, ARaise, ADefault);
}
ShortInt TValue::ToShortInt(bool ARaise, ShortInt ADefault) const {
  return ConvertedTo<ShortInt>(varShortInt, ARaise, ADefault);
}
Word TValue::ToWord(bool ARaise, Word ADefault) const {
  return ConvertedTo<Word>(varWord, ARaise, ADefault);
}
SmallInt TValue::ToSmallInt(bool ARaise, SmallInt ADefault) const {
  return ConvertedTo<SmallInt>(varSmallint, ARaise, ADefault);
}
LongWord TValue::ToLongWord(bool ARaise, LongWord ADefault) const {
  return ConvertedTo<LongWord>(varLongWord, ARaise, ADefault);
}
Integer TValue::ToInteger(bool ARaise, Integer ADefault) const {
  return ConvertedTo<Integer>(varInteger, ARaise, ADefault);
}
Int64 TValue::ToInt64(bool ARaise, Int64 ADefault) const {
  return ConvertedTo<Int64>(varInt64, ARaise, ADefault);
}
UInt64 TValue::ToUInt64(bool ARaise, UInt64 ADefault) const {
  return ConvertedTo<UInt64>(varUInt64, ARaise, ADefault);
}
Single TValue::ToSingle(bool ARaise, Single ADefault) const {
  return ConvertedTo<Single>(varSingle, ARaise, ADefault);
}
Double TValue::ToDouble(bool ARaise, Double ADefault) const {
  return ConvertedTo<Double>(varDouble, ARaise, ADefault);
}
Extended TValue::ToExtended(bool ARaise, Extended ADefault) const {
  return ConvertedTo<Extended>(varDouble, ARaise, ADefault);
}
bool TValue::ToBoolean(bool ARaise, bool ADefault) const {
  return ConvertedTo<bool>(varBoolean, ARaise, ADefault);
}

UnicodeString TValue::ToWideString(bool ARaise, std::u16string_view ADefault) const {
  if (FHandle) {
    const TLxTypeDescription& Own = Description();
    switch (TypeKind()) {
    case ltkEnumeration: {
      const Int64 Ordinal = Own.Access().GetOrdinal(Data());
      const UnicodeString Name = Own.GetEnumName(Ordinal);
      return Name.empty() ? IntToStr(Ordinal) : Name;
    }
    case ltkSet: {
      const TLxTypeInfo* Element = Own.ElementType();
      return SetText(Own.Access().GetOrdinal(Data()),
                     Element ? Element->GetDescription() : nullptr);
    }
    default:
      if (LxIsTextKind(TypeKind()))
        return Own.Access().GetText(Data());
    }
  }
  try {
    return VarToStr(ConversionSource());
  } catch (const Exception&) {
    if (!ARaise)
      return UnicodeString(ADefault);
    throw EConvertError(u"Cannot convert a value of type %s to %s",
                        {FHandle ? LxTypeInfo()->GetName() : UnicodeString(u"(empty)"),
                         UnicodeString(u"UnicodeString")});
  }
}

bool TValue::ToType(TLxTypeHandle AHandle, TValue& AResult) const {
  // Converted apart: AResult may be this value, which the conversion still reads, and a failed
  // conversion leaves AResult as it was.
  TValue Converted;
  if (!ConvertTo(AHandle, Converted))
    return false;
  AResult = std::move(Converted);
  return true;
}

bool TValue::ConvertTo(TLxTypeHandle AHandle, TValue& AResult) const {
  if (!AHandle)
    return false;
  if (CastTo(AHandle, AResult))
    return true;
  const TLxTypeInfo* Target = TLxTypes::GetTypeInfo(AHandle);
  const TLxTypeDescription& To = *Target->GetDescription();
  const TLxValueAccess& Access = To.Access();
  // Empty becomes the target's zero (a nil object, 0, "").
  if (!FHandle) {
    if (!AHandle->Ops)
      return false;
    AResult = Make(nullptr, AHandle);
    return true;
  }
  if (FHandle == TypeHandle<TValue>())
    return static_cast<const TValue*>(Data())->ToType(AHandle, AResult);
  const TLxTypeKind Kind = TypeKind();
  const bool FromText = LxIsTextKind(Kind) || (Kind == ltkVariant && VarIsStr(AsVariant()));
  try {
    switch (const TLxTypeKind ToKind = Target->GetTypeKind()) {
    case ltkEnumeration: {
      Int64 Ordinal = -1;
      if (FromText) {
        const UnicodeString Text = ToWideString();
        Ordinal = StartsWithDigit(Text) ? StrToInt64Def(Text, -1) : To.GetEnumValue(Text);
      } else if (TLxTypes::ToMainTypeKind(Kind) == lmkInteger || Kind == ltkEnumeration)
        Ordinal = ToInt64();
      if (Ordinal < To.GetMinValue() || Ordinal > To.GetMaxValue())
        return false;
      AResult = FromOrdinal(AHandle, Ordinal);
      return true;
    }
    case ltkSet: {
      Int64 Mask = 0;
      if (FromText) {
        const UnicodeString Text = ToWideString();
        const TLxTypeInfo* Element = To.ElementType();
        if (StartsWithDigit(Text))
          Mask = StrToInt64(Text);
        else if (!Element || !ParseSetNames(Text, *Element->GetDescription(), Mask))
          return false;
      } else if (TLxTypes::ToMainTypeKind(Kind) == lmkInteger || Kind == ltkSet)
        Mask = ToInt64();
      else
        return false;
      // As for an enumeration, ordinals without a name are no members.
      if (const TLxTypeInfo* Element = To.ElementType()) {
        const Int64 Highest = Element->GetDescription()->GetMaxValue();
        if (Highest >= 0 && Highest < 63 && (static_cast<UInt64>(Mask) >> (Highest + 1)) != 0)
          return false;
      }
      AResult = FromOrdinal(AHandle, Mask);
      return true;
    }
    case ltkBoolean:
      AResult = From(ToBoolean());
      return true;
    default:
      if (ToKind >= ltkByte && ToKind <= ltkInt64) {
        if (LxIsComplexKind(Kind))
          return false;
        TValue Whole = ToKind == ltkUInt64 ? From(ToUInt64()) : From(ToInt64());
        return Whole.CastTo(AHandle, AResult);
      }
      if ((ToKind >= ltkSingle && ToKind <= ltkExtended) ||
          (ToKind >= ltkDate && ToKind <= ltkDateTime)) {
        if (LxIsComplexKind(Kind))
          return false;
        AResult = Make(nullptr, AHandle);
        Access.SetFloat(AResult.Data(), ToDouble());
        return true;
      }
      if (LxIsTextKind(ToKind)) {
        if (LxIsComplexKind(Kind) || Kind == ltkClassRef)
          return false;
        AResult = Make(nullptr, AHandle);
        Access.SetText(AResult.Data(), ToWideString());
        return true;
      }
      return false;
    }
  } catch (const Exception&) {
    return false;
  }
}

} // namespace lorvane
