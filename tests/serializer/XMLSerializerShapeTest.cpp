// The XML serializer's shape, character for character, on the worked example of a person.
#include "serializer/SerializerPersonModel.h"

#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxJSONDeserializer.h"
#include "lorvane/types/LxDescribe.h"
#include "lorvane/uLxJSONSerializer.h"
#include "lorvane/uLxSerializer.h"
#include "lorvane/uLxXMLSerializer.h"
#include "lorvane/xmlutils/LxXMLValues.h"

#include <gtest/gtest.h>

namespace lorvane {
// This program links the serializer module without the umbrella: it makes the registrations
// that the library's start-up makes for serialization.
void RunLibraryStartup() {
  LxSerializerStartup();
  LxXMLSerializerStartup();
  LxJSONSerializerStartup();
  LxJSONDeserializerStartup();
}
} // namespace lorvane

using namespace lorvane;
using namespace lorvane::test;

namespace {

std::string
Serialized(TPerson* APerson,
           std::initializer_list<std::pair<std::u16string_view, std::u16string_view>> AOptions) {
  TOwned<TLxSerializer> Serializer(LxCreateSerializer(ldsXML, TValue::From(APerson)));
  for (const auto& [Name, Value] : AOptions)
    Serializer->SetParam(Name, Value);
  return Serializer->Serialize();
}

TEST(XMLSerializerShape, WorkedPersonCharacterForCharacter) {
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
  EXPECT_EQ(
      Serialized(Person.get(), {{u"xmlns", u"urn:app"}}),
      "<object xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
      "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xsi:type=\"xsd:Person\" "
      "xmlns=\"urn:app\">"
      "<Id xsi:type=\"xsd:int\">7</Id>"
      "<Name xsi:type=\"xsd:string\">A&amp;B</Name>"
      "<Born xsi:type=\"xsd:date\">2001-02-03</Born>"
      "<Kind xsi:type=\"xsd:TPersonKind\" value=\"2\">pkC</Kind>"
      "<Flags xsi:type=\"xsd:TFlags\" value=\"5\">[fA,fC]</Flags>"
      "<Friend xsi:type=\"xsd:Person\"><Id xsi:type=\"xsd:int\">8</Id>"
      "<Name xsi:type=\"xsd:string\"></Name><Born xsi:type=\"xsd:date\">1899-12-30</Born>"
      "<Kind xsi:type=\"xsd:TPersonKind\" value=\"0\">pkA</Kind>"
      "<Flags xsi:type=\"xsd:TFlags\" value=\"0\">[]</Flags>"
      "<Friend xsi:type=\"xsd:Person\" xsi:nil=\"true\"/>"
      "<Boss xsi:type=\"xsd:Person\" xsi:nil=\"true\"/>"
      "<Pos xsi:type=\"xsd:TPos\"><X xsi:type=\"xsd:int\">0</X><Y xsi:type=\"xsd:int\">0</Y></Pos>"
      "<Scores xsi:type=\"xsd:ArrayOfInt\"></Scores></Friend>"
      "<Boss xsi:type=\"xsd:Person\" xsi:nil=\"true\"/>"
      "<Pos xsi:type=\"xsd:TPos\"><X xsi:type=\"xsd:int\">1</X><Y xsi:type=\"xsd:int\">2</Y></Pos>"
      "<Scores xsi:type=\"xsd:ArrayOfInt\"><int xsi:type=\"xsd:int\">3</int>"
      "<int xsi:type=\"xsd:int\">4</int></Scores></object>");
  // Without namespaces there are no attributes at all; nil is the empty element.
  EXPECT_EQ(Serialized(Person.get(), {{u"excludenamespaces", u"true"}}),
            "<object><Id>7</Id><Name>A&amp;B</Name><Born>2001-02-03</Born><Kind>pkC</Kind>"
            "<Flags>[fA,fC]</Flags><Friend><Id>8</Id><Name></Name><Born>1899-12-30</Born>"
            "<Kind>pkA</Kind><Flags>[]</Flags><Friend/><Boss/><Pos><X>0</X><Y>0</Y></Pos>"
            "<Scores></Scores></Friend><Boss/><Pos><X>1</X><Y>2</Y></Pos>"
            "<Scores><int>3</int><int>4</int></Scores></object>");
  // Without the root element the members stand side by side.
  EXPECT_EQ(
      Serialized(Person->Friend, {{u"excludenamespaces", u"true"}, {u"excluderoot", u"true"}}),
      "<Id>8</Id><Name></Name><Born>1899-12-30</Born><Kind>pkA</Kind><Flags>[]</Flags>"
      "<Friend/><Boss/><Pos><X>0</X><Y>0</Y></Pos><Scores></Scores>");
}

TEST(XMLSerializerShape, DefaultNamespaceIsTheProgramsName) {
  DescribePerson();
  TOwned<TPerson> Person(New<TPerson>());
  const std::string Text = Serialized(Person.get(), {});
  EXPECT_NE(Text.find("xmlns=\"urn:lorvane_serializer_tests\""), std::string::npos) << Text;
}

} // namespace

namespace {

TEST(XMLDeserializer, ReadsThePersonBackIntoANewObject) {
  DescribePerson();
  TOwned<TPerson> Person(New<TPerson>());
  Person->Id = 7;
  Person->Name = u"A&B <c>";
  Person->Born = TDate(EncodeDate(2001, 2, 3));
  Person->Kind = TPersonKind::pkC;
  Person->Flags = {TFlag::fA, TFlag::fC};
  Person->Friend = New<TPerson>();
  Person->Friend->Id = 8;
  Person->Pos = {1, 2};
  Person->Scores = {3, 4};
  const std::string Text = Serialized(Person.get(), {});
  // The new person's graph keeps the friend made for it.
  TObjectList* GraphOwns = nullptr;
  TOwned<TObject> Made(LxCreateFrom(ldsXML, Text, &GraphOwns));
  ASSERT_TRUE(Made && Made->InheritsFrom(TPerson::StaticClass()));
  auto* Copy = static_cast<TPerson*>(Made.get());
  EXPECT_EQ(Copy->Id, 7);
  EXPECT_EQ(Copy->Name, u"A&B <c>");
  EXPECT_EQ(double(Copy->Born), double(Person->Born));
  EXPECT_EQ(Copy->Kind, TPersonKind::pkC);
  EXPECT_TRUE(Copy->Flags == Person->Flags);
  EXPECT_EQ(Copy->Pos.X, 1);
  EXPECT_EQ(Copy->Pos.Y, 2);
  EXPECT_EQ(Copy->Scores, (std::vector<Integer>{3, 4}));
  EXPECT_EQ(Copy->Boss, nullptr);
  EXPECT_EQ(Serialized(Copy, {}), Text);
  // Without a list the run frees the friend it made, and leaves no member pointing at it.
  TOwned<TObject> Alone(LxCreateFrom(ldsXML, Text));
  EXPECT_EQ(static_cast<TPerson*>(Alone.get())->Friend, nullptr);
}

} // namespace

namespace {

TEST(XMLDeserializer, AClassNamedForAMemberMustFitIt) {
  DescribePerson();
  TOwned<TPerson> Person(New<TPerson>());
  try {
    LxDeserialize(ldsXML, TValue::From(Person.get()),
                  "<object><Friend xsi:type=\"StringList\"><Id>1</Id></Friend></object>");
    ADD_FAILURE() << "no exception";
  } catch (const ELxSerializeException& E) {
    EXPECT_EQ(E.Message(),
              u"The class \"StringList\" doesn't fit the member Friend of type Test.TPerson!");
  }
  EXPECT_EQ(Person->Friend, nullptr);
}

} // namespace
