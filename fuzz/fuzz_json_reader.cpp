// Fuzz target of the JSON event reader: the bytes read as UTF-8, as decided by the text and as
// UTF-16, with a handler that checks how the events nest; then the bytes into a document, written
// both ways and read again.
#include "JSONFuzzSupport.h"

namespace lorvane {
namespace {

constexpr Word CodePages[] = {0, 65001, 1200};

void ReadEvents(const uint8_t* AData, size_t ASize) {
  TOwned<fuzz::TCheckingJSONHandler> Handler(New<fuzz::TCheckingJSONHandler>(true));
  TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
  Reader->SetContentHandler(Handler.get());
  Reader->SetErrorHandler(Handler.get());
  for (Word CodePage : CodePages) {
    Handler->Reset();
    bool NotRouted = false; // a failure that the reader documents as not passing FatalError
    const bool Read = fuzz::Documented([&] {
      try {
        Reader->ParseBuffer(AData, static_cast<Cardinal>(ASize), CodePage);
      } catch (const Exception& E) {
        NotRouted = typeid(E) == typeid(Exception) && E.Message() == _cLxJSONEncodingNotSupported;
        throw;
      }
    });
    // A parse ends with EndDocument and no FatalError, or raises after exactly one FatalError.
    if (Read ? !Handler->Ended() || Handler->FatalErrors() != 0
             : Handler->FatalErrors() != (NotRouted ? 0 : 1))
      __builtin_trap();
  }
  // The reader holds interfaces on the handler: free it first.
  Reader.reset();
  volatile unsigned Sink = Handler->Sum(); // keeps the reads of the arguments
  (void)Sink;
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  lorvane::ReadEvents(AData, ASize);
  lorvane::fuzz::RoundTrip(AData, ASize, false);
  return 0;
}
