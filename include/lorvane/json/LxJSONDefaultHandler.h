/// TLxJSONDefaultHandler: the base of JSON handlers. It implements the content and error handler
/// interfaces with methods that do nothing, so that a handler overrides only the events it needs.
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/json/LxJSONEventInterfaces.h"

namespace lorvane {

/// Answers ILxJSONContentHandler and ILxJSONErrorHandler besides TLxObject's own interfaces, each
/// with a counted reference. FatalError does nothing either: the reader raises the failure
/// itself once the handler has seen it.
///
/// Lifetime is TLxObject's: with AutoDestroy true (the default) the last release of an interface
/// destroys the handler; a handler that its user owns and frees sets AutoDestroy false and
/// outlives every reader it is set on (or is taken off them first).
///
///     class TValueCounter : public TLxJSONDefaultHandler {
///       LX_CLASS(TValueCounter, TLxJSONDefaultHandler)
///       void Value(TLxJSONDataType, const LxJSONString&) override { ++Count; }
///       Integer Count = 0;
///     };
class TLxJSONDefaultHandler : public TLxObject,
                              public ILxJSONContentHandler,
                              public ILxJSONErrorHandler {
  LX_CLASS(TLxJSONDefaultHandler, TLxObject)
  TLxJSONDefaultHandler() noexcept = default;

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  // ILxJSONContentHandler
  void SetDocumentLocator(ILxJSONLocator* ALocator) override;
  void StartDocument() override;
  void StartObject() override;
  void StartMember(const LxJSONString& AName) override;
  void StartArray() override;
  void Value(TLxJSONDataType AValueType, const LxJSONString& AValue) override;
  void EndArray() override;
  void EndMember() override;
  void EndObject() override;
  void EndDocument() override;

  // ILxJSONErrorHandler
  void Warning(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;
  void Error(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;
  void FatalError(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;

protected:
  ~TLxJSONDefaultHandler() override = default;
};

} // namespace lorvane
