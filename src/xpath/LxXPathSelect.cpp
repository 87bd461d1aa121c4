// The path walk: alternatives, start nodes, step forms, filters and soCreate, on an explicit stack.
#include "xpath/LxXPathSelect.h"
#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/dom/LxDOMPathSelection.h"

#include <unordered_map>

namespace lorvane {

TXPathDepthGuard::TXPathDepthGuard() {
  if (++Depth() > cXPathMaxDepth) {
    --Depth();
    throw ELxDomSyntax(UnicodeString(SXPathTooDeep));
  }
}

Integer& TXPathDepthGuard::Depth() noexcept {
  // The depth of the running call stack, which only its thread has: nesting reaches here through
  // parsing, evaluation and functions that select again through the public entry points, and no
  // object is common to all of them to carry the count.
  thread_local Integer Value = 0;
  return Value;
}

namespace {

using View = std::u16string_view;

bool SameAscii(View A, View B) noexcept { return A.size() == B.size() && SameText(A, B); }

bool IsAttribute(const TLxDOMNode* ANode) noexcept { return ANode->GetNodeType() == ntAttribute; }

/// One unit of the walk: a step walk of APath on ANode, or (Descend) the loop over ANode's
/// children that a recursive step runs once its own candidates are done.
struct TFrame {
  TLxDOMNode* Node;
  View Path;
  View Previous;
  bool Recursive;
  bool Descend;
  /// Reached through a "//": soCreate here would add below every descendant, the new ones too.
  bool Descended;
};

/// A name that soCreate may give a new element: none of the step forms, nothing that a path
/// gives a meaning.
bool IsPlainName(View AName) noexcept {
  if (AName.empty() || AName == u"." || AName == u"..")
    return false;
  for (WideChar C : AName)
    if (C <= u' ' || View(u"@()[]*/|\"'=<>!:").find(C) != View::npos)
      return false;
  return true;
}

[[noreturn]] void RaiseCreateUnderDescendants() {
  throw Exception(
      u"The soCreate option cannot be used in combination with the \"//\" search option!");
}

/// A frame's identity: what it adds to the result depends on nothing else while the tree stays.
struct TFrameKey {
  TLxDOMNode* Node;
  const WideChar* Path;
  size_t Length;
  Byte Flags;
  bool operator==(const TFrameKey&) const = default;
};
struct TFrameKeyHash {
  size_t operator()(const TFrameKey& AKey) const noexcept {
    size_t Hash = std::hash<const void*>()(AKey.Node);
    Hash = Hash * 31 + std::hash<const void*>()(AKey.Path);
    return (Hash * 31 + AKey.Length) * 8 + AKey.Flags;
  }
};

/// Whether frames of APath can meet again: ".." climbs back to where a walk came from, and a
/// second "//" reaches the same descendants from each match of the first. Such paths are walked
/// once per distinct frame, which bounds them by the nodes times the path's length.
bool FramesMayRepeat(View APath) noexcept {
  const size_t First = APath.find(u"//");
  return APath.find(u"..") != View::npos ||
         (First != View::npos && APath.find(u"//", First + 2) != View::npos);
}

/// The attributes of an "@" step on N: the name behind the "@" ("*" for any) and the step's
/// prefix. In local-name mode any prefix passes, and declarations too; in qualified mode only
/// "@*" widens an empty prefix, and declarations never pass. A document tests its root.
void CollectAttributeNodes(TLxDOMNode* N, View AName, const UnicodeString& APrefix,
                           const TXPathContext& AContext, TLxXPathNodes& AOut) {
  const UnicodeString Prefix =
      AContext.LocalNames || (APrefix.empty() && AName == u"*") ? UnicodeString(u"*") : APrefix;
  const UnicodeString Name(AName);
  TLxDOMNode* Element = N;
  if (N->GetNodeType() == ntDocument)
    Element = static_cast<TLxDOMDocument*>(N)->GetRootNode();
  if (!Element || Element->GetNodeType() != ntElement || !Element->HasChilds())
    return;
  const TLxXPathCollationClass Collation = AContext.Collation;
  for (TLxDOMNode* Child : *Element->ChildNodes()) {
    if (!IsAttribute(Child))
      continue;
    auto* Attribute = static_cast<TLxDOMAttribute*>(Child);
    if (!AContext.LocalNames && Attribute->IsNamespace())
      continue;
    if ((Name == u"*" || Collation->SameText(Attribute->GetLocalName(), Name)) &&
        (Prefix == u"*" || Collation->SameText(Attribute->GetPrefix(), Prefix)))
      AOut.push_back(Attribute);
  }
}

/// Whether APath is one "@" step and nothing else: the form filters test most, which is
/// answered without a walk.
bool IsSingleAttributeStep(View APath) noexcept {
  return APath.size() > 1 && APath[0] == u'@' &&
         APath.find_first_of(u"/[]|()@ \t\r\n", 1) == View::npos;
}

enum class TStepForm : Byte {
  Name,
  Group,
  Text,
  Node,
  Attribute,
  Star,
  Dot,
  DotDot,
  Empty,
  BadDot,
  BadStar
};

/// A step as cut from the path text, with its form; the same for every node a walk visits
/// with that text, so it is cut once per walk.
struct TStep {
  View Path;
  View Text;
  View Rest;
  View Filter;
  bool Deeper;
  TStepForm Form;
  UnicodeString Local;
  UnicodeString Prefix;
};

class TWalker {
public:
  TWalker(const TXPathContext& AContext, TXPathResult& AResult)
      : FContext(AContext), FResult(AResult) {}

  void Walk(TLxDOMNode* AStart, View APath, bool ARecursive) {
    // soCreate changes the tree as it goes: a frame seen before may find more the second time.
    const bool Memo = !FContext.Create && FramesMayRepeat(APath);
    FStack.push_back({AStart, APath, View(), ARecursive, false, ARecursive});
    while (!FStack.empty()) {
      const TFrame Frame = FStack.back();
      FStack.pop_back();
      if (Memo) {
        const TFrameKey Key{Frame.Node, Frame.Path.data(), Frame.Path.size(),
                            static_cast<Byte>((Frame.Recursive ? 1 : 0) | (Frame.Descend ? 2 : 0) |
                                              (Frame.Previous == u"." ? 4 : 0))};
        if (!FSeen.insert(Key).second)
          continue;
      }
      if (Frame.Descend)
        PushChildren(Frame);
      else
        Step(Frame);
    }
  }

private:
  const TXPathContext& FContext;
  TXPathResult& FResult;
  std::vector<TFrame> FStack;
  std::unordered_set<TFrameKey, TFrameKeyHash> FSeen;
  TLxXPathNodes FCandidates;
  /// The steps cut so far, by where their text begins; their addresses stay.
  std::unordered_map<const WideChar*, TStep> FSteps;

  bool Same(const UnicodeString& A, const UnicodeString& B) const {
    return FContext.Collation->SameText(A, B);
  }

  void PushChildren(const TFrame& AFrame) {
    TLxDOMNode* Node = AFrame.Node;
    if (!Node->HasChilds())
      return;
    TLxDOMNodeList* Children = Node->ChildNodes();
    for (Integer I = Children->Count() - 1; I >= 0; --I) {
      TLxDOMNode* Child = Children->GetItem(I);
      if (!IsAttribute(Child))
        FStack.push_back({Child, AFrame.Path, AFrame.Previous, true, false, true});
    }
  }

  template <class F> static void EachChild(TLxDOMNode* ANode, F&& AVisit) {
    if (!ANode->HasChilds())
      return;
    TLxDOMNodeList* Children = ANode->ChildNodes();
    const Integer Count = Children->Count();
    for (Integer I = 0; I < Count; ++I)
      AVisit(Children->GetItem(I));
  }

  /// The step at the start of AP, cut and classified once; raises the errors of the path text.
  const TStep& Cut(View P) {
    // Every path a walk meets is a suffix of its start path: where it begins tells it apart.
    if (const auto Known = FSteps.find(P.data()); Known != FSteps.end())
      return Known->second;
    if (!P.empty() && P[0] == u'/')
      throw ELxDomSyntax(u"The specified nodePath started with an unexpected token (/)!");

    // Cut the step: a leading group is skipped whole, a "/" before the first "]" of a filter
    // doesn't end the step.
    size_t Pos = 0;
    size_t Mark = 0;
    if (!P.empty() && P[0] == u'(') {
      Integer Depth = 0;
      while (Pos < P.size()) {
        const WideChar C = P[Pos++];
        if (C == u'(')
          ++Depth;
        else if (C == u')' && --Depth == 0)
          break;
      }
      Mark = Pos;
    }
    while (Pos < P.size() && P[Pos] != u'/') {
      if (P[Pos] == u'[') {
        const size_t Close = P.find(u']', Pos);
        Pos = Close == View::npos ? P.size() : Close + 1;
      } else
        ++Pos;
    }
    TStep Step;
    Step.Path = P;
    if (Pos >= P.size())
      Step.Text = TrimView(P);
    else {
      Step.Text = P.substr(Mark, Pos - Mark);
      Step.Rest = P.substr(Pos);
    }

    Step.Deeper = false;
    if (Step.Rest.starts_with(u"//")) {
      Step.Deeper = true;
      Step.Rest.remove_prefix(2);
    } else if (!Step.Rest.empty()) {
      if (Step.Rest == u"/")
        throw ELxDomSyntax(u"The XPath expression does not return a DOM Node!");
      Step.Rest.remove_prefix(1);
    }

    if (const size_t Bracket = Step.Text.find(u'['); Bracket != View::npos) {
      Step.Filter = TrimView(Step.Text.substr(Bracket));
      Step.Text = Step.Text.substr(0, Bracket);
    }
    Step.Text = TrimView(Step.Text);

    if (const size_t Colon = Step.Text.find(u':'); Colon != View::npos) {
      Step.Prefix.assign(Step.Text.substr(0, Colon));
      Step.Local.assign(Step.Text.substr(Colon + 1));
    } else
      Step.Local.assign(Step.Text);
    UnicodeString& Local = Step.Local;
    UnicodeString& Prefix = Step.Prefix;
    if ((FContext.LocalNames || Local == u"*" || Local == u".") && Prefix.empty())
      Prefix = u"*";
    if (!Prefix.empty() && Prefix[0] == u'@') {
      Local.insert(Local.begin(), u'@');
      Prefix.erase(0, 1);
    }

    if (!Local.empty() && Local[0] == u'(')
      Step.Form = TStepForm::Group;
    else if (SameAscii(Local, u"text()"))
      Step.Form = TStepForm::Text;
    else if (SameAscii(Local, u"node()"))
      Step.Form = TStepForm::Node;
    else if (!Local.empty() && Local[0] == u'@')
      Step.Form = TStepForm::Attribute;
    else if (Local == u"*")
      Step.Form = TStepForm::Star;
    else if (Local == u".")
      Step.Form = TStepForm::Dot;
    else if (Local == u"..")
      Step.Form = TStepForm::DotDot;
    else if (!Local.empty() && Local[0] == u'.')
      Step.Form = TStepForm::BadDot;
    else if (!Local.empty() && Local[0] == u'*')
      Step.Form = TStepForm::BadStar;
    else if (Local.empty())
      Step.Form = TStepForm::Empty;
    else
      Step.Form = TStepForm::Name;
    return FSteps.emplace(P.data(), std::move(Step)).first->second;
  }

  void Step(const TFrame& AFrame) {
    TLxDOMNode* const N = AFrame.Node;
    // A reference into FSteps stays valid: Collect may start other walks, never this one's.
    const TStep& S = Cut(AFrame.Path);
    if (S.Text.empty() && !AFrame.Recursive)
      throw ELxDomSyntax(u"The XPath expression is not valid!");

    FCandidates.clear();
    const bool Handled = Collect(AFrame, N, S);
    if (!Handled)
      EachChild(N, [&](TLxDOMNode* AChild) {
        if (!IsAttribute(AChild) && Same(AChild->GetLocalName(), S.Local) &&
            (S.Prefix == u"*" || Same(AChild->GetPrefix(), S.Prefix)))
          FCandidates.push_back(AChild);
      });

    if (!FCandidates.empty() && !S.Filter.empty())
      ApplyFilters(S.Filter);

    if (FContext.Create && FCandidates.empty() && (S.Filter.empty() || S.Filter == u"[0]") &&
        N->GetNodeType() == ntElement) {
      if (AFrame.Descended)
        RaiseCreateUnderDescendants();
      // Only a plain name makes an element; the other forms select nothing and the call fails.
      if (IsPlainName(S.Local) && (S.Prefix == u"*" || S.Prefix.empty() || IsPlainName(S.Prefix)))
        FCandidates.push_back(static_cast<TLxDOMElement*>(N)->AddElement(
            S.Prefix.empty() || S.Prefix == u"*" ? S.Local : S.Prefix + u":" + S.Local));
    }

    if (AFrame.Recursive)
      FStack.push_back({N, AFrame.Path, S.Text, true, true, true});
    if (!S.Rest.empty() || S.Deeper) {
      for (size_t I = FCandidates.size(); I-- > 0;)
        FStack.push_back(
            {FCandidates[I], S.Rest, S.Text, S.Deeper, false, AFrame.Descended || S.Deeper});
    } else
      for (TLxDOMNode* Candidate : FCandidates)
        FResult.Add(Candidate);
  }

  /// The candidates of the step forms that the table names; gives whether the form is complete
  /// (the child scan by name is left out).
  bool Collect(const TFrame& AFrame, TLxDOMNode* N, const TStep& S) {
    switch (S.Form) {
    case TStepForm::Group: {
      // The group's own selection, all of it, from this node. Under "//" it would create below
      // every node it descends to, the new ones included, without end.
      if (FContext.Create && AFrame.Descended)
        RaiseCreateUnderDescendants();
      const View Inner = S.Text.size() >= 2 ? S.Text.substr(1, S.Text.size() - 2) : View();
      TXPathResult Group;
      XPathSelect(N, Inner, false, FContext, Group);
      FCandidates = Group.Nodes;
      return false;
    }
    case TStepForm::Text:
      EachChild(N, [&](TLxDOMNode* AChild) {
        if (AChild->GetNodeType() == ntText || AChild->GetNodeType() == ntCDATA)
          FCandidates.push_back(AChild);
      });
      return true;
    case TStepForm::Node:
      EachChild(N, [&](TLxDOMNode* AChild) {
        if (!IsAttribute(AChild))
          FCandidates.push_back(AChild);
      });
      return true;
    case TStepForm::Attribute:
      CollectAttributes(N, S);
      return true;
    case TStepForm::Star: {
      auto Test = [&](TLxDOMElement* AElement) {
        if (S.Prefix == u"*" || Same(AElement->GetPrefix(), S.Prefix))
          FCandidates.push_back(AElement);
      };
      if (N->GetNodeType() == ntElement)
        static_cast<TLxDOMElement*>(N)->VisitChildElements(Test);
      else if (N->GetNodeType() == ntDocument) {
        if (TLxDOMElement* Root = static_cast<TLxDOMDocument*>(N)->GetRootNode())
          Test(Root);
      }
      return true;
    }
    case TStepForm::Dot:
      if (!(AFrame.Previous == u"." && !AFrame.Recursive))
        FCandidates.push_back(N);
      return true;
    case TStepForm::DotDot:
      if (AFrame.Recursive)
        throw ELxDomSyntax(u"The XPath expression contains an error at \"%s\"!\r\nThe \"//\" "
                           u"cannot be used in combination with \"..\".",
                           {UnicodeString(S.Text)});
      if (TLxDOMNode* Parent = N->ParentNode())
        FCandidates.push_back(Parent);
      return true;
    case TStepForm::BadDot:
      throw ELxDomSyntax(u"The XPath expression contains an error at \"%s\"!\r\na \"/\" or \"[\" "
                         u"was expected after the \"..\".",
                         {UnicodeString(S.Text)});
    case TStepForm::BadStar:
      throw ELxDomSyntax(u"The XPath expression contains an error at \"%s\"!\r\na \"/\" or \"[\" "
                         u"was expected after the \"*\".",
                         {UnicodeString(S.Text)});
    case TStepForm::Empty:
      if (AFrame.Recursive)
        EachChild(N, [&](TLxDOMNode* AChild) {
          if (!IsAttribute(AChild))
            FCandidates.push_back(AChild);
        });
      return false;
    case TStepForm::Name:
      break;
    }
    return false;
  }

  void CollectAttributes(TLxDOMNode* N, const TStep& S) {
    CollectAttributeNodes(N, View(S.Local).substr(1), S.Prefix, FContext, FCandidates);
  }

  /// Each bracket group in turn, on what the one before left.
  void ApplyFilters(View AFilter) {
    size_t Pos = 0;
    while (Pos < AFilter.size() && !FCandidates.empty()) {
      const size_t Start = Pos;
      Integer Depth = 0;
      while (Pos < AFilter.size()) {
        const WideChar C = AFilter[Pos++];
        if (C == u'[')
          ++Depth;
        else if (C == u']' && --Depth <= 0)
          break;
      }
      const View Group = TrimView(AFilter.substr(Start, Pos - Start));
      TOwned<TLxXPathEquation> Equation = TLxXPathEquation::Parse(
          Group, FContext.LocalNames ? soLocalName : soQualifiedName, FContext.Collation);
      // Terms may run selections of their own, which reuse nothing of this walker's state but
      // the candidate list, which they only read.
      const TLxXPathNodes Candidates = FCandidates;
      TLxXPathNodes Passed;
      for (Integer I = 0; I < static_cast<Integer>(Candidates.size()); ++I)
        if (Equation->Evaluate(Candidates, I))
          Passed.push_back(Candidates[I]);
      FCandidates = std::move(Passed);
      if (Pos < AFilter.size()) {
        const size_t Next = AFilter.find(u'[', Pos);
        Pos = Next == View::npos ? AFilter.size() : Next;
      }
    }
  }
};

void SplitAlternatives(View APath, std::vector<View>& AParts) {
  if (APath.find(u'|') == View::npos) {
    AParts.push_back(APath);
    return;
  }
  size_t Start = 0;
  for (;;) {
    const size_t Bar = APath.find(u'|', Start);
    AParts.push_back(APath.substr(Start, Bar == View::npos ? View::npos : Bar - Start));
    if (Bar == View::npos)
      break;
    Start = Bar + 1;
  }
}

} // namespace

void XPathSelect(TLxDOMNode* AStart, std::u16string_view APath, bool AFirstOnly,
                 const TXPathContext& AContext, TXPathResult& AResult) {
  const TXPathDepthGuard Guard;
  if (IsSingleAttributeStep(APath)) {
    const size_t Colon = APath.find(u':');
    const UnicodeString Prefix(Colon == View::npos ? View() : APath.substr(1, Colon - 1));
    TLxXPathNodes Found;
    CollectAttributeNodes(AStart, Colon == View::npos ? APath.substr(1) : APath.substr(Colon + 1),
                          Prefix, AContext, Found);
    for (TLxDOMNode* Node : Found)
      AResult.Add(Node);
    return;
  }
  std::vector<View> Alternatives;
  SplitAlternatives(APath, Alternatives);
  for (View Alternative : Alternatives) {
    Alternative = TrimView(Alternative);
    if (Alternative == u"/")
      AResult.Add(AStart);
    else if (Alternative.starts_with(u"/")) {
      const bool Recursive = Alternative.starts_with(u"//");
      // A node in no document has no start for a document-relative path: it selects nothing.
      if (TLxDOMDocument* Document = AStart->GetDocument())
        TWalker(AContext, AResult).Walk(Document, Alternative.substr(Recursive ? 2 : 1), Recursive);
    } else
      TWalker(AContext, AResult).Walk(AStart, Alternative, false);
    if (AFirstOnly && !AResult.Nodes.empty())
      break;
  }
}

namespace {

/// The tree's path hook: option checks, collation and match mode, then the walk.
void SelectForTree(TLxDOMNode* AStart, const UnicodeString& APath, TLxDOMSelectOptions AOptions,
                   bool AFirstOnly, TLxDOMNodeListBase* AResult) {
  if (AOptions.Contains(soCaseSensitive) && AOptions.Contains(soCaseInsensitive))
    throw Exception(u"It is not possible to specify both soCaseSensitive and soCaseInsensitive!");
  if (AOptions.Contains(soRaise) && AOptions.Contains(soCreate))
    throw Exception(u"It is not possible to specify both soRaise and soCreate!");
  TXPathContext Context;
  Context.Collation = AOptions.Contains(soCaseSensitive) ? TLxXPathCollationCodepoint::StaticClass()
                      : AOptions.Contains(soCaseInsensitive)
                          ? TLxXPathCollationASCIICI::StaticClass()
                          : AStart->GetCollation();
  Context.LocalNames = AOptions.Contains(soLocalName) ? true
                       : AOptions.Contains(soQualifiedName)
                           ? false
                           : AStart->GetSelectMatchOption() == soLocalName;
  Context.Create = AOptions.Contains(soCreate);
  TXPathResult Result;
  XPathSelect(AStart, APath, AFirstOnly, Context, Result);
  for (TLxDOMNode* Node : Result.Nodes)
    AResult->Add(Node, ldpLast);
}

} // namespace

void RegisterXPathSelection() { SetDOMPathSelector(&SelectForTree); }

} // namespace lorvane
