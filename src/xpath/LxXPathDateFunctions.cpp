// The date, time and duration functions of filters: texts in their XML Schema forms taken apart,
// read field by field, or put together again. None of them does calendar arithmetic.
#include "lorvane/classes/LxStrings.h"
#include "lorvane/classes/LxVariants.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "lorvane/xpath/LxXPathValueFunctions.h"

#include <cmath>

namespace lorvane {

namespace {

using View = std::u16string_view;

UnicodeString ArgText(TLxXPathFunction& AFunction, Integer AParam, const TLxXPathNodes& ANodeList,
                      Integer AIndex) {
  return LxVarToStr(AFunction.Param(AParam)->Value(ANodeList, AIndex), u"", false);
}

UnicodeString Padded(Int64 AValue, Integer AWidth) {
  return LxPadLeft(IntToStr(AValue), AWidth, u'0');
}

// --- durations ----------------------------------------------------------------------------------

enum class TDurationField { Years, Months, Days, Hours, Minutes, Seconds };

/// The field AField of the one argument's duration; every failure on the way, the evaluation's
/// too, becomes "FORG0006".
Variant DurationField(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList, Integer AIndex,
                      View AName, TDurationField AField) {
  if (AFunction.ParamCount() != 1)
    throw ELxDomSyntax(u"The \"fn:%s(arg)\" function must have 1 parameter!",
                       {UnicodeString(AName)});
  if (auto* List = dynamic_cast<TLxXPathListTerm*>(AFunction.Param(0)); List && List->Count() == 0)
    return Null();
  Variant Result;
  TLxDuration Duration;
  try {
    Duration = LxXMLToDuration(ArgText(AFunction, 0, ANodeList, AIndex));
    // The whole seconds of any duration the reader accepts fit an Int64; the test keeps the cast
    // defined whatever a later reader allows.
    if (!(Duration.Seconds < 9.2e18))
      throw EConvertError(u"The duration is out of range");
  } catch (const Exception&) {
    throw ELxXPathException(
        u"FORG0006",
        Format(u"An invalid parameter was passed to fn:%s(arg)", {UnicodeString(AName)}), u"");
  }
  const Int64 Whole = static_cast<Int64>(Duration.Seconds);
  switch (AField) {
  case TDurationField::Years:
    Result = Integer(Duration.Months / 12);
    break;
  case TDurationField::Months:
    Result = Integer(Duration.Months % 12);
    break;
  case TDurationField::Days:
    Result = Int64(Whole / 86400);
    break;
  case TDurationField::Hours:
    Result = Int64(Whole % 86400 / 3600);
    break;
  case TDurationField::Minutes:
    Result = Int64(Whole % 3600 / 60);
    break;
  case TDurationField::Seconds:
    Result = std::fmod(Duration.Seconds, 60.0);
    break;
  }
  if (Duration.Negative)
    Result = Result * Variant(-1);
  return Result;
}

// --- fields of dates and times ------------------------------------------------------------------

enum class TDateField { Year, Month, Day, Hour, Minute, Second, TimeZone };
/// Which text a field function reads: it decides the message and how a UTC zone's moment is built.
enum class TDateText { DateTime, Date, Time };

/// The duration text of the local zone's offset at AMoment.
UnicodeString LocalOffsetText(TDateTime AMoment) {
  Integer Total = 0;
  Word Hours = 0;
  Word Minutes = 0;
  LxCalcTimeZoneOffset(AMoment, Total, Hours, Minutes);
  TLxDuration Offset;
  Offset.Negative = Total < 0;
  Offset.Seconds = Hours * 3600.0 + Minutes * 60.0;
  return LxDurationToXML(Offset);
}

Variant TimeZoneOf(const TLxDateTimeParts& AParts, TDateText AText) {
  switch (AParts.TimeZone) {
  case tzfNone:
    return Null();
  case tzfTimezone: {
    TLxDuration Offset;
    Offset.Negative = AParts.OffsetMinutes < 0;
    Offset.Seconds = std::abs(static_cast<Integer>(AParts.OffsetMinutes)) * 60.0;
    return LxDurationToXML(Offset);
  }
  case tzfUTC:
    break;
  }
  // A time alone lies on the day without date, 1899-12-30, as everywhere in the conversions.
  TDateTime Moment = EncodeTime(AParts.Hour, AParts.Minute, AParts.Second, AParts.MSec);
  if (AText == TDateText::Date)
    Moment = EncodeDate(AParts.Year, AParts.Month, AParts.Day);
  else if (AText == TDateText::DateTime)
    Moment = EncodeDateTime(AParts.Year, AParts.Month, AParts.Day, AParts.Hour, AParts.Minute,
                            AParts.Second, AParts.MSec);
  return LocalOffsetText(Moment);
}

Variant DateField(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList, Integer AIndex,
                  View AName, TDateText AText, TDateField AField) {
  static constexpr View ArgNames[] = {u"dateTime", u"date", u"time"};
  if (AFunction.ParamCount() != 1)
    throw ELxDomSyntax(u"The \"fn:%s(%s)\" function must have 1 parameter!",
                       {UnicodeString(AName), UnicodeString(ArgNames[static_cast<int>(AText)])});
  const TLxDateTimeParts Parts = LxDecodeISODateTime(ArgText(AFunction, 0, ANodeList, AIndex));
  switch (AField) {
  case TDateField::Year:
    if (Parts.Negative)
      return -Integer(Parts.Year);
    return Parts.Year;
  case TDateField::Month:
    return Parts.Month;
  case TDateField::Day:
    return Parts.Day;
  case TDateField::Hour:
    return Parts.Hour;
  case TDateField::Minute:
    return Parts.Minute;
  case TDateField::Second:
    return Parts.Second + Parts.MSec / 1000.0;
  case TDateField::TimeZone:
    break;
  }
  return TimeZoneOf(Parts, AText);
}

/// "+hh:mm" or "-hh:mm" of an offset in minutes.
UnicodeString ZoneText(Int64 ATotalMinutes) {
  const Int64 Magnitude = ATotalMinutes < 0 ? -ATotalMinutes : ATotalMinutes;
  return UnicodeString(ATotalMinutes < 0 ? u"-" : u"+") + Padded(Magnitude / 60, 2) + u":" +
         Padded(Magnitude % 60, 2);
}

} // namespace

#define LX_DURATION_FIELD(Class, Name, Field)                                                      \
  Variant Class::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {                           \
    return DurationField(*this, ANodeList, AIndex, Name, TDurationField::Field);                   \
  }
LX_DURATION_FIELD(TLxXPathFnYearsFromDuration, u"years-from-duration", Years)
LX_DURATION_FIELD(TLxXPathFnMonthsFromDuration, u"months-from-duration", Months)
LX_DURATION_FIELD(TLxXPathFnDaysFromDuration, u"days-from-duration", Days)
LX_DURATION_FIELD(TLxXPathFnHoursFromDuration, u"hours-from-duration", Hours)
LX_DURATION_FIELD(TLxXPathFnMinutesFromDuration, u"minutes-from-duration", Minutes)
LX_DURATION_FIELD(TLxXPathFnSecondsFromDuration, u"seconds-from-duration", Seconds)
#undef LX_DURATION_FIELD

#define LX_DATE_FIELD(Class, Name, Text, Field)                                                    \
  Variant Class::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {                           \
    return DateField(*this, ANodeList, AIndex, Name, TDateText::Text, TDateField::Field);          \
  }
LX_DATE_FIELD(TLxXPathFnYearFromDateTime, u"year-from-dateTime", DateTime, Year)
LX_DATE_FIELD(TLxXPathFnMonthFromDateTime, u"month-from-dateTime", DateTime, Month)
LX_DATE_FIELD(TLxXPathFnDayFromDateTime, u"day-from-dateTime", DateTime, Day)
LX_DATE_FIELD(TLxXPathFnHoursFromDateTime, u"hours-from-dateTime", DateTime, Hour)
LX_DATE_FIELD(TLxXPathFnMinutesFromDateTime, u"minutes-from-dateTime", DateTime, Minute)
LX_DATE_FIELD(TLxXPathFnSecondsFromDateTime, u"seconds-from-dateTime", DateTime, Second)
LX_DATE_FIELD(TLxXPathFnTimeZoneFromDateTime, u"timezone-from-dateTime", DateTime, TimeZone)
LX_DATE_FIELD(TLxXPathFnYearFromDate, u"year-from-date", Date, Year)
LX_DATE_FIELD(TLxXPathFnMonthFromDate, u"month-from-date", Date, Month)
LX_DATE_FIELD(TLxXPathFnDayFromDate, u"day-from-date", Date, Day)
LX_DATE_FIELD(TLxXPathFnTimeZoneFromDate, u"timezone-from-date", Date, TimeZone)
LX_DATE_FIELD(TLxXPathFnHoursFromTime, u"hours-from-time", Time, Hour)
LX_DATE_FIELD(TLxXPathFnMinutesFromTime, u"minutes-from-time", Time, Minute)
LX_DATE_FIELD(TLxXPathFnSecondsFromTime, u"seconds-from-time", Time, Second)
LX_DATE_FIELD(TLxXPathFnTimeZoneFromTime, u"timezone-from-time", Time, TimeZone)
#undef LX_DATE_FIELD

Variant TLxXPathFnDateTime::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() != 2)
    throw ELxDomSyntax(u"The \"fn:dateTime(date, time)\" function must have 2 parameters!");
  const TLxDateTimeParts D = LxDecodeISODateTime(ArgText(*this, 0, ANodeList, AIndex));
  const TLxDateTimeParts T = LxDecodeISODateTime(ArgText(*this, 1, ANodeList, AIndex));
  // Only the kinds of zone are compared: two different offsets pass, and the time's wins.
  const TLxDateTimeParts* R = &T;
  if (D.TimeZone != tzfNone && T.TimeZone == tzfNone)
    R = &D;
  else if (D.TimeZone != tzfNone && T.TimeZone != tzfNone && D.TimeZone != T.TimeZone)
    throw ELxXPathException(u"FORG0008", u"An invalid parameter was passed to fn:dateTime(arg)",
                            u"");
  double Moment = EncodeDateTime(D.Year, D.Month, D.Day, T.Hour, T.Minute, T.Second, T.MSec);
  if (D.Negative)
    Moment *= -1;
  UnicodeString Result = LxDateTimeToXML(TDateTime(Moment), tzfNone);
  if (R->TimeZone == tzfUTC)
    Result += u"Z";
  else if (R->TimeZone == tzfTimezone)
    Result += ZoneText(R->OffsetMinutes);
  return Result;
}

namespace {

/// adjust-dateTime-to-timezone and its date and time kin: the parts of the text written out
/// again with the zone replaced, added or removed; the clock reading never moves.
Variant AdjustToTimeZone(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList,
                         Integer AIndex, TDateText AText) {
  static constexpr View TooMany[] = {
      u"The \"fn:adjust-dateTime-to-timezone(dt,timezone)\" function may not have more than 2 "
      u"parameters!",
      u"The \"fn:adjust-date-to-timezone(date,timezone)\" function may not have more than 2 "
      u"parameters!",
      u"The \"fn:adjust-time-to-timezone(time,timezone)\" function may not have more than 2 "
      u"parameters!"};
  if (AFunction.ParamCount() > 2)
    throw ELxDomSyntax(UnicodeString(TooMany[static_cast<int>(AText)]));
  // The first argument is required; without it the argument list has no item 0.
  if (AFunction.ParamCount() == 0)
    throw EListError(u"List index out of bounds (0)");
  const Variant First = AFunction.Param(0)->Value(ANodeList, AIndex);
  if (VarIsNull(First))
    return First;
  const UnicodeString FirstText = LxVarToStr(First, u"", false);
  const TLxDateTimeParts P = LxDecodeISODateTime(FirstText);

  bool ZoneIsNull = false;
  Int64 Total = 0;
  if (AFunction.ParamCount() == 1) {
    Word Hours = 0;
    Word Minutes = 0;
    Integer Offset = 0;
    LxCalcTimeZoneOffset(Now(), Offset, Hours, Minutes);
    Total = Offset;
  } else {
    const Variant Zone = AFunction.Param(1)->Value(ANodeList, AIndex);
    ZoneIsNull = VarIsNull(Zone);
    if (!ZoneIsNull) {
      const TLxDuration Duration = LxXMLToDuration(LxVarToStr(Zone, u"", false));
      if (!(Duration.Seconds < 9.2e18))
        throw EConvertError(u"The time zone %s is out of range", {LxDurationToXML(Duration)});
      const Int64 Whole = static_cast<Int64>(Duration.Seconds);
      Total = Whole / 3600 * 60 + Whole % 3600 / 60;
      if (Duration.Negative)
        Total = -Total;
    }
  }

  if (P.TimeZone == tzfNone)
    return ZoneIsNull ? First : Variant(FirstText + ZoneText(Total));
  UnicodeString Result;
  if (AText != TDateText::Time)
    Result = Padded(P.Year, 4) + u"-" + Padded(P.Month, 2) + u"-" + Padded(P.Day, 2);
  if (AText == TDateText::DateTime)
    Result += u"T";
  if (AText != TDateText::Date)
    Result += Padded(P.Hour, 2) + u":" + Padded(P.Minute, 2) + u":" + Padded(P.Second, 2) + u"." +
              Padded(P.MSec, 3).substr(0, 3);
  if (!ZoneIsNull)
    Result += ZoneText(Total);
  return Result;
}

} // namespace

Variant TLxXPathFnAdjustDateTimeToTimeZone::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return AdjustToTimeZone(*this, ANodeList, AIndex, TDateText::DateTime);
}

Variant TLxXPathFnAdjustDateToTimeZone::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return AdjustToTimeZone(*this, ANodeList, AIndex, TDateText::Date);
}

Variant TLxXPathFnAdjustTimeToTimeZone::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return AdjustToTimeZone(*this, ANodeList, AIndex, TDateText::Time);
}

void RegisterXPathDateFunctions() {
  static constexpr struct {
    View Name;
    TLxXPathFunctionClass Class;
  } Functions[] = {
      {u"years-from-duration", &XPathFunctionClass<TLxXPathFnYearsFromDuration>},
      {u"months-from-duration", &XPathFunctionClass<TLxXPathFnMonthsFromDuration>},
      {u"days-from-duration", &XPathFunctionClass<TLxXPathFnDaysFromDuration>},
      {u"hours-from-duration", &XPathFunctionClass<TLxXPathFnHoursFromDuration>},
      {u"minutes-from-duration", &XPathFunctionClass<TLxXPathFnMinutesFromDuration>},
      {u"seconds-from-duration", &XPathFunctionClass<TLxXPathFnSecondsFromDuration>},
      {u"dateTime", &XPathFunctionClass<TLxXPathFnDateTime>},
      {u"year-from-dateTime", &XPathFunctionClass<TLxXPathFnYearFromDateTime>},
      {u"month-from-dateTime", &XPathFunctionClass<TLxXPathFnMonthFromDateTime>},
      {u"day-from-dateTime", &XPathFunctionClass<TLxXPathFnDayFromDateTime>},
      {u"hours-from-dateTime", &XPathFunctionClass<TLxXPathFnHoursFromDateTime>},
      {u"minutes-from-dateTime", &XPathFunctionClass<TLxXPathFnMinutesFromDateTime>},
      {u"seconds-from-dateTime", &XPathFunctionClass<TLxXPathFnSecondsFromDateTime>},
      {u"timezone-from-dateTime", &XPathFunctionClass<TLxXPathFnTimeZoneFromDateTime>},
      {u"year-from-date", &XPathFunctionClass<TLxXPathFnYearFromDate>},
      {u"month-from-date", &XPathFunctionClass<TLxXPathFnMonthFromDate>},
      {u"day-from-date", &XPathFunctionClass<TLxXPathFnDayFromDate>},
      {u"timezone-from-date", &XPathFunctionClass<TLxXPathFnTimeZoneFromDate>},
      {u"hours-from-time", &XPathFunctionClass<TLxXPathFnHoursFromTime>},
      {u"minutes-from-time", &XPathFunctionClass<TLxXPathFnMinutesFromTime>},
      {u"seconds-from-time", &XPathFunctionClass<TLxXPathFnSecondsFromTime>},
      {u"timezone-from-time", &XPathFunctionClass<TLxXPathFnTimeZoneFromTime>},
      {u"adjust-dateTime-to-timezone", &XPathFunctionClass<TLxXPathFnAdjustDateTimeToTimeZone>},
      {u"adjust-date-to-timezone", &XPathFunctionClass<TLxXPathFnAdjustDateToTimeZone>},
      {u"adjust-time-to-timezone", &XPathFunctionClass<TLxXPathFnAdjustTimeToTimeZone>},
  };
  for (const auto& Entry : Functions)
    RegisterXPathFunction(UnicodeString(Entry.Name), Entry.Class);
}

} // namespace lorvane
