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

/// The local names of AParent's children, joined by ",".
inline std::string ChildNames(TLxDOMNode* AParent) {
  std::string Result;
  for (TLxDOMNode* Child : *AParent->ChildNodes()) {
    if (!Result.empty())
      Result += ',';
    Result += StringToUTF8(Child->GetQualifiedName());
  }
  return Result;
}

} // namespace lorvane::test
