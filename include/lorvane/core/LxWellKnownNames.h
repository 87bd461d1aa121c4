/// Names that the W3C publishes and the library compares with exactly: namespace names and the
/// collation URIs of the path functions.
#pragma once

#include <string_view>

namespace lorvane {

inline constexpr std::u16string_view cLxNsXSI = u"http://www.w3.org/2001/XMLSchema-instance";
inline constexpr std::u16string_view cLxNsXSD = u"http://www.w3.org/2001/XMLSchema";
/// The namespace bound to the prefix xml without any declaration.
inline constexpr std::u16string_view cLxNsXML = u"http://www.w3.org/XML/1998/namespace";
inline constexpr std::u16string_view cLxCollationCodepoint =
    u"http://www.w3.org/2005/xpath-functions/collation/codepoint";
inline constexpr std::u16string_view cLxCollationAsciiCI =
    u"http://www.w3.org/2005/xpath-functions/collation/html-ascii-case-insensitive";

} // namespace lorvane
