// Fuzz target of reader reuse: the input is cut into documents at every 0xFF byte, and one
// reader parses them all in a row, many of them failing. Each document's transcript (events,
// failure, locator afterwards) must equal that of a new reader given the same document alone:
// nothing a parse leaves behind may reach the next one. The first byte picks the reader (XML in
// both root modes, JSON, form post) and the code page the documents are read in.
#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxSAX.h"
#include "support/DocumentedFailures.h"
#include "support/EventRecorder.h"
#include "support/JSONEventRecorder.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane {
namespace {

using documented::TEntry;

constexpr uint8_t Separator = 0xFF;
constexpr Word CodePages[] = {CP_UTF8, 0, CP_UTF16LE, 1252};

/// A failure as the transcript shows it: documented ones by class and message, anything else
/// escapes and is a finding.
template <class F> std::string Outcome(TEntry AEntry, F&& AParse) {
  try {
    AParse();
    return "ok";
  } catch (const std::exception& E) {
    if (!documented::IsDocumented(AEntry, E))
      throw;
    const auto* Own = dynamic_cast<const Exception*>(&E);
    return std::string("raised(") + typeid(E).name() + "|" +
           (Own ? StringToUTF8(Own->Message()) : std::string(E.what())) + ")";
  }
}

std::string Locator(Integer ALine, Integer ACol) {
  return " locator(" + std::to_string(ALine) + ":" + std::to_string(ACol) + ")";
}

/// An XML reader with its recorder; the reader, which holds interfaces on the recorder, is freed
/// first.
struct XMLParty {
  explicit XMLParty(bool ASingleRoot)
      : Recorder(New<test::TEventRecorder>()), Reader(New<TLxSAXXMLReader>()) {
    Reader->SetSingleRoot(ASingleRoot);
    Recorder->Attach(Reader.get());
  }
  std::string Parse(std::string_view ADocument, Word ACodePage) {
    Recorder->Transcript.clear();
    const std::string Result = Outcome(TEntry::XMLReader, [&] {
      Reader->ParseBuffer(ADocument.data(), static_cast<Cardinal>(ADocument.size()), ACodePage);
    });
    return Recorder->Transcript + Result + Locator(Reader->GetLineNr(), Reader->GetColNr()) +
           " position(" + std::to_string(Reader->GetPosition()) + ")";
  }
  TOwned<test::TEventRecorder> Recorder;
  TOwned<TLxSAXXMLReader> Reader;
};

/// The same for the JSON reader and the form post reader.
template <class TReader> struct JSONParty {
  JSONParty() : Recorder(New<test::TJSONEventRecorder>()), Reader(New<TReader>()) {
    Recorder->Attach(Reader.get());
  }
  std::string Parse(std::string_view ADocument, Word ACodePage) {
    Recorder->Transcript.clear();
    Recorder->FatalLineNr = Recorder->FatalColNr = 0;
    const TEntry Entry =
        std::is_same_v<TReader, TLxJSONReader> ? TEntry::JSONReader : TEntry::FormReader;
    const std::string Result = Outcome(Entry, [&] {
      Reader->ParseBuffer(ADocument.data(), static_cast<Cardinal>(ADocument.size()), ACodePage);
    });
    return Recorder->Transcript + " " + Result + Locator(Reader->GetLineNr(), Reader->GetColNr()) +
           " eof(" + std::to_string(Reader->GetUnexpectedEOF()) + ") fatalAt(" +
           std::to_string(Recorder->FatalLineNr) + ":" + std::to_string(Recorder->FatalColNr) + ")";
  }
  TOwned<test::TJSONEventRecorder> Recorder;
  TOwned<TReader> Reader;
};

std::vector<std::string_view> Documents(const uint8_t* AData, size_t ASize) {
  std::vector<std::string_view> Result;
  const std::string_view All(reinterpret_cast<const char*>(AData), ASize);
  size_t Start = 0;
  for (;;) {
    const size_t End = All.find(static_cast<char>(Separator), Start);
    Result.push_back(All.substr(Start, End == std::string_view::npos ? End : End - Start));
    if (End == std::string_view::npos)
      return Result;
    Start = End + 1;
  }
}

/// Every document of ADocuments through one reused party, each compared with a new party's
/// reading of it alone.
template <class TParty, class... TArgs>
void ReadAllInARow(const std::vector<std::string_view>& ADocuments, Word ACodePage,
                   TArgs... AArgs) {
  TParty Reused(AArgs...);
  for (const std::string_view Document : ADocuments) {
    const std::string Again = Reused.Parse(Document, ACodePage);
    TParty Fresh(AArgs...);
    if (Again != Fresh.Parse(Document, ACodePage))
      __builtin_trap();
  }
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  if (ASize == 0)
    return 0;
  const uint8_t Choice = AData[0];
  const std::vector<std::string_view> Documents = lorvane::Documents(AData + 1, ASize - 1);
  const Word CodePage = CodePages[(Choice >> 2) % std::size(CodePages)];
  switch (Choice % 4) {
  case 0:
  case 1:
    ReadAllInARow<XMLParty>(Documents, CodePage, /*ASingleRoot=*/Choice % 4 == 0);
    break;
  case 2:
    ReadAllInARow<JSONParty<TLxJSONReader>>(Documents, CodePage);
    break;
  default:
    ReadAllInARow<JSONParty<TLxFormURLEncodedJSONReader>>(Documents, CodePage);
    break;
  }
  return 0;
}
