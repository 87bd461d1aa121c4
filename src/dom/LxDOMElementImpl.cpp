// The face of an element: ILxDOMElement forwarded to the data element.
#include "lorvane/dom/LxDOMElement.h"

namespace lorvane {

namespace {
IPtr<ILxDOMElement> ElementInterface(TLxDOMElement* AElement) {
  return DOMInterface<ILxDOMElement>(AElement);
}
IPtr<ILxDOMAttribute> AttributeInterface(TLxDOMAttribute* AAttribute) {
  return DOMInterface<ILxDOMAttribute>(AAttribute);
}
TLxDOMElement* ElementOf(ILxDOMElement* AElement) {
  return static_cast<TLxDOMElement*>(TLxDOMObjectImpl::Node(AElement));
}
TLxDOMAttribute* AttributeOf(ILxDOMAttribute* AAttribute) {
  return static_cast<TLxDOMAttribute*>(TLxDOMObjectImpl::Node(AAttribute));
}
} // namespace

HRESULT TLxDOMElementImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMElement>(this, AIID, AObj,
                                         [&] { return inherited::QueryInterface(AIID, AObj); });
}

UnicodeString TLxDOMElementImpl::GetAttrib(const UnicodeString& AAttribName) {
  return DOMElement()->GetAttribute(AAttribName);
}
UnicodeString TLxDOMElementImpl::GetAttribNS(std::u16string_view ANamespaceURI,
                                             std::u16string_view ALocalName) {
  return DOMElement()->GetAttributeNS(ANamespaceURI, ALocalName);
}
void TLxDOMElementImpl::SetAttrib(const UnicodeString& AAttribName, const UnicodeString& Value) {
  DOMElement()->SetAttribute(AAttribName, Value);
}
void TLxDOMElementImpl::SetAttribNS(std::u16string_view ANamespaceURI,
                                    std::u16string_view ALocalName, const UnicodeString& Value) {
  DOMElement()->SetAttributeNS(ANamespaceURI, ALocalName, Value);
}
void TLxDOMElementImpl::SetPreseveSpace(bool Value) { DOMElement()->SetPreseveSpace(Value); }
IPtr<ILxDOMAttrList> TLxDOMElementImpl::GetAttributes() {
  return DOMInterface<ILxDOMAttrList>(DOMElement()->Attributes());
}
IPtr<ILxDOMElementList> TLxDOMElementImpl::GetElements() {
  return DOMInterface<ILxDOMElementList>(DOMElement()->Elements());
}
IPtr<ILxDOMNodeList> TLxDOMElementImpl::GetCharNodes() {
  return DOMInterface<ILxDOMNodeList>(DOMElement()->CharNodes());
}
IPtr<ILxDOMAttrList> TLxDOMElementImpl::GetNamespaces() {
  return DOMInterface<ILxDOMAttrList>(DOMElement()->Namespaces());
}
Integer TLxDOMElementImpl::ElementCount() { return DOMElement()->ElementCount(); }
Integer TLxDOMElementImpl::AttributeCount() { return DOMElement()->AttributeCount(); }
IPtr<ILxDOMCDATA> TLxDOMElementImpl::GetCDATA(Integer idx) {
  return DOMInterface<ILxDOMCDATA>(DOMElement()->GetCDATA(idx));
}
IPtr<ILxDOMComment> TLxDOMElementImpl::AddComment(const UnicodeString& AComment) {
  return DOMInterface<ILxDOMComment>(DOMElement()->AddComment(AComment));
}
IPtr<ILxDOMText> TLxDOMElementImpl::AddText(const UnicodeString& AValue) {
  return DOMInterface<ILxDOMText>(DOMElement()->AddText(AValue));
}
IPtr<ILxDOMCDATA> TLxDOMElementImpl::AddCDATA(const UnicodeString& AValue) {
  return DOMInterface<ILxDOMCDATA>(DOMElement()->AddCDATA(AValue));
}
IPtr<ILxDOMComment> TLxDOMElementImpl::InsertComment(const UnicodeString& AComment,
                                                     TLxDOMPosition APosition,
                                                     ILxDOMElement* ARefChild) {
  return DOMInterface<ILxDOMComment>(
      DOMElement()->InsertComment(AComment, APosition, ElementOf(ARefChild)));
}
IPtr<ILxDOMText> TLxDOMElementImpl::InsertText(const UnicodeString& AValue,
                                               TLxDOMPosition APosition, ILxDOMElement* ARefChild) {
  return DOMInterface<ILxDOMText>(
      DOMElement()->InsertText(AValue, APosition, ElementOf(ARefChild)));
}
IPtr<ILxDOMCDATA> TLxDOMElementImpl::InsertCDATA(const UnicodeString& AValue,
                                                 TLxDOMPosition APosition,
                                                 ILxDOMElement* ARefChild) {
  return DOMInterface<ILxDOMCDATA>(
      DOMElement()->InsertCDATA(AValue, APosition, ElementOf(ARefChild)));
}
IPtr<ILxDOMElement> TLxDOMElementImpl::AddElement(const UnicodeString& ATagName) {
  return ElementInterface(DOMElement()->AddElement(ATagName));
}
IPtr<ILxDOMElement> TLxDOMElementImpl::AddElement(std::u16string_view ANamespaceURI,
                                                  std::u16string_view AQualifiedName) {
  return ElementInterface(DOMElement()->AddElement(ANamespaceURI, AQualifiedName));
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::AddAttribute(const UnicodeString& AAttibuteName) {
  return AttributeInterface(DOMElement()->AddAttribute(AAttibuteName));
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::AddAttribute(std::u16string_view ANamespaceURI,
                                                      std::u16string_view AQualifiedName) {
  return AttributeInterface(DOMElement()->AddAttribute(ANamespaceURI, AQualifiedName));
}
IPtr<ILxDOMElement> TLxDOMElementImpl::InsertElement(const UnicodeString& ATagName,
                                                     TLxDOMPosition APosition,
                                                     ILxDOMElement* ARefChild) {
  return ElementInterface(DOMElement()->InsertElement(ATagName, APosition, ElementOf(ARefChild)));
}
IPtr<ILxDOMElement> TLxDOMElementImpl::InsertElement(std::u16string_view ANamespaceURI,
                                                     std::u16string_view AQualifiedName,
                                                     TLxDOMPosition APosition,
                                                     ILxDOMElement* ARefChild) {
  return ElementInterface(
      DOMElement()->InsertElement(ANamespaceURI, AQualifiedName, APosition, ElementOf(ARefChild)));
}
void TLxDOMElementImpl::RemoveElement(ILxDOMElement* AElement) {
  DOMElement()->RemoveElement(ElementOf(AElement));
}
void TLxDOMElementImpl::RemoveElement(const UnicodeString& AElementName) {
  DOMElement()->RemoveElement(AElementName);
}
void TLxDOMElementImpl::RemoveElement(std::u16string_view ANamespaceURI,
                                      std::u16string_view ALocalName) {
  DOMElement()->RemoveElement(ANamespaceURI, ALocalName);
}
void TLxDOMElementImpl::RemoveAttribute(ILxDOMAttribute* AAttribute) {
  DOMElement()->RemoveAttribute(AttributeOf(AAttribute));
}
void TLxDOMElementImpl::RemoveAttribute(const UnicodeString& AAttribName) {
  DOMElement()->RemoveAttribute(AAttribName);
}
void TLxDOMElementImpl::RemoveAttribute(std::u16string_view ANamespaceURI,
                                        std::u16string_view ALocalName) {
  DOMElement()->RemoveAttribute(ANamespaceURI, ALocalName);
}
IPtr<ILxDOMElement> TLxDOMElementImpl::FindElement(const UnicodeString& ANodeName,
                                                   TLxDOMSelectOptions ASelectOptions) {
  return ElementInterface(DOMElement()->FindElement(ANodeName, ASelectOptions));
}
IPtr<ILxDOMElement> TLxDOMElementImpl::FindElement(std::u16string_view ANamespaceURI,
                                                   std::u16string_view ALocalName) {
  return ElementInterface(DOMElement()->FindElement(ANamespaceURI, ALocalName));
}
IPtr<ILxDOMElement> TLxDOMElementImpl::ElementByName(std::u16string_view ANamespaceURI,
                                                     std::u16string_view ALocalName,
                                                     TLxDOMSelectCheckOption ACheckOption) {
  return ElementInterface(DOMElement()->ElementByName(ANamespaceURI, ALocalName, ACheckOption));
}
IPtr<ILxDOMElement> TLxDOMElementImpl::ElementByName(std::u16string_view ANamespaceURI,
                                                     std::u16string_view AQualifiedName,
                                                     bool ACreateWhenNotFound) {
  return ElementInterface(
      DOMElement()->ElementByName(ANamespaceURI, AQualifiedName, ACreateWhenNotFound));
}
IPtr<ILxDOMElement> TLxDOMElementImpl::ElementByName(const UnicodeString& ANodeName,
                                                     TLxDOMSelectOptions ASelectOptions) {
  return ElementInterface(DOMElement()->ElementByName(ANodeName, ASelectOptions));
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::FindAttribute(const UnicodeString& ANodeName,
                                                       TLxDOMSelectOptions ASelectOptions) {
  return AttributeInterface(DOMElement()->FindAttribute(ANodeName, ASelectOptions));
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::FindAttribute(std::u16string_view ANamespaceURI,
                                                       std::u16string_view ALocalName) {
  return AttributeInterface(DOMElement()->FindAttribute(ANamespaceURI, ALocalName));
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::AttributeByName(std::u16string_view ANamespaceURI,
                                                         std::u16string_view ALocalName) {
  return AttributeInterface(DOMElement()->AttributeByName(ANamespaceURI, ALocalName));
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::AttributeByName(std::u16string_view ANamespaceURI,
                                                         std::u16string_view AQualifiedName,
                                                         bool ACreateWhenNotFound) {
  return AttributeInterface(
      DOMElement()->AttributeByName(ANamespaceURI, AQualifiedName, ACreateWhenNotFound));
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::AttributeByName(const UnicodeString& ANodeName,
                                                         TLxDOMSelectOptions ASelectOptions) {
  return AttributeInterface(DOMElement()->AttributeByName(ANodeName, ASelectOptions));
}
bool TLxDOMElementImpl::HasChildElement(const UnicodeString& ANodeName,
                                        TLxDOMSelectOptions ASelectOptions) {
  return DOMElement()->HasChildElement(ANodeName, ASelectOptions);
}
bool TLxDOMElementImpl::HasChildElement(std::u16string_view ANamespaceURI,
                                        std::u16string_view AQualifiedName) {
  return DOMElement()->HasChildElement(ANamespaceURI, AQualifiedName);
}
bool TLxDOMElementImpl::HasChildElements() { return DOMElement()->HasChildElements(); }
IPtr<ILxDOMElement> TLxDOMElementImpl::FirstElement() {
  return ElementInterface(DOMElement()->FirstElement());
}
IPtr<ILxDOMElement> TLxDOMElementImpl::LastElement() {
  return ElementInterface(DOMElement()->LastElement());
}
bool TLxDOMElementImpl::HasAttribute(const UnicodeString& ANodeName,
                                     TLxDOMSelectOptions ASelectOptions) {
  return DOMElement()->HasAttribute(ANodeName, ASelectOptions);
}
bool TLxDOMElementImpl::HasAttribute(std::u16string_view ANamespaceURI,
                                     std::u16string_view AQualifiedName) {
  return DOMElement()->HasAttribute(ANamespaceURI, AQualifiedName);
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::FirstAttribute() {
  return AttributeInterface(DOMElement()->FirstAttribute());
}
IPtr<ILxDOMAttribute> TLxDOMElementImpl::LastAttribute() {
  return AttributeInterface(DOMElement()->LastAttribute());
}
IPtr<ILxDOMElement> TLxDOMElementImpl::ParentElement() {
  return ElementInterface(DOMElement()->ParentElement());
}
IPtr<ILxDOMElement> TLxDOMElementImpl::NextElement() {
  return ElementInterface(DOMElement()->NextElement());
}
IPtr<ILxDOMElement> TLxDOMElementImpl::PreviousElement() {
  return ElementInterface(DOMElement()->PreviousElement());
}
IPtr<ILxDOMElementList> TLxDOMElementImpl::CreateElementList(const UnicodeString& nodeName,
                                                             bool ARecursive) {
  return DOMInterface<ILxDOMElementList>(DOMElement()->CreateElementList(nodeName, ARecursive));
}
IPtr<ILxDOMElementList> TLxDOMElementImpl::CreateElementList(std::u16string_view namespaceURI,
                                                             std::u16string_view localName,
                                                             bool ARecursive) {
  return DOMInterface<ILxDOMElementList>(
      DOMElement()->CreateElementList(namespaceURI, localName, ARecursive));
}

} // namespace lorvane
