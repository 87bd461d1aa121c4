// Escaping of values for a document and decoding of character and entity references.
#include "lorvane/xmlutils/LxXMLEscape.h"

#include "core/internal/RawScan.h"
#include "lorvane/platform/CodePages.h"
#include "xmlutils/LxEntityTable.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace lorvane {

namespace {

// --- escaping
// -------------------------------------------------------------------------------------
// What the escaper does with each character below 128; from 128 up every character passes.
//   row 0            EscapeNul: dropped by the UTF-16 string form only
//   rows 1..31       EscapeAlways: "&#N;"
//   row '"' (34)     EscapeQuote: "&quot;" with AEscapeQuote
//   row '&' (38)     EscapeAlways: "&amp;"
//   row '\'' (39)    EscapeApos: "&apos;" with AEscapeApos
//   row '<' (60)     EscapeAlways: "&lt;"
//   row '>' (62)     EscapeAlways: "&gt;"
//   all other rows   0: pass
enum : Byte { EscapeAlways = 1, EscapeApos = 2, EscapeQuote = 4, EscapeNul = 8 };

constexpr std::array<Byte, 128> EscapeKinds = [] {
  std::array<Byte, 128> Kinds{};
  Kinds[0] = EscapeNul;
  for (int C = 1; C < 32; ++C)
    Kinds[C] = EscapeAlways;
  Kinds['&'] = Kinds['<'] = Kinds['>'] = EscapeAlways;
  Kinds['\''] = EscapeApos;
  Kinds['"'] = EscapeQuote;
  return Kinds;
}();

// The replacement of each character of EscapeKinds, in the output's character type.
template <class TChar> struct TReplacements {
  TChar Text[128][7] = {};
  Byte Length[128] = {};

  constexpr void Set(int AChar, const char* AText) {
    Byte N = 0;
    for (; AText[N]; ++N)
      Text[AChar][N] = static_cast<TChar>(AText[N]);
    Length[AChar] = N;
  }
  constexpr TReplacements() {
    for (int C = 1; C < 32; ++C) {
      const char Digits[] = {'&',
                             '#',
                             static_cast<char>(C < 10 ? '0' + C : '0' + C / 10),
                             static_cast<char>(C < 10 ? ';' : '0' + C % 10),
                             static_cast<char>(C < 10 ? 0 : ';'),
                             0};
      Set(C, Digits);
    }
    Set('&', "&amp;");
    Set('<', "&lt;");
    Set('>', "&gt;");
    Set('\'', "&apos;");
    Set('"', "&quot;");
  }
  std::basic_string_view<TChar> Of(unsigned AChar) const noexcept {
    return {Text[AChar], Length[AChar]};
  }
};
template <class TChar> constexpr TReplacements<TChar> Replacements{};

// The escaper searches with the core's kernel, which stops at exactly the rows of EscapeKinds
// that aren't 0.
static_assert([] {
  for (unsigned C = 0; C < 128; ++C)
    if ((EscapeKinds[C] != 0) != rawscan::IsControlOrMarkup(C))
      return false;
  return true;
}());

constexpr Byte EscapeMask(bool AEscapeApos, bool AEscapeQuote, bool ADropNul) noexcept {
  return static_cast<Byte>(EscapeAlways | (AEscapeApos ? EscapeApos : 0) |
                           (AEscapeQuote ? EscapeQuote : 0) | (ADropNul ? EscapeNul : 0));
}

// One pass: runs between two replaced characters go to ASink in one piece. ASink takes a run
// (pointer, count) and a replacement (a view, empty for a dropped character).
template <class TChar, class TSink>
void Escape(const TChar* ABegin, const TChar* AEnd, Byte AMask, TSink&& ASink) {
  using TUnsigned = std::make_unsigned_t<TChar>;
  const TChar* Run = ABegin;
  const TChar* P = ABegin;
  while ((P = rawscan::FindControlOrMarkup(P, AEnd)) != AEnd) {
    const unsigned C = static_cast<TUnsigned>(*P);
    if ((EscapeKinds[C] & AMask) == 0) {
      ++P;
      continue;
    }
    ASink(Run, static_cast<std::size_t>(P - Run), Replacements<TChar>.Of(C));
    Run = ++P;
  }
  ASink(Run, static_cast<std::size_t>(AEnd - Run), std::basic_string_view<TChar>());
}

// Room for the common case of a few replacements, so that the result grows at most once or
// twice.
constexpr std::size_t EscapedCapacity(std::size_t ALength) noexcept {
  return ALength + ALength / 8 + 16;
}

template <class TString>
TString EscapeToString(const typename TString::value_type* AData, std::size_t ALength, Byte AMask) {
  using TChar = typename TString::value_type;
  TString Result;
  if (ALength == 0)
    return Result;
  Result.reserve(EscapedCapacity(ALength));
  Escape(AData, AData + ALength, AMask,
         [&Result](const TChar* ARun, std::size_t ACount, std::basic_string_view<TChar> AText) {
           Result.append(ARun, ACount);
           Result.append(AText);
         });
  return Result;
}

// --- decoding
// -------------------------------------------------------------------------------------
const WideChar* FindAmp(const WideChar* AFrom, const WideChar* AEnd) noexcept {
  // Text without '&' is the common case, so the search is made for long runs.
  return rawscan::FindRareUnit16(AFrom, AEnd, u'&');
}

const AnsiChar* FindAmp(const AnsiChar* AFrom, const AnsiChar* AEnd) noexcept {
  const void* Found = std::memchr(AFrom, '&', static_cast<std::size_t>(AEnd - AFrom));
  return Found ? static_cast<const AnsiChar*>(Found) : AEnd;
}

// Behind a '&': the first blank or ';', or AEnd. Only U+0020 is a blank here; a tab or a line
// break doesn't stop the scan.
template <class TChar> const TChar* ScanReference(const TChar* AFrom, const TChar* AEnd) noexcept {
  const TChar* P = AFrom;
  while (P != AEnd && *P != TChar(';') && *P != TChar(' '))
    ++P;
  return P;
}

// The value of the digits between "&#" and ';' (ABody starts behind '#'), as StrToInt gives it:
// hexadecimal behind 'x' or 'X' with '$' put in front, decimal otherwise.
Integer NumericReference(std::u16string_view ABody) {
  if (!ABody.empty() && (ABody[0] == u'x' || ABody[0] == u'X')) {
    UnicodeString Hex(1, u'$');
    Hex.append(ABody.substr(1));
    return StrToInt(Hex);
  }
  return StrToInt(ABody);
}

// The character of the reference between '&' and ';', or false when it stays as it is.
bool DecodeReference(std::u16string_view AName, WideChar& AChar) {
  if (!AName.empty() && AName[0] == u'#') {
    // The low 16 bits: one unit per reference, as the platform's character cast does.
    AChar = static_cast<WideChar>(NumericReference(AName.substr(1)));
    return true;
  }
  if (AName.size() > cMaxEntityName)
    return false;
  return FindEntity(FoldEntityName(AName.data(), AName.size()), AChar);
}

// The replacement of the reference between '&' and ';' in single-byte text, or false.
bool DecodeReference(std::string_view AName, RawByteString& AText) {
  const char First = AName.empty() ? ';' : AName[0];
  switch (First) {
  case '#': {
    const UnicodeString Digits = CodePageToUnicode(AName.data() + 1, AName.size() - 1, CP_ACP);
    const WideChar Char = static_cast<WideChar>(NumericReference(Digits));
    AText = UnicodeToCodePage(std::u16string_view(&Char, 1), CP_ACP);
    return true;
  }
  case 'a':
  case 'A':
    // Assigning one character, not a literal: g++ 12 warns wrongly about a literal's copy here.
    AText.assign(1, AName.size() > 1 && (AName[1] == 'm' || AName[1] == 'M') ? '&' : '\'');
    return true;
  case 'g':
  case 'G':
    AText.assign(1, '>');
    return true;
  case 'l':
  case 'L':
    AText.assign(1, '<');
    return true;
  case 'q':
  case 'Q':
    AText.assign(1, '"');
    return true;
  default:
    return false;
  }
}

// Walks AValue once. Text before a decoded reference goes to the result in one append; a '&'
// that starts no decoded reference stays in the pending run, and so does everything the scan
// from it passed over. ADecode(name, replacement) sets the reference's replacement and gives
// true, or gives false to leave the reference as it stands.
template <class TString, class TDecode>
TString Decode(std::basic_string_view<typename TString::value_type> AValue, TDecode&& ADecode) {
  using TChar = typename TString::value_type;
  const TChar* const Begin = AValue.data();
  const TChar* const End = Begin + AValue.size();
  const TChar* P = FindAmp(Begin, End);
  if (P == End)
    return TString(AValue);
  TString Result;
  // References only shrink the text.
  Result.reserve(AValue.size());
  TString Replacement;
  const TChar* CopyStart = Begin;
  while (P != End) {
    const TChar* const Stop = ScanReference(P + 1, End);
    if (Stop == End)
      break;
    if (*Stop == TChar(';') &&
        ADecode(std::basic_string_view<TChar>(P + 1, static_cast<std::size_t>(Stop - P - 1)),
                Replacement)) {
      Result.append(CopyStart, P);
      Result.append(Replacement);
      CopyStart = Stop + 1;
    }
    P = FindAmp(Stop + 1, End);
  }
  Result.append(CopyStart, End);
  return Result;
}

} // namespace

UnicodeString LxStrToXML(std::u16string_view AValue, bool AEscapeApos, bool AEscapeQuote) {
  return EscapeToString<UnicodeString>(AValue.data(), AValue.size(),
                                       EscapeMask(AEscapeApos, AEscapeQuote, /*ADropNul=*/true));
}

RawByteString LxStrToXML(std::string_view AValue, bool AEscapeApos, bool AEscapeQuote) {
  return EscapeToString<RawByteString>(AValue.data(), AValue.size(),
                                       EscapeMask(AEscapeApos, AEscapeQuote, /*ADropNul=*/false));
}

void LxStrToXML(const WideChar* ABuffer, Integer ALength, TLxStringStream* AStream,
                bool AEscapeApos, bool AEscapeQuote) {
  Assert(AStream != nullptr, u"LxStrToXML needs a stream to write to");
  if (ALength <= 0)
    return;
  Assert(ABuffer != nullptr, u"LxStrToXML needs a buffer for a run of characters");
  Escape(ABuffer, ABuffer + ALength, EscapeMask(AEscapeApos, AEscapeQuote, /*ADropNul=*/false),
         [AStream](const WideChar* ARun, std::size_t ACount, std::u16string_view AText) {
           if (ACount > 0)
             AStream->Add(std::u16string_view(ARun, ACount));
           if (!AText.empty())
             AStream->Add(AText);
         });
}

UnicodeString LxXMLToStr(std::u16string_view AValue) {
  return Decode<UnicodeString>(AValue, [](std::u16string_view AName, UnicodeString& AText) {
    WideChar Char;
    if (!DecodeReference(AName, Char))
      return false;
    AText.assign(1, Char);
    return true;
  });
}

RawByteString LxXMLToStr(std::string_view AValue) {
  return Decode<RawByteString>(AValue, [](std::string_view AName, RawByteString& AText) {
    return DecodeReference(AName, AText);
  });
}

} // namespace lorvane
