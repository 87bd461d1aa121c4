// The do-nothing JSON handler that concrete handlers derive from.
#include "lorvane/json/LxJSONDefaultHandler.h"

namespace lorvane {

HRESULT TLxJSONDefaultHandler::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONContentHandler, ILxJSONErrorHandler>(
      this, AIID, AObj, [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

void TLxJSONDefaultHandler::SetDocumentLocator(ILxJSONLocator*) {}
void TLxJSONDefaultHandler::StartDocument() {}
void TLxJSONDefaultHandler::StartObject() {}
void TLxJSONDefaultHandler::StartMember(const LxJSONString&) {}
void TLxJSONDefaultHandler::StartArray() {}
void TLxJSONDefaultHandler::Value(TLxJSONDataType, const LxJSONString&) {}
void TLxJSONDefaultHandler::EndArray() {}
void TLxJSONDefaultHandler::EndMember() {}
void TLxJSONDefaultHandler::EndObject() {}
void TLxJSONDefaultHandler::EndDocument() {}

void TLxJSONDefaultHandler::Warning(ILxJSONLocator*, const LxJSONString&) {}
void TLxJSONDefaultHandler::Error(ILxJSONLocator*, const LxJSONString&) {}
void TLxJSONDefaultHandler::FatalError(ILxJSONLocator*, const LxJSONString&) {}

} // namespace lorvane
