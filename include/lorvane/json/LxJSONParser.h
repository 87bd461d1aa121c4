/// TLxJSONParser, the JSON event component: an application wires plain callbacks to it instead
/// of writing a handler class; a flag of the stream and buffer forms reads a form post instead.
/// Also the callback types of its events.
#pragma once

#include "lorvane/json/LxJSONReader.h"
#include "lorvane/platform/Classes.h"

#include <functional>

namespace lorvane {

/// No sender: a handler tells parsers apart by the locator, which is valid only during the call.
using TLxJSONOnError = std::function<void(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg)>;
using TLxJSONOnStartDocument = std::function<void()>;
using TLxJSONOnStartObject = std::function<void()>;
/// AName is raw, escapes still in it, and valid only during the call.
using TLxJSONOnStartMember = std::function<void(const LxJSONString& AName)>;
using TLxJSONOnStartArray = std::function<void()>;
/// AValue is the value's text raw, valid only during the call.
using TLxJSONOnValue =
    std::function<void(TLxJSONSimpleDataType AValueType, const LxJSONString& AValue)>;
using TLxJSONOnEndArray = std::function<void()>;
using TLxJSONOnEndMember = std::function<void()>;
using TLxJSONOnEndObject = std::function<void()>;
using TLxJSONOnEndDocument = std::function<void()>;

/// Fires an event for every handler method the reader calls, with the arguments unchanged; an
/// event left empty costs nothing, and with none assigned a parse only checks the text and
/// raises on failure. Interface references to the component aren't counted.
///
/// Every parse form fires OnStart first and OnFinished last, once each: a form hands its source
/// to the reader's form of the same name, not to ParseStream. A failed parse skips OnFinished and
/// lets its exception through to the caller, after OnFatalError when the reader routes it there
/// (see TLxJSONReader); an exception raised by OnFatalError replaces the reader's. The reader
/// lives only during the call, and it is freed also when the parse fails. A parse started from an
/// event runs on a reader of its own.
class TLxJSONParser : public TComponent, public ILxJSONErrorHandler, public ILxJSONContentHandler {
  LX_CLASS(TLxJSONParser, TComponent)
  explicit TLxJSONParser(TComponent* AOwner = nullptr);

  /// Answers the two handler interfaces and IInterface, uncounted.
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  Integer _AddRef() override { return -1; }
  Integer _Release() override { return -1; }

  /// Reads from the stream's position in ACodePage; no byte order mark is looked for. With
  /// AIsUrlFormEncoded the text is a form post (name=value pairs), read as one object.
  void ParseStream(TStream* AStream, Word ACodePage, bool AIsUrlFormEncoded = false,
                   const LxJSONString& APublicID = LxJSONString());
  /// Opens the file with AMode; a byte order mark is passed over and gives the code page. A file
  /// that can't be opened raises EFOpenError after OnStart.
  void ParseFile(const TFileName& AFileName, Word AMode,
                 const LxJSONString& APublicID = LxJSONString());
  /// The buffer is read in place and must stay unchanged during the call.
  void ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ACodePage,
                   bool AIsUrlFormEncoded = false, const LxJSONString& APublicID = LxJSONString());
  /// The string's characters, as code page 1200.
  void Parse(const LxJSONString& AJSON, const LxJSONString& APublicID = LxJSONString());
  /// The bytes in ACodePage.
  void Parse(const AnsiString& AJSON, Word ACodePage,
             const LxJSONString& APublicID = LxJSONString());

  /// The reader of the running parse, the locator of its events; nil between parses.
  TLxJSONReader* GetReader() const noexcept { return FReader; }

  // ILxJSONErrorHandler: each passes locator and message to its event.
  void Warning(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;
  void Error(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;
  /// Informs only: the reader raises its exception again when this returns.
  void FatalError(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;

  // ILxJSONContentHandler: each fires its event. A descendant that overrides one replaces the
  // event, unless it calls the inherited method.
  /// Stores the locator (a counted reference) and fires nothing; the readers never call it.
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

  // Events; "assigned" means non-empty.
  const TLxJSONOnError& GetOnWarning() const noexcept { return FOnWarning; }
  void SetOnWarning(TLxJSONOnError AValue) { FOnWarning = std::move(AValue); }
  const TLxJSONOnError& GetOnError() const noexcept { return FOnError; }
  void SetOnError(TLxJSONOnError AValue) { FOnError = std::move(AValue); }
  const TLxJSONOnError& GetOnFatalError() const noexcept { return FOnFatalError; }
  void SetOnFatalError(TLxJSONOnError AValue) { FOnFatalError = std::move(AValue); }
  const TNotifyEvent& GetOnStart() const noexcept { return FOnStart; }
  void SetOnStart(TNotifyEvent AValue) { FOnStart = std::move(AValue); }
  const TNotifyEvent& GetOnFinished() const noexcept { return FOnFinished; }
  void SetOnFinished(TNotifyEvent AValue) { FOnFinished = std::move(AValue); }
  const TLxJSONOnStartDocument& GetOnStartDocument() const noexcept { return FOnStartDocument; }
  void SetOnStartDocument(TLxJSONOnStartDocument AValue) { FOnStartDocument = std::move(AValue); }
  const TLxJSONOnStartObject& GetOnStartObject() const noexcept { return FOnStartObject; }
  void SetOnStartObject(TLxJSONOnStartObject AValue) { FOnStartObject = std::move(AValue); }
  const TLxJSONOnStartMember& GetOnStartMember() const noexcept { return FOnStartMember; }
  void SetOnStartMember(TLxJSONOnStartMember AValue) { FOnStartMember = std::move(AValue); }
  const TLxJSONOnStartArray& GetOnStartArray() const noexcept { return FOnStartArray; }
  void SetOnStartArray(TLxJSONOnStartArray AValue) { FOnStartArray = std::move(AValue); }
  const TLxJSONOnValue& GetOnValue() const noexcept { return FOnValue; }
  void SetOnValue(TLxJSONOnValue AValue) { FOnValue = std::move(AValue); }
  const TLxJSONOnEndArray& GetOnEndArray() const noexcept { return FOnEndArray; }
  void SetOnEndArray(TLxJSONOnEndArray AValue) { FOnEndArray = std::move(AValue); }
  const TLxJSONOnEndMember& GetOnEndMember() const noexcept { return FOnEndMember; }
  void SetOnEndMember(TLxJSONOnEndMember AValue) { FOnEndMember = std::move(AValue); }
  const TLxJSONOnEndObject& GetOnEndObject() const noexcept { return FOnEndObject; }
  void SetOnEndObject(TLxJSONOnEndObject AValue) { FOnEndObject = std::move(AValue); }
  const TLxJSONOnEndDocument& GetOnEndDocument() const noexcept { return FOnEndDocument; }
  void SetOnEndDocument(TLxJSONOnEndDocument AValue) { FOnEndDocument = std::move(AValue); }

protected:
  /// Frees a reader left over and releases the locator.
  ~TLxJSONParser() override;

  /// What SetDocumentLocator stored.
  IPtr<ILxJSONLocator> FLocator;
  /// The reader of the running parse; nil between parses.
  TLxJSONReader* FReader = nullptr;

  TLxJSONOnError FOnWarning;
  TLxJSONOnError FOnError;
  TLxJSONOnError FOnFatalError;
  TNotifyEvent FOnStart;
  TNotifyEvent FOnFinished;
  TLxJSONOnStartDocument FOnStartDocument;
  TLxJSONOnStartObject FOnStartObject;
  TLxJSONOnStartMember FOnStartMember;
  TLxJSONOnStartArray FOnStartArray;
  TLxJSONOnValue FOnValue;
  TLxJSONOnEndArray FOnEndArray;
  TLxJSONOnEndMember FOnEndMember;
  TLxJSONOnEndObject FOnEndObject;
  TLxJSONOnEndDocument FOnEndDocument;

private:
  /// Fires OnStart, runs AParse on a new reader (a form post reader with AIsUrlFormEncoded)
  /// wired to this component, frees the reader whatever happens, then fires OnFinished.
  template <class TAction> void RunParse(bool AIsUrlFormEncoded, TAction AParse);
};

} // namespace lorvane
