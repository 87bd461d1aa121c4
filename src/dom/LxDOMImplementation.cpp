// The implementation object of the standard DOM abstraction.
#include "lorvane/dom/LxDOMImplementation.h"

namespace lorvane {

HRESULT TLxDOMImplementation::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<IDOMImplementation>(
      this, AIID, AObj, [&] { return inherited::QueryInterface(AIID, AObj); });
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
