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

bool TLxDOMAttribute::IsNamespace() const { return IsDeclarationName(GetPrefix(), GetLocalName()); }

UnicodeString TLxDOMAttribute::NamespacePrefix() const {
  Assert(IsNamespace(), u"The attribute is no namespace declaration");
  return SameText(GetLocalName(), u"xmlns") ? UnicodeString() : GetLocalName();
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
  if (GetPrefix() == u"xml")
    return UnicodeString(cLxNsXML);
  return FParent ? UnicodeString() : FNamespaceURI;
}

TLxDOMAttribute* TLxDOMAttribute::DeclarationInScope() const {
  TLxDOMElement* Element = ParentElement();
  return Element ? Element->DeclarationInScope(GetPrefix()) : nullptr;
}

bool TLxDOMAttribute::IsDeclarationName(const UnicodeString& APrefix,
                                        const UnicodeString& ALocalName) {
  // Asked of every attribute a load links: the length turns nearly all of them away.
  constexpr std::u16string_view Xmlns = u"xmlns";
  const UnicodeString& Name = APrefix.empty() ? ALocalName : APrefix;
  return Name.size() == Xmlns.size() && (Name == Xmlns || SameText(Name, Xmlns));
}

TLxDOMElement* TLxDOMAttribute::ScopeToRefresh(bool ADeclarationBefore, bool ADeclarationAfter) {
  if (FDestroying || (FDOMDocument && GetDocument()->GetLoadState() == lsLoading))
    return nullptr;
  TLxDOMElement* Element = ParentElement();
  if (!Element || !(ADeclarationBefore || ADeclarationAfter))
    return nullptr;
  // The refresh decodes the values in scope, this one too once it declares: one that doesn't
  // decode raises before the rename.
  Element->CheckNamespaceValues(Element);
  if (ADeclarationAfter)
    GetNodeValue();
  return Element;
}

void TLxDOMAttribute::SetPrefix(const UnicodeString& Value) {
  // A declaration that stops being one (or declares another prefix) must leave the scopes that
  // hold it, and an attribute that becomes one joins them. Within SetQualifiedName the name is
  // already set, and that caller refreshes.
  TLxDOMElement* Element = nullptr;
  if (Value != GetPrefix())
    Element = ScopeToRefresh(IsNamespace(), IsDeclarationName(Value, GetLocalName()));
  inherited::SetPrefix(Value);
  FNamespace = DeclarationInScope();
  if (Element)
    Element->RefreshNamespaces();
}

void TLxDOMAttribute::RefreshOwnNamespaces() { FNamespace = DeclarationInScope(); }

void TLxDOMAttribute::SetQualifiedName(const UnicodeString& Value) {
  const auto Colon = Value.find(u':');
  const bool Split = Colon != UnicodeString::npos && Colon != 0;
  const bool WillDeclare = IsDeclarationName(Split ? Value.substr(0, Colon) : UnicodeString(),
                                             Split ? Value.substr(Colon + 1) : Value);
  // Renaming a declaration changes the scope of its element.
  TLxDOMElement* Element = ScopeToRefresh(IsNamespace(), WillDeclare);
  inherited::SetQualifiedName(Value);
  if (Element)
    Element->RefreshNamespaces();
}

void TLxDOMAttribute::SetParentNode(TLxDOMObject* AParent) {
  const bool HadParent = FParent != nullptr;
  if (!FDestroying && HadParent && !AParent) {
    FNamespaceURI = KeptOnLeaving([&] { return GetNamespaceURI(); }, UnicodeString());
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
    TOwned<TLxDOMAttribute> Declaration(New<TLxDOMAttribute>());
    Declaration->SetQualifiedName(GetPrefix().empty() ? UnicodeString(u"xmlns")
                                                      : u"xmlns:" + GetPrefix());
    Declaration->SetNodeValue(Value);
    Element->AddChild(Declaration.get(), this, ldpBefore);
    FNamespace = Declaration.release();
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
