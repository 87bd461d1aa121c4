/// Exceptions, formatted messages, number and text conversions, and the process-wide format
/// settings that stand in for the system's regional settings.
#pragma once

#include "lorvane/platform/System.h"

#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>

namespace lorvane {

// --- format arguments
// -----------------------------------------------------------------------------
/// One argument of Format: an integer, a float, a character or a text.
class TVarRec {
public:
  enum class TKind : Byte { vtInteger, vtUnsigned, vtExtended, vtChar, vtString, vtAnsiString };

  TVarRec(int AValue) noexcept : FKind(TKind::vtInteger), FInt(AValue) {}
  TVarRec(long AValue) noexcept : FKind(TKind::vtInteger), FInt(AValue) {}
  TVarRec(long long AValue) noexcept : FKind(TKind::vtInteger), FInt(AValue) {}
  TVarRec(unsigned AValue) noexcept : FKind(TKind::vtUnsigned), FUInt(AValue) {}
  TVarRec(unsigned long AValue) noexcept : FKind(TKind::vtUnsigned), FUInt(AValue) {}
  TVarRec(unsigned long long AValue) noexcept : FKind(TKind::vtUnsigned), FUInt(AValue) {}
  TVarRec(double AValue) noexcept : FKind(TKind::vtExtended), FFloat(AValue) {}
  TVarRec(char16_t AValue) noexcept : FKind(TKind::vtChar), FChar(AValue) {}
  /// The text must outlive the Format call (temporaries in the argument list do).
  TVarRec(const UnicodeString& AValue) noexcept : FKind(TKind::vtString), FText(AValue) {}
  TVarRec(const char16_t* AValue) noexcept : FKind(TKind::vtString), FText(AValue) {}
  /// ASCII or UTF-8 text.
  TVarRec(const std::string& AValue) noexcept : FKind(TKind::vtAnsiString), FBytes(AValue) {}
  TVarRec(const char* AValue) noexcept : FKind(TKind::vtAnsiString), FBytes(AValue) {}

  TKind Kind() const noexcept { return FKind; }
  Int64 AsInt() const noexcept { return FInt; }
  UInt64 AsUInt() const noexcept { return FUInt; }
  double AsFloat() const noexcept { return FFloat; }
  char16_t AsChar() const noexcept { return FChar; }
  std::u16string_view AsText() const noexcept { return FText; }
  std::string_view AsBytes() const noexcept { return FBytes; }

private:
  TKind FKind;
  union {
    Int64 FInt;
    UInt64 FUInt;
    double FFloat;
    char16_t FChar;
    std::u16string_view FText;
    std::string_view FBytes;
  };
};
using TFormatArgs = std::initializer_list<TVarRec>;

/// Knows %s, %d, %u, %x, %X, %e, %f, %g and %%, each with an optional argument index ("%1:s"),
/// a left-justify flag, a width and a precision. A specifier that doesn't fit its argument, or a
/// missing argument, raises EConvertError.
UnicodeString Format(std::u16string_view AFormat, TFormatArgs AArgs);
UnicodeString Format(std::u16string_view AFormat, const TVarRec* AArgs, Integer AArgsHigh);

// --- exceptions
// -----------------------------------------------------------------------------------
/// Root of all failures; what() gives the message as UTF-8.
class Exception : public std::exception {
public:
  explicit Exception(UnicodeString AMessage);
  Exception(std::u16string_view AFormat, TFormatArgs AArgs);
  const char* what() const noexcept override { return FWhat.c_str(); }
  const UnicodeString& Message() const noexcept { return FMessage; }
  void SetMessage(UnicodeString AMessage);

private:
  UnicodeString FMessage;
  std::string FWhat;
};

#define LX_EXCEPTION_CLASS(Name, Base)                                                             \
  class Name : public Base {                                                                       \
  public:                                                                                          \
    using Base::Base;                                                                              \
  }

LX_EXCEPTION_CLASS(EConvertError, Exception);
LX_EXCEPTION_CLASS(EListError, Exception);
LX_EXCEPTION_CLASS(EInvalidCast, Exception);
LX_EXCEPTION_CLASS(EInvalidOperation, Exception);
LX_EXCEPTION_CLASS(EAbstractError, Exception);
LX_EXCEPTION_CLASS(EStreamError, Exception);
LX_EXCEPTION_CLASS(EFilerError, EStreamError);
LX_EXCEPTION_CLASS(EReadError, EFilerError);
LX_EXCEPTION_CLASS(EWriteError, EFilerError);
LX_EXCEPTION_CLASS(EFCreateError, EStreamError);
LX_EXCEPTION_CLASS(EFOpenError, EStreamError);
LX_EXCEPTION_CLASS(EParserError, Exception);
LX_EXCEPTION_CLASS(ENotSupportedException, Exception);
LX_EXCEPTION_CLASS(EArgumentException, Exception);
LX_EXCEPTION_CLASS(EArgumentOutOfRangeException, EArgumentException);
LX_EXCEPTION_CLASS(EAssertionFailed, Exception);
LX_EXCEPTION_CLASS(EEncodingError, Exception);
LX_EXCEPTION_CLASS(EClassNotFound, Exception);
LX_EXCEPTION_CLASS(EComponentError, Exception);
LX_EXCEPTION_CLASS(EVariantError, Exception);
LX_EXCEPTION_CLASS(EVariantTypeCastError, EVariantError);
LX_EXCEPTION_CLASS(EVariantInvalidOpError, EVariantError);
LX_EXCEPTION_CLASS(EVariantOverflowError, EVariantError);
LX_EXCEPTION_CLASS(EVariantBadIndexError, EVariantError);
LX_EXCEPTION_CLASS(EVariantInvalidArgError, EVariantError);

/// Raises EAssertionFailed with AMessage when ACondition is false: misuse by a caller.
[[noreturn]] void RaiseAssertionFailed(std::u16string_view AMessage);
inline void Assert(bool ACondition, std::u16string_view AMessage = u"Assertion failed") {
  if (!ACondition) [[unlikely]]
    RaiseAssertionFailed(AMessage);
}
/// A literal message is measured only when it is raised: the checks sit on hot paths.
template <std::size_t N> inline void Assert(bool ACondition, const char16_t (&AMessage)[N]) {
  if (!ACondition) [[unlikely]]
    RaiseAssertionFailed(std::u16string_view(AMessage, N - 1));
}

// --- format settings
// ------------------------------------------------------------------------------
/// Stands for the system's regional settings; process-wide, to be set once at start (tests set
/// the decimal separator to ',' to play a system with decimal commas).
struct TFormatSettings {
  WideChar DecimalSeparator = u'.';
  WideChar ThousandSeparator = u',';
  WideChar DateSeparator = u'-';
  WideChar TimeSeparator = u':';
};
extern TFormatSettings FormatSettings;

// --- UTF-8 and UTF-16
// -----------------------------------------------------------------------------
/// Ill-formed input becomes U+FFFD; nothing raises.
UnicodeString UTF8ToString(std::string_view AUTF8);
std::string StringToUTF8(std::u16string_view AText);
/// ASCII text to UTF-16, for literals and messages written in plain char.
UnicodeString AsciiToString(std::string_view AText);

// --- numbers to text and back
// ---------------------------------------------------------------------
UnicodeString IntToStr(Int64 AValue);
UnicodeString UIntToStr(UInt64 AValue);
UnicodeString IntToHex(UInt64 AValue, Integer ADigits);
/// Decimal digits with an optional sign, or hexadecimal digits behind '$'. Anything else, blanks
/// and the empty text too, raises EConvertError "'%s' is not a valid integer value".
Integer StrToInt(std::u16string_view AText);
Int64 StrToInt64(std::u16string_view AText);
Integer StrToIntDef(std::u16string_view AText, Integer ADefault) noexcept;
Int64 StrToInt64Def(std::u16string_view AText, Int64 ADefault) noexcept;
bool TryStrToInt(std::u16string_view AText, Integer& AValue) noexcept;
bool TryStrToInt64(std::u16string_view AText, Int64& AValue) noexcept;
bool TryStrToUInt64(std::u16string_view AText, UInt64& AValue) noexcept;
/// A decimal number with the decimal separator of the settings and an optional exponent;
/// "NAN", "INF" and "-INF" too. A bad text raises EConvertError.
double StrToFloat(std::u16string_view AText);
double StrToFloat(std::u16string_view AText, const TFormatSettings& ASettings);
double StrToFloatDef(std::u16string_view AText, double ADefault) noexcept;
bool TryStrToFloat(std::u16string_view AText, double& AValue) noexcept;
bool TryStrToFloat(std::u16string_view AText, double& AValue,
                   const TFormatSettings& ASettings) noexcept;
/// The general format with 15 significant digits: plain digits, or the exponent form ("1E20",
/// "1.5E-7") below 0.00001 in magnitude or with more than 15 digits before the point.
UnicodeString FloatToStr(double AValue);
UnicodeString FloatToStr(double AValue, const TFormatSettings& ASettings);
UnicodeString BoolToStr(bool AValue, bool AUseBoolStrs = false);
/// "true"/"false" in any case, or a number (non-zero is true); else EConvertError.
bool StrToBool(std::u16string_view AText);
bool TryStrToBool(std::u16string_view AText, bool& AValue) noexcept;

// --- the running program
// -------------------------------------------------------------------------
/// The full file name of the running program; empty where the system doesn't tell.
UnicodeString ProgramFileName();
/// The part of a file name behind its last directory separator.
UnicodeString ExtractFileName(std::u16string_view AFileName);
/// The file name with its extension (from the last '.' of the name part) replaced by AExtension.
UnicodeString ChangeFileExt(std::u16string_view AFileName, std::u16string_view AExtension);

// --- text helpers
// ---------------------------------------------------------------------------------
/// Takes off leading and trailing characters up to U+0020.
UnicodeString Trim(std::u16string_view AText);
UnicodeString TrimLeft(std::u16string_view AText);
UnicodeString TrimRight(std::u16string_view AText);
/// Equal apart from ASCII letter case.
bool SameText(std::u16string_view A, std::u16string_view B) noexcept;
/// Ordinal comparison ignoring ASCII letter case: <0, 0, >0.
int CompareText(std::u16string_view A, std::u16string_view B) noexcept;
/// Changes ASCII letters only, like the platform's functions of these names.
UnicodeString UpperCase(std::u16string_view AText);
UnicodeString LowerCase(std::u16string_view AText);
/// Part of a string: a position below 1 means 1, a count beyond the end means up to the end.
UnicodeString Copy(std::u16string_view AText, Integer AIndex, Integer ACount);
/// First position (from 1) of ASubStr in AText; 0 when absent, and for an empty ASubStr.
Integer Pos(std::u16string_view ASubStr, std::u16string_view AText) noexcept;
UnicodeString StringReplaceAll(std::u16string_view AText, std::u16string_view AOld,
                               std::u16string_view ANew);

} // namespace lorvane
