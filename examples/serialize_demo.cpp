// Writes a customer of the shop model as XML and as JSON, reads each text back into a new
// customer, and shows that each is equal to the first.
#include "ShopModel.h"

#include <lorvane/uLxJSONSerializer.h>
#include <lorvane/uLxSerializer.h>
#include <lorvane/uLxXMLSerializer.h>

#include <iostream>

using namespace lorvane;

int main() {
  using namespace Shop;
  try {
    Describe();
    TOwned<TCustomer> Customer(New<TCustomer>());
    Customer->SetName(u"Ada Lovelace");
    Customer->Address = {u"12 Analytical Row", u"London", 1815};
    Customer->Channels = {TChannel::chWeb, TChannel::chStore};
    Customer->Password = u"never written";
    for (Integer Id : {1, 2}) {
      Customer->Orders.push_back(New<TOrder>());
      Customer->Orders.back()->Id = Id;
      Customer->Orders.back()->Total = 12.5 * Id;
    }
    Customer->Orders.back()->Status = TStatus::stPaid;

    // The object as XML, with "urn:shop" as the namespace of its elements.
    const TLxSerializedData XML = LxAsXML(Customer.get(), u"urn:shop");
    std::cout << XML << "\n\n";

    // A new customer of the class the text names; its orders belong to it (its destructor frees
    // them), so the run hands them over instead of freeing them.
    TObjectList* KeptByTheCustomer = nullptr;
    TOwned<TObject> Read(LxCreateFrom(ldsXML, XML, &KeptByTheCustomer));
    auto* Copy = static_cast<TCustomer*>(Read.get());
    std::cout << "read back: " << StringToUTF8(Copy->GetName()) << ", "
              << StringToUTF8(Copy->Address.City) << ", " << Copy->Orders.size() << " orders, "
              << StringToUTF8(TValue::From(Copy->Channels).ToString()) << '\n';
    std::cout << "the two customers are "
              << (LxAsXML(Copy, u"urn:shop") == XML ? "equal" : "different") << "\n\n";

    // The same customer as JSON, its class in the first member "className", and back.
    const TLxSerializedData JSON = LxAsJSON(Customer.get());
    std::cout << JSON << "\n\n";
    TObjectList* KeptByTheJSONCustomer = nullptr;
    TOwned<TObject> FromJSON(LxCreateFrom(ldsJSON, JSON, &KeptByTheJSONCustomer));
    std::cout << "the customer read from JSON is "
              << (LxAsXML(FromJSON.get(), u"urn:shop") == XML ? "equal" : "different")
              << " to the first\n";
  } catch (const Exception& E) {
    std::cerr << "failed: " << E.what() << '\n';
    return 1;
  }
}
