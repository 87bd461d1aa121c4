// The JSON serializer's shape, character for character: the worked person, the root without its
// braces, root arrays, and the edge cases of the walk.
#include "serializer/SerializerPersonModel.h"
#include "serializer/SerializerTestSupport.h"
#include "support/TestHelpers.h"

#include "lorvane/uLxJSONSerializer.h"
#include "lorvane/xmlutils/LxXMLValues.h"

#include <gtest/gtest.h>

using namespace lorvane;
using namespace lorvane::test;

namespace {

std::string JsonOf(const TValue& AValue, TOptions AOptions = {}) {
  TOwned<TLxSerializer> Serializer(LxCreateSerializer(ldsJSON, AValue));
  for (const auto& [Name, Value] : AOptions)
    Serializer->SetParam(Name, Value);
  return Serializer->Serialize();
}

/// The person of the worked example, with a friend that has only its Id.
TOwned<TPerson> WorkedPerson() {
  DescribePerson();
  TOwned<TPerson> Person(New<TPerson>());
  Person->Id = 7;
  Person->Name = u"A&B";
  Person->Born = TDate(EncodeDate(2001, 2, 3));
  Person->Kind = TPersonKind::pkC;
  Person->Flags = {TFlag::fA, TFlag::fC};
  Person->Friend = New<TPerson>();
  Person->Friend->Id = 8;
  Person->Pos = {1, 2};
  Person->Scores = {3, 4};
  return Person;
}

// The friend: every member at its zero value, an empty text "" and nil objects {}.
constexpr std::string_view cFriendMembers =
    "\"id\":8,\"name\":\"\",\"born\":\"1899-12-30\","
    "\"kind\":{\"className\":\"TPersonKind\",\"asString\":\"pkA\",\"asInt\":0},"
    "\"flags\":{\"className\":\"TFlags\",\"asString\":\"[]\",\"asInt\":0},"
    "\"friend\":{},\"boss\":{},\"pos\":{\"className\":\"TPos\",\"x\":0,\"y\":0},\"scores\":[]";

TEST(JSONSerializerShape, WorkedPersonCharacterForCharacter) {
  TOwned<TPerson> Person = WorkedPerson();
  const std::string Expected =
      "{\"className\":\"Person\",\"id\":7,\"name\":\"A&B\",\"born\":\"2001-02-03\","
      "\"kind\":{\"className\":\"TPersonKind\",\"asString\":\"pkC\",\"asInt\":2},"
      "\"flags\":{\"className\":\"TFlags\",\"asString\":\"[fA,fC]\",\"asInt\":5},"
      "\"friend\":{\"className\":\"Person\"," +
      std::string(cFriendMembers) +
      "},\"boss\":{},\"pos\":{\"className\":\"TPos\",\"x\":1,\"y\":2},\"scores\":[3,4]}";
  EXPECT_EQ(JsonOf(TValue::From(Person.get())), Expected);
  EXPECT_EQ(std::string(LxAsJSON(Person.get())), Expected);
  EXPECT_EQ(std::string(LxSerialize(ldsJSON, TValue::From(Person.get()))), Expected)
      << "JSON is format 0's default serializer";
  EXPECT_EQ(std::string(LxAsJSON(nullptr)), "null");
}

TEST(JSONSerializerShape, ExcludeRootLeavesTheMembersAlone) {
  TOwned<TPerson> Person = WorkedPerson();
  EXPECT_EQ(JsonOf(TValue::From(Person->Friend), {{u"excluderoot", u"true"}}),
            std::string(cFriendMembers));
  // Only "true" counts.
  EXPECT_EQ(JsonOf(TValue::From(Person->Friend), {{u"excluderoot", u"yes"}}),
            "{\"className\":\"Person\"," + std::string(cFriendMembers) + "}");
}

class TEmptyThing : public TPersistent {
  LX_CLASS(TEmptyThing, TPersistent)
  TEmptyThing() = default;

protected:
  ~TEmptyThing() override = default;
};

struct TEdges {
  std::vector<Variant> Numbers;
  std::vector<TPerson*> Nobody;
  std::vector<UnicodeString> Words;
  Variant Nothing;
  TDateTime Stamp;
  TLxUTCDateTime UtcStamp;
};

void DescribeEdges() {
  static const bool Described = [] {
    DescribePerson();
    LxDescribeClass<TEmptyThing>(u"Test.TEmptyThing");
    LxDescribeRecord<TEdges>(u"Test.TEdges")
        .Field(u"Numbers", &TEdges::Numbers)
        .Field(u"Nobody", &TEdges::Nobody)
        .Field(u"Words", &TEdges::Words)
        .Field(u"Nothing", &TEdges::Nothing)
        .Field(u"Stamp", &TEdges::Stamp)
        .Hint(shoTimezoneFormat, u"tzfUTC")
        .Field(u"UtcStamp", &TEdges::UtcStamp);
    return true;
  }();
  (void)Described;
}

TEST(JSONSerializerShape, EdgesOfTheWalk) {
  DescribeEdges();
  TEdges Edges;
  Edges.Numbers = {Variant(1), Variant(2.5), Variant(Int64(-3))};
  Edges.Nobody = {nullptr, nullptr, nullptr};
  Edges.Words = {u"", u"a\"b"};
  Edges.Stamp = EncodeDateTime(2020, 1, 2, 3, 4, 5, 0);
  Edges.UtcStamp.Value = EncodeDateTime(2020, 1, 2, 3, 4, 5, 0);
  // The zone hint of a member reaches its date (here: the UTC form, whatever the local zone).
  EXPECT_EQ(JsonOf(TValue::From(Edges)),
            "{\"className\":\"TEdges\",\"numbers\":[1,2.5,-3],\"nobody\":[{},{},{}],"
            "\"words\":[\"\",\"a\\\"b\"],\"nothing\":null,\"stamp\":\"" +
                StringToUTF8(LxDateTimeToXML(Edges.Stamp, tzfUTC)) +
                "\",\"utcStamp\":\"2020-01-02T03:04:05.000Z\"}");

  TOwned<TEmptyThing> Empty(New<TEmptyThing>());
  EXPECT_EQ(JsonOf(TValue::From(Empty.get())), "{\"className\":\"TEmptyThing\"}");
  EXPECT_EQ(JsonOf(TValue::From(Empty.get()), {{u"excluderoot", u"true"}}), "");
}

TEST(JSONSerializerShape, RootArrays) {
  TOwned<TPerson> Person = WorkedPerson();
  EXPECT_EQ(JsonOf(TValue::From(std::vector<Integer>{5, -6, 7})), "[5,-6,7]");
  EXPECT_EQ(JsonOf(TValue::From(std::vector<Integer>{})), "[]");
  EXPECT_EQ(JsonOf(TValue::From(std::vector<UnicodeString>{u"x", u"\u20ac"})),
            "[\"x\",\"\\u20AC\"]");
  // Objects as elements: a comma before all but the first, nil as {}.
  EXPECT_EQ(JsonOf(TValue::From(std::vector<TPerson*>{nullptr, Person->Friend, nullptr})),
            "[{},{\"className\":\"Person\"," + std::string(cFriendMembers) + "},{}]");
  EXPECT_EQ(JsonOf(TValue::From(std::vector<TPerson*>{Person->Friend, Person->Friend})),
            "[{\"className\":\"Person\"," + std::string(cFriendMembers) +
                "},{\"className\":\"Person\"," + std::string(cFriendMembers) + "}]");
}

} // namespace
