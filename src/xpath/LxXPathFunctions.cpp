// The function and collation registries, the node functions, the boolean family, and the module's
// start-up registrations.
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/classes/LxVariants.h"
#include "lorvane/core/LxWellKnownNames.h"
#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/platform/Logging.h"
#include "lorvane/xpath/LxXPath.h"
#include "lorvane/xpath/LxXPathValueFunctions.h"
#include "xpath/LxXPathSelect.h"

namespace lorvane {

namespace {

struct TFunctionEntry {
  UnicodeString Name;
  TLxXPathFunctionClass Class;
};
struct TCollationEntry {
  UnicodeString Namespace;
  TLxXPathCollationClass Collation;
};

// Filled at start-up, read without a lock afterwards; looked up from the first entry, so the
// first registration of a name wins.
std::vector<TFunctionEntry>& Functions() {
  static std::vector<TFunctionEntry> List;
  return List;
}
std::vector<TCollationEntry>& Collations() {
  static std::vector<TCollationEntry> List;
  return List;
}

void RegisterXPathCollation(const UnicodeString& ACollationNS, TLxXPathCollationClass AClass) {
  EnsureLibraryStarted();
  Collations().push_back({ACollationNS, AClass});
}

} // namespace

void RegisterXPathFunction(const UnicodeString& AFunctionName,
                           TLxXPathFunctionClass AFunctionClass) {
  EnsureLibraryStarted();
  Functions().push_back({AFunctionName, AFunctionClass});
}

TLxXPathBaseTerm* CreateFunctionTerm(const UnicodeString& AFunctionName,
                                     TLxXPathEquation* AEquation, TLxXPathFilterParser& AParser) {
  EnsureLibraryStarted();
  for (const TFunctionEntry& Entry : Functions())
    if (Entry.Name == AFunctionName)
      return Entry.Class(AEquation, AParser);
  throw ELxDomSyntax(u"The filter contains an unsupported function (%s)!", {AFunctionName});
}

std::vector<UnicodeString> RegisteredXPathFunctionNames() {
  EnsureLibraryStarted();
  std::vector<UnicodeString> Names;
  for (const TFunctionEntry& Entry : Functions())
    Names.push_back(Entry.Name);
  return Names;
}

TLxXPathCollationClass FindXPathCollation(const UnicodeString& ACollationNS) {
  EnsureLibraryStarted();
  for (const TCollationEntry& Entry : Collations())
    if (Entry.Namespace == ACollationNS)
      return Entry.Collation;
  throw ELxDomSyntax(u"The collation \"%s\" is not supported!", {ACollationNS});
}

// --- ParseParams --------------------------------------------------------------------------------

void TLxXPathFunction::ParseParams(TLxXPathFilterParser& AParser) {
  FParams.clear();
  AParser.SkipBlanks();
  if (AParser.Curr() == u')') {
    AParser.Skip();
    return;
  }
  for (;;) {
    FParams.emplace_back(FEquation->ReadTerm(AParser));
    if (AParser.Curr() == u',')
      AParser.Skip();
    if (AParser.AtEnd() || AParser.Curr() == u')')
      break;
  }
  AParser.Skip();
}

void TLxXPathFnString::ParseParams(TLxXPathFilterParser& AParser) {
  AParser.SkipBlanks();
  if (AParser.Curr() == u'(')
    throw ELxXPathException(
        u"XPTY0004", u"The arg parameter of function \"fn:string(arg)\" may not be a sequence!",
        u"");
  if (AParser.Curr() == u'[')
    throw ELxXPathException(
        u"FOTY0014", u"The arg parameter of function \"fn:string(arg)\" may not be a map or array!",
        u"");
  TLxXPathFunction::ParseParams(AParser);
}

// --- node functions
// -------------------------------------------------------------------------------

namespace {

using TNodeArgument = TXPathNodeArgument;

[[noreturn]] void RaiseXPath(std::u16string_view ACode, std::u16string_view AFormat,
                             std::u16string_view AName) {
  throw ELxXPathException(UnicodeString(ACode), Format(AFormat, {UnicodeString(AName)}), u"");
}

} // namespace

TLxDOMNode* XPathNodeArgument(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList,
                              Integer AIndex, const TXPathNodeArgument& AWords, Variant* AValue) {
  if (AFunction.ParamCount() >= 2)
    throw ELxDomSyntax(UnicodeString(AWords.TooMany));
  if (AFunction.ParamCount() == 0)
    return ANodeList.at(AIndex);
  TLxXPathBaseTerm* Param = AFunction.Param(0);
  auto* Path = dynamic_cast<TLxXPathValueTerm*>(Param);
  if (!Path) {
    if (AWords.OtherTermIsValue && AValue) {
      *AValue = Param->Value(ANodeList, AIndex);
      return nullptr;
    }
    throw ELxXPathException(u"XPTY0004",
                            Format(u"The %s parameter of function \"%s\" must be a node!",
                                   {UnicodeString(AWords.Parameter), UnicodeString(AWords.Name)}),
                            u"");
  }
  const TLxXPathNodes Nodes = Path->Nodes(ANodeList, AIndex);
  if (Nodes.empty())
    RaiseXPath(u"XPDY0002", u"The node parameter of function \"%s\" may not be nil!", AWords.Name);
  if (Nodes.size() > 1)
    RaiseXPath(u"XPTY0004", u"The node parameter of function \"%s\" must be a single node!",
               AWords.Name);
  return Nodes.front();
}

namespace {

constexpr TNodeArgument NodeNameWords{
    u"fn:node-name(node)", u"node",
    u"The \"fn:node-name(node)\" function may only have 1 parameter!", false};
constexpr TNodeArgument NilledWords{u"fn:nilled(node)", u"node",
                                    u"The \"fn:nilled(node)\" function may only have 1 parameter!",
                                    false};
constexpr TNodeArgument StringWords{
    u"fn:string(arg)", u"arg",
    u"The \"fn:string(arg)\" function may contain 0 or 1 parameter, but not more!", true};
constexpr TNodeArgument DataWords{
    u"fn:data(arg)", u"arg",
    u"The \"fn:data(arg)\" function may contain 0 or 1 parameter, but not more!", true};
constexpr TNodeArgument BaseUriWords{
    u"fn:base-uri(arg)", u"arg",
    u"The \"fn:base-uri(arg)\" function may contain 0 or 1 parameter, but not more!", false};
constexpr TNodeArgument DocumentUriWords{
    u"fn:document-uri(arg)", u"arg",
    u"The \"fn:document-uri(arg)\" function may contain 0 or 1 parameter, but not more!", false};

bool IsDeclaration(TLxDOMNode* ANode) {
  return ANode->GetNodeType() == ntAttribute && static_cast<TLxDOMAttribute*>(ANode)->IsNamespace();
}

UnicodeString DocumentURI(TLxDOMNode* ANode) {
  const TLxDOMDocument* Document = ANode->GetDocument();
  return Document ? Document->GetDocumentURI() : UnicodeString();
}

Variant StringOf(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList, Integer AIndex,
                 const TNodeArgument& AWords) {
  Variant Value;
  if (TLxDOMNode* Node = XPathNodeArgument(AFunction, ANodeList, AIndex, AWords, &Value))
    return Variant(Node->GetNodeValue());
  return Variant(LxVarToStr(Value, u"", false));
}

/// What boolean(arg) makes of its one argument, by the kind of its term.
bool BooleanOf(TLxXPathFunction& AFunction) {
  if (AFunction.ParamCount() != 1)
    throw ELxDomSyntax(u"The \"fn:boolean(arg)\" function must have 1 parameter!");
  TLxXPathBaseTerm* Param = AFunction.Param(0);
  if (auto* List = dynamic_cast<TLxXPathListTerm*>(Param))
    return List->Count() > 0 && dynamic_cast<TLxXPathValueTerm*>(List->GetTerm(0)) != nullptr;
  if (auto* Constant = dynamic_cast<TLxXPathConstantTerm*>(Param)) {
    const Variant& Value = Constant->Constant();
    if (VarType(Value) == varBoolean)
      return Value.AsBoolean();
    if (VarIsStr(Value))
      return !Value.AsString().empty();
    if (VarIsOrdinal(Value))
      return Value.AsInt64() != 0;
    if (VarIsFloat(Value))
      return Value.AsDouble() != 0;
  }
  throw ELxXPathException(u"FORG0006", u"An invalid parameter was passed to fn:boolean(arg)", u"");
}

} // namespace

Variant TLxXPathFnText::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  TLxDOMNode* Node = ANodeList.at(AIndex);
  if (!Node->HasChilds())
    return false;
  for (TLxDOMNode* Child : *Node->ChildNodes())
    if (Child->GetNodeType() == ntText)
      return true;
  return false;
}

Variant TLxXPathFnNodeName::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  TLxDOMNode* Node = XPathNodeArgument(*this, ANodeList, AIndex, NodeNameWords, nullptr);
  if (IsDeclaration(Node))
    return Variant(static_cast<TLxDOMAttribute*>(Node)->NamespacePrefix());
  if (FEquation->MatchOption() == soQualifiedName)
    return Variant(Node->GetQualifiedName());
  return Variant(Node->GetLocalName());
}

Variant TLxXPathFnNilled::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  TLxDOMNode* Node = XPathNodeArgument(*this, ANodeList, AIndex, NilledWords, nullptr);
  if (Node->GetNodeType() != ntElement)
    return Null();
  auto* Element = static_cast<TLxDOMElement*>(Node);
  const TLxXPathCollationClass Collation = FEquation->Collation();
  TLxDOMAttribute* Nil;
  if (FEquation->MatchOption() == soQualifiedName)
    Nil = Element->FindAttribute(cLxNsXSI, std::u16string_view(u"nil"));
  else
    Nil = Element->FindAttribute(
        u"nil",
        {Collation == TLxXPathCollationASCIICI::StaticClass() ? soCaseInsensitive : soCaseSensitive,
         soLocalName});
  return Nil != nullptr && Collation->SameText(Nil->GetNodeValue(), u"true");
}

Variant TLxXPathFnString::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return StringOf(*this, ANodeList, AIndex, StringWords);
}

Variant TLxXPathFnData::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return StringOf(*this, ANodeList, AIndex, DataWords);
}

Variant TLxXPathFnBaseUri::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  TLxDOMNode* Node = XPathNodeArgument(*this, ANodeList, AIndex, BaseUriWords, nullptr);
  const UnicodeString URI = Node->GetNamespaceURI();
  return Variant(URI.empty() ? DocumentURI(Node) : URI);
}

Variant TLxXPathFnDocumentUri::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return Variant(
      DocumentURI(XPathNodeArgument(*this, ANodeList, AIndex, DocumentUriWords, nullptr)));
}

Variant TLxXPathFnError::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() > 3)
    throw ELxDomSyntax(u"The \"fn:error()\" function has a maximum of 3 parameters!");
  if (ParamCount() == 0)
    throw ELxXPathException(u"FOER0000", u"An exception was raised", u"");
  UnicodeString Texts[3];
  for (Integer I = 0; I < ParamCount(); ++I)
    Texts[I] = LxVarToStr(Param(I)->Value(ANodeList, AIndex), u"", false);
  throw ELxXPathException(Texts[0], Texts[1], Texts[2]);
}

Variant TLxXPathFnTrace::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() != 2)
    throw ELxDomSyntax(u"The \"fn:trace(value, label)\" function must contain 2 parameters!");
  const UnicodeString Label = LxVarToStr(Param(1)->Value(ANodeList, AIndex), u"", false);
  const Variant Result = Param(0)->Value(ANodeList, AIndex);
  const UnicodeString Text = LxVarToStr(Result, u"", false);
  GetLogger(u"XPath").Info(Text.empty() ? Label : Label + u"; value=" + Text);
  return Result;
}

Variant TLxXPathFnTrue::Value(const TLxXPathNodes&, Integer) { return true; }

Variant TLxXPathFnFalse::Value(const TLxXPathNodes&, Integer) { return false; }

Variant TLxXPathFnBoolean::Value(const TLxXPathNodes&, Integer) { return BooleanOf(*this); }

Variant TLxXPathFnNot::Value(const TLxXPathNodes&, Integer) { return !BooleanOf(*this); }

// --- start-up
// -------------------------------------------------------------------------------------

void LxXPathStartup() {
  RegisterXPathCollation(UnicodeString(cLxCollationAsciiCI),
                         TLxXPathCollationASCIICI::StaticClass());
  RegisterXPathCollation(UnicodeString(cLxCollationCodepoint),
                         TLxXPathCollationCodepoint::StaticClass());
  struct TEntry {
    std::u16string_view Name;
    TLxXPathFunctionClass Class;
  };
  static constexpr TEntry NodeFunctions[] = {
      {u"text", &XPathFunctionClass<TLxXPathFnText>},
      {u"node-name", &XPathFunctionClass<TLxXPathFnNodeName>},
      {u"nilled", &XPathFunctionClass<TLxXPathFnNilled>},
      {u"string", &XPathFunctionClass<TLxXPathFnString>},
      {u"data", &XPathFunctionClass<TLxXPathFnData>},
      {u"base-uri", &XPathFunctionClass<TLxXPathFnBaseUri>},
      {u"document-uri", &XPathFunctionClass<TLxXPathFnDocumentUri>},
      {u"error", &XPathFunctionClass<TLxXPathFnError>},
      {u"trace", &XPathFunctionClass<TLxXPathFnTrace>},
  };
  static constexpr TEntry BooleanFunctions[] = {
      {u"true", &XPathFunctionClass<TLxXPathFnTrue>},
      {u"false", &XPathFunctionClass<TLxXPathFnFalse>},
      {u"boolean", &XPathFunctionClass<TLxXPathFnBoolean>},
      {u"not", &XPathFunctionClass<TLxXPathFnNot>},
  };
  // The library's order of registration: node functions, numbers and texts, the boolean family,
  // then dates. An application that registers a name again never wins over these.
  for (const TEntry& Entry : NodeFunctions)
    RegisterXPathFunction(UnicodeString(Entry.Name), Entry.Class);
  RegisterXPathNumberAndStringFunctions();
  for (const TEntry& Entry : BooleanFunctions)
    RegisterXPathFunction(UnicodeString(Entry.Name), Entry.Class);
  RegisterXPathDateFunctions();
  RegisterXPathSelection();
}

} // namespace lorvane
