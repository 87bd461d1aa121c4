/// The hook through which the tree's path entry points (SelectSingleNode, CreateNodeList,
/// SelectSingleElement, CreateElementList by path) reach the path language, which lives in a
/// module above this one:
///   TLxDOMPathSelectFunc   runs one selection into a list
///   SetDOMPathSelector     registers it (the library's start-up does, for the xpath module)
///
/// A hook is plain storage, written at start and read without a lock afterwards. Without one the
/// entry points raise ENotSupportedException SNoDOMPathSupport.
#pragma once

#include "lorvane/dom/LxDOMTypes.h"

#include <string_view>

namespace lorvane {

class TLxDOMNode;
class TLxDOMNodeListBase;

/// Checks AOptions, chooses collation and match mode from them and AStart, and appends to
/// AResult each node that APath names from AStart, once. AFirstOnly stops behind the first
/// alternative that finds a node. Raises the path language's failures; what it appended
/// before a failure stays in AResult.
using TLxDOMPathSelectFunc = void (*)(TLxDOMNode* AStart, const UnicodeString& APath,
                                      TLxDOMSelectOptions AOptions, bool AFirstOnly,
                                      TLxDOMNodeListBase* AResult);

inline constexpr std::u16string_view SNoDOMPathSupport =
    u"Path selection is not available: no path module has registered its hook";

/// Gives the hook it replaces; nil clears it.
TLxDOMPathSelectFunc SetDOMPathSelector(TLxDOMPathSelectFunc AFunc);

} // namespace lorvane
