/// Small text helpers that the rest of the library calls:
///   LxIf               one of two strings or characters by a condition
///   LxLeft, LxPadLeft  the front of a string, and a string padded in front
///   LxTokenize         a string cut at each occurrence of a delimiter, or at each match of a
///                      regular expression, into a list
///   LxStripLiterals    a quoted literal without its quotes
///   LxCharCase         a name with its letter case changed (JSON member names, "ArrayOf" names)
///   LxLoadStringFromFile  the text of a file, by its byte order mark or a code page
///   LxPtr2Int          an address as a number
///   LxNormalizeString  a text in a Unicode normalization form
///   LxSimplifyString   a text reduced to a key for comparison: no accents, no case
#pragma once

#include "lorvane/platform/Classes.h"
#include "lorvane/platform/Normalization.h"
#include "lorvane/platform/RegularExpressions.h"

#include <string_view>

namespace lorvane {

/// ATrue when ACondition holds, else AFalse.
UnicodeString LxIf(bool ACondition, std::u16string_view ATrue, std::u16string_view AFalse);
WideChar LxIf(bool ACondition, WideChar ATrue, WideChar AFalse);

/// The first ACount characters; all of AValue when it is shorter, empty for a count up to 0.
UnicodeString LxLeft(std::u16string_view AValue, Integer ACount);

/// AValue with AFillChar in front up to ALength characters. AValue at or beyond that length comes
/// back unchanged, never cut.
UnicodeString LxPadLeft(std::u16string_view AValue, Integer ALength, WideChar AFillChar);

/// Clears AList and fills it with the parts of AValue between occurrences of ADelimiter, from
/// left to right, each occurrence taken whole and not overlapping the last one. Empty parts are
/// kept: "a,,b" gives "a", "", "b", and a delimiter at either end gives an empty first or last
/// part. An empty AValue gives no parts; an empty ADelimiter gives AValue as the one part.
///
/// AAlsoInto, when given, receives the same parts appended behind the lines it already holds
/// (it isn't cleared), so that the parts of several texts can be gathered in one list; the
/// library itself always passes nil. A nil AList raises EArgumentException "LxTokenize needs a
/// list for the parts".
void LxTokenize(std::u16string_view AValue, TStringList* AList, std::u16string_view ADelimiter,
                TStrings* AAlsoInto);

/// Clears AList and fills it with the parts of AInput between the matches of APattern, as
/// TRegEx::Split cuts them: empty parts are kept, an empty match cuts nothing, an empty AInput
/// gives no parts. A nil AList raises EArgumentException "LxTokenize needs a list for the parts";
/// a pattern the engine refuses raises ERegularExpressionError.
void LxTokenize(TStringList* AList, std::u16string_view AInput, std::u16string_view APattern,
                TRegExOptions AOptions);

/// A text that starts and ends with the same quote character (' or "), two characters long at
/// least, comes back without those two quotes; the text between them stays as it is (a doubled
/// quote inside isn't undone, blanks aren't trimmed). Any other text, an unterminated literal
/// too, comes back unchanged.
UnicodeString LxStripLiterals(std::u16string_view AValue);

/// AText with the letter case of ASCII letters changed (other characters never change, like
/// UpperCase and LowerCase). A word starts at the beginning of AText and after each character of
/// AWordSeparators; the separators stay as they are. AMode:
///   0  unchanged                                  4  each word's first letter raised
///   1  all lowered                                5  the first letter raised, the rest lowered
///   2  all raised                                 6  the first letter raised, the rest unchanged
///   3  each word's first letter raised, the       7  the first letter lowered, the rest unchanged
///      rest of the word lowered
/// "The first letter" is the first character of AText, whatever it is. The serializers use 7 for
/// JSON member names ("Name" → "name") and 6 for the element's name in "ArrayOf" names
/// ("string" → "String"). Any other mode raises EArgumentOutOfRangeException "LxCharCase has no
/// mode %d".
UnicodeString LxCharCase(std::u16string_view AText, Integer AMode,
                         std::u16string_view AWordSeparators);

/// The whole text of the file AFileName. A byte order mark at the start decides the encoding and
/// is dropped: EF BB BF is UTF-8, FF FE UTF-16 little endian, FE FF UTF-16 big endian. Without a
/// mark the bytes are read in ACodePage, where 0 is the process default code page as everywhere
/// in the library (1252 unless the application sets another) and 1200 reads UTF-16 little
/// endian. Bytes that don't decode become U+FFFD. A file that can't be opened raises EFOpenError
/// "Cannot open file \"%s\". %s"; a code page this library doesn't know raises EEncodingError
/// "Unsupported code page %d" (also when a mark makes it unneeded, so that a bad argument
/// shows whatever the file).
UnicodeString LxLoadStringFromFile(const TFileName& AFileName, Word ACodePage);

/// The address as a number, for identifiers built from object addresses; as wide as a pointer.
inline NativeInt LxPtr2Int(const void* AAddress) noexcept {
  return reinterpret_cast<NativeInt>(AAddress);
}

/// AText in the normalization form AForm; NormalizationOther gives it unchanged.
UnicodeString LxNormalizeString(std::u16string_view AText, TNorm_Form AForm);

/// AText reduced so that texts a reader takes for the same words compare equal: compatibility
/// characters replaced by their plain forms (ligatures, full-width letters), combining marks
/// removed, and the letter case folded. "Cr\u00E8me BR\u00DBL\u00C9E" gives "creme brulee",
/// "Stra\u00DFe" "strasse". Blanks and punctuation stay as they are.
UnicodeString LxSimplifyString(std::u16string_view AText);

} // namespace lorvane
