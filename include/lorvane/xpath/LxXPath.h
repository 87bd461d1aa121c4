/// The path language's filters and function library:
///   ELxXPathException        a failure with an error code in the manner of the W3C functions
///   TLxXPathFilterParser     the cursor over one filter's text that terms read themselves from
///   TLxXPathEquation         a node of a filter's boolean structure (chains, groups, "not")
///   TLxXPathBaseTerm ...     the terms: constants, paths, positions, comparisons, lists
///   TLxXPathFunction         the base of the functions; RegisterXPathFunction adds one by name
///   TLxXPathFn...            the node functions and the boolean family
///   LxXPathStartup           the module's start-up registrations
///
/// A path selection (TLxDOMNode::SelectSingleNode and its kin) hands each bracket group of a step
/// to a new equation, which is parsed, evaluated once per candidate and freed. Terms live only
/// for that one application. Candidates are given as the whole list and an index from 0.
#pragma once

#include "lorvane/dom/LxDOMNode.h"
#include "lorvane/platform/Variants.h"

#include <string_view>
#include <vector>

namespace lorvane {

/// The candidate list of one filter application, in the order the step found them.
using TLxXPathNodes = std::vector<TLxDOMNode*>;

/// A failure of a path function; ErrorCode is a W3C error code such as "XPTY0004".
class ELxXPathException : public ELxDomException {
public:
  ELxXPathException(UnicodeString AErrorCode, UnicodeString AErrorMsg, UnicodeString AErrorObject)
      : ELxDomException(std::move(AErrorMsg)), FErrorCode(std::move(AErrorCode)),
        FErrorObject(std::move(AErrorObject)) {}
  const UnicodeString& ErrorCode() const noexcept { return FErrorCode; }
  const UnicodeString& ErrorObject() const noexcept { return FErrorObject; }

private:
  UnicodeString FErrorCode;
  UnicodeString FErrorObject;
};

enum TLxXPathBoolOperator : Byte { opNA, opAnd, opOr };
enum TLxXPathValueComparisonOperator : Byte {
  opUnequal,
  opEqual,
  opSmaller,
  opSmallerEqual,
  opGreater,
  opGreaterEqual
};

/// A forward cursor over a filter's text. Reading past the end gives NUL and stays there.
class TLxXPathFilterParser {
public:
  explicit TLxXPathFilterParser(std::u16string_view AText) noexcept : FText(AText) {}
  std::u16string_view Text() const noexcept { return FText; }
  bool AtEnd() const noexcept { return FPos >= FText.size(); }
  WideChar Curr() const noexcept { return AtEnd() ? u'\0' : FText[FPos]; }
  /// The character AOffset places ahead; NUL beyond the end.
  WideChar Ahead(size_t AOffset) const noexcept {
    return FPos + AOffset < FText.size() ? FText[FPos + AOffset] : u'\0';
  }
  /// Up to ACount characters from the cursor on, without moving.
  std::u16string_view Peek(size_t ACount) const noexcept {
    return AtEnd() ? std::u16string_view() : FText.substr(FPos, ACount);
  }
  void Skip(size_t ACount = 1) noexcept { FPos = std::min(FText.size(), FPos + ACount); }
  /// Skips blanks and control characters.
  void SkipBlanks() noexcept {
    while (!AtEnd() && FText[FPos] <= u' ')
      ++FPos;
  }
  /// From the cursor to behind the bracket AClose that matches the AOpen under the cursor,
  /// counting nested pairs; to the end when it has none. Gives the text passed over.
  std::u16string_view SkipGroup(WideChar AOpen, WideChar AClose) noexcept;
  size_t Position() const noexcept { return FPos; }
  std::u16string_view From(size_t AStart) const noexcept {
    return FText.substr(AStart, FPos - AStart);
  }

private:
  std::u16string_view FText;
  size_t FPos = 0;
};

class TLxXPathBaseTerm;

/// A node of the boolean structure of one filter. Owns its sibling, its children and its term.
class TLxXPathEquation : public TObject {
  LX_CLASS(TLxXPathEquation, TObject)
  TLxXPathEquation(TLxDOMSelectMatchOption AMatchOption, TLxXPathCollationClass ACollation) noexcept
      : FMatchOption(AMatchOption), FCollation(ACollation) {}

  /// The options of a path inside the filter: the case option of the collation (any collation but
  /// the case-insensitive one is case-sensitive) and the match option.
  TLxDOMSelectOptions SelectOptions() const;
  TLxDOMSelectMatchOption MatchOption() const noexcept { return FMatchOption; }
  TLxXPathCollationClass Collation() const noexcept { return FCollation; }
  TLxXPathBaseTerm* Term() const noexcept { return FTerm.get(); }
  /// Frees the term held before.
  void SetTerm(TLxXPathBaseTerm* ATerm);
  TLxXPathEquation* Parent() const noexcept { return FParent; }
  TLxXPathEquation* Sibling() const noexcept { return FSibling.get(); }
  TLxXPathBoolOperator Operation() const noexcept { return FOperation; }
  Integer ChildCount() const noexcept { return static_cast<Integer>(FChilds.size()); }
  TLxXPathEquation* Child(Integer AIndex) const { return FChilds.at(AIndex).get(); }

  /// A new first child with this equation's options; this equation's operation becomes opNA.
  TLxXPathEquation* AddFirstChild();
  /// A new sibling under the same parent, joined to this one by AOperator.
  TLxXPathEquation* AddSibling(TLxXPathBoolOperator AOperator);
  /// Reads one operand: a constant, a list, a function call or a path (with one filter at its
  /// end). Raises ELxDomSyntax for an empty path and for an unknown function.
  TLxXPathBaseTerm* ReadTerm(TLxXPathFilterParser& AParser);

  /// Whether the candidate passes: the chain from here folded left to right, false when a value
  /// on the way was missing (empty).
  bool Evaluate(const TLxXPathNodes& ANodeList, Integer AIndex);
  /// The fold; AEmpty is set when a value it reached was Null or unassigned.
  bool Evaluate(const TLxXPathNodes& ANodeList, Integer AIndex, bool& AEmpty);

  /// Parses one bracket group ("[...]") into a new top equation that the caller frees. Raises
  /// Exception "\"%s\" is an invalid filter expression!" for text that is no filter.
  static TOwned<TLxXPathEquation> Parse(std::u16string_view AFilter,
                                        TLxDOMSelectMatchOption AMatchOption,
                                        TLxXPathCollationClass ACollation);

protected:
  ~TLxXPathEquation() override;

private:
  TLxDOMSelectMatchOption FMatchOption;
  TLxXPathCollationClass FCollation;
  TLxXPathBoolOperator FOperation = opNA;
  TLxXPathEquation* FParent = nullptr;
  TOwned<TLxXPathEquation> FSibling;
  std::vector<TOwned<TLxXPathEquation>> FChilds;
  TOwned<TLxXPathBaseTerm> FTerm;
};

/// A value in a filter. A term reads its own text in its constructor or right after it.
class TLxXPathBaseTerm : public TObject {
  LX_CLASS(TLxXPathBaseTerm, TObject)
  explicit TLxXPathBaseTerm(TLxXPathEquation* AEquation) noexcept : FEquation(AEquation) {}

  TLxXPathEquation* Equation() const noexcept { return FEquation; }
  bool IsBoolean() const noexcept { return FIsBoolean; }
  /// The value for the candidate ANodeList[AIndex].
  virtual Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) = 0;

protected:
  ~TLxXPathBaseTerm() override = default;
  TLxXPathEquation* FEquation;
  bool FIsBoolean = false;
};

/// A number or a double-quoted string.
class TLxXPathConstantTerm : public TLxXPathBaseTerm {
  LX_CLASS(TLxXPathConstantTerm, TLxXPathBaseTerm)
  /// Reads the constant: a string up to the next double quote (no escapes), or a run of digits
  /// and "." as a 64-bit integer, else as a float. Raises ELxDomSyntax "Either a number or a
  /// string was expected!" for a run that is neither.
  TLxXPathConstantTerm(TLxXPathEquation* AEquation, TLxXPathFilterParser& AParser);
  TLxXPathConstantTerm(TLxXPathEquation* AEquation, const Variant& AValue)
      : TLxXPathBaseTerm(AEquation), FValue(AValue) {}
  Variant Value(const TLxXPathNodes&, Integer) override { return FValue; }
  const Variant& Constant() const noexcept { return FValue; }

protected:
  ~TLxXPathConstantTerm() override = default;
  Variant FValue;
};

/// A path from the candidate. Its value: Null for no node, the node's value for one, an array
/// of the values for several; a namespace declaration's value is Null.
class TLxXPathValueTerm : public TLxXPathBaseTerm {
  LX_CLASS(TLxXPathValueTerm, TLxXPathBaseTerm)
  TLxXPathValueTerm(TLxXPathEquation* AEquation, UnicodeString APath)
      : TLxXPathBaseTerm(AEquation), FPath(std::move(APath)) {}
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
  /// The nodes at the path from ANodeList[AIndex], with the equation's options.
  TLxXPathNodes Nodes(const TLxXPathNodes& ANodeList, Integer AIndex);
  const UnicodeString& Path() const noexcept { return FPath; }

protected:
  ~TLxXPathValueTerm() override = default;
  UnicodeString FPath;
};

/// The base of everything written name(...).
class TLxXPathFunctionTerm : public TLxXPathBaseTerm {
  LX_CLASS(TLxXPathFunctionTerm, TLxXPathBaseTerm)
  using TLxXPathBaseTerm::TLxXPathBaseTerm;
  /// Reads the arguments; the "(" is consumed already. Here: skips to the matching ")".
  virtual void ParseParams(TLxXPathFilterParser& AParser);

protected:
  ~TLxXPathFunctionTerm() override = default;
};

/// first(): the candidate is the first.
class TLxXPathFirstNode : public TLxXPathFunctionTerm {
  LX_CLASS(TLxXPathFirstNode, TLxXPathFunctionTerm)
  using TLxXPathFunctionTerm::TLxXPathFunctionTerm;
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
};

/// last(): the candidate is the last.
class TLxXPathLastNode : public TLxXPathFunctionTerm {
  LX_CLASS(TLxXPathLastNode, TLxXPathFunctionTerm)
  using TLxXPathFunctionTerm::TLxXPathFunctionTerm;
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
};

/// position(): the index plus 1, an integer.
class TLxXPathFnPositionTerm : public TLxXPathFunctionTerm {
  LX_CLASS(TLxXPathFnPositionTerm, TLxXPathFunctionTerm)
  using TLxXPathFunctionTerm::TLxXPathFunctionTerm;
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
};

/// node(): always true.
class TLxXPathFnNodeTerm : public TLxXPathFunctionTerm {
  LX_CLASS(TLxXPathFnNodeTerm, TLxXPathFunctionTerm)
  using TLxXPathFunctionTerm::TLxXPathFunctionTerm;
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
};

/// A parenthesis: the child equation's result, false where it was empty.
class TLxXPathChildTerm : public TLxXPathBaseTerm {
  LX_CLASS(TLxXPathChildTerm, TLxXPathBaseTerm)
  explicit TLxXPathChildTerm(TLxXPathEquation* AEquation) noexcept : TLxXPathBaseTerm(AEquation) {
    FIsBoolean = true;
  }
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;

protected:
  /// The child's result and whether it was empty; raises Exception with AMessage unless the
  /// equation has exactly one child.
  bool ChildResult(const TLxXPathNodes& ANodeList, Integer AIndex, std::u16string_view AMessage,
                   bool& AEmpty);
};

/// "not": the negated child, false where it was empty.
class TLxXPathNot : public TLxXPathChildTerm {
  LX_CLASS(TLxXPathNot, TLxXPathChildTerm)
  using TLxXPathChildTerm::TLxXPathChildTerm;
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
};

/// A number alone: the candidate's index, from 0, is that number.
class TLxXPathChildNodeX : public TLxXPathBaseTerm {
  LX_CLASS(TLxXPathChildNodeX, TLxXPathBaseTerm)
  TLxXPathChildNodeX(TLxXPathEquation* AEquation, Integer AIndex) noexcept
      : TLxXPathBaseTerm(AEquation), FIndex(AIndex) {
    FIsBoolean = true;
  }
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;

protected:
  Integer FIndex;
};

/// A path alone: whether it finds a node.
class TLxXPathHasNode : public TLxXPathBaseTerm {
  LX_CLASS(TLxXPathHasNode, TLxXPathBaseTerm)
  TLxXPathHasNode(TLxXPathEquation* AEquation, TLxXPathValueTerm* APath) noexcept
      : TLxXPathBaseTerm(AEquation), FPath(APath) {
    FIsBoolean = true;
  }
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;

protected:
  TOwned<TLxXPathValueTerm> FPath;
};

/// Two operands and an operator. Node sets compare existentially; a missing value gives Null.
class TLxXPathValueComparison : public TLxXPathBaseTerm {
  LX_CLASS(TLxXPathValueComparison, TLxXPathBaseTerm)
  TLxXPathValueComparison(TLxXPathEquation* AEquation, TLxXPathBaseTerm* AValue1,
                          TLxXPathBaseTerm* AValue2,
                          TLxXPathValueComparisonOperator AOperator) noexcept
      : TLxXPathBaseTerm(AEquation), FValue1(AValue1), FValue2(AValue2), FOperator(AOperator) {}
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
  /// Null when either is Null; Boolean otherwise. Raises the Variant failure for values the
  /// shared comparison can't compare.
  Variant CompareValues(const Variant& AValue1, const Variant& AValue2) const;

protected:
  TOwned<TLxXPathBaseTerm> FValue1;
  TOwned<TLxXPathBaseTerm> FValue2;
  TLxXPathValueComparisonOperator FOperator;
};

/// A list of terms; its value is the members' values joined by ", ".
class TLxXPathListTerm : public TLxXPathBaseTerm {
  LX_CLASS(TLxXPathListTerm, TLxXPathBaseTerm)
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
  Integer Count() const noexcept { return static_cast<Integer>(FList.size()); }
  TLxXPathBaseTerm* GetTerm(Integer AIndex) const { return FList.at(AIndex).get(); }

protected:
  /// Reads the members between AOpen (under the cursor) and AClose.
  TLxXPathListTerm(TLxXPathEquation* AEquation, TLxXPathFilterParser& AParser, WideChar AOpen,
                   WideChar AClose);
  std::vector<TOwned<TLxXPathBaseTerm>> FList;
};

/// A list written ( ... ).
class TLxXPathSequenceTerm : public TLxXPathListTerm {
  LX_CLASS(TLxXPathSequenceTerm, TLxXPathListTerm)
  TLxXPathSequenceTerm(TLxXPathEquation* AEquation, TLxXPathFilterParser& AParser)
      : TLxXPathListTerm(AEquation, AParser, u'(', u')') {}
};

/// A list written [ ... ].
class TLxXPathArrayTerm : public TLxXPathListTerm {
  LX_CLASS(TLxXPathArrayTerm, TLxXPathListTerm)
  TLxXPathArrayTerm(TLxXPathEquation* AEquation, TLxXPathFilterParser& AParser)
      : TLxXPathListTerm(AEquation, AParser, u'[', u']') {}
};

/// The base of the registered functions: the arguments are terms, read by ParseParams; counting
/// them is left to each Value, so a wrong number shows only when a candidate is tested.
class TLxXPathFunction : public TLxXPathFunctionTerm {
  LX_CLASS(TLxXPathFunction, TLxXPathFunctionTerm)
  using TLxXPathFunctionTerm::TLxXPathFunctionTerm;
  /// Reads the terms up to the closing ")", each followed by an optional comma.
  void ParseParams(TLxXPathFilterParser& AParser) override;
  Integer ParamCount() const noexcept { return static_cast<Integer>(FParams.size()); }
  TLxXPathBaseTerm* Param(Integer AIndex) const { return FParams.at(AIndex).get(); }

protected:
  std::vector<TOwned<TLxXPathBaseTerm>> FParams;
};

/// Makes a function term and reads its arguments: the part of a class that the registry needs.
using TLxXPathFunctionClass = TLxXPathFunction* (*)(TLxXPathEquation* AEquation,
                                                    TLxXPathFilterParser& AParser);

/// The class reference of T: constructs T on the equation, then lets it read its arguments.
template <class T>
TLxXPathFunction* XPathFunctionClass(TLxXPathEquation* AEquation, TLxXPathFilterParser& AParser) {
  TOwned<T> Term(New<T>(AEquation));
  Term->ParseParams(AParser);
  return Term.release();
}

/// Adds a function at the end of the registry. A name registered twice keeps its first class.
void RegisterXPathFunction(const UnicodeString& AFunctionName,
                           TLxXPathFunctionClass AFunctionClass);
/// The term of the function registered under AFunctionName (exact case), its arguments read from
/// AParser; the caller owns it. An unknown name raises ELxDomSyntax "The filter contains an
/// unsupported function (%s)!".
TLxXPathBaseTerm* CreateFunctionTerm(const UnicodeString& AFunctionName,
                                     TLxXPathEquation* AEquation, TLxXPathFilterParser& AParser);

#define LX_XPATH_FUNCTION(Name)                                                                    \
  class Name : public TLxXPathFunction {                                                           \
    LX_CLASS(Name, TLxXPathFunction)                                                               \
    using TLxXPathFunction::TLxXPathFunction;                                                      \
    Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;                        \
  }

/// text(): whether the candidate has a text child (CDATA doesn't count).
LX_XPATH_FUNCTION(TLxXPathFnText);
/// node-name(node): the name by the match option; a declaration's declared prefix.
LX_XPATH_FUNCTION(TLxXPathFnNodeName);
/// nilled(node): whether an element's nil attribute is "true"; Null for other nodes.
LX_XPATH_FUNCTION(TLxXPathFnNilled);
/// data(arg): the node's value, or the argument's value as text.
LX_XPATH_FUNCTION(TLxXPathFnData);
/// base-uri(arg): the node's namespace URI, else its document's URI.
LX_XPATH_FUNCTION(TLxXPathFnBaseUri);
/// document-uri(arg): the URI of the node's document.
LX_XPATH_FUNCTION(TLxXPathFnDocumentUri);
/// error(code, description, object): raises ELxXPathException.
LX_XPATH_FUNCTION(TLxXPathFnError);
/// trace(value, label): logs "label; value=value" to the logger "XPath", gives the value.
LX_XPATH_FUNCTION(TLxXPathFnTrace);
LX_XPATH_FUNCTION(TLxXPathFnTrue);
LX_XPATH_FUNCTION(TLxXPathFnFalse);
/// boolean(arg): by the kind of the argument's term; see the module's notes.
LX_XPATH_FUNCTION(TLxXPathFnBoolean);
LX_XPATH_FUNCTION(TLxXPathFnNot);

#undef LX_XPATH_FUNCTION

/// string(arg): as data(arg); a sequence or array argument raises while parsing.
class TLxXPathFnString : public TLxXPathFunction {
  LX_CLASS(TLxXPathFnString, TLxXPathFunction)
  using TLxXPathFunction::TLxXPathFunction;
  void ParseParams(TLxXPathFilterParser& AParser) override;
  Variant Value(const TLxXPathNodes& ANodeList, Integer AIndex) override;
};

/// The module's start-up: the two collations, then the functions, then the tree's path hook.
/// Called once from the library's start-up.
void LxXPathStartup();

} // namespace lorvane
