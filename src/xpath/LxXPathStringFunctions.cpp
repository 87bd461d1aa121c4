// The numeric, string and regular expression functions of filters.
#include "lorvane/classes/LxStrings.h"
#include "lorvane/classes/LxVariants.h"
#include "lorvane/platform/RegularExpressions.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/xpath/LxXPathValueFunctions.h"
#include "xpath/LxXPathSelect.h"

#include <cmath>
#include <limits>

namespace lorvane {

namespace {

using View = std::u16string_view;

Variant Arg(TLxXPathFunction& AFunction, Integer AParam, const TLxXPathNodes& ANodeList,
            Integer AIndex) {
  return AFunction.Param(AParam)->Value(ANodeList, AIndex);
}

UnicodeString TextOf(const Variant& AValue) { return LxVarToStr(AValue, u"", false); }

UnicodeString ArgText(TLxXPathFunction& AFunction, Integer AParam, const TLxXPathNodes& ANodeList,
                      Integer AIndex) {
  return TextOf(Arg(AFunction, AParam, ANodeList, AIndex));
}

UnicodeString CandidateText(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return ANodeList.at(AIndex)->GetNodeValue();
}

void ExpectCount(const TLxXPathFunction& AFunction, Integer ACount, View AMessage) {
  if (AFunction.ParamCount() != ACount)
    throw ELxDomSyntax(UnicodeString(AMessage));
}

/// The text of the only argument, or the candidate's text without one; more raise AMessage.
UnicodeString TextOrCandidate(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList,
                              Integer AIndex, View AMessage) {
  if (AFunction.ParamCount() > 1)
    throw ELxDomSyntax(UnicodeString(AMessage));
  return AFunction.ParamCount() == 0 ? CandidateText(ANodeList, AIndex)
                                     : ArgText(AFunction, 0, ANodeList, AIndex);
}

// --- numbers ------------------------------------------------------------------------------------

enum class TRounding { Ceiling, Floor, HalfEven };

/// What ceiling, floor, round and half-to-even make of their one argument.
Variant Rounded(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList, Integer AIndex,
                View AMessage, TRounding AMode) {
  ExpectCount(AFunction, 1, AMessage);
  const Variant Value = Arg(AFunction, 0, ANodeList, AIndex);
  const bool Wide = AMode == TRounding::HalfEven;
  double Real;
  switch (VarMainTypeKind(Value)) {
  case lmkInteger:
    return Wide ? Variant(Value.AsInt64()) : Variant(Value.AsInteger());
  case lmkBoolean:
    return Integer(Value.AsBoolean() ? 1 : 0);
  case lmkFloat:
  case lmkDateTime:
    Real = Value.AsDouble();
    break;
  default:
    return Null();
  }
  // The Variant's conversion to an integer rounds halves to even and raises its overflow error
  // for values beyond the type, NaN and the infinities included.
  if (AMode == TRounding::Ceiling)
    Real = std::ceil(Real);
  else if (AMode == TRounding::Floor)
    Real = std::floor(Real);
  return Wide ? Variant(Variant(Real).AsInt64()) : Variant(Variant(Real).AsInteger());
}

// --- regular expressions ------------------------------------------------------------------------

/// The options that the letters of AFlags name, each found by the collation's Pos.
TRegExOptions RegExOptions(TLxXPathCollationClass ACollation, const UnicodeString& AFlags) {
  static constexpr struct {
    const char16_t* Letter;
    TRegExOption Option;
  } Letters[] = {{u"s", roSingleLine},
                 {u"m", roMultiLine},
                 {u"i", roIgnoreCase},
                 {u"x", roIgnorePatternSpace},
                 {u"q", roExplicitCapture}};
  TRegExOptions Result;
  if (AFlags.empty())
    return Result;
  for (const auto& Entry : Letters)
    if (ACollation->Pos(Entry.Letter, AFlags) > 0)
      Result.Include(Entry.Option);
  return Result;
}

/// The steps of normalize-space: runs of U+0020 become one, none at either end.
UnicodeString NormalizeSpace(View AText) {
  UnicodeString Result;
  Result.reserve(AText.size());
  size_t I = 0;
  for (;;) {
    while (I < AText.size() && AText[I] == u' ')
      ++I;
    if (I >= AText.size())
      break;
    const size_t Start = I;
    while (I < AText.size() && AText[I] != u' ')
      ++I;
    if (!Result.empty())
      Result += u' ';
    Result.append(AText.substr(Start, I - Start));
  }
  return Result;
}

} // namespace

// --- numbers ------------------------------------------------------------------------------------

Variant TLxXPathFnAbs::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  ExpectCount(*this, 1, u"The \"fn:abs(num)\" function must contain 1 parameter!");
  const Variant Value = Arg(*this, 0, ANodeList, AIndex);
  switch (VarMainTypeKind(Value)) {
  case lmkInteger: {
    const Int64 Int = Value.AsInt64();
    if (Int == std::numeric_limits<Int64>::min())
      throw EVariantOverflowError(u"Variant overflow");
    return Int < 0 ? -Int : Int;
  }
  case lmkFloat:
  case lmkDateTime:
    return std::fabs(Value.AsDouble());
  case lmkBoolean:
    return Integer(Value.AsBoolean() ? 1 : 0);
  default:
    return Null();
  }
}

Variant TLxXPathFnCeiling::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return Rounded(*this, ANodeList, AIndex,
                 u"The \"fn:ceiling(num)\" function must contain 1 parameter!", TRounding::Ceiling);
}

Variant TLxXPathFnFloor::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return Rounded(*this, ANodeList, AIndex,
                 u"The \"fn:floor(num)\" function must contain 1 parameter!", TRounding::Floor);
}

Variant TLxXPathFnRound::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return Rounded(*this, ANodeList, AIndex,
                 u"The \"fn:round(num)\" function must contain 1 parameter!", TRounding::HalfEven);
}

Variant TLxXPathFnRoundHalfToEven::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return Rounded(*this, ANodeList, AIndex,
                 u"The \"fn:half-to-even(num)\" function must contain 1 parameter!",
                 TRounding::HalfEven);
}

Variant TLxXPathFnNumber::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  static constexpr TXPathNodeArgument Words{
      u"fn:number(arg)", u"arg",
      u"The \"fn:number(arg)\" function may contain 0 or 1 parameter, but not more!", true};
  Variant Value;
  if (TLxDOMNode* Node = XPathNodeArgument(*this, ANodeList, AIndex, Words, &Value))
    Value = Variant(Node->GetNodeValue());
  if (LxVarIsEmpty(Value))
    return Value;
  return LxVarToExtended(Value, 0.0, true);
}

// --- texts --------------------------------------------------------------------------------------

Variant TLxXPathFnCodepointsToString::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() == 0)
    return Null();
  if (ParamCount() > 1)
    throw ELxDomSyntax(u"The \"fn:codepoints-to-string((int,int,...))\" function may contain 0 "
                       u"or 1 parameter, but not more!");
  auto* List = dynamic_cast<TLxXPathSequenceTerm*>(Param(0));
  if (!List)
    throw ELxDomSyntax(
        u"The \"fn:codepoints-to-string((int,int,...))\" requires a list of integers!");
  UnicodeString Result;
  Result.reserve(static_cast<size_t>(List->Count()));
  for (Integer I = 0; I < List->Count(); ++I) {
    const Variant Member = List->GetTerm(I)->Value(ANodeList, AIndex);
    if (VarMainTypeKind(Member) != lmkInteger)
      return Null();
    // One unit each: a code point beyond U+FFFF keeps its low 16 bits.
    Result += static_cast<WideChar>(static_cast<UInt64>(Member.AsInt64()) & 0xFFFF);
  }
  return Result;
}

Variant TLxXPathFnStringToCodepoints::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  ExpectCount(*this, 1,
              u"The \"fn:string-to-codepoints(string)\" function must contain 1 "
              u"parameter!");
  const Variant Value = Arg(*this, 0, ANodeList, AIndex);
  if (VarMainTypeKind(Value) != lmkString)
    return Null();
  const UnicodeString Text = TextOf(Value);
  UnicodeString Result(u"(");
  for (size_t I = 0; I < Text.size(); ++I) {
    if (I > 0)
      Result += u", ";
    Result += IntToStr(static_cast<Integer>(Text[I]));
  }
  return Result + u")";
}

Variant TLxXPathFnCompare::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() < 2)
    throw ELxDomSyntax(u"The \"fn:compare(comp1, comp2, collation*)\" function must contain at "
                       u"least parameters!");
  if (ParamCount() > 3)
    throw ELxDomSyntax(
        u"The \"fn:compare(comp1, comp2, collation*)\" function has a maximum of 3 paramaters!");
  const Variant Value1 = Arg(*this, 0, ANodeList, AIndex);
  const Variant Value2 = Arg(*this, 1, ANodeList, AIndex);
  TLxXPathCollationClass Collation = FEquation->Collation();
  if (ParamCount() == 3)
    Collation = FindXPathCollation(ArgText(*this, 2, ANodeList, AIndex));
  if (LxVarIsEmpty(Value1) || LxVarIsEmpty(Value2))
    return Null();
  return Collation->Compare(TextOf(Value1), TextOf(Value2));
}

Variant TLxXPathFnCodepointEqual::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  ExpectCount(*this, 2,
              u"The \"fn:codepoint-equal(comp1, comp2)\" function must contain 2 "
              u"parameters!");
  const Variant Value1 = Arg(*this, 0, ANodeList, AIndex);
  const Variant Value2 = Arg(*this, 1, ANodeList, AIndex);
  if (VarMainTypeKind(Value1) != lmkString || VarMainTypeKind(Value2) != lmkString)
    return Null();
  return Value1 == Value2;
}

Variant TLxXPathFnConcat::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  Variant Result(u"");
  for (Integer I = 0; I < ParamCount(); ++I)
    Result = Result + Arg(*this, I, ANodeList, AIndex);
  return Result;
}

Variant TLxXPathFnStringJoin::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() < 1)
    throw ELxDomSyntax(u"The \"fn:string-join((string,string,...),sep*)\" function must contain "
                       u"at least 1 parameter!");
  if (ParamCount() > 2)
    throw ELxDomSyntax(u"The \"fn:string-join((string,string,...),sep*)\" function may not "
                       u"contain more than 2 parameters!");
  if (auto* List = dynamic_cast<TLxXPathSequenceTerm*>(Param(0))) {
    std::vector<Variant> Members;
    Members.reserve(static_cast<size_t>(List->Count()));
    for (Integer I = 0; I < List->Count(); ++I)
      Members.push_back(List->GetTerm(I)->Value(ANodeList, AIndex));
    const UnicodeString Separator =
        ParamCount() == 2 ? ArgText(*this, 1, ANodeList, AIndex) : UnicodeString();
    // Separator and value for each member, through the Variant addition; the first separator
    // is dropped from the text afterwards.
    Variant Joined(u"");
    for (const Variant& Member : Members)
      Joined = Joined + (Variant(Separator) + Member);
    const UnicodeString Text = TextOf(Joined);
    return Text.size() >= Separator.size() ? Text.substr(Separator.size()) : UnicodeString();
  }
  const UnicodeString Text = ArgText(*this, 0, ANodeList, AIndex);
  const UnicodeString Separator =
      ParamCount() == 2 ? ArgText(*this, 1, ANodeList, AIndex) : UnicodeString();
  UnicodeString Result;
  Result.reserve(Text.size() * (Separator.size() + 1));
  for (size_t I = 0; I < Text.size(); ++I) {
    if (I > 0)
      Result += Separator;
    Result += Text[I];
  }
  return Result;
}

Variant TLxXPathFnSubstring::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() == 0)
    return UnicodeString();
  const Variant Value = Arg(*this, 0, ANodeList, AIndex);
  if (VarMainTypeKind(Value) != lmkString)
    return Null();
  if (ParamCount() == 1)
    return UnicodeString();
  const Variant Start = Arg(*this, 1, ANodeList, AIndex);
  if (VarMainTypeKind(Start) != lmkInteger)
    return Null();
  Variant Length;
  if (ParamCount() >= 3) {
    Length = Arg(*this, 2, ANodeList, AIndex);
    if (VarMainTypeKind(Length) != lmkInteger)
      return Null();
  }
  if (ParamCount() > 3)
    throw ELxDomSyntax(
        u"The \"fn:substring(string,start,len)\" function must contain 3 or less parameters!");
  const UnicodeString Text = TextOf(Value);
  const Int64 First = std::max<Int64>(Start.AsInt64(), 1);
  if (First > static_cast<Int64>(Text.size()))
    return UnicodeString();
  const size_t Offset = static_cast<size_t>(First - 1);
  if (ParamCount() == 2)
    return Text.substr(Offset);
  const Int64 Count = Length.AsInt64();
  if (Count <= 0)
    return UnicodeString();
  return Text.substr(Offset, static_cast<UInt64>(Count) > Text.size() ? Text.size()
                                                                      : static_cast<size_t>(Count));
}

Variant TLxXPathFnStringLength::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return static_cast<Integer>(
      TextOrCandidate(*this, ANodeList, AIndex,
                      u"Too many parameters specified for \"fn:string-length(string)\"!")
          .size());
}

Variant TLxXPathFnNormalizeSpace::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return NormalizeSpace(
      TextOrCandidate(*this, ANodeList, AIndex,
                      u"Too many parameters specified for \"fn:normalize-space(string)\"!"));
}

Variant TLxXPathFnNormalizeUnicode::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() > 2)
    throw ELxDomSyntax(u"Too many parameters specified for \"fn:normalize-unicode(string, "
                       u"normalizationForm)\"!");
  const UnicodeString Text =
      ParamCount() == 0 ? CandidateText(ANodeList, AIndex) : ArgText(*this, 0, ANodeList, AIndex);
  TNorm_Form Form = NormalizationC;
  if (ParamCount() == 2) {
    static constexpr struct {
      View Name;
      TNorm_Form Form;
    } Forms[] = {{u"NFC", NormalizationC},
                 {u"NFD", NormalizationD},
                 {u"NFKC", NormalizationKC},
                 {u"NFKD", NormalizationKD},
                 {u"", NormalizationOther}};
    const UnicodeString Name = ArgText(*this, 1, ANodeList, AIndex);
    const auto* Found = std::find_if(std::begin(Forms), std::end(Forms),
                                     [&](const auto& AEntry) { return AEntry.Name == Name; });
    if (Found == std::end(Forms))
      throw ELxDomSyntax(u"An unsupported normalizationForm was specified for "
                         u"\"fn:normalize-unicode(string, normalizationForm)\"!");
    Form = Found->Form;
  }
  return LxNormalizeString(Text, Form);
}

Variant TLxXPathFnSimplify::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  ExpectCount(*this, 1, u"The \"fn:simplify(string)\" function must have a single parameter!");
  const Variant Value = Arg(*this, 0, ANodeList, AIndex);
  if (VarMainTypeKind(Value) != lmkString)
    return Null();
  return LxSimplifyString(TextOf(Value));
}

Variant TLxXPathFnUpperCase::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  ExpectCount(*this, 1, u"The \"fn:upper-case(string)\" function must have a single parameter!");
  const Variant Value = Arg(*this, 0, ANodeList, AIndex);
  if (VarMainTypeKind(Value) != lmkString)
    return Null();
  return LxCharCase(TextOf(Value), /*AMode=*/2, u"");
}

Variant TLxXPathFnLowerCase::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  ExpectCount(*this, 1, u"The \"fn:lower-case(string)\" function must have a single parameter!");
  const Variant Value = Arg(*this, 0, ANodeList, AIndex);
  if (VarMainTypeKind(Value) != lmkString)
    return Null();
  return LxCharCase(TextOf(Value), /*AMode=*/1, u"");
}

Variant TLxXPathFnTranslate::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  ExpectCount(*this, 3,
              u"The \"fn:translate(string1,string2,string3)\" function must have 3 parameters!");
  const UnicodeString Text = ArgText(*this, 0, ANodeList, AIndex);
  const UnicodeString From = ArgText(*this, 1, ANodeList, AIndex);
  const UnicodeString To = ArgText(*this, 2, ANodeList, AIndex);
  if (From.empty())
    return Text;
  UnicodeString Result;
  size_t Copied = 0;
  for (size_t Found = Text.find(From); Found != UnicodeString::npos;
       Found = Text.find(From, Copied)) {
    Result.append(Text, Copied, Found - Copied).append(To);
    Copied = Found + From.size();
  }
  return Result.append(Text, Copied);
}

namespace {

/// The two texts of contains, starts-with and their kin, and the Pos of the second in the first
/// under the filter's collation.
struct TFound {
  UnicodeString Text;
  UnicodeString Part;
  Integer Pos;
};

TFound FindPart(TLxXPathFunction& AFunction, const TLxXPathNodes& ANodeList, Integer AIndex,
                View AMessage) {
  ExpectCount(AFunction, 2, AMessage);
  TFound Result;
  Result.Text = ArgText(AFunction, 0, ANodeList, AIndex);
  Result.Part = ArgText(AFunction, 1, ANodeList, AIndex);
  Result.Pos = AFunction.Equation()->Collation()->Pos(Result.Part, Result.Text);
  return Result;
}

} // namespace

Variant TLxXPathFnContains::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return FindPart(*this, ANodeList, AIndex,
                  u"The \"fn:contains(string1,string2)\" function must have 2 parameters!")
             .Pos > 0;
}

Variant TLxXPathFnStartsWith::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  return FindPart(*this, ANodeList, AIndex,
                  u"The \"fn:starts-with(string1,string2)\" function must have 2 parameters!")
             .Pos == 1;
}

Variant TLxXPathFnEndsWith::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  ExpectCount(*this, 2, u"The \"fn:ends-with(string1,string2)\" function must have 2 parameters!");
  const UnicodeString Text = ArgText(*this, 0, ANodeList, AIndex);
  const UnicodeString Part = ArgText(*this, 1, ANodeList, AIndex);
  return Part.size() <= Text.size() && View(Text).ends_with(Part);
}

Variant TLxXPathFnSubstringBefore::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  const TFound Found =
      FindPart(*this, ANodeList, AIndex,
               u"The \"fn:substring-before(string1,string2)\" function must have 2 parameters!");
  if (Found.Pos <= 0)
    return UnicodeString();
  return Found.Text.substr(0, static_cast<size_t>(Found.Pos - 1));
}

Variant TLxXPathFnSubstringAfter::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  const TFound Found =
      FindPart(*this, ANodeList, AIndex,
               u"The \"fn:substring-after(string1,string2)\" function must have 2 parameters!");
  if (Found.Pos <= 0)
    return UnicodeString();
  const size_t Behind = static_cast<size_t>(Found.Pos - 1) + Found.Part.size();
  return Behind >= Found.Text.size() ? UnicodeString() : Found.Text.substr(Behind);
}

// --- regular expressions ------------------------------------------------------------------------

Variant TLxXPathFnMatches::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() < 2 || ParamCount() > 3)
    throw ELxDomSyntax(u"Invalid parameter for \"fn:matches(string,pattern,flags*)\"!");
  const UnicodeString Text = ArgText(*this, 0, ANodeList, AIndex);
  const UnicodeString Pattern = ArgText(*this, 1, ANodeList, AIndex);
  const TRegExOptions Options =
      ParamCount() == 3 ? RegExOptions(FEquation->Collation(), ArgText(*this, 2, ANodeList, AIndex))
                        : TRegExOptions();
  return TRegEx::IsMatch(Text, Pattern, Options);
}

Variant TLxXPathFnReplace::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() < 3 || ParamCount() > 4)
    throw ELxDomSyntax(u"Invalid parameter for \"fn:replace(input,pattern,replacement,flags*)\"!");
  const UnicodeString Input = ArgText(*this, 0, ANodeList, AIndex);
  const UnicodeString Pattern = ArgText(*this, 1, ANodeList, AIndex);
  const UnicodeString Replacement = ArgText(*this, 2, ANodeList, AIndex);
  const TRegExOptions Options =
      ParamCount() == 4 ? RegExOptions(FEquation->Collation(), ArgText(*this, 3, ANodeList, AIndex))
                        : TRegExOptions();
  return TRegEx::Replace(Input, Pattern, Replacement, Options);
}

Variant TLxXPathFnTokenize::Value(const TLxXPathNodes& ANodeList, Integer AIndex) {
  if (ParamCount() > 3)
    throw ELxDomSyntax(u"Invalid parameter for \"fn:tokenize()\"!");
  TOwned<TStringList> Tokens(New<TStringList>());
  if (ParamCount() == 1)
    LxTokenize(NormalizeSpace(ArgText(*this, 0, ANodeList, AIndex)), Tokens.get(), u" ", nullptr);
  else if (ParamCount() >= 2) {
    const UnicodeString Input = ArgText(*this, 0, ANodeList, AIndex);
    const UnicodeString Pattern = ArgText(*this, 1, ANodeList, AIndex);
    const TRegExOptions Options =
        ParamCount() == 3
            ? RegExOptions(FEquation->Collation(), ArgText(*this, 2, ANodeList, AIndex))
            : TRegExOptions();
    LxTokenize(Tokens.get(), Input, Pattern, Options);
  }
  UnicodeString Result(u"(");
  for (Integer I = 0; I < Tokens->GetCount(); ++I) {
    if (I > 0)
      Result += u", ";
    Result.append(u"\"").append(Tokens->GetStrings(I)).append(u"\"");
  }
  return Result + u")";
}

// --- registration -------------------------------------------------------------------------------

void RegisterXPathNumberAndStringFunctions() {
  static constexpr struct {
    View Name;
    TLxXPathFunctionClass Class;
  } Functions[] = {
      {u"abs", &XPathFunctionClass<TLxXPathFnAbs>},
      {u"ceiling", &XPathFunctionClass<TLxXPathFnCeiling>},
      {u"floor", &XPathFunctionClass<TLxXPathFnFloor>},
      {u"round", &XPathFunctionClass<TLxXPathFnRound>},
      {u"half-to-even", &XPathFunctionClass<TLxXPathFnRoundHalfToEven>},
      {u"number", &XPathFunctionClass<TLxXPathFnNumber>},
      {u"codepoints-to-string", &XPathFunctionClass<TLxXPathFnCodepointsToString>},
      {u"string-to-codepoints", &XPathFunctionClass<TLxXPathFnStringToCodepoints>},
      {u"compare", &XPathFunctionClass<TLxXPathFnCompare>},
      {u"codepoint-equal", &XPathFunctionClass<TLxXPathFnCodepointEqual>},
      {u"concat", &XPathFunctionClass<TLxXPathFnConcat>},
      {u"string-join", &XPathFunctionClass<TLxXPathFnStringJoin>},
      {u"substring", &XPathFunctionClass<TLxXPathFnSubstring>},
      {u"string-length", &XPathFunctionClass<TLxXPathFnStringLength>},
      {u"normalize-space", &XPathFunctionClass<TLxXPathFnNormalizeSpace>},
      {u"normalize-unicode", &XPathFunctionClass<TLxXPathFnNormalizeUnicode>},
      {u"simplify", &XPathFunctionClass<TLxXPathFnSimplify>},
      {u"upper-case", &XPathFunctionClass<TLxXPathFnUpperCase>},
      {u"lower-case", &XPathFunctionClass<TLxXPathFnLowerCase>},
      {u"translate", &XPathFunctionClass<TLxXPathFnTranslate>},
      {u"contains", &XPathFunctionClass<TLxXPathFnContains>},
      {u"starts-with", &XPathFunctionClass<TLxXPathFnStartsWith>},
      {u"ends-with", &XPathFunctionClass<TLxXPathFnEndsWith>},
      {u"substring-before", &XPathFunctionClass<TLxXPathFnSubstringBefore>},
      {u"substring-after", &XPathFunctionClass<TLxXPathFnSubstringAfter>},
      {u"matches", &XPathFunctionClass<TLxXPathFnMatches>},
      {u"replace", &XPathFunctionClass<TLxXPathFnReplace>},
      {u"tokenize", &XPathFunctionClass<TLxXPathFnTokenize>},
  };
  for (const auto& Entry : Functions)
    RegisterXPathFunction(UnicodeString(Entry.Name), Entry.Class);
}

} // namespace lorvane
