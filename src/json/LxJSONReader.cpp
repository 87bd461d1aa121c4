// The JSON event reader: sources, locator, failure road, and the forgiving grammar, with nesting
// followed on a stack of its own.
#include "lorvane/json/LxJSONReader.h"

#include "lorvane/core/LxEncoding.h"
#include "lorvane/core/LxStreams.h"

namespace lorvane {

namespace {

const TLxCharSet ObjectEndOrName{'}', '"'};
const TLxCharSet ObjectEndOrNext{'}', ','};
const TLxCharSet ArrayEndOrNext{']', ','};
const TLxCharSet ValueEnd{']', '}', ','};
const TLxCharSet NumberChars = TLxCharSet::Range('0', '9') + TLxCharSet{'.', '-', '+', 'e', 'E'};
const TLxCharSet StringStop{'\\', '"'};

constexpr std::u16string_view ValueStarts = u"\", t, f, n, 0..9, ., + or -";
constexpr std::u16string_view EscapeChars = u"\", \\, /, b, f, n, r, t or u";

} // namespace

TLxJSONReader::TLxJSONReader() {
  SetAutoDestroy(false);
  FPublicID = IntToStr(static_cast<Int64>(reinterpret_cast<std::uintptr_t>(this)));
}

TLxJSONReader::~TLxJSONReader() { lorvane::Free(FParser); }

HRESULT TLxJSONReader::QueryInterface(const TGUID& AIID, void** AObj) {
  if (AIID == ILxJSONLocator::IID)
    *AObj = static_cast<ILxJSONLocator*>(this);
  else if (AIID == ILxJSONReader::IID)
    *AObj = static_cast<ILxJSONReader*>(this);
  else
    return TLxObject::QueryInterface(AIID, AObj);
  _AddRef();
  return S_OK;
}

Integer TLxJSONReader::GetLineNr() {
  if (FUnexpectedEOF)
    return FLineNr;
  return FParser ? FParser->GetLineNr() : -1;
}

Integer TLxJSONReader::GetColNr() {
  if (FUnexpectedEOF)
    return FColNr;
  return FParser ? FParser->GetColNr() : -1;
}

void TLxJSONReader::RunParse(TStream* AStream, bool AOwnsStream, Word ACodePage,
                             const LxJSONString& APublicID) {
  // The stream is freed here rather than by the cursor, so that it goes also when the encoding
  // decision refuses the text.
  TOwned<TStream> OwnedStream(AOwnsStream ? AStream : nullptr);
  FPublicID = APublicID;
  FParser = New<TLxJSONTextParser>(AStream, /*AStreamOwner=*/false, ACodePage);
  struct TParserRelease {
    TLxJSONReader* Reader;
    ~TParserRelease() { FreeAndNil(Reader->FParser); }
  } Release{this};
  InternalParse();
}

void TLxJSONReader::ParseStream(TStream* AStream, Word ACodePage, const LxJSONString& APublicID) {
  RunParse(AStream, false, ACodePage, APublicID);
}

void TLxJSONReader::ParseFile(const TFileName& AFileName, Word AMode,
                              const LxJSONString& APublicID) {
  auto* Stream = New<TFileStream>(AFileName, AMode);
  Word CodePage;
  try {
    CodePage = LxGetCodePage(Stream);
  } catch (...) {
    lorvane::Free(Stream);
    throw;
  }
  RunParse(Stream, true, CodePage, APublicID);
}

void TLxJSONReader::ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ACodePage,
                                const LxJSONString& APublicID) {
  RunParse(New<TLxMemoryStream>(ABuffer, Int64(ABufSize)), true, ACodePage, APublicID);
}

// Both string forms read the caller's characters in place: the string outlives the parse.
void TLxJSONReader::Parse(const LxJSONString& AJSON, const LxJSONString& APublicID) {
  RunParse(New<TLxMemoryStream>(static_cast<const void*>(AJSON.data()),
                                Int64(AJSON.size() * sizeof(char16_t))),
           true, 1200, APublicID);
}

void TLxJSONReader::Parse(const AnsiString& AJSON, Word ACodePage, const LxJSONString& APublicID) {
  RunParse(New<TLxMemoryStream>(static_cast<const void*>(AJSON.data()), Int64(AJSON.size())), true,
           ACodePage, APublicID);
}

void TLxJSONReader::InternalParse() {
  if (!FContentHandler)
    throw ELxJSONException(_cLxJSONNoContentHandler, cLxJSONErrNoContentHandler);
  if (!FErrorHandler)
    throw ELxJSONException(_cLxJSONNoErrorHandler, cLxJSONErrNoErrorHandler);
  Assert(FParser != nullptr);
  try {
    ParseDocument();
  } catch (const std::exception& E) {
    FUnexpectedEOF = dynamic_cast<const ELxTextParserEOF*>(&E) != nullptr;
    const auto* Own = dynamic_cast<const Exception*>(&E);
    FErrorHandler->FatalError(this, Own ? Own->Message() : UTF8ToString(E.what()));
    throw;
  }
}

void TLxJSONReader::ParseDocument() {
  TLxJSONTextParser* P = FParser;
  P->SkipWhile(spEqual, P->FSpace);
  FContentHandler->StartDocument();
  while (!P->_GetEOF()) {
    if (P->RawEquals(P->FBracketO) || P->RawEquals(P->FBraceO)) {
      ParseNested();
      P->SkipWhile(spLessEqual, P->FSpace);
      continue;
    }
    ParseSimpleValue();
    if (P->_GetEOF())
      break;
    // One character behind the value is passed over unseen (the closing quote of a string, or
    // whatever follows a keyword), then blanks and control characters.
    P->MoveNext();
    while (!P->_GetEOF() && P->CurrCharW() <= 0x20)
      P->MoveNext();
    if (!P->_GetEOF())
      RaiseNotWellFormed(u"");
  }
  FContentHandler->EndDocument();
}

void TLxJSONReader::ParseNested() {
  // Each open array or object is one entry here; a nested container pushes its entry and the
  // loop resumes the outer one where the inner one ends, as a recursive descent would.
  TLxJSONTextParser* P = FParser;
  FOpen.clear();
  bool Entering = true; // the cursor stands on the "[" or "{" of a container to open
  for (;;) {
    bool Closing = false;
    if (Entering) {
      if (P->RawEquals(P->FBracketO)) {
        P->CheckCurrChar(P->FBracketO, true);
        FContentHandler->StartArray();
        FOpen.push_back(TOpen::Array);
        Entering = EnterArrayItem();
      } else {
        P->CheckCurrChar(P->FBraceO, true);
        FContentHandler->StartObject();
        FOpen.push_back(TOpen::Object);
        if (FirstMemberFollows())
          Entering = EnterObjectMember();
        else
          Entering = false, Closing = true;
      }
      if (Entering)
        continue;
    }
    if (!Closing) {
      // An item of the innermost container has just ended.
      const bool More = FOpen.back() == TOpen::Array ? NextArrayItem() : NextObjectMember();
      if (More) {
        Entering = FOpen.back() == TOpen::Array ? EnterArrayItem() : EnterObjectMember();
        continue;
      }
    }
    if (FOpen.back() == TOpen::Array)
      FContentHandler->EndArray();
    else
      FContentHandler->EndObject();
    FOpen.pop_back();
    // Over the "]" or "}"; at the end of the text this raises ELxTextParserEOF.
    P->MoveNext();
    if (FOpen.empty())
      return;
  }
}

bool TLxJSONReader::EnterArrayItem() {
  TLxJSONTextParser* P = FParser;
  P->MoveNext();
  P->SkipWhile(spLessEqual, P->FSpace);
  if (P->RawEquals(P->FBracketO) || P->RawEquals(P->FBraceO))
    return true;
  if (!P->RawEquals(P->FBracketC))
    ParseSimpleValue();
  return false;
}

bool TLxJSONReader::NextArrayItem() {
  TLxJSONTextParser* P = FParser;
  P->SkipSet(spNotInSet, ArrayEndOrNext);
  return !P->_GetEOF() && !P->RawEquals(P->FBracketC);
}

bool TLxJSONReader::FirstMemberFollows() {
  TLxJSONTextParser* P = FParser;
  P->SkipSet(spNotInSet, ObjectEndOrName);
  return P->RawEquals(P->FQuote);
}

bool TLxJSONReader::EnterObjectMember() {
  TLxJSONTextParser* P = FParser;
  P->SkipWhile(spNotEqual, P->FQuote);
  ReadString(FName);
  FContentHandler->StartMember(FName);
  P->MoveNext();
  P->SkipWhile(spNotEqual, P->FColon);
  P->MoveNext();
  P->SkipWhile(spLessEqual, P->FSpace);
  if (P->RawEquals(P->FBracketO) || P->RawEquals(P->FBraceO))
    return true;
  ParseSimpleValue();
  return false;
}

bool TLxJSONReader::NextObjectMember() {
  TLxJSONTextParser* P = FParser;
  FContentHandler->EndMember();
  P->SkipSet(spNotInSet, ObjectEndOrNext);
  return !P->_GetEOF() && !P->RawEquals(P->FBraceC);
}

void TLxJSONReader::ParseSimpleValue() {
  TLxJSONTextParser* P = FParser;
  const WideChar C = P->CurrCharW();
  switch (C) {
  case u'f':
    ParseKeyword(u"false", jdtBoolean);
    return;
  case u'n':
    ParseKeyword(u"null", jdtNull);
    return;
  case u't':
    ParseKeyword(u"true", jdtBoolean);
    return;
  case u'"':
    ReadString(FValue);
    FContentHandler->Value(jdtString, FValue);
    return;
  default:
    break;
  }
  if (C < 0x80 && NumberChars.Contains(static_cast<Byte>(C))) {
    P->SetMark(tpMark1);
    P->SkipSet(spInSet, NumberChars);
    P->SelectInto(FValue, tpMark1, tpCurrent, true);
    FContentHandler->Value(jdtNumber, FValue);
    P->SkipSet(spNotInSet, ValueEnd);
    return;
  }
  RaiseNotWellFormed(ValueStarts);
}

void TLxJSONReader::ParseKeyword(std::u16string_view AWord, TLxJSONDataType AType) {
  TLxJSONTextParser* P = FParser;
  for (const char16_t Letter : AWord) {
    if (P->CurrCharW() != Letter)
      RaiseNotWellFormed(std::u16string_view(&Letter, 1));
    P->MoveNext();
  }
  FValue.assign(AWord);
  FContentHandler->Value(AType, FValue);
}

void TLxJSONReader::ReadString(LxJSONString& ATarget) {
  TLxJSONTextParser* P = FParser;
  P->CheckCurrChar(P->FQuote, true);
  P->MoveNext();
  P->SetMark(tpMark1);
  for (;;) {
    P->SkipSet(spNotInSet, StringStop);
    if (P->RawEquals(P->FBackSlash)) {
      P->MoveNext();
      switch (P->CurrCharW()) {
      case u'"':
      case u'/':
      case u'\\':
      case u'b':
      case u'f':
      case u'n':
      case u'r':
      case u't':
        P->MoveNext();
        break;
      case u'u':
        // Over the "u" and three of the four digits; none of them is looked at.
        for (int Step = 0; Step < 4; ++Step)
          P->MoveNext();
        break;
      default:
        RaiseNotWellFormed(EscapeChars);
      }
      if (!P->_GetEOF() && !P->RawEquals(P->FQuote) && !P->RawEquals(P->FBackSlash))
        P->MoveNext();
    }
    if (P->_GetEOF() || P->RawEquals(P->FQuote))
      break;
  }
  P->SelectInto(ATarget, tpMark1, tpCurrent, true);
}

void TLxJSONReader::RaiseNotWellFormed(std::u16string_view AExpected) {
  throw ELxJSONParseError(_cLxJSONNotWellFormed,
                          {UnicodeString(AExpected), FParser->CurrCharText()},
                          cLxJSONErrNotWellFormed);
}

} // namespace lorvane
