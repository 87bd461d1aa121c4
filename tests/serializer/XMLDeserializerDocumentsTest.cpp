// Reading documents that the serializer never wrote: other member orders, unknown names, extra
// attributes, comments, missing and foreign type names, empty and nil elements, markup in text,
// hints, enumerations and sets in every accepted form, the three ways of keeping created objects,
// components, and every message of a run that can't go on.
#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/types/LxDescribe.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

using namespace lorvane;
using lorvane::test::ExpectRaises;

namespace {

enum class TDocLevel { dlLow, dlMid, dlHigh };
using TDocLevels = TSet<TDocLevel, 8>;

struct TDocPair {
  Integer A = 0;
  UnicodeString B;
};

class TDocItem : public TPersistent {
  LX_CLASS(TDocItem, TPersistent)
  TDocItem() = default;
  Integer Count = 0;
  UnicodeString Note;
  Double Weight = 0;
  TDocLevel Level = TDocLevel::dlLow;
  TDocLevels Levels;
  Variant Any;
  UnicodeString Secret;
  UnicodeString Alias;
  TDocPair Pair;
  std::vector<Integer> Numbers;
  std::vector<TDocPair> Pairs;
  TDocItem* Next = nullptr;
  std::vector<TDocItem*> Items;
  Integer Code = 0;

protected:
  ~TDocItem() override {
    lorvane::Free(Next);
    for (TDocItem* Item : Items)
      lorvane::Free(Item);
  }
};

class TDocSpecialItem : public TDocItem {
  LX_CLASS(TDocSpecialItem, TDocItem)
  TDocSpecialItem() = default;
  UnicodeString Extra;

protected:
  ~TDocSpecialItem() override = default;
};

/// Refers to an item without owning it: the created-objects list decides who frees it.
class TDocHolder : public TPersistent {
  LX_CLASS(TDocHolder, TPersistent)
  TDocHolder() = default;
  TDocItem* Item = nullptr;
  Integer Id = 0;

protected:
  ~TDocHolder() override = default;
};

/// Its own text goes to Body.
class TDocText : public TPersistent {
  LX_CLASS(TDocText, TPersistent)
  TDocText() = default;
  UnicodeString Lang;
  UnicodeString Body;

protected:
  ~TDocText() override = default;
};

class TDocPart : public TComponent {
  LX_CLASS(TDocPart, TComponent)
  explicit TDocPart(TComponent* AOwner) : TComponent(AOwner) {}
  Integer Size = 0;

protected:
  ~TDocPart() override = default;
};

class TDocMachine : public TComponent {
  LX_CLASS(TDocMachine, TComponent)
  explicit TDocMachine(TComponent* AOwner) : TComponent(AOwner) {}
  Integer Speed = 0;
  TDocPart* Part = nullptr;

protected:
  ~TDocMachine() override = default;
};

void DescribeDocumentTypes() {
  static const bool Described = [] {
    LxDescribeEnum<TDocLevel>(u"Doc.TDocLevel", {u"dlLow", u"dlMid", u"dlHigh"})
        .Hint(shoEnumPrefix, u"dl");
    LxDescribeSet<TDocLevels>(u"Doc.TDocLevels");
    LxDescribeRecord<TDocPair>(u"Doc.TDocPair")
        .Field(u"A", &TDocPair::A)
        .Field(u"B", &TDocPair::B)
        .Hint(shoName, u"bee");
    LxDescribeClass<TDocItem>(u"Doc.TDocItem")
        .Property(u"Count", &TDocItem::Count)
        .Property(u"Note", &TDocItem::Note)
        .Property(u"Weight", &TDocItem::Weight)
        .Property(u"Level", &TDocItem::Level)
        .Property(u"Levels", &TDocItem::Levels)
        .Property(u"Any", &TDocItem::Any)
        .Property(u"Secret", &TDocItem::Secret)
        .Hint(shoDoNotSerialize)
        .Property(u"Alias", &TDocItem::Alias)
        .Hint(shoName, u"nick")
        .Property(u"Pair", &TDocItem::Pair)
        .Property(u"Numbers", &TDocItem::Numbers)
        .Property(u"Pairs", &TDocItem::Pairs)
        .Property(u"Next", &TDocItem::Next)
        .Property(u"Items", &TDocItem::Items)
        .Field(u"Code", &TDocItem::Code)
        .Hint(shoName, u"kode");
    LxDescribeClass<TDocSpecialItem>(u"Doc.TDocSpecialItem")
        .Property(u"Extra", &TDocSpecialItem::Extra);
    LxDescribeClass<TDocHolder>(u"Doc.TDocHolder")
        .Property(u"Item", &TDocHolder::Item)
        .Property(u"Id", &TDocHolder::Id);
    LxDescribeClass<TDocText>(u"Doc.TDocText")
        .Property(u"Lang", &TDocText::Lang)
        .Property(u"Body", &TDocText::Body)
        .Hint(shoNodeType, u"NodeValue");
    LxDescribeClass<TDocPart>(u"Doc.TDocPart").Property(u"Size", &TDocPart::Size);
    LxDescribeClass<TDocMachine>(u"Doc.TDocMachine")
        .Property(u"Speed", &TDocMachine::Speed)
        .Property(u"Part", &TDocMachine::Part);
    return true;
  }();
  (void)Described;
}

/// A root element of the schema type AType with the namespace declarations, around ABody.
std::string Document(std::string_view AType, std::string_view ABody,
                     std::string_view AExtraAttributes = {}) {
  return "<object xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xsi:type=\"xsd:" +
         std::string(AType) + "\"" + std::string(AExtraAttributes) + ">" + std::string(ABody) +
         "</object>";
}

/// Reads the document of an item with ABody into AItem; objects made go to the item's graph.
void ReadItem(TDocItem* AItem, std::string_view ABody, std::string_view AExtraAttributes = {}) {
  TObjectList* GraphKeeps = nullptr;
  LxDeserialize(ldsXML, TValue::From(AItem), Document("TDocItem", ABody, AExtraAttributes),
                &GraphKeeps);
}

class XMLDeserializerDocuments : public test::LiveObjectsTest {
protected:
  // The descriptions' hints are objects that live as long as the registry.
  void SetUp() override {
    DescribeDocumentTypes();
    test::LiveObjectsTest::SetUp();
  }
};

TEST_F(XMLDeserializerDocuments, MembersInAnyOrderBetweenCommentsAndInstructions) {
  TOwned<TDocItem> Item(New<TDocItem>());
  ReadItem(Item.get(), "<!-- first --><Weight>1.5</Weight><?app some data?>\r\n  <Note>n</Note>"
                       "<!-- between --><Count>5</Count>\n");
  EXPECT_EQ(Item->Count, 5);
  EXPECT_EQ(Item->Note, u"n");
  EXPECT_EQ(Item->Weight, 1.5);
}

TEST_F(XMLDeserializerDocuments, AttributesOfTheRootAreMembersOrDropped) {
  TOwned<TDocItem> Item(New<TDocItem>());
  // An attribute that names a member is read as that member; any other is dropped, and so is any
  // attribute of the schema namespaces.
  ReadItem(Item.get(), "<Note>n</Note>",
           " Count=\"9\" Unknown=\"x\" xsi:nil=\"true\" Weight=\"2.25\" nick=\"al\"");
  EXPECT_EQ(Item->Count, 9);
  EXPECT_EQ(Item->Weight, 2.25);
  EXPECT_EQ(Item->Alias, u"al");
  EXPECT_EQ(Item->Note, u"n");
}

TEST_F(XMLDeserializerDocuments, AttributesOfArrayElementsAreMembersOrTheMessage) {
  TOwned<TDocItem> Item(New<TDocItem>());
  ReadItem(Item.get(), "<Pairs><p A=\"3\"><bee>x</bee></p><p A=\"4\" B=\"y\"/></Pairs>"
                       "<Items><TDocItem xsi:type=\"xsd:TDocItem\" Count=\"7\"><Note>m</Note>"
                       "</TDocItem></Items>");
  ASSERT_EQ(Item->Pairs.size(), 2u);
  EXPECT_EQ(Item->Pairs[0].A, 3);
  EXPECT_EQ(Item->Pairs[0].B, u"x");
  EXPECT_EQ(Item->Pairs[1].A, 4);
  EXPECT_EQ(Item->Pairs[1].B, u"y");
  ASSERT_EQ(Item->Items.size(), 1u);
  ASSERT_NE(Item->Items[0], nullptr);
  EXPECT_EQ(Item->Items[0]->Count, 7);
  EXPECT_EQ(Item->Items[0]->Note, u"m");

  TOwned<TDocItem> Other(New<TDocItem>());
  ExpectRaises<ELxSerializeException>(
      [&] { ReadItem(Other.get(), "<Pairs><p Bogus=\"1\"/></Pairs>"); },
      u"Failed to find a property or field with the name Doc.TDocPair.Bogus!");
}

TEST_F(XMLDeserializerDocuments, UnknownNamesRaiseButTheFourReservedWordsDont) {
  const struct {
    const char* Body;
    const char16_t* Message; // nullptr: read without a failure
  } Cases[] = {
      {"<Nope>1</Nope>", u"Failed to find a property or field with the name Doc.TDocItem.Nope!"},
      {"<Count>1</Count><count2/>",
       u"Failed to find a property or field with the name Doc.TDocItem.count2!"},
      // A field is found by its own name only, never by its hint.
      {"<kode>3</kode>", u"Failed to find a property or field with the name Doc.TDocItem.kode!"},
      {"<Pair><C>1</C></Pair>",
       u"Failed to find a property or field with the name Doc.TDocPair.C!"},
      {"<className>TOther</className><Parent>x</Parent><OWNER/><type><a>b</a></type>", nullptr},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Body);
    TOwned<TDocItem> Item(New<TDocItem>());
    if (C.Message)
      ExpectRaises<ELxSerializeException>([&] { ReadItem(Item.get(), C.Body); }, C.Message);
    else
      ReadItem(Item.get(), C.Body);
  }
}

TEST_F(XMLDeserializerDocuments, ANilMemberGetsTheClassTheDocumentNamesOrTheDeclaredOne) {
  TOwned<TDocItem> Item(New<TDocItem>());
  ReadItem(Item.get(), "<Next><Count>2</Count></Next>");
  ASSERT_NE(Item->Next, nullptr);
  EXPECT_EQ(Item->Next->ClassType(), TDocItem::StaticClass());
  EXPECT_EQ(Item->Next->Count, 2);

  TOwned<TDocItem> Other(New<TDocItem>());
  ReadItem(Other.get(), "<Next xsi:type=\"xsd:TDocSpecialItem\"><Extra>e</Extra><Count>3</Count>"
                        "</Next>");
  ASSERT_NE(Other->Next, nullptr);
  ASSERT_EQ(Other->Next->ClassType(), TDocSpecialItem::StaticClass());
  EXPECT_EQ(static_cast<TDocSpecialItem*>(Other->Next)->Extra, u"e");
  EXPECT_EQ(Other->Next->Count, 3);

  // A type that nobody described can't be made.
  TOwned<TDocItem> Third(New<TDocItem>());
  ExpectRaises<ENotSupportedException>(
      [&] { ReadItem(Third.get(), "<Next xsi:type=\"xsd:TNoSuchClass\"><Count>1</Count></Next>"); },
      u"Failed to create an instance of xsd:TNoSuchClass!");
  EXPECT_EQ(Third->Next, nullptr);
}

TEST_F(XMLDeserializerDocuments, AMemberHoldingAnObjectIsFilledInPlaceWhateverTheDocumentNames) {
  TOwned<TDocItem> Item(New<TDocItem>());
  auto* Special = New<TDocSpecialItem>();
  Item->Next = Special;
  ReadItem(Item.get(), "<Next xsi:type=\"xsd:TDocItem\"><Count>4</Count><Extra>x</Extra></Next>");
  EXPECT_EQ(Item->Next, Special);
  EXPECT_EQ(Special->Count, 4);
  EXPECT_EQ(Special->Extra, u"x");

  // A plain item stays plain, and a member of the named class only is unknown to it.
  auto* Plain = New<TDocItem>();
  lorvane::Free(Item->Next);
  Item->Next = Plain;
  ExpectRaises<ELxSerializeException>(
      [&] {
        ReadItem(Item.get(), "<Next xsi:type=\"xsd:TDocSpecialItem\"><Extra>x</Extra></Next>");
      },
      u"Failed to find a property or field with the name Doc.TDocItem.Extra!");
  EXPECT_EQ(Item->Next, Plain);
}

TEST_F(XMLDeserializerDocuments, EmptyAndNilElementsLeaveEveryKindOfMemberAsItWas) {
  const char* const Bodies[] = {
      "<Count/><Note/><Weight/><Level/><Levels/><Any/><Alias/><Numbers/><Pairs/><Items/>"
      "<Pair/>",
      "<Count></Count><Note></Note><Level></Level><Levels></Levels><Numbers></Numbers>"
      "<Pair></Pair>",
      "<Count xsi:nil=\"true\"/><Note xsi:nil=\"true\"/><Weight xsi:nil=\"true\"/>"
      "<Level xsi:nil=\"1\"/><Levels xsi:nil=\"true\"/><Any xsi:nil=\"true\"/>"
      "<Pair xsi:nil=\"true\"/><Numbers xsi:nil=\"true\"/><Pairs xsi:nil=\"true\"/>"
      "<Items xsi:nil=\"true\"/><Next xsi:type=\"xsd:TDocItem\" xsi:nil=\"true\"/>",
  };
  for (const char* Body : Bodies) {
    SCOPED_TRACE(Body);
    TOwned<TDocItem> Item(New<TDocItem>());
    Item->Count = 3;
    Item->Note = u"kept";
    Item->Weight = 0.5;
    Item->Level = TDocLevel::dlMid;
    Item->Levels = {TDocLevel::dlHigh};
    Item->Any = Variant(Integer(12));
    Item->Alias = u"a";
    Item->Pair = {1, u"b"};
    Item->Numbers = {1, 2};
    Item->Pairs = {{5, u"c"}};
    ReadItem(Item.get(), Body);
    EXPECT_EQ(Item->Count, 3);
    EXPECT_EQ(Item->Note, u"kept");
    EXPECT_EQ(Item->Weight, 0.5);
    EXPECT_EQ(Item->Level, TDocLevel::dlMid);
    EXPECT_TRUE(Item->Levels == TDocLevels{TDocLevel::dlHigh});
    EXPECT_EQ(VarToStr(Item->Any), u"12");
    EXPECT_EQ(Item->Alias, u"a");
    EXPECT_EQ(Item->Pair.A, 1);
    EXPECT_EQ(Item->Pair.B, u"b");
    EXPECT_EQ(Item->Numbers, (std::vector<Integer>{1, 2}));
    ASSERT_EQ(Item->Pairs.size(), 1u);
    EXPECT_EQ(Item->Pairs[0].A, 5);
    EXPECT_TRUE(Item->Items.empty());
    // A nil element names no class: no object is made for it.
    EXPECT_EQ(Item->Next, nullptr);
  }
  // So the content of a nil element reaches the nil member as a value, which it can't take.
  TOwned<TDocItem> Item(New<TDocItem>());
  ExpectRaises<Exception>(
      [&] { ReadItem(Item.get(), "<Next xsi:nil=\"true\"><Count>1</Count></Next>"); },
      u"The value \"<Count>1</Count>\" of type \"ltkClass\" is not supported!");
  EXPECT_EQ(Item->Next, nullptr);
}

TEST_F(XMLDeserializerDocuments, TextWithReferencesAndMarkupInsideAStringMember) {
  const struct {
    const char* Body;
    const char16_t* Note;
  } Cases[] = {
      {"<Note>a&amp;b&#x41;&#66;c&lt;&gt;&quot;&apos;</Note>", u"a&bABc<>\"'"},
      {"<Note>caf\xc3\xa9 \xe4\xb8\xad\xf0\x9f\x98\x80</Note>", u"caf\u00e9 \u4e2d\U0001F600"},
      // Markup arrives as text, attributes as they stood.
      {"<Note><b x=\"1\">c<i/></b></Note>", u"<b x=\"1\">c<i></i></b>"},
      // Pieces of text around markup are delivered one by one: the last one wins.
      {"<Note>a<b>c</b>d</Note>", u"d"},
      {"<Note>a<b>c</b><b>e</b></Note>", u"<b>e</b>"},
      {"<Note>a<!--c-->b</Note>", u"b"},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Body);
    TOwned<TDocItem> Item(New<TDocItem>());
    ReadItem(Item.get(), C.Body);
    EXPECT_EQ(StringToUTF8(Item->Note), StringToUTF8(C.Note));
  }
}

TEST_F(XMLDeserializerDocuments, AMemberThatIsNotSerializedDropsItsValueAndMarkup) {
  TOwned<TDocItem> Item(New<TDocItem>());
  Item->Secret = u"mine";
  ReadItem(Item.get(), "<Secret>plain</Secret><Secret>a<b x=\"1\">c</b><i/>d</Secret>"
                       "<Count>1</Count>");
  EXPECT_EQ(Item->Secret, u"mine");
  EXPECT_EQ(Item->Count, 1);
}

TEST_F(XMLDeserializerDocuments, HintedNamesFindPropertiesAndRecordFields) {
  TOwned<TDocItem> Item(New<TDocItem>());
  ReadItem(Item.get(), "<nick>z</nick><Pair><bee>q</bee><A>2</A></Pair>");
  EXPECT_EQ(Item->Alias, u"z");
  EXPECT_EQ(Item->Pair.B, u"q");
  EXPECT_EQ(Item->Pair.A, 2);
  // Without regard to case, and the member's own name works as well.
  ReadItem(Item.get(), "<NICK>y</NICK><Pair><BEE>r</BEE></Pair>");
  EXPECT_EQ(Item->Alias, u"y");
  EXPECT_EQ(Item->Pair.B, u"r");
  ReadItem(Item.get(), "<Alias>x</Alias><Pair><B>s</B></Pair>");
  EXPECT_EQ(Item->Alias, u"x");
  EXPECT_EQ(Item->Pair.B, u"s");
}

TEST_F(XMLDeserializerDocuments, TheElementsOwnTextGoesToTheNodeValueMember) {
  TObject* Made =
      LxCreateFrom(ldsXML, Document("TDocText", "Hello &amp; <!--x-->", " Lang=\"en\""));
  TOwned<TObject> Hold(Made);
  ASSERT_TRUE(Made && Made->ClassType() == TDocText::StaticClass());
  auto* Text = static_cast<TDocText*>(Made);
  EXPECT_EQ(Text->Lang, u"en");
  EXPECT_EQ(Text->Body, u"Hello & ");
}

TEST_F(XMLDeserializerDocuments, EnumerationsByNumberAndByNameWithThePrefix) {
  const struct {
    const char* Text;
    TDocLevel Expected;
  } Cases[] = {
      {"2", TDocLevel::dlHigh},  {"0", TDocLevel::dlLow},   {"High", TDocLevel::dlHigh},
      {"Mid", TDocLevel::dlMid}, {"mid", TDocLevel::dlMid},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Text);
    TOwned<TDocItem> Item(New<TDocItem>());
    Item->Level = TDocLevel::dlMid;
    ReadItem(Item.get(), "<Level>" + std::string(C.Text) + "</Level>");
    EXPECT_EQ(Item->Level, C.Expected);
  }
  TOwned<TDocItem> Item(New<TDocItem>());
  // The prefix goes in front of whatever the text says.
  ExpectRaises<EAssertionFailed>([&] { ReadItem(Item.get(), "<Level>dlHigh</Level>"); },
                                 u"Failed to get the EnumValue for dldlHigh");
  ExpectRaises<EAssertionFailed>([&] { ReadItem(Item.get(), "<Level>Top</Level>"); },
                                 u"Failed to get the EnumValue for dlTop");
}

TEST_F(XMLDeserializerDocuments, SetsAsAMaskAsBracketedNamesAndAsAList) {
  for (const char* Text : {"5", "[Low,High]", "Low, High", " Low ,High", "[High, Low]"}) {
    SCOPED_TRACE(Text);
    TOwned<TDocItem> Item(New<TDocItem>());
    Item->Levels = {TDocLevel::dlMid};
    ReadItem(Item.get(), "<Levels>" + std::string(Text) + "</Levels>");
    EXPECT_TRUE(Item->Levels == (TDocLevels{TDocLevel::dlLow, TDocLevel::dlHigh}));
  }
  TOwned<TDocItem> Item(New<TDocItem>());
  Item->Levels = {TDocLevel::dlMid};
  ReadItem(Item.get(), "<Levels>[]</Levels>");
  EXPECT_TRUE(Item->Levels.Empty());
  ExpectRaises<EAssertionFailed>([&] { ReadItem(Item.get(), "<Levels>[Low,Top]</Levels>"); },
                                 u"Failed to get the EnumValue for dlTop");
}

TEST_F(XMLDeserializerDocuments, TheThreeWaysOfKeepingTheObjectsARunMakes) {
  const std::string Text = Document("TDocHolder", "<Item><Count>6</Count></Item><Id>1</Id>");
  TOwned<TDocHolder> Holder(New<TDocHolder>());
  const Int64 Before = Alive();
  // No list: the run frees what it made, and the member no longer points at it.
  LxDeserialize(ldsXML, TValue::From(Holder.get()), Text);
  EXPECT_EQ(Holder->Item, nullptr);
  EXPECT_EQ(Holder->Id, 1);
  EXPECT_EQ(Alive(), Before);

  // The address of a nil list: the graph keeps them, and the list stays nil.
  TObjectList* None = nullptr;
  LxDeserialize(ldsXML, TValue::From(Holder.get()), Text, &None);
  EXPECT_EQ(None, nullptr);
  ASSERT_NE(Holder->Item, nullptr);
  EXPECT_EQ(Holder->Item->Count, 6);
  EXPECT_EQ(Alive(), Before + 1);
  lorvane::Free(Holder->Item);
  Holder->Item = nullptr;

  // The address of a list: it gets them, and whoever owns it decides.
  TOwned<TObjectList> Mine(New<TObjectList>(true));
  TObjectList* List = Mine.get();
  LxDeserialize(ldsXML, TValue::From(Holder.get()), Text, &List);
  EXPECT_EQ(List, Mine.get());
  ASSERT_EQ(Mine->GetCount(), 1);
  EXPECT_EQ(Mine->GetItems(0), Holder->Item);
  Mine.reset();
  EXPECT_EQ(Alive(), Before);
  Holder->Item = nullptr;

  // LxCreateFrom takes the same list, and the new object is the caller's in every case.
  TObject* Made = LxCreateFrom(ldsXML, Text);
  EXPECT_EQ(static_cast<TDocHolder*>(Made)->Item, nullptr);
  lorvane::Free(Made);
  TObjectList* Kept = nullptr;
  Made = LxCreateFrom(ldsXML, Text, &Kept);
  ASSERT_NE(static_cast<TDocHolder*>(Made)->Item, nullptr);
  lorvane::Free(static_cast<TDocHolder*>(Made)->Item);
  lorvane::Free(Made);
  EXPECT_EQ(Alive(), Before);
}

TEST_F(XMLDeserializerDocuments, CreateFromWithAnOwnerComponent) {
  TOwned<TComponent> Owner(New<TComponent>(nullptr));
  TObject* Made = LxCreateFrom(ldsXML, Owner.get(), Document("TDocMachine", "<Speed>12</Speed>"));
  ASSERT_TRUE(Made && Made->ClassType() == TDocMachine::StaticClass());
  auto* Machine = static_cast<TDocMachine*>(Made);
  EXPECT_EQ(Machine->GetOwner(), Owner.get());
  EXPECT_EQ(Machine->Speed, 12);
  ASSERT_EQ(Owner->GetComponentCount(), 1);
  EXPECT_EQ(Owner->GetComponents(0), Machine);
  // The owner frees it.
  Owner.reset();
}

TEST_F(XMLDeserializerDocuments, AComponentIsFilledOnlyWhenTheInstanceOwnsIt) {
  TOwned<TDocMachine> Machine(New<TDocMachine>(nullptr));
  Machine->Part = New<TDocPart>(Machine.get());
  LxDeserialize(ldsXML, TValue::From(Machine.get()),
                Document("TDocMachine", "<Part><Size>3</Size></Part>"));
  EXPECT_EQ(Machine->Part->Size, 3);

  // Owned elsewhere: no child; its content reaches the machine as a value, which a class member
  // can't take.
  TOwned<TDocPart> Foreign(New<TDocPart>(nullptr));
  Machine->Part = Foreign.get();
  ExpectRaises<Exception>(
      [&] {
        LxDeserialize(ldsXML, TValue::From(Machine.get()),
                      Document("TDocMachine", "<Part><Size>4</Size></Part>"));
      },
      u"The value \"<Size>4</Size>\" of type \"ltkClass\" is not supported!");
  EXPECT_EQ(Foreign->Size, 0);
  Machine->Part = nullptr;
}

TEST_F(XMLDeserializerDocuments, RootArrays) {
  // From a value: the elements, whatever their names, are read into the copy given back.
  const TValue Read = LxDeserialize(
      ldsXML, TValue::From(std::vector<Integer>{9}),
      std::string("<array><int>1</int><x>2</x><int xsi:type=\"xsd:int\" "
                  "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">3</int></array>"));
  EXPECT_EQ(Read.AsType<std::vector<Integer>>(), (std::vector<Integer>{1, 2, 3}));

  // By instance and type there is no member value to read into.
  std::vector<Integer> Numbers;
  ExpectRaises<Exception>(
      [&] {
        LxDeserialize(ldsXML, &Numbers, TypeHandle<std::vector<Integer>>(),
                      std::string("<array><int>1</int></array>"));
      },
      u"The MemberValueType is NIL!");
  TOwned<TLxDeserializer> Deserializer(
      LxCreateDeserializer(ldsXML, &Numbers, TypeHandle<std::vector<Integer>>()));
  Deserializer->GetMemberValue() = TValue::From(std::vector<UnicodeString>{});
  ExpectRaises<Exception>(
      [&] { Deserializer->Deserialize(std::string("<array/>")); },
      u"The MemberValueType (System.TArray<System.string>) is different than the "
      u"InstanceTypeInfo (System.TArray<System.Integer>)!");
}

TEST_F(XMLDeserializerDocuments, ARecordGivenAsAValueIsReadIntoTheCopyGivenBack) {
  const TValue Read = LxDeserialize(ldsXML, TValue::From(TDocPair{1, u"old"}),
                                    std::string("<record><bee>new</bee><A>5</A></record>"));
  const TDocPair Pair = Read.AsType<TDocPair>();
  EXPECT_EQ(Pair.A, 5);
  EXPECT_EQ(Pair.B, u"new");
}

TEST_F(XMLDeserializerDocuments, AFailedRunLeavesNoObjectThatNobodyCanReach) {
  // The failure comes after objects were made for an array that never reached the item, and for
  // a member that did.
  const std::string Body = "<Next><Count>1</Count></Next><Items><i><Count>1</Count></i>"
                           "<i><Next><Count>2</Count></Next><Count>x</Count></i></Items>";
  for (const bool GraphKeeps : {false, true}) {
    SCOPED_TRACE(GraphKeeps);
    TOwned<TDocItem> Item(New<TDocItem>());
    const Int64 Before = Alive();
    TObjectList* None = nullptr;
    ExpectRaises<EConvertError>(
        [&] {
          LxDeserialize(ldsXML, TValue::From(Item.get()), Document("TDocItem", Body),
                        GraphKeeps ? &None : nullptr);
        },
        u"'x' is not a valid integer value");
    EXPECT_TRUE(Item->Items.empty());
    // What the item reached is its own when the graph keeps it, and freed (and nil) otherwise.
    EXPECT_EQ(Item->Next != nullptr, GraphKeeps);
    EXPECT_EQ(Alive(), Before + (GraphKeeps ? 1 : 0));
  }
  // A new object that fails is freed with all it reached.
  TObjectList* None = nullptr;
  ExpectRaises<EConvertError>([&] { LxCreateFrom(ldsXML, Document("TDocItem", Body), &None); },
                              u"'x' is not a valid integer value");
}

TEST_F(XMLDeserializerDocuments, CreateFromNeedsTheClassNameAndAKnownClass) {
  ExpectRaises<Exception>([] { LxCreateFrom(ldsXML, std::string("<object><Id>1</Id></object>")); },
                          u"Failed to read the ClassName from the stream!");
  ExpectRaises<Exception>([] { LxCreateFrom(ldsXML, std::string()); },
                          u"Failed to read the ClassName from the stream!");
  ExpectRaises<EArgumentException>([] { LxCreateFrom(ldsXML, Document("TNoSuchClass", "")); },
                                   u"Unknown type \"xsd:TNoSuchClass\"");
}

TEST_F(XMLDeserializerDocuments, AMalformedDocumentRaisesTheParserErrorWithItsPlace) {
  const struct {
    std::string Text;
    const char16_t* Message;
  } Cases[] = {
      {"<object><Count>1</Count>\n<Note>x", u"Line 2, column 7: Unexpected end of the text"},
      {"<object><Count>1</Count></object><again/>",
       u"Line 1, column 34: The document is not wellformed!\r\nA XML document may not contain "
       u"multiple root elements."},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Text);
    TOwned<TDocItem> Item(New<TDocItem>());
    ExpectRaises<EParserError>([&] { LxDeserialize(ldsXML, TValue::From(Item.get()), C.Text); },
                               C.Message);
  }
}

} // namespace
