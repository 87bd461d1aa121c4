// Fuzz target of reading XML into objects (see DeserializeHarness.h).
#include "DeserializeHarness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  return fuzzread::ReadInput(ldsXML, documented::TEntry::XMLDeserialize, AData, ASize);
}
