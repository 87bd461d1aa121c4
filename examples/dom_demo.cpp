// Loads a document into the tree, changes it through the API and saves it formatted.
#include <lorvane/platform/CodePages.h>
#include <lorvane/uLxXMLDOM.h>

#include <cstdio>
#include <iostream>

using namespace lorvane;

/// The child element with attribute id equal to AId; nil when none.
TLxDOMElement* BookById(TLxDOMElement* ACatalog, const UnicodeString& AId) {
  TLxDOMElementList* Books = ACatalog->Elements();
  for (Integer I = 0; I < Books->Count(); ++I)
    if (TLxDOMAttribute* Id = Books->GetItem(I)->FindAttribute(u"id");
        Id && Id->GetNodeValue() == AId)
      return Books->GetItem(I);
  return nullptr;
}

int main(int argc, char** argv) {
  const char* FileName = argc > 1 ? argv[1] : "tests/data/catalog.xml";
  try {
    TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
    Document->LoadFromFile(UTF8ToString(FileName), fmOpenRead | fmShareDenyWrite);
    TLxDOMElement* Catalog = Document->GetRootNode();

    // A new element with an attribute and text; the text is escaped on the way in.
    TLxDOMElement* Note = Catalog->AddElement(u"note");
    Note->SetAttribute(u"lang", u"en");
    Note->AddText(u"Prices include VAT & shipping.");

    Catalog->SetAttribute(u"currency", u"USD");
    if (TLxDOMElement* Book = BookById(Catalog, u"b2"))
      Book->SetAttribute(u"year", u"1955");
    if (TLxDOMElement* Gone = BookById(Catalog, u"b3"))
      Catalog->RemoveElement(Gone);

    // The writer reads back what it wrote while formatting, so it writes to memory, not stdout.
    TOwned<TMemoryStream> Output(New<TMemoryStream>());
    Document->SaveToStream(Output.get(), CP_UTF8, /*AFormatted=*/true, /*AWriteBOM=*/false);
    std::fwrite(Output->Memory(), 1, static_cast<std::size_t>(Output->GetSize()), stdout);
    std::fputs("\n", stdout);
  } catch (const Exception& E) {
    std::cerr << "dom_demo: " << E.what() << '\n';
    return 1;
  }
}
