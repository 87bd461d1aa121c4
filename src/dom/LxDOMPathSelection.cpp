// The tree's path entry points: option outcomes and result lists here, the path language behind
// the hook that the library's start-up fills.
#include "lorvane/dom/LxDOMPathSelection.h"
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/dom/LxDOMDocument.h"

namespace lorvane {

namespace {

TLxDOMPathSelectFunc& PathSelector() {
  static TLxDOMPathSelectFunc Hook = nullptr;
  return Hook;
}

void RunSelection(TLxDOMNode* AStart, const UnicodeString& APath, TLxDOMSelectOptions AOptions,
                  bool AFirstOnly, TLxDOMNodeListBase* AResult) {
  EnsureLibraryStarted();
  const TLxDOMPathSelectFunc Hook = PathSelector();
  if (!Hook)
    throw ENotSupportedException(UnicodeString(SNoDOMPathSupport));
  Hook(AStart, APath, AOptions, AFirstOnly, AResult);
}

constexpr std::u16string_view STooComplexForCreate =
    u"The given path \"%s\" was too complex to use the soCreate option!";

/// The list of a selection, filled; on an empty outcome under soRaise or soCreate the list is
/// freed and ELxDomNotFound raised with ANoNodes or the create message.
template <class L>
L* FillList(TLxDOMNode* AStart, const UnicodeString& APath, TLxDOMSelectOptions AOptions,
            std::u16string_view ANoNodes) {
  TOwned<L> List(New<L>());
  RunSelection(AStart, APath, AOptions, false, List.get());
  if (List->Count() == 0) {
    if (AOptions.Contains(soRaise))
      throw ELxDomNotFound(ANoNodes, {APath});
    if (AOptions.Contains(soCreate))
      throw ELxDomNotFound(STooComplexForCreate, {APath});
  }
  return List.release();
}

TLxDOMElement* AsElement(TLxDOMNode* ANode) {
  if (ANode && ANode->GetNodeType() != ntElement)
    throw EInvalidCast(UnicodeString(SInvalidCast));
  return static_cast<TLxDOMElement*>(ANode);
}

} // namespace

TLxDOMPathSelectFunc SetDOMPathSelector(TLxDOMPathSelectFunc AFunc) {
  EnsureLibraryStarted();
  return std::exchange(PathSelector(), AFunc);
}

TLxDOMNode* TLxDOMNode::SelectSingleNode(const UnicodeString& nodePath,
                                         TLxDOMSelectOptions ASelectOptions) {
  TOwned<TLxDOMNodeList> List(New<TLxDOMNodeList>());
  RunSelection(this, nodePath, ASelectOptions, true, List.get());
  TLxDOMNode* Result = List->Count() > 0 ? List->GetItem(0) : nullptr;
  if (!Result) {
    if (ASelectOptions.Contains(soRaise))
      throw ELxDomNotFound(u"There is no node for the given path \"%s\"!", {nodePath});
    if (ASelectOptions.Contains(soCreate))
      throw ELxDomNotFound(STooComplexForCreate, {nodePath});
  }
  return Result;
}

TLxDOMNodeList* TLxDOMNode::CreateNodeList(const UnicodeString& nodePath,
                                           TLxDOMSelectOptions ASelectOptions) {
  // The misplaced quote is the message users have always matched on.
  return FillList<TLxDOMNodeList>(this, nodePath, ASelectOptions,
                                  u"There are no nodes for the given path \"%s!.");
}

TLxDOMElementList* TLxDOMElement::CreateElementList(const UnicodeString& nodePath,
                                                    TLxDOMSelectOptions ASelectOptions) {
  return FillList<TLxDOMElementList>(this, nodePath, ASelectOptions,
                                     u"There are no nodes for the given path \"%s\"!");
}

TLxDOMElement* TLxDOMElement::SelectSingleElement(const UnicodeString& nodePath,
                                                  TLxDOMSelectOptions ASelectOptions) {
  return AsElement(SelectSingleNode(nodePath, ASelectOptions));
}

namespace {

/// Whether the document's root may take a path: false without one and neither option; raises
/// for the options without one.
bool CheckRoot(TLxDOMDocument* ADocument, const UnicodeString& APath,
               TLxDOMSelectOptions AOptions) {
  if (ADocument->GetRootNode())
    return true;
  if (AOptions.Contains(soRaise))
    throw ELxDomNotFound(u"There is no node for the given path \"%s\".", {APath});
  if (AOptions.Contains(soCreate))
    throw ELxDomNotFound(
        u"It is not possible to use XPath statements on documents without rootnode!");
  return false;
}

} // namespace

TLxDOMElement* TLxDOMDocument::SelectSingleElement(const UnicodeString& nodePath,
                                                   TLxDOMSelectOptions ASelectOptions) {
  if (nodePath.empty())
    throw ELxDomNotFound(u"The specified nodePath is empty!");
  if (!CheckRoot(this, nodePath, ASelectOptions))
    return nullptr;
  return FRootNode->SelectSingleElement(nodePath, ASelectOptions);
}

TLxDOMElementList* TLxDOMDocument::CreateElementList(const UnicodeString& nodePath,
                                                     TLxDOMSelectOptions ASelectOptions) {
  if (!CheckRoot(this, nodePath, ASelectOptions))
    return New<TLxDOMElementList>();
  return FRootNode->CreateElementList(nodePath, ASelectOptions);
}

// --- faces: the result as an interface; a new list ends with its last reference -------------

IPtr<ILxDOMNode> TLxDOMNodeImpl::SelectSingleNode(const UnicodeString& nodePath,
                                                  TLxDOMSelectOptions ASelectOptions) {
  return DOMInterface<ILxDOMNode>(DOMNode()->SelectSingleNode(nodePath, ASelectOptions));
}

IPtr<ILxDOMNodeList> TLxDOMNodeImpl::CreateNodeList(const UnicodeString& nodePath,
                                                    TLxDOMSelectOptions ASelectOptions) {
  return DOMInterface<ILxDOMNodeList>(DOMNode()->CreateNodeList(nodePath, ASelectOptions));
}

IPtr<ILxDOMElementList> TLxDOMElementImpl::CreateElementList(const UnicodeString& nodePath,
                                                             TLxDOMSelectOptions ASelectOptions) {
  return DOMInterface<ILxDOMElementList>(DOMElement()->CreateElementList(nodePath, ASelectOptions));
}

IPtr<ILxDOMElement> TLxDOMElementImpl::SelectSingleElement(const UnicodeString& nodePath,
                                                           TLxDOMSelectOptions ASelectOptions) {
  return DOMInterface<ILxDOMElement>(DOMElement()->SelectSingleElement(nodePath, ASelectOptions));
}

IPtr<ILxDOMElementList> TLxDOMDocumentImpl::CreateElementList(const UnicodeString& nodePath,
                                                              TLxDOMSelectOptions ASelectOptions) {
  return DOMInterface<ILxDOMElementList>(
      DOMDocument()->CreateElementList(nodePath, ASelectOptions));
}

IPtr<ILxDOMElement> TLxDOMDocumentImpl::SelectSingleElement(const UnicodeString& nodePath,
                                                            TLxDOMSelectOptions ASelectOptions) {
  return DOMInterface<ILxDOMElement>(DOMDocument()->SelectSingleElement(nodePath, ASelectOptions));
}

} // namespace lorvane
