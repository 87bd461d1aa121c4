// The reader frame (sources, locator, failure road) and the XML format's flat parse loop.
#include "lorvane/sax/LxSAXReader.h"

#include "lorvane/core/LxStreams.h"

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
  if (AIID == ILxSAXLocator::IID)
    *AObj = static_cast<ILxSAXLocator*>(this);
  else if (AIID == ILxSAXXMLReader::IID)
    *AObj = static_cast<ILxSAXXMLReader*>(this);
  else
    return TLxObject::QueryInterface(AIID, AObj);
  _AddRef();
  return S_OK;
}

Integer TLxSAXReader::GetPosition() {
  return FParser ? static_cast<Integer>(FParser->GetPosition()) : -1;
}

Integer TLxSAXReader::GetLineNr() {
  if (FUnexpectedEOF)
    return FLineNr;
  return FParser ? FParser->GetLineNr() : -1;
}

Integer TLxSAXReader::GetColNr() {
  if (FUnexpectedEOF)
    return FColNr;
  return FParser ? FParser->GetColNr() : -1;
}

Variant TLxSAXReader::GetProperty(const LxXMLString&) { return Null(); }

void TLxSAXReader::RunParse(TStream* AStream, bool AStreamOwner, bool AReadBOM, Word ACodePage,
                            const LxXMLString& APublicID) {
  // The stream is freed here rather than by the parser, so that it goes also when making the
  // parser fails.
  TOwned<TStream> OwnedStream(AStreamOwner ? AStream : nullptr);
  FPublicID = APublicID;
  FParser = CreateParser(AStream, /*AStreamOwner=*/false, AReadBOM, ACodePage);
  struct TParserRelease {
    TLxSAXReader* Reader;
    ~TParserRelease() { FreeAndNil(Reader->FParser); }
  } Release{this};
  InternalParse();
}

void TLxSAXReader::ParseStream(TStream* AStream, Word AStreamCodePage,
                               const LxXMLString& APublicID) {
  RunParse(AStream, false, false, AStreamCodePage, APublicID);
}

void TLxSAXReader::ParseFile(const TFileName& AFileName, Word AMode, const LxXMLString& APublicID) {
  RunParse(New<TFileStream>(AFileName, AMode), true, true, 0, APublicID);
}

void TLxSAXReader::ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ABufCodePage,
                               const LxXMLString& APublicID) {
  RunParse(New<TLxMemoryStream>(ABuffer, Int64(ABufSize)), true, false, ABufCodePage, APublicID);
}

void TLxSAXReader::Parse(const LxXMLString& AXML, const LxXMLString& APublicID) {
  RunParse(New<TLxStringStream>(std::u16string_view(AXML)), true, false, 1200, APublicID);
}

void TLxSAXReader::Parse(const RawByteString& AXML, Word ACodePage, const LxXMLString& APublicID) {
  RunParse(New<TLxStringStream>(std::string_view(AXML), ACodePage), true, false, ACodePage,
           APublicID);
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

} // namespace

TLxSAXXMLReader::TLxSAXXMLReader() : FNamespaceList(this) {}

TLxTextParser* TLxSAXXMLReader::CreateParser(TStream* AStream, bool AStreamOwner, bool AReadBOM,
                                             Word AStreamCodePage) {
  FXMLParser = New<TLxXMLParser>(AStream, AStreamOwner, AReadBOM, AStreamCodePage);
  return FXMLParser;
}

void TLxSAXXMLReader::MarkStart() {
  FLineNr = FXMLParser->GetLineNr();
  FColNr = FXMLParser->GetColNr();
}

void TLxSAXXMLReader::InternalParse() {
  if (!FContentHandler)
    throw ELxXMLParseError(_cLxXMLNoContentHandler, cLxXMLErrNoContentHandler);
  if (!FErrorHandler)
    throw ELxXMLParseError(_cLxXMLNoErrorHandler, cLxXMLErrNoErrorHandler);
  TLxXMLParser* P = FXMLParser;
  Integer Depth = 0;
  try {
    P->SkipWhile(spNotEqual, P->FLt);
    FContentHandler->StartDocument();
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
    P->CheckCurrChar(P->FLt, true);
    while (!P->_GetEOF()) {
      if (!P->CheckCurrChar(P->FLt, false)) {
        ParseCharacters();
        continue;
      }
      const WideChar Next = P->PeekChar()[0];
      if (Next == u'!') {
        P->NextChar();
        if (P->PeekChar()[0] == u'-')
          ParseComment();
        else
          ParseCDATA();
      } else if (Next == u'?') {
        ParseProcessingInstruction();
      } else {
        ParseElement(Depth);
      }
    }
    FContentHandler->EndDocument();
  } catch (const std::exception& E) {
    FUnexpectedEOF = dynamic_cast<const ELxTextParserEOF*>(&E) != nullptr;
    if (FErrorHandler) {
      const auto* Own = dynamic_cast<const Exception*>(&E);
      FErrorHandler->FatalError(this, Own ? Own->Message() : UTF8ToString(E.what()));
    }
    throw;
  }
}

void TLxSAXXMLReader::ParseProcessingInstruction() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  P->CheckCurrChar(P->FLt, true);
  P->NextChar();
  P->NextChar();
  P->SetMark(tpMark1);
  P->SkipSet(spNotInSet, TargetEnd);
  const LxXMLString Target = P->Selected(tpMark1, tpCurrent, true);
  LxXMLString Data;
  if (P->CheckCurrChar(P->FSpace, false)) {
    P->SkipWhile(spEqual, P->FSpace);
    P->SetMark(tpMark1);
    P->SkipWhile(spNotEqual, P->FQuest);
    Data = P->Selected(tpMark1, tpCurrent, true);
  } else {
    P->SkipSet(spInSet, TargetEnd);
  }
  FContentHandler->ProcessingInstruction(Target, Data);
  P->SkipWhile(spNotEqual, P->FGt);
  P->NextChar();
}

void TLxSAXXMLReader::ParseComment() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  if (P->CheckCurrChar(P->FLt, false))
    P->NextChar();
  P->CheckCurrChar(P->FExcl, true);
  P->SkipChars(3);
  P->SetMark(tpMark1);
  do {
    P->SkipWhile(spNotEqual, P->FLine);
    if (P->PeekString(3) == u"-->")
      break;
    P->MoveNext();
  } while (!P->_GetEOF());
  if (FLexicalHandler)
    FLexicalHandler->Comment(P->Selected(tpMark1, tpCurrent, true));
  else
    P->ClearMark(tpMark1);
  P->SkipWhile(spNotEqual, P->FGt);
  P->MoveNext();
}

void TLxSAXXMLReader::ParseDTD() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  if (P->CheckCurrChar(P->FLt, false))
    P->NextChar();
  P->CheckCurrChar(P->FExcl, true);
  P->NextChar();
  P->SetMark(tpMark1);
  P->SkipWhile(spNotEqual, P->FSpace);
  const LxXMLString Keyword = P->Selected(tpMark1, tpCurrent, true);
  if (Keyword != u"DOCTYPE")
    throw ELxXMLParseError(_cLxXMLDOCTypeExpected, {Keyword}, cLxXMLErrDOCTypeExpected);
  if (FLexicalHandler)
    FLexicalHandler->StartDTD();
  // The declaration isn't parsed: angle brackets are counted, quotes and comments regardless.
  Integer Open = 1;
  do {
    P->NextChar();
    if (P->CheckCurrChar(P->FLt, false))
      ++Open;
    else if (P->CheckCurrChar(P->FGt, false) && --Open == 0)
      break;
  } while (!P->_GetEOF());
  if (FLexicalHandler)
    FLexicalHandler->EndDTD();
  P->SkipWhile(spNotEqual, P->FGt);
  P->NextChar();
}

void TLxSAXXMLReader::ParseCDATA() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  P->CheckCurrChar(P->FExcl, true);
  P->SetMark(tpMark1);
  P->SkipChars(7);
  const LxXMLString Opening = Copy(P->Selected(tpMark1, tpNext, true), 1, 8);
  if (Opening != u"![CDATA[")
    throw ELxXMLParseError(_cLxXMLCDATAExpected, {Opening}, cLxXMLErrCDATAExpected);
  if (FLexicalHandler)
    FLexicalHandler->StartCDATA();
  P->MoveNext();
  P->SetMark(tpMark1);
  do {
    P->SkipWhile(spNotEqual, P->FBracketCA);
    if (P->PeekString(3) == u"]]>")
      break;
    P->MoveNext();
  } while (!P->_GetEOF());
  FContentHandler->Characters(P->Selected(tpMark1, tpCurrent, true));
  if (FLexicalHandler)
    FLexicalHandler->EndCDATA();
  P->SkipWhile(spNotEqual, P->FGt);
  P->MoveNext();
}

void TLxSAXXMLReader::ParseCharacters() {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  P->SetMark(tpMark1);
  // The run reaches the next '<' (its first character is never one) and is white space when no
  // character in it is above U+0020: two skips give what a walk character by character gives.
  bool White = P->CurrCharW() <= 0x20;
  P->MoveNext();
  if (White)
    P->SkipWhile(spLessEqual, P->FSpace);
  if (!P->_GetEOF() && !P->CheckCurrChar(P->FLt, false)) {
    White = false;
    P->SkipWhile(spNotEqual, P->FLt);
  }
  if (FCheckSingleRootElm)
    P->CheckEOF();
  else if (P->_GetEOF())
    P->SetMark(tpMark2);
  if (White) {
    FContentHandler->IgnorableWhitespace(P->Selected(tpMark1, tpCurrent, false));
  } else if (P->GetPos(tpMark2) != 0) {
    FContentHandler->Characters(P->Selected(tpMark1, tpMark2, false));
    FContentHandler->IgnorableWhitespace(P->Selected(tpMark2, tpCurrent, false));
  } else if (P->GetCurPos() != P->GetPos(tpMark1)) {
    FContentHandler->Characters(P->Selected(tpMark1, tpCurrent, false));
  }
  P->ClearMark(tpMark1);
  P->ClearMark(tpMark2);
}

void TLxSAXXMLReader::ParseAtrributes(TLxSAXXMAttributes* AAttributes, Integer ALevel) {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  auto RaiseOnTagEnd = [P] {
    if (P->CheckCurrChar(P->FLt, false) || P->CheckCurrChar(P->FGt, false))
      throw ELxXMLParseError(_cLxXMLMissingAttribute, cLxXMLErrMissingAttribute);
  };
  for (;;) {
    P->SetMark(tpMark1);
    P->SetMark(tpMark2);
    P->SkipSet(spNotInSet, AttributeNameEnd);
    RaiseOnTagEnd();
    LxXMLString Prefix, LocalName, QName;
    if (P->CheckCurrChar(P->FColon, false)) {
      Prefix = P->Selected(tpMark1, tpCurrent, false);
      P->SkipWhile(spEqual, P->FColon);
      P->SetMark(tpMark1);
      P->SkipSet(spNotInSet, AttributeLocalNameEnd);
      RaiseOnTagEnd();
      LocalName = Trim(P->Selected(tpMark1, tpCurrent, true));
      QName = Trim(P->Selected(tpMark2, tpCurrent, true));
    } else {
      LocalName = Trim(P->Selected(tpMark1, tpCurrent, true));
      QName = LocalName;
      P->ClearMark(tpMark2);
    }
    P->SkipSet(spNotInSet, ValueStart);
    RaiseOnTagEnd();
    const WideChar Quote = P->ReadChar()[0];
    P->SetMark(tpMark1);
    P->SkipWhile(spNotEqual, Quote);
    LxXMLString Value = P->Selected(tpMark1, tpCurrent, true);
    if (QName.size() == 5 && SameText(QName, u"xmlns")) {
      AAttributes->Add(LocalName, QName, LxXMLString(), Value, TLxSAXAttributeType::CDATA);
      FNamespaceList.AddURI(ALevel, LxXMLString(), Value);
    } else if (Prefix.size() == 5 && SameText(Prefix, u"xmlns")) {
      AAttributes->Add(LocalName, QName, LxXMLString(), Value, TLxSAXAttributeType::CDATA);
      FNamespaceList.AddURI(ALevel, LocalName, Value);
    } else {
      AAttributes->Add(std::move(LocalName), std::move(QName), FNamespaceList.GetURI(Prefix),
                       std::move(Value), TLxSAXAttributeType::CDATA);
    }
    P->SkipSet(spInSet, AfterValue);
    if (P->_GetEOF() || P->CheckCurrChar(P->FGt, false) || P->CheckCurrChar(P->FSlash, false))
      return;
  }
}

void TLxSAXXMLReader::ParseElement(Integer& ALevel) {
  TLxXMLParser* P = FXMLParser;
  ParseTag(ALevel);
  if (ALevel != 0) {
    P->MoveNext();
  } else {
    P->NextChar();
    ParseAfterRoot(ALevel);
  }
  ParseTextBehindTag();
}

void TLxSAXXMLReader::ParseTextBehindTag() {
  TLxXMLParser* P = FXMLParser;
  if (!P->_GetEOF() && !P->CheckCurrChar(P->FLt, false))
    ParseCharacters();
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
    if (!P->CheckCurrChar(P->FLt, false)) {
      if (FCheckSingleRootElm)
        throw ELxXMLParseError(_cLxXMLInvalidTextAtRoot, cLxXMLErrInvalidTextAtRoot);
      ParseCharacters();
      continue;
    }
    const WideChar Next = P->PeekChar()[0];
    if (Next == u'!') {
      P->NextChar();
      if (P->PeekChar()[0] == u'-')
        ParseComment();
      else
        ParseCDATA();
    } else if (Next == u'?') {
      ParseProcessingInstruction();
    } else {
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

void TLxSAXXMLReader::ParseTag(Integer& ALevel) {
  TLxXMLParser* P = FXMLParser;
  MarkStart();
  P->CheckCurrChar(P->FLt, true);
  P->NextChar();
  const bool EndTag = P->CheckCurrChar(P->FSlash, false);
  if (EndTag)
    P->MoveNext();
  P->CheckValidNameStartChar();
  P->SetMark(tpMark1);
  P->SetMark(tpMark2);
  P->SkipSet(spNotInSet, ElementNameEnd);
  if (P->CheckCurrChar(P->FLt, false))
    throw ELxXMLParseError(_cLxXMLELMNotClosed, {FLineNr, FColNr}, cLxXMLErrELMNotClosed);
  LxXMLString Prefix;
  if (P->CheckCurrChar(P->FColon, false)) {
    Prefix = P->Selected(tpMark1, tpCurrent, false);
    P->NextChar();
    P->CheckValidNameStartChar();
    P->SetMark(tpMark1);
    P->SkipSet(spNotInSet, LocalNameEnd);
  }
  const LxXMLString LocalName = P->Selected(tpMark1, tpCurrent, true);
  const LxXMLString QName = P->Selected(tpMark2, tpCurrent, true);
  P->SkipWhile(spEqual, P->FSpace);

  if (EndTag) {
    const LxXMLString URI = FNamespaceList.GetURI(Prefix);
    P->CheckCurrChar(P->FGt, true);
    FContentHandler->EndElement(URI, LocalName, QName);
    FNamespaceList.RemoveLevel(ALevel);
    --ALevel;
  } else {
    ++ALevel;
    TOwned<TLxSAXXMAttributes> OwnAttributes;
    TLxSAXXMAttributes* Attributes = FEmptyAttributes;
    if (!P->CheckCurrChar(P->FSlash, false) && !P->CheckCurrChar(P->FGt, false)) {
      OwnAttributes.reset(New<TLxSAXXMAttributes>());
      Attributes = OwnAttributes.get();
      ParseAtrributes(Attributes, ALevel);
    }
    if (P->CheckCurrChar(P->FSlash, false)) {
      const LxXMLString URI = FNamespaceList.GetURI(Prefix);
      FContentHandler->StartElement(URI, LocalName, QName, Attributes);
      FContentHandler->EndElement(URI, LocalName, QName);
      FNamespaceList.RemoveLevel(ALevel);
      --ALevel;
    } else if (P->CheckCurrChar(P->FGt, false)) {
      FContentHandler->StartElement(FNamespaceList.GetURI(Prefix), LocalName, QName, Attributes);
    }
  }
  P->SkipWhile(spNotEqual, P->FGt);
}

} // namespace lorvane
