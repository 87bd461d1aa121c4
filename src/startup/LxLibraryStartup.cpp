// The library's start-up registrations; the only place that knows every module.
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/classes/LxDocumentHooks.h"
#include "lorvane/json/LxJSONValues.h"
#include "lorvane/serializer/LxJSONDeserializer.h"
#include "lorvane/uLxJSONSerializer.h"
#include "lorvane/uLxSerializer.h"
#include "lorvane/uLxXMLDOM.h"
#include "lorvane/uLxXMLSerializer.h"
#include "lorvane/uLxXPath.h"

namespace lorvane {

void RunLibraryStartup() {
  SetCreateXMLDoc(
      [](const UnicodeString& AText) { return IPtr<IInterface>::From(LxCreateDOM(AText)); });
  SetCreateJSONDoc([](const UnicodeString& AText) {
    // A document without owner ends with its last interface reference.
    return IPtr<IInterface>::From(IPtr<ILxJSONDocument>(TLxJSONDocument::CreateFromJSON(AText)));
  });
  SetGetJSONDocValue([](IInterface* ADocument, const UnicodeString& APath) {
    // The first value the path selects, or unassigned when it selects nothing.
    IPtr<ILxJSONDocument> Document = IPtr<ILxJSONDocument>::From(ADocument);
    if (!Document)
      throw EInvalidCast(UnicodeString(SInvalidCast));
    IPtr<ILxJSONArray> Found = Document->SelectIntf(APath, TLxJDOCSelectOptions{});
    if (Found->Count() > 0)
      if (IPtr<ILxJSONBase> First = Found->GetItem(0))
        return First->GetAsVariant();
    return Unassigned();
  });
  // Collations and functions of the path language, and the tree's path hook.
  LxXPathStartup();
  // Serialization: the framework's alias, then each format's classes.
  LxSerializerStartup();
  LxXMLSerializerStartup();
  LxJSONSerializerStartup();
  // Last: it keeps the JSON serializer class registered before it.
  LxJSONDeserializerStartup();
}

} // namespace lorvane
