// JSON loaded into the document tree: the tree it makes and the XML it saves, failures as the
// loader reports them, depth, and sources in UTF-16 big endian (loaded and saved).
#include "lorvane/core/LxStreams.h"
#include "lorvane/json/LxJSONTypes.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxXMLDOM.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

using test::LiveObjectsTest;

const std::string Declarations = " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
                                 " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"";

std::string Saved(TLxDOMDocument* ADocument, Word ACodePage = CP_UTF8) {
  TOwned<TMemoryStream> Stream(New<TMemoryStream>());
  ADocument->SaveToStream(Stream.get(), ACodePage, /*AFormatted=*/false, /*AWriteBOM=*/false);
  return std::string(reinterpret_cast<const char*>(Stream->Memory()),
                     static_cast<std::size_t>(Stream->GetSize()));
}

std::string BigEndian(std::u16string_view AText) {
  std::string Bytes;
  for (char16_t C : AText)
    Bytes += {char(C >> 8), char(C & 0xFF)};
  return Bytes;
}

std::string LittleEndian(std::u16string_view AText) {
  std::string Bytes;
  for (char16_t C : AText)
    Bytes += {char(C & 0xFF), char(C >> 8)};
  return Bytes;
}

class JSONAsXML : public LiveObjectsTest {};

TEST_F(JSONAsXML, CreateFromJSONBuildsAnXMLTreeThatSavesAsItsShape) {
  TOwned<TLxDOMDocument> Document(
      TLxDOMDocument::CreateFromJSON(u"{\"name\":\"a<b & \\\"c\\\"\",\"n\":[1,null],\"o\":{}}"));
  ASSERT_NE(Document->GetRootNode(), nullptr);
  EXPECT_EQ(StringToUTF8(Document->GetRootNode()->GetQualifiedName()), "object");
  EXPECT_TRUE(Document->GetUseSchemaInstance()) << "the root declares the instance namespace";
  // Text is stored as the reader hands it on: raw JSON, which the writer puts out unchanged.
  EXPECT_EQ(Saved(Document.get()),
            "<object" + Declarations +
                "><name xsd:type=\"string\">a<b & \\\"c\\\"</name><nArray><n xsd:type=\"decimal\">1"
                "</n><n xsi:nil=\"true\">null</n></nArray><o /></object>");
  // The declarations on the root reach the attributes below it.
  TLxDOMElement* Name = Document->GetRootNode()->Elements()->GetItem(0);
  EXPECT_EQ(StringToUTF8(Name->Attributes()->GetItem(0)->GetNamespaceURI()),
            "http://www.w3.org/2001/XMLSchema");
}

TEST_F(JSONAsXML, LoadingDetectsJSONBehindAnyByteOrderMark) {
  const std::string Expected = "<array" + Declarations +
                               "><array xsd:type=\"boolean\">true</array>"
                               "</array>";
  const std::string Marked[] = {"\xEF\xBB\xBF [true]", "\xFF\xFE" + LittleEndian(u" [true]"),
                                "\xFE\xFF" + BigEndian(u" [true]")};
  for (const std::string& Bytes : Marked) {
    SCOPED_TRACE(Bytes.substr(0, 2));
    TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
    TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Bytes.data(), Int64(Bytes.size())));
    Document->LoadFromStream(Stream.get());
    EXPECT_EQ(Saved(Document.get()), Expected);
  }
}

TEST_F(JSONAsXML, AFailureIsALoadFailureWithTheLocatorsPlace) {
  test::ExpectRaises<ELxDomSyntax>(
      [] { TOwned<TLxDOMDocument>(TLxDOMDocument::CreateFromJSON(u"{\"a\":[1")); },
      u"Line 0, column 0: Unexpected end of the text");
  test::ExpectRaises<ELxDomSyntax>(
      [] { TOwned<TLxDOMDocument>(TLxDOMDocument::CreateFromJSON(u"[1,\n tru]")); },
      u"Line 2, column 5: The document is not wellformed!\r\n\"e\" expected, but \"]\" found!");
  // What was built stays: a handled fatal error lets the reader's own failure through.
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  Document->SetOnParseFatalError(
      [](ILxSAXLocator*, const LxXMLString&, bool& AHandled) { AHandled = true; });
  EXPECT_THROW(Document->LoadXML(u"{\"a\":1,\"b\":x}"), ELxJSONParseError);
  EXPECT_EQ(Saved(Document.get()),
            "<object" + Declarations + "><a xsd:type=\"decimal\">1</a></object>");
}

TEST_F(JSONAsXML, DeepJSONMakesADeepTreeThatSavesAndLoadsAgain) {
  constexpr std::size_t Levels = 100000;
  const UnicodeString JSON = UnicodeString(Levels, u'[') + u"\"x\"" + UnicodeString(Levels, u']');
  TOwned<TLxDOMDocument> Document(TLxDOMDocument::CreateFromJSON(JSON));
  const std::string XML = Saved(Document.get());
  std::string Expected = "<array" + Declarations + ">";
  for (std::size_t I = 1; I < Levels; ++I)
    Expected += "<arrayArray>";
  Expected += "<array xsd:type=\"string\">x</array>";
  for (std::size_t I = 1; I < Levels; ++I)
    Expected += "</arrayArray>";
  EXPECT_EQ(XML, Expected + "</array>");
  TOwned<TLxDOMDocument> Again(TLxDOMDocument::CreateFromXML(UTF8ToString(XML)));
  EXPECT_EQ(Saved(Again.get()), XML);
}

TEST_F(JSONAsXML, UTF16BigEndianLoadsAndSaves) {
  const std::u16string Text = u"<?xml version=\"1.0\"?><r a=\"\u00E9\">\u4E2D\U0001F600</r>";
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  const std::string Bytes = "\xFE\xFF" + BigEndian(Text);
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Bytes.data(), Int64(Bytes.size())));
  Document->LoadFromStream(Stream.get());
  EXPECT_EQ(Saved(Document.get()), StringToUTF8(Text));
  // Written in 1201, and read back from the bytes with the code page named.
  const std::string Written = Saved(Document.get(), CP_UTF16BE);
  EXPECT_EQ(Written, BigEndian(Text));
  TOwned<TLxMemoryStream> Back(New<TLxMemoryStream>(Written.data(), Int64(Written.size())));
  TOwned<TLxDOMDocument> Reloaded(TLxDOMDocument::CreateFromStream(Back.get(), CP_UTF16BE));
  EXPECT_EQ(Saved(Reloaded.get()), StringToUTF8(Text));
}

} // namespace
} // namespace lorvane
