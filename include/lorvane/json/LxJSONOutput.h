/// Free conversions between JSON text and values:
///   LxVarToJSON            a Variant as JSON text
///   LxVarTypeToJSONType    the JSON type a Variant is written as
///   LxJSONToDate, LxJSONToTime, LxJSONToDateTime   JSON date text ("/Date(ms)/" or the XML
///                          forms) and Variants to TDateTime, with Def forms
#pragma once

#include "lorvane/json/LxJSONTypes.h"
#include "lorvane/platform/Variants.h"

#include <string_view>

namespace lorvane {

/// By the Variant's kind: a date as its XML text without zone in double quotes; an array as
/// "[" and its elements (low bound to high bound) joined by "," and "]"; a boolean "true" or
/// "false"; an integer its digits; a float its XML text, "-0" for negative zero and "null" for
/// NaN and the infinities; text escaped (LxStrToJSON) in double quotes; anything else "null".
UnicodeString LxVarToJSON(const Variant& AValue);

/// Integers and floats jdtNumber; text and dates jdtString; booleans jdtBoolean; arrays
/// jdtArray; anything else jdtNull.
TLxJSONDataType LxVarTypeToJSONType(const Variant& AValue);

// Dates. "" gives 0. A text beginning with "/" is "/Date(n)/": n (the text from the seventh
// character up to the last two) is a count of milliseconds since 1970-01-01 as StrToInt64 reads
// it, whose EConvertError passes. Any other text goes to the XML conversions (LxXMLToDate,
// LxXMLToTime and LxXMLToDateTime without zone) and raises what they raise.
// Variant forms: Null gives ADefault; integers, floats and dates are the day count as it stands;
// text the text form; anything else raises EConvertError "The given value is not a valid Date
// value!" (Time, DateTime).
// Def forms give ADefault wherever the text form raises.

/// 1970-01-01 plus n milliseconds, cut to the whole day.
TDateTime LxJSONToDate(std::u16string_view AValue);
/// n milliseconds as a fraction of a day (not cut).
TDateTime LxJSONToTime(std::u16string_view AValue);
/// 1970-01-01 plus n milliseconds.
TDateTime LxJSONToDateTime(std::u16string_view AValue);
TDateTime LxJSONToDate(const Variant& AValue, TDateTime ADefault);
TDateTime LxJSONToTime(const Variant& AValue, TDateTime ADefault);
TDateTime LxJSONToDateTime(const Variant& AValue, TDateTime ADefault);
TDateTime LxJSONToDateDef(std::u16string_view AValue, TDateTime ADefault) noexcept;
TDateTime LxJSONToTimeDef(std::u16string_view AValue, TDateTime ADefault) noexcept;
TDateTime LxJSONToDateTimeDef(std::u16string_view AValue, TDateTime ADefault) noexcept;

} // namespace lorvane
