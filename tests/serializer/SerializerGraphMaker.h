// Random object graphs of described types for the serializers' property tests: a seed gives
// the same graph every time. Each format's test predicts its text from the graph.
#pragma once

#include "lorvane/types/LxDescribe.h"
#include "lorvane/uLxSerializer.h"

#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace lorvane::test {

enum class TGenTone { gtSoft, gtLoud, gtSharp };
using TGenTones = TSet<TGenTone>;

struct TGenPoint {
  Integer X = 0;
  UnicodeString Label;
};

class TGenNode : public TPersistent {
  LX_CLASS(TGenNode, TPersistent)
  TGenNode() = default;
  UnicodeString Name;
  Integer Count = 0;
  Double Ratio = 0;
  bool Flag = false;
  TGenTone Tone = TGenTone::gtSoft;
  TGenTones Tones;
  TDate Day;
  TGenNode* Child = nullptr;
  TGenPoint Pt;
  std::vector<TGenNode*> Kids;
  std::vector<TGenPoint> Pts;
  std::vector<Integer> Nums;
  std::vector<UnicodeString> Words;

protected:
  ~TGenNode() override = default;
};

inline void DescribeGenTypes() {
  static const bool Described = [] {
    LxDescribeEnum<TGenTone>(u"Gen.TGenTone", {u"gtSoft", u"gtLoud", u"gtSharp"})
        .Hint(shoEnumPrefix, u"gt");
    LxDescribeSet<TGenTones>(u"Gen.TGenTones");
    LxDescribeRecord<TGenPoint>(u"Gen.TGenPoint")
        .Field(u"X", &TGenPoint::X)
        .Field(u"Label", &TGenPoint::Label);
    using N = TGenNode;
    LxDescribeClass<N>(u"Gen.TGenNode")
        .Property(u"Name", &N::Name)
        .Property(u"Count", &N::Count)
        .Property(u"Ratio", &N::Ratio)
        .Property(u"Flag", &N::Flag)
        .Property(u"Tone", &N::Tone)
        .Property(u"Tones", &N::Tones)
        .Property(u"Day", &N::Day)
        .Property(u"Child", &N::Child)
        .Property(u"Pt", &N::Pt)
        .Property(u"Kids", &N::Kids)
        .Property(u"Pts", &N::Pts)
        .Property(u"Nums", &N::Nums)
        .Property(u"Words", &N::Words);
    return true;
  }();
  (void)Described;
}

/// Builds random graphs and keeps them until it ends.
class TGraphMaker {
public:
  explicit TGraphMaker(unsigned ASeed) : FRandom(ASeed) {}

  TGenNode* MakeNode(int ADepth, std::vector<TGenNode*>& AAncestors) {
    TGenNode* Node = New<TGenNode>();
    FMade.emplace_back(Node);
    Node->Name = Text();
    Node->Count = std::uniform_int_distribution<Integer>(
        std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max())(FRandom);
    Node->Ratio = Pick(-16, 16) / 4.0;
    Node->Flag = Pick(0, 1) == 1;
    Node->Tone = static_cast<TGenTone>(Pick(0, 2));
    for (int Ordinal = 0; Ordinal < 3; ++Ordinal)
      if (Pick(0, 1))
        Node->Tones.Include(static_cast<TGenTone>(Ordinal));
    Node->Day = TDate(EncodeDate(Word(Pick(1990, 2030)), Word(Pick(1, 12)), Word(Pick(1, 28))));
    Node->Pt = Point();
    AAncestors.push_back(Node);
    const int Roll = Pick(0, 9);
    if (Roll < 3 && ADepth < 3)
      Node->Child = MakeNode(ADepth + 1, AAncestors);
    else if (Roll == 3)
      // A link back up the graph: a cycle that the walk must cut.
      Node->Child = AAncestors[Pick(0, static_cast<int>(AAncestors.size()) - 1)];
    if (ADepth < 2)
      for (int Kid = Pick(0, 2); Kid > 0; --Kid)
        Node->Kids.push_back(Pick(0, 3) == 0 ? nullptr : MakeNode(ADepth + 1, AAncestors));
    for (int I = Pick(0, 2); I > 0; --I)
      Node->Pts.push_back(Point());
    for (int I = Pick(0, 3); I > 0; --I)
      Node->Nums.push_back(Pick(-1000, 1000));
    for (int I = Pick(0, 2); I > 0; --I)
      Node->Words.push_back(Text());
    AAncestors.pop_back();
    return Node;
  }

protected:
  int Pick(int ALow, int AHigh) { return std::uniform_int_distribution<int>(ALow, AHigh)(FRandom); }

  /// Text with markup characters, quotes, blanks, line ends and characters beyond ASCII.
  UnicodeString Text() {
    static const std::u16string_view Pieces[] = {
        u"a",   u"Z",  u"0",  u" ",      u"<",      u">",          u"&",     u"\"", u"'",
        u"]]>", u"\t", u"\n", u"\u00e9", u"\u20ac", u"\U0001F600", u"&amp;", u"x y"};
    UnicodeString Result;
    for (int I = Pick(0, 6); I > 0; --I)
      Result += Pieces[Pick(0, static_cast<int>(std::size(Pieces)) - 1)];
    return Result;
  }

  TGenPoint Point() { return TGenPoint{Pick(-50, 50), Text()}; }

  /// A multiple of a quarter as the general format writes it: "-2", "0.25", "1.5".
  static std::string Quarters(Double AValue) {
    std::string Text = std::to_string(AValue);
    Text.erase(Text.find_last_not_of('0') + 1);
    if (Text.back() == '.')
      Text.pop_back();
    return Text == "-0" ? "0" : Text;
  }

  std::mt19937 FRandom;
  std::vector<TOwned<TGenNode>> FMade;
};

} // namespace lorvane::test
