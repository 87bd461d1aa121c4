// JSON path: starts and steps, selectors, options, filters and their evaluation order, every
// failure with its code, result lists and their lifetime, and trees and paths deeper than any
// stack.
#include "lorvane/json/LxJSONPath.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

template <class E = ELxJSONException, class F>
void ExpectJSONError(F&& AAction, std::u16string_view AMessage, Integer ACode) {
  test::ExpectRaisesWithCode<E>(std::forward<F>(AAction), AMessage, ACode);
}

constexpr char16_t Sample[] = uR"({"a":1,"b":{"x":2,"c":[10,{"x":3},12]},"x":4,"a b":5,"a|b":6,
  "items":[{"n":1,"s":"abc","t":true},{"n":7,"s":"ABC","t":false},{"n":"abc"},{"y":2}]})";

class JSONPath : public test::LiveObjectsTest {
protected:
  void SetUp() override {
    LiveObjectsTest::SetUp();
    Doc.reset(New<TLxJSONDocument>());
  }
  void TearDown() override {
    Doc.reset();
    LiveObjectsTest::TearDown();
  }
  TLxJSONBase* Load(std::u16string_view AJSON) {
    Doc->SetAsJSON(LxJSONString(AJSON));
    return Doc->GetRootValue();
  }
  /// The compact text of what APath selects from AFrom (the document by default).
  std::string Selected(std::u16string_view APath, TLxJDOCSelectOptions AOptions = {},
                       TLxJSONBase* AFrom = nullptr) {
    TOwned<TLxJSONArray> Found(
        (AFrom ? AFrom : Doc.get())->CreateNodeList(LxJSONString(APath), AOptions));
    return StringToUTF8(Found->GetAsJSON());
  }
  TOwned<TLxJSONDocument> Doc;
};

TEST_F(JSONPath, StartsNamesAndWildcards) {
  Load(Sample);
  EXPECT_EQ(Selected(u"$.a"), "[1]");
  EXPECT_EQ(Selected(u"$['a']"), "[1]");
  EXPECT_EQ(Selected(u"$.'a b'"), "[5]");
  EXPECT_EQ(Selected(u"$['a b']"), "[5]");
  EXPECT_EQ(Selected(u"$.b.c[1].x"), "[3]");
  EXPECT_EQ(Selected(u"$.a|b"), "[6]") << "a bar without blanks is part of the name";
  EXPECT_EQ(Selected(u"$.a | $.x | $.a"), "[1, 4, 1]") << "alternatives keep duplicates";
  // An empty selector is "*"; on an object the members' values are selected, not the members.
  EXPECT_EQ(Selected(u"$.b."), "[2, [10, {\"x\": 3}, 12]]");
  EXPECT_EQ(Selected(u"$.b[]"), Selected(u"$.b."));
  EXPECT_EQ(Selected(u"$.b.*"), Selected(u"$.b."));
  EXPECT_EQ(Selected(u"$.b.c['']"), "[10, {\"x\": 3}, 12]");
  EXPECT_EQ(Selected(u"$.b.c.x"), "[]") << "a name selects nothing in an array";
  EXPECT_EQ(Selected(u"$.a.b"), "[]") << "a simple value ends the walk";
  // "@" starts here, "$" at the root whatever the start; a document's "@" is its root.
  TLxJSONBase* B = Doc->GetMember(u"b")->GetValueObj();
  EXPECT_EQ(Selected(u"@.x", {}, B), "[2]");
  EXPECT_EQ(Selected(u"$.x", {}, B), "[4]");
  EXPECT_EQ(Selected(u"@.x"), "[4]");
  EXPECT_EQ(Doc->SelectSingleNode(u"$"), Doc->GetRootValue());
}

TEST_F(JSONPath, DescendantsComeNodeFirstThenEachChildInOrder) {
  Load(uR"({"x":1,"a":{"x":2,"b":[{"x":3},{"y":{"x":4}}]},"c":{"x":5}})");
  EXPECT_EQ(Selected(u"$..x"), "[1, 2, 3, 4, 5]");
  Load(uR"({"a":{"x":{"x":1}},"x":0})");
  EXPECT_EQ(Selected(u"$..x"), "[0, {\"x\": 1}, 1]")
      << "hits here before any below, then the children in member order";
  EXPECT_EQ(Selected(u"$..[0]"), "[]");
  Load(uR"([[1,[2]],[3]])");
  EXPECT_EQ(Selected(u"$..[0]"), "[[1, [2]], 1, 2, 3]");
  EXPECT_EQ(Selected(u"$..*"), "[[1, [2]], [3], 1, [2], 2, 3]");
}

TEST_F(JSONPath, MembersStandForTheirValueThenThemselves) {
  Load(uR"({"m":{"k":1}})");
  TLxJSONMember* Member = Doc->GetMember(u"m");
  TOwned<TLxJSONArray> Found(Member->CreateNodeList(u"@", TLxJDOCSelectOptions{}));
  ASSERT_EQ(Found->Count(), 2);
  EXPECT_EQ(Found->Item(0), Member->GetValueObj());
  EXPECT_EQ(Found->Item(1), Member);
  EXPECT_EQ(Selected(u"@.k", {}, Member), "[1]");
}

TEST_F(JSONPath, DocumentWithoutRootGivesOneNilItem) {
  TOwned<TLxJSONArray> Found(Doc->CreateNodeList(u"$", true));
  ASSERT_EQ(Found->Count(), 1);
  EXPECT_EQ(Found->Item(0), nullptr);
  EXPECT_EQ(StringToUTF8(Found->GetAsJSON()), "[null]");
  EXPECT_EQ(Doc->SelectSingleNode(u"$"), nullptr);
  ExpectJSONError([&] { Doc->SelectSingleNode(u"$", true); }, _cLxJSONInvalidPathNoNodes, 11);
  EXPECT_EQ(Doc->SelectIntf(u"$.a")->Count(), 0);
}

TEST_F(JSONPath, IndexesSlicesAndLists) {
  Load(u"[0,1,2,3,4]");
  EXPECT_EQ(Selected(u"$[-1]"), "[4]");
  EXPECT_EQ(Selected(u"$[(@.length-1)]"), "[4]");
  EXPECT_EQ(Selected(u"$[(@.length-7)]"), "[3]") << "the sum is an index, negatives count back";
  EXPECT_EQ(Selected(u"$[(2)]"), "[2]");
  EXPECT_EQ(Selected(u"$[5]"), "[]");
  EXPECT_EQ(Selected(u"$[-6]"), "[]");
  EXPECT_EQ(Selected(u"$[1:3]"), "[1, 2]");
  EXPECT_EQ(Selected(u"$[::2]"), "[0, 2, 4]");
  EXPECT_EQ(Selected(u"$[:-1]"), "[0]") << "the first item is taken before the end is looked at";
  EXPECT_EQ(Selected(u"$[3:1]"), "[3]");
  EXPECT_EQ(Selected(u"$[-2:]"), "[3, 4]");
  EXPECT_EQ(Selected(u"$[3::-1]"), "[3, 2, 1, 0]");
  EXPECT_EQ(Selected(u"$[x:2]"), "[0, 1]") << "a part that is no number is 0";
  EXPECT_EQ(Selected(u"$[1:3:1:9]"), "[1, 2]");
  EXPECT_EQ(Selected(u"$[9:]"), "[]");
  EXPECT_EQ(Selected(u"$[0,0]"), "[0, 0]");
  EXPECT_EQ(Selected(u"$[1,,2]"), "[1, 0, 1, 2, 3, 4, 2]");
  EXPECT_EQ(Selected(u"$[4,'x',1]"), "[4, 1]");
  EXPECT_EQ(Selected(u"$[2,]"), "[2]") << "an empty last piece is not taken";
  // Indexes and slices select nothing in an object.
  Load(uR"({"0":"zero","a":1})");
  EXPECT_EQ(Selected(u"$[0]"), "[]");
  EXPECT_EQ(Selected(u"$[0:1]"), "[]");
  EXPECT_EQ(Selected(u"$.0"), "[]") << "digits are an index behind a dot too";
  EXPECT_EQ(Selected(u"$['0']"), "[\"zero\"]");
}

TEST_F(JSONPath, DuplicateNamesAreAllSelectedAndCaseIsAnOption) {
  Load(uR"({"a":1,"A":2,"a":3})");
  EXPECT_EQ(Selected(u"$.a"), "[1, 3]");
  EXPECT_EQ(Selected(u"$.a", {jsoCaseInsensitive}), "[1, 2, 3]");
}

TEST_F(JSONPath, CreateAddsOnlyTheLastNameOfAChain) {
  Load(u"{}");
  EXPECT_EQ(Selected(u"$.a.b", {jsoCreate}), "[]");
  EXPECT_EQ(StringToUTF8(Doc->GetAsJSON()), "{\"a\": null}");
  EXPECT_EQ(Selected(u"$.a", {jsoCreate}), "[null]") << "an existing member isn't made twice";
  ExpectJSONError(
      [&] {
        Selected(u"$.c.d", {jsoCreate, jsoRaise});
      },
      _cLxJSONInvalidPathNoNodes, 11);
  EXPECT_EQ(StringToUTF8(Doc->GetAsJSON()), "{\"a\": null, \"c\": null}");
  EXPECT_EQ(Selected(u"$.*", {jsoCreate}), "[null, null]");
  Load(u"[1]");
  EXPECT_EQ(Selected(u"$[5]", {jsoCreate}), "[]");
  EXPECT_EQ(Selected(u"$[*]", {jsoCreate}), "[1]");
  ExpectJSONError([&] { Selected(u"$.n", {jsoCreate}); },
                  u"Instances of TLxJSONArray do not support the AddMember method!", 9);
}

TEST_F(JSONPath, FilterComparisonsClassifyBothSides) {
  Load(Sample);
  EXPECT_EQ(Selected(u"$.items[?(@.n==1)].s"), "[\"abc\"]");
  EXPECT_EQ(Selected(u"$.items[?(@.n>5)].n"), "[7]");
  EXPECT_EQ(Selected(u"$.items[?(@.n>=1)].n"), "[1, 7]");
  EXPECT_EQ(Selected(u"$.items[?(@.n<>1)].n"), "[7]") << "a word beside a number is rejected";
  EXPECT_EQ(Selected(u"$.items[?(@.n=='abc')].n"), "[\"abc\"]");
  EXPECT_EQ(Selected(u"$.items[?(@.n==abc)].n"), "[\"abc\"]") << "a bare word is a text";
  EXPECT_EQ(Selected(u"$.items[?(@.n==1.0)].s"), "[\"abc\"]") << "an integer is a float too";
  EXPECT_EQ(Selected(u"$.items[?(@.n==+1)].s"), "[\"abc\"]") << "integers read as StrToInt does";
  EXPECT_EQ(Selected(u"$.items[?(@.t==TRUE)].s"), "[\"abc\"]");
  EXPECT_EQ(Selected(u"$.items[?(@.t<true)].s"), "[\"ABC\"]") << "false orders before true";
  EXPECT_EQ(Selected(u"$.items[?(@.s<'abc')].s"), "[\"ABC\"]") << "texts compare by unit";
  EXPECT_EQ(Selected(u"$.items[?(@.s=='abc')].s", {jsoCaseInsensitive}), "[\"abc\", \"ABC\"]");
  EXPECT_EQ(Selected(u"$.items[?(@.s<'abc')].s", {jsoCaseInsensitive}), "[]");
  EXPECT_EQ(Selected(u"$.items[?(@.n==@.n)].n"), "[1, 7, \"abc\"]");
  EXPECT_EQ(Selected(u"$.items[?(@.n== )].n"), "[]") << "a blank right side is missing";
  // A path inside a comparison regards case whatever the options say; a lone one doesn't.
  EXPECT_EQ(Selected(u"$.items[?(@.N==1)].s", {jsoCaseInsensitive}), "[]");
  EXPECT_EQ(Selected(u"$.items[?(@.Y)].y", {jsoCaseInsensitive}), "[2]");
  EXPECT_EQ(Selected(u"$.items[?(@.Y)].y"), "[]");
  // Children of an object are its members' values; survivors are taken once per step.
  EXPECT_EQ(Selected(u"$.b[?(@.x)].x"), "[]");
  EXPECT_EQ(Selected(u"$.b.c[?(@.x),?(@.x),1].x"), "[3, 3]");
  EXPECT_EQ(Selected(u"$.items[?(@.n==1),?(@.n),0].n"), "[1, 7, \"abc\", 1]");
  // A term's path gives its first value: of duplicate names, the first member's.
  Load(uR"([{"a":1,"a":2},{"b":{"a":3}}])");
  EXPECT_EQ(Selected(u"$[?(@.a==2)]"), "[]");
  EXPECT_EQ(Selected(u"$[?(@.a==1)].a"), "[1, 2]");
  EXPECT_EQ(Selected(u"$[?(@.b.a==3)].b.a"), "[3]");
  EXPECT_EQ(Selected(u"$[?(@..a==3)].b.a"), "[3]");
  // A filter's path may hold a filter of its own.
  Load(uR"([[{"a":1}],[{"b":1}]])");
  EXPECT_EQ(Selected(u"$[?(@[?(@.a)])]"), "[[{\"a\": 1}]]");
}

TEST_F(JSONPath, FilterChainsFoldLeftToRightAndMissingValuesReject) {
  Load(uR"([{"a":1,"b":2,"c":0},{"c":3},{"a":1,"b":0,"c":3},{"y":2},{"a":0,"b":0,"d":1}])");
  // ((a and b) or c), and ((c or a) and b): no precedence of "&&".
  EXPECT_EQ(Selected(u"$[?(@.a==1 && @.b==2 || @.c==3)].c"), "[0, 3]");
  EXPECT_EQ(Selected(u"$[?(@.c==3 || @.a==1 && @.b==2)].c"), "[0]");
  EXPECT_EQ(Selected(u"$[?((@.c==3 || @.a==1) && @.b==2)].c"), "[0]");
  EXPECT_EQ(Selected(u"$[?(@.x==1 || @.y==2)].y"), "[]") << "IsNull was set on the way";
  EXPECT_EQ(Selected(u"$[?(@.y==2 || @.x==1)].y"), "[2]") << "the right side isn't reached";
  EXPECT_EQ(Selected(u"$[?(!@.a)].c"), "[3]");
  EXPECT_EQ(Selected(u"$[?(!(@.a==1))].c"), "[]") << "the missing value still rejects";
  EXPECT_EQ(Selected(u"$[?(!!@.b)].b"), "[2, 0, 0]");
  EXPECT_EQ(Selected(u"$[?(!@.a && @.c)].c"), "[3]");
  // A node's sibling chain replaces its result and the walk goes on at the sibling with it, so
  // with a, b false and d true the "&&" behind b is reached again with true, and x is compared.
  EXPECT_EQ(Selected(u"$[?(@.a==1 || @.b==1 || @.d==1)].c"), "[0, 3]");
  Load(uR"([{"a":0,"b":0,"d":1}])");
  EXPECT_EQ(Selected(u"$[?(@.a==1 || @.b==1 && @.x==1 || @.d==1)].d"), "[]");
  EXPECT_EQ(Selected(u"$[?(@.a==1 || @.b==1 && @.d==1 || @.d==1)].d"), "[1]");
}

TEST_F(JSONPath, LongChainsAndDeepGroupsStayLinear) {
  Load(uR"([{"a":0,"b":1}])");
  // Every "||" on false walks the rest of the chain twice by the rule as written.
  std::u16string Chain = u"$[?(@.a==1";
  for (int I = 0; I < 2000; ++I)
    Chain += u" || @.a==1";
  EXPECT_EQ(Selected(Chain + u" || @.b==1)].b"), "[1]");
  std::u16string Groups = u"$[?(";
  for (int I = 0; I < 200; ++I)
    Groups += u"(";
  Groups += u"@.b";
  for (int I = 0; I < 200; ++I)
    Groups += u")";
  EXPECT_EQ(Selected(Groups + u")].b"), "[1]");
}

TEST_F(JSONPath, FailuresOfPathsWithTheirCodes) {
  Load(uR"({"a":[1,{"b":2}],"s":"t"})");
  const auto Fails = [&](std::u16string_view APath, std::u16string_view AMessage, Integer ACode) {
    SCOPED_TRACE(StringToUTF8(APath));
    ExpectJSONError([&] { Selected(APath); }, AMessage, ACode);
  };
  Fails(u"", _cLxJSONInvalidPath, 13);
  Fails(u"a", _cLxJSONInvalidPath, 13);
  Fails(u"$.a |  | $.s", _cLxJSONInvalidPath, 13);
  const std::u16string Wrong1 = u"The specified path is not a valid JSON path. Character '";
  Fails(u"$x", Wrong1 + u". or [' was expected, however 'x' was found.", 14);
  Fails(u"$['a']x", Wrong1 + u". or [' was expected, however 'x' was found.", 14);
  Fails(u"$.a[?@]", Wrong1 + u"?(' was expected, however '?@' was found.", 14);
  Fails(u"$.a[?(@.b=2)]", Wrong1 + u"=' was expected, however '2' was found.", 14);
  Fails(u"$.a[?(@.b!2)]", Wrong1 + u"=' was expected, however '2' was found.", 14);
  Fails(u"$.a[?(@.b &| @.c)]", Wrong1 + u"&' was expected, however '|' was found.", 14);
  Fails(u"$.a[?(@.b |)]", Wrong1 + u"|' was expected, however '' was found.", 14);
  Fails(u"$.a[1]$",
        u"The specified path is not a valid JSON path. A character ('$') was detected on an "
        u"invalid position.",
        15);
  Fails(u"$.a[?(@.b))]", _cLxJSONScriptExprTooComplex, 17);
  Fails(u"$.a[?(a)]", _cLxJSONInvalidPath, 13);
  Fails(u"$.a[?( )]", _cLxJSONInvalidPath, 13);
  Fails(u"$.a[?(@==1)]", u"Instances of TLxJSONObject do not support the GetValue method!", 9);
  // A bad step behind a simple value or a step that found nothing is never read.
  EXPECT_EQ(Selected(u"$.s[?(a)]x"), "[]");
  EXPECT_EQ(Selected(u"$.zz$$"), "[]");

  test::ExpectRaises<EConvertError>([&] { Selected(u"$.a[-]"); },
                                    u"'-' is not a valid integer value");
  test::ExpectRaises<EConvertError>([&] { Selected(u"$.a[(@.length)]"); },
                                    u"'' is not a valid integer value");
  EXPECT_EQ(Selected(u"$[-]"), "[]") << "an index is read only in an array";
  for (const char16_t* Path : {u"$.a[?()]", u"$.a[?(@.b==)]", u"$.a[?(@.b<)]"}) {
    SCOPED_TRACE(StringToUTF8(Path));
    ExpectJSONError<ELxTextParserEOF>([&] { Selected(Path); }, u"Unexpected end of the text", 1);
  }
  for (const char16_t* Path : {u"$.a[?(())]", u"$.a[?(@.b &&)]", u"$.a[?(!)]"}) {
    SCOPED_TRACE(StringToUTF8(Path));
    test::ExpectRaises<EAssertionFailed>([&] { Selected(Path); }, SJSONFilterOperandMissing);
  }
  EXPECT_EQ(Selected(u"$.s[?(())]"), "[]") << "a filter is read only where it is applied";

  TOwned<TLxJSONObject> Loose(New<TLxJSONObject>(nullptr));
  Loose->AddMember(u"k", jdtNumber, u"1");
  test::ExpectRaises<EInvalidCast>([&] { Selected(u"$.k", {}, Loose.get()); },
                                   u"Invalid class typecast");
  EXPECT_EQ(Selected(u"@.k", {}, Loose.get()), "[1]");
}

TEST_F(JSONPath, NestingBeyondTheBoundIsTooComplex) {
  Load(uR"([{"a":1}])");
  std::u16string Groups = u"$[?(";
  for (int I = 0; I < 300; ++I)
    Groups += u"(";
  ExpectJSONError([&] { Selected(Groups + u"@.a)]"); }, _cLxJSONScriptExprTooComplex, 17);
}

TEST_F(JSONPath, DeepTreesAndLongPathsNeedNoDeepStack) {
  constexpr int Depth = 100000;
  std::u16string Text(Depth, u'[');
  Text += u"{\"x\":1}";
  Text += std::u16string(Depth, u']');
  Load(Text);
  EXPECT_EQ(Selected(u"$..x"), "[1]");
  std::u16string Path = u"$";
  for (int I = 0; I < Depth; ++I)
    Path += u"[0]";
  EXPECT_EQ(Selected(Path + u".x"), "[1]");
  EXPECT_EQ(Selected(Path + u"[?(@==1)]"), "[1]");
}

TEST_F(JSONPath, ResultListsHoldNothingAndInterfacesEndThem) {
  TLxJSONBase* Root = Load(uR"({"a":[1,2],"b":3})");
  {
    TOwned<TLxJSONArray> Found(Root->CreateNodeList(u"$..*", TLxJDOCSelectOptions{}));
    EXPECT_EQ(Found->Count(), 4);
    EXPECT_EQ(Found->GetOwner(), nullptr);
    TLxJSONBase* One = Found->Item(1);
    EXPECT_EQ(One->GetOwner(), Doc->GetMember(u"b")) << "the items stay where they are";
    EXPECT_EQ(One->RefCount(), 1) << "the owner's hold, and no other";
  }
  EXPECT_EQ(StringToUTF8(Doc->GetAsJSON()), "{\"a\": [1, 2], \"b\": 3}");
  const Int64 Before = Alive();
  {
    IPtr<ILxJSONArray> Found = Doc->SelectIntf(u"$.a[*]");
    ILxJSONDocument& AsDocument = *Doc;
    EXPECT_EQ(AsDocument.SelectIntf(u"$.b")->GetItem(0)->GetAsInteger(), 3);
    ASSERT_EQ(Found->Count(), 2);
    EXPECT_EQ(Found->GetItem(1)->GetAsInteger(), 2);
    EXPECT_EQ(Alive(), Before + 1);
  }
  EXPECT_EQ(Alive(), Before) << "the list ended with its last reference, the tree stays";
  EXPECT_EQ(Doc->GetMember(u"a")->GetValueObj()->Count(), 2);
}

TEST(JSONNodeList, AssignReplacesTheItemsInOrder) {
  TLxJSONNodeList A, B;
  TLxJSONBase* const X = reinterpret_cast<TLxJSONBase*>(std::uintptr_t{16});
  TLxJSONBase* const Y = reinterpret_cast<TLxJSONBase*>(std::uintptr_t{32});
  A.Add(X);
  B.Add(Y);
  B.Add(X);
  A.Assign(B);
  ASSERT_EQ(A.GetCount(), 2);
  EXPECT_EQ(A[0], Y);
  EXPECT_EQ(A[1], X);
  A.Assign(A);
  EXPECT_EQ(A.GetCount(), 2);
}

} // namespace
} // namespace lorvane
