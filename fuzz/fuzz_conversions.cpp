// Fuzz target of the conversions between text and values: integers, floats, booleans, dates,
// times, date-times and durations in their XML forms, the JSON date forms, Base64, code page names
// and numbers, and the date steps. The first byte picks the conversion, the rest is its text (as
// UTF-8) or its arguments. Where a text form is exact, a value goes to text and back unchanged and
// a text read, written and read again gives the same value; a broken promise aborts. Only the
// documented failures of a conversion are expected.
#include "lorvane/uLxCore.h"
#include "lorvane/uLxJSON.h"
#include "lorvane/uLxXMLUtils.h"
#include "support/DocumentedFailures.h"

#include "lorvane/platform/CodePages.h"
#include "lorvane/platform/DateUtils.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace lorvane {
namespace {

/// A conversion broke its promise: report what and stop, so that the input is kept.
void Require(bool ACondition, const char* AWhat) {
  if (!ACondition) {
    std::fprintf(stderr, "conversion oracle failed: %s\n", AWhat);
    std::abort();
  }
}

/// The documented failures of the conversions pass; anything else escapes and is a finding. The
/// result of AAction, or nothing when it failed as documented.
template <class F> auto Attempt(F&& AAction) -> std::optional<decltype(AAction())> {
  try {
    return AAction();
  } catch (const std::exception& E) {
    if (!documented::IsDocumented(documented::TEntry::ValueConversions, E))
      throw;
  }
  return std::nullopt;
}

/// Reads the input's integers and floats from its bytes; missing bytes read as zeros.
class TArguments {
public:
  TArguments(const uint8_t* AData, size_t ASize) : FData(AData), FSize(ASize) {}
  uint64_t Bits(size_t ACount) {
    uint64_t Result = 0;
    for (size_t I = 0; I < ACount; ++I)
      Result |= uint64_t{FPos < FSize ? FData[FPos++] : uint8_t{0}} << (8 * I);
    return Result;
  }
  Int64 Integer64() { return static_cast<Int64>(Bits(8)); }
  double Float() {
    const uint64_t Raw = Bits(8);
    double Result;
    std::memcpy(&Result, &Raw, sizeof Result);
    return Result;
  }

private:
  const uint8_t* FData;
  size_t FSize;
  size_t FPos = 0;
};

bool SameFloat(double A, double B) { return (std::isnan(A) && std::isnan(B)) || A == B; }

bool InCalendar(double AValue) {
  Word Year, Month, Day;
  DecodeDate(AValue, Year, Month, Day);
  return Year != 0;
}

std::array<Word, 7> Moment(double AValue) {
  std::array<Word, 7> M{};
  DecodeDateTime(AValue, M[0], M[1], M[2], M[3], M[4], M[5], M[6]);
  return M;
}

// --- numbers and booleans ------------------------------------------------------------------------

// A strict XML integer read, its Def form, and the text of the value read back.
template <class T, class FRead, class FDef, class FWrite>
void IntegerForm(std::u16string_view AText, FRead ARead, FDef ADef, FWrite AWrite,
                 bool AWrittenReadsBack) {
  const std::optional<T> Value = Attempt([&] { return ARead(AText); });
  const T Default = static_cast<T>(7);
  Require(ADef(AText, Default) == (Value ? *Value : Default), "an integer's Def form");
  if (Value && AWrittenReadsBack)
    Require(ARead(AWrite(*Value)) == *Value, "an integer's text reads back");
}

// The strict readers have Variant overloads: these lambdas pick the text ones.
#define LX_INTEGER_FORM(T, Read, Write, ReadsBack)                                                 \
  IntegerForm<T>(                                                                                  \
      AText, [](std::u16string_view X) { return Read(X); },                                        \
      [](std::u16string_view X, T D) { return Read##Def(X, D); }, Write, ReadsBack)

void Integers(std::u16string_view AText) {
  LX_INTEGER_FORM(ShortInt, LxXMLToShortint, LxShortIntToXML, true);
  LX_INTEGER_FORM(SmallInt, LxXMLToSmallint, LxSmallIntToXML, true);
  LX_INTEGER_FORM(Integer, LxXMLToInt, LxIntToXML, true);
  LX_INTEGER_FORM(Int64, LxXMLToInt64, LxInt64ToXML, true);
  LX_INTEGER_FORM(Byte, LxXMLToByte, LxByteToXML, true);
  LX_INTEGER_FORM(Word, LxXMLToWord, LxWordToXML, true);
  LX_INTEGER_FORM(UInt64, LxXMLToUInt64, LxUInt64ToXML, true);
  // The Longword parse is signed: its text reads back up to 2147483647.
  const std::optional<Cardinal> Long = Attempt([&] { return LxXMLToLongword(AText); });
  LX_INTEGER_FORM(Cardinal, LxXMLToLongword, LxLongWordToXML, Long && *Long <= 2147483647u);
}

#undef LX_INTEGER_FORM

// A float's text has 15 significant digits: read, written and read again it gives the same text,
// where the double holds 15 digits (not below DBL_MIN) and their rounding stays in range.
template <class FRead, class FWrite>
void FloatTextIsStable(double AValue, FRead ARead, FWrite AWrite) {
  const double Magnitude = std::fabs(AValue);
  if (std::isfinite(AValue) && (Magnitude < DBL_MIN || Magnitude > 1.79769313486231e308) &&
      AValue != 0)
    return;
  const UnicodeString Text = AWrite(AValue);
  const double Again = ARead(Text);
  Require(SameFloat(Again, AValue) || AWrite(Again) == Text, "a float's text is stable");
}

void Floats(std::u16string_view AText) {
  if (const std::optional<double> Value = Attempt([&] { return LxXMLToDouble(AText); })) {
    Require(SameFloat(LxXMLToDoubleDef(AText, 7), *Value), "LxXMLToDoubleDef");
    FloatTextIsStable(
        *Value, [](std::u16string_view T) { return LxXMLToDouble(T); }, LxDoubleToXML);
  } else {
    Require(LxXMLToDoubleDef(AText, 7) == 7, "LxXMLToDoubleDef of a bad text");
  }
  Attempt([&] { return LxXMLToSingle(AText); });
  Attempt([&] { return LxXMLToExtended(AText); });

  const std::optional<double> Value = Attempt([&] { return StrToFloat(AText); });
  double Tried = 0;
  Require(TryStrToFloat(AText, Tried) == Value.has_value(), "TryStrToFloat agrees");
  if (Value) {
    Require(SameFloat(Tried, *Value), "TryStrToFloat's value");
    FloatTextIsStable(
        *Value, [](std::u16string_view T) { return StrToFloat(T); },
        [](double V) { return FloatToStr(V); });
  }
}

void Booleans(std::u16string_view AText) {
  const bool Value = LxXMLToBool(AText);
  Require(LxXMLToBool(LxBoolToXML(Value)) == Value, "a boolean's text reads back");
  const std::optional<bool> Strict = Attempt([&] { return StrToBool(AText); });
  bool Tried = false;
  Require(TryStrToBool(AText, Tried) == Strict.has_value(), "TryStrToBool agrees");
  if (Strict) {
    Require(Tried == *Strict, "TryStrToBool's value");
    Require(StrToBool(BoolToStr(*Strict, true)) == *Strict, "BoolToStr reads back");
    Require(StrToBool(BoolToStr(*Strict)) == *Strict, "BoolToStr's number reads back");
  }
}

void PlainIntegers(std::u16string_view AText) {
  const std::optional<Int64> Value64 = Attempt([&] { return StrToInt64(AText); });
  Int64 Tried64 = 0;
  Require(TryStrToInt64(AText, Tried64) == Value64.has_value(), "TryStrToInt64 agrees");
  if (Value64)
    Require(Tried64 == *Value64 && StrToInt64(IntToStr(*Value64)) == *Value64,
            "StrToInt64 reads IntToStr back");
  const std::optional<Integer> Value = Attempt([&] { return StrToInt(AText); });
  Integer Tried = 0;
  Require(TryStrToInt(AText, Tried) == Value.has_value(), "TryStrToInt agrees");
  if (Value)
    Require(Tried == *Value && StrToInt(IntToStr(*Value)) == *Value,
            "StrToInt reads IntToStr back");
  UInt64 Unsigned = 0;
  if (TryStrToUInt64(AText, Unsigned)) {
    UInt64 Again = 0;
    Require(TryStrToUInt64(UIntToStr(Unsigned), Again) && Again == Unsigned,
            "TryStrToUInt64 reads UIntToStr back");
  }
}

// --- dates and times -----------------------------------------------------------------------------

// The zoned forms depend on the local zone: they are only asked not to fail otherwise.
void ZonedForms(std::u16string_view AText, double AValue) {
  for (const TLxTimeZoneFormat Format : {tzfUTC, tzfTimezone}) {
    LxDateToXML(AValue, Format);
    LxTimeToXML(AValue, Format);
    LxDateTimeToXML(AValue, Format);
    Attempt([&] { return LxXMLToTime(AText, Format); });
    Attempt([&] { return LxXMLToDateTime(AText, Format); });
  }
}

void Dates(std::u16string_view AText) {
  const std::optional<TDateTime> Value = Attempt([&] { return LxXMLToDate(AText); });
  Require(SameFloat(LxXMLToDateDef(AText, 7), Value ? Value->Value : 7), "LxXMLToDateDef");
  if (!Value)
    return;
  ZonedForms(AText, *Value);
  if (InCalendar(*Value))
    Require(LxXMLToDate(LxDateToXML(*Value, tzfNone)).Value == Value->Value,
            "a date's text reads back");
}

void Times(std::u16string_view AText) {
  const std::optional<TDateTime> Value = Attempt([&] { return LxXMLToTime(AText, tzfNone); });
  Require(SameFloat(LxXMLToTimeDef(AText, 7, tzfNone), Value ? Value->Value : 7), "LxXMLToTimeDef");
  if (!Value)
    return;
  Require(*Value >= 0 && *Value < 1, "a time lies in [0, 1)");
  ZonedForms(AText, *Value);
  Require(LxXMLToTime(LxTimeToXML(*Value, tzfNone), tzfNone).Value == Value->Value,
          "a time's text reads back");
}

// A date-time's text without zone, read again, gives the same moment and the same text. Between
// -1 and 0 the value and its opposite are the same moment (the day truncates to 1899-12-30).
void DateTimeTextReadsBack(double AValue, TDateTime (*ARead)(std::u16string_view)) {
  if (!InCalendar(AValue))
    return;
  const UnicodeString Text = LxDateTimeToXML(AValue, tzfNone);
  const double Again = ARead(Text);
  Require(Moment(Again) == Moment(AValue), "a date-time's text reads back to its moment");
  Require(Again == AValue || (AValue > -1 && AValue < 0 && Again == -AValue),
          "a date-time's text reads back to its value");
  Require(LxDateTimeToXML(Again, tzfNone) == Text, "a date-time's text is stable");
}

TDateTime XMLDateTime(std::u16string_view AText) { return LxXMLToDateTime(AText, tzfNone); }
TDateTime JSONDateTime(std::u16string_view AText) { return LxJSONToDateTime(AText); }

void DateTimes(std::u16string_view AText) {
  const std::optional<TDateTime> Value = Attempt([&] { return XMLDateTime(AText); });
  Require(SameFloat(LxXMLToDateTimeDef(AText, 7, tzfNone), Value ? Value->Value : 7),
          "LxXMLToDateTimeDef");
  if (!Value)
    return;
  ZonedForms(AText, *Value);
  DateTimeTextReadsBack(*Value, XMLDateTime);
}

void JSONDates(std::u16string_view AText) {
  const std::optional<TDateTime> Date = Attempt([&] { return LxJSONToDate(AText); });
  const std::optional<TDateTime> Time = Attempt([&] { return LxJSONToTime(AText); });
  const std::optional<TDateTime> DateTime = Attempt([&] { return LxJSONToDateTime(AText); });
  Require(SameFloat(LxJSONToDateDef(AText, 7), Date ? Date->Value : 7), "LxJSONToDateDef");
  Require(SameFloat(LxJSONToTimeDef(AText, 7), Time ? Time->Value : 7), "LxJSONToTimeDef");
  Require(SameFloat(LxJSONToDateTimeDef(AText, 7), DateTime ? DateTime->Value : 7),
          "LxJSONToDateTimeDef");
  if (!DateTime)
    return;
  // The JSON writer puts a date as its XML text in quotes, and that text reads back.
  if (InCalendar(*DateTime)) {
    const UnicodeString Written = LxVarToJSON(Variant(*DateTime));
    Require(Written.size() > 2 && Written.front() == u'"' && Written.back() == u'"',
            "a date is written as a JSON string");
    const double Read = JSONDateTime(std::u16string_view(Written).substr(1, Written.size() - 2));
    Require(Moment(Read) == Moment(*DateTime), "a date's JSON text reads back to its moment");
    DateTimeTextReadsBack(Read, JSONDateTime);
  }
  // "/Date(n)/" is 1970-01-01 plus n milliseconds: the same moment as that many steps of a
  // millisecond from there, on either side of 1899-12-30.
  if (!AText.empty() && AText.front() == u'/' && AText.size() >= 8) {
    const Int64 MSecs = StrToInt64(AText.substr(6, AText.size() - 8));
    if (MSecs > -Int64{400000} * 365 * 86400000 && MSecs < Int64{400000} * 365 * 86400000) {
      const double Stepped = IncMilliSecond(static_cast<double>(UnixDateDelta), MSecs);
      if (InCalendar(Stepped)) {
        Require(Moment(*DateTime) == Moment(Stepped), "\"/Date(n)/\" is n milliseconds on");
        Require(Date && InCalendar(*Date) && Moment(*Date)[0] == Moment(Stepped)[0] &&
                    Moment(*Date)[1] == Moment(Stepped)[1] &&
                    Moment(*Date)[2] == Moment(Stepped)[2],
                "\"/Date(n)/\" as a date is the day n milliseconds on");
      }
    }
  }
}

// --- durations -----------------------------------------------------------------------------------

void DurationsFromText(std::u16string_view AText) {
  const std::optional<TLxDuration> Value = Attempt([&] { return LxXMLToDuration(AText); });
  // The reader takes day counts up to 2147483647: beyond, the written text doesn't read.
  if (!Value || Value->Seconds >= 2147483648.0 * 86400)
    return;
  const TLxDuration Again = LxXMLToDuration(LxDurationToXML(*Value));
  Require(Again.Negative == Value->Negative && Again.Months == Value->Months &&
              Again.Seconds == Value->Seconds,
          "a duration read, written and read again is the same");
}

void DurationsFromValues(TArguments& AArguments) {
  // Below 2^43 seconds a duration of whole milliseconds comes back from its text exactly.
  const Int64 Whole = static_cast<Int64>(AArguments.Bits(8) % (UInt64{1} << 43));
  const Int64 MSecs = static_cast<Int64>(AArguments.Bits(2) % 1000);
  const uint64_t Months = AArguments.Bits(4);
  const TLxDuration Value{(Months & 1) != 0, static_cast<Integer>(Months >> 1),
                          static_cast<double>(Whole) + static_cast<double>(MSecs) / 1000.0};
  const TLxDuration Back = LxXMLToDuration(LxDurationToXML(Value));
  Require(Back.Negative == Value.Negative && Back.Months == Value.Months &&
              Back.Seconds == Value.Seconds,
          "a duration of whole milliseconds reads back from its text");
  // Any double as seconds: written or refused as out of range, never anything else.
  Attempt([&] { return LxDurationToXML(TLxDuration{false, 0, AArguments.Float()}); });
}

// --- Base64 --------------------------------------------------------------------------------------

void Base64Decode(std::string_view ABytes) {
  const TBase64Encoder& Encoder = TLxNetEncoding::Base64Ex();
  const std::optional<RawByteString> Decoded = Attempt([&] { return Encoder.Decode(ABytes); });
  // The UTF-16 form of the same characters decodes alike.
  const UnicodeString Wide(ABytes.begin(), ABytes.end());
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Int64{0}));
  const std::optional<Int64> Count =
      Attempt([&] { return TLxBase64Encoding::Decode(std::u16string_view(Wide), Stream.get()); });
  Require(Count.has_value() == Decoded.has_value(), "Base64 of bytes and of UTF-16 agree");
  if (!Decoded)
    return;
  Require(*Count == static_cast<Int64>(Decoded->size()) && Stream->GetSize() == *Count,
          "Base64 decoding writes what it counts");
  const RawByteString Encoded = Encoder.Encode(*Decoded);
  Require(Encoded.size() % 4 == 0 && Encoder.Decode(Encoded) == *Decoded,
          "Base64 of decoded bytes reads back");
}

void Base64Encode(std::string_view ABytes) {
  const TBase64Encoder& Encoder = TLxNetEncoding::Base64Ex();
  const RawByteString Encoded = Encoder.Encode(ABytes);
  Require(Encoded.size() == (ABytes.size() + 2) / 3 * 4, "Base64 writes four characters a group");
  Require(Encoder.Decode(Encoded) == ABytes, "Base64 of bytes reads back");
  Require(Encoder.EncodeBytesToString(ABytes) == UnicodeString(Encoded.begin(), Encoded.end()),
          "Base64 as a string is the same text");
  TOwned<TLxMemoryStream> Input(
      New<TLxMemoryStream>(static_cast<const void*>(ABytes.data()), Int64(ABytes.size())));
  TOwned<TLxMemoryStream> Output(New<TLxMemoryStream>(Int64{0}));
  Require(Encoder.Encode(Input.get(), Output.get()) == static_cast<Int64>(Encoded.size()),
          "Base64 of a stream writes what it counts");
}

// --- code pages ----------------------------------------------------------------------------------

void CodePageNames(std::u16string_view AName) {
  const std::optional<Word> CodePage = Attempt([&] { return LxCodePage(AName); });
  const std::optional<Word> Platform = Attempt([&] { return CodePageFromName(AName); });
  Word Tried = 0;
  const bool Found = TryCodePageFromName(AName, Tried);
  Require(Found == Platform.has_value() && (!Found || Tried == *Platform),
          "TryCodePageFromName agrees");
  if (!CodePage)
    return;
  Require(IsKnownCodePage(*CodePage), "a named code page is known");
  Require(LxCodePage(LxCodePage(*CodePage)) == *CodePage, "a code page's name names it");
  Require(CodePageFromName(CodePageName(*CodePage)) == *CodePage,
          "the platform's name of a code page names it");
}

void CodePageNumbers(std::string_view ABytes, Word ACodePage) {
  const std::optional<UnicodeString> Name = Attempt([&] { return LxCodePage(ACodePage); });
  Require(Name.has_value() == (ACodePage == 0 || IsKnownCodePage(ACodePage)),
          "a code page has a name when it is known");
  if (Name)
    Require(LxCodePage(*Name) == ResolveCodePage(ACodePage), "a code page's name names it");
  // The byte order mark at the start of the bytes.
  TOwned<TLxMemoryStream> Stream(
      New<TLxMemoryStream>(static_cast<const void*>(ABytes.data()), Int64(ABytes.size())));
  const Word Marked = LxGetCodePage(Stream.get());
  const Int64 Behind = Marked == 65001 ? 3 : Marked == 1200 ? 2 : 0;
  Require(Marked == 0 || Marked == 65001 || Marked == 1200, "a mark gives UTF-8 or UTF-16");
  Require(Stream->GetPosition() == Behind, "the stream stands behind the mark");
  Require((Marked == 65001) == (ABytes.substr(0, 3) == "\xEF\xBB\xBF") &&
              (Marked == 1200) == (ABytes.substr(0, 2) == "\xFF\xFE"),
          "the mark is the one the bytes begin with");
}

// --- date steps ----------------------------------------------------------------------------------

void DateSteps(TArguments& AArguments) {
  constexpr Int64 MSecsPerDayInt = 86400000;
  const struct {
    TDateTime (*Step)(TDateTime, Int64);
    Int64 UnitMSecs;
  } Helpers[] = {{IncDay, MSecsPerDayInt},
                 {IncHour, 3600000},
                 {IncMinute, 60000},
                 {IncSecond, 1000},
                 {IncMilliSecond, 1}};
  const uint64_t Choice = AArguments.Bits(1);
  const auto& Helper = Helpers[Choice % std::size(Helpers)];
  // Mostly a moment around the calendar's years, to 1/512 of a day; sometimes any double.
  const Int64 Raw = AArguments.Integer64();
  const double Start = (Choice & 0x80) != 0 ? AArguments.Float()
                                            : static_cast<double>(static_cast<int32_t>(Raw)) / 512;
  // Mostly one of the extremes, or near them; otherwise any count.
  const Int64 Count = AArguments.Integer64();
  const std::optional<TDateTime> Result = Attempt([&] { return Helper.Step(Start, Count); });
  // Outside years 1..9999 a value moves as a float and never raises.
  const bool OnTheLine = Start > -693594 && Start < 2958466;
  Require(Result.has_value() || OnTheLine, "a value outside the calendar steps without failing");
  if (!OnTheLine)
    return;
  // The step raises exactly when the result leaves the 64-bit millisecond range, give or take
  // the start, which lies within 3 million days of 1899-12-30.
  // (In doubles: their error, a few thousand milliseconds at most, is far below the slack.)
  const double Magnitude =
      std::fabs(static_cast<double>(Count) * static_cast<double>(Helper.UnitMSecs));
  const double Limit =
      static_cast<double>(std::numeric_limits<Int64>::max() / MSecsPerDayInt * MSecsPerDayInt);
  const double Slack = 3000000.0 * MSecsPerDayInt;
  if (Magnitude > Limit + Slack)
    Require(!Result, "a step beyond the range raises");
  if (Magnitude < Limit - Slack)
    Require(Result.has_value(), "a step within the range gives a value");
  // A step within the calendar goes back to where it began, to the millisecond.
  if (Result && InCalendar(*Result) && Count != std::numeric_limits<Int64>::min())
    Require(Helper.Step(*Result, -Count).Value == IncMilliSecond(Start, 0).Value,
            "a step and its opposite return to the start");
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  if (ASize == 0)
    return 0;
  const std::string_view Bytes(reinterpret_cast<const char*>(AData + 1), ASize - 1);
  const UnicodeString Text = UTF8ToString(Bytes);
  TArguments Arguments(AData + 1, ASize - 1);
  switch (AData[0] % 14) {
  case 0:
    Integers(Text);
    break;
  case 1:
    Floats(Text);
    break;
  case 2:
    Booleans(Text);
    break;
  case 3:
    PlainIntegers(Text);
    break;
  case 4:
    Dates(Text);
    break;
  case 5:
    Times(Text);
    break;
  case 6:
    DateTimes(Text);
    break;
  case 7:
    JSONDates(Text);
    break;
  case 8:
    DurationsFromText(Text);
    break;
  case 9:
    DurationsFromValues(Arguments);
    break;
  case 10:
    Base64Decode(Bytes);
    Base64Encode(Bytes);
    break;
  case 11:
    CodePageNames(Text);
    break;
  case 12:
    CodePageNumbers(Bytes.substr(std::min<size_t>(2, Bytes.size())),
                    static_cast<Word>(Arguments.Bits(2)));
    break;
  default:
    DateSteps(Arguments);
    break;
  }
  return 0;
}
