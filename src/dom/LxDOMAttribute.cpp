// Attributes: the stored value, declarations, and the link to the declaration in scope.
#include "lorvane/dom/LxDOMAttribute.h"

#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/xmlutils/LxXMLEscape.h"

namespace lorvane {

namespace {
IPtr<ILxDOMAttribute> AttributeInterface(TLxDOMAttribute* AAttribute) {
  return DOMInterface<ILxDOMAttribute>(AAttribute);
}
} // namespace

TLxDOMObjectImpl* TLxDOMAttribute::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMAttributeImpl>(static_cast<TLxDOMAttribute*>(ADOMObject));
}

UnicodeString TLxDOMAttribute::GetNodeValue() { return LxXMLToStr(FNodeValue); }

void TLxDOMAttribute::SetNodeValue(const UnicodeString& Value) {
  FNodeValue = LxStrToXML(Value, /*AEscapeApos=*/false, /*AEscapeQuote=*/true);
}

TLxDOMNode* TLxDOMAttribute::CreateClone() {
  auto* Clone = static_cast<TLxDOMAttribute*>(inherited::CreateClone());
  Clone->FNodeValue = FNodeValue;
  return Clone;
}

bool TLxDOMAttribute::IsNamespace() const {
  return (FPrefix.empty() && SameText(FLocalName, u"xmlns")) || SameText(FPrefix, u"xmlns");
}

UnicodeString TLxDOMAttribute::NamespacePrefix() const {
  Assert(IsNamespace(), u"The attribute is no namespace declaration");
  return SameText(FLocalName, u"xmlns") ? UnicodeString() : FLocalName;
}

TLxDOMAttribute* TLxDOMAttribute::NextAttribute() const {
  TLxDOMElement* Element = ParentElement();
  return Element ? static_cast<TLxDOMAttribute*>(Element->Attributes()->Next(this)) : nullptr;
}

TLxDOMAttribute* TLxDOMAttribute::PreviousAttribute() const {
  TLxDOMElement* Element = ParentElement();
  return Element ? static_cast<TLxDOMAttribute*>(Element->Attributes()->Previous(this)) : nullptr;
}

// --- namespaces ---------------------------------------------------------------------------------

UnicodeString TLxDOMAttribute::GetNamespaceURI() {
  if (FNamespace)
    return FNamespace->GetNodeValue();
  if (FPrefix == u"xml")
    return UnicodeString(cLxNsXML);
  return FParent ? UnicodeString() : FNamespaceURI;
}

TLxDOMAttribute* TLxDOMAttribute::DeclarationInScope() const {
  TLxDOMElement* Element = ParentElement();
  return Element ? Element->DeclarationInScope(FPrefix) : nullptr;
}

void TLxDOMAttribute::SetPrefix(const UnicodeString& Value) {
  inherited::SetPrefix(Value);
  FNamespace = DeclarationInScope();
}

void TLxDOMAttribute::RefreshOwnNamespaces() { FNamespace = DeclarationInScope(); }

void TLxDOMAttribute::SetQualifiedName(const UnicodeString& Value) {
  const bool WasDeclaration = IsNamespace();
  inherited::SetQualifiedName(Value);
  if (FDestroying || (FDOMDocument && GetDocument()->GetLoadState() == lsLoading))
    return;
  // Renaming a declaration changes the scope of its element.
  if (TLxDOMElement* Element = ParentElement(); Element && (WasDeclaration || IsNamespace()))
    Element->RefreshNamespaces();
}

void TLxDOMAttribute::SetParentNode(TLxDOMObject* AParent) {
  const bool HadParent = FParent != nullptr;
  if (!FDestroying && HadParent && !AParent) {
    FNamespaceURI = GetNamespaceURI();
    FNamespaceSet = true;
    // The declaration belongs to the tree being left; only a link to itself stays sound.
    if (FNamespace != this)
      FNamespace = nullptr;
  }
  inherited::SetParentNode(AParent);
  if (!FDestroying && !HadParent && ParentElement() && !FNamespaceURI.empty())
    SetNamespaceURI(FNamespaceURI);
}

void TLxDOMAttribute::SetNamespaceURI(const UnicodeString& Value) {
  TLxDOMElement* Element = ParentElement();
  if (!Element) {
    FNamespaceURI = Value;
    FNamespaceSet = true;
    return;
  }
  TLxDOMAttrList* Scope = Element->ScopeList();
  if (FNamespaceSet && (!Scope || !Scope->FindNamespace(FNamespaceURI))) {
    auto* Declaration = New<TLxDOMAttribute>();
    FNamespace = Declaration;
    Declaration->SetQualifiedName(FPrefix.empty() ? UnicodeString(u"xmlns") : u"xmlns:" + FPrefix);
    Declaration->SetNodeValue(Value);
    Element->AddChild(Declaration, this, ldpBefore);
  }
  FNamespaceURI.clear();
  FNamespaceSet = false;
}

// --- face ---------------------------------------------------------------------------------------

HRESULT TLxDOMAttributeImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMAttribute>(this, AIID, AObj,
                                           [&] { return inherited::QueryInterface(AIID, AObj); });
}

bool TLxDOMAttributeImpl::IsNamespace() { return DOMAttribute()->IsNamespace(); }
UnicodeString TLxDOMAttributeImpl::NamespacePrefix() { return DOMAttribute()->NamespacePrefix(); }
IPtr<ILxDOMAttribute> TLxDOMAttributeImpl::NextAttribute() {
  return AttributeInterface(DOMAttribute()->NextAttribute());
}
IPtr<ILxDOMAttribute> TLxDOMAttributeImpl::PreviousAttribute() {
  return AttributeInterface(DOMAttribute()->PreviousAttribute());
}

} // namespace lorvane
