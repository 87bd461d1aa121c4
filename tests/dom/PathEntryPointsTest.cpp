// The tree's entry points into the modules above it (paths, the serializers) without them: this
// program links the tree alone, so it provides the start-up routine itself and registers no hook.
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/dom/LxDOMPathSelection.h"
#include "lorvane/types/LxValue.h"
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

TEST(DOMSerializable, ANodeOffersItsXMLAndHandsOtherFormatsToTheSerializers) {
  // Interfaces own the document from the start, as faces of a tree do.
  IPtr<ILxDOMDocument> Doc = DOMInterface<ILxDOMDocument>(
      TLxDOMDocument::CreateFromXML(u"<r a=\"1\"><\u00e9>x &amp; y</\u00e9></r>"));
  TLxDOMElement* Root =
      static_cast<TLxDOMDocument*>(TLxDOMObjectImpl::Node(Doc.Get()))->GetRootNode();
  IPtr<ILxSerializable> Face = IPtr<ILxSerializable>::From(DOMInterface<ILxDOMNode>(Root));
  ASSERT_TRUE(Face);
  // The tree writes XML itself; JSON it doesn't write yet.
  EXPECT_TRUE(Face->CanSerialize(ldsXML));
  EXPECT_FALSE(Face->CanSerialize(ldsJSON));
  EXPECT_TRUE(Face->CanSerialize(ldsFormat2));
  EXPECT_EQ(Face->Serialize(ldsXML, nullptr), StringToUTF8(Root->GetXML()));
  // Other formats go to the value serializer, which only the serializer module sets.
  try {
    Face->Serialize(ldsFormat3, nullptr);
    ADD_FAILURE() << "no exception";
  } catch (const ENotSupportedException& E) {
    EXPECT_EQ(E.Message(), SNoValueSerializer);
  }
  TLxSerializedData Seen;
  auto Previous =
      SetValueSerializer([&](TLxDataSerializationFormatType AFormat, const TValue& AValue) {
        Seen = std::to_string(AFormat) + ":" + StringToUTF8(AValue.AsObject()->ClassName());
        return TLxSerializedData("text");
      });
  EXPECT_EQ(Face->Serialize(ldsFormat3, nullptr), "text");
  EXPECT_EQ(Seen, "3:TLxDOMElement");
  SetValueSerializer(std::move(Previous));
}

} // namespace
} // namespace lorvane
