// Numbers, booleans, dates, times and durations to XML Schema text and back, in pinned zones.
#include "lorvane/uLxXMLUtils.h"

#include "support/ScopeGuards.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace lorvane {
namespace {

using test::ExpectRaises;

// Pins the local zone and the regional settings for one test and puts both back afterwards.
class XMLValues : public ::testing::Test {
protected:
  static void SetZone(const char* AZone) { test::TZoneScope::Set(AZone); }

private:
  const test::TFormatSettingsScope FSettings;
  const test::TZoneScope FZone{"UTC"};
};

// Plain doubles, so that comparisons with a TDateTime are not ambiguous.
double Day(Word Y, Word Mo, Word D) { return EncodeDate(Y, Mo, D); }
double Time(Word H, Word Mi, Word S, Word Ms) { return EncodeTime(H, Mi, S, Ms); }
double At(Word Y, Word Mo, Word D, Word H, Word Mi, Word S = 0, Word Ms = 0) {
  return EncodeDateTime(Y, Mo, D, H, Mi, S, Ms);
}

// --- integers ------------------------------------------------------------------------------------
TEST_F(XMLValues, IntegersWritePlainDigits) {
  EXPECT_EQ(LxShortIntToXML(-128), u"-128");
  EXPECT_EQ(LxSmallIntToXML(-32768), u"-32768");
  EXPECT_EQ(LxLongIntToXML(std::numeric_limits<Integer>::min()), u"-2147483648");
  EXPECT_EQ(LxIntToXML(0), u"0");
  EXPECT_EQ(LxInt64ToXML(std::numeric_limits<Int64>::min()), u"-9223372036854775808");
  EXPECT_EQ(LxByteToXML(255), u"255");
  EXPECT_EQ(LxWordToXML(65535), u"65535");
  EXPECT_EQ(LxLongWordToXML(4294967295u), u"4294967295");
  EXPECT_EQ(LxCardinalToXML(4294967295u), u"4294967295");
  EXPECT_EQ(LxUInt64ToXML(9223372036854775807u), u"9223372036854775807");
  // Above the signed range the text is negative, and reads back to the same bits.
  for (UInt64 Value : {9223372036854775808u, 18446744073709551615u, 12345678901234567890u}) {
    const UnicodeString Text = LxUInt64ToXML(Value);
    EXPECT_EQ(Text[0], u'-');
    EXPECT_EQ(LxXMLToUInt64(Text), Value);
  }
  EXPECT_EQ(LxUInt64ToXML(18446744073709551615u), u"-1");
}

TEST_F(XMLValues, IntegersFromTextAreCutToTheirWidthWithoutRangeTest) {
  EXPECT_EQ(LxXMLToInt(u""), 0);
  EXPECT_EQ(LxXMLToInt(u"-17"), -17);
  EXPECT_EQ(LxXMLToInt(u"$FF"), 255);
  EXPECT_EQ(LxXMLToByte(u"300"), 44);
  EXPECT_EQ(LxXMLToShortint(u"200"), -56);
  EXPECT_EQ(LxXMLToSmallint(u"40000"), -25536);
  EXPECT_EQ(LxXMLToWord(u"-1"), 65535);
  EXPECT_EQ(LxXMLToLongword(u"-1"), 4294967295u);
  EXPECT_EQ(LxXMLToLongword(u"2147483647"), 2147483647u);
  EXPECT_EQ(LxXMLToInt64(u"-9223372036854775808"), std::numeric_limits<Int64>::min());
  EXPECT_EQ(LxXMLToUInt64(u"-2"), 18446744073709551614u);

  // The 32-bit parse refuses what doesn't fit 32 signed bits, Longword included.
  ExpectRaises<EConvertError>([] { LxXMLToLongword(u"2147483648"); },
                              u"'2147483648' is not a valid integer value");
  ExpectRaises<EConvertError>([] { LxXMLToByte(u"4294967296"); },
                              u"'4294967296' is not a valid integer value");
  ExpectRaises<EConvertError>([] { LxXMLToInt(u"abc"); }, u"'abc' is not a valid integer value");
  ExpectRaises<EConvertError>([] { LxXMLToInt64(u" 1"); }, u"' 1' is not a valid integer value");
  ExpectRaises<EConvertError>([] { LxXMLToUInt64(u"18446744073709551615"); },
                              u"'18446744073709551615' is not a valid integer value");
}

TEST_F(XMLValues, IntegerDefaultsCoverBadTextButNotTheEmptyOne) {
  EXPECT_EQ(LxXMLToIntDef(u"", 7), 0);
  EXPECT_EQ(LxXMLToIntDef(u"abc", 7), 7);
  EXPECT_EQ(LxXMLToIntDef(u"12", 7), 12);
  EXPECT_EQ(LxXMLToShortintDef(u"x", -3), -3);
  EXPECT_EQ(LxXMLToSmallintDef(u"", 9), 0);
  EXPECT_EQ(LxXMLToByteDef(u"300", 1), 44);
  EXPECT_EQ(LxXMLToWordDef(u"1.5", 2), 2);
  EXPECT_EQ(LxXMLToLongwordDef(u"2147483648", 5), 5u);
  EXPECT_EQ(LxXMLToInt64Def(u"9223372036854775808", -1), -1);
  EXPECT_EQ(LxXMLToInt64Def(u"9223372036854775807", -1), std::numeric_limits<Int64>::max());
  EXPECT_EQ(LxXMLToUInt64Def(u"-1", 3), std::numeric_limits<UInt64>::max());
  EXPECT_EQ(LxXMLToUInt64Def(u"", 3), 0u);
}

TEST_F(XMLValues, IntegerVariantFormsChooseByKind) {
  EXPECT_EQ(LxXMLToInt(Null(), 7), 7);
  EXPECT_EQ(LxXMLToByte(Variant(Int64{300}), 1), 44);
  EXPECT_EQ(LxXMLToInt(Variant(Cardinal{4294967295u}), 1), -1);
  EXPECT_EQ(LxXMLToUInt64(Variant(UInt64{18446744073709551615u}), 1), 18446744073709551615u);
  EXPECT_EQ(LxXMLToInt64(Variant(true), 5), 1);
  EXPECT_EQ(LxXMLToSmallint(Variant(false), 5), 0);
  EXPECT_EQ(LxXMLToInt64(Variant(u"-12"), 5), -12);
  EXPECT_EQ(LxXMLToByte(Variant(u"300"), 5), 44);
  // Text goes straight to the parser, so the empty text fails there.
  ExpectRaises<EConvertError>([] { LxXMLToInt(Variant(u""), 5); },
                              u"'' is not a valid integer value");

  struct Case {
    std::function<void(const Variant&)> Convert;
    std::u16string_view Message;
  };
  const Case Cases[] = {
      {[](const Variant& V) { LxXMLToShortint(V, 0); },
       u"The given value is not a valid shortint value!"},
      {[](const Variant& V) { LxXMLToSmallint(V, 0); },
       u"The given value is not a valid smallint value!"},
      {[](const Variant& V) { LxXMLToInt(V, 0); },
       u"The given value is not a valid integer value!"},
      {[](const Variant& V) { LxXMLToInt64(V, 0); },
       u"The given value is not a valid integer value!"},
      {[](const Variant& V) { LxXMLToByte(V, 0); }, u"The given value is not a valid Byte value!"},
      {[](const Variant& V) { LxXMLToWord(V, 0); }, u"The given value is not a valid Word value!"},
      {[](const Variant& V) { LxXMLToLongword(V, 0); },
       u"The given value is not a valid LongWord value!"},
      {[](const Variant& V) { LxXMLToUInt64(V, 0); },
       u"The given value is not a valid integer value!"},
  };
  // A float is refused even when whole; so are dates, Empty and arrays.
  const Variant Refused[] = {Variant(2.0), Variant(TDateTime(1.0)), Unassigned(),
                             VarArrayOf({Variant(1)})};
  for (const Case& C : Cases)
    for (const Variant& V : Refused)
      ExpectRaises<EConvertError>([&] { C.Convert(V); }, C.Message);
}

// --- floats --------------------------------------------------------------------------------------
TEST_F(XMLValues, FloatsReadWithAPointWhateverTheSystemUses) {
  FormatSettings.DecimalSeparator = u',';
  FormatSettings.ThousandSeparator = u'.';
  EXPECT_EQ(LxXMLToDouble(u"1.5"), 1.5);
  EXPECT_EQ(LxXMLToExtended(u"-2.5E-3"), -0.0025);
  EXPECT_EQ(LxXMLToSingle(u"0.1"), 0.1f);
  EXPECT_EQ(LxXMLToDouble(u""), 0.0);
  ExpectRaises<EConvertError>([] { LxXMLToDouble(u"1,5"); },
                              u"'1,5' is not a valid floating point value");
  EXPECT_EQ(LxXMLToDoubleDef(u"1,5", 9), 9.0);
  EXPECT_EQ(LxXMLToDoubleDef(u"", 9), 0.0);
  EXPECT_EQ(LxXMLToSingleDef(u"x", 2.5f), 2.5f);
  EXPECT_EQ(LxXMLToExtendedDef(u"7.25", 0), 7.25);
  EXPECT_EQ(LxXMLToDouble(Variant(u"1.5"), 0), 1.5);
}

TEST_F(XMLValues, FloatsWriteAPointWhateverTheSystemUses) {
  const double Values[] = {1.5, -1.5, 1e20, 1.5e-7, 0.1, 123456789012345.0, 1e15, 0.00001};
  const std::u16string_view Texts[] = {
      u"1.5", u"-1.5", u"1E20", u"1.5E-7", u"0.1", u"123456789012345", u"1E15", u"0.00001"};
  for (const char16_t Separator : {u'.', u','}) {
    FormatSettings.DecimalSeparator = Separator;
    for (std::size_t I = 0; I < std::size(Values); ++I) {
      EXPECT_EQ(LxDoubleToXML(Values[I]), Texts[I]);
      EXPECT_EQ(LxExtToXML(Values[I]), Texts[I]);
    }
  }
  EXPECT_EQ(LxDoubleToXML(std::numeric_limits<double>::quiet_NaN()), u"NAN");
  EXPECT_EQ(LxDoubleToXML(-std::numeric_limits<double>::infinity()), u"-INF");
  EXPECT_EQ(LxDoubleToXML(0.0), u"0");
}

// The text is FloatToStr's, with the system's first separator made a point: checked on random
// bit patterns and on values whose 16th digit is a rounding tie.
TEST_F(XMLValues, FloatTextIsFloatToStrWithAPoint) {
  std::mt19937_64 Random(20240607);
  std::vector<double> Values = {100000000000000.5, 0.5,     2.5e-6, 999999999999999.5, 5e-324,
                                DBL_MAX,           -DBL_MIN};
  for (int I = 0; I < 20000; ++I) {
    const UInt64 Bits = Random();
    double Value;
    std::memcpy(&Value, &Bits, sizeof Value);
    Values.push_back(Value);
    Values.push_back(std::ldexp(static_cast<double>(Random() % 2000000) - 1000000, -(I % 60)));
  }
  for (const char16_t Separator : {u'.', u','}) {
    FormatSettings.DecimalSeparator = Separator;
    for (double Value : Values) {
      UnicodeString Expected = FloatToStr(Value);
      if (const auto At = Expected.find(Separator); At != UnicodeString::npos)
        Expected[At] = u'.';
      ASSERT_EQ(LxDoubleToXML(Value), Expected) << Value;
    }
  }
}

// Fifteen significant digits: whatever has no more comes back as the same double; values that
// need 16 or 17 digits come back as a neighbour, and DBL_MAX doesn't come back at all.
TEST_F(XMLValues, FloatTextRoundTripsUpToFifteenDigits) {
  FormatSettings.DecimalSeparator = u',';
  const double Exact[] = {0.0,      1.5,  -0.1, 1e-7,      3.14159265358979,      1e300,
                          2.5e-300, 1e15, 1e-5, 1234.5678, 4.94065645841247e-324, 123456789012345.0,
                          -1e22,    0.3};
  for (double Value : Exact)
    EXPECT_EQ(LxXMLToDouble(LxDoubleToXML(Value)), Value) << Value;

  const double Sum = 0.1 + 0.2;
  EXPECT_EQ(LxDoubleToXML(Sum), u"0.3");
  EXPECT_NE(LxXMLToDouble(LxDoubleToXML(Sum)), Sum);
  EXPECT_NE(LxXMLToDouble(LxDoubleToXML(M_PI)), M_PI);
  EXPECT_EQ(LxDoubleToXML(DBL_MAX), u"1.79769313486232E308");
  ExpectRaises<EConvertError>([] { LxXMLToDouble(LxDoubleToXML(DBL_MAX)); },
                              u"'1.79769313486232E308' is not a valid floating point value");
}

TEST_F(XMLValues, FloatVariantFormsChooseByKind) {
  EXPECT_EQ(LxXMLToDouble(Null(), 4.5), 4.5);
  EXPECT_EQ(LxXMLToDouble(Variant(3), 0), 3.0);
  EXPECT_EQ(LxXMLToSingle(Variant(0.25), 0), 0.25f);
  ExpectRaises<EConvertError>([] { LxXMLToDouble(Variant(u""), 1); },
                              u"'' is not a valid floating point value");
  ExpectRaises<EConvertError>([] { LxXMLToSingle(Variant(true), 0); },
                              u"The given value is not a valid Single value!");
  ExpectRaises<EConvertError>([] { LxXMLToDouble(Unassigned(), 0); },
                              u"The given value is not a valid Double value!");
  // Dates are refused as floats, though their kind reads as a float in the date forms.
  ExpectRaises<EConvertError>([] { LxXMLToDouble(Variant(TDateTime(2.75)), 0); },
                              u"The given value is not a valid Double value!");
  ExpectRaises<EConvertError>([] { LxXMLToExtended(VarArrayOf({Variant(1)}), 0); },
                              u"The given value is not a valid Extended value!");
}

// --- booleans ------------------------------------------------------------------------------------
TEST_F(XMLValues, BooleansAreTrueOnlyForOneAndTrue) {
  EXPECT_EQ(LxBoolToXML(true), u"true");
  EXPECT_EQ(LxBoolToXML(false), u"false");
  for (std::u16string_view Text : {u"1", u"true", u"TRUE", u"tRuE"})
    EXPECT_TRUE(LxXMLToBool(Text)) << StringToUTF8(Text);
  for (std::u16string_view Text : {u"0", u"", u"yes", u"false", u" true", u"01", u"-1"})
    EXPECT_FALSE(LxXMLToBool(Text)) << StringToUTF8(Text);

  EXPECT_TRUE(LxXMLToBool(Null(), true));
  EXPECT_TRUE(LxXMLToBool(Variant(u"True"), false));
  EXPECT_FALSE(LxXMLToBool(Variant(u"yes"), true));
  EXPECT_TRUE(LxXMLToBool(Variant(true), false));
  EXPECT_TRUE(LxXMLToBool(Variant(-1), false));
  // Only the low 8 bits of an integer count.
  EXPECT_FALSE(LxXMLToBool(Variant(256), true));
  EXPECT_TRUE(LxXMLToBool(Variant(257), false));
  for (const Variant& V : {Variant(1.0), Variant(TDateTime(1.0)), Unassigned()})
    ExpectRaises<EConvertError>([&] { LxXMLToBool(V, false); },
                                u"The given value is not a valid Boolean value!");
}

// --- date and time text --------------------------------------------------------------------------
struct DecodeCase {
  std::u16string_view Text;
  TLxDateTimeParts Parts;
};

TEST_F(XMLValues, DecodeSplitsTheWrittenForms) {
  const DecodeCase Cases[] = {
      {u"2024-02-29", {true, 2024, 2, 29, false, 0, 0, 0, 0, false, tzfNone, 0}},
      {u"-0044-03-15Z", {true, 44, 3, 15, false, 0, 0, 0, 0, true, tzfUTC, 0}},
      {u"23:59:58", {false, 0, 0, 0, true, 23, 59, 58, 0, false, tzfNone, 0}},
      {u"01:02:03.5+05:30", {false, 0, 0, 0, true, 1, 2, 3, 500, false, tzfTimezone, 330}},
      {u"01:02:03.04567-10:15", {false, 0, 0, 0, true, 1, 2, 3, 45, false, tzfTimezone, -615}},
      {u" 2024-12-31T00:00:00.999Z\n", {true, 2024, 12, 31, true, 0, 0, 0, 999, false, tzfUTC, 0}},
      {u"12024-13-40T99:99:99", {true, 12024, 13, 40, true, 99, 99, 99, 0, false, tzfNone, 0}},
  };
  for (const DecodeCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Text));
    const TLxDateTimeParts P = LxDecodeXMLDateTime(Case.Text), &E = Case.Parts;
    EXPECT_EQ(P.HasDate, E.HasDate);
    EXPECT_EQ(P.Year, E.Year);
    EXPECT_EQ(P.Month, E.Month);
    EXPECT_EQ(P.Day, E.Day);
    EXPECT_EQ(P.HasTime, E.HasTime);
    EXPECT_EQ(P.Hour, E.Hour);
    EXPECT_EQ(P.Minute, E.Minute);
    EXPECT_EQ(P.Second, E.Second);
    EXPECT_EQ(P.MSec, E.MSec);
    EXPECT_EQ(P.Negative, E.Negative);
    EXPECT_EQ(P.TimeZone, E.TimeZone);
    EXPECT_EQ(P.OffsetMinutes, E.OffsetMinutes);
  }
  for (std::u16string_view Bad :
       {u"", u"abc", u"24-01-01", u"2024-1-01", u"2024-01-01T", u"2024-01-01T12:00", u"12:00:00.",
        u"12:00:00+1:00", u"12:00:00+24:00", u"12:00:00+01:60", u"12:00:00Zx",
        u"2024-01-01 12:00:00", u"99999-01-01", u"--2024-01-01", u"T12:00:00"})
    ExpectRaises<EConvertError>([&] { LxDecodeISODateTime(Bad); },
                                Format(u"'%s' is not a valid XML date and time", {Bad.data()}));
}

TEST_F(XMLValues, ZoneFormatsMapBetweenTheTwoNumberings) {
  TLxDateTimeParts Parts;
  EXPECT_EQ(LxXMLDateTimeFormat(Parts), xdtfLocal);
  Parts.TimeZone = tzfTimezone;
  EXPECT_EQ(LxXMLDateTimeFormat(Parts), xdtfTimezone);
  Parts.TimeZone = tzfUTC;
  EXPECT_EQ(LxXMLDateTimeFormat(Parts), xdtfUTC);

  SetZone("America/New_York");
  const TDateTime Moment = At(2024, 1, 15, 10, 20, 30, 400);
  EXPECT_EQ(LxDateTimeToXML(Moment, xdtfLocal), LxDateTimeToXML(Moment, tzfNone));
  EXPECT_EQ(LxDateTimeToXML(Moment, xdtfUTC), LxDateTimeToXML(Moment, tzfUTC));
  EXPECT_EQ(LxDateTimeToXML(Moment, xdtfTimezone), LxDateTimeToXML(Moment, tzfTimezone));
  EXPECT_EQ(LxDateToXML(Moment, xdtfUTC), u"2024-01-15Z");
  EXPECT_EQ(LxTimeToXML(Moment, xdtfTimezone), u"10:20:30.400-05:00");
  EXPECT_EQ(LxXMLToDateTime(u"2024-01-15T15:20:30Z", xdtfLocal), At(2024, 1, 15, 10, 20, 30));
  EXPECT_EQ(LxXMLToTime(u"15:20:30Z", xdtfUTC), Time(15, 20, 30, 0));
  EXPECT_EQ(LxXMLToTimeDef(u"15:20:30", 0.75, xdtfUTC), 0.75);
  EXPECT_EQ(LxXMLToDateTimeDef(u"2024-01-15T00:00:00", 0.75, xdtfTimezone), 0.75);
  EXPECT_EQ(LxXMLToTime(Variant(u"15:20:30+01:00"), 0, xdtfUTC), Time(14, 20, 30, 0));
  EXPECT_EQ(LxXMLToDateTime(Variant(u"2024-01-15"), 0, xdtfLocal), At(2024, 1, 15, 0, 0));
}

TEST_F(XMLValues, DatesAndTimesWriteTheirThreeZoneForms) {
  const TDateTime Moment = At(2024, 7, 4, 9, 5, 7, 89);
  EXPECT_EQ(LxDateToXML(Moment, tzfNone), u"2024-07-04");
  EXPECT_EQ(LxDateToXML(Moment, tzfUTC), u"2024-07-04Z");
  EXPECT_EQ(LxDateToXML(Moment, tzfTimezone), u"2024-07-04+00:00");
  EXPECT_EQ(LxTimeToXML(Moment, tzfNone), u"09:05:07.089");
  EXPECT_EQ(LxTimeToXML(Moment, tzfUTC), u"09:05:07.089Z");
  EXPECT_EQ(LxTimeToXML(Moment, tzfTimezone), u"09:05:07.089+00:00");
  EXPECT_EQ(LxDateTimeToXML(Moment, tzfNone), u"2024-07-04T09:05:07.089");
  // The UTC form alone drops the milliseconds.
  EXPECT_EQ(LxDateTimeToXML(Moment, tzfUTC), u"2024-07-04T09:05:07Z");
  EXPECT_EQ(LxDateTimeToXML(Moment, tzfTimezone), u"2024-07-04T09:05:07.089+00:00");
  EXPECT_EQ(LxDateTimeToXML(Day(1, 1, 1), tzfNone), u"0001-01-01T00:00:00.000");
  EXPECT_EQ(LxDateTimeToXML(-1.25, tzfNone), u"1899-12-29T06:00:00.000");
}

// Berlin springs forward on 2024-03-31 at 02:00 (+01:00 to +02:00); New York falls back on
// 2024-11-03 at 02:00 (-04:00 to -05:00). A moment on each side of each change.
struct ZoneCase {
  const char* Zone;
  double Local;
  std::u16string_view WithOffset, InUTC;
};

TEST_F(XMLValues, ZonedTextFollowsDaylightSavingOnBothSidesOfAChange) {
  const ZoneCase Cases[] = {
      {"Europe/Berlin", At(2024, 3, 31, 1, 30), u"2024-03-31T01:30:00.000+01:00",
       u"2024-03-31T00:30:00Z"},
      {"Europe/Berlin", At(2024, 3, 31, 3, 30), u"2024-03-31T03:30:00.000+02:00",
       u"2024-03-31T01:30:00Z"},
      {"America/New_York", At(2024, 11, 3, 0, 30), u"2024-11-03T00:30:00.000-04:00",
       u"2024-11-03T04:30:00Z"},
      {"America/New_York", At(2024, 11, 3, 2, 30), u"2024-11-03T02:30:00.000-05:00",
       u"2024-11-03T07:30:00Z"},
      {"UTC", At(2024, 3, 31, 1, 30), u"2024-03-31T01:30:00.000+00:00", u"2024-03-31T01:30:00Z"},
      {"Asia/Kolkata", At(2024, 1, 1, 3, 0), u"2024-01-01T03:00:00.000+05:30",
       u"2023-12-31T21:30:00Z"},
  };
  for (const ZoneCase& Case : Cases) {
    SCOPED_TRACE(std::string(Case.Zone) + " " + StringToUTF8(Case.WithOffset));
    SetZone(Case.Zone);
    EXPECT_EQ(LxDateTimeToXML(Case.Local, tzfTimezone), Case.WithOffset);
    EXPECT_EQ(LxDateTimeToXML(Case.Local, tzfUTC), Case.InUTC);
    // Both texts read back to the local moment, and the UTC text to UTC when asked.
    EXPECT_EQ(LxXMLToDateTime(Case.WithOffset, tzfNone), Case.Local);
    EXPECT_EQ(LxXMLToDateTime(Case.InUTC, tzfTimezone), Case.Local);
    EXPECT_EQ(LxXMLToDateTime(Case.WithOffset, tzfUTC), double(LxLocalToUTC(Case.Local)));
    EXPECT_EQ(double(LxUTCToLocal(LxXMLToDateTime(Case.InUTC, tzfUTC))), Case.Local);
  }
}

TEST_F(XMLValues, OffsetIsSignedTotalWithMagnitudeParts) {
  Integer Total;
  Word Hours, Minutes;
  SetZone("America/New_York");
  LxCalcTimeZoneOffset(At(2024, 7, 1, 12, 0), Total, Hours, Minutes);
  EXPECT_EQ(Total, -240);
  EXPECT_EQ(Hours, 4);
  EXPECT_EQ(Minutes, 0);
  SetZone("Asia/Kolkata");
  LxCalcTimeZoneOffset(At(2024, 7, 1, 12, 0), Total, Hours, Minutes);
  EXPECT_EQ(Total, 330);
  EXPECT_EQ(Hours, 5);
  EXPECT_EQ(Minutes, 30);
}

TEST_F(XMLValues, TimeReadsApplyTheZoneThenKeepTheTimeOfDay) {
  EXPECT_EQ(LxXMLToTime(u"12:00:00", tzfNone), 0.5);
  EXPECT_EQ(LxXMLToTime(u"", tzfUTC), 0.0);
  EXPECT_EQ(LxXMLToTime(u"0", tzfUTC), 0.0);
  EXPECT_EQ(LxXMLToTime(u"12:00:00+01:00", tzfUTC), Time(11, 0, 0, 0));
  EXPECT_EQ(LxXMLToTime(u"12:00:00Z", tzfUTC), 0.5);
  // A shift across midnight stays a time of day, in [0, 1).
  EXPECT_EQ(LxXMLToTime(u"00:30:00+01:00", tzfUTC), Time(23, 30, 0, 0));
  EXPECT_EQ(LxXMLToTime(u"23:30:00-01:00", tzfUTC), Time(0, 30, 0, 0));
  // The date part is dropped.
  EXPECT_EQ(LxXMLToTime(u"2024-05-05T06:00:00.250", tzfNone), Time(6, 0, 0, 250));
  for (TLxTimeZoneFormat Format : {tzfTimezone, tzfUTC})
    ExpectRaises<Exception>([&] { LxXMLToTime(u"12:00:00", Format); },
                            u"The XMLDateTime value did not contain timezone information!");
  ExpectRaises<EConvertError>([] { LxXMLToTime(u"25:00:00", tzfNone); },
                              u"Invalid argument to time encode");

  // A time alone lies on 1899-12-30, under that day's rules: standard time in New York.
  SetZone("America/New_York");
  EXPECT_EQ(LxXMLToTime(u"12:00:00Z", tzfNone), Time(7, 0, 0, 0));
  EXPECT_EQ(LxXMLToTime(u"12:00:00+01:00", tzfTimezone), Time(6, 0, 0, 0));
  EXPECT_EQ(LxTimeToXML(0.5, tzfTimezone), u"12:00:00.000-05:00");

  EXPECT_EQ(LxXMLToTimeDef(u"x", 0.25, tzfNone), 0.25);
  EXPECT_EQ(LxXMLToTimeDef(u"", 0.25, tzfUTC), 0.0);
}

TEST_F(XMLValues, DateReadsIgnoreTimeAndZone) {
  EXPECT_EQ(LxXMLToDate(u""), 0.0);
  EXPECT_EQ(LxXMLToDate(u"0"), 0.0);
  EXPECT_EQ(LxXMLToDate(u"2024-02-29"), Day(2024, 2, 29));
  EXPECT_EQ(LxXMLToDate(u"2024-02-29T23:00:00-05:00"), Day(2024, 2, 29));
  EXPECT_EQ(LxXMLToDate(u"-2024-02-29Z"), -(Day(2024, 2, 29)));
  ExpectRaises<EConvertError>([] { LxXMLToDate(u"2023-02-29"); },
                              u"Invalid argument to date encode");
  // A time alone has no date to encode.
  ExpectRaises<EConvertError>([] { LxXMLToDate(u"12:00:00"); }, u"Invalid argument to date encode");
  ExpectRaises<EConvertError>([] { LxXMLToDate(u"00"); }, u"'00' is not a valid XML date and time");
  EXPECT_EQ(LxXMLToDateDef(u"2023-02-29", 3.0), 3.0);
  EXPECT_EQ(LxXMLToDateDef(u"", 3.0), 0.0);
}

TEST_F(XMLValues, DateTimeReadsKeepTheDayAndTakeWhatTheTextHolds) {
  EXPECT_EQ(LxXMLToDateTime(u"0", tzfUTC), 0.0);
  EXPECT_EQ(LxXMLToDateTime(u"2024-02-29T13:14:15.016", tzfNone), At(2024, 2, 29, 13, 14, 15, 16));
  EXPECT_EQ(LxXMLToDateTime(u"2024-02-29", tzfNone), Day(2024, 2, 29));
  EXPECT_EQ(LxXMLToDateTime(u"18:00:00", tzfNone), 0.75);
  EXPECT_EQ(LxXMLToDateTime(u"-2024-02-29T12:00:00", tzfNone), -At(2024, 2, 29, 12, 0));
  // The zone moves the day too.
  EXPECT_EQ(LxXMLToDateTime(u"2024-03-01T00:30:00+01:00", tzfUTC), At(2024, 2, 29, 23, 30));
  SetZone("Europe/Berlin");
  EXPECT_EQ(LxXMLToDateTime(u"2024-12-31T23:30:00Z", tzfNone), At(2025, 1, 1, 0, 30));
  ExpectRaises<Exception>([] { LxXMLToDateTime(u"2024-12-31T23:30:00", tzfUTC); },
                          u"The XMLDateTime value did not contain timezone information!");
  EXPECT_EQ(LxXMLToDateTimeDef(u"2024-12-31T23:30:00", 1.0, tzfUTC), 1.0);
  EXPECT_EQ(LxXMLToDateTimeDef(u"2024-12-32", 1.0, tzfNone), 1.0);
}

TEST_F(XMLValues, DateVariantFormsTakeNumbersAsDayCounts) {
  EXPECT_EQ(LxXMLToDate(Null(), 5.0), 5.0);
  EXPECT_EQ(LxXMLToDate(Variant(45000), 0), 45000.0);
  // Numbers are taken as they stand: no zone, no cut to the time of day.
  EXPECT_EQ(LxXMLToTime(Variant(1.75), 0, tzfUTC), 1.75);
  EXPECT_EQ(LxXMLToDateTime(Variant(TDateTime(2.5)), 0, tzfUTC), 2.5);
  EXPECT_EQ(LxXMLToDate(Variant(u"2024-01-02"), 0), Day(2024, 1, 2));
  EXPECT_EQ(LxXMLToDate(Variant(u""), 9), 0.0);
  ExpectRaises<Exception>([] { LxXMLToTime(Variant(u"12:00:00"), 0, tzfUTC); },
                          u"The XMLDateTime value did not contain timezone information!");
  ExpectRaises<EConvertError>([] { LxXMLToDate(Variant(true), 0); },
                              u"The given value is not a valid Date value!");
  ExpectRaises<EConvertError>([] { LxXMLToTime(Unassigned(), 0, tzfNone); },
                              u"The given value is not a valid Time value!");
  ExpectRaises<EConvertError>([] { LxXMLToDateTime(Variant(false), 0, tzfNone); },
                              u"The given value is not a valid DateTime value!");
}

// --- durations -----------------------------------------------------------------------------------
struct DurationCase {
  TLxDuration Value;
  std::u16string_view Text;
};

TEST_F(XMLValues, DurationsWriteOnlyTheirNonZeroParts) {
  const DurationCase Cases[] = {
      {LxEncodeDuration(0, 0, 0, 0, 0, 0, 0, false), u"P0Y"},
      {LxEncodeDuration(0, 0, 0, 0, 0, 0, 0, true), u"-P0Y"},
      {LxEncodeDuration(0, 0, 0, 0, 0, 90, 0, false), u"PT1M30S"},
      {LxEncodeDuration(0, 0, 0, 0, 0, 1, 500, false), u"PT1.5S"},
      {LxEncodeDuration(0, 0, 0, 0, 0, 1, 5, false), u"PT1.005S"},
      {LxEncodeDuration(0, 0, 0, 0, 0, 0, 250, false), u"PT0.25S"},
      {LxEncodeDuration(1, 14, 0, 0, 0, 0, 0, true), u"-P2Y2M"},
      {LxEncodeDuration(0, 0, 1, 25, 0, 0, 0, false), u"P2DT1H"},
      {LxEncodeDuration(3, 0, 4, 0, 5, 0, 0, false), u"P3Y4DT5M"},
      {LxEncodeDuration(0, 1, 0, 0, 0, 0, 0, false), u"P1M"},
      {LxEncodeDuration(0, 0, 30, 0, 0, 0, 0, false), u"P30D"},
      {LxEncodeDuration(65535, 0, 65535, 0, 0, 0, 999, false), u"P65535Y65535DT0.999S"},
      {TLxDuration{false, 0, 86400.0 * 100000 + 0.1}, u"P100000DT0.1S"},
  };
  for (const DurationCase& Case : Cases)
    EXPECT_EQ(LxDurationToXML(Case.Value), Case.Text);
  for (double Bad : {std::numeric_limits<double>::infinity(), std::nan(""), 1e17})
    ExpectRaises<EConvertError>(
        [&] {
          LxDurationToXML(TLxDuration{false, 0, Bad});
        },
        u"LxDurationToXML; The seconds of the duration are out of range!");
}

TEST_F(XMLValues, DurationsKeepMonthsAndSecondsApart) {
  const TLxDuration Month = LxXMLToDuration(u"P1M"), Days = LxXMLToDuration(u"P30D");
  EXPECT_EQ(Month.Months, 1);
  EXPECT_EQ(Month.Seconds, 0.0);
  EXPECT_EQ(Days.Months, 0);
  EXPECT_EQ(Days.Seconds, 30 * 86400.0);
}

struct DurationReadCase {
  std::u16string_view Text;
  bool Negative;
  Integer Months;
  double Seconds;
};

TEST_F(XMLValues, DurationsReadDesignatorsInAnyOrder) {
  const DurationReadCase Cases[] = {
      {u"P", false, 0, 0},
      {u"-P", true, 0, 0},
      {u"PT0.25S", false, 0, 0.25},
      {u"P1D1Y", false, 12, 86400},
      {u"P1Y2M3DT4H5M6.789S", false, 14, 3 * 86400 + 4 * 3600 + 5 * 60 + 6.789},
      {u"-PT1.0009S", true, 0, 1.0},
      {u"PT1.S", false, 0, 1.0},
      {u"P2Y3Y", false, 36, 0},
      {u"PT1.5S2S", false, 0, 2},
      {u"P1MT1M", false, 1, 60},
      {u"P100000D", false, 0, 8640000000.0},
  };
  for (const DurationReadCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Text));
    const TLxDuration D = LxXMLToDuration(Case.Text);
    EXPECT_EQ(D.Negative, Case.Negative);
    EXPECT_EQ(D.Months, Case.Months);
    EXPECT_DOUBLE_EQ(D.Seconds, Case.Seconds);
  }
  // What is written reads back.
  const TLxDuration Sample = LxEncodeDuration(7, 11, 400, 23, 59, 59, 120, true);
  const TLxDuration Back = LxXMLToDuration(LxDurationToXML(Sample));
  EXPECT_EQ(Back.Negative, true);
  EXPECT_EQ(Back.Months, Sample.Months);
  EXPECT_EQ(Back.Seconds, Sample.Seconds);
}

// Seconds as the reader and LxEncodeDuration make them: whole seconds, then milliseconds.
double DurationSeconds(Int64 AWhole, Int64 AMSecs) {
  return static_cast<double>(AWhole) + static_cast<double>(AMSecs) / 1000.0;
}

// The last whole second below 2^43, up to which a double holds every millisecond.
constexpr Int64 LastExactSecond = (Int64{1} << 43) - 1;

TEST_F(XMLValues, DurationsRoundToTheNearestMillisecondAtAnySize) {
  const DurationCase Cases[] = {
      // Large: no fraction appears where there is none, and a millisecond stays one.
      {TLxDuration{false, 0, DurationSeconds(Int64{40000000} * 86400, 0)}, u"P40000000D"},
      {TLxDuration{true, 0, DurationSeconds(Int64{40000000} * 86400, 1)}, u"-P40000000DT0.001S"},
      {TLxDuration{false, 0, DurationSeconds(Int64{100000000} * 86400 + 59, 999)},
       u"P100000000DT59.999S"},
      {TLxDuration{false, 0, DurationSeconds(LastExactSecond, 999)}, u"P101806632DT4H50M7.999S"},
      {TLxDuration{false, 0, DurationSeconds(LastExactSecond, 1)}, u"P101806632DT4H50M7.001S"},
      {TLxDuration{false, 0, DurationSeconds(Int64{1} << 50, 0)}, u"P13031248921DT18H57M4S"},
      // Small: the nearest millisecond, with a carry into the next second, minute and day.
      {TLxDuration{false, 0, 1.0006}, u"PT1.001S"},
      {TLxDuration{false, 0, 1.0004}, u"PT1S"},
      {TLxDuration{false, 0, 0.0004}, u"P0Y"},
      {TLxDuration{false, 0, 59.9996}, u"PT1M"},
      {TLxDuration{false, 0, 86399.9999}, u"P1D"},
      {TLxDuration{false, 0, 1 + 0.005}, u"PT1.005S"},
      {TLxDuration{false, 0, 0.1 + 0.2}, u"PT0.3S"},
  };
  for (const DurationCase& Case : Cases)
    EXPECT_EQ(LxDurationToXML(Case.Value), Case.Text);
}

// Below 2^43 seconds every duration made of whole milliseconds comes back from its text as it
// was; above, the text of a value reads back to that same value.
TEST_F(XMLValues, DurationsRoundTripThroughTheirText) {
  std::mt19937_64 Random(20240517);
  for (int I = 0; I < 20000; ++I) {
    // Sizes spread over every power of two, so that small and large durations are both drawn.
    const int Bits = static_cast<int>(Random() % 44);
    const Int64 Whole = Bits == 0 ? 0 : static_cast<Int64>(Random() & ((UInt64{1} << Bits) - 1));
    const TLxDuration Value{
        (Random() & 1) != 0, static_cast<Integer>(Random() % 1000000),
        DurationSeconds(std::min(Whole, LastExactSecond), static_cast<Int64>(Random() % 1000))};
    const UnicodeString Text = LxDurationToXML(Value);
    const TLxDuration Back = LxXMLToDuration(Text);
    ASSERT_EQ(Back.Seconds, Value.Seconds) << StringToUTF8(Text);
    ASSERT_EQ(Back.Months, Value.Months) << StringToUTF8(Text);
    ASSERT_EQ(Back.Negative, Value.Negative) << StringToUTF8(Text);
  }
  for (int I = 0; I < 20000; ++I) {
    // Any double below 2^47 seconds, most of which hold no whole millisecond; the reader takes
    // day counts up to 2^31 - 1, about 2^47.4 seconds.
    const double Seconds =
        std::ldexp(static_cast<double>(Random() >> 11), -6 - static_cast<int>(Random() % 64));
    const UnicodeString Text = LxDurationToXML(TLxDuration{false, 0, Seconds});
    const TLxDuration Back = LxXMLToDuration(Text);
    ASSERT_EQ(LxDurationToXML(Back), Text) << Seconds;
    ASSERT_EQ(LxXMLToDuration(LxDurationToXML(Back)).Seconds, Back.Seconds) << Seconds;
  }
}

TEST_F(XMLValues, DurationFailuresNameTheirCause) {
  ExpectRaises<Exception>(
      [] { LxXMLToDuration(u""); },
      u"LxXMLToDuration; An empty string cannot be converted to a xs:duration!");
  for (std::u16string_view Text : {u"-1Y", u"1Y", u"-", u"p1Y", u"--P1Y", u" P1Y"})
    ExpectRaises<Exception>([&] { LxXMLToDuration(Text); },
                            u"LxXMLToDuration; A duration must start with a \"P\"!");
  for (std::u16string_view Text : {u"PT", u"P1DT", u"P1", u"P1X", u"PT1H2", u"P-1Y", u"PTT1H",
                                   u"P1Y ", u"P1W", u"P178956971Y"})
    ExpectRaises<Exception>(
        [&] { LxXMLToDuration(Text); },
        Format(u"LxXMLToDuration; The provided argument (%s) is not a valid duration!",
               {Text.data()}));
  ExpectRaises<EConvertError>([] { LxXMLToDuration(u"PYM"); }, u"'' is not a valid integer value");
  ExpectRaises<EConvertError>([] { LxXMLToDuration(u"P1.5Y"); },
                              u"'1.5' is not a valid integer value");
  ExpectRaises<EConvertError>([] { LxXMLToDuration(u"PT1.2.3S"); },
                              u"'2.3' is not a valid integer value");
  ExpectRaises<EConvertError>([] { LxXMLToDuration(u"P2147483648D"); },
                              u"'2147483648' is not a valid integer value");
}

// --- a Variant's text ----------------------------------------------------------------------------
TEST_F(XMLValues, VariantTextFollowsItsKind) {
  FormatSettings.DecimalSeparator = u',';
  EXPECT_EQ(LxXMLToStr(Null(), u"dflt"), u"dflt");
  EXPECT_EQ(LxXMLToStr(Variant(-42), u""), u"-42");
  EXPECT_EQ(LxXMLToStr(Variant(Int64{-9000000000}), u""), u"-9000000000");
  EXPECT_EQ(LxXMLToStr(Variant(UInt64{18446744073709551615u}), u""), u"-1");
  EXPECT_EQ(LxXMLToStr(Variant(2.5), u""), u"2.5");
  EXPECT_EQ(LxXMLToStr(Variant(1.5f), u""), u"1.5");
  EXPECT_EQ(LxXMLToStr(Variant(u"a &amp; b"), u""), u"a & b");
  EXPECT_EQ(LxXMLToStr(Variant(RawByteString("&lt;")), u""), u"<");
  EXPECT_EQ(LxXMLToStr(Variant(true), u""), u"true");
  EXPECT_EQ(LxXMLToStr(Variant(TDateTime(At(2024, 1, 2, 3, 4, 5, 6))), u""),
            u"2024-01-02T03:04:05.006");
  EXPECT_EQ(LxXMLToStr(VarArrayOf({Variant(u"a"), Variant(u"b")}), u""), u"a\r\nb\r\n");
  EXPECT_EQ(LxXMLToStr(VarArrayOf({Variant(1), Variant(u"&gt;"), Null()}), u""), u"1\r\n>\r\n\r\n");
  EXPECT_EQ(LxXMLToStr(VarArrayOf({}), u"x"), u"");
  ExpectRaises<EConvertError>([] { LxXMLToStr(Unassigned(), u"x"); },
                              u"The given value is not a valid String value!");
}

} // namespace
} // namespace lorvane
