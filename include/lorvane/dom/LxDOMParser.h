/// The loader of the document tree: a content handler that grows the tree from the events of a
/// reader, one node per event, storing text and attribute values as the reader hands them on
/// (references undecoded). Text outside the root, which only an end tag without start tag lets
/// through, is dropped. A double quote in a value read between single quotes is stored as it is;
/// the writer puts it out as "&quot;", so that the saved text reads back as the same tree.
#pragma once

#include "lorvane/dom/LxDOMElement.h"
#include "lorvane/dom/LxDOMNode.h"
#include "lorvane/platform/Classes.h"
#include "lorvane/sax/LxSAXReader.h"

#include <memory>

namespace lorvane {

/// Interface references to it aren't counted; it lives for one load.
class TLxDOMParser : public TComponent,
                     public ILxSAXErrorHandler,
                     public ILxSAXContentHandler,
                     public ILxSAXLexicalHandler {
  LX_CLASS(TLxDOMParser, TComponent)
  /// Events attach to ADOMNode, which is what is loaded into.
  explicit TLxDOMParser(TLxDOMNode* ADOMNode);

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  Integer _AddRef() override { return -1; }
  Integer _Release() override { return -1; }

  /// Reads from the stream's position: '<' as the first character above U+0020 means XML (one
  /// root for a document, several for an element); anything else is JSON, read by
  /// TLxSAXJSONReader into elements. A fatal error raises ELxDomSyntax "Line %d, column %d: %s"
  /// unless OnParseFatalError sets Handled, which lets the reader's exception through.
  void Parse(TStream* AStream, Word AStreamCodePage);

  const TLxDOMParseError& GetOnParseWarning() const noexcept { return FOnParseWarning; }
  const TLxDOMParseError& GetOnParseError() const noexcept { return FOnParseError; }
  const TLxDOMParseError& GetOnParseFatalError() const noexcept { return FOnParseFatalError; }
  void SetOnParseWarning(TLxDOMParseError AValue) { FOnParseWarning = std::move(AValue); }
  void SetOnParseError(TLxDOMParseError AValue) { FOnParseError = std::move(AValue); }
  void SetOnParseFatalError(TLxDOMParseError AValue) { FOnParseFatalError = std::move(AValue); }

  void Warning(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;
  void Error(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;
  void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;

  void SetDocumentLocator(ILxSAXLocator* ALocator) override { FLocator = ALocator; }
  void Characters(const LxXMLString& AText) override;
  void EndDocument() override {}
  void EndElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                  const LxXMLString& AQName) override;
  void EndPrefixMapping(const LxXMLString&) override {}
  void IgnorableWhitespace(const LxXMLString& AWhiteSpace) override;
  void ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) override;
  void SkippedEntity(const LxXMLString&) override {}
  void StartDocument() override {}
  void StartElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override;
  void StartPrefixMapping(const LxXMLString&, const LxXMLString&) override {}

  void Comment(const LxXMLString& AComment) override;
  void StartCDATA() override { FInCDATA = true; }
  void StartDTD() override {}
  void StartEntity(const LxXMLString&) override {}
  void EndCDATA() override { FInCDATA = false; }
  void EndDTD() override {}
  void EndEntity(const LxXMLString&) override {}

protected:
  ~TLxDOMParser() override;

private:
  /// The name record for AQName: the same record for the same name throughout the load.
  const TLxDOMName::TRef& NameOf(const LxXMLString& AQName);
  /// Appends text or CDATA that the load has just made to the node being filled; APos is the
  /// position the general road is given.
  void AppendLeaf(TLxDOMCharacterData* ALeaf, TLxDOMPosition APos);

  static constexpr std::size_t NameSlots = 256;
  struct TNameSlot {
    UnicodeString QName;
    TLxDOMName::TRef Name;
  };
  /// The names this load has met, by a hash of the qualified name.
  std::unique_ptr<TNameSlot[]> FNames{new TNameSlot[NameSlots]};
  /// Declarations looked up for the elements linked since the load last did anything else.
  TLxDOMElement::TLoadScopes FScopes;
  TLxDOMNode* FDOMNode;
  /// What is loaded into: end tags without a start tag never lead above it.
  TLxDOMNode* FTargetNode;
  ILxSAXLocator* FLocator = nullptr;
  TLxSAXReader* FReader = nullptr;
  bool FInCDATA = false;
  TLxDOMParseError FOnParseWarning;
  TLxDOMParseError FOnParseError;
  TLxDOMParseError FOnParseFatalError;
};

} // namespace lorvane
