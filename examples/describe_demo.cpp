// Describes an application's model to the type registry once, then prints a customer member by
// member through the registry alone, as a serializer walks it.
#include "ShopModel.h"

#include <lorvane/uLxTypes.h>

#include <iostream>
#include <string>
#include <vector>

using namespace lorvane;

static void PrintMembers(const TLxTypeDescription& AType, const void* AInstance, int ADepth);

static void PrintValue(std::u16string_view AName, const TValue& AValue, int ADepth) {
  const TLxTypeInfo* Type = AValue.LxTypeInfo();
  std::cout << std::string(2 * ADepth, ' ') << StringToUTF8(AName) << " ("
            << StringToUTF8(LxTypeKindName(Type->GetTypeKind())) << ")";
  switch (Type->GetTypeKind()) {
  case ltkRecord:
    std::cout << ": " << StringToUTF8(Type->GetQualifiedName()) << '\n';
    PrintMembers(*Type->GetDescription(), AValue.GetReferenceToRawData(), ADepth + 1);
    break;
  case ltkArray:
  case ltkDynArray:
    std::cout << ": " << AValue.GetArrayLength() << " items\n";
    for (Integer I = 0; I < AValue.GetArrayLength(); ++I)
      PrintValue(u"[" + IntToStr(I) + u"]", AValue.GetArrayElement(I), ADepth + 1);
    break;
  case ltkClass:
    // An object is described by its own class, which may be a descendant of the declared one.
    if (TObject* Object = AValue.AsObject()) {
      const TLxTypeInfo* ObjectType = TLxTypes::GetTypeInfo(Object->ClassType());
      std::cout << ": " << StringToUTF8(ObjectType->GetQualifiedName()) << '\n';
      PrintMembers(*ObjectType->GetDescription(), Object, ADepth + 1);
    } else {
      std::cout << " = nil\n";
    }
    break;
  default:
    std::cout << " = " << StringToUTF8(AValue.ToString()) << '\n';
  }
}

static void PrintMembers(const TLxTypeDescription& AType, const void* AInstance, int ADepth) {
  for (const TLxPropertyDescription* Property : AType.GetProperties())
    if (Property->GetIsReadable() && !Property->FindHint(shoDoNotSerialize))
      PrintValue(Property->GetName(), Property->GetValue(AInstance), ADepth);
  for (const TLxFieldDescription* Field : AType.GetFields())
    if (!Field->FindHint(shoDoNotSerialize))
      PrintValue(Field->GetName(), Field->GetValue(AInstance), ADepth);
}

int main() {
  using namespace Shop;
  try {
    Describe();
    TOwned<TCustomer> Customer(New<TCustomer>());
    Customer->Address = {u"12 Analytical Row", u"London", 1815};
    Customer->Channels = {TChannel::chWeb, TChannel::chStore};
    Customer->Password = u"never printed";
    for (Integer Id : {1, 2}) {
      Customer->Orders.push_back(New<TOrder>());
      Customer->Orders.back()->Id = Id;
      Customer->Orders.back()->Total = 12.5 * Id;
    }

    // Writes through the registry convert what they are given: a text to an enumeration, a
    // property's value through its setter.
    const TLxTypeDescription& CustomerType = *TLxTypes::GetTypeInfo<TCustomer*>()->GetDescription();
    CustomerType.GetProperty(u"name")->SetValue(Customer.get(), TValue::From(u"Ada Lovelace"));
    TLxTypes::GetTypeInfo<TOrder*>()->GetDescription()->GetField(u"status")->SetValue(
        Customer->Orders[1], TValue::From(u"stPaid"));

    std::cout << StringToUTF8(TLxTypes::GetTypeInfo<TCustomer*>()->GetQualifiedName()) << '\n';
    PrintMembers(CustomerType, Customer.get(), 1);
  } catch (const Exception& E) {
    std::cerr << "failed: " << E.what() << '\n';
    return 1;
  }
}
