/// TLxFormURLEncodedJSONReader: the text of an HTML form post (name=value pairs joined by "&")
/// delivered as the events of one JSON object, so that every consumer of the JSON reader takes a
/// form post without knowing it.
#pragma once

#include "lorvane/json/LxJSONReader.h"

namespace lorvane {

/// Failures go straight to the caller, without the error handler (none is needed):
///   Exception "The parser expected to read a \"[\" character, but \"%s\", was read instead!"
///     when a key part doesn't open with "[" or "%5B" (a "]" with no "[" before it, say), with
///     the three characters read in its place;
///   Exception "Invalid UTF8 Encoding detected" when a "%XX" lead byte of a UTF-8 sequence isn't
///     followed by as many further "%XX" groups as it announces;
///   EConvertError when the two characters behind a "%" aren't hexadecimal digits;
///   ELxTextParserEOF when the text ends inside a "%XX" group or an encoded bracket;
///   Exception "The specified encoding is not supported!" from the text cursor, as for the JSON
///     reader; ELxJSONException code 3 when no content handler is set.
/// Every parse starts from a clean reader: the state of a pair's path lives in the parse only.
class TLxFormURLEncodedJSONReader : public TLxJSONReader {
  LX_CLASS(TLxFormURLEncodedJSONReader, TLxJSONReader)
  TLxFormURLEncodedJSONReader() = default;

protected:
  ~TLxFormURLEncodedJSONReader() override = default;
  void InternalParse() override;
};

} // namespace lorvane
