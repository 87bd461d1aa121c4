// The JSON format class: braces and brackets, "className", member names, and the text of every
// simple kind.
#include "lorvane/serializer/LxJSONSerializer.h"

#include "serializer/ValueTexts.h"

#include "platform/internal/Utf.h"
#include "json/internal/JSONEscape.h"

#include "lorvane/serializer/LxSerialization.h"

#include "lorvane/classes/LxStrings.h"
#include "lorvane/classes/LxVariants.h"
#include "lorvane/xmlutils/LxXMLValues.h"

namespace lorvane {

namespace {

constexpr std::u16string_view cBasicTypesOnRoot =
    u"Basic types are only allowed on the Root level (For serialing basic values)";
// The short name of the type whose text is JSON already.
constexpr std::u16string_view cJSONStringType = u"LxJSONString";

// One write operation's text, collected as UTF-8 on the stack and handed to the stream in one
// piece: the walk writes a name, a brace or a value at a time, none worth a heap string.
class TJSONPiece {
public:
  explicit TJSONPiece(TLxSerializer& ASerializer) noexcept : FSerializer(ASerializer) {}
  TJSONPiece(const TJSONPiece&) = delete;
  TJSONPiece& operator=(const TJSONPiece&) = delete;

  /// ASCII as it is.
  TJSONPiece& operator<<(std::string_view AText) {
    for (char C : AText) {
      Reserve(1);
      FBytes[FUsed++] = C;
    }
    return *this;
  }
  /// Text as UTF-8, unescaped: JSON that is already text (numbers, "null", raw JSON strings).
  TJSONPiece& Raw(std::u16string_view AText) {
    utf::ForEachUnitRun(AText, cUnitsPerRound, [this](std::u16string_view ARun) {
      Reserve(ARun.size() * 3);
      FUsed += utf::EncodeUTF16AsUTF8(ARun.data(), ARun.size(), FBytes + FUsed);
    });
    return *this;
  }
  /// The text between a string's quotes.
  TJSONPiece& Escaped(std::u16string_view AText) {
    // Escapes go unit by unit: a round may end inside a pair.
    while (!AText.empty()) {
      const std::size_t Take = std::min(AText.size(), cUnitsPerRound);
      Reserve(Take * 6);
      FUsed = static_cast<std::size_t>(jsonwriter::EscapeInto(FBytes + FUsed, AText.data(), Take) -
                                       FBytes);
      AText.remove_prefix(Take);
    }
    return *this;
  }
  TJSONPiece& Quoted(std::u16string_view AText) {
    *this << "\"";
    Escaped(AText);
    return *this << "\"";
  }
  /// Hands the text to the stream.
  void Write() {
    FSerializer.Write(std::string_view(FBytes, FUsed));
    FUsed = 0;
  }

private:
  static constexpr std::size_t cUnitsPerRound = 128;
  static constexpr std::size_t cCapacity = cUnitsPerRound * 6;

  void Reserve(std::size_t ABytes) {
    if (FUsed + ABytes > cCapacity)
      Write();
  }

  TLxSerializer& FSerializer;
  char FBytes[cCapacity];
  std::size_t FUsed = 0;
};

bool IsJSONStringType(const TLxTypeInfo* AType) noexcept {
  return AType && AType->GetName() == cJSONStringType;
}

// An enumeration or a set as a small object: "className", "asString" and "asInt".
void WriteOrdinalObject(TJSONPiece& AOut, const TLxTypeInfo* ADeclared, const TValue& AValue) {
  const TLxTypeDescription& Description = *ADeclared->GetDescription();
  const bool Empty = AValue.GetIsEmpty();
  UnicodeString Text;
  if (ADeclared->GetTypeKind() == ltkEnumeration) {
    if (Empty)
      Text = Description.GetEnumName(0);
    else if (AValue.TypeKind() == ltkEnumeration)
      Text = AValue.ToString();
    else if (AValue.MainTypeKind() == lmkInteger)
      Text = Description.GetEnumName(AValue.ToInt64());
    else
      Text = AValue.ToString();
  } else if (!Empty)
    Text = AValue.ToString();
  if (ADeclared->GetTypeKind() == ltkEnumeration) {
    if (const SerializerHint* Prefix = Description.FindHint(shoEnumPrefix))
      Text.erase(0, std::min(Text.size(), Prefix->GetValue().size()));
  } else if (const TLxTypeInfo* Element = Description.ElementType()) {
    // A set's names carry its element's prefix, which comes off each of them, as in XML: the
    // reader puts it back on each name.
    if (const SerializerHint* Prefix = Element->GetDescription()->FindHint(shoEnumPrefix))
      Text = valuetext::WithoutPrefixes(Text, Prefix->GetValue());
  }
  if (ADeclared->GetTypeKind() == ltkSet && (Text.empty() || Text.front() != u'['))
    Text = u"[" + Text + u"]";
  AOut << "{\"className\":";
  AOut.Quoted(ADeclared->SchemaName(u"")) << ",\"asString\":";
  AOut.Quoted(Text) << ",\"asInt\":";
  AOut.Raw(IntToStr(Empty ? Int64(0) : AValue.ToInt64())) << "}";
}

// The JSON of a simple value (or nil) declared as ADeclared.
void WriteValueText(TJSONPiece& AOut, const TLxTypeInfo* ADeclared, const TValue& AValue,
                    const std::vector<TCustomAttribute*>* AAttribs) {
  const TLxTypeKind Kind = ADeclared->GetTypeKind();
  const bool Empty = AValue.GetIsEmpty();
  switch (Kind) {
  case ltkEnumeration:
  case ltkSet:
    WriteOrdinalObject(AOut, ADeclared, AValue);
    return;
  case ltkArray:
  case ltkDynArray:
    if (Empty) {
      AOut << "[]";
      return;
    }
    throw Exception(u"JSON Arrays must be serialized by a ChildSerializer!");
  case ltkRecord:
  case ltkClass:
  case ltkInterface:
  case ltkPointer:
  case ltkClassRef: {
    const TLxMainTypeKind Main = AValue.MainTypeKind();
    if (Main == lmkInteger || Main == lmkString) {
      if (AValue.IsNull())
        AOut << "null";
      else if (Main == lmkInteger)
        AOut.Raw(IntToStr(AValue.ToInt64()));
      else if (IsJSONStringType(AValue.LxTypeInfo()))
        AOut.Raw(AValue.ToWideString());
      else
        AOut.Quoted(AValue.ToWideString());
      return;
    }
    if (AValue.IsNull()) {
      AOut << "{}";
      return;
    }
    throw Exception(u"JSON Ojbects must be serialized by a ChildSerializer!");
  }
  case ltkVariant:
    AOut << "null"; // IsNull: the others went through SerializeValue again
    return;
  default:
    break;
  }

  const bool IsNumberOrText = (Kind >= ltkByte && Kind <= ltkExtended) || LxIsTextKind(Kind) ||
                              Kind == ltkBoolean || Kind == ltkDate || Kind == ltkTime ||
                              Kind == ltkDateTime;
  if (!IsNumberOrText) {
    if (IsJSONStringType(AValue.LxTypeInfo())) {
      AOut.Raw(AValue.ToString());
      return;
    }
    throw Exception(u"Unsupported TypeKind detected!");
  }
  if (Empty) {
    AOut << "null";
    return;
  }
  switch (Kind) {
  case ltkByte:
  case ltkWord:
  case ltkLongWord:
  case ltkUInt64:
  case ltkShortInt:
  case ltkSmallInt:
  case ltkInteger:
  case ltkInt64:
  case ltkSingle:
  case ltkDouble:
  case ltkExtended:
  case ltkBoolean:
    AOut.Raw(valuetext::ScalarText(Kind, AValue));
    return;
  case ltkDate:
  case ltkTime:
  case ltkDateTime:
    if (AValue.MainTypeKind() == lmkString)
      AOut.Quoted(AValue.ToString());
    else {
      AOut << "\"";
      AOut.Raw(valuetext::MomentText(ADeclared, Kind, TDateTime(AValue.ToDouble()), AAttribs))
          << "\"";
    }
    return;
  default: // the text kinds
    if (IsJSONStringType(ADeclared)) {
      AOut << "\"";
      AOut.Raw(AValue.ToWideString()) << "\"";
    } else
      AOut.Quoted(AValue.ToWideString());
  }
}

} // namespace

bool TLxJSONSerializer::IsInterfaceInRecord(const TLxTypeInfo* ATypeInfo) const noexcept {
  const TLxTypeInfo* ParentType = FParent ? FParent->GetInstanceTypeInfo() : nullptr;
  return ATypeInfo && ATypeInfo->GetTypeKind() == ltkInterface && ParentType &&
         ParentType->GetTypeKind() == ltkRecord;
}

void TLxJSONSerializer::SerializeName(std::u16string_view AMemberName, TLxSerializerMemberType,
                                      TLxTypeKind, TLxTypeKind) {
  // Names come from descriptions and shoName hints: escaped, so that any hint stays valid JSON.
  // LxCharCase mode 7 changes the first letter alone, so it needs only that letter.
  TJSONPiece Out(*this);
  Out << (FCommaFirst ? ",\"" : "\"");
  if (!AMemberName.empty()) {
    Out.Escaped(LxCharCase(AMemberName.substr(0, 1), 7, u" "));
    Out.Escaped(AMemberName.substr(1));
  }
  Out << "\":";
  Out.Write();
  FCommaFirst = true;
}

void TLxJSONSerializer::SerializeStartType(std::u16string_view AMemberName,
                                           const TLxTypeInfo* ATypeInfo, Integer AIdx) {
  if (IsInterfaceInRecord(ATypeInfo))
    return;
  const TLxTypeKind Kind = ATypeInfo ? ATypeInfo->GetTypeKind() : ltkUnknown;
  if (LxIsArrayKind(Kind) && AMemberName.empty()) {
    Write(std::string_view("["));
    return;
  }
  if (!LxIsComplexKind(Kind)) {
    if (FParent)
      RaiseAssertionFailed(cBasicTypesOnRoot);
    return;
  }
  if (LxIsArrayKind(Kind)) {
    Write(std::string_view("["));
    FCommaFirst = false;
    return;
  }
  TJSONPiece Out(*this);
  if (!AMemberName.empty()) {
    if (AIdx >= 1 || FCommaFirst)
      Out << ",";
  }
  Out << "{\"className\":";
  Out.Quoted(ATypeInfo->SchemaName(u""));
  Out.Write();
  FCommaFirst = true;
}

void TLxJSONSerializer::SerializeEndType(std::u16string_view, const TLxTypeInfo* ATypeInfo,
                                         Integer) {
  if (IsInterfaceInRecord(ATypeInfo))
    return;
  const TLxTypeKind Kind = ATypeInfo ? ATypeInfo->GetTypeKind() : ltkUnknown;
  if (!LxIsComplexKind(Kind)) {
    if (FParent)
      RaiseAssertionFailed(cBasicTypesOnRoot);
    return;
  }
  Write(std::string_view(LxIsArrayKind(Kind) ? "]" : "}"));
  FCommaFirst = true;
}

void TLxJSONSerializer::SerializeValue(std::u16string_view AMemberName,
                                       const TLxTypeInfo* AMemberTypeInfo, const TValue& AValue,
                                       Integer AIdx,
                                       const std::vector<TCustomAttribute*>* AAttribs) {
  const TLxTypeInfo* Declared = AMemberTypeInfo ? AMemberTypeInfo : AValue.LxTypeInfo();
  TJSONPiece Out(*this);
  if (AIdx > 0)
    Out << ",";
  if (!Declared)
    Out << "null"; // a value without a type is a missing one
  else if (Declared->GetTypeKind() == ltkVariant && !AValue.IsNull()) {
    // What a Variant holds goes out as a value of its own type; the comma is written above.
    const TLxTypeInfo* Held = AValue.LxTypeInfo();
    TValue Inner = AValue;
    if (Held->GetTypeKind() == ltkVariant) {
      Inner = TValue::FromVariant(AValue.AsVariant());
      Held = Inner.LxTypeInfo();
    }
    if (!Held || Held->GetTypeKind() == ltkVariant)
      // Variant arrays: no type of their own to write them as.
      throw Exception(u"Unsupported TypeKind detected!");
    Out.Write();
    SerializeValue(AMemberName, Held, Inner, -1, AAttribs);
    return;
  } else
    WriteValueText(Out, Declared, AValue, AAttribs);
  Out.Write();
  FCommaFirst = true;
}

void LxJSONSerializerStartup() {
  // The deserializer is left nil until the JSON reading side registers itself.
  LxRegisterSerializer(ldsJSON, TLxTypeHandle(nullptr), TLxJSONSerializer::StaticClass(), nullptr);
}

} // namespace lorvane
