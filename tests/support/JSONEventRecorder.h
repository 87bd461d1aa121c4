// A content and error handler for the JSON readers that writes one line per event, so that a
// test compares a reader's whole transcript with the expected one.
#pragma once

#include "lorvane/json/LxJSONDefaultHandler.h"
#include "lorvane/json/LxJSONReader.h"

#include <string>

namespace lorvane::test {

/// Lines look like `startObject`, `startMember(a)`, `value(jdtNumber|12)`, `fatalError(msg)`,
/// joined by " ". Names and values are shown raw, as delivered.
class TJSONEventRecorder : public TLxJSONDefaultHandler {
  LX_CLASS(TJSONEventRecorder, TLxJSONDefaultHandler)
  TJSONEventRecorder() { SetAutoDestroy(false); }

  /// Hooks itself into AReader as content and error handler.
  void Attach(TLxJSONReader* AReader) {
    AReader->SetContentHandler(this);
    AReader->SetErrorHandler(this);
  }

  static const char* TypeName(TLxJSONDataType AType) {
    static const char* const Names[] = {"jdtNull",    "jdtString", "jdtNumber",
                                        "jdtBoolean", "jdtObject", "jdtArray"};
    return Names[AType];
  }

  std::string Transcript;

  void SetDocumentLocator(ILxJSONLocator*) override { Line("setDocumentLocator"); }
  void StartDocument() override { Line("startDocument"); }
  void StartObject() override { Line("startObject"); }
  void StartMember(const LxJSONString& AName) override { Line("startMember(" + U(AName) + ")"); }
  void StartArray() override { Line("startArray"); }
  void Value(TLxJSONDataType AType, const LxJSONString& AValue) override {
    Line(std::string("value(") + TypeName(AType) + "|" + U(AValue) + ")");
  }
  void EndArray() override { Line("endArray"); }
  void EndMember() override { Line("endMember"); }
  void EndObject() override { Line("endObject"); }
  void EndDocument() override { Line("endDocument"); }
  void Warning(ILxJSONLocator*, const LxJSONString& AMessage) override {
    Line("warning(" + U(AMessage) + ")");
  }
  void Error(ILxJSONLocator*, const LxJSONString& AMessage) override {
    Line("error(" + U(AMessage) + ")");
  }
  void FatalError(ILxJSONLocator* ALocator, const LxJSONString& AMessage) override {
    Line("fatalError(" + U(AMessage) + ")");
    FatalLineNr = ALocator->GetLineNr();
    FatalColNr = ALocator->GetColNr();
  }
  /// Where the locator stood when FatalError came.
  Integer FatalLineNr = 0, FatalColNr = 0;

protected:
  ~TJSONEventRecorder() override = default;

private:
  static std::string U(const LxJSONString& AText) { return StringToUTF8(AText); }
  void Line(const std::string& AText) {
    if (!Transcript.empty())
      Transcript += ' ';
    Transcript += AText;
  }
};

} // namespace lorvane::test
