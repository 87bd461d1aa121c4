// Random object graphs of described types, serialized as XML and read back with expat: every
// output parses, and its elements, their xsi:type and xsi:nil attributes and their texts are
// those that the walk promises, which the generator predicts from the graph it built.
#include "serializer/SerializerTestSupport.h"
#include "support/TestHelpers.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace lorvane;
using namespace lorvane::test;

namespace {

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

void DescribeGenTypes() {
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

/// An element as the walk promises it and as expat reads it.
struct TElement {
  std::string Name;
  std::string Type;
  bool Nil = false;
  std::string Text;
  std::vector<TElement> Children;

  bool operator==(const TElement&) const = default;
};

std::string Dump(const TElement& AElement) {
  std::string Result = AElement.Name + "[" + AElement.Type + (AElement.Nil ? ",nil" : "") + "]";
  if (!AElement.Text.empty())
    Result += "'" + AElement.Text + "'";
  if (!AElement.Children.empty()) {
    Result += "{";
    for (const TElement& Child : AElement.Children)
      Result += Dump(Child) + " ";
    Result += "}";
  }
  return Result;
}

TElement Leaf(std::string AName, std::string AType, std::string AText) {
  return TElement{std::move(AName), "xsd:" + std::move(AType), false, std::move(AText), {}};
}

/// Builds random graphs and the elements that each must give.
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

  /// The members of ANode as elements, inside the objects in AInside (the cycle test).
  std::vector<TElement> Members(const TGenNode* ANode, std::vector<const TGenNode*>& AInside) {
    static const char* const Tones[] = {"Soft", "Loud", "Sharp"};
    std::vector<TElement> Result;
    Result.push_back(Leaf("Name", "string", StringToUTF8(ANode->Name)));
    Result.push_back(Leaf("Count", "int", std::to_string(ANode->Count)));
    Result.push_back(Leaf("Ratio", "double", Quarters(ANode->Ratio)));
    Result.push_back(Leaf("Flag", "boolean", ANode->Flag ? "true" : "false"));
    Result.push_back(Leaf("Tone", "TGenTone", Tones[static_cast<int>(ANode->Tone)]));
    std::string ToneSet;
    for (int Ordinal = 0; Ordinal < 3; ++Ordinal)
      if (ANode->Tones.Contains(static_cast<TGenTone>(Ordinal)))
        ToneSet += (ToneSet.empty() ? "" : ",") + std::string(Tones[Ordinal]);
    Result.push_back(Leaf("Tones", "TGenTones", "[" + ToneSet + "]"));
    Word Year, Month, Day;
    DecodeDate(ANode->Day, Year, Month, Day);
    char DayText[32];
    std::snprintf(DayText, sizeof DayText, "%04u-%02u-%02u", unsigned(Year), unsigned(Month),
                  unsigned(Day));
    Result.push_back(Leaf("Day", "date", DayText));
    if (!ANode->Child)
      Result.push_back(TElement{"Child", "xsd:TGenNode", true, "", {}});
    else if (std::find(AInside.begin(), AInside.end(), ANode->Child) == AInside.end())
      Result.push_back(Object("Child", ANode->Child, AInside));
    Result.push_back(PointElement("Pt", ANode->Pt));
    TElement Kids{"Kids", "xsd:ArrayOfTGenNode", false, "", {}};
    for (const TGenNode* Kid : ANode->Kids)
      Kids.Children.push_back(Kid ? Object("TGenNode", Kid, AInside)
                                  : TElement{"TGenNode", "xsd:TGenNode", true, "", {}});
    Result.push_back(std::move(Kids));
    TElement Pts{"Pts", "xsd:ArrayOfTGenPoint", false, "", {}};
    for (const TGenPoint& Point : ANode->Pts)
      Pts.Children.push_back(PointElement("TGenPoint", Point));
    Result.push_back(std::move(Pts));
    TElement Nums{"Nums", "xsd:ArrayOfInt", false, "", {}};
    for (Integer Number : ANode->Nums)
      Nums.Children.push_back(Leaf("int", "int", std::to_string(Number)));
    Result.push_back(std::move(Nums));
    TElement Words{"Words", "xsd:ArrayOfString", false, "", {}};
    for (const UnicodeString& Word : ANode->Words)
      Words.Children.push_back(Leaf("string", "string", StringToUTF8(Word)));
    Result.push_back(std::move(Words));
    return Result;
  }

  TElement Object(std::string AName, const TGenNode* ANode, std::vector<const TGenNode*>& AInside) {
    AInside.push_back(ANode);
    TElement Result{std::move(AName), "xsd:TGenNode", false, "", Members(ANode, AInside)};
    AInside.pop_back();
    return Result;
  }

private:
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

  static TElement PointElement(std::string AName, const TGenPoint& APoint) {
    return TElement{std::move(AName),
                    "xsd:TGenPoint",
                    false,
                    "",
                    {Leaf("X", "int", std::to_string(APoint.X)),
                     Leaf("Label", "string", StringToUTF8(APoint.Label))}};
  }

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

/// The element tree of a document as expat reads it; false when it isn't well-formed.
class TExpatTree {
public:
  bool Parse(const std::string& AText) {
    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> Parser(XML_ParserCreate("UTF-8"),
                                                                        &XML_ParserFree);
    XML_SetUserData(Parser.get(), this);
    XML_SetElementHandler(Parser.get(), &Start, &End);
    XML_SetCharacterDataHandler(Parser.get(), &Characters);
    if (XML_Parse(Parser.get(), AText.data(), static_cast<int>(AText.size()), 1) ==
        XML_STATUS_ERROR) {
      FError = XML_ErrorString(XML_GetErrorCode(Parser.get()));
      return false;
    }
    return true;
  }
  TElement Root;
  std::string FError;

private:
  static void Start(void* AData, const XML_Char* AName, const XML_Char** AAttributes) {
    auto& Self = *static_cast<TExpatTree*>(AData);
    TElement Element{AName, "", false, "", {}};
    for (const XML_Char** Attribute = AAttributes; *Attribute; Attribute += 2) {
      const std::string Name = Attribute[0];
      if (Name == "xsi:type")
        Element.Type = Attribute[1];
      else if (Name == "xsi:nil")
        Element.Nil = std::string(Attribute[1]) == "true";
    }
    Self.FOpen.push_back(std::move(Element));
  }
  static void End(void* AData, const XML_Char*) {
    auto& Self = *static_cast<TExpatTree*>(AData);
    TElement Element = std::move(Self.FOpen.back());
    Self.FOpen.pop_back();
    if (Self.FOpen.empty())
      Self.Root = std::move(Element);
    else
      Self.FOpen.back().Children.push_back(std::move(Element));
  }
  static void Characters(void* AData, const XML_Char* AText, int ALength) {
    static_cast<TExpatTree*>(AData)->FOpen.back().Text.append(AText, ALength);
  }
  std::vector<TElement> FOpen;
};

class XMLSerializerProperty : public LiveObjectsTest {
protected:
  // The descriptions (and their annotation objects) live for the process: made before counting.
  void SetUp() override {
    DescribeGenTypes();
    LiveObjectsTest::SetUp();
  }
};

TEST_F(XMLSerializerProperty, RandomGraphsGiveTheElementsTheWalkPromises) {
  DescribeGenTypes();
  constexpr unsigned cGraphs = 10000;
  for (unsigned Seed = 1; Seed <= cGraphs; ++Seed) {
    TGraphMaker Maker(Seed);
    std::vector<TGenNode*> Ancestors;
    TGenNode* Root = Maker.MakeNode(0, Ancestors);
    std::vector<const TGenNode*> Inside{Root};
    const TElement Expected{"object", "xsd:TGenNode", false, "", Maker.Members(Root, Inside)};
    const std::string Text = XmlOf(TValue::From(Root));
    TExpatTree Read;
    ASSERT_TRUE(Read.Parse(Text)) << "seed " << Seed << ": " << Read.FError << "\n" << Text;
    ASSERT_EQ(Dump(Read.Root), Dump(Expected)) << "seed " << Seed << "\n" << Text;
  }
}

} // namespace
