/// The document (TLxDOMDocument) and its face: settings for the whole tree, the root element,
/// the prolog and its encoding, loading from text, streams and files, and saving. LxCreateDOM
/// makes a document from text.
#pragma once

#include "lorvane/dom/LxDOMElement.h"
#include "lorvane/dom/LxDOMProcessingInstruction.h"

namespace lorvane {

class TLxDOMDocument : public TLxDOMNode {
  LX_CLASS(TLxDOMDocument, TLxDOMNode)
  /// Takes collation, match and check option from the defaults.
  TLxDOMDocument();
  /// The caller owns the result. A failed load raises and frees what was made.
  static TLxDOMDocument* CreateFromFile(const TFileName& AFilename, Word AMode);
  static TLxDOMDocument* CreateFromXML(const UnicodeString& AXML);
  static TLxDOMDocument* CreateFromStream(TStream* AStream, Word AStreamCodePage);
  /// JSON text as an XML tree (see TLxSAXJSONReader for its shape): root "object" or "array",
  /// members as elements, simple values with xsd:type or xsi:nil and their raw text.
  static TLxDOMDocument* CreateFromJSON(const UnicodeString& AJSON);

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  bool GetCaseSensitive() override;
  TLxXPathCollationClass GetCollation() override { return FCollation; }
  TLxDOMSelectMatchOption GetSelectMatchOption() override { return FSelectMatchOption; }
  /// Also forgets the root element.
  void Clear() override;
  /// The first element appended by any road, a load included, becomes the root.
  TLxDOMNode* AppendChild(TLxDOMNode* newChild) override;
  /// Raises ELxDomNotSupported: a document can't be cloned.
  TLxDOMNode* CreateClone() override;
  /// Forgets the root element when it leaves.
  void UnlinkChild(TLxDOMNode* AChildNode) override;

  /// Called after every successful load; for descendants.
  virtual void DoXMLLoaded() {}
  /// A second root raises ELxDomException "This DOM document already contains a rootnode!".
  virtual TLxDOMElement* CreateRootNode(const UnicodeString& tagName);
  /// Also declares ANamespaceURI on the root for its prefix.
  virtual TLxDOMElement* CreateRootNode(std::u16string_view ANamespaceURI,
                                        std::u16string_view AQualifiedName);
  /// The load that detects the encoding: a byte order mark, else for XML the encoding named in
  /// double quotes in the declaration, else UTF-8.
  virtual void LoadFromStream(TStream* AStream);
  /// Loads in the code page given, then DoXMLLoaded; the load state is left alone.
  void LoadFromStream(TStream* AStream, Word AStreamCodePage) override;
  /// Writes in the code page given, behind a byte order mark for UTF-16 or UTF-8 when asked.
  virtual void SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted,
                            bool AWriteBOM);
  using TLxDOMNode::SaveToStream;
  /// Writes in the code page of GetEncoding. (Named apart from SaveToStream, whose code page
  /// argument a bool would silently fill.)
  void SaveToStreamInEncoding(TStream* AStream, bool AFormatted, bool AWriteBOM);

  /// Clears, then loads the text; an empty text leaves the document empty.
  void LoadFromXML(const WideString& AXML);
  /// Clears, then loads bytes whose encoding the text tells.
  void LoadFromXML(const AnsiString& AXML);
  void LoadXML(const UnicodeString& AXML) { LoadFromXML(AXML); }
  void LoadXML(TStream* AStream) { LoadFromStream(AStream); }
  void LoadXML(const UnicodeString& AFilename, Word Mode);
  void SetXml(const UnicodeString& Value) { LoadFromXML(Value); }
  /// Also remembers the file as the document URI.
  void LoadFromFile(const TFileName& AFilename, Word AMode);
  /// Replaces an existing file.
  void SaveToFile(const TFileName& AFilename, bool AFormatted, bool AWriteBOM);

  TLxDOMComment* AddComment(const UnicodeString& AComment);
  /// The first processing instruction child with that target, case ignored; nil when none.
  TLxDOMProcessingInstruction* FindProcessingInstruction(const UnicodeString& target);
  /// Raises ELxDomNotFound "There is no processinginstruction \"%s\"!" when missing.
  UnicodeString GetProcessingInstruction(const UnicodeString& target);
  /// Creates the instruction when missing ("xml" first, others right behind it); sets its data
  /// as given. Setting "xml" reads the encoding from it anew.
  void SetProcessingInstruction(const UnicodeString& target, const UnicodeString& Value);

  TLxDOMElement* GetRootNode() const noexcept { return FRootNode; }
  /// False sets the case-insensitive collation; true the code point one unless another
  /// case-sensitive collation is set.
  void SetCaseSensitive(bool Value);
  void SetCollation(TLxXPathCollationClass Value) { FCollation = Value; }
  void SetSelectMatchOption(TLxDOMSelectMatchOption Value) { FSelectMatchOption = Value; }
  TLxDOMSelectCheckOption GetSelectCheckOption() const noexcept { return FSelectCheckOption; }
  void SetSelectCheckOption(TLxDOMSelectCheckOption Value) { FSelectCheckOption = Value; }
  bool GetUseSchemaInstance() const noexcept { return FUseSchemaInstance; }
  /// True declares the schema instance and schema namespaces on the root where they are missing.
  void SetUseSchemaInstance(bool Value);
  /// "UTF-8" while none is set.
  UnicodeString GetEncoding() const;
  /// Also brings the "xml" declaration into line; an unknown name raises ELxDomNotSupported
  /// "The specified encoding (%s) is not supported!".
  void SetEncoding(const UnicodeString& Value);
  Word GetCodePage() const noexcept { return FCodePage; }
  /// Sets the encoding name of the code page too; the declaration is left alone.
  void SetCodePage(Word Value);
  const UnicodeString& GetDocumentURI() const noexcept { return FDocumentURI; }
  void SetDocumentURI(const UnicodeString& Value) { FDocumentURI = Value; }
  TLxDOMLoadState GetLoadState() const noexcept { return FLoadState; }

  /// Path selection from the root element, so the first step names a child of the root. An
  /// empty path raises ELxDomNotFound "The specified nodePath is empty!". Without a root:
  /// soRaise raises ELxDomNotFound "There is no node for the given path \"%s\".", soCreate
  /// ELxDomNotFound "It is not possible to use XPath statements on documents without rootnode!",
  /// else nil.
  TLxDOMElement* SelectSingleElement(const UnicodeString& nodePath,
                                     TLxDOMSelectOptions ASelectOptions = {});
  /// The root element's CreateElementList; without a root as above, else a new empty list.
  TLxDOMElementList* CreateElementList(const UnicodeString& nodePath,
                                       TLxDOMSelectOptions ASelectOptions = {});

protected:
  void WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) override;
  ~TLxDOMDocument() override = default;

  TLxXPathCollationClass FCollation;
  TLxDOMSelectMatchOption FSelectMatchOption;
  TLxDOMSelectCheckOption FSelectCheckOption;
  TLxDOMElement* FRootNode = nullptr;
  bool FUseSchemaInstance = false;
  UnicodeString FEncoding;
  Word FCodePage = 0;
  UnicodeString FDocumentURI;

private:
  /// Loads through the node's LoadFromStream in state lsLoading, back to lsLoaded also on
  /// failure.
  void LoadInState(TStream* AStream, Word AStreamCodePage);
  void ReCalcEncoding();
  friend class TLxDOMParser;
};

class TLxDOMDocumentImpl : public TLxDOMNodeImpl, public virtual ILxDOMDocument {
  LX_CLASS(TLxDOMDocumentImpl, TLxDOMNodeImpl)
  explicit TLxDOMDocumentImpl(TLxDOMDocument* ADOMObject) : TLxDOMNodeImpl(ADOMObject) {}
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  TLxDOMDocument* DOMDocument() const noexcept { return static_cast<TLxDOMDocument*>(FDOMObject); }

  /// Raise ELxDomNotSupported: a document loads and saves through the Ex forms.
  void LoadFromStream(TStream* AStream, Word AStreamCodePage) override;
  void SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted) override;

  IPtr<ILxDOMElement> GetRootNode() override;
  UnicodeString GetProcessingInstruction(const UnicodeString& target) override;
  bool GetCaseSensitive() override;
  TLxXPathCollationClass GetCollation() override;
  TLxDOMSelectMatchOption GetSelectMatchOption() override;
  TLxDOMSelectCheckOption GetSelectCheckOption() override;
  bool GetUseSchemaInstance() override;
  UnicodeString GetEncoding() override;
  Word GetCodePage() override;
  UnicodeString GetDocumentURI() override;
  void SetEncoding(const UnicodeString& Value) override;
  void SetCodePage(Word Value) override;
  void SetProcessingInstruction(const UnicodeString& target, const UnicodeString& Value) override;
  void SetCaseSensitive(bool Value) override;
  void SetCollation(TLxXPathCollationClass Value) override;
  void SetSelectMatchOption(TLxDOMSelectMatchOption Value) override;
  void SetSelectCheckOption(TLxDOMSelectCheckOption Value) override;
  void SetUseSchemaInstance(bool Value) override;
  void SetDocumentURI(const UnicodeString& Value) override;
  IPtr<ILxDOMElement> CreateRootNode(const UnicodeString& tagName) override;
  IPtr<ILxDOMElement> CreateRootNode(std::u16string_view ANamespaceURI,
                                     std::u16string_view AQualifiedName) override;
  IPtr<ILxDOMComment> AddComment(const UnicodeString& AComment) override;
  void LoadXML(const UnicodeString& AXML) override;
  void LoadXML(TStream* AStream) override;
  void LoadXML(const UnicodeString& AFilename, Word Mode) override;
  void LoadFromXML(const AnsiString& AXML) override;
  void LoadFromXML(const WideString& AXML) override;
  void LoadFromStreamEx(TStream* AStream) override;
  void SaveToStreamEx(TStream* AStream, bool AFormatted, bool AWriteBOM) override;
  void LoadFromFile(const UnicodeString& AFilename, Word AMode) override;
  void SaveToFile(const UnicodeString& AFilename, bool AFormatted, bool AWriteBOM) override;
  IPtr<ILxDOMElementList> CreateElementList(const UnicodeString& nodePath,
                                            TLxDOMSelectOptions ASelectOptions = {}) override;
  IPtr<ILxDOMElement> SelectSingleElement(const UnicodeString& nodePath,
                                          TLxDOMSelectOptions ASelectOptions = {}) override;

protected:
  ~TLxDOMDocumentImpl() override = default;
};

/// A new document loaded from the text, owned by the interface.
IPtr<ILxDOMDocument> LxCreateDOM(const UnicodeString& AXML);

} // namespace lorvane
