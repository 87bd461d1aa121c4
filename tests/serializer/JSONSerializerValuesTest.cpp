// The text of each simple kind in JSON, and what the format class refuses, with its message.
#include "serializer/SerializerTestSupport.h"
#include "support/TestHelpers.h"

#include "lorvane/uLxJSONSerializer.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

using namespace lorvane;
using namespace lorvane::test;

namespace {

enum class TShade { shLight, shDark, shDeep };
using TShades = TSet<TShade>;

void DescribeShades() {
  static const bool Described = [] {
    LxDescribeEnum<TShade>(u"Test.TShade", {u"shLight", u"shDark", u"shDeep"})
        .Hint(shoEnumPrefix, u"sh");
    LxDescribeSet<TShades>(u"Test.TShades");
    return true;
  }();
  (void)Described;
}

std::string JsonText(const TValue& AValue) { return LxSerialize(ldsJSON, AValue); }

TEST(JSONSerializerValues, EveryKindsText) {
  DescribeShades();
  struct TRow {
    TValue Value;
    std::string Expected;
  };
  const TRow Rows[] = {
      {TValue::From(Byte(255)), "255"},
      {TValue::From(ShortInt(-128)), "-128"},
      {TValue::From(Word(65535)), "65535"},
      {TValue::From(SmallInt(-32768)), "-32768"},
      {TValue::From(LongWord(4294967295u)), "4294967295"},
      {TValue::From(Integer(-2147483647 - 1)), "-2147483648"},
      {TValue::From(std::numeric_limits<Int64>::min()), "-9223372036854775808"},
      // Through the signed conversion, as XML writes it: the reader gives the same 64 bits back.
      {TValue::From(std::numeric_limits<UInt64>::max()), "-1"},
      {TValue::From(Double(1.5)), "1.5"},
      {TValue::From(Double(-0.25)), "-0.25"},
      {TValue::From(Single(2)), "2"},
      {TValue::From(true), "true"},
      {TValue::From(false), "false"},
      // Text: quote, backslash and slash escaped, control characters by name, beyond U+00FF
      // as \u with upper-case digits.
      {TValue::From(UnicodeString(u"a\"b\\c/d\r\n\t")), "\"a\\\"b\\\\c\\/d\\r\\n\\t\""},
      {TValue::From(UnicodeString(u"\u00e9\u20ac")), "\"\u00e9\\u20AC\""},
      {TValue::From(UnicodeString()), "\"\""},
      {TValue::From(std::string("x\"y")), "\"x\\\"y\""},
      {TValue::From(WideChar(u'q')), "\"q\""},
      {TValue::From(TDate(EncodeDate(2001, 2, 3))), "\"2001-02-03\""},
      {TValue::From(TTime(EncodeTime(4, 5, 6, 0))), "\"04:05:06.000\""},
      {TValue::From(TDateTime(EncodeDateTime(2001, 2, 3, 4, 5, 6, 0))),
       "\"2001-02-03T04:05:06.000\""},
      {TValue::From(TLxUTCDate{EncodeDate(2001, 2, 3)}), "\"2001-02-03Z\""},
      {TValue::From(TLxUTCDateTime{EncodeDateTime(2001, 2, 3, 4, 5, 6, 0)}),
       "\"2001-02-03T04:05:06.000Z\""},
      // Enumerations and sets are objects; the prefix hint of the type is cut from the name.
      {TValue::From(TShade::shDeep),
       "{\"className\":\"TShade\",\"asString\":\"Deep\",\"asInt\":2}"},
      {TValue::From(TShades{TShade::shLight, TShade::shDeep}),
       "{\"className\":\"TShades\",\"asString\":\"[Light,Deep]\",\"asInt\":5}"},
      {TValue::From(TShades{}), "{\"className\":\"TShades\",\"asString\":\"[]\",\"asInt\":0}"},
      // A Variant goes out as what it holds.
      {TValue::From(Variant(42)), "42"},
      {TValue::From(Variant(u"v\"")), "\"v\\\"\""},
      {TValue::From(Variant(true)), "true"},
      {TValue::From(Variant(2.5)), "2.5"},
      {TValue::From(Null()), "null"},
      {TValue::From(Variant()), "null"},
  };
  for (const TRow& Row : Rows)
    EXPECT_EQ(JsonText(Row.Value), Row.Expected) << Row.Expected;
}

// --- values that a helper hands to the format class directly -------------------------------------
std::function<void(TLxSerializer*)> gJSONProbe;

class TJSONProbeHelper : public TLxSerializerHelper {
  LX_CLASS(TJSONProbeHelper, TLxSerializerHelper)
  TJSONProbeHelper() = default;
  void Serialize(TLxSerializer* ASerializer, std::u16string_view, const TLxTypeInfo*, const TValue&,
                 bool& Handled) override {
    gJSONProbe(ASerializer);
    Handled = true;
  }

protected:
  ~TJSONProbeHelper() override = default;
};

class TJSONProbe : public TPersistent {
  LX_CLASS(TJSONProbe, TPersistent)
  TJSONProbe() = default;

protected:
  ~TJSONProbe() override = default;
};

/// The text of a probe object whose members AProbe writes through the format class.
std::string Probed(std::function<void(TLxSerializer*)> AProbe) {
  static const bool Registered = [] {
    LxDescribeClass<TJSONProbe>(u"Test.TJSONProbe");
    LxRegisterSerializerHelper(TJSONProbe::StaticClass(), TJSONProbeHelper::StaticClass(), nullptr);
    return true;
  }();
  (void)Registered;
  gJSONProbe = std::move(AProbe);
  TOwned<TJSONProbe> Probe(New<TJSONProbe>());
  return JsonText(TValue::From(Probe.get()));
}

void Member(TLxSerializer* ASerializer, std::u16string_view AName, const TLxTypeInfo* AType,
            const TValue& AValue) {
  ASerializer->SerializeName(AName, smtField, ltkClass, AType->GetTypeKind());
  ASerializer->SerializeValue(AName, AType, AValue, -1, nullptr);
}

TEST(JSONSerializerValues, ValuesHandedToTheFormatClass) {
  DescribeShades();
  EXPECT_EQ(Probed([](TLxSerializer* ASerializer) {
              // Missing values of the simple kinds are null; empty enumerations and sets are
              // their zero value.
              Member(ASerializer, u"I", TLxTypes::GetTypeInfo<Integer>(), TValue());
              Member(ASerializer, u"S", TLxTypes::GetTypeInfo<UnicodeString>(), TValue());
              Member(ASerializer, u"B", TLxTypes::GetTypeInfo<bool>(), TValue());
              Member(ASerializer, u"D", TLxTypes::GetTypeInfo<TDate>(), TValue());
              Member(ASerializer, u"E", TLxTypes::GetTypeInfo<TShade>(), TValue());
              Member(ASerializer, u"F", TLxTypes::GetTypeInfo<TShades>(), TValue());
              Member(ASerializer, u"A", TLxTypes::GetTypeInfo<std::vector<Integer>>(), TValue());
              Member(ASerializer, u"O", TLxTypes::GetTypeInfo<TJSONProbe*>(), TValue());
              // An enumeration from a whole number; a date that arrives as text.
              Member(ASerializer, u"N", TLxTypes::GetTypeInfo<TShade>(), TValue::From(Integer(1)));
              Member(ASerializer, u"T", TLxTypes::GetTypeInfo<TLxUTCDate>(),
                     TValue::From(UnicodeString(u"some\"day")));
              // An object member that holds a number or a text: a component reference.
              Member(ASerializer, u"R", TLxTypes::GetTypeInfo<TJSONProbe*>(),
                     TValue::From(Integer(12)));
              Member(ASerializer, u"C", TLxTypes::GetTypeInfo<TJSONProbe*>(),
                     TValue::From(UnicodeString(u"Button\"1")));
              // Array elements: a comma before all but the first.
              for (Integer Index = 0; Index < 3; ++Index)
                ASerializer->SerializeValue(u"int", TLxTypes::GetTypeInfo<Integer>(),
                                            TValue::From(Index * 10), Index, nullptr);
            }),
            "{\"className\":\"TJSONProbe\",\"i\":null,\"s\":null,\"b\":null,\"d\":null,"
            "\"e\":{\"className\":\"TShade\",\"asString\":\"Light\",\"asInt\":0},"
            "\"f\":{\"className\":\"TShades\",\"asString\":\"[]\",\"asInt\":0},"
            "\"a\":[],\"o\":{},"
            "\"n\":{\"className\":\"TShade\",\"asString\":\"Dark\",\"asInt\":1},"
            "\"t\":\"some\\\"day\",\"r\":12,\"c\":\"Button\\\"1\"0,10,20}");
}

TEST(JSONSerializerValues, WhatTheFormatClassRefuses) {
  DescribeShades();
  struct TRow {
    std::function<void(TLxSerializer*)> Probe;
    bool Assertion;
    std::u16string_view Message;
  };
  const TRow Rows[] = {
      {[](TLxSerializer* ASerializer) {
         Integer Number = 1;
         ASerializer->SerializeChild(u"N", u"", &Number, TLxTypes::GetTypeInfo<Integer>(), -1);
       },
       true, u"Basic types are only allowed on the Root level (For serialing basic values)"},
      {[](TLxSerializer* ASerializer) {
         TOwned<TLxSerializer> Child(
             ASerializer->CreateChildSerializer(nullptr, TLxTypes::GetTypeInfo<UnicodeString>()));
         Child->SerializeEndType(u"N", TLxTypes::GetTypeInfo<UnicodeString>(), -1);
       },
       true, u"Basic types are only allowed on the Root level (For serialing basic values)"},
      {[](TLxSerializer* ASerializer) {
         ASerializer->SerializeValue(u"A", TLxTypes::GetTypeInfo<std::vector<Integer>>(),
                                     TValue::From(std::vector<Integer>{1}), -1, nullptr);
       },
       false, u"JSON Arrays must be serialized by a ChildSerializer!"},
      {[](TLxSerializer* ASerializer) {
         ASerializer->SerializeValue(u"R", TLxTypes::GetTypeInfo<TJSONProbe*>(), TValue::From(2.5),
                                     -1, nullptr);
       },
       false, u"JSON Ojbects must be serialized by a ChildSerializer!"},
      {[](TLxSerializer* ASerializer) {
         ASerializer->SerializeValue(u"V", TLxTypes::GetTypeInfo<Variant>(),
                                     TValue::From(VarArrayOf({Variant(1), Variant(2)})), -1,
                                     nullptr);
       },
       false, u"Unsupported TypeKind detected!"},
  };
  TLiveCount Live;
  for (const TRow& Row : Rows) {
    if (Row.Assertion)
      ExpectRaises<EAssertionFailed>([&] { Probed(Row.Probe); }, Row.Message);
    else
      ExpectRaises<Exception>([&] { Probed(Row.Probe); }, Row.Message);
  }
  Live.ExpectMadeSince(0, "the serializers of a failed run are freed");
}

} // namespace
