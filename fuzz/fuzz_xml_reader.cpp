// Fuzz target of the XML event reader: every code page choice, both root modes, a handler that
// reads every argument; only the reader's documented failures are expected.
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxSAX.h"
#include "support/DocumentedFailures.h"

#include <cstddef>
#include <cstdint>

namespace lorvane {
namespace {

/// Reads every character of every argument and checks the attribute lookups against the list
/// walk, so that a bad string or a broken list shows as a sanitizer report or a trap.
class TTouchingHandler : public TLxSAXDefaultHandler {
  LX_CLASS(TTouchingHandler, TLxSAXDefaultHandler)
  TTouchingHandler() { SetAutoDestroy(false); }

  void SetDocumentLocator(ILxSAXLocator*) override { __builtin_trap(); }
  void Characters(const LxXMLString& AText) override { Touch(AText); }
  void EndDocument() override { ++FSum; }
  void EndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                  const LxXMLString& AQName) override {
    Touch(AURI);
    Touch(ALocalName);
    Touch(AQName);
  }
  void EndPrefixMapping(const LxXMLString& APrefix) override { Touch(APrefix); }
  void IgnorableWhitespace(const LxXMLString& AText) override { Touch(AText); }
  void ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) override {
    Touch(ATarget);
    Touch(AData);
  }
  void SkippedEntity(const LxXMLString&) override { __builtin_trap(); }
  void StartDocument() override { ++FSum; }
  void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
    Touch(AURI);
    Touch(ALocalName);
    Touch(AQName);
    CheckAttributes(AAttributes);
  }
  void StartPrefixMapping(const LxXMLString& APrefix, const LxXMLString& AURI) override {
    Touch(APrefix);
    Touch(AURI);
  }
  void Comment(const LxXMLString& AText) override { Touch(AText); }
  void StartCDATA() override { ++FSum; }
  void StartDTD() override { ++FSum; }
  void StartEntity(const LxXMLString&) override { __builtin_trap(); }
  void EndCDATA() override { ++FSum; }
  void EndDTD() override { ++FSum; }
  void EndEntity(const LxXMLString&) override { __builtin_trap(); }
  void Warning(ILxSAXLocator*, const LxXMLString&) override { __builtin_trap(); }
  void Error(ILxSAXLocator*, const LxXMLString&) override { __builtin_trap(); }
  void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AMessage) override {
    FSum += static_cast<unsigned>(ALocator->GetLineNr() + ALocator->GetColNr() +
                                  ALocator->GetPosition());
    Touch(ALocator->GetPublicID());
    Touch(AMessage);
  }

  unsigned Sum() const noexcept { return FSum; }

protected:
  ~TTouchingHandler() override = default;

private:
  void Touch(const LxXMLString& AText) {
    for (char16_t C : AText)
      FSum += C;
  }

  // Every lookup of an attribute that is in the list must find one; the lookups stop at the first
  // match with case-blind names, so the index found is at most the attribute's own.
  void CheckAttributes(ILxSAXAttributes* AAttributes) {
    Integer Index = 0;
    for (PLxSAXXMAttribute A = AAttributes->FirstAttribute(); A; A = A->Next, ++Index) {
      if (A->Idx != Index || AAttributes->GetAttribute(Index) != A)
        __builtin_trap();
      Touch(AAttributes->GetLocalName(Index));
      Touch(AAttributes->GetQName(Index));
      Touch(AAttributes->GetURI(Index));
      Touch(AAttributes->GetValue(Index));
      FSum += static_cast<unsigned>(AAttributes->GetType(Index));
      Integer ByQName = AAttributes->GetIndex(A->QName);
      Integer ByURI = AAttributes->GetIndex(A->URI, A->LocalName);
      if (ByQName < 0 || ByQName > Index || ByURI < 0 || ByURI > Index)
        __builtin_trap();
      Touch(AAttributes->GetValue(A->QName));
      Touch(AAttributes->GetValue(A->URI, A->LocalName));
      Touch(AAttributes->GetValue(u"*", A->LocalName));
      FSum += static_cast<unsigned>(AAttributes->GetType(A->QName));
      FSum += static_cast<unsigned>(AAttributes->GetType(A->URI, A->LocalName));
    }
    if (Index != AAttributes->Count() || AAttributes->GetIndex(u"\u0001") != -1)
      __builtin_trap();
  }

  unsigned FSum = 0;
};

// The first byte picks how the rest is read: a buffer with one of these code pages, or a stream.
constexpr Word CodePages[] = {0, CP_UTF8, CP_UTF16LE, 1252, 28591, 932};

void ParseOnce(TLxSAXXMLReader* AReader, const uint8_t* AData, size_t ASize, uint8_t AChoice) {
  const size_t Way = AChoice % (std::size(CodePages) + 1);
  // The documented failures of a parse; anything else escapes and is a finding.
  documented::Guarded(documented::TEntry::XMLReader, [&] {
    if (Way < std::size(CodePages)) {
      AReader->ParseBuffer(AData, static_cast<Cardinal>(ASize), CodePages[Way]);
    } else {
      TOwned<TMemoryStream> Stream(New<TMemoryStream>());
      Stream->WriteBuffer(AData, static_cast<Int64>(ASize));
      Stream->SetPosition(0);
      AReader->ParseStream(Stream.get(), CodePages[(AChoice >> 4) % std::size(CodePages)]);
    }
  });
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  if (ASize == 0)
    return 0;
  TOwned<TTouchingHandler> Handler(New<TTouchingHandler>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  Reader->SetContentHandler(Handler.get());
  Reader->SetLexicalHandler(Handler.get());
  Reader->SetErrorHandler(Handler.get());
  for (bool SingleRoot : {true, false}) {
    Reader->SetSingleRoot(SingleRoot);
    ParseOnce(Reader.get(), AData + 1, ASize - 1, AData[0]);
  }
  // The reader holds interfaces on the handler: free it first.
  Reader.reset();
  volatile unsigned Sink = Handler->Sum(); // keeps the reads of the arguments
  (void)Sink;
  return 0;
}
