/// Unicode normalization of UTF-16 text:
///   TNorm_Form         the four forms, numbered as the platform numbers them
///   NormalizeString    a text in one of the forms
///   StripDiacritics    a text in compatibility decomposition without its combining marks
///
/// A lone surrogate passes through unchanged, as a character that nothing composes with.
#pragma once

#include "lorvane/platform/System.h"

#include <string_view>

namespace lorvane {

enum TNorm_Form : Byte {
  NormalizationOther = 0, ///< no normalization: the text as it is
  NormalizationC = 1,
  NormalizationD = 2,
  NormalizationKC = 5,
  NormalizationKD = 6,
};

/// AText in the form AForm; NormalizationOther and numbers that name no form give it unchanged.
/// A failure of the Unicode data raises Exception "Unicode normalization failed: %s".
UnicodeString NormalizeString(TNorm_Form AForm, std::u16string_view AText);

/// AText in NFKD with every nonspacing mark (general category Mn) removed, then composed again
/// (NFC): "\u00C5ngstr\u00F6m" gives "Angstrom", the ligature U+FB01 gives "fi".
UnicodeString StripDiacritics(std::u16string_view AText);

/// AText with Unicode full case folding applied ("Stra\u00DFe" gives "strasse").
UnicodeString FoldCase(std::u16string_view AText);

} // namespace lorvane
