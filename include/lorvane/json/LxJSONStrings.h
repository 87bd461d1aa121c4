/// The two routines through which every JSON string passes:
///   LxStrToJSON   plain text to the text between the quotes (escapes written)
///   LxJSONtoStr   raw text, as the reader delivers it, to plain text (escapes undone)
/// and LxStrToJSONLiteral, a whole string literal in UTF-8 with the fewest escapes, for output
/// that people and scripts read (lxtool's event lines).
#pragma once

#include "lorvane/json/LxJSONTypes.h"

#include <string_view>

namespace lorvane {

/// Each UTF-16 unit by itself: '"', '/' and '\' get a backslash; U+0008, U+0009, U+000A, U+000C
/// and U+000D become \b \t \n \f \r; U+0001..U+0007 are dropped; other units below U+0100 stay
/// as they are (U+000B and U+000E..U+001F too); units from U+0100 on become \uXXXX with
/// upper-case digits, each half of a surrogate pair on its own.
UnicodeString LxStrToJSON(std::u16string_view AStr);
/// LxStrToJSON appended to ATarget, for writers that collect text.
void AppendJSONEscaped(UnicodeString& ATarget, std::u16string_view AStr);

/// AStr as a JSON string literal in UTF-8, the quotes included, escaped as little as JSON allows:
/// '"' and '\' get a backslash; U+0000..U+001F and lone surrogates (which UTF-8 can't hold)
/// become \uXXXX with upper-case digits; every other character, a surrogate pair too, stands as
/// itself.
RawByteString LxStrToJSONLiteral(std::u16string_view AStr);

/// Undoes \n \r \t \f \b \\ \/ \" and \uXXXX (one UTF-16 unit each: a pair written as two
/// escapes comes out as the pair, a lone half passes through); \%XX gives the byte XX as one
/// character; any other escaped character stands for itself. With AType jdtNumber a bare %XX is
/// decoded too. A backslash at the very end gives a NUL character. Digits that aren't
/// hexadecimal raise EConvertError.
UnicodeString LxJSONtoStr(std::u16string_view AJSON, TLxJSONDataType AType);

/// Whether LxJSONtoStr would change AJSON: it holds a backslash, or with jdtNumber a percent
/// sign. Most texts hold neither, and a caller can then take them as they are.
bool JSONTextHasEscapes(std::u16string_view AJSON, TLxJSONDataType AType) noexcept;

} // namespace lorvane
