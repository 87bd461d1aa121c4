// Searches of raw text for one of a few ASCII delimiters, many units at a time.
#pragma once

#include "lorvane/platform/System.h"

#include <cstring>

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

} // namespace lorvane::rawscan
