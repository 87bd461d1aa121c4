// Documents: root element, prolog and encoding, loading with encoding detection, saving.
#include "lorvane/dom/LxDOMDocument.h"

#include "lorvane/core/LxEncoding.h"
#include "lorvane/core/LxStreams.h"
#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/sax/LxSAXParser.h"

namespace lorvane {

namespace {

/// The name in double quotes behind "encoding" in a declaration's text, trimmed; empty when the
/// text names none. ALowerText is the text in lower case.
UnicodeString EncodingNameIn(const UnicodeString& ALowerText) {
  const auto Word = ALowerText.find(u"encoding");
  if (Word == UnicodeString::npos)
    return {};
  const auto Open = ALowerText.find(u'"', Word);
  if (Open == UnicodeString::npos)
    return {};
  auto Close = ALowerText.find(u'"', Open + 1);
  if (Close == UnicodeString::npos)
    Close = ALowerText.size();
  return Trim(ALowerText.substr(Open + 1, Close - Open - 1));
}

/// Position of ANeedle in AText without regard to ASCII case; npos when absent.
std::size_t FindIgnoringCase(const UnicodeString& AText, const UnicodeString& ANeedle) {
  const UnicodeString Lower = LowerCase(AText), Needle = LowerCase(ANeedle);
  return Lower.find(Needle);
}

struct TLoadingState {
  TLxDOMLoadState& State;
  explicit TLoadingState(TLxDOMLoadState& AState) : State(AState) { State = lsLoading; }
  ~TLoadingState() { State = lsLoaded; }
};

} // namespace

TLxDOMDocument::TLxDOMDocument()
    : FCollation(DefaultXPathCollation), FSelectMatchOption(DefaultSelectMatchOption),
      FSelectCheckOption(DefaultSelectCheckOption) {
  FNodeType = ntDocument;
  FName = TLxDOMName::Make({}, u"#document");
  FDOMDocument = this;
}

TLxDOMDocument* TLxDOMDocument::CreateFromFile(const TFileName& AFilename, Word AMode) {
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  Document->LoadFromFile(AFilename, AMode);
  return Document.release();
}

TLxDOMDocument* TLxDOMDocument::CreateFromXML(const UnicodeString& AXML) {
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  Document->LoadFromXML(AXML);
  return Document.release();
}

TLxDOMDocument* TLxDOMDocument::CreateFromStream(TStream* AStream, Word AStreamCodePage) {
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  Document->LoadFromStream(AStream, AStreamCodePage);
  return Document.release();
}

TLxDOMDocument* TLxDOMDocument::CreateFromJSON(const UnicodeString& AJSON) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(std::u16string_view(AJSON)));
  return CreateFromStream(Stream.get(), Stream->GetCodePage());
}

TLxDOMObjectImpl* TLxDOMDocument::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMDocumentImpl>(static_cast<TLxDOMDocument*>(ADOMObject));
}

bool TLxDOMDocument::GetCaseSensitive() {
  return FCollation != TLxXPathCollationASCIICI::StaticClass();
}

void TLxDOMDocument::SetCaseSensitive(bool Value) {
  if (!Value)
    FCollation = TLxXPathCollationASCIICI::StaticClass();
  else if (FCollation == TLxXPathCollationASCIICI::StaticClass())
    FCollation = TLxXPathCollationCodepoint::StaticClass();
}

// --- root element -------------------------------------------------------------------------------

void TLxDOMDocument::Clear() {
  TEditHold Hold(this); // a held root's pin may be all that keeps the document
  inherited::Clear();
  FRootNode = nullptr;
}

TLxDOMNode* TLxDOMDocument::AppendChild(TLxDOMNode* newChild) {
  inherited::AppendChild(newChild);
  if (!FRootNode && newChild->GetNodeType() == ntElement)
    FRootNode = static_cast<TLxDOMElement*>(newChild);
  return newChild;
}

void TLxDOMDocument::UnlinkChild(TLxDOMNode* AChildNode) {
  inherited::UnlinkChild(AChildNode);
  if (AChildNode == FRootNode)
    FRootNode = nullptr;
}

TLxDOMNode* TLxDOMDocument::CreateClone() {
  throw ELxDomNotSupported(
      u"It is not possible to clone a TLxDOMDocument using the CloneNode method!");
}

TLxDOMElement* TLxDOMDocument::CreateRootNode(const UnicodeString& tagName) {
  if (FRootNode)
    throw ELxDomException(u"This DOM document already contains a rootnode!");
  TOwned<TLxDOMElement> Root(New<TLxDOMElement>());
  Root->SetQualifiedName(tagName);
  AppendChild(Root.get());
  return Root.release();
}

TLxDOMElement* TLxDOMDocument::CreateRootNode(std::u16string_view ANamespaceURI,
                                              std::u16string_view AQualifiedName) {
  TLxDOMElement* Root = CreateRootNode(UnicodeString(AQualifiedName));
  const UnicodeString& Prefix = Root->GetPrefix();
  Root->SetAttribute(Prefix.empty() ? UnicodeString(u"xmlns") : u"xmlns:" + Prefix,
                     UnicodeString(ANamespaceURI));
  return Root;
}

TLxDOMComment* TLxDOMDocument::AddComment(const UnicodeString& AComment) {
  TOwned<TLxDOMComment> Comment(New<TLxDOMComment>());
  AppendChild(Comment.get());
  TLxDOMComment* Result = Comment.release();
  Result->SetNodeValue(AComment);
  return Result;
}

// --- loading ------------------------------------------------------------------------------------

void TLxDOMDocument::LoadInState(TStream* AStream, Word AStreamCodePage) {
  {
    TLoadingState Loading(FLoadState);
    TLxDOMNode::LoadFromStream(AStream, AStreamCodePage);
  }
  DoXMLLoaded();
}

void TLxDOMDocument::LoadFromStream(TStream* AStream) {
  {
    TLoadingState Loading(FLoadState);
    Word CodePage = LxGetCodePage(AStream);
    const char16_t First = PeekFirstSignificantChar(AStream, CodePage);
    const Int64 Start = AStream->GetPosition();
    if (CodePage == 0 && First == u'<') {
      CodePage = CP_UTF8;
      // The declaration decides: the text up to the first '>' (at most 1025 characters).
      UnicodeString Head;
      Byte Char = 0;
      while (Head.size() < 1025 && AStream->Read(&Char, 1) == 1) {
        Head += static_cast<char16_t>(Char);
        if (Char == '>')
          break;
      }
      const UnicodeString Name = EncodingNameIn(LowerCase(Head));
      if (!Name.empty())
        CodePage = LxCodePage(Name);
      AStream->SetPosition(Start);
    } else if (CodePage == 0) {
      CodePage = CP_UTF8;
    }
    TLxDOMNode::LoadFromStream(AStream, CodePage);
  }
  DoXMLLoaded();
}

void TLxDOMDocument::LoadFromStream(TStream* AStream, Word AStreamCodePage) {
  TLxDOMNode::LoadFromStream(AStream, AStreamCodePage);
  DoXMLLoaded();
}

void TLxDOMDocument::LoadFromXML(const WideString& AXML) {
  Clear();
  if (AXML.empty())
    return;
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(std::u16string_view(AXML)));
  LoadInState(Stream.get(), CP_UTF16LE);
}

void TLxDOMDocument::LoadFromXML(const AnsiString& AXML) {
  Clear();
  if (AXML.empty())
    return;
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(std::string_view(AXML), 0));
  LoadInState(Stream.get(), 0);
}

void TLxDOMDocument::LoadXML(const UnicodeString& AFilename, Word Mode) {
  TOwned<TFileStream> Stream(New<TFileStream>(AFilename, Mode));
  LoadFromStream(Stream.get());
}

void TLxDOMDocument::LoadFromFile(const TFileName& AFilename, Word AMode) {
  LoadXML(AFilename, AMode);
  FDocumentURI = AFilename;
}

// --- saving -------------------------------------------------------------------------------------

void TLxDOMDocument::SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted,
                                  bool AWriteBOM) {
  if (AWriteBOM && AStreamCodePage == CP_UTF16LE)
    AStream->WriteBuffer("\xFF\xFE", 2);
  else if (AWriteBOM && AStreamCodePage == CP_UTF8)
    AStream->WriteBuffer("\xEF\xBB\xBF", 3);
  TLxDOMNode::SaveToStream(AStream, AStreamCodePage, AFormatted);
}

void TLxDOMDocument::SaveToStreamInEncoding(TStream* AStream, bool AFormatted, bool AWriteBOM) {
  SaveToStream(AStream, LxCodePage(GetEncoding()), AFormatted, AWriteBOM);
}

void TLxDOMDocument::SaveToFile(const TFileName& AFilename, bool AFormatted, bool AWriteBOM) {
  TOwned<TFileStream> Stream(New<TFileStream>(AFilename, fmCreate));
  SaveToStreamInEncoding(Stream.get(), AFormatted, AWriteBOM);
}

// --- prolog and encoding ------------------------------------------------------------------------

TLxDOMProcessingInstruction*
TLxDOMDocument::FindProcessingInstruction(const UnicodeString& target) {
  if (TLxDOMNodeList* Children = ChildList())
    for (TLxDOMNode* Child : *Children)
      if (Child->GetNodeType() == ntProcessingInstruction &&
          SameText(Child->GetQualifiedName(), target))
        return static_cast<TLxDOMProcessingInstruction*>(Child);
  return nullptr;
}

UnicodeString TLxDOMDocument::GetProcessingInstruction(const UnicodeString& target) {
  if (TLxDOMProcessingInstruction* Instruction = FindProcessingInstruction(target))
    return Instruction->GetData();
  throw ELxDomNotFound(u"There is no processinginstruction \"%s\"!", {target});
}

void TLxDOMDocument::SetProcessingInstruction(const UnicodeString& target,
                                              const UnicodeString& Value) {
  TLxDOMProcessingInstruction* Instruction = FindProcessingInstruction(target);
  const bool IsDeclaration = SameText(target, u"xml");
  if (!Instruction) {
    TOwned<TLxDOMProcessingInstruction> Made(New<TLxDOMProcessingInstruction>());
    Made->SetQualifiedName(target);
    TLxDOMProcessingInstruction* Declaration =
        IsDeclaration ? nullptr : FindProcessingInstruction(u"xml");
    if (Declaration)
      AddChild(Made.get(), Declaration, ldpAfter);
    else
      AddChild(Made.get(), /*ARefNode=*/nullptr, ldpFirst);
    Instruction = Made.release();
  }
  Instruction->SetData(Value);
  if (IsDeclaration)
    ReCalcEncoding();
}

void TLxDOMDocument::ReCalcEncoding() {
  FEncoding = u"UTF-8";
  TLxDOMProcessingInstruction* Declaration = FindProcessingInstruction(u"xml");
  if (!Declaration)
    return;
  const UnicodeString Name = EncodingNameIn(LowerCase(Declaration->GetData()));
  if (Name.empty())
    return;
  LxCodePage(Name); // an unknown name raises here
  FEncoding = Name;
}

UnicodeString TLxDOMDocument::GetEncoding() const {
  return FEncoding.empty() ? UnicodeString(u"UTF-8") : FEncoding;
}

void TLxDOMDocument::SetEncoding(const UnicodeString& Value) {
  if (Value.empty()) {
    FCodePage = CP_UTF8;
    FEncoding = u"UTF-8";
  } else {
    try {
      FCodePage = LxCodePage(Value);
    } catch (const Exception&) {
      throw ELxDomNotSupported(u"The specified encoding (%s) is not supported!", {Value});
    }
    FEncoding = Value;
  }
  TLxDOMProcessingInstruction* Declaration = FindProcessingInstruction(u"xml");
  if (!Declaration) {
    TOwned<TLxDOMProcessingInstruction> Made(New<TLxDOMProcessingInstruction>());
    Made->SetQualifiedName(u"xml");
    Made->SetData(Format(u"version=\"1.0\" encoding=\"%s\"", {FEncoding}));
    AddChild(Made.get(), /*ARefNode=*/nullptr, ldpFirst);
    Made.release();
    return;
  }
  const UnicodeString Data = Declaration->GetData();
  const UnicodeString Old = EncodingNameIn(LowerCase(Data));
  if (LowerCase(Data).find(u"encoding") == UnicodeString::npos) {
    Declaration->SetData(Trim(Data + u" " + Format(u"encoding=\"%s\"", {FEncoding})));
    return;
  }
  if (const auto At = Old.empty() ? UnicodeString::npos : FindIgnoringCase(Data, Old);
      At != UnicodeString::npos)
    Declaration->SetData(UnicodeString(Data).replace(At, Old.size(), FEncoding));
}

void TLxDOMDocument::SetCodePage(Word Value) {
  FCodePage = Value;
  FEncoding = LxCodePage(Value);
}

void TLxDOMDocument::SetUseSchemaInstance(bool Value) {
  FUseSchemaInstance = Value;
  if (!Value || !FRootNode)
    return;
  if (!FRootNode->FindNamespace(UnicodeString(cLxNsXSI)))
    FRootNode->SetAttribute(u"xmlns:xsi", UnicodeString(cLxNsXSI));
  if (!FRootNode->FindNamespace(UnicodeString(cLxNsXSD)))
    FRootNode->SetAttribute(u"xmlns:xsd", UnicodeString(cLxNsXSD));
}

// --- face ---------------------------------------------------------------------------------------

HRESULT TLxDOMDocumentImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMDocument>(this, AIID, AObj,
                                          [&] { return inherited::QueryInterface(AIID, AObj); });
}

void TLxDOMDocumentImpl::LoadFromStream(TStream*, Word) {
  throw ELxDomNotSupported(u"The LoadFromStream is not supported by the DOM Document. Use the "
                           u"LoadFromStreamEx instead.");
}
void TLxDOMDocumentImpl::SaveToStream(TStream*, Word, bool) {
  throw ELxDomNotSupported(
      u"The SaveToStream is not supported by the DOM Document. Use the SaveToStreamEx instead.");
}
IPtr<ILxDOMElement> TLxDOMDocumentImpl::GetRootNode() {
  return DOMInterface<ILxDOMElement>(DOMDocument()->GetRootNode());
}
UnicodeString TLxDOMDocumentImpl::GetProcessingInstruction(const UnicodeString& target) {
  return DOMDocument()->GetProcessingInstruction(target);
}
bool TLxDOMDocumentImpl::GetCaseSensitive() { return DOMDocument()->GetCaseSensitive(); }
TLxXPathCollationClass TLxDOMDocumentImpl::GetCollation() { return DOMDocument()->GetCollation(); }
TLxDOMSelectMatchOption TLxDOMDocumentImpl::GetSelectMatchOption() {
  return DOMDocument()->GetSelectMatchOption();
}
TLxDOMSelectCheckOption TLxDOMDocumentImpl::GetSelectCheckOption() {
  return DOMDocument()->GetSelectCheckOption();
}
bool TLxDOMDocumentImpl::GetUseSchemaInstance() { return DOMDocument()->GetUseSchemaInstance(); }
UnicodeString TLxDOMDocumentImpl::GetEncoding() { return DOMDocument()->GetEncoding(); }
Word TLxDOMDocumentImpl::GetCodePage() { return DOMDocument()->GetCodePage(); }
UnicodeString TLxDOMDocumentImpl::GetDocumentURI() { return DOMDocument()->GetDocumentURI(); }
void TLxDOMDocumentImpl::SetEncoding(const UnicodeString& Value) {
  DOMDocument()->SetEncoding(Value);
}
void TLxDOMDocumentImpl::SetCodePage(Word Value) { DOMDocument()->SetCodePage(Value); }
void TLxDOMDocumentImpl::SetProcessingInstruction(const UnicodeString& target,
                                                  const UnicodeString& Value) {
  DOMDocument()->SetProcessingInstruction(target, Value);
}
void TLxDOMDocumentImpl::SetCaseSensitive(bool Value) { DOMDocument()->SetCaseSensitive(Value); }
void TLxDOMDocumentImpl::SetCollation(TLxXPathCollationClass Value) {
  DOMDocument()->SetCollation(Value);
}
void TLxDOMDocumentImpl::SetSelectMatchOption(TLxDOMSelectMatchOption Value) {
  DOMDocument()->SetSelectMatchOption(Value);
}
void TLxDOMDocumentImpl::SetSelectCheckOption(TLxDOMSelectCheckOption Value) {
  DOMDocument()->SetSelectCheckOption(Value);
}
void TLxDOMDocumentImpl::SetUseSchemaInstance(bool Value) {
  DOMDocument()->SetUseSchemaInstance(Value);
}
void TLxDOMDocumentImpl::SetDocumentURI(const UnicodeString& Value) {
  DOMDocument()->SetDocumentURI(Value);
}
IPtr<ILxDOMElement> TLxDOMDocumentImpl::CreateRootNode(const UnicodeString& tagName) {
  return DOMInterface<ILxDOMElement>(DOMDocument()->CreateRootNode(tagName));
}
IPtr<ILxDOMElement> TLxDOMDocumentImpl::CreateRootNode(std::u16string_view ANamespaceURI,
                                                       std::u16string_view AQualifiedName) {
  return DOMInterface<ILxDOMElement>(DOMDocument()->CreateRootNode(ANamespaceURI, AQualifiedName));
}
IPtr<ILxDOMComment> TLxDOMDocumentImpl::AddComment(const UnicodeString& AComment) {
  return DOMInterface<ILxDOMComment>(DOMDocument()->AddComment(AComment));
}
void TLxDOMDocumentImpl::LoadXML(const UnicodeString& AXML) { DOMDocument()->LoadXML(AXML); }
void TLxDOMDocumentImpl::LoadXML(TStream* AStream) { DOMDocument()->LoadXML(AStream); }
void TLxDOMDocumentImpl::LoadXML(const UnicodeString& AFilename, Word Mode) {
  DOMDocument()->LoadXML(AFilename, Mode);
}
void TLxDOMDocumentImpl::LoadFromXML(const AnsiString& AXML) { DOMDocument()->LoadFromXML(AXML); }
void TLxDOMDocumentImpl::LoadFromXML(const WideString& AXML) { DOMDocument()->LoadFromXML(AXML); }
void TLxDOMDocumentImpl::LoadFromStreamEx(TStream* AStream) {
  DOMDocument()->LoadFromStream(AStream);
}
void TLxDOMDocumentImpl::SaveToStreamEx(TStream* AStream, bool AFormatted, bool AWriteBOM) {
  DOMDocument()->SaveToStreamInEncoding(AStream, AFormatted, AWriteBOM);
}
void TLxDOMDocumentImpl::LoadFromFile(const UnicodeString& AFilename, Word AMode) {
  DOMDocument()->LoadFromFile(AFilename, AMode);
}
void TLxDOMDocumentImpl::SaveToFile(const UnicodeString& AFilename, bool AFormatted,
                                    bool AWriteBOM) {
  DOMDocument()->SaveToFile(AFilename, AFormatted, AWriteBOM);
}

IPtr<ILxDOMDocument> LxCreateDOM(const UnicodeString& AXML) {
  TOwned<TLxDOMDocument> Document(TLxDOMDocument::CreateFromXML(AXML));
  IPtr<ILxDOMDocument> Result = DOMInterface<ILxDOMDocument>(Document.get());
  Document.release(); // owned by the interface now
  return Result;
}

} // namespace lorvane
