// Loads JSON into the value tree, reads and changes it through the API, and writes it again.
#include <lorvane/uLxJSON.h>

#include <iostream>

using namespace lorvane;

int main(int argc, char** argv) {
  const char* FileName = argc > 1 ? argv[1] : "tests/data/orders.json";
  try {
    TOwned<TLxJSONDocument> Document(
        TLxJSONDocument::CreateFromFile(UTF8ToString(FileName), fmOpenRead | fmShareDenyWrite));
    std::cout << "shop: " << StringToUTF8(Document->GetMember(u"shop")->GetAsString()) << '\n';

    // Numbers stay the text they were read as until a getter converts them.
    TLxJSONArray* Orders = Document->GetMember(u"orders")->GetAsArray();
    Double Unpaid = 0;
    for (Integer I = 0; I < Orders->Count(); ++I) {
      TLxJSONBase* Order = Orders->Item(I);
      std::cout << "order " << Order->GetMember(u"id")->GetAsInteger() << " by "
                << StringToUTF8(Order->GetMember(u"customer")->GetAsString()) << ": "
                << StringToUTF8(Order->GetMember(u"total")->GetAsString()) << '\n';
      if (!Order->GetMember(u"paid")->GetAsBoolean())
        Unpaid += Order->GetMember(u"total")->GetAsDouble();
    }

    // A member that isn't there is made on request; AsObject builds the structure on the way.
    TLxJSONObject* Summary = Document->GetMember(u"summary", {jsoCreate})->GetAsObject();
    Summary->AddMember(u"orders", Variant(Orders->Count()));
    Summary->AddMember(u"unpaid", Variant(Unpaid));
    Orders->Item(1)->GetMember(u"paid")->SetAsBoolean(true);
    Document->GetMember(u"note")->SetAsString(u"paid in full \"today\"");

    std::cout << StringToUTF8(Document->GetAsJSON()) << '\n';
  } catch (const Exception& E) {
    std::cerr << "failed: " << E.what() << '\n';
    return 1;
  }
}
