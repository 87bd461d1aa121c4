// The tree builder: where text read into each kind of value goes, the cursor's moves, what it
// refuses, and what a failed read leaves behind.
#include "lorvane/json/LxJSONHandler.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <functional>

namespace lorvane {
namespace {

class JSONHandler : public test::LiveObjectsTest {};

void ExpectMisplaced(const std::function<void()>& AAction) {
  try {
    AAction();
    ADD_FAILURE() << "nothing raised";
  } catch (const ELxJSONException& Error) {
    EXPECT_EQ(typeid(Error), typeid(ELxJSONException));
    EXPECT_EQ(Error.Message(), u"oeps?");
    EXPECT_EQ(Error.ErrorCode(), cLxJSONErrTreeBuilder);
  }
}

TEST_F(JSONHandler, TextGoesWhereTheValueItIsReadIntoSays) {
  const std::u16string_view Start =
      u"{\"m\":{\"x\":1},\"o\":{\"j\":0,\"k\":true},\"e\":{},\"a\":[0],"
      u"\"s\":\"v\"}";
  // Which value of the document above reads the text.
  const std::function<TLxJSONBase*(TLxJSONDocument*)> Document = [](TLxJSONDocument* D) {
    return D;
  };
  const auto ValueOf = [](std::u16string_view AName) {
    return [Name = LxJSONString(AName)](TLxJSONDocument* D) {
      return D->FindMember(Name)->GetValueObj();
    };
  };
  const auto Member = [](TLxJSONDocument* D) { return D->FindMember(u"m"); };
  struct TCase {
    std::function<TLxJSONBase*(TLxJSONDocument*)> Target;
    std::u16string_view Text;
    std::u16string_view Result; // empty: the builder refuses
  };
  const TCase Cases[] = {
      {Document, u"[1]", u"[1]"},
      {Document, u"5", u""},
      {ValueOf(u"a"), u"{\"b\":2}[3] 4", u"\"a\": [0, {\"b\": 2}, [3], 4]"},
      {Member, u"[true]", u"\"m\": [true]"},
      {Member, u"7", u""},
      {ValueOf(u"s"), u"{}", u""},
      {ValueOf(u"s"), u"1", u""},
      {ValueOf(u"o"), u"{\"z\":1}", u"\"o\": {\"j\": 0, \"k\": {\"z\": 1}}"},
      {ValueOf(u"o"), u"\"t\"", u"\"o\": {\"j\": 0, \"k\": \"t\"}"},
      {ValueOf(u"e"), u"{\"n\":null,\"p\":[]}", u"\"e\": {\"n\": null, \"p\": []}"},
      {ValueOf(u"e"), u"[1]", u""},
      {ValueOf(u"e"), u"2", u""},
  };
  for (const TCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Text));
    TOwned<TLxJSONDocument> Doc(TLxJSONDocument::CreateFromJSON(LxJSONString(Start)));
    const LxJSONString Before = Doc->GetAsJSON();
    TLxJSONBase* Target = Case.Target(Doc.get());
    if (Case.Result.empty()) {
      ExpectMisplaced([&] { Target->SetAsJSON(LxJSONString(Case.Text)); });
      EXPECT_EQ(Doc->GetAsJSON(), Before);
    } else {
      Target->SetAsJSON(LxJSONString(Case.Text));
      EXPECT_NE(Doc->GetAsJSON().find(Case.Result), LxJSONString::npos)
          << StringToUTF8(Doc->GetAsJSON());
    }
  }
}

TEST_F(JSONHandler, CursorClimbsOverMembersAndStopsAtNil) {
  TOwned<TLxJSONDocument> Doc(New<TLxJSONDocument>());
  TOwned<TLxJSONHandler> Handler(New<TLxJSONHandler>(nullptr, Doc.get()));
  Handler->StartObject();
  TLxJSONBase* Root = Handler->GetCurrValue();
  EXPECT_EQ(Root, Doc->GetRootValue());
  Handler->StartMember(u"a");
  EXPECT_EQ(Handler->GetCurrValue(), Root);
  Handler->StartArray();
  Handler->EndArray();
  EXPECT_EQ(Handler->GetCurrValue(), Root);
  Handler->EndObject();
  EXPECT_EQ(Handler->GetCurrValue(), Doc.get());
  Handler->EndObject();
  EXPECT_EQ(Handler->GetCurrValue(), nullptr);
  // Once out of the tree the cursor stays out, and takes nothing more.
  Handler->EndArray();
  EXPECT_EQ(Handler->GetCurrValue(), nullptr);
  ExpectMisplaced([&] { Handler->StartObject(); });
  ExpectMisplaced([&] { Handler->Value(jdtNumber, u"1"); });
  test::ExpectRaises<Exception>([&] { Handler->StartMember(u"b"); }, u"Invalid objecttype");
  EXPECT_EQ(Doc->GetAsJSON(), u"{\"a\": []}");
}

TEST_F(JSONHandler, MembersOutsideObjectsAndStructuresAsValuesAreRefused) {
  TOwned<TLxJSONDocument> Doc(TLxJSONDocument::CreateFromJSON(u"[{}]"));
  TOwned<TLxJSONHandler> Handler(New<TLxJSONHandler>(nullptr, Doc->GetRootValue()));
  test::ExpectRaises<Exception>([&] { Handler->StartMember(u"b"); }, u"Invalid objecttype");
  test::ExpectRaises<EInvalidCast>([&] { Handler->Value(jdtObject, u"{}"); },
                                   u"Invalid class typecast");
  Handler->Value(jdtString, u"\\u0041\\n");
  EXPECT_EQ(Doc->Item(1)->GetAsString(), u"A\n");
  EXPECT_EQ(Doc->GetRootValue()->Count(), 2);
}

TEST_F(JSONHandler, ValueReplacesTheEmptyValueOfAMemberButNotAHeldOne) {
  TOwned<TLxJSONDocument> Doc(TLxJSONDocument::CreateFromJSON(u"{}"));
  TOwned<TLxJSONHandler> Handler(New<TLxJSONHandler>(nullptr, Doc->GetRootValue()));
  Handler->StartMember(u"a");
  TLxJSONMember* A = Doc->FindMember(u"a");
  ASSERT_NE(A->GetValueObj(), nullptr);
  EXPECT_EQ(A->GetValueObj()->GetJSONType(), jdtNull);
  IPtr<ILxJSONBase> Held(static_cast<ILxJSONBase*>(A->GetValueObj()));
  Handler->Value(jdtNumber, u"1");
  EXPECT_EQ(Held->GetAsString(), u"") << "the held value isn't changed";
  EXPECT_EQ(A->GetAsString(), u"1");
  Held = nullptr;
  const Int64 Objects = Alive();
  Handler->StartMember(u"b");
  Handler->Value(jdtBoolean, u"true");
  EXPECT_EQ(Alive(), Objects + 2) << "a member and its one value";
  EXPECT_EQ(Doc->GetAsJSON(), u"{\"a\": 1, \"b\": true}");
}

TEST_F(JSONHandler, NamesStayRawAndValuesAreUnescapedOnce) {
  TOwned<TLxJSONDocument> Doc(
      TLxJSONDocument::CreateFromJSON(u"{\"k\\u0041\":\"\\u0041\\\\u0042\",\"n\":-1.5e3}"));
  TLxJSONMember* Member = static_cast<TLxJSONMember*>(Doc->Item(0));
  EXPECT_EQ(Member->GetName(), u"k\\u0041");
  EXPECT_EQ(Member->GetAsString(), u"A\\u0042");
  EXPECT_EQ(Doc->FindMember(u"n")->GetAsDouble(), -1500.0);
  // A percent group is an escape in a number only, short text or long.
  TOwned<TLxJSONDocument> List(TLxJSONDocument::CreateFromJSON(u"[]"));
  TOwned<TLxJSONHandler> Handler(New<TLxJSONHandler>(nullptr, List->GetRootValue()));
  const UnicodeString Long(30, u'1');
  for (const UnicodeString& Digits : {UnicodeString(u"5"), Long}) {
    Handler->Value(jdtNumber, Digits + u"%41");
    Handler->Value(jdtString, Digits + u"%41");
  }
  EXPECT_EQ(List->GetAsJSON(), u"[5A, \"5%41\", " + Long + u"A, \"" + Long + u"%41\"]");
}

TEST_F(JSONHandler, AFailedReadLeavesWhatWasBuilt) {
  TOwned<TLxJSONDocument> Doc(New<TLxJSONDocument>());
  EXPECT_THROW(Doc->SetAsJSON(u"{\"a\":1,\"b\":"), ELxJSONParseError);
  EXPECT_EQ(Doc->GetAsJSON(), u"{\"a\": 1, \"b\": null}");
  EXPECT_EQ(Doc->FindMember(u"b")->GetAsString(), u"") << "the empty value StartMember made";
  EXPECT_THROW(Doc->SetAsJSON(u"[1,[2,nul]]"), ELxJSONParseError);
  EXPECT_EQ(Doc->GetAsJSON(), u"[1, [2]]");
  EXPECT_THROW(Doc->SetAsJSON(u"{\"a\":[1,2"), ELxTextParserEOF);
  EXPECT_EQ(Doc->GetAsJSON(), u"{\"a\": [1, 2]}");
  // A member whose value never came has a null value, in a nested object too.
  EXPECT_THROW(Doc->SetAsJSON(u"{\"a\":{\"x\":{},\"y\":"), ELxJSONParseError);
  EXPECT_EQ(Doc->GetAsJSON(), u"{\"a\": {\"x\": {}, \"y\": null}}");
  EXPECT_EQ(Doc->FindMember(u"a")->GetAsObject()->FindMember(u"y")->GetValueObj()->GetJSONType(),
            jdtNull);
}

TEST_F(JSONHandler, MembersOfOneNameShareNoChangeOfIt) {
  // Names repeat across objects, and many names meet in the handler's table of recent ones.
  UnicodeString Text = u"[{\"id\":0,\"idx\":1},{\"id\":2,\"idx\":3},{";
  for (int I = 0; I < 200; ++I)
    Text += (I ? u",\"" : u"\"") + IntToStr(I % 150) + u"\":" + IntToStr(I);
  Text += u"}]";
  TOwned<TLxJSONDocument> Doc(TLxJSONDocument::CreateFromJSON(Text));
  TLxJSONBase* Root = Doc->GetRootValue();
  Root->Item(0)->Item(0)->SetName(u"other");
  EXPECT_EQ(Root->Item(1)->Item(0)->GetName(), u"id");
  EXPECT_EQ(Root->Item(0)->GetAsJSON(), u"{\"other\": 0, \"idx\": 1}");
  TLxJSONBase* Many = Root->Item(2);
  ASSERT_EQ(Many->Count(), 200);
  for (int I = 0; I < 200; ++I)
    EXPECT_EQ(Many->Item(I)->GetName(), IntToStr(I % 150));
  EXPECT_EQ(Many->FindMember(u"149")->GetAsInteger(), 149);
  EXPECT_EQ(Many->FindMember(u"10")->GetAsInteger(), 10) << "the first of the name";
}

} // namespace
} // namespace lorvane
