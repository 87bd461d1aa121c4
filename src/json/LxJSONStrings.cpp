// Writing and undoing the escapes of JSON strings.
#include "lorvane/json/LxJSONStrings.h"

#include "core/internal/RawScan.h"
#include "lorvane/platform/SysUtils.h"
#include "json/LxJSONWriter.h"

#include <array>
#include <type_traits>

namespace lorvane {

namespace {

constexpr char16_t UpperHexDigits[] = u"0123456789ABCDEF";

// What a unit below U+0100 turns into: 0 stays itself, 1 is dropped, other values are the
// letter behind the backslash.
constexpr Byte KeepUnit = 0, DropUnit = 1;
constexpr auto EscapeTable = [] {
  std::array<Byte, 256> Table{};
  for (int C = 1; C <= 7; ++C)
    Table[C] = DropUnit;
  Table[0x08] = 'b', Table[0x09] = 't', Table[0x0A] = 'n', Table[0x0C] = 'f', Table[0x0D] = 'r';
  Table['"'] = '"', Table['/'] = '/', Table['\\'] = '\\';
  return Table;
}();

} // namespace

void AppendJSONEscaped(UnicodeString& ATarget, std::u16string_view AStr) {
  // Room for an escape in one character of eight and a little more: usual text needs no second
  // allocation.
  ATarget.reserve(ATarget.size() + AStr.size() + AStr.size() / 8 + 8);
  const char16_t* const End = AStr.data() + AStr.size();
  const char16_t* Run = AStr.data();
  for (const char16_t* At = Run; At < End; ++At) {
    const char16_t C = *At;
    if (C < 0x100 && EscapeTable[C] == KeepUnit)
      continue;
    // Units kept as they are go out in runs.
    ATarget.append(Run, At);
    Run = At + 1;
    if (C >= 0x100) {
      const char16_t Escape[6] = {u'\\',
                                  u'u',
                                  UpperHexDigits[C >> 12],
                                  UpperHexDigits[(C >> 8) & 15],
                                  UpperHexDigits[(C >> 4) & 15],
                                  UpperHexDigits[C & 15]};
      ATarget.append(Escape, 6);
    } else if (EscapeTable[C] != DropUnit) {
      ATarget.append({u'\\', static_cast<char16_t>(EscapeTable[C])});
    }
  }
  ATarget.append(Run, End);
}

namespace {
// TOut char16_t writes UTF-16 units, char UTF-8 bytes: the escapes leave only units below U+0100,
// and those from U+0080 on take two bytes there.
template <class TOut, class Unit>
TOut* EscapeUnits(TOut* AOut, const Unit* AText, std::size_t ALength) noexcept {
  for (std::size_t I = 0; I < ALength; ++I) {
    const char16_t C = static_cast<std::make_unsigned_t<Unit>>(AText[I]);
    if (C < 0x100) {
      const Byte Escape = EscapeTable[C];
      if (Escape == KeepUnit) {
        if (std::is_same_v<TOut, char> && C >= 0x80) {
          *AOut++ = static_cast<TOut>(0xC0 | (C >> 6));
          *AOut++ = static_cast<TOut>(0x80 | (C & 0x3F));
        } else {
          *AOut++ = static_cast<TOut>(C);
        }
      } else if (Escape != DropUnit) {
        *AOut++ = '\\';
        *AOut++ = static_cast<TOut>(Escape);
      }
      continue;
    }
    *AOut++ = '\\';
    *AOut++ = 'u';
    *AOut++ = static_cast<TOut>(UpperHexDigits[C >> 12]);
    *AOut++ = static_cast<TOut>(UpperHexDigits[(C >> 8) & 15]);
    *AOut++ = static_cast<TOut>(UpperHexDigits[(C >> 4) & 15]);
    *AOut++ = static_cast<TOut>(UpperHexDigits[C & 15]);
  }
  return AOut;
}
} // namespace

char16_t* jsonwriter::EscapeInto(char16_t* AOut, const char16_t* AText,
                                 std::size_t ALength) noexcept {
  return EscapeUnits(AOut, AText, ALength);
}

char16_t* jsonwriter::EscapeInto(char16_t* AOut, const char* AText, std::size_t ALength) noexcept {
  return EscapeUnits(AOut, AText, ALength);
}

namespace {
// Runs of units that go out as they are are copied many at a time; the unit that stops a run
// takes the careful road.
template <class Unit>
char* EscapeUTF8(char* AOut, const Unit* AText, std::size_t ALength) noexcept {
  for (;;) {
    const std::size_t Plain = rawscan::CopyJSONPlain(AText, ALength, AOut);
    AOut += Plain;
    if (Plain == ALength)
      return AOut;
    AOut = EscapeUnits(AOut, AText + Plain, 1);
    AText += Plain + 1;
    ALength -= Plain + 1;
  }
}
} // namespace

char* jsonwriter::EscapeInto(char* AOut, const char16_t* AText, std::size_t ALength) noexcept {
  return EscapeUTF8(AOut, AText, ALength);
}

char* jsonwriter::EscapeInto(char* AOut, const char* AText, std::size_t ALength) noexcept {
  return EscapeUTF8(AOut, AText, ALength);
}

UnicodeString LxStrToJSON(std::u16string_view AStr) {
  UnicodeString Result;
  AppendJSONEscaped(Result, AStr);
  return Result;
}

RawByteString LxStrToJSONLiteral(std::u16string_view AStr) {
  RawByteString Out(1, '"');
  Out.reserve(AStr.size() + 2);
  std::size_t Run = 0; // the start of the units that go out as they are
  for (std::size_t At = 0; At < AStr.size(); ++At) {
    const char16_t C = AStr[At];
    const bool Surrogate = C >= 0xD800 && C <= 0xDFFF;
    if (C >= 0x20 && C != u'"' && C != u'\\' && !Surrogate)
      continue;
    if (C <= 0xDBFF && Surrogate && At + 1 < AStr.size() && AStr[At + 1] >= 0xDC00 &&
        AStr[At + 1] <= 0xDFFF) {
      ++At; // a whole pair
      continue;
    }
    Out += StringToUTF8(AStr.substr(Run, At - Run));
    Run = At + 1;
    if (C == u'"' || C == u'\\') {
      Out += '\\';
      Out += static_cast<char>(C);
    } else {
      const char Escape[6] = {'\\',
                              'u',
                              static_cast<char>(UpperHexDigits[C >> 12]),
                              static_cast<char>(UpperHexDigits[(C >> 8) & 15]),
                              static_cast<char>(UpperHexDigits[(C >> 4) & 15]),
                              static_cast<char>(UpperHexDigits[C & 15])};
      Out.append(Escape, 6);
    }
  }
  Out += StringToUTF8(AStr.substr(Run));
  Out += '"';
  return Out;
}

namespace {
std::size_t FirstEscape(std::u16string_view AJSON, TLxJSONDataType AType) noexcept {
  const bool DecodePercent = AType == jdtNumber;
  std::size_t First = 0;
  while (First < AJSON.size() && AJSON[First] != u'\\' && !(DecodePercent && AJSON[First] == u'%'))
    ++First;
  return First;
}
} // namespace

bool JSONTextHasEscapes(std::u16string_view AJSON, TLxJSONDataType AType) noexcept {
  return FirstEscape(AJSON, AType) < AJSON.size();
}

UnicodeString LxJSONtoStr(std::u16string_view AJSON, TLxJSONDataType AType) {
  const bool DecodePercent = AType == jdtNumber;
  const std::size_t First = FirstEscape(AJSON, AType);
  if (First == AJSON.size())
    return UnicodeString(AJSON);

  UnicodeString Result(AJSON.substr(0, First));
  Result.reserve(AJSON.size());
  std::size_t At = First;
  // Reading at the end of the text gives NUL, as the text cursor does.
  auto Read = [&]() -> char16_t { return At < AJSON.size() ? AJSON[At++] : char16_t(0); };
  // Digits go through the text-to-integer conversion with the "$" prefix, so that bad digits
  // raise its own EConvertError.
  auto ReadDigits = [&](std::size_t ACount) {
    UnicodeString Digits(1, u'$');
    for (std::size_t Each = 0; Each < ACount; ++Each)
      Digits.push_back(Read());
    return StrToInt(Digits);
  };
  while (At < AJSON.size()) {
    const char16_t C = Read();
    if (C == u'%' && DecodePercent) {
      Result.push_back(static_cast<char16_t>(ReadDigits(2) & 0xFF));
      continue;
    }
    if (C != u'\\') {
      Result.push_back(C);
      continue;
    }
    const char16_t Next = Read();
    switch (Next) {
    case u'n':
      Result.push_back(u'\n');
      break;
    case u'r':
      Result.push_back(u'\r');
      break;
    case u't':
      Result.push_back(u'\t');
      break;
    case u'f':
      Result.push_back(u'\f');
      break;
    case u'b':
      Result.push_back(u'\b');
      break;
    case u'u':
      Result.push_back(static_cast<char16_t>(ReadDigits(4)));
      break;
    case u'%':
      Result.push_back(static_cast<char16_t>(ReadDigits(2) & 0xFF));
      break;
    default: // the backslash, "/", the double quote, and any other character stand for themselves
      Result.push_back(Next);
    }
  }
  return Result;
}

} // namespace lorvane
