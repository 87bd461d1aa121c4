// Array lists, object lists and dictionaries: index errors, ownership, order and key look-up.
#include "lorvane/platform/Generics.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace lorvane {
namespace {

using test::ExpectRaises;

using GenericsFixture = test::LiveObjectsTest;

class TTracked : public TObject {
  LX_CLASS(TTracked, TObject)
  explicit TTracked(int AId = 0, const TObjectList* AWatched = nullptr)
      : Id(AId), FWatched(AWatched) {}
  void BeforeDestruction() override {
    if (FWatched && SeenInList)
      *SeenInList = FWatched->Contains(this);
  }
  int Id;
  bool* SeenInList = nullptr;

protected:
  ~TTracked() override = default;

private:
  const TObjectList* FWatched;
};

int IdOf(TObject* AObject) { return static_cast<TTracked*>(AObject)->Id; }

// --- TList<T> ------------------------------------------------------------------------------------
using GenericList = GenericsFixture;

TEST_F(GenericList, IndexErrorsNameTheIndex) {
  TList<int> List{10, 20, 30};
  TList<int> Empty;
  struct Case {
    const char* What;
    std::function<void()> Action;
    std::u16string_view Message;
  };
  const Case Cases[] = {
      {"read -1", [&] { (void)List.GetItems(-1); }, u"List index out of bounds (-1)"},
      {"read Count", [&] { (void)List[3]; }, u"List index out of bounds (3)"},
      {"write Count", [&] { List.SetItems(3, 0); }, u"List index out of bounds (3)"},
      {"delete Count", [&] { List.Delete(3); }, u"List index out of bounds (3)"},
      {"insert Count+1", [&] { List.Insert(4, 0); }, u"List index out of bounds (4)"},
      {"insert -1", [&] { List.Insert(-1, 0); }, u"List index out of bounds (-1)"},
      {"exchange", [&] { List.Exchange(0, 7); }, u"List index out of bounds (7)"},
      {"first of empty", [&] { (void)Empty.First(); }, u"List index out of bounds (0)"},
      {"last of empty", [&] { (void)Empty.Last(); }, u"List index out of bounds (-1)"},
      {"capacity below count", [&] { List.SetCapacity(2); }, u"List capacity out of bounds (2)"},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.What);
    ExpectRaises<EListError>(C.Action, C.Message);
  }
  EXPECT_EQ(List.GetCount(), 3); // nothing changed on the way
}

TEST_F(GenericList, AddInsertRemoveKeepOrder) {
  TList<UnicodeString> List;
  EXPECT_EQ(List.Add(u"a"), 0);
  EXPECT_EQ(List.Add(u"b"), 1);
  List.Insert(0, u"x");
  List.Insert(3, u"a"); // at Count appends
  EXPECT_EQ(List.GetCount(), 4);
  EXPECT_EQ(List.IndexOf(u"a"), 1);
  EXPECT_EQ(List.Remove(u"a"), 1); // the first occurrence only
  EXPECT_EQ(List.IndexOf(u"a"), 2);
  EXPECT_EQ(List.Remove(u"zz"), -1);
  EXPECT_TRUE(List.Contains(u"b"));
  EXPECT_EQ(List.First(), u"x");
  EXPECT_EQ(List.Last(), u"a");
  List[1] = u"B";
  List.Exchange(0, 2);
  std::vector<UnicodeString> Seen(List.begin(), List.end());
  EXPECT_EQ(Seen, (std::vector<UnicodeString>{u"a", u"B", u"x"}));
  List.Delete(1);
  EXPECT_EQ(List.GetItems(1), u"x");
  List.Clear();
  EXPECT_EQ(List.GetCount(), 0);

  TList<bool> Flags{true, true};
  Flags[1] = false;
  EXPECT_TRUE(Flags.First());
  EXPECT_FALSE(Flags.Last());
}

TEST_F(GenericList, SortWithComparerIsStable) {
  TList<std::pair<int, char>> List{{2, 'a'}, {1, 'b'}, {2, 'c'}, {0, 'd'}, {1, 'e'}};
  List.Sort([](const std::pair<int, char>& A, const std::pair<int, char>& B) {
    return B.first - A.first; // descending
  });
  std::string Order;
  for (const auto& Item : List)
    Order += Item.second;
  EXPECT_EQ(Order, "acbed");
}

TEST_F(GenericList, CapacityCanGrowAndShrinkToCount) {
  TList<int> List{1, 2};
  List.SetCapacity(100);
  EXPECT_GE(List.GetCapacity(), 100);
  List.SetCapacity(2);
  EXPECT_EQ(List.GetCapacity(), 2);
  EXPECT_EQ(List[1], 2);
}

// --- TObjectList ---------------------------------------------------------------------------------
using ObjectList = GenericsFixture;

TEST_F(ObjectList, OwningListFreesWhatItLetsGo) {
  TOwned<TObjectList> List(New<TObjectList>(/*AOwnsObjects=*/true));
  for (int I = 0; I < 6; ++I)
    List->Add(New<TTracked>(I));
  EXPECT_EQ(Alive(), 7);
  List->Delete(0);
  EXPECT_EQ(Alive(), 6);
  EXPECT_EQ(List->Remove(List->GetItems(2)), 2);
  EXPECT_EQ(Alive(), 5);
  List->SetItems(0, New<TTracked>(10)); // the replaced item dies
  EXPECT_EQ(Alive(), 5);
  List->SetItems(0, List->GetItems(0)); // setting an item over itself keeps it
  EXPECT_EQ(IdOf(List->First()), 10);
  TObject* Kept = List->Extract(List->Last());
  EXPECT_EQ(IdOf(Kept), 5);
  EXPECT_EQ(Alive(), 5); // extracted, not freed
  EXPECT_EQ(List->Extract(Kept), nullptr);
  Free(Kept);
  List->Clear();
  EXPECT_EQ(Alive(), 1);
  List->Add(New<TTracked>());
  List->Add(nullptr);
  List.reset();
  EXPECT_EQ(Alive(), 0);
}

TEST_F(ObjectList, NonOwningListLeavesItemsAlone) {
  TOwned<TTracked> A(New<TTracked>(1)), B(New<TTracked>(2));
  TOwned<TObjectList> List(New<TObjectList>(/*AOwnsObjects=*/false));
  List->Add(A.get());
  List->Insert(0, B.get());
  List->Add(A.get());
  EXPECT_EQ(List->IndexOf(A.get()), 1);
  EXPECT_EQ(List->Remove(A.get()), 1);
  EXPECT_EQ(List->IndexOf(A.get()), 1); // the second occurrence is still there
  List->Delete(0);
  List->Clear();
  List.reset();
  EXPECT_EQ(Alive(), 2);
}

TEST_F(ObjectList, OwnershipCanBeSwitched) {
  TOwned<TObjectList> List(New<TObjectList>(/*AOwnsObjects=*/false));
  TOwned<TTracked> Item(New<TTracked>());
  List->Add(Item.get());
  List->SetOwnsObjects(true);
  EXPECT_TRUE(List->GetOwnsObjects());
  List->Delete(0);
  (void)Item.release(); // the list has freed it
  EXPECT_EQ(Alive(), 1);
}

TEST_F(ObjectList, ItemLeavesListBeforeItDies) {
  TOwned<TObjectList> List(New<TObjectList>());
  bool SeenByFirst = true, SeenBySecond = true;
  auto* First = New<TTracked>(1, List.get());
  auto* Second = New<TTracked>(2, List.get());
  First->SeenInList = &SeenByFirst;
  Second->SeenInList = &SeenBySecond;
  List->Add(First);
  List->Add(Second);
  List->Delete(0);
  EXPECT_FALSE(SeenByFirst);
  List.reset();
  EXPECT_FALSE(SeenBySecond);
}

TEST_F(ObjectList, IsAnObjectWithItsClass) {
  TOwned<TObject> Made(TObjectList::StaticClass()->CreateDefault());
  auto* List = static_cast<TObjectList*>(Made.get());
  EXPECT_EQ(List->ClassName(), u"TObjectList");
  EXPECT_TRUE(List->GetOwnsObjects()); // the platform's default
  List->Add(New<TTracked>());
  ExpectRaises<EListError>([&] { (void)(*List)[1]; }, u"List index out of bounds (1)");
  ExpectRaises<EListError>([&] { List->Insert(2, nullptr); }, u"List index out of bounds (2)");
  ExpectRaises<EListError>([&] { List->SetItems(-1, nullptr); }, u"List index out of bounds (-1)");
  ExpectRaises<EListError>([&] { List->Exchange(-2, 0); }, u"List index out of bounds (-2)");
  ExpectRaises<EListError>([&] { List->SetCapacity(0); }, u"List capacity out of bounds (0)");
  List->Clear();
  ExpectRaises<EListError>([&] { (void)List->Last(); }, u"List index out of bounds (-1)");
}

TEST_F(ObjectList, SortOrdersByComparer) {
  TOwned<TObjectList> List(New<TObjectList>());
  for (int Id : {3, 1, 2})
    List->Add(New<TTracked>(Id));
  List->Sort([](TObject* A, TObject* B) { return IdOf(A) - IdOf(B); });
  std::vector<int> Ids;
  for (TObject* Item : *List)
    Ids.push_back(IdOf(Item));
  EXPECT_EQ(Ids, (std::vector<int>{1, 2, 3}));
}

// --- TDictionary ---------------------------------------------------------------------------------
using Dictionary = GenericsFixture;

TEST_F(Dictionary, AddOfTakenKeyAndReadOfMissingKeyRaise) {
  TDictionary<UnicodeString, int> Map;
  Map.Add(u"one", 1);
  ExpectRaises<EListError>([&] { Map.Add(u"one", 2); }, u"Duplicates not allowed");
  ExpectRaises<EListError>([&] { (void)Map.GetItems(u"two"); }, u"Item not found");
  ExpectRaises<EListError>([&] { Map.SetItems(u"two", 2); }, u"Item not found");
  EXPECT_EQ(Map[u"one"], 1);
  EXPECT_EQ(Map.GetCount(), 1);
}

TEST_F(Dictionary, LooksUpUnicodeKeysExactly) {
  TDictionary<UnicodeString, int> Map;
  Map.Add(u"\u00e9t\u00e9", 1);
  Map.Add(u"ete", 2);
  Map.Add(u"ETE", 3);
  Map.AddOrSetValue(u"ete", 20);
  Map.AddOrSetValue(u"new", 4);
  int Value = 0;
  EXPECT_TRUE(Map.TryGetValue(u"\u00e9t\u00e9", Value));
  EXPECT_EQ(Value, 1);
  EXPECT_TRUE(Map.TryGetValue(u"ete", Value));
  EXPECT_EQ(Value, 20);
  EXPECT_FALSE(Map.TryGetValue(u"Ete", Value));
  EXPECT_EQ(Value, 20); // untouched on a miss
  Map.SetItems(u"ETE", 30);
  EXPECT_EQ(Map.GetItems(u"ETE"), 30);
  Map.Remove(u"ete");
  Map.Remove(u"absent");
  EXPECT_FALSE(Map.ContainsKey(u"ete"));
  EXPECT_EQ(Map.GetCount(), 3);
}

TEST_F(Dictionary, IteratesInInsertionOrderWithKeysBesideValues) {
  TDictionary<UnicodeString, int> Map;
  for (const auto* Key : {u"zeta", u"alpha", u"mid", u"beta"})
    Map.Add(Key, static_cast<int>(Map.GetCount()));
  Map.Remove(u"alpha");
  Map.Add(u"alpha", 9);
  const std::vector<UnicodeString> Keys = Map.GetKeys().ToArray();
  const std::vector<int> Values = Map.GetValues().ToArray();
  EXPECT_EQ(Keys, (std::vector<UnicodeString>{u"zeta", u"mid", u"beta", u"alpha"}));
  EXPECT_EQ(Values, (std::vector<int>{0, 2, 3, 9}));
  EXPECT_EQ(Map.GetKeys().GetCount(), 4);
  std::vector<UnicodeString> Walked;
  for (const auto& Pair : Map)
    Walked.push_back(Pair.Key);
  EXPECT_EQ(Walked, Keys);
  int Sum = 0;
  for (int V : Map.GetValues())
    Sum += V;
  EXPECT_EQ(Sum, 14);
  Map.Clear();
  EXPECT_EQ(Map.GetCount(), 0);
  EXPECT_EQ(Map.begin(), Map.end());
}

TEST_F(Dictionary, ObjectDictionaryFreesOwnedValues) {
  {
    TObjectDictionary<UnicodeString, TTracked*> Map({doOwnsValues});
    Map.Add(u"a", New<TTracked>(1));
    Map.Add(u"b", New<TTracked>(2));
    Map.Add(u"c", New<TTracked>(3));
    EXPECT_EQ(Alive(), 3);
    Map.Remove(u"a");
    EXPECT_EQ(Alive(), 2);
    Map.AddOrSetValue(u"b", New<TTracked>(20)); // the old value dies
    EXPECT_EQ(Alive(), 2);
    Map.AddOrSetValue(u"b", Map[u"b"]); // set over itself: kept
    EXPECT_EQ(Map[u"b"]->Id, 20);
    TPair<UnicodeString, TTracked*> Taken = Map.ExtractPair(u"c");
    EXPECT_EQ(Taken.Value->Id, 3);
    EXPECT_EQ(Alive(), 2);
    Free(Taken.Value);
    EXPECT_EQ(Map.ExtractPair(u"gone").Value, nullptr);
  }
  EXPECT_EQ(Alive(), 0);
}

TEST_F(Dictionary, ObjectDictionaryFreesOwnedKeysAndValues) {
  TObjectDictionary<TTracked*, TTracked*> Map({doOwnsKeys, doOwnsValues});
  auto* Key = New<TTracked>(1);
  Map.Add(Key, New<TTracked>(2));
  Map.Add(New<TTracked>(3), New<TTracked>(4));
  EXPECT_TRUE(Map.ContainsKey(Key));
  Map.Remove(Key);
  EXPECT_EQ(Alive(), 2);
  Map.Clear();
  EXPECT_EQ(Alive(), 0);

  TObjectDictionary<TTracked*, int> KeysOnly({doOwnsKeys});
  KeysOnly.Add(New<TTracked>(), 1);
  EXPECT_EQ(Alive(), 1);
  KeysOnly.Clear();
  EXPECT_EQ(Alive(), 0);
}

TEST_F(Dictionary, OwningWhatIsNoObjectRaises) {
  ExpectRaises<EInvalidCast>([] { TObjectDictionary<UnicodeString, TTracked*> Map({doOwnsKeys}); },
                             u"Invalid class typecast");
  ExpectRaises<EInvalidCast>(
      [] {
        TObjectDictionary<TTracked*, int> Map({doOwnsKeys, doOwnsValues});
      },
      u"Invalid class typecast");
}

} // namespace
} // namespace lorvane
