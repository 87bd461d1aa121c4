/// The character cursor on which every text format is read: a source (a block of memory or a
/// stream) in one of three character sets, marks that pin places in the text, skips that run to
/// a delimiter without building anything, and selection of the text between two places.
#pragma once

#include "lorvane/core/LxChars.h"
#include "lorvane/core/LxObject.h"
#include "lorvane/platform/Streams.h"

#include <cstring>
#include <string>
#include <vector>

namespace lorvane {

/// The form of the source, which fixes the width of a raw character.
enum TLxCharacterSetType : Byte {
  csAnsi, ///< single-byte text in a code page (every code page but 1200 and 65001)
  csWide, ///< UTF-16 little endian (1200)
  csUTF8  ///< UTF-8 (65001)
};

/// A place in the text. Only the three marks can be set or cleared.
enum TLxTextParserPosType : Byte { tpPrev, tpCurrent, tpNext, tpMark1, tpMark2, tpMark3 };

/// The condition under which a skip goes on.
enum TLxTextParserSkipOp : Byte {
  spEqual = 0,     ///< equals the given character
  spNotEqual = 3,  ///< differs from it: skip up to its next occurrence
  spLessEqual = 4, ///< has a code not above it: with a blank, skips control characters and blanks
  spInSet = 6,     ///< is in the given set
  spNotInSet = 7   ///< is not in the given set
};

/// A place in the source; positions are only compared, and 0 stands for a cleared mark.
using TLxTextParserPos = Int64;

/// Walks a source forward character by character.
///
/// End of text: arriving at the end never raises and stepping beyond it does. Skips and the
/// character reads (CurrChar, PeekChar, PeekString, CurrCharA/W, ReadChar/A/W) at the end give
/// NUL and leave the cursor; NextChar, MoveNext and SkipChars move onto the end freely and raise
/// ELxTextParserEOF when the cursor already stands there.
///
/// Lines and columns count from 1. A line ends at LF, at CR, or at CR LF (counted once). A
/// column counts characters: bytes in csAnsi, code points in csUTF8 and csWide (a surrogate pair
/// is one column; a byte that starts no valid UTF-8 sequence is one column).
///
/// Code page 1201 (UTF-16 big endian) is read as 1200: each block is turned into little endian
/// as it is read, so such a source is never read in place, and the parser's code page is 1200.
///
/// A memory stream (TLxMemoryStream, TMemoryStream) is read in place, from its position at
/// construction to its size then; it must not change while the parser lives. Other stream
/// sources are read in blocks from the stream's position at construction on. Only the
/// text from the earliest set mark (or from just before the cursor, when no mark is older) on is
/// kept, so memory is bounded by the longest selection whatever the size of the stream. First
/// returns to the start: at once while the first block is still held, else by seeking the stream
/// back to where the parser began. A stream that can't seek back makes First raise EReadError
/// "The stream can't return to the start of the text"; everything else works on such a stream.
///
/// C++ doesn't dispatch virtual calls from a base constructor to a derived class, so a derived
/// parser's constructor calls SetCharacterSetType(GetCharacterSetType()) itself, first thing,
/// to fill its own tables.
class TLxTextParser : public TObject {
  LX_CLASS(TLxTextParser, TObject)
  /// A parser on a stream from its current position on; with AStreamOwner it frees the stream.
  /// Code page 0 means not known: csAnsi until the caller says otherwise.
  TLxTextParser(TStream* ASourceStream, bool AStreamOwner, Word AStreamCodePage);
  /// A parser on a block that the caller owns and that must outlive the parser. On a string:
  /// its character data, twice its length, 1200.
  TLxTextParser(const void* AAddress, Int64 ASize, Word ACodePage);

  /// Fills the operation slots with the variants for ACharSet. A derived parser calls the
  /// inherited operation first, then sets its own tables.
  virtual void SetCharacterSetType(TLxCharacterSetType ACharSet);
  TLxCharacterSetType GetCharacterSetType() const noexcept { return FCharSet; }
  /// The code page in which selected text of a csAnsi source is decoded (0: the default).
  void SetContentCodePage(Word ACodePage);
  Word GetContentCodePage() const noexcept { return FContentCodePage; }

  void First();
  void Last();

  // --- the operation slots, filled once per character set ----------------------------------
  /// The raw source byte at the cursor (csAnsi, csUTF8); at the end a NUL byte.
  const Byte* RawCurrByte() { return (this->*FRawCurrByte)(); }
  /// The raw source unit at the cursor (csWide); at the end a NUL unit.
  const WideChar* RawCurrWide() { return (this->*FRawCurrWide)(); }
  /// The current character as NUL-terminated UTF-16 (two units for a supplementary one); NUL at
  /// the end. Valid until the cursor moves. On a memory source in csWide it points into the
  /// source itself.
  const WideChar* CurrChar() { return (this->*FCurrChar)(); }
  /// As CurrChar, then one character on (nothing moves at the end).
  const WideChar* ReadChar() { return (this->*FReadChar)(); }
  /// The character behind the current one, as CurrChar gives it; NUL when there is none.
  const WideChar* PeekChar() { return (this->*FPeekChar)(); }
  /// One character on; raises ELxTextParserEOF when the cursor already stands at the end.
  void MoveNext() { (this->*FMoveNext)(); }
  /// Skip with spInSet or spNotInSet.
  void SkipSet(TLxTextParserSkipOp AOperator, const TLxCharSet& ASet) {
    (this->*FSkipSet)(AOperator, ASet);
  }

  // --- cursor -----------------------------------------------------------------------------
  /// True when the cursor stands behind the last character; an empty source is at the end at once.
  bool _GetEOF() { return FEnd - FCur < FUnitSize && !EnsureAhead(FUnitSize); }
  /// Raises ELxTextParserEOF at the end.
  void CheckEOF();
  /// The current character as one byte, for comparison with the one-byte constants: NUL at the
  /// end; a character that isn't ASCII gives a byte above 0x7F (0xFF for one above U+00FF).
  Byte CurrCharA() { return (this->*FCurrCharA)(); }
  /// The current character as one UTF-16 unit (the high surrogate of a supplementary one).
  WideChar CurrCharW() { return (this->*FCurrCharW)(); }
  Byte ReadCharA();
  WideChar ReadCharW() { return (this->*FReadCharW)(); }
  /// The current character alone, for messages: a surrogate pair stays whole; empty at the end.
  UnicodeString CurrCharText();
  /// The character just before the cursor; NUL at the start.
  WideChar PrevCharW();
  void NextChar() { MoveNext(); }
  void SkipChars(Integer ACount);
  /// Skips by comparison with one character, in the current character set. spInSet and
  /// spNotInSet need a set: they raise EArgumentOutOfRangeException here.
  void SkipWhile(TLxTextParserSkipOp AOperator, WideChar AChar);
  /// The variants behind SkipWhile, one per character set; each assumes its own character set.
  void SrcASkipWhileA(TLxTextParserSkipOp AOperator, AnsiChar AChar);
  void SrcUSkipWhileA(TLxTextParserSkipOp AOperator, AnsiChar AChar);
  void SrcWSkipWhileW(TLxTextParserSkipOp AOperator, WideChar AChar);
  /// Up to ACount characters from the cursor on, without moving; shorter near the end.
  UnicodeString PeekString(Integer ACount);
  UnicodeString PeekStringW(Integer ACount) { return PeekString(ACount); }
  /// StringToUTF8(PeekString(ACount)), taken from the bytes themselves where the text is UTF-8.
  std::string PeekStringUTF8(Integer ACount);

  Integer GetLineNr();
  Integer GetColNr();
  /// Remembers the cursor's place so that its line and column can be had later, after the cursor
  /// has moved on (readers pin the start of each construct and ask only when a failure needs
  /// it). Lines are then counted once, lazily, as for GetLineNr.
  void PinLineCol();
  /// The line and column of the place pinned last (1, 1 before any pin).
  void GetPinnedLineCol(Integer& ALineNr, Integer& AColNr);
  /// The cursor as a byte offset from the start of the text.
  Int64 GetPosition() const noexcept { return Offset(FCur); }
  TLxTextParserPos GetCurPos() const noexcept { return Offset(FCur) + 1; }

  // --- marks and selection ----------------------------------------------------------------
  /// Stores the cursor in a mark (tpMark1..tpMark3; other places raise
  /// EArgumentOutOfRangeException).
  void SetMark(TLxTextParserPosType AMark) {
    if (AMark < tpMark1)
      RaiseNotAMark();
    FMarks[AMark - tpMark1] = Offset(FCur) + 1;
  }
  /// From here on the text behind the mark needs no longer be kept.
  void ClearMark(TLxTextParserPosType AMark) {
    if (AMark < tpMark1)
      RaiseNotAMark();
    FMarks[AMark - tpMark1] = 0;
  }
  TLxTextParserPos GetPos(TLxTextParserPosType APlace) {
    if (APlace >= tpMark1)
      return FMarks[APlace - tpMark1];
    return APlace == tpCurrent ? Offset(FCur) + 1 : PlaceOffset(APlace) + 1;
  }
  /// The text from AFrom up to, not including, ATo; empty when either is a cleared mark or ATo
  /// lies before AFrom. With AClearMark a mark in AFrom is cleared afterwards.
  UnicodeString Selected(TLxTextParserPosType AFrom, TLxTextParserPosType ATo, bool AClearMark);
  UnicodeString SelectedW(TLxTextParserPosType AFrom, TLxTextParserPosType ATo, bool AClearMark) {
    return Selected(AFrom, ATo, AClearMark);
  }
  /// As Selected, into ATarget, whose capacity is reused: a reader that keeps one string per
  /// token kind allocates only while its texts grow.
  void SelectInto(UnicodeString& ATarget, TLxTextParserPosType AFrom, TLxTextParserPosType ATo,
                  bool AClearMark);
  /// The raw source bytes of the selection, unconverted.
  RawByteString SelectedA(TLxTextParserPosType AFrom, TLxTextParserPosType ATo, bool AClearMark);

protected:
  ~TLxTextParser() override;

  /// The raw bytes of the current character, or nil at the end of the text; for derived parsers
  /// that compare raw characters without a call per comparison.
  const Byte* RawAt() {
    return FEnd - FCur >= FUnitSize || EnsureAhead(FUnitSize) ? FCur : nullptr;
  }
  /// The raw window, for derived cursors that compare many units at once: the bytes from the
  /// cursor to the end of what has been read so far. Moving the cursor inside the window keeps
  /// marks, lines and columns right. ReadMoreRaw reads on and gives false at the end of the text;
  /// it may move the window, so pointers taken before it are stale.
  const Byte* RawCursor() const noexcept { return FCur; }
  const Byte* RawReadEnd() const noexcept { return FEnd; }
  void SetRawCursor(const Byte* AAt) noexcept { FCur = AAt; }
  bool ReadMoreRaw() { return Refill(); }
  /// The text of ALength raw bytes at AFrom (inside the raw window) into ATarget, as a selection
  /// of them gives it; ATarget keeps its capacity.
  void DecodeInto(UnicodeString& ATarget, const Byte* AFrom, std::size_t ALength) const;

  /// Whether the raw current character equals the one at ACharPtr, in the width of the source
  /// (one byte, or one 16-bit unit in csWide); false at the end. The width is fixed for a parse,
  /// so its test costs nothing that the branch predictor doesn't hide.
  bool RawEquals(const void* ACharPtr) {
    const Byte* Raw = RawAt();
    if (!Raw)
      return false;
    if (FUnitSize == 1)
      return *Raw == *static_cast<const Byte*>(ACharPtr);
    WideChar Unit, Expected;
    std::memcpy(&Unit, Raw, sizeof Unit);
    std::memcpy(&Expected, ACharPtr, sizeof Expected);
    return Unit == Expected;
  }

private:
  using TRawByteSlot = const Byte* (TLxTextParser::*)();
  using TRawWideSlot = const WideChar* (TLxTextParser::*)();
  using TCharSlot = const WideChar* (TLxTextParser::*)();
  using TMoveSlot = void (TLxTextParser::*)();
  using TSkipSetSlot = void (TLxTextParser::*)(TLxTextParserSkipOp, const TLxCharSet&);
  using TCharASlot = Byte (TLxTextParser::*)();
  using TCharWSlot = WideChar (TLxTextParser::*)();

  template <TLxCharacterSetType CS> const Byte* RawCurrByteT();
  template <TLxCharacterSetType CS> const WideChar* RawCurrWideT();
  template <TLxCharacterSetType CS> const WideChar* CurrCharT();
  template <TLxCharacterSetType CS> const WideChar* ReadCharT();
  template <TLxCharacterSetType CS> const WideChar* PeekCharT();
  template <TLxCharacterSetType CS> void MoveNextT();
  template <TLxCharacterSetType CS> void SkipSetT(TLxTextParserSkipOp, const TLxCharSet&);
  template <TLxCharacterSetType CS> Byte CurrCharAT();
  template <TLxCharacterSetType CS> WideChar CurrCharWT();
  template <TLxCharacterSetType CS> WideChar ReadCharWT();
  template <TLxCharacterSetType CS> UnicodeString PeekStringT(Integer ACount);
  template <TLxCharacterSetType CS> Int64 PrevOffsetT() const noexcept;
  template <TLxCharacterSetType CS> void CountLinesT(const Byte* AFrom, const Byte* ATo);

  template <TLxCharacterSetType CS> std::size_t CharLengthAt(const Byte* AChar) const noexcept;
  template <TLxCharacterSetType CS> int DecodeAt(const Byte* AChar, WideChar* AOut) const noexcept;
  template <class TPredicate> void SkipBytes(TPredicate APredicate);
  void SkipWideNotEqual(WideChar AChar);
  void SkipUTF8Decoded(TLxTextParserSkipOp AOperator, char32_t AChar);
  void InitSource(Word ACodePage);
  /// Turns the units read last from big endian into little endian (code page 1201).
  void SwapReadUnits();

  Int64 Offset(const Byte* APtr) const noexcept { return FDataOffset + (APtr - FData); }
  const Byte* PtrAt(Int64 AOffset) const noexcept { return FData + (AOffset - FDataOffset); }
  /// Makes at least ACount bytes from the cursor readable; false when the source ends sooner.
  bool EnsureAhead(std::ptrdiff_t ACount);
  /// Reads the next block of a stream source, dropping text nobody can select any longer.
  bool Refill();
  Int64 OldestKeptOffset() const noexcept;
  Int64 PlaceOffset(TLxTextParserPosType APlace);
  void CountLinesUpTo(Int64 AOffset);
  [[noreturn]] void RaiseEOF();
  [[noreturn]] static void RaiseNotAMark();

  // Source window: FData[0] is byte FDataOffset of the text; FEnd ends what has been read.
  const Byte* FData = nullptr;
  const Byte* FCur = nullptr;
  const Byte* FEnd = nullptr;
  Int64 FDataOffset = 0;
  std::vector<Byte> FBuffer; // stream sources only
  TStream* FStream = nullptr;
  bool FStreamOwner = false;
  bool FSourceDone = true;
  Int64 FStreamStart = 0;
  bool FSwapUnits = false; // a 1201 source, read as 1200
  Int64 FSwappedEnd = 0;   // offset up to which read units are turned around

  TLxCharacterSetType FCharSet = csAnsi;
  std::ptrdiff_t FUnitSize = 1;
  Word FContentCodePage = 0;
  const WideChar* FAnsiTable = nullptr; // decode table of a single-byte content code page
  TLxTextParserPos FMarks[3] = {0, 0, 0};

  // Lines and columns are counted lazily, up to FCountedOffset.
  Int64 FCountedOffset = 0;
  Integer FLineNr = 1;
  Integer FColNr = 1;
  bool FAfterCR = false;
  Int64 FPinOffset = -1; // a pinned place not counted yet
  Integer FPinLineNr = 1;
  Integer FPinColNr = 1;

  WideChar FCharBuffer[3] = {0, 0, 0};
  WideChar FPeekBuffer[3] = {0, 0, 0};

  TRawByteSlot FRawCurrByte = nullptr;
  TRawWideSlot FRawCurrWide = nullptr;
  TCharSlot FCurrChar = nullptr;
  TCharSlot FReadChar = nullptr;
  TCharSlot FPeekChar = nullptr;
  TMoveSlot FMoveNext = nullptr;
  TSkipSetSlot FSkipSet = nullptr;
  TCharASlot FCurrCharA = nullptr;
  TCharWSlot FCurrCharW = nullptr;
  TCharWSlot FReadCharW = nullptr;
};

} // namespace lorvane
