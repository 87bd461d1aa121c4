// Variants and TValues to document text and back: every type code and kind, both array forms,
// enumerations and sets by ordinal and by name, the serializer hook, and every message.
#include "lorvane/uLxXMLUtils.h"

#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/types/LxDescribe.h"

#include "support/ScopeGuards.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

namespace lorvane {

// This program links the module without the umbrella: nothing registers a value serializer.
void RunLibraryStartup() {}

namespace vartest {
enum TColor : Byte { clRed, clGreen, clBlue };
enum TTiny : Byte { tnA, tnB, tnC };
struct TPoint {
  Integer X = 0;
  Integer Y = 0;
};
} // namespace vartest

namespace {

using test::ExpectRaises;
using vartest::TColor;
using vartest::TTiny;
using TColors = TSet<TColor>;
// Smaller than the 64 bits of a mask: bits beyond it are dropped, not stored.
using TTinySet = TSet<TTiny, 4>;

using TExpectFailure = void (*)(std::function<void()>&&, std::u16string_view);
template <class E> constexpr TExpectFailure Raises = &ExpectRaises<E, std::function<void()>>;

void DescribeTestTypes() {
  static std::once_flag Once;
  std::call_once(Once, [] {
    LxDescribeEnum<TColor>(u"VarTest.TColor", {u"clRed", u"clGreen", u"clBlue"});
    LxDescribeEnum<TTiny>(u"VarTest.TTiny", {u"tnA", u"tnB", u"tnC"});
  });
}

class XMLVariants : public ::testing::Test {
protected:
  void SetUp() override { DescribeTestTypes(); }

private:
  const test::TFormatSettingsScope FSettings;
  const test::TZoneScope FZone{"UTC"};
  const test::TDefaultCodePageScope FCodePage{1252};
};

Variant Array(TVarType AElementType, const std::vector<Variant>& AItems) {
  Variant Result = VarArrayCreate({0, static_cast<Integer>(AItems.size()) - 1}, AElementType);
  for (std::size_t I = 0; I < AItems.size(); ++I)
    VarArrayPut(Result, AItems[I], static_cast<Integer>(I));
  return Result;
}

std::vector<Variant> Items(const Variant& AArray) {
  std::vector<Variant> Result;
  for (Integer I = VarArrayLowBound(AArray, 1); I <= VarArrayHighBound(AArray, 1); ++I)
    Result.push_back(VarArrayGet(AArray, I));
  return Result;
}

// Same code and same value (for arrays: element by element).
void ExpectSameVariant(const Variant& AActual, const Variant& AExpected, const std::string& AWhat) {
  ASSERT_EQ(VarType(AActual), VarType(AExpected)) << AWhat;
  if (VarIsArray(AExpected)) {
    const auto Actual = Items(AActual), Expected = Items(AExpected);
    ASSERT_EQ(Actual.size(), Expected.size()) << AWhat;
    for (std::size_t I = 0; I < Actual.size(); ++I)
      ExpectSameVariant(Actual[I], Expected[I], AWhat + " [" + std::to_string(I) + "]");
  } else if (!VarIsEmpty(AExpected) && !VarIsNull(AExpected)) {
    EXPECT_TRUE(AActual == AExpected) << AWhat << ": " << StringToUTF8(VarToStr(AActual));
  }
}

std::string Show(std::u16string_view AText) { return StringToUTF8(AText); }

const double Moment = EncodeDateTime(2024, 2, 29, 13, 5, 7, 250);

// --- Variant to text -----------------------------------------------------------------------------
TEST_F(XMLVariants, VariantToXMLWritesEachTypeCode) {
  struct Row {
    Variant Value;
    std::u16string_view Expected;
  };
  const Row Rows[] = {
      {Unassigned(), u""},
      {Null(), u""},
      {Variant(SmallInt(-5)), u"-5"},
      {Variant(Integer(42)), u"42"},
      {Variant(ShortInt(-128)), u"-128"},
      {Variant(Byte(255)), u"255"},
      {Variant(Word(65535)), u"65535"},
      {Variant(Cardinal(7)), u"7"},
      // The same bits as an Integer: the LongWord reading is signed and takes them back whole.
      {Variant(Cardinal(4294967295u)), u"-1"},
      {Variant(1.5f), u"1.5"},
      {Variant(0.1), u"0.1"},
      {VarAsType(Variant(2.5), varCurrency), u"2.5"},
      {Variant(TDateTime(Moment)), u"2024-02-29T13:05:07.250"},
      {Variant(u"a<b&'\"c>"), u"a&lt;b&amp;&apos;&quot;c&gt;"},
      {VarAsType(Variant(u"x&y"), varOleStr), u"x&amp;y"},
      {Variant(RawByteString("x>'y")), u"x&gt;&apos;y"},
      {Variant(true), u"true"},
      {Variant(false), u"false"},
      {Variant(std::numeric_limits<Int64>::min()), u"-9223372036854775808"},
  };
  for (const Row& R : Rows) {
    EXPECT_EQ(LxVariantToXML(R.Value), R.Expected) << VarType(R.Value);
  }
  // Numbers are document text, whatever the regional settings say.
  FormatSettings.DecimalSeparator = u',';
  EXPECT_EQ(LxVariantToXML(Variant(1.5)), u"1.5");
}

TEST_F(XMLVariants, VariantToXMLRefusesCodesWithoutText) {
  ExpectRaises<Exception>([] { LxVariantToXML(Variant(static_cast<IInterface*>(nullptr))); },
                          u"LxVariantToXml; invalid variant type 13!");
  ExpectRaises<Exception>([] { LxVariantToXML(Variant(UInt64(1))); },
                          u"LxVariantToXml; invalid variant type 21!");
}

// --- text to Variant -----------------------------------------------------------------------------
TEST_F(XMLVariants, XMLToVariantOnTypeCode) {
  struct Row {
    std::u16string_view Text;
    TVarType Code;
    Variant Expected;
  };
  const Row Rows[] = {
      {u"x", varEmpty, Unassigned()},
      {u"x", varNull, Null()},
      {u"-7", varSmallint, Variant(SmallInt(-7))},
      {u"", varSmallint, Variant(SmallInt(0))},
      {u"", varInteger, Variant(Integer(0))},
      {u"$10", varInteger, Variant(Integer(16))},
      {u"12", varDecimal, Variant(Integer(12))},
      {u"1.5", varSingle, Variant(1.5f)},
      {u"2.25", varDouble, Variant(2.25)},
      {u"3.5", varCurrency, Variant(3.5)},
      {u"2024-02-29T13:05:07.250", varDate, Variant(TDateTime(Moment))},
      {u"&amp;", varOleStr, Variant(u"&")},
      {u"&amp;", varString, Variant(u"&")},
      {u"&amp;", varUString, Variant(u"&")},
      {u"TRUE", varBoolean, Variant(true)},
      {u"yes", varBoolean, Variant(false)},
      // Not decoded.
      {u"&amp;", varVariant, Variant(u"&amp;")},
      {u"&amp;", varUnknown, Variant(u"&amp;")},
      {u"-1", varShortInt, Variant(ShortInt(-1))},
      {u"255", varByte, Variant(Byte(255))},
      {u"65535", varWord, Variant(Word(65535))},
      {u"-1", varLongWord, Variant(Cardinal(4294967295u))},
      {u"9223372036854775807", varInt64, Variant(std::numeric_limits<Int64>::max())},
  };
  for (const Row& R : Rows)
    ExpectSameVariant(LxXMLToVariant(R.Text, R.Code), R.Expected,
                      Show(R.Text) + " on " + std::to_string(R.Code));
}

TEST_F(XMLVariants, XMLToVariantOnTypeCodeFailures) {
  struct Row {
    std::u16string_view Text;
    TVarType Code;
    TExpectFailure Expect;
    std::u16string_view Message;
  };
  const Row Rows[] = {
      // The Variant forms read text strictly; the plain ones give 0 for "" (above).
      {u"", varShortInt, Raises<EConvertError>, u"'' is not a valid integer value"},
      {u"", varByte, Raises<EConvertError>, u"'' is not a valid integer value"},
      {u"", varWord, Raises<EConvertError>, u"'' is not a valid integer value"},
      {u"", varLongWord, Raises<EConvertError>, u"'' is not a valid integer value"},
      {u"", varInt64, Raises<EConvertError>, u"'' is not a valid integer value"},
      {u"x1", varInteger, Raises<EConvertError>, u"'x1' is not a valid integer value"},
      {u"5", varUInt64, Raises<Exception>, u"LxXMLToVariant(5); Unsupported VarType"},
      {u"5", varDispatch, Raises<Exception>, u"LxXMLToVariant(5); Unsupported VarType"},
      {u"a&amp;b", varError, Raises<Exception>, u"LxXMLToVariant(a&amp;b); Unsupported VarType"},
      // An array code wants a text.
      {u"", varArray | varInteger, Raises<Exception>, u"LxXMLToVariant(); Unsupported VarType"},
  };
  for (const Row& R : Rows) {
    SCOPED_TRACE(Show(R.Text) + " on " + std::to_string(R.Code));
    R.Expect([&R] { LxXMLToVariant(R.Text, R.Code); }, R.Message);
  }
}

TEST_F(XMLVariants, XMLToVariantOnTypeKind) {
  struct Row {
    std::u16string_view Text;
    TLxTypeKind Kind;
    Variant Expected;
  };
  const Row Rows[] = {
      {u"300", ltkByte, Variant(Byte(44))},
      {u"7", ltkWord, Variant(Word(7))},
      {u"7", ltkLongWord, Variant(Cardinal(7))},
      {u"-1", ltkUInt64, Variant(std::numeric_limits<UInt64>::max())},
      {u"-3", ltkShortInt, Variant(ShortInt(-3))},
      {u"-3", ltkSmallInt, Variant(SmallInt(-3))},
      {u"", ltkInteger, Variant(Integer(0))},
      {u"-9000000000", ltkInt64, Variant(Int64(-9000000000))},
      // Every float comes back as a Double.
      {u"1.5", ltkSingle, Variant(1.5)},
      {u"1.25", ltkDouble, Variant(1.25)},
      {u"1E20", ltkExtended, Variant(1e20)},
      {u"a&lt;b", ltkText0, Variant(u"a<b")},
      {u"a&lt;b", ltkText1, Variant(u"a<b")},
      {u"a&lt;b", ltkText2, Variant(u"a<b")},
      {u"a&lt;b", ltkText3, Variant(u"a<b")},
      {u"a&lt;b", ltkText4, Variant(u"a<b")},
      {u"a&lt;b", ltkText5, Variant(u"a<b")},
      {u"1", ltkBoolean, Variant(true)},
      {u"2", ltkEnumeration, Variant(Integer(2))},
      {u"5", ltkSet, Variant(Integer(5))},
      {u"2024-02-29T13:05:07", ltkDate, Variant(TDateTime(EncodeDate(2024, 2, 29)))},
      {u"13:05:07.250", ltkTime, Variant(TDateTime(EncodeTime(13, 5, 7, 250)))},
      {u"2024-02-29T13:05:07.250", ltkDateTime, Variant(TDateTime(Moment))},
      {u"&amp;", ltkVariant, Variant(u"&amp;")},
  };
  for (const Row& R : Rows)
    ExpectSameVariant(LxXMLToVariant(R.Text, R.Kind), R.Expected,
                      Show(R.Text) + " as " + Show(LxTypeKindName(R.Kind)));

  for (TLxTypeKind Kind : {ltkUnknown, ltkArray, ltkDynArray, ltkRecord, ltkClass, ltkInterface,
                           ltkPointer, ltkClassRef}) {
    SCOPED_TRACE(Show(LxTypeKindName(Kind)));
    ExpectRaises<Exception>([Kind] { LxXMLToVariant(u"a\"b", Kind); },
                            u"Failed to convert the value \"a\"b\" to a variant value of type " +
                                UnicodeString(LxTypeKindName(Kind)) + u"!");
  }
  // The strict conversions' failures pass.
  ExpectRaises<EConvertError>([] { LxXMLToVariant(u"1,5x", ltkDouble); },
                              u"'1,5x' is not a valid floating point value");
}

TEST_F(XMLVariants, XMLToVariantOnTypeName) {
  ExpectSameVariant(LxXMLToVariant(u"12", u"System.Integer"), Variant(Integer(12)), "Integer");
  ExpectSameVariant(LxXMLToVariant(u"12", u"system.int64"), Variant(Int64(12)), "Int64");
  ExpectSameVariant(LxXMLToVariant(u"a&amp;b", u"System.string"), Variant(u"a&b"), "string");
  ExpectSameVariant(LxXMLToVariant(u"1", u"System.Boolean"), Variant(true), "Boolean");
  // A name without a code of its own, or none known, gives the text as it stands.
  ExpectSameVariant(LxXMLToVariant(u"a&amp;b", u"VarTest.TColor"), Variant(u"a&amp;b"), "enum");
  ExpectSameVariant(LxXMLToVariant(u"a&amp;b", u"Nope.TThing"), Variant(u"a&amp;b"), "unknown");
}

// --- arrays --------------------------------------------------------------------------------------
TEST_F(XMLVariants, ByteArraysTravelAsHexadecimalDigits) {
  EXPECT_EQ(LxVariantToXML(Array(varByte, {Byte(1), Byte(171)})), u"01AB");
  EXPECT_EQ(LxVariantToXML(Array(varByte, {Byte(0), Byte(15), Byte(16), Byte(255)})), u"000F10FF");
  EXPECT_EQ(LxVariantToXML(Array(varByte, {})), u"");

  const TVarType Bytes = varArray | varByte;
  ASSERT_EQ(Bytes, 8209);
  struct Row {
    std::u16string_view Text;
    Variant Expected;
  };
  const Row Rows[] = {
      {u"01AB", Array(varByte, {Byte(1), Byte(171)})},
      // An odd last digit is dropped.
      {u"01A", Array(varByte, {Byte(1)})},
      {u"A", Array(varByte, {})},
      {u" \t0aff\r\n", Array(varByte, {Byte(10), Byte(255)})},
      {u"", Null()},
      {u"   ", Null()},
  };
  for (const Row& R : Rows)
    ExpectSameVariant(LxXMLToVariant(R.Text, Bytes), R.Expected, Show(R.Text));

  for (std::u16string_view Bad : {u"0G", u"-1", u"+1", u"1 2"}) {
    const UnicodeString Pair(Bad.substr(0, 2));
    ExpectRaises<EConvertError>([Bad, Bytes] { LxXMLToVariant(Bad, Bytes); },
                                u"'$" + Pair + u"' is not a valid integer value");
  }
}

TEST_F(XMLVariants, StringArraysTravelAsOneEscapedText) {
  const UnicodeString Text = LxVariantToXML(Array(varOleStr, {u"a", u"b"}));
  EXPECT_EQ(Text, u"&lt;array length=&quot;2&quot;&gt;"
                  u"&lt;element nr=&quot;0&quot;&gt;a&lt;/element&gt;"
                  u"&lt;element nr=&quot;1&quot;&gt;b&lt;/element&gt;"
                  u"&lt;/array&gt;");
  const Variant Expected = Array(varOleStr, {u"a", u"b"});
  ASSERT_EQ(varArray | varOleStr, 8200);
  ExpectSameVariant(LxXMLToVariant(Text, varArray | varOleStr), Expected, "OleStr");
  // Arrays hold no Unicode or byte strings: both read as wide strings.
  ExpectSameVariant(LxXMLToVariant(Text, varArray | varUString), Expected, "UString");
  ExpectSameVariant(LxXMLToVariant(Text, varArray | varString), Expected, "String");
}

TEST_F(XMLVariants, StringElementsAreEscapedTwiceAndDecodedTwice) {
  const Variant Value = Array(varOleStr, {u"x<y", u"&", u"\"q'"});
  const UnicodeString Text = LxVariantToXML(Value);
  EXPECT_NE(Text.find(u"&gt;x&amp;lt;y&lt;"), UnicodeString::npos) << Show(Text);
  EXPECT_EQ(Text.find(u'<'), UnicodeString::npos) << Show(Text);
  ExpectSameVariant(LxXMLToVariant(Text, varArray | varOleStr), Value, "round trip");
}

TEST_F(XMLVariants, ArraysOfOtherTypesGoBothWays) {
  const std::vector<Variant> Arrays = {
      Array(varInteger, {Integer(1), Integer(-2), Integer(3)}),
      Array(varInt64, {Int64(-9000000000), Int64(0)}),
      Array(varDouble, {0.5, -1e20}),
      Array(varBoolean, {true, false}),
      Array(varSmallint, {}),
      Array(varDate, {TDateTime(Moment)}),
  };
  for (const Variant& Value : Arrays)
    ExpectSameVariant(LxXMLToVariant(LxVariantToXML(Value), VarType(Value)), Value,
                      Show(VarTypeAsText(VarType(Value))));

  EXPECT_EQ(LxVariantToXML(Array(varInteger, {})),
            u"&lt;array length=&quot;0&quot;&gt;&lt;/array&gt;");
  // Elements of a Variant array are read on code varVariant: as text, not decoded.
  ExpectSameVariant(
      LxXMLToVariant(LxVariantToXML(VarArrayOf({Integer(1), u"a&b", true})), varArray | varVariant),
      VarArrayOf({u"1", u"a&amp;b", u"true"}), "Variant array");
  // Fewer elements than the length: the rest keep the element type's zero.
  ExpectSameVariant(LxXMLToVariant(u"<array length=\"3\"><element nr=\"0\">7</element></array>",
                                   varArray | varInteger),
                    Array(varInteger, {Integer(7), Integer(0), Integer(0)}), "short");
}

TEST_F(XMLVariants, ElementFormFailures) {
  struct Row {
    std::u16string_view Text;
    TVarType Code;
    TExpectFailure Expect;
    std::u16string_view Message;
  };
  const Row Rows[] = {
      {u"<array length=\"x\"></array>", varArray | varInteger, Raises<EConvertError>,
       u"'x' is not a valid integer value"},
      {u"no quotes", varArray | varInteger, Raises<EConvertError>,
       u"'' is not a valid integer value"},
      {u"<array length=\"-5\"></array>", varArray | varInteger, Raises<EVariantArrayCreateError>,
       u"Error creating variant or safe array"},
      {u"<array length=\"1\"><element nr=\"0\">1</element><element nr=\"1\">2</element></array>",
       varArray | varInteger, Raises<EVariantBadIndexError>,
       u"Variant or safe array index out of bounds"},
      {u"<array length=\"1\"></array>", varArray, Raises<EVariantBadVarTypeError>,
       u"Invalid variant type"},
      {u"<array length=\"1\"><element nr=\"0\">5</element></array>", varArray | varUInt64,
       Raises<Exception>, u"LxXMLToVariant(5); Unsupported VarType"},
      {u"<array length=\"1\"><element nr=\"0\">q</element></array>", varArray | varInteger,
       Raises<EConvertError>, u"'q' is not a valid integer value"},
  };
  for (const Row& R : Rows) {
    SCOPED_TRACE(Show(R.Text));
    R.Expect([&R] { LxXMLToVariant(R.Text, R.Code); }, R.Message);
  }
  // Written from index 0: an array that starts above it has no element there.
  Variant FromOne = VarArrayCreate({1, 2}, varInteger);
  ExpectRaises<EVariantBadIndexError>([&FromOne] { LxVariantToXML(FromOne); },
                                      u"Variant or safe array index out of bounds");
}

// --- TValue to text ------------------------------------------------------------------------------
TEST_F(XMLVariants, ValToXMLBySimpleKind) {
  struct Row {
    TValue Value;
    std::u16string_view Expected;
  };
  const Row Rows[] = {
      {TValue::From(Variant(u"a<b")), u"a&lt;b"},
      {TValue::From(Variant(Array(varByte, {Byte(1), Byte(171)}))), u"01AB"},
      {TValue::From(Integer(-42)), u"-42"},
      {TValue::From(Byte(200)), u"200"},
      {TValue::From(std::numeric_limits<Int64>::min()), u"-9223372036854775808"},
      {TValue::From(1.5), u"1.5"},
      {TValue::From(TColors{vartest::clRed, vartest::clBlue}), u"[clRed,clBlue]"},
      {TValue::From(TColors{}), u"[]"},
      {TValue::From(UnicodeString(u"x\"y'<")), u"x&quot;y&apos;&lt;"},
      {TValue::From(WideChar(u'&')), u"&amp;"},
      {TValue::From(AnsiChar('>')), u"&gt;"},
      {TValue::From(std::string("a&b\xC3\xA9")), u"a&amp;b\u00e9"},
      {TValue::From(vartest::clGreen), u"clGreen"},
      {TValue::From(true), u"True"},
      {TValue(), u""},
  };
  for (const Row& R : Rows)
    EXPECT_EQ(LxValToXML(R.Value), R.Expected) << Show(R.Expected);
}

TEST_F(XMLVariants, ValToXMLOfAnEnumerationOutOfRangeGivesTheLowestName) {
  EXPECT_EQ(LxValToXML(TValue::FromOrdinal(TypeHandle<TColor>(), 3)), u"clRed");
  EXPECT_EQ(LxValToXML(TValue::FromOrdinal(TypeHandle<TColor>(), 200)), u"clRed");
  EXPECT_EQ(LxValToXML(TValue::FromOrdinal(TypeHandle<TColor>(), 2)), u"clBlue");
}

TEST_F(XMLVariants, ValToXMLWritesArraysRecordsAndClassesThroughTheSerializer) {
  const std::vector<TValue> Values = {
      TValue::From(vartest::TPoint{1, 2}),
      TValue::From(std::vector<Integer>{1, 2}),
      TValue::From(std::array<Integer, 2>{1, 2}),
      TValue::From(static_cast<TObject*>(nullptr)),
  };
  for (const TValue& Value : Values)
    ExpectRaises<ENotSupportedException>([&Value] { LxValToXML(Value); }, SNoValueSerializer);

  std::vector<TLxTypeHandle> Seen;
  auto Previous =
      SetValueSerializer([&Seen](TLxDataSerializationFormatType AFormat, const TValue& AValue) {
        EXPECT_EQ(AFormat, ldsXML);
        Seen.push_back(AValue.GetTypeInfo());
        return RawByteString("<v>\xC3\xA9</v>");
      });
  EXPECT_FALSE(Previous);
  for (const TValue& Value : Values)
    EXPECT_EQ(LxValToXML(Value), u"<v>\u00e9</v>") << Show(Value.LxTypeInfo()->GetName());
  ASSERT_EQ(Seen.size(), Values.size());
  for (std::size_t I = 0; I < Values.size(); ++I)
    EXPECT_EQ(Seen[I], Values[I].GetTypeInfo());
  // Simple values never reach it.
  EXPECT_EQ(LxValToXML(TValue::From(Integer(1))), u"1");
  EXPECT_EQ(Seen.size(), Values.size());

  EXPECT_TRUE(SetValueSerializer(std::move(Previous)));
  ExpectRaises<ENotSupportedException>([&Values] { LxValToXML(Values[0]); }, SNoValueSerializer);
}

// --- text to TValue ------------------------------------------------------------------------------
TEST_F(XMLVariants, XMLToValueBySimpleKind) {
  struct Row {
    std::u16string_view Text;
    TValue Expected;
  };
  const Row Rows[] = {
      {u"300", TValue::From(Byte(44))},
      {u"65535", TValue::From(Word(65535))},
      {u"-1", TValue::From(Cardinal(4294967295u))},
      {u"-1", TValue::From(std::numeric_limits<UInt64>::max())},
      {u"-128", TValue::From(ShortInt(-128))},
      {u"-2", TValue::From(SmallInt(-2))},
      {u"", TValue::From(Integer(0))},
      {u"$FF", TValue::From(Integer(255))},
      {u"-9000000000", TValue::From(Int64(-9000000000))},
      {u"1.5", TValue::From(1.5f)},
      {u"-2.5E3", TValue::From(-2500.0)},
      {u"TRUE", TValue::From(true)},
      {u"no", TValue::From(false)},
      {u"2024-02-29T13:05:07.250", TValue::From(TDate(EncodeDate(2024, 2, 29)))},
      {u"2024-02-29T13:05:07.250", TValue::From(TLxUTCDate(EncodeDate(2024, 2, 29)))},
      {u"13:05:07.250", TValue::From(TTime(EncodeTime(13, 5, 7, 250)))},
      {u"2024-02-29T13:05:07.250", TValue::From(TDateTime(Moment))},
      // A character takes the first unit as it stands, not decoded.
      {u"&amp;", TValue::From(WideChar(u'&'))},
      {u"", TValue::From(WideChar(0))},
      // A byte character takes the first byte in the default code page (1252 here): the euro
      // sign is 0x80 there.
      {u"\u20acx", TValue::From(AnsiChar('\x80'))},
      {u"", TValue::From(AnsiChar(0))},
      {u"a&lt;b", TValue::From(UnicodeString(u"a<b"))},
      {u"&amp;", TValue::From(Variant(u"&"))},
      // Enumerations: a digit is an ordinal, anything else a name.
      {u"2", TValue::From(vartest::clBlue)},
      {u"clgreen", TValue::From(vartest::clGreen)},
      {u"CLRED", TValue::From(vartest::clRed)},
      {u"5", TValue::From(TColors{vartest::clRed, vartest::clBlue})},
      {u"[clRed, clBlue]", TValue::From(TColors{vartest::clRed, vartest::clBlue})},
      {u"clgreen", TValue::From(TColors{vartest::clGreen})},
      {u"[]", TValue::From(TColors{})},
      {u"255",
       TValue::From(TTinySet{vartest::tnA, vartest::tnB, vartest::tnC, static_cast<TTiny>(3)})},
  };
  for (const Row& R : Rows) {
    SCOPED_TRACE(Show(R.Text) + " as " + Show(R.Expected.LxTypeInfo()->GetName()));
    const TValue Result = LxXMLToValue(R.Text, R.Expected.GetTypeInfo());
    ASSERT_EQ(Result.GetTypeInfo(), R.Expected.GetTypeInfo());
    ExpectSameVariant(Result.AsVariant(), R.Expected.AsVariant(), "value");
  }
  // An 8-bit string holds UTF-8.
  EXPECT_EQ(LxXMLToValue(u"&#233;\u20ac", TypeHandle<std::string>()).AsType<std::string>(),
            "\xC3\xA9\xE2\x82\xAC");
}

TEST_F(XMLVariants, XMLToValueFailures) {
  struct Row {
    std::u16string_view Text;
    TLxTypeHandle Handle;
    TExpectFailure Expect;
    std::u16string_view Message;
  };
  const Row Rows[] = {
      {u"3", TypeHandle<TColor>(), Raises<Exception>,
       u"Failed to convert the value \"3\" to a value of type TColor!"},
      {u"2x", TypeHandle<TColor>(), Raises<Exception>,
       u"Failed to convert the value \"2x\" to a value of type TColor!"},
      {u"purple", TypeHandle<TColor>(), Raises<Exception>,
       u"Failed to convert the value \"purple\" to a value of type TColor!"},
      {u"", TypeHandle<TColor>(), Raises<Exception>,
       u"Failed to convert the value \"\" to a value of type TColor!"},
      {u"[clRed,purple]", TypeHandle<TColors>(), Raises<Exception>,
       u"Failed to convert the value \"[clRed,purple]\" to a value of type TSet<TColor>!"},
      {u"1x", TypeHandle<TColors>(), Raises<EConvertError>, u"'1x' is not a valid integer value"},
      {u"abc", TypeHandle<Integer>(), Raises<EConvertError>, u"'abc' is not a valid integer value"},
      {u"x", TypeHandle<vartest::TPoint>(), Raises<Exception>,
       u"Failed to convert \"x\" into a TValue!\r\nThe type TPoint is not supported."},
      {u"x", TypeHandle<std::vector<Integer>>(), Raises<Exception>,
       u"Failed to convert \"x\" into a TValue!\r\nThe type TArray<Integer> is not supported."},
      {u"x", TypeHandle<TValue>(), Raises<Exception>,
       u"Failed to convert \"x\" into a TValue!\r\nThe type TValue is not supported."},
      {u"x", TypeHandle<TObject*>(), Raises<Exception>,
       u"Failed to convert \"x\" into a TValue!\r\nThe type TObject is not supported."},
      {u"x", TypeHandle<TClass>(), Raises<Exception>,
       u"Failed to convert \"x\" into a TValue!\r\nThe type TClass is not supported."},
      {u"x", nullptr, Raises<EArgumentException>, u"No type given"},
  };
  for (const Row& R : Rows) {
    SCOPED_TRACE(Show(R.Text));
    R.Expect([&R] { LxXMLToValue(R.Text, R.Handle); }, R.Message);
  }
}

TEST_F(XMLVariants, XMLToValueOnTypeName) {
  EXPECT_EQ(LxXMLToValue(u"12", u"System.Integer").AsType<Integer>(), 12);
  EXPECT_EQ(LxXMLToValue(u"a&amp;b", u"system.STRING").AsType<UnicodeString>(), u"a&b");
  EXPECT_EQ(LxXMLToValue(u"clBlue", u"VarTest.TColor").AsType<TColor>(), vartest::clBlue);
  ExpectRaises<EArgumentException>([] { LxXMLToValue(u"1", u"Nope.TThing"); },
                                   u"Unknown type \"Nope.TThing\"");
}

TEST_F(XMLVariants, SimpleValuesReadBackWhatTheyWrite) {
  const std::vector<TValue> Values = {
      TValue::From(Integer(-7)),
      TValue::From(std::numeric_limits<Int64>::max()),
      TValue::From(UnicodeString(u"<a href=\"x\">&amp;</a>")),
      TValue::From(vartest::clBlue),
      TValue::From(TColors{vartest::clGreen, vartest::clBlue}),
      TValue::From(true),
      TValue::From(Variant(u"a&b")),
  };
  for (const TValue& Value : Values) {
    const UnicodeString Text = LxValToXML(Value);
    SCOPED_TRACE(Show(Text));
    const TValue Back = LxXMLToValue(Text, Value.GetTypeInfo());
    ExpectSameVariant(Back.AsVariant(), Value.AsVariant(), "round trip");
  }
}

} // namespace
} // namespace lorvane
