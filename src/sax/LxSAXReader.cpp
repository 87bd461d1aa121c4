// The reader frame (sources, locator, failure road) and the XML format's flat parse loop.
#include "lorvane/sax/LxSAXReader.h"

#include "core/internal/RawScan.h"
#include "core/internal/ReaderFrame.h"

#include <algorithm>
#include <cstring>

namespace lorvane {

// --- TLxSAXReader
// ---------------------------------------------------------------------------------
TLxSAXReader::TLxSAXReader() {
  SetAutoDestroy(false);
  FEmptyAttributes = New<TLxSAXXMAttributes>();
}

TLxSAXReader::~TLxSAXReader() {
  lorvane::Free(FParser);
  lorvane::Free(FEmptyAttributes);
}

HRESULT TLxSAXReader::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxSAXLocator, ILxSAXXMLReader>(
      this, AIID, AObj, [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

Integer TLxSAXReader::GetPosition() {
  return FParser ? static_cast<Integer>(FParser->GetPosition()) : -1;
}

Integer TLxSAXReader::GetLineNr() {
  return readerframe::LocatorLine(FUnexpectedEOF, FLineNr, FParser);
}

Integer TLxSAXReader::GetColNr() {
  return readerframe::LocatorColumn(FUnexpectedEOF, FColNr, FParser);
}

void TLxSAXReader::MarkStart() { FParser->PinLineCol(); }

void TLxSAXReader::TakeStart() {
  if (FParser)
    FParser->GetPinnedLineCol(FLineNr, FColNr);
}

void TLxSAXReader::ResetParseState() {
  // The end-of-text flag is the frame's to clear.
  FLineNr = -1;
  FColNr = -1;
  FEmptyAttributes->Clear();
}

Variant TLxSAXReader::GetProperty(const LxXMLString&) { return Null(); }

void TLxSAXReader::RunParse(readerframe::TSource&& ASource, const LxXMLString& APublicID) {
  FPublicID = APublicID;
  readerframe::Run(
      std::move(ASource), FParser, FUnexpectedEOF,
      [this](const readerframe::TSource& S) {
        return CreateParser(S.Stream, /*AStreamOwner=*/false, /*AReadBOM=*/S.FromFile, S.CodePage);
      },
      [this] { InternalParse(); }, [this] { ResetParseState(); });
}

void TLxSAXReader::ParseStream(TStream* AStream, Word AStreamCodePage,
                               const LxXMLString& APublicID) {
  RunParse(readerframe::OfStream(AStream, AStreamCodePage), APublicID);
}

void TLxSAXReader::ParseFile(const TFileName& AFileName, Word AMode, const LxXMLString& APublicID) {
  RunParse(readerframe::OfFile(AFileName, AMode), APublicID);
}

void TLxSAXReader::ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ABufCodePage,
                               const LxXMLString& APublicID) {
  RunParse(readerframe::OfBuffer(ABuffer, Int64(ABufSize), ABufCodePage), APublicID);
}

void TLxSAXReader::Parse(const LxXMLString& AXML, const LxXMLString& APublicID) {
  RunParse(readerframe::OfText(AXML), APublicID);
}

void TLxSAXReader::Parse(const RawByteString& AXML, Word ACodePage, const LxXMLString& APublicID) {
  RunParse(readerframe::OfBytes(AXML, ACodePage), APublicID);
}

// --- TLxSAXXMLReader
// ------------------------------------------------------------------------------
namespace {

const TLxCharSet ControlsAndBlank = TLxCharSet::Range(0, 0x20);
// Where a name ends in a tag: before a prefix, and behind it.
const TLxCharSet ElementNameEnd = TLxCharSet{':', '<', '>', '/'} + ControlsAndBlank;
const TLxCharSet LocalNameEnd = TLxCharSet{'>', '/'} + ControlsAndBlank;
const TLxCharSet AttributeNameEnd{'=', ':', '>', '<'};
const TLxCharSet AttributeLocalNameEnd{'=', '>', '<'};
const TLxCharSet ValueStart{'\'', '"', '>', '<'};
const TLxCharSet AfterValue = TLxCharSet{'\'', '"'} + ControlsAndBlank;
const TLxCharSet TargetEnd{' ', '?'};

// The in-place scan of a tag takes names of these bytes only (ASCII, no delimiter of a name);
// any other byte ends the name, and all but the delimiters hand the tag to the scan by
// characters.
const TLxCharSet NameBytes = TLxCharSet::Range(0, 0x7F) - ElementNameEnd;

constexpr bool IsASCIINameStart(Byte AByte) noexcept {
  return (AByte >= 'A' && AByte <= 'Z') || (AByte >= 'a' && AByte <= 'z') || AByte == '_';
}

const Byte* SkipNameBytes(const Byte* AFrom, const Byte* ATo) noexcept {
  while (AFrom < ATo && NameBytes.Contains(*AFrom))
    ++AFrom;
  return AFrom;
}

// The name cache: entries per kind (a power of two).
constexpr std::size_t NameCacheSlots = 64;

// Names are short: whole words, the last one overlapping the one before, beat a call to
// memcmp and a loop over bytes.
bool SameBytes(const Byte* A, const Byte* B, std::size_t ALength) noexcept {
  auto Same = [](const Byte* X, const Byte* Y, auto AWord) {
    std::memcpy(&AWord, X, sizeof AWord);
    decltype(AWord) Other;
    std::memcpy(&Other, Y, sizeof Other);
    return AWord == Other;
  };
  if (ALength >= 8) {
    for (std::size_t I = 0; I + 8 < ALength; I += 8)
      if (!Same(A + I, B + I, UInt64{}))
        return false;
    return Same(A + ALength - 8, B + ALength - 8, UInt64{});
  }
  if (ALength >= 4)
    return Same(A, B, Cardinal{}) && Same(A + ALength - 4, B + ALength - 4, Cardinal{});
  for (std::size_t I = 0; I < ALength; ++I)
    if (A[I] != B[I])
      return false;
  return true;
}

// ASCII bytes as UTF-16, into a string that keeps its capacity.
void AssignASCII(LxXMLString& ATarget, const Byte* AFrom, const Byte* ATo) {
  ATarget.resize(static_cast<std::size_t>(ATo - AFrom));
  char16_t* Out = ATarget.data();
  for (const Byte* P = AFrom; P != ATo; ++P)
    *Out++ = *P;
}

constexpr Byte ValueStartStops[] = {'\'', '"', '>', '<'};

} // namespace

TLxSAXXMLReader::TLxSAXXMLReader() : FNamespaceList(this) {}

TLxSAXXMLReader::~TLxSAXXMLReader() { lorvane::Free(FAttributes); }

void TLxSAXXMLReader::SetContentHandler(ILxSAXContentHandler* AHandler) {
  if (!FContent) {
    TLxSAXReader::SetContentHandler(AHandler);
    return;
  }
  if (!AHandler)
    return;
  FReplacedHandlers.push_back(std::move(FContentHandler));
  FContentHandler = AHandler;
  FContent = AHandler;
}

void TLxSAXXMLReader::ResetParseState() {
  TLxSAXReader::ResetParseState();
  FReplacedHandlers.clear();
  // Bindings left by a parse that stopped inside an element (a failure, or a text that ended
  // with elements open) belong to that text only; they are dropped without events.
  FNamespaceList.Clear();
  if (FAttributes)
    FAttributes->Clear();
  FContent = nullptr;
  FLexical = nullptr;
  FRawAttributes.clear();
  FAfterRawAttributes = nullptr;
  for (TNameEntry& Entry : FNameCache)
    Entry.Length = 0;
}

TLxTextParser* TLxSAXXMLReader::CreateParser(TStream* AStream, bool AStreamOwner, bool AReadBOM,
                                             Word AStreamCodePage) {
  FXMLParser = New<TLxXMLParser>(AStream, AStreamOwner, AReadBOM, AStreamCodePage);
  return FXMLParser;
}

void TLxSAXXMLReader::InternalParse() {
  if (!FContentHandler)
    throw ELxXMLParseError(_cLxXMLNoContentHandler, cLxXMLErrNoContentHandler);
  if (!FErrorHandler)
    throw ELxXMLParseError(_cLxXMLNoErrorHandler, cLxXMLErrNoErrorHandler);
  // The handlers are held for the whole parse, and events go to those the parse began with: a
  // handler may set others, or none, while it runs.
  const IPtr<ILxSAXContentHandler> Content = FContentHandler;
  const IPtr<ILxSAXLexicalHandler> Lexical = FLexicalHandler;
  FContent = Content.Get();
  FLexical = Lexical.Get();
  // Outside a parse, handlers are only stored (see SetContentHandler).
  struct TParseEnds {
    TLxSAXXMLReader* Reader;
    ~TParseEnds() {
      Reader->FContent = nullptr;
      Reader->FLexical = nullptr;
      Reader->FReplacedHandlers.clear();
    }
  } Ends{this};
  TLxXMLParser* P = FXMLParser;
  FScanInPlace = P->GetCharacterSetType() == csUTF8;
  if (FScanInPlace && FNameCache.empty())
    FNameCache.resize(2 * NameCacheSlots);
  Integer Depth = 0;
  readerframe::ReportingFailures(
      FUnexpectedEOF,
      [&] {
        P->SkipWhile(spNotEqual, P->FLt);
        FContent->StartDocument();
        while (!P->_GetEOF()) {
          const WideChar Next = P->PeekChar()[0];
          if (Next >= 0x01 && Next <= 0x20) {
            P->NextChar();
          } else if (Next == u'!') {
            P->NextChar();
            if (P->PeekChar()[0] == u'-')
              ParseComment();
            else
              ParseDTD();
          } else if (Next == u'?') {
            ParseProcessingInstruction();
          } else {
            break;
          }
          P->SkipWhile(spNotEqual, P->FLt);
        }
        P->SkipWhile(spLessEqual, P->FSpace);
        if (!P->RawEquals(P->FLt))
          P->CheckCurrChar(P->FLt, true);
        while (!P->_GetEOF()) {
          // In the raw window of a UTF-8 text the next construct shows in its first two bytes.
          if (const Byte* At = P->RawCursor(); FScanInPlace && P->RawReadEnd() - At >= 2) {
            if (*At != '<')
              ParseCharacters();
            else if (At[1] != '!' && At[1] != '?')
              ParseElement(Depth);
            else
              ParseMarkupBesideElements();
          } else if (!P->RawEquals(P->FLt)) {
            ParseCharacters();
          } else if (!ParseMarkupBesideElements()) {
            ParseElement(Depth);
          }
          if (!FReplacedHandlers.empty()) [[unlikely]]
            FReplacedHandlers.clear();
        }
        FContent->EndDocument();
      },
      [this](const LxXMLString& AMessage) {
        // The locator gives where the construct began once the text has ended too early.
        TakeStart();
        if (FErrorHandler)
          FErrorHandler->FatalError(this, AMessage);
      });
}

bool TLxSAXXMLReader::ParseMarkupBesideElements() {
  TLxXMLParser* P = FXMLParser;
  if (FScanInPlace && P->RawReadEnd() - P->RawCursor() >= 2) {
    // No byte but '!' and '?' themselves decodes to either in UTF-8.
    const Byte Next = P->RawCursor()[1];
    if (Next != '!' && Next != '?')
      return false;
  }
  const WideChar Next = P->PeekChar()[0];
  if (Next == u'!') {
    P->NextChar();
    if (P->PeekChar()[0] == u'-')
      ParseComment();
    else
      ParseCDATA();
    return true;
  }
  if (Next == u'?') {
    ParseProcessingInstruction();
    return true;
  }
  return false;
}

void TLxSAXXMLReader::ParseProcessingInstruction() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  if (!P->RawEquals(P->FLt))
    P->CheckCurrChar(P->FLt, true);
  P->NextChar();
  P->NextChar();
  P->SetMark(tpMark1);
  P->SkipSet(spNotInSet, TargetEnd);
  const LxXMLString Target = P->Selected(tpMark1, tpCurrent, true);
  LxXMLString Data;
  if (P->RawEquals(P->FSpace)) {
    P->SkipWhile(spEqual, P->FSpace);
    P->SetMark(tpMark1);
    P->SkipWhile(spNotEqual, P->FQuest);
    Data = P->Selected(tpMark1, tpCurrent, true);
  } else {
    P->SkipSet(spInSet, TargetEnd);
  }
  FContent->ProcessingInstruction(Target, Data);
  P->SkipWhile(spNotEqual, P->FGt);
  P->NextChar();
}

void TLxSAXXMLReader::ParseComment() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  if (P->RawEquals(P->FLt))
    P->NextChar();
  if (!P->RawEquals(P->FExcl))
    P->CheckCurrChar(P->FExcl, true);
  P->SkipChars(3);
  P->SetMark(tpMark1);
  do {
    P->SkipWhile(spNotEqual, P->FLine);
    if (P->PeekString(3) == u"-->")
      break;
    P->MoveNext();
  } while (!P->_GetEOF());
  if (FLexical)
    FLexical->Comment(P->Selected(tpMark1, tpCurrent, true));
  else
    P->ClearMark(tpMark1);
  P->SkipWhile(spNotEqual, P->FGt);
  P->MoveNext();
}

void TLxSAXXMLReader::ParseDTD() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  if (P->RawEquals(P->FLt))
    P->NextChar();
  if (!P->RawEquals(P->FExcl))
    P->CheckCurrChar(P->FExcl, true);
  P->NextChar();
  P->SetMark(tpMark1);
  P->SkipWhile(spNotEqual, P->FSpace);
  const LxXMLString Keyword = P->Selected(tpMark1, tpCurrent, true);
  if (Keyword != u"DOCTYPE")
    throw ELxXMLParseError(_cLxXMLDOCTypeExpected, {Keyword}, cLxXMLErrDOCTypeExpected);
  if (FLexical)
    FLexical->StartDTD();
  // The declaration isn't parsed: angle brackets are counted, quotes and comments regardless.
  Integer Open = 1;
  do {
    P->NextChar();
    if (P->RawEquals(P->FLt))
      ++Open;
    else if (P->RawEquals(P->FGt) && --Open == 0)
      break;
  } while (!P->_GetEOF());
  if (FLexical)
    FLexical->EndDTD();
  P->SkipWhile(spNotEqual, P->FGt);
  P->NextChar();
}

void TLxSAXXMLReader::ParseCDATA() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  if (!P->RawEquals(P->FExcl))
    P->CheckCurrChar(P->FExcl, true);
  P->SetMark(tpMark1);
  P->SkipChars(7);
  const LxXMLString Opening = Copy(P->Selected(tpMark1, tpNext, true), 1, 8);
  if (Opening != u"![CDATA[")
    throw ELxXMLParseError(_cLxXMLCDATAExpected, {Opening}, cLxXMLErrCDATAExpected);
  if (FLexical)
    FLexical->StartCDATA();
  P->MoveNext();
  P->SetMark(tpMark1);
  do {
    P->SkipWhile(spNotEqual, P->FBracketCA);
    if (P->PeekString(3) == u"]]>")
      break;
    P->MoveNext();
  } while (!P->_GetEOF());
  FContent->Characters(P->Selected(tpMark1, tpCurrent, true));
  if (FLexical)
    FLexical->EndCDATA();
  P->SkipWhile(spNotEqual, P->FGt);
  P->MoveNext();
}

void TLxSAXXMLReader::ParseCharacters() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  if (FScanInPlace && ParseCharactersInPlace())
    return;
  P->SetMark(tpMark1);
  // The run reaches the next '<' (its first character is never one) and is white space when no
  // character in it is above U+0020: two skips give what a walk character by character gives.
  bool White = P->CurrCharW() <= 0x20;
  P->MoveNext();
  if (White)
    P->SkipWhile(spLessEqual, P->FSpace);
  if (!P->_GetEOF() && !P->RawEquals(P->FLt)) {
    White = false;
    P->SkipWhile(spNotEqual, P->FLt);
  }
  if (FCheckSingleRootElm)
    P->CheckEOF();
  else if (P->_GetEOF())
    P->SetMark(tpMark2);
  if (White) {
    P->SelectInto(FText, tpMark1, tpCurrent, false);
    FContent->IgnorableWhitespace(FText);
  } else if (P->GetPos(tpMark2) != 0) {
    P->SelectInto(FText, tpMark1, tpMark2, false);
    FContent->Characters(FText);
    P->SelectInto(FText, tpMark2, tpCurrent, false);
    FContent->IgnorableWhitespace(FText);
  } else if (P->GetCurPos() != P->GetPos(tpMark1)) {
    P->SelectInto(FText, tpMark1, tpCurrent, false);
    FContent->Characters(FText);
  }
  P->ClearMark(tpMark1);
  P->ClearMark(tpMark2);
}

bool TLxSAXXMLReader::ParseCharactersInPlace() {
  // A run that ends at a '<' in the raw window: the run is white space when no byte of it is
  // above 0x20 (no byte of a UTF-8 sequence is), and the cursor stands on the '<' during the
  // event, as after the skips by characters.
  TLxXMLParser* P = FXMLParser;
  const Byte* const From = P->RawCursor();
  const Byte* const End = P->RawReadEnd();
  if (From == End)
    return false;
  const auto* Lt = static_cast<const Byte*>(std::memchr(From, '<', std::size_t(End - From)));
  if (!Lt || Lt == From)
    return false;
  const Byte* Text = From;
  while (Text != Lt && *Text <= 0x20)
    ++Text;
  P->SetRawCursor(Lt);
  P->DecodeInto(FText, From, std::size_t(Lt - From));
  if (Text == Lt)
    FContent->IgnorableWhitespace(FText);
  else
    FContent->Characters(FText);
  return true;
}

namespace {

// Takes off characters up to U+0020 at both ends, keeping the string's capacity.
void TrimInPlace(LxXMLString& AText) {
  std::size_t End = AText.size();
  while (End > 0 && AText[End - 1] <= u' ')
    --End;
  std::size_t Begin = 0;
  while (Begin < End && AText[Begin] <= u' ')
    ++Begin;
  AText.erase(End);
  AText.erase(0, Begin);
}

} // namespace

void TLxSAXXMLReader::ParseAtrributes(TLxSAXXMAttributes* AAttributes, Integer ALevel) {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  auto RaiseOnTagEnd = [P] {
    if (P->RawEquals(P->FLt) || P->RawEquals(P->FGt))
      throw ELxXMLParseError(_cLxXMLMissingAttribute, cLxXMLErrMissingAttribute);
  };
  for (;;) {
    P->SetMark(tpMark1);
    P->SetMark(tpMark2);
    P->SkipSet(spNotInSet, AttributeNameEnd);
    RaiseOnTagEnd();
    // The record is filled in place: its strings keep their capacity from former elements.
    PLxSAXXMAttribute A = AAttributes->Append();
    if (P->RawEquals(P->FColon)) {
      P->SelectInto(FAttributePrefix, tpMark1, tpCurrent, false);
      P->SkipWhile(spEqual, P->FColon);
      P->SetMark(tpMark1);
      P->SkipSet(spNotInSet, AttributeLocalNameEnd);
      RaiseOnTagEnd();
      P->SelectInto(A->LocalName, tpMark1, tpCurrent, true);
      TrimInPlace(A->LocalName);
      P->SelectInto(A->QName, tpMark2, tpCurrent, true);
      TrimInPlace(A->QName);
    } else {
      FAttributePrefix.clear();
      P->SelectInto(A->LocalName, tpMark1, tpCurrent, true);
      TrimInPlace(A->LocalName);
      A->QName = A->LocalName;
      P->ClearMark(tpMark2);
    }
    P->SkipSet(spNotInSet, ValueStart);
    RaiseOnTagEnd();
    const WideChar Quote = P->ReadChar()[0];
    P->SetMark(tpMark1);
    P->SkipWhile(spNotEqual, Quote);
    P->SelectInto(A->Value, tpMark1, tpCurrent, true);
    A->AttrType = TLxSAXAttributeType::CDATA;
    ResolveAttribute(A, FAttributePrefix, ALevel);
    P->SkipSet(spInSet, AfterValue);
    if (P->_GetEOF() || P->RawEquals(P->FGt) || P->RawEquals(P->FSlash))
      return;
  }
}

void TLxSAXXMLReader::ResolveAttribute(PLxSAXXMAttribute AAttribute, const LxXMLString& APrefix,
                                       Integer ALevel) {
  if (AAttribute->QName.size() == 5 && SameText(AAttribute->QName, u"xmlns")) {
    AAttribute->URI.clear();
    FNamespaceList.AddURI(ALevel, LxXMLString(), AAttribute->Value);
  } else if (APrefix.size() == 5 && SameText(APrefix, u"xmlns")) {
    AAttribute->URI.clear();
    FNamespaceList.AddURI(ALevel, AAttribute->LocalName, AAttribute->Value);
  } else if (const LxXMLString& URI = FNamespaceList.URIOf(APrefix); URI.empty()) {
    AAttribute->URI.clear(); // inline, where an assignment is a call
  } else {
    AAttribute->URI = URI;
  }
}

TLxSAXXMLReader::TNameEntry* TLxSAXXMLReader::CachedName(bool AAttribute, const Byte* AFrom,
                                                         const Byte* ATo, bool& AFound) {
  const std::size_t Length = static_cast<std::size_t>(ATo - AFrom);
  if (Length == 0 || Length > TNameEntry::Longest)
    return nullptr;
  const std::size_t Hash = Length * 7 + AFrom[0] * 3 + AFrom[Length / 2] * 5 + ATo[-1];
  TNameEntry& Entry = FNameCache[(AAttribute ? NameCacheSlots : 0) + (Hash & (NameCacheSlots - 1))];
  AFound = Entry.Length == Length && SameBytes(Entry.Raw, AFrom, Length);
  if (!AFound) {
    std::memcpy(Entry.Raw, AFrom, Length);
    Entry.Length = Length;
  }
  return &Entry;
}

bool TLxSAXXMLReader::ScanTagInPlace(bool& AEndTag) {
  TLxXMLParser* P = FXMLParser;
  const Byte* const End = P->RawReadEnd();
  const Byte* At = P->RawCursor();
  if (End - At < 2 || *At != '<')
    return false;
  const bool EndTag = *++At == '/';
  if (EndTag && ++At == End)
    return false;
  // The names: a colon, '<' or a byte from 0x80 on needs the checks of the scan by characters.
  if (!IsASCIINameStart(*At))
    return false;
  const Byte* const Name = At;
  const Byte* Colon = nullptr;
  At = SkipNameBytes(At, End);
  if (At != End && *At == ':') {
    Colon = At++;
    if (At == End || !IsASCIINameStart(*At))
      return false;
    At = SkipNameBytes(At, End);
    if (At != End && *At == ':')
      return false;
  }
  if (At == End || *At >= 0x80 || *At == '<')
    return false;
  const Byte* const NameEnd = At;
  while (At != End && *At == ' ')
    ++At;
  if (At == End || (EndTag && *At != '>'))
    return false;
  // The attributes, each up to the character behind its value and the blanks after it.
  FRawAttributes.clear();
  if (!EndTag) {
    while (*At != '/' && *At != '>') {
      TRawAttribute R{At, nullptr, At, nullptr, nullptr, nullptr};
      // Names and most values are a few bytes: plain loops, with no set-up of vector compares.
      const Byte* Stop = At;
      while (Stop != End && !AttributeNameEnd.Contains(*Stop))
        ++Stop;
      if (Stop == End || *Stop == '<' || *Stop == '>')
        return false;
      if (*Stop == ':') {
        R.Colon = Stop;
        while (Stop != End && *Stop == ':')
          ++Stop;
        R.LocalName = Stop;
        while (Stop != End && !AttributeLocalNameEnd.Contains(*Stop))
          ++Stop;
        if (Stop == End || *Stop != '=')
          return false;
      }
      R.NameEnd = Stop;
      if (End - Stop >= 2 && (Stop[1] == '"' || Stop[1] == '\''))
        ++Stop; // the quote right behind the '='
      else
        Stop = rawscan::FindAnyOf(Stop, End, ValueStartStops, 4);
      if (Stop == End || *Stop == '<' || *Stop == '>')
        return false;
      R.Value = Stop + 1;
      const Byte* Short = std::min(End, R.Value + 16);
      for (R.ValueEnd = R.Value; R.ValueEnd != Short && *R.ValueEnd != *Stop; ++R.ValueEnd) {
      }
      if (R.ValueEnd == Short)
        R.ValueEnd = static_cast<const Byte*>(
            std::memchr(Short, *Stop, static_cast<std::size_t>(End - Short)));
      if (!R.ValueEnd)
        return false;
      At = R.ValueEnd;
      while (At != End && AfterValue.Contains(*At))
        ++At;
      if (At == End)
        return false;
      FRawAttributes.push_back(R);
    }
  }
  FAfterRawAttributes = At;
  AEndTag = EndTag;
  bool Found = false;
  TNameEntry* Entry = CachedName(false, Name, NameEnd, Found);
  LxXMLString* Prefix = Entry ? &Entry->Prefix : &FPrefix;
  LxXMLString* LocalName = Entry ? &Entry->LocalName : &FLocalName;
  LxXMLString* QName = Entry ? &Entry->QName : &FQName;
  if (!Found) {
    Prefix->clear();
    if (Colon) {
      AssignASCII(*Prefix, Name, Colon);
      AssignASCII(*LocalName, Colon + 1, NameEnd);
    } else {
      AssignASCII(*LocalName, Name, NameEnd);
    }
    AssignASCII(*QName, Name, NameEnd);
  }
  FTagPrefix = Prefix;
  FTagLocalName = LocalName;
  FTagQName = QName;
  P->SetRawCursor(FRawAttributes.empty() ? At : FRawAttributes.front().Name);
  return true;
}

void TLxSAXXMLReader::TakeRawAttributes(TLxSAXXMAttributes* AAttributes, Integer ALevel) {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  for (const TRawAttribute& R : FRawAttributes) {
    PLxSAXXMAttribute A = AAttributes->Append();
    bool Found = false;
    TNameEntry* Entry = CachedName(true, R.Name, R.NameEnd, Found);
    if (Entry && !Found) {
      if (R.Colon) {
        P->DecodeInto(Entry->Prefix, R.Name, static_cast<std::size_t>(R.Colon - R.Name));
        P->DecodeInto(Entry->LocalName, R.LocalName,
                      static_cast<std::size_t>(R.NameEnd - R.LocalName));
        TrimInPlace(Entry->LocalName);
      } else {
        Entry->Prefix.clear();
        P->DecodeInto(Entry->LocalName, R.Name, static_cast<std::size_t>(R.NameEnd - R.Name));
        TrimInPlace(Entry->LocalName);
      }
      P->DecodeInto(Entry->QName, R.Name, static_cast<std::size_t>(R.NameEnd - R.Name));
      TrimInPlace(Entry->QName);
    }
    if (Entry) {
      A->LocalName = Entry->LocalName;
      A->QName = Entry->QName;
    } else if (R.Colon) {
      P->DecodeInto(FAttributePrefix, R.Name, static_cast<std::size_t>(R.Colon - R.Name));
      P->DecodeInto(A->LocalName, R.LocalName, static_cast<std::size_t>(R.NameEnd - R.LocalName));
      TrimInPlace(A->LocalName);
      P->DecodeInto(A->QName, R.Name, static_cast<std::size_t>(R.NameEnd - R.Name));
      TrimInPlace(A->QName);
    } else {
      FAttributePrefix.clear();
      P->DecodeInto(A->LocalName, R.Name, static_cast<std::size_t>(R.NameEnd - R.Name));
      TrimInPlace(A->LocalName);
      A->QName = A->LocalName;
    }
    P->DecodeInto(A->Value, R.Value, static_cast<std::size_t>(R.ValueEnd - R.Value));
    A->AttrType = TLxSAXAttributeType::CDATA;
    // A declaration's handler sees the cursor on the closing quote, as in ParseAtrributes.
    P->SetRawCursor(R.ValueEnd);
    ResolveAttribute(A, Entry ? Entry->Prefix : FAttributePrefix, ALevel);
  }
  P->SetRawCursor(FAfterRawAttributes);
}

void TLxSAXXMLReader::ParseElement(Integer& ALevel) {
  TLxXMLParser* P = FXMLParser;
  ParseTag(ALevel);
  if (ALevel != 0) {
    // Over the '>' that ends the tag; a raw step where it is in the window.
    const Byte* At = P->RawCursor();
    if (FScanInPlace && At != P->RawReadEnd() && *At == '>')
      P->SetRawCursor(At + 1);
    else
      P->MoveNext();
  } else {
    P->NextChar();
    ParseAfterRoot(ALevel);
  }
  ParseTextBehindTag();
}

void TLxSAXXMLReader::ParseTextBehindTag() {
  TLxXMLParser* P = FXMLParser;
  if (const Byte* At = P->RawCursor(); FScanInPlace && At != P->RawReadEnd()) {
    if (*At != '<')
      ParseCharacters();
  } else if (!P->_GetEOF() && !P->RawEquals(P->FLt)) {
    ParseCharacters();
  }
}

void TLxSAXXMLReader::ParseAfterRoot(Integer& ALevel) {
  // What follows a closed root, up to the end of the text. An extra root (allowed without
  // SingleRoot) is a nested ParseElement in principle; it is unrolled here, because that nested
  // call's own walk after its root would be this very loop, and the stack stays flat.
  TLxXMLParser* P = FXMLParser;
  while (!P->_GetEOF()) {
    while (!P->_GetEOF() && P->CurrCharA() <= cLxSpaceA)
      P->NextChar();
    if (P->_GetEOF())
      break;
    if (!P->RawEquals(P->FLt)) {
      if (FCheckSingleRootElm)
        throw ELxXMLParseError(_cLxXMLInvalidTextAtRoot, cLxXMLErrInvalidTextAtRoot);
      ParseCharacters();
      continue;
    }
    if (!ParseMarkupBesideElements()) {
      if (FCheckSingleRootElm)
        throw ELxXMLParseError(_cLxXMLMultipleRoot, cLxXMLErrMultipleRoot);
      ParseTag(ALevel);
      if (ALevel != 0) {
        P->MoveNext();
        ParseTextBehindTag();
      } else {
        P->NextChar();
      }
    }
  }
}

void TLxSAXXMLReader::ScanTagNames(bool& AEndTag) {
  TLxXMLParser* P = FXMLParser;
  if (!P->RawEquals(P->FLt))
    P->CheckCurrChar(P->FLt, true);
  P->NextChar();
  AEndTag = P->RawEquals(P->FSlash);
  if (AEndTag)
    P->MoveNext();
  P->CheckValidNameStartChar();
  P->SetMark(tpMark1);
  P->SetMark(tpMark2);
  P->SkipSet(spNotInSet, ElementNameEnd);
  if (P->RawEquals(P->FLt)) {
    TakeStart();
    throw ELxXMLParseError(_cLxXMLELMNotClosed, {FLineNr, FColNr}, cLxXMLErrELMNotClosed);
  }
  FPrefix.clear();
  const bool Prefixed = P->RawEquals(P->FColon);
  if (Prefixed) {
    P->SelectInto(FPrefix, tpMark1, tpCurrent, false);
    P->NextChar();
    P->CheckValidNameStartChar();
    P->SetMark(tpMark1);
    P->SkipSet(spNotInSet, LocalNameEnd);
  }
  P->SelectInto(FLocalName, tpMark1, tpCurrent, true);
  if (Prefixed) {
    P->SelectInto(FQName, tpMark2, tpCurrent, true);
  } else {
    // Both names are the same text: copied rather than decoded twice.
    FQName = FLocalName;
    P->ClearMark(tpMark2);
  }
  P->SkipWhile(spEqual, P->FSpace);
}

void TLxSAXXMLReader::ParseTag(Integer& ALevel) {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  bool EndTag = false;
  const bool InPlace = FScanInPlace && ScanTagInPlace(EndTag);
  if (!InPlace)
    ScanTagNames(EndTag);
  const LxXMLString& Prefix = InPlace ? *FTagPrefix : FPrefix;
  const LxXMLString& LocalName = InPlace ? *FTagLocalName : FLocalName;
  const LxXMLString& QName = InPlace ? *FTagQName : FQName;
  // Where the scan in place stopped: the '>' of an end tag, or the '/' or '>' behind the
  // attributes; the handlers don't move the cursor.
  const Byte Stop = InPlace ? *FAfterRawAttributes : 0;
  auto At = [&](Byte AStop, const void* ADelimiter) {
    return InPlace ? Stop == AStop : P->RawEquals(ADelimiter);
  };

  if (EndTag) {
    const LxXMLString& URI = FNamespaceList.URIOf(Prefix);
    if (!At('>', P->FGt))
      P->CheckCurrChar(P->FGt, true);
    FContent->EndElement(URI, LocalName, QName);
    FNamespaceList.RemoveLevel(ALevel);
    --ALevel;
  } else {
    ++ALevel;
    // One list serves every element with attributes: it is valid only during StartElement,
    // and emptied right after it, also when a handler raises.
    struct TEmptyAfterUse {
      TLxSAXXMAttributes* List = nullptr;
      ~TEmptyAfterUse() {
        if (List)
          List->Clear();
      }
    } Used;
    TLxSAXXMAttributes* Attributes = FEmptyAttributes;
    if (InPlace ? !FRawAttributes.empty() : !At('/', P->FSlash) && !At('>', P->FGt)) {
      if (!FAttributes)
        FAttributes = New<TLxSAXXMAttributes>();
      Attributes = Used.List = FAttributes;
      if (InPlace)
        TakeRawAttributes(Attributes, ALevel);
      else
        ParseAtrributes(Attributes, ALevel);
    }
    if (At('/', P->FSlash)) {
      const LxXMLString& URI = FNamespaceList.URIOf(Prefix);
      FContent->StartElement(URI, LocalName, QName, Attributes);
      FContent->EndElement(URI, LocalName, QName);
      FNamespaceList.RemoveLevel(ALevel);
      --ALevel;
    } else if (At('>', P->FGt)) {
      FContent->StartElement(FNamespaceList.GetURI(Prefix), LocalName, QName, Attributes);
    }
  }
  if (!At('>', P->FGt))
    P->SkipWhile(spNotEqual, P->FGt);
}

} // namespace lorvane
