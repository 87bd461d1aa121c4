// Exceptions and the number and text conversions of the runtime (Format has a file of its own).
#include "lorvane/platform/SysUtils.h"

#include "platform/internal/Utf.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <unistd.h>

namespace lorvane {

TFormatSettings FormatSettings;

// --- exceptions
// -----------------------------------------------------------------------------------
Exception::Exception(UnicodeString AMessage)
    : FMessage(std::move(AMessage)), FWhat(StringToUTF8(FMessage)) {}

Exception::Exception(std::u16string_view AFormat, TFormatArgs AArgs)
    : Exception(Format(AFormat, AArgs)) {}

void Exception::SetMessage(UnicodeString AMessage) {
  FMessage = std::move(AMessage);
  FWhat = StringToUTF8(FMessage);
}

void RaiseAssertionFailed(std::u16string_view AMessage) {
  throw EAssertionFailed(UnicodeString(AMessage));
}

// --- UTF-8 and UTF-16
// -----------------------------------------------------------------------------
UnicodeString UTF8ToString(std::string_view AUTF8) {
  UnicodeString Result;
  utf::AppendUTF8AsUTF16(Result, reinterpret_cast<const Byte*>(AUTF8.data()), AUTF8.size());
  return Result;
}

std::string StringToUTF8(std::u16string_view AText) {
  std::string Result;
  utf::AppendUTF16AsUTF8(Result, AText.data(), AText.size());
  return Result;
}

UnicodeString AsciiToString(std::string_view AText) {
  return UnicodeString(AText.begin(), AText.end());
}

// --- numbers
// --------------------------------------------------------------------------------------
UnicodeString IntToStr(Int64 AValue) {
  char Buffer[24];
  auto End = std::to_chars(Buffer, Buffer + sizeof Buffer, AValue).ptr;
  return UnicodeString(Buffer, End);
}

UnicodeString UIntToStr(UInt64 AValue) {
  char Buffer[24];
  auto End = std::to_chars(Buffer, Buffer + sizeof Buffer, AValue).ptr;
  return UnicodeString(Buffer, End);
}

UnicodeString IntToHex(UInt64 AValue, Integer ADigits) {
  char Buffer[24];
  auto End = std::to_chars(Buffer, Buffer + sizeof Buffer, AValue, 16).ptr;
  UnicodeString Result(Buffer, End);
  for (auto& C : Result)
    if (C >= u'a')
      C -= 0x20;
  if (ADigits > static_cast<Integer>(Result.size()))
    Result.insert(0, ADigits - Result.size(), u'0');
  return Result;
}

namespace {

// Integer text: an optional sign, then decimal digits, or hexadecimal digits behind '$'.
// Magnitudes are checked against the target's range with the sign applied.
bool ParseInteger(std::u16string_view AText, UInt64 ALimitPositive, UInt64 ALimitNegative,
                  bool& ANegative, UInt64& AMagnitude) noexcept {
  std::size_t I = 0;
  ANegative = false;
  if (I < AText.size() && (AText[I] == u'-' || AText[I] == u'+'))
    ANegative = AText[I++] == u'-';
  unsigned Base = 10;
  if (I < AText.size() && AText[I] == u'$')
    Base = 16, ++I;
  if (I == AText.size())
    return false;
  UInt64 Value = 0;
  const UInt64 Limit = ANegative ? ALimitNegative : ALimitPositive;
  for (; I < AText.size(); ++I) {
    const char16_t C = AText[I];
    unsigned Digit;
    if (C >= u'0' && C <= u'9')
      Digit = C - u'0';
    else if (Base == 16 && (C | 0x20) >= u'a' && (C | 0x20) <= u'f')
      Digit = (C | 0x20) - u'a' + 10;
    else
      return false;
    if (Value > (Limit - Digit) / Base)
      return false;
    Value = Value * Base + Digit;
  }
  AMagnitude = Value;
  return true;
}

template <class T> bool TryParseSigned(std::u16string_view AText, T& AValue) noexcept {
  using U = std::make_unsigned_t<T>;
  bool Negative;
  UInt64 Magnitude;
  if (!ParseInteger(AText, static_cast<U>(std::numeric_limits<T>::max()),
                    static_cast<U>(std::numeric_limits<T>::max()) + 1u, Negative, Magnitude))
    return false;
  AValue = Negative ? static_cast<T>(0 - static_cast<U>(Magnitude)) : static_cast<T>(Magnitude);
  return true;
}

[[noreturn]] void RaiseNotInteger(std::u16string_view AText) {
  throw EConvertError(u"'" + UnicodeString(AText) + u"' is not a valid integer value");
}

} // namespace

bool TryStrToInt(std::u16string_view AText, Integer& AValue) noexcept {
  return TryParseSigned(AText, AValue);
}
bool TryStrToInt64(std::u16string_view AText, Int64& AValue) noexcept {
  return TryParseSigned(AText, AValue);
}
bool TryStrToUInt64(std::u16string_view AText, UInt64& AValue) noexcept {
  bool Negative;
  return ParseInteger(AText, std::numeric_limits<UInt64>::max(), 0, Negative, AValue) && !Negative;
}

Integer StrToInt(std::u16string_view AText) {
  Integer Value;
  if (!TryStrToInt(AText, Value))
    RaiseNotInteger(AText);
  return Value;
}
Int64 StrToInt64(std::u16string_view AText) {
  Int64 Value;
  if (!TryStrToInt64(AText, Value))
    RaiseNotInteger(AText);
  return Value;
}
Integer StrToIntDef(std::u16string_view AText, Integer ADefault) noexcept {
  Integer Value;
  return TryStrToInt(AText, Value) ? Value : ADefault;
}
Int64 StrToInt64Def(std::u16string_view AText, Int64 ADefault) noexcept {
  Int64 Value;
  return TryStrToInt64(AText, Value) ? Value : ADefault;
}

bool TryStrToFloat(std::u16string_view AText, double& AValue,
                   const TFormatSettings& ASettings) noexcept {
  std::size_t Begin = 0, End = AText.size();
  while (Begin < End && AText[Begin] <= u' ')
    ++Begin;
  while (End > Begin && AText[End - 1] <= u' ')
    --End;
  AText = AText.substr(Begin, End - Begin);
  if (AText.empty() || AText.size() > 350)
    return false;
  // Copy to ASCII with '.' as the point, checking the grammar: sign digits [sep digits] [exp].
  char Buffer[352];
  std::size_t Len = 0, I = 0;
  bool Negative = false;
  if (AText[0] == u'-' || AText[0] == u'+')
    Negative = AText[I++] == u'-';
  const std::u16string_view Rest = AText.substr(I);
  if (Rest == u"NAN" || Rest == u"INF") {
    if (Rest == u"NAN" && Negative)
      return false;
    AValue = Rest == u"NAN" ? std::numeric_limits<double>::quiet_NaN()
                            : (Negative ? -1 : 1) * std::numeric_limits<double>::infinity();
    return true;
  }
  int Digits = 0;
  for (; I < AText.size() && AText[I] >= u'0' && AText[I] <= u'9'; ++I, ++Digits)
    Buffer[Len++] = static_cast<char>(AText[I]);
  if (I < AText.size() && AText[I] == ASettings.DecimalSeparator) {
    Buffer[Len++] = '.';
    for (++I; I < AText.size() && AText[I] >= u'0' && AText[I] <= u'9'; ++I, ++Digits)
      Buffer[Len++] = static_cast<char>(AText[I]);
  }
  if (Digits == 0)
    return false;
  if (I < AText.size() && (AText[I] | 0x20) == u'e') {
    Buffer[Len++] = 'e';
    ++I;
    if (I < AText.size() && (AText[I] == u'-' || AText[I] == u'+'))
      Buffer[Len++] = static_cast<char>(AText[I++]);
    int ExpDigits = 0;
    for (; I < AText.size() && AText[I] >= u'0' && AText[I] <= u'9'; ++I, ++ExpDigits)
      Buffer[Len++] = static_cast<char>(AText[I]);
    if (ExpDigits == 0)
      return false;
  }
  if (I != AText.size())
    return false;
  double Value = 0;
  auto [Ptr, Ec] = std::from_chars(Buffer, Buffer + Len, Value);
  if (Ptr != Buffer + Len)
    return false;
  if (Ec == std::errc::result_out_of_range) {
    // Underflow becomes zero; overflow is not a number the platform accepts.
    if (std::strpbrk(Buffer, "e") && std::strstr(Buffer, "e-"))
      Value = 0;
    else
      return false;
  }
  AValue = Negative ? -Value : Value;
  return true;
}

bool TryStrToFloat(std::u16string_view AText, double& AValue) noexcept {
  return TryStrToFloat(AText, AValue, FormatSettings);
}

double StrToFloat(std::u16string_view AText, const TFormatSettings& ASettings) {
  double Value;
  if (!TryStrToFloat(AText, Value, ASettings))
    throw EConvertError(u"'" + UnicodeString(AText) + u"' is not a valid floating point value");
  return Value;
}
double StrToFloat(std::u16string_view AText) { return StrToFloat(AText, FormatSettings); }
double StrToFloatDef(std::u16string_view AText, double ADefault) noexcept {
  double Value;
  return TryStrToFloat(AText, Value) ? Value : ADefault;
}

UnicodeString FloatToStr(double AValue, const TFormatSettings& ASettings) {
  if (std::isnan(AValue))
    return u"NAN";
  if (std::isinf(AValue))
    return AValue < 0 ? u"-INF" : u"INF";
  if (AValue == 0)
    return u"0";
  // 15 significant digits, then decide between the plain and the exponent form.
  char Buffer[40];
  std::snprintf(Buffer, sizeof Buffer, "%.14e", AValue);
  const char* P = Buffer;
  const bool Negative = *P == '-';
  if (Negative)
    ++P;
  char Digits[16];
  int DigitCount = 0;
  for (; *P != 'e'; ++P)
    if (*P >= '0' && *P <= '9')
      Digits[DigitCount++] = *P;
  const int Exponent = std::atoi(P + 1);
  while (DigitCount > 1 && Digits[DigitCount - 1] == '0')
    --DigitCount;
  UnicodeString Result;
  if (Negative)
    Result += u'-';
  if (Exponent < -5 || Exponent >= 15) {
    Result += static_cast<char16_t>(Digits[0]);
    if (DigitCount > 1) {
      Result += ASettings.DecimalSeparator;
      for (int I = 1; I < DigitCount; ++I)
        Result += static_cast<char16_t>(Digits[I]);
    }
    Result += u'E';
    Result += IntToStr(Exponent);
    return Result;
  }
  if (Exponent < 0) {
    Result += u'0';
    Result += ASettings.DecimalSeparator;
    Result.append(-Exponent - 1, u'0');
    for (int I = 0; I < DigitCount; ++I)
      Result += static_cast<char16_t>(Digits[I]);
    return Result;
  }
  for (int I = 0; I <= Exponent; ++I)
    Result += static_cast<char16_t>(I < DigitCount ? Digits[I] : '0');
  if (DigitCount > Exponent + 1) {
    Result += ASettings.DecimalSeparator;
    for (int I = Exponent + 1; I < DigitCount; ++I)
      Result += static_cast<char16_t>(Digits[I]);
  }
  return Result;
}

UnicodeString FloatToStr(double AValue) { return FloatToStr(AValue, FormatSettings); }

UnicodeString BoolToStr(bool AValue, bool AUseBoolStrs) {
  if (AUseBoolStrs)
    return AValue ? u"True" : u"False";
  return AValue ? u"-1" : u"0";
}

bool TryStrToBool(std::u16string_view AText, bool& AValue) noexcept {
  const UnicodeString Text = Trim(AText);
  if (SameText(Text, u"true")) {
    AValue = true;
    return true;
  }
  if (SameText(Text, u"false")) {
    AValue = false;
    return true;
  }
  double Number;
  if (!TryStrToFloat(Text, Number))
    return false;
  AValue = Number != 0;
  return true;
}

bool StrToBool(std::u16string_view AText) {
  bool Value;
  if (!TryStrToBool(AText, Value))
    throw EConvertError(u"'" + UnicodeString(AText) + u"' is not a valid boolean value");
  return Value;
}

// --- text helpers
// ---------------------------------------------------------------------------------
UnicodeString Trim(std::u16string_view AText) {
  std::size_t Begin = 0, End = AText.size();
  while (Begin < End && AText[Begin] <= u' ')
    ++Begin;
  while (End > Begin && AText[End - 1] <= u' ')
    --End;
  return UnicodeString(AText.substr(Begin, End - Begin));
}

UnicodeString TrimLeft(std::u16string_view AText) {
  std::size_t Begin = 0;
  while (Begin < AText.size() && AText[Begin] <= u' ')
    ++Begin;
  return UnicodeString(AText.substr(Begin));
}

UnicodeString TrimRight(std::u16string_view AText) {
  std::size_t End = AText.size();
  while (End > 0 && AText[End - 1] <= u' ')
    --End;
  return UnicodeString(AText.substr(0, End));
}

namespace {
constexpr char16_t AsciiLower(char16_t C) noexcept {
  return C >= u'A' && C <= u'Z' ? static_cast<char16_t>(C + 32) : C;
}
constexpr char16_t AsciiUpper(char16_t C) noexcept {
  return C >= u'a' && C <= u'z' ? static_cast<char16_t>(C - 32) : C;
}
} // namespace

bool SameText(std::u16string_view A, std::u16string_view B) noexcept {
  return A.size() == B.size() && CompareText(A, B) == 0;
}

int CompareText(std::u16string_view A, std::u16string_view B) noexcept {
  const std::size_t N = std::min(A.size(), B.size());
  for (std::size_t I = 0; I < N; ++I) {
    const char16_t X = AsciiLower(A[I]), Y = AsciiLower(B[I]);
    if (X != Y)
      return X < Y ? -1 : 1;
  }
  return A.size() == B.size() ? 0 : (A.size() < B.size() ? -1 : 1);
}

UnicodeString UpperCase(std::u16string_view AText) {
  UnicodeString Result(AText);
  for (auto& C : Result)
    C = AsciiUpper(C);
  return Result;
}

UnicodeString LowerCase(std::u16string_view AText) {
  UnicodeString Result(AText);
  for (auto& C : Result)
    C = AsciiLower(C);
  return Result;
}

UnicodeString Copy(std::u16string_view AText, Integer AIndex, Integer ACount) {
  if (AIndex < 1)
    AIndex = 1;
  if (ACount <= 0 || static_cast<std::size_t>(AIndex) > AText.size())
    return UnicodeString();
  return UnicodeString(AText.substr(AIndex - 1, static_cast<std::size_t>(ACount)));
}

Integer Pos(std::u16string_view ASubStr, std::u16string_view AText) noexcept {
  if (ASubStr.empty())
    return 0;
  const std::size_t At = AText.find(ASubStr);
  return At == std::u16string_view::npos ? 0 : static_cast<Integer>(At) + 1;
}

UnicodeString StringReplaceAll(std::u16string_view AText, std::u16string_view AOld,
                               std::u16string_view ANew) {
  if (AOld.empty())
    return UnicodeString(AText);
  UnicodeString Result;
  std::size_t From = 0;
  for (std::size_t At; (At = AText.find(AOld, From)) != std::u16string_view::npos;
       From = At + AOld.size()) {
    Result.append(AText.substr(From, At - From));
    Result.append(ANew);
  }
  Result.append(AText.substr(From));
  return Result;
}

UnicodeString ProgramFileName() {
  char Path[4096];
  const ssize_t Length = readlink("/proc/self/exe", Path, sizeof(Path));
  return Length > 0 ? UTF8ToString(std::string_view(Path, static_cast<std::size_t>(Length)))
                    : UnicodeString();
}

UnicodeString ExtractFileName(std::u16string_view AFileName) {
  const auto Separator = AFileName.find_last_of(u"/\\");
  return UnicodeString(Separator == std::u16string_view::npos ? AFileName
                                                              : AFileName.substr(Separator + 1));
}

UnicodeString ChangeFileExt(std::u16string_view AFileName, std::u16string_view AExtension) {
  const auto Separator = AFileName.find_last_of(u"/\\");
  const auto Dot = AFileName.rfind(u'.');
  UnicodeString Result(Dot == std::u16string_view::npos ||
                               (Separator != std::u16string_view::npos && Dot < Separator)
                           ? AFileName
                           : AFileName.substr(0, Dot));
  Result += AExtension;
  return Result;
}

} // namespace lorvane
