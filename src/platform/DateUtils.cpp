// Calendar arithmetic on TDateTime, the local time zone through the C library, and date text.
#include "lorvane/platform/DateUtils.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <ctime>
#include <limits>

namespace lorvane {

namespace {

constexpr Int64 MSecsPerDayInt = 86400000;
constexpr Int64 FirstDay = 1 - DateDelta; // 0001-01-01
constexpr Int64 LastDay = 2958465;        // 9999-12-31
constexpr Int64 UnixEpochMSecs = Int64{UnixDateDelta} * MSecsPerDayInt;

[[noreturn]] void RaiseDateEncode() { throw EConvertError(u"Invalid argument to date encode"); }
[[noreturn]] void RaiseTimeEncode() { throw EConvertError(u"Invalid argument to time encode"); }
[[noreturn]] void RaiseDateStep() { throw EConvertError(u"Invalid argument to date increment"); }

// A step keeps the moment as milliseconds from 1899-12-30 in 64 bits, and splitting that count
// into a day and a time of day multiplies the day back: so a result must stay within the whole
// days that the count holds, on either side.
constexpr Int64 StepLimitMSecs =
    std::numeric_limits<Int64>::max() / MSecsPerDayInt * MSecsPerDayInt;

Int64 FloorDiv(Int64 A, Int64 B) noexcept {
  const Int64 Q = A / B;
  return (A % B != 0 && (A < 0) != (B < 0)) ? Q - 1 : Q;
}

// Days since 1970-01-01 of a proleptic Gregorian date, and back (H. Hinnant's algorithms).
Int64 DaysFromCivil(Int64 AYear, unsigned AMonth, unsigned ADay) noexcept {
  AYear -= AMonth <= 2;
  const Int64 Era = FloorDiv(AYear, 400);
  const auto YearOfEra = static_cast<unsigned>(AYear - Era * 400);
  const unsigned DayOfYear = (153 * (AMonth + (AMonth > 2 ? -3 : 9)) + 2) / 5 + ADay - 1;
  const unsigned DayOfEra = YearOfEra * 365 + YearOfEra / 4 - YearOfEra / 100 + DayOfYear;
  return Era * 146097 + static_cast<Int64>(DayOfEra) - 719468;
}

void CivilFromDays(Int64 ADays, Int64& AYear, unsigned& AMonth, unsigned& ADay) noexcept {
  ADays += 719468;
  const Int64 Era = FloorDiv(ADays, 146097);
  const auto DayOfEra = static_cast<unsigned>(ADays - Era * 146097);
  const unsigned YearOfEra =
      (DayOfEra - DayOfEra / 1460 + DayOfEra / 36524 - DayOfEra / 146096) / 365;
  const unsigned DayOfYear = DayOfEra - (365 * YearOfEra + YearOfEra / 4 - YearOfEra / 100);
  const unsigned MonthIndex = (5 * DayOfYear + 2) / 153;
  ADay = DayOfYear - (153 * MonthIndex + 2) / 5 + 1;
  AMonth = MonthIndex < 10 ? MonthIndex + 3 : MonthIndex - 9;
  AYear = static_cast<Int64>(YearOfEra) + Era * 400 + (AMonth <= 2);
}

// A day number and a time of day make a TDateTime; before 1899-12-30 the time is subtracted so
// that the fraction still reads as the time of day.
double FromDayAndMSecs(Int64 ADay, Int64 AMSecs) noexcept {
  const double Fraction = static_cast<double>(AMSecs) / MSecsPerDay;
  return ADay >= 0 ? static_cast<double>(ADay) + Fraction : static_cast<double>(ADay) - Fraction;
}

// The moment as milliseconds on a straight time line from 1899-12-30 00:00; false outside years
// 1..9999 and for NaN. Rounding to the millisecond happens here, once, for every decoder.
bool ToLinearMSecs(double AValue, Int64& AMSecs) noexcept {
  if (!(AValue > static_cast<double>(FirstDay - 1) && AValue < static_cast<double>(LastDay + 1)))
    return false;
  const double WholeDays = std::trunc(AValue);
  Int64 Day = static_cast<Int64>(WholeDays);
  Int64 MSecs = std::llround(std::fabs(AValue - WholeDays) * MSecsPerDay);
  if (MSecs >= MSecsPerDayInt) {
    MSecs -= MSecsPerDayInt;
    ++Day;
  }
  AMSecs = Day * MSecsPerDayInt + MSecs;
  return true;
}

double FromLinearMSecs(Int64 AMSecs) noexcept {
  const Int64 Day = FloorDiv(AMSecs, MSecsPerDayInt);
  return FromDayAndMSecs(Day, AMSecs - Day * MSecsPerDayInt);
}

TDateTime IncBy(TDateTime AValue, Int64 ACount, Int64 AUnitMSecs) {
  Int64 MSecs;
  if (!ToLinearMSecs(AValue, MSecs))
    return AValue.Value +
           static_cast<double>(ACount) * (static_cast<double>(AUnitMSecs) / MSecsPerDay);
  Int64 Delta;
  Int64 Sum;
  if (__builtin_mul_overflow(ACount, AUnitMSecs, &Delta) ||
      __builtin_add_overflow(MSecs, Delta, &Sum) || Sum < -StepLimitMSecs || Sum > StepLimitMSecs)
    RaiseDateStep();
  return FromLinearMSecs(Sum);
}

// Seconds since the Unix epoch of a linear millisecond count, rounded down.
std::time_t ToUnixSeconds(Int64 ALinearMSecs) noexcept {
  return static_cast<std::time_t>(FloorDiv(ALinearMSecs - UnixEpochMSecs, 1000));
}

long OffsetSecondsAt(std::time_t AUnixSeconds) noexcept {
  std::tm Local{};
  if (!localtime_r(&AUnixSeconds, &Local))
    return 0;
  return Local.tm_gmtoff;
}

Int64 NowLinearMSecs() {
  const auto SinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(SinceEpoch).count() + UnixEpochMSecs;
}

void AppendPadded(UnicodeString& AOut, unsigned AValue, int AWidth) {
  const UnicodeString Digits = IntToStr(AValue);
  if (static_cast<int>(Digits.size()) < AWidth)
    AOut.append(AWidth - Digits.size(), u'0');
  AOut += Digits;
}

void AppendDate(UnicodeString& AOut, TDateTime AValue) {
  Word Year, Month, Day;
  DecodeDate(AValue, Year, Month, Day);
  AppendPadded(AOut, Year, 4);
  AOut += FormatSettings.DateSeparator;
  AppendPadded(AOut, Month, 2);
  AOut += FormatSettings.DateSeparator;
  AppendPadded(AOut, Day, 2);
}

void AppendTime(UnicodeString& AOut, TDateTime AValue) {
  Word Hour, Min, Sec, MSec;
  DecodeTime(AValue, Hour, Min, Sec, MSec);
  AppendPadded(AOut, Hour, 2);
  AOut += FormatSettings.TimeSeparator;
  AppendPadded(AOut, Min, 2);
  AOut += FormatSettings.TimeSeparator;
  AppendPadded(AOut, Sec, 2);
}

// A small scanner for the text forms that DateTimeToStr writes.
class TDateTimeScanner {
public:
  explicit TDateTimeScanner(std::u16string_view AText) : FText(AText) {}

  bool AtEnd() const noexcept { return FPos == FText.size(); }
  bool Skip(char16_t AChar) noexcept {
    if (FPos < FText.size() && FText[FPos] == AChar) {
      ++FPos;
      return true;
    }
    return false;
  }
  bool SkipBlanks() noexcept {
    const std::size_t Start = FPos;
    while (FPos < FText.size() && FText[FPos] == u' ')
      ++FPos;
    return FPos > Start;
  }
  // One to AMaxDigits decimal digits.
  bool Number(unsigned AMaxDigits, unsigned& AValue, unsigned* ADigits = nullptr) noexcept {
    unsigned Count = 0;
    AValue = 0;
    while (FPos < FText.size() && Count < AMaxDigits && FText[FPos] >= u'0' &&
           FText[FPos] <= u'9') {
      AValue = AValue * 10 + (FText[FPos++] - u'0');
      ++Count;
    }
    if (ADigits)
      *ADigits = Count;
    return Count > 0;
  }
  // Looks ahead: a date has its separator behind the first run of digits, a time doesn't.
  bool DateAhead(char16_t ADateSeparator) const noexcept {
    std::size_t I = FPos;
    while (I < FText.size() && FText[I] >= u'0' && FText[I] <= u'9')
      ++I;
    return I > FPos && I < FText.size() && FText[I] == ADateSeparator;
  }

private:
  std::u16string_view FText;
  std::size_t FPos = 0;
};

bool ScanTime(TDateTimeScanner& AScanner, Int64& AMSecs) noexcept {
  const char16_t Separator = FormatSettings.TimeSeparator;
  unsigned Hour, Min, Sec = 0, MSec = 0, MSecDigits = 0;
  if (!AScanner.Number(2, Hour) || !AScanner.Skip(Separator) || !AScanner.Number(2, Min))
    return false;
  if (AScanner.Skip(Separator)) {
    if (!AScanner.Number(2, Sec))
      return false;
    if (AScanner.Skip(FormatSettings.DecimalSeparator) || AScanner.Skip(u'.')) {
      if (!AScanner.Number(3, MSec, &MSecDigits))
        return false;
      for (; MSecDigits < 3; ++MSecDigits)
        MSec *= 10;
    }
  }
  if (Hour > 23 || Min > 59 || Sec > 59)
    return false;
  AMSecs = ((Hour * 60 + Min) * 60 + Sec) * 1000 + MSec;
  return true;
}

} // namespace

// --- calendar ------------------------------------------------------------------------------------
bool IsLeapYear(Word AYear) noexcept {
  return AYear % 4 == 0 && (AYear % 100 != 0 || AYear % 400 == 0);
}

Word DaysInAMonth(Word AYear, Word AMonth) {
  static constexpr Word Days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (AMonth < 1 || AMonth > 12)
    RaiseDateEncode();
  return AMonth == 2 && IsLeapYear(AYear) ? 29 : Days[AMonth - 1];
}

bool TryEncodeDate(Word AYear, Word AMonth, Word ADay, TDateTime& AValue) noexcept {
  if (AYear < 1 || AYear > 9999 || AMonth < 1 || AMonth > 12 || ADay < 1 ||
      ADay > DaysInAMonth(AYear, AMonth))
    return false;
  AValue = static_cast<double>(DaysFromCivil(AYear, AMonth, ADay) + UnixDateDelta);
  return true;
}

bool TryEncodeTime(Word AHour, Word AMin, Word ASec, Word AMSec, TDateTime& AValue) noexcept {
  if (AHour > 23 || AMin > 59 || ASec > 59 || AMSec > 999)
    return false;
  AValue = FromDayAndMSecs(0, ((AHour * Int64{60} + AMin) * 60 + ASec) * 1000 + AMSec);
  return true;
}

bool TryEncodeDateTime(Word AYear, Word AMonth, Word ADay, Word AHour, Word AMin, Word ASec,
                       Word AMSec, TDateTime& AValue) noexcept {
  TDateTime Day, Time;
  if (!TryEncodeDate(AYear, AMonth, ADay, Day) || !TryEncodeTime(AHour, AMin, ASec, AMSec, Time))
    return false;
  AValue = Day >= 0 ? Day + Time : Day - Time;
  return true;
}

TDateTime EncodeDate(Word AYear, Word AMonth, Word ADay) {
  TDateTime Result;
  if (!TryEncodeDate(AYear, AMonth, ADay, Result))
    RaiseDateEncode();
  return Result;
}

TDateTime EncodeTime(Word AHour, Word AMin, Word ASec, Word AMSec) {
  TDateTime Result;
  if (!TryEncodeTime(AHour, AMin, ASec, AMSec, Result))
    RaiseTimeEncode();
  return Result;
}

TDateTime EncodeDateTime(Word AYear, Word AMonth, Word ADay, Word AHour, Word AMin, Word ASec,
                         Word AMSec) {
  const TDateTime Day = EncodeDate(AYear, AMonth, ADay);
  const TDateTime Time = EncodeTime(AHour, AMin, ASec, AMSec);
  return Day >= 0 ? Day + Time : Day - Time;
}

void DecodeDate(TDateTime AValue, Word& AYear, Word& AMonth, Word& ADay) noexcept {
  AYear = AMonth = ADay = 0;
  Int64 MSecs;
  if (!ToLinearMSecs(AValue, MSecs))
    return;
  const Int64 Day = FloorDiv(MSecs, MSecsPerDayInt);
  if (Day < FirstDay || Day > LastDay)
    return; // 9999-12-31 23:59:59.9999 rounds into year 10000
  Int64 Year;
  unsigned Month, DayOfMonth;
  CivilFromDays(Day - UnixDateDelta, Year, Month, DayOfMonth);
  AYear = static_cast<Word>(Year);
  AMonth = static_cast<Word>(Month);
  ADay = static_cast<Word>(DayOfMonth);
}

void DecodeTime(TDateTime AValue, Word& AHour, Word& AMin, Word& ASec, Word& AMSec) noexcept {
  Int64 MSecs = 0;
  if (!ToLinearMSecs(AValue, MSecs) && std::isfinite(AValue.Value)) {
    // Far outside the calendar the fraction still reads as a time of day.
    MSecs = std::llround(std::fabs(AValue - std::trunc(AValue)) * MSecsPerDay);
  }
  MSecs -= FloorDiv(MSecs, MSecsPerDayInt) * MSecsPerDayInt;
  AMSec = static_cast<Word>(MSecs % 1000);
  MSecs /= 1000;
  ASec = static_cast<Word>(MSecs % 60);
  MSecs /= 60;
  AMin = static_cast<Word>(MSecs % 60);
  AHour = static_cast<Word>(MSecs / 60);
}

void DecodeDateTime(TDateTime AValue, Word& AYear, Word& AMonth, Word& ADay, Word& AHour,
                    Word& AMin, Word& ASec, Word& AMSec) noexcept {
  DecodeDate(AValue, AYear, AMonth, ADay);
  DecodeTime(AValue, AHour, AMin, ASec, AMSec);
}

Word DayOfWeek(TDateTime AValue) noexcept {
  Int64 MSecs;
  if (ToLinearMSecs(AValue, MSecs)) {
    // Day 1 of the calendar, 0001-01-01, was a Monday.
    return static_cast<Word>((FloorDiv(MSecs, MSecsPerDayInt) + DateDelta) % 7 + 1);
  }
  if (!std::isfinite(AValue.Value))
    return 0;
  // 1899-12-30 was a Saturday.
  const double Weekday = std::fmod(std::trunc(AValue) + 6, 7.0);
  return static_cast<Word>(Weekday < 0 ? Weekday + 7 : Weekday) + 1;
}

// --- stepping ------------------------------------------------------------------------------------
TDateTime IncDay(TDateTime AValue, Int64 ANumberOfDays) {
  return IncBy(AValue, ANumberOfDays, MSecsPerDayInt);
}
TDateTime IncHour(TDateTime AValue, Int64 ANumberOfHours) {
  return IncBy(AValue, ANumberOfHours, 3600000);
}
TDateTime IncMinute(TDateTime AValue, Int64 ANumberOfMinutes) {
  return IncBy(AValue, ANumberOfMinutes, 60000);
}
TDateTime IncSecond(TDateTime AValue, Int64 ANumberOfSeconds) {
  return IncBy(AValue, ANumberOfSeconds, 1000);
}
TDateTime IncMilliSecond(TDateTime AValue, Int64 ANumberOfMilliSeconds) {
  return IncBy(AValue, ANumberOfMilliSeconds, 1);
}

// --- the present moment and the local zone -------------------------------------------------------
TDateTime NowUTC() { return FromLinearMSecs(NowLinearMSecs()); }

TDateTime Now() {
  const Int64 MSecs = NowLinearMSecs();
  return FromLinearMSecs(MSecs + Int64{OffsetSecondsAt(ToUnixSeconds(MSecs))} * 1000);
}

TDateTime Date() { return std::trunc(Now().Value); }

Integer LocalUTCOffsetMinutes(TDateTime AUTCMoment) {
  Int64 MSecs;
  if (!ToLinearMSecs(AUTCMoment, MSecs))
    MSecs = 0;
  return static_cast<Integer>(OffsetSecondsAt(ToUnixSeconds(MSecs)) / 60);
}

TDateTime UTCToLocal(TDateTime AUTCMoment) {
  Int64 MSecs;
  if (!ToLinearMSecs(AUTCMoment, MSecs))
    return AUTCMoment;
  return FromLinearMSecs(MSecs + Int64{OffsetSecondsAt(ToUnixSeconds(MSecs))} * 1000);
}

TDateTime LocalToUTC(TDateTime ALocalMoment) {
  Int64 MSecs;
  if (!ToLinearMSecs(ALocalMoment, MSecs))
    return ALocalMoment;
  const Int64 Day = FloorDiv(MSecs, MSecsPerDayInt);
  const Int64 MSecOfDay = MSecs - Day * MSecsPerDayInt;
  Int64 Year;
  unsigned Month, DayOfMonth;
  CivilFromDays(Day - UnixDateDelta, Year, Month, DayOfMonth);
  std::tm Local{};
  Local.tm_year = static_cast<int>(Year - 1900);
  Local.tm_mon = static_cast<int>(Month) - 1;
  Local.tm_mday = static_cast<int>(DayOfMonth);
  Local.tm_hour = static_cast<int>(MSecOfDay / 3600000);
  Local.tm_min = static_cast<int>(MSecOfDay / 60000 % 60);
  Local.tm_sec = static_cast<int>(MSecOfDay / 1000 % 60);
  Local.tm_isdst = -1;
  errno = 0;
  const std::time_t UnixSeconds = std::mktime(&Local);
  if (UnixSeconds == static_cast<std::time_t>(-1) && errno != 0) {
    // Out of mktime's reach: take the offset at the local reading as if it were UTC.
    return FromLinearMSecs(MSecs - Int64{OffsetSecondsAt(ToUnixSeconds(MSecs))} * 1000);
  }
  return FromLinearMSecs(Int64{UnixSeconds} * 1000 + MSecOfDay % 1000 + UnixEpochMSecs);
}

// --- text ----------------------------------------------------------------------------------------
UnicodeString DateTimeToStr(TDateTime AValue) {
  UnicodeString Result;
  Result.reserve(19);
  AppendDate(Result, AValue);
  Word Hour, Min, Sec, MSec;
  DecodeTime(AValue, Hour, Min, Sec, MSec);
  if (Hour != 0 || Min != 0 || Sec != 0 || MSec != 0) {
    Result += u' ';
    AppendTime(Result, AValue);
  }
  return Result;
}

UnicodeString DateToStr(TDateTime AValue) {
  UnicodeString Result;
  AppendDate(Result, AValue);
  return Result;
}

UnicodeString TimeToStr(TDateTime AValue) {
  UnicodeString Result;
  AppendTime(Result, AValue);
  return Result;
}

bool TryStrToDateTime(std::u16string_view AText, TDateTime& AValue) noexcept {
  TDateTimeScanner Scanner(AText);
  Scanner.SkipBlanks();
  TDateTime Day = 0.0;
  Int64 MSecs = 0;
  bool HasDate = false, HasTime = false;
  if (Scanner.DateAhead(FormatSettings.DateSeparator)) {
    const char16_t Separator = FormatSettings.DateSeparator;
    unsigned Year, Month, DayOfMonth;
    if (!Scanner.Number(4, Year) || !Scanner.Skip(Separator) || !Scanner.Number(2, Month) ||
        !Scanner.Skip(Separator) || !Scanner.Number(2, DayOfMonth) ||
        !TryEncodeDate(static_cast<Word>(Year), static_cast<Word>(Month),
                       static_cast<Word>(DayOfMonth), Day))
      return false;
    HasDate = true;
    if (Scanner.SkipBlanks() && !Scanner.AtEnd()) {
      if (!ScanTime(Scanner, MSecs))
        return false;
      HasTime = true;
    }
  } else {
    if (!ScanTime(Scanner, MSecs))
      return false;
    HasTime = true;
  }
  Scanner.SkipBlanks();
  if (!Scanner.AtEnd() || !(HasDate || HasTime))
    return false;
  AValue = FromDayAndMSecs(static_cast<Int64>(Day.Value), MSecs);
  return true;
}

TDateTime StrToDateTime(std::u16string_view AText) {
  TDateTime Result;
  if (!TryStrToDateTime(AText, Result))
    throw EConvertError(u"'" + UnicodeString(AText) + u"' is not a valid date and time");
  return Result;
}

} // namespace lorvane
