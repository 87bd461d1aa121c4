// String lists, copying, the class registry, owned components and the re-entrant lock.
#include "lorvane/platform/Classes.h"
#include "lorvane/platform/SyncObjs.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace lorvane {
namespace {

using test::ExpectRaises;

using ClassesFixture = test::LiveObjectsTest;

TOwned<TStringList> MakeList(std::initializer_list<std::u16string_view> ALines) {
  TOwned<TStringList> List(New<TStringList>());
  for (auto Line : ALines)
    List->Add(Line);
  return List;
}

std::vector<std::string> LinesOf(const TStrings& AStrings) {
  std::vector<std::string> Lines;
  for (const auto& Line : AStrings)
    Lines.push_back(StringToUTF8(Line));
  return Lines;
}

TEST(LiveInstances, CountsObjectsOrAnswersMinusOneInBuildsThatDontCount) {
  const Int64 Before = TObject::LiveInstances();
  TOwned<TObject> Object(New<TObject>());
  if (Before < 0) {
    EXPECT_EQ(Before, -1);
    EXPECT_EQ(TObject::LiveInstances(), -1) << "no count, whatever is made";
    EXPECT_FALSE(test::CountsLiveInstances());
  } else {
    EXPECT_EQ(TObject::LiveInstances(), Before + 1);
    Object.reset();
    EXPECT_EQ(TObject::LiveInstances(), Before);
    EXPECT_TRUE(test::CountsLiveInstances());
  }
}

using Lines = std::vector<std::string>;

// --- TStringList: lines and indexes --------------------------------------------------------------
using StringList = ClassesFixture;

TEST_F(StringList, IndexErrorsNameTheIndex) {
  auto List = MakeList({u"a", u"b"});
  TStrings& S = *List;
  struct Case {
    const char* What;
    std::function<void()> Action;
    std::u16string_view Message;
  };
  const Case Cases[] = {
      {"read -1", [&] { (void)S[-1]; }, u"List index out of bounds (-1)"},
      {"read Count", [&] { (void)S.GetStrings(2); }, u"List index out of bounds (2)"},
      {"write Count", [&] { S.SetStrings(2, u"x"); }, u"List index out of bounds (2)"},
      {"object", [&] { (void)S.GetObjects(5); }, u"List index out of bounds (5)"},
      {"set object", [&] { S.SetObjects(-3, nullptr); }, u"List index out of bounds (-3)"},
      {"delete", [&] { S.Delete(2); }, u"List index out of bounds (2)"},
      {"insert", [&] { S.Insert(3, u"x"); }, u"List index out of bounds (3)"},
      {"name", [&] { (void)S.GetNames(2); }, u"List index out of bounds (2)"},
      {"value", [&] { (void)S.GetValueFromIndex(2); }, u"List index out of bounds (2)"},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.What);
    ExpectRaises<EListError>(C.Action, C.Message);
  }
  EXPECT_EQ(LinesOf(S), (Lines{"a", "b"}));
}

TEST_F(StringList, KeepsAnObjectBesideEachLine) {
  TOwned<TStringList> Objects(New<TStringList>());
  auto List = MakeList({u"a"});
  EXPECT_EQ(List->AddObject(u"b", Objects.get()), 1);
  List->InsertObject(0, u"z", List.get());
  EXPECT_EQ(List->GetObjects(0), List.get());
  EXPECT_EQ(List->GetObjects(1), nullptr);
  EXPECT_EQ(List->GetObjects(2), Objects.get());
  List->SetStrings(2, u"B"); // the object stays with the line
  EXPECT_EQ(List->GetObjects(2), Objects.get());
  EXPECT_EQ(LinesOf(*List), (Lines{"z", "a", "B"}));
}

TEST_F(StringList, IndexOfIgnoresAsciiCaseUnlessCaseSensitive) {
  auto List = MakeList({u"Alpha", u"beta", u"\u00c9t\u00e9"});
  EXPECT_EQ(List->IndexOf(u"ALPHA"), 0);
  EXPECT_EQ(List->IndexOf(u"Beta"), 1);
  EXPECT_EQ(List->IndexOf(u"\u00e9t\u00e9"), -1); // only ASCII letters fold
  EXPECT_EQ(List->IndexOf(u"gamma"), -1);
  List->SetCaseSensitive(true);
  EXPECT_EQ(List->IndexOf(u"ALPHA"), -1);
  EXPECT_EQ(List->IndexOf(u"Alpha"), 0);
}

TEST_F(StringList, OwningListFreesObjectsOfLinesItDrops) {
  {
    TOwned<TStringList> List(New<TStringList>(/*AOwnsObjects=*/true));
    for (auto Name : {u"a", u"b", u"c", u"d"})
      List->AddObject(Name, New<TStringList>());
    EXPECT_EQ(Alive(), 5);
    List->Delete(0);
    EXPECT_EQ(Alive(), 4);
    List->SetValues(u"b", u""); // "b" is no name=value line: nothing to delete
    List->Clear();
    EXPECT_EQ(Alive(), 1);
    List->AddObject(u"e", New<TStringList>());
  }
  EXPECT_EQ(Alive(), 0);
  TOwned<TStringList> Kept(New<TStringList>());
  {
    TOwned<TStringList> List(New<TStringList>(/*AOwnsObjects=*/false));
    List->AddObject(u"k", Kept.get());
    List->Delete(0);
    List->AddObject(u"k", Kept.get());
  }
  EXPECT_EQ(Alive(), 1);
}

// --- Text ----------------------------------------------------------------------------------------
TEST_F(StringList, TextSplitsAtCrLfCrOrLf) {
  struct Case {
    std::u16string_view Text;
    Lines Expected;
  };
  const Case Cases[] = {
      {u"", {}},
      {u"one", {"one"}},
      {u"a\r\nb", {"a", "b"}},
      {u"a\nb\n", {"a", "b"}},
      {u"a\rb\r", {"a", "b"}},
      {u"a\r\n\r\nb", {"a", "", "b"}},
      {u"a\n\rb", {"a", "", "b"}},
      {u"\r\n", {""}},
      {u"\n\n", {"", ""}},
      {u" x \t", {" x \t"}},
  };
  auto List = MakeList({u"old"});
  for (const auto& C : Cases) {
    SCOPED_TRACE(StringToUTF8(C.Text));
    List->SetText(C.Text);
    EXPECT_EQ(LinesOf(*List), C.Expected);
  }
}

TEST_F(StringList, TextEndsEveryLineWithCrLf) {
  EXPECT_EQ(MakeList({})->GetText(), u"");
  EXPECT_EQ(MakeList({u"a", u"", u"b"})->GetText(), u"a\r\n\r\nb\r\n");
  auto List = MakeList({u"x"});
  List->SetText(List->GetStrings(0) + u"\ny"); // text built from its own line
  EXPECT_EQ(List->GetText(), u"x\r\ny\r\n");
}

// --- CommaText and DelimitedText -----------------------------------------------------------------
TEST_F(StringList, CommaTextQuotesWhatNeedsItAndReadsItBack) {
  struct Case {
    std::vector<std::u16string_view> Lines;
    std::u16string_view Text;
  };
  const Case Cases[] = {
      {{}, u""},
      {{u""}, u"\"\""},
      {{u"a", u"b"}, u"a,b"},
      {{u"a", u"", u"b"}, u"a,,b"},
      {{u"a b"}, u"\"a b\""},
      {{u"a,b", u"c"}, u"\"a,b\",c"},
      {{u"say \"hi\""}, u"\"say \"\"hi\"\"\""},
      {{u"tab\there", u"x"}, u"\"tab\there\",x"},
      {{u"", u""}, u","},
      {{u"k=v", u"\u00e9"}, u"k=v,\u00e9"},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(StringToUTF8(C.Text));
    TOwned<TStringList> List(New<TStringList>());
    for (auto Line : C.Lines)
      List->Add(Line);
    EXPECT_EQ(StringToUTF8(List->GetCommaText()), StringToUTF8(C.Text));
    TOwned<TStringList> Back(New<TStringList>());
    Back->SetCommaText(C.Text);
    EXPECT_EQ(LinesOf(*Back), LinesOf(*List));
  }
}

TEST_F(StringList, DelimitedTextReadingRules) {
  struct Case {
    const char* What;
    bool Strict;
    std::u16string_view Text;
    Lines Expected;
  };
  const Case Cases[] = {
      {"blanks separate", false, u"a b,c", {"a", "b", "c"}},
      {"blanks around items", false, u"  a ,  b  ", {"a", "b"}},
      {"delimiter at the end", false, u"a,", {"a", ""}},
      {"blank after last delimiter", false, u"a, ", {"a"}},
      {"text behind a quote", false, u"\"ab\"cd,e", {"ab", "cd", "e"}},
      {"quote never closed", false, u"\"ab,c", {"ab,c"}},
      {"control characters",
       false,
       u"a\x01\x02"
       u"b",
       {"a", "b"}},
      {"strict keeps blanks", true, u" a b ,c", {" a b ", "c"}},
      {"strict quoted", true, u"\"x,y\",z", {"x,y", "z"}},
      {"strict delimiter at the end", true, u"a,", {"a", ""}},
      {"strict lone delimiter", true, u",", {"", ""}},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.What);
    TOwned<TStringList> List(New<TStringList>());
    List->SetStrictDelimiter(C.Strict);
    List->SetDelimitedText(C.Text);
    EXPECT_EQ(LinesOf(*List), C.Expected);
  }
}

TEST_F(StringList, DelimiterAndQuoteCanBeChosenButCommaTextIgnoresThem) {
  auto List = MakeList({u"a b", u"it's", u"c;d"});
  List->SetDelimiter(u';');
  List->SetQuoteChar(u'\'');
  EXPECT_EQ(List->GetDelimitedText(), u"'a b';'it''s';'c;d'");
  EXPECT_EQ(List->GetCommaText(), u"\"a b\",it's,c;d");
  List->SetStrictDelimiter(true);
  EXPECT_EQ(List->GetDelimitedText(), u"a b;'it''s';'c;d'");
  List->SetDelimitedText(u"x y;'p;q'");
  EXPECT_EQ(LinesOf(*List), (Lines{"x y", "p;q"}));
  EXPECT_EQ(List->GetDelimiter(), u';'); // comma text left the settings as they were
  EXPECT_EQ(List->GetQuoteChar(), u'\'');
}

// --- name=value ----------------------------------------------------------------------------------
TEST_F(StringList, NamesAndValues) {
  auto List = MakeList({u"Host=example.org", u"plain", u"Path=/a=b", u"host=second", u"=anon"});
  EXPECT_EQ(List->GetNames(0), u"Host");
  EXPECT_EQ(List->GetNames(1), u""); // no separator, no name
  EXPECT_EQ(List->GetNames(4), u"");
  EXPECT_EQ(List->GetValueFromIndex(1), u"");
  EXPECT_EQ(List->GetValueFromIndex(2), u"/a=b"); // behind the first separator
  EXPECT_EQ(List->GetValueFromIndex(-1), u"");
  EXPECT_EQ(List->IndexOfName(u"HOST"), 0); // the first match, without regard to case
  EXPECT_EQ(List->IndexOfName(u"plain"), -1);
  EXPECT_EQ(List->IndexOfName(u""), 4);
  EXPECT_EQ(List->IndexOfName(u"Path=/a"), -1) << "a name ends at the first separator";
  EXPECT_EQ(List->IndexOfName(u"Hos"), -1);
  EXPECT_EQ(List->GetValues(u"path"), u"/a=b");
  EXPECT_EQ(List->GetValues(u"missing"), u"");

  List->SetValues(u"HOST", u"other.org"); // keeps the line's place, takes the given name
  EXPECT_EQ(List->GetStrings(0), u"HOST=other.org");
  List->SetValues(u"Port", u"80");
  EXPECT_EQ(List->GetStrings(5), u"Port=80");
  List->SetValues(u"host", u""); // empty value deletes the first such line
  EXPECT_EQ(List->IndexOfName(u"host"), 2);
  List->SetValues(u"nothing", u"");
  EXPECT_EQ(List->GetCount(), 5);
  List->SetValueFromIndex(2, u"third");
  EXPECT_EQ(List->GetStrings(2), u"host=third");
  List->SetValueFromIndex(-1, u"x");
  EXPECT_EQ(List->GetStrings(5), u"=x");
  List->SetValueFromIndex(5, u"");
  EXPECT_EQ(List->GetCount(), 5);
}

TEST_F(StringList, NameValueSeparatorAndCaseSensitiveNames) {
  auto List = MakeList({u"a=1:b", u"Key:v"});
  List->SetNameValueSeparator(u':');
  EXPECT_EQ(List->GetNames(0), u"a=1");
  EXPECT_EQ(List->GetValues(u"key"), u"v");
  List->SetCaseSensitive(true);
  EXPECT_EQ(List->GetValues(u"key"), u"");
  EXPECT_EQ(List->GetValues(u"Key"), u"v");
}

// --- sorted lists --------------------------------------------------------------------------------
TEST_F(StringList, SortedAddFollowsDuplicates) {
  struct Case {
    TDuplicates Mode;
    Integer IndexOfSecondB;
    Lines Expected;
  };
  const Case Cases[] = {
      {dupIgnore, 1, {"a", "B", "c"}},
      {dupAccept, 1, {"a", "b", "B", "c"}},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(static_cast<int>(C.Mode));
    auto List = MakeList({u"c", u"B", u"a"});
    List->SetDuplicates(C.Mode);
    List->SetSorted(true);
    EXPECT_EQ(List->Add(u"b"), C.IndexOfSecondB);
    EXPECT_EQ(LinesOf(*List), C.Expected);
  }
  auto List = MakeList({u"x"});
  List->SetDuplicates(dupError);
  List->SetSorted(true);
  ExpectRaises<EListError>([&] { List->Add(u"X"); }, u"String list does not allow duplicates");
  ExpectRaises<EListError>([&] { List->AddObject(u"x", nullptr); },
                           u"String list does not allow duplicates");
  EXPECT_EQ(List->GetCount(), 1);
  List->SetSorted(false); // duplicates matter only while sorted
  List->Add(u"x");
  EXPECT_EQ(List->GetCount(), 2);
}

TEST_F(StringList, SortedListRefusesPlacedWrites) {
  auto List = MakeList({u"b", u"a"});
  List->SetSorted(true);
  ExpectRaises<EListError>([&] { List->Insert(0, u"z"); }, u"Operation not allowed on sorted list");
  ExpectRaises<EListError>([&] { List->SetStrings(0, u"z"); },
                           u"Operation not allowed on sorted list");
  EXPECT_EQ(LinesOf(*List), (Lines{"a", "b"}));
  List->SetValues(u"k", u"v"); // a new line goes to its place
  EXPECT_EQ(LinesOf(*List), (Lines{"a", "b", "k=v"}));
}

TEST_F(StringList, FindAndOrderFollowCaseSensitivity) {
  auto List = MakeList({u"b", u"C", u"a", u"B", u"_"});
  List->SetDuplicates(dupAccept);
  List->SetSorted(true);
  EXPECT_EQ(LinesOf(*List), (Lines{"_", "a", "b", "B", "C"})); // equal lines keep their order
  Integer Index = -1;
  EXPECT_TRUE(List->Find(u"B", Index));
  EXPECT_EQ(Index, 2); // the first of the equal lines
  EXPECT_FALSE(List->Find(u"bb", Index));
  EXPECT_EQ(Index, 4);
  EXPECT_EQ(List->IndexOf(u"c"), 4);
  List->SetCaseSensitive(true); // sorts again, in code unit order
  EXPECT_EQ(LinesOf(*List), (Lines{"B", "C", "_", "a", "b"}));
  EXPECT_EQ(List->IndexOf(u"c"), -1);
  EXPECT_EQ(List->Add(u"Ba"), 1);
}

TEST_F(StringList, SortOrdersAnUnsortedList) {
  auto List = MakeList({u"pear", u"Apple", u"fig"});
  List->Sort();
  EXPECT_EQ(LinesOf(*List), (Lines{"Apple", "fig", "pear"}));
  EXPECT_FALSE(List->GetSorted());
  List->Add(u"banana"); // still appends
  EXPECT_EQ(List->GetStrings(3), u"banana");
}

// --- copying -------------------------------------------------------------------------------------
class TThing : public TPersistent {
  LX_CLASS(TThing, TPersistent)
  TThing() = default;

protected:
  ~TThing() override = default;
};

TEST_F(StringList, AssignCopiesLinesObjectsAndSettings) {
  auto Source = MakeList({u"b", u"a", u"a"});
  Source->SetObjects(0, Source.get());
  Source->SetDelimiter(u';');
  Source->SetNameValueSeparator(u':');
  Source->SetCaseSensitive(true);
  Source->SetDuplicates(dupAccept);
  Source->SetSorted(true);
  auto Dest = MakeList({u"old"});
  Dest->SetSorted(true); // dupIgnore would drop a line if it added one by one
  Dest->Assign(Source.get());
  EXPECT_EQ(LinesOf(*Dest), (Lines{"a", "a", "b"}));
  EXPECT_EQ(Dest->GetObjects(2), Source.get());
  EXPECT_EQ(Dest->GetDelimiter(), u';');
  EXPECT_EQ(Dest->GetNameValueSeparator(), u':');
  EXPECT_TRUE(Dest->GetCaseSensitive());
  EXPECT_EQ(Dest->GetDuplicates(), dupAccept);
  EXPECT_TRUE(Dest->GetSorted());
  Dest->AddStrings(Dest.get());
  EXPECT_EQ(Dest->GetCount(), 6);
}

TEST_F(StringList, AssignBetweenUnrelatedClassesRaises) {
  auto List = MakeList({u"keep"});
  TOwned<TThing> Thing(New<TThing>());
  ExpectRaises<EConvertError>([&] { List->Assign(Thing.get()); },
                              u"Cannot assign a TThing to a TStringList");
  ExpectRaises<EConvertError>([&] { Thing->Assign(List.get()); },
                              u"Cannot assign a TStringList to a TThing");
  ExpectRaises<EConvertError>([&] { List->Assign(nullptr); },
                              u"Cannot assign a nil to a TStringList");
  EXPECT_EQ(LinesOf(*List), (Lines{"keep"}));
}

// --- class registry ------------------------------------------------------------------------------
class TRegWidget : public TPersistent {
  LX_CLASS(TRegWidget, TPersistent)
  TRegWidget() = default;

protected:
  ~TRegWidget() override = default;
};

class TRegGadget : public TRegWidget {
  LX_CLASS(TRegGadget, TRegWidget)
  TRegGadget() = default;

protected:
  ~TRegGadget() override = default;
};

namespace other {
class TRegWidget : public TPersistent {
  LX_CLASS(TRegWidget, TPersistent)
  TRegWidget() = default;

protected:
  ~TRegWidget() override = default;
};
} // namespace other

using ClassRegistry = ClassesFixture;

TEST_F(ClassRegistry, FindsRegisteredClassesWithoutRegardToCase) {
  EXPECT_EQ(GetClass(u"TRegGadget"), nullptr);
  RegisterClass(TRegGadget::StaticClass());
  RegisterClass(TRegGadget::StaticClass()); // again: nothing happens
  EXPECT_EQ(GetClass(u"tregGADGET"), TRegGadget::StaticClass());
  EXPECT_EQ(FindClass(u"TRegGadget"), TRegGadget::StaticClass());
  EXPECT_EQ(GetClass(u"TRegWidget"), TRegWidget::StaticClass()); // ancestors come along
  EXPECT_EQ(GetClass(u"TPersistent"), TPersistent::StaticClass());
  EXPECT_EQ(GetClass(u"TObject"), nullptr); // but not beyond TPersistent
  EXPECT_EQ(GetClass(u""), nullptr);
  TOwned<TObject> Made(GetClass(u"TRegGadget")->CreateDefault());
  EXPECT_EQ(Made->ClassName(), u"TRegGadget");

  ExpectRaises<EFilerError>([] { RegisterClass(other::TRegWidget::StaticClass()); },
                            u"A class named TRegWidget already exists");
  UnRegisterClass(TRegGadget::StaticClass());
  EXPECT_EQ(GetClass(u"TRegGadget"), nullptr);
  ExpectRaises<EClassNotFound>([] { FindClass(u"TRegGadget"); }, u"Class TRegGadget not found");
  UnRegisterClass(other::TRegWidget::StaticClass()); // not the registered one: stays
  EXPECT_EQ(GetClass(u"TRegWidget"), TRegWidget::StaticClass());
  UnRegisterClass(TRegWidget::StaticClass());
  RegisterClasses({other::TRegWidget::StaticClass(), TStringList::StaticClass()});
  EXPECT_EQ(GetClass(u"TRegWidget"), other::TRegWidget::StaticClass());
  EXPECT_EQ(GetClass(u"TStrings"), TStrings::StaticClass());
  UnRegisterClass(other::TRegWidget::StaticClass());
}

// --- TComponent ----------------------------------------------------------------------------------
/// Writes what its Notification hears into a shared log.
class TWatcher : public TComponent {
  LX_CLASS(TWatcher, TComponent)
  TWatcher(TComponent* AOwner, std::vector<std::string>* ALog, const char* ATag)
      : TComponent(AOwner), FLog(ALog), FTag(ATag) {}
  void Notification(TComponent* AComponent, TOperation AOperation) override {
    FLog->push_back(std::string(FTag) + (AOperation == opInsert ? " +" : " -") +
                    StringToUTF8(AComponent->GetName()));
    TComponent::Notification(AComponent, AOperation);
  }

protected:
  ~TWatcher() override = default;

private:
  std::vector<std::string>* FLog;
  const char* FTag;
};

using Component = ClassesFixture;

TEST_F(Component, OwnerFreesItsComponentsAndAFreedComponentLeaves) {
  TOwned<TComponent> Owner(New<TComponent>(nullptr));
  auto* A = New<TComponent>(Owner.get());
  auto* B = New<TComponent>(Owner.get());
  auto* Grandchild = New<TComponent>(B);
  (void)Grandchild;
  EXPECT_EQ(Alive(), 4);
  EXPECT_EQ(Owner->GetComponentCount(), 2);
  EXPECT_EQ(Owner->GetComponents(1), B);
  EXPECT_EQ(A->GetOwner(), Owner.get());
  A->Free();
  EXPECT_EQ(Owner->GetComponentCount(), 1);
  EXPECT_EQ(Owner->GetComponents(0), B);
  ExpectRaises<EListError>([&] { (void)Owner->GetComponents(1); }, u"List index out of bounds (1)");
  Owner.reset();
  EXPECT_EQ(Alive(), 0);
}

TEST_F(Component, NamesMustBeIdentifiers) {
  TOwned<TComponent> C(New<TComponent>(nullptr));
  struct Case {
    std::u16string_view Name, Message;
  };
  const Case Cases[] = {
      {u"1abc", u"\"1abc\" is not a valid component name"},
      {u"a b", u"\"a b\" is not a valid component name"},
      {u"a-b", u"\"a-b\" is not a valid component name"},
      {u"a.b", u"\"a.b\" is not a valid component name"},
      {u"\u00e9t\u00e9", u"\"\u00e9t\u00e9\" is not a valid component name"},
  };
  for (const auto& Bad : Cases) {
    SCOPED_TRACE(StringToUTF8(Bad.Name));
    ExpectRaises<EComponentError>([&] { C->SetName(Bad.Name); }, Bad.Message);
  }
  EXPECT_EQ(C->GetName(), u"");
  for (auto Name : {u"_x", u"abc1", u"A_2", u""}) {
    C->SetName(Name);
    EXPECT_EQ(C->GetName(), Name);
  }
}

TEST_F(Component, NamesAreUniqueUnderOneOwner) {
  TOwned<TComponent> Owner(New<TComponent>(nullptr));
  TOwned<TComponent> Other(New<TComponent>(nullptr));
  auto* A = New<TComponent>(Owner.get());
  auto* B = New<TComponent>(Owner.get());
  A->SetName(u"Button");
  ExpectRaises<EComponentError>([&] { B->SetName(u"BUTTON"); },
                                u"A component named BUTTON already exists");
  EXPECT_EQ(B->GetName(), u"");
  A->SetName(u"BUTTON"); // a change of case of its own name
  EXPECT_EQ(Owner->FindComponent(u"button"), A);
  EXPECT_EQ(Owner->FindComponent(u""), nullptr);
  auto* C = New<TComponent>(Other.get());
  C->SetName(u"Button"); // another owner
  ExpectRaises<EComponentError>([&] { Owner->InsertComponent(C); },
                                u"A component named Button already exists");
  EXPECT_EQ(C->GetOwner(), Other.get());
  C->SetName(u"Label");
  Owner->InsertComponent(C); // moves from its former owner
  EXPECT_EQ(C->GetOwner(), Owner.get());
  EXPECT_EQ(Other->GetComponentCount(), 0);
  Owner->RemoveComponent(B);
  EXPECT_EQ(B->GetOwner(), nullptr);
  EXPECT_EQ(Owner->GetComponentCount(), 2);
  B->Free();
}

TEST_F(Component, NotificationReachesOwnerAndItsComponents) {
  std::vector<std::string> Log;
  TOwned<TWatcher> Owner(New<TWatcher>(nullptr, &Log, "owner"));
  auto* Child = New<TWatcher>(Owner.get(), &Log, "child");
  Child->SetName(u"Child");
  auto* Plain = New<TComponent>(nullptr);
  Plain->SetName(u"Plain");
  Owner->InsertComponent(Plain);
  Owner->RemoveComponent(Plain);
  Plain->Free();
  EXPECT_EQ(Log, (std::vector<std::string>{"owner +", "child +", "owner +Plain", "child +Plain",
                                           "owner -Plain", "child -Plain"}));
}

TEST_F(Component, InterfaceIsNotCounted) {
  TOwned<TComponent> C(New<TComponent>(nullptr));
  IInterface* Intf = nullptr;
  ASSERT_EQ(C->QueryInterface(IInterface::IID, reinterpret_cast<void**>(&Intf)), S_OK);
  EXPECT_EQ(Intf, static_cast<IInterface*>(C.get()));
  constexpr TGUID Other{0x12345678, 0x1234, 0x1234, {1, 2, 3, 4, 5, 6, 7, 8}};
  void* None = &Intf;
  EXPECT_EQ(C->QueryInterface(Other, &None), E_NOINTERFACE);
  EXPECT_EQ(None, nullptr);
  {
    IPtr<IInterface> Held(Intf);
    EXPECT_EQ(Held->_AddRef(), -1);
    EXPECT_EQ(Held->_Release(), -1);
  }
  EXPECT_EQ(Alive(), 1); // the last reference went without destroying it
}

// --- TCriticalSection ----------------------------------------------------------------------------
using CriticalSection = ClassesFixture;

TEST_F(CriticalSection, OneThreadMayEnterAgainOthersWait) {
  TOwned<TCriticalSection> Lock(New<TCriticalSection>());
  Lock->Enter();
  EXPECT_TRUE(Lock->TryEnter());
  bool OtherGotIn = true;
  std::thread([&] { OtherGotIn = Lock->TryEnter(); }).join();
  EXPECT_FALSE(OtherGotIn);
  Lock->Leave();
  Lock->Leave();
  std::thread([&] {
    OtherGotIn = Lock->TryEnter();
    if (OtherGotIn)
      Lock->Leave();
  }).join();
  EXPECT_TRUE(OtherGotIn);
}

} // namespace
} // namespace lorvane
