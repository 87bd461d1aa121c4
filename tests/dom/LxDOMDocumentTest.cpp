// Documents: loading (format decision, encoding detection, white space, failures), the root
// element, the prolog and encoding, and the text written back.
#include "dom/DomFixtures.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/core/LxWellKnownNames.h"

namespace lorvane {
namespace {

class DomDocument : public test::LiveObjectsTest {
protected:
  void TearDown() override {
    FDocument.reset();
    LiveObjectsTest::TearDown();
  }
  TLxDOMDocument* Load(const UnicodeString& AXML) {
    FDocument.reset(TLxDOMDocument::CreateFromXML(AXML));
    return FDocument.get();
  }
  /// Loads ABytes through the detecting stream load.
  TLxDOMDocument* LoadBytes(std::string_view ABytes) {
    FDocument.reset(New<TLxDOMDocument>());
    TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(ABytes.data(), Int64(ABytes.size())));
    FDocument->LoadFromStream(Stream.get());
    return FDocument.get();
  }
  /// The document's text in ACodePage.
  static std::string Saved(TLxDOMDocument* ADocument, Word ACodePage, bool AFormatted,
                           bool AWriteBOM) {
    TOwned<TLxStringStream> Stream(New<TLxStringStream>(ACodePage, 0));
    ADocument->SaveToStream(Stream.get(), ACodePage, AFormatted, AWriteBOM);
    return Stream->GetAString();
  }
  TOwned<TLxDOMDocument> FDocument;
};

TEST_F(DomDocument, CompactOutputKeepsStoredFormsAndWritesEmptyElementsWithABlank) {
  const UnicodeString Text = u"<?xml version=\"1.0\"?><!--c--><a x=\"1 &amp; &#65;\" y='q\"'>"
                             u"t&lt;&#x42;<b/><![CDATA[<raw>]]><?pi data?><e></e></a>";
  EXPECT_EQ(Load(Text)->GetXML(),
            u"<?xml version=\"1.0\"?><!--c--><a x=\"1 &amp; &#65;\" "
            u"y=\"q&quot;\">t&lt;&#x42;<b /><![CDATA[<raw>]]><?pi data?><e /></a>");
}

TEST_F(DomDocument, FormattedOutputFollowsElementsCommentsAndPreserveSpace) {
  struct Case {
    const char16_t* Input;
    const char16_t* Formatted;
  } Cases[] = {
      {u"<a><b/></a>", u"<a>\r\n  <b />\r\n</a>"},
      {u"<a>x</a>", u"<a>x</a>"},
      {u"<a xml:space=\"preserve\"><b/></a>", u"<a xml:space=\"preserve\"><b /></a>"},
      {u"<a><!--c--></a>", u"<a>\r\n  <!--c--></a>"},
      {u"<a><?p?></a>", u"<a />"},
      {u"<!--c--><a/>", u"\r\n<!--c-->\r\n<a />"},
      {u"<a>x<b>y</b>z</a>", u"<a>x\r\n  <b>y</b>z\r\n</a>"},
  };
  for (const Case& C : Cases)
    EXPECT_EQ(Load(C.Input)->GetFormattedXML(), C.Formatted) << StringToUTF8(C.Input);
}

TEST_F(DomDocument, AnElementWithAnEmptyTextChildIsNotWrittenEmpty) {
  Load(u"<a/>")->GetRootNode()->AddText(u"");
  EXPECT_EQ(FDocument->GetXML(), u"<a></a>");
}

TEST_F(DomDocument, ByteOrderMarksAndLineEndsInSavedBytes) {
  Load(u"<a><b/></a>");
  EXPECT_EQ(Saved(FDocument.get(), 65001, true, true), "\xEF\xBB\xBF\r\n<a>\r\n  <b />\r\n</a>");
  EXPECT_EQ(Saved(FDocument.get(), 1200, false, true).substr(0, 4), std::string("\xFF\xFE<\0", 4));
  EXPECT_EQ(Saved(FDocument.get(), 1200, true, true).substr(2, 2), std::string("<\0", 2));
  Load(u"<a>\u00e9\u20ac</a>");
  EXPECT_EQ(Saved(FDocument.get(), 65001, false, false), "<a>\xC3\xA9\xE2\x82\xAC</a>");
  EXPECT_EQ(Saved(FDocument.get(), 28591, false, false).substr(0, 4), "<a>\xE9");
}

TEST_F(DomDocument, TheDeclarationDecidesTheEncodingOnlyWithoutAByteOrderMark) {
  const std::string Latin1 = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>";
  EXPECT_EQ(LoadBytes(Latin1)->GetRootNode()->GetText(), u"\u00e9");
  // A mark wins over the declaration; single quotes aren't looked at.
  EXPECT_EQ(
      LoadBytes("\xEF\xBB\xBF" + Latin1.substr(0, 46) + "\xC3\xA9</a>")->GetRootNode()->GetText(),
      u"\u00e9");
  EXPECT_EQ(LoadBytes("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA9</a>")
                ->GetRootNode()
                ->GetText(),
            u"\u00e9");
}

TEST_F(DomDocument, WhiteSpaceBetweenElementsIsDroppedUnlessPreserved) {
  Load(u"<r><a xml:space=\"preserve\"> <b/> </a><c> <d/> </c><e> x </e></r>");
  TLxDOMElement* Root = FDocument->GetRootNode();
  EXPECT_EQ(Root->FindElement(u"a")->NodeCount(), 4); // the attribute, two blanks and b
  EXPECT_EQ(Root->FindElement(u"c")->NodeCount(), 1);
  EXPECT_EQ(Root->FindElement(u"e")->GetText(), u" x ");
}

TEST_F(DomDocument, AFailedLoadKeepsWhatWasBuiltAndSaysWhere) {
  FDocument.reset(New<TLxDOMDocument>());
  test::ExpectRaises<ELxDomSyntax>(
      [&] { FDocument->LoadFromXML(UnicodeString(u"<a>\n<b/>\n<c x=1/></a>")); },
      u"Line 3, column 8: The document is not wellformed!\r\nMissing attribute value.");
  EXPECT_EQ(FDocument->GetLoadState(), lsLoaded);
  ASSERT_NE(FDocument->GetRootNode(), nullptr);
  EXPECT_EQ(FDocument->GetRootNode()->ElementCount(), 1);
}

TEST_F(DomDocument, AHandledFatalErrorLetsTheReadersExceptionThrough) {
  FDocument.reset(New<TLxDOMDocument>());
  UnicodeString Seen;
  FDocument->SetOnParseFatalError([&](ILxSAXLocator*, const LxXMLString& AMessage, bool& Handled) {
    Seen = AMessage;
    Handled = true;
  });
  EXPECT_THROW(FDocument->LoadFromXML(UnicodeString(u"<a><b x=1/></a>")), ELxXMLParseError);
  EXPECT_EQ(Seen, u"The document is not wellformed!\r\nMissing attribute value.");
}

TEST_F(DomDocument, ANodesParseEventsAndItsOwnNamespaceURIShareABlockWithoutMixing) {
  // Either may come first; each reads back as set, and the events still reach a load into it.
  for (const bool EventsFirst : {true, false}) {
    SCOPED_TRACE(EventsFirst);
    TOwned<TLxDOMElement> Element(New<TLxDOMElement>());
    Element->SetQualifiedName(u"p:e");
    EXPECT_FALSE(Element->GetOnParseFatalError());
    int Calls = 0;
    const auto Handle = [&](ILxSAXLocator*, const LxXMLString&, bool& Handled) {
      ++Calls;
      Handled = true;
    };
    if (EventsFirst)
      Element->SetOnParseFatalError(Handle);
    Element->SetNamespaceURI(u"urn:a");
    if (!EventsFirst)
      Element->SetOnParseFatalError(Handle);
    EXPECT_EQ(Element->GetNamespaceURI(), u"urn:a");
    EXPECT_FALSE(Element->GetOnParseWarning());
    TOwned<TLxMemoryStream> Bad(New<TLxMemoryStream>("<b x=1/>", 8));
    EXPECT_THROW(Element->LoadFromStream(Bad.get(), 65001), ELxXMLParseError);
    EXPECT_EQ(Calls, 1);
    EXPECT_EQ(Element->GetNamespaceURI(), u"urn:a");
  }
}

TEST_F(DomDocument, TextThatIsNoMarkupGoesToTheJSONReader) {
  Load(u"  {\"a\": 1}");
  EXPECT_EQ(StringToUTF8(FDocument->GetRootNode()->GetQualifiedName()), "object");
  Load(u"[1]");
  EXPECT_EQ(StringToUTF8(FDocument->GetRootNode()->GetQualifiedName()), "array");
  // The reader starts where the look for the first character left the stream: at its end.
  test::ExpectRaises<ELxDomSyntax>(
      [&] { Load(u" \t "); },
      u"Line 1, column 1: The document is not wellformed!\r\n\"\" expected, but \"\" found!");
}

TEST_F(DomDocument, StreamLoadsAppendAndTextLoadsClear) {
  LoadBytes("<!--c--><a/>");
  TLxDOMElement* First = FDocument->GetRootNode();
  TOwned<TLxMemoryStream> Again(New<TLxMemoryStream>("<b/>", 4));
  // A second root through the non-checking code page load: it stays an ordinary child.
  FDocument->LoadFromStream(Again.get(), 65001);
  EXPECT_EQ(FDocument->GetRootNode(), First);
  EXPECT_EQ(test::ChildNames(FDocument.get()), "#comment,a,b");
  FDocument->LoadFromXML(UnicodeString(u"<c/>"));
  EXPECT_EQ(test::ChildNames(FDocument.get()), "c");
  FDocument->LoadFromXML(UnicodeString());
  EXPECT_EQ(FDocument->NodeCount(), 0);
  EXPECT_EQ(FDocument->GetRootNode(), nullptr);
}

TEST_F(DomDocument, OneRootOnlyByCreateRootNode) {
  FDocument.reset(New<TLxDOMDocument>());
  TLxDOMElement* Root = FDocument->CreateRootNode(u"urn:x", u"p:root");
  EXPECT_EQ(FDocument->GetXML(), u"<p:root xmlns:p=\"urn:x\" />");
  EXPECT_EQ(Root->GetNamespaceURI(), u"urn:x");
  test::ExpectRaises<ELxDomException>([&] { FDocument->CreateRootNode(u"again"); },
                                      u"This DOM document already contains a rootnode!");
  FDocument->RemoveChild(Root);
  EXPECT_EQ(FDocument->GetRootNode(), nullptr);
  test::ExpectRaises<ELxDomNotSupported>(
      [&] { FDocument->CloneNode(true); },
      u"It is not possible to clone a TLxDOMDocument using the CloneNode method!");
}

TEST_F(DomDocument, EncodingKeepsTheDeclarationInLine) {
  FDocument.reset(New<TLxDOMDocument>());
  EXPECT_EQ(FDocument->GetEncoding(), u"UTF-8");
  FDocument->SetEncoding(u"ISO-8859-1");
  EXPECT_EQ(FDocument->GetProcessingInstruction(u"xml"),
            u"version=\"1.0\" encoding=\"ISO-8859-1\"");
  FDocument->SetEncoding(u"windows-1252");
  EXPECT_EQ(FDocument->GetProcessingInstruction(u"XML"),
            u"version=\"1.0\" encoding=\"windows-1252\"");
  EXPECT_EQ(FDocument->GetCodePage(), 1252);
  test::ExpectRaises<ELxDomNotSupported>([&] { FDocument->SetEncoding(u"klingon"); },
                                         u"The specified encoding (klingon) is not supported!");
  FDocument->SetProcessingInstruction(u"xml", u"version=\"1.0\"");
  FDocument->SetEncoding(u"UTF-16");
  EXPECT_EQ(FDocument->GetProcessingInstruction(u"xml"), u"version=\"1.0\" encoding=\"UTF-16\"");
  FDocument->SetProcessingInstruction(u"xml", u"version=\"1.0\" encoding=\"ISO-8859-1\"");
  EXPECT_EQ(FDocument->GetEncoding(), u"iso-8859-1");
  test::ExpectRaises<ELxDomNotFound>([&] { FDocument->GetProcessingInstruction(u"none"); },
                                     u"There is no processinginstruction \"none\"!");
}

TEST_F(DomDocument, NewInstructionsGoRightBehindTheDeclaration) {
  Load(u"<?xml version=\"1.0\"?><!--c--><a/>");
  FDocument->SetProcessingInstruction(u"style", u"href=\"s.css\"");
  EXPECT_EQ(test::ChildNames(FDocument.get()), "xml,style,#comment,a");
}

TEST_F(DomDocument, SchemaInstanceDeclarationsAreAddedOnce) {
  Load(u"<a xmlns:s=\"http://www.w3.org/2001/XMLSchema\"/>");
  FDocument->SetUseSchemaInstance(true);
  FDocument->SetUseSchemaInstance(true);
  EXPECT_EQ(test::Names(FDocument->GetRootNode()->Attributes()), "xmlns:s,xmlns:xsi");
  Load(u"<a xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\"/>");
  EXPECT_TRUE(FDocument->GetUseSchemaInstance()); // a load that meets the declaration
}

TEST_F(DomDocument, NamespacesOfALoadedTreeResolveByPrefix) {
  Load(u"<p:a xmlns:p=\"u\" xmlns=\"v\"><p:b/><c x=\"1\"/><d xmlns=\"\"/></p:a>");
  TLxDOMElement* Root = FDocument->GetRootNode();
  EXPECT_EQ(Root->GetNamespaceURI(), u"u");
  EXPECT_EQ(Root->FindElement(u"p:b")->GetNamespaceURI(), u"u");
  EXPECT_EQ(Root->FindElement(u"c")->GetNamespaceURI(), u"v");
  EXPECT_EQ(Root->FindElement(u"d")->GetNamespaceURI(), u"");
  EXPECT_EQ(Root->FindElement(u"c")->FindAttribute(u"x")->GetNamespaceURI(), u"v");
  // With a document, linking refreshes by itself.
  TLxDOMElement* Added = Root->AddElement(u"p:new");
  EXPECT_EQ(Added->GetNamespaceURI(), u"u");
}

TEST_F(DomDocument, ALoadDeclaresTheDefaultURIOnAnElementThatMetItUnderAnotherPrefix) {
  // The reader gives the inner r the default URI "u", which its own xmlns:x also declares; the
  // load keeps that URI, and the outermost declaration of "u" in scope has a prefix that r lacks.
  Load(u"<r xmlns:p=\"u\" xmlns=\"u\"><q:a><r xmlns:x=\"u\"><a/></r></q:a></r>");
  EXPECT_EQ(FDocument->GetXML(), u"<r xmlns:p=\"u\" xmlns=\"u\"><q:a><r xmlns:x=\"u\" "
                                 u"xmlns=\"u\"><a /></r></q:a></r>");
  // Loaded once more, the text stays as it is.
  const UnicodeString Once = FDocument->GetXML();
  EXPECT_EQ(Load(Once)->GetXML(), Once);
}

TEST_F(DomDocument, InnerXMLIsTheChildElementsOnly) {
  Load(u"<a>text<b>1</b><!--c--><c/></a>");
  TLxDOMElement* Root = FDocument->GetRootNode();
  EXPECT_EQ(Root->GetInnerXML(), u"<b>1</b><c />");
  Root->SetInnerXML(u"<x/><y>2</y>");
  EXPECT_EQ(FDocument->GetXML(), u"<a>text<!--c--><x /><y>2</y></a>");
  EXPECT_EQ(Root->FindElement(u"b"), nullptr);
}

TEST_F(DomDocument, TheDocumentInterfaceLoadsAndSavesThroughTheExForms) {
  IPtr<ILxDOMDocument> Document = LxCreateDOM(u"<a><b>x</b></a>");
  EXPECT_EQ(Document->GetRootNode()->FindElement(u"b")->GetText(), u"x");
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(65001, 0));
  Document->SaveToStreamEx(Stream.get(), false, false);
  EXPECT_EQ(Stream->GetAString(), "<a><b>x</b></a>");
  test::ExpectRaises<ELxDomNotSupported>(
      [&] { Document->SaveToStream(Stream.get(), 65001, false); },
      u"The SaveToStream is not supported by the DOM Document. Use the SaveToStreamEx instead.");
  EXPECT_EQ(Document->GetRootNode()->Document().Get(), Document.Get());
}

} // namespace
} // namespace lorvane
