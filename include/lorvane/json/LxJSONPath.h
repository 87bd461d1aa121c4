/// JSON path over the value tree:
///   TLxJSONNodeList                 a plain list of values that owns none of them
///   TLxBoolExpression               one node of a parsed filter "?(...)"
///   TLxExpressionValue and kin      what a filter node tests: a group, a negation, a path that
///                                   finds something, a comparison
/// Selection itself is on every value: TLxJSONBase::CreateNodeList, SelectSingleNode and
/// SelectIntf (LxJSONValues.h).
///
/// A filter is a chain of nodes joined by "&&" and "||", evaluated strictly from left to right
/// with no precedence; "(...)" and "!" hang a chain of their own below a node. A comparison
/// that meets a missing value (or a number beside a word) sets IsNull, and an item whose test
/// set IsNull anywhere is rejected whatever the chain gave.
#pragma once

#include "lorvane/json/LxJSONValues.h"
#include "lorvane/platform/Generics.h"

#include <memory>

namespace lorvane {

class TLxJSONNodeList : public TList<TLxJSONBase*> {
public:
  /// Clears, then takes every item of AList in order.
  void Assign(const TLxJSONNodeList& AList);
};

// Scoped: the node path language's filters use the same names for their own operators.
enum class TLxBoolExpressionOperator : Byte { opNA, opAnd, opOr };

enum class TLxExpValueHasNodeWithValueOp : Byte {
  opUnequal,
  opEqual,
  opSmaller,
  opSmallerEqual,
  opGreater,
  opGreaterEqual
};

class TLxExpressionValue;
/// A path text cut into steps on first use, and the two sides of a comparison as far as they
/// don't change from item to item (src/json).
class TJSONPathText;
struct TJSONComparisonSides;

/// A node of a filter. It owns its value, its child chain and the rest of its own chain; freeing
/// the root frees the whole filter, over a list of its own rather than by recursion.
class TLxBoolExpression : public TObject {
  LX_CLASS(TLxBoolExpression, TObject)
  TLxBoolExpression() noexcept = default;

  /// A new node as FChild (a node there before is freed); this node's operator goes back to
  /// opNA. The result is the new node.
  TLxBoolExpression* AddFirstChild();
  /// A new node as FSibling, under the same parent, joined to this one by AOperator (a sibling
  /// there before is freed). The result is the new node.
  TLxBoolExpression* AddSibling(TLxBoolExpressionOperator AOperator);
  /// Whether ANodeList[AIndex] passes the chain that starts here; false when a comparison on the
  /// way set IsNull. A node without a value raises EAssertionFailed SJSONFilterOperandMissing;
  /// a node joined to its sibling by opNA raises Exception "An invalid operation has been
  /// detected!". Groups nested deeper than cJSONPathMaxDepth raise ELxJSONException
  /// _cLxJSONScriptExprTooComplex (code 17).
  bool Evaluate(TLxJSONNodeList* ANodeList, Integer AIndex);
  /// The chain's result with IsNull passed on, for a group's value.
  bool EvaluateChain(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull);

  TLxExpressionValue* GetValue() const noexcept { return FValue; }
  /// Frees the value held before; the new value learns its node.
  void SetValue(TLxExpressionValue* AValue);

  TLxBoolExpressionOperator FOperation = TLxBoolExpressionOperator::opNA;
  TLxBoolExpression* FParent = nullptr;
  TLxBoolExpression* FSibling = nullptr;
  TLxBoolExpression* FChild = nullptr;

protected:
  void BeforeDestruction() override;
  ~TLxBoolExpression() override = default;

private:
  TLxExpressionValue* FValue = nullptr;
};

class TLxExpressionValue : public TObject {
  LX_CLASS(TLxExpressionValue, TObject)
  TLxExpressionValue() noexcept = default;
  /// The value for ANodeList[AIndex]; IsNull is set, never cleared, by a test that met nothing.
  virtual bool Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) = 0;

  TLxBoolExpression* FExpression = nullptr;

protected:
  ~TLxExpressionValue() override = default;
};

/// A group "(...)": the chain below the node.
class TLxExpressionValueChild : public TLxExpressionValue {
  LX_CLASS(TLxExpressionValueChild, TLxExpressionValue)
  TLxExpressionValueChild() noexcept = default;
  /// Without a child: Exception "An invalid expression was detected!\r\nCheck the parenthesis."
  bool Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) override;

protected:
  ~TLxExpressionValueChild() override = default;
};

/// "!": the negated chain below the node.
class TLxExpressionValueNot : public TLxExpressionValueChild {
  LX_CLASS(TLxExpressionValueNot, TLxExpressionValueChild)
  TLxExpressionValueNot() noexcept = default;
  /// Without a child: Exception "An invalid expression was detected!\r\nA \"not\" operator must
  /// have a child value."
  bool Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) override;

protected:
  ~TLxExpressionValueNot() override = default;
};

/// A path standing alone: true when it selects something from the item under test.
class TLxExpressionValueExists : public TLxExpressionValue {
  LX_CLASS(TLxExpressionValueExists, TLxExpressionValue)
  TLxExpressionValueExists(const LxJSONString& APath, bool ACaseInsensitive);
  bool Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) override;

  LxJSONString FPath;
  bool FCaseInsensitive = false;

protected:
  ~TLxExpressionValueExists() override;

private:
  /// The path, cut into steps as the walk first needs them and kept for the next item.
  std::unique_ptr<TJSONPathText> FCompiled;
};

/// A comparison of two terms, each a path from the item under test ("@..." or "$..."), a
/// quoted literal or a bare word or number.
class TLxExpValueHasNodeWithValue : public TLxExpressionValue {
  LX_CLASS(TLxExpValueHasNodeWithValue, TLxExpressionValue)
  TLxExpValueHasNodeWithValue(const LxJSONString& AValue1, const LxJSONString& AValue2,
                              TLxExpValueHasNodeWithValueOp AOperator, bool ACaseInsensitive);
  /// Paths select with regard to case. A missing side, or a number beside a word, gives false
  /// and sets IsNull. Quoted sides compare as texts; else integers (StrToInt), floats ("." for
  /// decimals), then booleans ("true"/"false" in any case) compare as such, and anything else
  /// as texts: by the Variant comparison, or with FCaseInsensitive equal and unequal ignoring
  /// ASCII case and the orderings on the lower-cased texts.
  bool Value(TLxJSONNodeList* ANodeList, Integer AIndex, bool& IsNull) override;

  LxJSONString FValue1;
  LxJSONString FValue2;
  TLxExpValueHasNodeWithValueOp FOperator = TLxExpValueHasNodeWithValueOp::opEqual;
  bool FCaseInsensitive = false;

protected:
  ~TLxExpValueHasNodeWithValue() override;

private:
  std::unique_ptr<TJSONComparisonSides> FSides;
};

/// Nested selections (a filter's paths that hold filters) and groups of one thread: beyond this
/// depth they raise ELxJSONException _cLxJSONScriptExprTooComplex (code 17) instead of
/// exhausting the stack.
inline constexpr Integer cJSONPathMaxDepth = 256;

/// The message of a filter node that has no value, as in "?(())" or "?(@.a &&)".
inline constexpr char16_t SJSONFilterOperandMissing[] =
    u"A filter expression lacks an operand where one is required";
inline constexpr char16_t SJSONInvalidOperation[] = u"An invalid operation has been detected!";
inline constexpr char16_t SJSONNoParenthesisChild[] =
    u"An invalid expression was detected!\r\nCheck the parenthesis.";
inline constexpr char16_t SJSONNoNotChild[] =
    u"An invalid expression was detected!\r\nA \"not\" operator must have a child value.";

} // namespace lorvane
