// The frame in which every event reader runs a parse: where the text comes from, the life of the
// text cursor, the failure road through the error handler, and what the locator says once the
// text has ended too early. The XML and the JSON readers both run in it, so that they behave
// alike where their formats don't differ.
#pragma once

#include "lorvane/core/LxStreams.h"
#include "lorvane/core/LxTextParser.h"
#include "lorvane/platform/SysUtils.h"

#include <exception>
#include <string_view>
#include <utility>

namespace lorvane::readerframe {

/// The text of one parse. A stream that a parse form made (over a file, a buffer or a string) is
/// owned by the source and goes with it, also when making the cursor fails; a caller's stream is
/// only read.
struct TSource {
  TStream* Stream = nullptr;
  TOwned<TStream> Owned;
  /// The code page the caller named; 0 when it isn't known.
  Word CodePage = 0;
  /// A file, whose byte order mark, if any, names its encoding.
  bool FromFile = false;
};

/// A caller's stream, read from its position on.
inline TSource OfStream(TStream* AStream, Word ACodePage) {
  return {AStream, nullptr, ACodePage, false};
}

/// A file, opened in AMode (EFOpenError when it can't be).
inline TSource OfFile(const TFileName& AFileName, Word AMode) {
  TOwned<TStream> File(New<TFileStream>(AFileName, AMode));
  TStream* Stream = File.get();
  return {Stream, std::move(File), 0, true};
}

/// A caller's block of memory, read in place: it outlives the parse.
inline TSource OfBuffer(const void* ABuffer, Int64 ASize, Word ACodePage) {
  TOwned<TStream> Memory(New<TLxMemoryStream>(ABuffer, ASize));
  TStream* Stream = Memory.get();
  return {Stream, std::move(Memory), ACodePage, false};
}

/// A caller's string, read in place (code page 1200): it outlives the parse.
inline TSource OfText(std::u16string_view AText) {
  return OfBuffer(AText.data(), static_cast<Int64>(AText.size() * sizeof(char16_t)), 1200);
}

/// A caller's bytes in ACodePage, read in place.
inline TSource OfBytes(std::string_view ABytes, Word ACodePage) {
  return OfBuffer(ABytes.data(), static_cast<Int64>(ABytes.size()), ACodePage);
}

/// A reader without per-parse state of its own.
struct TNothingToReset {
  void operator()() const noexcept {}
};

/// Runs one parse. AEndedEarly, which tells the locator about the last parse only, is cleared
/// first, and AReset() then puts the rest of the reader's per-parse state back to what a new
/// reader has, so that nothing a former parse left, also one that failed midway, reaches this
/// one. AMakeCursor(ASource) then makes the text cursor, which stands in ACursor while ARun runs
/// and is freed on every way out, as is a stream the source owns.
template <class TCursor, class TMake, class TRun, class TReset = TNothingToReset>
void Run(TSource ASource, TCursor*& ACursor, bool& AEndedEarly, TMake AMakeCursor, TRun ARun,
         TReset AReset = {}) {
  AEndedEarly = false;
  AReset();
  ACursor = AMakeCursor(ASource);
  struct TRelease {
    TCursor*& Cursor;
    ~TRelease() { FreeAndNil(Cursor); }
  } Release{ACursor};
  ARun();
}

/// The message of a failure as an error handler sees it: the library's own, or the standard
/// exception's text read as UTF-8.
inline UnicodeString MessageOf(const std::exception& AFailure) {
  const auto* Own = dynamic_cast<const Exception*>(&AFailure);
  return Own ? Own->Message() : UTF8ToString(AFailure.what());
}

/// The failure road of a reader that has an error handler. A failure out of AParse (any standard
/// exception) sets AEndedEarly when it is the end of the text (ELxTextParserEOF), is handed to
/// AReport with its message (the reader calls its error handler's FatalError there), and is
/// raised again as it was. An exception out of AReport takes its place.
template <class TParse, class TReport>
void ReportingFailures(bool& AEndedEarly, TParse AParse, TReport AReport) {
  try {
    AParse();
  } catch (const std::exception& E) {
    AEndedEarly = dynamic_cast<const ELxTextParserEOF*>(&E) != nullptr;
    AReport(MessageOf(E));
    throw;
  }
}

/// A locator's line: after a parse that failed at the end of the text, the one the reader kept
/// then (AKept); during a parse, the cursor's; otherwise -1. LocatorColumn likewise.
inline Integer LocatorLine(bool AEndedEarly, Integer AKept, TLxTextParser* ACursor) {
  return AEndedEarly ? AKept : ACursor ? ACursor->GetLineNr() : -1;
}
inline Integer LocatorColumn(bool AEndedEarly, Integer AKept, TLxTextParser* ACursor) {
  return AEndedEarly ? AKept : ACursor ? ACursor->GetColNr() : -1;
}

} // namespace lorvane::readerframe
