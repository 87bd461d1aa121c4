/// Elements (TLxDOMElement) and their face: children kept in the common list and, sorted by kind,
/// in typed lists (elements, attributes, character data); look-up by name with its options;
/// namespace declarations in scope and the link to the element's own; the preserve-space state.
///
/// The typed lists are made when they are first asked for, from the children (a load makes
/// none), and kept in step from then on; the list of declarations likewise. An element that is
/// only built, loaded, walked and written pays for no typed list.
#pragma once

#include "lorvane/dom/LxDOMAttribute.h"
#include "lorvane/dom/LxDOMCharacterData.h"
#include "lorvane/dom/LxDOMNodeList.h"

namespace lorvane {

class TLxDOMElementImpl;

class TLxDOMElement : public TLxDOMNode {
  LX_CLASS(TLxDOMElement, TLxDOMNode)
  /// The preserve-space state starts as DefaultPreserveCase.
  TLxDOMElement() noexcept;

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  /// Keeps the namespace URI across a change of parent, takes the preserve-space state of the new
  /// place, and declares the kept URI there when it is missing.
  void SetParentNode(TLxDOMObject* AParent) override;
  bool GetPreserveSpace() override { return FPreserveSpace; }
  /// The text of the character data children, comments left out; child elements don't count.
  UnicodeString GetNodeValue() override;
  /// The text of all character data children, then the text of each child element in order.
  UnicodeString GetText() override;
  /// The linked declaration's value; without one, empty with a parent and the kept URI without.
  UnicodeString GetNamespaceURI() override;
  /// Links the declaration of the prefix among the declarations in scope.
  void SetPrefix(const UnicodeString& Value) override;
  /// Also files ANode in its typed list, at the same position rules, per list.
  TLxDOMNode* AddChild(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos) override;
  using TLxDOMNode::AddChild;
  /// Nil does nothing; a node that isn't a child raises EAssertionFailed "The specified ChildNode
  /// is not a child of this element!".
  void RemoveChild(TLxDOMNode* AChildNode) override;
  /// The child elements written compact or formatted; text directly inside isn't included.
  UnicodeString GetInnerXML() override;
  UnicodeString GetFormattedInnerXML() override;
  /// Removes the child elements, then loads the text (several elements may stand in it) into
  /// this element. Text, comments and attributes stay.
  void SetInnerXML(const UnicodeString& Value) override;

  /// Attributes in order of addition, declarations included.
  TLxDOMAttrList* Attributes();
  /// Child elements in document order.
  TLxDOMElementList* Elements();
  /// Child text, CDATA and comment nodes in document order.
  TLxDOMNodeList* CharNodes();
  /// The declarations in scope: inherited ones first, then this element's own; empty while the
  /// element has no parent. An element that declares nothing shares its parent's scope until
  /// this list is asked for, which then makes its own copy.
  TLxDOMAttrList* Namespaces();
  Integer ElementCount() const noexcept { return CountOf(TChildKind::Element); }
  Integer AttributeCount() const noexcept { return CountOf(TChildKind::Attribute); }
  bool HasChildElements() const noexcept { return ElementCount() > 0; }
  /// Calls AVisit with each child element, in order, without making the typed list.
  template <class F> void VisitChildElements(F&& AVisit) const {
    AnyOf(TChildKind::Element, [&](TLxDOMNode* ANode) {
      AVisit(static_cast<TLxDOMElement*>(ANode));
      return false;
    });
  }

  /// The declaration that gives this element its namespace; nil when none.
  TLxDOMAttribute* NamespaceDeclaration() const noexcept { return FNamespace; }

  /// The text is escaped as a text node stores it.
  TLxDOMText* AddText(const UnicodeString& AValue);
  /// CDATA and comments store their text as it is.
  TLxDOMCDATA* AddCDATA(const UnicodeString& AValue);
  TLxDOMComment* AddComment(const UnicodeString& AComment);
  TLxDOMText* InsertText(const UnicodeString& AValue, TLxDOMPosition APosition,
                         TLxDOMElement* ARefChild);
  TLxDOMCDATA* InsertCDATA(const UnicodeString& AValue, TLxDOMPosition APosition,
                           TLxDOMElement* ARefChild);
  TLxDOMComment* InsertComment(const UnicodeString& AComment, TLxDOMPosition APosition,
                               TLxDOMElement* ARefChild);
  /// The CDATA child of number idx from 0; idx equal to their number adds an empty one; beyond
  /// that raises EListError "There is no CDATA element with index %d!".
  TLxDOMCDATA* GetCDATA(Integer idx);
  Integer GetCDATACount() const noexcept;
  /// Merges neighbouring text children (not CDATA), re-escaping the joined text; doesn't descend.
  void NormalizeTextNodes() override;

  TLxDOMElement* AddElement(const UnicodeString& ATagName);
  /// The URI is applied when the element is linked: declared on it when not in scope.
  TLxDOMElement* AddElement(std::u16string_view ANamespaceURI, std::u16string_view AQualifiedName);
  TLxDOMAttribute* AddAttribute(const UnicodeString& AAttibuteName);
  TLxDOMAttribute* AddAttribute(std::u16string_view ANamespaceURI,
                                std::u16string_view AQualifiedName);
  TLxDOMElement* InsertElement(const UnicodeString& ATagName, TLxDOMPosition APosition,
                               TLxDOMElement* ARefChild);
  TLxDOMElement* InsertElement(std::u16string_view ANamespaceURI,
                               std::u16string_view AQualifiedName, TLxDOMPosition APosition,
                               TLxDOMElement* ARefChild);
  void RemoveElement(TLxDOMElement* AElement) { RemoveChild(AElement); }
  void RemoveElement(const UnicodeString& AElementName);
  void RemoveElement(std::u16string_view ANamespaceURI, std::u16string_view ALocalName);
  void RemoveAttribute(TLxDOMAttribute* AAttribute) { RemoveChild(AAttribute); }
  void RemoveAttribute(const UnicodeString& AAttribName);
  void RemoveAttribute(std::u16string_view ANamespaceURI, std::u16string_view ALocalName);

  TLxDOMElement* FindElement(const UnicodeString& ANodeName,
                             TLxDOMSelectOptions ASelectOptions = {});
  TLxDOMElement* FindElement(std::u16string_view ANamespaceURI, std::u16string_view ALocalName);
  /// Missing: nil under coReturnNil; ELxDomNotFound "There is no child with the localname \"%s\"
  /// and namespace \"%s\"!" under coRaise; under coCreate a new element, named with the prefix
  /// that a declaration in scope gives the URI, or declaring the URI itself.
  TLxDOMElement* ElementByName(std::u16string_view ANamespaceURI, std::u16string_view ALocalName,
                               TLxDOMSelectCheckOption ACheckOption);
  /// Missing and not to be created: ELxDomNotFound as above. A new element declares the URI on
  /// itself when it isn't in scope.
  TLxDOMElement* ElementByName(std::u16string_view ANamespaceURI,
                               std::u16string_view AQualifiedName, bool ACreateWhenNotFound);
  /// FindElement; missing and soCreate: a new ANodeClass (nil: TLxDOMElement) named ANodeName.
  TLxDOMElement* ElementByName(const UnicodeString& ANodeName, TLxDOMSelectOptions ASelectOptions,
                               TLxDOMNodeClass ANodeClass = nullptr);
  TLxDOMAttribute* FindAttribute(const UnicodeString& ANodeName,
                                 TLxDOMSelectOptions ASelectOptions = {});
  TLxDOMAttribute* FindAttribute(std::u16string_view ANamespaceURI, std::u16string_view ALocalName);
  /// Raises ELxDomNotFound when missing.
  TLxDOMAttribute* AttributeByName(std::u16string_view ANamespaceURI,
                                   std::u16string_view ALocalName);
  /// A new attribute gets a declaration of the URI directly before it when none is in scope.
  TLxDOMAttribute* AttributeByName(std::u16string_view ANamespaceURI,
                                   std::u16string_view AQualifiedName, bool ACreateWhenNotFound);
  TLxDOMAttribute* AttributeByName(const UnicodeString& ANodeName,
                                   TLxDOMSelectOptions ASelectOptions,
                                   TLxDOMNodeClass ANodeClass = nullptr);
  bool HasChildElement(const UnicodeString& ANodeName, TLxDOMSelectOptions ASelectOptions = {});
  /// AQualifiedName is compared as a local name.
  bool HasChildElement(std::u16string_view ANamespaceURI, std::u16string_view AQualifiedName);
  bool HasAttribute(const UnicodeString& ANodeName, TLxDOMSelectOptions ASelectOptions = {});
  bool HasAttribute(std::u16string_view ANamespaceURI, std::u16string_view AQualifiedName);
  /// Raise ELxDomNotFound on an empty list.
  TLxDOMElement* FirstElement();
  TLxDOMElement* LastElement();
  TLxDOMAttribute* FirstAttribute();
  TLxDOMAttribute* LastAttribute();
  /// The neighbours among the parent element's child elements; nil at the ends or without one.
  TLxDOMElement* NextElement() const;
  TLxDOMElement* PreviousElement() const;

  /// Reading a missing attribute creates it with an empty value.
  UnicodeString GetAttribute(const UnicodeString& AAttribName);
  void SetAttribute(const UnicodeString& AAttribName, const UnicodeString& Value);
  /// A missing attribute raises ELxDomNotFound.
  UnicodeString GetAttributeNS(std::u16string_view ANamespaceURI, std::u16string_view ALocalName);
  /// ALocalName may carry a prefix.
  void SetAttributeNS(std::u16string_view ANamespaceURI, std::u16string_view ALocalName,
                      const UnicodeString& Value);

  /// A new list that the caller owns: the element itself and, with ARecursive, its descendants in
  /// document order, whose prefix and local name (split at the first ":") match; "*" matches
  /// anything.
  TLxDOMElementList* CreateElementList(const UnicodeString& nodeName, bool ARecursive);
  /// The same by namespace URI and local name; an empty URI matches elements without namespace.
  TLxDOMElementList* CreateElementList(std::u16string_view namespaceURI,
                                       std::u16string_view localName, bool ARecursive);
  /// Path selection (as CreateNodeList) into a new element list that the caller frees. The nodes
  /// are not filtered: a path that ends at attributes lists attributes.
  TLxDOMElementList* CreateElementList(const UnicodeString& nodePath,
                                       TLxDOMSelectOptions ASelectOptions = {});
  /// A braced option set would otherwise read as the recursive flag of the name form.
  TLxDOMElementList* CreateElementList(const UnicodeString& nodePath,
                                       std::initializer_list<TLxDOMSelectOption> ASelectOptions) {
    return CreateElementList(nodePath, TLxDOMSelectOptions(ASelectOptions));
  }
  /// SelectSingleNode cast to an element: nil stays nil, another node kind raises EInvalidCast.
  TLxDOMElement* SelectSingleElement(const UnicodeString& nodePath,
                                     TLxDOMSelectOptions ASelectOptions = {});

  /// Stores the state, writes "xml:space" ("preserve" or "default"), and passes the state to the
  /// descendants down to those that have an "xml:space" of their own.
  void SetPreseveSpace(bool Value);
  /// Applies a namespace URI: kept while the element has no parent; otherwise declared on the
  /// element when the declaration in scope doesn't fit its prefix.
  void SetNamespaceURI(const UnicodeString& Value);
  /// The nearest declaration of ANamespaceURI: among this element's attributes, else up the chain
  /// of element parents; nil when none. Needs no refresh to be current.
  TLxDOMAttribute* FindNamespace(const UnicodeString& ANamespaceURI);

protected:
  /// The element and its subtree, walked without recursion: nested elements are written by this
  /// walk, other children by their own WriteXML. Formatted: child elements on lines of their
  /// own, two blanks per level, unless space is preserved; text is never touched.
  void WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) override;
  ~TLxDOMElement() override;
  void UnlinkChild(TLxDOMNode* AChildNode) override;
  void ForgetChild(TLxDOMNode* ANode) override;
  void ForgetOutsideLinks() override { ForgetOutsideDeclarations(); }
  void ForgetAfterStoppedDestruction() override;
  void RefreshOwnNamespaces() override;

  TLxDOMNode* NodeByName(TLxDOMNodeListBase* AList, const UnicodeString& ANodeName,
                         TLxDOMSelectOptions ASelectOptions, TLxDOMNodeClass ANodeClass);
  void _GetChildElements(TLxDOMElementList* AList, std::u16string_view ANamespaceURI,
                         std::u16string_view ALocalName, bool ARecursive);
  /// Raises Exception for both case options, and for soRaise or soCreate.
  void _GetChildElements(TLxDOMElementList* AList, std::u16string_view APrefix,
                         std::u16string_view ALocalName, bool ARecursive,
                         TLxDOMSelectOptions ASelectOptions);
  /// Passes the state down to the child elements, stopping at those with their own "xml:space".
  void PassPreserveSpaceDown(bool Value);

  /// First, in the padding behind the node's own flags.
  bool FPreserveSpace;
  TLxDOMAttrList* FAttributes = nullptr;
  TLxDOMAttrList* FNamespaces = nullptr;
  TLxDOMElementList* FElements = nullptr;
  TLxDOMNodeList* FCharNodes = nullptr;
  TLxDOMAttribute* FNamespace = nullptr;
  /// The element whose FNamespaces is the scope here: this one, or the nearest ancestor with
  /// declarations of its own; nil when nothing is in scope.
  TLxDOMElement* FScopeOwner = nullptr;

  /// The kinds of children that have a typed list.
  enum class TChildKind : Byte { Attribute, Element, CharacterData, None };
  static TChildKind KindOf(const TLxDOMNode* ANode) noexcept;
  /// The typed list of AKind once it has been made; nil before (and for None).
  TLxDOMNodeListBase* ExistingList(TChildKind AKind) const noexcept;
  /// The typed list of AKind, made from the children when missing.
  TLxDOMNodeListBase* RequireList(TChildKind AKind);
  Integer CountOf(TChildKind AKind) const noexcept;
  /// Calls AVisit with each child of AKind, in the order of its typed list, until it answers
  /// true; gives whether one did. Makes no list.
  template <class F> bool AnyOf(TChildKind AKind, F&& AVisit) const {
    if (const TLxDOMNodeListBase* List = ExistingList(AKind)) {
      for (TLxDOMNode* Node : *List)
        if (AVisit(Node))
          return true;
      return false;
    }
    if (TLxDOMNodeList* Children = ChildList())
      for (TLxDOMNode* Node : *Children)
        if (KindOf(Node) == AKind && AVisit(Node))
          return true;
    return false;
  }

private:
  /// The declarations in scope without making a list; nil when none.
  TLxDOMAttrList* ScopeList() const noexcept {
    return FScopeOwner ? FScopeOwner->FNamespaces : nullptr;
  }
  /// The declaration in scope for APrefix ("xmlns" or "xmlns:" + APrefix); nil when none.
  TLxDOMAttribute* DeclarationInScope(const UnicodeString& APrefix);
  /// Writes the start tag (" />" for an empty element: then false) and gives whether children
  /// and an end tag follow.
  bool WriteStartTag(TLxDOMWriter& AWriter, bool AFormatted, Integer ALevel);
  void WriteEndTag(TLxDOMWriter& AWriter, bool AFormatted, Integer ALevel);
  UnicodeString InnerXML(bool AFormatted);
  /// Links a declaration on the element that gives it ANamespaceURI, as a load finds it.
  void LinkOwnDeclaration(TLxDOMAttribute* ADeclaration, const UnicodeString& ANamespaceURI);
  /// Adds an attribute named AName to this element, which a load has just made and not linked
  /// yet: the attribute gets its place and parent, and nothing else changes.
  TLxDOMAttribute* AddLoadedAttribute(const TLxDOMName::TRef& AName);
  /// The declarations a load has looked up, by scope list and prefix. Linking an element that
  /// declares nothing changes no scope list, so a look-up holds until the load does anything
  /// else; Clear then.
  class TLoadScopes {
  public:
    /// As AElement->DeclarationInScope(APrefix).
    TLxDOMAttribute* Find(TLxDOMElement* AElement, const UnicodeString& APrefix);
    void Clear() noexcept { FUsed = 0; }

  private:
    struct TEntry {
      const TLxDOMAttrList* Scope = nullptr;
      UnicodeString Prefix;
      TLxDOMAttribute* Declaration = nullptr;
    };
    static constexpr std::size_t Entries = 8;
    TEntry FEntries[Entries];
    std::size_t FUsed = 0;
    std::size_t FNext = 0;
  };
  /// Appends AChild, which a load has made with its attributes and not linked yet, to this
  /// element of a document, with the same outcome as AppendChild. False, with nothing changed,
  /// where the short road doesn't apply (no document, or AChild may have its own "xml:space");
  /// AppendChild is the road then.
  bool AppendLoadedElement(TLxDOMElement* AChild, TLoadScopes& AScopes);
  /// The namespace refresh of AChild, a fresh element without declarations of its own, linked
  /// below this one: it shares this element's scope.
  void LinkLoadedNamespaces(TLxDOMElement* AChild, TLoadScopes& AScopes);
  void LinkLoadedDeclarations(TLxDOMElement* AChild, TLoadScopes& AScopes);
  friend class TLxDOMParser;
  /// Makes a node of class T, links it at the position, then sets its value.
  template <class T>
  T* InsertCharacterData(const UnicodeString& AValue, TLxDOMPosition APosition,
                         TLxDOMElement* ARefChild);
  /// Whether this element has its own "xml:space" attribute.
  TLxDOMAttribute* OwnSpaceAttribute();
  /// Drops, in a subtree that leaves its tree, the links to declarations outside it.
  void ForgetOutsideDeclarations();
  /// Takes ADeclaration out of every scope and link in this element's subtree; raises nothing.
  void DropDeclaration(TLxDOMAttribute* ADeclaration);
  friend class TLxDOMAttribute;
  friend class TLxDOMNode; // CheckNamespaceValues reads the scope
};

class TLxDOMElementImpl : public TLxDOMNodeImpl, public virtual ILxDOMElement {
  LX_CLASS(TLxDOMElementImpl, TLxDOMNodeImpl)
  explicit TLxDOMElementImpl(TLxDOMElement* ADOMObject) : TLxDOMNodeImpl(ADOMObject) {}
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  TLxDOMElement* DOMElement() const noexcept { return static_cast<TLxDOMElement*>(FDOMObject); }

  UnicodeString GetAttrib(const UnicodeString& AAttribName) override;
  UnicodeString GetAttribNS(std::u16string_view ANamespaceURI,
                            std::u16string_view ALocalName) override;
  void SetAttrib(const UnicodeString& AAttribName, const UnicodeString& Value) override;
  void SetAttribNS(std::u16string_view ANamespaceURI, std::u16string_view ALocalName,
                   const UnicodeString& Value) override;
  void SetPreseveSpace(bool Value) override;
  IPtr<ILxDOMAttrList> GetAttributes() override;
  IPtr<ILxDOMElementList> GetElements() override;
  IPtr<ILxDOMNodeList> GetCharNodes() override;
  IPtr<ILxDOMAttrList> GetNamespaces() override;
  Integer ElementCount() override;
  Integer AttributeCount() override;
  IPtr<ILxDOMCDATA> GetCDATA(Integer idx) override;
  IPtr<ILxDOMComment> AddComment(const UnicodeString& AComment) override;
  IPtr<ILxDOMText> AddText(const UnicodeString& AValue) override;
  IPtr<ILxDOMCDATA> AddCDATA(const UnicodeString& AValue) override;
  IPtr<ILxDOMComment> InsertComment(const UnicodeString& AComment, TLxDOMPosition APosition,
                                    ILxDOMElement* ARefChild) override;
  IPtr<ILxDOMText> InsertText(const UnicodeString& AValue, TLxDOMPosition APosition,
                              ILxDOMElement* ARefChild) override;
  IPtr<ILxDOMCDATA> InsertCDATA(const UnicodeString& AValue, TLxDOMPosition APosition,
                                ILxDOMElement* ARefChild) override;
  IPtr<ILxDOMElement> AddElement(const UnicodeString& ATagName) override;
  IPtr<ILxDOMElement> AddElement(std::u16string_view ANamespaceURI,
                                 std::u16string_view AQualifiedName) override;
  IPtr<ILxDOMAttribute> AddAttribute(const UnicodeString& AAttibuteName) override;
  IPtr<ILxDOMAttribute> AddAttribute(std::u16string_view ANamespaceURI,
                                     std::u16string_view AQualifiedName) override;
  IPtr<ILxDOMElement> InsertElement(const UnicodeString& ATagName, TLxDOMPosition APosition,
                                    ILxDOMElement* ARefChild) override;
  IPtr<ILxDOMElement> InsertElement(std::u16string_view ANamespaceURI,
                                    std::u16string_view AQualifiedName, TLxDOMPosition APosition,
                                    ILxDOMElement* ARefChild) override;
  void RemoveElement(ILxDOMElement* AElement) override;
  void RemoveElement(const UnicodeString& AElementName) override;
  void RemoveElement(std::u16string_view ANamespaceURI, std::u16string_view ALocalName) override;
  void RemoveAttribute(ILxDOMAttribute* AAttribute) override;
  void RemoveAttribute(const UnicodeString& AAttribName) override;
  void RemoveAttribute(std::u16string_view ANamespaceURI, std::u16string_view ALocalName) override;
  IPtr<ILxDOMElement> FindElement(const UnicodeString& ANodeName,
                                  TLxDOMSelectOptions ASelectOptions = {}) override;
  IPtr<ILxDOMElement> FindElement(std::u16string_view ANamespaceURI,
                                  std::u16string_view ALocalName) override;
  IPtr<ILxDOMElement> ElementByName(std::u16string_view ANamespaceURI,
                                    std::u16string_view ALocalName,
                                    TLxDOMSelectCheckOption ACheckOption) override;
  IPtr<ILxDOMElement> ElementByName(std::u16string_view ANamespaceURI,
                                    std::u16string_view AQualifiedName,
                                    bool ACreateWhenNotFound) override;
  IPtr<ILxDOMElement> ElementByName(const UnicodeString& ANodeName,
                                    TLxDOMSelectOptions ASelectOptions = {}) override;
  IPtr<ILxDOMAttribute> FindAttribute(const UnicodeString& ANodeName,
                                      TLxDOMSelectOptions ASelectOptions = {}) override;
  IPtr<ILxDOMAttribute> FindAttribute(std::u16string_view ANamespaceURI,
                                      std::u16string_view ALocalName) override;
  IPtr<ILxDOMAttribute> AttributeByName(std::u16string_view ANamespaceURI,
                                        std::u16string_view ALocalName) override;
  IPtr<ILxDOMAttribute> AttributeByName(std::u16string_view ANamespaceURI,
                                        std::u16string_view AQualifiedName,
                                        bool ACreateWhenNotFound) override;
  IPtr<ILxDOMAttribute> AttributeByName(const UnicodeString& ANodeName,
                                        TLxDOMSelectOptions ASelectOptions = {}) override;
  bool HasChildElement(const UnicodeString& ANodeName,
                       TLxDOMSelectOptions ASelectOptions = {}) override;
  bool HasChildElement(std::u16string_view ANamespaceURI,
                       std::u16string_view AQualifiedName) override;
  bool HasChildElements() override;
  IPtr<ILxDOMElement> FirstElement() override;
  IPtr<ILxDOMElement> LastElement() override;
  bool HasAttribute(const UnicodeString& ANodeName,
                    TLxDOMSelectOptions ASelectOptions = {}) override;
  bool HasAttribute(std::u16string_view ANamespaceURI, std::u16string_view AQualifiedName) override;
  IPtr<ILxDOMAttribute> FirstAttribute() override;
  IPtr<ILxDOMAttribute> LastAttribute() override;
  IPtr<ILxDOMElement> ParentElement() override;
  IPtr<ILxDOMElement> NextElement() override;
  IPtr<ILxDOMElement> PreviousElement() override;
  IPtr<ILxDOMElementList> CreateElementList(const UnicodeString& nodeName,
                                            bool ARecursive) override;
  IPtr<ILxDOMElementList> CreateElementList(std::u16string_view namespaceURI,
                                            std::u16string_view localName,
                                            bool ARecursive) override;
  IPtr<ILxDOMElementList> CreateElementList(const UnicodeString& nodePath,
                                            TLxDOMSelectOptions ASelectOptions = {}) override;
  using ILxDOMElement::CreateElementList;
  IPtr<ILxDOMElement> SelectSingleElement(const UnicodeString& nodePath,
                                          TLxDOMSelectOptions ASelectOptions = {}) override;

protected:
  ~TLxDOMElementImpl() override = default;
};

} // namespace lorvane
