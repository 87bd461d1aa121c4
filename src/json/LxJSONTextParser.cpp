// The JSON text cursor: encoding decision, delimiters and the checks on the current character.
#include "lorvane/json/LxJSONTextParser.h"

#include "lorvane/core/LxChars.h"
#include "lorvane/platform/CodePages.h"

#include <cstring>

namespace lorvane {

TLxJSONTextParser::TLxJSONTextParser(TStream* ASourceStream, bool AStreamOwner,
                                     Word AStreamCodePage)
    : TLxTextParser(ASourceStream, AStreamOwner, AStreamCodePage) {
  SetCharacterSetType(GetCharacterSetType());
  if (AStreamCodePage != CP_UTF16LE && IsSingleByteCodePage(AStreamCodePage))
    DecideEncoding();
}

void TLxJSONTextParser::DecideEncoding() {
  Byte B[4];
  for (Byte& Each : B)
    Each = ReadCharA();
  const bool Zero0 = B[0] == 0, Zero1 = B[1] == 0, Zero2 = B[2] == 0, Zero3 = B[3] == 0;
  const bool UTF32BE = Zero0 && Zero1 && Zero2 && !Zero3;
  const bool UTF16BE = Zero0 && !Zero1 && Zero2 && !Zero3;
  const bool UTF32LE = !Zero0 && Zero1 && Zero2 && Zero3;
  const bool UTF16LE = !Zero0 && Zero1 && !Zero2 && Zero3;
  if (UTF32BE || UTF16BE || UTF32LE)
    throw Exception(_cLxJSONEncodingNotSupported);
  if (UTF16LE) {
    SetCharacterSetType(csWide);
    SetContentCodePage(CP_UTF16LE);
  } else {
    SetCharacterSetType(csUTF8);
    SetContentCodePage(CP_UTF8);
  }
  First();
}

void TLxJSONTextParser::SetCharacterSetType(TLxCharacterSetType ACharSet) {
  TLxTextParser::SetCharacterSetType(ACharSet);
  if (ACharSet == csWide) {
    FApos = &cLxAposW, FQuote = &cLxQuoteW, FSpace = &cLxSpaceW, FColon = &cLxColonW;
    FBackSlash = &cLxBackSlashW, FBracketO = &cLxBracketOW, FBracketC = &cLxBracketCW;
    FBraceO = &cLxBraceOW, FBraceC = &cLxBraceCW, FEqual = &cLxEqualW;
    FSkipWhile = &TLxJSONTextParser::SrcWSkipWhile;
    FCheckCurrChar = &TLxJSONTextParser::SrcWCheckCurrChar;
    return;
  }
  FApos = &cLxAposA, FQuote = &cLxQuoteA, FSpace = &cLxSpaceA, FColon = &cLxColonA;
  FBackSlash = &cLxBackSlashA, FBracketO = &cLxBracketOA, FBracketC = &cLxBracketCA;
  FBraceO = &cLxBraceOA, FBraceC = &cLxBraceCA, FEqual = &cLxEqualA;
  if (ACharSet == csUTF8) {
    FSkipWhile = &TLxJSONTextParser::SrcUSkipWhile;
    FCheckCurrChar = &TLxJSONTextParser::SrcUCheckCurrChar;
  } else {
    FSkipWhile = &TLxJSONTextParser::SrcASkipWhile;
    FCheckCurrChar = &TLxJSONTextParser::SrcACheckCurrChar;
  }
}

void TLxJSONTextParser::SrcASkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr) {
  SrcASkipWhileA(AOperator, *static_cast<const AnsiChar*>(ACharPtr));
}

void TLxJSONTextParser::SrcUSkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr) {
  SrcUSkipWhileA(AOperator, *static_cast<const AnsiChar*>(ACharPtr));
}

void TLxJSONTextParser::SrcWSkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr) {
  SrcWSkipWhileW(AOperator, *static_cast<const WideChar*>(ACharPtr));
}

void TLxJSONTextParser::RaiseNotWellFormed(WideChar AExpected) {
  throw ELxJSONParseError(_cLxJSONNotWellFormed, {UnicodeString(1, AExpected), CurrCharText()},
                          cLxJSONErrNotWellFormed);
}

bool TLxJSONTextParser::SrcACheckCurrChar(const void* ACharPtr, bool ARaise) {
  if (RawEquals(ACharPtr))
    return true;
  if (ARaise)
    RaiseNotWellFormed(*static_cast<const Byte*>(ACharPtr));
  return false;
}

bool TLxJSONTextParser::SrcUCheckCurrChar(const void* ACharPtr, bool ARaise) {
  return SrcACheckCurrChar(ACharPtr, ARaise);
}

bool TLxJSONTextParser::SrcWCheckCurrChar(const void* ACharPtr, bool ARaise) {
  if (RawEquals(ACharPtr))
    return true;
  if (ARaise)
    RaiseNotWellFormed(*static_cast<const WideChar*>(ACharPtr));
  return false;
}

} // namespace lorvane
