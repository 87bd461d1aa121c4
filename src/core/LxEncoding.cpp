// Code page conversions and names, byte order marks, a stream's bytes, and Base64.
#include "lorvane/core/LxEncoding.h"

#include "lorvane/platform/CodePages.h"

#include <algorithm>
#include <type_traits>
#include <vector>

namespace lorvane {

// --- TLxEncoding
// ----------------------------------------------------------------------------------
RawByteString TLxEncoding::ConvertW(std::u16string_view AText, Word ACodePage) {
  return UnicodeToCodePage(AText, ACodePage);
}

UnicodeString TLxEncoding::ConvertA(std::string_view AText, Word ACodePage) {
  return CodePageToUnicode(AText.data(), AText.size(), ACodePage);
}

UnicodeString TLxEncoding::ConvertA(const void* AAddress, Integer ALength, Word ACodePage) {
  return CodePageToUnicode(AAddress, static_cast<std::size_t>(std::max<Integer>(ALength, 0)),
                           ACodePage);
}

UnicodeString TLxEncoding::ConvertA(std::string_view AText) { return ConvertA(AText, CP_ACP); }

// --- code pages
// -----------------------------------------------------------------------------------
Word LxGetCodePage(TStream* AStream) {
  const Int64 Start = AStream->GetPosition();
  Byte Mark[3];
  Int64 Got = 0;
  while (Got < 3) {
    const Int64 Count = AStream->Read(Mark + Got, 3 - Got);
    if (Count <= 0)
      break;
    Got += Count;
  }
  if (Got == 3 && std::equal(cLxUTF8.begin(), cLxUTF8.end(), Mark)) {
    AStream->SetPosition(Start + 3);
    return CP_UTF8;
  }
  if (Got >= 2 && std::equal(cLxUTF16LE.begin(), cLxUTF16LE.end(), Mark)) {
    AStream->SetPosition(Start + 2);
    return CP_UTF16LE;
  }
  if (Got >= 2 && std::equal(cLxUTF16BE.begin(), cLxUTF16BE.end(), Mark)) {
    AStream->SetPosition(Start + 2);
    return CP_UTF16BE;
  }
  AStream->SetPosition(Start);
  return 0;
}

Word LxCodePage(std::u16string_view AName) { return CodePageFromName(AName); }

UnicodeString LxCodePage(Word ACodePage) { return CodePageName(ACodePage); }

RawByteString LxStreamToAnsiString(TStream* AStream, bool AReadBOM, bool AFromStart,
                                   bool ARestorePosition, Int64 ACount, Word ACodePage) {
  const Int64 Saved = AStream->GetPosition();
  RawByteString Result;
  Word MarkCodePage = 0;
  try {
    if (AFromStart)
      AStream->SetPosition(0);
    if (AReadBOM)
      MarkCodePage = LxGetCodePage(AStream);
    const Int64 Available = std::max<Int64>(0, AStream->GetSize() - AStream->GetPosition());
    const Int64 Wanted = ACount < 0 ? Available : std::min(ACount, Available);
    Result.resize(static_cast<std::size_t>(Wanted));
    Int64 Got = 0;
    while (Got < Wanted) {
      const Int64 Count = AStream->Read(Result.data() + Got, Wanted - Got);
      if (Count <= 0)
        break;
      Got += Count;
    }
    Result.resize(static_cast<std::size_t>(Got));
  } catch (...) {
    if (ARestorePosition)
      AStream->SetPosition(Saved);
    throw;
  }
  if (ARestorePosition)
    AStream->SetPosition(Saved);
  if (ACodePage != 0 && MarkCodePage != 0 && ResolveCodePage(ACodePage) != MarkCodePage)
    return UnicodeToCodePage(CodePageToUnicode(Result.data(), Result.size(), MarkCodePage),
                             ACodePage);
  return Result;
}

// --- Base64
// ---------------------------------------------------------------------------------------
namespace {

constexpr char Base64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr signed char Skip = -2;    // blank, tab, CR, LF
constexpr signed char Invalid = -1; // outside the alphabet; '=' is handled on its own

constexpr std::array<signed char, 128> MakeDecodeTable() {
  std::array<signed char, 128> Table{};
  for (auto& Entry : Table)
    Entry = Invalid;
  for (int I = 0; I < 64; ++I)
    Table[static_cast<unsigned char>(Base64Alphabet[I])] = static_cast<signed char>(I);
  Table[' '] = Table['\t'] = Table['\r'] = Table['\n'] = Skip;
  return Table;
}
constexpr std::array<signed char, 128> DecodeTable = MakeDecodeTable();

/// Encodes ACount bytes (a multiple of 3, except for the last block) at AOut; gives the bytes
/// written.
std::size_t EncodeBlock(const Byte* AIn, std::size_t ACount, char* AOut) noexcept {
  char* Out = AOut;
  std::size_t I = 0;
  for (; I + 3 <= ACount; I += 3) {
    const unsigned Group = (AIn[I] << 16) | (AIn[I + 1] << 8) | AIn[I + 2];
    *Out++ = Base64Alphabet[Group >> 18];
    *Out++ = Base64Alphabet[(Group >> 12) & 0x3F];
    *Out++ = Base64Alphabet[(Group >> 6) & 0x3F];
    *Out++ = Base64Alphabet[Group & 0x3F];
  }
  if (const std::size_t Left = ACount - I; Left > 0) {
    const unsigned Group = (AIn[I] << 16) | (Left == 2 ? AIn[I + 1] << 8 : 0);
    *Out++ = Base64Alphabet[Group >> 18];
    *Out++ = Base64Alphabet[(Group >> 12) & 0x3F];
    *Out++ = Left == 2 ? Base64Alphabet[(Group >> 6) & 0x3F] : '=';
    *Out++ = '=';
  }
  return static_cast<std::size_t>(Out - AOut);
}

[[noreturn]] void RaiseInvalidBase64(std::size_t AIndex) {
  throw EConvertError(u"Invalid base64 character at position %d",
                      {static_cast<long long>(AIndex + 1)});
}

template <class TChar> RawByteString DecodeBase64(const TChar* AData, std::size_t ALength) {
  RawByteString Result;
  Result.reserve(ALength / 4 * 3 + 3);
  unsigned Group = 0;
  int Filled = 0;  // characters of the current group
  int Padding = 0; // '=' seen; from the first one on only '=' and blanks may follow
  for (std::size_t I = 0; I < ALength; ++I) {
    const auto Char = static_cast<std::make_unsigned_t<TChar>>(AData[I]);
    const signed char Value = Char < 128 ? DecodeTable[Char] : Invalid;
    if (Value == Skip)
      continue;
    if (Char == '=') {
      if (Filled < 2 || Filled + Padding >= 4)
        RaiseInvalidBase64(I);
      ++Padding;
      continue;
    }
    if (Value == Invalid || Padding > 0)
      RaiseInvalidBase64(I);
    Group = (Group << 6) | static_cast<unsigned>(Value);
    if (++Filled == 4) {
      Result += static_cast<char>(Group >> 16);
      Result += static_cast<char>((Group >> 8) & 0xFF);
      Result += static_cast<char>(Group & 0xFF);
      Group = 0;
      Filled = 0;
    }
  }
  switch (Filled) {
  case 1:
    throw EConvertError(u"Base64 data ends in the middle of a group");
  case 2:
    Result += static_cast<char>(Group >> 4);
    break;
  case 3:
    Result += static_cast<char>(Group >> 10);
    Result += static_cast<char>((Group >> 2) & 0xFF);
    break;
  default:
    break;
  }
  return Result;
}

Int64 WriteAll(TStream* AStream, const RawByteString& ABytes) {
  AStream->WriteBuffer(ABytes.data(), static_cast<Int64>(ABytes.size()));
  return static_cast<Int64>(ABytes.size());
}

} // namespace

Int64 TBase64Encoder::Encode(TStream* AInput, TStream* AOutput) const {
  // Blocks of a multiple of 3 bytes, so that padding can only come at the very end.
  constexpr std::size_t BlockSize = 3 * 4096;
  std::vector<Byte> In(BlockSize);
  std::vector<char> Out(BlockSize / 3 * 4);
  Int64 Written = 0;
  for (;;) {
    std::size_t Filled = 0;
    while (Filled < BlockSize) {
      const Int64 Count = AInput->Read(In.data() + Filled, static_cast<Int64>(BlockSize - Filled));
      if (Count <= 0)
        break;
      Filled += static_cast<std::size_t>(Count);
    }
    if (Filled == 0)
      break;
    const std::size_t Length = EncodeBlock(In.data(), Filled, Out.data());
    AOutput->WriteBuffer(Out.data(), static_cast<Int64>(Length));
    Written += static_cast<Int64>(Length);
    if (Filled < BlockSize)
      break;
  }
  return Written;
}

RawByteString TBase64Encoder::Encode(std::string_view ABytes) const {
  RawByteString Result((ABytes.size() + 2) / 3 * 4, '\0');
  EncodeBlock(reinterpret_cast<const Byte*>(ABytes.data()), ABytes.size(), Result.data());
  return Result;
}

UnicodeString TBase64Encoder::EncodeBytesToString(std::string_view ABytes) const {
  const RawByteString Text = Encode(ABytes);
  return UnicodeString(Text.begin(), Text.end());
}

Int64 TBase64Encoder::Decode(TStream* AInput, TStream* AOutput) const {
  const RawByteString Text = LxStreamToAnsiString(AInput, /*AReadBOM=*/false,
                                                  /*AFromStart=*/false,
                                                  /*ARestorePosition=*/false, -1, 0);
  return TLxBase64Encoding::Decode(Text, AOutput);
}

RawByteString TBase64Encoder::Decode(std::string_view AText) const {
  return DecodeBase64(AText.data(), AText.size());
}

const TBase64Encoder& TLxNetEncoding::Base64Ex() noexcept {
  static const TBase64Encoder Encoder;
  return Encoder;
}

Int64 TLxBase64Encoding::Decode(std::string_view AData, TStream* AStream) {
  return WriteAll(AStream, DecodeBase64(AData.data(), AData.size()));
}

Int64 TLxBase64Encoding::Decode(std::u16string_view AData, TStream* AStream) {
  return WriteAll(AStream, DecodeBase64(AData.data(), AData.size()));
}

} // namespace lorvane
