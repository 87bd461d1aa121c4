// The character cursor: source window, per-character-set operation variants, marks, selection.
#include "lorvane/core/LxTextParser.h"

#include "core/internal/RawScan.h"
#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "platform/internal/Utf.h"

#include <algorithm>
#include <cstring>

namespace lorvane {

namespace {

constexpr WideChar NoChar[3] = {0, 0, 0};
constexpr Byte NoByte[1] = {0};
constexpr std::ptrdiff_t BlockSize = 64 * 1024;
// The longest character of any character set, in bytes; the window keeps this much before the
// cursor so that tpPrev and PrevCharW can still be read.
constexpr std::ptrdiff_t LongestChar = 4;

inline WideChar LoadUnit(const Byte* AAt) noexcept {
  WideChar Unit;
  std::memcpy(&Unit, AAt, sizeof Unit);
  return Unit;
}

constexpr bool IsHighSurrogate(WideChar C) noexcept { return C >= 0xD800 && C <= 0xDBFF; }
constexpr bool IsLowSurrogate(WideChar C) noexcept { return C >= 0xDC00 && C <= 0xDFFF; }

[[noreturn]] void RaiseBadSkipOperator(TLxTextParserSkipOp AOperator) {
  throw EArgumentOutOfRangeException(u"Skip operator %d is not supported here",
                                     {static_cast<int>(AOperator)});
}

} // namespace

// --- construction
// ---------------------------------------------------------------------------------
TLxTextParser::TLxTextParser(TStream* ASourceStream, bool AStreamOwner, Word AStreamCodePage)
    : FStream(ASourceStream), FStreamOwner(AStreamOwner), FSourceDone(ASourceStream == nullptr),
      FStreamStart(ASourceStream ? ASourceStream->GetPosition() : 0) {
  // A stream on memory is read in place: the text is all there already, and copying it block by
  // block would only cost time.
  const Byte* Memory = nullptr;
  if (auto* Own = dynamic_cast<TLxMemoryStream*>(ASourceStream))
    Memory = Own->Memory();
  else if (auto* Platform = dynamic_cast<TMemoryStream*>(ASourceStream))
    Memory = Platform->Memory();
  // Big-endian UTF-16 is turned around as it is read, so it can't be read in place.
  if (Memory && AStreamCodePage != CP_UTF16BE) {
    const Int64 Size = std::max<Int64>(ASourceStream->GetSize(), FStreamStart);
    FData = FCur = Memory + FStreamStart;
    FEnd = Memory + Size;
    FSourceDone = true;
  }
  InitSource(AStreamCodePage);
}

TLxTextParser::TLxTextParser(const void* AAddress, Int64 ASize, Word ACodePage)
    : FData(static_cast<const Byte*>(AAddress)), FCur(FData), FEnd(FData + (FData ? ASize : 0)) {
  if (ACodePage == CP_UTF16BE && FData) {
    // Read in blocks, which are turned into little endian; the caller's block stays as it is.
    FStream = New<TLxMemoryStream>(AAddress, ASize);
    FStreamOwner = true;
    FSourceDone = false;
    FData = FCur = FEnd = nullptr;
  }
  InitSource(ACodePage);
}

void TLxTextParser::InitSource(Word ACodePage) {
  FSwapUnits = ACodePage == CP_UTF16BE;
  const Word CodePage = FSwapUnits ? CP_UTF16LE : ACodePage;
  SetContentCodePage(CodePage);
  SetCharacterSetType(CodePage == CP_UTF16LE ? csWide : CodePage == CP_UTF8 ? csUTF8 : csAnsi);
}

void TLxTextParser::SwapReadUnits() {
  // Pairs count from the start of the text; a last byte without its partner waits for the next
  // block. The parser never reads a unit of which it has one byte only.
  const Int64 End = Offset(FEnd);
  Int64 At = FSwappedEnd;
  for (; At + 1 < End; At += 2) {
    Byte* Pair = FBuffer.data() + (At - FDataOffset);
    std::swap(Pair[0], Pair[1]);
  }
  FSwappedEnd = At;
}

TLxTextParser::~TLxTextParser() {
  if (FStreamOwner)
    lorvane::Free(FStream);
}

void TLxTextParser::SetCharacterSetType(TLxCharacterSetType ACharSet) {
  FCharSet = ACharSet;
  FUnitSize = ACharSet == csWide ? 2 : 1;
  auto Fill = [this]<TLxCharacterSetType CS>() {
    FRawCurrByte = &TLxTextParser::RawCurrByteT<CS>;
    FRawCurrWide = &TLxTextParser::RawCurrWideT<CS>;
    FCurrChar = &TLxTextParser::CurrCharT<CS>;
    FReadChar = &TLxTextParser::ReadCharT<CS>;
    FPeekChar = &TLxTextParser::PeekCharT<CS>;
    FMoveNext = &TLxTextParser::MoveNextT<CS>;
    FSkipSet = &TLxTextParser::SkipSetT<CS>;
    FCurrCharA = &TLxTextParser::CurrCharAT<CS>;
    FCurrCharW = &TLxTextParser::CurrCharWT<CS>;
    FReadCharW = &TLxTextParser::ReadCharWT<CS>;
  };
  switch (ACharSet) {
  case csAnsi:
    Fill.operator()<csAnsi>();
    break;
  case csWide:
    Fill.operator()<csWide>();
    break;
  case csUTF8:
    Fill.operator()<csUTF8>();
    break;
  }
}

void TLxTextParser::SetContentCodePage(Word ACodePage) {
  FContentCodePage = ACodePage;
  FAnsiTable = SingleByteTable(ACodePage);
}

// --- source window
// --------------------------------------------------------------------------------
Int64 TLxTextParser::OldestKeptOffset() const noexcept {
  Int64 Keep = std::max(FDataOffset, Offset(FCur) - LongestChar);
  for (TLxTextParserPos Mark : FMarks)
    if (Mark != 0)
      Keep = std::min(Keep, Mark - 1);
  return std::max(Keep, FDataOffset);
}

bool TLxTextParser::Refill() {
  if (FSourceDone)
    return false;
  const Int64 CursorOffset = Offset(FCur);
  // Lines and columns are counted from the window, so count before any text drops out.
  CountLinesUpTo(CursorOffset);
  const Int64 Keep = OldestKeptOffset();
  const std::size_t Drop = static_cast<std::size_t>(Keep - FDataOffset);
  const std::size_t Kept = static_cast<std::size_t>(FEnd - FData) - Drop;
  if (Drop > 0 && Kept > 0)
    std::memmove(FBuffer.data(), FBuffer.data() + Drop, Kept);
  FDataOffset = Keep;
  // Keep the buffer at least twice what must stay, so that moving the kept text costs no more
  // than reading the text that follows it.
  const std::size_t Wanted = std::max<std::size_t>(BlockSize, Kept);
  if (FBuffer.size() - Kept < Wanted)
    FBuffer.resize(std::max(FBuffer.size() * 2, Kept + Wanted));
  const Int64 Got = FStream->Read(FBuffer.data() + Kept, static_cast<Int64>(FBuffer.size() - Kept));
  FData = FBuffer.data();
  FEnd = FData + Kept + std::max<Int64>(Got, 0);
  FCur = PtrAt(CursorOffset);
  if (FSwapUnits)
    SwapReadUnits();
  if (Got <= 0) {
    FSourceDone = true;
    return false;
  }
  return true;
}

bool TLxTextParser::EnsureAhead(std::ptrdiff_t ACount) {
  while (FEnd - FCur < ACount)
    if (!Refill())
      return false;
  return true;
}

void TLxTextParser::First() {
  FMarks[0] = FMarks[1] = FMarks[2] = 0;
  FPinOffset = -1;
  FPinLineNr = FPinColNr = 1;
  FCountedOffset = 0;
  FLineNr = 1;
  FColNr = 1;
  FAfterCR = false;
  if (FDataOffset == 0) {
    FCur = FData;
    return;
  }
  if (FStream->Seek(FStreamStart, soBeginning) != FStreamStart)
    throw EReadError(u"The stream can't return to the start of the text");
  FDataOffset = 0;
  FSwappedEnd = 0;
  FData = FCur = FEnd = FBuffer.data();
  FSourceDone = false;
}

void TLxTextParser::Last() {
  for (;;) {
    FCur = FEnd;
    if (!Refill())
      break;
  }
  if (FCharSet == csWide && (Offset(FEnd) & 1))
    FCur = FEnd - 1;
}

// --- characters
// -----------------------------------------------------------------------------------
template <TLxCharacterSetType CS>
std::size_t TLxTextParser::CharLengthAt(const Byte* AChar) const noexcept {
  if constexpr (CS == csAnsi) {
    return 1;
  } else if constexpr (CS == csWide) {
    return 2;
  } else {
    if (*AChar < 0x80)
      return 1;
    int Used;
    utf::DecodeUTF8(AChar, static_cast<std::size_t>(FEnd - AChar), Used);
    return static_cast<std::size_t>(Used);
  }
}

template <TLxCharacterSetType CS>
int TLxTextParser::DecodeAt(const Byte* AChar, WideChar* AOut) const noexcept {
  if constexpr (CS == csAnsi) {
    AOut[0] = FAnsiTable ? FAnsiTable[*AChar] : (*AChar < 0x80 ? *AChar : 0xFFFD);
    return 1;
  } else if constexpr (CS == csWide) {
    AOut[0] = LoadUnit(AChar);
    if (IsHighSurrogate(AOut[0]) && FEnd - AChar >= 4 && IsLowSurrogate(LoadUnit(AChar + 2))) {
      AOut[1] = LoadUnit(AChar + 2);
      return 2;
    }
    return 1;
  } else {
    if (*AChar < 0x80) {
      AOut[0] = *AChar;
      return 1;
    }
    int Used;
    return utf::EncodeUTF16(utf::DecodeUTF8(AChar, static_cast<std::size_t>(FEnd - AChar), Used),
                            AOut);
  }
}

template <TLxCharacterSetType CS> const Byte* TLxTextParser::RawCurrByteT() {
  return FEnd - FCur >= FUnitSize || EnsureAhead(FUnitSize) ? FCur : NoByte;
}

template <TLxCharacterSetType CS> const WideChar* TLxTextParser::RawCurrWideT() {
  if constexpr (CS == csWide)
    return FEnd - FCur >= 2 || EnsureAhead(2) ? reinterpret_cast<const WideChar*>(FCur) : NoChar;
  else
    return CurrCharT<CS>();
}

template <TLxCharacterSetType CS> const WideChar* TLxTextParser::CurrCharT() {
  if (FEnd - FCur < FUnitSize && !EnsureAhead(FUnitSize))
    return NoChar;
  if constexpr (CS == csWide) {
    if (!FStream)
      return reinterpret_cast<const WideChar*>(FCur);
  }
  if constexpr (CS != csAnsi) {
    if (FEnd - FCur < LongestChar)
      EnsureAhead(LongestChar);
  }
  FCharBuffer[DecodeAt<CS>(FCur, FCharBuffer)] = 0;
  return FCharBuffer;
}

template <TLxCharacterSetType CS> const WideChar* TLxTextParser::ReadCharT() {
  const WideChar* Result = CurrCharT<CS>();
  if (FEnd - FCur >= FUnitSize)
    FCur += CharLengthAt<CS>(FCur);
  return Result;
}

template <TLxCharacterSetType CS> const WideChar* TLxTextParser::PeekCharT() {
  if (FEnd - FCur < 2 * LongestChar)
    EnsureAhead(2 * LongestChar);
  if (FEnd - FCur < FUnitSize)
    return NoChar;
  const Byte* Next = FCur + CharLengthAt<CS>(FCur);
  if (FEnd - Next < FUnitSize)
    return NoChar;
  FPeekBuffer[DecodeAt<CS>(Next, FPeekBuffer)] = 0;
  return FPeekBuffer;
}

template <TLxCharacterSetType CS> void TLxTextParser::MoveNextT() {
  if (FEnd - FCur < FUnitSize && !EnsureAhead(FUnitSize))
    RaiseEOF();
  if constexpr (CS == csUTF8) {
    if (*FCur >= 0x80 && FEnd - FCur < LongestChar)
      EnsureAhead(LongestChar);
  }
  FCur += CharLengthAt<CS>(FCur);
}

template <TLxCharacterSetType CS> Byte TLxTextParser::CurrCharAT() {
  if (FEnd - FCur < FUnitSize && !EnsureAhead(FUnitSize))
    return 0;
  if constexpr (CS == csWide) {
    const WideChar Unit = LoadUnit(FCur);
    return Unit < 0x100 ? static_cast<Byte>(Unit) : 0xFF;
  } else {
    return *FCur;
  }
}

template <TLxCharacterSetType CS> WideChar TLxTextParser::CurrCharWT() {
  if (FEnd - FCur < FUnitSize && !EnsureAhead(FUnitSize))
    return 0;
  if constexpr (CS == csAnsi) {
    return FAnsiTable ? FAnsiTable[*FCur] : (*FCur < 0x80 ? *FCur : 0xFFFD);
  } else if constexpr (CS == csWide) {
    return LoadUnit(FCur);
  } else {
    if (*FCur < 0x80)
      return *FCur;
    return CurrCharT<CS>()[0];
  }
}

Byte TLxTextParser::ReadCharA() {
  const Byte Result = CurrCharA();
  if (FEnd - FCur >= FUnitSize)
    MoveNext();
  return Result;
}

template <TLxCharacterSetType CS> WideChar TLxTextParser::ReadCharWT() {
  if constexpr (CS == csAnsi) {
    if (FEnd - FCur < 1 && !EnsureAhead(1))
      return 0;
    const Byte B = *FCur++;
    return FAnsiTable ? FAnsiTable[B] : (B < 0x80 ? B : 0xFFFD);
  } else if constexpr (CS == csWide) {
    if (FEnd - FCur < 2 && !EnsureAhead(2))
      return 0;
    const WideChar Unit = LoadUnit(FCur);
    FCur += 2;
    return Unit;
  } else {
    if (FEnd - FCur < 1 && !EnsureAhead(1))
      return 0;
    if (*FCur < 0x80)
      return *FCur++;
    return ReadCharT<CS>()[0];
  }
}

template <TLxCharacterSetType CS> Int64 TLxTextParser::PrevOffsetT() const noexcept {
  const Int64 Cursor = Offset(FCur);
  if constexpr (CS == csUTF8) {
    if (FCur == FData)
      return Cursor;
    // Back over continuation bytes to the lead byte of the last character.
    const Byte* P = FCur - 1;
    for (int Steps = 0; Steps < 3 && P > FData && (*P & 0xC0) == 0x80; ++Steps)
      --P;
    return Offset(P);
  } else {
    return std::max(FDataOffset, Cursor - FUnitSize);
  }
}

WideChar TLxTextParser::PrevCharW() {
  const Int64 Prev = PlaceOffset(tpPrev);
  if (Prev == Offset(FCur))
    return 0;
  WideChar Buffer[2] = {0, 0};
  switch (FCharSet) {
  case csAnsi:
    DecodeAt<csAnsi>(PtrAt(Prev), Buffer);
    break;
  case csWide:
    DecodeAt<csWide>(PtrAt(Prev), Buffer);
    break;
  case csUTF8:
    DecodeAt<csUTF8>(PtrAt(Prev), Buffer);
    break;
  }
  return Buffer[0];
}

void TLxTextParser::RaiseEOF() { throw ELxTextParserEOF(u"Unexpected end of the text", 1); }

void TLxTextParser::CheckEOF() {
  if (_GetEOF())
    RaiseEOF();
}

void TLxTextParser::SkipChars(Integer ACount) {
  for (Integer I = 0; I < ACount; ++I)
    MoveNext();
}

template <TLxCharacterSetType CS> UnicodeString TLxTextParser::PeekStringT(Integer ACount) {
  UnicodeString Result;
  if (ACount <= 0)
    return Result;
  EnsureAhead(static_cast<std::ptrdiff_t>(ACount) * (CS == csUTF8 ? LongestChar : FUnitSize));
  Result.reserve(static_cast<std::size_t>(ACount));
  WideChar Buffer[2];
  const Byte* P = FCur;
  for (Integer I = 0; I < ACount && FEnd - P >= FUnitSize;) {
    if constexpr (CS == csUTF8) {
      // ASCII runs widen in one go: a look-ahead over markup is mostly ASCII.
      const Byte* const Limit = P + std::min<std::ptrdiff_t>(ACount - I, FEnd - P);
      const Byte* Run = P;
      while (Run < Limit && *Run < 0x80)
        ++Run;
      if (Run != P) {
        Result.append(P, Run);
        I += static_cast<Integer>(Run - P);
        P = Run;
        continue;
      }
    }
    Result.append(Buffer, static_cast<std::size_t>(DecodeAt<CS>(P, Buffer)));
    P += CharLengthAt<CS>(P);
    ++I;
  }
  return Result;
}

UnicodeString TLxTextParser::PeekString(Integer ACount) {
  switch (FCharSet) {
  case csAnsi:
    return PeekStringT<csAnsi>(ACount);
  case csWide:
    return PeekStringT<csWide>(ACount);
  default:
    return PeekStringT<csUTF8>(ACount);
  }
}

std::string TLxTextParser::PeekStringUTF8(Integer ACount) {
  if (FCharSet != csUTF8)
    return StringToUTF8(PeekString(ACount));
  std::string Result;
  if (ACount <= 0)
    return Result;
  EnsureAhead(static_cast<std::ptrdiff_t>(ACount) * LongestChar);
  const Byte* P = FCur;
  for (Integer I = 0; I < ACount && P < FEnd; ++I) {
    if (*P < 0x80) {
      // An ASCII run in one piece.
      const Byte* const Limit = P + std::min<std::ptrdiff_t>(ACount - I, FEnd - P);
      const Byte* Run = P;
      while (Run < Limit && *Run < 0x80)
        ++Run;
      Result.append(reinterpret_cast<const char*>(P), static_cast<std::size_t>(Run - P));
      I += static_cast<Integer>(Run - P) - 1;
      P = Run;
      continue;
    }
    // A well-formed sequence is its own UTF-8; an ill-formed one reads as U+FFFD.
    int Used;
    if (utf::DecodeUTF8(P, static_cast<std::size_t>(FEnd - P), Used) == utf::ReplacementChar)
      Result += "\xEF\xBF\xBD";
    else
      Result.append(reinterpret_cast<const char*>(P), static_cast<std::size_t>(Used));
    P += Used;
  }
  return Result;
}

// --- skips
// ----------------------------------------------------------------------------------------
template <class TPredicate> void TLxTextParser::SkipBytes(TPredicate APredicate) {
  for (;;) {
    const Byte* P = FCur;
    const Byte* const End = FEnd;
    while (P < End && APredicate(*P))
      ++P;
    FCur = P;
    if (P < End || !Refill())
      return;
  }
}

void TLxTextParser::SrcASkipWhileA(TLxTextParserSkipOp AOperator, AnsiChar AChar) {
  const Byte Char = static_cast<Byte>(AChar);
  switch (AOperator) {
  case spEqual:
    SkipBytes([Char](Byte B) { return B == Char; });
    break;
  case spNotEqual:
    for (;;) {
      const void* Found =
          FEnd > FCur ? std::memchr(FCur, Char, static_cast<std::size_t>(FEnd - FCur)) : nullptr;
      if (Found) {
        FCur = static_cast<const Byte*>(Found);
        return;
      }
      FCur = FEnd;
      if (!Refill())
        return;
    }
  case spLessEqual:
    SkipBytes([Char](Byte B) { return B <= Char; });
    break;
  default:
    RaiseBadSkipOperator(AOperator);
  }
}

void TLxTextParser::SrcUSkipWhileA(TLxTextParserSkipOp AOperator, AnsiChar AChar) {
  // Byte comparison is exact for ASCII: no byte of a multi-byte sequence is below 0x80.
  if (static_cast<Byte>(AChar) < 0x80)
    SrcASkipWhileA(AOperator, AChar);
  else
    SkipUTF8Decoded(AOperator, static_cast<Byte>(AChar));
}

void TLxTextParser::SkipUTF8Decoded(TLxTextParserSkipOp AOperator, char32_t AChar) {
  if (AOperator != spEqual && AOperator != spNotEqual && AOperator != spLessEqual)
    RaiseBadSkipOperator(AOperator);
  while (!_GetEOF()) {
    if (FEnd - FCur < LongestChar)
      EnsureAhead(LongestChar);
    int Used;
    const char32_t Code = utf::DecodeUTF8(FCur, static_cast<std::size_t>(FEnd - FCur), Used);
    const bool GoOn = AOperator == spEqual      ? Code == AChar
                      : AOperator == spNotEqual ? Code != AChar
                                                : Code <= AChar;
    if (!GoOn)
      return;
    FCur += Used;
  }
}

void TLxTextParser::SkipWideNotEqual(WideChar AChar) {
  for (;;) {
    if (const Byte* const Hit = rawscan::FindUnit16(FCur, FEnd, AChar)) {
      FCur = Hit;
      return;
    }
    FCur = FEnd - (FEnd - FCur) % 2; // an odd byte at the end waits for its other half
    if (!Refill())
      return;
  }
}

void TLxTextParser::SrcWSkipWhileW(TLxTextParserSkipOp AOperator, WideChar AChar) {
  auto SkipUnits = [this](auto APredicate) {
    for (;;) {
      const Byte* P = FCur;
      const Byte* const End = FEnd;
      while (End - P >= 2 && APredicate(LoadUnit(P)))
        P += 2;
      FCur = P;
      if (End - P >= 2 || !Refill())
        return;
    }
  };
  switch (AOperator) {
  case spEqual:
    SkipUnits([AChar](WideChar C) { return C == AChar; });
    break;
  case spNotEqual:
    SkipWideNotEqual(AChar);
    break;
  case spLessEqual:
    SkipUnits([AChar](WideChar C) { return C <= AChar; });
    break;
  default:
    RaiseBadSkipOperator(AOperator);
  }
}

void TLxTextParser::SkipWhile(TLxTextParserSkipOp AOperator, WideChar AChar) {
  switch (FCharSet) {
  case csWide:
    SrcWSkipWhileW(AOperator, AChar);
    break;
  case csUTF8:
    if (AChar < 0x80)
      SrcASkipWhileA(AOperator, static_cast<AnsiChar>(AChar));
    else
      SkipUTF8Decoded(AOperator, AChar);
    break;
  case csAnsi:
    if (AChar < 0x100) {
      SrcASkipWhileA(AOperator, static_cast<AnsiChar>(AChar));
    } else {
      // No byte equals a character above U+00FF, and every byte lies below it.
      if (AOperator != spEqual && AOperator != spNotEqual && AOperator != spLessEqual)
        RaiseBadSkipOperator(AOperator);
      if (AOperator != spEqual)
        SkipBytes([](Byte) { return true; });
    }
    break;
  }
}

template <TLxCharacterSetType CS>
void TLxTextParser::SkipSetT(TLxTextParserSkipOp AOperator, const TLxCharSet& ASet) {
  if (AOperator != spInSet && AOperator != spNotInSet)
    RaiseBadSkipOperator(AOperator);
  const bool Inside = AOperator == spInSet;
  int FewCount;
  const Byte* Few = ASet.FewMembers(FewCount);
  if (CS != csWide && !Inside && Few && FewCount > 0) {
    // A skip to one of a few ASCII characters: no byte from 0x80 on can be one of them, in a
    // single-byte code page or in UTF-8, so whole blocks are compared without decoding.
    for (;;) {
      FCur = rawscan::FindAnyOf(FCur, FEnd, Few, FewCount);
      if (FCur < FEnd || !Refill())
        return;
    }
  }
  if constexpr (CS == csAnsi) {
    SkipBytes([&ASet, Inside](Byte B) { return ASet.Contains(B) == Inside; });
  } else if constexpr (CS == csWide) {
    for (;;) {
      const Byte* P = FCur;
      const Byte* const End = FEnd;
      while (End - P >= 2 && ASet.Contains(LoadUnit(P)) == Inside)
        P += 2;
      FCur = P;
      if (End - P >= 2 || !Refill())
        return;
    }
  } else {
    for (;;) {
      const Byte* P = FCur;
      const Byte* const End = FEnd;
      bool NeedMore = false;
      while (P < End) {
        if (*P < 0x80) {
          if (ASet.Contains(*P) != Inside)
            break;
          ++P;
          continue;
        }
        // A character from U+0080 on: decode it; only U+0080..U+00FF can be in a set.
        if (End - P < LongestChar && !FSourceDone) {
          NeedMore = true;
          break;
        }
        int Used;
        const char32_t Code = utf::DecodeUTF8(P, static_cast<std::size_t>(End - P), Used);
        if (ASet.Contains(Code) != Inside)
          break;
        P += Used;
      }
      FCur = P;
      if (P < End && !NeedMore)
        return;
      if (!Refill() && !NeedMore)
        return;
    }
  }
}

// --- lines and columns
// ----------------------------------------------------------------------------
namespace {

// Columns of a run without line ends: characters that start a column (no UTF-8 continuation
// byte). Plain loops over bytes, so that the compiler vectorizes them.
Integer CountColumns(const Byte* AFrom, const Byte* ATo, bool AUTF8) noexcept {
  if (!AUTF8)
    return static_cast<Integer>(ATo - AFrom);
  Integer Columns = 0;
  for (const Byte* P = AFrom; P < ATo; ++P)
    Columns += (*P & 0xC0) != 0x80;
  return Columns;
}

const Byte* FindByte(const Byte* AFrom, const Byte* ATo, Byte AByte) noexcept {
  const void* Found = AFrom < ATo ? std::memchr(AFrom, AByte, std::size_t(ATo - AFrom)) : nullptr;
  return Found ? static_cast<const Byte*>(Found) : ATo;
}

} // namespace

template <TLxCharacterSetType CS>
void TLxTextParser::CountLinesT(const Byte* AFrom, const Byte* ATo) {
  // This walk covers every byte of a stream source once, so byte sources hop from line end to
  // line end with memchr.
  if constexpr (CS != csWide) {
    const Byte* LineStart = AFrom;
    const Byte* NextLF = FindByte(AFrom, ATo, '\n');
    const Byte* NextCR = FindByte(AFrom, ATo, '\r');
    for (;;) {
      const Byte* Break = std::min(NextLF, NextCR);
      if (Break == ATo)
        break;
      const bool AfterCR = Break == AFrom ? FAfterCR : Break[-1] == '\r';
      if (*Break == '\r' || !AfterCR)
        ++FLineNr;
      FColNr = 1;
      LineStart = Break + 1;
      if (NextLF == Break)
        NextLF = FindByte(LineStart, ATo, '\n');
      if (NextCR == Break)
        NextCR = FindByte(LineStart, ATo, '\r');
    }
    FColNr += CountColumns(LineStart, ATo, CS == csUTF8);
    FAfterCR = ATo > AFrom ? ATo[-1] == '\r' : FAfterCR;
  } else {
    for (const Byte* P = AFrom; ATo - P >= 2; P += 2) {
      const WideChar C = LoadUnit(P);
      if (C == u'\n') {
        if (!FAfterCR)
          ++FLineNr;
        FColNr = 1;
        FAfterCR = false;
      } else if (C == u'\r') {
        ++FLineNr;
        FColNr = 1;
        FAfterCR = true;
      } else {
        FAfterCR = false;
        FColNr += !IsLowSurrogate(C);
      }
    }
  }
}

void TLxTextParser::CountLinesUpTo(Int64 AOffset) {
  if (FPinOffset >= 0 && FPinOffset <= AOffset) {
    // The pinned place is passed on the way: keep its line and column.
    const Int64 Pin = std::exchange(FPinOffset, -1);
    CountLinesUpTo(Pin);
    FPinLineNr = FLineNr;
    FPinColNr = FColNr;
  }
  if (AOffset <= FCountedOffset)
    return;
  const Byte* From = PtrAt(FCountedOffset);
  const Byte* To = PtrAt(AOffset);
  switch (FCharSet) {
  case csAnsi:
    CountLinesT<csAnsi>(From, To);
    break;
  case csWide:
    CountLinesT<csWide>(From, To);
    break;
  case csUTF8:
    CountLinesT<csUTF8>(From, To);
    break;
  }
  FCountedOffset = AOffset;
}

void TLxTextParser::PinLineCol() {
  FPinOffset = Offset(FCur);
  if (FPinOffset <= FCountedOffset) {
    // Lines are counted up to the cursor already: take the count as it stands.
    FPinOffset = -1;
    FPinLineNr = FLineNr;
    FPinColNr = FColNr;
  }
}

void TLxTextParser::GetPinnedLineCol(Integer& ALineNr, Integer& AColNr) {
  if (FPinOffset >= 0)
    CountLinesUpTo(FPinOffset);
  ALineNr = FPinLineNr;
  AColNr = FPinColNr;
}

Integer TLxTextParser::GetLineNr() {
  CountLinesUpTo(Offset(FCur));
  return FLineNr;
}

Integer TLxTextParser::GetColNr() {
  CountLinesUpTo(Offset(FCur));
  return FColNr;
}

// --- marks and selection
// --------------------------------------------------------------------------
void TLxTextParser::RaiseNotAMark() {
  throw EArgumentOutOfRangeException(u"Only the marks can be set or cleared");
}

Int64 TLxTextParser::PlaceOffset(TLxTextParserPosType APlace) {
  switch (APlace) {
  case tpPrev:
    switch (FCharSet) {
    case csAnsi:
      return PrevOffsetT<csAnsi>();
    case csWide:
      return PrevOffsetT<csWide>();
    default:
      return PrevOffsetT<csUTF8>();
    }
  case tpCurrent:
    return Offset(FCur);
  case tpNext:
    if (FEnd - FCur < 2 * LongestChar)
      EnsureAhead(2 * LongestChar);
    if (FEnd - FCur < FUnitSize)
      return Offset(FCur);
    switch (FCharSet) {
    case csAnsi:
      return Offset(FCur + CharLengthAt<csAnsi>(FCur));
    case csWide:
      return Offset(FCur + CharLengthAt<csWide>(FCur));
    default:
      return Offset(FCur + CharLengthAt<csUTF8>(FCur));
    }
  default:
    return FMarks[APlace - tpMark1] - 1;
  }
}

void TLxTextParser::DecodeInto(UnicodeString& ATarget, const Byte* AFrom,
                               std::size_t ALength) const {
  // The target keeps its capacity, so that a caller that selects into the same string again and
  // again allocates only while its texts grow.
  switch (FCharSet) {
  case csWide:
    ATarget.resize(ALength / 2);
    if (!ATarget.empty())
      std::memcpy(ATarget.data(), AFrom, ATarget.size() * 2);
    return;
  case csUTF8: {
    // Most selections (names, short values) are ASCII: widen while checking, in one pass, and
    // decode properly from the first byte that isn't ASCII.
    ATarget.resize(ALength);
    char16_t* Out = ATarget.data();
    std::size_t I = rawscan::WidenASCIIBlocks(AFrom, ALength, Out);
    for (; I < ALength && AFrom[I] < 0x80; ++I)
      Out[I] = AFrom[I];
    if (I < ALength) {
      ATarget.resize(I);
      utf::AppendUTF8AsUTF16(ATarget, AFrom + I, ALength - I);
    }
    return;
  }
  case csAnsi:
    if (FAnsiTable) {
      ATarget.resize(ALength);
      char16_t* Out = ATarget.data();
      for (std::size_t I = 0; I < ALength; ++I)
        Out[I] = FAnsiTable[AFrom[I]];
    } else {
      ATarget = CodePageToUnicode(AFrom, ALength, FContentCodePage);
    }
    return;
  }
}

void TLxTextParser::SelectInto(UnicodeString& ATarget, TLxTextParserPosType AFrom,
                               TLxTextParserPosType ATo, bool AClearMark) {
  const TLxTextParserPos From = GetPos(AFrom), To = GetPos(ATo);
  if (From != 0 && To > From)
    DecodeInto(ATarget, PtrAt(From - 1), static_cast<std::size_t>(To - From));
  else
    ATarget.clear();
  if (AClearMark && AFrom >= tpMark1)
    FMarks[AFrom - tpMark1] = 0;
}

UnicodeString TLxTextParser::Selected(TLxTextParserPosType AFrom, TLxTextParserPosType ATo,
                                      bool AClearMark) {
  UnicodeString Result;
  SelectInto(Result, AFrom, ATo, AClearMark);
  return Result;
}

RawByteString TLxTextParser::SelectedA(TLxTextParserPosType AFrom, TLxTextParserPosType ATo,
                                       bool AClearMark) {
  const TLxTextParserPos From = GetPos(AFrom), To = GetPos(ATo);
  RawByteString Result;
  if (From != 0 && To > From)
    Result.assign(reinterpret_cast<const char*>(PtrAt(From - 1)),
                  static_cast<std::size_t>(To - From));
  if (AClearMark && AFrom >= tpMark1)
    FMarks[AFrom - tpMark1] = 0;
  return Result;
}

UnicodeString TLxTextParser::CurrCharText() {
  // The current character alone (a surrogate pair stays whole), not the rest of the text that a
  // pointer into the source would run on to.
  const WideChar* Char = CurrChar();
  if (Char[0] == 0)
    return UnicodeString();
  const bool Pair =
      Char[0] >= 0xD800 && Char[0] <= 0xDBFF && Char[1] >= 0xDC00 && Char[1] <= 0xDFFF;
  return UnicodeString(Char, Pair ? 2 : 1);
}

} // namespace lorvane
