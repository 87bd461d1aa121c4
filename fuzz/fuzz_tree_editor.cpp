// Fuzz target of tree edits: a document (from the input, or one of a few built in) is edited by a
// sequence of operations that the input chooses, through data objects and through interfaces,
// while interfaces are taken and dropped at random points. Every edit must leave a tree whose
// parents and lists agree; at the end a document saves, reloads and saves to the same text, and
// no object outlives the input.
#include "lorvane/core/LxStreams.h"
#include "lorvane/uLxXMLDOM.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace lorvane {
namespace {

constexpr std::array<std::u16string_view, 8> BuiltInDocuments{
    u"<r xmlns:x=\"u\"><a/></r>",
    u"<r xmlns=\"u\"><a/><b>t</b></r>",
    u"<r xmlns:p=\"&#;\"><p:c/><d/></r>",
    u"<?xml version=\"1.0\"?><!--c--><p:r xmlns:p=\"urn:p\" xmlns=\"urn:d\" p:k=\"v\">"
    u"<a>one<![CDATA[<two>]]><!--three--><?pi four?></a><p:b xml:space=\"preserve\"> x "
    u"<c/></p:b></p:r>",
    u"<r><a><b/><c/></a><d xmlns:q=\"urn:q\"><q:e q:f=\"1\">text&amp;more</q:e></d></r>",
    u"<a:r xmlns:a=\"urn:a\"><a:s xmlns:a=\"urn:b\"><a:t/></a:s><u xmlns=\"\"/></a:r>",
    u"<r xml:space=\"preserve\"><a>x</a> <b>y</b><c xml:space=\"default\"><d/></c></r>",
    u"<r xmlns=\"urn:1\" xmlns:n=\"urn:2\"><n:a n:b=\"c\"><d><e/></d></n:a></r>",
};

constexpr std::array<std::u16string_view, 14> Names{
    u"a",       u"b",       u"p:a",       u"q:e", u"xmlns", u"xmlns:p", u"xmlns:q",
    u"p:xmlns", u"XMLNS:p", u"xml:space", u"x:y", u"n:b",   u"k",       u"p:k"};
constexpr std::array<std::u16string_view, 6> Prefixes{u"", u"p", u"q", u"xmlns", u"xml", u"x"};
constexpr std::array<std::u16string_view, 6> URIs{u"",      u"u",     u"urn:p",
                                                  u"urn:q", u"urn:a", u"a\"b&c"};
constexpr std::array<std::u16string_view, 5> Values{u"", u"v", u"preserve", u"x&y<z", u"default"};
constexpr std::array<std::u16string_view, 5> Texts{u"t", u"one&two", u"a<b", u"x\"y'z", u"]]"};
constexpr std::array<std::u16string_view, 7> Fragments{u"<x/>",
                                                       u"<p:x xmlns:p=\"urn:p\"><p:y/></p:x><z/>",
                                                       u"<x xmlns=\"u\">t<y xmlns:q=\"&#;\"/></x>",
                                                       u"<x xml:space=\"preserve\"> <y/> </x>",
                                                       u"<x><unclosed></x>",
                                                       u"not xml",
                                                       u""};

/// The documented failures of the edits; anything else (an EAssertionFailed among them) is a
/// finding and goes through.
template <class F> void Guarded(F&& AAction) {
  try {
    AAction();
  } catch (const Exception& E) {
    const std::type_info& Type = typeid(E);
    if (Type != typeid(Exception) && Type != typeid(ELxDomException) &&
        Type != typeid(ELxDomNotFound) && Type != typeid(ELxDomNotSupported) &&
        Type != typeid(ELxDomSyntax) && Type != typeid(EConvertError) &&
        Type != typeid(EListError) && Type != typeid(EInvalidCast) &&
        Type != typeid(ELxXMLParseError))
      throw;
  }
}

class TInput {
public:
  TInput(const uint8_t* AData, size_t ASize) : FData(AData), FSize(ASize) {}
  bool More() const { return FPos < FSize; }
  uint8_t Byte() { return FPos < FSize ? FData[FPos++] : 0; }
  template <class T, size_t N> const T& Pick(const std::array<T, N>& AItems) {
    return AItems[Byte() % N];
  }
  /// The text up to the next zero byte (or the end), one byte a character.
  UnicodeString Text() {
    UnicodeString Result;
    while (FPos < FSize && FData[FPos] != 0)
      Result += static_cast<char16_t>(FData[FPos++]);
    if (FPos < FSize)
      ++FPos;
    return Result;
  }

private:
  const uint8_t* FData;
  size_t FSize;
  size_t FPos = 0;
};

/// A finding: says which check failed, then stops as a crash would.
[[noreturn]] void Fail(const char* AWhat) {
  std::fprintf(stderr, "tree editor: %s\n", AWhat);
  std::abort();
}

TLxDOMNode* NodeOf(IInterface* AInterface) { return TLxDOMObjectImpl::Node(AInterface); }
IPtr<ILxDOMNode> Face(TLxDOMNode* ANode) { return DOMInterface<ILxDOMNode>(ANode); }

class TEditor {
public:
  explicit TEditor(TInput& AInput) : FIn(AInput) {}

  void Run() {
    const uint8_t First = FIn.Byte();
    if (First >= 0xF0)
      Load(0, FIn.Text());
    else
      Load(0, UnicodeString(BuiltInDocuments[First % BuiltInDocuments.size()]));
    Load(1, UnicodeString(FIn.Pick(BuiltInDocuments)));
    // TREE_EDITOR_TRACE=1 lists the operations of a replayed input, to reduce a finding by hand.
    static const bool Trace = std::getenv("TREE_EDITOR_TRACE") != nullptr;
    for (int Step = 0; Step < 200 && FIn.More(); ++Step) {
      if (!FDocuments[0] && !FDocuments[1] && FPool.empty())
        Load(0, UnicodeString(FIn.Pick(BuiltInDocuments))); // something to edit
      Collect();
      const uint8_t Op = FIn.Byte();
      if (Trace)
        std::fprintf(stderr, "op %d over %zu nodes, %lld alive\n", Op % 26, FNodes.size(),
                     static_cast<long long>(TObject::LiveInstances()));
      Step1(Op);
      Collect();
      CheckTree();
    }
    for (IPtr<ILxDOMDocument>& Document : FDocuments)
      if (Document)
        RoundTrip(static_cast<TLxDOMDocument*>(NodeOf(Document.Get())));
    // Dropped in an order the input chose, the last ones first otherwise.
    while (FIn.More() && !FPool.empty())
      FPool.erase(FPool.begin() + FIn.Byte() % FPool.size());
    FPool.clear();
    for (IPtr<ILxDOMDocument>& Document : FDocuments)
      Document = nullptr;
  }

private:
  void Load(int ASlot, const UnicodeString& AXML) {
    FDocuments[ASlot] = nullptr;
    IPtr<ILxDOMDocument> Document = LxCreateDOM(u"");
    Guarded([&] { Document->LoadXML(AXML); });
    FDocuments[ASlot] = Document;
  }

  /// Every node reachable from the documents and the held interfaces, tops included, in an order
  /// that depends only on the trees.
  void Collect() {
    FNodes.clear();
    std::vector<TLxDOMNode*> Tops;
    for (IPtr<ILxDOMDocument>& Document : FDocuments)
      if (Document)
        Tops.push_back(NodeOf(Document.Get()));
    for (IPtr<ILxDOMNode>& Held : FPool) {
      TLxDOMNode* Top = NodeOf(Held.Get());
      while (Top->ParentNode())
        Top = Top->ParentNode();
      Tops.push_back(Top);
    }
    std::set<TLxDOMNode*> Seen;
    for (TLxDOMNode* Top : Tops) {
      if (!Seen.insert(Top).second)
        continue;
      std::vector<TLxDOMNode*> Pending{Top};
      while (!Pending.empty() && FNodes.size() < 4000) {
        TLxDOMNode* Node = Pending.back();
        Pending.pop_back();
        FNodes.push_back(Node);
        if (Node->NodeCount() > 0)
          for (Integer I = Node->NodeCount() - 1; I >= 0; --I)
            Pending.push_back(Node->ChildNodes()->GetItem(I));
      }
    }
  }

  TLxDOMNode* AnyNode() { return FNodes[FIn.Byte() % FNodes.size()]; }
  /// A node of one of the kinds, or nil when the pick lands elsewhere.
  template <class T> T* NodeOfType(TLxDOMNodeType AType) {
    TLxDOMNode* Node = AnyNode();
    return Node->GetNodeType() == AType ? static_cast<T*>(Node) : nullptr;
  }
  TLxDOMElement* AnyElement() { return NodeOfType<TLxDOMElement>(ntElement); }
  /// A parent for a new child: an element or a document.
  TLxDOMNode* AnyParent() {
    TLxDOMNode* Node = AnyNode();
    return Node->GetNodeType() == ntElement || Node->GetNodeType() == ntDocument ? Node : nullptr;
  }
  /// A node that may move: anything but a document.
  TLxDOMNode* AnyMovable() {
    TLxDOMNode* Node = AnyNode();
    return Node->GetNodeType() == ntDocument ? nullptr : Node;
  }
  static bool Fits(TLxDOMNode* AParent, TLxDOMNode* AChild) {
    // A document takes elements, comments and instructions only: others would have no place in
    // its text.
    const TLxDOMNodeType Type = AChild->GetNodeType();
    return AParent->GetNodeType() != ntDocument || Type == ntElement || Type == ntComment ||
           Type == ntProcessingInstruction;
  }
  TLxDOMNode* RefAmong(TLxDOMNode* AParent) {
    const uint8_t Pick = FIn.Byte();
    if (AParent->NodeCount() == 0 || Pick % 3 == 0)
      return nullptr;
    return AParent->ChildNodes()->GetItem(Pick % AParent->NodeCount());
  }
  TLxDOMPosition AnyPosition() { return static_cast<TLxDOMPosition>(FIn.Byte() % 4); }

  void Hold(TLxDOMNode* ANode) {
    // The new face first: dropping an old one may end the tree that ANode is in.
    IPtr<ILxDOMNode> Held = Face(ANode);
    if (FPool.size() >= 8)
      FPool.erase(FPool.begin() + FIn.Byte() % FPool.size());
    FPool.push_back(Held);
  }

  /// A free-standing node the editor owns: placed, held or freed at once.
  void Place(TLxDOMNode* ANode) {
    const uint8_t How = FIn.Byte() % 3;
    TLxDOMNode* Parent = How == 0 ? AnyParent() : nullptr;
    if (Parent && Fits(Parent, ANode)) {
      try {
        Parent->AddChild(ANode, RefAmong(Parent), AnyPosition());
        return;
      } catch (...) {
        ANode->Free();
        throw;
      }
    }
    if (How == 1)
      Hold(ANode);
    else
      ANode->Free();
  }

  void Step1(uint8_t AOp) {
    switch (AOp % 26) {
    case 0:   // add or move by object reference
    case 1: { // the same through interfaces
      TLxDOMNode* Parent = AnyParent();
      TLxDOMNode* Child = AnyMovable();
      if (!Parent || !Child || !Fits(Parent, Child))
        return;
      TLxDOMNode* Ref = RefAmong(Parent);
      const TLxDOMPosition Pos = AnyPosition();
      if (AOp % 26 == 0) {
        Guarded([&] { Parent->AddChild(Child, Ref, Pos); });
        return;
      }
      IPtr<ILxDOMNode> P = Face(Parent), C = Face(Child), R = Face(Ref);
      switch (FIn.Byte() % 3) {
      case 0:
        Guarded([&] { P->AddChild(C.Get(), R.Get(), Pos); });
        break;
      case 1:
        Guarded([&] { P->InsertBefore(C.Get(), R.Get()); });
        break;
      default:
        Guarded([&] { P->AppendChild(C.Get()); });
      }
      return;
    }
    case 2:
    case 3: {
      TLxDOMNode* Child = AnyMovable();
      if (!Child || !Child->ParentNode())
        return;
      if (AOp % 26 == 2)
        Guarded([&] { Child->ParentNode()->RemoveChild(Child); });
      else
        Guarded([&] { Face(Child->ParentNode())->RemoveChild(Face(Child).Get()); });
      return;
    }
    case 4: {
      TLxDOMNode* Node = AnyMovable();
      if (!Node)
        return;
      const bool Deep = FIn.Byte() & 1;
      TLxDOMNode* Clone = nullptr;
      Guarded([&] { Clone = Node->CloneNode(Deep); });
      if (Clone)
        Guarded([&] { Place(Clone); });
      return;
    }
    case 5: {
      TLxDOMNode* Node = AnyMovable();
      if (!Node)
        return;
      IPtr<ILxDOMNode> Clone;
      Guarded([&] { Clone = Face(Node)->CloneNode(FIn.Byte() & 1); });
      TLxDOMNode* Parent = AnyParent();
      if (Clone && Parent && Fits(Parent, NodeOf(Clone.Get())))
        Guarded([&] { Face(Parent)->AppendChild(Clone.Get()); });
      else if (Clone)
        Hold(NodeOf(Clone.Get()));
      return;
    }
    case 6:
    case 7: {
      TLxDOMNode* Node = AnyMovable();
      if (!Node || Node->GetNodeType() > ntAttribute)
        return;
      const UnicodeString Name(FIn.Pick(Names));
      if (AOp % 26 == 6)
        Guarded([&] { Node->SetQualifiedName(Name); });
      else
        Guarded([&] { Face(Node)->SetQualifiedName(Name); });
      return;
    }
    case 8: {
      TLxDOMNode* Node = AnyMovable();
      if (!Node || Node->GetNodeType() > ntAttribute)
        return;
      const UnicodeString Prefix(FIn.Pick(Prefixes));
      if (FIn.Byte() & 1)
        Guarded([&] { Node->SetPrefix(Prefix); });
      else
        Guarded([&] { Face(Node)->SetPrefix(Prefix); });
      return;
    }
    case 9: {
      TLxDOMNode* Node = AnyMovable();
      const UnicodeString URI(FIn.Pick(URIs));
      if (Node && Node->GetNodeType() == ntElement)
        Guarded([&] { static_cast<TLxDOMElement*>(Node)->SetNamespaceURI(URI); });
      else if (Node && Node->GetNodeType() == ntAttribute)
        Guarded([&] { static_cast<TLxDOMAttribute*>(Node)->SetNamespaceURI(URI); });
      return;
    }
    case 10:
    case 11: {
      TLxDOMElement* Element = AnyElement();
      if (!Element)
        return;
      const UnicodeString Name(FIn.Pick(Names)), Value(FIn.Pick(Values));
      if (AOp % 26 == 10)
        Guarded([&] { Element->SetAttribute(Name, Value); });
      else
        Guarded([&] { DOMInterface<ILxDOMElement>(Element)->SetAttrib(Name, Value); });
      return;
    }
    case 12: {
      TLxDOMElement* Element = AnyElement();
      if (!Element)
        return;
      const std::u16string_view URI = FIn.Pick(URIs), Name = FIn.Pick(Names);
      switch (FIn.Byte() % 4) {
      case 0:
        Guarded([&] { Element->SetAttributeNS(URI, Name, u"v"); });
        break;
      case 1:
        Guarded([&] { Element->AddAttribute(URI, Name); });
        break;
      case 2:
        Guarded([&] { Element->ElementByName(URI, Name, coCreate); });
        break;
      default:
        Guarded([&] { Element->AddElement(URI, Name); });
      }
      return;
    }
    case 13: {
      // Declarations come and go: xmlns, xmlns:p, by name and through interfaces.
      TLxDOMElement* Element = AnyElement();
      if (!Element)
        return;
      // "xmlns:" with nothing behind is no name the text could give back.
      const UnicodeString Prefix(FIn.Pick(Prefixes));
      const UnicodeString Name =
          (FIn.Byte() & 1) != 0 || Prefix.empty() ? UnicodeString(u"xmlns") : u"xmlns:" + Prefix;
      switch (FIn.Byte() % 4) {
      case 0:
        Guarded([&] { Element->SetAttribute(Name, UnicodeString(FIn.Pick(URIs))); });
        break;
      case 1:
        Guarded([&] { Element->AddAttribute(Name); });
        break;
      case 2:
        Guarded([&] { Element->RemoveAttribute(Name); });
        break;
      default:
        Guarded([&] { DOMInterface<ILxDOMElement>(Element)->RemoveAttribute(Name); });
      }
      return;
    }
    case 14: {
      auto* Text = NodeOfType<TLxDOMText>(ntText);
      if (Text)
        Guarded([&] { Text->SplitText(FIn.Byte() % 8); });
      return;
    }
    case 15: {
      TLxDOMNode* Node = AnyNode();
      Guarded([&] { Node->NormalizeTextNodes(); });
      return;
    }
    case 16: {
      TLxDOMElement* Element = AnyElement();
      const UnicodeString Fragment(FIn.Pick(Fragments));
      if (Element && FIn.Byte() & 1)
        Guarded([&] { Element->SetInnerXML(Fragment); });
      else if (Element)
        Guarded([&] { DOMInterface<ILxDOMElement>(Element)->SetInnerXML(Fragment); });
      return;
    }
    case 17:
      Hold(AnyNode());
      return;
    case 18:
      if (!FPool.empty())
        FPool.erase(FPool.begin() + FIn.Byte() % FPool.size());
      return;
    case 19: {
      // Freed by object reference: a held node refuses, any other unlinks and goes.
      TLxDOMNode* Node = AnyMovable();
      if (Node)
        Guarded([&] { Node->Free(); });
      return;
    }
    case 20: {
      TLxDOMNode* Node = AnyNode();
      if (FIn.Byte() & 1)
        Guarded([&] { Node->Clear(); });
      else
        Guarded([&] { Face(Node)->Clear(); });
      return;
    }
    case 21: {
      // Between the two documents: a node of one to the root of the other.
      if (!FDocuments[0] || !FDocuments[1])
        return;
      const int From = FIn.Byte() & 1;
      TLxDOMNode* Node = AnyMovable();
      auto* Target = static_cast<TLxDOMDocument*>(NodeOf(FDocuments[1 - From].Get()));
      if (Node && Target->GetRootNode() && Node->GetDocument() == NodeOf(FDocuments[From].Get()))
        Guarded([&] { Target->GetRootNode()->AddChild(Node, nullptr, AnyPosition()); });
      return;
    }
    case 22:
      if (FIn.Byte() & 1)
        Load(FIn.Byte() & 1, UnicodeString(FIn.Pick(BuiltInDocuments)));
      else
        FDocuments[FIn.Byte() & 1] = nullptr;
      return;
    case 23: {
      TLxDOMElement* Element = AnyElement();
      if (!Element)
        return;
      const UnicodeString Text(FIn.Pick(Texts));
      switch (FIn.Byte() % 5) {
      case 0:
        Guarded([&] { Element->AddText(Text); });
        break;
      case 1:
        Guarded([&] { Element->AddCDATA(u"c"); });
        break;
      case 2:
        Guarded([&] { Element->AddComment(u"c"); });
        break;
      case 3:
        Guarded([&] { Element->AddElement(UnicodeString(FIn.Pick(Names))); });
        break;
      default:
        Guarded([&] { Element->SetPreseveSpace(FIn.Byte() & 1); });
      }
      return;
    }
    case 24: {
      TLxDOMNode* Node = AnyMovable();
      if (Node && Node->GetNodeType() != ntElement && Node->GetNodeType() != ntNotation)
        Guarded([&] { Node->SetNodeValue(UnicodeString(FIn.Pick(Texts))); });
      return;
    }
    default: {
      // Reads that follow every link.
      TLxDOMNode* Node = AnyNode();
      Guarded([&] { Node->GetXML(); });
      Guarded([&] { Node->GetText(); });
      Guarded([&] { Node->NodePath(FIn.Byte() & 1, u"id"); });
      if (Node->GetNodeType() == ntElement)
        Guarded([&] { static_cast<TLxDOMElement*>(Node)->Namespaces(); });
      return;
    }
    }
  }

  /// Parents and their lists agree, and every link to a declaration reaches a live one.
  void CheckTree() {
    for (TLxDOMNode* Node : FNodes) {
      Integer Elements = 0, Attributes = 0;
      for (Integer I = 0; I < Node->NodeCount(); ++I) {
        TLxDOMNode* Child = Node->ChildNodes()->GetItem(I);
        if (Child->ParentNode() != Node)
          Fail("a child names another parent");
        Elements += Child->GetNodeType() == ntElement ? 1 : 0;
        Attributes += Child->GetNodeType() == ntAttribute ? 1 : 0;
      }
      TLxDOMAttribute* Declaration = nullptr;
      if (Node->GetNodeType() == ntElement) {
        auto* Element = static_cast<TLxDOMElement*>(Node);
        if (Element->ElementCount() != Elements || Element->AttributeCount() != Attributes)
          Fail("a typed list disagrees with the children");
        Declaration = Element->NamespaceDeclaration();
      } else if (Node->GetNodeType() == ntAttribute) {
        Declaration = static_cast<TLxDOMAttribute*>(Node)->NamespaceDeclaration();
      }
      if (Declaration && Declaration->GetStoredValue().size() > 1000000)
        Fail("a declaration's value is out of reach");
      Guarded([&] { Node->GetNamespaceURI(); });
    }
  }

  static std::string Saved(TLxDOMDocument* ADocument) {
    TOwned<TLxStringStream> Stream(New<TLxStringStream>(65001, 0));
    ADocument->SaveToStream(Stream.get(), 65001, /*AFormatted=*/false, /*AWriteBOM=*/false);
    return Stream->GetAString();
  }

  /// The saved text without its namespace declarations (` xmlns="..."`, ` xmlns:p="..."`, any
  /// letter case). Attribute values are always written in double quotes and never hold one.
  static std::string WithoutDeclarations(std::string_view AText) {
    std::string Result;
    Result.reserve(AText.size());
    size_t I = 0;
    while (I < AText.size()) {
      const bool Declaration =
          AText[I] == ' ' && AText.size() - I > 6 &&
          std::equal(AText.begin() + static_cast<std::ptrdiff_t>(I) + 1,
                     AText.begin() + static_cast<std::ptrdiff_t>(I) + 6, "xmlns",
                     [](char A, char B) { return (A | 0x20) == B; }) &&
          (AText[I + 6] == '=' || AText[I + 6] == ':');
      const size_t ValueStart = Declaration ? AText.find("=\"", I) : std::string_view::npos;
      const size_t ValueEnd =
          ValueStart == std::string_view::npos ? ValueStart : AText.find('"', ValueStart + 2);
      if (ValueEnd == std::string_view::npos) {
        Result += AText[I++];
        continue;
      }
      I = ValueEnd + 1;
    }
    return Result;
  }

  static IPtr<ILxDOMDocument> Reloaded(const std::string& AText) {
    IPtr<ILxDOMDocument> Document = LxCreateDOM(u"");
    bool Loaded = false;
    Guarded([&] {
      TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(static_cast<const void*>(AText.data()),
                                                          static_cast<Int64>(AText.size())));
      static_cast<TLxDOMDocument*>(NodeOf(Document.Get()))->LoadFromStream(Stream.get(), 65001);
      Loaded = true;
    });
    return Loaded ? Document : IPtr<ILxDOMDocument>();
  }

  /// Saved and reloaded, a document keeps every node: edits leave no state that the text doesn't
  /// show. The load may add declarations, where the tree's namespace rules part from the text's
  /// (an unprefixed element without namespace below a default declaration, a URI declared under
  /// two prefixes in scope); a second round then adds nothing more. Only a document with one
  /// element and nothing but comments and instructions beside it has a text that can come back.
  static void RoundTrip(TLxDOMDocument* ADocument) {
    Integer Roots = 0;
    for (Integer I = 0; I < ADocument->NodeCount(); ++I)
      Roots += ADocument->ChildNodes()->GetItem(I)->GetNodeType() == ntElement ? 1 : 0;
    if (Roots != 1)
      return;
    // Text of blanks alone between tags is dropped by a load unless space is preserved there,
    // and edits may have moved it anywhere.
    std::vector<TLxDOMNode*> Pending{ADocument};
    while (!Pending.empty()) {
      TLxDOMNode* Node = Pending.back();
      Pending.pop_back();
      if (Node->GetNodeType() == ntText &&
          static_cast<TLxDOMText*>(Node)->GetStoredValue().find_first_not_of(u" \t\r\n") ==
              UnicodeString::npos)
        return;
      for (Integer I = 0; I < Node->NodeCount(); ++I)
        Pending.push_back(Node->ChildNodes()->GetItem(I));
    }
    std::string First;
    try {
      First = Saved(ADocument);
    } catch (const EConvertError&) {
      return;
    }
    IPtr<ILxDOMDocument> Again = Reloaded(First);
    if (!Again)
      return;
    const std::string Second = Saved(static_cast<TLxDOMDocument*>(NodeOf(Again.Get())));
    if (Second == First)
      return;
    if (WithoutDeclarations(Second) != WithoutDeclarations(First)) {
      std::fprintf(stderr, "saved: %s\nagain: %s\n", First.c_str(), Second.c_str());
      Fail("the saved text doesn't come back");
    }
    IPtr<ILxDOMDocument> Third = Reloaded(Second);
    if (Third && Saved(static_cast<TLxDOMDocument*>(NodeOf(Third.Get()))) != Second) {
      std::fprintf(stderr, "saved: %s\nagain: %s\n", First.c_str(), Second.c_str());
      Fail("the declarations a load adds don't settle");
    }
  }

  TInput& FIn;
  std::array<IPtr<ILxDOMDocument>, 2> FDocuments;
  std::vector<IPtr<ILxDOMNode>> FPool;
  std::vector<TLxDOMNode*> FNodes;
};

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace lorvane;
  const Int64 LiveAtStart = TObject::LiveInstances();
  {
    TInput Input(AData, ASize);
    TEditor(Input).Run();
  }
  // Counting is a build option; without it the count answers -1.
  if (LiveAtStart >= 0 && TObject::LiveInstances() != LiveAtStart)
    Fail("objects outlive the input");
  return 0;
}
