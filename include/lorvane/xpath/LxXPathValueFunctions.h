/// The path language's functions over values, registered by their W3C names:
///   numbers          abs, ceiling, floor, round, half-to-even, number
///   texts            codepoints-to-string ... substring-after
///   patterns         matches, replace, tokenize (TRegEx, flags "s", "m", "i", "x", "q")
///   durations        years-from-duration ... seconds-from-duration
///   dates and times  dateTime, the field functions, the timezone functions,
///                    adjust-dateTime-to-timezone, adjust-date-to-timezone, adjust-time-to-timezone
///
/// Values are Variants: there are no sequence, date or duration types, so a sequence comes back
/// as its text "(...)", and dates, times and durations are texts in their XML Schema forms. Each
/// function counts its arguments when it is evaluated, so a wrong count shows only when a
/// candidate is tested; it raises ELxDomSyntax with the function's own message.
#pragma once

#include "lorvane/xpath/LxXPath.h"

namespace lorvane {

#define LX_XPATH_VALUE_FUNCTION(Name)                                                              \
  class Name : public TLxXPathFunction {                                                           \
    LX_CLASS(Name, TLxXPathFunction)                                                               \
    using TLxXPathFunction::TLxXPathFunction;                                                      \
    Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;                        \
  }

// Numbers: by the kind of the one argument; a text is never converted (abs("5") is Null).
/// abs(num): an integer as Int64, a float as double, a boolean 0 or 1, a date its day count.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnAbs);
/// ceiling(num): a 32-bit integer.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnCeiling);
/// floor(num): a 32-bit integer.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnFloor);
/// round(num): a 64-bit integer, halves to the even neighbour (round(2.5) is 2).
LX_XPATH_VALUE_FUNCTION(TLxXPathFnRound);
/// half-to-even(num): as round; no precision argument.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnRoundHalfToEven);
/// number(arg): a double; a value that isn't a number raises the Variant failure.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnNumber);

// Texts. Positions and lengths count UTF-16 units.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnCodepointsToString);
/// string-to-codepoints(string): the text "(65, 66)".
LX_XPATH_VALUE_FUNCTION(TLxXPathFnStringToCodepoints);
/// compare(a, b, collation*): -1, 0 or 1 under the named or the filter's collation.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnCompare);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnCodepointEqual);
/// concat(...): the values added by the Variant addition, from an empty text.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnConcat);
/// string-join((...), sep*): a sequence's members, or a text's characters, joined.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnStringJoin);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnSubstring);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnStringLength);
/// normalize-space(string): only U+0020 counts as a blank.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnNormalizeSpace);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnNormalizeUnicode);
/// simplify(string): LxSimplifyString.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnSimplify);
/// upper-case(string), lower-case(string): ASCII letters only.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnUpperCase);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnLowerCase);
/// translate(s, from, to): every occurrence of the whole text from becomes to.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnTranslate);
/// contains, starts-with, substring-before, substring-after: by the filter's collation.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnContains);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnStartsWith);
/// ends-with(s, t): exact, whatever the collation.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnEndsWith);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnSubstringBefore);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnSubstringAfter);
/// matches, replace, tokenize: a refused pattern raises ERegularExpressionError.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnMatches);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnReplace);
/// tokenize(string, pattern*, flags*): the text ("a", "b").
LX_XPATH_VALUE_FUNCTION(TLxXPathFnTokenize);

// Durations: a field of the argument's duration; a bad argument raises ELxXPathException
// "FORG0006".
LX_XPATH_VALUE_FUNCTION(TLxXPathFnYearsFromDuration);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnMonthsFromDuration);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnDaysFromDuration);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnHoursFromDuration);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnMinutesFromDuration);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnSecondsFromDuration);

/// dateTime(date, time): the date of one text with the time of the other, as a text.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnDateTime);

// Fields of a date, time or date-time text: Word values, a negative year an Integer, seconds a
// double; a text that isn't one raises EConvertError.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnYearFromDateTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnMonthFromDateTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnDayFromDateTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnHoursFromDateTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnMinutesFromDateTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnSecondsFromDateTime);
/// The three timezone functions: the zone as a duration text; Null without a zone; for "Z" the
/// local zone's offset at that moment.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnTimeZoneFromDateTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnYearFromDate);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnMonthFromDate);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnDayFromDate);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnTimeZoneFromDate);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnHoursFromTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnMinutesFromTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnSecondsFromTime);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnTimeZoneFromTime);

/// adjust-dateTime-to-timezone(dt, zone*): the clock reading kept, the zone replaced, added or
/// removed; without a zone argument the local zone of the present moment.
LX_XPATH_VALUE_FUNCTION(TLxXPathFnAdjustDateTimeToTimeZone);
/// adjust-date-to-timezone(d, zone*), adjust-time-to-timezone(t, zone*): the same for a date
/// ("yyyy-mm-dd") and for a time ("hh:mm:ss.mmm").
LX_XPATH_VALUE_FUNCTION(TLxXPathFnAdjustDateToTimeZone);
LX_XPATH_VALUE_FUNCTION(TLxXPathFnAdjustTimeToTimeZone);

#undef LX_XPATH_VALUE_FUNCTION

/// Registers the functions above, in the order the library lists them; called by LxXPathStartup
/// between the node functions and the boolean family.
void RegisterXPathNumberAndStringFunctions();
void RegisterXPathDateFunctions();

} // namespace lorvane
