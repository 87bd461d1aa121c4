// Small trees for the document tree tests, built through object references.
#pragma once

#include "lorvane/uLxXMLDOM.h"

#include "support/TestHelpers.h"

namespace lorvane::test {

/// A free-standing node named AName; the caller owns it.
inline TLxDOMNode* MakeNode(const UnicodeString& AName) {
  TLxDOMNode* Node = New<TLxDOMNode>();
  Node->SetQualifiedName(AName);
  return Node;
}

/// Appends a new node named AName to AParent and gives it.
inline TLxDOMNode* Append(TLxDOMNode* AParent, const UnicodeString& AName) {
  return AParent->AppendChild(MakeNode(AName));
}

inline std::string Names(TLxDOMNodeListBase* AList);

/// The qualified names of AParent's children, joined by ",".
inline std::string ChildNames(TLxDOMNode* AParent) { return Names(AParent->ChildNodes()); }

} // namespace lorvane::test

namespace lorvane::test {

/// A new element named AName under AParent, with the attributes ANameValues in order.
inline TLxDOMElement* AddElementWith(
    TLxDOMNode* AParent, const UnicodeString& AName,
    std::initializer_list<std::pair<const char16_t*, const char16_t*>> ANameValues = {}) {
  auto* Element = New<TLxDOMElement>();
  Element->SetQualifiedName(AName);
  for (const auto& [Name, Value] : ANameValues)
    Element->AddAttribute(Name)->SetNodeValue(Value);
  AParent->AppendChild(Element);
  return Element;
}

/// The qualified names of AList's items, joined by ",".
inline std::string Names(TLxDOMNodeListBase* AList) {
  std::string Result;
  for (TLxDOMNode* Node : *AList) {
    if (!Result.empty())
      Result += ',';
    Result += StringToUTF8(Node->GetQualifiedName());
  }
  return Result;
}

} // namespace lorvane::test
