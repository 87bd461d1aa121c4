/// The interfaces of the document tree: a node, the lists of nodes, attributes, elements,
/// character data (text, comments, CDATA sections) and processing instructions.
///
/// Node arguments are borrowed for the call; node results are counted references, nil where the
/// data side gives none. Interfaces extend each other virtually, so that a face class implements
/// an interface once and its descendants' faces inherit that implementation. Every interface on a
/// node or a list keeps that object and all its ancestors alive (see LxDOMObject.h).
#pragma once

#include "lorvane/dom/LxDOMTypes.h"
#include "lorvane/platform/Variants.h"
#include "lorvane/types/LxSerializable.h"

#include <initializer_list>

namespace lorvane {

class ILxDOMNodeList;
class ILxDOMDocument;
class ILxDOMElement;
class ILxDOMAttribute;
class ILxDOMText;
class ILxDOMComment;
class ILxDOMCDATA;

/// A node offers its own text to the serializers (ILxSerializable).
class ILxDOMNode : public virtual ILxSerializable {
public:
  static constexpr TGUID IID{
      0x074C380D, 0x097F, 0x4508, {0xA0, 0x83, 0xFB, 0x87, 0xC2, 0xDE, 0x7E, 0xC6}};
  virtual bool GetPreserveSpace() = 0;
  virtual UnicodeString GetNodeValue() = 0;
  virtual UnicodeString GetText() = 0;
  virtual UnicodeString GetNamespaceURI() = 0;
  virtual UnicodeString GetLocalName() = 0;
  virtual UnicodeString GetPrefix() = 0;
  virtual UnicodeString GetQualifiedName() = 0;
  virtual UnicodeString GetFormattedInnerXML() = 0;
  virtual UnicodeString GetInnerXML() = 0;
  virtual IPtr<ILxDOMNodeList> GetChildNodes() = 0;
  virtual TLxDOMNodeType GetNodeType() = 0;
  virtual void SetNodeValue(const UnicodeString& Value) = 0;
  virtual void SetPrefix(const UnicodeString& Value) = 0;
  virtual void SetQualifiedName(const UnicodeString& Value) = 0;
  virtual void SetInnerXML(const UnicodeString& Value) = 0;
  virtual void NormalizeTextNodes() = 0;
  virtual void Clear() = 0;
  /// The clone is free-standing: the result is its only owner.
  virtual IPtr<ILxDOMNode> CloneNode(bool AIncludeChildNodes) = 0;
  virtual Integer NodeCount() = 0;
  virtual IPtr<ILxDOMNode> AddChild(ILxDOMNode* ANode, ILxDOMNode* ARefNode,
                                    TLxDOMPosition APos) = 0;
  /// A child on which no other interface is held is destroyed.
  virtual void RemoveChild(ILxDOMNode* AChildNode) = 0;
  virtual IPtr<ILxDOMNode> InsertBefore(ILxDOMNode* newChild, ILxDOMNode* refChild) = 0;
  virtual IPtr<ILxDOMNode> AppendChild(ILxDOMNode* newChild) = 0;
  virtual IPtr<ILxDOMNode> NextSibling() = 0;
  virtual IPtr<ILxDOMNode> PreviousSibling() = 0;
  virtual bool HasChilds() = 0;
  virtual bool HasAttributes() = 0;
  virtual IPtr<ILxDOMNode> ParentNode() = 0;
  virtual UnicodeString NodePath(bool ALocalNames, const UnicodeString& AIdAttribName) = 0;
  virtual UnicodeString GetFormattedXML() = 0;
  virtual UnicodeString GetXML() = 0;
  /// Adds what the XML text holds to this node.
  virtual void LoadFromStream(TStream* AStream, Word AStreamCodePage) = 0;
  virtual void SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted) = 0;
  /// Nil for a node in no document.
  virtual IPtr<ILxDOMDocument> Document() = 0;
  /// Path selection (see TLxDOMNode::SelectSingleNode): the first node of the path, or nil.
  virtual IPtr<ILxDOMNode> SelectSingleNode(const UnicodeString& nodePath,
                                            TLxDOMSelectOptions ASelectOptions = {}) = 0;
  /// All nodes of the path in a new list that the result owns.
  virtual IPtr<ILxDOMNodeList> CreateNodeList(const UnicodeString& nodePath,
                                              TLxDOMSelectOptions ASelectOptions = {}) = 0;

protected:
  ~ILxDOMNode() = default;
};

/// An ordered list of nodes that owns none of them. Add, Delete and Clear change the list alone:
/// they neither link, unlink nor destroy a node, so they are meant for free-standing lists (a
/// node changes its own lists through its AddChild and RemoveChild).
class ILxDOMNodeList : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0xF7EE7E84, 0xCC50, 0x48C2, {0x99, 0x11, 0x1C, 0xCF, 0xAE, 0x60, 0xF2, 0xA2}};
  /// An index out of range raises EListError "List index out of bounds (%d)".
  virtual IPtr<ILxDOMNode> GetItem(Integer idx) = 0;
  virtual void Clear() = 0;
  virtual IPtr<ILxDOMNode> Add(ILxDOMNode* ANode, ILxDOMNode* ARefNode, TLxDOMPosition APos) = 0;
  virtual IPtr<ILxDOMNode> Add(ILxDOMNode* ANode, TLxDOMAbsPosition APos) = 0;
  /// A nil ARefNode raises EAssertionFailed.
  virtual IPtr<ILxDOMNode> Add(ILxDOMNode* ANode, TLxDOMRelPosition APos, ILxDOMNode* ARefNode) = 0;
  /// Nil when ANode isn't listed.
  virtual IPtr<ILxDOMNode> Delete(ILxDOMNode* ANode) = 0;
  virtual Integer Count() = 0;
  /// An empty list raises ELxDomNotFound.
  virtual IPtr<ILxDOMNode> First() = 0;
  virtual IPtr<ILxDOMNode> Last() = 0;
  /// Nil after the last item; the first item when ARefNode isn't listed.
  virtual IPtr<ILxDOMNode> Next(ILxDOMNode* ARefNode) = 0;
  /// Nil before the first item; raises EListError when ARefNode isn't listed.
  virtual IPtr<ILxDOMNode> Previous(ILxDOMNode* ARefNode) = 0;
  virtual bool ContainsNode(ILxDOMNode* ANode) = 0;

protected:
  ~ILxDOMNodeList() = default;
};

/// Look-ups by name walk from the last item to the first: of several nodes with one name, the
/// one nearest the end is found. The namespace forms take views, so that a braced option set
/// never reads as a string.
class ILxDOMNamedNodeList : public virtual ILxDOMNodeList {
public:
  static constexpr TGUID IID{
      0x419178C6, 0xB412, 0x4E19, {0x85, 0xE8, 0x22, 0x94, 0x10, 0xA5, 0xE6, 0x95}};
  using ILxDOMNodeList::Delete;
  virtual IPtr<ILxDOMNode> Find(const UnicodeString& ANodeName,
                                TLxDOMSelectOptions ASelectOptions = {}) = 0;
  /// An empty ANamespaceURI matches any namespace.
  virtual IPtr<ILxDOMNode> Find(std::u16string_view ANamespaceURI,
                                std::u16string_view ALocalName) = 0;
  virtual IPtr<ILxDOMNode> Delete(const UnicodeString& ANodeName,
                                  TLxDOMSelectOptions ASelectOptions = {}) = 0;
  virtual IPtr<ILxDOMNode> Delete(std::u16string_view ANamespaceURI,
                                  std::u16string_view ALocalName) = 0;

protected:
  ~ILxDOMNamedNodeList() = default;
};

class ILxDOMElementList : public virtual ILxDOMNamedNodeList {
public:
  static constexpr TGUID IID{
      0x2FCF2A5C, 0x1E4D, 0x4A6B, {0xA4, 0xCC, 0xB7, 0xE3, 0xD5, 0x1E, 0xF0, 0xBF}};
  /// By index, or by name under the check option of the owner's document (see
  /// TLxDOMElementList::GetItemEx).
  virtual IPtr<ILxDOMElement> GetElement(const Variant& idx) = 0;

protected:
  ~ILxDOMElementList() = default;
};

class ILxDOMAttrList : public virtual ILxDOMNamedNodeList {
public:
  static constexpr TGUID IID{
      0x2B9CB8D1, 0x933F, 0x478B, {0xAF, 0xBB, 0xCE, 0x85, 0x95, 0x03, 0xE3, 0xA5}};
  virtual IPtr<ILxDOMAttribute> GetAttribute(Integer idx) = 0;
  /// The first declaration whose value is ANamespaceURI; nil when none.
  virtual IPtr<ILxDOMAttribute> FindNamespace(const UnicodeString& ANamespaceURI) = 0;

protected:
  ~ILxDOMAttrList() = default;
};

/// An attribute holds its value in the text form that stands between the quotes of the document.
class ILxDOMAttribute : public virtual ILxDOMNode {
public:
  static constexpr TGUID IID{
      0x6B483B79, 0xEE49, 0x47ED, {0xAB, 0x1F, 0xDE, 0x96, 0x2A, 0x51, 0x5E, 0xE9}};
  /// "xmlns", or any name with the prefix "xmlns", without regard to case.
  virtual bool IsNamespace() = 0;
  /// The prefix a declaration declares, empty for the default one; raises EAssertionFailed on an
  /// attribute that is no declaration.
  virtual UnicodeString NamespacePrefix() = 0;
  /// The neighbours among the element's attributes; nil at the ends or without element parent.
  virtual IPtr<ILxDOMAttribute> NextAttribute() = 0;
  virtual IPtr<ILxDOMAttribute> PreviousAttribute() = 0;

protected:
  ~ILxDOMAttribute() = default;
};

/// Children, attributes and namespace declarations of an element. Names are looked up in the
/// typed lists from the last to the first; forms with a namespace take views so that a braced
/// option set never reads as a string.
class ILxDOMElement : public virtual ILxDOMNode {
public:
  static constexpr TGUID IID{
      0x65ED5DED, 0x892D, 0x47D4, {0xB1, 0xF9, 0xE0, 0x6D, 0x53, 0x4D, 0x8C, 0x43}};
  /// Reading a missing attribute creates it with an empty value.
  virtual UnicodeString GetAttrib(const UnicodeString& AAttribName) = 0;
  /// A missing attribute raises ELxDomNotFound.
  virtual UnicodeString GetAttribNS(std::u16string_view ANamespaceURI,
                                    std::u16string_view ALocalName) = 0;
  virtual void SetAttrib(const UnicodeString& AAttribName, const UnicodeString& Value) = 0;
  /// Declares the namespace directly before a new attribute when it isn't in scope.
  virtual void SetAttribNS(std::u16string_view ANamespaceURI, std::u16string_view ALocalName,
                           const UnicodeString& Value) = 0;
  /// Writes "xml:space" and passes the state down to the elements that have no such attribute.
  virtual void SetPreseveSpace(bool Value) = 0;
  virtual IPtr<ILxDOMAttrList> GetAttributes() = 0;
  virtual IPtr<ILxDOMElementList> GetElements() = 0;
  virtual IPtr<ILxDOMNodeList> GetCharNodes() = 0;
  virtual IPtr<ILxDOMAttrList> GetNamespaces() = 0;
  virtual Integer ElementCount() = 0;
  virtual Integer AttributeCount() = 0;
  /// The CDATA child of number idx; idx equal to their number adds an empty one.
  virtual IPtr<ILxDOMCDATA> GetCDATA(Integer idx) = 0;
  virtual IPtr<ILxDOMComment> AddComment(const UnicodeString& AComment) = 0;
  virtual IPtr<ILxDOMText> AddText(const UnicodeString& AValue) = 0;
  virtual IPtr<ILxDOMCDATA> AddCDATA(const UnicodeString& AValue) = 0;
  virtual IPtr<ILxDOMComment> InsertComment(const UnicodeString& AComment, TLxDOMPosition APosition,
                                            ILxDOMElement* ARefChild) = 0;
  virtual IPtr<ILxDOMText> InsertText(const UnicodeString& AValue, TLxDOMPosition APosition,
                                      ILxDOMElement* ARefChild) = 0;
  virtual IPtr<ILxDOMCDATA> InsertCDATA(const UnicodeString& AValue, TLxDOMPosition APosition,
                                        ILxDOMElement* ARefChild) = 0;
  virtual IPtr<ILxDOMElement> AddElement(const UnicodeString& ATagName) = 0;
  virtual IPtr<ILxDOMElement> AddElement(std::u16string_view ANamespaceURI,
                                         std::u16string_view AQualifiedName) = 0;
  /// Never replaces an attribute of the same name.
  virtual IPtr<ILxDOMAttribute> AddAttribute(const UnicodeString& AAttibuteName) = 0;
  virtual IPtr<ILxDOMAttribute> AddAttribute(std::u16string_view ANamespaceURI,
                                             std::u16string_view AQualifiedName) = 0;
  virtual IPtr<ILxDOMElement> InsertElement(const UnicodeString& ATagName, TLxDOMPosition APosition,
                                            ILxDOMElement* ARefChild) = 0;
  virtual IPtr<ILxDOMElement> InsertElement(std::u16string_view ANamespaceURI,
                                            std::u16string_view AQualifiedName,
                                            TLxDOMPosition APosition, ILxDOMElement* ARefChild) = 0;
  virtual void RemoveElement(ILxDOMElement* AElement) = 0;
  /// A missing name does nothing.
  virtual void RemoveElement(const UnicodeString& AElementName) = 0;
  /// A missing element raises ELxDomNotFound.
  virtual void RemoveElement(std::u16string_view ANamespaceURI, std::u16string_view ALocalName) = 0;
  virtual void RemoveAttribute(ILxDOMAttribute* AAttribute) = 0;
  virtual void RemoveAttribute(const UnicodeString& AAttribName) = 0;
  virtual void RemoveAttribute(std::u16string_view ANamespaceURI,
                               std::u16string_view ALocalName) = 0;
  virtual IPtr<ILxDOMElement> FindElement(const UnicodeString& ANodeName,
                                          TLxDOMSelectOptions ASelectOptions = {}) = 0;
  virtual IPtr<ILxDOMElement> FindElement(std::u16string_view ANamespaceURI,
                                          std::u16string_view ALocalName) = 0;
  virtual IPtr<ILxDOMElement> ElementByName(std::u16string_view ANamespaceURI,
                                            std::u16string_view ALocalName,
                                            TLxDOMSelectCheckOption ACheckOption) = 0;
  virtual IPtr<ILxDOMElement> ElementByName(std::u16string_view ANamespaceURI,
                                            std::u16string_view AQualifiedName,
                                            bool ACreateWhenNotFound) = 0;
  virtual IPtr<ILxDOMElement> ElementByName(const UnicodeString& ANodeName,
                                            TLxDOMSelectOptions ASelectOptions = {}) = 0;
  virtual IPtr<ILxDOMAttribute> FindAttribute(const UnicodeString& ANodeName,
                                              TLxDOMSelectOptions ASelectOptions = {}) = 0;
  virtual IPtr<ILxDOMAttribute> FindAttribute(std::u16string_view ANamespaceURI,
                                              std::u16string_view ALocalName) = 0;
  virtual IPtr<ILxDOMAttribute> AttributeByName(std::u16string_view ANamespaceURI,
                                                std::u16string_view ALocalName) = 0;
  virtual IPtr<ILxDOMAttribute> AttributeByName(std::u16string_view ANamespaceURI,
                                                std::u16string_view AQualifiedName,
                                                bool ACreateWhenNotFound) = 0;
  virtual IPtr<ILxDOMAttribute> AttributeByName(const UnicodeString& ANodeName,
                                                TLxDOMSelectOptions ASelectOptions = {}) = 0;
  virtual bool HasChildElement(const UnicodeString& ANodeName,
                               TLxDOMSelectOptions ASelectOptions = {}) = 0;
  virtual bool HasChildElement(std::u16string_view ANamespaceURI,
                               std::u16string_view AQualifiedName) = 0;
  virtual bool HasChildElements() = 0;
  virtual IPtr<ILxDOMElement> FirstElement() = 0;
  virtual IPtr<ILxDOMElement> LastElement() = 0;
  virtual bool HasAttribute(const UnicodeString& ANodeName,
                            TLxDOMSelectOptions ASelectOptions = {}) = 0;
  virtual bool HasAttribute(std::u16string_view ANamespaceURI,
                            std::u16string_view AQualifiedName) = 0;
  virtual IPtr<ILxDOMAttribute> FirstAttribute() = 0;
  virtual IPtr<ILxDOMAttribute> LastAttribute() = 0;
  /// Nil when the parent is no element.
  virtual IPtr<ILxDOMElement> ParentElement() = 0;
  virtual IPtr<ILxDOMElement> NextElement() = 0;
  virtual IPtr<ILxDOMElement> PreviousElement() = 0;
  /// A new list that the result owns: the element itself and, with ARecursive, its descendants
  /// whose prefix and local name match ("*" matches any).
  virtual IPtr<ILxDOMElementList> CreateElementList(const UnicodeString& nodeName,
                                                    bool ARecursive) = 0;
  /// The same by namespace URI and local name; an empty URI matches elements without namespace.
  virtual IPtr<ILxDOMElementList> CreateElementList(std::u16string_view namespaceURI,
                                                    std::u16string_view localName,
                                                    bool ARecursive) = 0;
  /// Path selection into a new element list that the result owns; the nodes are not filtered,
  /// so a path that ends at attributes lists attributes.
  virtual IPtr<ILxDOMElementList> CreateElementList(const UnicodeString& nodePath,
                                                    TLxDOMSelectOptions ASelectOptions = {}) = 0;
  /// A braced option set would otherwise read as the recursive flag of the name form.
  IPtr<ILxDOMElementList>
  CreateElementList(const UnicodeString& nodePath,
                    std::initializer_list<TLxDOMSelectOption> ASelectOptions) {
    return CreateElementList(nodePath, TLxDOMSelectOptions(ASelectOptions));
  }
  /// SelectSingleNode cast to an element: nil stays nil, another node kind raises EInvalidCast.
  virtual IPtr<ILxDOMElement> SelectSingleElement(const UnicodeString& nodePath,
                                                  TLxDOMSelectOptions ASelectOptions = {}) = 0;

protected:
  ~ILxDOMElement() = default;
};

/// Character data: text, comments and CDATA sections. Edits work on the decoded value; offsets
/// count UTF-16 code units from 1, an offset below 1 counts as 1, and offsets and counts beyond
/// the end are clamped to it, so none of these raises for its numbers.
class ILxDOMCharacterData : public virtual ILxDOMNode {
public:
  static constexpr TGUID IID{
      0xFEDC91FC, 0xC88F, 0x424F, {0x93, 0xA2, 0xCC, 0x5F, 0x4D, 0x5F, 0xB1, 0x43}};
  /// Up to ACount characters from AOffset; empty for a count below 1 or an offset past the end.
  virtual UnicodeString Substring(Integer AOffset, Integer ACount) = 0;
  virtual void AppendStr(const UnicodeString& AData) = 0;
  /// An offset past the end appends.
  virtual void InsertStr(Integer AOffset, const UnicodeString& AData) = 0;
  virtual void DeleteStr(Integer AOffset, Integer ACount) = 0;
  /// Deletes Count characters at AOffset, then inserts AData there.
  virtual void ReplaceStr(Integer AOffset, Integer Count, const UnicodeString& AData) = 0;

protected:
  ~ILxDOMCharacterData() = default;
};

class ILxDOMText : public virtual ILxDOMCharacterData {
public:
  static constexpr TGUID IID{
      0x8647C801, 0x8F1E, 0x4D8B, {0x81, 0xD5, 0x28, 0x40, 0x97, 0x9A, 0xAB, 0x96}};
  /// Keeps the first AOffset characters and moves the rest into a new text node (also when this
  /// is a CDATA section) right behind this one, which is the result. Raises ELxDomException
  /// when the node has no parent.
  virtual IPtr<ILxDOMText> SplitTxt(Integer AOffset) = 0;

protected:
  ~ILxDOMText() = default;
};

class ILxDOMComment : public virtual ILxDOMCharacterData {
public:
  static constexpr TGUID IID{
      0xB26D2B12, 0x6B40, 0x4779, {0x90, 0x07, 0x28, 0x93, 0x79, 0x10, 0xBD, 0x66}};

protected:
  ~ILxDOMComment() = default;
};

class ILxDOMCDATA : public virtual ILxDOMText {
public:
  static constexpr TGUID IID{
      0xA7529680, 0xD2CE, 0x4AA2, {0x9C, 0xFB, 0xD7, 0xE2, 0x50, 0xDD, 0x1A, 0xBB}};

protected:
  ~ILxDOMCDATA() = default;
};

/// The target is the node's qualified name; the data is kept as it is given, without escaping.
class ILxDOMProcessingInstruction : public virtual ILxDOMNode {
public:
  static constexpr TGUID IID{
      0x30C77695, 0x3148, 0x408A, {0xAF, 0xAC, 0xDD, 0x4E, 0x32, 0x43, 0x3E, 0xC6}};
  virtual UnicodeString GetData() = 0;
  virtual void SetData(const UnicodeString& Value) = 0;

protected:
  ~ILxDOMProcessingInstruction() = default;
};

/// The top of a tree: settings for the whole tree, the root element, the prolog, loading and
/// saving. Loads add to the document, except the LoadFromXML and LoadXML text forms, which clear
/// it first.
class ILxDOMDocument : public virtual ILxDOMNode {
public:
  static constexpr TGUID IID{
      0x7A1E5B0C, 0x3D92, 0x4C6F, {0x9B, 0x21, 0x5E, 0x08, 0xC4, 0x7D, 0xA3, 0x16}};
  virtual IPtr<ILxDOMElement> GetRootNode() = 0;
  /// Raises ELxDomNotFound "There is no processinginstruction \"%s\"!" when missing.
  virtual UnicodeString GetProcessingInstruction(const UnicodeString& target) = 0;
  virtual bool GetCaseSensitive() = 0;
  virtual TLxXPathCollationClass GetCollation() = 0;
  virtual TLxDOMSelectMatchOption GetSelectMatchOption() = 0;
  virtual TLxDOMSelectCheckOption GetSelectCheckOption() = 0;
  virtual bool GetUseSchemaInstance() = 0;
  virtual UnicodeString GetEncoding() = 0;
  virtual Word GetCodePage() = 0;
  virtual UnicodeString GetDocumentURI() = 0;
  virtual void SetEncoding(const UnicodeString& Value) = 0;
  virtual void SetCodePage(Word Value) = 0;
  virtual void SetProcessingInstruction(const UnicodeString& target,
                                        const UnicodeString& Value) = 0;
  virtual void SetCaseSensitive(bool Value) = 0;
  virtual void SetCollation(TLxXPathCollationClass Value) = 0;
  virtual void SetSelectMatchOption(TLxDOMSelectMatchOption Value) = 0;
  virtual void SetSelectCheckOption(TLxDOMSelectCheckOption Value) = 0;
  virtual void SetUseSchemaInstance(bool Value) = 0;
  virtual void SetDocumentURI(const UnicodeString& Value) = 0;
  /// A second root raises ELxDomException "This DOM document already contains a rootnode!".
  virtual IPtr<ILxDOMElement> CreateRootNode(const UnicodeString& tagName) = 0;
  virtual IPtr<ILxDOMElement> CreateRootNode(std::u16string_view ANamespaceURI,
                                             std::u16string_view AQualifiedName) = 0;
  virtual IPtr<ILxDOMComment> AddComment(const UnicodeString& AComment) = 0;
  virtual void LoadXML(const UnicodeString& AXML) = 0;
  virtual void LoadXML(TStream* AStream) = 0;
  virtual void LoadXML(const UnicodeString& AFilename, Word Mode) = 0;
  /// Bytes whose encoding the text itself tells.
  virtual void LoadFromXML(const AnsiString& AXML) = 0;
  virtual void LoadFromXML(const WideString& AXML) = 0;
  virtual void LoadFromStreamEx(TStream* AStream) = 0;
  virtual void SaveToStreamEx(TStream* AStream, bool AFormatted, bool AWriteBOM) = 0;
  virtual void LoadFromFile(const UnicodeString& AFilename, Word AMode) = 0;
  virtual void SaveToFile(const UnicodeString& AFilename, bool AFormatted, bool AWriteBOM) = 0;
  /// Path selection from the root element (see TLxDOMDocument::CreateElementList).
  virtual IPtr<ILxDOMElementList> CreateElementList(const UnicodeString& nodePath,
                                                    TLxDOMSelectOptions ASelectOptions = {}) = 0;
  virtual IPtr<ILxDOMElement> SelectSingleElement(const UnicodeString& nodePath,
                                                  TLxDOMSelectOptions ASelectOptions = {}) = 0;

protected:
  ~ILxDOMDocument() = default;
};

} // namespace lorvane
