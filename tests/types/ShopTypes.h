// The small shop model that the type tests describe: an enumeration and its set, a record, a
// described class hierarchy with a descendant that isn't described, an abstract class, a
// component, and an interface with a class that implements it.
#pragma once

#include "lorvane/classes/LxObjectEx.h"
#include "lorvane/platform/Classes.h"
#include "lorvane/uLxTypes.h"

#include <vector>

namespace Shop {

using namespace lorvane;

enum class TColor { clRed, clGreen, clBlue };
using TColors = TSet<TColor>;
/// A set narrower than the 64 ordinals that a set's mask can carry.
using TFewColors = TSet<TColor, 4>;

struct TAddress {
  UnicodeString Street;
  Integer Zip = 0;
  UnicodeString City;
  UnicodeString Label() const { return Street + u", " + City; }
};

class TParty : public TPersistent {
  LX_CLASS(TParty, TPersistent)
  TParty() = default;
  const UnicodeString& GetName() const { return FName; }
  void SetName(const UnicodeString& AName) { FName = AName; }
  virtual UnicodeString GetDisplay() const { return u"party " + FName; }
  Integer Add(Integer A, Integer B) const { return A + B; }
  void Rename(UnicodeString APrefix, Integer ANumber) { FName = APrefix + IntToStr(ANumber); }

  Integer FId = 0;
  UnicodeString FName;

protected:
  ~TParty() override = default;
};

class TCustomer : public TParty {
  LX_CLASS(TCustomer, TParty)
  TCustomer() = default;
  UnicodeString GetDisplay() const override { return u"customer " + FName; }
  UnicodeString GetItem(Integer AIndex) const {
    return FItems.at(static_cast<std::size_t>(AIndex));
  }
  void SetItem(Integer AIndex, UnicodeString AValue) {
    FItems.at(static_cast<std::size_t>(AIndex)) = AValue;
  }
  Integer GetScore(UnicodeString AName) const { return static_cast<Integer>(AName.size()); }
  Integer GetSecret() const { return FSecret; }
  void SetSecret(Integer AValue) { FSecret = AValue; }

  TAddress Address;
  std::vector<Integer> Scores;
  TColors Colors;
  TColor Color = TColor::clRed;
  Integer Level = 0;
  std::vector<UnicodeString> FItems{u"a", u"b", u"c"};
  Integer FSecret = 0;

protected:
  ~TCustomer() override = default;
};

/// Not described: everything it has comes from its ancestors.
class TVipCustomer : public TCustomer {
  LX_CLASS(TVipCustomer, TCustomer)
  TVipCustomer() = default;

protected:
  ~TVipCustomer() override = default;
};

/// No metaclass can make it.
class TShape : public TObject {
  LX_CLASS(TShape, TObject)
  virtual double Area() const = 0;

protected:
  TShape() = default;
  ~TShape() override = default;
};

/// Made only with an owner.
class TWidget : public TComponent {
  LX_CLASS(TWidget, TComponent)
  explicit TWidget(TComponent* AOwner) : TComponent(AOwner) {}

protected:
  ~TWidget() override = default;
};

class IGreeter : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x1B7D40A2, 0x33C1, 0x4E8F, {0x9A, 0x10, 0x5C, 0x7E, 0x21, 0x03, 0x44, 0xB6}};
  virtual UnicodeString Greet() = 0;

protected:
  ~IGreeter() = default;
};

class IUnsupported : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x2C8E51B3, 0x44D2, 0x4F90, {0xAB, 0x21, 0x6D, 0x8F, 0x32, 0x14, 0x55, 0xC7}};

protected:
  ~IUnsupported() = default;
};

class TGreeter : public TLxObject, public IGreeter {
  LX_CLASS(TGreeter, TLxObject)
  TGreeter() = default;
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override {
    return AnswerInterfaces<IGreeter>(this, AIID, AObj,
                                      [&] { return inherited::QueryInterface(AIID, AObj); });
  }
  UnicodeString Greet() override { return u"hello"; }

protected:
  ~TGreeter() override = default;
};

/// Describes the model once per process; every test that uses it calls this first.
inline void DescribeShop() {
  static const bool Described = [] {
    LxDescribeEnum<TColor>(u"Shop.TColor", {u"clRed", u"clGreen", u"clBlue"})
        .Hint(shoEnumPrefix, u"cl");
    LxDescribeSet<TColors>(u"Shop.TColors");
    LxDescribeRecord<TAddress>(u"Shop.TAddress")
        .Field(u"Street", &TAddress::Street)
        .Field(u"Zip", &TAddress::Zip)
        .Hint(shoName, u"zip")
        .Hint(shoRequired)
        .Property(u"City", &TAddress::City)
        .Method(u"Label", &TAddress::Label);
    LxDescribeClass<TParty>(u"Shop.TParty")
        .Hint(shoNodeType, u"party")
        .Field(u"FId", &TParty::FId, mvPrivate)
        .Property(u"Name", &TParty::GetName, &TParty::SetName)
        .Property(u"Display", &TParty::GetDisplay)
        .Method(u"Add", &TParty::Add, {u"A", u"B"})
        .Method(u"Rename", &TParty::Rename, {u"APrefix"});
    LxDescribeClass<TCustomer>(u"Shop.TCustomer")
        .Property(u"Display", &TCustomer::GetDisplay)
        .Property(u"Level", &TCustomer::Level, mvPublic)
        .Property(u"Secret", static_cast<Integer (TCustomer::*)() const>(nullptr),
                  &TCustomer::SetSecret)
        .Field(u"Address", &TCustomer::Address)
        .Field(u"Scores", &TCustomer::Scores)
        .Field(u"Colors", &TCustomer::Colors)
        .Field(u"Color", &TCustomer::Color)
        .IndexedProperty(u"Items", &TCustomer::GetItem, &TCustomer::SetItem)
        .IndexedProperty(u"Score", &TCustomer::GetScore);
    LxDescribeInterface<IGreeter>(u"Shop.IGreeter");
    RegisterClass(TVipCustomer::StaticClass());
    return true;
  }();
  (void)Described;
}

} // namespace Shop
