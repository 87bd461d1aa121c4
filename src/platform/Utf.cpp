// UTF-8 and UTF-16 transcoding with replacement of ill-formed input.
#include "platform/internal/Utf.h"

#include <cstring>

namespace lorvane::utf {

namespace {
constexpr bool IsContinuation(Byte B) noexcept { return (B & 0xC0) == 0x80; }
} // namespace

char32_t DecodeUTF8(const Byte* AText, std::size_t AAvailable, int& AUsed) noexcept {
  const Byte Lead = AText[0];
  AUsed = 1;
  if (Lead < 0x80)
    return Lead;
  const int Length = SequenceLength(Lead);
  if (Length == 1)
    return ReplacementChar;
  // The second byte has a narrower range after E0, ED, F0 and F4 (no overlongs, no surrogates,
  // nothing above U+10FFFF).
  Byte Low = 0x80, High = 0xBF;
  if (Lead == 0xE0)
    Low = 0xA0;
  else if (Lead == 0xED)
    High = 0x9F;
  else if (Lead == 0xF0)
    Low = 0x90;
  else if (Lead == 0xF4)
    High = 0x8F;
  char32_t Code = Lead & (0x7F >> Length);
  for (int I = 1; I < Length; ++I) {
    if (static_cast<std::size_t>(I) >= AAvailable)
      return ReplacementChar;
    const Byte B = AText[I];
    if (I == 1 ? (B < Low || B > High) : !IsContinuation(B))
      return ReplacementChar;
    Code = (Code << 6) | (B & 0x3F);
    AUsed = I + 1;
  }
  return Code;
}

void AppendUTF8AsUTF16(std::u16string& AOut, const Byte* AText, std::size_t ALength) {
  const std::size_t Start = AOut.size();
  AOut.resize(Start + ALength); // never more units than bytes
  char16_t* Out = AOut.data() + Start;
  std::size_t I = 0;
  while (I < ALength) {
    // ASCII runs, eight bytes at a time.
    while (I + 8 <= ALength) {
      UInt64 Word8;
      std::memcpy(&Word8, AText + I, 8);
      if (Word8 & 0x8080808080808080ull)
        break;
      for (int K = 0; K < 8; ++K)
        Out[K] = AText[I + K];
      Out += 8;
      I += 8;
    }
    if (I >= ALength)
      break;
    if (AText[I] < 0x80) {
      *Out++ = AText[I++];
      continue;
    }
    int Used;
    const char32_t Code = DecodeUTF8(AText + I, ALength - I, Used);
    Out += EncodeUTF16(Code, Out);
    I += Used;
  }
  AOut.resize(static_cast<std::size_t>(Out - AOut.data()));
}

namespace {

bool IsPairAt(const char16_t* AText, std::size_t AIndex, std::size_t ALength) noexcept {
  return AText[AIndex] >= 0xD800 && AText[AIndex] <= 0xDBFF && AIndex + 1 < ALength &&
         AText[AIndex + 1] >= 0xDC00 && AText[AIndex + 1] <= 0xDFFF;
}

} // namespace

std::size_t UTF8LengthOfUTF16(const char16_t* AText, std::size_t ALength) noexcept {
  std::size_t Bytes = 0;
  for (std::size_t I = 0; I < ALength; ++I) {
    // ASCII runs, four units at a time.
    for (UInt64 Units; I + 4 <= ALength; I += 4, Bytes += 4) {
      std::memcpy(&Units, AText + I, 8);
      if (Units & 0xFF80FF80FF80FF80ull)
        break;
    }
    if (I >= ALength)
      break;
    const char16_t Unit = AText[I];
    if (Unit < 0x80)
      Bytes += 1;
    else if (Unit < 0x800)
      Bytes += 2;
    else if (IsPairAt(AText, I, ALength)) {
      Bytes += 4;
      ++I;
    } else
      Bytes += 3; // a lone surrogate's U+FFFD included
  }
  return Bytes;
}

std::size_t EncodeUTF16AsUTF8(const char16_t* AText, std::size_t ALength, char* AOut) noexcept {
  char* Out = AOut;
  std::size_t I = 0;
  while (I < ALength) {
    // ASCII runs, four units at a time.
    while (I + 4 <= ALength) {
      UInt64 Units;
      std::memcpy(&Units, AText + I, 8);
      if (Units & 0xFF80FF80FF80FF80ull)
        break;
      for (int K = 0; K < 4; ++K)
        Out[K] = static_cast<char>(AText[I + K]);
      Out += 4;
      I += 4;
    }
    if (I >= ALength)
      break;
    char32_t Code = AText[I];
    if (Code < 0x80) {
      *Out++ = static_cast<char>(Code);
      ++I;
      continue;
    }
    if (Code >= 0xD800 && Code <= 0xDFFF) {
      if (IsPairAt(AText, I, ALength)) {
        Code = 0x10000 + ((Code - 0xD800) << 10) + (AText[I + 1] - 0xDC00);
        ++I;
      } else
        Code = ReplacementChar;
    }
    ++I;
    if (Code < 0x800) {
      *Out++ = static_cast<char>(0xC0 | (Code >> 6));
    } else if (Code < 0x10000) {
      *Out++ = static_cast<char>(0xE0 | (Code >> 12));
      *Out++ = static_cast<char>(0x80 | ((Code >> 6) & 0x3F));
    } else {
      *Out++ = static_cast<char>(0xF0 | (Code >> 18));
      *Out++ = static_cast<char>(0x80 | ((Code >> 12) & 0x3F));
      *Out++ = static_cast<char>(0x80 | ((Code >> 6) & 0x3F));
    }
    *Out++ = static_cast<char>(0x80 | (Code & 0x3F));
  }
  return static_cast<std::size_t>(Out - AOut);
}

void AppendUTF16AsUTF8(std::string& AOut, const char16_t* AText, std::size_t ALength) {
  // Measured first, so that a long text leaves no spare capacity behind.
  const std::size_t Start = AOut.size();
  AOut.resize(Start + UTF8LengthOfUTF16(AText, ALength));
  EncodeUTF16AsUTF8(AText, ALength, AOut.data() + Start);
}

} // namespace lorvane::utf
