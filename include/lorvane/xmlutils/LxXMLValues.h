/// Simple values and their XML Schema text:
///   Each date and time operation has an overload on each zone-format type; the one on
///   TLxXMLDateTimeFormat takes xdtfLocal as tzfNone, xdtfUTC as tzfUTC, xdtfTimezone as
///   tzfTimezone.
///   TLxXMLDateTimeFormat, TLxTimeZoneFormat   the zone form of a date or time text, two numberings
///   TLxDateTimeParts, TLxDuration             a split date-time text; a duration as months+seconds
///   LxDecodeISODateTime, LxDecodeXMLDateTime  split "yyyy-mm-ddThh:mm:ss.mmm+hh:mm" and its parts
///   LxEncodeDuration, LxCalcTimeZoneOffset,
///   LxLocalToUTC, LxUTCToLocal                durations and the local zone
///   Lx<T>ToXML                                a value to its text
///   LxXMLTo<T>, LxXMLTo<T>Def                 text to a value: strict, and with a default
///   LxXMLTo<T>(Variant, ADefault)             a value of any kind to T
///   LxXMLToStr(Variant, ADefault)             a value of any kind to its text
///
/// All functions are free of state and safe on any thread. The local zone is the C library's.
/// A TDateTime without date (a time of day alone) lies on 1899-12-30, so the zone rules of that
/// day apply to it: standard time, never daylight saving, in most zones.
#pragma once

#include "lorvane/platform/DateUtils.h"
#include "lorvane/platform/SysUtils.h"
#include "lorvane/platform/Variants.h"

#include <string_view>

namespace lorvane {

/// The zone form as applications ask for it.
enum TLxXMLDateTimeFormat : Byte {
  xdtfLocal = 0,    ///< local time, no zone text
  xdtfUTC = 1,      ///< UTC, "Z"
  xdtfTimezone = 2, ///< local time with its offset
};

/// The zone form in the numbering the conversions work in.
enum TLxTimeZoneFormat : Byte {
  tzfNone = 0,     ///< no zone text
  tzfTimezone = 1, ///< with offset, "+hh:mm" or "-hh:mm"
  tzfUTC = 2,      ///< UTC, "Z"
};

/// A date-time text taken apart; parts the text doesn't hold are 0.
struct TLxDateTimeParts {
  bool HasDate = false;
  Word Year = 0;
  Word Month = 0;
  Word Day = 0;
  bool HasTime = false;
  Word Hour = 0;
  Word Minute = 0;
  Word Second = 0;
  Word MSec = 0;
  /// The text began with '-'.
  bool Negative = false;
  TLxTimeZoneFormat TimeZone = tzfNone;
  /// Offset from UTC in minutes, east positive; 0 for "Z" and for no zone.
  SmallInt OffsetMinutes = 0;
};

/// A duration: years and months as months, the rest as seconds; the two are never mixed.
struct TLxDuration {
  bool Negative = false;
  /// Years and months, a year being 12 months; not negative (the sign is Negative).
  Integer Months = 0;
  /// Days, hours, minutes, seconds and milliseconds, a day being 86400 seconds; not negative.
  double Seconds = 0;
};

/// xdtfTimezone for parts with tzfTimezone, xdtfUTC for tzfUTC, xdtfLocal otherwise.
TLxXMLDateTimeFormat LxXMLDateTimeFormat(const TLxDateTimeParts& AParts) noexcept;

// --- foundation ----------------------------------------------------------------------------------
/// Splits "yyyy-mm-dd", "hh:mm:ss", "hh:mm:ss.f" and "yyyy-mm-ddThh:mm:ss[.f]", each optionally
/// behind '-' (Negative) and followed by "Z", "+hh:mm" or "-hh:mm". The year has four digits or
/// more, the other fields two; the fraction has one digit or more, of which the first three are
/// the milliseconds. Blanks (up to U+0020) around the text are ignored. Values are not range
/// checked here (month 13 passes; the encoding that follows refuses it), but a zone beyond
/// 23:59 is. Any other text raises EConvertError "'%s' is not a valid XML date and time".
TLxDateTimeParts LxDecodeISODateTime(std::u16string_view AValue);
/// The same, under this module's name.
TLxDateTimeParts LxDecodeXMLDateTime(std::u16string_view AValue);

/// Months are AYears * 12 + AMonths; Seconds are the sum of the rest, milliseconds added last.
TLxDuration LxEncodeDuration(Word AYears, Word AMonths, Word ADays, Word AHours, Word AMinutes,
                             Word ASeconds, Word AMilliseconds, bool ANegative) noexcept;

/// The local zone's offset at the local moment AValue: ATotal in minutes, negative west of UTC;
/// AHours and AMinutes its magnitude.
void LxCalcTimeZoneOffset(TDateTime AValue, Integer& ATotal, Word& AHours, Word& AMinutes);
/// Conversion with the local zone. A local time that occurs twice or never around a daylight
/// saving change gets one of the two offsets, as LocalToUTC says.
TDateTime LxLocalToUTC(TDateTime AValue);
TDateTime LxUTCToLocal(TDateTime AValue);

// --- to text -------------------------------------------------------------------------------------
// Integers: decimal digits, '-' where negative. Each result is the only allocation.
UnicodeString LxShortIntToXML(ShortInt AValue);
UnicodeString LxSmallIntToXML(SmallInt AValue);
UnicodeString LxLongIntToXML(Integer AValue);
UnicodeString LxIntToXML(Integer AValue);
UnicodeString LxInt64ToXML(Int64 AValue);
UnicodeString LxByteToXML(Byte AValue);
UnicodeString LxWordToXML(Word AValue);
UnicodeString LxLongWordToXML(Cardinal AValue);
UnicodeString LxCardinalToXML(Cardinal AValue);
/// Written as the signed 64-bit value of the same bits: above 9223372036854775807 the text is
/// negative, and LxXMLToUInt64 reads it back to the same bits.
UnicodeString LxUInt64ToXML(UInt64 AValue);

/// "true" or "false".
UnicodeString LxBoolToXML(bool AValue);

/// FloatToStr's general format with 15 significant digits ("1.5", "1E20", "1.5E-7", "NAN",
/// "INF", "-INF"), '.' as point whatever FormatSettings say. 15 digits don't hold every double:
/// values that need 16 or 17 (0.1 + 0.2) read back as a neighbour, and DBL_MAX is written
/// "1.79769313486232E308", which is beyond range and doesn't read back at all.
UnicodeString LxDoubleToXML(Double AValue);
UnicodeString LxExtToXML(Extended AValue);

/// tzfNone: the local date "yyyy-mm-dd"; tzfUTC: the date after LxLocalToUTC and "Z";
/// tzfTimezone: the local date and the offset at that moment, "+hh:mm" or "-hh:mm" ("+00:00" for
/// none).
UnicodeString LxDateToXML(TDateTime AValue, TLxTimeZoneFormat AFormat);
UnicodeString LxDateToXML(TDateTime AValue, TLxXMLDateTimeFormat AFormat);
/// "hh:mm:ss.mmm", zoned as LxDateToXML.
UnicodeString LxTimeToXML(TDateTime AValue, TLxTimeZoneFormat AFormat);
UnicodeString LxTimeToXML(TDateTime AValue, TLxXMLDateTimeFormat AFormat);
/// "yyyy-mm-ddThh:mm:ss.mmm", zoned as LxDateToXML; the tzfUTC form has no milliseconds
/// ("yyyy-mm-ddThh:mm:ssZ").
UnicodeString LxDateTimeToXML(TDateTime AValue, TLxTimeZoneFormat AFormat);
UnicodeString LxDateTimeToXML(TDateTime AValue, TLxXMLDateTimeFormat AFormat);

/// "P", or "-P" when Negative, then years Y, months M, days D, and behind "T" hours H, minutes M
/// and seconds S with up to three decimals ("PT1.5S"); zero parts are left out, the zero duration
/// is "P0Y". The seconds round to the nearest millisecond (1.0006 is "PT1.001S", and 1 + 0.005,
/// a hair below 1.005 in binary, is "PT1.005S"), at any size. Below 2^43 seconds (about 101
/// million days) a double holds every millisecond, and a duration whose seconds are whole
/// milliseconds, as LxEncodeDuration and LxXMLToDuration make them, reads back from its text
/// exactly; above, the text of a value reads back to that value (while its day count stays within
/// what LxXMLToDuration reads, 2147483647). Seconds that are not finite or
/// beyond 2^63 milliseconds raise EConvertError "LxDurationToXML; The seconds of the duration are
/// out of range!".
UnicodeString LxDurationToXML(const TLxDuration& AValue);

// --- from text -----------------------------------------------------------------------------------
// Integers. Strict: "" gives 0; otherwise StrToInt (Shortint..Longword) or StrToInt64 (Int64,
// UInt64), whose EConvertError passes, and the result is cut to the type's width without a range
// test ("300" as Byte is 44; Longword fails above 2147483647, the parse being signed).
// Def: "" gives 0, a text that doesn't parse ADefault.
// Variant: Null gives ADefault; integers are cut, booleans are 0 or 1, text goes through StrToInt
// or StrToInt64; floats, dates and all else raise EConvertError "The given value is not a valid
// <type> value!".
ShortInt LxXMLToShortint(std::u16string_view AValue);
ShortInt LxXMLToShortintDef(std::u16string_view AValue, ShortInt ADefault) noexcept;
ShortInt LxXMLToShortint(const Variant& AValue, ShortInt ADefault);
SmallInt LxXMLToSmallint(std::u16string_view AValue);
SmallInt LxXMLToSmallintDef(std::u16string_view AValue, SmallInt ADefault) noexcept;
SmallInt LxXMLToSmallint(const Variant& AValue, SmallInt ADefault);
Integer LxXMLToInt(std::u16string_view AValue);
Integer LxXMLToIntDef(std::u16string_view AValue, Integer ADefault) noexcept;
Integer LxXMLToInt(const Variant& AValue, Integer ADefault);
Int64 LxXMLToInt64(std::u16string_view AValue);
Int64 LxXMLToInt64Def(std::u16string_view AValue, Int64 ADefault) noexcept;
Int64 LxXMLToInt64(const Variant& AValue, Int64 ADefault);
Byte LxXMLToByte(std::u16string_view AValue);
Byte LxXMLToByteDef(std::u16string_view AValue, Byte ADefault) noexcept;
Byte LxXMLToByte(const Variant& AValue, Byte ADefault);
Word LxXMLToWord(std::u16string_view AValue);
Word LxXMLToWordDef(std::u16string_view AValue, Word ADefault) noexcept;
Word LxXMLToWord(const Variant& AValue, Word ADefault);
Cardinal LxXMLToLongword(std::u16string_view AValue);
Cardinal LxXMLToLongwordDef(std::u16string_view AValue, Cardinal ADefault) noexcept;
Cardinal LxXMLToLongword(const Variant& AValue, Cardinal ADefault);
UInt64 LxXMLToUInt64(std::u16string_view AValue);
UInt64 LxXMLToUInt64Def(std::u16string_view AValue, UInt64 ADefault) noexcept;
UInt64 LxXMLToUInt64(const Variant& AValue, UInt64 ADefault);

// Floats. Strict: "" gives 0; otherwise StrToFloat with '.' as point and ',' as thousand
// separator whatever FormatSettings say, its EConvertError passing. Def: "" gives 0, a bad text
// ADefault. Variant: Null gives ADefault; integers, floats and dates are taken as floats, text
// goes through the strict parse (so "" raises there); booleans and all else raise EConvertError
// "The given value is not a valid <type> value!".
Single LxXMLToSingle(std::u16string_view AValue);
Single LxXMLToSingleDef(std::u16string_view AValue, Single ADefault) noexcept;
Single LxXMLToSingle(const Variant& AValue, Single ADefault);
Double LxXMLToDouble(std::u16string_view AValue);
Double LxXMLToDoubleDef(std::u16string_view AValue, Double ADefault) noexcept;
Double LxXMLToDouble(const Variant& AValue, Double ADefault);
Extended LxXMLToExtended(std::u16string_view AValue);
Extended LxXMLToExtendedDef(std::u16string_view AValue, Extended ADefault) noexcept;
Extended LxXMLToExtended(const Variant& AValue, Extended ADefault);

/// True for "1" and for "true" in any letter case; every other text is false.
bool LxXMLToBool(std::u16string_view AValue) noexcept;
/// Null gives ADefault; an integer is true when its low 8 bits aren't 0; a text as the strict
/// form; a boolean as it is; all else raises EConvertError "The given value is not a valid Boolean
/// value!".
bool LxXMLToBool(const Variant& AValue, bool ADefault);

// Dates and times. "" and "0" give 0.0. The text is split by LxDecodeISODateTime, whose
// EConvertError passes, as does that of EncodeDate/EncodeTime for parts that make no date or time.
// The zone format AFormat says what the caller wants out: tzfUTC a UTC value, the others a local
// one. A zone in the text is converted accordingly; a text without zone is taken as it stands
// with tzfNone, and raises Exception "The XMLDateTime value did not contain timezone
// information!" with the other two.
// Def forms give ADefault for any failure of the strict form.
// Variant forms: Null gives ADefault; integers, floats and dates are taken as the day count as
// they stand (no zone, no cut to the time of day); text goes through the strict form; all else
// raises EConvertError "The given value is not a valid Date value!" (Time, DateTime).

/// The date of the text; its time and zone are ignored. A leading '-' negates the day count.
TDateTime LxXMLToDate(std::u16string_view AValue);
TDateTime LxXMLToDateDef(std::u16string_view AValue, TDateTime ADefault) noexcept;
TDateTime LxXMLToDate(const Variant& AValue, TDateTime ADefault);

/// The time of the text, zone applied, cut to the time of day: always in [0, 1), to the
/// millisecond.
TDateTime LxXMLToTime(std::u16string_view AValue, TLxTimeZoneFormat AFormat);
TDateTime LxXMLToTime(std::u16string_view AValue, TLxXMLDateTimeFormat AFormat);
TDateTime LxXMLToTimeDef(std::u16string_view AValue, TDateTime ADefault,
                         TLxTimeZoneFormat AFormat) noexcept;
TDateTime LxXMLToTimeDef(std::u16string_view AValue, TDateTime ADefault,
                         TLxXMLDateTimeFormat AFormat) noexcept;
TDateTime LxXMLToTime(const Variant& AValue, TDateTime ADefault, TLxTimeZoneFormat AFormat);
TDateTime LxXMLToTime(const Variant& AValue, TDateTime ADefault, TLxXMLDateTimeFormat AFormat);

/// Date and time of the text (either may be missing), zone applied. A leading '-' negates the
/// value before the zone is applied.
TDateTime LxXMLToDateTime(std::u16string_view AValue, TLxTimeZoneFormat AFormat);
TDateTime LxXMLToDateTime(std::u16string_view AValue, TLxXMLDateTimeFormat AFormat);
TDateTime LxXMLToDateTimeDef(std::u16string_view AValue, TDateTime ADefault,
                             TLxTimeZoneFormat AFormat) noexcept;
TDateTime LxXMLToDateTimeDef(std::u16string_view AValue, TDateTime ADefault,
                             TLxXMLDateTimeFormat AFormat) noexcept;
TDateTime LxXMLToDateTime(const Variant& AValue, TDateTime ADefault, TLxTimeZoneFormat AFormat);
TDateTime LxXMLToDateTime(const Variant& AValue, TDateTime ADefault, TLxXMLDateTimeFormat AFormat);

/// Reads "P[nY][nM][nD][T[nH][nM][n[.fff]S]]", optionally behind '-'. Designators may stand in any
/// order and repeat (the last one counts); 'T' may stand before any number; digits of a fraction
/// behind the third don't count. Failures: "" raises Exception "LxXMLToDuration; An empty string
/// cannot be converted to a xs:duration!"; a text not beginning with "P" or "-P" raises Exception
/// "LxXMLToDuration; A duration must start with a \"P\"!"; a missing or unknown designator, or
/// years and months beyond a 32-bit month count, raise Exception "LxXMLToDuration; The provided
/// argument (%s) is not a valid duration!" with the whole text; an empty or oversized number
/// ("PYM") raises StrToInt's EConvertError. Parts above 65535 are kept whole.
TLxDuration LxXMLToDuration(std::u16string_view AValue);

/// Null gives ADefault. Integers give their decimal digits (a UInt64 as LxUInt64ToXML writes it),
/// floats LxDoubleToXML, text LxXMLToStr of the text (references decode), booleans LxBoolToXML,
/// dates LxDateTimeToXML with tzfNone, and an array each element's text through LxXMLToStr with
/// CR LF behind each, the last too. All else raises EConvertError "The given value is not a valid
/// String value!".
UnicodeString LxXMLToStr(const Variant& AValue, std::u16string_view ADefault);

} // namespace lorvane
