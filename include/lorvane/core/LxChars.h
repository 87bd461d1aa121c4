/// Named characters for comparisons and delimiter tables, the 256-member set of single-byte
/// characters that skips and LxCharInSet take, and the ASCII case-insensitive comparison.
#pragma once

#include "lorvane/platform/SysUtils.h"

#include <initializer_list>

namespace lorvane {

// One-byte (A) and two-byte (W, or no suffix) forms. They are variables, not just values: the
// derived parsers store their addresses in delimiter tables.
inline constexpr AnsiChar cLxEOFA = '\0';
inline constexpr AnsiChar cLxSpaceA = ' ';
inline constexpr WideChar cLxSpaceW = u' ';
inline constexpr WideChar cLxSpace = u' ';
inline constexpr AnsiChar cLxLtA = '<';
inline constexpr WideChar cLxLtW = u'<';
inline constexpr WideChar cLxLt = u'<';
inline constexpr AnsiChar cLxGtA = '>';
inline constexpr WideChar cLxGtW = u'>';
inline constexpr WideChar cLxGt = u'>';
inline constexpr AnsiChar cLxSlashA = '/';
inline constexpr WideChar cLxSlashW = u'/';
inline constexpr WideChar cLxSlash = u'/';
inline constexpr AnsiChar cLxColonA = ':';
inline constexpr WideChar cLxColonW = u':';
inline constexpr WideChar cLxColon = u':';
inline constexpr AnsiChar cLxLineA = '-';
inline constexpr WideChar cLxLineW = u'-';
inline constexpr WideChar cLxLine = u'-';
inline constexpr AnsiChar cLxAmpA = '&';
inline constexpr WideChar cLxAmpW = u'&';
inline constexpr AnsiChar cLxAposA = '\'';
inline constexpr WideChar cLxAposW = u'\'';
inline constexpr AnsiChar cLxQuoteA = '"';
inline constexpr WideChar cLxQuoteW = u'"';
inline constexpr AnsiChar cLxEqualA = '=';
inline constexpr WideChar cLxEqualW = u'=';
inline constexpr AnsiChar cLxQuestA = '?';
inline constexpr WideChar cLxQuestW = u'?';
inline constexpr AnsiChar cLxExclA = '!';
inline constexpr WideChar cLxExclW = u'!';
inline constexpr AnsiChar cLxSemiColonA = ';';
inline constexpr WideChar cLxSemiColonW = u';';
inline constexpr AnsiChar cLxCommaA = ',';
inline constexpr WideChar cLxCommaW = u',';
inline constexpr AnsiChar cLxBracketOA = '[';
inline constexpr WideChar cLxBracketOW = u'[';
inline constexpr AnsiChar cLxBracketCA = ']';
inline constexpr WideChar cLxBracketCW = u']';
inline constexpr AnsiChar cLxBraceOA = '{';
inline constexpr WideChar cLxBraceOW = u'{';
inline constexpr AnsiChar cLxBraceCA = '}';
inline constexpr WideChar cLxBraceCW = u'}';
inline constexpr AnsiChar cLxRBracketOA = '(';
inline constexpr WideChar cLxRBracketO = u'(';
inline constexpr AnsiChar cLxRBracketCA = ')';
inline constexpr AnsiChar cLxBackSlashA = '\\';
inline constexpr WideChar cLxBackSlashW = u'\\';
inline constexpr AnsiChar cLxDotA = '.';
inline constexpr AnsiChar cLxPlusA = '+';
inline constexpr AnsiChar cLxPercentA = '%';
inline constexpr AnsiChar cLxAtA = '@';
inline constexpr WideChar cLxDollar = u'$';
inline constexpr AnsiChar cLx0A = '0';
inline constexpr AnsiChar cLx9A = '9';
inline constexpr AnsiChar cLxCRA = '\r';
inline constexpr AnsiChar cLxLFA = '\n';

/// A set of the 256 single-byte characters. A 16-bit character above U+00FF is in no set.
/// Held as one flag per character: skips test membership per character, and a table load is the
/// cheapest test there is. Beside the flags a set keeps its members when it has no more than
/// four, all ASCII: a skip to one of them can then compare many bytes at once.
class TLxCharSet {
public:
  static constexpr int MaxFew = 4;

  constexpr TLxCharSet() noexcept = default;
  constexpr TLxCharSet(std::initializer_list<AnsiChar> AChars) noexcept {
    for (AnsiChar C : AChars)
      Include(static_cast<Byte>(C));
  }
  /// The characters from ALow to AHigh, both included.
  static constexpr TLxCharSet Range(Byte ALow, Byte AHigh) noexcept {
    TLxCharSet Result;
    for (unsigned C = ALow; C <= AHigh; ++C)
      Result.Include(static_cast<Byte>(C));
    return Result;
  }

  constexpr bool Contains(Byte AChar) const noexcept { return FMember[AChar]; }
  constexpr bool Contains(AnsiChar AChar) const noexcept {
    return Contains(static_cast<Byte>(AChar));
  }
  constexpr bool Contains(WideChar AChar) const noexcept {
    return AChar < 256 && Contains(static_cast<Byte>(AChar));
  }
  constexpr bool Contains(char32_t AChar) const noexcept {
    return AChar < 256 && Contains(static_cast<Byte>(AChar));
  }
  constexpr TLxCharSet& Include(Byte AChar) noexcept {
    if (!FMember[AChar]) {
      FMember[AChar] = true;
      NoteMember(AChar);
    }
    return *this;
  }
  constexpr TLxCharSet& Exclude(Byte AChar) noexcept {
    FMember[AChar] = false;
    Recount();
    return *this;
  }
  friend constexpr TLxCharSet operator+(TLxCharSet A, const TLxCharSet& B) noexcept {
    for (int I = 0; I < 256; ++I)
      A.FMember[I] = A.FMember[I] || B.FMember[I];
    A.Recount();
    return A;
  }
  friend constexpr TLxCharSet operator-(TLxCharSet A, const TLxCharSet& B) noexcept {
    for (int I = 0; I < 256; ++I)
      A.FMember[I] = A.FMember[I] && !B.FMember[I];
    A.Recount();
    return A;
  }
  friend constexpr bool operator==(const TLxCharSet& A, const TLxCharSet& B) noexcept {
    for (int I = 0; I < 256; ++I)
      if (A.FMember[I] != B.FMember[I])
        return false;
    return true;
  }

  /// The members, when there are at most MaxFew and all are ASCII; else nil. AFewCount gives
  /// their number.
  constexpr const Byte* FewMembers(int& AFewCount) const noexcept {
    AFewCount = FFewCount;
    return FFewCount <= MaxFew && !FHighMember ? FFew : nullptr;
  }

private:
  constexpr void NoteMember(Byte AChar) noexcept {
    if (AChar >= 0x80)
      FHighMember = true;
    if (FFewCount < MaxFew)
      FFew[FFewCount] = AChar;
    if (FFewCount <= MaxFew)
      ++FFewCount;
  }
  constexpr void Recount() noexcept {
    FFewCount = 0;
    FHighMember = false;
    for (int I = 0; I < 256; ++I)
      if (FMember[I])
        NoteMember(static_cast<Byte>(I));
  }

  bool FMember[256] = {};
  Byte FFew[MaxFew] = {};
  Byte FFewCount = 0; // MaxFew + 1: more than MaxFew
  bool FHighMember = false;
};

constexpr bool LxCharInSet(AnsiChar AChar, const TLxCharSet& ASet) noexcept {
  return ASet.Contains(AChar);
}
constexpr bool LxCharInSet(WideChar AChar, const TLxCharSet& ASet) noexcept {
  return ASet.Contains(AChar);
}

/// Equal apart from ASCII letter case.
inline bool LxSameText(std::u16string_view A, std::u16string_view B) noexcept {
  return SameText(A, B);
}

} // namespace lorvane
