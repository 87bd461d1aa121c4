// Fuzz target of the JSON event reader and the value tree: the text read in every code page
// choice from a buffer and from a stream that hands out small pieces, then loaded into a tree,
// written compact and formatted, and the written text read again. Only the library's documented
// failures are expected.
#include "lorvane/uLxJSON.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "support/DocumentedFailures.h"
#include "support/TestStreams.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lorvane {
namespace {

/// Reads every character of every argument, so that a bad string shows as a sanitizer report.
class TTouchingHandler : public TLxJSONDefaultHandler {
  LX_CLASS(TTouchingHandler, TLxJSONDefaultHandler)
  TTouchingHandler() { SetAutoDestroy(false); }

  void SetDocumentLocator(ILxJSONLocator*) override { __builtin_trap(); }
  void StartDocument() override { ++FDepth; }
  void StartObject() override { ++FDepth; }
  void StartMember(const LxJSONString& AName) override { Touch(AName); }
  void StartArray() override { ++FDepth; }
  void Value(TLxJSONDataType AType, const LxJSONString& AValue) override {
    if (AType > jdtBoolean)
      __builtin_trap();
    Touch(AValue);
  }
  void EndArray() override { --FDepth; }
  void EndObject() override { --FDepth; }
  void EndDocument() override {
    // The reader sends one end for every start it has sent when the text is read whole.
    if (--FDepth != 0)
      __builtin_trap();
  }
  void Warning(ILxJSONLocator*, const LxJSONString&) override { __builtin_trap(); }
  void Error(ILxJSONLocator*, const LxJSONString&) override { __builtin_trap(); }
  void FatalError(ILxJSONLocator* ALocator, const LxJSONString& AMessage) override {
    FSum += static_cast<unsigned>(ALocator->GetLineNr() + ALocator->GetColNr());
    Touch(ALocator->GetPublicID());
    Touch(AMessage);
  }

  void Reset() { FDepth = 0; }
  unsigned Sum() const noexcept { return FSum; }

protected:
  ~TTouchingHandler() override = default;

private:
  void Touch(const LxJSONString& AText) {
    for (char16_t C : AText)
      FSum += C;
  }
  long FDepth = 0;
  unsigned FSum = 0;
};

constexpr Word CodePages[] = {0, CP_UTF8, CP_UTF16LE, 1252, 932};

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  if (ASize == 0)
    return 0;
  const uint8_t Choice = AData[0];
  const uint8_t* Text = AData + 1;
  const size_t Size = ASize - 1;
  const Word CodePage = CodePages[Choice % std::size(CodePages)];

  TOwned<TTouchingHandler> Handler(New<TTouchingHandler>());
  TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
  Reader->SetContentHandler(Handler.get());
  Reader->SetErrorHandler(Handler.get());
  using documented::Guarded;
  using documented::TEntry;
  Guarded(TEntry::JSONReader,
          [&] { Reader->ParseBuffer(Text, static_cast<Cardinal>(Size), CodePage); });
  Handler->Reset();
  Guarded(TEntry::JSONReader, [&] {
    // At most a few bytes per read: the reader refills its window inside every kind of token.
    TOwned<test::TChunkedStream> Stream(New<test::TChunkedStream>(
        std::string(reinterpret_cast<const char*>(Text), Size), Int64(1 + (Choice >> 5))));
    Reader->ParseStream(Stream.get(), CodePage);
  });
  Reader.reset(); // it holds interfaces on the handler

  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  Guarded(TEntry::JSONDocumentLoad, [&] {
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(Text), static_cast<Int64>(Size)));
    Document->LoadFromStream(Stream.get(), CodePage, false);
  });
  Guarded(TEntry::JSONDocumentLoad, [&] {
    const LxJSONString Compact = Document->GetAsJSON();
    const LxJSONString Formatted = Document->GetFormattedJSON();
    TOwned<TLxJSONDocument> Again(New<TLxJSONDocument>());
    Again->SetAsJSON(Compact);
    Again->SetAsJSON(Formatted);
  });
  volatile unsigned Sink = Handler->Sum();
  (void)Sink;
  return 0;
}
