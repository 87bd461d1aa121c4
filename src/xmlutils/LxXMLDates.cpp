// Dates, times and durations to their XML Schema text and back, with the local zone.
#include "lorvane/xmlutils/LxXMLValues.h"

#include "xmlutils/internal/VariantForms.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace lorvane {

using namespace xmlvalues;

namespace {

TLxTimeZoneFormat ToZoneFormat(TLxXMLDateTimeFormat AFormat) noexcept {
  switch (AFormat) {
  case xdtfUTC:
    return tzfUTC;
  case xdtfTimezone:
    return tzfTimezone;
  default:
    return tzfNone;
  }
}

// Text is put together on the stack so that the result string is the only allocation.
class TextBuilder {
public:
  void Put(char16_t AChar) noexcept { FBuffer[FLength++] = AChar; }
  void Put(std::u16string_view AText) noexcept {
    for (char16_t C : AText)
      FBuffer[FLength++] = C;
  }
  /// Decimal digits, padded on the left with '0' to AWidth; a longer number stands in full.
  void PutNumber(UInt64 AValue, int AWidth = 0) noexcept {
    char16_t Digits[20];
    int Count = 0;
    do {
      Digits[Count++] = static_cast<char16_t>(u'0' + AValue % 10);
      AValue /= 10;
    } while (AValue != 0);
    for (int I = Count; I < AWidth; ++I)
      FBuffer[FLength++] = u'0';
    while (Count > 0)
      FBuffer[FLength++] = Digits[--Count];
  }
  /// A signed number, for parts of a duration built by hand with negative fields.
  void PutSigned(Int64 AValue) noexcept {
    if (AValue < 0)
      Put(u'-');
    PutNumber(AValue < 0 ? 0 - static_cast<UInt64>(AValue) : static_cast<UInt64>(AValue));
  }
  UnicodeString Text() const { return UnicodeString(FBuffer, FLength); }

private:
  // Room for the longest duration: seven 20-digit parts with their designators and signs.
  char16_t FBuffer[176];
  std::size_t FLength = 0;
};

void PutDate(TextBuilder& AText, Word AYear, Word AMonth, Word ADay) noexcept {
  AText.PutNumber(AYear, 4);
  AText.Put(u'-');
  AText.PutNumber(AMonth, 2);
  AText.Put(u'-');
  AText.PutNumber(ADay, 2);
}

void PutTime(TextBuilder& AText, Word AHour, Word AMin, Word ASec) noexcept {
  AText.PutNumber(AHour, 2);
  AText.Put(u':');
  AText.PutNumber(AMin, 2);
  AText.Put(u':');
  AText.PutNumber(ASec, 2);
}

void PutZone(TextBuilder& AText, TDateTime AValue) {
  Integer Total;
  Word Hours, Minutes;
  LxCalcTimeZoneOffset(AValue, Total, Hours, Minutes);
  AText.Put(Total < 0 ? u'-' : u'+');
  AText.PutNumber(Hours, 2);
  AText.Put(u':');
  AText.PutNumber(Minutes, 2);
}

// --- decoding ------------------------------------------------------------------------------------
class DateTimeScanner {
public:
  explicit DateTimeScanner(std::u16string_view AText) : FWhole(AText) {
    std::size_t Begin = 0, End = AText.size();
    while (Begin < End && AText[Begin] <= u' ')
      ++Begin;
    while (End > Begin && AText[End - 1] <= u' ')
      --End;
    FText = AText.substr(Begin, End - Begin);
  }

  bool AtEnd() const noexcept { return FPos == FText.size(); }
  char16_t Peek(std::size_t AAhead = 0) const noexcept {
    return FPos + AAhead < FText.size() ? FText[FPos + AAhead] : 0;
  }
  bool Skip(char16_t AChar) noexcept {
    if (Peek() != AChar)
      return false;
    ++FPos;
    return true;
  }
  void Expect(char16_t AChar) {
    if (!Skip(AChar))
      Fail();
  }
  std::size_t DigitsAhead() const noexcept {
    std::size_t Count = 0;
    while (IsDigit(Peek(Count)))
      ++Count;
    return Count;
  }
  /// Exactly ACount digits, or AMinCount up to AMaxCount; the value must fit in 16 bits.
  Word Number(std::size_t AMinCount, std::size_t AMaxCount) {
    const std::size_t Count = DigitsAhead();
    if (Count < AMinCount || Count > AMaxCount)
      Fail();
    UInt64 Value = 0;
    for (std::size_t I = 0; I < Count; ++I)
      Value = Value * 10 + (FText[FPos++] - u'0');
    if (Value > 0xFFFF)
      Fail();
    return static_cast<Word>(Value);
  }
  /// The first three digits of a fraction as milliseconds; further digits are passed over.
  Word Milliseconds() {
    const std::size_t Count = DigitsAhead();
    if (Count == 0)
      Fail();
    Word Value = 0;
    for (std::size_t I = 0; I < 3; ++I)
      Value = static_cast<Word>(Value * 10 + (I < Count ? FText[FPos + I] - u'0' : 0));
    FPos += Count;
    return Value;
  }
  [[noreturn]] void Fail() const {
    throw EConvertError(u"'" + UnicodeString(FWhole) + u"' is not a valid XML date and time");
  }

private:
  static bool IsDigit(char16_t AChar) noexcept { return AChar >= u'0' && AChar <= u'9'; }
  std::u16string_view FWhole, FText;
  std::size_t FPos = 0;
};

void ScanTime(DateTimeScanner& AScan, TLxDateTimeParts& AParts) {
  AParts.HasTime = true;
  AParts.Hour = AScan.Number(2, 2);
  AScan.Expect(u':');
  AParts.Minute = AScan.Number(2, 2);
  AScan.Expect(u':');
  AParts.Second = AScan.Number(2, 2);
  if (AScan.Skip(u'.'))
    AParts.MSec = AScan.Milliseconds();
}

// --- reading -------------------------------------------------------------------------------------
bool IsZeroText(std::u16string_view AValue) noexcept { return AValue.empty() || AValue == u"0"; }

// Converts a value read with the parts' zone to what AFormat asks for: UTC for tzfUTC, local
// time otherwise.
TDateTime ApplyZone(TDateTime AValue, const TLxDateTimeParts& AParts, TLxTimeZoneFormat AFormat) {
  switch (AParts.TimeZone) {
  case tzfTimezone:
    AValue = IncMinute(AValue, -Int64{AParts.OffsetMinutes});
    break;
  case tzfUTC:
    break;
  default:
    if (AFormat != tzfNone)
      throw Exception(u"The XMLDateTime value did not contain timezone information!");
    return AValue;
  }
  return AFormat == tzfUTC ? AValue : LxUTCToLocal(AValue);
}

[[noreturn]] void RaiseNotDuration(std::u16string_view AValue) {
  throw Exception(Format(u"LxXMLToDuration; The provided argument (%s) is not a valid duration!",
                         {UnicodeString(AValue)}));
}

} // namespace

// --- foundation ----------------------------------------------------------------------------------
TLxXMLDateTimeFormat LxXMLDateTimeFormat(const TLxDateTimeParts& AParts) noexcept {
  switch (AParts.TimeZone) {
  case tzfTimezone:
    return xdtfTimezone;
  case tzfUTC:
    return xdtfUTC;
  default:
    return xdtfLocal;
  }
}

TLxDateTimeParts LxDecodeISODateTime(std::u16string_view AValue) {
  TLxDateTimeParts Parts;
  DateTimeScanner Scan(AValue);
  Parts.Negative = Scan.Skip(u'-');
  const std::size_t Digits = Scan.DigitsAhead();
  if (Scan.Peek(Digits) == u'-') {
    Parts.HasDate = true;
    Parts.Year = Scan.Number(4, 5);
    Scan.Expect(u'-');
    Parts.Month = Scan.Number(2, 2);
    Scan.Expect(u'-');
    Parts.Day = Scan.Number(2, 2);
    if (Scan.Skip(u'T'))
      ScanTime(Scan, Parts);
  } else if (Scan.Peek(Digits) == u':') {
    ScanTime(Scan, Parts);
  } else {
    Scan.Fail();
  }
  if (Scan.Skip(u'Z')) {
    Parts.TimeZone = tzfUTC;
  } else if (Scan.Peek() == u'+' || Scan.Peek() == u'-') {
    const bool West = Scan.Peek() == u'-';
    Scan.Skip(Scan.Peek());
    const Word Hours = Scan.Number(2, 2);
    Scan.Expect(u':');
    const Word Minutes = Scan.Number(2, 2);
    if (Hours > 23 || Minutes > 59)
      Scan.Fail();
    const int Total = Hours * 60 + Minutes;
    Parts.TimeZone = tzfTimezone;
    Parts.OffsetMinutes = static_cast<SmallInt>(West ? -Total : Total);
  }
  if (!Scan.AtEnd())
    Scan.Fail();
  return Parts;
}

TLxDateTimeParts LxDecodeXMLDateTime(std::u16string_view AValue) {
  return LxDecodeISODateTime(AValue);
}

TLxDuration LxEncodeDuration(Word AYears, Word AMonths, Word ADays, Word AHours, Word AMinutes,
                             Word ASeconds, Word AMilliseconds, bool ANegative) noexcept {
  TLxDuration Result;
  Result.Negative = ANegative;
  Result.Months = Integer{AYears} * 12 + AMonths;
  const Int64 WholeSeconds =
      Int64{ADays} * 86400 + Int64{AHours} * 3600 + Int64{AMinutes} * 60 + ASeconds;
  Result.Seconds = static_cast<double>(WholeSeconds) + AMilliseconds / 1000.0;
  return Result;
}

void LxCalcTimeZoneOffset(TDateTime AValue, Integer& ATotal, Word& AHours, Word& AMinutes) {
  ATotal = LocalUTCOffsetMinutes(LocalToUTC(AValue));
  const Integer Magnitude = ATotal < 0 ? -ATotal : ATotal;
  AHours = static_cast<Word>(Magnitude / 60);
  AMinutes = static_cast<Word>(Magnitude % 60);
}

TDateTime LxLocalToUTC(TDateTime AValue) { return LocalToUTC(AValue); }
TDateTime LxUTCToLocal(TDateTime AValue) { return UTCToLocal(AValue); }

// --- to text -------------------------------------------------------------------------------------
UnicodeString LxDateToXML(TDateTime AValue, TLxTimeZoneFormat AFormat) {
  TextBuilder Text;
  Word Year, Month, Day;
  DecodeDate(AFormat == tzfUTC ? LxLocalToUTC(AValue) : AValue, Year, Month, Day);
  PutDate(Text, Year, Month, Day);
  if (AFormat == tzfUTC)
    Text.Put(u'Z');
  else if (AFormat == tzfTimezone)
    PutZone(Text, AValue);
  return Text.Text();
}

UnicodeString LxTimeToXML(TDateTime AValue, TLxTimeZoneFormat AFormat) {
  TextBuilder Text;
  Word Hour, Min, Sec, MSec;
  DecodeTime(AFormat == tzfUTC ? LxLocalToUTC(AValue) : AValue, Hour, Min, Sec, MSec);
  PutTime(Text, Hour, Min, Sec);
  Text.Put(u'.');
  Text.PutNumber(MSec, 3);
  if (AFormat == tzfUTC)
    Text.Put(u'Z');
  else if (AFormat == tzfTimezone)
    PutZone(Text, AValue);
  return Text.Text();
}

UnicodeString LxDateTimeToXML(TDateTime AValue, TLxTimeZoneFormat AFormat) {
  TextBuilder Text;
  Word Year, Month, Day, Hour, Min, Sec, MSec;
  DecodeDateTime(AFormat == tzfUTC ? LxLocalToUTC(AValue) : AValue, Year, Month, Day, Hour, Min,
                 Sec, MSec);
  PutDate(Text, Year, Month, Day);
  Text.Put(u'T');
  PutTime(Text, Hour, Min, Sec);
  if (AFormat == tzfUTC) {
    Text.Put(u'Z');
  } else {
    Text.Put(u'.');
    Text.PutNumber(MSec, 3);
    if (AFormat == tzfTimezone)
      PutZone(Text, AValue);
  }
  return Text.Text();
}

UnicodeString LxDateToXML(TDateTime AValue, TLxXMLDateTimeFormat AFormat) {
  return LxDateToXML(AValue, ToZoneFormat(AFormat));
}
UnicodeString LxTimeToXML(TDateTime AValue, TLxXMLDateTimeFormat AFormat) {
  return LxTimeToXML(AValue, ToZoneFormat(AFormat));
}
UnicodeString LxDateTimeToXML(TDateTime AValue, TLxXMLDateTimeFormat AFormat) {
  return LxDateTimeToXML(AValue, ToZoneFormat(AFormat));
}

UnicodeString LxDurationToXML(const TLxDuration& AValue) {
  const Int64 Years = AValue.Months / 12, Months = AValue.Months % 12;
  // The text keeps milliseconds, so the seconds round to the nearest one. The whole seconds and
  // their fraction are both exact in a double and only the fraction is scaled, so the rounding
  // error stays below a millisecond's share however long the duration: 1 + 0.005 is 1.005, and
  // forty million days get no stray fraction.
  const double Magnitude = std::fabs(AValue.Seconds);
  if (!std::isfinite(Magnitude) || Magnitude * 1000 >= 9.2e18)
    throw EConvertError(u"LxDurationToXML; The seconds of the duration are out of range!");
  const double WholeSeconds = std::floor(Magnitude);
  const Int64 TotalMSecs =
      static_cast<Int64>(WholeSeconds) * 1000 + std::llround((Magnitude - WholeSeconds) * 1000);
  const Int64 Whole = TotalMSecs / 1000, MSec = TotalMSecs % 1000;
  const Int64 Days = Whole / 86400, Hours = Whole % 86400 / 3600, Minutes = Whole % 3600 / 60,
              Seconds = Whole % 60;
  // Seconds below zero come only from a duration built by hand; each of their parts is signed.
  const bool NegativeSeconds = AValue.Seconds < 0;

  TextBuilder Text;
  Text.Put(AValue.Negative ? u"-P" : u"P");
  if (Years == 0 && Months == 0 && Days == 0 && Hours == 0 && Minutes == 0 && Seconds == 0 &&
      MSec == 0) {
    Text.Put(u"0Y");
    return Text.Text();
  }
  auto PutPart = [&Text](Int64 APart, char16_t ADesignator) {
    if (APart != 0) {
      Text.PutSigned(APart);
      Text.Put(ADesignator);
    }
  };
  const Int64 Sign = NegativeSeconds ? -1 : 1;
  PutPart(Years, u'Y');
  PutPart(Months, u'M');
  PutPart(Sign * Days, u'D');
  if (Hours != 0 || Minutes != 0 || Seconds != 0 || MSec != 0) {
    Text.Put(u'T');
    PutPart(Sign * Hours, u'H');
    PutPart(Sign * Minutes, u'M');
    if (MSec != 0) {
      if (NegativeSeconds)
        Text.Put(u'-');
      Text.PutNumber(static_cast<UInt64>(Seconds));
      Text.Put(u'.');
      Int64 Fraction = MSec;
      int Width = 3;
      while (Fraction % 10 == 0) {
        Fraction /= 10;
        --Width;
      }
      Text.PutNumber(static_cast<UInt64>(Fraction), Width);
      Text.Put(u'S');
    } else {
      PutPart(Sign * Seconds, u'S');
    }
  }
  return Text.Text();
}

// --- from text -----------------------------------------------------------------------------------
TDateTime LxXMLToDate(std::u16string_view AValue) {
  if (IsZeroText(AValue))
    return 0.0;
  const TLxDateTimeParts Parts = LxDecodeISODateTime(AValue);
  const double Result = EncodeDate(Parts.Year, Parts.Month, Parts.Day);
  return Parts.Negative ? -Result : Result;
}

TDateTime LxXMLToTime(std::u16string_view AValue, TLxTimeZoneFormat AFormat) {
  if (IsZeroText(AValue))
    return 0.0;
  const TLxDateTimeParts Parts = LxDecodeISODateTime(AValue);
  const double Result =
      ApplyZone(EncodeTime(Parts.Hour, Parts.Minute, Parts.Second, Parts.MSec), Parts, AFormat);
  // Before 1899-12-30 the day count is negative but the time of day is still the fraction's
  // magnitude (-0.25 is 06:00 of 1899-12-30), so a zone shift across that midnight stays a time.
  // The fraction is kept to the millisecond, so that it equals what EncodeTime gives.
  const double Fraction = std::fabs(Result - std::trunc(Result));
  if (!std::isfinite(Fraction))
    return 0.0;
  const Int64 MSecs = std::llround(Fraction * MSecsPerDay);
  return MSecs >= Int64{86400000} ? 0.0 : static_cast<double>(MSecs) / MSecsPerDay;
}

TDateTime LxXMLToDateTime(std::u16string_view AValue, TLxTimeZoneFormat AFormat) {
  if (IsZeroText(AValue))
    return 0.0;
  const TLxDateTimeParts Parts = LxDecodeISODateTime(AValue);
  double Result = 0.0;
  if (Parts.HasDate && Parts.HasTime)
    Result = EncodeDateTime(Parts.Year, Parts.Month, Parts.Day, Parts.Hour, Parts.Minute,
                            Parts.Second, Parts.MSec);
  else if (Parts.HasDate)
    Result = EncodeDate(Parts.Year, Parts.Month, Parts.Day);
  else if (Parts.HasTime)
    Result = EncodeTime(Parts.Hour, Parts.Minute, Parts.Second, Parts.MSec);
  if (Parts.Negative)
    Result = -Result;
  return ApplyZone(Result, Parts, AFormat);
}

TDateTime LxXMLToTime(std::u16string_view AValue, TLxXMLDateTimeFormat AFormat) {
  return LxXMLToTime(AValue, ToZoneFormat(AFormat));
}
TDateTime LxXMLToDateTime(std::u16string_view AValue, TLxXMLDateTimeFormat AFormat) {
  return LxXMLToDateTime(AValue, ToZoneFormat(AFormat));
}

TDateTime LxXMLToDateDef(std::u16string_view AValue, TDateTime ADefault) noexcept {
  return OrDefault([&] { return LxXMLToDate(AValue); }, ADefault);
}
TDateTime LxXMLToTimeDef(std::u16string_view AValue, TDateTime ADefault,
                         TLxTimeZoneFormat AFormat) noexcept {
  return OrDefault([&] { return LxXMLToTime(AValue, AFormat); }, ADefault);
}
TDateTime LxXMLToTimeDef(std::u16string_view AValue, TDateTime ADefault,
                         TLxXMLDateTimeFormat AFormat) noexcept {
  return LxXMLToTimeDef(AValue, ADefault, ToZoneFormat(AFormat));
}
TDateTime LxXMLToDateTimeDef(std::u16string_view AValue, TDateTime ADefault,
                             TLxTimeZoneFormat AFormat) noexcept {
  return OrDefault([&] { return LxXMLToDateTime(AValue, AFormat); }, ADefault);
}
TDateTime LxXMLToDateTimeDef(std::u16string_view AValue, TDateTime ADefault,
                             TLxXMLDateTimeFormat AFormat) noexcept {
  return LxXMLToDateTimeDef(AValue, ADefault, ToZoneFormat(AFormat));
}

TDateTime LxXMLToDate(const Variant& AValue, TDateTime ADefault) {
  return VariantToDateTime(AValue, ADefault, u"Date",
                           [](const UnicodeString& AText) { return LxXMLToDate(AText); });
}
TDateTime LxXMLToTime(const Variant& AValue, TDateTime ADefault, TLxTimeZoneFormat AFormat) {
  return VariantToDateTime(AValue, ADefault, u"Time", [AFormat](const UnicodeString& AText) {
    return LxXMLToTime(AText, AFormat);
  });
}
TDateTime LxXMLToTime(const Variant& AValue, TDateTime ADefault, TLxXMLDateTimeFormat AFormat) {
  return LxXMLToTime(AValue, ADefault, ToZoneFormat(AFormat));
}
TDateTime LxXMLToDateTime(const Variant& AValue, TDateTime ADefault, TLxTimeZoneFormat AFormat) {
  return VariantToDateTime(AValue, ADefault, u"DateTime", [AFormat](const UnicodeString& AText) {
    return LxXMLToDateTime(AText, AFormat);
  });
}
TDateTime LxXMLToDateTime(const Variant& AValue, TDateTime ADefault, TLxXMLDateTimeFormat AFormat) {
  return LxXMLToDateTime(AValue, ADefault, ToZoneFormat(AFormat));
}

// --- durations from text -------------------------------------------------------------------------
TLxDuration LxXMLToDuration(std::u16string_view AValue) {
  if (AValue.empty())
    throw Exception(u"LxXMLToDuration; An empty string cannot be converted to a xs:duration!");
  std::size_t I = 0;
  const auto Next = [&]() -> char16_t { return I < AValue.size() ? AValue[I++] : 0; };
  TLxDuration Result;
  char16_t First = Next();
  if (First == u'-') {
    Result.Negative = true;
    First = Next();
  }
  if (First != u'P')
    throw Exception(u"LxXMLToDuration; A duration must start with a \"P\"!");

  Int64 Years = 0, Months = 0, Days = 0, Hours = 0, Minutes = 0, Seconds = 0, MSecs = 0;
  bool InTime = false;
  while (I < AValue.size()) {
    if (AValue[I] == u'T') {
      InTime = true;
      ++I;
    }
    const std::size_t Mark = I;
    while (I < AValue.size() && ((AValue[I] >= u'0' && AValue[I] <= u'9') || AValue[I] == u'.'))
      ++I;
    const std::u16string_view Number = AValue.substr(Mark, I - Mark);
    switch (I < AValue.size() ? AValue[I] : 0) {
    case u'Y':
      Years = StrToInt(Number);
      break;
    case u'M':
      (InTime ? Minutes : Months) = StrToInt(Number);
      break;
    case u'D':
      Days = StrToInt(Number);
      break;
    case u'H':
      Hours = StrToInt(Number);
      break;
    case u'S': {
      const std::size_t Dot = Number.find(u'.');
      Seconds = StrToInt(Number.substr(0, Dot));
      MSecs = 0;
      if (Dot != std::u16string_view::npos) {
        const std::u16string_view Fraction = Number.substr(Dot + 1);
        if (Fraction.find(u'.') != std::u16string_view::npos)
          StrToInt(Fraction); // raises its "not a valid integer" for the second point
        for (std::size_t D = 0; D < 3; ++D)
          MSecs = MSecs * 10 + (D < Fraction.size() ? Fraction[D] - u'0' : 0);
      }
      break;
    }
    default:
      RaiseNotDuration(AValue);
    }
    ++I;
  }
  const Int64 TotalMonths = Years * 12 + Months;
  if (TotalMonths > std::numeric_limits<Integer>::max())
    RaiseNotDuration(AValue);
  Result.Months = static_cast<Integer>(TotalMonths);
  Result.Seconds =
      static_cast<double>(Days * 86400 + Hours * 3600 + Minutes * 60 + Seconds) + MSecs / 1000.0;
  return Result;
}

} // namespace lorvane
