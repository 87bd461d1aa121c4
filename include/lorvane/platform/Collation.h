/// Two text orders that are total and the same on every machine: code point order, and a
/// case-insensitive order whose equality is Unicode simple case folding.
#pragma once

#include "lorvane/platform/System.h"

#include <string_view>

namespace lorvane {

/// -1, 0 or 1.
/// Without AIgnoreCase: code point order (a supplementary character sorts above every BMP
/// character, unlike UTF-16 unit order); a lone surrogate counts as the code point of its value.
/// With AIgnoreCase: 0 exactly when both texts are equal after simple case folding, code point by
/// code point; otherwise the root collation orders the folded texts, and their code point order
/// breaks a tie. Safe from several threads: each thread opens its own collator on first use;
/// failure to open it raises Exception "The root collator can't be opened: %s".
Integer CompareStringInvariant(std::u16string_view A, std::u16string_view B, bool AIgnoreCase);

/// True exactly when CompareStringInvariant gives 0, without a collator: ASCII text never reaches
/// the case folding tables.
bool SameStringInvariant(std::u16string_view A, std::u16string_view B, bool AIgnoreCase) noexcept;

} // namespace lorvane
