/// The vocabulary shared by every part of JSON handling:
///   LxJSONString, TLxJSONDataType       text and the kinds of values
///   TLxJDOCSelectOption(s)              options of the tree's look-ups
///   ELxJSONException, ELxJSONParseError the failures, with the codes below
///   _cLxJSON...                         every message text
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/platform/System.h"

namespace lorvane {

/// JSON text: UTF-16.
using LxJSONString = UnicodeString;

enum TLxJSONDataType : Byte { jdtNull, jdtString, jdtNumber, jdtBoolean, jdtObject, jdtArray };
/// The kinds from jdtNull to jdtBoolean: what a single value can be.
using TLxJSONSimpleDataType = TLxJSONDataType;

enum TLxJDOCSelectOption : Byte { jsoRaise, jsoCreate, jsoCaseInsensitive };
using TLxJDOCSelectOptions = TSet<TLxJDOCSelectOption, 8>;

class ELxJSONException : public ELxException {
public:
  using ELxException::ELxException;
};

/// Malformed text, and a document without a root where one is needed.
class ELxJSONParseError : public ELxJSONException {
public:
  using ELxJSONException::ELxJSONException;
};

inline constexpr char16_t _cLxJSONScriptExprTooComplex[] =
    u"The specified script expression is too complex or not valid!";
/// For applications; nothing in the library raises it.
inline constexpr char16_t _cLxJSONNoSupportForScriptExpr[] =
    u"Script expressions are not yet supported!";
inline constexpr char16_t _cLxJSONEncodingNotSupported[] =
    u"The specified encoding is not supported!";
inline constexpr char16_t _cLxJSONNotWellFormed[] =
    u"The document is not wellformed!\r\n\"%s\" expected, but \"%s\" found!";
inline constexpr char16_t _cLxJSONNoContentHandler[] = u"No contenthandler has been assigned!";
inline constexpr char16_t _cLxJSONNoErrorHandler[] = u"No errorhandler has been assigned!";
inline constexpr char16_t _cLxJSONNoFile[] = u"There is no file \"%s\"";
inline constexpr char16_t _cLxJSONNoMember[] = u"There is no member with the name \"%s\"!";
inline constexpr char16_t _cLxJSONUnexpectedType[] = u"Unexptected JSON type!";
/// For applications; nothing in the library raises it.
inline constexpr char16_t _cLxJSONArrayExpected[] = u"Array expected. %s found.";
/// For applications; nothing in the library raises it.
inline constexpr char16_t _cLxJSONObjectExpected[] = u"Object expected. %s found.";
inline constexpr char16_t _cLxJSONMethodNotSupported[] =
    u"Instances of %s do not support the %s method!";
inline constexpr char16_t _cLxJSONNoRoot[] = u"There is no root value!";
inline constexpr char16_t _cLxJSONInvalidPathNoNodes[] = u"The specified path returned no nodes!";
/// For applications; nothing in the library raises it.
inline constexpr char16_t _cLxJSONInvaliPathMultipleNodes[] =
    u"The specified path returned more than 1 node!";
inline constexpr char16_t _cLxJSONInvalidPath[] = u"The specified path is not a valid JSON path.";
inline constexpr char16_t _cLxJSONInvalidCharInPath1[] =
    u"The specified path is not a valid JSON path. Character '%s' was expected, however '%s' "
    u"was found.";
inline constexpr char16_t _cLxJSONInvalidCharInPath2[] =
    u"The specified path is not a valid JSON path. A character ('%s') was detected on an "
    u"invalid position.";

/// The error codes that go with the messages above.
enum : Integer {
  cLxJSONErrTreeBuilder = 0, ///< "oeps?": the tree can't take the value where the text has it
  cLxJSONErrNotWellFormed = 2,
  cLxJSONErrNoContentHandler = 3,
  cLxJSONErrNoErrorHandler = 4,
  cLxJSONErrNoMember = 5,
  cLxJSONErrUnexpectedType = 6,
  cLxJSONErrMethodNotSupported = 9,
  cLxJSONErrNoRoot = 10,
  cLxJSONErrInvalidPathNoNodes = 11,
  cLxJSONErrInvalidPath = 13,
  cLxJSONErrInvalidCharInPath1 = 14,
  cLxJSONErrInvalidCharInPath2 = 15,
  cLxJSONErrScriptExprTooComplex = 17
};

/// The message of the tree builder when a value arrives where the tree can't take it.
inline constexpr char16_t cJSONTreeBuilderMisplaced[] = u"oeps?";

} // namespace lorvane
