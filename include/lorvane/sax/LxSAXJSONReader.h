/// TLxSAXJSONReader: JSON text read as if it were an XML document with one root element, so that
/// every consumer of XML events (the event component, the document loader) takes JSON too.
#pragma once

#include "lorvane/json/LxJSONTextParser.h"
#include "lorvane/sax/LxSAXReader.h"

namespace lorvane {

/// The JSON text cursor as the XML event reader drives it; it adds nothing.
class TLxJSONTextParserEx : public TLxJSONTextParser {
  LX_CLASS(TLxJSONTextParserEx, TLxJSONTextParser)
  TLxJSONTextParserEx(TStream* ASourceStream, bool AStreamOwner, Word AStreamCodePage);

protected:
  ~TLxJSONTextParserEx() override = default;
};

/// The shape of the events:
///   the whole text       root element "object" (text starting with '{') or "array" ('['),
///                        with the attributes xmlns:xsi and xmlns:xsd
///   member "n": simple   element n with xsd:type "string", "decimal" or "boolean", or
///                        xsi:nil "true" for null, and one Characters of the raw value text
///   member "n": object   element n, its members inside
///   member "n": array    element nArray, each item inside as an element n (an array in it as
///                        nArray again)
/// Every name has an empty namespace URI, and local and qualified name are the same. A member
/// name is made an XML name: each unit that can't stand in one becomes '_', an empty name is
/// "_", and a name that can't start one gets a '_' in front. Text is raw JSON, escapes and all.
/// Several top-level values go into the one root, named after the first; anything before the
/// first '[' or '{' is passed over.
///
/// Failures go to the error handler's FatalError, then to the caller: ELxJSONParseError code 2
/// (_cLxJSONNotWellFormed) for a text without '[' or '{', a wrong keyword letter, a value that
/// can't start where it stands, a bad escape, or text behind a top-level value;
/// ELxTextParserEOF for a text that ends inside an object or array, after which the locator
/// reports line 0 and column 0. Not through the error handler: no content handler
/// (ELxJSONException code 3), no error handler (code 4), an encoding the JSON cursor can't read
/// (Exception "The specified encoding is not supported!"). Events stop at a failure: nothing
/// open is closed.
///
/// The handlers of a parse are those set when it starts. Nesting is followed on a stack of its
/// own, not by recursion: any depth that fits in memory is read.
class TLxSAXJSONReader : public TLxSAXReader {
  LX_CLASS(TLxSAXJSONReader, TLxSAXReader)
  TLxSAXJSONReader() = default;

protected:
  ~TLxSAXJSONReader() override = default;
  /// A TLxJSONTextParserEx; AReadBOM isn't passed on, the JSON cursor decides the encoding.
  TLxTextParser* CreateParser(TStream* AStream, bool AStreamOwner, bool AReadBOM,
                              Word AStreamCodePage) override;
  void InternalParse() override;
  void ResetParseState() override;
};

/// A JSON member name as an XML name without colon: units outside NameChar become '_', an empty
/// name becomes "_", and '_' goes in front of a name whose first unit isn't a NameStartChar.
void LxJSONNameToXMLName(std::u16string_view ARawName, LxXMLString& AXMLName);

} // namespace lorvane
