// The date, time and duration functions of filters, over the date and time texts that the value
// conversions are tested with, in the zones those tests pin.
#include "lorvane/uLxXPath.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/ScopeGuards.h"
#include "support/TestHelpers.h"
#include "xpath/XPathFunctionFixture.h"

namespace lorvane {
namespace {

using test::TFunctionCase;

class XPathDateFunctions : public test::XPathFunctionFixture {
protected:
  const test::TZoneScope FZone{"UTC"};

  /// The results of the functions ANames on the text AText, joined by "|".
  std::string Fields(std::initializer_list<const char16_t*> ANames, const UnicodeString& AText) {
    std::string Result;
    for (const char16_t* Name : ANames) {
      const std::string Value = Evaluate(UnicodeString(Name) + u"(\"" + AText + u"\")", Number());
      Result.append(Result.empty() ? "" : "|").append(Value.substr(Value.find(':') + 1));
    }
    return Result;
  }
};

TEST_F(XPathDateFunctions, DurationFields) {
  const TFunctionCase Cases[] = {
      {u"years-from-duration(\"P1Y2M\")", "Integer:1"},
      {u"months-from-duration(\"P1Y2M\")", "Integer:2"},
      {u"months-from-duration(\"P25M\")", "Integer:1"},
      {u"years-from-duration(\"-P2Y\")", "Integer:-2"},
      {u"days-from-duration(\"P1DT2H\")", "Int64:1"},
      {u"hours-from-duration(\"P1DT2H\")", "Int64:2"},
      {u"hours-from-duration(\"PT49H\")", "Int64:1"},
      {u"minutes-from-duration(\"PT1H30M\")", "Int64:30"},
      {u"days-from-duration(\"-P3D\")", "Int64:-3"},
      {u"seconds-from-duration(\"P1DT1.5S\")", "Double:1.5"},
      {u"seconds-from-duration(\"PT61.25S\")", "Double:1.25"},
      {u"seconds-from-duration(\"-PT0.5S\")", "Double:-0.5"},
      // a list without members gives Null; anything that isn't a duration "FORG0006"
      {u"years-from-duration(())", "Null"},
      {u"days-from-duration([])", "Null"},
      {u"years-from-duration(\"x\")",
       "XPath FORG0006: An invalid parameter was passed to fn:years-from-duration(arg)"},
      {u"minutes-from-duration(zz)",
       "XPath FORG0006: An invalid parameter was passed to fn:minutes-from-duration(arg)"},
      {u"seconds-from-duration(\"PT1X\")",
       "XPath FORG0006: An invalid parameter was passed to fn:seconds-from-duration(arg)"},
      {u"days-from-duration(error(\"E1\"))",
       "XPath FORG0006: An invalid parameter was passed to fn:days-from-duration(arg)"},
      {u"years-from-duration()",
       "Syntax: The \"fn:years-from-duration(arg)\" function must have 1 parameter!"},
      {u"seconds-from-duration(\"P1D\", \"P2D\")",
       "Syntax: The \"fn:seconds-from-duration(arg)\" function must have 1 parameter!"},
  };
  ExpectResults(Cases, Number());
}

TEST_F(XPathDateFunctions, FieldsAndTheirFailures) {
  const TFunctionCase Cases[] = {
      {u"year-from-date(\"-0044-03-15\")", "Integer:-44"},
      {u"year-from-dateTime(\"2024-07-04T09:05:07\")", "Word:2024"},
      {u"seconds-from-time(\"10:20:30.500\")", "Double:30.5"},
      {u"seconds-from-dateTime(\"2024-07-04T09:05:07.0891\")", "Double:7.089"},
      {u"timezone-from-dateTime(\"2000-01-01T00:00:00\")", "Null"},
      {u"timezone-from-dateTime(\"2000-01-01T00:00:00+01:30\")", "UnicodeString:PT1H30M"},
      {u"timezone-from-time(\"10:00:00-00:45\")", "UnicodeString:-PT45M"},
      {u"year-from-dateTime(\"x\")", "Convert: 'x' is not a valid XML date and time"},
      {u"timezone-from-date(\"2024-13-01Z\")", "Convert: Invalid argument to date encode"},
      {u"year-from-dateTime()",
       "Syntax: The \"fn:year-from-dateTime(dateTime)\" function must have 1 parameter!"},
      {u"day-from-date(1, 2)",
       "Syntax: The \"fn:day-from-date(date)\" function must have 1 parameter!"},
      {u"minutes-from-time()",
       "Syntax: The \"fn:minutes-from-time(time)\" function must have 1 parameter!"},
  };
  ExpectResults(Cases, Number());
}

TEST_F(XPathDateFunctions, EveryFieldOfTheValueFormTexts) {
  // Each text, its fields as the dateTime, date and time functions read them, and the zone of
  // a UTC text in each pinned zone (offsets at that date; a time alone lies on 1899-12-30).
  const struct {
    const char16_t* Text;
    const char* DateTime; // year|month|day|hours|minutes|seconds
    const char* Zone;     // timezone-from-dateTime, -date, -time
  } Texts[] = {
      {u"2024-01-15T15:20:30Z", "2024|1|15|15|20|30", nullptr},
      {u"2024-07-04T09:05:07.089+00:00", "2024|7|4|9|5|7.089", "P0Y|P0Y|P0Y"},
      {u"2024-03-31T01:30:00.000+01:00", "2024|3|31|1|30|0", "PT1H|PT1H|PT1H"},
      {u"2024-11-03T02:30:00.000-05:00", "2024|11|3|2|30|0", "-PT5H|-PT5H|-PT5H"},
      {u"2024-01-01T03:00:00.000+05:30", "2024|1|1|3|0|0", "PT5H30M|PT5H30M|PT5H30M"},
      {u"2024-02-29T23:00:00-05:00", "2024|2|29|23|0|0", "-PT5H|-PT5H|-PT5H"},
      {u"2024-12-31T23:30:00Z", "2024|12|31|23|30|0", nullptr},
      {u"2024-07-04T09:05:07Z", "2024|7|4|9|5|7", nullptr},
  };
  // Kolkata kept Madras time, +05:21:10, until 1906: a time alone reports its whole minutes.
  // Without the zone database the POSIX rule stands in, which knows only +05:30.
  const bool HaveKolkata = std::filesystem::exists("/usr/share/zoneinfo/Asia/Kolkata");
  const struct {
    const char* Zone;
    const char* Posix;
    const char* Winter; // the zone of a UTC text in January and December
    const char* Summer; // in July
    const char* Time;   // of a time alone
  } Zones[] = {
      {"UTC", "UTC0", "P0Y", "P0Y", "P0Y"},
      {"America/New_York", "EST5EDT,M3.2.0,M11.1.0", "-PT5H", "-PT4H", "-PT5H"},
      {"Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3", "PT1H", "PT2H", "PT1H"},
      {"Asia/Kolkata", "IST-5:30", "PT5H30M", "PT5H30M", HaveKolkata ? "PT5H21M" : "PT5H30M"},
  };
  for (const auto& Zone : Zones) {
    test::TZoneScope::Set(Zone.Zone, Zone.Posix);
    for (const auto& Case : Texts) {
      SCOPED_TRACE(StringToUTF8(Case.Text) + " in " + Zone.Zone);
      const UnicodeString Text(Case.Text);
      const UnicodeString ZoneText = Text.substr(Text.find_first_of(u"Z+-", 19));
      const UnicodeString Date = Text.substr(0, 10) + ZoneText;
      const UnicodeString Time = Text.substr(11);
      EXPECT_EQ(Fields({u"year-from-dateTime", u"month-from-dateTime", u"day-from-dateTime",
                        u"hours-from-dateTime", u"minutes-from-dateTime", u"seconds-from-dateTime"},
                       Text),
                Case.DateTime);
      const std::string Parts = Case.DateTime;
      const size_t Third = Parts.find('|', Parts.find('|', 5) + 1);
      EXPECT_EQ(Fields({u"year-from-date", u"month-from-date", u"day-from-date"}, Date),
                Parts.substr(0, Third));
      EXPECT_EQ(Fields({u"hours-from-time", u"minutes-from-time", u"seconds-from-time"}, Time),
                Parts.substr(Third + 1));
      std::string Expected;
      if (Case.Zone)
        Expected = Case.Zone;
      else {
        const std::string Dated = Text.substr(5, 2) == u"07" ? Zone.Summer : Zone.Winter;
        Expected = Dated + "|" + Dated + "|" + Zone.Time;
      }
      const std::string Zones3 = Fields({u"timezone-from-dateTime"}, Text) + "|" +
                                 Fields({u"timezone-from-date"}, Date) + "|" +
                                 Fields({u"timezone-from-time"}, Time);
      EXPECT_EQ(Zones3, Expected);
      // Joined again, and moved to another zone: the clock reading stays whatever the local zone.
      const size_t Dot = Text.find(u'.');
      const UnicodeString Clock = Text.substr(0, 19) + u"." +
                                  (Dot == UnicodeString::npos ? u"000" : Text.substr(Dot + 1, 3));
      EXPECT_EQ(Evaluate(u"dateTime(\"" + Date + u"\", \"" + Time + u"\")", Number()),
                "UnicodeString:" + StringToUTF8(Clock + ZoneText));
      EXPECT_EQ(Evaluate(u"adjust-dateTime-to-timezone(\"" + Text + u"\", \"-PT3H\")", Number()),
                "UnicodeString:" + StringToUTF8(Clock + u"-03:00"));
      EXPECT_EQ(Evaluate(u"adjust-date-to-timezone(\"" + Date + u"\", \"-PT3H\")", Number()),
                "UnicodeString:" + StringToUTF8(Text.substr(0, 10) + u"-03:00"));
      EXPECT_EQ(Evaluate(u"adjust-time-to-timezone(\"" + Time + u"\", \"-PT3H\")", Number()),
                "UnicodeString:" + StringToUTF8(Clock.substr(11) + u"-03:00"));
    }
  }
}

TEST_F(XPathDateFunctions, DateTimeJoinsADateAndATime) {
  const TFunctionCase Cases[] = {
      {u"dateTime(\"2000-01-01\", \"10:00:00Z\")", "UnicodeString:2000-01-01T10:00:00.000Z"},
      {u"dateTime(\"2000-01-01\", \"10:00:00.250\")", "UnicodeString:2000-01-01T10:00:00.250"},
      {u"dateTime(\"2000-01-01+05:00\", \"10:00:00\")",
       "UnicodeString:2000-01-01T10:00:00.000+05:00"},
      // two offsets: the time's wins
      {u"dateTime(\"2000-01-01-03:00\", \"10:00:00+01:30\")",
       "UnicodeString:2000-01-01T10:00:00.000+01:30"},
      {u"dateTime(\"2000-01-01Z\", \"10:00:00Z\")", "UnicodeString:2000-01-01T10:00:00.000Z"},
      {u"dateTime(\"2000-01-01Z\", \"10:00:00+01:00\")",
       "XPath FORG0008: An invalid parameter was passed to fn:dateTime(arg)"},
      {u"dateTime(\"2000-13-01\", \"10:00:00\")", "Convert: Invalid argument to date encode"},
      {u"dateTime(\"2000-01-01\")",
       "Syntax: The \"fn:dateTime(date, time)\" function must have 2 parameters!"},
  };
  ExpectResults(Cases, Number());
}

TEST_F(XPathDateFunctions, AdjustKeepsTheClockAndReplacesTheZone) {
  const TFunctionCase Cases[] = {
      {u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00+01:00\", \"PT2H\")",
       "UnicodeString:2000-01-01T10:00:00.000+02:00"},
      {u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00\", \"-PT5H\")",
       "UnicodeString:2000-01-01T10:00:00-05:00"},
      {u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00.5Z\", \"PT5H30M\")",
       "UnicodeString:2000-01-01T10:00:00.500+05:30"},
      {u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00Z\", zz)",
       "UnicodeString:2000-01-01T10:00:00.000"},
      {u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00\", zz)",
       "UnicodeString:2000-01-01T10:00:00"},
      {u"adjust-dateTime-to-timezone(zz, \"PT1H\")", "Null"},
      // without a zone argument the local zone of the present moment
      {u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00-02:00\")",
       "UnicodeString:2000-01-01T10:00:00.000+00:00"},
      {u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00\", \"P1Y\")",
       "UnicodeString:2000-01-01T10:00:00+00:00"},
      {u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00\", \"x\")",
       "Exception: LxXMLToDuration; A duration must start with a \"P\"!"},
      {u"adjust-dateTime-to-timezone(\"x\", \"PT1H\")",
       "Convert: 'x' is not a valid XML date and time"},
      {u"adjust-dateTime-to-timezone()", "List: List index out of bounds (0)"},
      {u"adjust-dateTime-to-timezone(1, 2, 3)",
       "Syntax: The \"fn:adjust-dateTime-to-timezone(dt,timezone)\" function may not have more "
       "than 2 parameters!"},
      // the same for a date and for a time
      {u"adjust-date-to-timezone(\"2000-01-01+01:00\", \"PT1H30M\")",
       "UnicodeString:2000-01-01+01:30"},
      {u"adjust-date-to-timezone(\"2000-01-01Z\", zz)", "UnicodeString:2000-01-01"},
      {u"adjust-date-to-timezone(\"2000-01-01\", \"-PT10H\")", "UnicodeString:2000-01-01-10:00"},
      {u"adjust-time-to-timezone(\"10:00:00.5-05:00\", \"PT0S\")",
       "UnicodeString:10:00:00.500+00:00"},
      {u"adjust-time-to-timezone(\"10:00:00\")", "UnicodeString:10:00:00+00:00"},
      {u"adjust-time-to-timezone()", "List: List index out of bounds (0)"},
      {u"adjust-date-to-timezone(1, 2, 3)",
       "Syntax: The \"fn:adjust-date-to-timezone(date,timezone)\" function may not have more "
       "than 2 parameters!"},
      {u"adjust-time-to-timezone(1, 2, 3)",
       "Syntax: The \"fn:adjust-time-to-timezone(time,timezone)\" function may not have more "
       "than 2 parameters!"},
  };
  ExpectResults(Cases, Number());
  test::TZoneScope::Set("Asia/Kolkata", "IST-5:30");
  EXPECT_EQ(Evaluate(u"adjust-dateTime-to-timezone(\"2000-01-01T10:00:00\")", Number()),
            "UnicodeString:2000-01-01T10:00:00+05:30");
}

} // namespace
} // namespace lorvane
