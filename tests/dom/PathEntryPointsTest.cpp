// The tree's path entry points without the path module: this program links the tree alone, so it
// provides the start-up routine itself, and registers no path hook.
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/dom/LxDOMPathSelection.h"
#include "lorvane/uLxXMLDOM.h"

#include <gtest/gtest.h>

#include "support/TestHelpers.h"

namespace lorvane {

void RunLibraryStartup() {}

namespace {

TEST(DOMPathEntryPoints, RaiseNotSupportedWithoutThePathHook) {
  TOwned<TLxDOMDocument> Doc(TLxDOMDocument::CreateFromXML(u"<r><a/></r>"));
  TLxDOMElement* Root = Doc->GetRootNode();
  auto ExpectUnsupported = [](auto&& ACall) {
    try {
      ACall();
      ADD_FAILURE() << "no exception";
    } catch (const ENotSupportedException& E) {
      EXPECT_EQ(E.Message(), SNoDOMPathSupport);
    }
  };
  ExpectUnsupported([&] { Doc->SelectSingleNode(u"r"); });
  ExpectUnsupported([&] { Free(Doc->CreateNodeList(u"r")); });
  ExpectUnsupported([&] { Root->SelectSingleElement(u"a"); });
  ExpectUnsupported([&] { Free(Root->CreateElementList(u"a", {soRaise})); });
  ExpectUnsupported([&] { Doc->SelectSingleElement(u"a"); });
  // Without a root the document answers before it reaches the hook.
  TOwned<TLxDOMDocument> Empty(New<TLxDOMDocument>());
  EXPECT_EQ(Empty->SelectSingleElement(u"a"), nullptr);
  TOwned<TLxDOMElementList> List(Empty->CreateElementList(u"a"));
  EXPECT_EQ(List->Count(), 0);
  // Its interface owns a free-standing document from here on.
  IPtr<ILxDOMDocument> Face = DOMInterface<ILxDOMDocument>(Doc.release());
  ExpectUnsupported([&] { Face->CreateNodeList(u"r"); });
}

} // namespace
} // namespace lorvane
