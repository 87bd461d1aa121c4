#include "lorvane/platform/Classes.h"
#include "lorvane/uLxTypes.h"
#include <gtest/gtest.h>

using namespace lorvane;

namespace Shop {
enum class TColor { clRed, clGreen, clBlue };
using TColors = TSet<TColor>;
struct TAddress {
  UnicodeString Street;
  Integer Zip = 0;
};
class TCustomer : public TPersistent {
  LX_CLASS(TCustomer, TPersistent)
  TCustomer() = default;
  const UnicodeString& GetName() const { return FName; }
  void SetName(const UnicodeString& AName) { FName = AName; }
  Integer Add(Integer A, Integer B) { return A + B; }
  UnicodeString FName;
  TAddress Address;
  std::vector<Integer> Scores;
  TColors Colors;
  TColor Color = TColor::clRed;

protected:
  ~TCustomer() override = default;
};
} // namespace Shop

static void Describe() {
  static bool Done = false;
  if (Done)
    return;
  Done = true;
  LxDescribeEnum<Shop::TColor>(u"Shop.TColor", {u"clRed", u"clGreen", u"clBlue"})
      .Hint(shoEnumPrefix, u"cl");
  LxDescribeRecord<Shop::TAddress>(u"Shop.TAddress")
      .Field(u"Street", &Shop::TAddress::Street)
      .Field(u"Zip", &Shop::TAddress::Zip)
      .Hint(shoName, u"zip");
  LxDescribeClass<Shop::TCustomer>(u"Shop.TCustomer")
      .Property(u"Name", &Shop::TCustomer::GetName, &Shop::TCustomer::SetName)
      .Field(u"Address", &Shop::TCustomer::Address)
      .Field(u"Scores", &Shop::TCustomer::Scores)
      .Field(u"Colors", &Shop::TCustomer::Colors)
      .Field(u"Color", &Shop::TCustomer::Color)
      .Method(u"Add", &Shop::TCustomer::Add, {u"A", u"B"});
}

TEST(Smoke, Basics) {
  Describe();
  auto* Info = TLxTypes::GetTypeInfo<Shop::TCustomer*>();
  EXPECT_EQ(Info->GetQualifiedName(), u"Shop.TCustomer");
  EXPECT_EQ(Info->GetTypeKind(), ltkClass);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"ns:TCustomer", ltnSchema), Info);
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"ArrayOfString", ltnSchema, false, lmkArray),
            TLxTypes::GetTypeInfo<std::vector<UnicodeString>>());
  EXPECT_EQ(TLxTypes::GetTypeInfo<std::vector<UnicodeString>>()->SchemaName(), u"ArrayOfString");
  TOwned<Shop::TCustomer> C(New<Shop::TCustomer>());
  auto* P = Info->GetDescription()->GetProperty(u"NAME");
  ASSERT_TRUE(P);
  P->SetValue(C.get(), TValue::From(u"Ann"));
  EXPECT_EQ(C->FName, u"Ann");
  EXPECT_EQ(P->GetValue(C.get()).AsString(), u"Ann");
  auto* F = Info->GetDescription()->GetField(u"colors");
  F->SetValue(C.get(), TValue::From(u"[clRed, clBlue]"));
  EXPECT_EQ(F->GetValue(C.get()).ToString(), u"[clRed,clBlue]");
  auto* Col = Info->GetDescription()->GetField(u"color");
  Col->SetValue(C.get(), TValue::From(u"2"));
  EXPECT_EQ(Col->GetValue(C.get()).ToString(), u"clBlue");
  TValue Scores = Info->GetDescription()->GetField(u"Scores")->GetValue(C.get());
  Scores.SetArrayLength(2);
  Scores.SetArrayElement(1, TValue::From(u"42"));
  Info->GetDescription()->GetField(u"Scores")->SetValue(C.get(), Scores);
  ASSERT_EQ(C->Scores.size(), 2u);
  EXPECT_EQ(C->Scores[1], 42);
  TValue R = Info->GetDescription()->GetMethod(u"add")->Invoke(
      C.get(), {TValue::From(2), TValue::From(u"3")});
  EXPECT_EQ(R.AsInteger(), 5);
  TValue Obj = TValue::From(C.get());
  EXPECT_EQ(Obj.AsType<Shop::TCustomer*>(), C.get());
  EXPECT_EQ(Obj.TypeKind(), ltkClass);
  EXPECT_EQ(TValue::From(3.5).ToInteger(), 4);
  EXPECT_EQ(TValue::From(u"12").ToInteger(), 12);
  EXPECT_EQ(TValue::From(u"x").ToInteger(false, 7), 7);
  TObject* Made = Info->GetDescription()->GetMethod(u"Create")->Invoke(nullptr, {}).AsObject();
  EXPECT_TRUE(Made->InheritsFrom(Shop::TCustomer::StaticClass()));
  Made->Free();
  auto* Rec = TLxTypes::GetTypeInfo<Shop::TAddress>();
  EXPECT_EQ(Rec->GetDescription()->GetField(u"zip")->FindHint(shoName)->GetValue(), u"zip");
  EXPECT_EQ(TLxTypes::GetTypeInfo(u"ArrayOfTAddress", ltnSchema, false, lmkArray),
            TLxTypes::GetTypeInfo<std::vector<Shop::TAddress>>());
}
