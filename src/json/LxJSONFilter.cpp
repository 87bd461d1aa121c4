// JSON path filters: the expression tree, its parser, its left-to-right evaluation, and the
// comparison of two terms.
#include "json/LxJSONPathWalk.h"

#include "lorvane/classes/LxStrings.h"
#include "lorvane/classes/LxVariants.h"

#include <array>
#include <cstddef>
#include <memory_resource>
#include <vector>

namespace lorvane {

using enum TLxBoolExpressionOperator;
using enum TLxExpValueHasNodeWithValueOp;

// --- the expression tree -------------------------------------------------------------------------

void TLxBoolExpression::SetValue(TLxExpressionValue* AValue) {
  if (AValue == FValue)
    return;
  lorvane::Free(FValue);
  FValue = AValue;
  if (AValue)
    AValue->FExpression = this;
}

TLxBoolExpression* TLxBoolExpression::AddFirstChild() {
  lorvane::Free(FChild);
  FChild = nullptr;
  auto* Child = New<TLxBoolExpression>();
  Child->FParent = this;
  FChild = Child;
  FOperation = opNA;
  return Child;
}

TLxBoolExpression* TLxBoolExpression::AddSibling(TLxBoolExpressionOperator AOperator) {
  lorvane::Free(FSibling);
  FSibling = nullptr;
  auto* Sibling = New<TLxBoolExpression>();
  Sibling->FParent = FParent;
  FSibling = Sibling;
  FOperation = AOperator;
  return Sibling;
}

void TLxBoolExpression::BeforeDestruction() {
  // Children and siblings are unlinked onto a list of our own and freed from there: a filter
  // may nest or chain as deep as its text.
  std::vector<TLxBoolExpression*> Pending;
  const auto Detach = [&Pending](TLxBoolExpression* ANode) {
    if (ANode->FChild)
      Pending.push_back(std::exchange(ANode->FChild, nullptr));
    if (ANode->FSibling)
      Pending.push_back(std::exchange(ANode->FSibling, nullptr));
  };
  Detach(this);
  while (!Pending.empty()) {
    TLxBoolExpression* Node = Pending.back();
    Pending.pop_back();
    Detach(Node);
    Node->Free();
  }
  lorvane::Free(std::exchange(FValue, nullptr));
  TObject::BeforeDestruction();
}

namespace {

/// The value of one node; a node without one is a filter with a hole in it.
bool NodeValue(TLxBoolExpression* ANode, TLxJSONNodeList* AList, Integer AIndex, bool& IsNull) {
  TLxExpressionValue* Value = ANode->GetValue();
  if (!Value)
    throw EAssertionFailed(UnicodeString(SJSONFilterOperandMissing));
  return Value->Value(AList, AIndex, IsNull);
}

/// Whether AResult gives way to the next node of the chain under AOperation.
bool Continues(TLxBoolExpressionOperator AOperation, bool AResult) {
  switch (AOperation) {
  case opAnd:
    return AResult;
  case opOr:
    return !AResult;
  default:
    throw Exception(UnicodeString(SJSONInvalidOperation));
  }
}

} // namespace

bool TLxBoolExpression::EvaluateChain(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) {
  // The chain's rule: a node's result, and at each node that has a sibling, the sibling's own
  // chain result replaces it when the operator lets it ("&&" on true, "||" on false), and the
  // walk goes on at that sibling with what it now holds. Taken as written that is a recursion
  // whose two branches walk the rest twice; both branches of a node always give the same result
  // for the same input, so each is computed once and looked up after, which keeps the nodes
  // evaluated, and so IsNull and any failure, exactly those of the rule in linear time and
  // without calls as deep as the chain.
  if (!FSibling)
    return NodeValue(this, ANodeList, AIndex, IsNull);
  std::vector<TLxBoolExpression*> Nodes;
  for (TLxBoolExpression* Node = this; Node; Node = Node->FSibling)
    Nodes.push_back(Node);
  const std::size_t Count = Nodes.size();
  enum : signed char { Unknown = -1 };
  // ChainOf[J]: the chain result from node J; WalkFrom[J][R]: the walk from J holding R.
  std::vector<signed char> ChainOf(Count, Unknown);
  std::vector<std::array<signed char, 2>> WalkFrom(Count, {Unknown, Unknown});
  struct TFrame {
    std::size_t Start;
    std::size_t At;
    bool Result;
    /// Where this frame's visited places begin in Visited.
    std::size_t Visited;
  };
  std::vector<TFrame> Frames;
  std::vector<std::pair<std::size_t, bool>> Visited;
  Frames.push_back({0, 0, NodeValue(Nodes[0], ANodeList, AIndex, IsNull), 0});
  for (;;) {
    TFrame& Frame = Frames.back();
    bool Suspended = false;
    while (true) {
      const std::size_t J = Frame.At;
      if (WalkFrom[J][Frame.Result] != Unknown) {
        Frame.Result = WalkFrom[J][Frame.Result] != 0;
        break;
      }
      Visited.emplace_back(J, Frame.Result);
      if (J + 1 == Count)
        break;
      if (Continues(Nodes[J]->FOperation, Frame.Result)) {
        if (ChainOf[J + 1] == Unknown) {
          Suspended = true;
          break;
        }
        Frame.Result = ChainOf[J + 1] != 0;
      }
      Frame.At = J + 1;
    }
    if (Suspended) {
      const std::size_t Next = Frame.At + 1;
      const std::size_t Mark = Visited.size();
      const bool First = NodeValue(Nodes[Next], ANodeList, AIndex, IsNull);
      Frames.push_back({Next, Next, First, Mark});
      continue;
    }
    const bool Result = Frame.Result;
    for (std::size_t V = Frame.Visited; V < Visited.size(); ++V)
      WalkFrom[Visited[V].first][Visited[V].second] = Result;
    Visited.resize(Frame.Visited);
    ChainOf[Frame.Start] = Result;
    Frames.pop_back();
    if (Frames.empty())
      return Result;
    // The waiting frame takes the result and moves on to the sibling.
    TFrame& Waiting = Frames.back();
    Waiting.Result = Result;
    ++Waiting.At;
  }
}

bool TLxBoolExpression::Evaluate(TLxJSONNodeList* ANodeList, Integer AIndex) {
  bool IsNull = false;
  const bool Result = EvaluateChain(ANodeList, AIndex, IsNull);
  return Result && !IsNull;
}

bool TLxExpressionValueChild::Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) {
  if (!FExpression || !FExpression->FChild)
    throw Exception(UnicodeString(SJSONNoParenthesisChild));
  TJSONPathDepthGuard Guard;
  return FExpression->FChild->EvaluateChain(ANodeList, AIndex, IsNull);
}

bool TLxExpressionValueNot::Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) {
  if (!FExpression || !FExpression->FChild)
    throw Exception(UnicodeString(SJSONNoNotChild));
  TJSONPathDepthGuard Guard;
  return !FExpression->FChild->EvaluateChain(ANodeList, AIndex, IsNull);
}

// --- the values ----------------------------------------------------------------------------------

namespace {

/// The first value APath selects from AItem (always a value of the tree, never a member), or
/// nil; the path is cut on first use and kept in ACompiled. The whole path is walked, as a
/// selection does, so that its failures come as they would.
TLxJSONBase* FirstSelected(std::unique_ptr<TJSONPathText>& ACompiled, const LxJSONString& APath,
                           TLxJSONBase* AItem, TLxJDOCSelectOptions AOptions) {
  if (!ACompiled)
    ACompiled = std::make_unique<TJSONPathText>(APath, /*AKeepText=*/true);
  if (TLxJSONBase * Found; ACompiled->SelectFirstByName(AItem, AOptions, Found))
    return Found;
  std::array<std::byte, 256> Room;
  std::pmr::monotonic_buffer_resource Arena(Room.data(), Room.size());
  TJSONSelection Found(&Arena);
  ACompiled->Select(AItem, AOptions, Found);
  return Found.empty() ? nullptr : Found.front();
}

} // namespace

TLxExpressionValueExists::TLxExpressionValueExists(const LxJSONString& APath, bool ACaseInsensitive)
    : FPath(APath), FCaseInsensitive(ACaseInsensitive) {}

TLxExpressionValueExists::~TLxExpressionValueExists() = default;

bool TLxExpressionValueExists::Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool&) {
  const TLxJDOCSelectOptions Options =
      FCaseInsensitive ? TLxJDOCSelectOptions{jsoCaseInsensitive} : TLxJDOCSelectOptions{};
  return FirstSelected(FCompiled, FPath, (*ANodeList)[AIndex], Options) != nullptr;
}

TLxExpValueHasNodeWithValue::TLxExpValueHasNodeWithValue(const LxJSONString& AValue1,
                                                         const LxJSONString& AValue2,
                                                         TLxExpValueHasNodeWithValueOp AOperator,
                                                         bool ACaseInsensitive)
    : FValue1(AValue1), FValue2(AValue2), FOperator(AOperator), FCaseInsensitive(ACaseInsensitive) {
}

namespace {

/// How a text reads as a number or a truth value.
struct TClassified {
  bool IsInteger = false;
  bool IsFloat = false;
  bool IsBoolean = false;
  Integer Int = 0;
  double Float = 0;
  bool Boolean = false;
};

TClassified Classify(std::u16string_view AText) {
  static const TFormatSettings PointDecimals{u'.', u',', u'-', u':'};
  TClassified C;
  C.IsInteger = TryStrToInt(AText, C.Int);
  if (C.IsInteger) {
    C.IsFloat = true;
    C.Float = C.Int;
  } else {
    C.IsFloat = TryStrToFloat(AText, C.Float, PointDecimals);
  }
  if (!C.IsFloat)
    C.IsBoolean = TryStrToBool(AText, C.Boolean);
  return C;
}

bool IsQuoted(std::u16string_view AText) noexcept {
  return AText.starts_with(u'\'') || AText.starts_with(u'"');
}

} // namespace

/// One side of a comparison: a path from the item under test, or a text that is the same for
/// every item and is read once.
struct TJSONComparisonSide {
  explicit TJSONComparisonSide(const LxJSONString& ATerm)
      : IsPath(!ATerm.empty() && (ATerm[0] == u'$' || ATerm[0] == u'@')) {
    if (IsPath || ATerm.empty())
      return;
    Null = false;
    Text = ATerm;
    Quoted = IsQuoted(Text);
    Class = Classify(Text);
  }

  /// The side for AItem: for a path, its first value's text; nothing (Null) when it selects
  /// nothing.
  void Resolve(const LxJSONString& ATerm, TLxJSONBase* AItem) {
    if (!IsPath)
      return;
    // Paths inside a comparison always regard case.
    TLxJSONBase* Found = FirstSelected(Path, ATerm, AItem, {});
    Null = true;
    Classified = false;
    if (!Found)
      return;
    if (TJSONPathAccess::IsSimple(Found))
      Text = TJSONPathAccess::SimpleText(static_cast<TLxJSONSimpleType*>(Found));
    else if (TLxJSONBase* Value = Found->GetValueObj())
      Text = Value->GetAsString();
    else
      return;
    Null = false;
    Quoted = IsQuoted(Text);
  }
  const TClassified& Classes() {
    if (IsPath && !Classified) {
      Class = Classify(Text);
      Classified = true;
    }
    return Class;
  }

  const bool IsPath;
  bool Null = true;
  bool Quoted = false;
  bool Classified = false;
  UnicodeString Text;
  TClassified Class;
  std::unique_ptr<TJSONPathText> Path;
};

struct TJSONComparisonSides {
  TJSONComparisonSides(const LxJSONString& A, const LxJSONString& B) : Left(A), Right(B) {}
  TJSONComparisonSide Left;
  TJSONComparisonSide Right;
};

TLxExpValueHasNodeWithValue::~TLxExpValueHasNodeWithValue() = default;

namespace {

template <class T> bool Holds(TLxExpValueHasNodeWithValueOp AOperator, const T& A, const T& B) {
  switch (AOperator) {
  case opUnequal:
    return !(A == B);
  case opEqual:
    return A == B;
  case opSmaller:
    return A < B;
  case opSmallerEqual:
    return A <= B;
  case opGreater:
    return A > B;
  case opGreaterEqual:
    return A >= B;
  }
  return false;
}

bool CompareTexts(TLxExpValueHasNodeWithValueOp AOperator, std::u16string_view A,
                  std::u16string_view B, bool ACaseInsensitive) {
  if (!ACaseInsensitive)
    return Holds(AOperator, A, B);
  if (AOperator == opEqual)
    return SameText(A, B);
  if (AOperator == opUnequal)
    return !SameText(A, B);
  return Holds(AOperator, LowerCase(A), LowerCase(B));
}

} // namespace

bool TLxExpValueHasNodeWithValue::Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) {
  TLxJSONBase* Item = (*ANodeList)[AIndex];
  if (!FSides)
    FSides = std::make_unique<TJSONComparisonSides>(FValue1, FValue2);
  TJSONComparisonSide& Left = FSides->Left;
  TJSONComparisonSide& Right = FSides->Right;
  Left.Resolve(FValue1, Item);
  Right.Resolve(FValue2, Item);
  if (Left.Null || Right.Null) {
    IsNull = true;
    return false;
  }
  if (Left.Quoted || Right.Quoted)
    return CompareTexts(FOperator, LxStripLiterals(Left.Text), LxStripLiterals(Right.Text),
                        FCaseInsensitive);
  const TClassified& A = Left.Classes();
  const TClassified& B = Right.Classes();
  if (A.IsInteger && B.IsInteger)
    return Holds(FOperator, A.Int, B.Int);
  if (A.IsFloat && B.IsFloat)
    return Holds(FOperator, A.Float, B.Float);
  if (A.IsBoolean && B.IsBoolean) {
    if (FCaseInsensitive)
      return CompareTexts(FOperator, BoolToStr(A.Boolean, true), BoolToStr(B.Boolean, true), true);
    // Variants order false before true.
    return Holds(FOperator, A.Boolean, B.Boolean);
  }
  if (A.IsFloat != B.IsFloat) {
    IsNull = true;
    return false;
  }
  return CompareTexts(FOperator, Left.Text, Right.Text, FCaseInsensitive);
}

// --- parsing -------------------------------------------------------------------------------------

namespace {

/// The filter text under a cursor, with the text parser's rule at the end: reading there gives
/// nothing, stepping beyond it raises ELxTextParserEOF.
class TFilterParser {
public:
  TFilterParser(std::u16string_view AText, bool ACaseInsensitive)
      : FText(AText), FCaseInsensitive(ACaseInsensitive) {}

  TLxBoolExpression* Parse() {
    TOwned<TLxBoolExpression> Root(New<TLxBoolExpression>());
    FCurrent = Root.get();
    // The loop runs once even over an empty text, whose term then steps beyond the end.
    do {
      switch (Curr()) {
      case u')':
        Up();
        ++FAt;
        OperandDone();
        break;
      case u'|':
        Second(u'|');
        FCurrent = FCurrent->AddSibling(opOr);
        break;
      case u'&':
        Second(u'&');
        FCurrent = FCurrent->AddSibling(opAnd);
        break;
      case u'(':
        FCurrent->SetValue(New<TLxExpressionValueChild>());
        Down();
        ++FAt;
        break;
      case u'!':
        FCurrent->SetValue(New<TLxExpressionValueNot>());
        FNots.push_back(FCurrent);
        Down();
        ++FAt;
        break;
      default:
        ReadComparison();
        OperandDone();
        break;
      }
      while (FAt < FText.size() && FText[FAt] == u' ')
        ++FAt;
    } while (FAt < FText.size());
    return Root.release();
  }

private:
  char16_t Curr() const noexcept { return FAt < FText.size() ? FText[FAt] : u'\0'; }
  std::u16string_view CurrText() const noexcept {
    if (FAt >= FText.size())
      return {};
    const char16_t C = FText[FAt];
    const bool Pair = C >= 0xD800 && C <= 0xDBFF && FAt + 1 < FText.size();
    return FText.substr(FAt, Pair ? 2 : 1);
  }
  void Step() {
    if (FAt >= FText.size())
      throw ELxTextParserEOF(u"Unexpected end of the text", 1);
    ++FAt;
  }
  /// Over the first character of a pair, then the second must be AExpected.
  void Second(char16_t AExpected) {
    ++FAt;
    if (Curr() != AExpected)
      throw ELxJSONException(_cLxJSONInvalidCharInPath1,
                             {UnicodeString(1, AExpected), UnicodeString(CurrText())},
                             cLxJSONErrInvalidCharInPath1);
    ++FAt;
  }
  void Down() {
    if (++FDepth > cJSONPathMaxDepth)
      RaiseScriptTooComplex();
    FCurrent = FCurrent->AddFirstChild();
  }
  void Up() {
    if (!FCurrent->FParent)
      RaiseScriptTooComplex();
    FCurrent = FCurrent->FParent;
    --FDepth;
  }
  /// An operand is complete (a term, or a group at its ")"): a "!" waiting for it closes.
  void OperandDone() {
    while (!FNots.empty() && FCurrent->FParent == FNots.back() &&
           FNots.back()->FChild == FCurrent) {
      FNots.pop_back();
      Up();
    }
  }

  static bool EndsTerm(char16_t C) noexcept {
    switch (C) {
    case u'!':
    case u'&':
    case u')':
    case u'<':
    case u'=':
    case u'>':
    case u'|':
      return true;
    default:
      return false;
    }
  }

  /// A term from the cursor: its first character whatever it is, then up to an operator or a
  /// ")" (an index in brackets may hold them; a "(" runs to its ")", which ends the term).
  UnicodeString ReadTerm() {
    const std::size_t From = FAt;
    Step();
    while (FAt < FText.size() && !EndsTerm(FText[FAt])) {
      if (FText[FAt] == u'[') {
        const std::size_t Close = FText.find(u']', FAt);
        FAt = Close == std::u16string_view::npos ? FText.size() : Close + 1;
      } else if (FText[FAt] == u'(') {
        const std::size_t Close = FText.find(u')', FAt);
        FAt = Close == std::u16string_view::npos ? FText.size() : Close;
        break;
      } else {
        ++FAt;
      }
    }
    return Trim(FText.substr(From, FAt - From));
  }

  void ReadComparison() {
    UnicodeString Left = ReadTerm();
    const char16_t C = Curr();
    if (FAt >= FText.size() || C == u'&' || C == u'|' || C == u')') {
      FCurrent->SetValue(New<TLxExpressionValueExists>(Left, FCaseInsensitive));
      return;
    }
    TLxExpValueHasNodeWithValueOp Operator = opEqual;
    const char16_t Next = FAt + 1 < FText.size() ? FText[FAt + 1] : u'\0';
    switch (C) {
    case u'=':
      Second(u'=');
      Operator = opEqual;
      break;
    case u'!':
      Second(u'=');
      Operator = opUnequal;
      break;
    case u'<':
      Operator = Next == u'=' ? opSmallerEqual : Next == u'>' ? opUnequal : opSmaller;
      FAt += Next == u'=' || Next == u'>' ? 2 : 1;
      break;
    default: // '>'
      Operator = Next == u'=' ? opGreaterEqual : opGreater;
      FAt += Next == u'=' ? 2 : 1;
      break;
    }
    UnicodeString Right = ReadTerm();
    FCurrent->SetValue(New<TLxExpValueHasNodeWithValue>(Left, Right, Operator, FCaseInsensitive));
  }

  std::u16string_view FText;
  bool FCaseInsensitive;
  std::size_t FAt = 0;
  Integer FDepth = 0;
  TLxBoolExpression* FCurrent = nullptr;
  /// Nodes whose "!" waits for its operand, innermost last.
  std::vector<TLxBoolExpression*> FNots;
};

} // namespace

TLxBoolExpression* ParseJSONFilter(std::u16string_view AText, bool ACaseInsensitive) {
  return TFilterParser(AText, ACaseInsensitive).Parse();
}

} // namespace lorvane
