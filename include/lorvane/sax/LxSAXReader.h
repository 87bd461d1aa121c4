/// The event readers: TLxSAXReader, the frame that takes text from a stream, a file, a buffer or
/// a string and runs a format's parse loop, and TLxSAXXMLReader, the XML format.
#pragma once

#include <string>
#include <vector>

#include "lorvane/sax/LxSAXAttributes.h"
#include "lorvane/sax/LxXMLParser.h"

namespace lorvane {

namespace readerframe {
struct TSource;
}

/// AutoDestroy is false from construction: an owner frees a reader, interface references don't.
/// The locator reports the line and column where the construct being parsed began once a parse
/// has ended in ELxTextParserEOF, the parser's own during a parse, and -1 otherwise; GetPosition
/// gives the parser's byte offset during a parse and -1 outside one. The string and buffer forms
/// read the caller's text in place.
class TLxSAXReader : public TLxObject, public ILxSAXLocator, public ILxSAXXMLReader {
  LX_CLASS(TLxSAXReader, TLxObject)
  TLxSAXReader();

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  // ILxSAXLocator
  Integer GetPosition() override;
  Integer GetLineNr() override;
  Integer GetColNr() override;
  LxXMLString GetPublicID() override { return FPublicID; }

  // ILxSAXXMLReader
  IPtr<ILxSAXLexicalHandler> GetLexicalHandler() override { return FLexicalHandler; }
  IPtr<ILxSAXContentHandler> GetContentHandler() override { return FContentHandler; }
  IPtr<ILxSAXErrorHandler> GetErrorHandler() override { return FErrorHandler; }
  /// The reader has no features: always false.
  bool GetFeature(const LxXMLString&) override { return false; }
  /// Always Null.
  Variant GetProperty(const LxXMLString&) override;
  void SetLexicalHandler(ILxSAXLexicalHandler* AHandler) override { FLexicalHandler = AHandler; }
  void SetContentHandler(ILxSAXContentHandler* AHandler) override { FContentHandler = AHandler; }
  void SetErrorHandler(ILxSAXErrorHandler* AHandler) override { FErrorHandler = AHandler; }
  void SetFeature(const LxXMLString&, bool) override {}
  void SetProperty(const LxXMLString&, const Variant&) override {}
  void ParseStream(TStream* AStream, Word AStreamCodePage,
                   const LxXMLString& APublicID = LxXMLString()) override;
  void ParseFile(const TFileName& AFileName, Word AMode,
                 const LxXMLString& APublicID = LxXMLString()) override;
  void ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ABufCodePage,
                   const LxXMLString& APublicID = LxXMLString()) override;
  void Parse(const LxXMLString& AXML, const LxXMLString& APublicID = LxXMLString()) override;
  void Parse(const RawByteString& AXML, Word ACodePage,
             const LxXMLString& APublicID = LxXMLString()) override;

protected:
  ~TLxSAXReader() override;

  /// Makes the parser of one parse; the reader frees it when the parse ends.
  virtual TLxTextParser* CreateParser(TStream* AStream, bool AStreamOwner, bool AReadBOM,
                                      Word AStreamCodePage) = 0;
  /// Runs the format over FParser.
  virtual void InternalParse() = 0;
  /// Puts the per-parse state back to what a new reader has; the frame calls it at
  /// the start of each parse. A descendant with state of its own calls the inherited one.
  virtual void ResetParseState();

  LxXMLString FPublicID;
  Integer FLineNr = -1;
  Integer FColNr = -1;
  bool FUnexpectedEOF = false;
  TLxTextParser* FParser = nullptr;
  TLxSAXXMAttributes* FEmptyAttributes = nullptr;
  IPtr<ILxSAXLexicalHandler> FLexicalHandler;
  IPtr<ILxSAXContentHandler> FContentHandler;
  IPtr<ILxSAXErrorHandler> FErrorHandler;

  /// Every parse step starts here: the place where the construct begins. Its line and column go
  /// to FLineNr and FColNr (TakeStart) only when something asks, which keeps line counting off
  /// the parse loop.
  void MarkStart();
  void TakeStart();

private:
  void RunParse(readerframe::TSource&& ASource, const LxXMLString& APublicID);
};

/// The XML format: a tolerant, flat scanner that keeps a depth counter and no stack of open
/// elements, and delivers names and text exactly as they stand in the source.
class TLxSAXXMLReader : public TLxSAXReader {
  LX_CLASS(TLxSAXXMLReader, TLxSAXReader)
  TLxSAXXMLReader();

  /// Whether a second root element or text behind the root is an error; true by default.
  bool GetSingleRoot() const noexcept { return FCheckSingleRootElm; }
  void SetSingleRoot(bool AValue) noexcept { FCheckSingleRootElm = AValue; }
  TLxSAXNamespaceList* GetNamespaceList() noexcept { return &FNamespaceList; }

  /// During a parse, a handler set by a handler takes the events from the next one on (so a
  /// consumer can hand the reader to a helper for a part of the text and take it back); setting
  /// none leaves the events with the handler that has them. A handler replaced inside its own
  /// event lives on until that event has returned.
  void SetContentHandler(ILxSAXContentHandler* AHandler) override;

protected:
  ~TLxSAXXMLReader() override;
  TLxTextParser* CreateParser(TStream* AStream, bool AStreamOwner, bool AReadBOM,
                              Word AStreamCodePage) override;
  void InternalParse() override;
  void ResetParseState() override;

private:
  /// On a '<' in content: a comment, CDATA section or processing instruction is parsed and true
  /// comes back; before an element nothing moves and the answer is false.
  bool ParseMarkupBesideElements();
  void ParseProcessingInstruction();
  void ParseComment();
  void ParseDTD();
  void ParseCDATA();
  void ParseCharacters();
  /// A run of character data in the raw window of a UTF-8 text, up to the '<' behind it; false
  /// with nothing done where the window holds no '<'.
  bool ParseCharactersInPlace();
  void ParseAtrributes(TLxSAXXMAttributes* AAttributes, Integer ALevel);
  void ParseElement(Integer& ALevel);
  /// One tag, start, empty or end, up to its closing '>'.
  void ParseTag(Integer& ALevel);
  void ParseAfterRoot(Integer& ALevel);
  void ParseTextBehindTag();
  /// The common tag (ASCII names, every attribute quoted, the whole tag read already) scanned in
  /// the raw window of a UTF-8 text: its names go to FPrefix, FLocalName and FQName, where its
  /// attributes lie to FRawAttributes, and the cursor to where the scan by characters would
  /// stand before the attributes. Anything else, failures included, leaves everything as it was
  /// and gives false: the scan by characters takes the tag.
  bool ScanTagInPlace(bool& AEndTag);
  /// The names of a tag by characters, up to the blanks behind them.
  void ScanTagNames(bool& AEndTag);
  /// The attributes that ScanTagInPlace found, into the list, with the same declarations and
  /// cursor moves as ParseAtrributes.
  void TakeRawAttributes(TLxSAXXMAttributes* AAttributes, Integer ALevel);
  /// A declaration in an attribute is added to the namespace list; another attribute gets the
  /// URI of its prefix.
  void ResolveAttribute(PLxSAXXMAttribute AAttribute, const LxXMLString& APrefix, Integer ALevel);

  /// The names that the raw bytes of one tag or attribute name give, kept so that the same bytes
  /// are not decoded again (most documents use a few names many times). Prefix is the text
  /// before the first colon as ParseTag or ParseAtrributes takes it.
  struct TNameEntry {
    static constexpr std::size_t Longest = 64; // longer names aren't kept
    std::size_t Length = 0;                    // of Raw; 0 for an unused entry
    Byte Raw[Longest];
    LxXMLString Prefix, LocalName, QName;
  };
  /// The entry for the raw name [AFrom, ATo) among the element names (AAttribute false) or the
  /// attribute names; AFound says whether it holds the names already, else its Raw is set and
  /// the caller fills in the names. Nil for a name too long or empty, which isn't kept. The
  /// cache is made at the start of a UTF-8 parse.
  TNameEntry* CachedName(bool AAttribute, const Byte* AFrom, const Byte* ATo, bool& AFound);

  bool FCheckSingleRootElm = true;
  TLxSAXNamespaceList FNamespaceList;
  TLxXMLParser* FXMLParser = nullptr; // FParser in its own type
  // The handlers the running parse delivers to, held by InternalParse.
  ILxSAXContentHandler* FContent = nullptr;
  ILxSAXLexicalHandler* FLexical = nullptr;
  TLxSAXXMAttributes* FAttributes = nullptr; // the list of the element being started
  // Token strings reused from tag to tag, so that their memory is allocated once.
  LxXMLString FPrefix, FLocalName, FQName, FText, FAttributePrefix;
  /// Where the parts of one attribute lie in the raw window; Colon is nil without a prefix.
  struct TRawAttribute {
    const Byte* Name;
    const Byte* Colon;
    const Byte* LocalName;
    const Byte* NameEnd;
    const Byte* Value;
    const Byte* ValueEnd;
  };
  std::vector<TRawAttribute> FRawAttributes;
  // Handlers replaced during the parse, released between two constructs, when none of them can
  // be running.
  std::vector<IPtr<ILxSAXContentHandler>> FReplacedHandlers;
  // Element names in the first half, attribute names in the second; emptied for each parse, so
  // its memory is bounded by its size and the longest name it keeps.
  std::vector<TNameEntry> FNameCache;
  // The names of the tag being parsed: in the cache, or in FPrefix, FLocalName and FQName.
  const LxXMLString* FTagPrefix = &FPrefix;
  const LxXMLString* FTagLocalName = &FLocalName;
  const LxXMLString* FTagQName = &FQName;
  const Byte* FAfterRawAttributes = nullptr;
  bool FScanInPlace = false; // the text is UTF-8
};

} // namespace lorvane
