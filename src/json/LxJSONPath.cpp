// JSON path selection: alternatives, the walk over the tree, the cutting of steps and the
// selectors of a step (names, indexes, slices, lists, filters).
#include "json/LxJSONPathWalk.h"

#include "json/LxJSONFaces.h"

#include <algorithm>
#include <deque>
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
  /// The trimmed text; for a name the name itself ("*" for all).
  UnicodeString Text;
  /// A filter parsed on first use.
  std::unique_ptr<TLxBoolExpression, void (*)(TLxBoolExpression*)> Expression{
      nullptr, [](TLxBoolExpression* E) { lorvane::Free(E); }};
};

struct TJSONPathText::TStep {
  bool Descend = false;
  std::vector<TJSONSelector> Selectors;
  /// Where the rest of the path starts; the path's length when nothing follows.
  std::size_t Next = 0;
};

struct TJSONPathText::TAlternative {
  /// Trimmed; Valid when it starts with "$" or "@".
  UnicodeString Text;
  bool Valid = false;
  /// The steps cut so far: step K starts where step K-1 ended (the first behind "$" or "@").
  std::deque<TStep> Steps;

  std::u16string_view Path() const noexcept { return std::u16string_view(Text).substr(1); }
  std::size_t StartOf(std::size_t AStep) const noexcept {
    return AStep == 0 ? 0 : Steps[AStep - 1].Next;
  }
  bool EndsBefore(std::size_t AStep) const noexcept { return StartOf(AStep) >= Path().size(); }
  /// Step AStep, cut now if no walk has reached it yet (Steps holds every step before it).
  TStep& StepAt(std::size_t AStep);
};

namespace {

/// The selectors of a token: a token in brackets is split at commas outside apostrophes.
void SplitSelectors(std::u16string_view AToken, std::vector<TJSONSelector>& ASelectors) {
  std::vector<UnicodeString> Pieces;
  if (AToken.empty() || AToken.front() != u'[') {
    Pieces.push_back(Trim(AToken));
  } else {
    const std::u16string_view Inside =
        AToken.size() >= 2 ? AToken.substr(1, AToken.size() - 2) : std::u16string_view();
    bool Quoted = false;
    std::size_t From = 0;
    for (std::size_t I = 0; I < Inside.size(); ++I) {
      if (Inside[I] == u'\'')
        Quoted = !Quoted;
      else if (Inside[I] == u',' && !Quoted) {
        Pieces.push_back(Trim(Inside.substr(From, I - From)));
        From = I + 1;
      }
    }
    UnicodeString Last = Trim(Inside.substr(From));
    if (!Last.empty())
      Pieces.push_back(std::move(Last));
    // "[]" holds no piece at all: it is one empty selector, all children, as "$." is.
    if (Pieces.empty())
      Pieces.emplace_back();
  }
  for (UnicodeString& Piece : Pieces) {
    TJSONSelector Selector;
    const std::u16string_view S = Piece;
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
      std::u16string_view Name = S;
      if (Name.starts_with(u'\''))
        Name = Name.size() >= 2 ? Name.substr(1, Name.size() - 2) : std::u16string_view();
      Selector.Text = Name.empty() ? UnicodeString(u"*") : UnicodeString(Name);
    } else {
      Selector.Text = std::move(Piece);
    }
    ASelectors.push_back(std::move(Selector));
  }
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
  TStep Step;
  std::size_t TokenStart, TokenEnd;
  if (First == u'.') {
    ++At;
    if (At < Path.size() && Path[At] == u'.') {
      Step.Descend = true;
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
  SplitSelectors(Path.substr(TokenStart, TokenEnd - TokenStart), Step.Selectors);
  Step.Next = TokenEnd;
  Steps.push_back(std::move(Step));
  return Steps.back();
}

TJSONPathText::TJSONPathText(std::u16string_view APath) {
  for (;;) {
    const std::size_t Cut = APath.find(AlternativeSeparator);
    auto Alternative = std::make_unique<TAlternative>();
    Alternative->Text = Trim(APath.substr(0, Cut));
    Alternative->Valid = !Alternative->Text.empty() &&
                         (Alternative->Text[0] == u'$' || Alternative->Text[0] == u'@');
    FAlternatives.push_back(std::move(Alternative));
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
                std::vector<TLxJSONBase*>& AResult)
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
    UnicodeString Rest(Inside.substr(0, At));
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

  void SelectName(TLxJSONBase* ANode, const UnicodeString& AName) {
    const bool All = AName == u"*";
    const TKind Kind = TJSONPathAccess::Kind(ANode);
    if (Kind == TKind::Object) {
      const bool CaseInsensitive = FOptions.Contains(jsoCaseInsensitive);
      for (TLxJSONBase* Child : TJSONPathAccess::Children(ANode)) {
        auto* Member = static_cast<TLxJSONMember*>(Child);
        if (!All) {
          const std::u16string_view Name = TJSONPathAccess::Name(Member);
          if (CaseInsensitive ? !SameText(Name, AName) : Name != std::u16string_view(AName))
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
      TLxJSONMember* Member = ANode->AddMember(AName);
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
    // Survivors join the candidates once; a set makes the test cheap for long lists.
    std::unordered_set<TLxJSONBase*> Known;
    const bool UseSet = FCandidates.size() + static_cast<std::size_t>(Children.GetCount()) > 32;
    if (UseSet)
      Known.insert(FCandidates.begin(), FCandidates.end());
    for (Integer I = 0; I < Children.GetCount(); ++I) {
      if (!ASelector.Expression->Evaluate(&Children, I))
        continue;
      TLxJSONBase* Survivor = Children[I];
      const bool Seen =
          UseSet ? !Known.insert(Survivor).second
                 : std::find(FCandidates.begin(), FCandidates.end(), Survivor) != FCandidates.end();
      if (!Seen)
        FCandidates.push_back(Survivor);
    }
  }

  TJSONPathText::TAlternative& FPath;
  TLxJDOCSelectOptions FOptions;
  std::vector<TLxJSONBase*>& FResult;
  std::vector<TTask> FTasks;
  std::vector<TLxJSONBase*> FCandidates;
};

} // namespace

void TJSONPathText::Select(TLxJSONBase* AThis, TLxJDOCSelectOptions AOptions,
                           std::vector<TLxJSONBase*>& AResult) {
  TJSONPathDepthGuard Guard;
  for (const auto& Alternative : FAlternatives) {
    if (!Alternative->Valid)
      RaiseInvalidPath();
    TLxJSONBase* Start = AThis;
    const bool IsDocument = TJSONPathAccess::Kind(AThis) == TKind::Document;
    if (Alternative->Text[0] == u'$') {
      TLxJSONBase* Owner = TJSONPathAccess::Owner(AThis);
      if (!Owner || TJSONPathAccess::Kind(Owner) != TKind::Document)
        Start = AThis->GetDocument()->GetRootValue();
    } else if (IsDocument) {
      Start = static_cast<TLxJSONDocument*>(AThis)->GetRootValue();
    }
    TJSONPathWalk(*Alternative, AOptions, AResult).Run(Start);
  }
}

Integer& TJSONPathDepthGuard::Depth() noexcept {
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

TLxJSONArray* TJSONPathAccess::NewSelection(const std::vector<TLxJSONBase*>& AItems) {
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
  std::vector<TLxJSONBase*> Found;
  TJSONPathText(APath).Select(this, AOptions, Found);
  if (Found.empty() && AOptions.Contains(jsoRaise))
    throw ELxJSONException(_cLxJSONInvalidPathNoNodes, cLxJSONErrInvalidPathNoNodes);
  return TJSONPathAccess::NewSelection(Found);
}

TLxJSONBase* TLxJSONBase::SelectSingleNode(const LxJSONString& APath,
                                           TLxJDOCSelectOptions AOptions) {
  std::vector<TLxJSONBase*> Found;
  TJSONPathText(APath).Select(this, AOptions, Found);
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
