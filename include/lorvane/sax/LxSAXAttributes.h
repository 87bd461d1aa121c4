/// The attribute list of one element, and the prefix bindings in force while a document is read.
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/sax/LxSAXInterfaces.h"

#include <vector>

namespace lorvane {

/// A linked list of attributes behind ILxSAXAttributes. AutoDestroy is false from construction:
/// interface references don't free it, whoever makes it frees it. Every lookup walks from the
/// head, leaves FCurrent on its result, and compares names without regard to ASCII case.
class TLxSAXXMAttributes : public TLxObject, public ILxSAXAttributes {
  LX_CLASS(TLxSAXXMAttributes, TLxObject)
  TLxSAXXMAttributes();

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  Integer Count() override { return FCount; }
  PLxSAXXMAttribute FirstAttribute() override { return FFirst; }
  PLxSAXXMAttribute GetAttribute(Integer AIdx) override;
  LxXMLString GetLocalName(Integer AIdx) override;
  LxXMLString GetQName(Integer AIdx) override;
  LxXMLString GetURI(Integer AIdx) override;
  Integer GetIndex(const LxXMLString& AQName) override;
  Integer GetIndex(const LxXMLString& AURI, const LxXMLString& ALocalName) override;
  TLxSAXAttributeType GetType(Integer AIdx) override;
  TLxSAXAttributeType GetType(const LxXMLString& AQName) override;
  TLxSAXAttributeType GetType(const LxXMLString& AURI, const LxXMLString& ALocalName) override;
  LxXMLString GetValue(Integer AIdx) override;
  LxXMLString GetValue(const LxXMLString& AQName) override;
  LxXMLString GetValue(const LxXMLString& AURI, const LxXMLString& ALocalName) override;

  /// Appends a record whose Idx is the count before the call; no test for duplicates.
  void Add(LxXMLString ALocalName, LxXMLString AQName, LxXMLString AURI, LxXMLString AValue,
           TLxSAXAttributeType AAttrType);
  /// Appends a record and gives it to be filled in: its links and Idx are set, its other fields
  /// hold whatever a former use left (their capacity is what the reader reuses).
  PLxSAXXMAttribute Append();
  /// Takes all records off the list; the list keeps them for reuse until it is destroyed.
  void Clear();

protected:
  ~TLxSAXXMAttributes() override;

  PLxSAXXMAttribute FFirst = nullptr;
  PLxSAXXMAttribute FLast = nullptr;
  Integer FCount = 0;
  PLxSAXXMAttribute FCurrent = nullptr;

private:
  PLxSAXXMAttribute FSpare = nullptr; // records of former uses, linked by Next
  PLxSAXXMAttribute FindIndex(Integer AIdx);
  PLxSAXXMAttribute FindQName(const LxXMLString& AQName);
  PLxSAXXMAttribute FindName(const LxXMLString& AURI, const LxXMLString& ALocalName, bool AAnyURI);
  PLxSAXXMAttribute ExistingIndex(Integer AIdx);
  PLxSAXXMAttribute ExistingQName(const LxXMLString& AQName);
  PLxSAXXMAttribute ExistingName(const LxXMLString& AURI, const LxXMLString& ALocalName,
                                 bool AAnyURI);
};

struct TLxSAXNamespace {
  /// Depth of the element that declared the binding.
  Integer Level = 0;
  /// Empty for the default namespace.
  LxXMLString Prefix;
  /// May be empty: that undeclares the prefix.
  LxXMLString URI;
};
using PLxSAXNamespace = TLxSAXNamespace*;

class TLxSAXXMLReader;

/// The bindings in order of declaration. Lookups walk from the newest binding, so an inner
/// declaration hides an outer one; prefixes compare without regard to ASCII case; no prefix is
/// bound unless the document binds it.
class TLxSAXNamespaceList {
public:
  explicit TLxSAXNamespaceList(TLxSAXXMLReader* AOwner) : FOwner(AOwner) {}
  TLxSAXNamespaceList(const TLxSAXNamespaceList&) = delete;
  TLxSAXNamespaceList& operator=(const TLxSAXNamespaceList&) = delete;
  ~TLxSAXNamespaceList() { Clear(); }

  /// Appends a binding, then StartPrefixMapping on the owner's content handler.
  void AddURI(Integer ALevel, const LxXMLString& APrefix, const LxXMLString& AURI);
  /// The newest binding of the prefix; nil when there is none. Owned by the list, valid until
  /// the list changes.
  PLxSAXNamespace GetNamespace(const LxXMLString& APrefix);
  /// Its URI; empty when there is none.
  LxXMLString GetURI(const LxXMLString& APrefix);
  /// The same without a copy; valid until the list changes.
  const LxXMLString& URIOf(const LxXMLString& APrefix) {
    // Most documents bind nothing, or little: the empty list answers at once.
    return FList.empty() ? NoURI : BoundURIOf(APrefix);
  }
  /// Ends every binding of ALevel or deeper, newest first, each with EndPrefixMapping.
  void RemoveLevel(Integer ALevel) {
    if (!FList.empty())
      RemoveBoundLevel(ALevel);
  }
  /// Drops all bindings without events.
  void Clear();
  Integer Count() const noexcept { return static_cast<Integer>(FList.size()); }

private:
  static inline const LxXMLString NoURI{};
  const LxXMLString& BoundURIOf(const LxXMLString& APrefix);
  void RemoveBoundLevel(Integer ALevel);

  TLxSAXXMLReader* FOwner;
  std::vector<TLxSAXNamespace> FList;
};

} // namespace lorvane
