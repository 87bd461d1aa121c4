// Namespaces in the tree: declarations in scope per element, the links of elements to their
// declaration, and what a node keeps of its namespace when it moves.
#include "lorvane/dom/LxDOMElement.h"

#include <cstring>
#include <vector>

namespace lorvane {

namespace {
UnicodeString DeclarationName(const UnicodeString& APrefix) {
  return APrefix.empty() ? UnicodeString(u"xmlns") : u"xmlns:" + APrefix;
}
} // namespace

TLxDOMAttribute* TLxDOMElement::DeclarationInScope(const UnicodeString& APrefix) {
  TLxDOMAttrList* Scope = ScopeList();
  if (!Scope || Scope->Count() == 0)
    return nullptr;
  return static_cast<TLxDOMAttribute*>(Scope->FindDeclaration(APrefix));
}

UnicodeString TLxDOMElement::GetNamespaceURI() {
  if (FNamespace)
    return FNamespace->GetNodeValue();
  return FParent ? UnicodeString() : FNamespaceURI;
}

void TLxDOMElement::SetPrefix(const UnicodeString& Value) {
  inherited::SetPrefix(Value);
  FNamespace = DeclarationInScope(GetPrefix());
}

TLxDOMAttribute* TLxDOMElement::FindNamespace(const UnicodeString& ANamespaceURI) {
  for (TLxDOMElement* Element = this; Element; Element = Element->ParentElement()) {
    // As the attribute list's FindNamespace: the first declaration of the URI, front to back.
    const TLxXPathCollationClass Collation = Element->GetCollation();
    TLxDOMAttribute* Found = nullptr;
    Element->AnyOf(TChildKind::Attribute, [&](TLxDOMNode* ANode) {
      auto* Attribute = static_cast<TLxDOMAttribute*>(ANode);
      if (Attribute->Declares(ANamespaceURI, Collation))
        Found = Attribute;
      return Found != nullptr;
    });
    if (Found)
      return Found;
  }
  return nullptr;
}

void TLxDOMElement::RefreshOwnNamespaces() {
  if (FNamespaces)
    FNamespaces->Clear();
  FScopeOwner = nullptr;
  if (!FParent) {
    // Without parent only a declaration of its own can stay linked.
    if (FNamespace && (FNamespace->ParentObject() != this || !FNamespace->IsNamespace()))
      FNamespace = nullptr;
    return;
  }
  bool Resolve = true;
  TLxDOMAttribute* Old = FNamespace;
  FNamespace = nullptr;
  if (TLxDOMElement* Parent = ParentElement()) {
    // Shared until this element adds a declaration of its own (Namespaces() then copies).
    FScopeOwner = Parent->FScopeOwner;
    if (GetCollation()->SameText(GetPrefix(), Parent->GetPrefix())) {
      FNamespace = Parent->FNamespace;
      Resolve = false;
      // An unprefixed element without a URI of its own doesn't take over the parent's default
      // declaration: it has no namespace, and says so in the text when it left one.
      if (GetPrefix().empty() && FNamespaceURI.empty() && FNamespace) {
        FNamespace = nullptr;
        SetNamespaceURI(UnicodeString());
      }
    }
  }
  // The attributes in the order of their list, or of the children while it isn't made.
  TLxDOMNodeListBase* Source =
      FAttributes ? static_cast<TLxDOMNodeListBase*>(FAttributes) : ChildList();
  for (Integer I = 0; Source && I < Source->Count(); ++I) {
    TLxDOMNode* Node = Source->GetItem(I);
    if (Node->GetNodeType() != ntAttribute)
      continue;
    auto* Attribute = static_cast<TLxDOMAttribute*>(Node);
    if (!Attribute->IsNamespace())
      continue;
    if (Attribute == Old) {
      FNamespace = Attribute;
      FNamespaceSet = true;
      FNamespaceURI = Attribute->GetNodeValue();
    }
    TLxDOMAttrList* Scope = Namespaces();
    if (TLxDOMNode* Entry = Scope->Find(Attribute->GetQualifiedName(), {soQualifiedName})) {
      Scope->Delete(Entry);
      if (Entry == FNamespace) {
        FNamespace = nullptr;
        Resolve = true;
      }
    }
    Scope->Add(Attribute, ldpLast);
  }
  if (Resolve)
    SetPrefix(UnicodeString(GetPrefix()));
}

void TLxDOMElement::LinkLoadedNamespaces(TLxDOMElement* AChild, TLoadScopes& AScopes) {
  // RefreshOwnNamespaces for an element that has no declaration, no list of them and no link
  // yet: the attribute walk adds nothing to the scope, and the prefix is resolved through the
  // load's look-ups.
  AChild->FScopeOwner = FScopeOwner;
  AChild->FNamespace = nullptr;
  const UnicodeString& Prefix = AChild->GetPrefix();
  if (Prefix == GetPrefix() || AChild->GetCollation()->SameText(Prefix, GetPrefix())) {
    AChild->FNamespace = FNamespace;
    if (Prefix.empty() && AChild->FNamespaceURI.empty() && AChild->FNamespace) {
      AChild->FNamespace = nullptr;
      AScopes.Clear();
      AChild->SetNamespaceURI(UnicodeString());
    }
  } else {
    AChild->FNamespace = AScopes.Find(AChild, Prefix);
  }
  // Each attribute's own refresh, prefixed or not: the declaration in scope for its prefix.
  if (TLxDOMNodeList* Own = AChild->FChildNodes)
    for (TLxDOMNode* Node : *Own)
      static_cast<TLxDOMAttribute*>(Node)->FNamespace = AScopes.Find(AChild, Node->GetPrefix());
}

void TLxDOMElement::LinkLoadedDeclarations(TLxDOMElement* AChild, TLoadScopes& AScopes) {
  // The namespace refresh of a fresh element that declares something, and of its attributes,
  // without the general steps: its scope is this element's plus its own declarations in the
  // order of its attributes, each in place of one of the same name; once the scope stands, the
  // look-ups go through the load's table, which the element's children then find filled.
  AScopes.Clear();
  const UnicodeString& Prefix = AChild->GetPrefix();
  const bool SamePrefix =
      Prefix == GetPrefix() || AChild->GetCollation()->SameText(Prefix, GetPrefix());
  if (SamePrefix && Prefix.empty() && AChild->FNamespaceURI.empty() && FNamespace) {
    // It leaves the default declaration in scope, which may write one of its own.
    AChild->RefreshOwnNamespaces();
  } else {
    // Its own declaration of its URI, linked while its attributes were added, or nil.
    TLxDOMAttribute* Old = AChild->FNamespace;
    AChild->FNamespace = SamePrefix ? FNamespace : nullptr;
    AChild->FScopeOwner = FScopeOwner;
    bool Resolve = !SamePrefix;
    for (TLxDOMNode* Node : *AChild->FChildNodes) {
      if (Node->GetNodeType() != ntAttribute)
        continue;
      auto* Attribute = static_cast<TLxDOMAttribute*>(Node);
      if (!Attribute->IsNamespace())
        continue;
      if (Attribute == Old) {
        AChild->FNamespace = Attribute;
        AChild->FNamespaceSet = true;
        AChild->FNamespaceURI = Attribute->GetNodeValue();
      }
      TLxDOMAttrList* Scope = AChild->Namespaces();
      if (Scope->Count() > 0)
        if (TLxDOMNode* Entry = Scope->Find(Attribute->GetQualifiedName(), {soQualifiedName})) {
          Scope->Delete(Entry);
          if (Entry == AChild->FNamespace) {
            AChild->FNamespace = nullptr;
            Resolve = true;
          }
        }
      Scope->Add(Attribute, ldpLast);
    }
    if (Resolve)
      AChild->FNamespace = AScopes.Find(AChild, Prefix);
  }
  for (TLxDOMNode* Node : *AChild->FChildNodes)
    static_cast<TLxDOMAttribute*>(Node)->FNamespace = AScopes.Find(AChild, Node->GetPrefix());
}

TLxDOMAttribute* TLxDOMElement::TLoadScopes::Find(TLxDOMElement* AElement,
                                                  const UnicodeString& APrefix) {
  const TLxDOMAttrList* Scope = AElement->ScopeList();
  if (!Scope || Scope->Count() == 0)
    return nullptr;
  // Equality alone, bytewise: the string's own comparison orders unit by unit.
  const std::size_t Size = APrefix.size();
  for (std::size_t I = 0; I < FUsed; ++I) {
    const TEntry& Entry = FEntries[I];
    if (Entry.Scope == Scope && Entry.Prefix.size() == Size &&
        (Size == 0 ||
         std::memcmp(Entry.Prefix.data(), APrefix.data(), Size * sizeof(char16_t)) == 0))
      return Entry.Declaration;
  }
  TLxDOMAttribute* Found = AElement->DeclarationInScope(APrefix);
  TEntry& Entry = FEntries[FUsed < Entries ? FUsed++ : FNext++ % Entries];
  Entry.Scope = Scope;
  Entry.Prefix = APrefix;
  Entry.Declaration = Found;
  return Found;
}

void TLxDOMElement::LinkOwnDeclaration(TLxDOMAttribute* ADeclaration,
                                       const UnicodeString& ANamespaceURI) {
  FNamespace = ADeclaration;
  FNamespaceURI = ANamespaceURI;
  FNamespaceSet = true;
  Namespaces()->Add(ADeclaration, ldpLast);
}

void TLxDOMElement::SetNamespaceURI(const UnicodeString& Value) {
  if (!FParent) {
    FNamespaceURI = Value;
    FNamespaceSet = true;
    return;
  }
  TLxDOMAttrList* Scope = ScopeList();
  TLxDOMAttribute* Declaration = Scope ? Scope->FindNamespace(Value) : nullptr;
  const bool IsDefault = Declaration && SameText(Declaration->GetLocalName(), u"xmlns");
  const bool Declare = Declaration ? IsDefault != GetPrefix().empty() : FNamespaceSet;
  if (!Declare)
    return;
  FNamespace = AttributeByName(DeclarationName(GetPrefix()), {soCreate, soQualifiedName});
  FNamespace->SetNodeValue(Value);
  FNamespaceURI.clear();
  FNamespaceSet = false;
}

void TLxDOMElement::SetParentNode(TLxDOMObject* AParent) {
  if (FDestroying) {
    inherited::SetParentNode(AParent);
    return;
  }
  const bool HadParent = FParent != nullptr;
  // The values that may fail to decode are read before anything changes.
  if (FNamespace || (HadParent && !AParent)) {
    FNamespaceURI =
        KeptOnLeaving([&] { return FNamespace ? FNamespace->GetNodeValue() : GetNamespaceURI(); },
                      UnicodeString());
    FNamespaceSet = true;
  }
  TLxDOMAttribute* Space = OwnSpaceAttribute();
  const bool Preserve =
      Space &&
      KeptOnLeaving([&] { return SameText(Space->GetNodeValue(), u"preserve"); }, FPreserveSpace);
  inherited::SetParentNode(AParent);
  if (HadParent && !AParent)
    ForgetOutsideDeclarations();

  if (Space) {
    FPreserveSpace = Preserve;
    PassPreserveSpaceDown(FPreserveSpace);
  } else {
    TLxDOMElement* Parent = ParentElement();
    const bool State = Parent ? Parent->FPreserveSpace : DefaultPreserveCase;
    if (State != FPreserveSpace) {
      FPreserveSpace = State;
      PassPreserveSpaceDown(State);
    }
  }
  if (!HadParent && AParent && !FNamespaceURI.empty())
    SetNamespaceURI(FNamespaceURI);
}

void TLxDOMNode::CheckNamespaceValues(TLxDOMNode* ASubtree) {
  // Only a reference can fail to decode: values without '&' are passed over at once.
  const auto Check = [](TLxDOMNode* ANode) {
    auto* Attribute = static_cast<TLxDOMAttribute*>(ANode);
    if (Attribute->GetStoredValue().find(u'&') != UnicodeString::npos)
      Attribute->GetNodeValue();
  };
  const auto CheckDeclaration = [&](TLxDOMNode* ANode) {
    if (ANode->FNodeType == ntAttribute && static_cast<TLxDOMAttribute*>(ANode)->IsNamespace())
      Check(ANode);
  };
  if (FNodeType == ntElement)
    if (TLxDOMAttrList* Scope = static_cast<TLxDOMElement*>(this)->ScopeList())
      for (TLxDOMNode* Declaration : *Scope)
        Check(Declaration);
  if (ASubtree->FNodeType == ntAttribute) {
    CheckDeclaration(ASubtree);
    return;
  }
  if (ASubtree->FNodeType == ntElement)
    if (TLxDOMAttribute* Space = static_cast<TLxDOMElement*>(ASubtree)->OwnSpaceAttribute())
      Check(Space);
  std::vector<TLxDOMNode*> Pending{ASubtree};
  while (!Pending.empty()) {
    TLxDOMNode* Node = Pending.back();
    Pending.pop_back();
    if (Node->FChildNodes)
      for (TLxDOMNode* Child : *Node->FChildNodes) {
        CheckDeclaration(Child);
        if (Child->FChildNodes && Child->FChildNodes->Count() > 0)
          Pending.push_back(Child);
      }
  }
}

void TLxDOMElement::ForgetAfterStoppedDestruction() {
  // Every child is gone, the parent too: any link or listed node may be freed.
  for (TLxDOMNodeListBase* List :
       {static_cast<TLxDOMNodeListBase*>(FAttributes), static_cast<TLxDOMNodeListBase*>(FElements),
        static_cast<TLxDOMNodeListBase*>(FCharNodes),
        static_cast<TLxDOMNodeListBase*>(FNamespaces)})
    if (List)
      List->Clear();
  FScopeOwner = nullptr;
  FNamespace = nullptr;
}

void TLxDOMElement::DropDeclaration(TLxDOMAttribute* ADeclaration) {
  std::vector<TLxDOMElement*> Pending{this};
  while (!Pending.empty()) {
    TLxDOMElement* Element = Pending.back();
    Pending.pop_back();
    if (Element->FNamespaces)
      while (Element->FNamespaces->Delete(ADeclaration)) {
      }
    if (Element->FNamespace == ADeclaration)
      Element->FNamespace = nullptr;
    Element->AnyOf(TChildKind::Attribute, [&](TLxDOMNode* ANode) {
      auto* Attribute = static_cast<TLxDOMAttribute*>(ANode);
      if (Attribute->FNamespace == ADeclaration)
        Attribute->FNamespace = nullptr;
      return false;
    });
    Element->VisitChildElements([&](TLxDOMElement* AChild) { Pending.push_back(AChild); });
  }
}

void TLxDOMElement::ForgetOutsideDeclarations() {
  // A subtree that leaves its tree gets no refresh; links into the tree it left must not be
  // followed once those ancestors are gone. What stays is each element's own declaration. The
  // links are compared, never followed: while a tree is torn down, the declaration a link names
  // may already be freed.
  std::vector<TLxDOMElement*> Pending{this};
  while (!Pending.empty()) {
    TLxDOMElement* Element = Pending.back();
    Pending.pop_back();
    if (Element->FNamespaces)
      Element->FNamespaces->Clear();
    Element->FScopeOwner = nullptr;
    auto IsOwn = [Element](const TLxDOMAttribute* ADeclaration) {
      return Element->AnyOf(TChildKind::Attribute,
                            [&](TLxDOMNode* ANode) { return ANode == ADeclaration; });
    };
    if (Element->FNamespace && !IsOwn(Element->FNamespace))
      Element->FNamespace = nullptr;
    Element->AnyOf(TChildKind::Attribute, [&](TLxDOMNode* ANode) {
      auto* Attribute = static_cast<TLxDOMAttribute*>(ANode);
      if (Attribute->FNamespace && !IsOwn(Attribute->FNamespace))
        Attribute->FNamespace = nullptr;
      return false;
    });
    Element->VisitChildElements([&](TLxDOMElement* AChild) { Pending.push_back(AChild); });
  }
}

} // namespace lorvane
