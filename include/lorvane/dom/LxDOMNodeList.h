/// Lists of nodes: the base with its searches (TLxDOMNodeListBase), the children of a node
/// (TLxDOMNodeList), the typed lists of an element (TLxDOMElementList, TLxDOMAttrList), their
/// enumerators, and the faces that implement the list interfaces.
///
/// A list owns no node. A list that belongs to a node (its parent) lives and dies with that node,
/// whatever interfaces on it come and go, and takes its settings from the node's document; a
/// free-standing list is owned by whoever made it, or, once handed out as an interface, by its
/// last interface.
#pragma once

#include "lorvane/dom/LxDOMInterfaces.h"
#include "lorvane/dom/LxDOMObject.h"

#include <cstdint>

namespace lorvane {

class TLxDOMNodeListBase;

/// The items of a list: an array from the small-object pool, grown by doubling (the general heap
/// spent a block per parent on a load). Indices outside the list raise EListError "List index
/// out of bounds (%d)", as TList's do.
class TLxDOMNodeArray {
public:
  TLxDOMNodeArray() noexcept = default;
  TLxDOMNodeArray(const TLxDOMNodeArray&) = delete;
  TLxDOMNodeArray& operator=(const TLxDOMNodeArray&) = delete;
  ~TLxDOMNodeArray() { Release(); }

  Integer GetCount() const noexcept { return static_cast<Integer>(FCount); }
  TLxDOMNode* GetItems(Integer AIndex) const {
    if (static_cast<std::uint32_t>(AIndex) >= FCount)
      RaiseListIndexError(AIndex);
    return FItems[AIndex];
  }
  void Add(TLxDOMNode* ANode) {
    if (FCount == FCapacity)
      Grow();
    FItems[FCount++] = ANode;
  }
  /// AIndex may be Count, which appends.
  void Insert(Integer AIndex, TLxDOMNode* ANode);
  void Delete(Integer AIndex);
  Integer IndexOf(const TLxDOMNode* ANode) const noexcept;
  /// Empties the list and gives its memory back.
  void Clear() noexcept {
    Release();
    FItems = nullptr;
    FCount = FCapacity = 0;
  }

  TLxDOMNode* const* begin() const noexcept { return FItems; }
  TLxDOMNode* const* end() const noexcept { return FItems + FCount; }

private:
  void Grow();
  void Release() noexcept;

  TLxDOMNode** FItems = nullptr;
  std::uint32_t FCount = 0;
  std::uint32_t FCapacity = 0;
};

/// Walks a list by index, reading its count anew at every step, so a list that changes meanwhile
/// is walked as it stands. Holds no reference on the list.
class TLxDOMNodeListBaseEnumerator {
public:
  explicit TLxDOMNodeListBaseEnumerator(const TLxDOMNodeListBase* AList) noexcept : FList(AList) {}
  bool MoveNext();
  TLxDOMNode* GetCurrent() const;

protected:
  Integer FIndex = -1;
  const TLxDOMNodeListBase* FList;
};

class TLxDOMNodeListBase : public TLxDOMObject {
  LX_CLASS(TLxDOMNodeListBase, TLxDOMObject)
  TLxDOMNodeListBase() noexcept {}

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  /// Only a free-standing list without face may go with its last interface.
  bool CanAutoDestroy() override;
  /// The owning node's settings; a free-standing list's come from the defaults.
  TLxXPathCollationClass GetCollation() override;
  TLxDOMSelectMatchOption GetSelectMatchOption() override;

  /// Raises EListError "List index out of bounds (%d)" outside 0..Count-1.
  TLxDOMNode* GetItem(Integer idx) const { return FList.GetItems(idx); }
  Integer Count() const noexcept { return FList.GetCount(); }
  /// Empties the list; no node is unlinked or destroyed.
  void Clear() noexcept { FList.Clear(); }
  /// Inserts ANode as APos says; a reference node that is nil or not listed puts ldpBefore at
  /// the front and ldpAfter at the end. Gives ANode.
  TLxDOMNode* Add(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos);
  TLxDOMNode* Add(TLxDOMNode* ANode, TLxDOMAbsPosition APos);
  /// A nil ARefNode raises EAssertionFailed.
  TLxDOMNode* Add(TLxDOMNode* ANode, TLxDOMRelPosition APos, TLxDOMNode* ARefNode);
  /// Removes the first occurrence; nil when ANode isn't listed.
  TLxDOMNode* Delete(TLxDOMNode* ANode);
  TLxDOMNode* Delete(const UnicodeString& ANodeName, TLxDOMSelectOptions ASelectOptions = {});
  TLxDOMNode* Delete(std::u16string_view ANamespaceURI, std::u16string_view ALocalName);
  /// Raise ELxDomNotFound on an empty list.
  TLxDOMNode* First() const;
  TLxDOMNode* Last() const;
  /// Nil after the last item; an unlisted ARefNode gives the first item (nil when empty).
  TLxDOMNode* Next(const TLxDOMNode* ARefNode) const;
  /// Nil before the first item; raises EListError when ARefNode isn't listed.
  TLxDOMNode* Previous(const TLxDOMNode* ARefNode) const;
  bool ContainsNode(const TLxDOMNode* ANode) const;
  Integer IndexOf(const TLxDOMNode* ANode) const;
  /// The index of the last occurrence, searched from the end; -1 when not listed.
  Integer LastIndexOf(const TLxDOMNode* ANode) const noexcept;
  /// Raises EListError "List index out of bounds (%d)" outside 0..Count-1.
  void DeleteAt(Integer AIndex) { FList.Delete(AIndex); }
  /// The last node whose name matches: the local or qualified name as the options (or else the
  /// match option) say, compared by the collation the options (or else the list) give. Raises
  /// Exception for contradictory options or soCreate, ELxDomNotFound under soRaise when nothing
  /// matches; else nil then.
  TLxDOMNode* Find(const UnicodeString& ANodeName, TLxDOMSelectOptions ASelectOptions = {});
  /// The last node with ALocalName in ANamespaceURI (any namespace when empty); nil when none.
  TLxDOMNode* Find(std::u16string_view ANamespaceURI, std::u16string_view ALocalName);
  /// Find of "xmlns" (APrefix empty) or "xmlns:" APrefix by qualified name: the declaration of
  /// APrefix among a list of declarations, without joining the name per look-up.
  TLxDOMNode* FindDeclaration(const UnicodeString& APrefix);
  TLxDOMNodeListBaseEnumerator GetEnumerator() const noexcept {
    return TLxDOMNodeListBaseEnumerator(this);
  }

  /// Range-for over the items, with the enumerator's rules.
  class Iterator {
  public:
    Iterator(const TLxDOMNodeListBase* AList, Integer AIndex) noexcept
        : FList(AList), FIndex(AIndex) {}
    TLxDOMNode* operator*() const { return FList->GetItem(FIndex); }
    Iterator& operator++() noexcept {
      ++FIndex;
      return *this;
    }
    bool operator!=(const Iterator&) const noexcept { return FIndex < FList->Count(); }

  private:
    const TLxDOMNodeListBase* FList;
    Integer FIndex;
  };
  Iterator begin() const noexcept { return Iterator(this, 0); }
  Iterator end() const noexcept { return Iterator(this, 0); }

  /// Sets the owner once, right after construction; the owner destroys the list.
  void SetOwner(TLxDOMObject* AOwner) noexcept { FParent = AOwner; }

protected:
  ~TLxDOMNodeListBase() override = default;
  TLxDOMNodeArray FList;

private:
  /// Add at the end, inline: the road by which a load links its nodes.
  void Append(TLxDOMNode* ANode) { FList.Add(ANode); }
  friend class TLxDOMNode;
  friend class TLxDOMElement;
};

class TLxDOMNodeList : public TLxDOMNodeListBase {
  LX_CLASS(TLxDOMNodeList, TLxDOMNodeListBase)
  TLxDOMNodeList() noexcept {}

protected:
  ~TLxDOMNodeList() override = default;
};

class TLxDOMElement;
class TLxDOMAttribute;

/// Walks an element list giving elements.
class TLxDOMElementListEnumerator : public TLxDOMNodeListBaseEnumerator {
public:
  using TLxDOMNodeListBaseEnumerator::TLxDOMNodeListBaseEnumerator;
  TLxDOMElement* GetCurrent() const;
};

/// The child elements of an element, or a free-standing result of a selection.
class TLxDOMElementList : public TLxDOMNodeListBase {
  LX_CLASS(TLxDOMElementList, TLxDOMNodeListBase)
  TLxDOMElementList() noexcept {}

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  /// GetItemEx with the check option of the owner's document, or DefaultSelectCheckOption.
  TLxDOMElement* GetItem(const Variant& idx);
  /// Raises EListError "List index out of bounds (%d)" outside 0..Count-1.
  TLxDOMElement* GetItem(Integer idx) const;
  TLxDOMElement* GetItem(Integer idx) { return std::as_const(*this).GetItem(idx); }
  /// An integer index gives the item (EListError outside the list). A name is looked up with the
  /// list's case rule, by local name without ":" and by qualified name with one; "." gives the
  /// owning element. Under coRaise a missing name raises ELxDomNotFound (from the look-up), a list
  /// without owner asked for "." EListError "There is no childelement with the name %s!"; under
  /// coReturnNil it gives nil. Any other kind of index raises EListError "Invalid idx value".
  TLxDOMElement* GetItemEx(const Variant& idx, TLxDOMSelectCheckOption AOption);
  TLxDOMElementListEnumerator GetEnumerator() const noexcept {
    return TLxDOMElementListEnumerator(this);
  }

protected:
  ~TLxDOMElementList() override = default;
};

/// The attributes of an element, or the namespace declarations in scope at it.
class TLxDOMAttrList : public TLxDOMNodeListBase {
  LX_CLASS(TLxDOMAttrList, TLxDOMNodeListBase)
  TLxDOMAttrList() noexcept {}

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  TLxDOMAttribute* GetItem(Integer idx) const;
  /// The first declaration, from the front, whose decoded value equals ANamespaceURI by the
  /// list's collation; nil when none. In an element's declarations in scope that is the
  /// outermost.
  TLxDOMAttribute* FindNamespace(const UnicodeString& ANamespaceURI);

protected:
  ~TLxDOMAttrList() override = default;
};

class TLxDOMNodeListImpl : public TLxDOMObjectImpl, public virtual ILxDOMNamedNodeList {
  LX_CLASS(TLxDOMNodeListImpl, TLxDOMObjectImpl)
  explicit TLxDOMNodeListImpl(TLxDOMNodeListBase* ADOMObject) : TLxDOMObjectImpl(ADOMObject) {}

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  TLxDOMNodeListBase* DOMList() const noexcept {
    return static_cast<TLxDOMNodeListBase*>(FDOMObject);
  }

  using ILxDOMNamedNodeList::Delete;
  IPtr<ILxDOMNode> GetItem(Integer idx) override;
  void Clear() override;
  IPtr<ILxDOMNode> Add(ILxDOMNode* ANode, ILxDOMNode* ARefNode, TLxDOMPosition APos) override;
  IPtr<ILxDOMNode> Add(ILxDOMNode* ANode, TLxDOMAbsPosition APos) override;
  IPtr<ILxDOMNode> Add(ILxDOMNode* ANode, TLxDOMRelPosition APos, ILxDOMNode* ARefNode) override;
  IPtr<ILxDOMNode> Delete(ILxDOMNode* ANode) override;
  Integer Count() override;
  IPtr<ILxDOMNode> First() override;
  IPtr<ILxDOMNode> Last() override;
  IPtr<ILxDOMNode> Next(ILxDOMNode* ARefNode) override;
  IPtr<ILxDOMNode> Previous(ILxDOMNode* ARefNode) override;
  bool ContainsNode(ILxDOMNode* ANode) override;
  IPtr<ILxDOMNode> Find(const UnicodeString& ANodeName,
                        TLxDOMSelectOptions ASelectOptions = {}) override;
  IPtr<ILxDOMNode> Find(std::u16string_view ANamespaceURI, std::u16string_view ALocalName) override;
  IPtr<ILxDOMNode> Delete(const UnicodeString& ANodeName,
                          TLxDOMSelectOptions ASelectOptions = {}) override;
  IPtr<ILxDOMNode> Delete(std::u16string_view ANamespaceURI,
                          std::u16string_view ALocalName) override;

protected:
  ~TLxDOMNodeListImpl() override = default;
};

class TLxDOMElementListImpl : public TLxDOMNodeListImpl, public virtual ILxDOMElementList {
  LX_CLASS(TLxDOMElementListImpl, TLxDOMNodeListImpl)
  explicit TLxDOMElementListImpl(TLxDOMElementList* ADOMObject) : TLxDOMNodeListImpl(ADOMObject) {}
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  IPtr<ILxDOMElement> GetElement(const Variant& idx) override;

protected:
  ~TLxDOMElementListImpl() override = default;
};

class TLxDOMAttrListImpl : public TLxDOMNodeListImpl, public virtual ILxDOMAttrList {
  LX_CLASS(TLxDOMAttrListImpl, TLxDOMNodeListImpl)
  explicit TLxDOMAttrListImpl(TLxDOMAttrList* ADOMObject) : TLxDOMNodeListImpl(ADOMObject) {}
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  IPtr<ILxDOMAttribute> GetAttribute(Integer idx) override;
  IPtr<ILxDOMAttribute> FindNamespace(const UnicodeString& ANamespaceURI) override;

protected:
  ~TLxDOMAttrListImpl() override = default;
};

} // namespace lorvane
