// XML output of the tree: each node kind writes itself, from its stored form, piece by piece.
#include "dom/LxDOMWriter.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/platform/CodePages.h"

#include <vector>

namespace lorvane {

namespace domwriter {

namespace {

void WriteConverted(TStream* AStream, Word AStreamCodePage, std::u16string_view AText) {
  if (AText.empty())
    return;
  if (AStreamCodePage == 1200) {
    AStream->WriteBuffer(AText.data(), static_cast<Int64>(AText.size() * 2));
    return;
  }
  if (AStreamCodePage == 65001) {
    // Markup and most names are ASCII: they go out through a small buffer without conversion.
    char Buffer[1024];
    std::size_t Used = 0;
    for (std::size_t I = 0; I < AText.size(); ++I) {
      const char16_t Char = AText[I];
      if (Char >= 0x80) {
        if (Used)
          AStream->WriteBuffer(Buffer, static_cast<Int64>(Used));
        const RawByteString Rest = StringToUTF8(AText.substr(I));
        AStream->WriteBuffer(Rest.data(), static_cast<Int64>(Rest.size()));
        return;
      }
      Buffer[Used++] = static_cast<char>(Char);
      if (Used == sizeof Buffer) {
        AStream->WriteBuffer(Buffer, static_cast<Int64>(Used));
        Used = 0;
      }
    }
    if (Used)
      AStream->WriteBuffer(Buffer, static_cast<Int64>(Used));
    return;
  }
  const RawByteString Bytes = UnicodeToCodePage(AText, AStreamCodePage);
  AStream->WriteBuffer(Bytes.data(), static_cast<Int64>(Bytes.size()));
}

struct TCollected {
  TStream* Stream = nullptr;
  Word CodePage = 0;
  UnicodeString Text;
};

constexpr std::size_t BlockSize = 32768;
thread_local TCollected* Collected = nullptr;
// One collection per nesting level of outputs (inner XML is written while an outer output runs).
thread_local std::vector<TCollected> Levels;

void WriteCollected() {
  // Cleared first: a failing stream must not see the same text again from the destructor.
  UnicodeString Text;
  Text.swap(Collected->Text);
  WriteConverted(Collected->Stream, Collected->CodePage, Text);
  Text.clear();
  Text.swap(Collected->Text);
}

} // namespace

void Write(TStream* AStream, Word AStreamCodePage, std::u16string_view AText) {
  if (Collected && Collected->Stream == AStream && Collected->CodePage == AStreamCodePage) {
    Collected->Text.append(AText);
    if (Collected->Text.size() >= BlockSize)
      WriteCollected();
    return;
  }
  WriteConverted(AStream, AStreamCodePage, AText);
}

void Flush(TStream* AStream) {
  if (Collected && Collected->Stream == AStream && !Collected->Text.empty())
    WriteCollected();
}

std::size_t PendingUnits(TStream* AStream) {
  return Collected && Collected->Stream == AStream ? Collected->Text.size() : 0;
}

TBufferedOutput::TBufferedOutput(TStream* AStream, Word ACodePage) {
  // A push may move the levels: the active one is always taken anew from the back.
  Levels.push_back({AStream, ACodePage, {}});
  Levels.back().Text.reserve(BlockSize + 1024);
  Collected = &Levels.back();
}

TBufferedOutput::~TBufferedOutput() {
  try {
    if (!Collected->Text.empty())
      WriteCollected();
  } catch (...) {
    // The failure that unwinds us is the one the caller sees.
  }
  Levels.pop_back();
  Collected = Levels.empty() ? nullptr : &Levels.back();
}

void TBufferedOutput::Finish() {
  if (!Collected->Text.empty())
    WriteCollected();
}

void WriteLineEnd(TStream* AStream, Word AStreamCodePage) {
  Write(AStream, AStreamCodePage, u"\r\n");
}

void WriteIndent(TStream* AStream, Word AStreamCodePage, Integer ASteps) {
  static constexpr std::u16string_view Blanks = u"                                ";
  for (Integer Left = ASteps * 2; Left > 0;) {
    const auto Piece = std::min<std::size_t>(static_cast<std::size_t>(Left), Blanks.size());
    Write(AStream, AStreamCodePage, Blanks.substr(0, Piece));
    Left -= static_cast<Integer>(Piece);
  }
}

} // namespace domwriter

using domwriter::Write;
using domwriter::WriteIndent;
using domwriter::WriteLineEnd;

namespace {

/// Whether an element starts on a new line: not at the very start of the stream, nor right
/// behind a UTF-16 byte order mark there.
bool NeedsLeadingLineEnd(TStream* AStream) {
  // Three collected units put the text beyond position 2 in any code page.
  if (domwriter::PendingUnits(AStream) > 2)
    return true;
  domwriter::Flush(AStream);
  const Int64 Position = AStream->GetPosition();
  if (Position == 0)
    return false;
  if (Position != 2)
    return true;
  Byte Mark[2] = {0, 0};
  AStream->SetPosition(0);
  AStream->ReadBuffer(Mark, 2);
  AStream->SetPosition(2);
  return !(Mark[0] == 0xFF && Mark[1] == 0xFE);
}

void WriteQualifiedName(TStream* AStream, Word AStreamCodePage, const UnicodeString& APrefix,
                        const UnicodeString& ALocalName) {
  if (!APrefix.empty()) {
    Write(AStream, AStreamCodePage, APrefix);
    Write(AStream, AStreamCodePage, u":");
  }
  Write(AStream, AStreamCodePage, ALocalName);
}

/// Indentation under an element that doesn't preserve space; none at document level.
bool IndentsUnderParent(const TLxDOMNode* ANode) {
  TLxDOMElement* Parent = ANode->ParentElement();
  return Parent && !Parent->GetPreserveSpace();
}

} // namespace

void TLxDOMDocument::_SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted,
                                   Integer& ALevel) {
  if (TLxDOMNodeList* Children = ChildList())
    for (TLxDOMNode* Child : *Children)
      Child->_SaveToStream(AStream, AStreamCodePage, AFormatted, ALevel);
}

bool TLxDOMElement::WriteStartTag(TStream* AStream, Word AStreamCodePage, bool AFormatted,
                                  Integer ALevel) {
  if (AFormatted && !GetPreserveSpace()) {
    if (NeedsLeadingLineEnd(AStream))
      WriteLineEnd(AStream, AStreamCodePage);
    WriteIndent(AStream, AStreamCodePage, ALevel + 1);
  }
  Write(AStream, AStreamCodePage, u"<");
  WriteQualifiedName(AStream, AStreamCodePage, FPrefix, FLocalName);
  AnyOf(TChildKind::Attribute, [&](TLxDOMNode* AAttribute) {
    AAttribute->_SaveToStream(AStream, AStreamCodePage, AFormatted, ALevel);
    return false;
  });
  if (ElementCount() == 0 && CountOf(TChildKind::CharacterData) == 0) {
    Write(AStream, AStreamCodePage, u" />");
    return false;
  }
  Write(AStream, AStreamCodePage, u">");
  return true;
}

void TLxDOMElement::WriteEndTag(TStream* AStream, Word AStreamCodePage, bool AFormatted,
                                Integer ALevel) {
  if (AFormatted && ElementCount() > 0 && !GetPreserveSpace()) {
    WriteLineEnd(AStream, AStreamCodePage);
    WriteIndent(AStream, AStreamCodePage, ALevel + 1);
  }
  Write(AStream, AStreamCodePage, u"</");
  WriteQualifiedName(AStream, AStreamCodePage, FPrefix, FLocalName);
  Write(AStream, AStreamCodePage, u">");
}

void TLxDOMElement::_SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted,
                                  Integer& ALevel) {
  // An explicit stack of open elements: a tree may be as deep as any input.
  struct TOpen {
    TLxDOMElement* Element;
    Integer NextChild;
  };
  if (!WriteStartTag(AStream, AStreamCodePage, AFormatted, ALevel))
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
        if (Element->WriteStartTag(AStream, AStreamCodePage, AFormatted, ALevel)) {
          ++ALevel;
          Open.push_back({Element, 0});
        }
      } else {
        Child->_SaveToStream(AStream, AStreamCodePage, AFormatted, ALevel);
      }
      continue;
    }
    --ALevel;
    Top.Element->WriteEndTag(AStream, AStreamCodePage, AFormatted, ALevel);
    Open.pop_back();
  }
}

void TLxDOMAttribute::_SaveToStream(TStream* AStream, Word AStreamCodePage, bool, Integer&) {
  Write(AStream, AStreamCodePage, u" ");
  WriteQualifiedName(AStream, AStreamCodePage, FPrefix, FLocalName);
  Write(AStream, AStreamCodePage, u"=\"");
  // A value read from single quotes may hold a double quote, which would end the value early.
  if (FNodeValue.find(u'"') == UnicodeString::npos) {
    Write(AStream, AStreamCodePage, FNodeValue);
  } else {
    UnicodeString Quoted;
    for (char16_t Char : FNodeValue)
      Char == u'"' ? Quoted.append(u"&quot;") : Quoted.append(1, Char);
    Write(AStream, AStreamCodePage, Quoted);
  }
  Write(AStream, AStreamCodePage, u"\"");
}

void TLxDOMText::_SaveToStream(TStream* AStream, Word AStreamCodePage, bool, Integer&) {
  Write(AStream, AStreamCodePage, GetStoredValue());
}

void TLxDOMCDATA::_SaveToStream(TStream* AStream, Word AStreamCodePage, bool, Integer&) {
  Write(AStream, AStreamCodePage, u"<![CDATA[");
  Write(AStream, AStreamCodePage, GetStoredValue());
  Write(AStream, AStreamCodePage, u"]]>");
}

void TLxDOMComment::_SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted,
                                  Integer& ALevel) {
  if (AFormatted) {
    if (!GetPreserveSpace())
      WriteLineEnd(AStream, AStreamCodePage);
    if (IndentsUnderParent(this))
      WriteIndent(AStream, AStreamCodePage, ALevel + 1);
  }
  Write(AStream, AStreamCodePage, u"<!--");
  Write(AStream, AStreamCodePage, GetStoredValue());
  Write(AStream, AStreamCodePage, u"-->");
}

void TLxDOMProcessingInstruction::_SaveToStream(TStream* AStream, Word AStreamCodePage,
                                                bool AFormatted, Integer& ALevel) {
  if (AFormatted && (domwriter::Flush(AStream), AStream->GetSize() > 4)) {
    WriteLineEnd(AStream, AStreamCodePage);
    if (IndentsUnderParent(this))
      WriteIndent(AStream, AStreamCodePage, ALevel + 1);
  }
  Write(AStream, AStreamCodePage, u"<?");
  Write(AStream, AStreamCodePage, GetQualifiedName());
  if (!FData.empty()) {
    Write(AStream, AStreamCodePage, u" ");
    Write(AStream, AStreamCodePage, FData);
  }
  Write(AStream, AStreamCodePage, u"?>");
}

// --- inner XML ----------------------------------------------------------------------------------

UnicodeString TLxDOMElement::InnerXML(bool AFormatted) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(1200, 0));
  VisitChildElements(
      [&](TLxDOMElement* AChild) { AChild->SaveToStream(Stream.get(), 1200, AFormatted); });
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
