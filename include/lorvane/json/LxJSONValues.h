/// The JSON value tree:
///   TLxJSONBase        every operation of every kind of value; those that don't fit a class
///                      raise one uniform error
///   TLxJSONSimpleType  a string, number, boolean or null, held as a Variant
///   TLxJSONMember      a name and its value, the child of an object
///   TLxJSONObject      members in insertion order; duplicate names all stay
///   TLxJSONArray       items of any kind but member
///   TLxJSONDocument    the top: one root value, loading from and saving to text, streams, files
///   LxFormatJSON       text through a document and back
///
/// Ownership: a value made with an owner belongs to it (AutoDestroy off) and dies with it; the
/// maker frees a value without owner, or its last interface reference does when AutoDestroy is
/// on. FreeObject takes a value out of its tree: it dies now, or, while interface references are
/// held, with the last of them. Destruction, output and every other walk loop over an explicit
/// stack, so a tree of any depth that fits in memory is freed and written.
///
/// Simple values keep the text they were read with: a parsed number holds the string "1.50" and
/// the type jdtNumber, converts when a getter asks, and is written back exactly as read.
///
/// Operations a class doesn't support raise ELxJSONException code 9, "Instances of <class> do
/// not support the <label> method!", the label being the operation's name, except "Member" for
/// GetMember and "GetValue" for GetValueObj. Indexes out of bounds raise EListError "List index
/// out of bounds (%d)".
#pragma once

#include "lorvane/json/LxJSONValueInterfaces.h"
#include "lorvane/platform/Variants.h"

#include <atomic>
#include <concepts>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace lorvane {

class TLxJSONBase;
class TLxJSONMember;
class TLxJSONObject;
class TLxJSONArray;
class TLxJSONDocument;
class TLxJSONHandler;
struct TJSONPathAccess;

namespace jsonwriter {
template <class TUnit> class TBasicWriter;
}

/// The children of a value, in insertion order, owning none of them. Eight bytes, for every
/// value of a tree has one: a single child (a member has one, its value) is held in place, more
/// go to a block from the small-object pool, as the values do, whose address is marked by its
/// lowest bit.
class TJSONChildList {
public:
  TJSONChildList() noexcept = default;
  TJSONChildList(const TJSONChildList&) = delete;
  TJSONChildList& operator=(const TJSONChildList&) = delete;
  ~TJSONChildList() {
    if (HasBlock())
      FreeBlock(Block());
  }

  std::size_t size() const noexcept { return HasBlock() ? Block()->Count : FOne ? 1 : 0; }
  bool empty() const noexcept { return size() == 0; }
  TLxJSONBase*& operator[](std::size_t AIndex) noexcept { return data()[AIndex]; }
  TLxJSONBase* operator[](std::size_t AIndex) const noexcept { return data()[AIndex]; }
  TLxJSONBase* front() const noexcept { return data()[0]; }
  TLxJSONBase* back() const noexcept { return data()[size() - 1]; }
  TLxJSONBase* const* begin() const noexcept { return data(); }
  TLxJSONBase* const* end() const noexcept { return data() + size(); }

  void push_back(TLxJSONBase* AItem) {
    if (HasBlock() && Block()->Count < Block()->Capacity)
      Block()->Items()[Block()->Count++] = AItem;
    else if (!HasBlock() && !FOne && AItem)
      FOne = AItem;
    else
      Grow(AItem);
  }
  /// Closes the gap; the capacity stays.
  void erase(std::size_t AIndex) noexcept;
  void clear() noexcept {
    if (HasBlock())
      Block()->Count = 0;
    else
      FOne = nullptr;
  }

private:
  /// Capacity pointers follow it.
  struct TBlock {
    std::uint32_t Count;
    std::uint32_t Capacity;
    TLxJSONBase** Items() noexcept { return reinterpret_cast<TLxJSONBase**>(this + 1); }
  };
  bool HasBlock() const noexcept { return (reinterpret_cast<std::uintptr_t>(FOne) & 1) != 0; }
  TBlock* Block() const noexcept {
    return reinterpret_cast<TBlock*>(reinterpret_cast<std::uintptr_t>(FOne) - 1);
  }
  TLxJSONBase** data() noexcept { return HasBlock() ? Block()->Items() : &FOne; }
  TLxJSONBase* const* data() const noexcept { return HasBlock() ? Block()->Items() : &FOne; }
  /// Appends AItem to a full list.
  void Grow(TLxJSONBase* AItem);
  static void FreeBlock(TBlock* ABlock) noexcept;
  static std::size_t BlockBytes(std::uint32_t ACapacity) noexcept {
    return sizeof(TBlock) + ACapacity * sizeof(TLxJSONBase*);
  }

  /// The child, nil, or the block's address plus one. A nil entry (a path's result may hold
  /// one) always lives in a block.
  TLxJSONBase* FOne = nullptr;
};

/// A member's name: counted text from the small-object pool that copies share, so that the many
/// members a load gives the same name hold one text. Eight bytes; nil for the empty name.
class TJSONName {
public:
  TJSONName() noexcept = default;
  explicit TJSONName(std::u16string_view AText);
  /// The ASCII bytes of AText as units.
  explicit TJSONName(std::string_view AText);
  TJSONName(const TJSONName& AOther) noexcept : FText(AOther.FText) {
    if (FText)
      FText->Refs.fetch_add(1, std::memory_order_relaxed);
  }
  TJSONName(TJSONName&& AOther) noexcept : FText(std::exchange(AOther.FText, nullptr)) {}
  TJSONName& operator=(TJSONName AOther) noexcept {
    std::swap(FText, AOther.FText);
    return *this;
  }
  ~TJSONName() {
    if (FText)
      Release(FText);
  }

  std::u16string_view View() const noexcept {
    return FText ? std::u16string_view(FText->Chars(), FText->Length) : std::u16string_view();
  }
  /// Whether the name is AText's ASCII bytes as units.
  bool Equals(std::string_view AText) const noexcept {
    if (!FText)
      return AText.empty();
    if (FText->Length != AText.size())
      return false;
    const char16_t* Chars = FText->Chars();
    for (std::size_t I = 0; I < AText.size(); ++I)
      if (Chars[I] != static_cast<unsigned char>(AText[I]))
        return false;
    return true;
  }
  /// The same for every copy of this name while one of them lives; nil for the empty name.
  const void* Identity() const noexcept { return FText; }

private:
  struct TText {
    std::atomic<std::uint32_t> Refs;
    std::size_t Length;
    char16_t* Chars() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
  };
  static void Release(TText* AText) noexcept;
  TText* FText = nullptr;
};

class TLxJSONBase : public TLxObject, public virtual ILxJSONBase {
  LX_CLASS(TLxJSONBase, TLxObject)
  /// With an owner: AutoDestroy off, and the owner takes the value as its last child.
  explicit TLxJSONBase(TLxJSONBase* AOwner);

  /// Values come from a pool of their own: a tree has many of a few small sizes, made and
  /// freed together. The memory of freed values is kept for new ones.
  static void* operator new(std::size_t ASize);
  static void operator delete(void* AMemory, std::size_t ASize) noexcept;

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  /// Adds AObject as the last child and counts the owner's hold as an interface reference.
  virtual void InsertObject(TLxJSONBase* AObject);
  /// Takes AObject out of the children and drops the owner's hold; nothing if it isn't one.
  virtual void RemoveObject(TLxJSONBase* AObject);

  /// Out of the owner (if any); then destroyed now, or, while interface references are held,
  /// when the last of them goes.
  void FreeObject();
  /// FreeObject on every child, last first, when this value owns its children; otherwise only
  /// this value's hold on them goes. The children are forgotten in any case.
  void DestroyObjects();

  /// The compact text.
  LxJSONString GetAsJSON() override;
  /// An empty text means DestroyObjects. Otherwise the text is read into this value: see
  /// LoadFromStream.
  void SetAsJSON(const LxJSONString& AJSON) override;
  /// The indented text: CR LF line ends, two blanks per level.
  LxJSONString GetFormattedJSON();

  LxJSONString GetName() override;
  virtual TLxJSONBase* GetValueObj();
  /// No class supports it.
  virtual void SetValue(TLxJSONBase* AValue);
  void SetName(const LxJSONString& AName) override;

  bool GetAsBoolean() override;
  Double GetAsDouble() override;
  Integer GetAsInteger() override;
  Int64 GetAsLargeInt() override;
  LxJSONString GetAsString() override;
  Variant GetAsVariant() override;
  /// This value when it is an object.
  virtual TLxJSONObject* GetAsObject();
  /// This value when it is an array.
  virtual TLxJSONArray* GetAsArray();
  IPtr<ILxJSONObject> GetAsObjectIntf() override;
  IPtr<ILxJSONArray> GetAsArrayIntf() override;
  void SetAsBoolean(bool AValue) override;
  void SetAsDouble(Double AValue) override;
  void SetAsInteger(Integer AValue) override;
  void SetAsString(const LxJSONString& AValue) override;
  void SetAsLargeInt(Int64 AValue) override;
  void SetAsVariant(const Variant& AValue) override;

  /// Reads JSON text into this value, with a byte order mark at the stream's position deciding
  /// the code page (none: the text parser's own decision).
  void LoadFromStream(TStream* AStream);
  /// An empty stream means DestroyObjects. Otherwise the text is read from the stream's position
  /// (a form post with AIsUrlFormEncoded) and built into the tree from this value on:
  ///   document           an object or array text replaces the root value
  ///   array              each top-level value is appended as a new item
  ///   member             an object or array text replaces the value
  ///   object, members    the text replaces the value of the member added last
  ///   object, no member  the members of an object text are added to this object
  /// Anything else (a simple value text on a document, member or simple value; an array or
  /// simple value text on an object without members) raises ELxJSONException "oeps?" (code 0).
  /// Reader failures pass as the reader raises them. What was built before a failure stays.
  virtual void LoadFromStream(TStream* AStream, Word ACodePage, bool AIsUrlFormEncoded);
  /// Writes this value as UTF-16 text: with AFormatted, line breaks behind opening and before
  /// closing brackets and an indent of two blanks per ADepth; AAddLeadingSpace puts the indent
  /// in front of the value itself. Values of a subtree are written by one iterative writer by
  /// their class (an override here changes the output of this value when it is the one asked,
  /// not of values nested in another). Text is collected and goes to the stream in blocks; on a
  /// failure what was collected before it is still written. A simple value whose type is
  /// jdtObject or jdtArray raises ELxJSONException "Unexptected JSON type!" (code 6).
  virtual void SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                            bool AAddLeadingSpace);

  Integer Count() override;
  virtual TLxJSONBase* AddValue(TLxJSONDataType AValueType);
  virtual TLxJSONBase* AddValue(TLxJSONDataType AValueType, const LxJSONString& AValue);
  virtual TLxJSONBase* AddValue(const Variant& AValue);
  virtual void RemoveValue(TLxJSONBase* AValue);
  virtual void DeleteValue(Integer AIdx);
  virtual TLxJSONMember* AddMember(const LxJSONString& AName);
  virtual TLxJSONMember* AddMember(const LxJSONString& AName, TLxJSONDataType AValueType);
  virtual TLxJSONMember* AddMember(const LxJSONString& AName, TLxJSONDataType AValueType,
                                   const LxJSONString& AValue);
  virtual TLxJSONMember* AddMember(const LxJSONString& AName, const Variant& AValue);
  virtual void DeleteMember(Integer AIdx);
  virtual void RemoveMember(TLxJSONMember* AMember);

  // FindMember, GetMember and Item call the protected virtual Do... operations, which classes
  // override. TLxJSONDocument declares its own FindMember, GetMember and Item that ask the root
  // value: called through a TLxJSONBase reference, a document answers with the unsupported
  // error instead.

  /// The first member of that name (with ACaseInsensitive ignoring ASCII letter case); nil when
  /// there is none.
  TLxJSONMember* FindMember(const LxJSONString& AName, bool ACaseInsensitive = false) {
    return DoFindMember(AName, ACaseInsensitive);
  }
  /// FindMember (jsoCaseInsensitive); when nothing is found: jsoCreate adds a member without a
  /// value, else jsoRaise raises ELxJSONException "There is no member with the name \"%s\"!"
  /// (code 5), else nil.
  TLxJSONMember* GetMember(const LxJSONString& AName, TLxJDOCSelectOptions ASelectOptions = {}) {
    return DoGetMember(AName, ASelectOptions);
  }
  /// The child at AIdx: a member of an object (not its value), an item of an array.
  TLxJSONBase* Item(Integer AIdx) { return DoItem(AIdx); }

  // JSON path: "$" starts at the root value, "@" here; steps are ".name", "..name" (at every
  // depth), "['name']", "[*]", "[index]", "[-1]", "[(@.length-1)]", "[start:end:step]", lists
  // "[a,b]" and filters "[?(...)]"; alternatives are joined by " | ". Failures: ELxJSONException
  // with _cLxJSONInvalidPath (13), _cLxJSONInvalidCharInPath1 (14), _cLxJSONInvalidCharInPath2
  // (15), _cLxJSONScriptExprTooComplex (17), the unsupported error (9) for a name created in an
  // array or a filter that reads an object as a text; EConvertError for an index that is no
  // integer; ELxTextParserEOF for an empty filter or an operator without a right side;
  // EInvalidCast for "$" in a tree without a document; and the filter failures of
  // LxJSONPath.h. A failure comes only where the walk gets: a step behind one that selected
  // nothing isn't read.

  /// The selected values, in the order found, in a new array without owner that the caller
  /// frees; the values stay in the tree (the array lists them and holds no reference). Nothing
  /// selected gives an empty array, or with jsoRaise ELxJSONException
  /// _cLxJSONInvalidPathNoNodes (code 11). jsoCreate adds a member for a name that finds
  /// nothing; jsoCaseInsensitive compares names without regard to ASCII case.
  TLxJSONArray* CreateNodeList(const LxJSONString& APath, TLxJDOCSelectOptions AOptions);
  /// The same with [jsoRaise] or [] (a template, so that a braced option set never reads as a
  /// truth value).
  template <std::same_as<bool> B>
  TLxJSONArray* CreateNodeList(const LxJSONString& APath, B ARaiseErrorIfNothingReturned) {
    return CreateNodeList(APath, ARaiseErrorIfNothingReturned ? TLxJDOCSelectOptions{jsoRaise}
                                                              : TLxJDOCSelectOptions{});
  }
  /// The first selected value, or nil; with jsoRaise, nil raises as an empty selection does.
  TLxJSONBase* SelectSingleNode(const LxJSONString& APath, TLxJDOCSelectOptions AOptions = {});
  template <std::same_as<bool> B>
  TLxJSONBase* SelectSingleNode(const LxJSONString& APath, B ARaiseErrorIfNothingReturned) {
    return SelectSingleNode(APath, ARaiseErrorIfNothingReturned ? TLxJDOCSelectOptions{jsoRaise}
                                                                : TLxJDOCSelectOptions{});
  }
  /// CreateNodeList as an interface: the list ends with its last reference.
  IPtr<ILxJSONArray> SelectIntf(const LxJSONString& APath,
                                TLxJDOCSelectOptions AOptions = {}) override;

  /// The document at the top of the tree; a tree without one raises EInvalidCast "Invalid class
  /// typecast".
  TLxJSONDocument* GetDocument();
  TLxJSONDataType GetJSONType() override { return FJSONType; }
  void SetJSONType(TLxJSONDataType AValue) noexcept { FJSONType = AValue; }
  TLxJSONBase* GetOwner() const noexcept { return FOwner; }

  // ILxJSONBase
  IPtr<ILxJSONBase> GetValue() override;
  IPtr<ILxJSONBase> GetMemberEx(const LxJSONString& AName) override;
  IPtr<ILxJSONBase> GetItem(Integer AIdx) override;
  IPtr<ILxJSONMember> FindMemberIntf(const LxJSONString& AName,
                                     bool ACaseInsensitive = false) override;
  bool HasMember(const LxJSONString& AName, bool ACaseInsensitive = false) override;
  IPtr<ILxJSONMember> GetMemberIntf(const LxJSONString& AName,
                                    TLxJDOCSelectOptions ASelectOptions = {}) override;

protected:
  /// The class family, fixed at construction, so that the tree's own code tells values apart
  /// without a metaclass walk (and already while the base constructor runs).
  enum class TKind : Byte { Base, Simple, Member, Object, Array, Document };
  TLxJSONBase(TLxJSONBase* AOwner, TKind AKind);
  /// Frees the children as DestroyObjects does and leaves the owner.
  void BeforeDestruction() override;
  ~TLxJSONBase() override = default;

  virtual TLxJSONMember* DoFindMember(const LxJSONString& AName, bool ACaseInsensitive);
  virtual TLxJSONMember* DoGetMember(const LxJSONString& AName,
                                     TLxJDOCSelectOptions ASelectOptions);
  virtual TLxJSONBase* DoItem(Integer AIdx);

  /// Raises the unsupported error with this object's class name and ALabel.
  [[noreturn]] void RaiseNotSupported(std::u16string_view ALabel);
  /// The child at AIdx, or EListError.
  TLxJSONBase* ChildAt(Integer AIdx) const;
  TKind Kind() const noexcept { return FKind; }

  // The small fields come first: they fill the room that the counted base leaves behind its
  // last field, which keeps an array at 48 bytes.
  TLxJSONDataType FJSONType = jdtNull;
  bool FDestroyChilds : 1 = true;
  /// Made by the tree's own load: of the library's class itself, so that the load links further
  /// values to it without asking for its class.
  bool FLoaded : 1 = false;
  /// A path's result: its items are listed without a hold, so letting go of them moves no
  /// count.
  bool FSelection : 1 = false;

private:
  // The classes of the tree and their builder and writer tell values apart by FKind.
  friend class TLxJSONMember;
  friend class TLxJSONObject;
  friend class TLxJSONArray;
  friend class TLxJSONDocument;
  friend class TLxJSONHandler;
  template <class> friend class jsonwriter::TBasicWriter;
  friend struct TJSONPathAccess;
  TKind FKind;

protected:
  TLxJSONBase* FOwner;
  /// The children in insertion order; not owning (DestroyObjects frees them when
  /// FDestroyChilds says so).
  TJSONChildList FObjects;
};

class TLxJSONSimpleType : public TLxJSONBase, public virtual ILxJSONSimpleType {
  LX_CLASS(TLxJSONSimpleType, TLxJSONBase)
  /// Null, of type jdtNull.
  explicit TLxJSONSimpleType(TLxJSONBase* AOwner);

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  /// The getters read the Variant leniently: a value that doesn't convert gives false, 0 or 0.0.
  bool GetAsBoolean() override;
  Double GetAsDouble() override;
  Integer GetAsInteger() override;
  Int64 GetAsLargeInt() override;
  /// A held text as it is ("null" for a parsed null); otherwise by the type: jdtNull "",
  /// jdtString the Variant's text (a date its XML form without zone, as it is written),
  /// jdtNumber LxVarToJSON, jdtBoolean "true" or "false". Another type raises ELxJSONException
  /// "Unexptected JSON type!" (code 6).
  LxJSONString GetAsString() override;
  /// A copy of the value as it is held.
  Variant GetAsVariant() override;
  /// Each setter stores the value typed and sets the type it is written as.
  void SetAsBoolean(bool AValue) override;
  void SetAsDouble(Double AValue) override;
  void SetAsInteger(Integer AValue) override;
  void SetAsString(const LxJSONString& AValue) override;
  void SetAsLargeInt(Int64 AValue) override;
  /// The type by the Variant's kind: integers and floats jdtNumber; text and dates jdtString;
  /// booleans jdtBoolean; anything else, arrays too, jdtNull.
  void SetAsVariant(const Variant& AValue) override;
  /// By the type: jdtNull "null"; jdtString the text escaped in double quotes (a date its XML
  /// form without zone); jdtNumber and jdtBoolean held text unchanged ("1.50" stays "1.50"),
  /// other values by LxVarToJSON and as "true" or "false".
  void SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                    bool AAddLeadingSpace) override;

protected:
  ~TLxJSONSimpleType() override;

private:
  friend class TLxJSONHandler;
  friend class TLxJSONObject;
  friend class TLxJSONArray;
  template <class> friend class jsonwriter::TBasicWriter;
  friend struct TJSONPathAccess;

  /// Text of up to this many units that each fit in a byte is held in the value itself, one
  /// byte a unit, and becomes a Variant only for the moment a getter needs one: most values of
  /// a loaded tree are short numbers and words that nobody asks for.
  static constexpr std::size_t ShortCapacity = 24;
  static constexpr std::uint8_t NoShortText = 0xFF;

  bool HoldsShortText() const noexcept { return FShortLength != NoShortText; }
  /// The value as a Variant: the held one, or a new text Variant of the short text.
  Variant AsVariant() const;
  /// The short text widened into ABuffer (ShortCapacity units).
  std::u16string_view ShortText(char16_t* ABuffer) const noexcept;
  /// Holds AText unchanged as text: in place when it is short and narrow, else as a Variant.
  void SetText(std::u16string_view AText);
  /// Holds AText in place and answers true when it is short and narrow and has no escape (a
  /// backslash; with APercent a percent sign too); otherwise changes nothing.
  bool SetShortRawText(std::u16string_view AText, bool APercent) noexcept;
  /// Takes ShortCapacity bytes from ANarrow, of which ALength are the text.
  void StoreShort(const char* ANarrow, std::size_t ALength) noexcept;
  /// Holds AValue as the Variant it is.
  void SetVariant(const Variant& AValue);

  std::uint8_t FShortLength = NoShortText;
  // One or the other, as FShortLength says.
  union {
    Variant FValue;
    char FShort[ShortCapacity];
  };
};

class TLxJSONMember : public TLxJSONBase, public virtual ILxJSONMember {
  LX_CLASS(TLxJSONMember, TLxJSONBase)
  /// No name, no value.
  explicit TLxJSONMember(TLxJSONBase* AOwner);

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  /// The name as stored: a parsed name keeps its escapes; nothing checks for duplicates.
  LxJSONString GetName() override { return LxJSONString(FName.View()); }
  void SetName(const LxJSONString& AName) override { FName = TJSONName(AName); }
  /// Nil while the member has no value.
  TLxJSONBase* GetValueObj() override { return FValue; }
  /// A value of this member that the tree still owns is freed first. jdtObject makes an object,
  /// jdtArray an array, any other type a simple value of type jdtNull, which the caller types.
  TLxJSONBase* CreateValue(TLxJSONDataType AValueType);

  /// With a simple value the typed getters read it; without a value or with an object or array
  /// they raise the unsupported error under this member's class name.
  bool GetAsBoolean() override;
  Double GetAsDouble() override;
  Integer GetAsInteger() override;
  Int64 GetAsLargeInt() override;
  LxJSONString GetAsString() override;
  Variant GetAsVariant() override;
  /// The typed setters first make a simple value when there is none (SetAsVariant: of the type
  /// LxVarTypeToJSONType gives, so an array Variant makes an array and then raises); on an
  /// object or array value they raise the unsupported error.
  void SetAsBoolean(bool AValue) override;
  void SetAsDouble(Double AValue) override;
  void SetAsInteger(Integer AValue) override;
  void SetAsString(const LxJSONString& AValue) override;
  void SetAsLargeInt(Int64 AValue) override;
  void SetAsVariant(const Variant& AValue) override;
  /// The value when it is an object; without a value an object is made first. A value of
  /// another kind raises the unsupported error.
  TLxJSONObject* GetAsObject() override;
  /// The same for an array.
  TLxJSONArray* GetAsArray() override;
  /// Written as "name": value; a member without a value is written with the value null.
  void SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                    bool AAddLeadingSpace) override;
  /// Forgets the value too when it is the one taken out.
  void RemoveObject(TLxJSONBase* AObject) override;

  // ILxJSONMember, beside the operations above
  IPtr<ILxJSONBase> GetValue() override;
  IPtr<ILxJSONObject> GetAsObjectIntf() override;
  IPtr<ILxJSONArray> GetAsArrayIntf() override;
  IPtr<ILxJSONBase> CreateValueIntf(TLxJSONDataType AValueType) override;

protected:
  ~TLxJSONMember() override = default;

private:
  friend class TLxJSONObject;
  friend class TLxJSONHandler;
  template <class> friend class jsonwriter::TBasicWriter;
  /// The simple value, or the unsupported error with ALabel.
  TLxJSONSimpleType* SimpleValue(std::u16string_view ALabel);
  /// The simple value, made with AValueType when there is none; on an object or array the
  /// unsupported error with ALabel.
  TLxJSONSimpleType* SimpleValueFor(TLxJSONDataType AValueType, std::u16string_view ALabel);

  friend struct TJSONPathAccess;
  TJSONName FName;
  TLxJSONBase* FValue = nullptr;
};

class TLxJSONObject : public TLxJSONBase, public virtual ILxJSONObject {
  LX_CLASS(TLxJSONObject, TLxJSONBase)
  /// Of type jdtObject.
  explicit TLxJSONObject(TLxJSONBase* AOwner);

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  /// Only members: anything else raises EAssertionFailed.
  void InsertObject(TLxJSONBase* AObject) override;
  /// When the member added last goes, the last remaining member takes its place (nil for none).
  void RemoveObject(TLxJSONBase* AObject) override;

  /// "<object>".
  LxJSONString GetName() override;
  TLxJSONObject* GetAsObject() override { return this; }
  void SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                    bool AAddLeadingSpace) override;
  /// The number of members.
  Integer Count() override;
  /// A new member, without a value, as the last one.
  TLxJSONMember* AddMember(const LxJSONString& AName) override;
  /// The same with a new value of that type (see TLxJSONMember::CreateValue).
  TLxJSONMember* AddMember(const LxJSONString& AName, TLxJSONDataType AValueType) override;
  /// The same with a simple value that holds AValue unchanged as text, of type AValueType.
  /// jdtObject and jdtArray raise EInvalidCast "Invalid class typecast", adding nothing.
  TLxJSONMember* AddMember(const LxJSONString& AName, TLxJSONDataType AValueType,
                           const LxJSONString& AValue) override;
  /// By the Variant's kind: an integer as a 32-bit number (a larger one raises the Variant's
  /// overflow error), a float, text, a boolean, a date (its XML text, no zone) as text; an array
  /// becomes an array member with each element added by TLxJSONArray::AddValue; anything else a
  /// null with the Variant's text. The result is the member.
  TLxJSONMember* AddMember(const LxJSONString& AName, const Variant& AValue) override;
  void DeleteMember(Integer AIdx) override;
  /// FreeObject on AMember, wherever it belongs; nil does nothing.
  void RemoveMember(TLxJSONMember* AMember) override;

  /// "#/" and the names of the members from the root down to this object, joined by "/" (arrays
  /// on the way add nothing): "#/a/b".
  LxJSONString GetPath();
  /// The member added last that is still here; nil when there is none.
  TLxJSONMember* GetLastMember() const noexcept { return FLastMember; }

  // ILxJSONObject
  IPtr<ILxJSONMember> AddMemberIntf1(const LxJSONString& AName) override;
  IPtr<ILxJSONMember> AddMemberIntf2(const LxJSONString& AName,
                                     TLxJSONDataType AValueType) override;
  IPtr<ILxJSONMember> AddMemberIntf3(const LxJSONString& AName, TLxJSONDataType AValueType,
                                     const LxJSONString& AValue) override;
  IPtr<ILxJSONMember> AddMemberIntf4(const LxJSONString& AName, const Variant& AValue) override;
  void RemoveMemberIntf(ILxJSONMember* AMember) override;

protected:
  ~TLxJSONObject() override = default;
  TLxJSONMember* DoFindMember(const LxJSONString& AName, bool ACaseInsensitive) override;
  TLxJSONMember* DoGetMember(const LxJSONString& AName,
                             TLxJDOCSelectOptions ASelectOptions) override;
  TLxJSONBase* DoItem(Integer AIdx) override;

private:
  friend class TLxJSONHandler;
  TLxJSONMember* FLastMember = nullptr;
};

class TLxJSONArray : public TLxJSONBase, public virtual ILxJSONArray {
  LX_CLASS(TLxJSONArray, TLxJSONBase)
  /// Of type jdtArray. Without an owner the array is a list of values that belong elsewhere:
  /// it doesn't free its items.
  explicit TLxJSONArray(TLxJSONBase* AOwner);

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  TLxJSONArray* GetAsArray() override { return this; }
  void SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                    bool AAddLeadingSpace) override;
  Integer Count() override;
  /// A new object, array or simple value as the last item, of type AValueType.
  TLxJSONBase* AddValue(TLxJSONDataType AValueType) override;
  /// A new simple value that holds AValue unchanged as text. jdtObject and jdtArray raise
  /// EInvalidCast "Invalid class typecast", adding nothing.
  TLxJSONBase* AddValue(TLxJSONDataType AValueType, const LxJSONString& AValue) override;
  /// A new simple value holding a copy of AValue, of type LxVarTypeToJSONType. An array Variant
  /// raises EInvalidCast "Invalid class typecast", adding nothing: arrays don't nest this way.
  TLxJSONBase* AddValue(const Variant& AValue) override;
  /// FreeObject on AValue, wherever it belongs; nil does nothing.
  void RemoveValue(TLxJSONBase* AValue) override;
  void DeleteValue(Integer AIdx) override;
  /// Swaps two items.
  void Exchange(Integer AIdx1, Integer AIdx2) override;

  // ILxJSONArray
  IPtr<ILxJSONBase> AddValueIntf1(TLxJSONDataType AValueType) override;
  IPtr<ILxJSONBase> AddValueIntf2(TLxJSONDataType AValueType, const LxJSONString& AValue) override;
  IPtr<ILxJSONBase> AddValueIntf3(const Variant& AValue) override;
  void RemoveValueIntf(ILxJSONBase* AValue) override;

protected:
  ~TLxJSONArray() override = default;
  TLxJSONBase* DoItem(Integer AIdx) override;
};

class TLxJSONDocument : public TLxJSONBase, public virtual ILxJSONDocument {
  LX_CLASS(TLxJSONDocument, TLxJSONBase)
  TLxJSONDocument();
  /// The factories give a new document that the caller frees; a failure frees it again.
  static TLxJSONDocument* CreateFromFile(const TFileName& AFilename,
                                         Word AMode = fmOpenRead | fmShareDenyWrite);
  static TLxJSONDocument* CreateFromJSON(const LxJSONString& AJSON);
  /// The bytes are decoded from ACodePage first.
  static TLxJSONDocument* CreateFromJSON(const RawByteString& AJSON, Word ACodePage);
  static TLxJSONDocument* CreateFromStream(TStream* AStream, Word ACodePage,
                                           bool AIsUrlFormEncoded = false);

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  /// Frees the root value and makes a new object, array or simple value (of type jdtNull) in
  /// its place.
  TLxJSONBase* CreateRootValue(TLxJSONDataType AValueType);
  /// The one child; nil for an empty document.
  TLxJSONBase* GetRootValue();

  /// The root value's FindMember, GetMember and Item; without a root value they raise
  /// ELxJSONParseError "There is no root value!" (code 10), and a root of another kind raises
  /// the unsupported error under its own class name.
  TLxJSONMember* FindMember(const LxJSONString& AName, bool ACaseInsensitive = false);
  TLxJSONMember* GetMember(const LxJSONString& AName, TLxJDOCSelectOptions ASelectOptions = {});
  TLxJSONBase* Item(Integer AIdx);

  /// A missing file raises EReadError "There is no file \"<name>\""; a byte order mark decides
  /// the code page.
  void LoadFromFile(const TFileName& AFilename,
                    Word AMode = fmOpenRead | fmShareDenyWrite) override;
  /// Makes (or empties) the file and writes UTF-8 with a byte order mark.
  void SaveToFile(const TFileName& AFilename, bool AFormatted = false) override;
  /// The text in ACodePage: 1200 UTF-16 (with AWriteBOM its mark first), 65001 UTF-8 (with
  /// AWriteBOM its mark before the first byte), any other code page converted without a mark.
  /// This form hides the inherited SaveToStream(stream, formatted, depth, leading space), which
  /// stays reachable through a TLxJSONBase reference.
#if defined(__clang__)
  // The hiding is the point: a code page must never be taken for a depth.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Woverloaded-virtual"
#endif
  void SaveToStream(TStream* AStream, bool AFormatted, Word ACodePage, bool AWriteBOM) override;
#if defined(__clang__)
#pragma clang diagnostic pop
#endif
  LxJSONString GetAsJSON() override;

  // ILxJSONDocument, beside the operations above
  LxJSONString GetFormattedJSON() override { return TLxJSONBase::GetFormattedJSON(); }
  void SetAsJSON(const LxJSONString& AJSON) override { TLxJSONBase::SetAsJSON(AJSON); }
  void LoadFromStream(TStream* AStream) override { TLxJSONBase::LoadFromStream(AStream); }
  void LoadFromStream(TStream* AStream, Word ACodePage, bool AIsUrlFormEncoded) override {
    TLxJSONBase::LoadFromStream(AStream, ACodePage, AIsUrlFormEncoded);
  }
  IPtr<ILxJSONBase> GetRootValueIntf() override;
  IPtr<ILxJSONBase> CreateRootValueIntf(TLxJSONDataType AValueType) override;
  /// Ask the root value, as FindMember and GetMember do (also through ILxJSONBase).
  IPtr<ILxJSONMember> FindMemberIntf(const LxJSONString& AName,
                                     bool ACaseInsensitive = false) override;
  IPtr<ILxJSONMember> GetMemberIntf(const LxJSONString& AName,
                                    TLxJDOCSelectOptions ASelectOptions = {}) override;
  IPtr<ILxJSONArray> SelectIntf(const LxJSONString& APath,
                                TLxJDOCSelectOptions AOptions = {}) override {
    return TLxJSONBase::SelectIntf(APath, AOptions);
  }

protected:
  ~TLxJSONDocument() override = default;

private:
  TLxJSONBase* RootOrRaise();
};

// The constructors are inline: the tree's load makes values in great numbers, and the stores of
// the interface tables that each level of a constructor repeats fold into one set when the
// compiler sees them together.

inline TLxJSONBase::TLxJSONBase(TLxJSONBase* AOwner, TKind AKind) : FKind(AKind), FOwner(AOwner) {
  if (AOwner) {
    SetAutoDestroy(false);
    AOwner->InsertObject(this);
  }
}

inline TLxJSONBase::TLxJSONBase(TLxJSONBase* AOwner) : TLxJSONBase(AOwner, TKind::Base) {}

inline TLxJSONSimpleType::TLxJSONSimpleType(TLxJSONBase* AOwner)
    : TLxJSONBase(AOwner, TKind::Simple), FValue(Null()) {}

inline TLxJSONMember::TLxJSONMember(TLxJSONBase* AOwner) : TLxJSONBase(AOwner, TKind::Member) {}

inline TLxJSONObject::TLxJSONObject(TLxJSONBase* AOwner) : TLxJSONBase(AOwner, TKind::Object) {
  FJSONType = jdtObject;
}

inline TLxJSONArray::TLxJSONArray(TLxJSONBase* AOwner) : TLxJSONBase(AOwner, TKind::Array) {
  FJSONType = jdtArray;
  FDestroyChilds = AOwner != nullptr;
}

/// The JSON text read into a document and written again: compact.
LxJSONString LxFormatJSON(const LxJSONString& AJSON);
/// The bytes decoded from the process default code page, read into a document and written
/// again: indented.
LxJSONString LxFormatJSON(const AnsiString& AJSON);

} // namespace lorvane
