// The umbrella's start-up fills the document hooks with the XML and JSON modules' makers, so that
// foundation code makes documents of either kind, and reads their values by path, without knowing
// the modules.
#include "lorvane/uLxClasses.h"
#include "lorvane/uLxJSON.h"
#include "lorvane/uLxXMLDOM.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

class LibraryStartup : public test::LiveObjectsTest {};

TEST_F(LibraryStartup, FoundationCodeMakesXMLDocumentsThroughTheHook) {
  const auto Document = IPtr<ILxDOMDocument>::From(CreateXMLDocument(u"<a><b>x</b></a>"));
  ASSERT_TRUE(Document);
  EXPECT_EQ(Document->GetRootNode()->FindElement(u"b")->GetText(), u"x");
}

TEST_F(LibraryStartup, FoundationCodeMakesJSONDocumentsThroughTheHook) {
  const IPtr<IInterface> Made = CreateJSONDocument(u"{\"a\": [1, \"x\"]}");
  const auto Document = IPtr<ILxJSONDocument>::From(Made);
  ASSERT_TRUE(Document);
  EXPECT_EQ(Document->GetAsJSON(), u"{\"a\": [1, \"x\"]}");
  EXPECT_THROW(CreateJSONDocument(u"{\"a\": 1"), ELxTextParserEOF);
}

TEST_F(LibraryStartup, FoundationCodeReadsJSONValuesByPathThroughTheHook) {
  const IPtr<IInterface> Made = CreateJSONDocument(u"{\"a\": [1, \"x\"], \"e\": []}");
  EXPECT_EQ(GetJSONDocumentValue(Made.Get(), u"$.a[1]").AsString(), u"x");
  EXPECT_EQ(GetJSONDocumentValue(Made.Get(), u"$.a[*]").AsInteger(), 1) << "the first of many";
  EXPECT_TRUE(VarIsEmpty(GetJSONDocumentValue(Made.Get(), u"$.e[0]")));
  test::ExpectRaisesWithCode<ELxJSONException>([&] { GetJSONDocumentValue(Made.Get(), u"a"); },
                                               _cLxJSONInvalidPath, 13);
}

} // namespace
} // namespace lorvane
