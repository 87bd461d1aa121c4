// The library's vector kernels: searches of raw text for a few ASCII units, and the conversions
// of ASCII runs between one-byte and two-byte units, many units at a time. Each function holds
// its SSE2 loop and, next to it, the scalar loop that finishes the range (and does all of it
// where SSE2 is missing); both give the same answer. No other file of the library holds vector
// code.
#pragma once

#include "lorvane/platform/System.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lorvane::rawscan {

/// The first unit in [AFrom, ATo) that equals one of the ACount (1 to 4) units at AStops, or ATo.
/// TUnit is Byte for single-byte text and UTF-8 (where no byte of a multi-byte character is
/// ASCII), WideChar for UTF-16; ATo - AFrom is a whole number of units.
template <class TUnit>
inline const Byte* FindAnyOf(const Byte* AFrom, const Byte* ATo, const TUnit* AStops,
                             int ACount) noexcept {
  const Byte* P = AFrom;
#if defined(__SSE2__)
  // Unused needles repeat the first, so that one loop serves every count.
  auto Splat = [](TUnit AUnit) {
    if constexpr (sizeof(TUnit) == 1)
      return _mm_set1_epi8(static_cast<char>(AUnit));
    else
      return _mm_set1_epi16(static_cast<short>(AUnit));
  };
  auto Equal = [](__m128i A, __m128i B) {
    if constexpr (sizeof(TUnit) == 1)
      return _mm_cmpeq_epi8(A, B);
    else
      return _mm_cmpeq_epi16(A, B);
  };
  const __m128i N0 = Splat(AStops[0]);
  const __m128i N1 = Splat(AStops[ACount > 1 ? 1 : 0]);
  const __m128i N2 = Splat(AStops[ACount > 2 ? 2 : 0]);
  const __m128i N3 = Splat(AStops[ACount > 3 ? 3 : 0]);
  for (; ATo - P >= 16; P += 16) {
    const __m128i Block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(P));
    const __m128i Hits = _mm_or_si128(_mm_or_si128(Equal(Block, N0), Equal(Block, N1)),
                                      _mm_or_si128(Equal(Block, N2), Equal(Block, N3)));
    if (const int Mask = _mm_movemask_epi8(Hits))
      return P + __builtin_ctz(static_cast<unsigned>(Mask));
  }
#endif
  for (; P < ATo; P += sizeof(TUnit)) {
    TUnit Unit;
    std::memcpy(&Unit, P, sizeof Unit);
    for (int I = 0; I < ACount; ++I)
      if (Unit == AStops[I])
        return P;
  }
  return ATo;
}

/// The first UTF-16 unit (little endian, at any byte alignment) in [AFrom, ATo) that equals
/// AUnit, or nil when there is none; an odd byte at the end is no unit. One block of eight units
/// per step: made for short hops, such as the way to the next delimiter. Nil rather than the end
/// for a miss, so that a caller returns on a hit without testing it again.
inline const Byte* FindUnit16(const Byte* AFrom, const Byte* ATo, WideChar AUnit) noexcept {
  const Byte* P = AFrom;
#if defined(__SSE2__)
  const __m128i Needle = _mm_set1_epi16(static_cast<short>(AUnit));
  for (; ATo - P >= 16; P += 16) {
    const __m128i Block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(P));
    if (const int Hits = _mm_movemask_epi8(_mm_cmpeq_epi16(Block, Needle)))
      return P + __builtin_ctz(static_cast<unsigned>(Hits));
  }
#endif
  for (; ATo - P >= 2; P += 2) {
    WideChar Unit;
    std::memcpy(&Unit, P, 2);
    if (Unit == AUnit)
      return P;
  }
  return nullptr;
}

/// The first unit in [AFrom, ATo) that equals AUnit, or ATo: as FindUnit16 (but ATo for a miss),
/// for a unit that is rare in long text (the '&' of a reference). Four blocks go per round while
/// nothing is found, since the loop, not the hit, is the cost there.
inline const WideChar* FindRareUnit16(const WideChar* AFrom, const WideChar* ATo,
                                      WideChar AUnit) noexcept {
  const WideChar* P = AFrom;
#if defined(__SSE2__)
  const __m128i Needle = _mm_set1_epi16(static_cast<short>(AUnit));
  while (ATo - P >= 32) {
    const auto* Blocks = reinterpret_cast<const __m128i*>(P);
    const __m128i A = _mm_cmpeq_epi16(_mm_loadu_si128(Blocks), Needle);
    const __m128i B = _mm_cmpeq_epi16(_mm_loadu_si128(Blocks + 1), Needle);
    const __m128i C = _mm_cmpeq_epi16(_mm_loadu_si128(Blocks + 2), Needle);
    const __m128i D = _mm_cmpeq_epi16(_mm_loadu_si128(Blocks + 3), Needle);
    if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(A, B), _mm_or_si128(C, D))))
      break;
    P += 32;
  }
  for (; ATo - P >= 8; P += 8) {
    const __m128i Block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(P));
    if (const int Mask = _mm_movemask_epi8(_mm_cmpeq_epi16(Block, Needle)))
      return P + __builtin_ctz(static_cast<unsigned>(Mask)) / 2;
  }
#endif
  while (P != ATo && *P != AUnit)
    ++P;
  return P;
}

/// Whether a unit is one that FindControlOrMarkup stops at.
constexpr bool IsControlOrMarkup(unsigned AUnit) noexcept {
  return AUnit < 0x20 || AUnit == '"' || AUnit == '&' || AUnit == '\'' || AUnit == '<' ||
         AUnit == '>';
}

/// The first unit in [AFrom, ATo) below U+0020 or one of '"', '&', '\'', '<', '>' (the
/// characters that some setting of XML escaping replaces or drops), or ATo. TChar is char16_t
/// for UTF-16 or char for text in a single-byte code page or UTF-8.
template <class TChar>
inline const TChar* FindControlOrMarkup(const TChar* AFrom, const TChar* ATo) noexcept {
  static_assert(sizeof(TChar) == 1 || sizeof(TChar) == 2);
  const TChar* P = AFrom;
#if defined(__SSE2__)
  constexpr std::ptrdiff_t PerBlock = 16 / sizeof(TChar);
  auto Splat = [](char AChar) {
    if constexpr (sizeof(TChar) == 1)
      return _mm_set1_epi8(AChar);
    else
      return _mm_set1_epi16(AChar);
  };
  auto Equal = [](__m128i A, __m128i B) {
    if constexpr (sizeof(TChar) == 1)
      return _mm_cmpeq_epi8(A, B);
    else
      return _mm_cmpeq_epi16(A, B);
  };
  // A unit is a control character when subtracting 31 with saturation leaves 0.
  auto Control = [](__m128i ABlock) {
    if constexpr (sizeof(TChar) == 1)
      return _mm_cmpeq_epi8(_mm_subs_epu8(ABlock, _mm_set1_epi8(31)), _mm_setzero_si128());
    else
      return _mm_cmpeq_epi16(_mm_subs_epu16(ABlock, _mm_set1_epi16(31)), _mm_setzero_si128());
  };
  const __m128i Lt = Splat('<'), Gt = Splat('>'), Amp = Splat('&');
  const __m128i Apos = Splat('\''), Quote = Splat('"');
  for (; ATo - P >= PerBlock; P += PerBlock) {
    const __m128i Block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(P));
    __m128i Hit = Control(Block);
    Hit = _mm_or_si128(Hit, Equal(Block, Lt));
    Hit = _mm_or_si128(Hit, Equal(Block, Gt));
    Hit = _mm_or_si128(Hit, Equal(Block, Amp));
    Hit = _mm_or_si128(Hit, Equal(Block, Apos));
    Hit = _mm_or_si128(Hit, Equal(Block, Quote));
    if (const int Mask = _mm_movemask_epi8(Hit))
      return P + __builtin_ctz(static_cast<unsigned>(Mask)) / sizeof(TChar);
  }
#endif
  using TUnsigned = std::conditional_t<sizeof(TChar) == 1, Byte, char16_t>;
  while (P != ATo && !IsControlOrMarkup(static_cast<TUnsigned>(*P)))
    ++P;
  return P;
}

/// Widens ASCII bytes from the start of [AFrom, AFrom + ALength) into UTF-16 units at AOut (room
/// for ALength units), a block of 16 bytes (SSE2) or 8 (the scalar loop) at a time, and gives
/// their count. It stops before the first block that is short or holds a byte from 0x80 on: the
/// caller takes the few bytes behind one at a time, which keeps short texts (most names) off
/// the block loops.
inline std::size_t WidenASCIIBlocks(const Byte* AFrom, std::size_t ALength,
                                    char16_t* AOut) noexcept {
  std::size_t I = 0;
#if defined(__SSE2__)
  for (; I + 16 <= ALength; I += 16) {
    const __m128i Block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AFrom + I));
    if (_mm_movemask_epi8(Block))
      break;
    const __m128i Zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i*>(AOut + I), _mm_unpacklo_epi8(Block, Zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(AOut + I + 8), _mm_unpackhi_epi8(Block, Zero));
  }
#endif
  for (UInt64 Word8; I + 8 <= ALength; I += 8) {
    std::memcpy(&Word8, AFrom + I, 8);
    if (Word8 & 0x8080808080808080ull)
      break;
    for (int K = 0; K < 8; ++K)
      AOut[I + K] = AFrom[I + K];
  }
  return I;
}

/// Narrows the ASCII units at the start of AUnits UTF-16 units (little endian, at any byte
/// alignment) at AFrom into bytes at AOut (room for AUnits bytes) and gives their count: AUnits,
/// or the index of the first unit from U+0080 on.
inline std::size_t NarrowASCII(const Byte* AFrom, std::size_t AUnits, Byte* AOut) noexcept {
  std::size_t I = 0;
#if defined(__SSE2__)
  for (; I + 8 <= AUnits; I += 8) {
    const __m128i Eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AFrom + 2 * I));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(Eight, _mm_set1_epi16(-128)),
                                          _mm_setzero_si128())) != 0xFFFF)
      break;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(AOut + I), _mm_packus_epi16(Eight, Eight));
  }
#endif
  for (; I < AUnits; ++I) {
    const unsigned Unit = AFrom[2 * I] | (AFrom[2 * I + 1] << 8);
    if (Unit >= 0x80)
      break;
    AOut[I] = static_cast<Byte>(Unit);
  }
  return I;
}

/// Whether a unit goes into a JSON string as the byte it is: ASCII from U+0020 on, except '"',
/// '/' and '\\'.
constexpr bool IsJSONPlain(unsigned AUnit) noexcept {
  return AUnit >= 0x20 && AUnit < 0x80 && AUnit != '"' && AUnit != '/' && AUnit != '\\';
}

/// Copies the units from the start of [AFrom, AFrom + ALength) that IsJSONPlain takes, as bytes,
/// to AOut (room for ALength bytes) and gives their count: ALength, or the index of the first
/// other unit. TChar is char for bytes or char16_t for UTF-16 units.
template <class TChar>
inline std::size_t CopyJSONPlain(const TChar* AFrom, std::size_t ALength, char* AOut) noexcept {
  static_assert(sizeof(TChar) == 1 || sizeof(TChar) == 2);
  std::size_t I = 0;
#if defined(__SSE2__)
  // 16 units a time as bytes; UTF-16 units are narrowed with saturation first, so every unit
  // from U+0080 on becomes a byte that is negative as a signed byte, as control characters are
  // below ' '.
  const __m128i Space = _mm_set1_epi8(0x20), Quote = _mm_set1_epi8('"');
  const __m128i Slash = _mm_set1_epi8('/'), Backslash = _mm_set1_epi8('\\');
  for (; I + 16 <= ALength; I += 16) {
    __m128i Block;
    if constexpr (sizeof(TChar) == 1) {
      Block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AFrom + I));
    } else {
      const __m128i Low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AFrom + I));
      const __m128i High = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AFrom + I + 8));
      Block = _mm_packus_epi16(Low, High);
    }
    __m128i Hit = _mm_cmplt_epi8(Block, Space);
    Hit = _mm_or_si128(Hit, _mm_cmpeq_epi8(Block, Quote));
    Hit = _mm_or_si128(Hit, _mm_cmpeq_epi8(Block, Slash));
    Hit = _mm_or_si128(Hit, _mm_cmpeq_epi8(Block, Backslash));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(AOut + I), Block);
    if (const int Mask = _mm_movemask_epi8(Hit))
      return I + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(Mask)));
  }
#endif
  // One look-up a unit: short texts (most names and words) never reach a block.
  static constexpr auto Plain = [] {
    std::array<bool, 128> Table{};
    for (unsigned Unit = 0; Unit < 128; ++Unit)
      Table[Unit] = IsJSONPlain(Unit);
    return Table;
  }();
  using TUnsigned = std::conditional_t<sizeof(TChar) == 1, Byte, char16_t>;
  for (; I < ALength; ++I) {
    const TUnsigned Unit = static_cast<TUnsigned>(AFrom[I]);
    if (Unit >= 0x80 || !Plain[Unit])
      break;
    AOut[I] = static_cast<char>(Unit);
  }
  return I;
}

} // namespace lorvane::rawscan
