/// Regular expressions, Perl-compatible, on UTF-16 text:
///   TRegExOption, TRegExOptions   ignore case, multi-line, single-line, ignore pattern space,
///                                 explicit capture
///   ERegularExpressionError       a pattern the engine refuses, or a match it gives up on
///   TRegEx                        one compiled pattern: IsMatch, Replace, Split, and the
///                                 class-level forms that take the pattern with each call
///
/// Patterns are compiled in UTF mode with Unicode properties: \d, \w, \s and case-insensitive
/// matching know every Unicode letter and digit, and "." takes a surrogate pair as one character.
/// A lone surrogate in a subject is a character that nothing but itself matches; in a pattern it
/// is refused. A line end for "^", "$" and "." is LF.
///
/// A match that makes the engine backtrack more than cRegExMatchLimit times gives up with
/// ERegularExpressionError "Error matching the regex: match limit exceeded" instead of running
/// for ever.
///
/// Compiled patterns are kept per thread in a small cache (cRegExCacheSize entries, the least
/// recently used one dropped first), so the class-level forms compile a pattern once however
/// often one thread calls them with it. Everything here is safe on any thread.
#pragma once

#include "lorvane/platform/SysUtils.h"
#include "lorvane/platform/System.h"

#include <memory>
#include <string_view>
#include <vector>

namespace lorvane {

enum TRegExOption : Byte {
  roNone,
  roIgnoreCase,
  roMultiLine,          ///< "^" and "$" match at line ends too
  roExplicitCapture,    ///< only named groups capture
  roSingleLine,         ///< "." matches a line end too
  roIgnorePatternSpace, ///< blanks in the pattern don't count, "#" starts a comment
};
using TRegExOptions = TSet<TRegExOption, 8>;

/// A pattern that doesn't compile: "Error in regular expression at offset %d: %s", the offset
/// counting UTF-16 units from 0; a match the engine gives up on: "Error matching the regex: %s".
LX_EXCEPTION_CLASS(ERegularExpressionError, Exception);

/// How many times one match may backtrack before it gives up.
constexpr UInt64 cRegExMatchLimit = 10'000'000;
/// How many compiled patterns each thread keeps.
constexpr Integer cRegExCacheSize = 64;

namespace detail {
struct TRegExCode;
}

class TRegEx {
public:
  /// Compiles APattern (or takes it from the thread's cache); raises ERegularExpressionError.
  explicit TRegEx(std::u16string_view APattern, TRegExOptions AOptions = {});

  /// Whether the pattern matches anywhere in AInput.
  bool IsMatch(std::u16string_view AInput) const;

  /// AInput with every match replaced by AReplacement, read left to right; an empty match
  /// directly behind another match counts too, as in Perl ("x*" on "abc" with "-" gives "-a-b-c-").
  /// In AReplacement "$" or "\" followed by:
  ///   one or two digits   the group of that number (two digits only where such a group exists;
  ///                       a group that took part in no match, or doesn't exist, is empty)
  ///   "{name}" "{n}"      the named or numbered group
  ///   "&"                 the whole match ("$0" too)
  ///   "`" "'"             the text before, after the match
  ///   "_"                 the whole input
  ///   "$" "\"             that character itself
  /// and any other character after "$" or "\" stands for both as written.
  UnicodeString Replace(std::u16string_view AInput, std::u16string_view AReplacement) const;

  /// The parts of AInput between the matches, from left to right. Empty parts between two
  /// matches, before the first and after the last are kept; an empty match cuts nothing. An
  /// empty AInput has no parts.
  std::vector<UnicodeString> Split(std::u16string_view AInput) const;

  static bool IsMatch(std::u16string_view AInput, std::u16string_view APattern,
                      TRegExOptions AOptions = {});
  static UnicodeString Replace(std::u16string_view AInput, std::u16string_view APattern,
                               std::u16string_view AReplacement, TRegExOptions AOptions = {});
  static std::vector<UnicodeString> Split(std::u16string_view AInput, std::u16string_view APattern,
                                          TRegExOptions AOptions = {});

  /// How many patterns this thread has compiled since it started (cache hits don't count).
  static UInt64 CompiledOnThisThread() noexcept;

private:
  std::shared_ptr<const detail::TRegExCode> FCode;
};

} // namespace lorvane
