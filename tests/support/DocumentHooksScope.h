// A guard that puts the four document hooks back when a test's scope ends, also when the test
// fails or raises half-way.
#pragma once

#include "lorvane/classes/LxDocumentHooks.h"

namespace lorvane::test {

/// The four document hooks as they were, whatever the test registers or clears.
class TDocumentHooksScope {
public:
  TDocumentHooksScope()
      : FCreateXML(SetCreateXMLDoc(nullptr)), FCreateJSON(SetCreateJSONDoc(nullptr)),
        FGetXMLValue(SetGetXMLDocValue(nullptr)), FGetJSONValue(SetGetJSONDocValue(nullptr)) {
    // Taking them out to read them cleared them: put them back until the test changes them.
    SetCreateXMLDoc(FCreateXML);
    SetCreateJSONDoc(FCreateJSON);
    SetGetXMLDocValue(FGetXMLValue);
    SetGetJSONDocValue(FGetJSONValue);
  }
  TDocumentHooksScope(const TDocumentHooksScope&) = delete;
  TDocumentHooksScope& operator=(const TDocumentHooksScope&) = delete;
  ~TDocumentHooksScope() {
    SetCreateXMLDoc(FCreateXML);
    SetCreateJSONDoc(FCreateJSON);
    SetGetXMLDocValue(FGetXMLValue);
    SetGetJSONDocValue(FGetJSONValue);
  }

private:
  TCreateDocumentFunc FCreateXML, FCreateJSON;
  TGetDocumentValueFunc FGetXMLValue, FGetJSONValue;
};

} // namespace lorvane::test
