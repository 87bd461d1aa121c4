// JSON string escaping into caller-provided memory, for the writers of this module and the
// serializers above it, which write many short strings and want no heap string per piece.
#pragma once

#include <cstddef>

namespace lorvane::jsonwriter {

/// AText escaped as AppendJSONEscaped escapes it, written at AOut, which has room for six units
/// per unit of AText; the end of what was written. The narrow forms take bytes as the units
/// below U+0100; the char output is that text in UTF-8 (the escapes leave only units below
/// U+0100, which take one or two bytes).
char16_t* EscapeInto(char16_t* AOut, const char16_t* AText, std::size_t ALength) noexcept;
char16_t* EscapeInto(char16_t* AOut, const char* AText, std::size_t ALength) noexcept;
char* EscapeInto(char* AOut, const char16_t* AText, std::size_t ALength) noexcept;
char* EscapeInto(char* AOut, const char* AText, std::size_t ALength) noexcept;

} // namespace lorvane::jsonwriter
