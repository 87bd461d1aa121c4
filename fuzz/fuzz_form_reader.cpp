// Fuzz target of the form post reader: the bytes read as UTF-8, as decided by the text and as
// UTF-16, with a handler that reads every argument; then the bytes into a document as a form
// post, written both ways and read again.
#include "JSONFuzzSupport.h"

namespace lorvane {
namespace {

constexpr Word CodePages[] = {0, 65001, 1200};

void ReadEvents(const uint8_t* AData, size_t ASize) {
  // Its closing calls don't pair with the opening ones: the handler doesn't check nesting.
  TOwned<fuzz::TCheckingJSONHandler> Handler(New<fuzz::TCheckingJSONHandler>(false));
  TOwned<TLxFormURLEncodedJSONReader> Reader(New<TLxFormURLEncodedJSONReader>());
  Reader->SetContentHandler(Handler.get());
  Reader->SetErrorHandler(Handler.get());
  for (Word CodePage : CodePages) {
    Handler->Reset();
    fuzz::Documented([&] { Reader->ParseBuffer(AData, static_cast<Cardinal>(ASize), CodePage); });
  }
  Reader.reset();
  volatile unsigned Sink = Handler->Sum(); // keeps the reads of the arguments
  (void)Sink;
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  lorvane::ReadEvents(AData, ASize);
  lorvane::fuzz::RoundTrip(AData, ASize, true);
  return 0;
}
