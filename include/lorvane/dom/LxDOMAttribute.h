/// Attributes (TLxDOMAttribute) and their face: a value held in the text form that stands between
/// the quotes of the document, and the link to the namespace declaration that gives the
/// attribute its namespace.
#pragma once

#include "lorvane/dom/LxDOMNode.h"

namespace lorvane {

class TLxDOMElement;

class TLxDOMAttribute : public TLxDOMNode {
  LX_CLASS(TLxDOMAttribute, TLxDOMNode)
  TLxDOMAttribute() noexcept { FNodeType = ntAttribute; }

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  /// Leaving a parent keeps the URI; arriving at an element applies it (declaring it there
  /// when the element has no declaration of it).
  void SetParentNode(TLxDOMObject* AParent) override;
  /// The decoded value.
  UnicodeString GetNodeValue() override;
  /// Stores the value escaped (double quotes escaped, apostrophes left).
  void SetNodeValue(const UnicodeString& Value) override;
  /// The declaration's value; the xml namespace for the prefix "xml"; else empty with a parent,
  /// and the kept URI without one.
  UnicodeString GetNamespaceURI() override;
  /// Links the declaration of the prefix in scope at the parent element. A declaration that
  /// stops being one, or an attribute that becomes one, refreshes its element's scope.
  void SetPrefix(const UnicodeString& Value) override;
  /// Renaming a declaration in an element refreshes that element's scope.
  void SetQualifiedName(const UnicodeString& Value) override;
  TLxDOMNode* CreateClone() override;

  /// "xmlns" without prefix, or the prefix "xmlns", without regard to case.
  bool IsNamespace() const;
  /// Whether a name of that prefix and local name is a declaration's, as IsNamespace says.
  static bool IsDeclarationName(const UnicodeString& APrefix, const UnicodeString& ALocalName);
  /// Whether this is a declaration whose decoded value is ANamespaceURI by ACollation.
  bool Declares(const UnicodeString& ANamespaceURI, TLxXPathCollationClass ACollation) {
    return IsNamespace() && ACollation->SameText(GetNodeValue(), ANamespaceURI);
  }
  /// The prefix this declaration declares, empty for the default one; raises EAssertionFailed on
  /// an attribute that is no declaration.
  UnicodeString NamespacePrefix() const;
  /// The neighbours among the parent element's attributes, other children skipped; nil at the
  /// ends or without element parent.
  TLxDOMAttribute* NextAttribute() const;
  TLxDOMAttribute* PreviousAttribute() const;
  /// Applies ANamespaceURI: kept while there is no element parent, else declared before this
  /// attribute when the element has no declaration of it.
  void SetNamespaceURI(const UnicodeString& Value);
  /// The value as the document holds it, references undecoded; the loader and the writer use it.
  const UnicodeString& GetStoredValue() const noexcept { return FNodeValue; }
  void SetStoredValue(UnicodeString AValue) noexcept { FNodeValue = std::move(AValue); }
  /// The declaration that gives this attribute its namespace; nil when none.
  TLxDOMAttribute* NamespaceDeclaration() const noexcept { return FNamespace; }

protected:
  /// A blank, the name and the stored value in double quotes; a double quote in the value (it
  /// can come from single quotes in the input) goes out as &quot;.
  void WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) override;
  ~TLxDOMAttribute() override = default;
  void RefreshOwnNamespaces() override;
  /// Only a link to itself stays sound outside the tree.
  void ForgetOutsideLinks() override {
    if (FNamespace != this)
      FNamespace = nullptr;
  }
  void ForgetAfterStoppedDestruction() override { ForgetOutsideLinks(); }

  UnicodeString FNodeValue;
  TLxDOMAttribute* FNamespace = nullptr;

private:
  /// The declaration in scope at the parent element for this attribute's prefix.
  TLxDOMAttribute* DeclarationInScope() const;
  /// The element whose scope a rename changes (nil when none does, or while loading), checked
  /// beforehand so that its refresh can't fail halfway.
  TLxDOMElement* ScopeToRefresh(bool ADeclarationBefore, bool ADeclarationAfter);
  friend class TLxDOMElement;
};

class TLxDOMAttributeImpl : public TLxDOMNodeImpl, public virtual ILxDOMAttribute {
  LX_CLASS(TLxDOMAttributeImpl, TLxDOMNodeImpl)
  explicit TLxDOMAttributeImpl(TLxDOMAttribute* ADOMObject) : TLxDOMNodeImpl(ADOMObject) {}
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  TLxDOMAttribute* DOMAttribute() const noexcept {
    return static_cast<TLxDOMAttribute*>(FDOMObject);
  }
  bool IsNamespace() override;
  UnicodeString NamespacePrefix() override;
  IPtr<ILxDOMAttribute> NextAttribute() override;
  IPtr<ILxDOMAttribute> PreviousAttribute() override;

protected:
  ~TLxDOMAttributeImpl() override = default;
};

} // namespace lorvane
