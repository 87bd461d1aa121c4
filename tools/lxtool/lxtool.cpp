// lxtool: the command-line face of the library; `events` prints a reader's events, one a line,
// and `format` writes a document back, indented or compact.
#include <lorvane/uLxSAX.h>
#include <lorvane/uLxXMLDOM.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

using namespace lorvane;

namespace {

constexpr char Usage[] =
    "usage: lxtool events FILE\n"
    "       lxtool format [--compact] FILE\n"
    "\n"
    "events  reads FILE with the event reader of its format and prints one line per event:\n"
    "        the handler method's name, then each argument as a JSON value, separated by tabs.\n"
    "        StartElement's attributes are one array of [QName, URI, Value] triples.\n"
    "        Strings are JSON strings in UTF-8; '\"' and '\\' are escaped with a backslash,\n"
    "        U+0000..U+001F and lone surrogates as \\uXXXX (upper-case hex), nothing else.\n"
    "        The first byte above U+0020, behind a byte order mark, decides the format:\n"
    "        '<' is XML; JSON isn't supported yet.\n"
    "        When the XML text fails, the last line is FatalError, the message, the line and\n"
    "        the column (-1 when the failure came before the text was read, such as an\n"
    "        unknown encoding).\n"
    "\n"
    "format  loads FILE into a document and writes it to stdout in UTF-8 without byte order\n"
    "        mark: indented by default (CR LF line ends, two blanks per level, text left as\n"
    "        it is), on one line with --compact. Nothing is added behind the document's last\n"
    "        character. A declaration that names another encoding is changed to say UTF-8.\n"
    "        The file's byte order mark, else its declaration, tells its encoding (UTF-8\n"
    "        without either). JSON input and --json aren't supported yet.\n"
    "\n"
    "exit status: 0 success, 1 the input failed (message on stderr), 2 misuse\n";

constexpr char Hex[] = "0123456789ABCDEF";

void AppendEscapedUnit(std::string& AOut, char16_t AUnit) {
  AOut += "\\u";
  for (int Shift = 12; Shift >= 0; Shift -= 4)
    AOut += Hex[(AUnit >> Shift) & 0xF];
}

/// AText as a JSON string literal, by the rule the usage text states. Runs that need no escape go
/// through the library's UTF-8 conversion whole.
std::string JSONString(std::u16string_view AText) {
  std::string Out = "\"";
  std::size_t RunStart = 0;
  for (std::size_t I = 0; I < AText.size(); ++I) {
    const char16_t Unit = AText[I];
    if (Unit >= 0xD800 && Unit <= 0xDBFF && I + 1 < AText.size() && AText[I + 1] >= 0xDC00 &&
        AText[I + 1] <= 0xDFFF) {
      ++I;
      continue;
    }
    const bool Quoted = Unit == u'"' || Unit == u'\\';
    if (!Quoted && Unit >= 0x20 && (Unit < 0xD800 || Unit > 0xDFFF))
      continue;
    Out += StringToUTF8(AText.substr(RunStart, I - RunStart));
    if (Quoted) {
      Out += '\\';
      Out += static_cast<char>(Unit);
    } else {
      AppendEscapedUnit(Out, Unit);
    }
    RunStart = I + 1;
  }
  Out += StringToUTF8(AText.substr(RunStart));
  Out += '"';
  return Out;
}

/// Prints every event it receives to stdout, one line each.
class TEventPrinter : public TLxObject,
                      public ILxSAXContentHandler,
                      public ILxSAXLexicalHandler,
                      public ILxSAXErrorHandler {
  LX_CLASS(TEventPrinter, TLxObject)
  TEventPrinter() { SetAutoDestroy(false); }

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override {
    if (AIID == ILxSAXContentHandler::IID)
      *AObj = static_cast<ILxSAXContentHandler*>(this);
    else if (AIID == ILxSAXLexicalHandler::IID)
      *AObj = static_cast<ILxSAXLexicalHandler*>(this);
    else if (AIID == ILxSAXErrorHandler::IID)
      *AObj = static_cast<ILxSAXErrorHandler*>(this);
    else
      return TLxObject::QueryInterface(AIID, AObj);
    _AddRef();
    return S_OK;
  }

  /// Whether the reader reported a failure (and the FatalError line is out).
  bool Failed = false;

  void PrintFatalError(const LxXMLString& AMessage, Integer ALine, Integer AColumn) {
    Print("FatalError", {AMessage}, LineAndColumn(ALine, AColumn));
    Failed = true;
  }

  // The readers never call SetDocumentLocator, SkippedEntity, StartEntity, EndEntity, Warning or
  // Error; were one to, it would print like the others.
  void SetDocumentLocator(ILxSAXLocator*) override { Print("SetDocumentLocator", {}); }
  void Characters(const LxXMLString& AText) override { Print("Characters", {AText}); }
  void EndDocument() override { Print("EndDocument", {}); }
  void EndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                  const LxXMLString& AQName) override {
    Print("EndElement", {AURI, ALocalName, AQName});
  }
  void EndPrefixMapping(const LxXMLString& APrefix) override {
    Print("EndPrefixMapping", {APrefix});
  }
  void IgnorableWhitespace(const LxXMLString& AText) override {
    Print("IgnorableWhitespace", {AText});
  }
  void ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) override {
    Print("ProcessingInstruction", {ATarget, AData});
  }
  void SkippedEntity(const LxXMLString& AName) override { Print("SkippedEntity", {AName}); }
  void StartDocument() override { Print("StartDocument", {}); }
  void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName, ILxSAXAttributes* AAttributes) override {
    std::string Attributes = "\t[";
    for (PLxSAXXMAttribute A = AAttributes->FirstAttribute(); A; A = A->Next) {
      if (A != AAttributes->FirstAttribute())
        Attributes += ',';
      Attributes += '[';
      Attributes += JSONString(A->QName);
      Attributes += ',';
      Attributes += JSONString(A->URI);
      Attributes += ',';
      Attributes += JSONString(A->Value);
      Attributes += ']';
    }
    Attributes += ']';
    Print("StartElement", {AURI, ALocalName, AQName}, Attributes);
  }
  void StartPrefixMapping(const LxXMLString& APrefix, const LxXMLString& AURI) override {
    Print("StartPrefixMapping", {APrefix, AURI});
  }
  void Comment(const LxXMLString& AText) override { Print("Comment", {AText}); }
  void StartCDATA() override { Print("StartCDATA", {}); }
  void StartDTD() override { Print("StartDTD", {}); }
  void StartEntity(const LxXMLString& AName) override { Print("StartEntity", {AName}); }
  void EndCDATA() override { Print("EndCDATA", {}); }
  void EndDTD() override { Print("EndDTD", {}); }
  void EndEntity(const LxXMLString& AName) override { Print("EndEntity", {AName}); }
  void Warning(ILxSAXLocator* ALocator, const LxXMLString& AMessage) override {
    Print("Warning", {AMessage}, LineAndColumn(ALocator->GetLineNr(), ALocator->GetColNr()));
  }
  void Error(ILxSAXLocator* ALocator, const LxXMLString& AMessage) override {
    Print("Error", {AMessage}, LineAndColumn(ALocator->GetLineNr(), ALocator->GetColNr()));
  }
  void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AMessage) override {
    PrintFatalError(AMessage, ALocator->GetLineNr(), ALocator->GetColNr());
  }

protected:
  ~TEventPrinter() override = default;

private:
  static std::string LineAndColumn(Integer ALine, Integer AColumn) {
    std::string Tail = "\t";
    Tail += std::to_string(ALine);
    Tail += '\t';
    Tail += std::to_string(AColumn);
    return Tail;
  }
  static void Print(const char* AName, std::initializer_list<std::u16string_view> AStrings,
                    const std::string& ATail = std::string()) {
    std::string Line = AName;
    for (std::u16string_view S : AStrings) {
      Line += '\t';
      Line += JSONString(S);
    }
    Line += ATail;
    Line += '\n';
    std::fwrite(Line.data(), 1, Line.size(), stdout);
  }
};

/// The first byte above U+0020 behind a byte order mark, or -1 when there is none.
int FirstSignificantByte(const TFileName& AFileName) {
  TOwned<TFileStream> Stream(New<TFileStream>(AFileName, fmOpenRead | fmShareDenyWrite));
  LxGetCodePage(Stream.get());
  Byte Block[4096];
  for (;;) {
    const Int64 Count = Stream->Read(Block, sizeof Block);
    if (Count <= 0)
      return -1;
    for (Int64 I = 0; I < Count; ++I)
      if (Block[I] > 0x20)
        return Block[I];
  }
}

int Fail(const std::string& AMessage) {
  std::fflush(stdout);
  std::fprintf(stderr, "lxtool: %s\n", AMessage.c_str());
  return 1;
}

int RunEvents(const std::string& AFileName) {
  const TFileName FileName = UTF8ToString(AFileName);
  try {
    if (FirstSignificantByte(FileName) != '<')
      return Fail("JSON input is not supported yet");
  } catch (const Exception& E) {
    return Fail(StringToUTF8(E.Message()));
  }

  TOwned<TEventPrinter> Printer(New<TEventPrinter>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  Reader->SetContentHandler(Printer.get());
  Reader->SetLexicalHandler(Printer.get());
  Reader->SetErrorHandler(Printer.get());
  try {
    Reader->ParseFile(FileName, fmOpenRead | fmShareDenyWrite);
  } catch (const Exception& E) {
    // A failure before the parse loop (the file gone meanwhile, an unknown encoding) doesn't
    // reach the error handler.
    if (!Printer->Failed)
      Printer->PrintFatalError(E.Message(), Reader->GetLineNr(), Reader->GetColNr());
    return Fail(StringToUTF8(E.Message()));
  }
  std::fflush(stdout);
  return 0;
}

/// The output is UTF-8, so a declaration that names another encoding would lie about it.
void DeclareUTF8(TLxDOMDocument* ADocument) {
  const TLxDOMProcessingInstruction* Declaration = ADocument->FindProcessingInstruction(u"xml");
  if (!Declaration)
    return;
  bool NamesUTF8 = false;
  try {
    // A load doesn't read the declared name into the document; setting the declaration's own
    // data again does. Behind a byte order mark the name wasn't needed, and may be unknown.
    ADocument->SetProcessingInstruction(u"xml", UnicodeString(Declaration->GetData()));
    NamesUTF8 = LxCodePage(ADocument->GetEncoding()) == 65001;
  } catch (const EEncodingError&) {
    NamesUTF8 = false; // a name that isn't known
  }
  if (!NamesUTF8)
    ADocument->SetEncoding(u"UTF-8");
}

int RunFormat(const std::string& AFileName, bool AFormatted) {
  TOwned<TMemoryStream> Output(New<TMemoryStream>());
  try {
    TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
    {
      TOwned<TFileStream> Input(
          New<TFileStream>(UTF8ToString(AFileName), fmOpenRead | fmShareDenyWrite));
      Document->LoadFromStream(Input.get());
    }
    DeclareUTF8(Document.get());
    // Into memory first: the writer reads back what it wrote, and a failure leaves stdout empty.
    Document->SaveToStream(Output.get(), 65001, AFormatted, /*AWriteBOM=*/false);
  } catch (const Exception& E) {
    return Fail(StringToUTF8(E.Message()));
  }
  std::fwrite(Output->Memory(), 1, static_cast<std::size_t>(Output->GetSize()), stdout);
  std::fflush(stdout);
  return 0;
}

int Misuse(const char* AMessage = nullptr) {
  if (AMessage)
    std::fprintf(stderr, "lxtool: %s\n", AMessage);
  std::fputs(Usage, stderr);
  return 2;
}

/// `format [--compact] FILE`, the option before or behind the file; AArgs follow the command.
int Format(const std::vector<std::string_view>& AArgs) {
  bool Compact = false;
  std::string_view FileName;
  for (std::string_view Arg : AArgs) {
    if (Arg == "--compact")
      Compact = true;
    else if (Arg == "--json")
      return Misuse("format --json is not supported yet");
    else if (Arg.starts_with("--") || !FileName.empty())
      return Misuse();
    else
      FileName = Arg;
  }
  if (FileName.empty())
    return Misuse();
  return RunFormat(std::string(FileName), !Compact);
}

} // namespace

int main(int argc, char** argv) {
  const std::string_view Command = argc > 1 ? argv[1] : "";
  if (argc == 2 && (Command == "--help" || Command == "-h" || Command == "help")) {
    std::fputs(Usage, stdout);
    return 0;
  }
  try {
    if (argc == 3 && Command == "events")
      return RunEvents(argv[2]);
    if (Command == "format")
      return Format(std::vector<std::string_view>(argv + 2, argv + argc));
    return Misuse();
  } catch (const std::exception& E) {
    return Fail(E.what());
  }
}
