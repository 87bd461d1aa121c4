// Fuzz target of JSON read as XML: the text through TLxSAXJSONReader in every code page choice,
// from a buffer and from a stream that hands out small pieces, with the events checked for their
// shape (balanced elements, XML names, the attribute of each kind of value); then through the
// event component, into a document tree (by the code page, and by the loader's own detection),
// saved as XML compact and formatted, and the saved text loaded again. Only the library's
// documented failures are expected.
#include "lorvane/uLxSAX.h"
#include "lorvane/uLxXMLDOM.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "support/DocumentedFailures.h"
#include "support/TestStreams.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lorvane {
namespace {

bool IsNameStart(char16_t C) {
  return (C >= u'A' && C <= u'Z') || C == u'_' || (C >= u'a' && C <= u'z') ||
         (C >= 0xC0 && C <= 0xD6) || (C >= 0xD8 && C <= 0xF6) || (C >= 0xF8 && C <= 0x2FF) ||
         (C >= 0x370 && C <= 0x37D) || (C >= 0x37F && C <= 0x1FFF) || C == 0x200C || C == 0x200D ||
         (C >= 0x2070 && C <= 0x218F) || (C >= 0x2C00 && C <= 0x2FEF) ||
         (C >= 0x3001 && C <= 0xD7FF) || (C >= 0xF900 && C <= 0xFDCF) ||
         (C >= 0xFDF0 && C <= 0xFFFD);
}

bool IsNameChar(char16_t C) {
  return IsNameStart(C) || C == u'-' || C == u'.' || (C >= u'0' && C <= u'9') || C == 0xB7 ||
         (C >= 0x300 && C <= 0x36F) || C == 0x203F || C == 0x2040;
}

/// Checks every event against the shape the reader promises, and reads every character of every
/// argument, so that a bad string shows as a sanitizer report.
class TShapeChecker : public TLxSAXDefaultHandler {
  LX_CLASS(TShapeChecker, TLxSAXDefaultHandler)
  TShapeChecker() { SetAutoDestroy(false); }

  void StartDocument() override {
    if (FDocuments++ != 0)
      __builtin_trap();
  }
  void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
    if (!AURI.empty() || ALocalName != AQName || ALocalName.empty() || !IsNameStart(ALocalName[0]))
      __builtin_trap();
    for (char16_t C : ALocalName)
      if (!IsNameChar(C))
        __builtin_trap();
    const Integer Count = AAttributes->Count();
    // The root has the two declarations, a simple value one attribute, a container none.
    if (FDepth == 0 ? Count != 2 : Count > 1)
      __builtin_trap();
    for (PLxSAXXMAttribute A = AAttributes->FirstAttribute(); A; A = A->Next) {
      Touch(A->LocalName);
      Touch(A->QName);
      Touch(A->URI);
      Touch(A->Value);
    }
    FSimple = Count == 1;
    FTextSeen = false;
    ++FDepth;
  }
  void Characters(const LxXMLString& AText) override {
    // Text belongs to a simple value, once.
    if (!FSimple || FTextSeen)
      __builtin_trap();
    FTextSeen = true;
    Touch(AText);
  }
  void EndElement(const LxXMLString&, const LxXMLString& ALocalName, const LxXMLString&) override {
    if (FSimple && !FTextSeen)
      __builtin_trap();
    FSimple = false;
    if (--FDepth < 0)
      __builtin_trap();
    Touch(ALocalName);
  }
  void EndDocument() override {
    if (FDepth != 0)
      __builtin_trap();
  }
  void IgnorableWhitespace(const LxXMLString&) override { __builtin_trap(); }
  void ProcessingInstruction(const LxXMLString&, const LxXMLString&) override { __builtin_trap(); }
  void StartPrefixMapping(const LxXMLString&, const LxXMLString&) override { __builtin_trap(); }
  void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AMessage) override {
    FSum += static_cast<unsigned>(ALocator->GetLineNr() + ALocator->GetColNr());
    Touch(AMessage);
  }

  void Reset() { FDepth = 0, FDocuments = 0, FSimple = false; }
  unsigned Sum() const noexcept { return FSum; }

protected:
  ~TShapeChecker() override = default;

private:
  void Touch(const LxXMLString& AText) {
    for (char16_t C : AText)
      FSum += C;
  }
  long FDepth = 0;
  int FDocuments = 0;
  bool FSimple = false, FTextSeen = false;
  unsigned FSum = 0;
};

constexpr Word CodePages[] = {0, CP_UTF8, CP_UTF16LE, CP_UTF16BE, 1252};

std::string SavedXML(TLxDOMDocument* ADocument, bool AFormatted) {
  TOwned<TMemoryStream> Stream(New<TMemoryStream>());
  ADocument->SaveToStream(Stream.get(), CP_UTF8, AFormatted, /*AWriteBOM=*/false);
  return std::string(reinterpret_cast<const char*>(Stream->Memory()),
                     static_cast<std::size_t>(Stream->GetSize()));
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  if (ASize == 0)
    return 0;
  const uint8_t Choice = AData[0];
  const uint8_t* Text = AData + 1;
  const size_t Size = ASize - 1;
  const Word CodePage = CodePages[Choice % std::size(CodePages)];
  using documented::Guarded;
  using documented::TEntry;

  TOwned<TShapeChecker> Checker(New<TShapeChecker>());
  {
    TOwned<TLxSAXJSONReader> Reader(New<TLxSAXJSONReader>());
    Reader->SetContentHandler(Checker.get());
    Reader->SetErrorHandler(Checker.get());
    Guarded(TEntry::SAXJSONReader,
            [&] { Reader->ParseBuffer(Text, static_cast<Cardinal>(Size), CodePage); });
    Checker->Reset();
    Guarded(TEntry::SAXJSONReader, [&] {
      // At most a few bytes per read: the reader refills its window inside every kind of token.
      TOwned<test::TChunkedStream> Stream(New<test::TChunkedStream>(
          std::string(reinterpret_cast<const char*>(Text), Size), Int64(1 + (Choice >> 5))));
      Reader->ParseStream(Stream.get(), CodePage);
    });
  }
  {
    // The component picks its reader by the first character: XML input is fine here too.
    TOwned<TLxSAXParser> Component(New<TLxSAXParser>());
    unsigned Events = 0;
    Component->SetOnStartElement(
        [&](TObject*, const LxXMLString&, const LxXMLString& ALocalName, const LxXMLString&,
            ILxSAXAttributes*) { Events += static_cast<unsigned>(ALocalName.size()); });
    try {
      Component->ParseBuffer(Text, static_cast<Cardinal>(Size), CodePage);
    } catch (const std::exception& E) {
      if (!documented::IsDocumented(TEntry::SAXJSONReader, E) &&
          !documented::IsDocumented(TEntry::XMLReader, E))
        throw;
    }
    volatile unsigned Sink = Events;
    (void)Sink;
  }

  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  Guarded(TEntry::XMLDocumentLoad, [&] {
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(Text), static_cast<Int64>(Size)));
    if (Choice & 0x10)
      Document->LoadFromStream(Stream.get()); // the loader's own detection
    else
      Document->LoadFromStream(Stream.get(), CodePage);
  });
  Guarded(TEntry::XMLDocumentLoad, [&] {
    const std::string Compact = SavedXML(Document.get(), false);
    const std::string Formatted = SavedXML(Document.get(), true);
    TOwned<TLxDOMDocument> Again(New<TLxDOMDocument>());
    Again->LoadFromXML(AnsiString(Compact));
    Again->LoadFromXML(AnsiString(Formatted));
    volatile std::size_t Sink = SavedXML(Again.get(), false).size();
    (void)Sink;
  });
  volatile unsigned Sink = Checker->Sum();
  (void)Sink;
  return 0;
}
