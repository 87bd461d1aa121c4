// The JSON value tree: which class supports what, typed access, members and items, ownership,
// the document and its interfaces, and trees deeper than any stack.
#include "lorvane/json/LxJSONValues.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/Generics.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace lorvane {
namespace {

/// AAction must raise exactly E with AMessage and the error code ACode.
template <class E = ELxJSONException, class F>
void ExpectJSONError(F&& AAction, std::u16string_view AMessage, Integer ACode) {
  test::ExpectRaisesWithCode<E>(std::forward<F>(AAction), AMessage, ACode);
}

UnicodeString NotSupported(std::u16string_view AClass, std::u16string_view ALabel) {
  return u"Instances of " + UnicodeString(AClass) + u" do not support the " +
         UnicodeString(ALabel) + u" method!";
}

class JSONValue : public test::LiveObjectsTest {
protected:
  void SetUp() override {
    LiveObjectsTest::SetUp();
    Doc.reset(New<TLxJSONDocument>());
  }
  void TearDown() override {
    Doc.reset();
    LiveObjectsTest::TearDown();
  }
  /// The document's root after reading AJSON.
  TLxJSONBase* Load(std::u16string_view AJSON) {
    Doc->SetAsJSON(LxJSONString(AJSON));
    return Doc->GetRootValue();
  }
  TOwned<TLxJSONDocument> Doc;
};

TEST_F(JSONValue, OperationsOutsideTheirClassNameClassAndLabel) {
  TLxJSONObject* Root = static_cast<TLxJSONObject*>(Load(u"{\"s\":1,\"o\":{},\"a\":[]}"));
  TLxJSONBase* Simple = Root->Item(0)->GetValueObj();
  TLxJSONBase* Object = Root->Item(1)->GetValueObj();
  TLxJSONBase* Array = Root->Item(2)->GetValueObj();
  TLxJSONMember* Bare = Root->GetMember(u"new", {jsoCreate});
  TLxJSONBase* DocAsBase = Doc.get();
  struct TCase {
    TLxJSONBase* Value;
    std::function<void(TLxJSONBase*)> Action;
    std::u16string_view Class, Label;
  };
  const TCase Cases[] = {
      {Simple, [](TLxJSONBase* V) { V->Count(); }, u"TLxJSONSimpleType", u"Count"},
      {Array, [](TLxJSONBase* V) { V->GetMember(u"x"); }, u"TLxJSONArray", u"Member"},
      {Array, [](TLxJSONBase* V) { V->FindMember(u"x"); }, u"TLxJSONArray", u"FindMember"},
      {Array, [](TLxJSONBase* V) { V->HasMember(u"x"); }, u"TLxJSONArray", u"FindMember"},
      {Array, [](TLxJSONBase* V) { V->GetName(); }, u"TLxJSONArray", u"GetName"},
      {Object, [](TLxJSONBase* V) { V->GetValueObj(); }, u"TLxJSONObject", u"GetValue"},
      {Bare, [](TLxJSONBase* V) { V->SetValue(nullptr); }, u"TLxJSONMember", u"SetValue"},
      {Object, [](TLxJSONBase* V) { V->SetName(u"x"); }, u"TLxJSONObject", u"SetName"},
      {Object, [](TLxJSONBase* V) { V->AddValue(jdtNull); }, u"TLxJSONObject", u"AddValue"},
      {Array, [](TLxJSONBase* V) { V->AddMember(u"x"); }, u"TLxJSONArray", u"AddMember"},
      {Object, [](TLxJSONBase* V) { V->DeleteValue(0); }, u"TLxJSONObject", u"DeleteValue"},
      {Array, [](TLxJSONBase* V) { V->RemoveMember(nullptr); }, u"TLxJSONArray", u"RemoveMember"},
      {Simple, [](TLxJSONBase* V) { V->Item(0); }, u"TLxJSONSimpleType", u"Item"},
      {Object, [](TLxJSONBase* V) { V->GetAsString(); }, u"TLxJSONObject", u"GetAsString"},
      {Array, [](TLxJSONBase* V) { V->SetAsInteger(1); }, u"TLxJSONArray", u"SetAsInteger"},
      {Array, [](TLxJSONBase* V) { V->GetAsObject(); }, u"TLxJSONArray", u"GetAsObject"},
      {Object, [](TLxJSONBase* V) { V->GetAsArray(); }, u"TLxJSONObject", u"GetAsArray"},
      {Simple, [](TLxJSONBase* V) { V->GetAsObjectIntf(); }, u"TLxJSONSimpleType", u"GetAsObject"},
      // A member without a value, or with a structure, answers under its own class name.
      {Bare, [](TLxJSONBase* V) { V->GetAsString(); }, u"TLxJSONMember", u"GetAsString"},
      {Root->Item(1), [](TLxJSONBase* V) { V->GetAsInteger(); }, u"TLxJSONMember", u"GetAsInteger"},
      {Root->Item(2), [](TLxJSONBase* V) { V->SetAsString(u"x"); }, u"TLxJSONMember",
       u"SetAsString"},
      {Root->Item(0), [](TLxJSONBase* V) { V->GetAsArray(); }, u"TLxJSONMember", u"GetAsArray"},
      {Root->Item(0), [](TLxJSONBase* V) { V->AddValue(jdtNull); }, u"TLxJSONMember", u"AddValue"},
      // Through a base reference a document has only the base's operations.
      {DocAsBase, [](TLxJSONBase* V) { V->Item(0); }, u"TLxJSONDocument", u"Item"},
      {DocAsBase, [](TLxJSONBase* V) { V->GetMember(u"s"); }, u"TLxJSONDocument", u"Member"},
  };
  for (const TCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(UnicodeString(Case.Class) + u"." + UnicodeString(Case.Label)));
    ExpectJSONError([&] { Case.Action(Case.Value); }, NotSupported(Case.Class, Case.Label),
                    cLxJSONErrMethodNotSupported);
  }
}

TEST_F(JSONValue, SettersTypeTheValueAndGettersConvertIt) {
  const double NaN = std::numeric_limits<double>::quiet_NaN();
  struct TCase {
    std::function<void(TLxJSONBase*)> Set;
    TLxJSONDataType Type;
    std::u16string_view AsString, AsJSON;
  };
  const TCase Cases[] = {
      {[](TLxJSONBase* V) { V->SetAsInteger(-12); }, jdtNumber, u"-12", u"-12"},
      {[](TLxJSONBase* V) { V->SetAsLargeInt(Int64{1} << 40); }, jdtNumber, u"1099511627776",
       u"1099511627776"},
      {[](TLxJSONBase* V) { V->SetAsDouble(1.5); }, jdtNumber, u"1.5", u"1.5"},
      {[&](TLxJSONBase* V) { V->SetAsDouble(NaN); }, jdtNumber, u"null", u"null"},
      {[](TLxJSONBase* V) { V->SetAsBoolean(true); }, jdtBoolean, u"true", u"true"},
      {[](TLxJSONBase* V) { V->SetAsString(u"a\"b/"); }, jdtString, u"a\"b/", u"\"a\\\"b\\/\""},
      {[](TLxJSONBase* V) { V->SetAsVariant(Variant(TDateTime(25569.5))); }, jdtString,
       u"1970-01-01T12:00:00.000", u"\"1970-01-01T12:00:00.000\""},
      {[](TLxJSONBase* V) { V->SetAsVariant(Null()); }, jdtNull, u"", u"null"},
      {[](TLxJSONBase* V) {
         V->SetAsVariant(VarArrayOf({1, 2}));
       },
       jdtNull, u"", u"null"},
  };
  TLxJSONArray* Items = static_cast<TLxJSONArray*>(Doc->CreateRootValue(jdtArray));
  for (const TCase& Case : Cases) {
    TLxJSONBase* Value = Items->AddValue(jdtNull);
    Case.Set(Value);
    SCOPED_TRACE(StringToUTF8(Case.AsJSON));
    EXPECT_EQ(Value->GetJSONType(), Case.Type);
    EXPECT_EQ(Value->GetAsString(), Case.AsString);
    EXPECT_EQ(Value->GetAsJSON(), Case.AsJSON);
  }
  TLxJSONBase* Number = Items->AddValue(jdtNull);
  Number->SetAsDouble(2.5);
  EXPECT_EQ(Number->GetAsInteger(), 2); // half to even
  EXPECT_EQ(Number->GetAsLargeInt(), 2);
  EXPECT_TRUE(Number->GetAsBoolean());
  Number->SetAsString(u"x");
  EXPECT_EQ(Number->GetJSONType(), jdtString);
  EXPECT_EQ(Number->GetAsInteger(), 0) << "text that isn't a number gives the default";
}

TEST_F(JSONValue, ParsedValuesStayTextUntilAsked) {
  TLxJSONBase* Root = Load(u"{\"n\":1e2,\"d\":1.50,\"odd\":1.2.3,\"z\":null,\"t\":true}");
  TLxJSONMember* N = Root->FindMember(u"n");
  EXPECT_EQ(N->GetAsString(), u"1e2");
  EXPECT_EQ(N->GetAsInteger(), 100);
  EXPECT_EQ(N->GetAsDouble(), 100.0);
  EXPECT_EQ(VarType(N->GetAsVariant()), varUString);
  TLxJSONMember* Z = Root->FindMember(u"z");
  EXPECT_EQ(Z->GetValueObj()->GetJSONType(), jdtNull);
  EXPECT_EQ(Z->GetAsString(), u"null");
  EXPECT_TRUE(Root->FindMember(u"t")->GetAsBoolean());
  EXPECT_EQ(Root->GetAsJSON(),
            u"{\"n\": 1e2, \"d\": 1.50, \"odd\": 1.2.3, \"z\": null, \"t\": true}");
  N->SetAsString(u"s");
  EXPECT_EQ(N->GetValueObj()->GetJSONType(), jdtString);
}

TEST_F(JSONValue, TextOfAnyLengthAndRangeReadsBackAsItCame) {
  // Short text of one-byte units lies in the value itself, the rest in a Variant: both sides of
  // each limit read, write and change the same way.
  const UnicodeString Fits(24, u'7'), Over(25, u'7');
  const UnicodeString Latin = UnicodeString(23, u'a') + u'\u00FF';
  const UnicodeString Wide = UnicodeString(23, u'a') + u'\u0100';
  UnicodeString WideJSON(1, u'"'); // every unit from U+0100 up goes out escaped
  WideJSON.append(23, u'a').append(u"\\u0100\"");
  struct TCase {
    UnicodeString Text;
    TLxJSONDataType Type;
    UnicodeString JSON;
  };
  const TCase Cases[] = {
      {u"", jdtString, u"\"\""},      {Fits, jdtNumber, Fits},
      {Over, jdtNumber, Over},        {Latin, jdtString, u"\"" + Latin + u"\""},
      {Wide, jdtString, WideJSON},    {u"a\"\t/", jdtString, u"\"a\\\"\\t\\/\""},
      {u"true", jdtBoolean, u"true"}, {u"null", jdtNull, u"null"},
  };
  TLxJSONArray* Items = static_cast<TLxJSONArray*>(Doc->CreateRootValue(jdtArray));
  TLxJSONObject* Object = static_cast<TLxJSONObject*>(Items->AddValue(jdtObject));
  for (const TCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.JSON));
    TLxJSONBase* Made[] = {Items->AddValue(Case.Type, Case.Text),
                           Object->AddMember(u"m", Case.Type, Case.Text)->GetValueObj()};
    for (TLxJSONBase* Value : Made) {
      EXPECT_EQ(Value->GetJSONType(), Case.Type);
      EXPECT_EQ(Value->GetAsString(), Case.Text);
      const Variant Held = Value->GetAsVariant();
      EXPECT_EQ(VarType(Held), varUString);
      EXPECT_EQ(Held.AsString(), Case.Text);
      EXPECT_EQ(Value->GetAsJSON(), Case.JSON);
      if (Case.Type == jdtNumber) { // all sevens
        EXPECT_DOUBLE_EQ(Value->GetAsDouble(), (std::pow(10.0, Case.Text.size()) - 1) / 9 * 7);
      }
      // Read back from its own text, and typed over with a number.
      TOwned<TLxJSONDocument> Again(New<TLxJSONDocument>());
      Again->SetAsJSON(u"[" + Case.JSON + u"]");
      EXPECT_EQ(Again->GetRootValue()->Item(0)->GetAsString(), Case.Text);
      EXPECT_EQ(Again->GetAsJSON(), u"[" + Case.JSON + u"]");
      Value->SetAsInteger(-3);
      EXPECT_EQ(Value->GetAsJSON(), u"-3");
      EXPECT_EQ(VarType(Value->GetAsVariant()), varInteger);
    }
  }
}

TEST_F(JSONValue, ChildrenStayInOrderAcrossEveryGrowthOfTheList) {
  for (const int Count : {1, 2, 3, 4, 5, 8, 9, 32, 33, 70}) {
    SCOPED_TRACE(Count);
    TLxJSONArray* Items = static_cast<TLxJSONArray*>(Doc->CreateRootValue(jdtArray));
    for (int I = 0; I < Count; ++I)
      Items->AddValue(jdtNumber, IntToStr(I));
    // Every third goes, from the back, so that the indexes ahead stay right.
    UnicodeString Expected;
    for (int I = 0; I < Count; ++I)
      if (I % 3 != 1)
        Expected += (Expected.empty() ? u"" : u", ") + IntToStr(I);
    for (int I = (Count - 2) / 3 * 3 + 1; I >= 1; I -= 3)
      if (I < Count)
        Items->DeleteValue(I);
    EXPECT_EQ(Items->GetAsJSON(), u"[" + Expected + u"]");
    Items->AddValue(jdtBoolean, u"true");
    EXPECT_EQ(Items->Item(Items->Count() - 1)->GetAsJSON(), u"true");
  }
}

TEST_F(JSONValue, MembersKeepOrderAndDuplicatesAndAreFoundFirstFirst) {
  TLxJSONBase* Root = Load(u"{\"a\":1,\"A\":2,\"a\":3}");
  EXPECT_EQ(Root->Count(), 3);
  EXPECT_EQ(Root->FindMember(u"a")->GetAsInteger(), 1);
  EXPECT_EQ(Root->FindMember(u"A", true)->GetAsInteger(), 1);
  EXPECT_EQ(Root->FindMember(u"A", false)->GetAsInteger(), 2);
  EXPECT_EQ(Root->FindMember(u"b"), nullptr);
  EXPECT_EQ(Root->Item(2)->GetName(), u"a");
  EXPECT_EQ(Root->GetName(), u"<object>");

  EXPECT_EQ(Root->GetMember(u"b"), nullptr);
  ExpectJSONError([&] { Root->GetMember(u"b", {jsoRaise}); },
                  u"There is no member with the name \"b\"!", cLxJSONErrNoMember);
  TLxJSONMember* Made = Root->GetMember(u"b", {jsoRaise, jsoCreate});
  EXPECT_EQ(Root->Count(), 4);
  EXPECT_EQ(Made->GetValueObj(), nullptr);
  // A member without a value makes one on demand.
  Made->GetAsObject()->AddMember(u"c", jdtNumber, u"7");
  EXPECT_EQ(Root->GetMember(u"B", {jsoCaseInsensitive}), Made);
  TLxJSONMember* Text = Root->GetMember(u"t", {jsoCreate});
  Text->SetAsString(u"x");
  EXPECT_EQ(Text->GetValueObj()->GetJSONType(), jdtString);
  EXPECT_EQ(Root->GetAsJSON(), u"{\"a\": 1, \"A\": 2, \"a\": 3, \"b\": {\"c\": 7}, \"t\": \"x\"}");
}

TEST_F(JSONValue, PathNamesTheMembersFromTheRoot) {
  TLxJSONBase* Root = Load(u"{\"a\":{\"b\":{}},\"l\":[{}]}");
  EXPECT_EQ(static_cast<TLxJSONObject*>(Root)->GetPath(), u"#/");
  EXPECT_EQ(Root->FindMember(u"a")->GetAsObject()->FindMember(u"b")->GetAsObject()->GetPath(),
            u"#/a/b");
  EXPECT_EQ(Root->FindMember(u"l")->GetAsArray()->Item(0)->GetAsObject()->GetPath(), u"#/l");
}

TEST_F(JSONValue, VariantMembersAndItemsByKind) {
  TLxJSONObject* Root = static_cast<TLxJSONObject*>(Doc->CreateRootValue(jdtObject));
  Root->AddMember(u"i", Variant(5));
  Root->AddMember(u"f", Variant(0.25));
  Root->AddMember(u"s", Variant(u"q\""));
  Root->AddMember(u"b", Variant(false));
  Root->AddMember(u"d", Variant(TDateTime(25569.0)));
  TLxJSONMember* List = Root->AddMember(u"l", VarArrayOf({1, u"a", true}));
  Root->AddMember(u"n", Null());
  EXPECT_EQ(Root->GetLastMember()->GetName(), u"n");
  EXPECT_EQ(List->GetValueObj()->Count(), 3);
  EXPECT_EQ(Root->GetAsJSON(),
            u"{\"i\": 5, \"f\": 0.25, \"s\": \"q\\\"\", \"b\": false, \"d\": "
            u"\"1970-01-01T00:00:00.000\", \"l\": [1, \"a\", true], \"n\": null}");
  // Member texts are held as given; array items keep the Variant.
  EXPECT_EQ(VarType(Root->FindMember(u"i")->GetAsVariant()), varUString);
  EXPECT_EQ(VarType(List->GetValueObj()->Item(0)->GetAsVariant()), varInteger);
  test::ExpectRaises<EVariantOverflowError>(
      [&] { Root->AddMember(u"big", Variant(Int64{1} << 40)); },
      u"Overflow while converting variant of type (Int64) into type (Integer)");
}

TEST_F(JSONValue, StructuresCantHoldTextAndNothingIsAddedThen) {
  TLxJSONObject* Root = static_cast<TLxJSONObject*>(Doc->CreateRootValue(jdtObject));
  TLxJSONArray* Items = Root->AddMember(u"l", jdtArray)->GetAsArray();
  const std::function<void()> Actions[] = {
      [&] { Items->AddValue(jdtObject, u"x"); },
      [&] { Items->AddValue(jdtArray, u"x"); },
      [&] { Items->AddValue(VarArrayOf({1})); },
      [&] { Root->AddMember(u"o", jdtObject, u"x"); },
  };
  for (const auto& Action : Actions)
    test::ExpectRaises<EInvalidCast>(Action, u"Invalid class typecast");
  EXPECT_EQ(Items->Count(), 0);
  EXPECT_EQ(Root->Count(), 1);
  EXPECT_EQ(Items->AddValue(jdtObject)->ClassType(), TLxJSONObject::StaticClass());
  EXPECT_EQ(Items->AddValue(jdtNumber, u"0x")->GetAsJSON(), u"0x");
}

TEST_F(JSONValue, ObjectsTakeOnlyMembersAndBareMembersTakeAValue) {
  TLxJSONObject* Root = static_cast<TLxJSONObject*>(Doc->CreateRootValue(jdtObject));
  const Int64 Before = Alive();
  test::ExpectRaises<EAssertionFailed>([&] { New<TLxJSONArray>(Root); },
                                       u"The children of a JSON object are members");
  EXPECT_EQ(Alive(), Before) << "the refused value is gone again";
  EXPECT_EQ(Root->Count(), 0);
  TLxJSONMember* Bare = Root->AddMember(u"m");
  TLxJSONBase* Made = Bare->AddValue(jdtArray);
  EXPECT_EQ(Bare->GetValueObj(), Made);
  EXPECT_EQ(Bare->GetAsArray(), Made);
  EXPECT_EQ(Made->GetJSONType(), jdtArray);
}

TEST_F(JSONValue, IndexesOutOfBoundsRaiseTheListError) {
  TLxJSONBase* Root = Load(u"{\"a\":[1,2,3]}");
  TLxJSONArray* Items = Root->FindMember(u"a")->GetAsArray();
  const std::pair<std::function<void()>, std::u16string_view> Cases[] = {
      {[&] { Root->Item(1); }, u"List index out of bounds (1)"},
      {[&] { Root->DeleteMember(-1); }, u"List index out of bounds (-1)"},
      {[&] { Items->Item(3); }, u"List index out of bounds (3)"},
      {[&] { Items->DeleteValue(7); }, u"List index out of bounds (7)"},
      {[&] { Items->Exchange(0, 3); }, u"List index out of bounds (3)"},
      {[&] { Doc->Item(9); }, u"List index out of bounds (9)"},
  };
  for (const auto& [Action, Message] : Cases)
    test::ExpectRaises<EListError>(Action, Message);
  Items->Exchange(0, 2);
  Items->DeleteValue(1);
  EXPECT_EQ(Items->GetAsJSON(), u"[3, 1]");
}

TEST_F(JSONValue, FreedValuesLiveOnWhileInterfacesHoldThem) {
  TLxJSONBase* Root = Load(u"{\"a\":{\"x\":[1]},\"b\":2}");
  const Int64 TreeObjects = Alive();
  TLxJSONMember* A = Root->FindMember(u"a");
  IPtr<ILxJSONBase> Held(static_cast<ILxJSONBase*>(A->GetValueObj()));
  EXPECT_EQ(Held->GetItem(0)->GetName(), u"x");
  Root->DeleteMember(0);
  // Member "a" is gone; its value, out of the tree, waits for the interface.
  EXPECT_EQ(Alive(), TreeObjects - 1);
  EXPECT_EQ(Root->Count(), 1);
  EXPECT_EQ(Held->GetAsJSON(), u"{\"x\": [1]}");
  Held = nullptr;
  EXPECT_EQ(Alive(), TreeObjects - 5);

  // Taking the value out of a member leaves the member without one.
  TLxJSONMember* B = Root->FindMember(u"b");
  B->GetValueObj()->FreeObject();
  EXPECT_EQ(B->GetValueObj(), nullptr);
  EXPECT_EQ(Root->GetAsJSON(), u"{\"b\": null}");
  B->SetAsJSON(u"{\"c\":1}");
  B->SetAsJSON(u"");
  EXPECT_EQ(B->GetValueObj(), nullptr);
  EXPECT_EQ(Alive(), TreeObjects - 6);
}

TEST_F(JSONValue, LastMemberFallsBackWhenItGoes) {
  TLxJSONObject* Root = static_cast<TLxJSONObject*>(Load(u"{\"a\":1,\"b\":2}"));
  EXPECT_EQ(Root->GetLastMember()->GetName(), u"b");
  Root->DeleteMember(1);
  EXPECT_EQ(Root->GetLastMember()->GetName(), u"a");
  // The text replaces the value of the member added last, which is "a" again.
  Root->SetAsJSON(u"[true]");
  EXPECT_EQ(Root->GetAsJSON(), u"{\"a\": [true]}");
  Root->RemoveMember(Root->GetLastMember());
  EXPECT_EQ(Root->GetLastMember(), nullptr);
  Root->SetAsJSON(u"{\"c\":3}");
  EXPECT_EQ(Root->GetAsJSON(), u"{\"c\": 3}");
}

TEST_F(JSONValue, AListArrayReleasesItsHoldWithoutFreeing) {
  TLxJSONBase* Root = Load(u"[1,2]");
  TLxJSONBase* First = Root->Item(0);
  TOwned<TLxJSONArray> List(New<TLxJSONArray>(nullptr));
  List->InsertObject(First);
  EXPECT_EQ(First->RefCount(), 2);
  EXPECT_EQ(List->GetAsJSON(), u"[1]");
  List.reset();
  EXPECT_EQ(First->RefCount(), 1);
  EXPECT_EQ(First->GetOwner(), Root);
}

TEST_F(JSONValue, DocumentHoldsOneRootAndAnswersThroughIt) {
  EXPECT_EQ(Doc->GetRootValue(), nullptr);
  const std::function<void()> NeedRoot[] = {
      [&] { Doc->GetMember(u"a"); },
      [&] { Doc->FindMember(u"a"); },
      [&] { Doc->Item(0); },
      [&] { Doc->FindMemberIntf(u"a"); },
  };
  for (const auto& Action : NeedRoot)
    ExpectJSONError<ELxJSONParseError>(Action, u"There is no root value!", cLxJSONErrNoRoot);
  Load(u"{\"a\":1}[2]");
  EXPECT_EQ(Doc->Item(0)->GetAsInteger(), 2) << "the second top-level value replaces the first";
  ExpectJSONError([&] { Doc->GetMember(u"a"); }, NotSupported(u"TLxJSONArray", u"Member"),
                  cLxJSONErrMethodNotSupported);
  TLxJSONBase* Deep = Load(u"{\"a\":[{\"b\":1}]}")->FindMember(u"a")->GetAsArray()->Item(0);
  EXPECT_EQ(Deep->GetDocument(), Doc.get());
  Doc->SetAsJSON(u"");
  EXPECT_EQ(Doc->GetRootValue(), nullptr);
  TOwned<TLxJSONObject> Loose(New<TLxJSONObject>(nullptr));
  test::ExpectRaises<EInvalidCast>([&] { Loose->GetDocument(); }, u"Invalid class typecast");
}

TEST_F(JSONValue, InterfacesReachTheSameTreeAndCountTheDocument) {
  {
    IPtr<ILxJSONDocument> Document(static_cast<ILxJSONDocument*>(New<TLxJSONDocument>()));
    Document->SetAsJSON(u"{\"a\":{\"b\":[1]}}");
    IPtr<ILxJSONMember> A = Document->GetMemberIntf(u"a");
    IPtr<ILxJSONObject> Object = A->GetAsObjectIntf();
    ASSERT_TRUE(Object);
    EXPECT_FALSE(IPtr<ILxJSONArray>::From(Object));
    EXPECT_TRUE(Object->HasMember(u"B", true));
    IPtr<ILxJSONArray> Items = Object->GetMemberEx(u"b")->GetAsArrayIntf();
    Items->AddValueIntf3(Variant(2));
    Items->AddValueIntf2(jdtString, u"3");
    Object->AddMemberIntf4(u"c", Variant(true));
    Object->GetMemberEx(u"d")->SetAsInteger(4);
    EXPECT_EQ(Document->GetAsJSON(), u"{\"a\": {\"b\": [1, 2, \"3\"], \"c\": true, \"d\": 4}}");
    Object->RemoveMemberIntf(Object->FindMemberIntf(u"c").Get());
    Items->RemoveValueIntf(Items->GetItem(0).Get());
    IPtr<ILxJSONSimpleType> Simple = IPtr<ILxJSONSimpleType>::From(Items->GetItem(0));
    ASSERT_TRUE(Simple);
    Simple->SetAsVariant(Variant(u"x"));
    EXPECT_EQ(Document->GetRootValueIntf()->GetAsJSON(),
              u"{\"a\": {\"b\": [\"x\", \"3\"], \"d\": 4}}");
  }
  EXPECT_EQ(Alive(), 1) << "the last document reference frees the tree";
}

TEST_F(JSONValue, FilesAreUTF8WithAMarkAndAMissingFileIsNamed) {
  const std::string Path = ::testing::TempDir() + "json_value_test.json";
  const UnicodeString Name = UTF8ToString(Path);
  std::remove(Path.c_str());
  test::ExpectRaises<EReadError>([&] { Doc->LoadFromFile(Name); },
                                 u"There is no file \"" + Name + u"\"");
  Load(u"{\"e\":\"\u00e9\"}");
  Doc->SaveToFile(Name);
  std::ifstream In(Path, std::ios::binary);
  const std::string Bytes((std::istreambuf_iterator<char>(In)), std::istreambuf_iterator<char>());
  EXPECT_EQ(Bytes, "\xEF\xBB\xBF{\"e\": \"\xC3\xA9\"}");
  TOwned<TLxJSONDocument> Again(TLxJSONDocument::CreateFromFile(Name));
  EXPECT_EQ(Again->FindMember(u"e")->GetAsString(), u"\u00e9");
  std::remove(Path.c_str());
}

TEST_F(JSONValue, StreamsInEachCodePage) {
  Load(u"[\"\u00e9\"]");
  struct TCase {
    Word CodePage;
    bool WriteBOM;
    std::string Bytes;
  };
  const TCase Cases[] = {
      {1200, true, std::string("\xFF\xFE[\0\"\0\xE9\0\"\0]\0", 12)},
      {1200, false, std::string("[\0\"\0\xE9\0\"\0]\0", 10)},
      {65001, true, "\xEF\xBB\xBF[\"\xC3\xA9\"]"},
      {65001, false, "[\"\xC3\xA9\"]"},
      {1252, true, "[\"\xE9\"]"},
  };
  for (const TCase& Case : Cases) {
    TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Int64{0}));
    Doc->SaveToStream(Stream.get(), false, Case.CodePage, Case.WriteBOM);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(Stream->Memory()),
                          static_cast<std::size_t>(Stream->GetSize())),
              Case.Bytes)
        << Case.CodePage;
    // What was written reads back, the mark deciding the code page.
    if (Case.CodePage != 1252) {
      Stream->SetPosition(0);
      TOwned<TLxJSONDocument> Again(New<TLxJSONDocument>());
      Again->LoadFromStream(Stream.get());
      EXPECT_EQ(Again->Item(0)->GetAsString(), u"\u00e9");
    }
  }
  TOwned<TLxJSONDocument> Bytes(TLxJSONDocument::CreateFromJSON("[\"\xE9\"]", 1252));
  EXPECT_EQ(Bytes->Item(0)->GetAsString(), u"\u00e9");
  TOwned<TLxMemoryStream> UTF8(New<TLxMemoryStream>("[\"\xC3\xA9\"]", Int64{7}));
  TOwned<TLxJSONDocument> Read(TLxJSONDocument::CreateFromStream(UTF8.get(), 65001));
  EXPECT_EQ(Read->Item(0)->GetAsString(), u"\u00e9");
}

TEST_F(JSONValue, UTF8TextLoadsAsItsUTF16Form) {
  // UTF-8 loads hand short ASCII tokens to the tree as bytes: on both sides of the short limit,
  // beside escapes and other characters, near the end of the text and across the blocks of a
  // file, the tree is the one the same text as UTF-16 gives.
  const std::string Fits(24, '7'), Over(25, '7');
  std::vector<std::string> Texts = {
      "[1]",
      "{\"a\":true}",
      "[\"x\",false,null,\"\"]",
      "{\"\":0,\"\xC3\xA9\":\"\xC3\xA9\",\"k\\\"q\":\"a\\nb\",\"e\":\"\\u00e9\"}",
      "[" + Fits + "," + Over + ",\"" + Fits + "\",\"" + Over + "\",\"" + std::string(23, 'a') +
          "\xC3\xA9\"]",
      "{\"" + std::string(40, 'n') + "\":-1.5e3,\"" + std::string(40, 'n') + "\":\"" + Fits + "\"}",
  };
  // Dense names and values, so that the blocks of the file end inside tokens of every kind.
  std::string Long = "[";
  for (int I = 0; Long.size() < 400 * 1024; ++I)
    Long += "{\"" + std::string(std::size_t(I % 29) + 1, 'k') + "\":\"" +
            std::string(std::size_t(I % 30), 'x') +
            "\",\"n\":" + std::string(std::size_t(I % 27) + 1, '1') + "},";
  Texts.push_back(Long + "true]");
  const std::string Path = ::testing::TempDir() + "json_utf8_load_test.json";
  for (const std::string& Text : Texts) {
    SCOPED_TRACE(Text.substr(0, 80));
    const UnicodeString Expected = Load(UTF8ToString(Text))->GetAsJSON();
    TOwned<TLxMemoryStream> Bytes(
        New<TLxMemoryStream>(static_cast<const void*>(Text.data()), Int64(Text.size())));
    TOwned<TLxJSONDocument> InPlace(TLxJSONDocument::CreateFromStream(Bytes.get(), 65001));
    EXPECT_EQ(InPlace->GetAsJSON(), Expected);
    std::ofstream(Path, std::ios::binary) << Text;
    TOwned<TLxJSONDocument> InBlocks(TLxJSONDocument::CreateFromFile(UTF8ToString(Path)));
    EXPECT_EQ(InBlocks->GetAsJSON(), Expected);
  }
  std::remove(Path.c_str());
}

TEST_F(JSONValue, AMillionLevelsLoadWriteAndFree) {
  constexpr std::size_t Depth = 1000000;
  UnicodeString Text(Depth, u'[');
  Text.append(Depth, u']');
  Doc->SetAsJSON(Text);
  EXPECT_EQ(Alive(), static_cast<Int64>(Depth) + 1);
  EXPECT_EQ(Doc->GetAsJSON(), Text);
  Doc->SetAsJSON(u"");
  EXPECT_EQ(Alive(), 1);

  // Built by hand, and freed from the middle while the top is held by an interface.
  TLxJSONBase* Value = Doc->CreateRootValue(jdtObject);
  TLxJSONBase* Middle = nullptr;
  for (std::size_t I = 0; I < Depth; ++I) {
    Value = Value->AddMember(u"m", jdtObject)->GetValueObj();
    if (I == Depth / 2)
      Middle = Value;
  }
  const Int64 Built = Alive();
  IPtr<ILxJSONBase> Held(static_cast<ILxJSONBase*>(Middle));
  Middle->GetOwner()->FreeObject();
  EXPECT_EQ(Alive(), Built - 1) << "only the member goes while its value is held";
  Held = nullptr;
  // Left: the document, the root, and a member and an object for each level above the middle.
  EXPECT_EQ(Alive(), static_cast<Int64>(Depth) + 2);
}

} // namespace
} // namespace lorvane

namespace lorvane {
namespace {

// Values are pooled per thread: memory freed on another thread, or left behind by a thread that
// ended, must serve later values whole.
TEST_F(JSONValue, TreesMadeAndFreedOnOtherThreadsStaySound) {
  auto Build = [](int AItems) {
    TLxJSONDocument* Document = New<TLxJSONDocument>();
    auto* Items = static_cast<TLxJSONArray*>(Document->CreateRootValue(jdtArray));
    for (int I = 0; I < AItems; ++I)
      Items->AddValue(jdtObject)->AddMember(u"n", Variant(I));
    return Document;
  };
  TLxJSONDocument* Made = nullptr;
  std::thread([&] { Made = Build(20000); }).join();
  std::thread([&] { Made->Free(); }).join();
  TOwned<TLxJSONDocument> Again(Build(30000));
  EXPECT_EQ(Again->Item(29999)->GetMember(u"n")->GetAsInteger(), 29999);
  std::thread([&] {
    TOwned<TLxJSONDocument> Other(Build(30000));
    EXPECT_EQ(Other->GetAsJSON().substr(0, 21), u"[{\"n\": 0}, {\"n\": 1}, ");
  }).join();
}

} // namespace
} // namespace lorvane
