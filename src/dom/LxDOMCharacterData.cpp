// Text, comments and CDATA sections: the stored value, edits on the decoded value, and splitting.
#include "lorvane/dom/LxDOMCharacterData.h"

#include "lorvane/xmlutils/LxXMLEscape.h"

#include <algorithm>

namespace lorvane {

namespace {

const TLxDOMName::TRef& TextName() {
  static const TLxDOMName::TRef Name = TLxDOMName::Lasting(u"#text");
  return Name;
}
const TLxDOMName::TRef& CommentName() {
  static const TLxDOMName::TRef Name = TLxDOMName::Lasting(u"#comment");
  return Name;
}
const TLxDOMName::TRef& CDATAName() {
  static const TLxDOMName::TRef Name = TLxDOMName::Lasting(u"#cdata-section");
  return Name;
}

// The index from 0 at which an offset from 1 points into a text of ASize units: below 1 is the
// start, as Copy takes it, and past the end is the end. Offsets stay out of Integer arithmetic,
// so MaxInt is as safe as any.
std::size_t StartIndex(std::size_t ASize, Integer AOffset) noexcept {
  if (AOffset < 1)
    return 0;
  return std::min(ASize, static_cast<std::size_t>(AOffset) - 1);
}

// A count below 1 takes nothing; erase and substr clamp the rest to the end.
std::size_t CountOf(Integer ACount) noexcept {
  return ACount < 1 ? 0 : static_cast<std::size_t>(ACount);
}

} // namespace

// --- TLxDOMCharacterData ------------------------------------------------------------------------

TLxDOMCharacterData::TLxDOMCharacterData() {
  AssignName(TextName());
  FNodeType = ntText;
}

TLxDOMObjectImpl* TLxDOMCharacterData::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMCharacterDataImpl>(static_cast<TLxDOMCharacterData*>(ADOMObject));
}

TLxDOMCharacterDataImpl* TLxDOMCharacterData::DOMCharacterDataImpl() const noexcept {
  return static_cast<TLxDOMCharacterDataImpl*>(FDOMImpl);
}

UnicodeString TLxDOMCharacterData::GetNodeValue() { return LxXMLToStr(FNodeValue); }

void TLxDOMCharacterData::SetNodeValue(const UnicodeString& Value) {
  FNodeValue = LxStrToXML(Value, /*AEscapeApos=*/true, /*AEscapeQuote=*/true);
}

TLxDOMNode* TLxDOMCharacterData::CreateClone() {
  auto* Clone = static_cast<TLxDOMCharacterData*>(inherited::CreateClone());
  Clone->FNodeValue = FNodeValue;
  return Clone;
}

UnicodeString TLxDOMCharacterData::Substring(Integer AOffset, Integer ACount) {
  return Copy(GetNodeValue(), AOffset, ACount);
}

void TLxDOMCharacterData::AppendStr(const UnicodeString& AData) {
  SetNodeValue(GetNodeValue() + AData);
}

void TLxDOMCharacterData::InsertStr(Integer AOffset, const UnicodeString& AData) {
  UnicodeString Value = GetNodeValue();
  Value.insert(StartIndex(Value.size(), AOffset), AData);
  SetNodeValue(Value);
}

void TLxDOMCharacterData::DeleteStr(Integer AOffset, Integer ACount) {
  UnicodeString Value = GetNodeValue();
  Value.erase(StartIndex(Value.size(), AOffset), CountOf(ACount));
  SetNodeValue(Value);
}

void TLxDOMCharacterData::ReplaceStr(Integer AOffset, Integer Count, const UnicodeString& AData) {
  UnicodeString Value = GetNodeValue();
  Value.replace(StartIndex(Value.size(), AOffset), CountOf(Count), AData);
  SetNodeValue(Value);
}

// --- TLxDOMText ---------------------------------------------------------------------------------

TLxDOMText::TLxDOMText() = default;

TLxDOMObjectImpl* TLxDOMText::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMTextImpl>(static_cast<TLxDOMText*>(ADOMObject));
}

TLxDOMTextImpl* TLxDOMText::DOMTextImpl() const noexcept {
  return static_cast<TLxDOMTextImpl*>(FDOMImpl);
}

TLxDOMText* TLxDOMText::SplitText(Integer AOffset) {
  TLxDOMNode* Parent = ParentNode();
  if (!Parent)
    throw ELxDomException(u"A text node can't be split without a parent node.");
  const UnicodeString Value = GetNodeValue();
  const std::size_t Kept = AOffset < 0 ? 0 : std::min(Value.size(), std::size_t(AOffset));
  // Through the parent's own AddChild, so that a parent that keeps further lists of its
  // children lists the new node too.
  auto* Rest =
      static_cast<TLxDOMText*>(Parent->AddChild(TLxDOMText::StaticClass(), this, ldpAfter));
  Rest->SetNodeValue(Value.substr(Kept));
  SetNodeValue(Value.substr(0, Kept));
  return Rest;
}

// --- TLxDOMComment ------------------------------------------------------------------------------

TLxDOMComment::TLxDOMComment() {
  AssignName(CommentName());
  FNodeType = ntComment;
}

TLxDOMObjectImpl* TLxDOMComment::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMCommentImpl>(static_cast<TLxDOMComment*>(ADOMObject));
}

TLxDOMCommentImpl* TLxDOMComment::DOMCommentImpl() const noexcept {
  return static_cast<TLxDOMCommentImpl*>(FDOMImpl);
}

UnicodeString TLxDOMComment::GetNodeValue() { return FNodeValue; }

void TLxDOMComment::SetNodeValue(const UnicodeString& Value) { FNodeValue = Value; }

// --- TLxDOMCDATA --------------------------------------------------------------------------------

TLxDOMCDATA::TLxDOMCDATA() {
  AssignName(CDATAName());
  FNodeType = ntCDATA;
}

TLxDOMObjectImpl* TLxDOMCDATA::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMCDATAImpl>(static_cast<TLxDOMCDATA*>(ADOMObject));
}

TLxDOMCDATAImpl* TLxDOMCDATA::DOMCDATAImpl() const noexcept {
  return static_cast<TLxDOMCDATAImpl*>(FDOMImpl);
}

UnicodeString TLxDOMCDATA::GetNodeValue() { return FNodeValue; }

void TLxDOMCDATA::SetNodeValue(const UnicodeString& Value) { FNodeValue = Value; }

// --- faces --------------------------------------------------------------------------------------

HRESULT TLxDOMCharacterDataImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMCharacterData>(
      this, AIID, AObj, [&] { return inherited::QueryInterface(AIID, AObj); });
}

UnicodeString TLxDOMCharacterDataImpl::Substring(Integer AOffset, Integer ACount) {
  return DOMCharacterData()->Substring(AOffset, ACount);
}
void TLxDOMCharacterDataImpl::AppendStr(const UnicodeString& AData) {
  DOMCharacterData()->AppendStr(AData);
}
void TLxDOMCharacterDataImpl::InsertStr(Integer AOffset, const UnicodeString& AData) {
  DOMCharacterData()->InsertStr(AOffset, AData);
}
void TLxDOMCharacterDataImpl::DeleteStr(Integer AOffset, Integer ACount) {
  DOMCharacterData()->DeleteStr(AOffset, ACount);
}
void TLxDOMCharacterDataImpl::ReplaceStr(Integer AOffset, Integer Count,
                                         const UnicodeString& AData) {
  DOMCharacterData()->ReplaceStr(AOffset, Count, AData);
}

HRESULT TLxDOMTextImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMText>(this, AIID, AObj,
                                      [&] { return inherited::QueryInterface(AIID, AObj); });
}

IPtr<ILxDOMText> TLxDOMTextImpl::SplitTxt(Integer AOffset) {
  return DOMInterface<ILxDOMText>(DOMText()->SplitText(AOffset));
}

HRESULT TLxDOMCommentImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMComment>(this, AIID, AObj,
                                         [&] { return inherited::QueryInterface(AIID, AObj); });
}

HRESULT TLxDOMCDATAImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMCDATA>(this, AIID, AObj,
                                       [&] { return inherited::QueryInterface(AIID, AObj); });
}

} // namespace lorvane
