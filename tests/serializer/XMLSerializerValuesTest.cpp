// The XML serializer's text of every value kind, its options, and its messages.
#include "serializer/SerializerTestSupport.h"
#include "support/TestHelpers.h"

#include "lorvane/xmlutils/LxXMLValues.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <functional>
#include <limits>

using namespace lorvane;
using namespace lorvane::test;

namespace {

enum class TTone { toLow, toHigh };
enum class TMood { Calm, Cross };
using TTones = TSet<TTone>;
using TMoods = TSet<TMood>;

void DescribeValueTypes() {
  static const bool Described = [] {
    LxDescribeEnum<TTone>(u"Test.TTone", {u"toLow", u"toHigh"}).Hint(shoEnumPrefix, u"to");
    LxDescribeEnum<TMood>(u"Test.TMood", {u"Calm", u"Cross"});
    LxDescribeSet<TTones>(u"Test.TTones");
    LxDescribeSet<TMoods>(u"Test.TMoods");
    return true;
  }();
  (void)Described;
}

const TDateTime cMoment(EncodeDate(2001, 2, 3).Value + EncodeTime(4, 5, 6, 7).Value);

TEST(XMLSerializerValues, TheRootOfASimpleValueIsItsBareText) {
  DescribeValueTypes();
  const std::pair<TValue, std::string> Rows[] = {
      {TValue::From(Byte(255)), "255"},
      {TValue::From(ShortInt(-128)), "-128"},
      {TValue::From(Word(65535)), "65535"},
      {TValue::From(SmallInt(-32768)), "-32768"},
      {TValue::From(LongWord(4294967295u)), "4294967295"},
      {TValue::From(std::numeric_limits<Integer>::min()), "-2147483648"},
      {TValue::From(std::numeric_limits<Int64>::min()), "-9223372036854775808"},
      {TValue::From(UInt64(1) << 40), "1099511627776"},
      {TValue::From(1.5), "1.5"},
      {TValue::From(-2.5e-7), "-2.5E-7"},
      {TValue::From(Single(0.25f)), "0.25"},
      {TValue::From(true), "true"},
      {TValue::From(false), "false"},
      {TValue::From(UnicodeString(u"a<b>&\"c'\u00e9\u20ac\U0001F600")),
       "a&lt;b&gt;&amp;&quot;c&apos;\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"},
      {TValue::From(UnicodeString()), ""},
      {TValue::From(WideChar(u'<')), "&lt;"},
      {TValue::From(AnsiChar('q')), "q"},
      {TValue::From(std::string("\xc3\xbc&")), "\xc3\xbc&amp;"},
      {TValue::From(TTone::toHigh), "High"},
      {TValue::From(TMood::Cross), "Cross"},
      {TValue::From(TTones{TTone::toLow, TTone::toHigh}), "[Low,High]"},
      {TValue::From(TTones{}), "[]"},
      {TValue::From(TMoods{TMood::Cross}), "[Cross]"},
      {TValue::From(TMoods{}), "[]"},
      {TValue::From(TDate(EncodeDate(2001, 2, 3))), "2001-02-03"},
      {TValue::From(TTime(EncodeTime(4, 5, 6, 7))), "04:05:06.007"},
      {TValue::From(cMoment), "2001-02-03T04:05:06.007"},
      {TValue::From(TLxUTCDate(EncodeDate(2001, 2, 3))), "2001-02-03Z"},
      {TValue::From(TLxUTCTime(EncodeTime(4, 5, 6, 7))), "04:05:06.007Z"},
      {TValue::From(TLxUTCDateTime(cMoment)), "2001-02-03T04:05:06.007Z"},
      {TValue::From(Variant(12)), "12"},
      {TValue::From(Variant(u"<v>")), "&lt;v&gt;"},
      {TValue::From(Variant()), ""},
  };
  for (const auto& [Value, Text] : Rows) {
    EXPECT_EQ(XmlOf(Value), Text) << StringToUTF8(Value.ToString());
    EXPECT_EQ(XmlOf(Value, {{u"excludenamespaces", u"true"}}), Text);
  }
}

struct TXmlKinds {
  Byte B = 1;
  Int64 L = -2;
  Double D = 0.5;
  bool Flag = true;
  UnicodeString Empty;
  UnicodeString Text = u"x&y";
  TTone Tone = TTone::toHigh;
  TMoods Moods{TMood::Calm, TMood::Cross};
  TDateTime Stamp = cMoment;
  TDateTime Zoned = cMoment;
  std::vector<TDateTime> Stamps{cMoment};
  TLxUTCDate UtcDay = TLxUTCDate(EncodeDate(2001, 2, 3));
  TClass Kind = nullptr;
  Variant VInt = 5;
  Variant VText = u"t";
  Variant VBool = false;
  Variant VFloat = 2.5;
  Variant VDate = Variant(cMoment);
  Variant VNull = Null();
  Variant VEmpty;
};

void DescribeXmlKinds() {
  static const bool Described = [] {
    DescribeValueTypes();
    using K = TXmlKinds;
    LxDescribeRecord<K>(u"Test.TXmlKinds")
        .Field(u"B", &K::B)
        .Field(u"L", &K::L)
        .Field(u"D", &K::D)
        .Field(u"Flag", &K::Flag)
        .Field(u"Empty", &K::Empty)
        .Field(u"Text", &K::Text)
        .Field(u"Tone", &K::Tone)
        .Field(u"Moods", &K::Moods)
        .Field(u"Stamp", &K::Stamp)
        .Field(u"Zoned", &K::Zoned)
        .Hint(shoTimezoneFormat, u"tzfTimezone")
        .Field(u"Stamps", &K::Stamps)
        .Hint(shoTimezoneFormat, u"tzfTimezone")
        .Field(u"UtcDay", &K::UtcDay)
        .Field(u"Kind", &K::Kind)
        .Field(u"VInt", &K::VInt)
        .Field(u"VText", &K::VText)
        .Field(u"VBool", &K::VBool)
        .Field(u"VFloat", &K::VFloat)
        .Field(u"VDate", &K::VDate)
        .Field(u"VNull", &K::VNull)
        .Field(u"VEmpty", &K::VEmpty);
    return true;
  }();
  (void)Described;
}

/// Pins the local zone for the zoned date forms.
class TZonePin {
public:
  explicit TZonePin(const char* AZone) {
    if (const char* Old = std::getenv("TZ"))
      FOld = Old;
    setenv("TZ", AZone, 1);
    tzset();
  }
  ~TZonePin() {
    if (FOld.empty())
      unsetenv("TZ");
    else
      setenv("TZ", FOld.c_str(), 1);
    tzset();
  }

private:
  std::string FOld;
};

TEST(XMLSerializerValues, MembersCarryTheirTypeAndOrdinal) {
  DescribeXmlKinds();
  TZonePin Zone("CET-1");
  TXmlKinds Kinds;
  Kinds.Kind = TObject::StaticClass();
  EXPECT_EQ(XmlOf(TValue::From(Kinds), {{u"xmlns", u"urn:k"}}),
            "<record xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
            "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xsi:type=\"xsd:TXmlKinds\" "
            "xmlns=\"urn:k\">"
            "<B xsi:type=\"xsd:unsignedByte\">1</B>"
            "<L xsi:type=\"xsd:long\">-2</L>"
            "<D xsi:type=\"xsd:double\">0.5</D>"
            "<Flag xsi:type=\"xsd:boolean\">true</Flag>"
            "<Empty xsi:type=\"xsd:string\"></Empty>"
            "<Text xsi:type=\"xsd:string\">x&amp;y</Text>"
            "<Tone xsi:type=\"xsd:TTone\" value=\"1\">High</Tone>"
            "<Moods xsi:type=\"xsd:TMoods\" value=\"3\">[Calm,Cross]</Moods>"
            "<Stamp xsi:type=\"xsd:dateTime\">2001-02-03T04:05:06.007</Stamp>"
            "<Zoned xsi:type=\"xsd:dateTime\">2001-02-03T04:05:06.007+01:00</Zoned>"
            "<Stamps xsi:type=\"xsd:ArrayOfDateTime\">"
            "<dateTime xsi:type=\"xsd:dateTime\">2001-02-03T04:05:06.007</dateTime></Stamps>"
            "<UtcDay xsi:type=\"xsd:date\">2001-02-03Z</UtcDay>"
            "<Kind xsi:type=\"xsd:string\">TObject</Kind>"
            "<VInt xsi:type=\"xsd:int\">5</VInt>"
            "<VText xsi:type=\"xsd:string\">t</VText>"
            "<VBool xsi:type=\"xsd:boolean\">false</VBool>"
            "<VFloat xsi:type=\"xsd:double\">2.5</VFloat>"
            "<VDate xsi:type=\"xsd:dateTime\">2001-02-03T04:05:06.007</VDate>"
            "<VNull xsi:type=\"xsd:anyType\" xsi:nil=\"true\"/>"
            "<VEmpty xsi:type=\"xsd:anyType\" xsi:nil=\"true\"/>"
            "</record>");
  // A nil class reference is no null value: an empty element.
  Kinds.Kind = nullptr;
  const std::string Bare = BareXmlOf(TValue::From(Kinds));
  EXPECT_NE(Bare.find("<Kind></Kind><VInt>5</VInt>"), std::string::npos) << Bare;
  EXPECT_NE(Bare.find("<VNull/><VEmpty/></record>"), std::string::npos) << Bare;
}

TEST(XMLSerializerValues, OptionsChooseNamespacesAndPrefixes) {
  DescribeValueTypes();
  struct TPair {
    TTone Tone = TTone::toLow;
    Variant Nothing;
  };
  static const bool Described = [] {
    LxDescribeRecord<TPair>(u"Test.TXmlPair")
        .Field(u"Tone", &TPair::Tone)
        .Field(u"Nothing", &TPair::Nothing);
    return true;
  }();
  (void)Described;
  const TValue Pair = TValue::From(TPair{});
  EXPECT_EQ(XmlOf(Pair, {{u"xsi-prefix", u"i"},
                         {u"xsd-prefix", u"s"},
                         {u"xsi-namespace", u"urn:i"},
                         {u"xsd-namespace", u"urn:s"},
                         {u"xmlns", u"urn:d"}}),
            "<record xmlns:i=\"urn:i\" xmlns:s=\"urn:s\" i:type=\"s:TXmlPair\" xmlns=\"urn:d\">"
            "<Tone i:type=\"s:TTone\" value=\"0\">Low</Tone>"
            "<Nothing i:type=\"s:anyType\" i:nil=\"true\"/></record>");
  // An empty "xmlns" counts as unset and gets the program's default.
  const std::string Defaulted = XmlOf(Pair, {{u"xmlns", u""}});
  EXPECT_NE(Defaulted.find(" xmlns=\"urn:lorvane_serializer_tests\">"), std::string::npos)
      << Defaulted;
  // "excludenamespaces" takes the namespace options away, whatever was set.
  TOwned<TLxSerializer> Serializer(LxCreateSerializer(ldsXML, Pair));
  Serializer->SetParam(u"excludenamespaces", u"true");
  Serializer->SetParam(u"xsi-prefix", u"i");
  Serializer->SetParam(u"xmlns", u"urn:d");
  EXPECT_EQ(std::string(Serializer->Serialize()), "<record><Tone>Low</Tone><Nothing/></record>");
  EXPECT_FALSE(Serializer->HasParam(u"xsi-prefix"));
  EXPECT_FALSE(Serializer->HasParam(u"xmlns"));
  // Without it, the defaults are filled in before the run.
  TOwned<TLxSerializer> Filled(LxCreateSerializer(ldsXML, Pair));
  Filled->Serialize();
  EXPECT_EQ(Filled->GetParam(u"excludenamespaces"), u"false");
  EXPECT_EQ(Filled->GetParam(u"xsd-prefix"), u"xsd");
}

// --- values that a helper hands to the format class directly -------------------------------------
/// What the probe's helper does with the root serializer.
std::function<void(TLxSerializer*)> gProbe;

class TProbeHelper : public TLxSerializerHelper {
  LX_CLASS(TProbeHelper, TLxSerializerHelper)
  TProbeHelper() = default;
  void Serialize(TLxSerializer* ASerializer, std::u16string_view, const TLxTypeInfo*, const TValue&,
                 bool& Handled) override {
    gProbe(ASerializer);
    Handled = true;
  }

protected:
  ~TProbeHelper() override = default;
};

class TProbe : public TPersistent {
  LX_CLASS(TProbe, TPersistent)
  TProbe() = default;

protected:
  ~TProbe() override = default;
};

std::string Probed(std::function<void(TLxSerializer*)> AProbe) {
  static const bool Registered = [] {
    LxDescribeClass<TProbe>(u"Test.TProbe");
    LxRegisterSerializerHelper(TProbe::StaticClass(), TProbeHelper::StaticClass(), nullptr);
    return true;
  }();
  (void)Registered;
  gProbe = std::move(AProbe);
  TOwned<TProbe> Probe(New<TProbe>());
  return BareXmlOf(TValue::From(Probe.get()));
}

TEST(XMLSerializerValues, DatesThatArriveAsTextGoOutUnchanged) {
  DescribeValueTypes();
  EXPECT_EQ(Probed([](TLxSerializer* ASerializer) {
              ASerializer->SerializeValue(u"D", TLxTypes::GetTypeInfo<TLxUTCDate>(),
                                          TValue::From(UnicodeString(u"someday")), -1, nullptr);
              ASerializer->SerializeValue(u"E", TLxTypes::GetTypeInfo<TTone>(),
                                          TValue::From(Integer(1)), -1, nullptr);
              ASerializer->SerializeValue(u"F", TLxTypes::GetTypeInfo<TTone>(),
                                          TValue::From(Variant(u"toLow")), -1, nullptr);
            }),
            "<object><D>someday</D><E>High</E><F>Low</F></object>");
}

TEST(XMLSerializerValues, WhatTheFormatClassRefuses) {
  DescribeValueTypes();
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
         ASerializer->SerializeValue(u"A", TLxTypes::GetTypeInfo<std::vector<Integer>>(),
                                     TValue::From(std::vector<Integer>{1}), -1, nullptr);
       },
       false, u"XML Arrays must be serialized by a ChildSerializer!"},
      {[](TLxSerializer* ASerializer) {
         ASerializer->SerializeValue(u"R", TLxTypes::GetTypeInfo<TProbe*>(), TValue::From(2.5), -1,
                                     nullptr);
       },
       false, u"XML ComplexTypes must be serialized by a ChildSerializer!"},
  };
  TLiveCount Live;
  for (const TRow& Row : Rows) {
    if (Row.Assertion)
      ExpectRaises<EAssertionFailed>([&] { Probed(Row.Probe); }, Row.Message);
    else
      ExpectRaises<Exception>([&] { Probed(Row.Probe); }, Row.Message);
  }
  // A Variant that holds an array has no text of its own.
  struct TArrayHolder {
    Variant V;
  };
  static const bool Described = [] {
    LxDescribeRecord<TArrayHolder>(u"Test.TArrayHolder").Field(u"V", &TArrayHolder::V);
    return true;
  }();
  (void)Described;
  TArrayHolder Holder;
  Holder.V = VarArrayOf({Variant(1), Variant(2)});
  ExpectRaises<ELxSerializeException>(
      [&] { LxSerialize(ldsXML, TValue::From(Holder)); },
      u"Serialization failure at \"\"\r\nThe field \"V\" of type \"System.Variant\" cannot be "
      u"serialized!");
  Live.ExpectMadeSince(0, "the serializers of a failed run are freed");
}

} // namespace
