// Random object graphs of described types for the round trips through the deserializers: the
// types, a seeded generator, a walk that compares two graphs member by member, and the reading of
// a text back into a node.
#pragma once

#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/types/LxDescribe.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lorvane::test {
enum class TRtColor { rcRed, rcGreen, rcBlue };
enum class TRtShape { Circle, Square, Triangle, Star, Hexagon };
using TRtShapes = TSet<TRtShape>;
enum class TRtTone { ttLow, ttMid, ttHigh };
using TRtTones = TSet<TRtTone, 8>;

struct TRtPoint {
  Integer X = 0;
  Double Y = 0;
  UnicodeString Label;
};

struct TRtSegment {
  TRtPoint From;
  TRtPoint To;
  std::vector<Integer> Weights;
  TRtColor Color = TRtColor::rcRed;
};

/// Owns the nodes it points at: a graph read with a non-owning list keeps what was made for it.
class TRtNode : public TPersistent {
  LX_CLASS(TRtNode, TPersistent)
  TRtNode() = default;

  // Properties.
  Integer Id = 0;
  UnicodeString Text;
  TRtColor Color = TRtColor::rcRed;
  TRtShapes Shapes;
  TDate Day;
  Variant Any;
  TRtPoint Where;
  std::vector<Integer> Numbers;
  std::vector<TRtNode*> Children;
  TRtNode* Left = nullptr;
  // Fields.
  Int64 Big = 0;
  UInt64 Huge = 0;
  Byte Small = 0;
  ShortInt Tiny = 0;
  Double Ratio = 0;
  Single Half = 0;
  std::string Utf8;
  bool Flag = false;
  WideChar Letter = u'a';
  TRtTones Tones;
  TTime Clock;
  TDateTime Stamp;
  TRtSegment Segment;
  std::array<Integer, 3> Triple{};
  std::vector<TRtPoint> Points;
  std::array<TRtPoint, 2> Corners{};
  std::vector<UnicodeString> Words;
  std::vector<TRtColor> Colors;
  std::vector<Double> Reals;
  TRtNode* Right = nullptr;

protected:
  ~TRtNode() override {
    lorvane::Free(Left);
    lorvane::Free(Right);
    for (TRtNode* Child : Children)
      lorvane::Free(Child);
  }
};

inline void DescribeRoundTripTypes() {
  static const bool Described = [] {
    LxDescribeEnum<TRtColor>(u"Rt.TRtColor", {u"rcRed", u"rcGreen", u"rcBlue"})
        .Hint(shoEnumPrefix, u"rc");
    LxDescribeEnum<TRtShape>(u"Rt.TRtShape",
                             {u"Circle", u"Square", u"Triangle", u"Star", u"Hexagon"});
    LxDescribeSet<TRtShapes>(u"Rt.TRtShapes");
    LxDescribeEnum<TRtTone>(u"Rt.TRtTone", {u"ttLow", u"ttMid", u"ttHigh"})
        .Hint(shoEnumPrefix, u"tt");
    LxDescribeSet<TRtTones>(u"Rt.TRtTones");
    LxDescribeRecord<TRtPoint>(u"Rt.TRtPoint")
        .Field(u"X", &TRtPoint::X)
        .Field(u"Y", &TRtPoint::Y)
        .Field(u"Label", &TRtPoint::Label);
    LxDescribeRecord<TRtSegment>(u"Rt.TRtSegment")
        .Field(u"From", &TRtSegment::From)
        .Field(u"To", &TRtSegment::To)
        .Field(u"Weights", &TRtSegment::Weights)
        .Field(u"Color", &TRtSegment::Color);
    LxDescribeClass<TRtNode>(u"Rt.TRtNode")
        .Property(u"Id", &TRtNode::Id)
        .Property(u"Text", &TRtNode::Text)
        .Property(u"Color", &TRtNode::Color)
        .Property(u"Shapes", &TRtNode::Shapes)
        .Property(u"Day", &TRtNode::Day)
        .Property(u"Any", &TRtNode::Any)
        .Property(u"Where", &TRtNode::Where)
        .Property(u"Numbers", &TRtNode::Numbers)
        .Property(u"Children", &TRtNode::Children)
        .Property(u"Left", &TRtNode::Left)
        .Field(u"Big", &TRtNode::Big)
        .Field(u"Huge", &TRtNode::Huge)
        .Field(u"Small", &TRtNode::Small)
        .Field(u"Tiny", &TRtNode::Tiny)
        .Field(u"Ratio", &TRtNode::Ratio)
        .Field(u"Half", &TRtNode::Half)
        .Field(u"Utf8", &TRtNode::Utf8)
        .Field(u"Flag", &TRtNode::Flag)
        .Field(u"Letter", &TRtNode::Letter)
        .Field(u"Tones", &TRtNode::Tones)
        .Field(u"Clock", &TRtNode::Clock)
        .Field(u"Stamp", &TRtNode::Stamp)
        .Field(u"Segment", &TRtNode::Segment)
        .Field(u"Triple", &TRtNode::Triple)
        .Field(u"Points", &TRtNode::Points)
        .Field(u"Corners", &TRtNode::Corners)
        .Field(u"Words", &TRtNode::Words)
        .Field(u"Colors", &TRtNode::Colors)
        .Field(u"Reals", &TRtNode::Reals)
        .Field(u"Right", &TRtNode::Right);
    return true;
  }();
  (void)Described;
}

// --- the generator -------------------------------------------------------------------------------
/// The shapes a generator makes; a format that can't spell one of them turns it off.
struct TRtShapeLimits {
  /// Children, a list of objects of a class.
  bool ChildLists = true;
  /// Lists of records and of enumerations in nodes below the root.
  bool NestedObjectLists = true;
  /// Characters below U+0020 in texts.
  bool ControlCharacters = true;
  /// Numbers and truths in Variants, beside texts.
  bool TypedVariants = true;
  /// Texts whose first character is "[" or "{" and that hold a backslash.
  bool BracketedBackslashes = true;
  /// Items of a list of texts that start with "[" or are nothing but blanks and brackets: the
  /// JSON reader takes the first for the whole list written as a string and starts no item for
  /// the second.
  bool BracketedWords = true;
  /// Further pieces that texts are made of.
  std::vector<std::u16string_view> MorePieces;
};

class TRtGraphMaker {
public:
  explicit TRtGraphMaker(unsigned ASeed, TRtShapeLimits ALimits = {})
      : FRandom(ASeed), FLimits(std::move(ALimits)) {}

  TRtNode* Node(int ADepth) {
    TOwned<TRtNode> Made(New<TRtNode>());
    TRtNode& N = *Made;
    N.Id = static_cast<Integer>(Bits());
    N.Text = Text();
    N.Color = static_cast<TRtColor>(Below(3));
    N.Shapes = Shapes();
    N.Day = TDate(double(Whole(-693593, 2958465)));
    N.Any = AnyValue();
    N.Where = Point();
    N.Numbers = Numbers();
    N.Big = static_cast<Int64>(Bits64());
    N.Huge = Bits64();
    N.Small = static_cast<Byte>(Bits());
    N.Tiny = static_cast<ShortInt>(Bits());
    N.Ratio = Real();
    N.Half = static_cast<Single>(Real() / 1e280);
    N.Utf8 = StringToUTF8(Text());
    N.Flag = Below(2) == 1;
    N.Letter = Letter();
    for (unsigned I = 0; I < 3; ++I)
      if (Below(2))
        N.Tones.Include(static_cast<TRtTone>(I));
    N.Clock = TTime(double(Whole(0, 86399999)) / 86400000.0);
    N.Stamp = TDateTime(double(Whole(2, 80000)) + double(Whole(0, 86399999)) / 86400000.0);
    N.Segment = {Point(), Point(), Numbers(), static_cast<TRtColor>(Below(3))};
    for (Integer& Value : N.Triple)
      Value = static_cast<Integer>(Bits());
    for (unsigned I = Below(4); I > 0; --I)
      N.Points.push_back(Point());
    for (TRtPoint& Corner : N.Corners)
      Corner = Point();
    for (unsigned I = Below(4); I > 0; --I)
      N.Words.push_back(Word());
    for (unsigned I = Below(4); I > 0; --I)
      N.Colors.push_back(static_cast<TRtColor>(Below(3)));
    for (unsigned I = Below(3); I > 0; --I)
      N.Reals.push_back(Real());
    if (ADepth > 0 && !FLimits.NestedObjectLists) {
      N.Points.clear();
      N.Colors.clear();
    }
    if (ADepth < 1) {
      // Nil elements among the children, and nil members, are part of the shape.
      for (unsigned I = Below(3); I > 0; --I) {
        const bool Nil = Below(4) == 0;
        if (FLimits.ChildLists)
          N.Children.push_back(Nil ? nullptr : Node(ADepth + 1));
      }
      if (Below(3) == 0)
        N.Left = Node(ADepth + 1);
      if (Below(3) == 0)
        N.Right = Node(ADepth + 1);
    }
    return Made.release();
  }

private:
  unsigned Below(unsigned ALimit) { return static_cast<unsigned>(FRandom() % ALimit); }
  UInt64 Bits64() { return (UInt64(FRandom()) << 32) ^ FRandom(); }
  Cardinal Bits() {
    // Small numbers and the ends of the range turn up more often than uniform bits give them.
    switch (Below(4)) {
    case 0:
      return Below(10);
    case 1:
      return Below(2) ? 0x7FFFFFFFu : 0x80000000u;
    default:
      return static_cast<Cardinal>(FRandom());
    }
  }
  Int64 Whole(Int64 AFrom, Int64 ATo) {
    return AFrom + static_cast<Int64>(Bits64() % static_cast<UInt64>(ATo - AFrom + 1));
  }
  Double Real() {
    switch (Below(4)) {
    case 0:
      return double(Whole(-1000, 1000)) / 8;
    case 1: {
      // Any finite double, from its bits.
      Double Value;
      do {
        const UInt64 Raw = Bits64();
        std::memcpy(&Value, &Raw, sizeof Value);
      } while (!std::isfinite(Value));
      return Value;
    }
    default:
      return std::ldexp(double(Whole(-(Int64(1) << 52), Int64(1) << 52)),
                        static_cast<int>(Whole(-60, 60)));
    }
  }
  UnicodeString Text() {
    // Markup characters, entity look-alikes, line ends, non-ASCII and a pair of surrogates.
    static const std::u16string_view Pieces[] = {
        u"a",  u"Zq", u"7",      u" ",        u"<",        u">",  u"&",
        u"\"", u"'",  u"]]>",    u"é",        u"\u00df",   u"中", u"\U0001F600",
        u"\t", u"\n", u"&amp;",  u"<b>x</b>", u"\r",       u"%",  u"\u2028",
        u"ø",  u"=",  u"&#x41;", u"\u00a0",   u"<!--c-->", u"?>"};
    const std::size_t Count = std::size(Pieces) + FLimits.MorePieces.size();
    UnicodeString Result;
    // Now and then a long one, whose pairs fall across the writers' buffer boundaries.
    for (unsigned I = Below(16) == 0 ? 60 + Below(160) : Below(7); I > 0; --I) {
      const std::size_t Pick = Below(static_cast<unsigned>(Count));
      const std::u16string_view Piece =
          Pick < std::size(Pieces) ? Pieces[Pick] : FLimits.MorePieces[Pick - std::size(Pieces)];
      if (FLimits.ControlCharacters || Piece.front() >= u' ')
        Result += Piece;
    }
    if (!FLimits.BracketedBackslashes && !Result.empty() &&
        (Result.front() == u'[' || Result.front() == u'{') &&
        Result.find(u'\\') != UnicodeString::npos)
      Result.insert(Result.begin(), u'a');
    // Blanks alone are white space between tags, which no reader delivers as text.
    if (!Result.empty() && Result.find_first_not_of(u' ') == UnicodeString::npos)
      Result += u'a';
    return Result;
  }
  UnicodeString Word() {
    UnicodeString Result = Text();
    if (!FLimits.BracketedWords && (Result.empty() || Result.front() == u'[' ||
                                    Result.find_first_not_of(u" []\t\r\n") == UnicodeString::npos))
      Result.insert(Result.begin(), u'w');
    return Result;
  }
  WideChar Letter() {
    static const char16_t Letters[] = u"aZ0<>&\"'\u00e9\u4e2d%=";
    return Letters[Below(std::size(Letters) - 1)];
  }
  Variant AnyValue() {
    if (!FLimits.TypedVariants)
      return Variant(Text() + u"v");
    switch (Below(6)) {
    case 0:
      return Variant(static_cast<Integer>(Bits()));
    case 1:
      return Variant(static_cast<Int64>(Bits64()));
    case 2:
      return Variant(Real());
    case 3:
      return Variant(Below(2) == 1);
    default:
      return Variant(Text() + u"v");
    }
  }
  TRtShapes Shapes() {
    TRtShapes Result;
    for (unsigned I = 0; I < 5; ++I)
      if (Below(2))
        Result.Include(static_cast<TRtShape>(I));
    return Result;
  }
  TRtPoint Point() { return {static_cast<Integer>(Bits()), Real(), Text()}; }
  std::vector<Integer> Numbers() {
    std::vector<Integer> Result;
    for (unsigned I = Below(5); I > 0; --I)
      Result.push_back(static_cast<Integer>(Bits()));
    return Result;
  }

  std::mt19937 FRandom;
  TRtShapeLimits FLimits;
};

// --- the comparison walk -------------------------------------------------------------------------
/// Compares two values of one described type through the registry: objects by class and members,
/// records by members, arrays by length and elements, simple values by their accessors. Dates
/// compare to the millisecond, which is what their text keeps.
class TRtGraphCompare {
public:
  bool FVariantFamilies = false;

  void Values(const void* A, const void* B, const TLxTypeInfo* AType, const std::string& APath) {
    const TLxTypeDescription& D = *AType->GetDescription();
    const TLxValueAccess& Access = D.Access();
    const TLxTypeKind Kind = AType->GetTypeKind();
    switch (Kind) {
    case ltkClass: {
      const TObject* OA = *static_cast<TObject* const*>(A);
      const TObject* OB = *static_cast<TObject* const*>(B);
      if (!OA || !OB) {
        if (OA != OB)
          Differ(APath, OA ? "object" : "nil", OB ? "object" : "nil");
      } else if (OA->ClassType() != OB->ClassType()) {
        Differ(APath, StringToUTF8(OA->ClassName()), StringToUTF8(OB->ClassName()));
      } else {
        Members(OA, OB, TLxTypes::GetTypeInfo(OA->ClassType()), APath);
      }
      return;
    }
    case ltkRecord:
      Members(A, B, AType, APath);
      return;
    case ltkArray:
    case ltkDynArray: {
      const Integer LA = Access.GetLength(A);
      const Integer LB = Access.GetLength(B);
      if (LA != LB) {
        Differ(APath + ".length", std::to_string(LA), std::to_string(LB));
        return;
      }
      for (Integer I = 0; I < LA; ++I)
        Values(Access.ElementAddress(const_cast<void*>(A), I),
               Access.ElementAddress(const_cast<void*>(B), I), D.ElementType(),
               APath + "[" + std::to_string(I) + "]");
      return;
    }
    case ltkVariant: {
      const Variant& VA = *static_cast<const Variant*>(A);
      const Variant& VB = *static_cast<const Variant*>(B);
      // JSON keeps whether a Variant holds a number, a text or a truth, not which kind of number:
      // a whole-valued float reads back as an integer.
      const bool SameType =
          FVariantFamilies ? VarKind(VA) == VarKind(VB) || (VarIsNumeric(VA) && VarIsNumeric(VB))
                           : VarType(VA) == VarType(VB);
      if (!SameType || VarToStr(VA) != VarToStr(VB) ||
          (VarIsFloat(VA) && AsWritten(VA.AsDouble()) != VB.AsDouble()))
        Differ(APath, StringToUTF8(VarTypeAsText(VarType(VA)) + u" " + VarToStr(VA)),
               StringToUTF8(VarTypeAsText(VarType(VB)) + u" " + VarToStr(VB)));
      return;
    }
    case ltkDate:
    case ltkTime:
    case ltkDateTime: {
      const auto Millis = [&](const void* V) { return std::llround(Access.GetFloat(V) * 864e5); };
      if (Millis(A) != Millis(B))
        Differ(APath, std::to_string(Access.GetFloat(A)), std::to_string(Access.GetFloat(B)));
      return;
    }
    case ltkSingle:
      if (float(AsWritten(Access.GetFloat(A))) != float(Access.GetFloat(B)))
        Differ(APath, Number(Access.GetFloat(A)), Number(Access.GetFloat(B)));
      return;
    case ltkDouble:
    case ltkExtended:
      if (AsWritten(Access.GetFloat(A)) != Access.GetFloat(B))
        Differ(APath, Number(Access.GetFloat(A)), Number(Access.GetFloat(B)));
      return;
    default:
      break;
    }
    if (LxIsTextKind(Kind) && Access.GetText) {
      if (Access.GetText(A) != Access.GetText(B))
        Differ(APath, StringToUTF8(Access.GetText(A)), StringToUTF8(Access.GetText(B)));
    } else if (Access.GetOrdinal) {
      if (Access.GetOrdinal(A) != Access.GetOrdinal(B))
        Differ(APath, std::to_string(Access.GetOrdinal(A)), std::to_string(Access.GetOrdinal(B)));
    } else {
      Differ(APath, "a kind the walk doesn't know", StringToUTF8(AType->GetQualifiedName()));
    }
  }

  const std::vector<std::string>& Differences() const noexcept { return FDifferences; }

  /// A float as its text keeps it: 15 significant digits.
  static double AsWritten(double AValue) {
    char Text[40];
    std::snprintf(Text, sizeof Text, "%.15g", AValue);
    return std::strtod(Text, nullptr);
  }

private:
  void Members(const void* A, const void* B, const TLxTypeInfo* AType, const std::string& APath) {
    const TLxTypeDescription& D = *AType->GetDescription();
    for (const TLxPropertyDescription* Property : D.GetProperties()) {
      TValue VA = Property->GetValue(A);
      TValue VB = Property->GetValue(B);
      Values(VA.GetReferenceToRawData(), VB.GetReferenceToRawData(), Property->GetPropertyType(),
             APath + "." + StringToUTF8(Property->GetName()));
    }
    for (const TLxFieldDescription* Field : D.GetFields())
      Values(Field->GetAddress(A), Field->GetAddress(B), Field->GetFieldType(),
             APath + "." + StringToUTF8(Field->GetName()));
  }
  static std::string Number(double AValue) {
    char Text[40];
    std::snprintf(Text, sizeof Text, "%.17g", AValue);
    return Text;
  }
  void Differ(const std::string& APath, const std::string& AOld, const std::string& ANew) {
    FDifferences.push_back(APath + ": " + AOld + " / " + ANew);
  }

  std::vector<std::string> FDifferences;
};

inline std::vector<std::string> Compare(TRtNode* AOld, TRtNode* ANew,
                                        bool AVariantFamilies = false) {
  TRtGraphCompare Walk;
  Walk.FVariantFamilies = AVariantFamilies;
  Walk.Values(&AOld, &ANew, TLxTypes::GetTypeInfo<TRtNode*>(), "root");
  return Walk.Differences();
}

/// Reads AText into a new node, by the class the text names or into a node given as a value,
/// with a nil list, so that the new graph keeps the objects made for it.
inline TRtNode* ReadBack(TLxSerializeFormat AFormat, const std::string& AText, bool AByClassName) {
  TObjectList* GraphKeeps = nullptr;
  if (AByClassName) {
    TObject* Made = LxCreateFrom(AFormat, AText, &GraphKeeps);
    EXPECT_TRUE(Made && Made->ClassType() == TRtNode::StaticClass());
    return static_cast<TRtNode*>(Made);
  }
  TOwned<TRtNode> Target(New<TRtNode>());
  TRtNode* Raw = Target.get();
  const TValue Result = LxDeserialize(AFormat, TValue::From(Raw), AText, &GraphKeeps);
  EXPECT_EQ(Result.AsObject(), Raw) << "an object is filled in place";
  return Target.release();
}

} // namespace lorvane::test
