/// Text values and their form in a document:
///   cLxCDATAEndA, cLxCDATAEndW        the two characters "]>" that close a CDATA section
///   ELxSAXException and descendants   failures of the event interfaces, for applications
///   LxStrToXML                        a value to text that may stand in a document
///   LxXMLToStr                        text as a document holds it to the value it stands for
///
/// Each operation has a UTF-16 form (std::u16string_view, so UnicodeString and u"..." literals)
/// and a byte form (std::string_view, so RawByteString and "..." literals); the argument's
/// character type picks the form, and a literal never matches both. A view made from a literal
/// ends at its first NUL: pass a UnicodeString or RawByteString to hand over text with U+0000.
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/core/LxStreams.h"

#include <string_view>

namespace lorvane {

/// The closing characters of a CDATA section behind its first ']': one byte each, and 16 bits
/// each.
inline constexpr std::string_view cLxCDATAEndA{"]>", 2};
inline constexpr std::u16string_view cLxCDATAEndW{u"]>", 2};

/// Declared for applications that report failures through the event interfaces; the library
/// itself raises none of them.
class ELxSAXException : public ELxException {
public:
  using ELxException::ELxException;
};
class ELxSAXNotRecognizedException : public ELxSAXException {
public:
  using ELxSAXException::ELxSAXException;
};
class ELxSAXNotSupportedException : public ELxSAXException {
public:
  using ELxSAXException::ELxSAXException;
};

/// Replaces '<', '>' and '&' with "&lt;", "&gt;" and "&amp;", U+0001..U+001F (tab and line
/// breaks too) with "&#N;" in decimal, '\'' with "&apos;" when AEscapeApos, and '"' with "&quot;"
/// when AEscapeQuote. U+0000 is dropped; every other character, also above U+007F, passes.
/// Character data takes (true, true), attribute values (false, true).
UnicodeString LxStrToXML(std::u16string_view AValue, bool AEscapeApos, bool AEscapeQuote);

/// As the UTF-16 form on single bytes, byte by byte: bytes above 0x7F pass, so UTF-8 and other
/// multi-byte text comes out whole. A zero byte passes too.
RawByteString LxStrToXML(std::string_view AValue, bool AEscapeApos, bool AEscapeQuote);

/// As the UTF-16 form on the ALength characters at ABuffer, appended to AStream (converted to
/// its code page); U+0000 passes. An ALength of 0 or below writes nothing. A nil AStream, or a
/// nil ABuffer with characters to read, raises EAssertionFailed.
void LxStrToXML(const WideChar* ABuffer, Integer ALength, TLxStringStream* AStream,
                bool AEscapeApos, bool AEscapeQuote);

/// Decodes character and entity references. From each '&' the text up to the first blank
/// (U+0020 only) or ';' is looked at; with no ';' before a blank or the end, nothing there is a
/// reference, and the '&'s passed on the way stay as they are. Between '&' and ';':
/// - "#" and decimal digits, or "#x" / "#X" and hexadecimal ones, go through StrToInt, and the
///   value's low 16 bits become one character (no surrogate pair is formed above U+FFFF);
///   digits that StrToInt refuses, none at all too, raise its EConvertError, such as
///   "'' is not a valid integer value" for "&#;" or "'$g' is not a valid integer value" for
///   "&#xg;".
/// - a name of HTML 4.01 (the Latin-1, symbol and special sets) or "apos" becomes its
///   character; names are case-sensitive. The look-up is by a 32-bit key, not by name: the low
///   bytes c0..c7 of a name of at most 8 characters (0 behind its end) give the key bytes
///   c0+c7, c1+c6, c2+c5, c3+c4 (mod 256). So a name of 4 characters or fewer that isn't in
///   the table but spells a known name's key, such as "&Ag\u00D7\u00D7;" for Agrave, gets that
///   entity's character. Names over 8 characters and unknown keys stay as they are: no failure.
UnicodeString LxXMLToStr(std::u16string_view AValue);

/// The small decoder of single-byte text: the same scan, then only the first character behind
/// '&' counts. "#..." is a numeric reference as above, its value written as a character of the
/// default code page ('?' where that can't hold it); 'a'/'A' gives '&' when 'm'/'M' follows and
/// '\'' otherwise; 'g'/'G' gives '>', 'l'/'L' '<', 'q'/'Q' '"'; anything else stays as it is.
RawByteString LxXMLToStr(std::string_view AValue);

} // namespace lorvane
