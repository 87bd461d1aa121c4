// The library's start-up registrations; the only place that knows every module.
#include "startup/LxLibraryStartup.h"

#include "lorvane/json/LxJSONValues.h"
#include "lorvane/uLxXMLDOM.h"

namespace lorvane::startup {

TDocumentMakers DocumentMakers() {
  TDocumentMakers Makers;
  Makers.XML = [](const UnicodeString& AText) {
    return IPtr<IInterface>::From(LxCreateDOM(AText));
  };
  Makers.JSON = [](const UnicodeString& AText) {
    // A document without owner ends with its last interface reference.
    return IPtr<IInterface>::From(IPtr<ILxJSONDocument>(TLxJSONDocument::CreateFromJSON(AText)));
  };
  return Makers;
}

} // namespace lorvane::startup
