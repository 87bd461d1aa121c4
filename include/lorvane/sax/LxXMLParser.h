/// The XML text cursor: the encoding decision at construction, the delimiter table in the width
/// of the source, the two checks on the current character; and the XML reading failures with
/// their messages and codes.
#pragma once

#include "lorvane/core/LxTextParser.h"

namespace lorvane {

class ELxXMLException : public ELxException {
public:
  using ELxException::ELxException;
};

/// Every failure of XML reading, with one of the codes below.
class ELxXMLParseError : public ELxXMLException {
public:
  using ELxXMLException::ELxXMLException;
};

inline constexpr char16_t _cLxXMLNotWellFormed[] =
    u"The document is not wellformed!\r\n\"%s\" expected, but \"%s\" found!";
inline constexpr char16_t _cLxXMLInvalidNameStartchar1[] =
    u"The current character \"%s\" is only a valid NameStartChar when NameSpaces are not "
    u"supported!";
inline constexpr char16_t _cLxXMLInvalidNameStartchar2[] =
    u"The current character \"%s\" is not a valid NameStartChar!";
inline constexpr char16_t _cLxXMLListIndexOutOfBounds1[] = u"List index (%d) out of bounds!";
inline constexpr char16_t _cLxXMLListIndexOutOfBounds2[] = u"List index (%s) out of bounds!";
inline constexpr char16_t _cLxXMLListIndexOutOfBounds3[] = u"List index (%s-%s) out of bounds!";
inline constexpr char16_t _cLxXMLDOCTypeExpected[] = u"\"DOCTYPE\" expected, but \"%s\" found";
inline constexpr char16_t _cLxXMLCDATAExpected[] = u"![CDATA[ expected, but \"%s\" found";
inline constexpr char16_t _cLxXMLMissingAttribute[] =
    u"The document is not wellformed!\r\nMissing attribute value.";
inline constexpr char16_t _cLxXMLELMNotClosed[] =
    u"The document is not wellformed!\r\nAn element was not closed correctly (Row: %d, Col: %d).";
inline constexpr char16_t _cLxXMLMultipleRoot[] =
    u"The document is not wellformed!\r\nA XML document may not contain multiple root elements.";
inline constexpr char16_t _cLxXMLNoContentHandler[] = u"No contenthandler has been assigned!";
inline constexpr char16_t _cLxXMLNoErrorHandler[] = u"No errorhandler has been assigned!";
inline constexpr char16_t _cLxXMLInvalidTextAtRoot[] =
    u"The document is not wellformed!\r\nAn invalid token was detected at the root level of the "
    u"document.";
/// For applications; no reader raises it.
inline constexpr char16_t _cLxXMLEncodingNotSupported[] =
    u"The specified encoding is not supported!";

/// The error codes that go with the messages above.
enum : Integer {
  cLxXMLErrNotWellFormed = 2,
  cLxXMLErrInvalidNameStartChar = 3,
  cLxXMLErrListIndexOutOfBounds = 4,
  cLxXMLErrDOCTypeExpected = 5,
  cLxXMLErrCDATAExpected = 6,
  cLxXMLErrMissingAttribute = 7,
  cLxXMLErrELMNotClosed = 8,
  cLxXMLErrMultipleRoot = 9,
  cLxXMLErrNoContentHandler = 10,
  cLxXMLErrNoErrorHandler = 11,
  cLxXMLErrInvalidTextAtRoot = 12
};

class TLxXMLParser;
/// Skip by comparison with the delimiter at ACharPtr, in the width of the source.
using TLxXMLTextParserSkipFunc = void (TLxXMLParser::*)(TLxTextParserSkipOp AOperator,
                                                        const void* ACharPtr);
/// Compare the raw current character with the delimiter at ACharPtr.
using TLxXMLTextParserCheckFunc = bool (TLxXMLParser::*)(const void* ACharPtr, bool ARaise);

/// Encoding decision: a byte order mark (read only with AReadBOM) beats the caller's code page,
/// which beats the declaration; a text with none of the three is UTF-8. A declared name that
/// LxCodePage doesn't know raises what LxCodePage raises, out of the constructor.
class TLxXMLParser : public TLxTextParser {
  LX_CLASS(TLxXMLParser, TLxTextParser)
  TLxXMLParser(TStream* ASourceStream, bool AStreamOwner, bool AReadBOM, Word AStreamCodePage);

  void SetCharacterSetType(TLxCharacterSetType ACharSet) override;

  void SkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr) {
    (this->*FSkipWhile)(AOperator, ACharPtr);
  }
  using TLxTextParser::SkipWhile;
  /// The comparison of CheckCurrChar without raising, inlined for the reader's loop.
  using TLxTextParser::RawEquals;
  /// The raw window, for the reader's scan of a whole tag in place (see TLxTextParser).
  using TLxTextParser::DecodeInto;
  using TLxTextParser::RawCursor;
  using TLxTextParser::RawReadEnd;
  using TLxTextParser::SetRawCursor;
  /// Whether the raw current character equals the delimiter; on a mismatch with ARaise,
  /// ELxXMLParseError code 2 naming the expected character and CurrChar's text (empty at the
  /// end).
  bool CheckCurrChar(const void* ACharPtr, bool ARaise) {
    return (this->*FCheckCurrChar)(ACharPtr, ARaise);
  }
  void SrcASkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr);
  void SrcUSkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr);
  void SrcWSkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr);
  bool SrcACheckCurrChar(const void* ACharPtr, bool ARaise);
  bool SrcUCheckCurrChar(const void* ACharPtr, bool ARaise);
  bool SrcWCheckCurrChar(const void* ACharPtr, bool ARaise);
  /// Raises ELxXMLParseError code 3 unless the current character (one UTF-16 unit) may begin a
  /// name: the colon gives the first message, anything outside NameStartChar the second.
  void CheckValidNameStartChar();

  // The delimiter table, in the width of the source.
  const void* FAmp = nullptr;
  const void* FApos = nullptr;
  const void* FEqual = nullptr;
  const void* FGt = nullptr;
  const void* FLt = nullptr;
  const void* FQuest = nullptr;
  const void* FQuote = nullptr;
  const void* FSlash = nullptr;
  const void* FSpace = nullptr;
  const void* FExcl = nullptr;
  const void* FLine = nullptr;
  const void* FColon = nullptr;
  const void* FSemiColon = nullptr;
  const void* FBracketOA = nullptr;
  const void* FBracketCA = nullptr;

protected:
  ~TLxXMLParser() override = default;

private:
  void DecideEncodingFromDeclaration();
  /// The current character as a message shows it; empty at the end.
  [[noreturn]] void RaiseNotWellFormed(WideChar AExpected);

  TLxXMLTextParserSkipFunc FSkipWhile = nullptr;
  TLxXMLTextParserCheckFunc FCheckCurrChar = nullptr;
};

} // namespace lorvane
