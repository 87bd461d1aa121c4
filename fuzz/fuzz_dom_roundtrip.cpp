// Fuzz target of the document tree: load any bytes, walk and save what loads, and load and save
// the saved text again; only the documented failures of a load are expected.
#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxXMLDOM.h"
#include "support/DocumentedFailures.h"

#include <cstddef>
#include <cstdint>

namespace lorvane {
namespace {

using documented::IsDocumented;
using documented::TEntry;

/// Loads AStream into ADocument; false when the load failed as documented (what was built is
/// freed with the document).
bool Loaded(TLxDOMDocument* ADocument, TStream* AStream, Word ACodePage) {
  try {
    if (ACodePage)
      ADocument->LoadFromStream(AStream, ACodePage);
    else
      ADocument->LoadFromStream(AStream);
    return true;
  } catch (const std::exception& E) {
    if (!IsDocumented(TEntry::XMLDocumentLoad, E))
      throw;
    return false;
  }
}

std::string Saved(TLxDOMDocument* ADocument, bool AFormatted) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(CP_UTF8, 0));
  ADocument->SaveToStream(Stream.get(), CP_UTF8, AFormatted, /*AWriteBOM=*/false);
  return Stream->GetAString();
}

void RoundTrip(const uint8_t* AData, size_t ASize) {
  TOwned<TLxDOMDocument> First(New<TLxDOMDocument>());
  TOwned<TLxMemoryStream> Input(
      New<TLxMemoryStream>(static_cast<const void*>(AData), static_cast<Int64>(ASize)));
  if (!Loaded(First.get(), Input.get(), 0))
    return;
  // Walks that read every node: text views, the formatted form, a deep clone of the root.
  if (TLxDOMElement* Root = First->GetRootNode()) {
    documented::Guarded(TEntry::ValueConversions, [&] {
      Root->GetText(); // decodes references: a malformed one raises EConvertError
    });
    TOwned<TLxDOMNode> Clone(Root->CloneNode(/*AIncludeChildNodes=*/true));
  }
  Saved(First.get(), /*AFormatted=*/true);
  const std::string Text = Saved(First.get(), /*AFormatted=*/false);
  if (!First->GetRootNode())
    return;
  // The saved text goes through the reader again: trees the forgiving reader builds from
  // malformed names (a prefix with nothing behind its colon, names that take in delimiters) need
  // not come back the same, so only robustness is asked here; the conformance corpus test checks
  // that well-formed documents round-trip.
  TOwned<TLxDOMDocument> Second(New<TLxDOMDocument>());
  TOwned<TLxMemoryStream> Again(
      New<TLxMemoryStream>(static_cast<const void*>(Text.data()), static_cast<Int64>(Text.size())));
  if (!Loaded(Second.get(), Again.get(), CP_UTF8))
    return;
  Saved(Second.get(), /*AFormatted=*/false);
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  lorvane::RoundTrip(AData, ASize);
  return 0;
}
