/// The implementation object of the standard DOM abstraction: which features the tree has.
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/dom/LxDOMTypes.h"
#include "lorvane/platform/XmlDom.h"

namespace lorvane {

/// Counted like any interface object: the last release destroys it.
class TLxDOMImplementation : public TLxObject, public IDOMImplementation {
  LX_CLASS(TLxDOMImplementation, TLxObject)
  TLxDOMImplementation() = default;

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  /// True for "xml" with "1.0" or "2.0", without regard to case.
  WordBool hasFeature(const DOMString& feature, const DOMString& version) override;
  /// Raises ELxDomNotSupported "Not implemented": the tree has no document types.
  HRESULT createDocumentType(const DOMString& qualifiedName, const DOMString& publicId,
                             const DOMString& systemId, IPtr<IDOMDocumentType>& AResult) override;

protected:
  ~TLxDOMImplementation() override = default;
};

} // namespace lorvane
