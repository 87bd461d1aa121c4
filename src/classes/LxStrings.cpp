// Text helpers: choosing, cutting, padding, splitting, unquoting, and reading a file as text.
#include "lorvane/classes/LxStrings.h"

#include "lorvane/platform/CodePages.h"
#include "lorvane/platform/Streams.h"

#include <initializer_list>
#include <string>

namespace lorvane {

UnicodeString LxIf(bool ACondition, std::u16string_view ATrue, std::u16string_view AFalse) {
  return UnicodeString(ACondition ? ATrue : AFalse);
}

WideChar LxIf(bool ACondition, WideChar ATrue, WideChar AFalse) {
  return ACondition ? ATrue : AFalse;
}

UnicodeString LxLeft(std::u16string_view AValue, Integer ACount) {
  if (ACount <= 0)
    return UnicodeString();
  return UnicodeString(AValue.substr(0, static_cast<std::size_t>(ACount)));
}

UnicodeString LxPadLeft(std::u16string_view AValue, Integer ALength, WideChar AFillChar) {
  UnicodeString Result;
  if (ALength > 0 && static_cast<std::size_t>(ALength) > AValue.size()) {
    Result.reserve(static_cast<std::size_t>(ALength));
    Result.assign(static_cast<std::size_t>(ALength) - AValue.size(), AFillChar);
  }
  Result += AValue;
  return Result;
}

void LxTokenize(std::u16string_view AValue, TStringList* AList, std::u16string_view ADelimiter,
                TStrings* AAlsoInto) {
  if (!AList)
    throw EArgumentException(u"LxTokenize needs a list for the parts");
  AList->Clear();
  if (AValue.empty())
    return;
  auto AddPart = [&](std::u16string_view APart) {
    AList->Add(APart);
    if (AAlsoInto)
      AAlsoInto->Add(APart);
  };
  if (ADelimiter.empty()) {
    AddPart(AValue);
    return;
  }
  std::size_t Start = 0;
  for (;;) {
    const std::size_t Found = AValue.find(ADelimiter, Start);
    if (Found == std::u16string_view::npos)
      break;
    AddPart(AValue.substr(Start, Found - Start));
    Start = Found + ADelimiter.size();
  }
  AddPart(AValue.substr(Start));
}

void LxTokenize(TStringList* AList, std::u16string_view AInput, std::u16string_view APattern,
                TRegExOptions AOptions) {
  if (!AList)
    throw EArgumentException(u"LxTokenize needs a list for the parts");
  // Compiled before the list is touched: a refused pattern leaves the list as it was.
  const TRegEx Expression(APattern, AOptions);
  AList->Clear();
  for (const UnicodeString& Part : Expression.Split(AInput))
    AList->Add(Part);
}

UnicodeString LxNormalizeString(std::u16string_view AText, TNorm_Form AForm) {
  return NormalizeString(AForm, AText);
}

UnicodeString LxSimplifyString(std::u16string_view AText) {
  return FoldCase(StripDiacritics(AText));
}

UnicodeString LxStripLiterals(std::u16string_view AValue) {
  if (AValue.size() >= 2) {
    const WideChar First = AValue.front();
    if ((First == u'\'' || First == u'"') && AValue.back() == First)
      return UnicodeString(AValue.substr(1, AValue.size() - 2));
  }
  return UnicodeString(AValue);
}

namespace {

WideChar RaisedChar(WideChar AChar) noexcept {
  return AChar >= u'a' && AChar <= u'z' ? static_cast<WideChar>(AChar - 32) : AChar;
}
WideChar LoweredChar(WideChar AChar) noexcept {
  return AChar >= u'A' && AChar <= u'Z' ? static_cast<WideChar>(AChar + 32) : AChar;
}

} // namespace

UnicodeString LxCharCase(std::u16string_view AText, Integer AMode,
                         std::u16string_view AWordSeparators) {
  UnicodeString Result(AText);
  switch (AMode) {
  case 0:
    break;
  case 1:
  case 2:
    for (WideChar& C : Result)
      C = AMode == 1 ? LoweredChar(C) : RaisedChar(C);
    break;
  case 3:
  case 4: {
    bool WordStart = true;
    for (WideChar& C : Result) {
      if (AWordSeparators.find(C) != std::u16string_view::npos) {
        WordStart = true;
        continue;
      }
      if (WordStart)
        C = RaisedChar(C);
      else if (AMode == 3)
        C = LoweredChar(C);
      WordStart = false;
    }
    break;
  }
  case 5:
  case 6:
  case 7:
    if (AMode == 5)
      for (WideChar& C : Result)
        C = LoweredChar(C);
    if (!Result.empty())
      Result.front() = AMode == 7 ? LoweredChar(Result.front()) : RaisedChar(Result.front());
    break;
  default:
    throw EArgumentOutOfRangeException(u"LxCharCase has no mode %d", {AMode});
  }
  return Result;
}

UnicodeString LxLoadStringFromFile(const TFileName& AFileName, Word ACodePage) {
  if (!IsKnownCodePage(ACodePage))
    (void)CodePageName(ACodePage); // raises the platform's failure for the code page

  std::string Bytes;
  {
    TOwned<TFileStream> File(New<TFileStream>(AFileName, fmOpenRead | fmShareDenyWrite));
    Bytes.reserve(static_cast<std::size_t>(File->GetSize()));
    // Read to the end rather than trusting the size: a file may change while it is read.
    char Buffer[16384];
    for (;;) {
      const Int64 Count = File->Read(Buffer, sizeof Buffer);
      if (Count <= 0)
        break;
      Bytes.append(Buffer, static_cast<std::size_t>(Count));
    }
  }

  const auto StartsWith = [&](std::initializer_list<unsigned char> AMark) {
    if (Bytes.size() < AMark.size())
      return false;
    std::size_t I = 0;
    for (const unsigned char B : AMark)
      if (static_cast<unsigned char>(Bytes[I++]) != B)
        return false;
    return true;
  };
  Word CodePage = ACodePage;
  std::size_t Skip = 0; // the byte order mark's length
  if (StartsWith({0xEF, 0xBB, 0xBF})) {
    CodePage = CP_UTF8;
    Skip = 3;
  } else if (StartsWith({0xFF, 0xFE})) {
    CodePage = CP_UTF16LE;
    Skip = 2;
  } else if (StartsWith({0xFE, 0xFF})) {
    CodePage = CP_UTF16BE;
    Skip = 2;
  }
  return CodePageToUnicode(Bytes.data() + Skip, Bytes.size() - Skip, CodePage);
}

} // namespace lorvane
