// Random object graphs of described types, serialized as XML and read back with expat: every
// output parses, and its elements, their xsi:type and xsi:nil attributes and their texts are
// those that the walk promises, which the generator predicts from the graph it built.
#include "serializer/SerializerGraphMaker.h"
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

/// The elements that each random graph must give.
class TXMLGraphMaker : public TGraphMaker {
public:
  using TGraphMaker::TGraphMaker;

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
  static TElement PointElement(std::string AName, const TGenPoint& APoint) {
    return TElement{std::move(AName),
                    "xsd:TGenPoint",
                    false,
                    "",
                    {Leaf("X", "int", std::to_string(APoint.X)),
                     Leaf("Label", "string", StringToUTF8(APoint.Label))}};
  }
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
  constexpr unsigned cGraphs = LORVANE_PROPERTY_GRAPHS;
  for (unsigned Seed = 1; Seed <= cGraphs; ++Seed) {
    TXMLGraphMaker Maker(Seed);
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
