// Code pages by number: the name table, own fast paths for the Unicode pages, ASCII and Latin-1,
// lazily built single-byte tables, and pooled ICU converters for the multi-byte pages.
#include "lorvane/platform/CodePages.h"

#include "platform/internal/Utf.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>

#include <array>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

namespace lorvane {

namespace {

enum class TPageKind : Byte { UTF16LE, UTF16BE, UTF8, Ascii, Latin1, SingleByte, MultiByte };

struct TCodePageEntry {
  Word CodePage;
  TPageKind Kind;
  Byte MaxCharSize;
  const char* IcuName; // nil for the pages converted without ICU
  const char* Name;    // what CodePageName gives; also accepted by CodePageFromName
};

using enum TPageKind;

// ICU names are the canonical converter names, so that opening a converter skips the alias
// look-up. The preferred names are those the platform's code pages go by on the web.
constexpr TCodePageEntry CodePageTable[] = {
    {1200, UTF16LE, 2, nullptr, "utf-16"},
    {1201, UTF16BE, 2, nullptr, "utf-16be"},
    {65001, UTF8, 4, nullptr, "utf-8"},
    {20127, Ascii, 1, nullptr, "us-ascii"},
    {28591, Latin1, 1, nullptr, "iso-8859-1"},
    {28592, SingleByte, 1, "ibm-912_P100-1995", "iso-8859-2"},
    {28593, SingleByte, 1, "ibm-913_P100-2000", "iso-8859-3"},
    {28594, SingleByte, 1, "ibm-914_P100-1995", "iso-8859-4"},
    {28595, SingleByte, 1, "ibm-915_P100-1995", "iso-8859-5"},
    {28596, SingleByte, 1, "ibm-1089_P100-1995", "iso-8859-6"},
    {28597, SingleByte, 1, "ibm-9005_X110-2007", "iso-8859-7"},
    {28598, SingleByte, 1, "ibm-5012_P100-1999", "iso-8859-8"},
    {28599, SingleByte, 1, "ibm-920_P100-1995", "iso-8859-9"},
    {28603, SingleByte, 1, "ibm-921_P100-1995", "iso-8859-13"},
    {28605, SingleByte, 1, "ibm-923_P100-1998", "iso-8859-15"},
    {1250, SingleByte, 1, "ibm-5346_P100-1998", "windows-1250"},
    {1251, SingleByte, 1, "ibm-5347_P100-1998", "windows-1251"},
    {1252, SingleByte, 1, "ibm-5348_P100-1997", "windows-1252"},
    {1253, SingleByte, 1, "ibm-5349_P100-1998", "windows-1253"},
    {1254, SingleByte, 1, "ibm-5350_P100-1998", "windows-1254"},
    {1255, SingleByte, 1, "ibm-9447_P100-2002", "windows-1255"},
    {1256, SingleByte, 1, "ibm-9448_X100-2005", "windows-1256"},
    {1257, SingleByte, 1, "ibm-9449_P100-2002", "windows-1257"},
    {1258, SingleByte, 1, "ibm-5354_P100-1998", "windows-1258"},
    {437, SingleByte, 1, "ibm-437_P100-1995", "ibm437"},
    {850, SingleByte, 1, "ibm-850_P100-1995", "ibm850"},
    {866, SingleByte, 1, "ibm-866_P100-1995", "cp866"},
    {874, SingleByte, 1, "windows-874-2000", "windows-874"},
    {20866, SingleByte, 1, "ibm-878_P100-1996", "koi8-r"},
    {21866, SingleByte, 1, "ibm-1168_P100-2002", "koi8-u"},
    {932, MultiByte, 2, "ibm-943_P15A-2003", "shift_jis"},
    {936, MultiByte, 2, "windows-936-2000", "gbk"},
    {949, MultiByte, 2, "windows-949-2000", "ks_c_5601-1987"},
    {950, MultiByte, 2, "windows-950-2000", "big5"},
    {51932, MultiByte, 3, "euc-jp-2007", "euc-jp"},
    {54936, MultiByte, 4, "gb18030", "gb18030"},
};
constexpr std::size_t CodePageCount = std::size(CodePageTable);

struct TAlias {
  const char* Name; // lower case
  Word CodePage;
};

// Further names of the pages, lower case. "utf-16" without a mark is little endian here, as the
// XML world on this platform reads it.
constexpr TAlias AliasTable[] = {
    {"utf-16le", 1200},
    {"unicode", 1200},
    {"ucs-2", 1200},
    {"iso-10646-ucs-2", 1200},
    {"csunicode", 1200},
    {"unicodefffe", 1201},
    {"utf8", 65001},
    {"unicode-1-1-utf-8", 65001},
    {"unicode-2-0-utf-8", 65001},
    {"x-unicode20utf8", 65001},
    {"ascii", 20127},
    {"ansi_x3.4-1968", 20127},
    {"ansi_x3.4-1986", 20127},
    {"iso646-us", 20127},
    {"iso_646.irv:1991", 20127},
    {"iso-ir-6", 20127},
    {"us", 20127},
    {"ibm367", 20127},
    {"cp367", 20127},
    {"csascii", 20127},
    {"latin1", 28591},
    {"l1", 28591},
    {"iso8859-1", 28591},
    {"iso_8859-1", 28591},
    {"iso_8859-1:1987", 28591},
    {"iso-ir-100", 28591},
    {"ibm819", 28591},
    {"cp819", 28591},
    {"csisolatin1", 28591},
    {"latin2", 28592},
    {"l2", 28592},
    {"iso8859-2", 28592},
    {"iso_8859-2", 28592},
    {"iso-ir-101", 28592},
    {"csisolatin2", 28592},
    {"latin3", 28593},
    {"l3", 28593},
    {"iso8859-3", 28593},
    {"iso_8859-3", 28593},
    {"iso-ir-109", 28593},
    {"latin4", 28594},
    {"l4", 28594},
    {"iso8859-4", 28594},
    {"iso_8859-4", 28594},
    {"iso-ir-110", 28594},
    {"cyrillic", 28595},
    {"iso8859-5", 28595},
    {"iso_8859-5", 28595},
    {"iso-ir-144", 28595},
    {"arabic", 28596},
    {"iso8859-6", 28596},
    {"iso_8859-6", 28596},
    {"iso-ir-127", 28596},
    {"greek", 28597},
    {"greek8", 28597},
    {"iso8859-7", 28597},
    {"iso_8859-7", 28597},
    {"iso-ir-126", 28597},
    {"hebrew", 28598},
    {"iso8859-8", 28598},
    {"iso_8859-8", 28598},
    {"iso-ir-138", 28598},
    {"latin5", 28599},
    {"l5", 28599},
    {"iso8859-9", 28599},
    {"iso_8859-9", 28599},
    {"iso-ir-148", 28599},
    {"latin7", 28603},
    {"iso8859-13", 28603},
    {"iso_8859-13", 28603},
    {"latin9", 28605},
    {"latin-9", 28605},
    {"l9", 28605},
    {"iso8859-15", 28605},
    {"iso_8859-15", 28605},
    {"cp1250", 1250},
    {"x-cp1250", 1250},
    {"cp1251", 1251},
    {"x-cp1251", 1251},
    {"cp1252", 1252},
    {"x-cp1252", 1252},
    {"cp1253", 1253},
    {"cp1254", 1254},
    {"cp1255", 1255},
    {"cp1256", 1256},
    {"cp1257", 1257},
    {"cp1258", 1258},
    {"cp437", 437},
    {"437", 437},
    {"cspc8codepage437", 437},
    {"cp850", 850},
    {"850", 850},
    {"ibm866", 866},
    {"866", 866},
    {"cp874", 874},
    {"dos-874", 874},
    {"tis-620", 874},
    {"iso-8859-11", 874},
    {"koi8", 20866},
    {"cskoi8r", 20866},
    {"koi8-ru", 21866},
    {"sjis", 932},
    {"shift-jis", 932},
    {"windows-31j", 932},
    {"cswindows31j", 932},
    {"ms_kanji", 932},
    {"x-sjis", 932},
    {"cp932", 932},
    {"csshiftjis", 932},
    {"gb2312", 936},
    {"gb_2312-80", 936},
    {"csgb2312", 936},
    {"euc-cn", 936},
    {"x-gbk", 936},
    {"cp936", 936},
    {"windows-936", 936},
    {"euc-kr", 949},
    {"cseuckr", 949},
    {"ks_c_5601", 949},
    {"ks_c_5601-1989", 949},
    {"ksc5601", 949},
    {"csksc56011987", 949},
    {"korean", 949},
    {"cp949", 949},
    {"windows-949", 949},
    {"csbig5", 950},
    {"x-x-big5", 950},
    {"cp950", 950},
    {"windows-950", 950},
    {"x-euc-jp", 51932},
    {"cseucpkdfmtjapanese", 51932},
    {"extended_unix_code_packed_format_for_japanese", 51932},
};

const TCodePageEntry* FindEntry(Word ACodePage) noexcept {
  for (const TCodePageEntry& Entry : CodePageTable)
    if (Entry.CodePage == ACodePage)
      return &Entry;
  return nullptr;
}

std::size_t IndexOf(const TCodePageEntry& AEntry) noexcept {
  return static_cast<std::size_t>(&AEntry - CodePageTable);
}

std::atomic<Word> DefaultCodePage{1252};

[[noreturn]] void RaiseUnsupported(Word ACodePage) {
  throw EEncodingError(u"Unsupported code page %d", {static_cast<int>(ACodePage)});
}

const TCodePageEntry& EntryOf(Word ACodePage) {
  const TCodePageEntry* Entry = FindEntry(ResolveCodePage(ACodePage));
  if (!Entry)
    RaiseUnsupported(ACodePage);
  return *Entry;
}

// --- ICU converters
// ------------------------------------------------------------------------------- ICU's own
// substitute for a byte sequence that doesn't decode is U+001A on some converters; ours is always
// U+FFFD.
void U_CALLCONV SubstituteReplacementChar(const void*, UConverterToUnicodeArgs* AArgs, const char*,
                                          int32_t, UConverterCallbackReason AReason,
                                          UErrorCode* AError) {
  if (AReason != UCNV_UNASSIGNED && AReason != UCNV_ILLEGAL && AReason != UCNV_IRREGULAR)
    return;
  static const UChar Replacement = 0xFFFD;
  *AError = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(AArgs, &Replacement, 1, 0, AError);
}

UConverter* OpenConverter(const TCodePageEntry& AEntry) {
  UErrorCode Error = U_ZERO_ERROR;
  UConverter* Converter = ucnv_open(AEntry.IcuName, &Error);
  if (U_SUCCESS(Error))
    ucnv_setSubstChars(Converter, "?", 1, &Error);
  if (U_SUCCESS(Error))
    ucnv_setToUCallBack(Converter, SubstituteReplacementChar, nullptr, nullptr, nullptr, &Error);
  if (U_FAILURE(Error)) {
    if (Converter)
      ucnv_close(Converter);
    throw EEncodingError(u"Code page %d can't be opened: %s",
                         {static_cast<int>(AEntry.CodePage), u_errorName(Error)});
  }
  return Converter;
}

// Opening a converter costs far more than a short conversion, and a converter holds state, so
// each thread borrows one from a small pool per code page for the length of one conversion.
class TConverterPool {
public:
  TConverterPool() = default;
  TConverterPool(const TConverterPool&) = delete;
  TConverterPool& operator=(const TConverterPool&) = delete;
  ~TConverterPool() {
    for (UConverter* Converter : FIdle)
      ucnv_close(Converter);
  }

  UConverter* Acquire(const TCodePageEntry& AEntry) {
    {
      std::lock_guard Guard(FLock);
      if (!FIdle.empty()) {
        UConverter* Converter = FIdle.back();
        FIdle.pop_back();
        return Converter;
      }
    }
    return OpenConverter(AEntry);
  }

  void Release(UConverter* AConverter) noexcept {
    ucnv_reset(AConverter);
    {
      std::lock_guard Guard(FLock);
      if (FIdle.size() < MaxIdle) {
        FIdle.push_back(AConverter);
        return;
      }
    }
    ucnv_close(AConverter);
  }

private:
  static constexpr std::size_t MaxIdle = 8;
  std::mutex FLock;
  std::vector<UConverter*> FIdle;
};

// The 256 characters of a single-byte page, and the way back: a two-level table indexed by the
// high and the low byte of a character, with pages only where the code page has characters.
struct TSingleByteData {
  std::array<char16_t, 256> ToUnicode;
  // Each entry holds the byte + 1; 0 means the character isn't in the code page.
  std::array<std::unique_ptr<std::array<Word, 256>>, 256> FromUnicode;
  bool AsciiCompatible = true;

  void AddReverse(char16_t AChar, Byte AByte) {
    auto& Page = FromUnicode[AChar >> 8];
    if (!Page)
      Page = std::make_unique<std::array<Word, 256>>();
    Word& Slot = (*Page)[AChar & 0xFF];
    if (Slot == 0) // the lowest byte wins where two bytes give the same character
      Slot = static_cast<Word>(AByte + 1);
  }

  /// -1 when the character isn't in the code page.
  int ByteOf(char16_t AChar) const noexcept {
    const auto& Page = FromUnicode[AChar >> 8];
    return Page ? static_cast<int>((*Page)[AChar & 0xFF]) - 1 : -1;
  }
};

struct TPageState {
  std::once_flag TableBuilt;
  std::unique_ptr<TSingleByteData> Table;
  TConverterPool Pool;
};

std::array<TPageState, CodePageCount>& PageStates() {
  static std::array<TPageState, CodePageCount> States;
  return States;
}

class TConverterLease {
public:
  explicit TConverterLease(const TCodePageEntry& AEntry)
      : FPool(PageStates()[IndexOf(AEntry)].Pool), FConverter(FPool.Acquire(AEntry)) {}
  TConverterLease(const TConverterLease&) = delete;
  TConverterLease& operator=(const TConverterLease&) = delete;
  ~TConverterLease() { FPool.Release(FConverter); }
  UConverter* Get() const noexcept { return FConverter; }

private:
  TConverterPool& FPool;
  UConverter* FConverter;
};

// Runs one of ICU's two conversion directions over the whole input, growing the output as asked.
// TConvert is ucnv_toUnicode or ucnv_fromUnicode, which share their shape.
template <class TResult, class TSource, class TConvert>
TResult IcuConvert(const TCodePageEntry& AEntry, const TSource* ASource, std::size_t ALength,
                   std::size_t AFirstGuess, TConvert AConvert) {
  using TTarget = typename TResult::value_type;
  TConverterLease Lease(AEntry);
  TResult Result;
  Result.resize(AFirstGuess);
  const TSource* Source = ASource;
  const TSource* SourceLimit = ASource + ALength;
  std::size_t Written = 0;
  for (;;) {
    TTarget* Target = Result.data() + Written;
    UErrorCode Error = U_ZERO_ERROR;
    AConvert(Lease.Get(), &Target, Result.data() + Result.size(), &Source, SourceLimit, nullptr,
             /*flush=*/true, &Error);
    Written = static_cast<std::size_t>(Target - Result.data());
    if (Error == U_BUFFER_OVERFLOW_ERROR) {
      Result.resize(Result.size() * 2);
      continue;
    }
    if (U_FAILURE(Error))
      throw EEncodingError(u"Code page %d conversion failed: %s",
                           {static_cast<int>(AEntry.CodePage), u_errorName(Error)});
    break;
  }
  Result.resize(Written);
  return Result;
}

UnicodeString IcuToUnicode(const TCodePageEntry& AEntry, const char* ABytes, std::size_t ALength) {
  // One unit per byte covers every page in the table but gb18030's four-byte supplementary
  // characters (two units for four bytes); the conversion grows the buffer if a page needs more.
  return IcuConvert<UnicodeString>(AEntry, ABytes, ALength, ALength + 16, &ucnv_toUnicode);
}

RawByteString IcuFromUnicode(const TCodePageEntry& AEntry, std::u16string_view AText) {
  return IcuConvert<RawByteString>(AEntry, AText.data(), AText.size(),
                                   AText.size() * AEntry.MaxCharSize + 16, &ucnv_fromUnicode);
}

// --- single-byte tables
// ---------------------------------------------------------------------------
std::unique_ptr<TSingleByteData> BuildSingleByteData(const TCodePageEntry& AEntry) {
  auto Data = std::make_unique<TSingleByteData>();
  if (AEntry.Kind == Latin1) {
    for (int B = 0; B < 256; ++B)
      Data->ToUnicode[B] = static_cast<char16_t>(B);
  } else if (AEntry.Kind == Ascii) {
    for (int B = 0; B < 256; ++B)
      Data->ToUnicode[B] = B < 0x80 ? static_cast<char16_t>(B) : char16_t(0xFFFD);
  } else {
    // Byte by byte, so that a byte that stands for no character gives exactly one U+FFFD.
    TConverterLease Lease(AEntry);
    for (int B = 0; B < 256; ++B) {
      const char Byte1 = static_cast<char>(B);
      UChar Out[4];
      UErrorCode Error = U_ZERO_ERROR;
      const int32_t Count = ucnv_toUChars(Lease.Get(), Out, 4, &Byte1, 1, &Error);
      Data->ToUnicode[B] = U_SUCCESS(Error) && Count == 1 ? Out[0] : char16_t(0xFFFD);
    }
  }
  for (int B = 0; B < 256; ++B) {
    const char16_t Char = Data->ToUnicode[B];
    if (B < 0x80 && Char != B)
      Data->AsciiCompatible = false;
    if (Char != 0xFFFD)
      Data->AddReverse(Char, static_cast<Byte>(B));
  }
  return Data;
}

const TSingleByteData& SingleByteData(const TCodePageEntry& AEntry) {
  TPageState& State = PageStates()[IndexOf(AEntry)];
  std::call_once(State.TableBuilt, [&] { State.Table = BuildSingleByteData(AEntry); });
  return *State.Table;
}

bool IsSurrogatePair(std::u16string_view AText, std::size_t AIndex) noexcept {
  return AText[AIndex] >= 0xD800 && AText[AIndex] <= 0xDBFF && AIndex + 1 < AText.size() &&
         AText[AIndex + 1] >= 0xDC00 && AText[AIndex + 1] <= 0xDFFF;
}

RawByteString SingleByteFromUnicode(const TSingleByteData& AData, std::u16string_view AText) {
  RawByteString Result(AText.size(), '\0');
  char* Out = Result.data();
  for (std::size_t I = 0; I < AText.size(); ++I) {
    const char16_t Char = AText[I];
    if (Char < 0x80 && AData.AsciiCompatible) {
      *Out++ = static_cast<char>(Char);
      continue;
    }
    const int Byte1 = AData.ByteOf(Char);
    if (Byte1 >= 0) {
      *Out++ = static_cast<char>(Byte1);
      continue;
    }
    // A supplementary character is one character that the page lacks: one '?', not two.
    if (IsSurrogatePair(AText, I))
      ++I;
    *Out++ = '?';
  }
  Result.resize(static_cast<std::size_t>(Out - Result.data()));
  return Result;
}

UnicodeString SingleByteToUnicode(const TSingleByteData& AData, const Byte* ABytes,
                                  std::size_t ALength) {
  UnicodeString Result(ALength, u'\0');
  for (std::size_t I = 0; I < ALength; ++I)
    Result[I] = AData.ToUnicode[ABytes[I]];
  return Result;
}

UnicodeString UTF16ToUnicode(const Byte* ABytes, std::size_t ALength, bool ABigEndian) {
  const std::size_t Units = ALength / 2;
  UnicodeString Result(Units + ALength % 2, u'\0');
  if (ABigEndian) {
    for (std::size_t I = 0; I < Units; ++I)
      Result[I] = static_cast<char16_t>((ABytes[2 * I] << 8) | ABytes[2 * I + 1]);
  } else {
    for (std::size_t I = 0; I < Units; ++I)
      Result[I] = static_cast<char16_t>(ABytes[2 * I] | (ABytes[2 * I + 1] << 8));
  }
  if (ALength % 2) // a half unit at the end stands for no character
    Result[Units] = 0xFFFD;
  return Result;
}

RawByteString UnicodeToUTF16(std::u16string_view AText, bool ABigEndian) {
  RawByteString Result(AText.size() * 2, '\0');
  const int High = ABigEndian ? 0 : 1;
  for (std::size_t I = 0; I < AText.size(); ++I) {
    Result[2 * I + High] = static_cast<char>(AText[I] >> 8);
    Result[2 * I + 1 - High] = static_cast<char>(AText[I] & 0xFF);
  }
  return Result;
}

char AsciiLower(char16_t AChar) noexcept {
  return static_cast<char>(AChar >= u'A' && AChar <= u'Z' ? AChar + 32 : AChar);
}

bool SameName(std::u16string_view AName, const char* ALowerName) noexcept {
  std::size_t I = 0;
  for (; I < AName.size(); ++I) {
    if (ALowerName[I] == '\0' || AName[I] > 0x7F || AsciiLower(AName[I]) != ALowerName[I])
      return false;
  }
  return ALowerName[I] == '\0';
}

} // namespace

// --- default code page
// ----------------------------------------------------------------------------
Word GetDefaultCodePage() noexcept { return DefaultCodePage.load(std::memory_order_relaxed); }

void SetDefaultCodePage(Word ACodePage) {
  const TCodePageEntry* Entry = FindEntry(ACodePage);
  if (!Entry)
    RaiseUnsupported(ACodePage);
  if (Entry->MaxCharSize != 1)
    throw EEncodingError(u"Code page %d can't be the default: it isn't a single-byte code page",
                         {static_cast<int>(ACodePage)});
  DefaultCodePage.store(ACodePage, std::memory_order_relaxed);
}

Word ResolveCodePage(Word ACodePage) noexcept {
  return ACodePage == CP_ACP ? GetDefaultCodePage() : ACodePage;
}

// --- properties
// -----------------------------------------------------------------------------------
bool GetCPInfo(Word ACodePage, TCPInfo& AInfo) {
  const TCodePageEntry* Entry = FindEntry(ResolveCodePage(ACodePage));
  if (!Entry)
    return false;
  AInfo.MaxCharSize = Entry->MaxCharSize;
  return true;
}

bool IsSingleByteCodePage(Word ACodePage) {
  const TCodePageEntry* Entry = FindEntry(ResolveCodePage(ACodePage));
  return Entry && Entry->MaxCharSize == 1;
}

bool IsKnownCodePage(Word ACodePage) { return FindEntry(ResolveCodePage(ACodePage)) != nullptr; }

const char16_t* SingleByteTable(Word ACodePage) {
  const TCodePageEntry* Entry = FindEntry(ResolveCodePage(ACodePage));
  if (!Entry || Entry->MaxCharSize != 1)
    return nullptr;
  return SingleByteData(*Entry).ToUnicode.data();
}

// --- conversion
// -----------------------------------------------------------------------------------
UnicodeString CodePageToUnicode(const void* ABytes, std::size_t ALength, Word ACodePage) {
  const TCodePageEntry& Entry = EntryOf(ACodePage);
  if (ALength == 0)
    return UnicodeString();
  const auto* Bytes = static_cast<const Byte*>(ABytes);
  switch (Entry.Kind) {
  case UTF16LE:
    return UTF16ToUnicode(Bytes, ALength, /*ABigEndian=*/false);
  case UTF16BE:
    return UTF16ToUnicode(Bytes, ALength, /*ABigEndian=*/true);
  case UTF8: {
    UnicodeString Result;
    utf::AppendUTF8AsUTF16(Result, Bytes, ALength);
    return Result;
  }
  case Ascii:
  case Latin1:
  case SingleByte:
    return SingleByteToUnicode(SingleByteData(Entry), Bytes, ALength);
  case MultiByte:
    break;
  }
  return IcuToUnicode(Entry, static_cast<const char*>(ABytes), ALength);
}

RawByteString UnicodeToCodePage(std::u16string_view AText, Word ACodePage) {
  const TCodePageEntry& Entry = EntryOf(ACodePage);
  if (AText.empty())
    return RawByteString();
  switch (Entry.Kind) {
  case UTF16LE:
    return UnicodeToUTF16(AText, /*ABigEndian=*/false);
  case UTF16BE:
    return UnicodeToUTF16(AText, /*ABigEndian=*/true);
  case UTF8: {
    RawByteString Result;
    utf::AppendUTF16AsUTF8(Result, AText.data(), AText.size());
    return Result;
  }
  case Ascii:
  case Latin1:
  case SingleByte:
    return SingleByteFromUnicode(SingleByteData(Entry), AText);
  case MultiByte:
    break;
  }
  return IcuFromUnicode(Entry, AText);
}

// --- names
// ----------------------------------------------------------------------------------------
bool TryCodePageFromName(std::u16string_view AName, Word& ACodePage) {
  for (const TCodePageEntry& Entry : CodePageTable)
    if (SameName(AName, Entry.Name)) {
      ACodePage = Entry.CodePage;
      return true;
    }
  for (const TAlias& Alias : AliasTable)
    if (SameName(AName, Alias.Name)) {
      ACodePage = Alias.CodePage;
      return true;
    }
  return false;
}

Word CodePageFromName(std::u16string_view AName) {
  Word Result = 0;
  if (!TryCodePageFromName(AName, Result))
    throw EEncodingError(u"Unknown encoding name \"%s\"", {UnicodeString(AName)});
  return Result;
}

UnicodeString CodePageName(Word ACodePage) { return AsciiToString(EntryOf(ACodePage).Name); }

} // namespace lorvane
