// UTF-8 and UTF-16 transcoding shared by the runtime and the text cursor. Ill-formed input
// becomes U+FFFD, one per maximal ill-formed subpart; nothing raises.
#pragma once

#include "lorvane/platform/System.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace lorvane::utf {

constexpr char32_t ReplacementChar = 0xFFFD;

/// Bytes of the sequence that AByte starts: 1 for ASCII and for bytes that start no valid
/// sequence (they stand for one U+FFFD), else 2 to 4.
/// C2..DF: 2 bytes, E0..EF: 3 bytes, F0..F4: 4 bytes.
constexpr int SequenceLength(Byte AByte) noexcept {
  if (AByte < 0xC2)
    return 1;
  if (AByte < 0xE0)
    return 2;
  if (AByte < 0xF0)
    return 3;
  if (AByte < 0xF5)
    return 4;
  return 1;
}

/// Decodes the sequence at AText (AAvailable bytes readable) and stores the bytes it took in
/// AUsed: the whole sequence when well formed, else the maximal ill-formed prefix (at least 1).
char32_t DecodeUTF8(const Byte* AText, std::size_t AAvailable, int& AUsed) noexcept;

/// Writes one code point as UTF-16 to AOut (1 or 2 units); gives the count.
inline int EncodeUTF16(char32_t ACode, char16_t* AOut) noexcept {
  if (ACode < 0x10000) {
    AOut[0] = static_cast<char16_t>(ACode);
    return 1;
  }
  ACode -= 0x10000;
  AOut[0] = static_cast<char16_t>(0xD800 + (ACode >> 10));
  AOut[1] = static_cast<char16_t>(0xDC00 + (ACode & 0x3FF));
  return 2;
}

void AppendUTF8AsUTF16(std::u16string& AOut, const Byte* AText, std::size_t ALength);
/// Lone surrogates become U+FFFD.
void AppendUTF16AsUTF8(std::string& AOut, const char16_t* AText, std::size_t ALength);
/// The bytes that AppendUTF16AsUTF8 would append.
std::size_t UTF8LengthOfUTF16(const char16_t* AText, std::size_t ALength) noexcept;
/// Writes the UTF-8 of AText to AOut, which has room for 3 bytes per unit; gives the bytes written.
std::size_t EncodeUTF16AsUTF8(const char16_t* AText, std::size_t ALength, char* AOut) noexcept;

/// Cuts AText into runs of at most AUnits units (AUnits > 1) that split no surrogate pair, and
/// hands each to ATake: for writers that convert text through a fixed buffer.
template <class TTake>
void ForEachUnitRun(std::u16string_view AText, std::size_t AUnits, TTake ATake) {
  while (!AText.empty()) {
    std::size_t Take = AText.size() < AUnits ? AText.size() : AUnits;
    if (Take < AText.size() && AText[Take - 1] >= 0xD800 && AText[Take - 1] <= 0xDBFF)
      --Take;
    ATake(std::u16string_view(AText.data(), Take));
    AText.remove_prefix(Take);
  }
}

} // namespace lorvane::utf
