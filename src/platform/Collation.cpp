// Code point order, simple case folding and the root collator behind the two invariant orders.
#include "lorvane/platform/Collation.h"

#include "lorvane/platform/SysUtils.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace lorvane {

namespace {

constexpr bool IsLead(char16_t AUnit) noexcept { return AUnit >= 0xD800 && AUnit <= 0xDBFF; }
constexpr bool IsTrail(char16_t AUnit) noexcept { return AUnit >= 0xDC00 && AUnit <= 0xDFFF; }

/// The code point at AIndex, which must be a code point boundary; AIndex moves past it. A lone
/// surrogate stands for itself.
char32_t NextCodePoint(std::u16string_view AText, std::size_t& AIndex) noexcept {
  const char16_t Unit = AText[AIndex++];
  if (IsLead(Unit) && AIndex < AText.size() && IsTrail(AText[AIndex])) {
    const char16_t Trail = AText[AIndex++];
    return 0x10000 + ((static_cast<char32_t>(Unit) - 0xD800) << 10) + (Trail - 0xDC00);
  }
  return Unit;
}

// Simple case folding never moves a character between the BMP and the supplementary planes;
// keeping it so by construction lets equality reject texts of different lengths at once.
char32_t FoldCodePoint(char32_t ACode) noexcept {
  if (ACode < 0x80)
    return ACode >= U'A' && ACode <= U'Z' ? ACode + 0x20 : ACode;
  const char32_t Folded =
      static_cast<char32_t>(u_foldCase(static_cast<UChar32>(ACode), U_FOLD_CASE_DEFAULT));
  return (Folded < 0x10000) == (ACode < 0x10000) ? Folded : ACode;
}

void AppendCodePoint(UnicodeString& AOut, char32_t ACode) {
  if (ACode < 0x10000) {
    AOut.push_back(static_cast<char16_t>(ACode));
    return;
  }
  ACode -= 0x10000;
  AOut.push_back(static_cast<char16_t>(0xD800 + (ACode >> 10)));
  AOut.push_back(static_cast<char16_t>(0xDC00 + (ACode & 0x3FF)));
}

void FoldInto(std::u16string_view AText, UnicodeString& AOut) {
  AOut.clear();
  AOut.reserve(AText.size());
  for (std::size_t I = 0; I < AText.size();)
    AppendCodePoint(AOut, FoldCodePoint(NextCodePoint(AText, I)));
}

Integer CompareCodePoints(std::u16string_view A, std::u16string_view B) noexcept {
  const std::size_t Common = std::min(A.size(), B.size());
  std::size_t I = static_cast<std::size_t>(
      std::mismatch(A.begin(), A.begin() + Common, B.begin()).first - A.begin());
  // The units before I are equal, so both texts have the same code point boundaries up to there;
  // a lead surrogate just before I may pair with the differing unit.
  if (I > 0 && I < Common && IsLead(A[I - 1]))
    --I;
  while (I < Common) {
    std::size_t NextA = I;
    std::size_t NextB = I;
    const char32_t CodeA = NextCodePoint(A, NextA);
    const char32_t CodeB = NextCodePoint(B, NextB);
    if (CodeA != CodeB)
      return CodeA < CodeB ? -1 : 1;
    I = NextA; // equal code points take equal lengths
  }
  // One text is a prefix of the other, in units and so in code points.
  if (A.size() == B.size())
    return 0;
  return A.size() < B.size() ? -1 : 1;
}

// ICU collators must not be shared between threads: each thread opens its own, once.
class TThreadCollator {
public:
  TThreadCollator() = default;
  TThreadCollator(const TThreadCollator&) = delete;
  TThreadCollator& operator=(const TThreadCollator&) = delete;
  ~TThreadCollator() {
    if (FCollator)
      ucol_close(FCollator);
  }

  UCollator* Get() {
    if (!FCollator) {
      UErrorCode Error = U_ZERO_ERROR;
      UCollator* Collator = ucol_open("", &Error);
      if (U_FAILURE(Error) || !Collator) {
        if (Collator)
          ucol_close(Collator);
        throw Exception(u"The root collator can't be opened: %s", {u_errorName(Error)});
      }
      FCollator = Collator;
    }
    return FCollator;
  }

private:
  UCollator* FCollator = nullptr;
};

Integer CollateFolded(std::u16string_view A, std::u16string_view B) {
  thread_local TThreadCollator Collator;
  // ICU takes 32-bit lengths; beyond that the code point tie-break still makes the order total.
  constexpr std::size_t Limit = std::numeric_limits<int32_t>::max();
  const UCollationResult Result =
      ucol_strcoll(Collator.Get(), A.data(), static_cast<int32_t>(std::min(A.size(), Limit)),
                   B.data(), static_cast<int32_t>(std::min(B.size(), Limit)));
  if (Result == UCOL_LESS)
    return -1;
  if (Result == UCOL_GREATER)
    return 1;
  return 0;
}

} // namespace

bool SameStringInvariant(std::u16string_view A, std::u16string_view B, bool AIgnoreCase) noexcept {
  if (A.size() != B.size())
    return false;
  if (!AIgnoreCase)
    return A == B;
  const std::size_t Length = A.size();
  for (std::size_t I = 0; I < Length;) {
    const char16_t UnitA = A[I];
    const char16_t UnitB = B[I];
    if (UnitA == UnitB && !IsLead(UnitA)) {
      ++I;
      continue;
    }
    if ((UnitA | UnitB) < 0x80) {
      if ((UnitA | 0x20) != (UnitB | 0x20) || static_cast<char16_t>((UnitA | 0x20) - u'a') > 25)
        return false;
      ++I;
      continue;
    }
    std::size_t NextA = I;
    std::size_t NextB = I;
    const char32_t CodeA = NextCodePoint(A, NextA);
    const char32_t CodeB = NextCodePoint(B, NextB);
    if (NextA != NextB || (CodeA != CodeB && FoldCodePoint(CodeA) != FoldCodePoint(CodeB)))
      return false;
    I = NextA;
  }
  return true;
}

Integer CompareStringInvariant(std::u16string_view A, std::u16string_view B, bool AIgnoreCase) {
  if (!AIgnoreCase)
    return CompareCodePoints(A, B);
  if (SameStringInvariant(A, B, /*AIgnoreCase=*/true))
    return 0;
  // Reused per thread: sorting calls this many times.
  thread_local UnicodeString FoldedA;
  thread_local UnicodeString FoldedB;
  FoldInto(A, FoldedA);
  FoldInto(B, FoldedB);
  const Integer Result = CollateFolded(FoldedA, FoldedB);
  return Result != 0 ? Result : CompareCodePoints(FoldedA, FoldedB);
}

} // namespace lorvane
