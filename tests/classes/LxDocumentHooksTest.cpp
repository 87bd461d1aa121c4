// Document hooks: calls through a cleared hook fail clearly; registered functions are
// called with the text, the document and the path; a setter gives back the hook it replaces.
#include "lorvane/classes/LxDocumentHooks.h"

#include "lorvane/core/LxObject.h"

#include "support/DocumentHooksScope.h"
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

// Every test here changes the hooks; the library's registrations come back after it.
class DocumentHooks : public test::LiveObjectsTest {
protected:
  const test::TDocumentHooksScope FHooks;
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

TEST_F(DocumentHooks, SettersGiveTheHookTheyReplace) {
  auto Maker = [](const char16_t* AKind) {
    return [AKind](const UnicodeString& AText) -> IPtr<IInterface> {
      return IPtr<IInterface>(static_cast<ILxObject*>(New<TFakeDocument>(AKind + AText)));
    };
  };
  auto TextOf = [](const IPtr<IInterface>& ADocument) {
    return static_cast<TFakeDocument*>(IPtr<ILxObject>::From(ADocument)->Implementor())->Text;
  };
  SetCreateXMLDoc(Maker(u"first:"));
  const TCreateDocumentFunc FirstXML = SetCreateXMLDoc(Maker(u"second:"));
  ASSERT_TRUE(FirstXML);
  EXPECT_EQ(TextOf(FirstXML(u"a")), u"first:a");
  EXPECT_EQ(TextOf(SetCreateXMLDoc(nullptr)(u"b")), u"second:b");
  EXPECT_FALSE(SetCreateXMLDoc(nullptr));

  SetCreateJSONDoc(Maker(u"json:"));
  EXPECT_EQ(TextOf(SetCreateJSONDoc(nullptr)(u"c")), u"json:c");

  auto Valuer = [](const char16_t* AKind) {
    return [AKind](IInterface*, const UnicodeString& APath) { return Variant(AKind + APath); };
  };
  SetGetXMLDocValue(Valuer(u"xml:"));
  EXPECT_EQ(SetGetXMLDocValue(nullptr)(nullptr, u"/p").AsString(), u"xml:/p");
  SetGetJSONDocValue(Valuer(u"json:"));
  EXPECT_EQ(SetGetJSONDocValue(nullptr)(nullptr, u"$.p").AsString(), u"json:$.p");
}

TEST_F(DocumentHooks, ScopeGuardGivesTheHooksBack) {
  auto Create = [](const UnicodeString& AText) -> IPtr<IInterface> {
    return IPtr<IInterface>(static_cast<ILxObject*>(New<TFakeDocument>(AText)));
  };
  SetCreateXMLDoc(Create);
  SetCreateJSONDoc(Create);
  {
    const test::TDocumentHooksScope Inner;
    EXPECT_TRUE(CreateXMLDocument(u"<a/>")) << "the guard leaves the hooks in place";
    SetCreateXMLDoc(nullptr);
    SetCreateJSONDoc(nullptr);
  }
  EXPECT_TRUE(CreateXMLDocument(u"<a/>"));
  EXPECT_TRUE(CreateJSONDocument(u"{}"));
}

} // namespace
} // namespace lorvane
