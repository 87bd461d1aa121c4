/// Code pages by the platform's numbers (1200 UTF-16LE, 1201 UTF-16BE, 65001 UTF-8, 1252, 28591,
/// 932, ...): conversion to and from UTF-16, names, and the process-wide default that 0 means.
#pragma once

#include "lorvane/platform/SysUtils.h"

#include <string_view>

namespace lorvane {

constexpr Word CP_ACP = 0;
constexpr Word CP_UTF16LE = 1200;
constexpr Word CP_UTF16BE = 1201;
constexpr Word CP_UTF8 = 65001;

/// The code page that 0 stands for: 1252 unless the application sets another. It must be a
/// single-byte code page (byte-string paths and encoding sniffing depend on that): a multi-byte
/// one raises EEncodingError "Code page %d can't be the default: it isn't a single-byte code
/// page", an unknown one (0 too) "Unsupported code page %d". Set it once at start.
Word GetDefaultCodePage() noexcept;
void SetDefaultCodePage(Word ACodePage);
/// 0 becomes the default code page; anything else stays.
Word ResolveCodePage(Word ACodePage) noexcept;

struct TCPInfo {
  Integer MaxCharSize;
};
/// False for a code page that this library doesn't know. MaxCharSize is 1 for single-byte pages,
/// 2 for UTF-16 and the double-byte pages, 3 for euc-jp, 4 for UTF-8 and gb18030.
bool GetCPInfo(Word ACodePage, TCPInfo& AInfo);
/// Known, and its longest character takes one byte (0 is: the default is single-byte).
bool IsSingleByteCodePage(Word ACodePage);
bool IsKnownCodePage(Word ACodePage);

/// The 256 characters of a single-byte code page; bytes that stand for no character give U+FFFD.
/// Nil for a code page that isn't single-byte. Built once per code page on first use (safe from
/// several threads); it lives as long as the process.
const char16_t* SingleByteTable(Word ACodePage);

/// Bytes in ACodePage (0: the default) to UTF-16. Bytes that don't decode become U+FFFD, and so
/// does a half UTF-16 unit at the end; UTF-16 input is not checked for lone surrogates. An unknown
/// code page raises EEncodingError "Unsupported code page %d". Safe to call from several threads.
UnicodeString CodePageToUnicode(const void* ABytes, std::size_t ALength, Word ACodePage);
/// UTF-16 to bytes in ACodePage (0: the default; 1200/1201 give UTF-16 bytes, 65001 UTF-8).
/// Characters the code page can't hold become '?' (a supplementary character one '?'); a lone
/// surrogate becomes '?', or U+FFFD in UTF-8, and stays as it is in UTF-16. An unknown code page
/// raises EEncodingError "Unsupported code page %d".
RawByteString UnicodeToCodePage(std::u16string_view AText, Word ACodePage);

/// The code page of an encoding name ("UTF-8", "iso-8859-1", "Shift_JIS", ...), in any letter
/// case. An unknown name raises EEncodingError "Unknown encoding name \"%s\"".
Word CodePageFromName(std::u16string_view AName);
/// Gives false instead of raising.
bool TryCodePageFromName(std::u16string_view AName, Word& ACodePage);
/// The preferred name of a code page, lower case ("utf-8", "windows-1252", "utf-16" for 1200);
/// 0 gives the default's name; an unknown one raises EEncodingError "Unsupported code page %d".
UnicodeString CodePageName(Word ACodePage);

} // namespace lorvane
