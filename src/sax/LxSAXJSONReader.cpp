// The JSON event reader for XML consumers: the elements that JSON values become, the cleaning of
// member names into XML names, and the walk over nested values on a stack of its own.
#include "lorvane/sax/LxSAXJSONReader.h"

#include "core/internal/ReaderFrame.h"
#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/json/LxJSONTypes.h"

#include <string_view>
#include <vector>

namespace lorvane {

TLxJSONTextParserEx::TLxJSONTextParserEx(TStream* ASourceStream, bool AStreamOwner,
                                         Word AStreamCodePage)
    : TLxJSONTextParser(ASourceStream, AStreamOwner, AStreamCodePage) {
  SetCharacterSetType(GetCharacterSetType());
}

namespace {

// NameStartChar of XML 1.0 (fifth edition) within 16 bits, without the colon.
constexpr bool IsNameStartUnit(char16_t C) noexcept {
  return (C >= u'A' && C <= u'Z') || C == u'_' || (C >= u'a' && C <= u'z') ||
         (C >= 0xC0 && C <= 0xD6) || (C >= 0xD8 && C <= 0xF6) || (C >= 0xF8 && C <= 0x2FF) ||
         (C >= 0x370 && C <= 0x37D) || (C >= 0x37F && C <= 0x1FFF) || C == 0x200C || C == 0x200D ||
         (C >= 0x2070 && C <= 0x218F) || (C >= 0x2C00 && C <= 0x2FEF) ||
         (C >= 0x3001 && C <= 0xD7FF) || (C >= 0xF900 && C <= 0xFDCF) ||
         (C >= 0xFDF0 && C <= 0xFFFD);
}

// NameChar: NameStartChar and the units that may only follow it.
constexpr bool IsNameUnit(char16_t C) noexcept {
  return IsNameStartUnit(C) || C == u'-' || C == u'.' || (C >= u'0' && C <= u'9') || C == 0xB7 ||
         (C >= 0x300 && C <= 0x36F) || C == 0x203F || C == 0x2040;
}

const TLxCharSet Containers{'[', '{'};
const TLxCharSet ArrayStops{']', ','};
const TLxCharSet ObjectStarts{'}', '"'};
const TLxCharSet ObjectStops{'}', ','};
const TLxCharSet StringStops{'"', '\\'};
const TLxCharSet NumberChars = TLxCharSet::Range('0', '9') + TLxCharSet{'.', '-', '+', 'e', 'E'};
const TLxCharSet AfterNumber{']', '}', ','};

constexpr std::u16string_view ValueStarts = u"\", t, f, n, 0..9, ., + or -";
constexpr std::u16string_view EscapeChars = u"\", \\, /, b, f, n, r, t or u";

const LxXMLString NoURI;

TLxSAXXMAttributes* NewAttributes(std::u16string_view ALocalName, std::u16string_view AQName,
                                  std::u16string_view AURI, std::u16string_view AValue) {
  TLxSAXXMAttributes* List = New<TLxSAXXMAttributes>();
  List->Add(LxXMLString(ALocalName), LxXMLString(AQName), LxXMLString(AURI), LxXMLString(AValue),
            TLxSAXAttributeType::CDATA);
  return List;
}

/// One parse over the JSON cursor. Arrays and objects are followed on FFrames instead of the
/// call stack: each open container is a frame, and a closed one hands control back to the
/// step of its parent that a recursive descent would return to, so the events are those of
/// one. Element names live in FNames, one slot for the root and one per open object (the name
/// of its current member); an array names its items by the slot it was entered with.
class TShapeWalk {
public:
  TShapeWalk(TLxJSONTextParserEx* AParser, ILxSAXContentHandler* AContent,
             TLxSAXXMAttributes* AEmpty)
      : P(AParser), H(AContent), FEmpty(AEmpty) {
    // Every simple value of a kind carries the same attribute: the lists are made once a parse.
    FRoot.reset(NewAttributes(u"xsi", u"xmlns:xsi", u"", cLxNsXSI));
    FRoot->Add(u"xsd", u"xmlns:xsd", LxXMLString(), LxXMLString(cLxNsXSD),
               TLxSAXAttributeType::CDATA);
    FString.reset(NewAttributes(u"type", u"xsd:type", cLxNsXSD, u"string"));
    FDecimal.reset(NewAttributes(u"type", u"xsd:type", cLxNsXSD, u"decimal"));
    FBoolean.reset(NewAttributes(u"type", u"xsd:type", cLxNsXSD, u"boolean"));
    FNil.reset(NewAttributes(u"nil", u"xsi:nil", cLxNsXSI, u"true"));
  }

  void Run() {
    P->SkipSet(spNotInSet, Containers);
    H->StartDocument();
    LxXMLString Root;
    if (P->RawEquals(P->FBracketO))
      Root = u"array";
    else if (P->RawEquals(P->FBraceO))
      Root = u"object";
    else
      RaiseNotWellFormed(u"");
    FNames.assign(1, Root);
    H->StartElement(NoURI, Root, Root, FRoot.get());
    while (!P->_GetEOF()) {
      if (P->RawEquals(P->FBracketO) || P->RawEquals(P->FBraceO)) {
        ParseNested();
        continue;
      }
      // The one character behind a value is passed over unseen, then blanks and controls.
      P->MoveNext();
      while (!P->_GetEOF() && P->CurrCharW() <= 0x20)
        P->MoveNext();
      if (!P->_GetEOF() && !P->RawEquals(P->FBracketO) && !P->RawEquals(P->FBraceO))
        RaiseNotWellFormed(u"");
    }
    H->EndElement(NoURI, Root, Root);
    H->EndDocument();
  }

private:
  /// Where the walk goes on: the steps of a recursive descent between two of its calls.
  enum class TStep : Byte { ArrayItem, AfterArrayItem, ObjectBegin, Member, AfterMember, Done };
  struct TFrame {
    bool IsArray;
    std::size_t Name; // an array: the slot its items are named by; an object: its own slot
  };

  /// A top-level array or object into the root, which is slot 0.
  void ParseNested() {
    FFrames.clear();
    FUsed = 1;
    TStep Step = Open(0);
    for (;;) {
      switch (Step) {
      case TStep::ArrayItem: {
        P->MoveNext(); // over the '[' or ','
        P->SkipWhile(spLessEqual, P->FSpace);
        const std::size_t Name = FFrames.back().Name;
        if (P->RawEquals(P->FBracketO) || P->RawEquals(P->FBraceO)) {
          StartContainer(Name);
          Step = Open(Name);
        } else if (P->RawEquals(P->FBracketC)) {
          Step = TStep::AfterArrayItem;
        } else {
          ParseSimpleValue(Name);
          Step = TStep::AfterArrayItem;
        }
        break;
      }
      case TStep::AfterArrayItem:
        P->SkipSet(spNotInSet, ArrayStops);
        Step = P->CurrCharA() == ',' ? TStep::ArrayItem : Close();
        break;
      case TStep::ObjectBegin:
        P->SkipSet(spNotInSet, ObjectStarts);
        Step = P->RawEquals(P->FQuote) ? TStep::Member : Close();
        break;
      case TStep::Member: {
        P->SkipWhile(spNotEqual, P->FQuote);
        ReadString(FText);
        const std::size_t Name = FFrames.back().Name;
        LxJSONNameToXMLName(FText, FNames[Name]);
        P->MoveNext(); // over the closing quote
        P->SkipWhile(spNotEqual, P->FColon);
        P->MoveNext();
        P->SkipWhile(spLessEqual, P->FSpace);
        if (P->RawEquals(P->FBracketO) || P->RawEquals(P->FBraceO)) {
          StartContainer(Name);
          Step = Open(Name);
        } else {
          ParseSimpleValue(Name);
          Step = TStep::AfterMember;
        }
        break;
      }
      case TStep::AfterMember:
        P->SkipSet(spNotInSet, ObjectStops);
        Step = P->CurrCharA() == ',' ? TStep::Member : Close();
        break;
      case TStep::Done:
        return;
      }
    }
  }

  /// The element of the array or object at the cursor: the name of slot AName, with "Array"
  /// behind it for an array.
  void StartContainer(std::size_t AName) {
    ElementName(AName, P->RawEquals(P->FBracketO));
    H->StartElement(NoURI, FElement, FElement, FEmpty);
  }

  void ElementName(std::size_t AName, bool AIsArray) {
    FElement = FNames[AName];
    if (AIsArray)
      FElement += u"Array";
  }

  /// Opens the array or object at the cursor; an array's items take the name of slot AName, an
  /// object gets a slot of its own.
  TStep Open(std::size_t AName) {
    if (P->RawEquals(P->FBracketO)) {
      P->CheckCurrChar(P->FBracketO, true);
      FFrames.push_back({true, AName});
      return TStep::ArrayItem;
    }
    P->CheckCurrChar(P->FBraceO, true);
    if (FUsed == FNames.size())
      FNames.emplace_back();
    FFrames.push_back({false, FUsed++});
    return TStep::ObjectBegin;
  }

  /// Over the closing bracket or brace of the innermost container (ELxTextParserEOF where the
  /// text has ended), then back to its parent: the end of the element the container was in,
  /// and the parent's step behind an item.
  TStep Close() {
    P->MoveNext();
    const TFrame Closed = FFrames.back();
    FFrames.pop_back();
    if (!Closed.IsArray)
      --FUsed;
    if (FFrames.empty())
      return TStep::Done;
    const TFrame& Parent = FFrames.back();
    ElementName(Parent.Name, Closed.IsArray);
    H->EndElement(NoURI, FElement, FElement);
    return Parent.IsArray ? TStep::AfterArrayItem : TStep::AfterMember;
  }

  /// A string, number, boolean or null at the cursor, as an element of the name in slot AName
  /// with the attribute of its kind and its text.
  void ParseSimpleValue(std::size_t AName) {
    TLxSAXXMAttributes* Attributes = nullptr;
    switch (P->CurrCharA()) {
    case 'f':
      ReadWord(u"false");
      Attributes = FBoolean.get();
      break;
    case 't':
      ReadWord(u"true");
      Attributes = FBoolean.get();
      break;
    case 'n':
      ReadWord(u"null");
      Attributes = FNil.get();
      break;
    case '"':
      ReadString(FText);
      Attributes = FString.get();
      break;
    default:
      if (!NumberChars.Contains(P->CurrCharA()))
        RaiseNotWellFormed(ValueStarts);
      // The number isn't examined; what stands behind it up to a delimiter is dropped.
      P->SetMark(tpMark1);
      P->SkipSet(spInSet, NumberChars);
      P->SelectInto(FText, tpMark1, tpCurrent, true);
      P->SkipSet(spNotInSet, AfterNumber);
      Attributes = FDecimal.get();
      break;
    }
    const LxXMLString& Name = FNames[AName];
    H->StartElement(NoURI, Name, Name, Attributes);
    H->Characters(FText);
    H->EndElement(NoURI, Name, Name);
  }

  void ReadWord(std::u16string_view AWord) {
    for (const char16_t& Letter : AWord) {
      if (P->CurrCharW() != Letter)
        RaiseNotWellFormed(std::u16string_view(&Letter, 1));
      P->MoveNext();
    }
    FText = AWord;
  }

  /// The raw text between the quotes, escapes untouched; the cursor stays on the closing quote.
  /// Only a double quote ends it: a text that ends first gives what was read.
  void ReadString(LxXMLString& AText) {
    P->CheckCurrChar(P->FQuote, true);
    P->MoveNext();
    P->SetMark(tpMark1);
    for (;;) {
      P->SkipSet(spNotInSet, StringStops);
      if (!P->RawEquals(P->FBackSlash))
        break;
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
        // Over the 'u' and three digits, none of them looked at.
        for (int Step = 0; Step < 4; ++Step)
          P->MoveNext();
        break;
      default:
        RaiseNotWellFormed(EscapeChars);
      }
    }
    P->SelectInto(AText, tpMark1, tpCurrent, true);
  }

  [[noreturn]] void RaiseNotWellFormed(std::u16string_view AExpected) {
    throw ELxJSONParseError(_cLxJSONNotWellFormed, {UnicodeString(AExpected), P->CurrCharText()},
                            cLxJSONErrNotWellFormed);
  }

  TLxJSONTextParserEx* P;
  ILxSAXContentHandler* H;
  TLxSAXXMAttributes* FEmpty;
  TOwned<TLxSAXXMAttributes> FRoot, FString, FDecimal, FBoolean, FNil;
  std::vector<TFrame> FFrames;
  std::vector<LxXMLString> FNames;
  std::size_t FUsed = 1; // slots in use; the rest keep their memory for later objects
  LxXMLString FText, FElement;
};

} // namespace

void LxJSONNameToXMLName(std::u16string_view ARawName, LxXMLString& AXMLName) {
  AXMLName.clear();
  // A unit that can't stand in a name becomes '_', which may start one: only a name unit that
  // may not start a name needs one in front.
  if (ARawName.empty() || (IsNameUnit(ARawName.front()) && !IsNameStartUnit(ARawName.front())))
    AXMLName.push_back(u'_');
  for (char16_t C : ARawName)
    AXMLName.push_back(IsNameUnit(C) ? C : u'_');
}

TLxTextParser* TLxSAXJSONReader::CreateParser(TStream* AStream, bool AStreamOwner, bool,
                                              Word AStreamCodePage) {
  return New<TLxJSONTextParserEx>(AStream, AStreamOwner, AStreamCodePage);
}

void TLxSAXJSONReader::ResetParseState() {
  TLxSAXReader::ResetParseState();
  // No JSON step keeps the start of a construct: a text that ends too early reports 0, 0.
  FLineNr = 0;
  FColNr = 0;
}

void TLxSAXJSONReader::InternalParse() {
  if (!FContentHandler)
    throw ELxJSONException(_cLxJSONNoContentHandler, cLxJSONErrNoContentHandler);
  if (!FErrorHandler)
    throw ELxJSONException(_cLxJSONNoErrorHandler, cLxJSONErrNoErrorHandler);
  // Held for the whole parse, whatever a handler sets meanwhile.
  const IPtr<ILxSAXContentHandler> Content = FContentHandler;
  TShapeWalk Walk(static_cast<TLxJSONTextParserEx*>(FParser), Content.Get(), FEmptyAttributes);
  readerframe::ReportingFailures(
      FUnexpectedEOF, [&] { Walk.Run(); },
      [this](const LxXMLString& AMessage) {
        if (FErrorHandler)
          FErrorHandler->FatalError(this, AMessage);
      });
}

} // namespace lorvane
