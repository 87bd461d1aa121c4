// The face of a node: ILxDOMNode forwarded to the data node.
#include "lorvane/dom/LxDOMNode.h"

#include "lorvane/dom/LxDOMDocument.h"

namespace lorvane {

namespace {
IPtr<ILxDOMNode> NodeInterface(TLxDOMNode* ANode) { return DOMInterface<ILxDOMNode>(ANode); }
TLxDOMNode* NodeOf(ILxDOMNode* ANode) { return TLxDOMObjectImpl::Node(ANode); }
} // namespace

HRESULT TLxDOMNodeImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMNode, ILxSerializable>(
      this, AIID, AObj, [&] { return inherited::QueryInterface(AIID, AObj); });
}

bool TLxDOMNodeImpl::CanSerialize(TLxDataSerializationFormatType AFormat) {
  return DOMNode()->CanSerialize(AFormat);
}
TLxSerializedData TLxDOMNodeImpl::Serialize(TLxDataSerializationFormatType AFormat,
                                            TStrings* AParams) {
  return DOMNode()->Serialize(AFormat, AParams);
}

bool TLxDOMNodeImpl::GetPreserveSpace() { return DOMNode()->GetPreserveSpace(); }
UnicodeString TLxDOMNodeImpl::GetNodeValue() { return DOMNode()->GetNodeValue(); }
UnicodeString TLxDOMNodeImpl::GetText() { return DOMNode()->GetText(); }
UnicodeString TLxDOMNodeImpl::GetNamespaceURI() { return DOMNode()->GetNamespaceURI(); }
UnicodeString TLxDOMNodeImpl::GetLocalName() { return DOMNode()->GetLocalName(); }
UnicodeString TLxDOMNodeImpl::GetPrefix() { return DOMNode()->GetPrefix(); }
UnicodeString TLxDOMNodeImpl::GetQualifiedName() { return DOMNode()->GetQualifiedName(); }
UnicodeString TLxDOMNodeImpl::GetFormattedInnerXML() { return DOMNode()->GetFormattedInnerXML(); }
UnicodeString TLxDOMNodeImpl::GetInnerXML() { return DOMNode()->GetInnerXML(); }
IPtr<ILxDOMNodeList> TLxDOMNodeImpl::GetChildNodes() {
  return DOMInterface<ILxDOMNodeList>(DOMNode()->ChildNodes());
}
TLxDOMNodeType TLxDOMNodeImpl::GetNodeType() { return DOMNode()->GetNodeType(); }
void TLxDOMNodeImpl::SetNodeValue(const UnicodeString& Value) { DOMNode()->SetNodeValue(Value); }
void TLxDOMNodeImpl::SetPrefix(const UnicodeString& Value) { DOMNode()->SetPrefix(Value); }
void TLxDOMNodeImpl::SetQualifiedName(const UnicodeString& Value) {
  DOMNode()->SetQualifiedName(Value);
}
void TLxDOMNodeImpl::SetInnerXML(const UnicodeString& Value) { DOMNode()->SetInnerXML(Value); }
void TLxDOMNodeImpl::NormalizeTextNodes() { DOMNode()->NormalizeTextNodes(); }
void TLxDOMNodeImpl::Clear() { DOMNode()->Clear(); }
IPtr<ILxDOMNode> TLxDOMNodeImpl::CloneNode(bool AIncludeChildNodes) {
  return NodeInterface(DOMNode()->CloneNode(AIncludeChildNodes));
}
Integer TLxDOMNodeImpl::NodeCount() { return DOMNode()->NodeCount(); }
IPtr<ILxDOMNode> TLxDOMNodeImpl::AddChild(ILxDOMNode* ANode, ILxDOMNode* ARefNode,
                                          TLxDOMPosition APos) {
  return NodeInterface(DOMNode()->AddChild(NodeOf(ANode), NodeOf(ARefNode), APos));
}
void TLxDOMNodeImpl::RemoveChild(ILxDOMNode* AChildNode) {
  DOMNode()->RemoveChild(NodeOf(AChildNode));
}
IPtr<ILxDOMNode> TLxDOMNodeImpl::InsertBefore(ILxDOMNode* newChild, ILxDOMNode* refChild) {
  return NodeInterface(DOMNode()->InsertBefore(NodeOf(newChild), NodeOf(refChild)));
}
IPtr<ILxDOMNode> TLxDOMNodeImpl::AppendChild(ILxDOMNode* newChild) {
  return NodeInterface(DOMNode()->AppendChild(NodeOf(newChild)));
}
IPtr<ILxDOMNode> TLxDOMNodeImpl::NextSibling() { return NodeInterface(DOMNode()->NextSibling()); }
IPtr<ILxDOMNode> TLxDOMNodeImpl::PreviousSibling() {
  return NodeInterface(DOMNode()->PreviousSibling());
}
bool TLxDOMNodeImpl::HasChilds() { return DOMNode()->HasChilds(); }
bool TLxDOMNodeImpl::HasAttributes() { return DOMNode()->HasAttributes(); }
IPtr<ILxDOMNode> TLxDOMNodeImpl::ParentNode() { return NodeInterface(DOMNode()->ParentNode()); }
UnicodeString TLxDOMNodeImpl::NodePath(bool ALocalNames, const UnicodeString& AIdAttribName) {
  return DOMNode()->NodePath(ALocalNames, AIdAttribName);
}

UnicodeString TLxDOMNodeImpl::GetFormattedXML() { return DOMNode()->GetFormattedXML(); }
UnicodeString TLxDOMNodeImpl::GetXML() { return DOMNode()->GetXML(); }
void TLxDOMNodeImpl::LoadFromStream(TStream* AStream, Word AStreamCodePage) {
  DOMNode()->LoadFromStream(AStream, AStreamCodePage);
}
void TLxDOMNodeImpl::SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted) {
  DOMNode()->SaveToStream(AStream, AStreamCodePage, AFormatted);
}
IPtr<ILxDOMDocument> TLxDOMNodeImpl::Document() {
  return DOMInterface<ILxDOMDocument>(DOMNode()->GetDocument());
}

} // namespace lorvane
