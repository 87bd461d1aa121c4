// A handler for every event interface of the readers that writes one line per event, so that a
// test compares a reader's whole transcript with the expected one.
#pragma once

#include "lorvane/uLxSAX.h"

#include <string>

namespace lorvane::test {

/// Lines look like `startElement(uri|local|qname|[qname=uri|value,...])`, `characters(x)`.
class TEventRecorder : public TLxSAXDefaultHandler {
  LX_CLASS(TEventRecorder, TLxSAXDefaultHandler)
  TEventRecorder() { SetAutoDestroy(false); }

  /// Hooks itself into AReader as content, lexical and error handler.
  void Attach(TLxSAXReader* AReader) {
    AReader->SetContentHandler(this);
    AReader->SetLexicalHandler(this);
    AReader->SetErrorHandler(this);
  }

  std::string Transcript;

  void SetDocumentLocator(ILxSAXLocator*) override { Line("setDocumentLocator"); }
  void Characters(const LxXMLString& AText) override { Line("characters(" + U(AText) + ")"); }
  void EndDocument() override { Line("endDocument"); }
  void EndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                  const LxXMLString& AQName) override {
    Line("endElement(" + U(AURI) + "|" + U(ALocalName) + "|" + U(AQName) + ")");
  }
  void EndPrefixMapping(const LxXMLString& APrefix) override {
    Line("endPrefixMapping(" + U(APrefix) + ")");
  }
  void IgnorableWhitespace(const LxXMLString& AText) override {
    Line("ignorableWhitespace(" + U(AText) + ")");
  }
  void ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) override {
    Line("processingInstruction(" + U(ATarget) + "|" + U(AData) + ")");
  }
  void SkippedEntity(const LxXMLString& AName) override { Line("skippedEntity(" + U(AName) + ")"); }
  void StartDocument() override { Line("startDocument"); }
  void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
    std::string Attributes;
    // Appended piece by piece: "literal" + std::string&& sets off a false -Wrestrict in GCC 12.
    for (PLxSAXXMAttribute A = AAttributes->FirstAttribute(); A; A = A->Next) {
      if (!Attributes.empty())
        Attributes += ',';
      Attributes.append(U(A->QName)).append("=").append(U(A->URI)).append("|").append(U(A->Value));
    }
    Line("startElement(" + U(AURI) + "|" + U(ALocalName) + "|" + U(AQName) + "|[" + Attributes +
         "])");
  }
  void StartPrefixMapping(const LxXMLString& APrefix, const LxXMLString& AURI) override {
    Line("startPrefixMapping(" + U(APrefix) + "|" + U(AURI) + ")");
  }
  void Comment(const LxXMLString& AText) override { Line("comment(" + U(AText) + ")"); }
  void StartCDATA() override { Line("startCDATA"); }
  void StartDTD() override { Line("startDTD"); }
  void StartEntity(const LxXMLString& AName) override { Line("startEntity(" + U(AName) + ")"); }
  void EndCDATA() override { Line("endCDATA"); }
  void EndDTD() override { Line("endDTD"); }
  void EndEntity(const LxXMLString& AName) override { Line("endEntity(" + U(AName) + ")"); }
  void Warning(ILxSAXLocator*, const LxXMLString& AMessage) override {
    Line("warning(" + U(AMessage) + ")");
  }
  void Error(ILxSAXLocator*, const LxXMLString& AMessage) override {
    Line("error(" + U(AMessage) + ")");
  }
  void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AMessage) override {
    Line("fatalError(" + std::to_string(ALocator->GetLineNr()) + ":" +
         std::to_string(ALocator->GetColNr()) + ")");
    LastFatalMessage = AMessage;
  }
  LxXMLString LastFatalMessage;

protected:
  ~TEventRecorder() override = default;

private:
  static std::string U(const LxXMLString& AText) { return StringToUTF8(AText); }
  void Line(const std::string& AText) { Transcript += AText + "\n"; }
};

} // namespace lorvane::test
