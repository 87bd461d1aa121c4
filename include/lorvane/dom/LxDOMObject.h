/// The two layers of every thing in the document tree: the data object (TLxDOMObject), which is
/// a member of the tree and used through plain object references, and its face
/// (TLxDOMObjectImpl), a small counted object that exists only while interfaces on that thing are
/// held, and whose every method forwards to the data object.
///
/// Lifetime. A parent owns its children; nothing on the object road is counted, and no face is
/// made there. The first interface request on a data object makes its face; the face pins the
/// data parent with a counted reference, so any interface held keeps the whole chain of
/// ancestors alive. When a face's count falls to 0 the face goes, and takes its data object with
/// it when that object may go (CanAutoDestroy): a free-standing node is owned by its interfaces,
/// a node in a tree by its parent. TLxDOMObjectList is a plain working list of data objects.
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/dom/LxDOMTypes.h"
#include "lorvane/platform/Generics.h"

namespace lorvane {

class TLxDOMObjectImpl;
class TLxDOMNode;
class TLxDOMDocument;

class TLxDOMObject : public TLxObject {
  LX_CLASS(TLxDOMObject, TLxObject)
  TLxDOMObject() noexcept {}

  /// Nodes and lists come from the process-wide small-object pool: a tree has many of a few
  /// sizes, made and freed together. The pool belongs to no document, so a node may outlive its
  /// document or move to another one and still give its memory back safely.
  static void* operator new(std::size_t ASize);
  static void operator delete(void* AMemory, std::size_t ASize) noexcept;

  /// Makes the face when there is none and answers from it; only the interfaces the face lacks
  /// are answered by the object itself.
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  /// Counts on the face (made when missing) and gives its count; the object's own count stays 0.
  Integer _AddRef() override;
  /// Forwards to the face; without one raises Exception: a data object hands out no interface
  /// of its own.
  Integer _Release() override;
  void BeforeDestruction() override;

  virtual TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) = 0;
  /// Whether the release of the last interface may destroy this object.
  virtual bool CanAutoDestroy();
  /// True exactly when the collation is not the case-insensitive one.
  virtual bool GetCaseSensitive();
  /// The document's, or DefaultXPathCollation without document.
  virtual TLxXPathCollationClass GetCollation();
  /// The document's, or DefaultSelectMatchOption without document.
  virtual TLxDOMSelectMatchOption GetSelectMatchOption();
  /// Nil parts the pair; one face pointer serves every level of the class tree.
  virtual void SetDOMImpl(TLxDOMObjectImpl* AImpl);
  virtual void SetDOMDocument(TLxDOMObject* ADoc);
  /// Takes over the parent's document and moves the face's pin to the new parent.
  virtual void SetParentNode(TLxDOMObject* AParent);

  /// A node's parent node, or a list's owning node; nil when free-standing.
  TLxDOMObject* ParentObject() const noexcept { return FParent; }
  TLxDOMObjectImpl* DOMImpl() const noexcept { return FDOMImpl; }
  /// Whether the object's destruction has begun.
  bool Destroying() const noexcept { return FDestroying; }

protected:
  ~TLxDOMObject() override;
  /// The face, made and installed when missing.
  TLxDOMObjectImpl* RequireDOMImpl();
  /// Look-up options: both case options raise Exception "It is not possible to specify both
  /// soCaseSensitive and soCaseInsensitive!".
  static void CheckCaseOptions(TLxDOMSelectOptions AOptions);
  /// The collation the case options ask for, else this object's.
  TLxXPathCollationClass CollationFor(TLxDOMSelectOptions AOptions);
  /// Whether names compare by local name: as the match options say, else as this object's.
  bool ByLocalName(TLxDOMSelectOptions AOptions);

  /// First, so that it takes the padding at the end of the base's fields: each node and list is
  /// then 8 bytes smaller, which puts elements, attributes and lists in a smaller size class of
  /// the pool.
  bool FDestroying = false;
  /// The owning document (a TLxDOMDocument), nil until the object is in one; a document points
  /// to itself. Held by its object base so that the layers below the document don't depend on it.
  TLxDOMObject* FDOMDocument = nullptr;
  TLxDOMObject* FParent = nullptr;
  TLxDOMObjectImpl* FDOMImpl = nullptr;

  friend class TLxDOMObjectImpl;
};

class TLxDOMObjectImpl : public TLxObject {
  LX_CLASS(TLxDOMObjectImpl, TLxObject)
  /// Made only by CreateDOMImpl. Interface releases never destroy a face by the base rule: its
  /// own _Release decides.
  explicit TLxDOMObjectImpl(TLxDOMObject* ADOMObject);

  /// The first reference pins the data parent, and through it every ancestor.
  Integer _AddRef() override;
  /// At 0 the pair is parted, the data object is destroyed when it may be (CanAutoDestroy), and
  /// the face goes, releasing its pin on the parent.
  Integer _Release() override;

  /// Nil once the pair has been parted.
  TLxDOMObject* DOMObject() const noexcept { return FDOMObject; }

  /// The data node behind an interface on a node: nil for nil; raises EInvalidCast when the
  /// interface belongs to no node of this tree.
  static TLxDOMNode* Node(IInterface* AInterface);

  /// Faces made in this process so far; tests prove with it that the object road makes none.
  static Int64 FacesMade() noexcept;

protected:
  ~TLxDOMObjectImpl() override;

  TLxDOMObject* FDOMObject;
  /// The pin: the data parent, on whose face this face holds one count; nil without.
  TLxDOMObject* FPinned = nullptr;

private:
  void PinParent(TLxDOMObject* AParent);
  void PinAncestors();
  /// Gives back the count that a pin holds on APinned (nil does nothing), and so on up the chain
  /// of faces that this ends, without recursion.
  static void ReleasePin(TLxDOMObject* APinned);
  friend class TLxDOMObject;
};

/// The interface AIntf of a data object, nil for nil: the answer lies in the object's face.
template <class I> IPtr<I> DOMInterface(TLxDOMObject* AObject) {
  return AObject ? IPtr<I>::From(static_cast<IInterface*>(AObject)) : IPtr<I>();
}

/// A plain ordered list of data objects; it owns none of them.
class TLxDOMObjectList : public TList<TLxDOMObject*> {
public:
  /// Clears this list and copies AList's items in order.
  void Assign(const TLxDOMObjectList& AList);
};

} // namespace lorvane
