// Calendar encoding and decoding, stepping, local time zones and date text.
#include "lorvane/platform/DateUtils.h"

#include "support/ScopeGuards.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <string>
#include <typeinfo>
#include <utility>

namespace lorvane {
namespace {

using test::ExpectRaises;

struct TCalendarDate {
  Word Year, Month, Day;
};

TCalendarDate Decoded(TDateTime AValue) {
  TCalendarDate Result;
  DecodeDate(AValue, Result.Year, Result.Month, Result.Day);
  return Result;
}

// "yyyy-mm-dd hh:nn:ss.zzz" of a value, so that a failing check shows what it got.
std::string Stamp(TDateTime AValue) {
  Word Y, M, D, H, N, S, MS;
  DecodeDateTime(AValue, Y, M, D, H, N, S, MS);
  char Buffer[64];
  std::snprintf(Buffer, sizeof Buffer, "%04u-%02u-%02u %02u:%02u:%02u.%03u", Y, M, D, H, N, S, MS);
  return Buffer;
}

// Without the zone database the POSIX rule of the same zone stands in; it agrees for the years
// these tests use.
using test::TZoneScope;

TZoneScope Berlin() { return TZoneScope("Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3"); }
TZoneScope NewYork() { return TZoneScope("America/New_York", "EST5EDT,M3.2.0,M11.1.0"); }

TEST(DateEncode, KnownDaysOfTheCalendar) {
  const struct {
    Word Year, Month, Day;
    double Serial;
  } Cases[] = {
      {1899, 12, 30, 0},       {1899, 12, 31, 1},      {1900, 1, 1, 2},      {1899, 12, 29, -1},
      {1970, 1, 1, 25569},     {2000, 1, 1, 36526},    {2000, 3, 1, 36586},  {1, 1, 1, -693593},
      {9999, 12, 31, 2958465}, {1600, 2, 29, -109512}, {2024, 2, 29, 45351},
  };
  for (const auto& Case : Cases) {
    EXPECT_EQ(EncodeDate(Case.Year, Case.Month, Case.Day), Case.Serial) << Case.Year;
    const TCalendarDate Back = Decoded(Case.Serial);
    EXPECT_EQ(Back.Year, Case.Year);
    EXPECT_EQ(Back.Month, Case.Month);
    EXPECT_EQ(Back.Day, Case.Day);
  }
}

TEST(DateEncode, EveryThousandthDayRoundTrips) {
  for (Integer Serial = -693593; Serial <= 2958465; Serial += 997) {
    const TCalendarDate Parts = Decoded(Serial);
    ASSERT_EQ(EncodeDate(Parts.Year, Parts.Month, Parts.Day), Serial) << Serial;
  }
}

TEST(DateEncode, PartsThatMakeNoDateOrTimeRaise) {
  const struct {
    Word Year, Month, Day;
  } BadDates[] = {{0, 1, 1},    {10000, 1, 1}, {2000, 0, 1},  {2000, 13, 1},
                  {2000, 1, 0}, {2001, 2, 29}, {1900, 2, 29}, {2023, 4, 31}};
  for (const auto& Case : BadDates) {
    ExpectRaises<EConvertError>([&] { EncodeDate(Case.Year, Case.Month, Case.Day); },
                                u"Invalid argument to date encode");
    TDateTime Untouched = 42.0;
    EXPECT_FALSE(TryEncodeDate(Case.Year, Case.Month, Case.Day, Untouched));
    EXPECT_EQ(Untouched, 42.0);
  }
  const struct {
    Word Hour, Min, Sec, MSec;
  } BadTimes[] = {{24, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 1000}};
  for (const auto& Case : BadTimes) {
    ExpectRaises<EConvertError>([&] { EncodeTime(Case.Hour, Case.Min, Case.Sec, Case.MSec); },
                                u"Invalid argument to time encode");
    ExpectRaises<EConvertError>(
        [&] { EncodeDateTime(2000, 1, 1, Case.Hour, Case.Min, Case.Sec, Case.MSec); },
        u"Invalid argument to time encode");
  }
  ExpectRaises<EConvertError>([] { EncodeDateTime(2000, 2, 30, 0, 0, 0, 0); },
                              u"Invalid argument to date encode");
}

TEST(DateEncode, LeapYearsAndMonthLengths) {
  EXPECT_TRUE(IsLeapYear(2000));
  EXPECT_TRUE(IsLeapYear(2024));
  EXPECT_FALSE(IsLeapYear(1900));
  EXPECT_FALSE(IsLeapYear(2023));
  EXPECT_EQ(DaysInAMonth(2024, 2), 29);
  EXPECT_EQ(DaysInAMonth(2100, 2), 28);
  EXPECT_EQ(DaysInAMonth(2023, 4), 30);
  EXPECT_EQ(DaysInAMonth(2023, 12), 31);
  EXPECT_EQ(IncDay(EncodeDate(2024, 2, 28)), EncodeDate(2024, 2, 29));
  EXPECT_EQ(IncDay(EncodeDate(2023, 2, 28)), EncodeDate(2023, 3, 1));
  ExpectRaises<EConvertError>([] { DaysInAMonth(2023, 13); }, u"Invalid argument to date encode");
}

TEST(DateEncode, TimesRoundTripToTheMillisecond) {
  const struct {
    Word Hour, Min, Sec, MSec;
  } Cases[] = {{0, 0, 0, 0},     {0, 0, 0, 1},      {12, 0, 0, 0},
               {6, 30, 15, 250}, {23, 59, 59, 999}, {17, 3, 41, 7}};
  for (const TDateTime Day : {EncodeDate(2024, 5, 17), EncodeDate(1899, 12, 30),
                              EncodeDate(1850, 6, 1), EncodeDate(9999, 12, 31)}) {
    for (const auto& Case : Cases) {
      const TDateTime Value =
          EncodeDateTime(Decoded(Day).Year, Decoded(Day).Month, Decoded(Day).Day, Case.Hour,
                         Case.Min, Case.Sec, Case.MSec);
      Word Y, M, D, H, N, S, MS;
      DecodeDateTime(Value, Y, M, D, H, N, S, MS);
      EXPECT_EQ(Decoded(Day).Year, Y);
      EXPECT_EQ(Decoded(Day).Month, M);
      EXPECT_EQ(Decoded(Day).Day, D);
      EXPECT_EQ(H, Case.Hour);
      EXPECT_EQ(N, Case.Min);
      EXPECT_EQ(S, Case.Sec);
      EXPECT_EQ(MS, Case.MSec) << Stamp(Value);
    }
  }
  EXPECT_EQ(EncodeTime(12, 0, 0, 0), 0.5);
  EXPECT_EQ(EncodeTime(6, 0, 0, 0), 0.25);
}

TEST(DateEncode, DaysBeforeTheEpochCountBackwardsWithTheTimeAsFraction) {
  EXPECT_EQ(EncodeDateTime(1899, 12, 29, 6, 0, 0, 0), -1.25);
  EXPECT_EQ(EncodeDateTime(1899, 12, 28, 18, 0, 0, 0), -2.75);
  EXPECT_EQ(Stamp(-1.25), "1899-12-29 06:00:00.000");
  // Between -1 and 0 the day truncates to 1899-12-30, as on the platform.
  EXPECT_EQ(Stamp(-0.25), "1899-12-30 06:00:00.000");
}

TEST(DateEncode, MillisecondRoundingKeepsTheLastMillisecondOnItsDay) {
  EXPECT_EQ(Stamp(EncodeDateTime(2024, 12, 31, 23, 59, 59, 999)), "2024-12-31 23:59:59.999");
  EXPECT_EQ(Stamp(EncodeDateTime(1899, 12, 29, 23, 59, 59, 999)), "1899-12-29 23:59:59.999");
  // Less than half a millisecond before midnight is midnight, on both sides of 1899-12-30.
  EXPECT_EQ(Stamp(1 - 1e-9), "1899-12-31 00:00:00.000");
  EXPECT_EQ(Stamp(EncodeDate(2024, 1, 1) - 1e-9), "2024-01-01 00:00:00.000");
  EXPECT_EQ(Stamp(-1 - (1 - 1e-9)), "1899-12-30 00:00:00.000");
}

TEST(DateEncode, ValuesOutsideTheCalendarDecodeToZeros) {
  for (const double Value : {-693594.5, 2958466.0, 1e300, std::nan("")}) {
    const TCalendarDate Parts = Decoded(Value);
    EXPECT_EQ(Parts.Year, 0) << Value;
    EXPECT_EQ(Parts.Month, 0);
    EXPECT_EQ(Parts.Day, 0);
  }
  Word H, N, S, MS;
  DecodeTime(1e12 + 0.5, H, N, S, MS);
  EXPECT_EQ(H, 12);
}

TEST(DateEncode, DayOfWeekCountsFromSunday) {
  EXPECT_EQ(DayOfWeek(0.0), 7);                           // Saturday
  EXPECT_EQ(DayOfWeek(EncodeDate(2024, 5, 12)), 1);       // Sunday
  EXPECT_EQ(DayOfWeek(EncodeDate(2024, 5, 13) + 0.9), 2); // Monday evening
  EXPECT_EQ(DayOfWeek(EncodeDate(1, 1, 1)), 2);
  EXPECT_EQ(DayOfWeek(EncodeDateTime(1899, 12, 24, 12, 0, 0, 0)), 1);
}

TEST(DateStep, StepsCrossMidnightAndTheEpochExactly) {
  EXPECT_EQ(IncMinute(EncodeDateTime(2020, 12, 31, 23, 59, 0, 0)), EncodeDate(2021, 1, 1));
  EXPECT_EQ(IncMinute(EncodeDate(2021, 1, 1), -1), EncodeDateTime(2020, 12, 31, 23, 59, 0, 0));
  EXPECT_EQ(IncMinute(-1.25, 60), EncodeDateTime(1899, 12, 29, 7, 0, 0, 0));
  EXPECT_EQ(IncMinute(EncodeDateTime(1899, 12, 29, 23, 30, 0, 0), 60),
            EncodeDateTime(1899, 12, 30, 0, 30, 0, 0));
  EXPECT_EQ(IncHour(0.25, -12), EncodeDateTime(1899, 12, 29, 18, 0, 0, 0));
  EXPECT_EQ(IncMilliSecond(EncodeDateTime(1899, 12, 29, 23, 59, 59, 999)), 0.0);
  EXPECT_EQ(IncSecond(EncodeDateTime(2024, 2, 28, 23, 59, 59, 0), 86401), EncodeDate(2024, 3, 1));
  EXPECT_EQ(IncDay(EncodeDateTime(1899, 12, 31, 6, 0, 0, 0), -3), -2.25);
  EXPECT_EQ(IncMinute(1e300, 1), 1e300 + 1 / MinsPerDay);
}

// Every step helper at the edges of the range it keeps to the millisecond: a result must lie
// within the whole days that a signed 64-bit count of milliseconds holds.
TEST(DateStep, StepsBeyondTheMillisecondRangeRaise) {
  constexpr Int64 MSecsPerDayInt = 86400000;
  constexpr Int64 MaxDays = std::numeric_limits<Int64>::max() / MSecsPerDayInt;
  constexpr Int64 Min = std::numeric_limits<Int64>::min();
  constexpr Int64 Max = std::numeric_limits<Int64>::max();
  const struct {
    const char* Name;
    TDateTime (*Step)(TDateTime, Int64);
    Int64 UnitMSecs;
  } Helpers[] = {{"IncDay", IncDay, MSecsPerDayInt},
                 {"IncHour", IncHour, 3600000},
                 {"IncMinute", IncMinute, 60000},
                 {"IncSecond", IncSecond, 1000},
                 {"IncMilliSecond", IncMilliSecond, 1}};
  const double Start = EncodeDate(2000, 1, 1);
  const Int64 StartDays = static_cast<Int64>(Start);
  for (const auto& Helper : Helpers) {
    SCOPED_TRACE(Helper.Name);
    const Int64 PerDay = MSecsPerDayInt / Helper.UnitMSecs;
    // Up to the last day on either side: inside, and exact.
    EXPECT_EQ(Helper.Step(Start, (MaxDays - StartDays) * PerDay), static_cast<double>(MaxDays));
    EXPECT_EQ(Helper.Step(-Start, -(MaxDays - StartDays) * PerDay), -static_cast<double>(MaxDays));
    EXPECT_EQ(Helper.Step(0.0, MaxDays * PerDay), static_cast<double>(MaxDays));
    EXPECT_EQ(Helper.Step(0.0, -MaxDays * PerDay), -static_cast<double>(MaxDays));
    // One unit further, and the extremes of the count.
    for (const auto& [Value, Count] : std::initializer_list<std::pair<double, Int64>>{
             {Start, (MaxDays - StartDays) * PerDay + 1},
             {-Start, -(MaxDays - StartDays) * PerDay - 1},
             {0.0, MaxDays * PerDay + 1},
             {0.0, -MaxDays * PerDay - 1},
             {0.0, Min},
             {0.0, Min + 1},
             {0.0, Max},
             {Start, Max},
             {-Start, Min},
             {-Start, Min + 1}}) {
      SCOPED_TRACE(Count);
      ExpectRaises<EConvertError>([&] { Helper.Step(Value, Count); },
                                  u"Invalid argument to date increment");
    }
    // A value outside the calendar is not on the millisecond line: it moves as a float, and
    // even the extreme counts give a number.
    EXPECT_EQ(Helper.Step(1e300, Min), 1e300);
    EXPECT_EQ(Helper.Step(-1e300, Max), -1e300);
  }
}

TEST(DateText, FixedFormatLeavesOutMidnight) {
  EXPECT_EQ(DateTimeToStr(EncodeDateTime(2024, 3, 5, 14, 7, 9, 600)), u"2024-03-05 14:07:09");
  EXPECT_EQ(DateTimeToStr(EncodeDate(2024, 3, 5)), u"2024-03-05");
  EXPECT_EQ(DateTimeToStr(0.0), u"1899-12-30");
  EXPECT_EQ(DateTimeToStr(-1.25), u"1899-12-29 06:00:00");
  EXPECT_EQ(DateTimeToStr(EncodeDateTime(1, 1, 1, 0, 0, 0, 1)), u"0001-01-01 00:00:00");
  EXPECT_EQ(DateToStr(EncodeDateTime(2024, 3, 5, 14, 7, 9, 0)), u"2024-03-05");
  EXPECT_EQ(TimeToStr(0.5), u"12:00:00");
}

TEST(DateText, TextReadsBackAndBadTextRaises) {
  const TDateTime Moment = EncodeDateTime(2024, 3, 5, 14, 7, 9, 0);
  EXPECT_EQ(StrToDateTime(DateTimeToStr(Moment)), Moment);
  EXPECT_EQ(StrToDateTime(u" 2024-03-05 "), EncodeDate(2024, 3, 5));
  EXPECT_EQ(StrToDateTime(u"1899-12-29 06:00"), -1.25);
  EXPECT_EQ(StrToDateTime(u"18:00:00.5"), EncodeTime(18, 0, 0, 500));
  for (const char16_t* Bad : {u"", u"abc", u"2024-02-30", u"2024-03-05T10:00", u"12:61", u"24:00",
                              u"2024-03-05 10", u"10:00 x"}) {
    ExpectRaises<EConvertError>([&] { StrToDateTime(Bad); },
                                Format(u"'%s' is not a valid date and time", {Bad}));
  }
}

TEST(DateZone, UTCHasNoOffset) {
  TZoneScope Zone("UTC", "UTC0");
  const TDateTime Moment = EncodeDateTime(2024, 7, 1, 12, 0, 0, 0);
  EXPECT_EQ(LocalUTCOffsetMinutes(Moment), 0);
  EXPECT_EQ(UTCToLocal(Moment), Moment);
  EXPECT_EQ(LocalToUTC(Moment), Moment);
  EXPECT_EQ(UTCToLocal(-1.25), -1.25);
}

TEST(DateZone, BerlinOnBothSidesOfItsChanges) {
  const TZoneScope Zone = Berlin();
  // Summer time began on 2024-03-31 at 01:00 UTC and ended on 2024-10-27 at 01:00 UTC.
  const struct {
    TDateTime UTC;
    Integer Offset;
  } Cases[] = {
      {EncodeDateTime(2024, 1, 15, 12, 0, 0, 0), 60},
      {EncodeDateTime(2024, 3, 31, 0, 59, 59, 999), 60},
      {EncodeDateTime(2024, 3, 31, 1, 0, 0, 0), 120},
      {EncodeDateTime(2024, 10, 27, 0, 59, 59, 0), 120},
      {EncodeDateTime(2024, 10, 27, 1, 0, 0, 0), 60},
  };
  for (const auto& Case : Cases) {
    EXPECT_EQ(LocalUTCOffsetMinutes(Case.UTC), Case.Offset) << Stamp(Case.UTC);
    EXPECT_EQ(Stamp(UTCToLocal(Case.UTC)), Stamp(IncMinute(Case.UTC, Case.Offset)));
  }
  EXPECT_EQ(Stamp(LocalToUTC(EncodeDateTime(2024, 3, 31, 1, 30, 0, 0))), "2024-03-31 00:30:00.000");
  EXPECT_EQ(Stamp(LocalToUTC(EncodeDateTime(2024, 3, 31, 3, 30, 0, 250))),
            "2024-03-31 01:30:00.250");
  EXPECT_EQ(Stamp(LocalToUTC(EncodeDateTime(2024, 10, 27, 3, 30, 0, 0))),
            "2024-10-27 02:30:00.000");
  // 02:30 never happened in March and happened twice in October: one of the offsets around the
  // change is taken.
  for (const TDateTime Local :
       {EncodeDateTime(2024, 3, 31, 2, 30, 0, 0), EncodeDateTime(2024, 10, 27, 2, 30, 0, 0)}) {
    const std::string UTC = Stamp(LocalToUTC(Local));
    const std::string Day = Stamp(Local).substr(0, 10);
    EXPECT_TRUE(UTC == Day + " 00:30:00.000" || UTC == Day + " 01:30:00.000") << UTC;
  }
}

TEST(DateZone, BerlinKeptLocalMeanTimeBefore1893) {
  if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Berlin"))
    GTEST_SKIP() << "needs the time zone database (package tzdata)";
  const TZoneScope Zone = Berlin();
  // +00:53:28 is cut to whole minutes for the offset, but shifts by the full amount.
  const TDateTime UTC = EncodeDate(1880, 1, 1);
  EXPECT_EQ(LocalUTCOffsetMinutes(UTC), 53);
  EXPECT_EQ(Stamp(UTCToLocal(UTC)), "1880-01-01 00:53:28.000");
  EXPECT_EQ(LocalToUTC(UTCToLocal(UTC)), UTC);
}

TEST(DateZone, NewYorkIsWestOfUTC) {
  const TZoneScope Zone = NewYork();
  EXPECT_EQ(LocalUTCOffsetMinutes(EncodeDate(2024, 1, 15)), -300);
  EXPECT_EQ(LocalUTCOffsetMinutes(EncodeDate(2024, 7, 15)), -240);
  // Summer time began on 2024-03-10 at 07:00 UTC.
  EXPECT_EQ(LocalUTCOffsetMinutes(EncodeDateTime(2024, 3, 10, 6, 59, 0, 0)), -300);
  EXPECT_EQ(LocalUTCOffsetMinutes(EncodeDateTime(2024, 3, 10, 7, 0, 0, 0)), -240);
  EXPECT_EQ(Stamp(UTCToLocal(EncodeDateTime(2024, 1, 15, 3, 0, 0, 0))), "2024-01-14 22:00:00.000");
  EXPECT_EQ(Stamp(LocalToUTC(EncodeDateTime(2024, 1, 14, 22, 0, 0, 0))), "2024-01-15 03:00:00.000");
  // Into the days before 1899-12-30, where the fraction is subtracted.
  EXPECT_EQ(UTCToLocal(EncodeDateTime(1899, 12, 30, 3, 0, 0, 0)),
            EncodeDateTime(1899, 12, 29, 22, 0, 0, 0));
  EXPECT_EQ(LocalToUTC(EncodeDateTime(1899, 12, 29, 22, 0, 0, 0)),
            EncodeDateTime(1899, 12, 30, 3, 0, 0, 0));
}

TEST(DateZone, UTCAndLocalRoundTripAcrossAYear) {
  const TZoneScope Zone = NewYork();
  for (TDateTime UTC = EncodeDate(2023, 1, 1); UTC < EncodeDate(2024, 1, 1);
       UTC = IncHour(UTC, 37)) {
    ASSERT_EQ(Stamp(LocalToUTC(UTCToLocal(UTC))), Stamp(UTC));
  }
}

TEST(DateZone, NowAgreesWithNowUTC) {
  const TZoneScope Zone = Berlin();
  const TDateTime UTC = NowUTC();
  const TDateTime Local = Now();
  // The two readings lie a moment apart; a minute leaves room for a slow machine.
  EXPECT_NEAR(Local - UTC, LocalUTCOffsetMinutes(UTC) / MinsPerDay, 1 / MinsPerDay);
  const TDateTime Today = Date();
  EXPECT_EQ(Today.Value, std::trunc(Today.Value));
  EXPECT_GT(UTC, EncodeDate(2024, 1, 1));
}

} // namespace
} // namespace lorvane
