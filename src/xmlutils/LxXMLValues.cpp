// Numbers and booleans to their XML Schema text and back, the Variant forms, and a Variant's text.
#include "lorvane/xmlutils/LxXMLValues.h"

#include "lorvane/xmlutils/LxXMLEscape.h"
#include "xmlutils/internal/VariantForms.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

namespace lorvane {

namespace xmlvalues {

[[noreturn]] void RaiseNotValid(std::u16string_view ATypeName) {
  throw EConvertError(u"The given value is not a valid " + UnicodeString(ATypeName) + u" value!");
}

} // namespace xmlvalues

using namespace xmlvalues;

namespace {

// Floats are read the same way whatever the system's regional settings say.
const TFormatSettings& XMLFloatSettings() noexcept {
  static const TFormatSettings Settings{u'.', u',', u'-', u':'};
  return Settings;
}

// The integer's 64 bits as the Variant holds them: unsigned for UInt64, signed otherwise.
UInt64 VariantIntegerBits(const Variant& AValue) {
  if (VarType(AValue) == varUInt64)
    return AValue.AsUInt64();
  return static_cast<UInt64>(AValue.AsInt64());
}

template <class T> T XMLToInteger(std::u16string_view AValue, bool AWide) {
  if (AValue.empty())
    return 0;
  if (AWide)
    return static_cast<T>(StrToInt64(AValue));
  return static_cast<T>(StrToInt(AValue));
}

template <class T> T XMLToIntegerDef(std::u16string_view AValue, T ADefault, bool AWide) noexcept {
  if (AValue.empty())
    return 0;
  if (AWide) {
    Int64 Value;
    return TryStrToInt64(AValue, Value) ? static_cast<T>(Value) : ADefault;
  }
  Integer Value;
  return TryStrToInt(AValue, Value) ? static_cast<T>(Value) : ADefault;
}

template <class T>
T VariantToInteger(const Variant& AValue, T ADefault, bool AWide, std::u16string_view AName) {
  if (VarIsNull(AValue))
    return ADefault;
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
    return static_cast<T>(VariantIntegerBits(AValue));
  case lmkString: {
    const UnicodeString Text = AValue.AsString();
    return AWide ? static_cast<T>(StrToInt64(Text)) : static_cast<T>(StrToInt(Text));
  }
  case lmkBoolean:
    return AValue.AsBoolean() ? 1 : 0;
  default:
    RaiseNotValid(AName);
  }
}

double XMLToFloat(std::u16string_view AValue) {
  if (AValue.empty())
    return 0;
  return StrToFloat(AValue, XMLFloatSettings());
}

double XMLToFloatDef(std::u16string_view AValue, double ADefault) noexcept {
  if (AValue.empty())
    return 0;
  double Value;
  return TryStrToFloat(AValue, Value, XMLFloatSettings()) ? Value : ADefault;
}

double VariantToFloat(const Variant& AValue, double ADefault, std::u16string_view AName) {
  if (VarIsNull(AValue))
    return ADefault;
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
  case lmkFloat:
    return AValue.AsDouble();
  case lmkString:
    return StrToFloat(AValue.AsString(), XMLFloatSettings());
  default:
    RaiseNotValid(AName);
  }
}

// The general format with 15 significant digits, as FloatToStr writes it with ASeparator as the
// point, built on the stack so that the result string is the only allocation.
std::size_t FormatGeneral15(double AValue, char16_t ASeparator, char16_t* AOut) noexcept {
  char16_t* Out = AOut;
  auto Put = [&Out](std::string_view AText) {
    for (char C : AText)
      *Out++ = static_cast<char16_t>(C);
  };
  if (std::isnan(AValue)) {
    Put("NAN");
    return Out - AOut;
  }
  if (std::isinf(AValue)) {
    Put(AValue < 0 ? "-INF" : "INF");
    return Out - AOut;
  }
  if (AValue == 0) {
    Put("0");
    return Out - AOut;
  }
  // "d.dddddddddddddde+XX": the 15 correctly rounded digits and the decimal exponent.
  char Buffer[40];
  const char* End =
      std::to_chars(Buffer, Buffer + sizeof Buffer, AValue, std::chars_format::scientific, 14).ptr;
  const char* P = Buffer;
  if (*P == '-') {
    *Out++ = u'-';
    ++P;
  }
  char Digits[15];
  int DigitCount = 0;
  for (; *P != 'e'; ++P)
    if (*P != '.')
      Digits[DigitCount++] = *P;
  int Exponent = 0;
  std::from_chars(P + (P[1] == '+' ? 2 : 1), End, Exponent);
  while (DigitCount > 1 && Digits[DigitCount - 1] == '0')
    --DigitCount;
  if (Exponent < -5 || Exponent >= 15) {
    *Out++ = static_cast<char16_t>(Digits[0]);
    if (DigitCount > 1) {
      *Out++ = ASeparator;
      Put(std::string_view(Digits + 1, DigitCount - 1));
    }
    *Out++ = u'E';
    char ExponentText[8];
    Put(std::string_view(ExponentText,
                         std::to_chars(ExponentText, ExponentText + 8, Exponent).ptr));
  } else if (Exponent < 0) {
    *Out++ = u'0';
    *Out++ = ASeparator;
    for (int I = 1; I < -Exponent; ++I)
      *Out++ = u'0';
    Put(std::string_view(Digits, DigitCount));
  } else {
    for (int I = 0; I <= Exponent; ++I)
      *Out++ = static_cast<char16_t>(I < DigitCount ? Digits[I] : '0');
    if (DigitCount > Exponent + 1) {
      *Out++ = ASeparator;
      Put(std::string_view(Digits + Exponent + 1, DigitCount - Exponent - 1));
    }
  }
  return Out - AOut;
}

} // namespace

// --- integers to text ----------------------------------------------------------------------------
UnicodeString LxShortIntToXML(ShortInt AValue) { return IntToStr(AValue); }
UnicodeString LxSmallIntToXML(SmallInt AValue) { return IntToStr(AValue); }
UnicodeString LxLongIntToXML(Integer AValue) { return IntToStr(AValue); }
UnicodeString LxIntToXML(Integer AValue) { return IntToStr(AValue); }
UnicodeString LxInt64ToXML(Int64 AValue) { return IntToStr(AValue); }
UnicodeString LxByteToXML(Byte AValue) { return IntToStr(AValue); }
UnicodeString LxWordToXML(Word AValue) { return IntToStr(AValue); }
UnicodeString LxLongWordToXML(Cardinal AValue) { return UIntToStr(AValue); }
UnicodeString LxCardinalToXML(Cardinal AValue) { return UIntToStr(AValue); }
UnicodeString LxUInt64ToXML(UInt64 AValue) { return IntToStr(static_cast<Int64>(AValue)); }

UnicodeString LxBoolToXML(bool AValue) { return AValue ? u"true" : u"false"; }

UnicodeString LxDoubleToXML(Double AValue) {
  char16_t Buffer[32];
  const std::size_t Length = FormatGeneral15(AValue, FormatSettings.DecimalSeparator, Buffer);
  // The system's separator is written first and then replaced, so that a separator that also
  // stands elsewhere in the text (a '-' say) is treated as the system would.
  for (std::size_t I = 0; I < Length; ++I)
    if (Buffer[I] == FormatSettings.DecimalSeparator) {
      Buffer[I] = u'.';
      break;
    }
  return UnicodeString(Buffer, Length);
}

UnicodeString LxExtToXML(Extended AValue) { return LxDoubleToXML(AValue); }

// --- integers from text --------------------------------------------------------------------------
// The flag says whether the strict parse has 64 bits; the name is the Variant failure's.
ShortInt LxXMLToShortint(std::u16string_view AValue) {
  return XMLToInteger<ShortInt>(AValue, /*AWide=*/false);
}
ShortInt LxXMLToShortintDef(std::u16string_view AValue, ShortInt ADefault) noexcept {
  return XMLToIntegerDef<ShortInt>(AValue, ADefault, /*AWide=*/false);
}
ShortInt LxXMLToShortint(const Variant& AValue, ShortInt ADefault) {
  return VariantToInteger<ShortInt>(AValue, ADefault, /*AWide=*/false, u"shortint");
}

SmallInt LxXMLToSmallint(std::u16string_view AValue) {
  return XMLToInteger<SmallInt>(AValue, /*AWide=*/false);
}
SmallInt LxXMLToSmallintDef(std::u16string_view AValue, SmallInt ADefault) noexcept {
  return XMLToIntegerDef<SmallInt>(AValue, ADefault, /*AWide=*/false);
}
SmallInt LxXMLToSmallint(const Variant& AValue, SmallInt ADefault) {
  return VariantToInteger<SmallInt>(AValue, ADefault, /*AWide=*/false, u"smallint");
}

Integer LxXMLToInt(std::u16string_view AValue) {
  return XMLToInteger<Integer>(AValue, /*AWide=*/false);
}
Integer LxXMLToIntDef(std::u16string_view AValue, Integer ADefault) noexcept {
  return XMLToIntegerDef<Integer>(AValue, ADefault, /*AWide=*/false);
}
Integer LxXMLToInt(const Variant& AValue, Integer ADefault) {
  return VariantToInteger<Integer>(AValue, ADefault, /*AWide=*/false, u"integer");
}

Int64 LxXMLToInt64(std::u16string_view AValue) {
  return XMLToInteger<Int64>(AValue, /*AWide=*/true);
}
Int64 LxXMLToInt64Def(std::u16string_view AValue, Int64 ADefault) noexcept {
  return XMLToIntegerDef<Int64>(AValue, ADefault, /*AWide=*/true);
}
Int64 LxXMLToInt64(const Variant& AValue, Int64 ADefault) {
  return VariantToInteger<Int64>(AValue, ADefault, /*AWide=*/true, u"integer");
}

Byte LxXMLToByte(std::u16string_view AValue) { return XMLToInteger<Byte>(AValue, /*AWide=*/false); }
Byte LxXMLToByteDef(std::u16string_view AValue, Byte ADefault) noexcept {
  return XMLToIntegerDef<Byte>(AValue, ADefault, /*AWide=*/false);
}
Byte LxXMLToByte(const Variant& AValue, Byte ADefault) {
  return VariantToInteger<Byte>(AValue, ADefault, /*AWide=*/false, u"Byte");
}

Word LxXMLToWord(std::u16string_view AValue) { return XMLToInteger<Word>(AValue, /*AWide=*/false); }
Word LxXMLToWordDef(std::u16string_view AValue, Word ADefault) noexcept {
  return XMLToIntegerDef<Word>(AValue, ADefault, /*AWide=*/false);
}
Word LxXMLToWord(const Variant& AValue, Word ADefault) {
  return VariantToInteger<Word>(AValue, ADefault, /*AWide=*/false, u"Word");
}

Cardinal LxXMLToLongword(std::u16string_view AValue) {
  return XMLToInteger<Cardinal>(AValue, /*AWide=*/false);
}
Cardinal LxXMLToLongwordDef(std::u16string_view AValue, Cardinal ADefault) noexcept {
  return XMLToIntegerDef<Cardinal>(AValue, ADefault, /*AWide=*/false);
}
Cardinal LxXMLToLongword(const Variant& AValue, Cardinal ADefault) {
  return VariantToInteger<Cardinal>(AValue, ADefault, /*AWide=*/false, u"LongWord");
}

UInt64 LxXMLToUInt64(std::u16string_view AValue) {
  return XMLToInteger<UInt64>(AValue, /*AWide=*/true);
}
UInt64 LxXMLToUInt64Def(std::u16string_view AValue, UInt64 ADefault) noexcept {
  return XMLToIntegerDef<UInt64>(AValue, ADefault, /*AWide=*/true);
}
UInt64 LxXMLToUInt64(const Variant& AValue, UInt64 ADefault) {
  return VariantToInteger<UInt64>(AValue, ADefault, /*AWide=*/true, u"integer");
}

// --- floats from text ----------------------------------------------------------------------------
Single LxXMLToSingle(std::u16string_view AValue) { return static_cast<Single>(XMLToFloat(AValue)); }
Single LxXMLToSingleDef(std::u16string_view AValue, Single ADefault) noexcept {
  return static_cast<Single>(XMLToFloatDef(AValue, ADefault));
}
Single LxXMLToSingle(const Variant& AValue, Single ADefault) {
  return static_cast<Single>(VariantToFloat(AValue, ADefault, u"Single"));
}
Double LxXMLToDouble(std::u16string_view AValue) { return XMLToFloat(AValue); }
Double LxXMLToDoubleDef(std::u16string_view AValue, Double ADefault) noexcept {
  return XMLToFloatDef(AValue, ADefault);
}
Double LxXMLToDouble(const Variant& AValue, Double ADefault) {
  return VariantToFloat(AValue, ADefault, u"Double");
}
Extended LxXMLToExtended(std::u16string_view AValue) { return XMLToFloat(AValue); }
Extended LxXMLToExtendedDef(std::u16string_view AValue, Extended ADefault) noexcept {
  return XMLToFloatDef(AValue, ADefault);
}
Extended LxXMLToExtended(const Variant& AValue, Extended ADefault) {
  return VariantToFloat(AValue, ADefault, u"Extended");
}

// --- booleans ------------------------------------------------------------------------------------
bool LxXMLToBool(std::u16string_view AValue) noexcept {
  return AValue == u"1" || SameText(AValue, u"true");
}

bool LxXMLToBool(const Variant& AValue, bool ADefault) {
  if (VarIsNull(AValue))
    return ADefault;
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
    return (VariantIntegerBits(AValue) & 0xFF) != 0;
  case lmkString:
    return LxXMLToBool(AValue.AsString());
  case lmkBoolean:
    return AValue.AsBoolean();
  default:
    RaiseNotValid(u"Boolean");
  }
}

// --- a Variant's text ----------------------------------------------------------------------------
UnicodeString LxXMLToStr(const Variant& AValue, std::u16string_view ADefault) {
  if (VarIsNull(AValue))
    return UnicodeString(ADefault);
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
    return IntToStr(static_cast<Int64>(VariantIntegerBits(AValue)));
  case lmkFloat:
    return LxDoubleToXML(AValue.AsDouble());
  case lmkString:
    return LxXMLToStr(std::u16string_view(AValue.AsString()));
  case lmkBoolean:
    return LxBoolToXML(AValue.AsBoolean());
  case lmkDateTime:
    return LxDateTimeToXML(AValue.AsDateTime(), tzfNone);
  case lmkArray:
    if (VarArrayDimCount(AValue) == 1) {
      UnicodeString Result;
      const Integer High = VarArrayHighBound(AValue, 1);
      for (Integer I = VarArrayLowBound(AValue, 1); I <= High; ++I) {
        Result += LxXMLToStr(std::u16string_view(VarToStr(VarArrayGet(AValue, I))));
        Result += u"\r\n";
      }
      return Result;
    }
    break;
  default:
    break;
  }
  RaiseNotValid(u"String");
}

} // namespace lorvane
