// The vector kernels against plain loops: every place of the first hit relative to the 16-byte
// blocks, starts at odd addresses, ranges that end inside a block, and units whose single bytes
// look like the ones searched for.
#include "core/internal/RawScan.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace lorvane {
namespace {

// Lengths that cover an empty range, ranges shorter than one block, the four-block rounds and
// the tails behind them.
constexpr std::size_t MaxUnits = 80;

/// AUnits filler units with AHit at APlace (none for APlace >= AUnits), laid out at byte offset
/// AShift of a buffer, so that both aligned and odd addresses are read.
template <class TUnit> struct TLaidOut {
  std::vector<Byte> Bytes;
  std::size_t Shift;
  TLaidOut(std::size_t AUnits, TUnit AFiller, std::size_t APlace, TUnit AHit, std::size_t AShift)
      : Bytes(AShift + AUnits * sizeof(TUnit) + 1, 0xEE), Shift(AShift) {
    for (std::size_t I = 0; I < AUnits; ++I) {
      const TUnit Unit = I == APlace ? AHit : AFiller;
      std::memcpy(Bytes.data() + AShift + I * sizeof(TUnit), &Unit, sizeof Unit);
    }
  }
  const Byte* Begin() const { return Bytes.data() + Shift; }
};

template <class TUnit> void CheckFindAnyOf(TUnit AFiller, const TUnit (&AStops)[4]) {
  for (int Count = 1; Count <= 4; ++Count)
    for (std::size_t Units = 0; Units <= MaxUnits; Units += 3)
      for (std::size_t Place = 0; Place <= Units; ++Place)
        for (std::size_t Shift : {0, 1}) {
          const TLaidOut<TUnit> Text(Units, AFiller, Place, AStops[Place % Count], Shift);
          const Byte* End = Text.Begin() + Units * sizeof(TUnit);
          const Byte* Found = rawscan::FindAnyOf(Text.Begin(), End, AStops, Count);
          ASSERT_EQ(Found - Text.Begin(), std::ptrdiff_t(std::min(Place, Units) * sizeof(TUnit)))
              << "count " << Count << ", units " << Units << ", hit at " << Place;
        }
}

TEST(RawScan, FindAnyOfStopsAtTheFirstOfItsUnits) {
  CheckFindAnyOf<Byte>('a', {'"', '\\', ',', ']'});
  // 0x225C holds the bytes of '\' and '"': only whole units count.
  CheckFindAnyOf<WideChar>(0x225C, {u'"', u'\\', u',', u']'});
}

TEST(RawScan, FindUnit16FindsWholeUnitsOnly) {
  for (std::size_t Units = 0; Units <= MaxUnits; Units += 1)
    for (std::size_t Place = 0; Place <= Units; Place += 1)
      for (std::size_t Shift : {0, 1}) {
        // 0x3C3C is "<<" in bytes, 0x003C shifted by a byte looks like '<' too.
        TLaidOut<WideChar> Text(Units, 0x3C3C, Place, u'<', Shift);
        Text.Bytes.back() = '<';
        const Byte* Begin = Text.Begin();
        // A trailing odd byte isn't a unit, even when it is the low half of one.
        const Byte* Found = rawscan::FindUnit16(Begin, Begin + 2 * Units + 1, u'<');
        if (Place == Units)
          ASSERT_EQ(Found, nullptr) << "units " << Units << ", shift " << Shift;
        else
          ASSERT_EQ(Found - Begin, std::ptrdiff_t(2 * Place))
              << "units " << Units << ", hit at " << Place << ", shift " << Shift;
      }
}

TEST(RawScan, FindRareUnit16MatchesAPlainSearch) {
  for (std::size_t Units = 0; Units <= MaxUnits; ++Units)
    for (std::size_t Place = 0; Place <= Units; ++Place) {
      std::u16string Text(Units, u'\x2626'); // "&&" in bytes
      if (Place < Units)
        Text[Place] = u'&';
      const WideChar* Found = rawscan::FindRareUnit16(Text.data(), Text.data() + Units, u'&');
      ASSERT_EQ(Found - Text.data(), std::ptrdiff_t(Place)) << "units " << Units;
    }
}

template <class TChar> void CheckControlOrMarkup(unsigned AUnit, bool AExpected) {
  for (std::size_t Units : {1, 7, 8, 9, 16, 17, 40})
    for (std::size_t Place = 0; Place < Units; ++Place) {
      std::basic_string<TChar> Text(Units, TChar('x'));
      Text[Place] = static_cast<TChar>(AUnit);
      const TChar* Found = rawscan::FindControlOrMarkup(Text.data(), Text.data() + Text.size());
      ASSERT_EQ(Found - Text.data(), std::ptrdiff_t(AExpected ? Place : Units))
          << "unit " << AUnit << " of width " << sizeof(TChar) << " at " << Place;
    }
}

TEST(RawScan, FindControlOrMarkupStopsAtControlsAndTheFiveMarkupCharacters) {
  for (unsigned C = 0; C < 0x100; ++C) {
    const bool Expected = C < 0x20 || C == '"' || C == '&' || C == '\'' || C == '<' || C == '>';
    EXPECT_EQ(rawscan::IsControlOrMarkup(C), Expected) << C;
    CheckControlOrMarkup<char>(C, Expected);
    CheckControlOrMarkup<char16_t>(C, Expected);
  }
  // Wide units whose low or high byte is a markup character or a control are none of them.
  for (unsigned C : {0x013Cu, 0x3C00u, 0x2600u, 0x0A0Au, 0x1F20u, 0xFFFFu, 0xD83Du})
    CheckControlOrMarkup<char16_t>(C, false);
}

TEST(RawScan, WidenASCIIBlocksStopsBeforeTheFirstBlockWithAByteFrom0x80) {
  for (std::size_t Length = 0; Length <= MaxUnits; ++Length)
    for (std::size_t Place = 0; Place <= Length; ++Place) {
      std::vector<Byte> Bytes(Length);
      for (std::size_t I = 0; I < Length; ++I)
        Bytes[I] = static_cast<Byte>(0x20 + (I * 7) % 0x5F);
      if (Place < Length)
        Bytes[Place] = static_cast<Byte>(0x80 + Place % 0x80);
      std::u16string Out(Length, u'\xFFFF');
      const std::size_t Widened = rawscan::WidenASCIIBlocks(Bytes.data(), Length, Out.data());
      // Whole blocks of eight only, with or without vectors, and none past the first high byte.
      ASSERT_EQ(Widened, Place / 8 * 8) << "length " << Length << ", high byte at " << Place;
      for (std::size_t I = 0; I < Length; ++I)
        ASSERT_EQ(Out[I], I < Widened ? char16_t(Bytes[I]) : u'\xFFFF')
            << "length " << Length << ", unit " << I;
    }
}

TEST(RawScan, NarrowASCIIStopsAtTheFirstUnitFromU0080) {
  // 0x00FF and 0x0100 would survive a saturating pack as bytes; neither is ASCII.
  for (WideChar Stop : {u'\x80', u'\xFF', u'\x100', u'\x7F00', u'\xD800'})
    for (std::size_t Units = 0; Units <= 40; ++Units)
      for (std::size_t Place = 0; Place <= Units; ++Place)
        for (std::size_t Shift : {0, 1}) {
          const TLaidOut<WideChar> Text(Units, u'q', Place, Stop, Shift);
          std::vector<Byte> Out(Units + 8, 0xEE);
          const std::size_t Narrowed = rawscan::NarrowASCII(Text.Begin(), Units, Out.data());
          ASSERT_EQ(Narrowed, Place) << "stop " << unsigned(Stop) << ", units " << Units;
          ASSERT_EQ(std::string(Out.begin(), Out.begin() + std::ptrdiff_t(Narrowed)),
                    std::string(Narrowed, 'q'));
        }
}

} // namespace
} // namespace lorvane
