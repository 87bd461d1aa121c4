// The shop model that the examples share: a customer with an address record, a list of orders,
// an enumeration and a set, and a property hidden by a hint, described once at start-up.
#pragma once

#include <lorvane/uLxTypes.h>

#include <vector>

namespace Shop {
using namespace lorvane;
enum class TStatus { stOpen, stPaid, stShipped };
enum class TChannel { chWeb, chPhone, chStore };
using TChannels = TSet<TChannel>;

struct TAddress {
  UnicodeString Street;
  UnicodeString City;
  Integer Zip = 0;
};

class TOrder : public TObject {
  LX_CLASS(TOrder, TObject)
  TOrder() = default;
  Integer Id = 0;
  Double Total = 0;
  TStatus Status = TStatus::stOpen;

protected:
  ~TOrder() override = default;
};

class TCustomer : public TObject {
  LX_CLASS(TCustomer, TObject)
  TCustomer() = default;
  const UnicodeString& GetName() const { return FName; }
  void SetName(const UnicodeString& AName) { FName = AName; }
  TAddress Address;
  std::vector<TOrder*> Orders; // owned
  TChannels Channels;
  UnicodeString Password;

protected:
  ~TCustomer() override {
    for (TOrder* Order : Orders)
      Order->Free();
  }

private:
  UnicodeString FName;
};

// Once, at start-up, before any thread reads the registry.
inline void Describe() {
  LxDescribeEnum<TStatus>(u"Shop.TStatus", {u"stOpen", u"stPaid", u"stShipped"});
  LxDescribeEnum<TChannel>(u"Shop.TChannel", {u"chWeb", u"chPhone", u"chStore"});
  LxDescribeSet<TChannels>(u"Shop.TChannels");
  LxDescribeAggregate<TAddress>(u"Shop.TAddress");
  LxDescribeClass<TOrder>(u"Shop.TOrder")
      .Field(u"Id", &TOrder::Id)
      .Field(u"Total", &TOrder::Total)
      .Field(u"Status", &TOrder::Status);
  LxDescribeClass<TCustomer>(u"Shop.TCustomer")
      .Property(u"Name", &TCustomer::GetName, &TCustomer::SetName)
      .Property(u"Password", &TCustomer::Password)
      .Hint(shoDoNotSerialize)
      .Field(u"Address", &TCustomer::Address)
      .Field(u"Orders", &TCustomer::Orders)
      .Field(u"Channels", &TCustomer::Channels);
}
} // namespace Shop
