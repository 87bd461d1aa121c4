// Fuzz target of reading JSON and form posts into objects (see DeserializeHarness.h).
#include "DeserializeHarness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  return fuzzread::ReadInput(ldsJSON, documented::TEntry::JSONDeserialize, AData, ASize);
}
