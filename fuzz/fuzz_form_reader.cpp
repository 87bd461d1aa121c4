// Fuzz target of the form post reader: any bytes read as a form, by event and into a value
// tree that is then written. Only the library's documented failures are expected.
#include "lorvane/uLxJSON.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "support/DocumentedFailures.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  if (ASize == 0)
    return 0;
  // The first byte picks the code page the rest is given in.
  constexpr Word CodePages[] = {CP_UTF8, 0, CP_UTF16LE};
  const Word CodePage = CodePages[AData[0] % std::size(CodePages)];
  documented::Guarded(documented::TEntry::FormDocumentLoad, [&] {
    TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(AData + 1), static_cast<Int64>(ASize - 1)));
    Document->LoadFromStream(Stream.get(), CodePage, /*AIsUrlFormEncoded=*/true);
    Document->GetAsJSON();
    Document->GetFormattedJSON();
  });
  return 0;
}
