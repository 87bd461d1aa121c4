// The XML text cursor: encoding decision, delimiter table and the checks on the current
// character.
#include "lorvane/sax/LxXMLParser.h"

#include "lorvane/core/LxEncoding.h"
#include "lorvane/platform/CodePages.h"

#include <cstring>

namespace lorvane {

namespace {

Word CodePageOfMark(TStream* AStream, bool AReadBOM, Word AStreamCodePage) {
  const Word FromMark = AReadBOM && AStream ? LxGetCodePage(AStream) : 0;
  return FromMark != 0 ? FromMark : AStreamCodePage;
}

// NameStartChar of XML 1.0 (fifth edition) within 16 bits, without the colon.
constexpr bool IsNameStartChar(WideChar C) noexcept {
  return (C >= 0x41 && C <= 0x5A) || C == 0x5F || (C >= 0x61 && C <= 0x7A) ||
         (C >= 0xC0 && C <= 0xD6) || (C >= 0xD8 && C <= 0xF6) || (C >= 0xF8 && C <= 0x2FF) ||
         (C >= 0x370 && C <= 0x37D) || (C >= 0x37F && C <= 0x1FFF) ||
         (C >= 0x200C && C <= 0x200D) || (C >= 0x2070 && C <= 0x218F) ||
         (C >= 0x2C00 && C <= 0x2FEF) || (C >= 0x3001 && C <= 0xD7FF) ||
         (C >= 0xF900 && C <= 0xFDCF) || (C >= 0xFDF0 && C <= 0xFFFD);
}

} // namespace

TLxXMLParser::TLxXMLParser(TStream* ASourceStream, bool AStreamOwner, bool AReadBOM,
                           Word AStreamCodePage)
    : TLxTextParser(ASourceStream, AStreamOwner,
                    CodePageOfMark(ASourceStream, AReadBOM, AStreamCodePage)) {
  SetCharacterSetType(GetCharacterSetType());
  if (GetContentCodePage() == 0)
    DecideEncodingFromDeclaration();
}

void TLxXMLParser::DecideEncodingFromDeclaration() {
  UnicodeString Name;
  TLxTextParser::SkipWhile(spNotEqual, u'<');
  bool Declared = true;
  for (char16_t Expected : std::u16string_view(u"<?xml "))
    if (ReadChar()[0] != Expected) {
      Declared = false;
      break;
    }
  if (Declared) {
    SetMark(tpMark1);
    TLxTextParser::SkipWhile(spNotEqual, u'>');
    const UnicodeString Text = Selected(tpMark1, tpCurrent, /*AClearMark=*/true);
    const std::size_t At = LowerCase(Text).find(u"encoding");
    if (At != UnicodeString::npos) {
      const std::u16string_view Rest = std::u16string_view(Text).substr(At);
      const std::size_t Equal = Rest.find(u'=');
      UnicodeString Value = Trim(Rest.substr(Equal == std::u16string_view::npos ? 0 : Equal + 1));
      if (Value.size() > 1) {
        const std::u16string_view Quoted = std::u16string_view(Value).substr(1);
        const std::size_t Close = Quoted.find(Value[0]);
        Name = Close == std::u16string_view::npos ? UnicodeString()
                                                  : UnicodeString(Quoted.substr(0, Close));
      } else {
        Name = Value;
      }
    }
  }
  Word CodePage;
  if (Name.empty() || LxSameText(Name, u"UTF-8")) {
    if (GetCharacterSetType() == csAnsi)
      SetCharacterSetType(csUTF8);
    CodePage = CP_UTF8;
  } else {
    CodePage = LxCodePage(Name);
  }
  SetContentCodePage(CodePage);
  First();
}

void TLxXMLParser::SetCharacterSetType(TLxCharacterSetType ACharSet) {
  TLxTextParser::SetCharacterSetType(ACharSet);
  if (ACharSet == csWide) {
    FAmp = &cLxAmpW, FApos = &cLxAposW, FEqual = &cLxEqualW, FGt = &cLxGtW, FLt = &cLxLtW;
    FQuest = &cLxQuestW, FQuote = &cLxQuoteW, FSlash = &cLxSlashW, FSpace = &cLxSpaceW;
    FExcl = &cLxExclW, FLine = &cLxLineW, FColon = &cLxColonW, FSemiColon = &cLxSemiColonW;
    FBracketOA = &cLxBracketOW, FBracketCA = &cLxBracketCW;
    FSkipWhile = &TLxXMLParser::SrcWSkipWhile;
    FCheckCurrChar = &TLxXMLParser::SrcWCheckCurrChar;
    return;
  }
  FAmp = &cLxAmpA, FApos = &cLxAposA, FEqual = &cLxEqualA, FGt = &cLxGtA, FLt = &cLxLtA;
  FQuest = &cLxQuestA, FQuote = &cLxQuoteA, FSlash = &cLxSlashA, FSpace = &cLxSpaceA;
  FExcl = &cLxExclA, FLine = &cLxLineA, FColon = &cLxColonA, FSemiColon = &cLxSemiColonA;
  FBracketOA = &cLxBracketOA, FBracketCA = &cLxBracketCA;
  if (ACharSet == csUTF8) {
    FSkipWhile = &TLxXMLParser::SrcUSkipWhile;
    FCheckCurrChar = &TLxXMLParser::SrcUCheckCurrChar;
  } else {
    FSkipWhile = &TLxXMLParser::SrcASkipWhile;
    FCheckCurrChar = &TLxXMLParser::SrcACheckCurrChar;
  }
}

void TLxXMLParser::SrcASkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr) {
  SrcASkipWhileA(AOperator, *static_cast<const AnsiChar*>(ACharPtr));
}

void TLxXMLParser::SrcUSkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr) {
  SrcUSkipWhileA(AOperator, *static_cast<const AnsiChar*>(ACharPtr));
}

void TLxXMLParser::SrcWSkipWhile(TLxTextParserSkipOp AOperator, const void* ACharPtr) {
  SrcWSkipWhileW(AOperator, *static_cast<const WideChar*>(ACharPtr));
}

void TLxXMLParser::RaiseNotWellFormed(WideChar AExpected) {
  throw ELxXMLParseError(_cLxXMLNotWellFormed, {UnicodeString(1, AExpected), CurrCharText()},
                         cLxXMLErrNotWellFormed);
}

bool TLxXMLParser::SrcACheckCurrChar(const void* ACharPtr, bool ARaise) {
  const Byte Expected = *static_cast<const Byte*>(ACharPtr);
  const Byte* Raw = RawAt();
  if (Raw && *Raw == Expected)
    return true;
  if (ARaise)
    RaiseNotWellFormed(Expected);
  return false;
}

bool TLxXMLParser::SrcUCheckCurrChar(const void* ACharPtr, bool ARaise) {
  // Only the first byte is compared: every delimiter is ASCII.
  return SrcACheckCurrChar(ACharPtr, ARaise);
}

bool TLxXMLParser::SrcWCheckCurrChar(const void* ACharPtr, bool ARaise) {
  const WideChar Expected = *static_cast<const WideChar*>(ACharPtr);
  const Byte* Raw = RawAt();
  WideChar Unit = 0;
  if (Raw)
    std::memcpy(&Unit, Raw, sizeof Unit);
  if (Raw && Unit == Expected)
    return true;
  if (ARaise)
    RaiseNotWellFormed(Expected);
  return false;
}

void TLxXMLParser::CheckValidNameStartChar() {
  const WideChar Char = CurrCharW();
  if (Char == u':')
    throw ELxXMLParseError(_cLxXMLInvalidNameStartchar1, {CurrCharText()},
                           cLxXMLErrInvalidNameStartChar);
  if (!IsNameStartChar(Char))
    throw ELxXMLParseError(_cLxXMLInvalidNameStartchar2, {CurrCharText()},
                           cLxXMLErrInvalidNameStartChar);
}

} // namespace lorvane
