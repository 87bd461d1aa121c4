/// Dates and times of the runtime: TDateTime and its two narrower kinds, calendar encoding and
/// decoding, stepping by units, the present moment, the local time zone, and the fixed text form
/// that a date takes in a Variant.
///
/// A TDateTime counts days since 1899-12-30; its fraction is the time of day. Before that day the
/// integer part counts days backwards and the fraction is still the time of day, taken as an
/// absolute value: -1.25 is 1899-12-29 06:00. Years run from 1 to 9999.
#pragma once

#include "lorvane/platform/SysUtils.h"

namespace lorvane {

/// A moment as days since 1899-12-30. Converts to and from double implicitly; TDate and TTime
/// derive from it so that a type description can tell the three and a plain float apart.
struct TDateTime {
  double Value = 0;
  constexpr TDateTime() noexcept = default;
  constexpr TDateTime(double AValue) noexcept : Value(AValue) {}
  constexpr operator double() const noexcept { return Value; }
};

/// A TDateTime that means a date (its fraction is normally zero).
struct TDate : TDateTime {
  using TDateTime::TDateTime;
};

/// A TDateTime that means a time of day (its integer part is normally zero).
struct TTime : TDateTime {
  using TDateTime::TDateTime;
};

constexpr double HoursPerDay = 24;
constexpr double MinsPerDay = 24 * 60;
constexpr double SecsPerDay = 24 * 60 * 60;
constexpr double MSecsPerDay = 24 * 60 * 60 * 1000.0;
/// Days between 0001-01-01 and 1899-12-30.
constexpr Integer DateDelta = 693594;
/// Days between 1899-12-30 and 1970-01-01.
constexpr Integer UnixDateDelta = 25569;

// --- calendar ------------------------------------------------------------------------------------
bool IsLeapYear(Word AYear) noexcept;
/// 28 to 31; raises EConvertError "Invalid argument to date encode" for a month outside 1..12.
Word DaysInAMonth(Word AYear, Word AMonth);

/// Raise EConvertError "Invalid argument to date encode" (year outside 1..9999, month outside
/// 1..12, day outside the month) or "Invalid argument to time encode" (hour above 23, minute or
/// second above 59, millisecond above 999).
TDateTime EncodeDate(Word AYear, Word AMonth, Word ADay);
TDateTime EncodeTime(Word AHour, Word AMin, Word ASec, Word AMSec);
/// The date's day with the time of day added, by the sign convention of dates before 1899-12-30.
/// Raises as EncodeDate, then as EncodeTime.
TDateTime EncodeDateTime(Word AYear, Word AMonth, Word ADay, Word AHour, Word AMin, Word ASec,
                         Word AMSec);
/// False instead of the failure; AValue is then untouched.
bool TryEncodeDate(Word AYear, Word AMonth, Word ADay, TDateTime& AValue) noexcept;
bool TryEncodeTime(Word AHour, Word AMin, Word ASec, Word AMSec, TDateTime& AValue) noexcept;
bool TryEncodeDateTime(Word AYear, Word AMonth, Word ADay, Word AHour, Word AMin, Word ASec,
                       Word AMSec, TDateTime& AValue) noexcept;

/// The value is rounded to the millisecond first, so 23:59:59.999 stays on its day and
/// 23:59:59.9996 becomes the next day's midnight. A value outside years 1..9999 (or NaN) gives
/// zeros for year, month and day.
void DecodeDate(TDateTime AValue, Word& AYear, Word& AMonth, Word& ADay) noexcept;
void DecodeTime(TDateTime AValue, Word& AHour, Word& AMin, Word& ASec, Word& AMSec) noexcept;
void DecodeDateTime(TDateTime AValue, Word& AYear, Word& AMonth, Word& ADay, Word& AHour,
                    Word& AMin, Word& ASec, Word& AMSec) noexcept;

/// 1 for Sunday to 7 for Saturday.
Word DayOfWeek(TDateTime AValue) noexcept;

// --- stepping ------------------------------------------------------------------------------------
/// Moves the moment along the time line, across midnight and across 1899-12-30 alike; the result
/// is kept to the millisecond. It must lie within 106751991167 days of 1899-12-30 (the whole days
/// that a signed 64-bit count of milliseconds holds): a step beyond, whatever its count, raises
/// EConvertError "Invalid argument to date increment". A value outside years 1..9999 is moved by
/// plain float arithmetic, and never raises.
TDateTime IncDay(TDateTime AValue, Int64 ANumberOfDays = 1);
TDateTime IncHour(TDateTime AValue, Int64 ANumberOfHours = 1);
TDateTime IncMinute(TDateTime AValue, Int64 ANumberOfMinutes = 1);
TDateTime IncSecond(TDateTime AValue, Int64 ANumberOfSeconds = 1);
TDateTime IncMilliSecond(TDateTime AValue, Int64 ANumberOfMilliSeconds = 1);

// --- the present moment and the local zone -------------------------------------------------------
// -------------------------------------------------------- The local zone is the C library's: set
// TZ and call tzset() to change it.

/// Local date and time.
TDateTime Now();
/// Local date, at midnight.
TDateTime Date();
/// The moment in UTC.
TDateTime NowUTC();

/// Offset of local time from UTC at the given UTC moment, in minutes, east positive (a zone with
/// seconds in its offset, as local mean time in the nineteenth century, is cut to whole minutes).
Integer LocalUTCOffsetMinutes(TDateTime AUTCMoment);
TDateTime UTCToLocal(TDateTime AUTCMoment);
/// A local time that occurs twice (the hour after clocks go back) or never (the hour skipped
/// when they go forward) is resolved as the C library's mktime with tm_isdst = -1 resolves it:
/// one of the two offsets around the change, which one being the C library's choice.
TDateTime LocalToUTC(TDateTime ALocalMoment);

// --- text ----------------------------------------------------------------------------------------
/// "yyyy-mm-dd hh:nn:ss", the time left out when it is exactly midnight. The separators are
/// FormatSettings.DateSeparator and TimeSeparator ('-' and ':' unless an application sets others).
UnicodeString DateTimeToStr(TDateTime AValue);
/// "yyyy-mm-dd".
UnicodeString DateToStr(TDateTime AValue);
/// "hh:nn:ss".
UnicodeString TimeToStr(TDateTime AValue);
/// Reads the forms written above: "yyyy-mm-dd", "yyyy-mm-dd hh:nn[:ss[.zzz]]" and
/// "hh:nn[:ss[.zzz]]" (a time alone lies on 1899-12-30), with the FormatSettings separators and
/// blanks around. StrToDateTime raises EConvertError "'%s' is not a valid date and time".
bool TryStrToDateTime(std::u16string_view AText, TDateTime& AValue) noexcept;
TDateTime StrToDateTime(std::u16string_view AText);

} // namespace lorvane
