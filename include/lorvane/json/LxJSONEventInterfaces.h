/// The event interfaces of JSON reading: the locator, the content and error handlers, and the
/// reader interface itself.
///
/// A locator handed to a handler method is borrowed for the call: a handler that keeps it takes
/// its own reference. Names and values arrive raw, escapes still in them (LxJSONtoStr undoes
/// them), by reference to buffers the reader reuses: a handler copies what it keeps.
#pragma once

#include "lorvane/json/LxJSONTypes.h"
#include "lorvane/platform/Streams.h"

namespace lorvane {

class ILxJSONLocator : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x2B7E4F91, 0x6A3C, 0x4E58, {0x9D, 0x14, 0x8C, 0x52, 0xE7, 0x0A, 0x36, 0xB1}};
  virtual Integer GetLineNr() = 0;
  virtual Integer GetColNr() = 0;
  virtual LxJSONString GetPublicID() = 0;

protected:
  ~ILxJSONLocator() = default;
};

class ILxJSONContentHandler : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x7D0C93A4, 0x1F6B, 0x4C27, {0xB8, 0x45, 0x2E, 0x9F, 0x61, 0xD3, 0x07, 0xCA}};
  virtual void SetDocumentLocator(ILxJSONLocator* ALocator) = 0;
  virtual void StartDocument() = 0;
  virtual void StartObject() = 0;
  /// AName is raw: its escapes are still in it.
  virtual void StartMember(const LxJSONString& AName) = 0;
  virtual void StartArray() = 0;
  /// AValue is the value's text raw; a number is delivered as it stands, unexamined.
  virtual void Value(TLxJSONDataType AValueType, const LxJSONString& AValue) = 0;
  virtual void EndArray() = 0;
  virtual void EndMember() = 0;
  virtual void EndObject() = 0;
  virtual void EndDocument() = 0;

protected:
  ~ILxJSONContentHandler() = default;
};

class ILxJSONErrorHandler : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0xE4A51B28, 0x93D7, 0x4A0F, {0xA6, 0x3B, 0x5D, 0x80, 0xC1, 0x2F, 0x94, 0x6E}};
  virtual void Warning(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) = 0;
  virtual void Error(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) = 0;
  virtual void FatalError(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) = 0;

protected:
  ~ILxJSONErrorHandler() = default;
};

class ILxJSONReader : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x5F2896C3, 0xB04E, 0x4D71, {0x87, 0xE2, 0x6B, 0x1D, 0xA9, 0x53, 0xF0, 0x28}};
  virtual IPtr<ILxJSONContentHandler> GetContentHandler() = 0;
  virtual IPtr<ILxJSONErrorHandler> GetErrorHandler() = 0;
  virtual void SetContentHandler(ILxJSONContentHandler* AHandler) = 0;
  virtual void SetErrorHandler(ILxJSONErrorHandler* AHandler) = 0;
  /// From the stream's position; no byte order mark is looked for.
  virtual void ParseStream(TStream* AStream, Word ACodePage, const LxJSONString& APublicID) = 0;
  /// A byte order mark is passed over and gives the code page.
  virtual void ParseFile(const TFileName& AFileName, Word AMode, const LxJSONString& APublicID) = 0;
  /// Reads the block in place; it must outlive the call.
  virtual void ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ACodePage,
                           const LxJSONString& APublicID) = 0;
  virtual void Parse(const LxJSONString& AJSON, const LxJSONString& APublicID) = 0;
  virtual void Parse(const AnsiString& AJSON, Word ACodePage, const LxJSONString& APublicID) = 0;

protected:
  ~ILxJSONReader() = default;
};

} // namespace lorvane
