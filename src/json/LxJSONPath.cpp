// JSON path selection: alternatives, the walk over the tree, the cutting of steps and the
// selectors of a step (names, indexes, slices, lists, filters).
#include "json/LxJSONPathWalk.h"

#include "json/LxJSONFaces.h"

#include "lorvane/classes/LxVariants.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <unordered_set>

namespace lorvane {

namespace {

using TKind = TJSONPathAccess::TKind;

constexpr std::u16string_view AlternativeSeparator = u" | ";

bool IsContainer(const TLxJSONBase* AValue) noexcept {
  if (!AValue)
    return false;
  const TKind Kind = TJSONPathAccess::Kind(AValue);
  return Kind == TKind::Object || Kind == TKind::Array;
}

[[noreturn]] void RaiseInvalidPath() {
  throw ELxJSONException(_cLxJSONInvalidPath, cLxJSONErrInvalidPath);
}

[[noreturn]] void RaiseWrongChar(std::u16string_view AExpected, std::u16string_view AFound) {
  throw ELxJSONException(_cLxJSONInvalidCharInPath1,
                         {UnicodeString(AExpected), UnicodeString(AFound)},
                         cLxJSONErrInvalidCharInPath1);
}

/// The text from AFrom of up to ACount characters, a surrogate pair kept whole at its end.
std::u16string_view Chars(std::u16string_view AText, std::size_t AFrom, std::size_t ACount) {
  if (AFrom >= AText.size())
    return {};
  std::size_t Count = std::min(ACount, AText.size() - AFrom);
  const char16_t Last = AText[AFrom + Count - 1];
  if (Last >= 0xD800 && Last <= 0xDBFF && AFrom + Count < AText.size())
    ++Count;
  return AText.substr(AFrom, Count);
}

bool IsIndexText(std::u16string_view AText) noexcept {
  return !AText.empty() && std::all_of(AText.begin(), AText.end(), [](char16_t C) {
    return (C >= u'0' && C <= u'9') || C == u'-';
  });
}

} // namespace

// --- steps and selectors -------------------------------------------------------------------------

/// One selector of a step, classified once; what needs the node at hand (conversions, the
/// length of an array) happens when it is applied.
struct TJSONSelector {
  enum TKind : Byte { Filter, Length, Index, Name, Slice };
  TKind Kind;
  /// The trimmed text, in the path's text; for a name the name itself ("*" for all).
  std::u16string_view Text;
  /// A filter parsed on first use.
  std::unique_ptr<TLxBoolExpression, void (*)(TLxBoolExpression*)> Expression{
      nullptr, [](TLxBoolExpression* E) { lorvane::Free(E); }};
};

struct TJSONPathText::TStep {
  explicit TStep(std::pmr::memory_resource* AMemory) : Selectors(AMemory) {}
  bool Descend = false;
  std::pmr::vector<TJSONSelector> Selectors;
  /// Where the rest of the path starts; the path's length when nothing follows.
  std::size_t Next = 0;
};

struct TJSONPathText::TAlternative {
  TAlternative(std::u16string_view AText, std::pmr::memory_resource* AMemory)
      : Text(AText), Valid(!AText.empty() && (AText[0] == u'$' || AText[0] == u'@')),
        Steps(AMemory) {
    // Each step starts with "." or "[".
    Steps.reserve(static_cast<std::size_t>(std::count_if(
        AText.begin(), AText.end(), [](char16_t C) { return C == u'.' || C == u'['; })));
  }
  /// Trimmed; Valid when it starts with "$" or "@".
  std::u16string_view Text;
  bool Valid;
  /// The steps cut so far: step K starts where step K-1 ended (the first behind "$" or "@").
  /// Room for every step the text can hold is reserved at once, so that a step stays where it
  /// is while the walk cuts the next.
  std::pmr::vector<TStep> Steps;

  std::u16string_view Path() const noexcept { return Text.substr(1); }
  std::size_t StartOf(std::size_t AStep) const noexcept {
    return AStep == 0 ? 0 : Steps[AStep - 1].Next;
  }
  bool EndsBefore(std::size_t AStep) const noexcept { return StartOf(AStep) >= Path().size(); }
  /// Step AStep, cut now if no walk has reached it yet (Steps holds every step before it).
  TStep& StepAt(std::size_t AStep);
};

namespace {

/// AText without leading and trailing characters up to U+0020, as Trim takes them off.
std::u16string_view Trimmed(std::u16string_view AText) noexcept {
  while (!AText.empty() && AText.front() <= u' ')
    AText.remove_prefix(1);
  while (!AText.empty() && AText.back() <= u' ')
    AText.remove_suffix(1);
  return AText;
}

void AddSelector(std::u16string_view S, std::pmr::vector<TJSONSelector>& ASelectors) {
  TJSONSelector& Selector = ASelectors.emplace_back();
  if (S.starts_with(u'?'))
    Selector.Kind = TJSONSelector::Filter;
  else if (S.starts_with(u'('))
    Selector.Kind = TJSONSelector::Length;
  else if (S.find(u':') != std::u16string_view::npos)
    Selector.Kind = TJSONSelector::Slice;
  else if (IsIndexText(S))
    Selector.Kind = TJSONSelector::Index;
  else
    Selector.Kind = TJSONSelector::Name;
  if (Selector.Kind == TJSONSelector::Name) {
    if (S.starts_with(u'\''))
      S = S.size() >= 2 ? S.substr(1, S.size() - 2) : std::u16string_view();
    if (S.empty())
      S = u"*";
  }
  Selector.Text = S;
}

/// The selectors of a token: a token in brackets is split at commas outside apostrophes.
void SplitSelectors(std::u16string_view AToken, std::pmr::vector<TJSONSelector>& ASelectors) {
  if (AToken.empty() || AToken.front() != u'[') {
    AddSelector(Trimmed(AToken), ASelectors);
    return;
  }
  const std::u16string_view Inside =
      AToken.size() >= 2 ? AToken.substr(1, AToken.size() - 2) : std::u16string_view();
  bool Quoted = false;
  std::size_t From = 0;
  for (std::size_t I = 0; I < Inside.size(); ++I) {
    if (Inside[I] == u'\'')
      Quoted = !Quoted;
    else if (Inside[I] == u',' && !Quoted) {
      AddSelector(Trimmed(Inside.substr(From, I - From)), ASelectors);
      From = I + 1;
    }
  }
  // An empty last piece is not taken; but "[]", which holds no piece at all, is one empty
  // selector, all children, as "$." is.
  const std::u16string_view Last = Trimmed(Inside.substr(From));
  if (!Last.empty() || ASelectors.empty())
    AddSelector(Last, ASelectors);
}

} // namespace

TJSONPathText::TStep& TJSONPathText::TAlternative::StepAt(std::size_t AStep) {
  if (AStep < Steps.size())
    return Steps[AStep];
  const std::u16string_view Path = this->Path();
  std::size_t At = StartOf(AStep);
  const char16_t First = Path[At];
  if (First == u'$' || First == u'@')
    throw ELxJSONException(_cLxJSONInvalidCharInPath2, {UnicodeString(1, First)},
                           cLxJSONErrInvalidCharInPath2);
  std::size_t TokenStart, TokenEnd;
  bool Descend = false;
  if (First == u'.') {
    ++At;
    if (At < Path.size() && Path[At] == u'.') {
      Descend = true;
      ++At;
    }
    TokenStart = At;
    // One character is taken whatever it is; then up to the next "." or "[".
    if (At < Path.size()) {
      ++At;
      while (At < Path.size() && Path[At] != u'.' && Path[At] != u'[')
        ++At;
    }
    TokenEnd = At;
  } else if (First == u'[') {
    TokenStart = At++;
    while (At < Path.size()) {
      if (Path[At] == u']') {
        ++At;
        break;
      }
      if (Path[At] == u'[') {
        // One nested pair is passed: up to its "]" and over it.
        const std::size_t Close = Path.find(u']', At);
        At = Close == std::u16string_view::npos ? Path.size() : Close + 1;
      } else {
        ++At;
      }
    }
    TokenEnd = At;
  } else {
    RaiseWrongChar(u". or [", Chars(Path, At, 1));
  }
  TStep& Step = Steps.emplace_back(Steps.get_allocator().resource());
  Step.Descend = Descend;
  Step.Next = TokenEnd;
  SplitSelectors(Path.substr(TokenStart, TokenEnd - TokenStart), Step.Selectors);
  return Step;
}

TJSONPathText::TJSONPathText(std::u16string_view APath, bool AKeepText)
    : FArena(FRoom.data(), FRoom.size()), FAlternatives(&FArena) {
  if (AKeepText) {
    FText = APath;
    APath = FText;
  }
  std::size_t Count = 1;
  for (std::size_t At = APath.find(AlternativeSeparator); At != std::u16string_view::npos;
       At = APath.find(AlternativeSeparator, At + AlternativeSeparator.size()))
    ++Count;
  FAlternatives.reserve(Count);
  for (;;) {
    const std::size_t Cut = APath.find(AlternativeSeparator);
    FAlternatives.emplace_back(Trimmed(APath.substr(0, Cut)), &FArena);
    if (Cut == std::u16string_view::npos)
      break;
    APath.remove_prefix(Cut + AlternativeSeparator.size());
  }
}

TJSONPathText::~TJSONPathText() = default;

// --- the walk ------------------------------------------------------------------------------------

namespace {

/// One selection over one alternative. The walk is the recursion "select the rest of the path
/// from this node" run over a stack of its own, so that neither the depth of the tree ("..")
/// nor the number of steps reaches the call stack; tasks are taken in the order in which the
/// recursion would make its calls, so results, creations and failures come in that order too.
class TJSONPathWalk {
public:
  TJSONPathWalk(TJSONPathText::TAlternative& AAlternative, TLxJDOCSelectOptions AOptions,
                TJSONSelection& AResult)
      : FPath(AAlternative), FOptions(AOptions), FResult(AResult) {}

  void Run(TLxJSONBase* AStart) {
    Push(TTask::Select, AStart, 0);
    while (!FTasks.empty()) {
      const TTask Task = FTasks.back();
      FTasks.pop_back();
      switch (Task.Kind) {
      case TTask::Select:
        Select(Task.Node, Task.Step);
        break;
      case TTask::Append:
        FResult.push_back(Task.Node);
        break;
      case TTask::Descend:
        Descend(Task.Node, Task.Step);
        break;
      }
    }
  }

private:
  struct TTask {
    enum TKind : Byte { Select, Append, Descend };
    TKind Kind;
    TLxJSONBase* Node;
    std::size_t Step;
  };

  void Push(TTask::TKind AKind, TLxJSONBase* ANode, std::size_t AStep) {
    FTasks.push_back({AKind, ANode, AStep});
  }

  /// The rest of the path from step AStep on, from ANode.
  void Select(TLxJSONBase* ANode, std::size_t AStep) {
    const bool Ended = FPath.EndsBefore(AStep);
    if (ANode && TJSONPathAccess::Kind(ANode) == TKind::Member) {
      // A member stands for its value first; then for itself, which only an ended path takes.
      if (Ended)
        Push(TTask::Append, ANode, AStep);
      if (TLxJSONBase* Value = TJSONPathAccess::Value(static_cast<TLxJSONMember*>(ANode)))
        Push(TTask::Select, Value, AStep);
      return;
    }
    if (Ended) {
      FResult.push_back(ANode);
      return;
    }
    if (!IsContainer(ANode))
      return;
    TJSONPathText::TStep& Step = FPath.StepAt(AStep);
    // Children of a ".." step come after everything the candidates lead to.
    if (Step.Descend)
      Push(TTask::Descend, ANode, AStep);
    FCandidates.clear();
    Candidates(ANode, Step);
    if (FPath.EndsBefore(AStep + 1)) {
      FResult.insert(FResult.end(), FCandidates.begin(), FCandidates.end());
    } else {
      for (auto It = FCandidates.rbegin(); It != FCandidates.rend(); ++It)
        Push(TTask::Select, *It, AStep + 1);
    }
  }

  /// The same step on every child of ANode, in order.
  void Descend(TLxJSONBase* ANode, std::size_t AStep) {
    const TJSONChildList& Children = TJSONPathAccess::Children(ANode);
    for (std::size_t I = Children.size(); I-- > 0;) {
      TLxJSONBase* Child = Children[I];
      // A member with more path to go is nothing but its value.
      if (TJSONPathAccess::Kind(Child) == TKind::Member)
        Child = TJSONPathAccess::Value(static_cast<TLxJSONMember*>(Child));
      // A simple value has no children, and the step goes on: nothing to find there.
      if (IsContainer(Child))
        Push(TTask::Select, Child, AStep);
    }
  }

  void Candidates(TLxJSONBase* ANode, TJSONPathText::TStep& AStep) {
    for (TJSONSelector& Selector : AStep.Selectors) {
      switch (Selector.Kind) {
      case TJSONSelector::Filter:
        ApplyFilter(ANode, Selector);
        break;
      case TJSONSelector::Length:
        SelectIndex(ANode, LengthIndex(ANode, Selector.Text));
        break;
      case TJSONSelector::Index:
        if (TJSONPathAccess::Kind(ANode) == TKind::Array)
          SelectIndex(ANode, StrToInt(Selector.Text));
        break;
      case TJSONSelector::Name:
        SelectName(ANode, Selector.Text);
        break;
      case TJSONSelector::Slice:
        SelectSlice(ANode, Selector.Text);
        break;
      }
    }
  }

  /// "(...)": an integer, with "@.length" standing for the number of items of an array.
  static Int64 LengthIndex(TLxJSONBase* ANode, std::u16string_view AText) {
    std::u16string_view Inside =
        AText.size() >= 2 ? AText.substr(1, AText.size() - 2) : std::u16string_view();
    constexpr std::u16string_view Length = u"@.length";
    const std::size_t At = Inside.find(Length);
    if (At == std::u16string_view::npos)
      return StrToInt(Inside);
    const Int64 Base = TJSONPathAccess::Kind(ANode) == TKind::Array
                           ? static_cast<Int64>(TJSONPathAccess::Children(ANode).size())
                           : 0;
    LxJSONString Rest(Inside.substr(0, At));
    Rest.append(Inside.substr(At + Length.size()));
    return Base + StrToInt(Rest);
  }

  void SelectIndex(TLxJSONBase* ANode, Int64 AIndex) {
    if (TJSONPathAccess::Kind(ANode) != TKind::Array)
      return;
    const TJSONChildList& Items = TJSONPathAccess::Children(ANode);
    const Int64 Count = static_cast<Int64>(Items.size());
    if (AIndex < 0)
      AIndex += Count;
    if (AIndex >= 0 && AIndex < Count)
      FCandidates.push_back(Items[static_cast<std::size_t>(AIndex)]);
  }

  void SelectName(TLxJSONBase* ANode, std::u16string_view AName) {
    const bool All = AName == u"*";
    const TKind Kind = TJSONPathAccess::Kind(ANode);
    if (Kind == TKind::Object) {
      const bool CaseInsensitive = FOptions.Contains(jsoCaseInsensitive);
      for (TLxJSONBase* Child : TJSONPathAccess::Children(ANode)) {
        auto* Member = static_cast<TLxJSONMember*>(Child);
        if (!All) {
          const std::u16string_view Name = TJSONPathAccess::Name(Member);
          if (CaseInsensitive ? !SameText(Name, AName) : Name != AName)
            continue;
        }
        if (TLxJSONBase* Value = TJSONPathAccess::Value(Member))
          FCandidates.push_back(Value);
      }
    } else if (All) {
      const TJSONChildList& Items = TJSONPathAccess::Children(ANode);
      FCandidates.insert(FCandidates.end(), Items.begin(), Items.end());
    }
    if (FCandidates.empty() && !All && FOptions.Contains(jsoCreate)) {
      TLxJSONMember* Member = ANode->AddMember(LxJSONString(AName));
      FCandidates.push_back(Member->CreateValue(jdtNull));
    }
  }

  void SelectSlice(TLxJSONBase* ANode, std::u16string_view AText) {
    if (TJSONPathAccess::Kind(ANode) != TKind::Array)
      return;
    const TJSONChildList& Items = TJSONPathAccess::Children(ANode);
    const Int64 Count = static_cast<Int64>(Items.size());
    Int64 Parts[3] = {0, 0, 0};
    // A leading ":" reads as "0:"; parts beyond the third are ignored.
    std::size_t From = 0;
    for (int Part = 0; Part < 3; ++Part) {
      const std::size_t Colon = AText.find(u':', From);
      Parts[Part] = StrToIntDef(AText.substr(From, Colon - From), 0);
      if (Colon == std::u16string_view::npos)
        break;
      From = Colon + 1;
    }
    Int64 Index = Parts[0] < 0 ? Parts[0] + Count : Parts[0];
    const Int64 End = Parts[1] == 0 ? Count : Parts[1];
    const Int64 Step = Parts[2] == 0 ? 1 : Parts[2];
    if (Index < 0 || Index >= Count)
      return;
    // The first item is taken without looking at the end.
    do {
      FCandidates.push_back(Items[static_cast<std::size_t>(Index)]);
      Index += Step;
    } while (Index >= 0 && Index < Count && Index < End);
  }

  void ApplyFilter(TLxJSONBase* ANode, TJSONSelector& ASelector) {
    const std::u16string_view S = ASelector.Text;
    if (!S.starts_with(u"?("))
      RaiseWrongChar(u"?(", Chars(S, 0, 2));
    if (!ASelector.Expression)
      ASelector.Expression.reset(
          ParseJSONFilter(S.size() > 3 ? S.substr(2, S.size() - 3) : std::u16string_view(),
                          FOptions.Contains(jsoCaseInsensitive)));
    TLxJSONNodeList Children;
    const TKind Kind = TJSONPathAccess::Kind(ANode);
    for (TLxJSONBase* Child : TJSONPathAccess::Children(ANode)) {
      if (Kind == TKind::Object)
        Child = TJSONPathAccess::Value(static_cast<TLxJSONMember*>(Child));
      if (Child)
        Children.Add(Child);
    }
    // Survivors join the candidates once. They are children of one node and so differ from
    // each other; only candidates of the step's earlier selectors can be among them.
    const std::size_t Earlier = FCandidates.size();
    std::unordered_set<TLxJSONBase*> Known;
    if (Earlier > 16)
      Known.insert(FCandidates.begin(), FCandidates.end());
    for (Integer I = 0; I < Children.GetCount(); ++I) {
      if (!ASelector.Expression->Evaluate(&Children, I))
        continue;
      TLxJSONBase* Survivor = Children[I];
      const auto First = FCandidates.begin(), Last = First + static_cast<std::ptrdiff_t>(Earlier);
      const bool Seen =
          Earlier > 16 ? Known.contains(Survivor) : std::find(First, Last, Survivor) != Last;
      if (!Seen)
        FCandidates.push_back(Survivor);
    }
  }

  TJSONPathText::TAlternative& FPath;
  TLxJDOCSelectOptions FOptions;
  TJSONSelection& FResult;
  // A short walk (a filter's path, for each item) needs no heap.
  std::array<std::byte, 768> FRoom;
  std::pmr::monotonic_buffer_resource FArena{FRoom.data(), FRoom.size()};
  std::pmr::vector<TTask> FTasks{&FArena};
  std::pmr::vector<TLxJSONBase*> FCandidates{&FArena};
};

} // namespace

bool TJSONPathText::SelectFirstByName(TLxJSONBase* AThis, TLxJDOCSelectOptions AOptions,
                                      TLxJSONBase*& AFound) {
  // The shape "@.name", a filter's most common term: the first value of a member of that name.
  if (FAlternatives.size() != 1 || AOptions.Contains(jsoCreate))
    return false;
  TAlternative& Alternative = FAlternatives.front();
  // An empty or invalid path fails in the walk, as it must.
  if (!Alternative.Valid || Alternative.Text[0] != u'@')
    return false;
  const std::u16string_view Path = Alternative.Path();
  if (Path.size() < 2 || Path[0] != u'.' || Path[1] == u'.')
    return false;
  const TStep& Step = Alternative.StepAt(0);
  if (!Alternative.EndsBefore(1) || Step.Selectors.size() != 1 ||
      Step.Selectors[0].Kind != TJSONSelector::Name || Step.Selectors[0].Text == u"*")
    return false;
  const TKind Kind = TJSONPathAccess::Kind(AThis);
  if (Kind == TKind::Member || Kind == TKind::Document)
    return false;
  AFound = nullptr;
  if (Kind != TKind::Object)
    return true;
  const std::u16string_view Name = Step.Selectors[0].Text;
  const bool CaseInsensitive = AOptions.Contains(jsoCaseInsensitive);
  for (TLxJSONBase* Child : TJSONPathAccess::Children(AThis)) {
    auto* Member = static_cast<TLxJSONMember*>(Child);
    const std::u16string_view Own = TJSONPathAccess::Name(Member);
    if (CaseInsensitive ? SameText(Own, Name) : Own == Name)
      if ((AFound = TJSONPathAccess::Value(Member)))
        return true;
  }
  return true;
}

void TJSONPathText::Select(TLxJSONBase* AThis, TLxJDOCSelectOptions AOptions,
                           TJSONSelection& AResult) {
  TJSONPathDepthGuard Guard;
  for (TAlternative& Alternative : FAlternatives) {
    if (!Alternative.Valid)
      RaiseInvalidPath();
    TLxJSONBase* Start = AThis;
    const bool IsDocument = TJSONPathAccess::Kind(AThis) == TKind::Document;
    if (Alternative.Text[0] == u'$') {
      TLxJSONBase* Owner = TJSONPathAccess::Owner(AThis);
      if (!Owner || TJSONPathAccess::Kind(Owner) != TKind::Document)
        Start = AThis->GetDocument()->GetRootValue();
    } else if (IsDocument) {
      Start = static_cast<TLxJSONDocument*>(AThis)->GetRootValue();
    }
    TJSONPathWalk(Alternative, AOptions, AResult).Run(Start);
  }
}

Integer& TJSONPathDepthGuard::Depth() noexcept {
  // Per thread, like the node paths' counter: the nesting of the evaluation running on this
  // thread, which the recursive filter parser and evaluator would otherwise have to pass through
  // every call.
  thread_local Integer Nesting = 0;
  return Nesting;
}

TJSONPathDepthGuard::TJSONPathDepthGuard() {
  if (++Depth() > cJSONPathMaxDepth) {
    --Depth();
    RaiseScriptTooComplex();
  }
}

[[noreturn]] void RaiseScriptTooComplex() {
  throw ELxJSONException(_cLxJSONScriptExprTooComplex, cLxJSONErrScriptExprTooComplex);
}

// --- entry points --------------------------------------------------------------------------------

UnicodeString TJSONPathAccess::SimpleText(const TLxJSONSimpleType* AValue) {
  if (AValue->HoldsShortText()) {
    char16_t Buffer[TLxJSONSimpleType::ShortCapacity];
    return UnicodeString(AValue->ShortText(Buffer));
  }
  return LxVarToStr(AValue->FValue, u"", false);
}

TLxJSONArray* TJSONPathAccess::NewSelection(const TJSONSelection& AItems) {
  auto* List = New<TLxJSONArray>(nullptr);
  List->FSelection = true;
  for (TLxJSONBase* Item : AItems)
    List->FObjects.push_back(Item);
  return List;
}

void TLxJSONNodeList::Assign(const TLxJSONNodeList& AList) {
  if (&AList == this)
    return;
  Clear();
  for (TLxJSONBase* Item : AList)
    Add(Item);
}

TLxJSONArray* TLxJSONBase::CreateNodeList(const LxJSONString& APath,
                                          TLxJDOCSelectOptions AOptions) {
  TJSONSelection Found;
  TJSONPathText(APath, /*AKeepText=*/false).Select(this, AOptions, Found);
  if (Found.empty() && AOptions.Contains(jsoRaise))
    throw ELxJSONException(_cLxJSONInvalidPathNoNodes, cLxJSONErrInvalidPathNoNodes);
  return TJSONPathAccess::NewSelection(Found);
}

TLxJSONBase* TLxJSONBase::SelectSingleNode(const LxJSONString& APath,
                                           TLxJDOCSelectOptions AOptions) {
  std::array<std::byte, 256> Room;
  std::pmr::monotonic_buffer_resource Arena(Room.data(), Room.size());
  TJSONSelection Found(&Arena);
  TJSONPathText(APath, /*AKeepText=*/false).Select(this, AOptions, Found);
  TLxJSONBase* First = Found.empty() ? nullptr : Found.front();
  if (!First && AOptions.Contains(jsoRaise))
    throw ELxJSONException(_cLxJSONInvalidPathNoNodes, cLxJSONErrInvalidPathNoNodes);
  return First;
}

IPtr<ILxJSONArray> TLxJSONBase::SelectIntf(const LxJSONString& APath,
                                           TLxJDOCSelectOptions AOptions) {
  return jsonfaces::Face<ILxJSONArray>(CreateNodeList(APath, AOptions));
}

} // namespace lorvane
