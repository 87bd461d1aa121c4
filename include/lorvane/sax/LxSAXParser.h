/// TLxSAXParser, the event component: an application wires plain callbacks to it instead of
/// writing a handler class, and the component picks the reader from the first character of the
/// text. Also the callback types of its events and the failure it raises for JSON text.
#pragma once

#include "lorvane/platform/Classes.h"
#include "lorvane/sax/LxSAXReader.h"

#include <functional>

namespace lorvane {

using TLxSAXOnStartDocument = std::function<void(TObject* ASender)>;
using TLxSAXOnEndDocument = std::function<void(TObject* ASender)>;
using TLxSAXOnEndProlog = std::function<void(TObject* ASender)>;
using TLxSAXOnProcessingInstruction =
    std::function<void(TObject* ASender, const LxXMLString& ATarget, const LxXMLString& AData)>;
using TLxSAXOnStartPrefixMapping =
    std::function<void(TObject* ASender, const LxXMLString& APrefix, const LxXMLString& AURI)>;
using TLxSAXOnEndPrefixMapping = std::function<void(TObject* ASender, const LxXMLString& APrefix)>;
/// The attribute list is valid only during the call.
using TLxSAXOnStartElement = std::function<void(
    TObject* ASender, const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
    const LxXMLString& AQName, ILxSAXAttributes* AAttributes)>;
using TLxSAXOnCharacters = std::function<void(TObject* ASender, const LxXMLString& AText)>;
using TLxSAXOnIgnorableWhitespace =
    std::function<void(TObject* ASender, const LxXMLString& AWhiteSpace)>;
using TLxSAXOnEndElement =
    std::function<void(TObject* ASender, const LxXMLString& ANamespaceURI,
                       const LxXMLString& ALocalName, const LxXMLString& AQName)>;
using TLxSAXOnComment = std::function<void(TObject* ASender, const LxXMLString& AComment)>;
using TLxSAXOnStartDTD = std::function<void(TObject* ASender)>;
using TLxSAXOnEndDTD = std::function<void(TObject* ASender)>;
using TLxSAXOnStartCDATA = std::function<void(TObject* ASender)>;
using TLxSAXOnEndCDATA = std::function<void(TObject* ASender)>;
/// No sender: a handler tells parsers apart by the locator, which is valid only during the call.
using TLxSAXOnError = std::function<void(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg)>;

/// The first character above U+0020 from the stream's position (2 bytes each for code pages 1200
/// and 1201, in their byte order, else 1), read one byte at a time; the stream is left at that
/// character. 0 when the stream ends first. Readers decide by it between XML ('<') and JSON.
char16_t PeekFirstSignificantChar(TStream* AStream, Word AStreamCodePage);

/// The reader for a text whose first character above U+0020 is AFirst: TLxSAXXMLReader for '<',
/// TLxSAXJSONReader for anything else (0, an empty text, too). The caller frees it.
TLxSAXReader* LxNewSAXReaderFor(char16_t AFirst);

/// Fires an event for every handler method the reader calls, with this component as sender;
/// an event left empty costs nothing, and with none assigned a parse only checks the text and
/// raises on failure. Interface references to the component aren't counted.
///
/// Every parse form fires OnStart first and OnFinished last; the forms other than ParseStream
/// call ParseStream, which fires them too, so their callers see each of the two twice. A failed
/// parse skips OnFinished and lets its exception through to the caller, after OnFatalError; an
/// exception raised by OnFatalError replaces the reader's. The reader lives only while
/// ParseStream runs, and it is freed also when the parse fails. One parse at a time.
class TLxSAXParser : public TComponent,
                     public ILxSAXErrorHandler,
                     public ILxSAXContentHandler,
                     public ILxSAXLexicalHandler {
  LX_CLASS(TLxSAXParser, TComponent)
  explicit TLxSAXParser(TComponent* AOwner = nullptr);

  /// Answers the three handler interfaces and IInterface, uncounted.
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  Integer _AddRef() override { return -1; }
  Integer _Release() override { return -1; }

  /// Reads from the stream's position. The first character above U+0020, read one character at
  /// a time in 2 bytes for code pages 1200 and 1201 and 1 byte otherwise, decides the format:
  /// '<' gives the XML reader (SingleRoot true), anything else, a byte order mark and an empty
  /// stream included, the JSON reader (TLxSAXJSONReader); either reads the stream from that
  /// character on with AStreamCodePage. A byte order mark is not passed over here: ParseFile
  /// does that.
  void ParseStream(TStream* AStream, Word AStreamCodePage,
                   const LxXMLString& APublicID = LxXMLString());
  /// Opens the file with AMode, passes over a byte order mark and takes its code page (0, the
  /// text decides, without one). A file that can't be opened raises EFOpenError after OnStart.
  void ParseFile(const TFileName& AFileName, Word AMode,
                 const LxXMLString& APublicID = LxXMLString());
  /// The buffer is read in place and must stay unchanged during the call.
  void ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word AStreamCodePage,
                   const LxXMLString& APublicID = LxXMLString());
  /// The string's characters in code page 1200, which beats an encoding that the declaration
  /// names.
  void Parse(const LxXMLString& AXML, const LxXMLString& APublicID = LxXMLString());
  /// The bytes in ACodePage (0: the declaration decides, else UTF-8).
  void Parse(const RawByteString& AXML, Word ACodePage,
             const LxXMLString& APublicID = LxXMLString());

  // ILxSAXErrorHandler: each passes locator and message to its event.
  void Warning(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;
  void Error(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;
  /// Informs only: the reader raises its exception again when this returns.
  void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;

  // ILxSAXContentHandler: each fires its event.
  /// Stores the locator (a counted reference) and fires nothing; the readers never call it.
  void SetDocumentLocator(ILxSAXLocator* ALocator) override;
  void Characters(const LxXMLString& AText) override;
  void EndDocument() override;
  void EndElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                  const LxXMLString& AQName) override;
  void EndPrefixMapping(const LxXMLString& APrefix) override;
  void IgnorableWhitespace(const LxXMLString& AWhiteSpace) override;
  void ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) override;
  /// Does nothing.
  void SkippedEntity(const LxXMLString& AName) override;
  void StartDocument() override;
  void StartElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override;
  void StartPrefixMapping(const LxXMLString& APrefix, const LxXMLString& AURI) override;

  // ILxSAXLexicalHandler: each fires its event.
  void Comment(const LxXMLString& AComment) override;
  void StartCDATA() override;
  void StartDTD() override;
  /// Does nothing.
  void StartEntity(const LxXMLString& AName) override;
  void EndCDATA() override;
  void EndDTD() override;
  /// Does nothing.
  void EndEntity(const LxXMLString& AName) override;

  // Events; "assigned" means non-empty.
  const TLxSAXOnStartDocument& GetOnStartDocument() const noexcept { return FOnStartDocument; }
  void SetOnStartDocument(TLxSAXOnStartDocument AValue) { FOnStartDocument = std::move(AValue); }
  const TLxSAXOnEndDocument& GetOnEndDocument() const noexcept { return FOnEndDocument; }
  void SetOnEndDocument(TLxSAXOnEndDocument AValue) { FOnEndDocument = std::move(AValue); }
  /// Kept for applications that set it; nothing fires it.
  const TLxSAXOnEndDocument& GetOnEndProlog() const noexcept { return FOnEndProlog; }
  void SetOnEndProlog(TLxSAXOnEndDocument AValue) { FOnEndProlog = std::move(AValue); }
  const TLxSAXOnProcessingInstruction& GetOnProcessingInstruction() const noexcept {
    return FOnProcessingInstruction;
  }
  void SetOnProcessingInstruction(TLxSAXOnProcessingInstruction AValue) {
    FOnProcessingInstruction = std::move(AValue);
  }
  const TLxSAXOnStartPrefixMapping& GetOnStartPrefixMapping() const noexcept {
    return FOnStartPrefixMapping;
  }
  void SetOnStartPrefixMapping(TLxSAXOnStartPrefixMapping AValue) {
    FOnStartPrefixMapping = std::move(AValue);
  }
  const TLxSAXOnEndPrefixMapping& GetOnEndPrefixMapping() const noexcept {
    return FOnEndPrefixMapping;
  }
  void SetOnEndPrefixMapping(TLxSAXOnEndPrefixMapping AValue) {
    FOnEndPrefixMapping = std::move(AValue);
  }
  const TLxSAXOnStartElement& GetOnStartElement() const noexcept { return FOnStartElement; }
  void SetOnStartElement(TLxSAXOnStartElement AValue) { FOnStartElement = std::move(AValue); }
  const TLxSAXOnCharacters& GetOnCharacters() const noexcept { return FOnCharacters; }
  void SetOnCharacters(TLxSAXOnCharacters AValue) { FOnCharacters = std::move(AValue); }
  const TLxSAXOnIgnorableWhitespace& GetOnIgnorableWhitespace() const noexcept {
    return FOnIgnorableWhitespace;
  }
  void SetOnIgnorableWhitespace(TLxSAXOnIgnorableWhitespace AValue) {
    FOnIgnorableWhitespace = std::move(AValue);
  }
  const TLxSAXOnEndElement& GetOnEndElement() const noexcept { return FOnEndElement; }
  void SetOnEndElement(TLxSAXOnEndElement AValue) { FOnEndElement = std::move(AValue); }
  const TLxSAXOnComment& GetOnComment() const noexcept { return FOnComment; }
  void SetOnComment(TLxSAXOnComment AValue) { FOnComment = std::move(AValue); }
  const TLxSAXOnStartDTD& GetOnStartDTD() const noexcept { return FOnStartDTD; }
  void SetOnStartDTD(TLxSAXOnStartDTD AValue) { FOnStartDTD = std::move(AValue); }
  const TLxSAXOnEndDTD& GetOnEndDTD() const noexcept { return FOnEndDTD; }
  void SetOnEndDTD(TLxSAXOnEndDTD AValue) { FOnEndDTD = std::move(AValue); }
  const TLxSAXOnStartCDATA& GetOnStartCDATA() const noexcept { return FOnStartCDATA; }
  void SetOnStartCDATA(TLxSAXOnStartCDATA AValue) { FOnStartCDATA = std::move(AValue); }
  const TLxSAXOnEndCDATA& GetOnEndCDATA() const noexcept { return FOnEndCDATA; }
  void SetOnEndCDATA(TLxSAXOnEndCDATA AValue) { FOnEndCDATA = std::move(AValue); }
  const TLxSAXOnError& GetOnWarning() const noexcept { return FOnWarning; }
  void SetOnWarning(TLxSAXOnError AValue) { FOnWarning = std::move(AValue); }
  const TLxSAXOnError& GetOnError() const noexcept { return FOnError; }
  void SetOnError(TLxSAXOnError AValue) { FOnError = std::move(AValue); }
  const TLxSAXOnError& GetOnFatalError() const noexcept { return FOnFatalError; }
  void SetOnFatalError(TLxSAXOnError AValue) { FOnFatalError = std::move(AValue); }
  const TNotifyEvent& GetOnStart() const noexcept { return FOnStart; }
  void SetOnStart(TNotifyEvent AValue) { FOnStart = std::move(AValue); }
  const TNotifyEvent& GetOnFinished() const noexcept { return FOnFinished; }
  void SetOnFinished(TNotifyEvent AValue) { FOnFinished = std::move(AValue); }

protected:
  /// Frees a reader left over and releases the locator.
  ~TLxSAXParser() override;

  /// What SetDocumentLocator stored.
  IPtr<ILxSAXLocator> FLocator;
  /// The reader of the running parse; nil between parses.
  TLxSAXReader* FReader = nullptr;

  TLxSAXOnStartDocument FOnStartDocument;
  TLxSAXOnEndDocument FOnEndDocument;
  TLxSAXOnEndDocument FOnEndProlog;
  TLxSAXOnProcessingInstruction FOnProcessingInstruction;
  TLxSAXOnStartPrefixMapping FOnStartPrefixMapping;
  TLxSAXOnEndPrefixMapping FOnEndPrefixMapping;
  TLxSAXOnStartElement FOnStartElement;
  TLxSAXOnCharacters FOnCharacters;
  TLxSAXOnIgnorableWhitespace FOnIgnorableWhitespace;
  TLxSAXOnEndElement FOnEndElement;
  TLxSAXOnComment FOnComment;
  TLxSAXOnStartDTD FOnStartDTD;
  TLxSAXOnEndDTD FOnEndDTD;
  TLxSAXOnStartCDATA FOnStartCDATA;
  TLxSAXOnEndCDATA FOnEndCDATA;
  TLxSAXOnError FOnWarning;
  TLxSAXOnError FOnError;
  TLxSAXOnError FOnFatalError;
  TNotifyEvent FOnStart;
  TNotifyEvent FOnFinished;

private:
  void FireStart();
  void FireFinished();
};

} // namespace lorvane
