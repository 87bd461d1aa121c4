// The loader: events of a reader turned into nodes of the tree.
#include "lorvane/dom/LxDOMParser.h"

#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/sax/LxSAXParser.h"
#include "lorvane/xmlutils/LxXMLEscape.h"

#include <cstring>

namespace lorvane {

TLxDOMParser::TLxDOMParser(TLxDOMNode* ADOMNode)
    : TComponent(/*AOwner=*/nullptr), FDOMNode(ADOMNode), FTargetNode(ADOMNode) {}

TLxDOMParser::~TLxDOMParser() { lorvane::Free(FReader); }

HRESULT TLxDOMParser::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerUncountedInterfaces<ILxSAXErrorHandler, ILxSAXContentHandler, ILxSAXLexicalHandler>(
      this, AIID, AObj, [&] { return TComponent::QueryInterface(AIID, AObj); });
}

void TLxDOMParser::Parse(TStream* AStream, Word AStreamCodePage) {
  TLxSAXReader* Reader = LxNewSAXReaderFor(PeekFirstSignificantChar(AStream, AStreamCodePage));
  FReader = Reader;
  // A document takes one root; an element that loads a fragment takes several.
  if (auto* XML = dynamic_cast<TLxSAXXMLReader*>(Reader))
    XML->SetSingleRoot(FDOMNode->GetNodeType() == ntDocument);
  Reader->SetErrorHandler(this);
  Reader->SetLexicalHandler(this);
  Reader->SetContentHandler(this);
  Reader->ParseStream(AStream, AStreamCodePage, UnicodeString());
  FReader = nullptr;
  Reader->Free();
}

// --- errors -------------------------------------------------------------------------------------

void TLxDOMParser::Warning(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) {
  bool Handled = false;
  if (FOnParseWarning)
    FOnParseWarning(ALocator, AErrMsg, Handled);
  // A handler may have changed the tree.
  FScopes.Clear();
}

void TLxDOMParser::Error(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) {
  bool Handled = false;
  if (FOnParseError)
    FOnParseError(ALocator, AErrMsg, Handled);
  FScopes.Clear();
}

void TLxDOMParser::FatalError(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) {
  bool Handled = false;
  if (FOnParseFatalError)
    FOnParseFatalError(ALocator, AErrMsg, Handled);
  FScopes.Clear();
  if (!Handled)
    throw ELxDomSyntax(u"Line %d, column %d: %s",
                       {ALocator->GetLineNr(), ALocator->GetColNr(), AErrMsg});
}

// --- content ------------------------------------------------------------------------------------

void TLxDOMParser::StartElement(const LxXMLString& ANamespaceURI, const LxXMLString&,
                                const LxXMLString& AQName, ILxSAXAttributes* AAttributes) {
  // The new element is in no tree while it gets its name and attributes: none of the look-ups
  // that renaming or linking a node of a tree runs has anything to find yet.
  TOwned<TLxDOMElement> Element(New<TLxDOMElement>());
  Element->AssignName(NameOf(AQName));
  bool DeclaresSchemaInstance = false;
  for (PLxSAXXMAttribute Item = AAttributes->FirstAttribute(); Item; Item = Item->Next) {
    TLxDOMAttribute* Attribute = Element->AddLoadedAttribute(NameOf(Item->QName));
    Attribute->SetStoredValue(Item->Value);
    // The element's own declaration of its URI links it at once; declarations further up reach
    // it by the refresh that linking runs.
    if (!ANamespaceURI.empty() && Attribute->IsNamespace() &&
        LxXMLToStr(Item->Value) == ANamespaceURI)
      Element->LinkOwnDeclaration(Attribute, ANamespaceURI);
    if (!DeclaresSchemaInstance && Item->Value.size() == cLxNsXSI.size() &&
        SameText(Item->Value, cLxNsXSI))
      DeclaresSchemaInstance = true;
  }
  // Below the node loaded into, every node is an element of this load.
  if (FDOMNode == FTargetNode ||
      !static_cast<TLxDOMElement*>(FDOMNode)->AppendLoadedElement(Element.get(), FScopes)) {
    // The general road may change scopes that the look-ups have seen.
    FScopes.Clear();
    FDOMNode->AppendChild(Element.get());
  }
  TLxDOMElement* Linked = Element.release();
  if (DeclaresSchemaInstance && FDOMNode->GetNodeType() == ntDocument)
    static_cast<TLxDOMDocument*>(FDOMNode)->FUseSchemaInstance = true;
  FDOMNode = Linked;
}

void TLxDOMParser::EndElement(const LxXMLString&, const LxXMLString&, const LxXMLString&) {
  // The reader lets end tags without a start tag through.
  if (FDOMNode != FTargetNode)
    FDOMNode = FDOMNode->ParentNode();
}

void TLxDOMParser::Characters(const LxXMLString& AText) {
  if (FInCDATA) {
    // As an element's AddCDATA does; the reader may hand text to a document too.
    TOwned<TLxDOMCDATA> Section(New<TLxDOMCDATA>());
    AppendLeaf(Section.get(), ldpLast);
    Section.release()->SetNodeValue(AText);
    return;
  }
  // Text reaches the document itself only behind an end tag that had no start tag. A document
  // has no place for it: the reader drops text before the root, so it would not come back from
  // the saved text either.
  if (FDOMNode->GetNodeType() == ntDocument)
    return;
  TOwned<TLxDOMText> Text(New<TLxDOMText>());
  Text->SetStoredValue(AText);
  AppendLeaf(Text.get(), ldpAfter);
  Text.release();
}

const TLxDOMName::TRef& TLxDOMParser::NameOf(const LxXMLString& AQName) {
  // A cache, not a set: a name whose slot another name took gets a record of its own, so that
  // a document of ever new names costs no more than one record per node. The hash reads the
  // length and a few units at both ends and in the middle, not every unit: names that share
  // those take turns in a slot, which costs records, never a wrong name.
  const std::size_t Size = AQName.size();
  const char16_t* Units = AQName.data();
  std::size_t Hash = Size;
  if (Size != 0)
    Hash = (((Hash * 31 + Units[0]) * 31 + Units[Size - 1]) * 31 + Units[Size / 2]) * 31 +
           Units[Size > 3 ? Size - 2 : 0] + (std::size_t(Units[Size > 3 ? 1 : 0]) << 7);
  TNameSlot& Slot = FNames[(Hash ^ (Hash >> 8)) & (NameSlots - 1)];
  // Equality alone: bytes compare faster than the string's unit by unit ordering.
  if (Slot.QName.size() != Size ||
      std::memcmp(Slot.QName.data(), Units, Size * sizeof(char16_t)) != 0) {
    Slot.QName = AQName;
    Slot.Name = TLxDOMName::FromQualifiedName(AQName);
  }
  return Slot.Name;
}

void TLxDOMParser::AppendLeaf(TLxDOMCharacterData* ALeaf, TLxDOMPosition APos) {
  // At the end either way; the node loaded into may be of a class with an AddChild of its own.
  if (FDOMNode == FTargetNode) {
    FScopes.Clear();
    FDOMNode->AddChild(ALeaf, /*ARefNode=*/nullptr, APos);
    return;
  }
  auto* Element = static_cast<TLxDOMElement*>(FDOMNode);
  Element->AppendLoadedLeaf(ALeaf, Element->FCharNodes);
}

void TLxDOMParser::IgnorableWhitespace(const LxXMLString& AWhiteSpace) {
  if (FDOMNode->GetPreserveSpace())
    Characters(AWhiteSpace);
}

void TLxDOMParser::ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) {
  FScopes.Clear();
  TOwned<TLxDOMProcessingInstruction> Instruction(New<TLxDOMProcessingInstruction>());
  FDOMNode->AddChild(Instruction.get(), /*ARefNode=*/nullptr, ldpAfter);
  TLxDOMProcessingInstruction* Linked = Instruction.release();
  Linked->SetQualifiedName(ATarget);
  Linked->SetData(AData);
}

void TLxDOMParser::Comment(const LxXMLString& AComment) {
  FScopes.Clear();
  TOwned<TLxDOMComment> Node(New<TLxDOMComment>());
  FDOMNode->AppendChild(Node.get());
  Node.release()->SetNodeValue(AComment);
}

} // namespace lorvane
