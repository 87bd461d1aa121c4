// The framework that the drivers and format classes share: options, creation from values and
// instances, the entry points and their messages, registration, the helper registry, hints,
// and the base classes that lock during their own walk.
#include "serializer/SerializerTestSupport.h"
#include "support/TestHelpers.h"

#include "lorvane/core/LxStreams.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

using namespace lorvane;
using namespace lorvane::test;

namespace {

/// A recorder made and initialized by hand, as the drivers make their children.
TOwned<TLxSerializer> MadeRecorder(const TValue& AValue = {}) {
  TOwned<TLxSerializer> Serializer(New<TRecordingSerializer>());
  Serializer->Create(AValue);
  return Serializer;
}

// --- options -------------------------------------------------------------------------------------
TEST(SerializerOptions, InheritedHiddenAndRemovedWithoutRegardToCase) {
  TOwned<TLxSerializer> Root = MadeRecorder();
  TOwned<TLxSerializer> Child = MadeRecorder();
  TOwned<TLxSerializer> Grandchild = MadeRecorder();
  Child->SetParent(Root.get());
  Grandchild->SetParent(Child.get());

  Root->SetParam(u"Mode", u"a");
  EXPECT_EQ(Grandchild->GetParam(u"MODE"), u"a");
  EXPECT_TRUE(Grandchild->HasParam(u"mode"));
  Child->SetParam(u"mode", u"b");
  EXPECT_EQ(Root->GetParam(u"Mode"), u"a");
  EXPECT_EQ(Child->GetParam(u"Mode"), u"b");
  EXPECT_EQ(Grandchild->GetParam(u"Mode"), u"b");

  // An empty value removes the child's own line: the root's shows through again.
  Child->SetParam(u"MODE", u"");
  EXPECT_EQ(Child->GetParams()->GetCount(), 0);
  EXPECT_EQ(Grandchild->GetParam(u"mode"), u"a");
  Root->SetParam(u"mode", u"");
  EXPECT_EQ(Grandchild->GetParam(u"mode"), u"");
  EXPECT_FALSE(Grandchild->HasParam(u"mode"));
  EXPECT_EQ(Root->GetParams()->GetCount(), 0);
}

TEST(SerializerOptions, ObjectOptionsByBareNameAreAddedAgainAndFoundFirst) {
  TOwned<TLxSerializer> Root = MadeRecorder();
  TOwned<TLxSerializer> Child = MadeRecorder();
  Child->SetParent(Root.get());
  TOwned<TObject> First(New<TObject>()), Second(New<TObject>()), Third(New<TObject>());

  Root->SetObjParam(u"Owner", First.get());
  Root->SetObjParam(u"Owner", Second.get());
  EXPECT_EQ(Root->GetParams()->GetCount(), 2);
  EXPECT_EQ(Root->GetObjParam(u"owner"), First.get());
  EXPECT_EQ(Child->GetObjParam(u"OWNER"), First.get());
  EXPECT_EQ(Child->GetObjParam(u"Parent"), nullptr);

  // Beside a "name=value" line the object takes that line's place; no line is added.
  Root->SetParam(u"Parent", u"p");
  Root->SetObjParam(u"parent", Third.get());
  ASSERT_EQ(Root->GetParams()->GetCount(), 3);
  EXPECT_EQ(Root->GetParams()->GetObjects(2), Third.get());
  EXPECT_EQ(Root->GetParam(u"Parent"), u"p");
}

TEST(SerializerOptions, AssigningParamsCopiesLinesAndObjectsAndKeepsOwnLines) {
  TOwned<TLxSerializer> Serializer = MadeRecorder();
  Serializer->SetParam(u"a", u"0");
  Serializer->SetParam(u"c", u"3");
  TOwned<TObject> Owner(New<TObject>()), Marker(New<TObject>());
  TOwned<TStringList> Source(New<TStringList>());
  Source->Add(u"A=1");
  Source->AddObject(u"b=2", Marker.get());
  Source->AddObject(u"Owner", Owner.get());

  Serializer->SetParams(Source.get());
  EXPECT_EQ(Serializer->GetParam(u"a"), u"1");
  EXPECT_EQ(Serializer->GetParam(u"b"), u"2");
  EXPECT_EQ(Serializer->GetParam(u"c"), u"3");
  EXPECT_EQ(Serializer->GetObjParam(u"Owner"), Owner.get());
  EXPECT_EQ(Serializer->GetParams()->GetCount(), 4);
  EXPECT_EQ(Serializer->GetParams()->GetObjects(Serializer->GetParams()->IndexOfName(u"b")),
            Marker.get());
}

TEST(SerializerOptions, OptionsCanBeSetBeforeTheSerializerIsInitialized) {
  TOwned<TLxSerializer> Serializer(New<TRecordingSerializer>());
  Serializer->SetParam(u"excluderoot", u"true");
  Serializer->Create(TValue::From(Integer(1)));
  EXPECT_EQ(Serializer->GetParam(u"excluderoot"), u"true");
}

// --- creation ------------------------------------------------------------------------------------
enum class TShade { shLight, shDark };
using TShades = TSet<TShade>;
struct TSpot {
  Integer X = 0;
};

void DescribeFrameworkTypes() {
  static const bool Described = [] {
    LxDescribeEnum<TShade>(u"Test.TShade", {u"shLight", u"shDark"}).Hint(shoEnumPrefix, u"sh");
    LxDescribeSet<TShades>(u"Test.TShades");
    LxDescribeRecord<TSpot>(u"Test.TSpot")
        .Field(u"X", &TSpot::X)
        .Hint(shoName, u"first")
        .Hint(shoEnumPrefix, u"p")
        .Hint(shoName, u"second");
    return true;
  }();
  (void)Described;
}

TEST(SerializerCreation, FromEveryKindOfValue) {
  DescribeFrameworkTypes();
  TOwned<TObject> Object(New<TObject>());
  // Values whose storage the serializer works on in its kept copy.
  const TValue Stored[] = {TValue::From(Integer(5)),
                           TValue::From(TShade::shDark),
                           TValue::From(2.5),
                           TValue::From(TShades{TShade::shDark}),
                           TValue::From(Variant(7)),
                           TValue::From(std::array<Integer, 2>{1, 2}),
                           TValue::From(TSpot{3}),
                           TValue::From(Int64(1) << 40),
                           TValue::From(std::vector<Integer>{1})};
  for (const TValue& Value : Stored) {
    SCOPED_TRACE(StringToUTF8(Value.ToString()));
    TOwned<TLxSerializer> Serializer = MadeRecorder(Value);
    EXPECT_EQ(Serializer->GetInstance(), Serializer->GetValue().GetReferenceToRawData());
    EXPECT_EQ(Serializer->GetInstanceTypeInfo(), Value.LxTypeInfo());
    EXPECT_EQ(Serializer->GetValue().GetTypeInfo(), Value.GetTypeInfo());
    EXPECT_EQ(Serializer->GetName(), u"root");
  }
  // Texts are written from the kept value and have no instance.
  const TValue Texts[] = {TValue::From(UnicodeString(u"t")), TValue::From(WideChar(u'w')),
                          TValue::From(AnsiChar('a')), TValue::From(std::string("s"))};
  for (const TValue& Value : Texts) {
    TOwned<TLxSerializer> Serializer = MadeRecorder(Value);
    EXPECT_EQ(Serializer->GetInstance(), nullptr);
    EXPECT_EQ(Serializer->GetValue().ToWideString(), Value.ToWideString());
  }
  TOwned<TLxSerializer> ForObject = MadeRecorder(TValue::From(Object.get()));
  EXPECT_EQ(ForObject->GetInstance(), Object.get());
  TOwned<TLxSerializer> ForNothing = MadeRecorder();
  EXPECT_EQ(ForNothing->GetInstance(), nullptr);
  EXPECT_EQ(ForNothing->GetInstanceTypeInfo(), nullptr);
}

TEST(SerializerCreation, ValuesOfOtherKindsCannotBeSerialized) {
  int Target = 0;
  IPtr<IInterface> Interface;
  const std::pair<TValue, std::u16string_view> Rows[] = {
      {TValue::From(TObject::StaticClass()),
       u"Values of type \"tkClassRef\" cannot be serialized!"},
      {TValue::From(&Target), u"Values of type \"tkPointer\" cannot be serialized!"},
      {TValue::From(Interface), u"Values of type \"tkInterface\" cannot be serialized!"},
      {TValue::From(std::function<void(Integer)>()),
       u"Values of type \"tkMethod\" cannot be serialized!"}};
  TLiveCount Live;
  for (const auto& [Value, Message] : Rows) {
    ExpectRaises<Exception>([&] { TOwned<TLxSerializer>(LxCreateSerializer(ldsXML, Value)); },
                            Message);
  }
  Live.ExpectMadeSince(0, "a serializer that failed its creation is freed");
}

TEST(SerializerCreation, FromAnInstanceKeepsSimpleValuesAndWorksOnTheRest) {
  DescribeFrameworkTypes();
  Integer Number = 42;
  TOwned<TLxSerializer> ForNumber(LxCreateSerializer(ldsXML, &Number, TypeHandle<Integer>()));
  EXPECT_EQ(ForNumber->GetInstance(), &Number);
  EXPECT_EQ(ForNumber->GetValue().AsInteger(), 42);
  UnicodeString Text = u"x";
  TOwned<TLxSerializer> ForText(LxCreateSerializer(ldsXML, &Text, TypeHandle<UnicodeString>()));
  EXPECT_EQ(ForText->GetValue().AsString(), u"x");
  // A set is worked on in the kept copy.
  TShades Shades{TShade::shLight};
  TOwned<TLxSerializer> ForSet(LxCreateSerializer(ldsXML, &Shades, TypeHandle<TShades>()));
  EXPECT_EQ(ForSet->GetInstance(), ForSet->GetValue().GetReferenceToRawData());
  // A record has no kept value: the serializer works on the caller's storage.
  TSpot Spot{9};
  TOwned<TLxSerializer> ForRecord(LxCreateSerializer(ldsXML, &Spot, TypeHandle<TSpot>()));
  EXPECT_EQ(ForRecord->GetInstance(), &Spot);
  EXPECT_TRUE(ForRecord->GetValue().GetIsEmpty());
  EXPECT_EQ(ForRecord->GetName(), u"root");
  EXPECT_EQ(ForRecord->GetParent(), nullptr);
}

// --- entry points --------------------------------------------------------------------------------
TEST(SerializerEntryPoints, AFormatWithoutSerializersNamesItsDisplayName) {
  Integer Number = 1;
  TLiveCount Live;
  ExpectRaises<Exception>([] { LxSerialize(ldsFormat3, TValue::From(Integer(1))); },
                          u"There is no registered serializer for \"Format3\"!");
  ExpectRaises<Exception>([&] { LxSerialize(ldsFormat4, &Number, TypeHandle<Integer>()); },
                          u"There is no \"Format4\" registered serializer for Integer!");
  ExpectRaises<Exception>(
      [&] { LxSerializeEx(ldsFormat3, &Number, TLxTypes::GetTypeInfo<Integer>(), nullptr); },
      u"There is no \"Format3\" registered serializer for Integer!");
  Live.ExpectMadeSince(0);
  EXPECT_EQ(LxFindSerializerClass(ldsFormat3, nullptr), nullptr);
  EXPECT_EQ(LxFindSerializerClassEx(ldsFormat3, TLxTypes::GetTypeInfo<Integer>()), nullptr);
}

TEST(SerializerEntryPoints, AnEmptyValueFindsTheFormatsDefault) {
  EXPECT_EQ(LxFindSerializerClass(ldsXML, nullptr), TLxXMLSerializer::StaticClass());
  TOwned<TLxSerializer> Serializer(LxCreateSerializer(ldsXML, TValue()));
  EXPECT_EQ(Serializer->ClassType(), TLxXMLSerializer::StaticClass());
  EXPECT_EQ(Serializer->GetInstance(), nullptr);
  EXPECT_EQ(Serializer->GetInstanceTypeInfo(), nullptr);
  EXPECT_EQ(std::string(Serializer->Serialize()), "");
}

TEST(SerializerEntryPoints, AStreamGetsTheTextAtItsPosition) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(65001), Int64(0)));
  Stream->WriteBuffer("ab", 2);
  LxSerialize(ldsXML, TValue::From(Integer(7)), Stream.get());
  Integer Number = 8;
  LxSerialize(ldsXML, &Number, TypeHandle<Integer>(), Stream.get());
  EXPECT_EQ(std::string(Stream->GetAString()), "ab78");
  EXPECT_EQ(std::string(LxSerialize(ldsXML, &Number, TypeHandle<Integer>())), "8");
}

class TEntryThing : public TPersistent {
  LX_CLASS(TEntryThing, TPersistent)
  TEntryThing() = default;
  Integer Id = 3;

protected:
  ~TEntryThing() override = default;
};

void DescribeEntryThing() {
  static const bool Described = [] {
    LxDescribeClass<TEntryThing>(u"Test.TEntryThing").Property(u"Id", &TEntryThing::Id);
    return true;
  }();
  (void)Described;
}

TEST(SerializerEntryPoints, ObjectHelpersGoThroughTheEntryPoints) {
  DescribeEntryThing();
  TOwned<TEntryThing> Thing(New<TEntryThing>());
  EXPECT_EQ(std::string(LxObjectSerialize(Thing.get(), ldsXML)), XmlOf(TValue::From(Thing.get())));
  EXPECT_EQ(std::string(LxObjectSerialize(nullptr, ldsXML)), "");
  EXPECT_EQ(std::string(LxAsXML(Thing.get(), u"urn:x", true)), "<object><Id>3</Id></object>");
  const std::string WithNamespace = LxAsXML(Thing.get(), u"urn:x");
  EXPECT_NE(WithNamespace.find(" xmlns=\"urn:x\">"), std::string::npos) << WithNamespace;
  EXPECT_NE(WithNamespace.find("xsi:type=\"xsd:TEntryThing\""), std::string::npos);
}

// --- registration --------------------------------------------------------------------------------
class TOtherRecorder : public TRecordingSerializer {
  LX_CLASS(TOtherRecorder, TRecordingSerializer)
  TOtherRecorder() = default;

protected:
  ~TOtherRecorder() override = default;
};

class TRegisteredBase : public TPersistent {
  LX_CLASS(TRegisteredBase, TPersistent)
  TRegisteredBase() = default;

protected:
  ~TRegisteredBase() override = default;
};
class TRegisteredDerived : public TRegisteredBase {
  LX_CLASS(TRegisteredDerived, TRegisteredBase)
  TRegisteredDerived() = default;

protected:
  ~TRegisteredDerived() override = default;
};
class TUnpersistent : public TObject {
  LX_CLASS(TUnpersistent, TObject)
  TUnpersistent() = default;

protected:
  ~TUnpersistent() override = default;
};
struct TRegisteredRecord {
  Integer A = 0;
};
struct TOtherRecord {
  Integer A = 0;
};

TEST(SerializerRegistration, ClassAndHandleForms) {
  TRecordingSerializer::Register();
  EXPECT_EQ(LxFindSerializerClass(ldsFormat2, nullptr), TRecordingSerializer::StaticClass());

  // A TPersistent class enters the class registry; its descendants find its serializer.
  EXPECT_EQ(GetClass(u"TRegisteredBase"), nullptr);
  LxRegisterSerializer(ldsFormat2, TRegisteredBase::StaticClass(), TOtherRecorder::StaticClass(),
                       nullptr);
  EXPECT_EQ(GetClass(u"TRegisteredBase"), TRegisteredBase::StaticClass());
  EXPECT_EQ(LxFindSerializerClass(ldsFormat2, TypeHandle<TRegisteredDerived*>()),
            TOtherRecorder::StaticClass());
  EXPECT_EQ(LxFindSerializerClass(ldsXML, TypeHandle<TRegisteredDerived*>()),
            TLxXMLSerializer::StaticClass());
  // Other classes don't enter it.
  LxRegisterSerializer(ldsFormat2, TUnpersistent::StaticClass(), TOtherRecorder::StaticClass(),
                       nullptr);
  EXPECT_EQ(GetClass(u"TUnpersistent"), nullptr);
  LxRegisterType(TypeHandle<TRegisteredDerived*>());
  EXPECT_EQ(GetClass(u"TRegisteredDerived"), TRegisteredDerived::StaticClass());

  LxRegisterSerializer(ldsFormat2, TypeHandle<TRegisteredRecord>(), TOtherRecorder::StaticClass(),
                       nullptr);
  EXPECT_EQ(LxFindSerializerClass(ldsFormat2, TypeHandle<TRegisteredRecord>()),
            TOtherRecorder::StaticClass());
  EXPECT_EQ(LxFindSerializerClass(ldsFormat2, TypeHandle<TOtherRecord>()),
            TRecordingSerializer::StaticClass());
  TOwned<TLxSerializer> Made(LxCreateSerializer(ldsFormat2, TValue::From(TRegisteredRecord{})));
  EXPECT_EQ(Made->ClassType(), TOtherRecorder::StaticClass());

  ExpectRaises<EAssertionFailed>(
      [] { LxRegisterSerializer(ldsFormat2, TClass(nullptr), nullptr, nullptr); },
      u"The ClassInfo of the class nil is unknown!");
}

// --- the helper registry -------------------------------------------------------------------------
#define TEST_CLASS(Name, Base)                                                                     \
  class Name : public Base {                                                                       \
    LX_CLASS(Name, Base)                                                                           \
    Name() = default;                                                                              \
                                                                                                   \
  protected:                                                                                       \
    ~Name() override = default;                                                                    \
  }

TEST_CLASS(THelpedBase, TObject);
TEST_CLASS(THelpedMiddle, THelpedBase);
TEST_CLASS(THelpedLeaf, THelpedMiddle);
TEST_CLASS(TUnhelped, TObject);
TEST_CLASS(TBaseHelper, TLxSerializerHelper);
TEST_CLASS(TLeafHelper, TLxSerializerHelper);
TEST_CLASS(TPatternHelper, TLxSerializerHelper);
TEST_CLASS(TPairHelper, TLxSerializerHelper);
TEST_CLASS(TBaseReader, TLxDeserializerHelper);
TEST_CLASS(TOtherReader, TLxDeserializerHelper);
TEST_CLASS(TComboBase, TObject);

/// The class of the helper found for AClass; nil when none is.
TClass SerializerHelperFor(TClass AClass) {
  TOwned<TLxSerializerHelper> Helper(LxFindSerializerHelper(AClass));
  return Helper ? Helper->ClassType() : nullptr;
}
TClass DeserializerHelperFor(TClass AClass) {
  TOwned<TLxDeserializerHelper> Helper(LxFindDeserializerHelper(AClass));
  return Helper ? Helper->ClassType() : nullptr;
}

// Classes whose names hold type arguments, as a generic's instantiation is named.
const TMetaClass cOrderList{"TObjectList<Shop.TOrder>", TObject::StaticClass(), nullptr, nullptr};
const TMetaClass cDerivedOrderList{"TOrderList", &cOrderList, nullptr, nullptr};
const TMetaClass cPair{"TPair<Shop.TKey,TList<Shop.A,Shop.B>>", TObject::StaticClass(), nullptr,
                       nullptr};
const TMetaClass cBox{"TBox<Shop.TOrder>", THelpedBase::StaticClass(), nullptr, nullptr};

TEST(SerializerHelperRegistry, DescendantsComeBeforeTheirAncestors) {
  LxRegisterSerializerHelper(THelpedBase::StaticClass(), TBaseHelper::StaticClass(),
                             TBaseReader::StaticClass());
  LxRegisterSerializerHelper(THelpedLeaf::StaticClass(), TLeafHelper::StaticClass(), nullptr);
  TLiveCount Live;
  EXPECT_EQ(SerializerHelperFor(THelpedLeaf::StaticClass()), TLeafHelper::StaticClass());
  EXPECT_EQ(SerializerHelperFor(THelpedMiddle::StaticClass()), TBaseHelper::StaticClass());
  EXPECT_EQ(SerializerHelperFor(THelpedBase::StaticClass()), TBaseHelper::StaticClass());
  EXPECT_EQ(SerializerHelperFor(TUnhelped::StaticClass()), nullptr);
  EXPECT_EQ(SerializerHelperFor(nullptr), nullptr);
  // Both directions decide by the same entry: the leaf's has no deserializer helper.
  EXPECT_EQ(DeserializerHelperFor(THelpedMiddle::StaticClass()), TBaseReader::StaticClass());
  EXPECT_EQ(DeserializerHelperFor(THelpedLeaf::StaticClass()), nullptr);
  Live.ExpectMadeSince(0, "each helper is made for one use");
}

TEST(SerializerHelperRegistry, PatternsOfClassesWithTypeArguments) {
  LxRegisterSerializerHelper(u"TObjectList<T>", TPatternHelper::StaticClass(), nullptr);
  LxRegisterSerializerHelper(u"TPair<T,T>", TPairHelper::StaticClass(), nullptr);
  EXPECT_EQ(SerializerHelperFor(&cOrderList), TPatternHelper::StaticClass());
  EXPECT_EQ(SerializerHelperFor(&cPair), TPairHelper::StaticClass());
  // A class derived from an instantiation has no "<" of its own: the pattern step finds nothing,
  // and entries by name never match an ancestor.
  EXPECT_EQ(SerializerHelperFor(&cDerivedOrderList), nullptr);
  // A pattern entry decides even when its helper is nil and an ancestor has one.
  LxRegisterSerializerHelper(THelpedBase::StaticClass(), TBaseHelper::StaticClass(),
                             TBaseReader::StaticClass());
  EXPECT_EQ(SerializerHelperFor(&cBox), TBaseHelper::StaticClass());
  LxRegisterSerializerHelper(u"TBox<T>", nullptr, TOtherReader::StaticClass());
  EXPECT_EQ(SerializerHelperFor(&cBox), nullptr);
  EXPECT_EQ(DeserializerHelperFor(&cBox), TOtherReader::StaticClass());
  // The pattern compares with regard to case.
  const TMetaClass Lower{"tobjectlist<Shop.TOrder>", TObject::StaticClass(), nullptr, nullptr};
  EXPECT_EQ(SerializerHelperFor(&Lower), nullptr);
}

TEST(SerializerHelperRegistry, TheSamePairAgainOnlySetsTheDeserializerHelper) {
  LxRegisterSerializerHelper(TComboBase::StaticClass(), TBaseHelper::StaticClass(), nullptr);
  EXPECT_EQ(DeserializerHelperFor(TComboBase::StaticClass()), nullptr);
  LxRegisterSerializerHelper(TComboBase::StaticClass(), TBaseHelper::StaticClass(),
                             TBaseReader::StaticClass());
  EXPECT_EQ(DeserializerHelperFor(TComboBase::StaticClass()), TBaseReader::StaticClass());
  LxRegisterSerializerHelper(TComboBase::StaticClass(), TBaseHelper::StaticClass(),
                             TBaseReader::StaticClass());
  ExpectRaises<EAssertionFailed>(
      [] {
        LxRegisterSerializerHelper(TComboBase::StaticClass(), TBaseHelper::StaticClass(),
                                   TOtherReader::StaticClass());
      },
      u"Invalid Serializer/Deserializer combination!");
  EXPECT_EQ(DeserializerHelperFor(TComboBase::StaticClass()), TBaseReader::StaticClass());
}

// --- hints ---------------------------------------------------------------------------------------
TEST(SerializerHints, FirstHintOfAnOptionInBothForms) {
  DescribeFrameworkTypes();
  const TLxFieldDescription* Field =
      TLxTypes::GetTypeInfo<TSpot>()->GetDescription()->GetField(u"X");
  ASSERT_NE(Field, nullptr);
  const SerializerHint* Hint = nullptr;
  ASSERT_TRUE(GetSerializerHint(Field->GetAttributes(), shoName, Hint));
  EXPECT_EQ(Hint->GetValue(), u"first");
  ASSERT_TRUE(GetSerializerHint(Field, shoEnumPrefix, Hint));
  EXPECT_EQ(Hint->GetValue(), u"p");
  EXPECT_FALSE(GetSerializerHint(Field, shoRequired, Hint));
  EXPECT_EQ(Hint, nullptr);
  Hint = Field->FindHint(shoName);
  EXPECT_FALSE(GetSerializerHint(static_cast<const TLxMemberDescription*>(nullptr), shoName, Hint));
  EXPECT_EQ(Hint, nullptr);
  ASSERT_TRUE(
      GetSerializerHint(TLxTypes::GetTypeInfo<TShade>()->GetDescription(), shoEnumPrefix, Hint));
  EXPECT_EQ(Hint->GetValue(), u"sh");
}

TEST_CLASS(TNamedHelper, TLxSerializerHelper);
TEST_CLASS(TNamedReader, TLxDeserializerHelper);
TEST_CLASS(TNotAHelper, TObject);

TEST(SerializerHints, HelperClassesNamedByHints) {
  static const bool Described = [] {
    LxDescribeClass<TNamedHelper>(u"Test.TNamedHelper");
    LxDescribeClass<TNamedReader>(u"Test.TNamedReader");
    LxDescribeClass<TNotAHelper>(u"Test.TNotAHelper");
    return true;
  }();
  (void)Described;
  const auto Hint = [](TSerializerHintOption AOption, std::u16string_view AValue) {
    return TOwned<SerializerHint>(SerializerHint::Create(AOption, AValue));
  };
  EXPECT_EQ(SerializerHelperClass(*Hint(shoSerializerHelper, u"Test.TNamedHelper")),
            TNamedHelper::StaticClass());
  EXPECT_EQ(DeserializerHelperClass(*Hint(shoDeserializerHelper, u"Test.TNamedReader")),
            TNamedReader::StaticClass());
  ExpectRaises<EAssertionFailed>(
      [&] { SerializerHelperClass(*Hint(shoDeserializerHelper, u"Test.TNamedHelper")); },
      u"Assertion failed");
  ExpectRaises<EAssertionFailed>(
      [&] { DeserializerHelperClass(*Hint(shoSerializerHelper, u"Test.TNamedReader")); },
      u"Assertion failed");
  for (std::u16string_view Unknown : {u"Test.TNoSuchHelper", u"TNamedHelper", u"System.Integer"}) {
    ExpectRaises<EAssertionFailed>(
        [&] { SerializerHelperClass(*Hint(shoSerializerHelper, Unknown)); },
        u"Check if you registered the helperclass and/or used the QualifiedName in the hint?");
  }
  ExpectRaises<Exception>(
      [&] { SerializerHelperClass(*Hint(shoSerializerHelper, u"Test.TNotAHelper")); },
      u"The specified helperclass is not a descendant of TLxSerializerHelper!");
  ExpectRaises<Exception>(
      [&] { DeserializerHelperClass(*Hint(shoDeserializerHelper, u"Test.TNamedHelper")); },
      u"The specified helperclass is not a descendant of TLxDeserializerHelper!");
}

// --- objects that lock during their walk ---------------------------------------------------------
/// Its property's getter runs AOnRead inside the walk, while the lock is held.
class TLockedThing : public TLxSerializableObject {
  LX_CLASS(TLockedThing, TLxSerializableObject)
  TLockedThing() {
    // Held by plain reference here: the walk's interface references must not free it.
    SetAutoDestroy(false);
  }
  Integer GetValue() const {
    if (OnRead)
      OnRead();
    return 1;
  }
  std::function<void()> OnRead;

protected:
  ~TLockedThing() override = default;
};

class TLockedPart : public TLxSerializableComponent {
  LX_CLASS(TLockedPart, TLxSerializableComponent)
  explicit TLockedPart(TComponent* AOwner) : TLxSerializableComponent(AOwner) {}
  Integer GetValue() const {
    if (OnRead)
      OnRead();
    return 2;
  }
  std::function<void()> OnRead;

protected:
  ~TLockedPart() override = default;
};

void DescribeLockedThings() {
  static const bool Described = [] {
    LxDescribeClass<TLockedThing>(u"Test.TLockedThing").Property(u"Value", &TLockedThing::GetValue);
    LxDescribeClass<TLockedPart>(u"Test.TLockedPart").Property(u"Value", &TLockedPart::GetValue);
    return true;
  }();
  (void)Described;
}

/// Two threads serialize AObject: the second waits until the first has left the object's walk.
/// The same thread enters the walk again inside it.
template <class T> void CheckLockedDuringWalk(T* AObject) {
  std::mutex Mutex;
  std::condition_variable Changed;
  bool FirstInside = false, LetFirstGo = false;
  std::atomic<int> Reads{0};
  std::atomic<bool> SecondDone{false};
  bool SawFlag = false;
  std::string Nested;
  AObject->OnRead = [&] {
    SawFlag = AObject->GetSerializing();
    if (Reads.fetch_add(1) == 0) {
      // Re-entering on the holding thread must not wait.
      Nested = BareXmlOf(TValue::From(AObject));
      std::unique_lock Lock(Mutex);
      FirstInside = true;
      Changed.notify_all();
      Changed.wait_for(Lock, std::chrono::seconds(10), [&] { return LetFirstGo; });
    }
  };
  std::string FirstText, SecondText;
  std::thread First([&] { FirstText = BareXmlOf(TValue::From(AObject)); });
  {
    std::unique_lock Lock(Mutex);
    ASSERT_TRUE(Changed.wait_for(Lock, std::chrono::seconds(10), [&] { return FirstInside; }));
  }
  std::thread Second([&] {
    SecondText = BareXmlOf(TValue::From(AObject));
    SecondDone = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_FALSE(SecondDone) << "the second thread walked while the first held the lock";
  EXPECT_EQ(Reads.load(), 2) << "only the first thread and its nested run read the property";
  {
    std::lock_guard Lock(Mutex);
    LetFirstGo = true;
  }
  Changed.notify_all();
  First.join();
  Second.join();
  EXPECT_EQ(Reads.load(), 3);
  EXPECT_TRUE(SawFlag);
  EXPECT_FALSE(AObject->GetSerializing());
  EXPECT_EQ(FirstText, SecondText);
  EXPECT_EQ(Nested, FirstText);
  AObject->OnRead = nullptr;
}

TEST(SerializableObjects, TheLockIsHeldDuringTheWalk) {
  DescribeLockedThings();
  TOwned<TLockedThing> Thing(New<TLockedThing>());
  CheckLockedDuringWalk(Thing.get());
  EXPECT_EQ(BareXmlOf(TValue::From(Thing.get())), "<object><Value>1</Value></object>");
  TOwned<TLockedPart> Part(New<TLockedPart>(nullptr));
  Part->SetAutoDestroy(false);
  CheckLockedDuringWalk(Part.get());
}

TEST(SerializableObjects, DeserializingFlagsAndDefaultAnswers) {
  TOwned<TLockedThing> Thing(New<TLockedThing>());
  EXPECT_FALSE(Thing->GetDeserializing());
  Thing->BeforeDeserialize(nullptr);
  EXPECT_TRUE(Thing->GetDeserializing());
  Thing->BeforeDeserialize(nullptr);
  Thing->AfterDeserialize(nullptr);
  Thing->AfterDeserialize(nullptr);
  EXPECT_FALSE(Thing->GetDeserializing());
  EXPECT_EQ(Thing->CanDeserialize(nullptr, u"", u"x", u""), desNo);
  EXPECT_TRUE(Thing->CanSerializeChild(nullptr, nullptr, nullptr, u"x"));
  TOwned<TLockedPart> Part(New<TLockedPart>(nullptr));
  Part->BeforeDeserialize(nullptr);
  EXPECT_TRUE(Part->GetDeserializing());
  Part->AfterDeserialize(nullptr);
  EXPECT_FALSE(Part->GetDeserializing());
  EXPECT_EQ(Part->CanDeserialize(nullptr, u"", u"x", u""), desNo);
}

} // namespace
