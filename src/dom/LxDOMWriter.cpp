// XML output of the tree: each node kind writes itself, from its stored form, piece by piece.
#include "dom/LxDOMWriter.h"

#include "lorvane/types/LxValue.h"

#include "core/internal/RawScan.h"
#include "lorvane/core/LxStreams.h"
#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/platform/CodePages.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace lorvane {

namespace {

/// UTF-8 of AText into AOut, which has room for three bytes per unit; gives the bytes written.
/// Lone surrogates become U+FFFD, as everywhere in the library.
std::size_t EncodeUTF8(std::u16string_view AText, char* AOut) noexcept {
  char* Out = AOut;
  const char16_t* Text = AText.data();
  const std::size_t Length = AText.size();
  for (std::size_t I = 0; I < Length; ++I) {
    // Markup and most text are ASCII: such runs are narrowed a block at a time.
    if constexpr (std::endian::native == std::endian::little) {
      const std::size_t Run = rawscan::NarrowASCII(reinterpret_cast<const Byte*>(Text + I),
                                                   Length - I, reinterpret_cast<Byte*>(Out));
      I += Run;
      Out += Run;
      if (I == Length)
        break;
    }
    char32_t Code = Text[I];
    if (Code < 0x80) {
      *Out++ = static_cast<char>(Code);
      continue;
    }
    if (Code >= 0xD800 && Code <= 0xDFFF) {
      if (Code <= 0xDBFF && I + 1 < Length && Text[I + 1] >= 0xDC00 && Text[I + 1] <= 0xDFFF)
        Code = 0x10000 + ((Code - 0xD800) << 10) + (Text[++I] - 0xDC00);
      else
        Code = 0xFFFD;
    }
    if (Code < 0x800) {
      *Out++ = static_cast<char>(0xC0 | (Code >> 6));
    } else if (Code < 0x10000) {
      *Out++ = static_cast<char>(0xE0 | (Code >> 12));
      *Out++ = static_cast<char>(0x80 | ((Code >> 6) & 0x3F));
    } else {
      *Out++ = static_cast<char>(0xF0 | (Code >> 18));
      *Out++ = static_cast<char>(0x80 | ((Code >> 12) & 0x3F));
      *Out++ = static_cast<char>(0x80 | ((Code >> 6) & 0x3F));
    }
    *Out++ = static_cast<char>(0x80 | (Code & 0x3F));
  }
  return static_cast<std::size_t>(Out - AOut);
}

/// AText in the code page: UTF-16 little-endian units as they are for 1200, converted otherwise.
void WriteConverted(TStream* AStream, Word ACodePage, std::u16string_view AText) {
  if (AText.empty())
    return;
  if (ACodePage == 1200) {
    AStream->WriteBuffer(AText.data(), static_cast<Int64>(AText.size() * 2));
    return;
  }
  if (ACodePage == 65001) {
    // At most three bytes per unit: a pair of units makes four.
    constexpr std::size_t Chunk = 4096;
    char Bytes[3 * Chunk];
    while (!AText.empty()) {
      std::size_t Take = std::min(AText.size(), Chunk);
      // A pair stays in one chunk.
      if (Take < AText.size() && AText[Take - 1] >= 0xD800 && AText[Take - 1] <= 0xDBFF)
        --Take;
      const std::size_t Used = EncodeUTF8(AText.substr(0, Take), Bytes);
      AStream->WriteBuffer(Bytes, static_cast<Int64>(Used));
      AText.remove_prefix(Take);
    }
    return;
  }
  const RawByteString Bytes = UnicodeToCodePage(AText, ACodePage);
  AStream->WriteBuffer(Bytes.data(), static_cast<Int64>(Bytes.size()));
}

} // namespace

void TLxDOMWriter::Flush() {
  // Emptied first: text that a failing stream refused is not offered again.
  const std::size_t Used = FUsed;
  FUsed = 0;
  WriteConverted(FStream, FCodePage, std::u16string_view(FUnits, Used));
}

void TLxDOMWriter::WriteLong(std::u16string_view AText) {
  Flush();
  if (AText.size() <= Capacity) {
    std::memcpy(FUnits, AText.data(), AText.size() * sizeof(char16_t));
    FUsed = AText.size();
    return;
  }
  WriteConverted(FStream, FCodePage, AText);
}

void TLxDOMWriter::WriteIndent(Integer ASteps) {
  static constexpr std::u16string_view Blanks = u"                                ";
  for (Integer Left = ASteps * 2; Left > 0;) {
    const auto Piece = std::min<std::size_t>(static_cast<std::size_t>(Left), Blanks.size());
    Write(Blanks.substr(0, Piece));
    Left -= static_cast<Integer>(Piece);
  }
}

namespace {

/// Whether an element starts on a new line: not at the very start of the stream, nor right
/// behind a UTF-16 byte order mark there.
bool NeedsLeadingLineEnd(TLxDOMWriter& AWriter) {
  // Three collected units put the text beyond position 2 in any code page.
  if (AWriter.PendingUnits() > 2)
    return true;
  AWriter.Flush();
  TStream* Stream = AWriter.Stream();
  const Int64 Position = Stream->GetPosition();
  if (Position == 0)
    return false;
  if (Position != 2)
    return true;
  Byte Mark[2] = {0, 0};
  Stream->SetPosition(0);
  Stream->ReadBuffer(Mark, 2);
  Stream->SetPosition(2);
  return !(Mark[0] == 0xFF && Mark[1] == 0xFE);
}

void WriteQualifiedName(TLxDOMWriter& AWriter, const UnicodeString& APrefix,
                        const UnicodeString& ALocalName) {
  if (!APrefix.empty()) {
    AWriter.Write(APrefix);
    AWriter.Write(u":");
  }
  AWriter.Write(ALocalName);
}

/// Indentation under an element that doesn't preserve space; none at document level.
bool IndentsUnderParent(const TLxDOMNode* ANode) {
  TLxDOMElement* Parent = ANode->ParentElement();
  return Parent && !Parent->GetPreserveSpace();
}

} // namespace

// --- entry points -------------------------------------------------------------------------------

void TLxDOMNode::_SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted,
                               Integer& ALevel) {
  TLxDOMWriter Writer(AStream, AStreamCodePage);
  WriteXML(Writer, AFormatted, ALevel);
  Writer.Flush();
}

void TLxDOMNode::SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted) {
  Integer Level = -1;
  _SaveToStream(AStream, AStreamCodePage, AFormatted, Level);
}

UnicodeString TLxDOMNode::GetXML() {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(1200, 0));
  SaveToStream(Stream.get(), 1200, /*AFormatted=*/false);
  return Stream->GetWString();
}

UnicodeString TLxDOMNode::GetFormattedXML() {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(1200, 0));
  SaveToStream(Stream.get(), 1200, /*AFormatted=*/true);
  return Stream->GetWString();
}

bool TLxDOMNode::CanSerialize(TLxDataSerializationFormatType AFormat) const noexcept {
  return AFormat != ldsJSON;
}

TLxSerializedData TLxDOMNode::Serialize(TLxDataSerializationFormatType AFormat, TStrings*) {
  if (AFormat == ldsXML) {
    TOwned<TLxStringStream> Stream(New<TLxStringStream>(65001, 0));
    SaveToStream(Stream.get(), 65001, /*AFormatted=*/false);
    return Stream->GetAString();
  }
  TLxDOMNode* Self = this;
  return LxSerializeValue(AFormat, TValue::Make(&Self, LxClassTypeHandle(ClassType())));
}

void TLxDOMNode::WriteXML(TLxDOMWriter&, bool, Integer&) {}

void TLxDOMNode::WriteChildXML(TLxDOMNode* AChild, TLxDOMWriter& AWriter, bool AFormatted,
                               Integer& ALevel) {
  AChild->WriteXML(AWriter, AFormatted, ALevel);
}

// --- the node kinds -----------------------------------------------------------------------------

void TLxDOMDocument::WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) {
  if (TLxDOMNodeList* Children = ChildList())
    for (TLxDOMNode* Child : *Children)
      WriteChildXML(Child, AWriter, AFormatted, ALevel);
}

bool TLxDOMElement::WriteStartTag(TLxDOMWriter& AWriter, bool AFormatted, Integer ALevel) {
  if (AFormatted && !GetPreserveSpace()) {
    if (NeedsLeadingLineEnd(AWriter))
      AWriter.WriteLineEnd();
    AWriter.WriteIndent(ALevel + 1);
  }
  AWriter.Write(u"<");
  WriteQualifiedName(AWriter, GetPrefix(), GetLocalName());
  // One pass over the children writes the attributes (in their list's order once it is made)
  // and finds whether any child element or character data follows; the typed lists, once
  // made, hold the same children as the common list.
  if (FAttributes)
    for (TLxDOMNode* Attribute : *FAttributes)
      WriteChildXML(Attribute, AWriter, AFormatted, ALevel);
  bool HasContent = false;
  if (TLxDOMNodeList* Children = ChildList())
    for (TLxDOMNode* Child : *Children)
      switch (KindOf(Child)) {
      case TChildKind::Attribute:
        if (!FAttributes)
          WriteChildXML(Child, AWriter, AFormatted, ALevel);
        break;
      case TChildKind::Element:
      case TChildKind::CharacterData:
        HasContent = true;
        break;
      case TChildKind::None:
        break;
      }
  if (!HasContent) {
    AWriter.Write(u" />");
    return false;
  }
  AWriter.Write(u">");
  return true;
}

void TLxDOMElement::WriteEndTag(TLxDOMWriter& AWriter, bool AFormatted, Integer ALevel) {
  if (AFormatted && ElementCount() > 0 && !GetPreserveSpace()) {
    AWriter.WriteLineEnd();
    AWriter.WriteIndent(ALevel + 1);
  }
  AWriter.Write(u"</");
  WriteQualifiedName(AWriter, GetPrefix(), GetLocalName());
  AWriter.Write(u">");
}

void TLxDOMElement::WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) {
  // An explicit stack of open elements: a tree may be as deep as any input.
  struct TOpen {
    TLxDOMElement* Element;
    Integer NextChild;
  };
  if (!WriteStartTag(AWriter, AFormatted, ALevel))
    return;
  ++ALevel;
  std::vector<TOpen> Open{{this, 0}};
  while (!Open.empty()) {
    TOpen& Top = Open.back();
    TLxDOMNodeList* Children = Top.Element->ChildList();
    if (Children && Top.NextChild < Children->Count()) {
      TLxDOMNode* Child = Children->GetItem(Top.NextChild++);
      const TLxDOMNodeType Type = Child->GetNodeType();
      if (Type == ntAttribute)
        continue;
      if (Type == ntElement) {
        auto* Element = static_cast<TLxDOMElement*>(Child);
        if (Element->WriteStartTag(AWriter, AFormatted, ALevel)) {
          ++ALevel;
          Open.push_back({Element, 0});
        }
      } else {
        WriteChildXML(Child, AWriter, AFormatted, ALevel);
      }
      continue;
    }
    --ALevel;
    Top.Element->WriteEndTag(AWriter, AFormatted, ALevel);
    Open.pop_back();
  }
}

void TLxDOMAttribute::WriteXML(TLxDOMWriter& AWriter, bool, Integer&) {
  AWriter.Write(u" ");
  WriteQualifiedName(AWriter, GetPrefix(), GetLocalName());
  AWriter.Write(u"=\"");
  // A value read from single quotes may hold a double quote, which would end the value early.
  std::u16string_view Rest = FNodeValue;
  for (auto Quote = Rest.find(u'"'); Quote != std::u16string_view::npos; Quote = Rest.find(u'"')) {
    AWriter.Write(Rest.substr(0, Quote));
    AWriter.Write(u"&quot;");
    Rest.remove_prefix(Quote + 1);
  }
  AWriter.Write(Rest);
  AWriter.Write(u"\"");
}

void TLxDOMText::WriteXML(TLxDOMWriter& AWriter, bool, Integer&) {
  AWriter.Write(GetStoredValue());
}

void TLxDOMCDATA::WriteXML(TLxDOMWriter& AWriter, bool, Integer&) {
  AWriter.Write(u"<![CDATA[");
  AWriter.Write(GetStoredValue());
  AWriter.Write(u"]]>");
}

void TLxDOMComment::WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) {
  if (AFormatted) {
    if (!GetPreserveSpace())
      AWriter.WriteLineEnd();
    if (IndentsUnderParent(this))
      AWriter.WriteIndent(ALevel + 1);
  }
  AWriter.Write(u"<!--");
  AWriter.Write(GetStoredValue());
  AWriter.Write(u"-->");
}

void TLxDOMProcessingInstruction::WriteXML(TLxDOMWriter& AWriter, bool AFormatted,
                                           Integer& ALevel) {
  // The size counts the text written so far only once the writer has handed it on.
  if (AFormatted && (AWriter.Flush(), AWriter.Stream()->GetSize() > 4)) {
    AWriter.WriteLineEnd();
    if (IndentsUnderParent(this))
      AWriter.WriteIndent(ALevel + 1);
  }
  AWriter.Write(u"<?");
  AWriter.Write(GetQualifiedName());
  if (!FData.empty()) {
    AWriter.Write(u" ");
    AWriter.Write(FData);
  }
  AWriter.Write(u"?>");
}

// --- inner XML ----------------------------------------------------------------------------------

UnicodeString TLxDOMElement::InnerXML(bool AFormatted) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(1200, 0));
  {
    // Each child is written as a save of its own would write it, through one writer.
    TLxDOMWriter Writer(Stream.get(), 1200);
    VisitChildElements([&](TLxDOMElement* AChild) {
      Integer Level = -1;
      WriteChildXML(AChild, Writer, AFormatted, Level);
    });
    Writer.Flush();
  }
  return Stream->GetWString();
}

UnicodeString TLxDOMElement::GetInnerXML() { return InnerXML(/*AFormatted=*/false); }
UnicodeString TLxDOMElement::GetFormattedInnerXML() { return InnerXML(/*AFormatted=*/true); }

void TLxDOMElement::SetInnerXML(const UnicodeString& Value) {
  TEditHold Hold(this); // a held child element's pin may be all that keeps this element
  std::vector<TLxDOMElement*> Children;
  VisitChildElements([&](TLxDOMElement* AChild) { Children.push_back(AChild); });
  for (auto It = Children.rbegin(); It != Children.rend(); ++It)
    RemoveChild(*It);
  if (Value.empty())
    return;
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(std::u16string_view(Value)));
  LoadFromStream(Stream.get(), 1200);
}

} // namespace lorvane
