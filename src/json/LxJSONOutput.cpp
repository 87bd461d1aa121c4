// Variants as JSON text, and JSON date text ("/Date(ms)/" or the XML forms) as TDateTime.
#include "lorvane/json/LxJSONOutput.h"

#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "xmlutils/internal/VariantForms.h"

#include <cmath>

namespace lorvane {

using xmlvalues::OrDefault;
using xmlvalues::VariantToDateTime;

namespace {

void AppendJSON(UnicodeString& AResult, const Variant& AValue) {
  switch (VarMainTypeKind(AValue)) {
  case lmkDateTime:
    AResult += u'"';
    AResult += LxDateTimeToXML(AValue.AsDateTime(), tzfNone);
    AResult += u'"';
    return;
  case lmkArray: {
    // Arrays of Variants nest only as deep as the application built them.
    AResult += u'[';
    const Integer Low = VarArrayLowBound(AValue, 1);
    const Integer High = VarArrayHighBound(AValue, 1);
    for (Integer I = Low; I <= High; ++I) {
      if (I > Low)
        AResult += u',';
      AppendJSON(AResult, VarArrayGet(AValue, I));
    }
    AResult += u']';
    return;
  }
  case lmkBoolean:
    AResult += LxBoolToXML(AValue.AsBoolean());
    return;
  case lmkInteger:
    // An unsigned 64-bit value beyond the signed range keeps its digits.
    AResult += VarType(AValue) == varUInt64 ? UIntToStr(AValue.AsUInt64())
                                            : LxInt64ToXML(AValue.AsInt64());
    return;
  case lmkFloat: {
    const double Number = AValue.AsDouble();
    if (std::isnan(Number) || std::isinf(Number))
      AResult += u"null";
    else if (Number == 0 && std::signbit(Number))
      AResult += u"-0";
    else
      AResult += LxDoubleToXML(Number);
    return;
  }
  case lmkString:
    AResult += u'"';
    if (VarType(AValue) == varString)
      AResult += LxStrToJSON(AValue.AsString());
    else
      AResult += LxStrToJSON(VarWideTextView(AValue));
    AResult += u'"';
    return;
  default:
    AResult += u"null";
    return;
  }
}

constexpr double UnixEpoch = 25569.0; // 1970-01-01
constexpr Int64 MillisecondsPerDay = 86400000;

bool IsMillisecondForm(std::u16string_view AValue) {
  return !AValue.empty() && AValue.front() == u'/';
}

// "/Date(n)/": n stands behind the 6 characters of "/Date(" and before the 2 of ")/", 8 in all.
Int64 Milliseconds(std::u16string_view AValue) {
  const std::size_t Length = AValue.size() >= 8 ? AValue.size() - 8 : 0;
  return StrToInt64(AValue.substr(std::min<std::size_t>(6, AValue.size()), Length));
}

// Whole days and the rest apart, so that a day boundary stays exact.
double DaysOf(Int64 AMilliseconds) {
  return static_cast<double>(AMilliseconds / MillisecondsPerDay) +
         static_cast<double>(AMilliseconds % MillisecondsPerDay) / MillisecondsPerDay;
}

// 1970-01-01 plus the milliseconds as a moment. The day is counted down to the whole day before,
// and before 1899-12-30 the time of day is subtracted, as a TDateTime reads its fraction there:
// plain addition would put 1899-12-28 18:00 on 1899-12-29 06:00.
double MomentOf(Int64 AMilliseconds) {
  Int64 Days = AMilliseconds / MillisecondsPerDay;
  Int64 Rest = AMilliseconds % MillisecondsPerDay;
  if (Rest < 0) {
    --Days;
    Rest += MillisecondsPerDay;
  }
  const double Day = static_cast<double>(Days) + UnixEpoch;
  const double Time = static_cast<double>(Rest) / MillisecondsPerDay;
  return Day >= 0 ? Day + Time : Day - Time;
}

} // namespace

UnicodeString LxVarToJSON(const Variant& AValue) {
  UnicodeString Result;
  AppendJSON(Result, AValue);
  return Result;
}

TLxJSONDataType LxVarTypeToJSONType(const Variant& AValue) {
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
  case lmkFloat:
    return jdtNumber;
  case lmkString:
  case lmkDateTime:
    return jdtString;
  case lmkBoolean:
    return jdtBoolean;
  case lmkArray:
    return jdtArray;
  default:
    return jdtNull;
  }
}

TDateTime LxJSONToDate(std::u16string_view AValue) {
  if (AValue.empty())
    return 0.0;
  if (IsMillisecondForm(AValue))
    return std::trunc(MomentOf(Milliseconds(AValue)));
  return LxXMLToDate(AValue);
}

TDateTime LxJSONToTime(std::u16string_view AValue) {
  if (AValue.empty())
    return 0.0;
  if (IsMillisecondForm(AValue))
    return DaysOf(Milliseconds(AValue));
  return LxXMLToTime(AValue, tzfNone);
}

TDateTime LxJSONToDateTime(std::u16string_view AValue) {
  if (AValue.empty())
    return 0.0;
  if (IsMillisecondForm(AValue))
    return MomentOf(Milliseconds(AValue));
  return LxXMLToDateTime(AValue, tzfNone);
}

TDateTime LxJSONToDate(const Variant& AValue, TDateTime ADefault) {
  return VariantToDateTime(AValue, ADefault, u"Date",
                           [](const UnicodeString& AText) { return LxJSONToDate(AText); });
}

TDateTime LxJSONToTime(const Variant& AValue, TDateTime ADefault) {
  return VariantToDateTime(AValue, ADefault, u"Time",
                           [](const UnicodeString& AText) { return LxJSONToTime(AText); });
}

TDateTime LxJSONToDateTime(const Variant& AValue, TDateTime ADefault) {
  return VariantToDateTime(AValue, ADefault, u"DateTime",
                           [](const UnicodeString& AText) { return LxJSONToDateTime(AText); });
}

TDateTime LxJSONToDateDef(std::u16string_view AValue, TDateTime ADefault) noexcept {
  return OrDefault([&] { return LxJSONToDate(AValue); }, ADefault);
}

TDateTime LxJSONToTimeDef(std::u16string_view AValue, TDateTime ADefault) noexcept {
  return OrDefault([&] { return LxJSONToTime(AValue); }, ADefault);
}

TDateTime LxJSONToDateTimeDef(std::u16string_view AValue, TDateTime ADefault) noexcept {
  return OrDefault([&] { return LxJSONToDateTime(AValue); }, ADefault);
}

} // namespace lorvane
