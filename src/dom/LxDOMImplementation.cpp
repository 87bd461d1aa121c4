// The implementation object of the standard DOM abstraction.
#include "lorvane/dom/LxDOMImplementation.h"

namespace lorvane {

HRESULT TLxDOMImplementation::QueryInterface(const TGUID& AIID, void** AObj) {
  if (AIID != IDOMImplementation::IID)
    return inherited::QueryInterface(AIID, AObj);
  *AObj = static_cast<IDOMImplementation*>(this);
  _AddRef();
  return S_OK;
}

WordBool TLxDOMImplementation::hasFeature(const DOMString& feature, const DOMString& version) {
  const bool Has =
      SameText(feature, u"xml") && (SameText(version, u"1.0") || SameText(version, u"2.0"));
  return Has ? WordTrue : WordFalse;
}

HRESULT TLxDOMImplementation::createDocumentType(const DOMString&, const DOMString&,
                                                 const DOMString&,
                                                 IPtr<IDOMDocumentType>& AResult) {
  AResult = nullptr;
  throw ELxDomNotSupported(u"Not implemented");
}

} // namespace lorvane
