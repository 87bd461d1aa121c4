// Filters: parsing a bracket group into equations and terms, evaluation, and comparison of values.
#include "lorvane/classes/LxVariants.h"
#include "lorvane/dom/LxDOMAttribute.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/xpath/LxXPath.h"
#include "xpath/LxXPathSelect.h"

#include <cmath>
#include <limits>

namespace lorvane {

namespace {

using View = std::u16string_view;

bool IsDigit(WideChar C) noexcept { return C >= u'0' && C <= u'9'; }

/// The characters that end a name in a term; the comma only ends one before a ":".
bool IsStop(WideChar C, bool AWithComma) noexcept {
  switch (C) {
  case u'=':
  case u'<':
  case u'>':
  case u'!':
  case u'(':
  case u')':
  case u'[':
  case u']':
  case u'"':
  case u' ':
    return true;
  case u',':
    return AWithComma;
  default:
    return false;
  }
}

[[noreturn]] void RaiseInvalidFilter(View AFilter) {
  throw Exception(u"\"%s\" is an invalid filter expression!", {UnicodeString(AFilter)});
}

/// Reads a comparison operator at the cursor; false (nothing read) when none begins there.
bool ReadOperator(TLxXPathFilterParser& AParser, TLxXPathValueComparisonOperator& AOperator) {
  static constexpr struct {
    View Text;
    TLxXPathValueComparisonOperator Operator;
  } Entities[] = {{u"&lt;=", opSmallerEqual},
                  {u"&gt;=", opGreaterEqual},
                  {u"&lt;", opSmaller},
                  {u"&gt;", opGreater}};
  if (AParser.Curr() == u'&') {
    for (const auto& Entity : Entities)
      if (AParser.Peek(Entity.Text.size()) == Entity.Text) {
        AParser.Skip(Entity.Text.size());
        AOperator = Entity.Operator;
        return true;
      }
    return false;
  }
  const size_t Start = AParser.Position();
  while (View(u"!<=>").find(AParser.Curr()) != View::npos && !AParser.AtEnd())
    AParser.Skip();
  const View Text = AParser.From(Start);
  if (Text.empty())
    return false;
  static constexpr struct {
    View Text;
    TLxXPathValueComparisonOperator Operator;
  } Runs[] = {{u"=", opEqual},   {u"!=", opUnequal},      {u"<>", opUnequal},     {u"<", opSmaller},
              {u">", opGreater}, {u"<=", opSmallerEqual}, {u">=", opGreaterEqual}};
  for (const auto& Run : Runs)
    if (Run.Text == Text) {
      AOperator = Run.Operator;
      return true;
    }
  throw ELxDomSyntax(u"The filter \"%s\" contains an invalid compare operator (%s)!",
                     {UnicodeString(AParser.Text()), UnicodeString(Text)});
}

/// Whether a Variant holds a Boolean true.
bool IsTrue(const Variant& AValue) noexcept {
  return VarType(AValue) == varBoolean && AValue.AsBoolean();
}

/// A value as the comparison classifies it: a 64-bit integer, a float, or neither.
struct TClassified {
  enum { Integer, Float, Other } Kind = Other;
  Int64 Int = 0;
  double Real = 0;
};

TClassified Classify(const Variant& AValue) {
  TClassified Result;
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
    Result.Kind = TClassified::Integer;
    Result.Int = AValue.AsInt64();
    return Result;
  case lmkFloat:
    Result.Kind = TClassified::Float;
    Result.Real = AValue.AsDouble();
    return Result;
  default:
    break;
  }
  const UnicodeString Text = LxVarToStr(AValue, u"", false);
  if (Text.empty() || !(IsDigit(Text[0]) || Text[0] == u'.'))
    return Result;
  if (TryStrToInt64(Text, Result.Int) && IsDigit(Text.back()) &&
      Text.find_first_not_of(u"0123456789") == UnicodeString::npos) {
    Result.Kind = TClassified::Integer;
    return Result;
  }
  TFormatSettings Settings;
  Settings.DecimalSeparator = u'.';
  Settings.ThousandSeparator = u',';
  if (TryStrToFloat(Text, Result.Real, Settings))
    Result.Kind = TClassified::Float;
  return Result;
}

template <class T> bool Compare(T A, T B, TLxXPathValueComparisonOperator AOperator) {
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

} // namespace

// --- parser -----------------------------------------------------------------------------------

std::u16string_view TLxXPathFilterParser::SkipGroup(WideChar AOpen, WideChar AClose) noexcept {
  const size_t Start = FPos;
  Integer Depth = 0;
  while (FPos < FText.size()) {
    const WideChar C = FText[FPos++];
    if (C == AOpen)
      ++Depth;
    else if (C == AClose && --Depth <= 0)
      break;
  }
  return FText.substr(Start, FPos - Start);
}

// --- equation ---------------------------------------------------------------------------------

TLxXPathEquation::~TLxXPathEquation() {
  // A long chain of "and"/"or" is a long chain of siblings: unlink it here instead of letting
  // each sibling free the next one recursively.
  TOwned<TLxXPathEquation> Next = std::move(FSibling);
  while (Next)
    Next = std::move(Next->FSibling);
}

TLxDOMSelectOptions TLxXPathEquation::SelectOptions() const {
  TLxDOMSelectOptions Result{
      FCollation == TLxXPathCollationASCIICI::StaticClass() ? soCaseInsensitive : soCaseSensitive};
  if (FMatchOption == soQualifiedName)
    Result.Include(soQualifiedName);
  else if (FMatchOption == soLocalName)
    Result.Include(soLocalName);
  else
    Result.Include(DefaultSelectMatchOption == soLocalName ? soLocalName : soQualifiedName);
  return Result;
}

void TLxXPathEquation::SetTerm(TLxXPathBaseTerm* ATerm) { FTerm.reset(ATerm); }

TLxXPathEquation* TLxXPathEquation::AddFirstChild() {
  TOwned<TLxXPathEquation> Child(New<TLxXPathEquation>(FMatchOption, FCollation));
  Child->FParent = this;
  FOperation = opNA;
  FChilds.insert(FChilds.begin(), std::move(Child));
  return FChilds.front().get();
}

TLxXPathEquation* TLxXPathEquation::AddSibling(TLxXPathBoolOperator AOperator) {
  FSibling.reset(New<TLxXPathEquation>(FMatchOption, FCollation));
  FSibling->FParent = FParent;
  FOperation = AOperator;
  return FSibling.get();
}

TOwned<TLxXPathEquation> TLxXPathEquation::Parse(std::u16string_view AFilter,
                                                 TLxDOMSelectMatchOption AMatchOption,
                                                 TLxXPathCollationClass ACollation) {
  TOwned<TLxXPathEquation> Top(New<TLxXPathEquation>(AMatchOption, ACollation));
  TLxXPathEquation* Cursor = Top.get();
  TLxXPathFilterParser Parser(AFilter);
  if (Parser.Curr() != u'[')
    RaiseInvalidFilter(AFilter);
  Parser.Skip();
  // Groups are parsed without recursion, but equations nest as deep as they do.
  Integer Nesting = 0;
  auto Enter = [&] {
    if (++Nesting > cXPathMaxDepth)
      throw ELxDomSyntax(UnicodeString(SXPathTooDeep));
    Cursor = Cursor->AddFirstChild();
  };
  for (;;) {
    bool Handled = false;
    Parser.SkipBlanks();
    // A ")" without its "(" has left the top: nothing may follow.
    if (!Cursor)
      RaiseInvalidFilter(AFilter);
    const WideChar C = Parser.Curr();
    if (!Cursor->Term() && C == u'(') {
      Cursor->SetTerm(New<TLxXPathChildTerm>(Cursor));
      Enter();
      Parser.Skip();
      Handled = true;
    } else if (!Cursor->Term() && C == u'n' && SameText(Parser.Peek(3), u"not")) {
      Parser.Skip(3);
      Parser.SkipBlanks();
      const WideChar After = Parser.Curr();
      if (After == u'(' || IsDigit(After) || After == u'@') {
        Cursor->SetTerm(New<TLxXPathNot>(Cursor));
        Enter();
        if (After == u'(') {
          Parser.Skip();
          Handled = true;
        }
      }
    } else if (Cursor->Term() && ((C == u'a' && SameText(Parser.Peek(3), u"and")) ||
                                  (C == u'o' && SameText(Parser.Peek(2), u"or")))) {
      const TLxXPathBoolOperator Operator = C == u'a' ? opAnd : opOr;
      Parser.Skip(Operator == opAnd ? 3 : 2);
      const bool Space = Parser.Curr() == u' ';
      Parser.SkipBlanks();
      const WideChar After = Parser.Curr();
      if (After == u'(' || IsDigit(After) || After == u'@' || Space) {
        Cursor = Cursor->AddSibling(Operator);
        Handled = true;
      }
    } else if (C == u')') {
      --Nesting;
      Cursor = Cursor->Parent();
      Parser.Skip();
      Handled = true;
    }

    if (!Handled && Cursor && !Cursor->Term()) {
      if (IsDigit(Parser.Curr())) {
        const size_t Start = Parser.Position();
        while (IsDigit(Parser.Curr()))
          Parser.Skip();
        // An index beyond any list matches nothing, however many digits it has.
        Int64 Index = 0;
        if (!TryStrToInt64(Parser.From(Start), Index) ||
            Index > std::numeric_limits<Integer>::max())
          Index = std::numeric_limits<Integer>::max();
        Cursor->SetTerm(New<TLxXPathChildNodeX>(Cursor, static_cast<Integer>(Index)));
      } else {
        TOwned<TLxXPathBaseTerm> Left(Cursor->ReadTerm(Parser));
        Parser.SkipBlanks();
        TLxXPathValueComparisonOperator Operator;
        if (ReadOperator(Parser, Operator)) {
          Parser.SkipBlanks();
          TOwned<TLxXPathBaseTerm> Right(Cursor->ReadTerm(Parser));
          Parser.SkipBlanks();
          Cursor->SetTerm(
              New<TLxXPathValueComparison>(Cursor, Left.release(), Right.release(), Operator));
        } else if (auto* Path = dynamic_cast<TLxXPathValueTerm*>(Left.get())) {
          Left.release();
          Cursor->SetTerm(New<TLxXPathHasNode>(Cursor, Path));
        } else
          Cursor->SetTerm(Left.release());
      }
      Handled = true;
    }
    if (!Handled)
      RaiseInvalidFilter(AFilter);
    Parser.SkipBlanks();
    if (Parser.AtEnd() || Parser.Curr() == u']')
      break;
  }
  return Top;
}

TLxXPathBaseTerm* TLxXPathEquation::ReadTerm(TLxXPathFilterParser& AParser) {
  const TXPathDepthGuard Guard;
  AParser.SkipBlanks();
  const WideChar C = AParser.Curr();
  if (IsDigit(C) || C == u'"' || (C == u'.' && IsDigit(AParser.Ahead(1))))
    return New<TLxXPathConstantTerm>(this, AParser);
  if (C == u'(')
    return New<TLxXPathSequenceTerm>(this, AParser);
  if (C == u'[')
    return New<TLxXPathArrayTerm>(this, AParser);

  size_t Start = AParser.Position();
  while (!AParser.AtEnd() && !IsStop(AParser.Curr(), true) && AParser.Curr() != u':')
    AParser.Skip();
  UnicodeString Prefix;
  UnicodeString Name;
  if (AParser.Curr() == u':' && !AParser.AtEnd()) {
    Prefix.assign(AParser.From(Start));
    AParser.Skip();
    Start = AParser.Position();
    while (!AParser.AtEnd() && !IsStop(AParser.Curr(), false))
      AParser.Skip();
    Name.assign(TrimView(AParser.From(Start)));
  } else
    Name.assign(AParser.From(Start));

  AParser.SkipBlanks();
  if (AParser.Curr() == u'(' && (Prefix.empty() || Prefix == u"fn")) {
    AParser.Skip();
    TOwned<TLxXPathFunctionTerm> BuiltIn;
    if (Name == u"first")
      BuiltIn.reset(New<TLxXPathFirstNode>(this));
    else if (Name == u"last")
      BuiltIn.reset(New<TLxXPathLastNode>(this));
    else if (Name == u"position")
      BuiltIn.reset(New<TLxXPathFnPositionTerm>(this));
    else if (Name == u"node")
      BuiltIn.reset(New<TLxXPathFnNodeTerm>(this));
    else
      return CreateFunctionTerm(Name, this, AParser);
    BuiltIn->ParseParams(AParser);
    return BuiltIn.release();
  }

  UnicodeString Path = Prefix.empty() ? Name : Prefix + u":" + Name;
  if (AParser.Curr() == u'[')
    Path += AParser.SkipGroup(u'[', u']');
  if (Path.empty())
    throw ELxDomSyntax(u"The specified XPath statement is not valid!");
  return New<TLxXPathValueTerm>(this, std::move(Path));
}

bool TLxXPathEquation::Evaluate(const TLxXPathNodes& ANodeList, Integer AIndex) {
  bool Empty = false;
  const bool Result = Evaluate(ANodeList, AIndex, Empty);
  return Result && !Empty;
}

bool TLxXPathEquation::Evaluate(const TLxXPathNodes& ANodeList, Integer AIndex, bool& AEmpty) {
  // The chain is a strict left-to-right fold: an operand is reached only where the result so far
  // doesn't decide. A missing first operand ends the chain; a missing later one counts false.
  auto Operand = [&](TLxXPathEquation* AEquation, bool& AMissing) {
    const Variant Value = AEquation->FTerm ? AEquation->FTerm->Value(ANodeList, AIndex) : Variant();
    AMissing = VarIsNull(Value) || VarIsEmpty(Value);
    if (AMissing) {
      AEmpty = true;
      return false;
    }
    return LxVarToBool(Value, false, false);
  };
  bool Missing = false;
  bool Result = Operand(this, Missing);
  if (Missing)
    return false;
  for (TLxXPathEquation* Link = this; Link->FSibling; Link = Link->FSibling.get()) {
    switch (Link->FOperation) {
    case opAnd:
      if (Result)
        Result = Operand(Link->FSibling.get(), Missing);
      break;
    case opOr:
      if (!Result)
        Result = Operand(Link->FSibling.get(), Missing);
      break;
    case opNA:
      throw Exception(u"An invalid operation has been detected!");
    }
  }
  return Result;
}

// --- terms ------------------------------------------------------------------------------------

TLxXPathConstantTerm::TLxXPathConstantTerm(TLxXPathEquation* AEquation,
                                           TLxXPathFilterParser& AParser)
    : TLxXPathBaseTerm(AEquation) {
  const WideChar C = AParser.Curr();
  if (C == u'"') {
    AParser.Skip();
    const size_t Start = AParser.Position();
    while (!AParser.AtEnd() && AParser.Curr() != u'"')
      AParser.Skip();
    FValue = Variant(AParser.From(Start));
    AParser.Skip();
    return;
  }
  if (!IsDigit(C) && C != u'.')
    throw ELxDomSyntax(u"Either a number of a string was expected!");
  const size_t Start = AParser.Position();
  while (IsDigit(AParser.Curr()) || AParser.Curr() == u'.')
    AParser.Skip();
  const View Text = AParser.From(Start);
  Int64 Int = 0;
  if (Text.find(u'.') == View::npos && TryStrToInt64(Text, Int)) {
    FValue = Variant(Int);
    return;
  }
  TFormatSettings Settings;
  Settings.DecimalSeparator = u'.';
  Settings.ThousandSeparator = u',';
  double Float = 0;
  if (!TryStrToFloat(Text, Float, Settings))
    throw ELxDomSyntax(u"Either a number or a string was expected!");
  FValue = Variant(Float);
}

TLxXPathNodes TLxXPathValueTerm::Nodes(const TLxXPathNodes& ANodeList, Integer AIndex) {
  TXPathContext Context;
  Context.LocalNames = FEquation->SelectOptions().Contains(soLocalName);
  Context.Create = false;
  Context.Collation = FEquation->Collation() == TLxXPathCollationASCIICI::StaticClass()
                          ? TLxXPathCollationASCIICI::StaticClass()
                          : TLxXPathCollationCodepoint::StaticClass();
  TXPathResult Result;
  XPathSelect(ANodeList.at(AIndex), FPath, false, Context, Result);
  return std::move(Result.Nodes);
}

namespace {

Variant NodeValue(TLxDOMNode* ANode) {
  if (ANode->GetNodeType() == ntAttribute && static_cast<TLxDOMAttribute*>(ANode)->IsNamespace())
    return Null();
  return Variant(ANode->GetNodeValue());
}

} // namespace

Variant TLxXPathValueTerm::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  const TLxXPathNodes Found = Nodes(ANodeList, AIndex);
  if (Found.empty())
    return Null();
  if (Found.size() == 1)
    return NodeValue(Found.front());
  const Integer High = static_cast<Integer>(Found.size()) - 1;
  Variant Result = VarArrayCreate({0, High}, varVariant);
  for (Integer I = 0; I <= High; ++I)
    VarArrayPut(Result, NodeValue(Found[I]), I);
  return Result;
}

void TLxXPathFunctionTerm::ParseParams(TLxXPathFilterParser& AParser) {
  // The "(" is behind the cursor already: start one level deep.
  Integer Depth = 1;
  while (!AParser.AtEnd()) {
    const WideChar C = AParser.Curr();
    AParser.Skip();
    if (C == u'(')
      ++Depth;
    else if (C == u')' && --Depth == 0)
      break;
  }
}

Variant TLxXPathFirstNode::Value(const TLxXPathNodes&, Integer AIndex) { return AIndex == 0; }

Variant TLxXPathLastNode::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return AIndex == static_cast<Integer>(ANodeList.size()) - 1;
}

Variant TLxXPathFnPositionTerm::Value(const TLxXPathNodes&, Integer AIndex) {
  return Variant(static_cast<Integer>(AIndex + 1));
}

Variant TLxXPathFnNodeTerm::Value(const TLxXPathNodes&, Integer) { return true; }

bool TLxXPathChildTerm::ChildResult(const TLxXPathNodes& ANodeList, Integer AIndex,
                                    std::u16string_view AMessage, bool& AEmpty) {
  if (FEquation->ChildCount() != 1)
    throw Exception(UnicodeString(AMessage));
  const TXPathDepthGuard Guard;
  AEmpty = false;
  return FEquation->Child(0)->Evaluate(ANodeList, AIndex, AEmpty);
}

Variant TLxXPathChildTerm::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  bool Empty = false;
  const bool Result = ChildResult(
      ANodeList, AIndex, u"An invalid expression was detected!\r\nCheck the parenthesis.", Empty);
  return Result && !Empty;
}

Variant TLxXPathNot::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  bool Empty = false;
  const bool Result = ChildResult(
      ANodeList, AIndex,
      u"An invalid expression was detected!\r\nA \"not\" operator must have a child value.", Empty);
  return !Result && !Empty;
}

Variant TLxXPathChildNodeX::Value(const TLxXPathNodes&, Integer AIndex) { return AIndex == FIndex; }

Variant TLxXPathHasNode::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return !FPath->Nodes(ANodeList, AIndex).empty();
}

Variant TLxXPathValueComparison::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  const Variant Value1 = FValue1->Value(ANodeList, AIndex);
  const Variant Value2 = FValue2->Value(ANodeList, AIndex);
  const bool Array1 = VarIsArray(Value1);
  const bool Array2 = VarIsArray(Value2);
  Variant Result = false;
  auto Each = [](const Variant& AArray, auto&& AVisit) {
    for (Integer I = VarArrayLowBound(AArray, 1); I <= VarArrayHighBound(AArray, 1); ++I)
      if (AVisit(VarArrayGet(AArray, I)))
        return true;
    return false;
  };
  if (Array1 && Array2)
    Each(Value1, [&](const Variant& A) {
      return Each(Value2, [&](const Variant& B) { return IsTrue(Result = CompareValues(A, B)); });
    });
  else if (Array1)
    Each(Value1, [&](const Variant& A) { return IsTrue(Result = CompareValues(A, Value2)); });
  else if (Array2)
    Each(Value2, [&](const Variant& B) { return IsTrue(Result = CompareValues(Value1, B)); });
  else
    Result = CompareValues(Value1, Value2);
  return Result;
}

Variant TLxXPathValueComparison::CompareValues(const Variant& AValue1,
                                               const Variant& AValue2) const {
  if (VarIsNull(AValue1) || VarIsNull(AValue2))
    return Null();
  if (VarMainTypeKind(AValue1) == lmkString && VarMainTypeKind(AValue2) == lmkString) {
    const UnicodeString Text1 = AValue1.AsString();
    const UnicodeString Text2 = AValue2.AsString();
    const TLxXPathCollationClass Collation = FEquation->Collation();
    switch (FOperator) {
    case opEqual:
      return Collation->SameText(Text1, Text2);
    case opUnequal:
      return !Collation->SameText(Text1, Text2);
    default:
      return Compare(Collation->Compare(Text1, Text2), 0, FOperator);
    }
  }
  const TClassified A = Classify(AValue1);
  const TClassified B = Classify(AValue2);
  if (A.Kind == TClassified::Integer && B.Kind == TClassified::Integer)
    return Compare(A.Int, B.Int, FOperator);
  if (A.Kind != TClassified::Other && B.Kind != TClassified::Other) {
    const double X = A.Kind == TClassified::Integer ? static_cast<double>(A.Int) : A.Real;
    const double Y = B.Kind == TClassified::Integer ? static_cast<double>(B.Int) : B.Real;
    // NaN is unordered: unequal to everything, and neither smaller nor greater.
    return Compare(X, Y, FOperator);
  }
  switch (FOperator) {
  case opUnequal:
    return AValue1 != AValue2;
  case opEqual:
    return AValue1 == AValue2;
  case opSmaller:
    return AValue1 < AValue2;
  case opSmallerEqual:
    return AValue1 <= AValue2;
  case opGreater:
    return AValue1 > AValue2;
  case opGreaterEqual:
    return AValue1 >= AValue2;
  }
  return false;
}

TLxXPathListTerm::TLxXPathListTerm(TLxXPathEquation* AEquation, TLxXPathFilterParser& AParser,
                                   WideChar AOpen, WideChar AClose)
    : TLxXPathBaseTerm(AEquation) {
  (void)AOpen;
  AParser.Skip();
  AParser.SkipBlanks();
  if (AParser.Curr() == AClose) {
    AParser.Skip();
    return;
  }
  for (;;) {
    FList.emplace_back(AEquation->ReadTerm(AParser));
    if (AParser.Curr() == u',')
      AParser.Skip();
    if (AParser.AtEnd() || AParser.Curr() == AClose)
      break;
  }
  AParser.Skip();
}

Variant TLxXPathListTerm::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  UnicodeString Result;
  for (size_t I = 0; I < FList.size(); ++I) {
    if (I > 0)
      Result += u", ";
    Result += LxVarToStr(FList[I]->Value(ANodeList, AIndex), u"", false);
  }
  return Variant(Result);
}

} // namespace lorvane
