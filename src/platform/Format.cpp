// Format: reading the format string into specifiers, and rendering each argument by its
// specifier.
#include "lorvane/platform/SysUtils.h"

#include <cstdio>

namespace lorvane {

namespace {

[[noreturn]] void RaiseFormatError(std::u16string_view AFormat) {
  throw EConvertError(u"Format '" + UnicodeString(AFormat) +
                      u"' invalid or incompatible with argument");
}

// One specifier as the format string spells it: "%" [index ":"] ["-"] [width] ["." precision]
// type.
struct TPlaceholder {
  int ArgIndex = 0;
  bool Left = false;
  int Width = 0;
  int Precision = -1; // none given
  char16_t Type = 0;  // lower case
  bool UpperHex = false;
};

// Walks a format string: the literal text between specifiers, then each specifier in turn.
class TFormatReader {
public:
  explicit TFormatReader(std::u16string_view AFormat) noexcept : FFormat(AFormat) {}

  /// Appends the literal text up to the next specifier to AOut ("%%" gives one '%') and reads
  /// that specifier into APlaceholder; false once the format is used up. A specifier cut short
  /// raises.
  bool Next(UnicodeString& AOut, TPlaceholder& APlaceholder) {
    const std::size_t N = FFormat.size();
    for (;;) {
      const std::size_t Percent = FFormat.find(u'%', FPos);
      if (Percent == std::u16string_view::npos) {
        AOut.append(FFormat.substr(FPos));
        FPos = N;
        return false;
      }
      AOut.append(FFormat.substr(FPos, Percent - FPos));
      FPos = Percent + 1;
      if (FPos >= N)
        RaiseFormatError(FFormat);
      if (FFormat[FPos] != u'%')
        break;
      AOut += u'%';
      ++FPos;
    }
    APlaceholder = TPlaceholder();
    int Number = 0;
    const std::size_t SpecStart = FPos;
    if (ReadNumber(Number) && FPos < N && FFormat[FPos] == u':')
      FNextArg = Number, ++FPos;
    else
      FPos = SpecStart;
    if (FPos < N && FFormat[FPos] == u'-')
      APlaceholder.Left = true, ++FPos;
    ReadNumber(APlaceholder.Width);
    if (FPos < N && FFormat[FPos] == u'.') {
      ++FPos;
      ReadNumber(APlaceholder.Precision);
    }
    if (FPos >= N)
      RaiseFormatError(FFormat);
    // The letter case of the type doesn't matter, but for %X.
    APlaceholder.Type = FFormat[FPos] | 0x20;
    APlaceholder.UpperHex = FFormat[FPos] == u'X';
    ++FPos;
    APlaceholder.ArgIndex = FNextArg++;
    return true;
  }

private:
  // Digits at the position, if any; values beyond any sensible width are refused.
  bool ReadNumber(int& AValue) {
    bool Any = false;
    AValue = 0;
    while (FPos < FFormat.size() && FFormat[FPos] >= u'0' && FFormat[FPos] <= u'9') {
      AValue = AValue * 10 + (FFormat[FPos++] - u'0');
      if (AValue > 100000)
        RaiseFormatError(FFormat);
      Any = true;
    }
    return Any;
  }

  std::u16string_view FFormat;
  std::size_t FPos = 0;
  int FNextArg = 0;
};

UnicodeString FormatFloatSpec(char16_t AType, double AValue, int APrecision) {
  char Pattern[8] = {'%', '.', '*', static_cast<char>(AType == u'g' ? 'G' : AType), 0};
  char Buffer[400];
  std::snprintf(Buffer, sizeof Buffer, Pattern, APrecision, AValue);
  UnicodeString Result = AsciiToString(Buffer);
  for (auto& C : Result)
    if (C == u'.')
      C = FormatSettings.DecimalSeparator;
  return Result;
}

// The text of one argument by its specifier, before padding to the width; an argument of a
// kind the type doesn't take raises.
UnicodeString RenderArgument(const TPlaceholder& APlaceholder, const TVarRec& AArg,
                             std::u16string_view AFormat) {
  using K = TVarRec::TKind;
  UnicodeString Text;
  switch (APlaceholder.Type) {
  case u'd':
  case u'u':
    if (AArg.Kind() == K::vtInteger)
      Text = IntToStr(APlaceholder.Type == u'u'
                          ? static_cast<Int64>(static_cast<UInt64>(AArg.AsInt()) & 0xFFFFFFFFull)
                          : AArg.AsInt());
    else if (AArg.Kind() == K::vtUnsigned)
      Text = UIntToStr(AArg.AsUInt());
    else
      RaiseFormatError(AFormat);
    if (APlaceholder.Precision > static_cast<int>(Text.size())) {
      const bool Negative = !Text.empty() && Text[0] == u'-';
      Text.insert(Negative ? 1 : 0, APlaceholder.Precision - Text.size() + (Negative ? 1 : 0),
                  u'0');
    }
    return Text;
  case u'x':
    if (AArg.Kind() != K::vtInteger && AArg.Kind() != K::vtUnsigned)
      RaiseFormatError(AFormat);
    Text = IntToHex(AArg.AsUInt(), APlaceholder.Precision < 0 ? 0 : APlaceholder.Precision);
    return APlaceholder.UpperHex ? Text : LowerCase(Text);
  case u'e':
  case u'f':
  case u'g':
    if (AArg.Kind() != K::vtExtended)
      RaiseFormatError(AFormat);
    return FormatFloatSpec(APlaceholder.Type, AArg.AsFloat(),
                           APlaceholder.Precision >= 0 ? APlaceholder.Precision
                           : APlaceholder.Type == u'g' ? 15
                           : APlaceholder.Type == u'e' ? 14
                                                       : 2);
  case u's':
    switch (AArg.Kind()) {
    case K::vtString:
      Text = AArg.AsText();
      break;
    case K::vtAnsiString:
      Text = UTF8ToString(AArg.AsBytes());
      break;
    case K::vtChar:
      Text = UnicodeString(1, AArg.AsChar());
      break;
    default:
      RaiseFormatError(AFormat);
    }
    if (APlaceholder.Precision >= 0 && APlaceholder.Precision < static_cast<int>(Text.size()))
      Text.resize(APlaceholder.Precision);
    return Text;
  default:
    RaiseFormatError(AFormat);
  }
}

void AppendPadded(UnicodeString& AOut, std::u16string_view AText, int AWidth, bool ALeft) {
  const int Pad =
      AWidth > static_cast<int>(AText.size()) ? AWidth - static_cast<int>(AText.size()) : 0;
  if (!ALeft)
    AOut.append(Pad, u' ');
  AOut.append(AText);
  if (ALeft)
    AOut.append(Pad, u' ');
}

} // namespace

UnicodeString Format(std::u16string_view AFormat, const TVarRec* AArgs, Integer AArgsHigh) {
  UnicodeString Out;
  Out.reserve(AFormat.size() + 16);
  TFormatReader Reader(AFormat);
  TPlaceholder Placeholder;
  while (Reader.Next(Out, Placeholder)) {
    if (Placeholder.ArgIndex > AArgsHigh)
      RaiseFormatError(AFormat);
    AppendPadded(Out, RenderArgument(Placeholder, AArgs[Placeholder.ArgIndex], AFormat),
                 Placeholder.Width, Placeholder.Left);
  }
  return Out;
}

UnicodeString Format(std::u16string_view AFormat, TFormatArgs AArgs) {
  return Format(AFormat, AArgs.begin(), static_cast<Integer>(AArgs.size()) - 1);
}

} // namespace lorvane
