/// The node of the document tree (TLxDOMNode) and its face (TLxDOMNodeImpl): an ordered list of
/// children, a name in its two forms, linking and unlinking, cloning, siblings and paths. The
/// concrete node kinds override its virtual operations.
#pragma once

#include "lorvane/dom/LxDOMInterfaces.h"
#include "lorvane/dom/LxDOMObject.h"

#include <atomic>
#include <utility>

namespace lorvane {

class TLxDOMNodeList;
class TLxDOMNodeListBase;
class TLxDOMNodeImpl;
class TLxDOMDocument;
class TLxDOMElement;
class TLxDOMWriter;

struct TLxDOMParseEvents;

/// A string that costs one pointer until it first holds text: few nodes ever keep a namespace
/// URI of their own. Once made, the text stays allocated, so references to it stay valid. Its
/// block carries the node's parse events too, which as few nodes have: one pointer for both.
class TSparseString {
public:
  TSparseString() noexcept = default;
  operator const UnicodeString&() const noexcept { return FBlock ? FBlock->Value : Empty(); }
  TSparseString& operator=(const UnicodeString& AValue) {
    if (FBlock)
      FBlock->Value = AValue;
    else if (!AValue.empty())
      FBlock = std::make_unique<TBlock>(AValue);
    return *this;
  }
  bool empty() const noexcept { return !FBlock || FBlock->Value.empty(); }
  void clear() noexcept {
    if (FBlock)
      FBlock->Value.clear();
  }
  /// The parse events, nil until first set.
  TLxDOMParseEvents* Events() const noexcept { return FBlock ? FBlock->Events.get() : nullptr; }
  TLxDOMParseEvents& RequireEvents();

private:
  static const UnicodeString& Empty() noexcept {
    static const UnicodeString Value;
    return Value;
  }
  struct TBlock {
    // Out of line, where the events are a complete type.
    explicit TBlock(const UnicodeString& AValue);
    ~TBlock();
    UnicodeString Value;
    std::unique_ptr<TLxDOMParseEvents> Events;
  };
  std::unique_ptr<TBlock> FBlock;
};

/// The name of a node, its prefix and local name, held by counted reference: the nodes that one
/// load names alike share one record, and a rename gives a node a record of its own. Records
/// are never changed; the count is atomic, since the nodes of one load may go to other threads.
class TLxDOMName {
public:
  TLxDOMName(std::u16string_view APrefix, std::u16string_view ALocalName)
      : FPrefix(APrefix), FLocalName(ALocalName) {}
  TLxDOMName(const TLxDOMName&) = delete;
  TLxDOMName& operator=(const TLxDOMName&) = delete;
  /// From the small-object pool, as the nodes.
  static void* operator new(std::size_t ASize);
  static void operator delete(void* AMemory, std::size_t ASize) noexcept;

  const UnicodeString& Prefix() const noexcept { return FPrefix; }
  const UnicodeString& LocalName() const noexcept { return FLocalName; }

  /// A counted reference to a record; an empty one names nothing (empty prefix and local name).
  class TRef {
  public:
    TRef() noexcept = default;
    /// Takes over the first count of a record just made.
    static TRef Adopt(TLxDOMName* AName) noexcept {
      TRef Result;
      Result.FName = AName;
      return Result;
    }
    TRef(const TRef& AOther) noexcept : FName(AOther.FName) {
      if (FName && !FName->FLasting)
        FName->FRefs.fetch_add(1, std::memory_order_relaxed);
    }
    TRef(TRef&& AOther) noexcept : FName(std::exchange(AOther.FName, nullptr)) {}
    TRef& operator=(TRef AOther) noexcept {
      std::swap(FName, AOther.FName);
      return *this;
    }
    ~TRef() {
      if (FName && !FName->FLasting && FName->FRefs.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete FName;
    }
    const UnicodeString& Prefix() const noexcept { return FName ? FName->FPrefix : Empty(); }
    const UnicodeString& LocalName() const noexcept { return FName ? FName->FLocalName : Empty(); }

  private:
    static const UnicodeString& Empty() noexcept;
    TLxDOMName* FName = nullptr;
  };
  /// A new record of its own.
  static TRef Make(std::u16string_view APrefix, std::u16string_view ALocalName) {
    return TRef::Adopt(new TLxDOMName(APrefix, ALocalName));
  }
  /// AQualifiedName split at the first ":" into prefix and local name; a leading ":" splits
  /// nothing off, the name couldn't be written back whole.
  static TRef FromQualifiedName(std::u16string_view AQualifiedName) {
    const auto Colon = AQualifiedName.find(u':');
    if (Colon == std::u16string_view::npos || Colon == 0)
      return Make({}, AQualifiedName);
    return Make(AQualifiedName.substr(0, Colon), AQualifiedName.substr(Colon + 1));
  }
  /// The name of a node kind ("#text", ...): one uncounted record for the whole process, so
  /// that the many nodes of a kind share it without touching a common count.
  static TRef Lasting(std::u16string_view ALocalName);

private:
  std::atomic<Integer> FRefs{1};
  bool FLasting = false;
  const UnicodeString FPrefix;
  const UnicodeString FLocalName;
};

class TLxDOMNode;
/// A class reference that constructs a node through its virtual default constructor.
using TLxDOMNodeClass = TClass;

class TLxDOMNode : public TLxDOMObject {
  LX_CLASS(TLxDOMNode, TLxDOMObject)
  // User-provided, so that New<T>() doesn't zero the whole object before constructing it.
  TLxDOMNode() noexcept;

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  /// False while a face exists, else as the base answers.
  bool CanAutoDestroy() override;
  /// Passes the document to the whole subtree by one walk, which sets it on each node below as
  /// the object base does: node kinds keep no state of their own on it.
  void SetDOMDocument(TLxDOMObject* ADoc) final;
  /// With a document, the subtree's namespaces are resolved anew at the new place.
  void SetParentNode(TLxDOMObject* AParent) override;
  /// Clears the children, then leaves the parent: a node destroyed directly unlinks itself.
  void BeforeDestruction() override;

  /// The parent's answer, or DefaultPreserveCase without parent.
  virtual bool GetPreserveSpace();
  virtual UnicodeString GetNodeValue();
  virtual UnicodeString GetText();
  /// The parent's answer, or the URI kept while unlinked.
  virtual UnicodeString GetNamespaceURI();
  virtual UnicodeString GetInnerXML();
  virtual UnicodeString GetFormattedInnerXML();
  /// Raises ELxDomNotSupported on kinds without a value.
  virtual void SetNodeValue(const UnicodeString& Value);
  virtual void SetPrefix(const UnicodeString& Value);
  /// Splits at the first ":" into prefix and local name; a name that starts with ":" has no
  /// prefix and stays whole as the local name.
  virtual void SetQualifiedName(const UnicodeString& Value);
  /// Raises ELxDomNotSupported on kinds without inner XML.
  virtual void SetInnerXML(const UnicodeString& Value);
  /// Resolves the namespace links of this node and its whole subtree anew, parents before
  /// children, children in order.
  virtual void RefreshNamespaces();
  virtual void NormalizeTextNodes() {}
  /// Writes this node as XML text in the code page; ALevel counts the nesting, -1 outermost.
  /// All the text is in the stream when it returns. Node kinds write themselves in WriteXML.
  void _SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted, Integer& ALevel);
  /// Parses XML from the stream's position and adds what it holds to this node (existing
  /// children stay). A fatal error raises ELxDomSyntax "Line %d, column %d: %s" unless the
  /// fatal-error event handles it; what was built stays.
  virtual void LoadFromStream(TStream* AStream, Word AStreamCodePage);
  /// Writes this node and its subtree as XML from the stream's position; all the text is in the
  /// stream when it returns.
  virtual void SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted);
  /// A new free-standing node of this class with the same name (and, for kinds with a value,
  /// the stored value).
  virtual TLxDOMNode* CreateClone();
  /// Removes every child, last first: a child on which an interface is held is only detached,
  /// any other is destroyed. A node being destroyed destroys its whole subtree so, deepest first,
  /// without recursion.
  virtual void Clear();
  /// A free-standing copy that the caller owns: no parent, no document, no face, no namespace
  /// state. Without AIncludeChildNodes an element's clone has no attributes either.
  virtual TLxDOMNode* CloneNode(bool AIncludeChildNodes);
  /// Constructs ANodeClass and adds it as the next overload does.
  virtual TLxDOMNode* AddChild(TLxDOMNodeClass ANodeClass, TLxDOMNode* ARefNode,
                               TLxDOMPosition APos);
  /// Links ANode at the position and gives it; a node that has a parent is moved. Raises
  /// ELxDomException when ANode is this node or one of its ancestors.
  virtual TLxDOMNode* AddChild(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos);
  /// Unlinks AChildNode and destroys it unless an interface holds it: the caller's object
  /// reference is invalid afterwards unless it keeps an interface.
  virtual void RemoveChild(TLxDOMNode* AChildNode);
  virtual TLxDOMNode* AppendChild(TLxDOMNode* newChild);

  Integer NodeCount() const noexcept;
  TLxDOMNode* InsertBefore(TLxDOMNode* newChild, TLxDOMNode* refChild);
  /// Nil at the end of the parent's children or without parent; linear in their number.
  TLxDOMNode* NextSibling() const;
  TLxDOMNode* PreviousSibling() const;
  bool HasChilds() const noexcept { return NodeCount() > 0; }
  bool HasAttributes() const;
  TLxDOMNode* ParentNode() const noexcept;
  /// The parent when it is an element, else nil.
  TLxDOMElement* ParentElement() const noexcept;
  /// The path from the root, "/" between steps; attributes get "@", and an element that has the
  /// attribute AIdAttribName gets a predicate with its value.
  UnicodeString NodePath(bool ALocalNames, const UnicodeString& AIdAttribName) const;
  /// Valid until the node is renamed or destroyed.
  const UnicodeString& GetLocalName() const noexcept { return FName.LocalName(); }
  const UnicodeString& GetPrefix() const noexcept { return FName.Prefix(); }
  UnicodeString GetQualifiedName() const;
  UnicodeString GetNodeName() const { return GetQualifiedName(); }
  void SetNodeName(const UnicodeString& Value) { SetQualifiedName(Value); }
  TLxDOMNodeType GetNodeType() const noexcept { return FNodeType; }
  /// The XML text of this node, compact or with line ends and indentation.
  UnicodeString GetXML();
  UnicodeString GetFormattedXML();
  /// The node's own text for the serializers: XML (its compact text as UTF-8). JSON needs the
  /// tree's JSON output, which this library doesn't write yet: false for it. Other formats go
  /// to the serializer registered for them.
  bool CanSerialize(TLxDataSerializationFormatType AFormat) const noexcept;
  /// AParams is not used.
  TLxSerializedData Serialize(TLxDataSerializationFormatType AFormat, TStrings* AParams);
  /// The document this node is in; nil when it is in none.
  TLxDOMDocument* GetDocument() const noexcept;

  /// The parse events of LoadFromStream; Handled set true by the fatal-error event lets the
  /// reader's own exception through instead.
  const TLxDOMParseError& GetOnParseWarning() const noexcept;
  const TLxDOMParseError& GetOnParseError() const noexcept;
  const TLxDOMParseError& GetOnParseFatalError() const noexcept;
  void SetOnParseWarning(TLxDOMParseError AHandler);
  void SetOnParseError(TLxDOMParseError AHandler);
  void SetOnParseFatalError(TLxDOMParseError AHandler);

  /// The children in document order, attributes of an element included; owned by this node.
  TLxDOMNodeList* ChildNodes();

  /// Path selection: the first node that nodePath names from here, or nil. soRaise turns a miss
  /// into ELxDomNotFound; soCreate adds the missing elements of a plain path of names. Both case
  /// options, or both of soRaise and soCreate, raise Exception. The path language and its
  /// failures are the xpath module's (lorvane/xpath/LxXPath.h); without it, ENotSupportedException.
  TLxDOMNode* SelectSingleNode(const UnicodeString& nodePath,
                               TLxDOMSelectOptions ASelectOptions = {});
  /// All nodes that nodePath names, each once, in a new list that the caller frees; the list
  /// owns no node. Empty without soRaise or soCreate when nothing matches.
  TLxDOMNodeList* CreateNodeList(const UnicodeString& nodePath,
                                 TLxDOMSelectOptions ASelectOptions = {});
  TLxDOMNodeImpl* DOMNodeImpl() const noexcept;

protected:
  /// Raises Exception when an interface on this node is still counted: destroying it through its
  /// object reference would leave that interface dangling. The children are gone and the node
  /// has left its parent by then.
  ~TLxDOMNode() override;

  /// This node's XML text, handed to the writer of the save that runs (which the save flushes);
  /// ALevel counts the nesting as in _SaveToStream. Writes nothing here; each node kind overrides.
  virtual void WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel);
  /// WriteXML of AChild: how a node kind that writes its children reaches theirs.
  static void WriteChildXML(TLxDOMNode* AChild, TLxDOMWriter& AWriter, bool AFormatted,
                            Integer& ALevel);
  /// This node's own part of RefreshNamespaces; the walk over the subtree calls it for every node.
  virtual void RefreshOwnNamespaces() {}
  /// Keeps a node that only interfaces own (a detached parent that a held child's face pins)
  /// alive until the end of an edit: taking a held child away releases its pin on the parent,
  /// which must not go while the edit still works on it or below it. Holds nothing on a node
  /// that is owned otherwise, or being destroyed.
  class TEditHold {
  public:
    explicit TEditHold(TLxDOMNode* ANode);

  private:
    IPtr<IInterface> FHold;
  };

  /// Makes ANode ready to be linked here: refuses a cycle, and unlinks ANode from a parent it
  /// has, after checking that the namespace values the link reads decode. Raises before
  /// anything changed.
  void PrepareToAdd(TLxDOMNode* ANode);
  /// Decodes every declaration in ASubtree and in scope at this node, and ASubtree's own
  /// "xml:space": the values that resolving namespaces there reads. One that doesn't decode
  /// raises EConvertError here, before an edit changes the tree, rather than halfway through it.
  void CheckNamespaceValues(TLxDOMNode* ASubtree);
  /// What ARead gives for a node that leaves its parent. A parent that is being destroyed can't
  /// stop halfway: there a value that doesn't decode gives AFallback instead of raising.
  template <class T, class F> T KeptOnLeaving(F&& ARead, T AFallback) const {
    if (!FParent || !FParent->Destroying())
      return ARead();
    try {
      return ARead();
    } catch (const EConvertError&) {
      return AFallback;
    }
  }
  /// Takes ANode out of this node's lists; changes nothing else and raises nothing.
  virtual void ForgetChild(TLxDOMNode* ANode);
  /// Drops the links of this node's subtree into the tree it leaves; raises nothing.
  virtual void ForgetOutsideLinks() {}
  /// A destruction that an interface stopped has freed the children and left the parent
  /// without the bookkeeping of either: drops what still points at them. Raises nothing.
  virtual void ForgetAfterStoppedDestruction() {}
  /// The second half of AddChild, for a node that PrepareToAdd has seen: puts it among the
  /// children and links it. A link that raises takes the node out again, free-standing.
  TLxDOMNode* LinkChild(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos);
  /// Unlinks AChildNode and takes it out of this node's lists, destroying nothing; raises
  /// ELxDomNotFound when it isn't a child. Adding a linked node to another parent moves it.
  /// What may raise runs before anything changes. Releasing a held child's pin may end this node
  /// when nothing else owns it: callers that go on working here keep a TEditHold.
  virtual void UnlinkChild(TLxDOMNode* AChildNode);
  /// The children without making the list: nil while the node never had one.
  TLxDOMNodeList* ChildList() const noexcept { return FChildNodes; }
  /// The name split as SetQualifiedName splits it, without the look-ups of a rename: for a node
  /// that a load has just made, which is in no tree and links to nothing yet.
  void AssignQualifiedName(const UnicodeString& AValue);
  /// Gives the node the name AName, shared with whoever else holds it.
  void AssignName(TLxDOMName::TRef AName) noexcept { FName = std::move(AName); }
  /// Appends ALeaf, fresh from a load (no parent, face, children or namespace state), with what
  /// linking does for such a node and nothing else; ATypedList is the typed list it joins too,
  /// when this node has made it.
  void AppendLoadedLeaf(TLxDOMNode* ALeaf, TLxDOMNodeListBase* ATypedList);

  /// Made on first use: a leaf that never gets a child pays for no list.
  TLxDOMNodeList* FChildNodes = nullptr;
  /// Prefix and local name, shared with the nodes that a load names alike.
  TLxDOMName::TRef FName;
  /// The namespace URI kept while the node isn't linked to its declaration (and the parse
  /// events).
  TSparseString FNamespaceURI;
  // The bytes last, so that an element's own flag fills the padding behind them: an element
  // then fits the pool's size class of 128 bytes, a text node that of 112.
  TLxDOMNodeType FNodeType = ntUnknown;
  TLxDOMLoadState FLoadState = lsUninitialized;
  bool FNamespaceSet = false;

private:
  /// Takes AChild out of the children of AParent, which is being destroyed, and frees it: a step
  /// of Clear.
  static void FreeDetached(TLxDOMNode* AParent, TLxDOMNode* AChild);
  friend class TLxDOMParser;
};

class TLxDOMNodeImpl : public TLxDOMObjectImpl, public virtual ILxDOMNode {
  LX_CLASS(TLxDOMNodeImpl, TLxDOMObjectImpl)
  explicit TLxDOMNodeImpl(TLxDOMNode* ADOMObject) : TLxDOMObjectImpl(ADOMObject) {}

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  TLxDOMNode* DOMNode() const noexcept { return static_cast<TLxDOMNode*>(FDOMObject); }

  bool GetPreserveSpace() override;
  UnicodeString GetNodeValue() override;
  UnicodeString GetText() override;
  UnicodeString GetNamespaceURI() override;
  UnicodeString GetLocalName() override;
  UnicodeString GetPrefix() override;
  UnicodeString GetQualifiedName() override;
  UnicodeString GetFormattedInnerXML() override;
  UnicodeString GetInnerXML() override;
  IPtr<ILxDOMNodeList> GetChildNodes() override;
  TLxDOMNodeType GetNodeType() override;
  void SetNodeValue(const UnicodeString& Value) override;
  void SetPrefix(const UnicodeString& Value) override;
  void SetQualifiedName(const UnicodeString& Value) override;
  void SetInnerXML(const UnicodeString& Value) override;
  void NormalizeTextNodes() override;
  void Clear() override;
  IPtr<ILxDOMNode> CloneNode(bool AIncludeChildNodes) override;
  Integer NodeCount() override;
  IPtr<ILxDOMNode> AddChild(ILxDOMNode* ANode, ILxDOMNode* ARefNode, TLxDOMPosition APos) override;
  void RemoveChild(ILxDOMNode* AChildNode) override;
  IPtr<ILxDOMNode> InsertBefore(ILxDOMNode* newChild, ILxDOMNode* refChild) override;
  IPtr<ILxDOMNode> AppendChild(ILxDOMNode* newChild) override;
  IPtr<ILxDOMNode> NextSibling() override;
  IPtr<ILxDOMNode> PreviousSibling() override;
  bool HasChilds() override;
  bool HasAttributes() override;
  IPtr<ILxDOMNode> ParentNode() override;
  UnicodeString NodePath(bool ALocalNames, const UnicodeString& AIdAttribName) override;
  UnicodeString GetFormattedXML() override;
  bool CanSerialize(TLxDataSerializationFormatType AFormat) override;
  TLxSerializedData Serialize(TLxDataSerializationFormatType AFormat, TStrings* AParams) override;
  UnicodeString GetXML() override;
  void LoadFromStream(TStream* AStream, Word AStreamCodePage) override;
  void SaveToStream(TStream* AStream, Word AStreamCodePage, bool AFormatted) override;
  IPtr<ILxDOMDocument> Document() override;
  IPtr<ILxDOMNode> SelectSingleNode(const UnicodeString& nodePath,
                                    TLxDOMSelectOptions ASelectOptions = {}) override;
  IPtr<ILxDOMNodeList> CreateNodeList(const UnicodeString& nodePath,
                                      TLxDOMSelectOptions ASelectOptions = {}) override;

protected:
  ~TLxDOMNodeImpl() override = default;
};

} // namespace lorvane
