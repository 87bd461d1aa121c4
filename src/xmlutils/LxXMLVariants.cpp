// Variant and TValue values to their text in a document and back, arrays included.
#include "lorvane/xmlutils/LxXMLVariants.h"

#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/core/LxEncoding.h"
#include "lorvane/xmlutils/LxXMLEscape.h"
#include "lorvane/xmlutils/LxXMLValues.h"

#include <utility>

namespace lorvane {

namespace {

constexpr std::u16string_view ArrayOpen = u"<array length=\"";
constexpr std::u16string_view ElementOpen = u"<element";

bool StartsWithDigit(std::u16string_view AText) noexcept {
  return !AText.empty() && AText[0] >= u'0' && AText[0] <= u'9';
}

// --- arrays ----------------------------------------------------------------------------------
UnicodeString BytesToHex(const Variant& AArray) {
  static constexpr char16_t Digits[] = u"0123456789ABCDEF";
  const Integer High = VarArrayHighBound(AArray, 1);
  UnicodeString Result;
  Result.reserve(High >= 0 ? static_cast<std::size_t>(High + 1) * 2 : 0);
  for (Integer Index = 0; Index <= High; ++Index) {
    const Byte Value = static_cast<Byte>(VarArrayGet(AArray, Index).AsInteger());
    Result += Digits[Value >> 4];
    Result += Digits[Value & 0x0F];
  }
  return Result;
}

UnicodeString ArrayToElements(const Variant& AArray) {
  const Integer High = VarArrayHighBound(AArray, 1);
  UnicodeString Markup(ArrayOpen);
  Markup += IntToStr(Int64{High} + 1);
  Markup += u"\">";
  for (Integer Index = 0; Index <= High; ++Index) {
    Markup += u"<element nr=\"";
    Markup += IntToStr(Index);
    Markup += u"\">";
    Markup += LxVariantToXML(VarArrayGet(AArray, Index));
    Markup += u"</element>";
  }
  Markup += u"</array>";
  // A tree holds the whole form as one text value, so its markup must not read as markup.
  return LxStrToXML(Markup, /*AEscapeApos=*/true, /*AEscapeQuote=*/true);
}

Variant HexToBytes(std::u16string_view AValue) {
  const UnicodeString Text = Trim(AValue);
  if (Text.empty())
    return Null();
  const Integer Count = static_cast<Integer>(Text.size() / 2);
  Variant Result = VarArrayCreate({0, Count - 1}, varByte);
  for (Integer Index = 0; Index < Count; ++Index) {
    UnicodeString Pair(u"$");
    Pair.append(Text, static_cast<std::size_t>(Index) * 2, 2);
    VarArrayPut(Result, Variant(static_cast<Byte>(StrToInt(Pair))), Index);
  }
  return Result;
}

Variant ElementsToArray(std::u16string_view AValue, TVarType AVarType) {
  const UnicodeString Text = LxXMLToStr(AValue);
  std::u16string_view Rest = Text;

  // The length stands between the first two double quotes.
  std::u16string_view Length;
  if (const auto Open = Rest.find(u'"'); Open != std::u16string_view::npos) {
    const auto Close = Rest.find(u'"', Open + 1);
    Length = Rest.substr(Open + 1, Close == std::u16string_view::npos ? Close : Close - Open - 1);
  }
  const Integer Count = StrToInt(Length);

  TVarType ElementType = AVarType & ~varArray;
  // Arrays hold no byte or Unicode strings of their own: strings travel as wide strings.
  if (ElementType == varString || ElementType == varUString)
    ElementType = varOleStr;
  Variant Result = VarArrayCreate({0, Count - 1}, ElementType);

  auto CutBehind = [&Rest](char16_t AMark) {
    const auto At = Rest.find(AMark);
    Rest.remove_prefix(At == std::u16string_view::npos ? Rest.size() : At + 1);
  };
  CutBehind(u'>');
  for (Integer Index = 0; Rest.starts_with(ElementOpen); ++Index) {
    CutBehind(u'>');
    const std::u16string_view Piece = Rest.substr(0, Rest.find(u'<'));
    VarArrayPut(Result, LxXMLToVariant(Piece, ElementType), Index);
    const auto Next = Rest.find(ElementOpen);
    if (Next == std::u16string_view::npos)
      break;
    Rest.remove_prefix(Next);
  }
  return Result;
}

// --- values ----------------------------------------------------------------------------------
[[noreturn]] void RaiseNotConverted(std::u16string_view AValue, const TLxTypeInfo& AInfo) {
  throw Exception(u"Failed to convert the value \"%s\" to a value of type %s!",
                  {UnicodeString(AValue), AInfo.GetName()});
}

[[noreturn]] void RaiseNotSupported(std::u16string_view AValue, const TLxTypeInfo& AInfo) {
  throw Exception(u"Failed to convert \"%s\" into a TValue!\r\nThe type %s is not supported.",
                  {UnicodeString(AValue), AInfo.GetName()});
}

// A zero value of the wanted type, then set through the type's own access: this keeps the exact
// type (a TDate, a marker date, a character) that a conversion through a wider type might lose.
TValue FloatValue(std::u16string_view AValue, const TLxTypeInfo& AInfo, double AFloat) {
  const TLxValueAccess& Access = AInfo.GetDescription()->Access();
  if (!Access.SetFloat)
    RaiseNotSupported(AValue, AInfo);
  TValue Result = TValue::Make(nullptr, AInfo.GetHandle());
  Access.SetFloat(Result.GetReferenceToRawData(), AFloat);
  return Result;
}

TValue TextValue(std::u16string_view AValue, const TLxTypeInfo& AInfo, std::u16string_view AText) {
  const TLxValueAccess& Access = AInfo.GetDescription()->Access();
  if (!Access.SetText)
    RaiseNotSupported(AValue, AInfo);
  TValue Result = TValue::Make(nullptr, AInfo.GetHandle());
  Access.SetText(Result.GetReferenceToRawData(), AText);
  return Result;
}

TValue EnumerationValue(std::u16string_view AValue, const TLxTypeInfo& AInfo) {
  TValue Source;
  if (StartsWithDigit(AValue))
    Source = TValue::From(UnicodeString(AValue));
  else
    Source = TValue::From(static_cast<Integer>(AInfo.GetDescription()->GetEnumValue(AValue)));
  TValue Result;
  if (!Source.ToType(AInfo.GetHandle(), Result))
    RaiseNotConverted(AValue, AInfo);
  return Result;
}

TValue SetValue(std::u16string_view AValue, const TLxTypeInfo& AInfo) {
  if (StartsWithDigit(AValue))
    return TValue::FromOrdinal(AInfo.GetHandle(), StrToInt(AValue));
  // The names are looked up as TValue's conversion of a set's text form does.
  TValue Result;
  if (!TValue::From(UnicodeString(AValue)).ToType(AInfo.GetHandle(), Result))
    RaiseNotConverted(AValue, AInfo);
  return Result;
}

} // namespace

UnicodeString LxVariantToXML(const Variant& AValue) {
  const TVarType Type = VarType(AValue);
  switch (Type) {
  case varEmpty:
  case varNull:
    return UnicodeString();
  case varSmallint:
  case varInteger:
  case varShortInt:
  case varByte:
  case varWord:
    return LxIntToXML(AValue.AsInteger());
  case varLongWord:
    // The LongWord reading is signed: the same bits as an Integer read back whole.
    return LxIntToXML(static_cast<Integer>(static_cast<Cardinal>(AValue.AsUInt64())));
  case varSingle:
  case varDouble:
  case varCurrency:
    return LxDoubleToXML(AValue.AsDouble());
  case varDate:
    return LxDateTimeToXML(AValue.AsDateTime(), tzfNone);
  case varOleStr:
  case varString:
  case varUString:
    return LxStrToXML(AValue.AsString(), /*AEscapeApos=*/true, /*AEscapeQuote=*/true);
  case varBoolean:
    return LxBoolToXML(AValue.AsBoolean());
  case varInt64:
    return LxInt64ToXML(AValue.AsInt64());
  case varArray | varByte:
    return BytesToHex(AValue);
  default:
    if (Type & varArray)
      return ArrayToElements(AValue);
    throw Exception(u"LxVariantToXml; invalid variant type %d!", {Integer{Type}});
  }
}

Variant LxXMLToVariant(std::u16string_view AValue, TLxTypeKind AKind) {
  switch (AKind) {
  case ltkByte:
    return LxXMLToByte(AValue);
  case ltkWord:
    return LxXMLToWord(AValue);
  case ltkLongWord:
    return LxXMLToLongword(AValue);
  case ltkUInt64:
    return LxXMLToUInt64(AValue);
  case ltkShortInt:
    return LxXMLToShortint(AValue);
  case ltkSmallInt:
    return LxXMLToSmallint(AValue);
  case ltkInteger:
  case ltkEnumeration:
  case ltkSet:
    return LxXMLToInt(AValue);
  case ltkInt64:
    return LxXMLToInt64(AValue);
  case ltkSingle:
    return Double{LxXMLToSingle(AValue)};
  case ltkDouble:
    return LxXMLToDouble(AValue);
  case ltkExtended:
    return Double{LxXMLToExtended(AValue)};
  case ltkText0:
  case ltkText1:
  case ltkText2:
  case ltkText3:
  case ltkText4:
  case ltkText5:
    return LxXMLToStr(AValue);
  case ltkBoolean:
    return LxXMLToBool(AValue);
  case ltkDate:
    return LxXMLToDate(AValue);
  case ltkTime:
    return LxXMLToTime(AValue, tzfNone);
  case ltkDateTime:
    return LxXMLToDateTime(AValue, tzfNone);
  case ltkVariant:
    return UnicodeString(AValue);
  default:
    throw Exception(u"Failed to convert the value \"%s\" to a variant value of type %s!",
                    {UnicodeString(AValue), UnicodeString(LxTypeKindName(AKind))});
  }
}

Variant LxXMLToVariant(std::u16string_view AValue, TVarType AVarType) {
  switch (AVarType) {
  case varEmpty:
    return Unassigned();
  case varNull:
    return Null();
  case varSmallint:
    return LxXMLToSmallint(AValue);
  case varInteger:
  case varDecimal:
    return LxXMLToInt(AValue);
  case varSingle:
    return LxXMLToSingle(AValue);
  case varDouble:
    return LxXMLToDouble(AValue);
  case varCurrency:
    return Double{LxXMLToExtended(AValue)};
  case varDate:
    return LxXMLToDateTime(AValue, tzfNone);
  case varOleStr:
  case varString:
  case varUString:
    return LxXMLToStr(AValue);
  case varBoolean:
    return LxXMLToBool(AValue);
  case varVariant:
  case varUnknown:
    return UnicodeString(AValue);
  // Through the Variant forms, which read text strictly: "" raises there.
  case varShortInt:
    return LxXMLToShortint(Variant(AValue), 0);
  case varByte:
    return LxXMLToByte(Variant(AValue), 0);
  case varWord:
    return LxXMLToWord(Variant(AValue), 0);
  case varLongWord:
    return LxXMLToLongword(Variant(AValue), 0);
  case varInt64:
    return LxXMLToInt64(Variant(AValue), 0);
  case varArray | varByte:
    return HexToBytes(AValue);
  default:
    if ((AVarType & varArray) && !AValue.empty())
      return ElementsToArray(AValue, AVarType);
    throw Exception(u"LxXMLToVariant(%s); Unsupported VarType", {UnicodeString(AValue)});
  }
}

Variant LxXMLToVariant(std::u16string_view AValue, std::u16string_view ATypeName) {
  return LxXMLToVariant(AValue, TLxTypes::GetVarType(ATypeName, ltnQualified, varUnknown));
}

UnicodeString LxValToXML(const TValue& AValue) {
  switch (AValue.GetTypeKind()) {
  case tkVariant:
    return LxVariantToXML(AValue.AsVariant());
  case tkArray:
  case tkDynArray:
  case tkRecord:
  case tkClass: {
    return UTF8ToString(LxSerializeValue(ldsXML, AValue));
  }
  case tkChar:
  case tkWChar:
  case tkString:
  case tkLString:
  case tkWString:
  case tkUString:
    return LxStrToXML(AValue.ToWideString(true, u""), /*AEscapeApos=*/true,
                      /*AEscapeQuote=*/true);
  case tkEnumeration: {
    const TLxTypeDescription& Description = *AValue.LxTypeInfo()->GetDescription();
    const Int64 Ordinal = AValue.AsOrdinal();
    if (Ordinal >= Description.GetMinValue() && Ordinal <= Description.GetMaxValue())
      return AValue.ToWideString(true, u"");
    return Description.GetEnumName(Description.GetMinValue());
  }
  default:
    // Integers, floats, sets and all else: the value's own text.
    return AValue.ToWideString(true, u"");
  }
}

TValue LxXMLToValue(std::u16string_view AValue, TLxTypeHandle AHandle) {
  if (!AHandle)
    throw EArgumentException(UnicodeString(u"No type given"));
  const TLxTypeInfo& Info = *TLxTypes::GetTypeInfo(AHandle);
  switch (Info.GetTypeKind()) {
  case ltkByte:
    return TValue::FromOrdinal(AHandle, LxXMLToByte(AValue));
  case ltkWord:
    return TValue::FromOrdinal(AHandle, LxXMLToWord(AValue));
  case ltkLongWord:
    return TValue::FromOrdinal(AHandle, LxXMLToLongword(AValue));
  case ltkUInt64:
    return TValue::FromOrdinal(AHandle, static_cast<Int64>(LxXMLToUInt64(AValue)));
  case ltkShortInt:
    return TValue::FromOrdinal(AHandle, LxXMLToShortint(AValue));
  case ltkSmallInt:
    return TValue::FromOrdinal(AHandle, LxXMLToSmallint(AValue));
  case ltkInteger:
    return TValue::FromOrdinal(AHandle, LxXMLToInt(AValue));
  case ltkInt64:
    return TValue::FromOrdinal(AHandle, LxXMLToInt64(AValue));
  case ltkSingle:
    return FloatValue(AValue, Info, LxXMLToSingle(AValue));
  case ltkDouble:
    return FloatValue(AValue, Info, LxXMLToDouble(AValue));
  case ltkExtended:
    return FloatValue(AValue, Info, LxXMLToExtended(AValue));
  case ltkText0:
  case ltkText2:
    return TextValue(AValue, Info, AValue.substr(0, 1));
  case ltkText1: {
    // A byte character holds a byte of the default code page.
    const RawByteString Bytes = TLxEncoding::ConvertW(AValue, 0);
    return TValue::FromOrdinal(AHandle, Bytes.empty() ? 0 : static_cast<Byte>(Bytes[0]));
  }
  case ltkText3:
  case ltkText5:
    return TextValue(AValue, Info, LxXMLToStr(AValue));
  case ltkText4:
    // The 8-bit string type holds UTF-8, so the decoded text goes in whole.
    return TextValue(AValue, Info, LxXMLToStr(AValue));
  case ltkBoolean:
    return TValue::FromOrdinal(AHandle, LxXMLToBool(AValue) ? 1 : 0);
  case ltkEnumeration:
    return EnumerationValue(AValue, Info);
  case ltkSet:
    return SetValue(AValue, Info);
  case ltkDate:
    return FloatValue(AValue, Info, LxXMLToDate(AValue));
  case ltkTime:
    return FloatValue(AValue, Info, LxXMLToTime(AValue, tzfNone));
  case ltkDateTime:
    return FloatValue(AValue, Info, LxXMLToDateTime(AValue, tzfNone));
  case ltkVariant: {
    TValue Result;
    if (!TValue::From(LxXMLToVariant(AValue, varString)).ToType(AHandle, Result))
      RaiseNotSupported(AValue, Info);
    return Result;
  }
  default:
    RaiseNotSupported(AValue, Info);
  }
}

TValue LxXMLToValue(std::u16string_view AValue, std::u16string_view ATypeName) {
  return LxXMLToValue(
      AValue,
      TLxTypes::GetTypeInfo(ATypeName, ltnQualified, /*ARaiseIfNotFound=*/true)->GetHandle());
}

} // namespace lorvane
