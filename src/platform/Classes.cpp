// Copyable objects, string lists, the class registry and owned components.
#include "lorvane/platform/Classes.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>

namespace lorvane {

// --- TPersistent ---------------------------------------------------------------------------------
void TPersistent::Assign(TPersistent* ASource) {
  if (ASource)
    ASource->AssignTo(this);
  else
    AssignError(/*ASource=*/nullptr);
}

void TPersistent::AssignTo(TPersistent* ADest) { ADest->AssignError(this); }

void TPersistent::AssignError(TPersistent* ASource) {
  const UnicodeString SourceName = ASource ? ASource->ClassName() : UnicodeString(u"nil");
  throw EConvertError(SAssignError, {SourceName, ClassName()});
}

// --- TStrings ------------------------------------------------------------------------------------
namespace {

bool IsBlank(WideChar AChar) noexcept { return AChar <= u' '; }

/// AValue in AQuote, with every AQuote inside doubled.
void AppendQuoted(UnicodeString& AOut, std::u16string_view AValue, WideChar AQuote) {
  AOut += AQuote;
  for (const WideChar C : AValue) {
    AOut += C;
    if (C == AQuote)
      AOut += AQuote;
  }
  AOut += AQuote;
}

/// Reads a quoted item starting on the quote at APos and leaves APos behind the closing quote (or
/// at the end, for an item that is never closed).
UnicodeString ExtractQuoted(std::u16string_view AText, std::size_t& APos, WideChar AQuote) {
  UnicodeString Result;
  ++APos;
  while (APos < AText.size()) {
    const WideChar C = AText[APos++];
    if (C != AQuote) {
      Result += C;
    } else if (APos < AText.size() && AText[APos] == AQuote) {
      Result += AQuote;
      ++APos;
    } else {
      break;
    }
  }
  return Result;
}

} // namespace

void TStrings::SetStrings(Integer AIndex, std::u16string_view AValue) {
  TObject* Object = GetObjects(AIndex);
  const UnicodeString Value(AValue); // AValue may be a view of the line about to go
  Delete(AIndex);
  InsertObject(AIndex, Value, Object);
}

TObject* TStrings::GetObjects(Integer /*AIndex*/) const { return nullptr; }

void TStrings::SetObjects(Integer /*AIndex*/, TObject* /*AObject*/) {}

Integer TStrings::Add(std::u16string_view AValue) {
  const Integer Index = GetCount();
  Insert(Index, AValue);
  return Index;
}

Integer TStrings::AddObject(std::u16string_view AValue, TObject* AObject) {
  const Integer Index = Add(AValue);
  SetObjects(Index, AObject);
  return Index;
}

void TStrings::InsertObject(Integer AIndex, std::u16string_view AValue, TObject* AObject) {
  Insert(AIndex, AValue);
  SetObjects(AIndex, AObject);
}

void TStrings::AddStrings(TStrings* AStrings) {
  if (AStrings == this) {
    // Adding to itself would chase its own tail.
    const Integer Count = GetCount();
    for (Integer I = 0; I < Count; ++I)
      AddObject(UnicodeString(GetStrings(I)), GetObjects(I));
    return;
  }
  for (Integer I = 0; I < AStrings->GetCount(); ++I)
    AddObject(AStrings->GetStrings(I), AStrings->GetObjects(I));
}

void TStrings::Assign(TPersistent* ASource) {
  auto* Source = dynamic_cast<TStrings*>(ASource);
  if (!Source) {
    TPersistent::Assign(ASource);
    return;
  }
  if (Source == this)
    return;
  Clear();
  FNameValueSeparator = Source->FNameValueSeparator;
  FDelimiter = Source->FDelimiter;
  FQuoteChar = Source->FQuoteChar;
  FStrictDelimiter = Source->FStrictDelimiter;
  AddStrings(Source);
}

int TStrings::CompareStrings(std::u16string_view A, std::u16string_view B) const {
  return CompareText(A, B);
}

Integer TStrings::IndexOf(std::u16string_view AValue) const {
  for (Integer I = 0; I < GetCount(); ++I)
    if (CompareStrings(GetStrings(I), AValue) == 0)
      return I;
  return -1;
}

Integer TStrings::IndexOfName(std::u16string_view AName) const {
  // A line's name ends at its first separator; only a line with that separator right after
  // AName's length can match, which most lines fail at a glance.
  const std::size_t Length = AName.size();
  for (Integer I = 0; I < GetCount(); ++I) {
    const std::u16string_view Line = GetStrings(I);
    if (Line.size() > Length && Line[Length] == FNameValueSeparator &&
        Line.find(FNameValueSeparator) == Length &&
        CompareStrings(Line.substr(0, Length), AName) == 0)
      return I;
  }
  return -1;
}

UnicodeString TStrings::GetNames(Integer AIndex) const {
  const std::u16string_view Line = GetStrings(AIndex);
  const std::size_t Separator = Line.find(FNameValueSeparator);
  return Separator == std::u16string_view::npos ? UnicodeString()
                                                : UnicodeString(Line.substr(0, Separator));
}

UnicodeString TStrings::GetValues(std::u16string_view AName) const {
  const Integer Index = IndexOfName(AName);
  return Index < 0 ? UnicodeString() : GetValueFromIndex(Index);
}

void TStrings::SetValues(std::u16string_view AName, std::u16string_view AValue) {
  const Integer Index = IndexOfName(AName);
  if (AValue.empty()) {
    if (Index >= 0)
      Delete(Index);
    return;
  }
  UnicodeString Line(AName);
  Line += FNameValueSeparator;
  Line += AValue;
  if (Index < 0)
    Add(Line);
  else
    SetStrings(Index, Line);
}

UnicodeString TStrings::GetValueFromIndex(Integer AIndex) const {
  if (AIndex < 0)
    return UnicodeString();
  const std::u16string_view Line = GetStrings(AIndex);
  const std::size_t Separator = Line.find(FNameValueSeparator);
  return Separator == std::u16string_view::npos ? UnicodeString()
                                                : UnicodeString(Line.substr(Separator + 1));
}

void TStrings::SetValueFromIndex(Integer AIndex, std::u16string_view AValue) {
  if (AValue.empty()) {
    if (AIndex >= 0)
      Delete(AIndex);
    return;
  }
  UnicodeString Line = AIndex < 0 ? UnicodeString() : GetNames(AIndex);
  Line += FNameValueSeparator;
  Line += AValue;
  if (AIndex < 0)
    Add(Line);
  else
    SetStrings(AIndex, Line);
}

UnicodeString TStrings::GetText() const {
  std::size_t Size = 0;
  for (const auto& Line : *this)
    Size += Line.size() + sLineBreak.size();
  UnicodeString Result;
  Result.reserve(Size);
  for (const auto& Line : *this) {
    Result += Line;
    Result += sLineBreak;
  }
  return Result;
}

void TStrings::SetText(std::u16string_view AValue) {
  const UnicodeString Text(AValue); // AValue may be a view of one of the lines
  Clear();
  std::size_t Start = 0;
  while (Start < Text.size()) {
    std::size_t Stop = Text.find_first_of(u"\r\n", Start);
    if (Stop == UnicodeString::npos)
      Stop = Text.size();
    Add(std::u16string_view(Text).substr(Start, Stop - Start));
    if (Stop < Text.size() && Text[Stop] == u'\r' && Stop + 1 < Text.size() &&
        Text[Stop + 1] == u'\n')
      ++Stop;
    Start = Stop + 1;
  }
}

UnicodeString TStrings::GetDelimitedText() const { return JoinDelimited(FDelimiter, FQuoteChar); }

void TStrings::SetDelimitedText(std::u16string_view AValue) {
  SplitDelimited(AValue, FDelimiter, FQuoteChar);
}

UnicodeString TStrings::GetCommaText() const { return JoinDelimited(u',', u'"'); }

void TStrings::SetCommaText(std::u16string_view AValue) { SplitDelimited(AValue, u',', u'"'); }

UnicodeString TStrings::JoinDelimited(WideChar ADelimiter, WideChar AQuote) const {
  const Integer Count = GetCount();
  if (Count == 1 && GetStrings(0).empty())
    return UnicodeString(2, AQuote);
  UnicodeString Result;
  for (Integer I = 0; I < Count; ++I) {
    const UnicodeString& Line = GetStrings(I);
    const bool Quote = std::any_of(Line.begin(), Line.end(), [&](WideChar C) {
      return C == u'\0' || C == AQuote || C == ADelimiter || (!FStrictDelimiter && IsBlank(C));
    });
    if (I > 0)
      Result += ADelimiter;
    if (Quote)
      AppendQuoted(Result, Line, AQuote);
    else
      Result += Line;
  }
  return Result;
}

void TStrings::SplitDelimited(std::u16string_view AValue, WideChar ADelimiter, WideChar AQuote) {
  const UnicodeString Text(AValue); // AValue may be a view of one of the lines
  Clear();
  const std::size_t Size = Text.size();
  std::size_t Pos = 0;
  auto SkipBlanks = [&] {
    if (!FStrictDelimiter)
      while (Pos < Size && IsBlank(Text[Pos]))
        ++Pos;
  };
  SkipBlanks();
  while (Pos < Size) {
    if (Text[Pos] == AQuote) {
      Add(ExtractQuoted(Text, Pos, AQuote));
    } else {
      const std::size_t Start = Pos;
      while (Pos < Size && Text[Pos] != ADelimiter && (FStrictDelimiter || !IsBlank(Text[Pos])))
        ++Pos;
      Add(std::u16string_view(Text).substr(Start, Pos - Start));
    }
    SkipBlanks();
    if (Pos < Size && Text[Pos] == ADelimiter) {
      ++Pos;
      if (Pos == Size)
        Add(u"");
      SkipBlanks();
    }
  }
}

// --- TStringList ---------------------------------------------------------------------------------
TStringList::~TStringList() { Clear(); }

void TStringList::CheckIndex(Integer AIndex) const {
  if (AIndex < 0 || AIndex >= GetCount())
    RaiseListIndexError(AIndex);
}

const UnicodeString& TStringList::GetStrings(Integer AIndex) const {
  CheckIndex(AIndex);
  return FItems[static_cast<std::size_t>(AIndex)].FString;
}

void TStringList::SetStrings(Integer AIndex, std::u16string_view AValue) {
  if (FSorted)
    throw EListError(UnicodeString(SSortedListError));
  CheckIndex(AIndex);
  FItems[static_cast<std::size_t>(AIndex)].FString = UnicodeString(AValue);
}

TObject* TStringList::GetObjects(Integer AIndex) const {
  CheckIndex(AIndex);
  return FItems[static_cast<std::size_t>(AIndex)].FObject;
}

void TStringList::SetObjects(Integer AIndex, TObject* AObject) {
  CheckIndex(AIndex);
  FItems[static_cast<std::size_t>(AIndex)].FObject = AObject;
}

Integer TStringList::Add(std::u16string_view AValue) {
  return AddObject(AValue, /*AObject=*/nullptr);
}

Integer TStringList::AddObject(std::u16string_view AValue, TObject* AObject) {
  Integer Index = GetCount();
  if (FSorted && Find(AValue, Index)) {
    if (FDuplicates == dupIgnore)
      return Index;
    if (FDuplicates == dupError)
      throw EListError(UnicodeString(SDuplicateString));
  }
  InsertItem(Index, AValue, AObject);
  return Index;
}

void TStringList::Insert(Integer AIndex, std::u16string_view AValue) {
  if (FSorted)
    throw EListError(UnicodeString(SSortedListError));
  if (AIndex < 0 || AIndex > GetCount())
    RaiseListIndexError(AIndex);
  InsertItem(AIndex, AValue, /*AObject=*/nullptr);
}

void TStringList::InsertItem(Integer AIndex, std::u16string_view AValue, TObject* AObject) {
  TStringItem Item{UnicodeString(AValue), AObject}; // before the insert moves what AValue views
  FItems.insert(FItems.begin() + AIndex, std::move(Item));
}

void TStringList::Delete(Integer AIndex) {
  CheckIndex(AIndex);
  TObject* Object = FItems[static_cast<std::size_t>(AIndex)].FObject;
  FItems.erase(FItems.begin() + AIndex);
  if (FOwnsObjects)
    lorvane::Free(Object);
}

void TStringList::Clear() {
  std::vector<TStringItem> Items;
  Items.swap(FItems);
  if (FOwnsObjects)
    for (const auto& Item : Items)
      lorvane::Free(Item.FObject);
}

void TStringList::Assign(TPersistent* ASource) {
  auto* Source = dynamic_cast<TStringList*>(ASource);
  if (Source == this)
    return;
  // A copy of another string list takes its lines as they stand, then its order rules.
  if (Source)
    FSorted = false;
  TStrings::Assign(ASource);
  if (Source) {
    FCaseSensitive = Source->FCaseSensitive;
    FDuplicates = Source->FDuplicates;
    FSorted = Source->FSorted;
  }
}

int TStringList::CompareStrings(std::u16string_view A, std::u16string_view B) const {
  if (!FCaseSensitive)
    return CompareText(A, B);
  const int Order = A.compare(B);
  return Order < 0 ? -1 : (Order > 0 ? 1 : 0);
}

Integer TStringList::IndexOf(std::u16string_view AValue) const {
  if (!FSorted)
    return TStrings::IndexOf(AValue);
  Integer Index;
  return Find(AValue, Index) ? Index : -1;
}

bool TStringList::Find(std::u16string_view AValue, Integer& AIndex) const {
  const auto It = std::lower_bound(FItems.begin(), FItems.end(), AValue,
                                   [this](const TStringItem& AItem, std::u16string_view AKey) {
                                     return CompareStrings(AItem.FString, AKey) < 0;
                                   });
  AIndex = static_cast<Integer>(It - FItems.begin());
  return It != FItems.end() && CompareStrings(It->FString, AValue) == 0;
}

void TStringList::SortItems() {
  std::stable_sort(FItems.begin(), FItems.end(),
                   [this](const TStringItem& A, const TStringItem& B) {
                     return CompareStrings(A.FString, B.FString) < 0;
                   });
}

void TStringList::Sort() {
  if (!FSorted)
    SortItems();
}

void TStringList::SetSorted(bool AValue) {
  if (AValue && !FSorted)
    SortItems();
  FSorted = AValue;
}

void TStringList::SetCaseSensitive(bool AValue) {
  if (AValue == FCaseSensitive)
    return;
  FCaseSensitive = AValue;
  if (FSorted)
    SortItems();
}

// --- class registry ------------------------------------------------------------------------------
namespace {

std::string AsciiLowerKey(std::string_view AName) {
  std::string Key(AName);
  for (char& C : Key)
    if (C >= 'A' && C <= 'Z')
      C = static_cast<char>(C - 'A' + 'a');
  return Key;
}

class TClassRegistry {
public:
  void Register(TClass AClass) {
    const std::scoped_lock Lock(FMutex);
    for (TClass C = AClass; C; C = C->Parent) {
      const auto [It, Added] = FClasses.try_emplace(AsciiLowerKey(C->Name), C);
      if (!Added && It->second != C)
        throw EFilerError(SDuplicateClass, {C->Name});
      // The chain stops at TPersistent, or at the class itself for one that isn't persistent.
      if (!Added || C == TPersistent::StaticClass() ||
          !TObject::ClassInheritsFrom(C, TPersistent::StaticClass()))
        break;
    }
  }
  void Unregister(TClass AClass) {
    const std::scoped_lock Lock(FMutex);
    const auto It = FClasses.find(AsciiLowerKey(AClass->Name));
    if (It != FClasses.end() && It->second == AClass)
      FClasses.erase(It);
  }
  TClass Find(std::u16string_view AName) {
    const std::string Key = AsciiLowerKey(StringToUTF8(AName));
    const std::scoped_lock Lock(FMutex);
    const auto It = FClasses.find(Key);
    return It == FClasses.end() ? nullptr : It->second;
  }

private:
  std::mutex FMutex;
  std::unordered_map<std::string, TClass> FClasses;
};

TClassRegistry& ClassRegistry() {
  static TClassRegistry Registry;
  return Registry;
}

} // namespace

void RegisterClass(TClass AClass) {
  if (AClass)
    ClassRegistry().Register(AClass);
}

void RegisterClasses(std::initializer_list<TClass> AClasses) {
  for (TClass Class : AClasses)
    RegisterClass(Class);
}

void UnRegisterClass(TClass AClass) {
  if (AClass)
    ClassRegistry().Unregister(AClass);
}

TClass GetClass(std::u16string_view AClassName) { return ClassRegistry().Find(AClassName); }

TClass FindClass(std::u16string_view AClassName) {
  TClass Class = GetClass(AClassName);
  if (!Class)
    throw EClassNotFound(SClassNotFound, {UnicodeString(AClassName)});
  return Class;
}

// --- TComponent ----------------------------------------------------------------------------------
namespace {

bool IsValidIdent(std::u16string_view AName) noexcept {
  auto IsAlpha = [](WideChar C) {
    return (C >= u'A' && C <= u'Z') || (C >= u'a' && C <= u'z') || C == u'_';
  };
  if (AName.empty() || !IsAlpha(AName[0]))
    return false;
  return std::all_of(AName.begin() + 1, AName.end(),
                     [&](WideChar C) { return IsAlpha(C) || (C >= u'0' && C <= u'9'); });
}

} // namespace

TComponent::TComponent(TComponent* AOwner) {
  if (AOwner) {
    // Notifying here would call the new component's Notification before its own class exists.
    AOwner->Insert(this);
    FInsertNotificationPending = true;
  }
}

void TComponent::AfterConstruction() {
  TPersistent::AfterConstruction();
  if (FInsertNotificationPending) {
    FInsertNotificationPending = false;
    FOwner->Notification(this, opInsert);
  }
}

TComponent::~TComponent() {
  // Owned components go first, the last one first, each taken from the list before it dies.
  while (!FComponents.empty()) {
    TComponent* Instance = FComponents.back();
    FComponents.pop_back();
    Instance->FOwner = nullptr;
    Instance->Free();
  }
  if (FOwner)
    FOwner->RemoveComponent(this);
}

void TComponent::SetName(std::u16string_view ANewName) {
  if (FName == ANewName)
    return;
  if (!ANewName.empty() && !IsValidIdent(ANewName))
    throw EComponentError(SInvalidName, {UnicodeString(ANewName)});
  if (FOwner)
    FOwner->ValidateRename(this, FName, ANewName);
  else
    ValidateRename(/*AComponent=*/nullptr, FName, ANewName);
  FName = UnicodeString(ANewName);
}

void TComponent::ValidateRename(TComponent* AComponent, std::u16string_view ACurName,
                                std::u16string_view ANewName) {
  if (AComponent && !SameText(ACurName, ANewName) && AComponent->FOwner == this &&
      FindComponent(ANewName))
    throw EComponentError(SDuplicateName, {UnicodeString(ANewName)});
}

TComponent* TComponent::GetComponents(Integer AIndex) const {
  if (AIndex < 0 || AIndex >= GetComponentCount())
    RaiseListIndexError(AIndex);
  return FComponents[static_cast<std::size_t>(AIndex)];
}

TComponent* TComponent::FindComponent(std::u16string_view AName) const {
  if (AName.empty())
    return nullptr;
  for (TComponent* Component : FComponents)
    if (SameText(Component->FName, AName))
      return Component;
  return nullptr;
}

void TComponent::Insert(TComponent* AComponent) {
  if (!AComponent->FName.empty() && FindComponent(AComponent->FName))
    throw EComponentError(SDuplicateName, {AComponent->FName});
  if (AComponent->FOwner)
    AComponent->FOwner->RemoveComponent(AComponent);
  FComponents.push_back(AComponent);
  AComponent->FOwner = this;
}

void TComponent::InsertComponent(TComponent* AComponent) {
  if (!AComponent || AComponent->FOwner == this)
    return;
  Insert(AComponent);
  AComponent->FInsertNotificationPending = false;
  Notification(AComponent, opInsert);
}

void TComponent::RemoveComponent(TComponent* AComponent) {
  if (!AComponent || AComponent->FOwner != this)
    return;
  AComponent->FInsertNotificationPending = false;
  Notification(AComponent, opRemove);
  const auto It = std::find(FComponents.begin(), FComponents.end(), AComponent);
  if (It != FComponents.end())
    FComponents.erase(It);
  AComponent->FOwner = nullptr;
}

void TComponent::Notification(TComponent* AComponent, TOperation AOperation) {
  // From the end, with the index pulled back after each call: a handler may remove components.
  Integer I = GetComponentCount() - 1;
  while (I >= 0) {
    FComponents[static_cast<std::size_t>(I)]->Notification(AComponent, AOperation);
    --I;
    if (I >= GetComponentCount())
      I = GetComponentCount() - 1;
  }
}

HRESULT TComponent::QueryInterface(const TGUID& AIID, void** AObj) {
  // The owner decides a component's lifetime: its references are not counted.
  return AnswerUncountedInterfaces<IInterface>(this, AIID, AObj,
                                               [AObj] { return RefuseInterface(AObj); });
}

} // namespace lorvane
