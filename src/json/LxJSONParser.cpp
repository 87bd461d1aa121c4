// The JSON event component: reader lifetime around each parse, and handler methods that fire
// events.
#include "lorvane/json/LxJSONParser.h"

#include "lorvane/json/LxFormURLEncodedJSONReader.h"

namespace lorvane {

TLxJSONParser::TLxJSONParser(TComponent* AOwner) : TComponent(AOwner) {}

TLxJSONParser::~TLxJSONParser() {
  FreeAndNil(FReader);
  FLocator = nullptr;
}

HRESULT TLxJSONParser::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerUncountedInterfaces<ILxJSONErrorHandler, ILxJSONContentHandler>(
      this, AIID, AObj, [&] { return TComponent::QueryInterface(AIID, AObj); });
}

template <class TAction> void TLxJSONParser::RunParse(bool AIsUrlFormEncoded, TAction AParse) {
  if (FOnStart)
    FOnStart(this);
  {
    // The reader is freed on every way out, and a parse started from an event finds the outer
    // parse's reader back in FReader when it returns.
    struct TReaderScope {
      TLxJSONReader*& Field;
      TLxJSONReader* Outer;
      ~TReaderScope() {
        FreeAndNil(Field);
        Field = Outer;
      }
    } Scope{FReader, FReader};
    FReader = nullptr;
    if (AIsUrlFormEncoded)
      FReader = New<TLxFormURLEncodedJSONReader>();
    else
      FReader = New<TLxJSONReader>();
    FReader->SetErrorHandler(this);
    FReader->SetContentHandler(this);
    AParse(FReader);
  }
  if (FOnFinished)
    FOnFinished(this);
}

void TLxJSONParser::ParseStream(TStream* AStream, Word ACodePage, bool AIsUrlFormEncoded,
                                const LxJSONString& APublicID) {
  RunParse(AIsUrlFormEncoded,
           [&](TLxJSONReader* AReader) { AReader->ParseStream(AStream, ACodePage, APublicID); });
}

void TLxJSONParser::ParseFile(const TFileName& AFileName, Word AMode,
                              const LxJSONString& APublicID) {
  RunParse(/*AIsUrlFormEncoded=*/false,
           [&](TLxJSONReader* AReader) { AReader->ParseFile(AFileName, AMode, APublicID); });
}

void TLxJSONParser::ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ACodePage,
                                bool AIsUrlFormEncoded, const LxJSONString& APublicID) {
  RunParse(AIsUrlFormEncoded, [&](TLxJSONReader* AReader) {
    AReader->ParseBuffer(ABuffer, ABufSize, ACodePage, APublicID);
  });
}

void TLxJSONParser::Parse(const LxJSONString& AJSON, const LxJSONString& APublicID) {
  RunParse(/*AIsUrlFormEncoded=*/false,
           [&](TLxJSONReader* AReader) { AReader->Parse(AJSON, APublicID); });
}

void TLxJSONParser::Parse(const AnsiString& AJSON, Word ACodePage, const LxJSONString& APublicID) {
  RunParse(/*AIsUrlFormEncoded=*/false,
           [&](TLxJSONReader* AReader) { AReader->Parse(AJSON, ACodePage, APublicID); });
}

// --- error handler ----------------------------------------------------------------------------
void TLxJSONParser::Warning(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) {
  if (FOnWarning)
    FOnWarning(ALocator, AErrMsg);
}

void TLxJSONParser::Error(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) {
  if (FOnError)
    FOnError(ALocator, AErrMsg);
}

void TLxJSONParser::FatalError(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) {
  if (FOnFatalError)
    FOnFatalError(ALocator, AErrMsg);
}

// --- content handler --------------------------------------------------------------------------
void TLxJSONParser::SetDocumentLocator(ILxJSONLocator* ALocator) { FLocator = ALocator; }

void TLxJSONParser::StartDocument() {
  if (FOnStartDocument)
    FOnStartDocument();
}

void TLxJSONParser::StartObject() {
  if (FOnStartObject)
    FOnStartObject();
}

void TLxJSONParser::StartMember(const LxJSONString& AName) {
  if (FOnStartMember)
    FOnStartMember(AName);
}

void TLxJSONParser::StartArray() {
  if (FOnStartArray)
    FOnStartArray();
}

void TLxJSONParser::Value(TLxJSONDataType AValueType, const LxJSONString& AValue) {
  if (FOnValue)
    FOnValue(AValueType, AValue);
}

void TLxJSONParser::EndArray() {
  if (FOnEndArray)
    FOnEndArray();
}

void TLxJSONParser::EndMember() {
  if (FOnEndMember)
    FOnEndMember();
}

void TLxJSONParser::EndObject() {
  if (FOnEndObject)
    FOnEndObject();
}

void TLxJSONParser::EndDocument() {
  if (FOnEndDocument)
    FOnEndDocument();
}

} // namespace lorvane
