// The JSON event reader: sources, locator, failure road, and the forgiving grammar, with nesting
// followed on a stack of its own.
#include "lorvane/json/LxJSONReader.h"

#include "core/internal/RawScan.h"
#include "core/internal/ReaderFrame.h"
#include "lorvane/core/LxEncoding.h"
#include "lorvane/json/LxJSONHandler.h"

#include <cstring>

namespace lorvane {

/// The tree builder's byte road, open to the grammar alone.
struct TJSONByteTokens {
  static void StartMember(TLxJSONHandler* ATree, std::string_view AName) {
    ATree->StartMemberBytes(AName);
  }
  static void Value(TLxJSONHandler* ATree, TLxJSONDataType AType, const char* AText,
                    std::size_t ALength) {
    ATree->ValueBytes(AType, AText, ALength);
  }
};

namespace {

const TLxCharSet NumberChars = TLxCharSet::Range('0', '9') + TLxCharSet{'.', '-', '+', 'e', 'E'};

constexpr std::u16string_view ValueStarts = u"\", t, f, n, 0..9, ., + or -";
// The keywords as handlers receive them, and as the tree's builder takes them: bytes, as many
// as a short value holds.
const LxJSONString KeywordFalse = u"false", KeywordNull = u"null", KeywordTrue = u"true";
constexpr std::size_t ShortBytes = 24;
constexpr char BytesFalse[ShortBytes] = "false", BytesNull[ShortBytes] = "null",
               BytesTrue[ShortBytes] = "true";

bool IsASCII(const Byte* AText, std::size_t ALength) noexcept {
  Byte Bits = 0;
  for (std::size_t I = 0; I < ALength; ++I)
    Bits |= AText[I];
  return Bits < 0x80;
}

constexpr std::u16string_view EscapeChars = u"\", \\, /, b, f, n, r, t or u";

// The grammar over the text cursor, for one width of raw unit: Byte for UTF-8 and single-byte
// text, WideChar for UTF-16. Delimiters are ASCII, so they are compared as raw units and searched
// many at a time in the cursor's window; a step over a character that may not be ASCII goes
// through the cursor, which knows how long the character is.
template <class TUnit> class TJSONGrammar {
public:
  /// ATree: the tree's own builder when it is AHandler and the text is UTF-8 (bytes only).
  /// AHandler and ATree are read for each event: a handler may hand the reader to another one.
  /// ATree: the tree's own builder when it is the handler and the text is UTF-8 (bytes only).
  TJSONGrammar(TLxJSONTextParser* AParser, ILxJSONContentHandler* const& AHandler,
               TLxJSONHandler* const& ATree, std::vector<Byte>& AOpen, LxJSONString& AName,
               LxJSONString& AValue, std::vector<IPtr<ILxJSONContentHandler>>& AReplaced)
      : P(AParser), H(AHandler), T(ATree), FOpen(AOpen), FName(AName), FValue(AValue),
        FReplaced(AReplaced) {}

  void Parse() {
    SkipWhile([](TUnit C) { return C == u' '; });
    H->StartDocument();
    while (!AtEnd()) {
      Settle();
      if (Curr() == u'[' || Curr() == u'{') {
        ParseNested();
        SkipBlanks();
        continue;
      }
      ParseSimpleValue();
      if (AtEnd())
        break;
      // One character behind the value is passed over unseen (the closing quote of a string,
      // or whatever follows a keyword), then blanks and control characters.
      StepCharacter();
      SkipBlanks();
      if (!AtEnd())
        RaiseNotWellFormed(u"");
    }
    H->EndDocument();
  }

private:
  enum : Byte { OpenArray, OpenObject };

  /// Between two events no handler runs: those replaced meanwhile may go.
  void Settle() {
    if (!FReplaced.empty()) [[unlikely]]
      FReplaced.clear();
  }

  // --- the cursor, in raw units ------------------------------------------------------------
  static TUnit Load(const Byte* AAt) noexcept {
    TUnit Unit;
    std::memcpy(&Unit, AAt, sizeof Unit);
    return Unit;
  }
  /// The raw unit at the cursor, 0 at the end. In UTF-8 a byte from 0x80 on is part of a
  /// character that no delimiter is.
  TUnit Curr() {
    const Byte* At = P->RawAt();
    return At ? Load(At) : TUnit(0);
  }
  bool AtEnd() { return P->RawAt() == nullptr; }
  /// Over the ASCII unit at the cursor.
  void StepDelimiter() { P->SetRawCursor(P->RawCursor() + sizeof(TUnit)); }
  /// Over one character, whatever it is; raises ELxTextParserEOF at the end.
  void StepCharacter() { P->MoveNext(); }
  /// Over the delimiter that a skip to it stopped at; at the end of the text, where the skip
  /// found none, this raises ELxTextParserEOF.
  void StepOver(char AExpected) {
    if (Curr() == static_cast<TUnit>(AExpected))
      StepDelimiter();
    else
      StepCharacter();
  }

  template <class TPredicate> void SkipWhile(TPredicate AKeepGoing) {
    for (;;) {
      const Byte* Cur = P->RawCursor();
      const Byte* End = P->RawReadEnd();
      const Byte* Last = End - (End - Cur) % sizeof(TUnit);
      while (Cur < Last && AKeepGoing(Load(Cur)))
        Cur += sizeof(TUnit);
      P->SetRawCursor(Cur);
      if (Cur < Last || !P->ReadMoreRaw())
        return;
    }
  }
  /// Blanks and control characters: everything up to U+0020.
  void SkipBlanks() {
    SkipWhile([](TUnit C) { return C <= 0x20; });
  }
  /// Up to the first of AStops (an ASCII text of one to four characters), or the end.
  template <std::size_t N> void SkipTo(const char (&AStops)[N]) {
    static_assert(N >= 2 && N <= 5);
    TUnit Stops[N - 1];
    for (std::size_t I = 0; I + 1 < N; ++I)
      Stops[I] = static_cast<TUnit>(AStops[I]);
    for (;;) {
      const Byte* Cur = P->RawCursor();
      const Byte* End = P->RawReadEnd();
      const Byte* Last = End - (End - Cur) % sizeof(TUnit);
      const Byte* Hit = rawscan::FindAnyOf(Cur, Last, Stops, int(N - 1));
      P->SetRawCursor(Hit);
      if (Hit < Last || !P->ReadMoreRaw())
        return;
    }
  }

  // --- nesting ---------------------------------------------------------------------------------
  // An array or object with everything in it; the cursor stands on its "[" or "{". Each open
  // container is one entry of FOpen, and the loop resumes the outer one where the inner one
  // ends, as a recursive descent would.
  void ParseNested() {
    FOpen.clear();
    bool Entering = true; // the cursor stands on the "[" or "{" of a container to open
    for (;;) {
      Settle();
      bool Closing = false;
      if (Entering) {
        if (Curr() == u'[') {
          StepDelimiter();
          H->StartArray();
          FOpen.push_back(OpenArray);
          Entering = EnterArrayItem(/*AStepped=*/true);
        } else {
          P->CheckCurrChar(P->FBraceO, true);
          H->StartObject();
          FOpen.push_back(OpenObject);
          SkipTo("}\"");
          if (Curr() == u'"')
            Entering = EnterObjectMember();
          else
            Entering = false, Closing = true;
        }
        if (Entering)
          continue;
      }
      if (!Closing) {
        // An item of the innermost container has just ended.
        const bool InArray = FOpen.back() == OpenArray;
        if (InArray ? NextArrayItem() : NextObjectMember()) {
          Entering = InArray ? EnterArrayItem(/*AStepped=*/false) : EnterObjectMember();
          continue;
        }
      }
      if (FOpen.back() == OpenArray)
        H->EndArray();
      else
        H->EndObject();
      // Over the "]" or "}"; at the end of the text this raises ELxTextParserEOF.
      StepOver(FOpen.back() == OpenArray ? ']' : '}');
      FOpen.pop_back();
      if (FOpen.empty())
        return;
    }
  }

  /// Over the "[" or "," (unless AStepped), blanks, then the item; true when it is a nested
  /// array or object, which the caller opens.
  bool EnterArrayItem(bool AStepped) {
    if (!AStepped)
      StepDelimiter();
    SkipBlanks();
    const TUnit C = Curr();
    if (C == u'[' || C == u'{')
      return true;
    if (C != u']')
      ParseSimpleValue();
    return false;
  }
  /// Behind an item: false when the array has ended, at "]" or at the end of the text.
  bool NextArrayItem() {
    SkipTo("],");
    return Curr() == u',';
  }
  /// Name, colon and value of a member; true when its value is a nested array or object.
  bool EnterObjectMember() {
    SkipTo("\"");
    const bool Plain = ScanString();
    if (const std::size_t Length = PlainLength(Plain);
        Length != NotPlain && IsASCII(P->RawCursor() - Length, Length)) {
      P->ClearMark(tpMark1);
      TJSONByteTokens::StartMember(
          T, {reinterpret_cast<const char*>(P->RawCursor() - Length), Length});
    } else {
      P->SelectInto(FName, tpMark1, tpCurrent, true);
      H->StartMember(FName);
    }
    StepOver('"');
    SkipTo(":");
    StepOver(':');
    SkipBlanks();
    const TUnit C = Curr();
    if (C == u'[' || C == u'{')
      return true;
    ParseSimpleValue();
    return false;
  }
  /// Behind a member's value: false when the object has ended.
  bool NextObjectMember() {
    H->EndMember();
    SkipTo("},");
    return Curr() == u',';
  }

  // --- simple values ---------------------------------------------------------------------------
  void ParseSimpleValue() {
    const TUnit C = Curr();
    switch (C) {
    case u'f':
      ParseKeyword(KeywordFalse, BytesFalse, jdtBoolean);
      return;
    case u'n':
      ParseKeyword(KeywordNull, BytesNull, jdtNull);
      return;
    case u't':
      ParseKeyword(KeywordTrue, BytesTrue, jdtBoolean);
      return;
    case u'"': {
      if (!TakeShort(ScanString(), jdtString, /*ACheckASCII=*/true)) {
        P->SelectInto(FValue, tpMark1, tpCurrent, true);
        H->Value(jdtString, FValue);
      }
      return;
    }
    default:
      break;
    }
    if (C < 0x80 && NumberChars.Contains(static_cast<Byte>(C))) {
      P->SetMark(tpMark1);
      SkipWhile([](TUnit U) { return U < 0x80 && NumberChars.Contains(static_cast<Byte>(U)); });
      // Number characters are ASCII.
      if (!TakeShort(/*APlain=*/true, jdtNumber, /*ACheckASCII=*/false)) {
        P->SelectInto(FValue, tpMark1, tpCurrent, true);
        H->Value(jdtNumber, FValue);
      }
      SkipTo("]},");
      return;
    }
    RaiseNotWellFormed(ValueStarts);
  }

  void ParseKeyword(const LxJSONString& AWord, const char (&ABytes)[ShortBytes],
                    TLxJSONDataType AType) {
    const std::size_t Length = AWord.size();
    const Byte* Cur = P->RawCursor();
    bool Whole = static_cast<std::size_t>(P->RawReadEnd() - Cur) >= Length * sizeof(TUnit);
    for (std::size_t I = 0; Whole && I < Length; ++I)
      Whole = Load(Cur + I * sizeof(TUnit)) == AWord[I];
    if (Whole) {
      P->SetRawCursor(Cur + Length * sizeof(TUnit));
    } else {
      // Letter by letter, so that the first one that differs is the one reported.
      for (const char16_t Letter : AWord) {
        if (Curr() != Letter)
          RaiseNotWellFormed(std::u16string_view(&Letter, 1));
        StepDelimiter();
      }
    }
    if (T)
      TJSONByteTokens::Value(T, AType, ABytes, AWord.size());
    else
      H->Value(AType, AWord);
  }

  /// Over the text between the quotes, which mark 1 then holds raw; the cursor stays on the
  /// closing quote. Only a double quote ends it: a text that ends first gives what was read.
  /// The answer: whether the text is plain, without escapes.
  bool ScanString() {
    if (Curr() != u'"')
      P->CheckCurrChar(P->FQuote, true);
    StepDelimiter();
    P->SetMark(tpMark1);
    bool Plain = true;
    for (;;) {
      SkipTo("\\\"");
      if (Curr() == u'\\') {
        Plain = false;
        StepDelimiter();
        switch (Curr()) {
        case u'"':
        case u'/':
        case u'\\':
        case u'b':
        case u'f':
        case u'n':
        case u'r':
        case u't':
          StepDelimiter();
          break;
        case u'u':
          // Over the "u" and three of the four digits; none of them is looked at.
          StepDelimiter();
          for (int Step = 0; Step < 3; ++Step)
            StepCharacter();
          break;
        default:
          RaiseNotWellFormed(EscapeChars);
        }
        const TUnit C = Curr();
        if (!AtEnd() && C != u'"' && C != u'\\')
          StepCharacter();
      }
      if (AtEnd() || Curr() == u'"')
        break;
    }
    return Plain;
  }

  static constexpr std::size_t NotPlain = ~std::size_t{0};
  /// The length in bytes of the text from mark 1 to the cursor when it is APlain and the tree's
  /// builder takes it as bytes, else NotPlain. The mark keeps the text in the raw window, which
  /// ends it at the cursor, also when the window has moved on the way.
  std::size_t PlainLength(bool APlain) {
    if (!T || !APlain)
      return NotPlain;
    return static_cast<std::size_t>(P->GetPos(tpCurrent) - P->GetPos(tpMark1));
  }
  /// Hands the text from mark 1 to the cursor to the tree's builder as bytes when it is APlain
  /// and fits in a short value (and is ASCII, which ACheckASCII tests); then the mark goes and
  /// the answer is true.
  bool TakeShort(bool APlain, TLxJSONDataType AType, bool ACheckASCII) {
    const std::size_t Length = PlainLength(APlain);
    const Byte* Start = P->RawCursor() - (Length > ShortBytes ? 0 : Length);
    if (Length > ShortBytes || (ACheckASCII && !IsASCII(Start, Length)))
      return false;
    P->ClearMark(tpMark1);
    const char* Text = reinterpret_cast<const char*>(Start);
    char Copy[ShortBytes] = {};
    // The builder reads a short value's whole room.
    if (static_cast<std::size_t>(P->RawReadEnd() - Start) < ShortBytes) {
      std::memcpy(Copy, Start, Length);
      Text = Copy;
    }
    TJSONByteTokens::Value(T, AType, Text, Length);
    return true;
  }

  [[noreturn]] void RaiseNotWellFormed(std::u16string_view AExpected) {
    throw ELxJSONParseError(_cLxJSONNotWellFormed, {UnicodeString(AExpected), P->CurrCharText()},
                            cLxJSONErrNotWellFormed);
  }

  TLxJSONTextParser* P;
  ILxJSONContentHandler* const& H;
  TLxJSONHandler* const& T;
  std::vector<Byte>& FOpen;
  LxJSONString& FName;
  LxJSONString& FValue;
  std::vector<IPtr<ILxJSONContentHandler>>& FReplaced;
};

} // namespace

TLxJSONReader::TLxJSONReader() {
  SetAutoDestroy(false);
  FPublicID = IntToStr(static_cast<Int64>(reinterpret_cast<std::uintptr_t>(this)));
}

TLxJSONReader::~TLxJSONReader() { lorvane::Free(FParser); }

HRESULT TLxJSONReader::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONLocator, ILxJSONReader>(
      this, AIID, AObj, [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

// The reader keeps no place of its own for a text that ends too early: FLineNr and FColNr stay
// -1, since the end of a JSON text is no construct's start.
Integer TLxJSONReader::GetLineNr() {
  return readerframe::LocatorLine(FUnexpectedEOF, FLineNr, FParser);
}

Integer TLxJSONReader::GetColNr() {
  return readerframe::LocatorColumn(FUnexpectedEOF, FColNr, FParser);
}

void TLxJSONReader::RunParse(readerframe::TSource&& ASource, const LxJSONString& APublicID) {
  FPublicID = APublicID;
  readerframe::Run(
      std::move(ASource), FParser, FUnexpectedEOF,
      [](const readerframe::TSource& S) {
        // A file's byte order mark names its encoding; the cursor starts behind it.
        const Word CodePage = S.FromFile ? LxGetCodePage(S.Stream) : S.CodePage;
        return New<TLxJSONTextParser>(S.Stream, /*AStreamOwner=*/false, CodePage);
      },
      [this] { InternalParse(); }, [this] { ResetParseState(); });
}

void TLxJSONReader::SetContentHandler(ILxJSONContentHandler* AHandler) {
  FContentHandler = AHandler;
  // Outside a parse a handler is only stored; inside one, none leaves the events where they are.
  if (!FContent || !AHandler)
    return;
  FReplacedHandlers.push_back(std::move(FDelivering));
  FDelivering = AHandler;
  FContent = AHandler;
  FTreeRoad = nullptr;
}

void TLxJSONReader::BeginDelivery(const IPtr<ILxJSONContentHandler>& AHandler) {
  FDelivering = AHandler;
  FContent = AHandler.Get();
}

void TLxJSONReader::EndDelivery() noexcept {
  FContent = nullptr;
  FTreeRoad = nullptr;
  FReplacedHandlers.clear();
  FDelivering = nullptr;
}

void TLxJSONReader::ResetParseState() {
  // The end-of-text flag is the frame's to clear.
  FLineNr = -1;
  FColNr = -1;
  // A parse that failed inside arrays or objects leaves their kinds here.
  FOpen.clear();
}

void TLxJSONReader::ParseStream(TStream* AStream, Word ACodePage, const LxJSONString& APublicID) {
  RunParse(readerframe::OfStream(AStream, ACodePage), APublicID);
}

void TLxJSONReader::ParseFile(const TFileName& AFileName, Word AMode,
                              const LxJSONString& APublicID) {
  RunParse(readerframe::OfFile(AFileName, AMode), APublicID);
}

void TLxJSONReader::ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ACodePage,
                                const LxJSONString& APublicID) {
  RunParse(readerframe::OfBuffer(ABuffer, Int64(ABufSize), ACodePage), APublicID);
}

void TLxJSONReader::Parse(const LxJSONString& AJSON, const LxJSONString& APublicID) {
  RunParse(readerframe::OfText(AJSON), APublicID);
}

void TLxJSONReader::Parse(const AnsiString& AJSON, Word ACodePage, const LxJSONString& APublicID) {
  RunParse(readerframe::OfBytes(AJSON, ACodePage), APublicID);
}

void TLxJSONReader::InternalParse() {
  if (!FContentHandler)
    throw ELxJSONException(_cLxJSONNoContentHandler, cLxJSONErrNoContentHandler);
  if (!FErrorHandler)
    throw ELxJSONException(_cLxJSONNoErrorHandler, cLxJSONErrNoErrorHandler);
  Assert(FParser != nullptr);
  // Held for the whole parse; a handler may set another one, which takes the next event, or none,
  // which leaves the events where they are.
  BeginDelivery(FContentHandler);
  struct TParseEnds {
    TLxJSONReader* Reader;
    ~TParseEnds() { Reader->EndDelivery(); }
  } Ends{this};
  // Bytes that are ASCII in UTF-8 are the units they stand for.
  FTreeRoad = FTreeBuilder && FParser->GetCharacterSetType() == csUTF8 &&
                      FContent == static_cast<ILxJSONContentHandler*>(FTreeBuilder)
                  ? FTreeBuilder
                  : nullptr;
  readerframe::ReportingFailures(
      FUnexpectedEOF,
      [&] {
        if (FParser->GetCharacterSetType() == csWide)
          TJSONGrammar<WideChar>(FParser, FContent, FTreeRoad, FOpen, FName, FValue,
                                 FReplacedHandlers)
              .Parse();
        else
          TJSONGrammar<Byte>(FParser, FContent, FTreeRoad, FOpen, FName, FValue, FReplacedHandlers)
              .Parse();
      },
      [this](const LxJSONString& AMessage) {
        if (FErrorHandler)
          FErrorHandler->FatalError(this, AMessage);
      });
}

} // namespace lorvane
