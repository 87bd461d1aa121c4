// lxtool: the command-line face of the library; `events` prints a reader's events, one a line,
// `format` writes a document back, indented or compact, and `query` prints what a path selects.
#include <lorvane/platform/CodePages.h>
#include <lorvane/uLxJSON.h>
#include <lorvane/uLxSAX.h>
#include <lorvane/uLxXMLDOM.h>
#include <lorvane/uLxXPath.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

using namespace lorvane;

namespace {

constexpr char Usage[] =
    "usage: lxtool events [--as-xml] FILE\n"
    "       lxtool format [--compact] [--json] [--as-xml] FILE\n"
    "       lxtool query [--options OPTION,...] FILE PATH\n"
    "\n"
    "events  reads FILE with the event reader of its format and prints one line per event:\n"
    "        the handler method's name, then each argument as a JSON value, separated by tabs.\n"
    "        StartElement's attributes are one array of [QName, URI, Value] triples.\n"
    "        Strings are JSON strings in UTF-8; '\"' and '\\' are escaped with a backslash,\n"
    "        U+0000..U+001F and lone surrogates as \\uXXXX (upper-case hex), nothing else.\n"
    "        A JSON value's type is its TLxJSONDataType name (\"jdtString\"); JSON names and\n"
    "        values are shown raw, as the reader delivers them, escapes still in them.\n"
    "        The first character above U+0020, behind a byte order mark, decides the format:\n"
    "        '<' is XML, anything else (an empty file too) JSON.\n"
    "        When the text fails, the last line is FatalError, the message, the line and\n"
    "        the column as the reader's locator gives them (-1 when the failure came before\n"
    "        the text was read, such as an unknown encoding, or at the end of a JSON text).\n"
    "        --as-xml reads JSON as an XML consumer sees it: the XML events of a root element\n"
    "        \"object\" or \"array\" with members as elements (line and column 0 when the text\n"
    "        ends inside an object or array); XML is read as without it.\n"
    "\n"
    "format  loads FILE into a document and writes it to stdout in UTF-8 without byte order\n"
    "        mark: indented by default (CR LF line ends, two blanks per level, text left as\n"
    "        it is), on one line with --compact. Nothing is added behind the document's last\n"
    "        character. A declaration that names another encoding, in either kind of quotes,\n"
    "        is changed to say encoding=\"UTF-8\".\n"
    "        The file's byte order mark, else its declaration (in either kind of quotes),\n"
    "        tells its encoding (UTF-8 without either). JSON goes into a JSON document and\n"
    "        out as JSON text: indented by default (CR LF line ends, two blanks per level), on\n"
    "        one line with --compact.\n"
    "        Strings are written with the document's escapes; a member name is kept as read,\n"
    "        escapes and all, so a backslash in it is escaped again. The top of the text must\n"
    "        be an object or array. --json is accepted for JSON input only: XML as JSON\n"
    "        isn't supported yet. --as-xml loads JSON into an XML document, as the document\n"
    "        loader does, and writes that as XML; XML is written as without it.\n"
    "\n"
    "query   loads FILE into a document and prints what PATH selects from it, in the order\n"
    "        selected. An XML FILE (first significant character '<') takes a node path from\n"
    "        the document node (CreateNodeList), one line per node: its node type\n"
    "        (\"Element\", \"Attribute\", \"Text\"...), its qualified name and its value, each\n"
    "        as a JSON string, separated by tabs. A JSON FILE takes a JSON path (\"$.a[0]\")\n"
    "        from the document, one line per selected value, written as compact JSON in\n"
    "        UTF-8 (null for the missing root of an empty document). --options takes select\n"
    "        options by their names, comma-separated: soCaseSensitive, soCaseInsensitive,\n"
    "        soLocalName, soQualifiedName, soRaise for XML; jsoRaise, jsoCaseInsensitive\n"
    "        for JSON (the other kind's names are accepted and have no effect). A path that\n"
    "        fails prints nothing and exits 1 with the message.\n"
    "\n"
    "exit status: 0 success, 1 the input failed (message on stderr), 2 misuse\n";

std::string LineAndColumn(Integer ALine, Integer AColumn) {
  std::string Tail = "\t";
  Tail += std::to_string(ALine);
  Tail += '\t';
  Tail += std::to_string(AColumn);
  return Tail;
}

/// One event line: the name, each string as a JSON string, then ATail (already tab-led).
void Print(const char* AName, std::initializer_list<std::u16string_view> AStrings,
           const std::string& ATail = std::string()) {
  std::string Line = AName;
  for (std::u16string_view S : AStrings) {
    Line += '\t';
    Line += LxStrToJSONLiteral(S);
  }
  Line += ATail;
  Line += '\n';
  std::fwrite(Line.data(), 1, Line.size(), stdout);
}

/// Prints every XML event it receives to stdout, one line each.
class TEventPrinter : public TLxSAXDefaultHandler {
  LX_CLASS(TEventPrinter, TLxSAXDefaultHandler)
  TEventPrinter() { SetAutoDestroy(false); }

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
      Attributes += LxStrToJSONLiteral(A->QName);
      Attributes += ',';
      Attributes += LxStrToJSONLiteral(A->URI);
      Attributes += ',';
      Attributes += LxStrToJSONLiteral(A->Value);
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
};

/// Prints every JSON event it receives to stdout, one line each.
class TJSONEventPrinter : public TLxJSONDefaultHandler {
  LX_CLASS(TJSONEventPrinter, TLxJSONDefaultHandler)
  TJSONEventPrinter() { SetAutoDestroy(false); }

  /// Whether the reader reported a failure (and the FatalError line is out).
  bool Failed = false;

  void PrintFatalError(const LxJSONString& AMessage, Integer ALine, Integer AColumn) {
    Print("FatalError", {AMessage}, LineAndColumn(ALine, AColumn));
    Failed = true;
  }

  // The reader never calls SetDocumentLocator, Warning or Error; were it to, they would print
  // like the others.
  void SetDocumentLocator(ILxJSONLocator*) override { Print("SetDocumentLocator", {}); }
  void StartDocument() override { Print("StartDocument", {}); }
  void StartObject() override { Print("StartObject", {}); }
  void StartMember(const LxJSONString& AName) override { Print("StartMember", {AName}); }
  void StartArray() override { Print("StartArray", {}); }
  void Value(TLxJSONDataType AValueType, const LxJSONString& AValue) override {
    Print("Value", {TypeName(AValueType), AValue});
  }
  void EndArray() override { Print("EndArray", {}); }
  void EndMember() override { Print("EndMember", {}); }
  void EndObject() override { Print("EndObject", {}); }
  void EndDocument() override { Print("EndDocument", {}); }
  void Warning(ILxJSONLocator* ALocator, const LxJSONString& AMessage) override {
    Print("Warning", {AMessage}, LineAndColumn(ALocator->GetLineNr(), ALocator->GetColNr()));
  }
  void Error(ILxJSONLocator* ALocator, const LxJSONString& AMessage) override {
    Print("Error", {AMessage}, LineAndColumn(ALocator->GetLineNr(), ALocator->GetColNr()));
  }
  void FatalError(ILxJSONLocator* ALocator, const LxJSONString& AMessage) override {
    PrintFatalError(AMessage, ALocator->GetLineNr(), ALocator->GetColNr());
  }

protected:
  ~TJSONEventPrinter() override = default;

private:
  static std::u16string_view TypeName(TLxJSONDataType AType) {
    static constexpr std::u16string_view Names[] = {u"jdtNull",    u"jdtString", u"jdtNumber",
                                                    u"jdtBoolean", u"jdtObject", u"jdtArray"};
    return AType < std::size(Names) ? Names[AType] : u"?";
  }
};

/// Whether the file holds XML, by the library's decision between the formats: the first
/// character above U+0020 behind a byte order mark is '<'.
bool IsXMLFile(const TFileName& AFileName) {
  TOwned<TFileStream> Stream(New<TFileStream>(AFileName, fmOpenRead | fmShareDenyWrite));
  const Word CodePage = LxGetCodePage(Stream.get());
  return PeekFirstSignificantChar(Stream.get(), CodePage) == u'<';
}

int Fail(const std::string& AMessage) {
  std::fflush(stdout);
  std::fprintf(stderr, "lxtool: %s\n", AMessage.c_str());
  return 1;
}

/// Reads the file with AReader into APrinter; on failure the FatalError line is the last one.
template <class TReader, class TPrinter>
int PrintEvents(TReader* AReader, TPrinter* APrinter, const TFileName& AFileName) {
  try {
    AReader->ParseFile(AFileName, fmOpenRead | fmShareDenyWrite);
  } catch (const Exception& E) {
    // A failure before the parse loop (the file gone meanwhile, an unknown encoding) doesn't
    // reach the error handler.
    if (!APrinter->Failed)
      APrinter->PrintFatalError(E.Message(), AReader->GetLineNr(), AReader->GetColNr());
    return Fail(StringToUTF8(E.Message()));
  }
  std::fflush(stdout);
  return 0;
}

/// JSON as an XML consumer sees it: the file's byte order mark names its encoding, as the event
/// component's ParseFile takes it.
int PrintJSONAsXMLEvents(const TFileName& AFileName) {
  TOwned<TEventPrinter> Printer(New<TEventPrinter>());
  TOwned<TLxSAXJSONReader> Reader(New<TLxSAXJSONReader>());
  Reader->SetContentHandler(Printer.get());
  Reader->SetErrorHandler(Printer.get());
  try {
    TOwned<TFileStream> Stream(New<TFileStream>(AFileName, fmOpenRead | fmShareDenyWrite));
    Reader->ParseStream(Stream.get(), LxGetCodePage(Stream.get()));
  } catch (const Exception& E) {
    if (!Printer->Failed)
      Printer->PrintFatalError(E.Message(), Reader->GetLineNr(), Reader->GetColNr());
    return Fail(StringToUTF8(E.Message()));
  }
  std::fflush(stdout);
  return 0;
}

int RunEvents(const std::string& AFileName, bool AAsXML) {
  const TFileName FileName = UTF8ToString(AFileName);
  bool IsXML = false;
  try {
    IsXML = IsXMLFile(FileName);
  } catch (const Exception& E) {
    return Fail(StringToUTF8(E.Message()));
  }

  if (!IsXML && AAsXML)
    return PrintJSONAsXMLEvents(FileName);
  if (!IsXML) {
    TOwned<TJSONEventPrinter> Printer(New<TJSONEventPrinter>());
    TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
    Reader->SetContentHandler(Printer.get());
    Reader->SetErrorHandler(Printer.get());
    return PrintEvents(Reader.get(), Printer.get(), FileName);
  }
  TOwned<TEventPrinter> Printer(New<TEventPrinter>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  Reader->SetContentHandler(Printer.get());
  Reader->SetLexicalHandler(Printer.get());
  Reader->SetErrorHandler(Printer.get());
  return PrintEvents(Reader.get(), Printer.get(), FileName);
}

/// The output is UTF-8, so a declaration that names another encoding would lie about it. The
/// name is read here in either kind of quotes, which the document's own reading of it (double
/// quotes only) doesn't see.
void DeclareUTF8(TLxDOMDocument* ADocument) {
  const TLxDOMProcessingInstruction* Declaration = ADocument->FindProcessingInstruction(u"xml");
  if (!Declaration)
    return;
  const UnicodeString Data(Declaration->GetData());
  const std::size_t Word = LowerCase(Data).find(u"encoding");
  if (Word == UnicodeString::npos)
    return; // no name: the text is UTF-8
  // encoding, blanks, '=', blanks, then the name in quotes; up to the end when it is cut short.
  std::size_t At = Word + 8;
  const auto SkipBlanks = [&] {
    while (At < Data.size() && Data[At] <= u' ')
      ++At;
  };
  SkipBlanks();
  if (At < Data.size() && Data[At] == u'=')
    ++At;
  SkipBlanks();
  std::size_t End = Data.size();
  if (At < Data.size() && (Data[At] == u'"' || Data[At] == u'\'')) {
    const std::size_t Close = Data.find(Data[At], At + 1);
    if (Close != UnicodeString::npos) {
      End = Close + 1;
      bool NamesUTF8 = false;
      try {
        NamesUTF8 = LxCodePage(Trim(Data.substr(At + 1, Close - At - 1))) == CP_UTF8;
      } catch (const EEncodingError&) {
        NamesUTF8 = false; // a name that isn't known
      }
      if (NamesUTF8)
        return;
    }
  }
  UnicodeString Fixed = Data.substr(0, Word) + u"encoding=\"UTF-8\"";
  if (End < Data.size())
    Fixed += Data.substr(End);
  ADocument->SetProcessingInstruction(u"xml", Fixed);
}

/// Writes the output collected in memory to stdout: a failure before leaves stdout empty.
int WriteOut(TMemoryStream* AOutput) {
  // An empty document writes nothing, and an empty stream has no memory to hand to fwrite.
  if (AOutput->GetSize() > 0)
    std::fwrite(AOutput->Memory(), 1, static_cast<std::size_t>(AOutput->GetSize()), stdout);
  std::fflush(stdout);
  return 0;
}

/// The code page that a declaration names in single quotes, which the document's detection
/// (double quotes only) passes over; 0 for a file with a byte order mark, without a declaration,
/// or with the name in double quotes. The stream is left where it stood.
Word SingleQuotedEncoding(TStream* AStream) {
  const Int64 Start = AStream->GetPosition();
  std::string Head;
  char Char = 0;
  while (Head.size() < 1025 && AStream->Read(&Char, 1) == 1) {
    Head += Char;
    if (Char == '>')
      break;
  }
  AStream->SetPosition(Start);
  const std::string Lower = StringToUTF8(LowerCase(UTF8ToString(Head)));
  if (Lower.rfind("<?xml", 0) != 0)
    return 0;
  const std::size_t Word = Lower.find("encoding");
  if (Word == std::string::npos)
    return 0;
  std::size_t At = Lower.find_first_not_of(" \t\r\n", Word + 8);
  if (At == std::string::npos || Lower[At] != '=')
    return 0;
  At = Lower.find_first_not_of(" \t\r\n", At + 1);
  if (At == std::string::npos || Lower[At] != '\'')
    return 0;
  const std::size_t Close = Lower.find('\'', At + 1);
  if (Close == std::string::npos)
    return 0;
  return LxCodePage(Trim(UTF8ToString(Head.substr(At + 1, Close - At - 1))));
}

/// Loads the file into an XML document, XML or JSON alike, and writes it as XML.
int RunFormatXML(const TFileName& AFileName, bool AFormatted) {
  TOwned<TMemoryStream> Output(New<TMemoryStream>());
  try {
    TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
    {
      TOwned<TFileStream> Input(New<TFileStream>(AFileName, fmOpenRead | fmShareDenyWrite));
      if (const Word Declared = SingleQuotedEncoding(Input.get()); Declared != 0)
        Document->LoadFromStream(Input.get(), Declared);
      else
        Document->LoadFromStream(Input.get());
    }
    DeclareUTF8(Document.get());
    // Into memory first: the writer reads back what it wrote.
    Document->SaveToStream(Output.get(), CP_UTF8, AFormatted, /*AWriteBOM=*/false);
  } catch (const Exception& E) {
    return Fail(StringToUTF8(E.Message()));
  }
  return WriteOut(Output.get());
}

int RunFormatJSON(const TFileName& AFileName, bool AFormatted) {
  TOwned<TMemoryStream> Output(New<TMemoryStream>());
  try {
    TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
    Document->LoadFromFile(AFileName);
    Document->SaveToStream(Output.get(), AFormatted, CP_UTF8, /*AWriteBOM=*/false);
  } catch (const Exception& E) {
    return Fail(StringToUTF8(E.Message()));
  }
  return WriteOut(Output.get());
}

int Misuse(const char* AMessage = nullptr) {
  if (AMessage)
    std::fprintf(stderr, "lxtool: %s\n", AMessage);
  std::fputs(Usage, stderr);
  return 2;
}

/// `format [--compact] [--json] [--as-xml] FILE`, the options before or behind the file; AArgs
/// follow the command.
int Format(const std::vector<std::string_view>& AArgs) {
  bool Compact = false, AsJSON = false, AsXML = false;
  std::string_view FileName;
  for (std::string_view Arg : AArgs) {
    if (Arg == "--compact")
      Compact = true;
    else if (Arg == "--json")
      AsJSON = true;
    else if (Arg == "--as-xml")
      AsXML = true;
    else if (Arg.starts_with("--") || !FileName.empty())
      return Misuse();
    else
      FileName = Arg;
  }
  if (FileName.empty())
    return Misuse();
  const TFileName Name = UTF8ToString(std::string(FileName));
  bool IsXML = false;
  try {
    IsXML = IsXMLFile(Name);
  } catch (const Exception& E) {
    return Fail(StringToUTF8(E.Message()));
  }
  if (AsJSON && AsXML)
    return Misuse("format takes --json or --as-xml, not both");
  if (!IsXML && !AsXML)
    return RunFormatJSON(Name, !Compact);
  if (AsJSON)
    return Misuse("format --json is not supported yet for XML input");
  // XML, or JSON that the document loader reads into an XML tree.
  return RunFormatXML(Name, !Compact);
}

/// The select option of that name, of the XML or the JSON kind; false for a name that is none.
bool SelectOptionByName(std::string_view AName, TLxDOMSelectOptions& AXML,
                        TLxJDOCSelectOptions& AJSON) {
  static constexpr struct {
    std::string_view Name;
    TLxDOMSelectOption Option;
  } XMLNames[] = {{"soRaise", soRaise},
                  {"soCaseSensitive", soCaseSensitive},
                  {"soCaseInsensitive", soCaseInsensitive},
                  {"soLocalName", soLocalName},
                  {"soQualifiedName", soQualifiedName}};
  static constexpr struct {
    std::string_view Name;
    TLxJDOCSelectOption Option;
  } JSONNames[] = {{"jsoRaise", jsoRaise}, {"jsoCaseInsensitive", jsoCaseInsensitive}};
  for (const auto& Entry : XMLNames)
    if (Entry.Name == AName) {
      AXML.Include(Entry.Option);
      return true;
    }
  for (const auto& Entry : JSONNames)
    if (Entry.Name == AName) {
      AJSON.Include(Entry.Option);
      return true;
    }
  return false;
}

/// Each node the path selects from the XML document: type, name and value as JSON strings.
std::string QueryXML(const TFileName& AFileName, const UnicodeString& APath,
                     TLxDOMSelectOptions AOptions) {
  std::string Out;
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  {
    TOwned<TFileStream> Input(New<TFileStream>(AFileName, fmOpenRead | fmShareDenyWrite));
    Document->LoadFromStream(Input.get());
  }
  TOwned<TLxDOMNodeList> Found(Document->CreateNodeList(APath, AOptions));
  for (TLxDOMNode* Node : *Found) {
    Out += LxStrToJSONLiteral(LxDOMNodeTypes[Node->GetNodeType()]);
    Out += '\t';
    Out += LxStrToJSONLiteral(Node->GetQualifiedName());
    Out += '\t';
    Out += LxStrToJSONLiteral(Node->GetNodeValue());
    Out += '\n';
  }
  return Out;
}

/// Each value the path selects from the JSON document, as compact JSON.
std::string QueryJSON(const TFileName& AFileName, const UnicodeString& APath,
                      TLxJDOCSelectOptions AOptions) {
  std::string Out;
  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  Document->LoadFromFile(AFileName);
  TOwned<TLxJSONArray> Found(Document->CreateNodeList(APath, AOptions));
  for (Integer I = 0; I < Found->Count(); ++I) {
    // "$" on a document without a root selects nothing there: null.
    TLxJSONBase* Value = Found->Item(I);
    Out += Value ? StringToUTF8(Value->GetAsJSON()) : std::string("null");
    Out += '\n';
  }
  return Out;
}

/// `query [--options A,B] FILE PATH`; AArgs follow the command.
int Query(const std::vector<std::string_view>& AArgs) {
  TLxDOMSelectOptions XMLOptions;
  TLxJDOCSelectOptions JSONOptions;
  std::vector<std::string_view> Positional;
  for (size_t I = 0; I < AArgs.size(); ++I) {
    if (AArgs[I] == "--options") {
      if (++I == AArgs.size())
        return Misuse();
      std::string_view List = AArgs[I];
      while (!List.empty()) {
        const size_t Comma = List.find(',');
        if (!SelectOptionByName(List.substr(0, Comma), XMLOptions, JSONOptions))
          return Misuse("unknown select option");
        List = Comma == std::string_view::npos ? std::string_view() : List.substr(Comma + 1);
      }
    } else if (AArgs[I].starts_with("--"))
      return Misuse();
    else
      Positional.push_back(AArgs[I]);
  }
  if (Positional.size() != 2)
    return Misuse();
  const TFileName Name = UTF8ToString(std::string(Positional[0]));
  const UnicodeString Path = UTF8ToString(std::string(Positional[1]));
  std::string Out;
  try {
    Out = IsXMLFile(Name) ? QueryXML(Name, Path, XMLOptions) : QueryJSON(Name, Path, JSONOptions);
  } catch (const Exception& E) {
    return Fail(StringToUTF8(E.Message()));
  }
  std::fwrite(Out.data(), 1, Out.size(), stdout);
  std::fflush(stdout);
  return 0;
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
      return RunEvents(argv[2], /*AAsXML=*/false);
    if (argc == 4 && Command == "events" && std::string_view(argv[2]) == "--as-xml")
      return RunEvents(argv[3], /*AAsXML=*/true);
    if (Command == "format")
      return Format(std::vector<std::string_view>(argv + 2, argv + argc));
    if (Command == "query")
      return Query(std::vector<std::string_view>(argv + 2, argv + argc));
    return Misuse();
  } catch (const std::exception& E) {
    return Fail(E.what());
  }
}
