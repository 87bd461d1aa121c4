// The do-nothing XML handler: the interfaces it answers, its lifetime, and a descendant that
// overrides one event while the reader sends all of them.
#include "lorvane/sax/LxSAXDefaultHandler.h"

#include "lorvane/uLxSAX.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

using SAXDefaultHandler = test::LiveObjectsTest;

// Records the qualified names of the elements and nothing else.
class TElementNames : public TLxSAXDefaultHandler {
  LX_CLASS(TElementNames, TLxSAXDefaultHandler)
  TElementNames() { SetAutoDestroy(false); }
  void StartElement(const LxXMLString&, const LxXMLString&, const LxXMLString& AQName,
                    ILxSAXAttributes*) override {
    Names += StringToUTF8(AQName) + ";";
  }
  std::string Names;

protected:
  ~TElementNames() override = default;
};

TEST_F(SAXDefaultHandler, AnswersTheHandlerInterfacesWithOneReferenceEach) {
  TOwned<TElementNames> Handler(New<TElementNames>());
  struct Answer {
    TGUID IID;
    void* Expected;
  };
  const Answer Answers[] = {
      {ILxSAXContentHandler::IID, static_cast<ILxSAXContentHandler*>(Handler.get())},
      {ILxSAXLexicalHandler::IID, static_cast<ILxSAXLexicalHandler*>(Handler.get())},
      {ILxSAXErrorHandler::IID, static_cast<ILxSAXErrorHandler*>(Handler.get())},
      {ILxObject::IID, static_cast<ILxObject*>(Handler.get())},
      {IInterface::IID, static_cast<IInterface*>(Handler.get())},
  };
  Integer Refs = 0;
  for (const Answer& A : Answers) {
    void* Obj = nullptr;
    ASSERT_EQ(Handler->QueryInterface(A.IID, &Obj), S_OK);
    EXPECT_EQ(Obj, A.Expected);
    EXPECT_EQ(Handler->RefCount(), ++Refs);
  }
  for (const TGUID& Refused : {ILxSAXLocator::IID, ILxSAXXMLReader::IID, ILxSAXAttributes::IID}) {
    void* Obj = &Refs;
    EXPECT_EQ(Handler->QueryInterface(Refused, &Obj), E_NOINTERFACE);
    EXPECT_EQ(Obj, nullptr);
    EXPECT_EQ(Handler->RefCount(), Refs);
  }
  while (Refs-- > 0)
    Handler->_Release();
}

TEST_F(SAXDefaultHandler, LastReleaseDestroysItWhileAutoDestroyIsOn) {
  {
    IPtr<ILxSAXContentHandler> Content(New<TLxSAXDefaultHandler>());
    EXPECT_EQ(Alive(), 1);
    {
      TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
      Reader->SetContentHandler(Content.Get());
      Reader->SetLexicalHandler(IPtr<ILxSAXLexicalHandler>::From(Content).Get());
      Reader->SetErrorHandler(IPtr<ILxSAXErrorHandler>::From(Content).Get());
      Reader->Parse(LxXMLString(u"<a><!--c--><![CDATA[x]]></a>"));
    }
    EXPECT_EQ(Alive(), 1) << "the reader gave its references back; ours still holds it";
  }
  EXPECT_EQ(Alive(), 0);
}

TEST_F(SAXDefaultHandler, DescendantHearsOnlyTheEventsItOverrides) {
  TOwned<TElementNames> Handler(New<TElementNames>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  Reader->SetContentHandler(Handler.get());
  Reader->SetLexicalHandler(Handler.get());
  Reader->SetErrorHandler(Handler.get());
  // Every kind of event the reader sends, each reaching a method the base leaves empty.
  Reader->Parse(LxXMLString(u"<?xml version='1.0'?><!DOCTYPE a><p:a xmlns:p='u'> <!--c-->"
                            u"<b x='1'>t<![CDATA[d]]></b><?pi x?><c/> </p:a>"));
  EXPECT_EQ(Handler->Names, "p:a;b;c;");

  // The base's FatalError hears the failure and lets the reader raise it.
  Handler->Names.clear();
  test::ExpectRaisesWithCode<ELxXMLParseError>(
      [&] { Reader->Parse(LxXMLString(u"")); },
      u"The document is not wellformed!\r\n\"<\" expected, but \"\" found!", 2);
  EXPECT_EQ(Handler->Names, "");
  Reader.reset(); // it holds interfaces on the handler
}

} // namespace
} // namespace lorvane
