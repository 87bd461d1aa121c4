// The memory stream, the string builder in a code page, and the UTF-16 to UTF-8 adapter.
#include "lorvane/core/LxStreams.h"

#include "core/internal/RawScan.h"
#include "lorvane/core/LxEncoding.h"
#include "lorvane/platform/CodePages.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace lorvane {

// A 1200 stream's bytes are the memory of a UnicodeString: the library is little endian only.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr bool IsHighSurrogate(char16_t AChar) noexcept {
  return AChar >= 0xD800 && AChar <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char16_t AChar) noexcept {
  return AChar >= 0xDC00 && AChar <= 0xDFFF;
}

/// Writes one code point as UTF-8 at AOut; gives the bytes written.
inline int PutUTF8(char32_t ACode, Byte* AOut) noexcept {
  if (ACode < 0x80) {
    AOut[0] = static_cast<Byte>(ACode);
    return 1;
  }
  if (ACode < 0x800) {
    AOut[0] = static_cast<Byte>(0xC0 | (ACode >> 6));
    AOut[1] = static_cast<Byte>(0x80 | (ACode & 0x3F));
    return 2;
  }
  if (ACode < 0x10000) {
    AOut[0] = static_cast<Byte>(0xE0 | (ACode >> 12));
    AOut[1] = static_cast<Byte>(0x80 | ((ACode >> 6) & 0x3F));
    AOut[2] = static_cast<Byte>(0x80 | (ACode & 0x3F));
    return 3;
  }
  AOut[0] = static_cast<Byte>(0xF0 | (ACode >> 18));
  AOut[1] = static_cast<Byte>(0x80 | ((ACode >> 12) & 0x3F));
  AOut[2] = static_cast<Byte>(0x80 | ((ACode >> 6) & 0x3F));
  AOut[3] = static_cast<Byte>(0x80 | (ACode & 0x3F));
  return 4;
}

/// Encodes AText as UTF-8 at AOut (room for 3 bytes per unit); a lone surrogate, also a high one
/// at the end, becomes U+FFFD. Gives the bytes written.
std::size_t PutUTF8Text(std::u16string_view AText, Byte* AOut) noexcept {
  Byte* Out = AOut;
  const std::size_t Count = AText.size();
  for (std::size_t I = 0; I < Count; ++I) {
    char32_t Code = AText[I];
    if (Code < 0x80) {
      *Out++ = static_cast<Byte>(Code);
      continue;
    }
    if (Code >= 0xD800 && Code <= 0xDFFF) {
      if (IsHighSurrogate(AText[I]) && I + 1 < Count && IsLowSurrogate(AText[I + 1]))
        Code = 0x10000 + ((Code - 0xD800) << 10) + (AText[++I] - 0xDC00);
      else
        Code = 0xFFFD;
    }
    Out += PutUTF8(Code, Out);
  }
  return static_cast<std::size_t>(Out - AOut);
}

} // namespace

// --- TLxMemoryStream
// ------------------------------------------------------------------------------
TLxMemoryStream::TLxMemoryStream(void* AAddress, Int64 ASize)
    : FMemory(static_cast<Byte*>(AAddress)), FSize(std::max<Int64>(0, ASize)), FWriteLimit(FSize),
      FCapacity(FSize) {}

TLxMemoryStream::TLxMemoryStream(const void* AAddress, Int64 ASize)
    // The pointer loses its const only to share the field: a write limit of 0 keeps every
    // write out of the block.
    : FMemory(static_cast<Byte*>(const_cast<void*>(AAddress))), FSize(std::max<Int64>(0, ASize)),
      FWriteLimit(0), FCapacity(FSize) {}

TLxMemoryStream::TLxMemoryStream(Int64 ACapacity) : FOwnsMemory(true) {
  if (ACapacity > 0)
    Reserve(ACapacity);
}

TLxMemoryStream::~TLxMemoryStream() {
  if (FOwnsMemory)
    delete[] FMemory;
}

void TLxMemoryStream::Reserve(Int64 ACapacity) {
  if (ACapacity <= FCapacity)
    return;
  // Bytes behind FSize need no copy and no initialisation: a write fills them first.
  Byte* Memory = new Byte[static_cast<std::size_t>(ACapacity)];
  if (FSize > 0)
    std::memcpy(Memory, FMemory, static_cast<std::size_t>(FSize));
  delete[] FMemory;
  FMemory = Memory;
  FWriteLimit = FCapacity = ACapacity;
}

Byte* TLxMemoryStream::PrepareWrite(Int64 ACount) {
  const Int64 End = FPosition + ACount;
  if (End > FWriteLimit) {
    if (!FOwnsMemory)
      throw EWriteError(u"Stream write error");
    Reserve(std::max(End, FWriteLimit + FWriteLimit / 2 + 64));
  }
  if (FPosition > FSize)
    std::memset(FMemory + FSize, 0, static_cast<std::size_t>(FPosition - FSize));
  return FMemory + FPosition;
}

Int64 TLxMemoryStream::Read(void* ABuffer, Int64 ACount) {
  const Int64 Count = std::clamp<Int64>(FSize - FPosition, 0, std::max<Int64>(ACount, 0));
  if (Count > 0)
    std::memcpy(ABuffer, FMemory + FPosition, static_cast<std::size_t>(Count));
  FPosition += Count;
  return Count;
}

Int64 TLxMemoryStream::Write(const void* ABuffer, Int64 ACount) {
  if (ACount <= 0)
    return 0;
  Int64 Count = ACount;
  if (!FOwnsMemory) {
    Count = std::clamp<Int64>(FWriteLimit - FPosition, 0, ACount);
    if (Count == 0)
      return 0;
  }
  std::memcpy(PrepareWrite(Count), ABuffer, static_cast<std::size_t>(Count));
  CommitWrite(Count);
  return Count;
}

void TLxMemoryStream::WriteWordSlow(Word AValue) {
  const Byte Bytes[2] = {static_cast<Byte>(AValue), static_cast<Byte>(AValue >> 8)};
  WriteBuffer(Bytes, 2);
}

Int64 TLxMemoryStream::Seek(Int64 AOffset, TSeekOrigin AOrigin) {
  const Int64 Base = AOrigin == soBeginning ? 0 : AOrigin == soCurrent ? FPosition : FSize;
  FPosition = std::max<Int64>(0, Base + AOffset);
  return FPosition;
}

void TLxMemoryStream::SetSize(Int64 ANewSize) {
  ANewSize = std::max<Int64>(0, ANewSize);
  if (FOwnsMemory) {
    if (ANewSize > FSize) {
      Reserve(ANewSize);
      std::memset(FMemory + FSize, 0, static_cast<std::size_t>(ANewSize - FSize));
    }
  } else if (ANewSize > FCapacity) {
    throw EStreamError(u"Stream size can't be changed");
  }
  FSize = ANewSize;
  FPosition = std::min(FPosition, FSize);
}

// --- TLxStringStream
// ------------------------------------------------------------------------------
// Which of the builder's paths a code page takes; decided once, at construction.
TLxStringStream::TTextForm TLxStringStream::FormOf(Word ACodePage) noexcept {
  const Word CodePage = ResolveCodePage(ACodePage);
  return CodePage == CP_UTF16LE ? TTextForm::Wide
         : CodePage == CP_UTF8  ? TTextForm::UTF8
                                : TTextForm::Other;
}

TLxStringStream::TLxStringStream(Word ACodePage, Int64 ACapacity)
    : TLxMemoryStream(ACapacity), FCodePage(ACodePage), FForm(FormOf(ACodePage)) {}

TLxStringStream::TLxStringStream(std::u16string_view AString)
    : TLxStringStream(CP_UTF16LE, static_cast<Int64>(AString.size()) * 2) {
  AppendBytes(AString.data(), static_cast<Int64>(AString.size()) * 2);
  FPosition = 0;
}

TLxStringStream::TLxStringStream(std::string_view AString, Word ACodePage)
    : TLxStringStream(ACodePage, static_cast<Int64>(AString.size())) {
  AppendBytes(AString.data(), static_cast<Int64>(AString.size()));
  FPosition = 0;
}

TLxStringStream::TLxStringStream(const void* AAddress, Integer ALength, Word ACodePage)
    : TLxStringStream(ACodePage, std::max<Int64>(ALength, 0)) {
  AppendBytes(AAddress, ALength);
  FPosition = 0;
}

void TLxStringStream::AppendBytes(const void* ABytes, Int64 ACount) {
  if (ACount <= 0)
    return;
  std::memcpy(PrepareWrite(ACount), ABytes, static_cast<std::size_t>(ACount));
  CommitWrite(ACount);
}

void TLxStringStream::AppendEncoded(std::u16string_view AText) {
  if (AText.empty())
    return;
  if (FForm == TTextForm::UTF8) {
    // Straight into the buffer: no temporary string on the output path.
    Byte* Out = PrepareWrite(static_cast<Int64>(AText.size()) * 3);
    CommitWrite(static_cast<Int64>(PutUTF8Text(AText, Out)));
    return;
  }
  const RawByteString Bytes = UnicodeToCodePage(AText, FCodePage);
  AppendBytes(Bytes.data(), static_cast<Int64>(Bytes.size()));
}

void TLxStringStream::AppendText(std::u16string_view AText) {
  FPosition = FSize;
  if (AText.empty())
    return;
  if (FPendingHigh && FPendingEnd == FSize && IsLowSurrogate(AText.front())) {
    // The stand-in of the high surrogate is the last thing in the content: take it back and
    // write the pair as one character.
    const char16_t Pair[2] = {FPendingHigh, AText.front()};
    FSize = FPosition = FPendingStart;
    FPendingHigh = 0;
    AppendEncoded(std::u16string_view(Pair, 2));
    AText.remove_prefix(1);
  }
  FPendingHigh = 0;
  if (AText.empty())
    return;
  if (IsHighSurrogate(AText.back())) {
    AppendEncoded(AText.substr(0, AText.size() - 1));
    FPendingStart = FPosition;
    AppendEncoded(AText.substr(AText.size() - 1));
    FPendingEnd = FPosition;
    FPendingHigh = AText.back();
    return;
  }
  AppendEncoded(AText);
}

void TLxStringStream::Add(std::u16string_view AString) {
  if (FForm == TTextForm::Wide) {
    FPosition = FSize;
    AppendBytes(AString.data(), static_cast<Int64>(AString.size()) * 2);
    return;
  }
  AppendText(AString);
}

void TLxStringStream::Add(std::string_view AString) {
  FPosition = FSize;
  FPendingHigh = 0;
  AppendBytes(AString.data(), static_cast<Int64>(AString.size()));
}

void TLxStringStream::AddCharSlow(WideChar AChar) { Add(std::u16string_view(&AChar, 1)); }

UnicodeString TLxStringStream::GetWString() const {
  return CodePageToUnicode(FMemory, static_cast<std::size_t>(FSize), FCodePage);
}

RawByteString TLxStringStream::GetAString() const {
  if (FSize == 0)
    return RawByteString();
  return RawByteString(reinterpret_cast<const char*>(FMemory), static_cast<std::size_t>(FSize));
}

UnicodeString TLxStringStream::GetDataString() const {
  return UnicodeString(FMemory, FMemory + FSize);
}

RawByteString TLxStringStream::GetAsUTF8() const { return StringData(CP_UTF8); }

RawByteString TLxStringStream::StringData(Word ACodePage) const {
  if (ResolveCodePage(ACodePage) == ResolveCodePage(FCodePage))
    return GetAString();
  return UnicodeToCodePage(GetWString(), ACodePage);
}

// Any move that Add didn't make ends the wait for a low surrogate.
Int64 TLxStringStream::Write(const void* ABuffer, Int64 ACount) {
  FPendingHigh = 0;
  return inherited::Write(ABuffer, ACount);
}

Int64 TLxStringStream::Seek(Int64 AOffset, TSeekOrigin AOrigin) {
  if (AOffset != 0 || AOrigin != soCurrent)
    FPendingHigh = 0;
  return inherited::Seek(AOffset, AOrigin);
}

void TLxStringStream::SetSize(Int64 ANewSize) {
  FPendingHigh = 0;
  inherited::SetSize(ANewSize);
}

// --- TLxUTF8StreamAdapter
// -------------------------------------------------------------------------
TLxUTF8StreamAdapter::TLxUTF8StreamAdapter(TStream* ATarget, bool AOwnsTarget, bool AWriteMark)
    : FTarget(ATarget), FOwnsTarget(AOwnsTarget), FMarkPending(AWriteMark) {}

TLxUTF8StreamAdapter::~TLxUTF8StreamAdapter() {
  if (FOwnsTarget)
    lorvane::Free(FTarget);
}

void TLxUTF8StreamAdapter::BeforeDestruction() {
  // Free can't fail half way without leaking the adapter, so a target that fails now goes
  // unreported; Flush before Free reports it.
  try {
    Flush();
  } catch (const Exception&) {
  }
  inherited::BeforeDestruction();
}

Int64 TLxUTF8StreamAdapter::Read(void*, Int64) {
  throw EStreamError(u"The UTF-8 adapter can only be written");
}

Int64 TLxUTF8StreamAdapter::Seek(Int64 AOffset, TSeekOrigin AOrigin) {
  const Int64 Target = AOrigin == soBeginning ? AOffset : FTaken + AOffset;
  if (Target != FTaken)
    throw EStreamError(u"The UTF-8 adapter can't seek");
  return FTaken;
}

Int64 TLxUTF8StreamAdapter::Write(const void* ABuffer, Int64 ACount) {
  if (ACount <= 0)
    return 0;
  if (FMarkPending) {
    FTarget->WriteBuffer(cLxUTF8.data(), static_cast<Int64>(cLxUTF8.size()));
    FMarkPending = false;
  }
  const auto* In = static_cast<const Byte*>(ABuffer);
  const Byte* InEnd = In + ACount;
  constexpr std::size_t BlockUnits = 4096;
  // Every unit puts out at most 3 bytes of its own and releases at most one held high surrogate
  // (3 bytes more), which was a unit itself: 3 bytes per unit, plus the odd unit and the
  // surrogate held from the last Write.
  Byte Block[BlockUnits * 3 + 6];
  Byte* Out = Block;
  auto PutUnit = [&](char16_t AUnit) {
    if (FPendingHigh) {
      const char16_t High = FPendingHigh;
      FPendingHigh = 0;
      if (IsLowSurrogate(AUnit)) {
        Out += PutUTF8(0x10000 + ((char32_t(High) - 0xD800) << 10) + (AUnit - 0xDC00), Out);
        return;
      }
      Out += PutUTF8(0xFFFD, Out);
    }
    if (IsHighSurrogate(AUnit))
      FPendingHigh = AUnit;
    else
      Out += PutUTF8(IsLowSurrogate(AUnit) ? char32_t(0xFFFD) : char32_t(AUnit), Out);
  };
  if (FHasOddByte) {
    FHasOddByte = false;
    PutUnit(static_cast<char16_t>(FOddByte | (*In++ << 8)));
  }
  while (InEnd - In >= 2) {
    std::size_t Units = std::min<std::size_t>(static_cast<std::size_t>(InEnd - In) / 2, BlockUnits);
    while (Units > 0) {
      // Runs of ASCII, the common text, go in one piece; a unit waiting for its low half and
      // every other unit take the careful road.
      if (!FPendingHigh) {
        const std::size_t Narrowed = rawscan::NarrowASCII(In, Units, Out);
        In += 2 * Narrowed, Out += Narrowed, Units -= Narrowed;
        if (Units == 0)
          break;
      }
      PutUnit(static_cast<char16_t>(In[0] | (In[1] << 8)));
      In += 2, --Units;
    }
    FTarget->WriteBuffer(Block, Out - Block);
    Out = Block;
  }
  if (In < InEnd) {
    FOddByte = *In;
    FHasOddByte = true;
  }
  if (Out != Block)
    FTarget->WriteBuffer(Block, Out - Block);
  FTaken += ACount;
  return ACount;
}

void TLxUTF8StreamAdapter::Flush() {
  FHasOddByte = false;
  if (!FPendingHigh)
    return;
  FPendingHigh = 0;
  Byte Replacement[3];
  FTarget->WriteBuffer(Replacement, PutUTF8(0xFFFD, Replacement));
}

} // namespace lorvane
