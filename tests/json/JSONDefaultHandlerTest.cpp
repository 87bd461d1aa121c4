// The do-nothing JSON handler: the interfaces it answers, its lifetime, and a descendant that
// overrides one event while the reader sends all of them.
#include "lorvane/json/LxJSONDefaultHandler.h"

#include "lorvane/json/LxJSONReader.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

using JSONDefaultHandler = test::LiveObjectsTest;

// Records the values and nothing else.
class TValues : public TLxJSONDefaultHandler {
  LX_CLASS(TValues, TLxJSONDefaultHandler)
  TValues() { SetAutoDestroy(false); }
  void Value(TLxJSONDataType, const LxJSONString& AValue) override {
    Values += StringToUTF8(AValue) + ";";
  }
  std::string Values;

protected:
  ~TValues() override = default;
};

TEST_F(JSONDefaultHandler, AnswersTheHandlerInterfacesWithOneReferenceEach) {
  TOwned<TValues> Handler(New<TValues>());
  struct Answer {
    TGUID IID;
    void* Expected;
  };
  const Answer Answers[] = {
      {ILxJSONContentHandler::IID, static_cast<ILxJSONContentHandler*>(Handler.get())},
      {ILxJSONErrorHandler::IID, static_cast<ILxJSONErrorHandler*>(Handler.get())},
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
  for (const TGUID& Refused : {ILxJSONLocator::IID, ILxJSONReader::IID}) {
    void* Obj = &Refs;
    EXPECT_EQ(Handler->QueryInterface(Refused, &Obj), E_NOINTERFACE);
    EXPECT_EQ(Obj, nullptr);
    EXPECT_EQ(Handler->RefCount(), Refs);
  }
  while (Refs-- > 0)
    Handler->_Release();
}

TEST_F(JSONDefaultHandler, LastReleaseDestroysItWhileAutoDestroyIsOn) {
  {
    IPtr<ILxJSONContentHandler> Content(New<TLxJSONDefaultHandler>());
    EXPECT_EQ(Alive(), 1);
    {
      TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
      Reader->SetContentHandler(Content.Get());
      Reader->SetErrorHandler(IPtr<ILxJSONErrorHandler>::From(Content).Get());
      Reader->Parse(LxJSONString(u"{\"a\":[1,null]}"));
    }
    EXPECT_EQ(Alive(), 1) << "the reader gave its references back; ours still holds it";
  }
  EXPECT_EQ(Alive(), 0);
}

TEST_F(JSONDefaultHandler, DescendantHearsOnlyTheEventsItOverrides) {
  TOwned<TValues> Handler(New<TValues>());
  TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
  Reader->SetContentHandler(Handler.get());
  Reader->SetErrorHandler(Handler.get());
  Reader->Parse(LxJSONString(u"{\"a\":[1,\"x\",true],\"b\":{\"c\":null}}"));
  EXPECT_EQ(Handler->Values, "1;x;true;null;");

  // The base's FatalError hears the failure and lets the reader raise it.
  Handler->Values.clear();
  test::ExpectRaises<ELxJSONParseError>(
      [&] { Reader->Parse(LxJSONString(u"[2,]]")); },
      u"The document is not wellformed!\r\n\"\", t, f, n, 0..9, ., + or -\" expected, but "
      u"\"]\" found!");
  EXPECT_EQ(Handler->Values, "2;");
  Reader.reset(); // it holds interfaces on the handler
}

} // namespace
} // namespace lorvane
