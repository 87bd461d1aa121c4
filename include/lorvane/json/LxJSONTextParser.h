/// TLxJSONTextParser, the JSON text cursor: the encoding decision at construction, the delimiters
/// in the width of the source, and the skip and check on them.
#pragma once

#include "lorvane/core/LxTextParser.h"
#include "lorvane/json/LxJSONTypes.h"

namespace lorvane {

class TLxJSONTextParser;
/// Skip by comparison with the delimiter at ACharPtr, in the width of the source.
using TLxJSONTextParserSkipFunc = void (TLxJSONTextParser::*)(TLxTextParserSkipOp AOperator,
                                                              const void* ACharPtr);
/// Compare the raw current character with the delimiter at ACharPtr.
using TLxJSONTextParserCheckFunc = bool (TLxJSONTextParser::*)(const void* ACharPtr, bool ARaise);

/// Encoding decision: code page 1200, 65001, 1201 (UTF-16 big endian, which the text cursor
/// turns into 1200 as it reads) and every multi-byte code page are taken as given.
/// A single-byte code page (0 included) is never read as such: the first four bytes decide
/// between UTF-16 little endian (x 00 x 00) and UTF-8 (anything else); the patterns of UTF-32
/// and UTF-16 big endian raise Exception "The specified encoding is not supported!" out of the
/// constructor. A source shorter than four bytes counts NUL for the missing ones, so one ASCII
/// byte alone looks like UTF-32. The cursor stands on the first character afterwards.
class TLxJSONTextParser : public TLxTextParser {
  LX_CLASS(TLxJSONTextParser, TLxTextParser)
  TLxJSONTextParser(TStream* ASourceStream, bool AStreamOwner, Word AStreamCodePage);

  void SetCharacterSetType(TLxCharacterSetType ACharSet) override;

  void SkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr) {
    (this->*FSkipWhile)(AOperator, ACharPtr);
  }
  using TLxTextParser::SkipWhile;
  /// Whether the raw current character equals the delimiter (in csUTF8 its first byte: every
  /// delimiter is ASCII); on a mismatch with ARaise, ELxJSONParseError code 2 naming the
  /// expected character and the current one (empty at the end).
  bool CheckCurrChar(const void* ACharPtr, bool ARaise) {
    return (this->*FCheckCurrChar)(ACharPtr, ARaise);
  }
  /// The comparison of CheckCurrChar without raising, inlined for the reader's loops.
  using TLxTextParser::RawEquals;
  /// The raw window: the reader scans delimiters in it many units at a time.
  using TLxTextParser::RawAt;
  using TLxTextParser::RawCursor;
  using TLxTextParser::RawReadEnd;
  using TLxTextParser::ReadMoreRaw;
  using TLxTextParser::SetRawCursor;

  void SrcASkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr);
  void SrcUSkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr);
  void SrcWSkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr);
  bool SrcACheckCurrChar(const void* ACharPtr, bool ARaise);
  bool SrcUCheckCurrChar(const void* ACharPtr, bool ARaise);
  bool SrcWCheckCurrChar(const void* ACharPtr, bool ARaise);

  // The delimiters, in the width of the source.
  const void* FApos = nullptr;
  const void* FQuote = nullptr;
  const void* FSpace = nullptr;
  const void* FColon = nullptr;
  const void* FBackSlash = nullptr;
  const void* FBracketO = nullptr;
  const void* FBracketC = nullptr;
  const void* FBraceO = nullptr;
  const void* FBraceC = nullptr;
  const void* FEqual = nullptr;

protected:
  ~TLxJSONTextParser() override = default;

private:
  void DecideEncoding();
  [[noreturn]] void RaiseNotWellFormed(WideChar AExpected);

  TLxJSONTextParserSkipFunc FSkipWhile = nullptr;
  TLxJSONTextParserCheckFunc FCheckCurrChar = nullptr;
};

} // namespace lorvane
