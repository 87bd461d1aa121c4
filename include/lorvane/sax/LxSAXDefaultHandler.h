/// TLxSAXDefaultHandler: the base of XML handlers. It implements the content, lexical and error
/// handler interfaces with methods that do nothing, so that a handler overrides only the events
/// it needs.
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/sax/LxSAXInterfaces.h"

namespace lorvane {

/// Answers ILxSAXContentHandler, ILxSAXLexicalHandler and ILxSAXErrorHandler besides TLxObject's
/// own interfaces, each with a counted reference. FatalError does nothing either: the reader
/// raises the failure itself once the handler has seen it.
///
/// Lifetime is TLxObject's: with AutoDestroy true (the default) the last release of an interface
/// destroys the handler; a handler that its user owns and frees sets AutoDestroy false and
/// outlives every reader it is set on (or is taken off them first).
///
///     class TElementCounter : public TLxSAXDefaultHandler {
///       LX_CLASS(TElementCounter, TLxSAXDefaultHandler)
///       void StartElement(const LxXMLString&, const LxXMLString&, const LxXMLString&,
///                         ILxSAXAttributes*) override { ++Count; }
///       Integer Count = 0;
///     };
class TLxSAXDefaultHandler : public TLxObject,
                             public ILxSAXContentHandler,
                             public ILxSAXLexicalHandler,
                             public ILxSAXErrorHandler {
  LX_CLASS(TLxSAXDefaultHandler, TLxObject)
  TLxSAXDefaultHandler() noexcept = default;

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  // ILxSAXContentHandler
  void SetDocumentLocator(ILxSAXLocator* ALocator) override;
  void Characters(const LxXMLString& AText) override;
  void EndDocument() override;
  void EndElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                  const LxXMLString& AQName) override;
  void EndPrefixMapping(const LxXMLString& APrefix) override;
  void IgnorableWhitespace(const LxXMLString& AWhiteSpace) override;
  void ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) override;
  void SkippedEntity(const LxXMLString& AName) override;
  void StartDocument() override;
  void StartElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override;
  void StartPrefixMapping(const LxXMLString& APrefix, const LxXMLString& AURI) override;

  // ILxSAXLexicalHandler
  void Comment(const LxXMLString& AComment) override;
  void StartCDATA() override;
  void StartDTD() override;
  void StartEntity(const LxXMLString& AName) override;
  void EndCDATA() override;
  void EndDTD() override;
  void EndEntity(const LxXMLString& AName) override;

  // ILxSAXErrorHandler
  void Warning(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;
  void Error(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;
  void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;

protected:
  ~TLxSAXDefaultHandler() override = default;
};

} // namespace lorvane
