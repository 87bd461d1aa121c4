// Reading JSON into objects: the shape the JSON serializer writes, members in another order,
// unknown members, class names for nil members, enumerations and sets in every accepted form,
// arrays, form posts, the three ways of keeping created objects, and malformed text.
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxJSONDeserializer.h"
#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/types/LxDescribe.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace lorvane;
using lorvane::test::ExpectRaises;

namespace {

enum class TJsLevel { jlLow, jlMid, jlHigh };
using TJsLevels = TSet<TJsLevel, 8>;

struct TJsPair {
  Integer A = 0;
  UnicodeString B;
};

class TJsItem : public TPersistent {
  LX_CLASS(TJsItem, TPersistent)
  TJsItem() = default;
  Integer Count = 0;
  UnicodeString Note;
  Double Weight = 0;
  bool Flag = false;
  TDateTime Born;
  TJsLevel Level = TJsLevel::jlLow;
  TJsLevels Levels;
  Variant Any;
  UnicodeString Secret;
  TJsPair Pair;
  std::vector<Integer> Numbers;
  std::vector<UnicodeString> Words;
  std::vector<TJsPair> Pairs;
  TJsItem* Next = nullptr;
  std::vector<TJsItem*> Items;

protected:
  ~TJsItem() override {
    lorvane::Free(Next);
    for (TJsItem* Item : Items)
      lorvane::Free(Item);
  }
};

class TJsSpecialItem : public TJsItem {
  LX_CLASS(TJsSpecialItem, TJsItem)
  TJsSpecialItem() = default;
  UnicodeString Extra;

protected:
  ~TJsSpecialItem() override = default;
};

/// Refers to an item without owning it: the created-objects list decides who frees it.
class TJsHolder : public TPersistent {
  LX_CLASS(TJsHolder, TPersistent)
  TJsHolder() = default;
  TJsItem* Item = nullptr;
  Integer Id = 0;

protected:
  ~TJsHolder() override = default;
};

void DescribeJSONTypes() {
  static const bool Described = [] {
    LxDescribeEnum<TJsLevel>(u"Js.TJsLevel", {u"jlLow", u"jlMid", u"jlHigh"})
        .Hint(shoEnumPrefix, u"jl");
    LxDescribeSet<TJsLevels>(u"Js.TJsLevels");
    LxDescribeRecord<TJsPair>(u"Js.TJsPair").Field(u"A", &TJsPair::A).Field(u"B", &TJsPair::B);
    LxDescribeClass<TJsItem>(u"Js.TJsItem")
        .Property(u"Count", &TJsItem::Count)
        .Property(u"Note", &TJsItem::Note)
        .Property(u"Weight", &TJsItem::Weight)
        .Property(u"Flag", &TJsItem::Flag)
        .Property(u"Born", &TJsItem::Born)
        .Property(u"Level", &TJsItem::Level)
        .Property(u"Levels", &TJsItem::Levels)
        .Property(u"Any", &TJsItem::Any)
        .Property(u"Secret", &TJsItem::Secret)
        .Hint(shoDoNotSerialize)
        .Property(u"Pair", &TJsItem::Pair)
        .Property(u"Numbers", &TJsItem::Numbers)
        .Property(u"Words", &TJsItem::Words)
        .Property(u"Pairs", &TJsItem::Pairs)
        .Property(u"Next", &TJsItem::Next)
        .Property(u"Items", &TJsItem::Items);
    LxDescribeClass<TJsSpecialItem>(u"Js.TJsSpecialItem")
        .Property(u"Extra", &TJsSpecialItem::Extra);
    LxDescribeClass<TJsHolder>(u"Js.TJsHolder")
        .Property(u"Item", &TJsHolder::Item)
        .Property(u"Id", &TJsHolder::Id);
    return true;
  }();
  (void)Described;
}

/// Reads AText into AItem; objects made go to the item's graph.
void ReadInto(TJsItem* AItem, const std::string& AText) {
  TObjectList* GraphKeeps = nullptr;
  LxDeserialize(ldsJSON, TValue::From(AItem), AText, &GraphKeeps);
}

/// The same as a form post.
void ReadFormInto(TJsItem* AItem, const std::string& AText) {
  // A list that owns nothing: the item's graph keeps what the run makes.
  TOwned<TObjectList> GraphKeeps(New<TObjectList>(false));
  TOwned<TLxDeserializer> Reader(LxCreateDeserializer(ldsJSON, TValue::From(AItem)));
  Reader->SetParam(u"UrlEncoded", u"true");
  Reader->SetCreatedObjects(GraphKeeps.get());
  Reader->Deserialize(AText);
}

class JSONDeserializerDocuments : public test::LiveObjectsTest {
protected:
  // The descriptions' hints are objects that live as long as the registry.
  void SetUp() override {
    DescribeJSONTypes();
    test::LiveObjectsTest::SetUp();
  }
};

// The shape TLxJSONSerializer writes: one line, "className" first, enumerations and sets as small
// objects, nil objects as {}, dates as strings.
const std::string Written =
    R"({"className":"TJsItem","count":7,"note":"A\u0026B \"q\"","weight":2.5,"flag":true,)"
    R"("born":"2000-01-01T12:00:00.000",)"
    R"("level":{"className":"TJsLevel","asString":"Mid","asInt":1},)"
    R"("levels":{"className":"TJsLevels","asString":"[Low,High]","asInt":5},)"
    R"("any":"v","pair":{"className":"TJsPair","a":3,"b":"bee"},"numbers":[4,5,6],)"
    R"("words":["x","","z"],"pairs":[{"className":"TJsPair","a":1,"b":"p"},)"
    R"({"className":"TJsPair","a":2,"b":"q"}],)"
    R"("next":{"className":"TJsItem","count":8,"next":{}},)"
    R"("items":[{"className":"TJsItem","count":9},{"className":"TJsSpecialItem","extra":"e"}]})";

void ExpectWritten(const TJsItem& AItem) {
  EXPECT_EQ(AItem.Count, 7);
  EXPECT_EQ(AItem.Note, u"A&B \"q\"");
  EXPECT_EQ(AItem.Weight, 2.5);
  EXPECT_TRUE(AItem.Flag);
  EXPECT_EQ(AItem.Born.Value, 36526.5);
  EXPECT_EQ(AItem.Level, TJsLevel::jlMid);
  EXPECT_EQ(AItem.Levels, TJsLevels({TJsLevel::jlLow, TJsLevel::jlHigh}));
  EXPECT_EQ(VarToStr(AItem.Any), u"v");
  EXPECT_EQ(AItem.Pair.A, 3);
  EXPECT_EQ(AItem.Pair.B, u"bee");
  EXPECT_EQ(AItem.Numbers, (std::vector<Integer>{4, 5, 6}));
  EXPECT_EQ(AItem.Words, (std::vector<UnicodeString>{u"x", u"", u"z"}));
  ASSERT_EQ(AItem.Pairs.size(), 2u);
  EXPECT_EQ(AItem.Pairs[1].A, 2);
  EXPECT_EQ(AItem.Pairs[1].B, u"q");
  ASSERT_NE(AItem.Next, nullptr);
  EXPECT_EQ(AItem.Next->Count, 8);
  EXPECT_EQ(AItem.Next->Next, nullptr);
  ASSERT_EQ(AItem.Items.size(), 2u);
  EXPECT_EQ(AItem.Items[0]->Count, 9);
  ASSERT_EQ(AItem.Items[1]->ClassType(), TJsSpecialItem::StaticClass());
  EXPECT_EQ(static_cast<TJsSpecialItem*>(AItem.Items[1])->Extra, u"e");
}

TEST_F(JSONDeserializerDocuments, ReadsTheShapeTheSerializerWrites) {
  TOwned<TJsItem> Item(New<TJsItem>());
  ReadInto(Item.get(), Written);
  ExpectWritten(*Item);
}

TEST_F(JSONDeserializerDocuments, MembersInAnotherOrderWithBlanksAndLineBreaks) {
  TOwned<TJsItem> Item(New<TJsItem>());
  ReadInto(Item.get(), "{\r\n  \"numbers\" : [ 1 , 2 ],\n  \"NOTE\": \"n\",\n  \"pair\": {\"b\": "
                       "\"x\", \"a\": 4},\n  \"count\": 5,\n  \"className\": \"TJsItem\"\n}\n");
  EXPECT_EQ(Item->Count, 5);
  EXPECT_EQ(Item->Note, u"n");
  EXPECT_EQ(Item->Pair.A, 4);
  EXPECT_EQ(Item->Pair.B, u"x");
  EXPECT_EQ(Item->Numbers, (std::vector<Integer>{1, 2}));
}

TEST_F(JSONDeserializerDocuments, UnknownMembersRaiseButTheFourReservedWordsDont) {
  const struct {
    const char* Text;
    const char16_t* Message; // nullptr: read without a failure
  } Cases[] = {
      {R"({"nope":1})", u"Failed to find a property or field with the name Js.TJsItem.nope!"},
      {R"({"count":1,"pair":{"c":1}})",
       u"Failed to find a property or field with the name Js.TJsPair.c!"},
      {R"({"next":{"className":"TJsItem","bogus":[1]}})",
       u"Failed to find a property or field with the name Js.TJsItem.bogus!"},
      {R"({"items":[{"className":"TJsItem","count":1,"x":2}]})",
       u"Failed to find a property or field with the name Js.TJsItem.x!"},
      // Inside a member that isn't read, the inner names are looked up as this object's own.
      {R"({"secret":{"zz":1}})",
       u"Failed to find a property or field with the name Js.TJsItem.zz!"},
      {R"({"count":1,"className":"TOther","Parent":"x","OWNER":2,"type":true})", nullptr},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Text);
    TOwned<TJsItem> Item(New<TJsItem>());
    if (C.Message)
      ExpectRaises<ELxSerializeException>([&] { ReadInto(Item.get(), C.Text); }, C.Message);
    else
      ReadInto(Item.get(), C.Text);
  }
}

TEST_F(JSONDeserializerDocuments, ANilMemberGetsTheClassThatClassNameNames) {
  const struct {
    const char* Text;
    TClass Made; // nil: no object
    Integer NextCount;
  } Cases[] = {
      {R"({"next":{"className":"TJsSpecialItem","extra":"e","count":3},"count":1})",
       TJsSpecialItem::StaticClass(), 3},
      {R"({"next":{"className":"TJsItem","count":3},"count":1})", TJsItem::StaticClass(), 3},
      // Not the first member: no class is named, no object is made, and its members go nowhere.
      {R"({"next":{"count":3,"className":"TJsItem","next":{"count":4}},"count":1})", nullptr, 0},
      {R"({"next":{},"count":1})", nullptr, 0},
      {R"({"next":null,"count":1})", nullptr, 0},
      // Nil members inside an object that a child reads don't end that object.
      {R"({"next":{"className":"TJsItem","next":{},"items":[{}],"count":3},"count":1})",
       TJsItem::StaticClass(), 3},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Text);
    TOwned<TJsItem> Item(New<TJsItem>());
    ReadInto(Item.get(), C.Text);
    EXPECT_EQ(Item->Count, 1);
    if (!C.Made) {
      EXPECT_EQ(Item->Next, nullptr);
      continue;
    }
    ASSERT_NE(Item->Next, nullptr);
    EXPECT_EQ(Item->Next->ClassType(), C.Made);
    EXPECT_EQ(Item->Next->Count, C.NextCount);
  }

  TOwned<TJsItem> Item(New<TJsItem>());
  ExpectRaises<ENotSupportedException>(
      [&] { ReadInto(Item.get(), R"({"next":{"className":"TNoSuchClass","count":1}})"); },
      u"Failed to create an instance of TNoSuchClass!");
}

TEST_F(JSONDeserializerDocuments, NullLeavesAnObjectMemberAndRaisesForARecordMember) {
  // An object member that holds an object is read by a child, for which null is nothing to read:
  // the object stays, as the reader can't tell who else refers to it.
  TOwned<TJsItem> Item(New<TJsItem>());
  Item->Next = New<TJsItem>();
  Item->Next->Count = 2;
  Item->Note = u"before";
  Item->Pair.A = 6;
  TJsItem* Old = Item->Next;
  ReadInto(Item.get(), R"({"next":null,"note":null,"pair":{},"count":3})");
  EXPECT_EQ(Item->Next, Old);
  EXPECT_EQ(Item->Next->Count, 2);
  EXPECT_EQ(Item->Note, u"");
  EXPECT_EQ(Item->Pair.A, 6) << "{} leaves a record as it was";
  EXPECT_EQ(Item->Count, 3);
  ExpectRaises<Exception>(
      [&] { ReadInto(Item.get(), R"({"pair":null})"); },
      u"Records are not nillable! Use \"{}\" if you want to use empty records instead of "
      u"\"Null\".");
  ExpectRaises<Exception>([&] { ReadInto(Item.get(), R"({"pair":"x"})"); },
                          u"Record/Object data must start with \"{\".");
}

TEST_F(JSONDeserializerDocuments, EnumerationsAndSetsInEveryForm) {
  const struct {
    const char* Member; // between two other members
    TJsLevel Level;
    TJsLevels Levels;
  } Cases[] = {
      {R"("level":{"className":"TJsLevel","asString":"High","asInt":2})", TJsLevel::jlHigh, {}},
      // Both are stored, and the number, which comes last, wins.
      {R"("level":{"className":"TJsLevel","asString":"High","asInt":1})", TJsLevel::jlMid, {}},
      {R"("level":{"ASSTRING":"Mid"})", TJsLevel::jlMid, {}},
      {R"("level":"High")", TJsLevel::jlHigh, {}},
      {R"("level":2)", TJsLevel::jlHigh, {}},
      {R"("levels":{"className":"TJsLevels","asString":"[Mid]"})", TJsLevel::jlLow,
       TJsLevels({TJsLevel::jlMid})},
      {R"("levels":{"className":"TJsLevels","asString":"[Mid]","asInt":3})", TJsLevel::jlLow,
       TJsLevels({TJsLevel::jlLow, TJsLevel::jlMid})},
      {R"("levels":{"className":"TJsLevels","asString":"[]","asInt":0})", TJsLevel::jlLow, {}},
      {R"("levels":"[Low,High]")", TJsLevel::jlLow, TJsLevels({TJsLevel::jlLow, TJsLevel::jlHigh})},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Member);
    TOwned<TJsItem> Item(New<TJsItem>());
    Item->Levels = TJsLevels({TJsLevel::jlHigh});
    ReadInto(Item.get(), R"({"count":1,)" + std::string(C.Member) + R"(,"note":"after"})");
    EXPECT_EQ(Item->Level, C.Level);
    if (std::string_view(C.Member).starts_with("\"levels")) {
      EXPECT_EQ(Item->Levels, C.Levels);
    }
    EXPECT_EQ(Item->Count, 1);
    EXPECT_EQ(Item->Note, u"after") << "the member behind is read into the item";
  }
  TOwned<TJsItem> Item(New<TJsItem>());
  ExpectRaises<Exception>(
      [&] { ReadInto(Item.get(), R"({"level":{"className":"TJsLevel","value":1}})"); },
      u"\"The JSON Enum Deserializer expected \"asString\" or \"asInt\", but the member "
      u"\"value\" was deserialized instead!");
}

TEST_F(JSONDeserializerDocuments, ArraysOfValuesRecordsAndObjects) {
  TOwned<TJsItem> Item(New<TJsItem>());
  ReadInto(Item.get(), R"({"numbers":[],"words":["a","","\u00e9"],)"
                       R"("pairs":[{"className":"TJsPair","a":1},{}],)"
                       R"("items":[{},{"className":"TJsItem","count":2},{"count":3}],"count":4})");
  EXPECT_TRUE(Item->Numbers.empty());
  EXPECT_EQ(Item->Words, (std::vector<UnicodeString>{u"a", u"", u"\u00e9"}));
  ASSERT_EQ(Item->Pairs.size(), 2u);
  EXPECT_EQ(Item->Pairs[0].A, 1);
  EXPECT_EQ(Item->Pairs[1].A, 0);
  // An element object that names no class gets no instance: it stays nil.
  ASSERT_EQ(Item->Items.size(), 3u);
  EXPECT_EQ(Item->Items[0], nullptr);
  ASSERT_NE(Item->Items[1], nullptr);
  EXPECT_EQ(Item->Items[1]->Count, 2);
  EXPECT_EQ(Item->Items[2], nullptr);
  EXPECT_EQ(Item->Count, 4);
}

// An item that starts with "[", or holds only brackets and blanks, is a text like any other;
// only a member's whole value written as a string that starts with "[" is the array itself.
// A list member whose whole value is a string of JSON is read from that string, in JSON and in
// a form post.
TEST_F(JSONDeserializerDocuments, AListWrittenAsAStringFillsTheMember) {
  TOwned<TJsItem> AsString(New<TJsItem>());
  ReadInto(AsString.get(), R"({"numbers":"[4,5]","words":"[ ]","count":1})");
  EXPECT_EQ(AsString->Numbers, (std::vector<Integer>{4, 5}));
  EXPECT_TRUE(AsString->Words.empty());
  EXPECT_EQ(AsString->Count, 1);
  TOwned<TJsItem> FormAsString(New<TJsItem>());
  ReadFormInto(FormAsString.get(), "words=%5B%22p%22%2C%22q%22%5D&numbers=%5B4%2C5%5D&count=1");
  EXPECT_EQ(FormAsString->Words, (std::vector<UnicodeString>{u"p", u"q"}));
  EXPECT_EQ(FormAsString->Numbers, (std::vector<Integer>{4, 5}));
  EXPECT_EQ(FormAsString->Count, 1);
}

// A form starts an item's object only behind the pair that could name its class, so the items of
// a list of objects get no instance; the reader closes the last one's object with EndArray, and
// the members behind the list are read all the same.
TEST_F(JSONDeserializerDocuments, AFormPostReadsOnBehindAListOfObjectsWithoutInstances) {
  TOwned<TJsItem> Item(New<TJsItem>());
  ReadFormInto(Item.get(), "items[0][className]=TJsItem&items[0][count]=9&items[0][numbers][]=1"
                           "&items[1][count]=8&count=4&note=n");
  ASSERT_EQ(Item->Items.size(), 2u);
  EXPECT_EQ(Item->Items[0], nullptr);
  EXPECT_EQ(Item->Items[1], nullptr);
  EXPECT_EQ(Item->Count, 4);
  EXPECT_EQ(Item->Note, u"n");
}

TEST_F(JSONDeserializerDocuments, AClassNameLongerThanTheLookAheadIsCut) {
  // The name is looked for in the 255 characters from the member's closing quote on: with 236
  // blanks its value is cut after three characters, with 245 the key itself is.
  const struct {
    std::size_t Pad;
    const char16_t* Message; // nullptr: read; Made tells whether an object was made
    bool Made;
  } Cases[] = {
      {200, nullptr, true},
      {236, u"Failed to create an instance of TJs!", false},
      {245, nullptr, false},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Pad);
    TOwned<TJsItem> Item(New<TJsItem>());
    const std::string Text =
        R"({"next":{)" + std::string(C.Pad, ' ') + R"("className":"TJsItem","count":1},"count":2})";
    if (C.Message) {
      ExpectRaises<ENotSupportedException>([&] { ReadInto(Item.get(), Text); }, C.Message);
      continue;
    }
    ReadInto(Item.get(), Text);
    EXPECT_EQ(Item->Count, 2);
    ASSERT_EQ(Item->Next != nullptr, C.Made);
    if (C.Made) {
      EXPECT_EQ(Item->Next->Count, 1);
    }
  }
}

TEST_F(JSONDeserializerDocuments, AFormPostReadsLikeTheJSON) {
  TOwned<TJsItem> FromJSON(New<TJsItem>());
  ReadInto(FromJSON.get(),
           R"({"count":7,"note":"a b&c","flag":true,"level":"High","pair":{"a":3,"b":"x"},)"
           R"("next":{"className":"TJsSpecialItem","extra":"e"}})");
  TOwned<TJsItem> FromForm(New<TJsItem>());
  ReadFormInto(FromForm.get(), "count=7&note=a+b%26c&flag=true&level=High&pair[a]=3&pair%5Bb%5D=x"
                               "&next[className]=TJsSpecialItem&next[extra]=e");
  for (const TJsItem* Item : {FromJSON.get(), FromForm.get()}) {
    EXPECT_EQ(Item->Count, 7);
    EXPECT_EQ(Item->Note, u"a b&c");
    EXPECT_TRUE(Item->Flag);
    EXPECT_EQ(Item->Level, TJsLevel::jlHigh);
    EXPECT_EQ(Item->Pair.A, 3);
    EXPECT_EQ(Item->Pair.B, u"x");
    ASSERT_NE(Item->Next, nullptr);
    ASSERT_EQ(Item->Next->ClassType(), TJsSpecialItem::StaticClass());
    EXPECT_EQ(static_cast<TJsSpecialItem*>(Item->Next)->Extra, u"e");
  }
  // Without the option the same text is no JSON.
  TOwned<TJsItem> Plain(New<TJsItem>());
  EXPECT_THROW(ReadInto(Plain.get(), "count=7"), ELxJSONParseError);
}

TEST_F(JSONDeserializerDocuments, TheThreeWaysOfKeepingTheObjectsARunMakes) {
  const std::string Text = R"({"className":"TJsHolder","item":{"className":"TJsItem","count":6},)"
                           R"("id":1})";
  TOwned<TJsHolder> Holder(New<TJsHolder>());
  const Int64 Before = Alive();
  LxDeserialize(ldsJSON, TValue::From(Holder.get()), Text);
  EXPECT_EQ(Holder->Item, nullptr);
  EXPECT_EQ(Holder->Id, 1);
  EXPECT_EQ(Alive(), Before);

  TObjectList* None = nullptr;
  LxDeserialize(ldsJSON, TValue::From(Holder.get()), Text, &None);
  EXPECT_EQ(None, nullptr);
  ASSERT_NE(Holder->Item, nullptr);
  EXPECT_EQ(Holder->Item->Count, 6);
  EXPECT_EQ(Alive(), Before + 1);
  lorvane::Free(Holder->Item);
  Holder->Item = nullptr;

  TOwned<TObjectList> Mine(New<TObjectList>(true));
  TObjectList* List = Mine.get();
  LxDeserialize(ldsJSON, TValue::From(Holder.get()), Text, &List);
  ASSERT_EQ(Mine->GetCount(), 1);
  EXPECT_EQ(Mine->GetItems(0), Holder->Item);
  Mine.reset();
  Holder->Item = nullptr;
  EXPECT_EQ(Alive(), Before);

  TObject* Made = LxCreateFrom(ldsJSON, Text);
  ASSERT_EQ(Made->ClassType(), TJsHolder::StaticClass());
  EXPECT_EQ(static_cast<TJsHolder*>(Made)->Id, 1);
  EXPECT_EQ(static_cast<TJsHolder*>(Made)->Item, nullptr);
  lorvane::Free(Made);
  TObjectList* Kept = nullptr;
  Made = LxCreateFrom(ldsJSON, Text, &Kept);
  ASSERT_NE(static_cast<TJsHolder*>(Made)->Item, nullptr);
  lorvane::Free(static_cast<TJsHolder*>(Made)->Item);
  lorvane::Free(Made);
  EXPECT_EQ(Alive(), Before);
}

TEST_F(JSONDeserializerDocuments, CreateFromReadsTheWrittenShapeAndNeedsTheClassName) {
  TObjectList* Kept = nullptr;
  TObject* Made = LxCreateFrom(ldsJSON, Written, &Kept);
  ASSERT_EQ(Made->ClassType(), TJsItem::StaticClass());
  ExpectWritten(*static_cast<TJsItem*>(Made));
  lorvane::Free(Made);
  ExpectRaises<Exception>([] { LxCreateFrom(ldsJSON, std::string(R"({"count":1})")); },
                          u"Failed to read the ClassName from the stream!");
  ExpectRaises<Exception>([] { LxCreateFrom(ldsJSON, std::string()); },
                          u"Failed to read the ClassName from the stream!");
  ExpectRaises<EArgumentException>(
      [] { LxCreateFrom(ldsJSON, std::string(R"({"className":"TNoSuchClass"})")); },
      u"Unknown type \"TNoSuchClass\"");
}

TEST_F(JSONDeserializerDocuments, AFailedRunLeavesNoObjectThatNobodyCanReach) {
  const std::string Text = R"({"next":{"className":"TJsItem","count":1},)"
                           R"("items":[{"className":"TJsItem","next":{"className":"TJsItem"},)"
                           R"("count":"x"}]})";
  for (const bool GraphKeeps : {false, true}) {
    SCOPED_TRACE(GraphKeeps);
    TOwned<TJsItem> Item(New<TJsItem>());
    const Int64 Before = Alive();
    TObjectList* None = nullptr;
    ExpectRaises<EConvertError>(
        [&] {
          LxDeserialize(ldsJSON, TValue::From(Item.get()), Text, GraphKeeps ? &None : nullptr);
        },
        u"'x' is not a valid integer value");
    EXPECT_EQ(Item->Next != nullptr, GraphKeeps);
    EXPECT_EQ(Alive(), Before + (GraphKeeps ? 1 : 0));
  }
}

TEST_F(JSONDeserializerDocuments, MalformedTextRaisesTheReadersFailure) {
  const struct {
    std::string Text;
    const char16_t* Message;
  } Cases[] = {
      {R"({"count":1,"note":nul})",
       u"The document is not wellformed!\r\n\"l\" expected, but \"}\" found!"},
      {R"({"count":1} x)", u"The document is not wellformed!\r\n\"\", t, f, n, 0..9, ., + or "
                           u"-\" expected, but \"x\" found!"},
      {R"({"count":#})",
       u"The document is not wellformed!\r\n\"\", t, f, n, 0..9, ., + or -\" expected, but "
       u"\"#\" found!"},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Text);
    TOwned<TJsItem> Item(New<TJsItem>());
    ExpectRaises<ELxJSONParseError>(
        [&] { LxDeserialize(ldsJSON, TValue::From(Item.get()), C.Text); }, C.Message);
  }
  TOwned<TJsItem> Item(New<TJsItem>());
  EXPECT_THROW(LxDeserialize(ldsJSON, TValue::From(Item.get()),
                             std::string(R"({"next":{"className":"TJsItem","count":1)")),
               ELxTextParserEOF);
}

TEST_F(JSONDeserializerDocuments, StartUpKeepsTheSerializerClassOfJSON) {
  // The type registry doesn't start the library by itself.
  EnsureLibraryStarted();
  ASSERT_NE(TLxTypes::FindSerializers(nullptr, ldsJSON), nullptr);
  const TLxRegisteredSerializers Saved = *TLxTypes::FindSerializers(nullptr, ldsJSON);
  EXPECT_EQ(Saved.DeserializerClass, TLxJSONDeserializer::StaticClass());
  // Another module registers its serializer with no deserializer; the start-up keeps it.
  LxRegisterSerializer(ldsJSON, TLxTypeHandle(nullptr), TJsItem::StaticClass(), nullptr);
  LxJSONDeserializerStartup();
  const TLxRegisteredSerializers* Now = TLxTypes::FindSerializers(nullptr, ldsJSON);
  EXPECT_EQ(Now->SerializerClass, TJsItem::StaticClass());
  EXPECT_EQ(Now->DeserializerClass, TLxJSONDeserializer::StaticClass());
  LxRegisterSerializer(ldsJSON, TLxTypeHandle(nullptr), Saved.SerializerClass,
                       Saved.DeserializerClass);
}

} // namespace
