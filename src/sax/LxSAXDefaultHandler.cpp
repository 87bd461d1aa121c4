// The do-nothing XML handler that concrete handlers derive from.
#include "lorvane/sax/LxSAXDefaultHandler.h"

namespace lorvane {

HRESULT TLxSAXDefaultHandler::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxSAXContentHandler, ILxSAXLexicalHandler, ILxSAXErrorHandler>(
      this, AIID, AObj, [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

void TLxSAXDefaultHandler::SetDocumentLocator(ILxSAXLocator*) {}
void TLxSAXDefaultHandler::Characters(const LxXMLString&) {}
void TLxSAXDefaultHandler::EndDocument() {}
void TLxSAXDefaultHandler::EndElement(const LxXMLString&, const LxXMLString&, const LxXMLString&) {}
void TLxSAXDefaultHandler::EndPrefixMapping(const LxXMLString&) {}
void TLxSAXDefaultHandler::IgnorableWhitespace(const LxXMLString&) {}
void TLxSAXDefaultHandler::ProcessingInstruction(const LxXMLString&, const LxXMLString&) {}
void TLxSAXDefaultHandler::SkippedEntity(const LxXMLString&) {}
void TLxSAXDefaultHandler::StartDocument() {}
void TLxSAXDefaultHandler::StartElement(const LxXMLString&, const LxXMLString&, const LxXMLString&,
                                        ILxSAXAttributes*) {}
void TLxSAXDefaultHandler::StartPrefixMapping(const LxXMLString&, const LxXMLString&) {}

void TLxSAXDefaultHandler::Comment(const LxXMLString&) {}
void TLxSAXDefaultHandler::StartCDATA() {}
void TLxSAXDefaultHandler::StartDTD() {}
void TLxSAXDefaultHandler::StartEntity(const LxXMLString&) {}
void TLxSAXDefaultHandler::EndCDATA() {}
void TLxSAXDefaultHandler::EndDTD() {}
void TLxSAXDefaultHandler::EndEntity(const LxXMLString&) {}

void TLxSAXDefaultHandler::Warning(ILxSAXLocator*, const LxXMLString&) {}
void TLxSAXDefaultHandler::Error(ILxSAXLocator*, const LxXMLString&) {}
void TLxSAXDefaultHandler::FatalError(ILxSAXLocator*, const LxXMLString&) {}

} // namespace lorvane
