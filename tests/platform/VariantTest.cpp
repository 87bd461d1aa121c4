// Variant: type codes, conversions, arithmetic type rules, comparison and arrays.
#include "lorvane/platform/Variants.h"

#include "support/ScopeGuards.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <typeinfo>

namespace lorvane {
namespace {

using test::ExpectRaises;

static_assert(sizeof(Variant) == 16, "a Variant is a code and one 8-byte payload");

// Type name and text of a value, so that one string pins both.
std::string Describe(const Variant& AValue) {
  if (VarIsNull(AValue))
    return "Null";
  if (VarIsEmpty(AValue))
    return "Empty";
  if (VarType(AValue) == varUnknown)
    return AValue.AsInterface() ? "Unknown" : "Unknown nil";
  UnicodeString Text = VarTypeAsText(VarType(AValue)) + u" ";
  if (VarIsArray(AValue)) {
    Text += u"[";
    for (Integer I = VarArrayLowBound(AValue, 1); I <= VarArrayHighBound(AValue, 1); ++I) {
      Text += UTF8ToString(Describe(VarArrayGet(AValue, I)));
      if (I < VarArrayHighBound(AValue, 1))
        Text += u", ";
    }
    Text += u"]";
  } else {
    Text += VarToStr(AValue);
  }
  return StringToUTF8(Text);
}

const TDateTime SomeMoment = EncodeDateTime(2024, 3, 5, 14, 7, 9, 0);

// An interface that only counts its references.
class TCountedThing : public IInterface {
public:
  HRESULT QueryInterface(const TGUID&, void** AObj) override {
    *AObj = nullptr;
    return E_NOINTERFACE;
  }
  Integer _AddRef() override { return ++Refs; }
  Integer _Release() override { return --Refs; }
  Integer Refs = 0;
};

// --- type codes ----------------------------------------------------------------------------------
TEST(VariantType, EachScalarTypeTakesItsCode) {
  TCountedThing Thing;
  const struct {
    Variant Value;
    TVarType Type;
  } Cases[] = {
      {Variant(), varEmpty},
      {Null(), varNull},
      {Unassigned(), varEmpty},
      {true, varBoolean},
      {Integer{5}, varInteger},
      {Int64{5}, varInt64},
      {UInt64{5}, varUInt64},
      {SmallInt{5}, varSmallint},
      {ShortInt{5}, varShortInt},
      {Byte{5}, varByte},
      {Word{5}, varWord},
      {LongWord{5}, varLongWord},
      {1.5, varDouble},
      {1.5f, varSingle},
      {SomeMoment, varDate},
      {TDate(EncodeDate(2024, 1, 1)), varDate},
      {TTime(0.5), varDate},
      {UnicodeString(u"x"), varUString},
      {u"x", varUString},
      {u'x', varUString},
      {RawByteString("x"), varString},
      {static_cast<IInterface*>(&Thing), varUnknown},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(VarType(Case.Value), Case.Type) << Describe(Case.Value);
  EXPECT_EQ(Variant(u'x').AsString(), u"x");
}

TEST(VariantType, NamesOfTheCodes) {
  const struct {
    TVarType Type;
    const char16_t* Name;
  } Cases[] = {
      {varEmpty, u"Empty"},
      {varNull, u"Null"},
      {varSmallint, u"Smallint"},
      {varInteger, u"Integer"},
      {varSingle, u"Single"},
      {varDouble, u"Double"},
      {varCurrency, u"Currency"},
      {varDate, u"Date"},
      {varOleStr, u"OleStr"},
      {varBoolean, u"Boolean"},
      {varVariant, u"Variant"},
      {varUnknown, u"Unknown"},
      {varDecimal, u"Decimal"},
      {varShortInt, u"ShortInt"},
      {varByte, u"Byte"},
      {varWord, u"Word"},
      {varLongWord, u"Cardinal"},
      {varInt64, u"Int64"},
      {varUInt64, u"UInt64"},
      {varString, u"String"},
      {varUString, u"UnicodeString"},
      {varArray | varByte, u"Array Byte"},
      {varArray | varVariant, u"Array Variant"},
      {0x0FFE, u"$0FFE"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(VarTypeAsText(Case.Type), Case.Name);
}

TEST(VariantType, KindTests) {
  TCountedThing Thing;
  const struct {
    Variant Value;
    bool Ordinal, Float, Numeric, Str, Clear;
  } Cases[] = {
      {Variant(), false, false, false, false, true},
      {Null(), false, false, false, false, false},
      {Integer{1}, true, false, true, false, false},
      {UInt64{1}, true, false, true, false, false},
      {true, true, false, true, false, false},
      {1.5, false, true, true, false, false},
      {1.5f, false, true, true, false, false},
      {VarAsType(1, varCurrency), false, true, true, false, false},
      {SomeMoment, false, false, false, false, false},
      {u"1", false, false, false, true, false},
      {RawByteString("1"), false, false, false, true, false},
      {VarAsType(u"1", varOleStr), false, false, false, true, false},
      {static_cast<IInterface*>(nullptr), false, false, false, false, true},
      {static_cast<IInterface*>(&Thing), false, false, false, false, false},
      {VarArrayOf({1}), false, false, false, false, false},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(Describe(Case.Value));
    EXPECT_EQ(VarIsOrdinal(Case.Value), Case.Ordinal);
    EXPECT_EQ(VarIsFloat(Case.Value), Case.Float);
    EXPECT_EQ(VarIsNumeric(Case.Value), Case.Numeric);
    EXPECT_EQ(VarIsStr(Case.Value), Case.Str);
    EXPECT_EQ(VarIsClear(Case.Value), Case.Clear);
  }
  EXPECT_TRUE(VarIsNull(Null()));
  EXPECT_FALSE(VarIsNull(Variant()));
  EXPECT_TRUE(VarIsEmpty(Variant()));
  EXPECT_FALSE(VarIsEmpty(Null()));
  EXPECT_TRUE(VarIsArray(VarArrayOf({})));
}

TEST(VariantType, EveryCodeBelongsToOneFamily) {
  using K = TVarKind;
  const struct {
    TVarType Code;
    TVarKind Kind;
  } Codes[] = {
      {varEmpty, K::vkEmpty},
      {varNull, K::vkNull},
      {varSmallint, K::vkSigned},
      {varInteger, K::vkSigned},
      {varShortInt, K::vkSigned},
      {varInt64, K::vkSigned},
      {varByte, K::vkUnsigned},
      {varWord, K::vkUnsigned},
      {varLongWord, K::vkUnsigned},
      {varUInt64, K::vkUnsigned},
      {varSingle, K::vkSingle},
      {varDouble, K::vkDouble},
      {varCurrency, K::vkCurrency},
      {varDate, K::vkDate},
      {varBoolean, K::vkBoolean},
      {varOleStr, K::vkText},
      {varUString, K::vkText},
      {varString, K::vkBytes},
      {varUnknown, K::vkUnknown},
      {varDispatch, K::vkUnknown},
      {varError, K::vkUnknown},
      {varVariant, K::vkUnknown},
      {varDecimal, K::vkUnknown},
      {0x00FF, K::vkUnknown},
      {varByRef | varInteger, K::vkUnknown},
      {varArray | varInteger, K::vkArray},
      {varArray | varVariant, K::vkArray},
      {varArray | varByRef | varString, K::vkArray},
  };
  for (const auto& Case : Codes) {
    SCOPED_TRACE(StringToUTF8(VarTypeAsText(Case.Code)));
    EXPECT_EQ(VarKindOf(Case.Code), Case.Kind);
  }

  // The family of a value is that of its code, and the type tests agree with it.
  TCountedThing Thing;
  const Variant Values[] = {Variant(),
                            Null(),
                            ShortInt{-1},
                            Int64{1},
                            Byte{1},
                            UInt64{1},
                            1.5f,
                            1.5,
                            VarAsType(1, varCurrency),
                            SomeMoment,
                            true,
                            u"x",
                            RawByteString("x"),
                            static_cast<IInterface*>(&Thing),
                            VarArrayCreate({0, 1}, varInteger)};
  for (const Variant& Value : Values) {
    SCOPED_TRACE(Describe(Value));
    const TVarKind Kind = VarKind(Value);
    EXPECT_EQ(Kind, VarKindOf(VarType(Value)));
    EXPECT_EQ(VarIsStr(Value), Kind == K::vkText || Kind == K::vkBytes);
    EXPECT_EQ(VarIsOrdinal(Value),
              Kind == K::vkSigned || Kind == K::vkUnsigned || Kind == K::vkBoolean);
    EXPECT_EQ(VarIsFloat(Value),
              Kind == K::vkSingle || Kind == K::vkDouble || Kind == K::vkCurrency);
    EXPECT_EQ(VarIsArray(Value), Kind == K::vkArray);
  }
}

// --- arithmetic ----------------------------------------------------------------------------------
TEST(VariantArithmetic, ResultTypes) {
  const Integer MaxInt = std::numeric_limits<Integer>::max();
  const Integer MinInt = std::numeric_limits<Integer>::min();
  const Variant Cy = VarAsType(1.25, varCurrency);
  const struct {
    Variant Result;
    const char* Expected;
  } Cases[] = {
      {Variant(2) + Variant(3), "Integer 5"},
      {Variant(MaxInt) + Variant(1), "Int64 2147483648"},
      {Variant(MinInt) - Variant(1), "Int64 -2147483649"},
      {Variant(65536) * Variant(65536), "Int64 4294967296"},
      {Variant(MaxInt) + Variant(-1), "Integer 2147483646"},
      {Variant(SmallInt{30000}) + Variant(SmallInt{30000}), "Integer 60000"},
      {Variant(Byte{200}) + Variant(Byte{100}), "Integer 300"},
      {Variant(Int64{1}) + Variant(1), "Int64 2"},
      {Variant(LongWord{1}) + Variant(1), "Int64 2"},
      {Variant(UInt64{1} << 63) + Variant(UInt64{1} << 62), "UInt64 13835058055282163712"},
      {Variant(UInt64{5}) - Variant(7), "Int64 -2"},
      {Variant(7) / Variant(2), "Double 3.5"},
      {Variant(6) / Variant(3), "Double 2"},
      {Variant(1) + Variant(1.5), "Double 2.5"},
      {Variant(1.5f) + Variant(1.5f), "Double 3"},
      {Variant(true) + Variant(true), "Integer -2"},
      {Variant(true) * Variant(5), "Integer -5"},
      {Variant(SomeMoment) + Variant(1), "Date 2024-03-06 14:07:09"},
      {Variant(1.5) + Variant(SomeMoment), "Date 2024-03-07 02:07:09"},
      {Variant(SomeMoment) - Variant(0.5), "Date 2024-03-05 02:07:09"},
      {Variant(TDateTime(2.75)) - Variant(TDateTime(1.25)), "Double 1.5"},
      {Variant(TDateTime(2)) * Variant(2), "Double 4"},
      {Variant() + Variant(5), "Integer 5"},
      {Variant(5) - Variant(), "Integer 5"},
      {Variant() + Variant(), "Empty"},
      {Variant() + Variant(u"a"), "UnicodeString a"},
      {Null() + Variant(5), "Null"},
      {Variant(u"a") + Null(), "Null"},
      {Null() * Null(), "Null"},
      {Variant(u"ab") + Variant(u"cd"), "UnicodeString abcd"},
      {Variant(u"2") + Variant(3), "Double 5"},
      {Variant(3) + Variant(u"2.5"), "Double 5.5"},
      {Variant(u"10") - Variant(u"4"), "Double 6"},
      {Variant(u"4") * Variant(u"2"), "Double 8"},
      {Variant(u"$10") + Variant(1), "Double 17"},
      {Variant(RawByteString("ab")) + Variant(RawByteString("cd")), "String abcd"},
      {Variant(RawByteString("ab")) + Variant(u"cd"), "UnicodeString abcd"},
      {Variant(RawByteString("2")) * Variant(2), "Double 4"},
      {Cy + Variant(1), "Currency 2.25"},
      {Cy * Variant(3), "Currency 3.75"},
      {Cy * VarAsType(1.5, varCurrency), "Currency 1.875"},
      {Cy + Variant(0.5), "Double 1.75"},
      {Cy / Variant(5), "Double 0.25"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(Describe(Case.Result), Case.Expected);
}

TEST(VariantArithmetic, UnaryMinus) {
  const struct {
    Variant Result;
    const char* Expected;
  } Cases[] = {
      {-Variant(5), "Integer -5"},
      {-Variant(std::numeric_limits<Integer>::min()), "Int64 2147483648"},
      {-Variant(Byte{5}), "Integer -5"},
      {-Variant(UInt64{5}), "Int64 -5"},
      {-Variant(1.5f), "Single -1.5"},
      {-Variant(1.5), "Double -1.5"},
      {-Variant(true), "Integer 1"},
      {-Variant(u"3"), "Double -3"},
      {-Variant(TDateTime(1.25)), "Date 1899-12-29 06:00:00"},
      {-VarAsType(2, varCurrency), "Currency -2"},
      {-Null(), "Null"},
      {-Variant(), "Empty"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(Describe(Case.Result), Case.Expected);
}

TEST(VariantArithmetic, CompoundAssignment) {
  Variant Sum = u"";
  for (const Variant& Part : {Variant(u"a"), Variant(u"b")})
    Sum += Part;
  EXPECT_EQ(Describe(Sum), "UnicodeString ab");
  Variant Number = 10;
  Number -= 4;
  Number *= 2;
  EXPECT_EQ(Describe(Number), "Integer 12");
  Number /= 8;
  EXPECT_EQ(Describe(Number), "Double 1.5");
}

TEST(VariantArithmetic, Failures) {
  const Variant Int64Max = std::numeric_limits<Int64>::max();
  const Variant Int64Min = std::numeric_limits<Int64>::min();
  TCountedThing Thing;
  const Variant Intf = static_cast<IInterface*>(&Thing);
  const Variant Array = VarArrayOf({1, 2});
  const struct {
    std::function<void()> Action;
    const char* Class;
    const char16_t* Message;
  } Cases[] = {
      {[&] { (void)(Int64Max + Variant(1)); }, "Overflow", u"Variant overflow"},
      {[&] { (void)(Int64Max * Variant(2)); }, "Overflow", u"Variant overflow"},
      {[&] { (void)(-Int64Min); }, "Overflow", u"Variant overflow"},
      {[&] { (void)(Variant(UInt64{0}) - Variant(UInt64{1})); }, "Overflow", u"Variant overflow"},
      {[&] { (void)(Variant(u"abc") + Variant(1)); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Double)"},
      {[&] { (void)(Variant(1) + Variant(u"abc")); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Double)"},
      {[&] { (void)(Variant(u"1") * Variant(u"")); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Double)"},
      {[&] { (void)(Variant(RawByteString("x")) + Variant(1)); }, "Cast",
       u"Could not convert variant of type (String) into type (Double)"},
      {[&] { (void)(Variant(SomeMoment) + Variant(u"x")); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Double)"},
      {[&] { (void)(Array + Variant(1)); }, "InvalidOp", u"Invalid variant operation"},
      {[&] { (void)(Variant(u"a") + Array); }, "InvalidOp", u"Invalid variant operation"},
      {[&] { (void)(-Array); }, "InvalidOp", u"Invalid variant operation"},
      {[&] { (void)(Intf * Variant(1)); }, "InvalidOp", u"Invalid variant operation"},
  };
  for (const auto& Case : Cases) {
    const std::string Class = Case.Class;
    if (Class == "Overflow")
      ExpectRaises<EVariantOverflowError>(Case.Action, Case.Message);
    else if (Class == "Cast")
      ExpectRaises<EVariantTypeCastError>(Case.Action, Case.Message);
    else
      ExpectRaises<EVariantInvalidOpError>(Case.Action, Case.Message);
  }
}

// --- conversions ---------------------------------------------------------------------------------
TEST(VariantConversion, ToText) {
  const struct {
    Variant Value;
    const char16_t* Text;
  } Cases[] = {
      {Variant(), u""},
      {Variant(-5), u"-5"},
      {Variant(std::numeric_limits<UInt64>::max()), u"18446744073709551615"},
      {Variant(-1.5), u"-1.5"},
      {Variant(1e20), u"1E20"},
      {Variant(0.1f), u"0.100000001490116"},
      {Variant(true), u"True"},
      {Variant(false), u"False"},
      {Variant(SomeMoment), u"2024-03-05 14:07:09"},
      {Variant(TDate(EncodeDate(2024, 3, 5))), u"2024-03-05"},
      {VarAsType(2.5, varCurrency), u"2.5"},
      {Variant(RawByteString("bytes")), u"bytes"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(Case.Value.AsString(), Case.Text) << Describe(Case.Value);

  EXPECT_EQ(VarToStr(Null()), u"");
  EXPECT_EQ(VarToStrDef(Null(), u"none"), u"none");
  EXPECT_EQ(VarToStrDef(Variant(), u"none"), u"");
  EXPECT_EQ(VarToStrDef(Variant(7), u"none"), u"7");
  ExpectRaises<EVariantTypeCastError>(
      [] { (void)Null().AsString(); },
      u"Could not convert variant of type (Null) into type (UnicodeString)");
  ExpectRaises<EVariantTypeCastError>(
      [] { (void)VarToStr(VarArrayOf({1})); },
      u"Could not convert variant of type (Array Variant) into type (UnicodeString)");
}

TEST(VariantConversion, ToNumbers) {
  EXPECT_EQ(Variant(u" 42 ").AsInteger(), 42);
  EXPECT_EQ(Variant(u"$FF").AsInteger(), 255);
  EXPECT_EQ(Variant(u"-9223372036854775808").AsInt64(), std::numeric_limits<Int64>::min());
  EXPECT_EQ(Variant(u"18446744073709551615").AsUInt64(), std::numeric_limits<UInt64>::max());
  EXPECT_EQ(Variant(u"1.5e3").AsDouble(), 1500.0);
  EXPECT_EQ(Variant(true).AsInteger(), -1);
  EXPECT_EQ(Variant(true).AsDouble(), -1.0);
  EXPECT_EQ(Variant(false).AsInt64(), 0);
  EXPECT_EQ(Variant().AsDouble(), 0.0);
  EXPECT_EQ(Variant(SomeMoment).AsDouble(), SomeMoment.Value);
  // Floats go to integers rounded half to even, text too.
  const struct {
    double Value;
    Int64 Rounded;
  } Roundings[] = {{2.5, 2}, {3.5, 4}, {-2.5, -2}, {2.4999, 2}, {-7.6, -8}};
  for (const auto& Case : Roundings) {
    EXPECT_EQ(Variant(Case.Value).AsInt64(), Case.Rounded) << Case.Value;
    EXPECT_EQ(Variant(FloatToStr(Case.Value)).AsInteger(), Case.Rounded) << Case.Value;
  }
  EXPECT_EQ(VarAsType(2.5, varCurrency).AsInteger(), 2);
  EXPECT_EQ(VarAsType(-3.5, varCurrency).AsInteger(), -4);
}

TEST(VariantConversion, ToBoolean) {
  const struct {
    Variant Value;
    bool Expected;
  } Cases[] = {
      {Variant(), false},
      {Variant(2), true},
      {Variant(0), false},
      {Variant(0.0), false},
      {Variant(-0.5), true},
      {Variant(UInt64{1}), true},
      {Variant(u"TRUE"), true},
      {Variant(u"False"), false},
      {Variant(u"0"), false},
      {Variant(u"2.5"), true},
      {Variant(u" true "), true},
      {Variant(true), true},
      {VarAsType(0, varCurrency), false},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(Case.Value.AsBoolean(), Case.Expected) << Describe(Case.Value);
  ExpectRaises<EVariantTypeCastError>(
      [] { (void)Variant(u"yes").AsBoolean(); },
      u"Could not convert variant of type (UnicodeString) into type (Boolean)");
}

TEST(VariantConversion, StrictConversionsOfNullAndBadValuesRaise) {
  const struct {
    std::function<void()> Action;
    const char* Class;
    const char16_t* Message;
  } Cases[] = {
      {[] { (void)Null().AsDouble(); }, "Cast",
       u"Could not convert variant of type (Null) into type (Double)"},
      {[] { (void)Null().AsInteger(); }, "Cast",
       u"Could not convert variant of type (Null) into type (Integer)"},
      {[] { (void)Null().AsBoolean(); }, "Cast",
       u"Could not convert variant of type (Null) into type (Boolean)"},
      {[] { (void)Null().AsDateTime(); }, "Cast",
       u"Could not convert variant of type (Null) into type (Date)"},
      {[] { (void)VarAsType(Null(), varInt64); }, "Cast",
       u"Could not convert variant of type (Null) into type (Int64)"},
      {[] { (void)Variant(u"abc").AsDouble(); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Double)"},
      {[] { (void)Variant(u"").AsInt64(); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Int64)"},
      {[] { (void)VarAsType(u"12x", varWord); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Word)"},
      {[] { (void)VarAsType(VarAsType(u"x", varOleStr), varInteger); }, "Cast",
       u"Could not convert variant of type (OleStr) into type (Integer)"},
      {[] { (void)Variant(u"soon").AsDateTime(); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Date)"},
      {[] { (void)Variant(5).AsInterface(); }, "Cast",
       u"Could not convert variant of type (Integer) into type (Unknown)"},
      {[] { (void)VarAsType(5, varDecimal); }, "Cast",
       u"Could not convert variant of type (Integer) into type (Decimal)"},
      {[] { (void)Variant(Int64{1} << 40).AsInteger(); }, "Overflow",
       u"Overflow while converting variant of type (Int64) into type (Integer)"},
      {[] { (void)Variant(1e10).AsInteger(); }, "Overflow",
       u"Overflow while converting variant of type (Double) into type (Integer)"},
      {[] { (void)Variant(std::nan("")).AsInt64(); }, "Overflow",
       u"Overflow while converting variant of type (Double) into type (Int64)"},
      {[] { (void)Variant(u"1e30").AsInt64(); }, "Overflow",
       u"Overflow while converting variant of type (UnicodeString) into type (Int64)"},
      {[] { (void)VarAsType(300, varByte); }, "Overflow",
       u"Overflow while converting variant of type (Integer) into type (Byte)"},
      {[] { (void)VarAsType(-1, varUInt64); }, "Overflow",
       u"Overflow while converting variant of type (Integer) into type (UInt64)"},
      {[] { (void)VarAsType(1e39, varSingle); }, "Overflow",
       u"Overflow while converting variant of type (Double) into type (Single)"},
      {[] { (void)VarAsType(1e300, varCurrency); }, "Overflow",
       u"Overflow while converting variant of type (Double) into type (Currency)"},
      {[] { (void)VarAsType(5, 0x0FFE); }, "BadType", u"Invalid variant type"},
      {[] { (void)VarAsType(5, varByRef | varInteger); }, "BadType", u"Invalid variant type"},
  };
  for (const auto& Case : Cases) {
    const std::string Class = Case.Class;
    if (Class == "Cast")
      ExpectRaises<EVariantTypeCastError>(Case.Action, Case.Message);
    else if (Class == "Overflow")
      ExpectRaises<EVariantOverflowError>(Case.Action, Case.Message);
    else
      ExpectRaises<EVariantBadVarTypeError>(Case.Action, Case.Message);
  }
}

TEST(VariantConversion, VarAsTypeTargets) {
  const struct {
    Variant Result;
    const char* Expected;
  } Cases[] = {
      {VarAsType(u"42", varInteger), "Integer 42"},
      {VarAsType(u"-42", varShortInt), "ShortInt -42"},
      {VarAsType(u"65535", varWord), "Word 65535"},
      {VarAsType(42, varUString), "UnicodeString 42"},
      {VarAsType(42, varOleStr), "OleStr 42"},
      {VarAsType(42, varString), "String 42"},
      {VarAsType(u"2024-03-05", varDate), "Date 2024-03-05"},
      {VarAsType(u"2024-03-05 14:07:09", varDate), "Date 2024-03-05 14:07:09"},
      {VarAsType(u"36526.5", varDate), "Date 2000-01-01 12:00:00"},
      {VarAsType(36526, varDate), "Date 2000-01-01"},
      {VarAsType(SomeMoment, varInteger), "Integer 45357"},
      {VarAsType(1.5, varSingle), "Single 1.5"},
      {VarAsType(true, varInteger), "Integer -1"},
      {VarAsType(u"true", varBoolean), "Boolean True"},
      {VarAsType(1.23456, varCurrency), "Currency 1.2346"},
      {VarAsType(5, varCurrency), "Currency 5"},
      {VarAsType(5, varNull), "Null"},
      {VarAsType(5, varEmpty), "Empty"},
      {VarAsType(Null(), varNull), "Null"},
      {VarAsType(7, varVariant), "Integer 7"},
      {VarAsType(VarArrayOf({u"1", 2.6}), varArray | varInteger),
       "Array Integer [Integer 1, Integer 3]"},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(Describe(Case.Result), Case.Expected);
}

TEST(VariantConversion, ByteStringsStandInTheDefaultCodePage) {
  const Variant Text = VarAsType(Variant(RawByteString("caf\xE9 \x80")), varUString);
  EXPECT_EQ(Text.AsString(), u"caf\u00e9 \u20ac") << "windows-1252, the default";
  EXPECT_EQ(VarAsType(Text, varString), Variant(RawByteString("caf\xE9 \x80")));
  EXPECT_EQ(VarAsType(u"\u0416"
                      u"1",
                      varString)
                .AsString(),
            u"?1");
}

TEST(VariantConversion, DecimalCommaSettings) {
  const test::TFormatSettingsScope Comma(u',');
  EXPECT_EQ(Variant(u"1,5").AsDouble(), 1.5);
  EXPECT_EQ(Variant(1.5).AsString(), u"1,5");
  EXPECT_EQ(Variant(u"2,5").AsInteger(), 2);
  EXPECT_EQ(Describe(Variant(u"1,5") + Variant(1)), "Double 2,5");
  EXPECT_TRUE(Variant(u"1,5") < Variant(2));
  EXPECT_TRUE(Variant(u"0,0").AsBoolean() == false);
  ExpectRaises<EVariantTypeCastError>(
      [] { (void)Variant(u"1.5").AsDouble(); },
      u"Could not convert variant of type (UnicodeString) into type (Double)");
}

TEST(VariantConversion, InterfacesAreCounted) {
  TCountedThing Thing;
  {
    Variant Held = static_cast<IInterface*>(&Thing);
    EXPECT_EQ(Thing.Refs, 1);
    Variant Copy = Held;
    EXPECT_EQ(Thing.Refs, 2);
    EXPECT_EQ(Copy.AsInterface().Get(), &Thing);
    EXPECT_EQ(Thing.Refs, 2);
    Copy = 5;
    EXPECT_EQ(Thing.Refs, 1);
    Variant Moved = std::move(Held);
    EXPECT_EQ(Thing.Refs, 1);
    EXPECT_TRUE(VarIsEmpty(Held));
    EXPECT_EQ(VarAsType(Moved, varUnknown).AsInterface().Get(), &Thing);
    const IPtr<IInterface> Counted(&Thing);
    EXPECT_EQ(Variant(Counted), Moved);
  }
  EXPECT_EQ(Thing.Refs, 0);
  EXPECT_EQ(Variant().AsInterface(), nullptr);
  EXPECT_EQ(VarType(VarAsType(Variant(), varUnknown)), varUnknown);
}

TEST(VariantConversion, TextIsSharedButNeverChangedThroughACopy) {
  Variant Original = u"first";
  Variant Copy = Original;
  Copy += Variant(u"!");
  EXPECT_EQ(Original.AsString(), u"first");
  EXPECT_EQ(Copy.AsString(), u"first!");
  Copy = Copy;
  EXPECT_EQ(Copy.AsString(), u"first!");
  Original = Copy;
  Copy = 1;
  EXPECT_EQ(Original.AsString(), u"first!");
}

// --- comparison ----------------------------------------------------------------------------------
TEST(VariantComparison, AcrossKinds) {
  const double NaN = std::nan("");
  const struct {
    Variant A, B;
    TVariantRelationship Expected;
  } Cases[] = {
      {Null(), Null(), vrEqual},
      {Null(), Variant(0), vrLessThan},
      {Variant(-1e300), Null(), vrGreaterThan},
      {Null(), Variant(u""), vrLessThan},
      {Null(), Variant(), vrLessThan},
      {Variant(), Variant(), vrEqual},
      {Variant(), Variant(0), vrEqual},
      {Variant(), Variant(u""), vrEqual},
      {Variant(), Variant(u"a"), vrLessThan},
      {Variant(u"a"), Variant(u"B"), vrGreaterThan},
      {Variant(u"abc"), Variant(u"abd"), vrLessThan},
      {Variant(u"ab"), Variant(u"abc"), vrLessThan},
      {Variant(u"a"), Variant(u"a"), vrEqual},
      {Variant(u"\u00e9"), Variant(u"z"), vrGreaterThan},
      {Variant(u"\U0001F600"), Variant(u"\uFFFD"), vrLessThan},
      {Variant(RawByteString("b")), Variant(u"a"), vrGreaterThan},
      {Variant(u"10"), Variant(u"9"), vrLessThan},
      {Variant(u"10"), Variant(9), vrGreaterThan},
      {Variant(9), Variant(u"10"), vrLessThan},
      {Variant(u"1.5"), Variant(1), vrGreaterThan},
      {Variant(u"9007199254740993"), Variant(Int64{9007199254740993}), vrEqual},
      {Variant(Int64{9007199254740992}), Variant(u"9007199254740993"), vrLessThan},
      {Variant(2), Variant(2.0), vrEqual},
      {Variant(std::numeric_limits<UInt64>::max()), Variant(Int64{-1}), vrGreaterThan},
      {Variant(true), Variant(false), vrGreaterThan},
      {Variant(true), Variant(u"true"), vrEqual},
      {Variant(u"0"), Variant(false), vrEqual},
      {Variant(true), Variant(-1), vrEqual},
      {Variant(true), Variant(1), vrLessThan},
      {Variant(SomeMoment), Variant(u"2024-03-05 14:07:09"), vrEqual},
      {Variant(u"2024-03-06"), Variant(SomeMoment), vrGreaterThan},
      {Variant(SomeMoment), Variant(45356), vrGreaterThan},
      {VarAsType(1.5, varCurrency), Variant(1.5), vrEqual},
      {Variant(NaN), Variant(NaN), vrNotEqual},
      {Variant(NaN), Variant(1), vrNotEqual},
  };
  for (const auto& Case : Cases)
    EXPECT_EQ(VarCompareValue(Case.A, Case.B), Case.Expected)
        << Describe(Case.A) << " vs " << Describe(Case.B);
}

TEST(VariantComparison, OperatorsFollowTheRelationship) {
  EXPECT_TRUE(Variant(1) < Variant(2));
  EXPECT_TRUE(Variant(1) <= Variant(1));
  EXPECT_TRUE(Variant(u"b") > Variant(u"a"));
  EXPECT_TRUE(Variant(u"b") >= Variant(u"b"));
  EXPECT_TRUE(Variant(u"b") != Variant(u"B"));
  EXPECT_TRUE(Null() == Null());
  EXPECT_TRUE(Null() < Variant(u""));
  const Variant NaN = std::nan("");
  EXPECT_FALSE(NaN == NaN);
  EXPECT_TRUE(NaN != NaN);
  EXPECT_FALSE(NaN < Variant(1));
  EXPECT_FALSE(NaN <= Variant(1));
  EXPECT_FALSE(NaN > Variant(1));
  EXPECT_FALSE(NaN >= Variant(1));
  TCountedThing One, Two;
  const Variant First = static_cast<IInterface*>(&One);
  EXPECT_TRUE(First == Variant(static_cast<IInterface*>(&One)));
  EXPECT_EQ(VarCompareValue(First, Variant(static_cast<IInterface*>(&Two))), vrNotEqual);
}

TEST(VariantComparison, ValuesThatCannotBeComparedRaise) {
  TCountedThing Thing;
  const Variant Intf = static_cast<IInterface*>(&Thing);
  ExpectRaises<EVariantTypeCastError>(
      [] { (void)(Variant(u"abc") == Variant(1)); },
      u"Could not convert variant of type (UnicodeString) into type (Double)");
  ExpectRaises<EVariantTypeCastError>(
      [] { (void)(Variant(2.5) < Variant(u"")); },
      u"Could not convert variant of type (UnicodeString) into type (Double)");
  ExpectRaises<EVariantTypeCastError>(
      [] { (void)(Variant(u"maybe") == Variant(true)); },
      u"Could not convert variant of type (UnicodeString) into type (Boolean)");
  ExpectRaises<EVariantTypeCastError>(
      [] { (void)(Variant(SomeMoment) == Variant(u"later")); },
      u"Could not convert variant of type (UnicodeString) into type (Date)");
  ExpectRaises<EVariantInvalidOpError>([] { (void)(VarArrayOf({1}) == Variant(1)); },
                                       u"Invalid variant operation");
  ExpectRaises<EVariantInvalidOpError>([] { (void)(VarArrayOf({1}) < VarArrayOf({1})); },
                                       u"Invalid variant operation");
  ExpectRaises<EVariantInvalidOpError>([&] { (void)(Intf == Variant(1)); },
                                       u"Invalid variant operation");
  EXPECT_TRUE(Null() < VarArrayOf({1}));
}

// --- arrays --------------------------------------------------------------------------------------
TEST(VariantArray, BoundsAndElementConversion) {
  Variant Numbers = VarArrayCreate({1, 3}, varInteger);
  EXPECT_EQ(VarType(Numbers), varArray | varInteger);
  EXPECT_EQ(VarArrayDimCount(Numbers), 1);
  EXPECT_EQ(VarArrayLowBound(Numbers, 1), 1);
  EXPECT_EQ(VarArrayHighBound(Numbers, 1), 3);
  VarArrayPut(Numbers, u"7", 1);
  VarArrayPut(Numbers, 2.5, 3);
  EXPECT_EQ(Describe(Numbers), "Array Integer [Integer 7, Integer 0, Integer 2]");

  const Variant Mixed = VarArrayOf({1, u"a", Null(), 1.5});
  EXPECT_EQ(Describe(Mixed), "Array Variant [Integer 1, UnicodeString a, Null, Double 1.5]");
  EXPECT_EQ(Describe(VarArrayCreate({0, 1}, varOleStr)), "Array OleStr [OleStr , OleStr ]");
  EXPECT_EQ(Describe(VarArrayCreate({-2, -2}, varVariant)), "Array Variant [Empty]");
  const Variant Empty = VarArrayCreate({5, 4}, varByte);
  EXPECT_EQ(VarArrayLowBound(Empty, 1), 5);
  EXPECT_EQ(VarArrayHighBound(Empty, 1), 4);
  EXPECT_EQ(VarArrayDimCount(Variant(5)), 0);

  std::vector<Variant> Items{Variant(u"x"), Variant(2)};
  EXPECT_EQ(Describe(VarArrayOf(Items)), "Array Variant [UnicodeString x, Integer 2]");
}

TEST(VariantArray, Failures) {
  Variant Numbers = VarArrayCreate({1, 3}, varInteger);
  const struct {
    std::function<void()> Action;
    const char* Class;
    const char16_t* Message;
  } Cases[] = {
      {[&] { (void)VarArrayGet(Numbers, 0); }, "Index",
       u"Variant or safe array index out of bounds"},
      {[&] { (void)VarArrayGet(Numbers, 4); }, "Index",
       u"Variant or safe array index out of bounds"},
      {[&] { VarArrayPut(Numbers, 1, std::numeric_limits<Integer>::min()); }, "Index",
       u"Variant or safe array index out of bounds"},
      {[&] { (void)VarArrayLowBound(Numbers, 2); }, "Index",
       u"Variant or safe array index out of bounds"},
      {[&] { VarArrayPut(Numbers, u"x", 1); }, "Cast",
       u"Could not convert variant of type (UnicodeString) into type (Integer)"},
      {[&] { VarArrayPut(Numbers, Null(), 1); }, "Cast",
       u"Could not convert variant of type (Null) into type (Integer)"},
      {[] { (void)VarArrayHighBound(Variant(5), 1); }, "NotArray", u"Variant is not an array"},
      {[] { (void)VarArrayGet(Variant(u"abc"), 1); }, "NotArray", u"Variant is not an array"},
      {[] {
         (void)VarArrayCreate({0, -2}, varInteger);
       },
       "Create", u"Error creating variant or safe array"},
      {[] { (void)VarArrayCreate({0}, varInteger); }, "Create",
       u"Error creating variant or safe array"},
      {[] {
         (void)VarArrayCreate({0, 1, 0, 1}, varInteger);
       },
       "Create", u"Error creating variant or safe array"},
      {[] {
         (void)VarArrayCreate({0, std::numeric_limits<Integer>::max()}, varByte);
       },
       "Create", u"Error creating variant or safe array"},
      {[&] { VarArrayRedim(Numbers, -1); }, "Create", u"Error creating variant or safe array"},
      {[] {
         (void)VarArrayCreate({0, 1}, varUString);
       },
       "BadType", u"Invalid variant type"},
      {[] {
         (void)VarArrayCreate({0, 1}, varEmpty);
       },
       "BadType", u"Invalid variant type"},
      {[] { (void)VarAsType(5, varArray | varInteger); }, "Cast",
       u"Could not convert variant of type (Integer) into type (Array Integer)"},
  };
  for (const auto& Case : Cases) {
    const std::string Class = Case.Class;
    if (Class == "Index")
      ExpectRaises<EVariantBadIndexError>(Case.Action, Case.Message);
    else if (Class == "Cast")
      ExpectRaises<EVariantTypeCastError>(Case.Action, Case.Message);
    else if (Class == "NotArray")
      ExpectRaises<EVariantNotAnArrayError>(Case.Action, Case.Message);
    else if (Class == "Create")
      ExpectRaises<EVariantArrayCreateError>(Case.Action, Case.Message);
    else
      ExpectRaises<EVariantBadVarTypeError>(Case.Action, Case.Message);
  }
  // A failed put leaves the element as it was.
  EXPECT_EQ(Describe(VarArrayGet(Numbers, 1)), "Integer 0");
}

TEST(VariantArray, RedimKeepsElementsAndZeroesNewOnes) {
  Variant Flags = VarArrayCreate({0, 1}, varBoolean);
  VarArrayPut(Flags, true, 1);
  VarArrayRedim(Flags, 3);
  EXPECT_EQ(Describe(Flags),
            "Array Boolean [Boolean False, Boolean True, Boolean False, Boolean False]");
  VarArrayRedim(Flags, 0);
  EXPECT_EQ(Describe(Flags), "Array Boolean [Boolean False]");
  VarArrayRedim(Flags, -1);
  EXPECT_EQ(VarArrayHighBound(Flags, 1), -1);
}

TEST(VariantArray, CopiesAreIndependent) {
  Variant Original = VarArrayOf({1, VarArrayOf({u"inner"})});
  Variant Copy = Original;
  VarArrayPut(Copy, u"changed", 0);
  Variant Inner = VarArrayGet(Copy, 1);
  VarArrayPut(Inner, 2, 0);
  EXPECT_EQ(Describe(Original), "Array Variant [Integer 1, Array Variant [UnicodeString inner]]");
  EXPECT_EQ(Describe(Copy),
            "Array Variant [UnicodeString changed, Array Variant [UnicodeString inner]]");
  // An array may hold a copy of itself.
  VarArrayPut(Original, Original, 0);
  EXPECT_EQ(Describe(VarArrayGet(VarArrayGet(Original, 0), 0)), "Integer 1");
}

} // namespace
} // namespace lorvane
