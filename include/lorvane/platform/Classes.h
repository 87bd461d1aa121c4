/// The runtime's class library: TPersistent (copyable objects), TStrings and TStringList (lines
/// with an object beside each, name=value access, delimited text), the name-to-class registry
/// (RegisterClass, GetClass, FindClass), TComponent (named objects owned by an owner) and the
/// name of TFiler.
#pragma once

#include "lorvane/platform/Generics.h"

#include <functional>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace lorvane {

// --- messages ------------------------------------------------------------------------------------
inline constexpr std::u16string_view SAssignError = u"Cannot assign a %s to a %s";
inline constexpr std::u16string_view SDuplicateString = u"String list does not allow duplicates";
inline constexpr std::u16string_view SSortedListError = u"Operation not allowed on sorted list";
inline constexpr std::u16string_view SClassNotFound = u"Class %s not found";
inline constexpr std::u16string_view SDuplicateClass = u"A class named %s already exists";
inline constexpr std::u16string_view SInvalidName = u"\"%s\" is not a valid component name";
inline constexpr std::u16string_view SDuplicateName = u"A component named %s already exists";

/// The line break that TStrings writes: CR LF on every platform.
inline constexpr std::u16string_view sLineBreak = u"\r\n";

/// The streaming object that DefineProperties receives; this runtime has no filer yet, so only
/// its name exists.
class TFiler;

// --- TPersistent ---------------------------------------------------------------------------------
/// An object that can be copied from another. Assign asks the source to AssignTo this object when
/// it doesn't know the source's class; by default that raises EConvertError "Cannot assign a %s
/// to a %s" with the source's class name ("nil" for none) and this one's.
class TPersistent : public TObject {
  LX_CLASS(TPersistent, TObject)
  TPersistent() = default;
  virtual void Assign(TPersistent* ASource);

protected:
  ~TPersistent() override = default;
  /// Copies this object to ADest; an override handles the classes it knows and calls the
  /// inherited operation for the others.
  virtual void AssignTo(TPersistent* ADest);
  [[noreturn]] void AssignError(TPersistent* ASource);
};

// --- TStrings ------------------------------------------------------------------------------------
/// A list of lines with an object pointer beside each line. The objects belong to the caller
/// unless a descendant says otherwise.
///
/// Name=value lines: a line's name is the text before its first NameValueSeparator ('=' by
/// default), its value the text behind it; a line without a separator has an empty name and an
/// empty value. Names compare as the list compares strings, which by default ignores ASCII letter
/// case. Delimited text (DelimitedText, CommaText) follows the platform's rules: see
/// GetDelimitedText and SetDelimitedText.
class TStrings : public TPersistent {
  LX_CLASS(TStrings, TPersistent)
  using value_type = UnicodeString;

  virtual Integer GetCount() const = 0;
  /// An index outside 0..Count-1 raises EListError "List index out of bounds (%d)".
  virtual const UnicodeString& GetStrings(Integer AIndex) const = 0;
  /// Replaces the line and keeps its object.
  virtual void SetStrings(Integer AIndex, std::u16string_view AValue);
  /// Nil in this base class.
  virtual TObject* GetObjects(Integer AIndex) const;
  /// Does nothing in this base class.
  virtual void SetObjects(Integer AIndex, TObject* AObject);
  const UnicodeString& operator[](Integer AIndex) const { return GetStrings(AIndex); }

  /// Appends a line; gives its index.
  virtual Integer Add(std::u16string_view AValue);
  virtual Integer AddObject(std::u16string_view AValue, TObject* AObject);
  /// AIndex may be Count, which appends.
  virtual void Insert(Integer AIndex, std::u16string_view AValue) = 0;
  void InsertObject(Integer AIndex, std::u16string_view AValue, TObject* AObject);
  virtual void Delete(Integer AIndex) = 0;
  virtual void Clear() = 0;
  /// Adds every line of AStrings with its object.
  void AddStrings(TStrings* AStrings);
  /// From another TStrings: clears this list, takes over the separator, delimiter, quote
  /// character and strictness, then adds the lines with their objects (the objects are shared,
  /// not copied).
  void Assign(TPersistent* ASource) override;

  /// The first line equal to AValue as the list compares strings; -1 when there is none.
  virtual Integer IndexOf(std::u16string_view AValue) const;
  /// The first line whose name equals AName; -1 when there is none.
  virtual Integer IndexOfName(std::u16string_view AName) const;

  /// Empty for a line without separator.
  UnicodeString GetNames(Integer AIndex) const;
  /// The value of the first line named AName; empty when there is none.
  UnicodeString GetValues(std::u16string_view AName) const;
  /// Sets the value of the first line named AName, appending "name=value" when there is none;
  /// an empty value deletes that line.
  void SetValues(std::u16string_view AName, std::u16string_view AValue);
  /// Empty for a negative index (so that GetValueFromIndex(IndexOfName(n)) is safe) and for a
  /// line without separator.
  UnicodeString GetValueFromIndex(Integer AIndex) const;
  /// Keeps the line's name; a negative index appends a line with an empty name; an empty value
  /// deletes the line.
  void SetValueFromIndex(Integer AIndex, std::u16string_view AValue);
  WideChar GetNameValueSeparator() const noexcept { return FNameValueSeparator; }
  void SetNameValueSeparator(WideChar AValue) noexcept { FNameValueSeparator = AValue; }

  /// Every line followed by CR LF (the last one too); empty for no lines.
  UnicodeString GetText() const;
  /// Replaces the lines by those of AValue, split at CR LF, CR or LF. A line break at the very
  /// end doesn't make an empty last line.
  void SetText(std::u16string_view AValue);

  /// The lines joined by Delimiter. A line is put in QuoteChar (inner quote characters doubled)
  /// when it holds the delimiter or the quote character, or, unless StrictDelimiter, a character
  /// up to U+0020. A single empty line gives two quote characters; no lines give empty text.
  UnicodeString GetDelimitedText() const;
  /// Replaces the lines by the items of AValue. An item starting with QuoteChar runs to the
  /// closing quote (doubled quotes stand for one). Without StrictDelimiter, characters up to
  /// U+0020 around items are skipped and also end an unquoted item; with it, only the delimiter
  /// ends one. A delimiter at the very end adds an empty item.
  void SetDelimitedText(std::u16string_view AValue);
  /// Delimited text with ',' and '"', whatever Delimiter and QuoteChar are.
  UnicodeString GetCommaText() const;
  void SetCommaText(std::u16string_view AValue);
  WideChar GetDelimiter() const noexcept { return FDelimiter; }
  void SetDelimiter(WideChar AValue) noexcept { FDelimiter = AValue; }
  WideChar GetQuoteChar() const noexcept { return FQuoteChar; }
  void SetQuoteChar(WideChar AValue) noexcept { FQuoteChar = AValue; }
  bool GetStrictDelimiter() const noexcept { return FStrictDelimiter; }
  void SetStrictDelimiter(bool AValue) noexcept { FStrictDelimiter = AValue; }

  class const_iterator {
  public:
    using value_type = UnicodeString;
    using difference_type = std::ptrdiff_t;
    const_iterator() = default;
    const_iterator(const TStrings* AStrings, Integer AIndex) : FStrings(AStrings), FIndex(AIndex) {}
    const UnicodeString& operator*() const { return FStrings->GetStrings(FIndex); }
    const_iterator& operator++() {
      ++FIndex;
      return *this;
    }
    const_iterator operator++(int) { return const_iterator(FStrings, FIndex++); }
    friend bool operator==(const const_iterator& A, const const_iterator& B) {
      return A.FIndex == B.FIndex;
    }

  private:
    const TStrings* FStrings = nullptr;
    Integer FIndex = 0;
  };
  /// Runs over the lines; the list must not change meanwhile.
  const_iterator begin() const { return const_iterator(this, 0); }
  const_iterator end() const { return const_iterator(this, GetCount()); }

protected:
  TStrings() = default;
  ~TStrings() override = default;
  /// <0, 0 or >0; ignores ASCII letter case here.
  virtual int CompareStrings(std::u16string_view A, std::u16string_view B) const;

private:
  UnicodeString JoinDelimited(WideChar ADelimiter, WideChar AQuote) const;
  void SplitDelimited(std::u16string_view AValue, WideChar ADelimiter, WideChar AQuote);

  WideChar FNameValueSeparator = u'=';
  WideChar FDelimiter = u',';
  WideChar FQuoteChar = u'"';
  bool FStrictDelimiter = false;
};

// --- TStringList ---------------------------------------------------------------------------------
enum class TDuplicates : Byte { dupIgnore, dupAccept, dupError };
using enum TDuplicates;

/// The TStrings that holds its lines. Comparison ignores ASCII letter case unless CaseSensitive,
/// and is ordinal otherwise (no locale).
///
/// A sorted list keeps its lines in order: Add and AddObject put a line at its place and then
/// look at Duplicates for a line that is already there: dupIgnore gives the index of that line
/// and adds nothing, dupAccept adds the line in front of its equals, dupError raises EListError
/// "String list does not allow duplicates". Insert and SetStrings raise EListError "Operation not
/// allowed on sorted list". Duplicates matter only while sorted; turning Sorted on doesn't take
/// out duplicates already there.
///
/// With OwnsObjects the list frees (through Free) the object of each line it deletes or clears,
/// and all of them at its destruction; SetObjects doesn't free the object it replaces.
class TStringList : public TStrings {
  LX_CLASS(TStringList, TStrings)
  TStringList() = default;
  explicit TStringList(bool AOwnsObjects) noexcept : FOwnsObjects(AOwnsObjects) {}

  Integer GetCount() const override { return static_cast<Integer>(FItems.size()); }
  const UnicodeString& GetStrings(Integer AIndex) const override;
  void SetStrings(Integer AIndex, std::u16string_view AValue) override;
  TObject* GetObjects(Integer AIndex) const override;
  void SetObjects(Integer AIndex, TObject* AObject) override;
  Integer Add(std::u16string_view AValue) override;
  Integer AddObject(std::u16string_view AValue, TObject* AObject) override;
  void Insert(Integer AIndex, std::u16string_view AValue) override;
  void Delete(Integer AIndex) override;
  void Clear() override;
  /// From a TStringList: its lines in their order, and its CaseSensitive, Duplicates and Sorted.
  void Assign(TPersistent* ASource) override;
  /// A binary search in a sorted list.
  Integer IndexOf(std::u16string_view AValue) const override;

  /// Binary search: true when a line equal to AValue is there, with AIndex on the first such
  /// line; otherwise AIndex is where AValue would go. Meaningful only on a sorted list.
  bool Find(std::u16string_view AValue, Integer& AIndex) const;
  /// Orders the lines (equal ones keep their order); nothing to do while Sorted.
  virtual void Sort();

  bool GetSorted() const noexcept { return FSorted; }
  /// Turning it on sorts the list.
  void SetSorted(bool AValue);
  TDuplicates GetDuplicates() const noexcept { return FDuplicates; }
  void SetDuplicates(TDuplicates AValue) noexcept { FDuplicates = AValue; }
  bool GetCaseSensitive() const noexcept { return FCaseSensitive; }
  /// A sorted list sorts again.
  void SetCaseSensitive(bool AValue);
  bool GetOwnsObjects() const noexcept { return FOwnsObjects; }
  void SetOwnsObjects(bool AValue) noexcept { FOwnsObjects = AValue; }

protected:
  ~TStringList() override;
  int CompareStrings(std::u16string_view A, std::u16string_view B) const override;

private:
  struct TStringItem {
    UnicodeString FString;
    TObject* FObject;
  };
  void CheckIndex(Integer AIndex) const;
  void InsertItem(Integer AIndex, std::u16string_view AValue, TObject* AObject);
  void SortItems();

  std::vector<TStringItem> FItems;
  TDuplicates FDuplicates = dupIgnore;
  bool FSorted = false;
  bool FCaseSensitive = false;
  bool FOwnsObjects = false;
};

// --- class registry ------------------------------------------------------------------------------
/// Enters AClass and its ancestors up to TPersistent (for a class that descends from it) under
/// their class names; names compare without regard to ASCII case. A class registered again is
/// left as it is; a different class under a taken name raises EFilerError "A class named %s
/// already exists". Safe to call from any thread.
void RegisterClass(TClass AClass);
void RegisterClasses(std::initializer_list<TClass> AClasses);
/// Takes AClass (only it, not its ancestors) out of the registry; nothing for an unknown class.
void UnRegisterClass(TClass AClass);
/// Nil when no class of that name is registered.
TClass GetClass(std::u16string_view AClassName);
/// Raises EClassNotFound "Class %s not found" when no class of that name is registered.
TClass FindClass(std::u16string_view AClassName);

/// The plain notification: only the sender.
using TNotifyEvent = std::function<void(TObject* ASender)>;

// --- TComponent ----------------------------------------------------------------------------------
enum class TOperation : Byte { opInsert, opRemove };
using enum TOperation;

/// A named object that may have an owner. An owner frees (through Free) the components it owns
/// when it is destroyed, the last one first; a component destroyed on its own leaves its owner's
/// list first. Names are empty or identifiers (ASCII letters, digits and '_', not starting with a
/// digit), and unique among the components of one owner without regard to ASCII case.
///
/// A component answers IInterface without reference counting: _AddRef and _Release give -1 and
/// never destroy it. Descendants that count override them.
class TComponent : public TPersistent, public virtual IInterface {
  LX_CLASS(TComponent, TPersistent)
  /// With AOwner the new component joins AOwner's components at once (so that its Owner is set
  /// in the constructors of descendants); the owner's Notification(opInsert) follows in
  /// AfterConstruction, when the new component is complete. Overrides of AfterConstruction call
  /// this one.
  explicit TComponent(TComponent* AOwner);
  void AfterConstruction() override;

  TComponent* GetOwner() const noexcept { return FOwner; }
  const UnicodeString& GetName() const noexcept { return FName; }
  /// A non-empty name that isn't an identifier raises EComponentError "\"%s\" is not a valid
  /// component name"; a name that another component of the same owner has raises
  /// EComponentError "A component named %s already exists".
  virtual void SetName(std::u16string_view ANewName);

  Integer GetComponentCount() const noexcept { return static_cast<Integer>(FComponents.size()); }
  /// An index outside 0..ComponentCount-1 raises EListError "List index out of bounds (%d)".
  TComponent* GetComponents(Integer AIndex) const;
  /// The owned component of that name (ASCII case ignored); nil for none and for an empty name.
  TComponent* FindComponent(std::u16string_view AName) const;
  /// Makes this component the owner of AComponent (taking it from a former owner), then calls
  /// Notification(AComponent, opInsert). A name taken among this owner's components raises
  /// EComponentError "A component named %s already exists" and changes nothing.
  void InsertComponent(TComponent* AComponent);
  /// Calls Notification(AComponent, opRemove), then lets AComponent go without freeing it.
  void RemoveComponent(TComponent* AComponent);

  /// Told when a component joins (opInsert) or leaves (opRemove) this owner; passes the news on
  /// to every owned component. A component that leaves because it is being destroyed is already
  /// past its own destructor: compare its address, don't call it.
  virtual void Notification(TComponent* AComponent, TOperation AOperation);

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  Integer _AddRef() override { return -1; }
  Integer _Release() override { return -1; }

protected:
  ~TComponent() override;
  /// Raises EComponentError when AComponent may not be renamed from ACurName to ANewName among
  /// this owner's components.
  virtual void ValidateRename(TComponent* AComponent, std::u16string_view ACurName,
                              std::u16string_view ANewName);

private:
  /// Joins this owner's list without notification.
  void Insert(TComponent* AComponent);

  TComponent* FOwner = nullptr;
  bool FInsertNotificationPending = false;
  UnicodeString FName;
  std::vector<TComponent*> FComponents;
};

} // namespace lorvane
