/// The walk of a path over the tree, shared by the entry points and by the paths inside filters:
///   TXPathContext      match mode, collation and create flag of one selection
///   TXPathResult       the nodes found, each once, in the order found
///   XPathSelect        one selection: alternatives, start node, steps
///   TXPathDepthGuard   bounds the nesting of selections, groups and filters
///   FindXPathCollation the collation registered for a URI
///   XPathNodeArgument  the node that a function's optional node argument names
#pragma once

#include "lorvane/xpath/LxXPath.h"

#include <algorithm>
#include <unordered_set>

namespace lorvane {

struct TXPathContext {
  bool LocalNames;
  bool Create;
  TLxXPathCollationClass Collation;
};

/// A node joins once, whatever the number of ways it is reached: the set beside the list keeps
/// the test constant per node.
class TXPathResult {
public:
  void Add(TLxDOMNode* ANode) {
    // A short list is searched; the set is made once the list grows.
    if (Nodes.size() < cSearched) {
      if (std::find(Nodes.begin(), Nodes.end(), ANode) == Nodes.end())
        Nodes.push_back(ANode);
      return;
    }
    if (Seen.empty())
      Seen.insert(Nodes.begin(), Nodes.end());
    if (Seen.insert(ANode).second)
      Nodes.push_back(ANode);
  }
  TLxXPathNodes Nodes;

private:
  static constexpr size_t cSearched = 16;
  std::unordered_set<TLxDOMNode*> Seen;
};

/// Appends to AResult what APath selects from AStart. Every path of any depth is walked on an
/// explicit stack; only groups and filters nest calls, under TXPathDepthGuard.
void XPathSelect(TLxDOMNode* AStart, std::u16string_view APath, bool AFirstOnly,
                 const TXPathContext& AContext, TXPathResult& AResult);

/// Registers the walk as the tree's path hook.
void RegisterXPathSelection();

/// Nested selections, groups, lists and parentheses of one thread: beyond cXPathMaxDepth they
/// raise ELxDomSyntax SXPathTooDeep instead of exhausting the stack.
inline constexpr Integer cXPathMaxDepth = 256;
inline constexpr std::u16string_view SXPathTooDeep = u"The XPath expression is nested too deeply!";

class TXPathDepthGuard {
public:
  TXPathDepthGuard();
  ~TXPathDepthGuard() { --Depth(); }
  TXPathDepthGuard(const TXPathDepthGuard&) = delete;
  TXPathDepthGuard& operator=(const TXPathDepthGuard&) = delete;

private:
  static Integer& Depth() noexcept;
};

/// AText without the characters up to U+0020 at both ends.
inline std::u16string_view TrimView(std::u16string_view AText) noexcept {
  std::size_t Start = 0;
  std::size_t End = AText.size();
  while (Start < End && AText[Start] <= u' ')
    ++Start;
  while (End > Start && AText[End - 1] <= u' ')
    --End;
  return AText.substr(Start, End - Start);
}

/// The collation registered for ACollationNS (compared exactly); raises ELxDomSyntax "The
/// collation \"%s\" is not supported!" for an unknown one.
TLxXPathCollationClass FindXPathCollation(const UnicodeString& ACollationNS);

/// The names of the registered functions, in the order of registration.
std::vector<UnicodeString> RegisteredXPathFunctionNames();

/// The words of one function for the node argument rule.
struct TXPathNodeArgument {
  std::u16string_view Name;      ///< "fn:node-name(node)"
  std::u16string_view Parameter; ///< "node" or "arg", as the messages name it
  std::u16string_view TooMany;   ///< the ELxDomSyntax message for two or more arguments
  bool OtherTermIsValue;         ///< whether a term that is no path gives its value instead
};

/// The node the argument names: the candidate without one, the single node of a path argument
/// (none raises "XPDY0002", several "XPTY0004"). Gives nil with AValue set for a term that gives
/// its value (OtherTermIsValue); another term raises "XPTY0004" "... must be a node!".
TLxDOMNode* XPathNodeArgument(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList,
                              Integer AIndex, const TXPathNodeArgument& AWords, Variant* AValue);

} // namespace lorvane
