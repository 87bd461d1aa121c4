// The event component: format decision, reader lifetime, and handler methods that fire events.
#include "lorvane/sax/LxSAXParser.h"

#include "lorvane/core/LxEncoding.h"
#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/sax/LxSAXJSONReader.h"

#include <algorithm>

namespace lorvane {

TLxSAXParser::TLxSAXParser(TComponent* AOwner) : TComponent(AOwner) {}

TLxSAXParser::~TLxSAXParser() {
  FreeAndNil(FReader);
  FLocator = nullptr;
}

char16_t PeekFirstSignificantChar(TStream* AStream, Word AStreamCodePage) {
  // A character is read byte by byte, since a stream may hand out fewer bytes than asked for.
  const bool BigEndian = AStreamCodePage == CP_UTF16BE;
  const Int64 Width = AStreamCodePage == CP_UTF16LE || BigEndian ? 2 : 1;
  for (;;) {
    Byte Bytes[2] = {0, 0};
    Int64 Got = 0;
    while (Got < Width && AStream->Read(Bytes + Got, 1) == 1)
      ++Got;
    if (Got == 0)
      return 0;
    const auto Char =
        static_cast<char16_t>(BigEndian ? (Bytes[0] << 8) | Bytes[1] : Bytes[0] | (Bytes[1] << 8));
    if (Char > 0x20) {
      AStream->SetPosition(std::max<Int64>(0, AStream->GetPosition() - Got));
      return Char;
    }
  }
}

TLxSAXReader* LxNewSAXReaderFor(char16_t AFirst) {
  if (AFirst == u'<')
    return New<TLxSAXXMLReader>();
  return New<TLxSAXJSONReader>();
}

HRESULT TLxSAXParser::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerUncountedInterfaces<ILxSAXErrorHandler, ILxSAXContentHandler, ILxSAXLexicalHandler>(
      this, AIID, AObj, [&] { return TComponent::QueryInterface(AIID, AObj); });
}

void TLxSAXParser::FireStart() {
  if (FOnStart)
    FOnStart(this);
}

void TLxSAXParser::FireFinished() {
  if (FOnFinished)
    FOnFinished(this);
}

void TLxSAXParser::ParseStream(TStream* AStream, Word AStreamCodePage,
                               const LxXMLString& APublicID) {
  FireStart();
  const char16_t First = PeekFirstSignificantChar(AStream, AStreamCodePage);
  {
    // A handler that starts a parse of its own on this component gets a reader of its own; the
    // outer parse finds its reader in place when the inner one returns.
    struct TRestore {
      TLxSAXReader*& Field;
      TLxSAXReader* Value;
      ~TRestore() { Field = Value; }
    } Restore{FReader, FReader};
    TOwned<TLxSAXReader> Reader(LxNewSAXReaderFor(First));
    FReader = Reader.get();
    Reader->SetErrorHandler(this);
    Reader->SetLexicalHandler(this);
    Reader->SetContentHandler(this);
    Reader->ParseStream(AStream, AStreamCodePage, APublicID);
  }
  FireFinished();
}

void TLxSAXParser::ParseFile(const TFileName& AFileName, Word AMode, const LxXMLString& APublicID) {
  FireStart();
  {
    TOwned<TFileStream> Stream(New<TFileStream>(AFileName, AMode));
    const Word CodePage = LxGetCodePage(Stream.get());
    ParseStream(Stream.get(), CodePage, APublicID);
  }
  FireFinished();
}

void TLxSAXParser::ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word AStreamCodePage,
                               const LxXMLString& APublicID) {
  FireStart();
  {
    TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(ABuffer, Int64(ABufSize)));
    ParseStream(Stream.get(), AStreamCodePage, APublicID);
  }
  FireFinished();
}

void TLxSAXParser::Parse(const LxXMLString& AXML, const LxXMLString& APublicID) {
  FireStart();
  {
    // Two bytes for each UTF-16 unit, read in place.
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(AXML.data()), Int64(AXML.size()) * 2));
    ParseStream(Stream.get(), CP_UTF16LE, APublicID);
  }
  FireFinished();
}

void TLxSAXParser::Parse(const RawByteString& AXML, Word ACodePage, const LxXMLString& APublicID) {
  FireStart();
  {
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(AXML.data()), Int64(AXML.size())));
    ParseStream(Stream.get(), ACodePage, APublicID);
  }
  FireFinished();
}

// --- error handler
// --------------------------------------------------------------------------------
void TLxSAXParser::Warning(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) {
  if (FOnWarning)
    FOnWarning(ALocator, AErrMsg);
}

void TLxSAXParser::Error(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) {
  if (FOnError)
    FOnError(ALocator, AErrMsg);
}

void TLxSAXParser::FatalError(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) {
  if (FOnFatalError)
    FOnFatalError(ALocator, AErrMsg);
}

// --- content handler
// ------------------------------------------------------------------------------
void TLxSAXParser::SetDocumentLocator(ILxSAXLocator* ALocator) { FLocator = ALocator; }

void TLxSAXParser::Characters(const LxXMLString& AText) {
  if (FOnCharacters)
    FOnCharacters(this, AText);
}

void TLxSAXParser::EndDocument() {
  if (FOnEndDocument)
    FOnEndDocument(this);
}

void TLxSAXParser::EndElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                              const LxXMLString& AQName) {
  if (FOnEndElement)
    FOnEndElement(this, ANamespaceURI, ALocalName, AQName);
}

void TLxSAXParser::EndPrefixMapping(const LxXMLString& APrefix) {
  if (FOnEndPrefixMapping)
    FOnEndPrefixMapping(this, APrefix);
}

void TLxSAXParser::IgnorableWhitespace(const LxXMLString& AWhiteSpace) {
  if (FOnIgnorableWhitespace)
    FOnIgnorableWhitespace(this, AWhiteSpace);
}

void TLxSAXParser::ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) {
  if (FOnProcessingInstruction)
    FOnProcessingInstruction(this, ATarget, AData);
}

void TLxSAXParser::SkippedEntity(const LxXMLString&) {}

void TLxSAXParser::StartDocument() {
  if (FOnStartDocument)
    FOnStartDocument(this);
}

void TLxSAXParser::StartElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                                const LxXMLString& AQName, ILxSAXAttributes* AAttributes) {
  if (FOnStartElement)
    FOnStartElement(this, ANamespaceURI, ALocalName, AQName, AAttributes);
}

void TLxSAXParser::StartPrefixMapping(const LxXMLString& APrefix, const LxXMLString& AURI) {
  if (FOnStartPrefixMapping)
    FOnStartPrefixMapping(this, APrefix, AURI);
}

// --- lexical handler
// ------------------------------------------------------------------------------
void TLxSAXParser::Comment(const LxXMLString& AComment) {
  if (FOnComment)
    FOnComment(this, AComment);
}

void TLxSAXParser::StartCDATA() {
  if (FOnStartCDATA)
    FOnStartCDATA(this);
}

void TLxSAXParser::StartDTD() {
  if (FOnStartDTD)
    FOnStartDTD(this);
}

void TLxSAXParser::StartEntity(const LxXMLString&) {}

void TLxSAXParser::EndCDATA() {
  if (FOnEndCDATA)
    FOnEndCDATA(this);
}

void TLxSAXParser::EndDTD() {
  if (FOnEndDTD)
    FOnEndDTD(this);
}

void TLxSAXParser::EndEntity(const LxXMLString&) {}

} // namespace lorvane
