// Attribute lists of one element and the prefix bindings in force while a document is read.
#include "lorvane/sax/LxSAXAttributes.h"

#include "lorvane/sax/LxSAXReader.h"

namespace lorvane {

// --- TLxSAXXMAttributes
// ---------------------------------------------------------------------------
TLxSAXXMAttributes::TLxSAXXMAttributes() { SetAutoDestroy(false); }

TLxSAXXMAttributes::~TLxSAXXMAttributes() {
  Clear();
  while (PLxSAXXMAttribute Attribute = FSpare) {
    FSpare = Attribute->Next;
    delete Attribute;
  }
}

HRESULT TLxSAXXMAttributes::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxSAXAttributes>(this, AIID, AObj,
                                            [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

PLxSAXXMAttribute TLxSAXXMAttributes::Append() {
  PLxSAXXMAttribute Attribute = FSpare;
  if (Attribute)
    FSpare = Attribute->Next;
  else
    Attribute = new TLxSAXXMAttribute;
  Attribute->Prev = FLast;
  Attribute->Next = nullptr;
  Attribute->Idx = FCount;
  if (FLast)
    FLast->Next = Attribute;
  else
    FFirst = Attribute;
  FLast = Attribute;
  ++FCount;
  return Attribute;
}

void TLxSAXXMAttributes::Add(LxXMLString ALocalName, LxXMLString AQName, LxXMLString AURI,
                             LxXMLString AValue, TLxSAXAttributeType AAttrType) {
  PLxSAXXMAttribute Attribute = Append();
  Attribute->LocalName = std::move(ALocalName);
  Attribute->QName = std::move(AQName);
  Attribute->URI = std::move(AURI);
  Attribute->AttrType = AAttrType;
  Attribute->Value = std::move(AValue);
}

void TLxSAXXMAttributes::Clear() {
  // Records go to the spare list with their strings' capacity, for the next element.
  if (FLast) {
    FLast->Next = FSpare;
    FSpare = FFirst;
  }
  FFirst = FLast = FCurrent = nullptr;
  FCount = 0;
}

PLxSAXXMAttribute TLxSAXXMAttributes::FindIndex(Integer AIdx) {
  for (FCurrent = FFirst; FCurrent && FCurrent->Idx != AIdx; FCurrent = FCurrent->Next) {
  }
  return FCurrent;
}

PLxSAXXMAttribute TLxSAXXMAttributes::FindQName(const LxXMLString& AQName) {
  for (FCurrent = FFirst; FCurrent && !SameText(FCurrent->QName, AQName);
       FCurrent = FCurrent->Next) {
  }
  return FCurrent;
}

PLxSAXXMAttribute TLxSAXXMAttributes::FindName(const LxXMLString& AURI,
                                               const LxXMLString& ALocalName, bool AAnyURI) {
  for (FCurrent = FFirst; FCurrent; FCurrent = FCurrent->Next)
    if (SameText(FCurrent->LocalName, ALocalName) && (AAnyURI || SameText(FCurrent->URI, AURI)))
      break;
  return FCurrent;
}

PLxSAXXMAttribute TLxSAXXMAttributes::ExistingIndex(Integer AIdx) {
  if (PLxSAXXMAttribute Found = FindIndex(AIdx))
    return Found;
  throw ELxXMLParseError(_cLxXMLListIndexOutOfBounds1, {AIdx}, cLxXMLErrListIndexOutOfBounds);
}

PLxSAXXMAttribute TLxSAXXMAttributes::ExistingQName(const LxXMLString& AQName) {
  if (PLxSAXXMAttribute Found = FindQName(AQName))
    return Found;
  throw ELxXMLParseError(_cLxXMLListIndexOutOfBounds2, {AQName}, cLxXMLErrListIndexOutOfBounds);
}

PLxSAXXMAttribute TLxSAXXMAttributes::ExistingName(const LxXMLString& AURI,
                                                   const LxXMLString& ALocalName, bool AAnyURI) {
  if (PLxSAXXMAttribute Found = FindName(AURI, ALocalName, AAnyURI))
    return Found;
  throw ELxXMLParseError(_cLxXMLListIndexOutOfBounds3, {AURI, ALocalName},
                         cLxXMLErrListIndexOutOfBounds);
}

PLxSAXXMAttribute TLxSAXXMAttributes::GetAttribute(Integer AIdx) { return ExistingIndex(AIdx); }
LxXMLString TLxSAXXMAttributes::GetLocalName(Integer AIdx) {
  return ExistingIndex(AIdx)->LocalName;
}
LxXMLString TLxSAXXMAttributes::GetQName(Integer AIdx) { return ExistingIndex(AIdx)->QName; }
LxXMLString TLxSAXXMAttributes::GetURI(Integer AIdx) { return ExistingIndex(AIdx)->URI; }

Integer TLxSAXXMAttributes::GetIndex(const LxXMLString& AQName) {
  PLxSAXXMAttribute Found = FindQName(AQName);
  return Found ? Found->Idx : -1;
}

Integer TLxSAXXMAttributes::GetIndex(const LxXMLString& AURI, const LxXMLString& ALocalName) {
  PLxSAXXMAttribute Found = FindName(AURI, ALocalName, /*AAnyURI=*/false);
  return Found ? Found->Idx : -1;
}

TLxSAXAttributeType TLxSAXXMAttributes::GetType(Integer AIdx) {
  return ExistingIndex(AIdx)->AttrType;
}
TLxSAXAttributeType TLxSAXXMAttributes::GetType(const LxXMLString& AQName) {
  return ExistingQName(AQName)->AttrType;
}
TLxSAXAttributeType TLxSAXXMAttributes::GetType(const LxXMLString& AURI,
                                                const LxXMLString& ALocalName) {
  return ExistingName(AURI, ALocalName, /*AAnyURI=*/false)->AttrType;
}

LxXMLString TLxSAXXMAttributes::GetValue(Integer AIdx) { return ExistingIndex(AIdx)->Value; }
LxXMLString TLxSAXXMAttributes::GetValue(const LxXMLString& AQName) {
  return ExistingQName(AQName)->Value;
}
LxXMLString TLxSAXXMAttributes::GetValue(const LxXMLString& AURI, const LxXMLString& ALocalName) {
  return ExistingName(AURI, ALocalName, /*AAnyURI=*/AURI == u"*")->Value;
}

// --- TLxSAXNamespaceList
// --------------------------------------------------------------------------
void TLxSAXNamespaceList::AddURI(Integer ALevel, const LxXMLString& APrefix,
                                 const LxXMLString& AURI) {
  FList.push_back(TLxSAXNamespace{ALevel, APrefix, AURI});
  if (auto Handler = FOwner->GetContentHandler())
    Handler->StartPrefixMapping(APrefix, AURI);
}

PLxSAXNamespace TLxSAXNamespaceList::GetNamespace(const LxXMLString& APrefix) {
  // Lengths first: most prefixes differ in length, and SameText is a call.
  for (auto It = FList.rbegin(); It != FList.rend(); ++It)
    if (It->Prefix.size() == APrefix.size() && SameText(It->Prefix, APrefix))
      return &*It;
  return nullptr;
}

const LxXMLString& TLxSAXNamespaceList::BoundURIOf(const LxXMLString& APrefix) {
  PLxSAXNamespace Found = GetNamespace(APrefix);
  return Found ? Found->URI : NoURI;
}

LxXMLString TLxSAXNamespaceList::GetURI(const LxXMLString& APrefix) { return URIOf(APrefix); }

void TLxSAXNamespaceList::RemoveBoundLevel(Integer ALevel) {
  // The whole list is walked: after a failed parse, bindings of deeper levels can stand below
  // newer ones of a lower level.
  for (std::size_t I = FList.size(); I-- > 0;) {
    if (FList[I].Level < ALevel)
      continue;
    if (auto Handler = FOwner->GetContentHandler())
      Handler->EndPrefixMapping(FList[I].Prefix);
    FList.erase(FList.begin() + static_cast<std::ptrdiff_t>(I));
  }
}

void TLxSAXNamespaceList::Clear() { FList.clear(); }

} // namespace lorvane
