/// Text encodings of the core:
///   cLxUTF8, cLxUTF16LE, cLxUTF16BE  the byte order marks that output paths write
///   _SEncodingNotSupported     the message for an encoding that can't be read
///   TLxEncoding                UTF-16 to and from bytes in a code page
///   LxGetCodePage, LxCodePage  code page of a byte order mark, of a name, and a code page's name
///   LxStreamToAnsiString       the bytes of a stream as a byte string
///   TLxNetEncoding, TLxBase64Encoding  Base64 between bytes, strings and streams
#pragma once

#include "lorvane/platform/Streams.h"

#include <array>
#include <string_view>

namespace lorvane {

inline constexpr std::array<Byte, 3> cLxUTF8{0xEF, 0xBB, 0xBF};
inline constexpr std::array<Byte, 2> cLxUTF16LE{0xFF, 0xFE};
inline constexpr std::array<Byte, 2> cLxUTF16BE{0xFE, 0xFF};

inline constexpr char16_t _SEncodingNotSupported[] = u"The specified encoding is not supported!";

/// Conversions between UTF-16 and code pages. Code page 0 is the process default (1252 unless
/// the application sets another). Characters that a code page can't hold become '?', bytes that
/// don't decode become U+FFFD. A code page this library doesn't know raises EEncodingError
/// "Unsupported code page %d".
class TLxEncoding {
public:
  TLxEncoding() = delete;

  static RawByteString ConvertW(std::u16string_view AText, Word ACodePage);
  static UnicodeString ConvertA(std::string_view AText, Word ACodePage);
  static UnicodeString ConvertA(const void* AAddress, Integer ALength, Word ACodePage);
  /// A byte string carries no code page of its own here: it is taken to be in the default.
  static UnicodeString ConvertA(std::string_view AText);
};

/// Reads a byte order mark at the stream's position: EF BB BF gives 65001, FF FE gives 1200 and
/// FE FF 1201 (UTF-16 big endian, which the text cursor reads by turning it into 1200 block by
/// block), and the stream then stands behind the mark. Anything else gives 0 and leaves the
/// position as it was, also on an empty stream or one that ends within the first bytes of a mark.
Word LxGetCodePage(TStream* AStream);

/// The code page of an encoding name as XML declarations write it ("UTF-8", "ISO-8859-1",
/// "Shift_JIS", "utf-16", ...), in any letter case. An unknown name raises EEncodingError
/// "Unknown encoding name \"%s\"".
Word LxCodePage(std::u16string_view AName);
/// The preferred, lower-case name of a code page ("utf-8", "windows-1252"); 0 gives the
/// default's name. An unknown code page raises EEncodingError "Unsupported code page %d".
UnicodeString LxCodePage(Word ACodePage);

/// The bytes of a stream as a byte string.
///   AReadBOM          a byte order mark where reading starts is passed over (LxGetCodePage)
///   AFromStart        reading starts at position 0; else at the stream's position
///   ARestorePosition  afterwards the stream stands where it stood before the call; else behind
///                     the last byte read
///   ACount            at most this many bytes; negative for all up to the end
///   ACodePage         0 gives the bytes as they stand. Any other code page is the one the caller
///                     wants: the bytes are taken to be in it already, unless a mark passed over
///                     by AReadBOM names another, and then they are converted from that one.
/// So (false, true, true, -1, 0) gives all bytes from the start and leaves the stream alone.
RawByteString LxStreamToAnsiString(TStream* AStream, bool AReadBOM, bool AFromStart,
                                   bool ARestorePosition, Int64 ACount, Word ACodePage);

/// Base64 with the standard alphabet and '=' padding, without line breaks: the text goes into
/// XML and JSON values, where breaks would only need escaping. Stateless; one instance serves
/// all threads.
class TBase64Encoder {
public:
  /// Encodes AInput from its position to its end into AOutput, as ASCII bytes; gives the count
  /// of bytes written.
  Int64 Encode(TStream* AInput, TStream* AOutput) const;
  RawByteString Encode(std::string_view ABytes) const;
  UnicodeString EncodeBytesToString(std::string_view ABytes) const;
  /// Decodes AInput from its position to its end into AOutput, as TLxBase64Encoding::Decode
  /// does; gives the count of bytes written.
  Int64 Decode(TStream* AInput, TStream* AOutput) const;
  RawByteString Decode(std::string_view AText) const;
};

class TLxNetEncoding {
public:
  TLxNetEncoding() = delete;
  /// The encoder; it lives as long as the process.
  static const TBase64Encoder& Base64Ex() noexcept;
};

/// Decoding of Base64 text. Blanks, tabs, CR and LF are skipped anywhere, so text broken into
/// lines by other producers decodes. Padding is optional: a final group of two or three
/// characters gives one or two bytes, with or without its '='. Unused low bits of a final group
/// are ignored. Every other departure raises EConvertError and writes nothing:
///   a character outside the alphabet, '=' after fewer than two characters of a group or
///   more '=' than the group lacks, and any character but padding behind the first '='
///     -> "Invalid base64 character at position %d" (counting characters from 1)
///   a final group of one character -> "Base64 data ends in the middle of a group"
class TLxBase64Encoding {
public:
  TLxBase64Encoding() = delete;
  /// Writes the decoded bytes to AStream at its position; gives their count.
  static Int64 Decode(std::string_view AData, TStream* AStream);
  static Int64 Decode(std::u16string_view AData, TStream* AStream);
};

} // namespace lorvane
