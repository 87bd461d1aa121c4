// Document hooks: calls through a cleared hook fail clearly; registered functions are
// called with the text, the document and the path.
#include "lorvane/classes/LxDocumentHooks.h"

#include "lorvane/core/LxObject.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace lorvane {
namespace {

using test::ExpectRaises;

/// Stands for a document: remembers its text.
class TFakeDocument : public TLxObject {
  LX_CLASS(TFakeDocument, TLxObject)
  explicit TFakeDocument(UnicodeString AText) : Text(std::move(AText)) {}
  UnicodeString Text;

protected:
  ~TFakeDocument() override = default;
};

class DocumentHooks : public test::LiveObjectsTest {
protected:
  void TearDown() override {
    SetCreateXMLDoc(nullptr);
    SetCreateJSONDoc(nullptr);
    SetGetXMLDocValue(nullptr);
    SetGetJSONDocValue(nullptr);
    test::LiveObjectsTest::TearDown();
  }
};

TEST_F(DocumentHooks, ClearedHooksRaise) {
  // The library's start-up fills the creating hooks; cleared, they fail clearly.
  SetCreateXMLDoc(nullptr);
  SetCreateJSONDoc(nullptr);
  IPtr<IInterface> Doc(static_cast<ILxObject*>(New<TFakeDocument>(u"")));
  struct Case {
    const char* What;
    std::function<void()> Action;
    std::u16string_view Message;
  };
  const Case Cases[] = {
      {"create XML", [] { CreateXMLDocument(u"<a/>"); }, SNoXMLDocumentSupport},
      {"create JSON", [] { CreateJSONDocument(u"{}"); }, SNoJSONDocumentSupport},
      {"XML value", [&] { GetXMLDocumentValue(Doc.Get(), u"a"); }, SNoXMLDocumentSupport},
      {"JSON value", [&] { GetJSONDocumentValue(Doc.Get(), u"a"); }, SNoJSONDocumentSupport},
  };
  for (const Case& C : Cases) {
    SCOPED_TRACE(C.What);
    ExpectRaises<ENotSupportedException>(C.Action, C.Message);
  }
}

TEST_F(DocumentHooks, RegisteredHooksReceiveTextDocumentAndPath) {
  auto Create = [](const UnicodeString& AText) -> IPtr<IInterface> {
    return IPtr<IInterface>(static_cast<ILxObject*>(New<TFakeDocument>(AText)));
  };
  auto ValueOf = [](const char16_t* AFormat) {
    return [AFormat](IInterface* ADocument, const UnicodeString& APath) -> Variant {
      const auto Lx = IPtr<ILxObject>::From(ADocument);
      const auto* Doc = static_cast<TFakeDocument*>(Lx->Implementor());
      return Variant(AFormat + Doc->Text + u"@" + APath);
    };
  };
  SetCreateXMLDoc(Create);
  SetCreateJSONDoc(Create);
  SetGetXMLDocValue(ValueOf(u"xml:"));
  SetGetJSONDocValue(ValueOf(u"json:"));

  const IPtr<IInterface> Xml = CreateXMLDocument(u"<a/>");
  const IPtr<IInterface> Json = CreateJSONDocument(u"{}");
  EXPECT_EQ(Alive(), 2);
  EXPECT_EQ(GetXMLDocumentValue(Xml.Get(), u"/a").AsString(), u"xml:<a/>@/a");
  EXPECT_EQ(GetJSONDocumentValue(Json.Get(), u"$.b").AsString(), u"json:{}@$.b");
  ExpectRaises<EArgumentException>([] { GetXMLDocumentValue(nullptr, u"/a"); }, SNoDocumentGiven);

  SetCreateXMLDoc(nullptr);
  ExpectRaises<ENotSupportedException>([] { CreateXMLDocument(u"<a/>"); }, SNoXMLDocumentSupport);
  EXPECT_TRUE(CreateJSONDocument(u"[]")) << "the hooks are independent";
}

} // namespace
} // namespace lorvane
