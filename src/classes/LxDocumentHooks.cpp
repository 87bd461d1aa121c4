// The document hooks: storage for the document modules' functions, and the calls through them.
#include "lorvane/classes/LxDocumentHooks.h"

#include "lorvane/classes/LxLibraryStartup.h"

#include <utility>

namespace lorvane {

namespace {

struct TDocumentHooks {
  TCreateDocumentFunc CreateXML;
  TCreateDocumentFunc CreateJSON;
  TGetDocumentValueFunc GetXMLValue;
  TGetDocumentValueFunc GetJSONValue;
};

// Every use goes through here: the library's start-up puts the document modules' makers in
// place before anyone reads or sets a hook, so that an application's own hook always wins.
TDocumentHooks& Hooks() {
  EnsureLibraryStarted();
  static TDocumentHooks Instance;
  return Instance;
}

IPtr<IInterface> CreateThrough(const TCreateDocumentFunc& AFunc, const UnicodeString& AText,
                               std::u16string_view AMissing) {
  if (!AFunc)
    throw ENotSupportedException(UnicodeString(AMissing));
  return AFunc(AText);
}

Variant GetValueThrough(const TGetDocumentValueFunc& AFunc, IInterface* ADocument,
                        const UnicodeString& APath, std::u16string_view AMissing) {
  if (!AFunc)
    throw ENotSupportedException(UnicodeString(AMissing));
  if (!ADocument)
    throw EArgumentException(UnicodeString(SNoDocumentGiven));
  return AFunc(ADocument, APath);
}

} // namespace

TCreateDocumentFunc SetCreateXMLDoc(TCreateDocumentFunc AFunc) {
  return std::exchange(Hooks().CreateXML, std::move(AFunc));
}
TCreateDocumentFunc SetCreateJSONDoc(TCreateDocumentFunc AFunc) {
  return std::exchange(Hooks().CreateJSON, std::move(AFunc));
}
TGetDocumentValueFunc SetGetXMLDocValue(TGetDocumentValueFunc AFunc) {
  return std::exchange(Hooks().GetXMLValue, std::move(AFunc));
}
TGetDocumentValueFunc SetGetJSONDocValue(TGetDocumentValueFunc AFunc) {
  return std::exchange(Hooks().GetJSONValue, std::move(AFunc));
}

IPtr<IInterface> CreateXMLDocument(const UnicodeString& AText) {
  return CreateThrough(Hooks().CreateXML, AText, SNoXMLDocumentSupport);
}

IPtr<IInterface> CreateJSONDocument(const UnicodeString& AText) {
  return CreateThrough(Hooks().CreateJSON, AText, SNoJSONDocumentSupport);
}

Variant GetXMLDocumentValue(IInterface* ADocument, const UnicodeString& APath) {
  return GetValueThrough(Hooks().GetXMLValue, ADocument, APath, SNoXMLDocumentSupport);
}

Variant GetJSONDocumentValue(IInterface* ADocument, const UnicodeString& APath) {
  return GetValueThrough(Hooks().GetJSONValue, ADocument, APath, SNoJSONDocumentSupport);
}

} // namespace lorvane
