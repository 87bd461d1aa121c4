// The form post reader: name=value pairs, bracket names and percent characters delivered as the
// events of one JSON object.
#include "lorvane/json/LxFormURLEncodedJSONReader.h"

#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/platform/CodePages.h"

#include <string>
#include <utility>
#include <vector>

namespace lorvane {

namespace {

const TLxCharSet KeyStops{'=', '%', '[', ']'};
const TLxCharSet ValueStops{'&', '%', '+', '\n', '\r'};

enum TPartKind : Byte { pkMember = 1, pkArrayItem = 2 };
/// One part of a pair's path: a member name or an array index, and its kind.
using TPathPart = std::pair<UnicodeString, TPartKind>;
using TPath = std::vector<TPathPart>;

/// The pairs of one form in the order the content handler must hear of them.
class TFormGrammar {
public:
  /// AHandler is read for each event: a handler may hand the reader to another one, and the
  /// handlers it replaced go before the next event, when none of them runs.
  TFormGrammar(TLxJSONTextParser* AParser, ILxJSONContentHandler* const& AHandler,
               std::vector<IPtr<ILxJSONContentHandler>>& AReplaced)
      : P(AParser), H(AHandler), FReplaced(AReplaced) {}

  void Parse() {
    Next()->StartDocument();
    Next()->StartObject();
    for (;;) {
      Current.clear();
      const UnicodeString Key = ReadKey();
      if (P->_GetEOF() && !Key.empty() && Key[0] == u'_')
        break;
      if (!Previous.empty() && Previous.front().first != Key)
        CloseWholePath();
      // A pair whose key continues the open path adds to the member already started.
      if (Previous.empty())
        Next()->StartMember(Key);
      Current.emplace_back(Key, pkMember);
      while (!P->_GetEOF() && P->CurrCharW() != u'=')
        ReadBracket();
      P->MoveNext();
      Next()->Value(jdtString, ReadValue());
      if (Current.back().second == pkMember) {
        Next()->EndMember();
        Current.pop_back();
      }
      Previous = Current;
      if (!P->_GetEOF())
        P->ReadChar();
      // The first pair behind one whose key starts with "_" ends the form.
      if (P->_GetEOF() || P->CurrCharW() == u'_')
        break;
    }
    while (!Previous.empty()) {
      if (Previous.back().second == pkMember) {
        Next()->EndObject();
      } else {
        if (Current.size() >= 2 && Current[Current.size() - 2].second == pkMember)
          Next()->EndObject();
        Next()->EndArray();
      }
      Previous.pop_back();
    }
    Next()->EndObject();
    Next()->EndDocument();
  }

private:
  /// The key up to "=", a bracket (plain or "%5B"/"%5D") or the end, percent characters
  /// decoded; "&" and "+" stay as they are.
  UnicodeString ReadKey() {
    UnicodeString Result;
    P->SetMark(tpMark1);
    for (;;) {
      P->SkipSet(spNotInSet, KeyStops);
      const WideChar C = P->CurrCharW();
      if (P->_GetEOF() || C != u'%')
        break;
      // 3: a bracket comes percent-encoded, '%' and two hex digits.
      const UnicodeString Next = P->PeekString(3);
      if (Next == u"%5B" || Next == u"%5D")
        break;
      Result += P->Selected(tpMark1, tpCurrent, /*AClearMark=*/true);
      Result += ReadPercentCharacter();
      P->SetMark(tpMark1);
    }
    Result += P->Selected(tpMark1, tpCurrent, /*AClearMark=*/true);
    return Result;
  }

  /// The value up to "&" or the end: "+" is a blank, line ends are dropped, percent characters
  /// are decoded (control characters among them dropped). Unless it starts with "[" or "{", the
  /// value is escaped as JSON string text, as the reader delivers strings.
  UnicodeString ReadValue() {
    UnicodeString Result;
    P->SetMark(tpMark1);
    for (;;) {
      P->SkipSet(spNotInSet, ValueStops);
      Result += P->Selected(tpMark1, tpCurrent, /*AClearMark=*/true);
      if (P->_GetEOF())
        break;
      const WideChar C = P->CurrCharW();
      if (C == u'&')
        break;
      if (C == u'%') {
        const UnicodeString Decoded = ReadPercentCharacter();
        if (!(Decoded < u" "))
          Result += Decoded;
      } else {
        if (C == u'+')
          Result += u' ';
        P->MoveNext(); // "+" or a line end
      }
      P->SetMark(tpMark1);
    }
    if (!Result.empty() && (Result[0] == u'[' || Result[0] == u'{'))
      return Result;
    return LxStrToJSON(Result);
  }

  /// The character of "%XX", with as many further "%XX" groups as a UTF-8 lead byte asks for.
  UnicodeString ReadPercentCharacter() {
    P->MoveNext();
    std::string Bytes(1, static_cast<char>(ReadHexByte()));
    Byte Lead = static_cast<Byte>(Bytes[0]);
    if (Lead > 127) {
      Lead = static_cast<Byte>(Lead << 1);
      while (Lead & 0x80) {
        if (P->ReadChar()[0] != u'%')
          throw Exception(UnicodeString(u"Invalid UTF8 Encoding detected"));
        Bytes.push_back(static_cast<char>(ReadHexByte()));
        Lead = static_cast<Byte>(Lead << 1);
      }
    }
    return CodePageToUnicode(Bytes.data(), Bytes.size(), CP_UTF8);
  }

  /// Two characters read as hexadecimal digits; bad digits raise EConvertError.
  Byte ReadHexByte() {
    UnicodeString Digits(1, u'$');
    for (int I = 0; I < 2; ++I)
      Digits.push_back(P->ReadChar()[0]);
    return static_cast<Byte>(StrToInt(Digits));
  }

  void ReadBracket() {
    P->SetMark(tpMark2);
    if (P->CurrCharW() == u'[') {
      P->MoveNext();
    } else {
      // The three characters of an encoded bracket, "%5B".
      for (int I = 0; I < 3; ++I)
        P->MoveNext();
      const UnicodeString Read = P->Selected(tpMark2, tpCurrent, /*AClearMark=*/true);
      if (Read != u"%5B")
        throw Exception(
            u"The parser expected to read a \"[\" character, but \"%s\", was read instead!",
            {Read});
    }
    P->ClearMark(tpMark2);
    const UnicodeString Part = ReadKey();
    // 3: the length of the encoded closing bracket.
    if (P->PeekString(3) == u"%5D") {
      for (int I = 0; I < 3; ++I)
        P->MoveNext();
    } else {
      P->MoveNext();
    }
    if (Previous.size() > Current.size() && Previous[Current.size()].first != Part)
      CloseDeeper(Part);
    if (Current.size() < Previous.size()) {
      Current.emplace_back(Part, Previous[Current.size()].second);
    } else if (Part.empty()) {
      Next()->StartArray();
      Current.emplace_back(Part, pkArrayItem);
    } else if (Part[0] >= u'0' && Part[0] <= u'9') {
      // An array starts at index 0: a higher index alone starts none.
      if (Part == u"0")
        Next()->StartArray();
      Current.emplace_back(Part, pkArrayItem);
    } else {
      if (Current.size() > Previous.size())
        Next()->StartObject();
      Next()->StartMember(Part);
      Current.emplace_back(Part, pkMember);
    }
  }

  void CloseWholePath() {
    while (!Previous.empty()) {
      if (Previous.back().second == pkMember)
        Next()->EndObject();
      else
        Next()->EndArray();
      Previous.pop_back();
    }
  }

  /// Closes the open parts below the one where the pair's path leaves the previous one.
  void CloseDeeper(const UnicodeString& APart) {
    while (Previous.size() > Current.size()) {
      if (Previous.back().second == pkMember) {
        Next()->EndObject();
        Next()->EndMember();
        Previous.pop_back();
        continue;
      }
      const bool OneDeeper = Previous.size() == Current.size() + 1;
      Integer Index = -1, PreviousIndex = -1;
      if (OneDeeper) {
        Index = StrToIntDef(APart, -1);
        PreviousIndex = StrToIntDef(Previous[Current.size()].first, -1);
      }
      if (!OneDeeper || Index != PreviousIndex + 1)
        Next()->EndArray();
      else if (Previous.size() >= 2 && Previous[Previous.size() - 2].second == pkMember)
        Next()->EndObject(); // the next index of the same array: the item before it ends
      Previous.pop_back();
      if (Previous.size() > Current.size() && Previous.back().second == pkMember) {
        Next()->EndMember();
        Previous.pop_back();
      }
    }
  }

  ILxJSONContentHandler* Next() {
    if (!FReplaced.empty()) [[unlikely]]
      FReplaced.clear();
    return H;
  }

  TLxJSONTextParser* P;
  ILxJSONContentHandler* const& H;
  std::vector<IPtr<ILxJSONContentHandler>>& FReplaced;
  TPath Current;  // the path of the pair in progress
  TPath Previous; // the path the last pair left open
};

} // namespace

void TLxFormURLEncodedJSONReader::InternalParse() {
  // No error handler is needed and nothing is routed through one: failures go straight to the
  // caller.
  Assert(FParser != nullptr);
  if (!FContentHandler)
    throw ELxJSONException(_cLxJSONNoContentHandler, cLxJSONErrNoContentHandler);
  BeginDelivery(FContentHandler);
  struct TParseEnds {
    TLxFormURLEncodedJSONReader* Reader;
    ~TParseEnds() { Reader->EndDelivery(); }
  } Ends{this};
  TFormGrammar(FParser, FContent, FReplacedHandlers).Parse();
}

} // namespace lorvane
