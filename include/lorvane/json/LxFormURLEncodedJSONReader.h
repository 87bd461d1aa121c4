/// TLxFormURLEncodedJSONReader: the text of an HTML form post (name=value pairs joined by "&")
/// delivered as the events of one JSON object, so that every consumer of the JSON reader takes a
/// form post without knowing it.
#pragma once

#include "lorvane/json/LxJSONReader.h"

namespace lorvane {

class TLxFormURLEncodedJSONReader : public TLxJSONReader {
  LX_CLASS(TLxFormURLEncodedJSONReader, TLxJSONReader)
  TLxFormURLEncodedJSONReader() = default;

protected:
  ~TLxFormURLEncodedJSONReader() override = default;
  void InternalParse() override;
};

} // namespace lorvane
