/// TLxJSONReader, the JSON event reader: one pass over the text, every name and value delivered
/// raw to a content handler, and a forgiving grammar that skips what it doesn't look for.
#pragma once

#include "lorvane/json/LxJSONEventInterfaces.h"
#include "lorvane/json/LxJSONTextParser.h"

#include <vector>

namespace lorvane {

class TLxJSONHandler;

namespace readerframe {
struct TSource;
}

/// AutoDestroy is false from construction: the maker frees a reader, interface references don't.
///
/// The grammar, in short: leading blanks (U+0020 only) are passed over; then, until the text
/// ends, an array or object, or one simple value. Between tokens any text without the delimiter
/// being looked for is passed over; names and strings end only at a double quote; numbers are
/// delivered as the run of characters "0-9 . - + e E" they stand in, unexamined; keywords are
/// lower case. Several top-level values may follow each other.
///
/// Failures reach the caller after the error handler's FatalError has seen them: ELxJSONParseError
/// code 2 (_cLxJSONNotWellFormed) for a wrong keyword letter, a value that can't start where it
/// stands, a bad escape, or text behind a top-level simple value; ELxTextParserEOF for a text
/// that ends inside an object or array. Not routed through the error handler: a missing content
/// handler (ELxJSONException code 3), a missing error handler (code 4), checked before reading
/// starts, and an unsupported encoding (Exception, from the text cursor).
///
/// Nesting is followed with a stack of its own, not by recursion: any depth that fits in memory
/// is read.
class TLxJSONReader : public TLxObject, public ILxJSONLocator, public ILxJSONReader {
  LX_CLASS(TLxJSONReader, TLxObject)
  TLxJSONReader();

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  // ILxJSONLocator: after a parse that ended in ELxTextParserEOF, FLineNr and FColNr (-1: the
  // reader never sets them); during a parse the text cursor's place; otherwise -1.
  Integer GetLineNr() override;
  Integer GetColNr() override;
  LxJSONString GetPublicID() override { return FPublicID; }

  // ILxJSONReader
  IPtr<ILxJSONContentHandler> GetContentHandler() override { return FContentHandler; }
  IPtr<ILxJSONErrorHandler> GetErrorHandler() override { return FErrorHandler; }
  /// During a parse, a handler set by a handler takes the events from the next one on (so a
  /// consumer can hand the reader to a helper for a part of the text and take it back); setting
  /// none leaves the events with the handler that has them. A handler replaced inside its own
  /// event lives on until that event has returned.
  void SetContentHandler(ILxJSONContentHandler* AHandler) override;
  void SetErrorHandler(ILxJSONErrorHandler* AHandler) override { FErrorHandler = AHandler; }
  void ParseStream(TStream* AStream, Word ACodePage,
                   const LxJSONString& APublicID = LxJSONString()) override;
  void ParseFile(const TFileName& AFileName, Word AMode,
                 const LxJSONString& APublicID = LxJSONString()) override;
  void ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ACodePage,
                   const LxJSONString& APublicID = LxJSONString()) override;
  void Parse(const LxJSONString& AJSON, const LxJSONString& APublicID = LxJSONString()) override;
  void Parse(const AnsiString& AJSON, Word ACodePage,
             const LxJSONString& APublicID = LxJSONString()) override;

  /// The text cursor; nil outside a parse.
  TLxJSONTextParser* GetParser() const noexcept { return FParser; }
  /// Whether the last parse failed on the end of the text.
  bool GetUnexpectedEOF() const noexcept { return FUnexpectedEOF; }

protected:
  ~TLxJSONReader() override;

  /// Runs the grammar over FParser, which the parse forms set up and take down around it.
  virtual void InternalParse();
  /// Puts the per-parse state back to what a new reader has; the frame calls it at
  /// the start of each parse. A descendant with state of its own calls the inherited one.
  virtual void ResetParseState();

  /// Makes AHandler the one the running parse delivers to, until EndDelivery; a grammar reads
  /// FContent for each event and releases FReplacedHandlers between two events.
  void BeginDelivery(const IPtr<ILxJSONContentHandler>& AHandler);
  void EndDelivery() noexcept;

  LxJSONString FPublicID;
  IPtr<ILxJSONContentHandler> FContentHandler;
  /// The handler the running parse delivers to (nil outside a parse), held for it; the grammars
  /// read it through a reference for each event, so that a replacement takes the next one.
  IPtr<ILxJSONContentHandler> FDelivering;
  ILxJSONContentHandler* FContent = nullptr;
  /// Handlers replaced during the parse, released between two events.
  std::vector<IPtr<ILxJSONContentHandler>> FReplacedHandlers;
  IPtr<ILxJSONErrorHandler> FErrorHandler;
  TLxJSONTextParser* FParser = nullptr;
  bool FUnexpectedEOF = false;
  Integer FLineNr = -1;
  Integer FColNr = -1;

private:
  friend class TLxJSONBase;
  void RunParse(readerframe::TSource&& ASource, const LxJSONString& APublicID);

  /// Set by a tree's own load while its builder is the content handler: the grammar then hands
  /// it short plain tokens of UTF-8 text as the bytes they are, instead of widened text.
  TLxJSONHandler* FTreeBuilder = nullptr;
  /// The byte road of the running parse: FTreeBuilder while it has the events, else nil.
  TLxJSONHandler* FTreeRoad = nullptr;

  // Kept from parse to parse, so that their memory is allocated once: the kinds of the open
  // containers, and the texts of the token just read.
  std::vector<Byte> FOpen;
  LxJSONString FName, FValue;
};

} // namespace lorvane
