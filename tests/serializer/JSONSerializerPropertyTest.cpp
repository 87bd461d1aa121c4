// Random object graphs of described types, serialized as JSON and read back with RapidJSON:
// every output is valid JSON, and its members, in order, with their "className" values and
// texts, are those that the walk promises, which the test predicts from the graph it built.
#include "serializer/SerializerGraphMaker.h"
#include "serializer/SerializerTestSupport.h"
#include "support/TestHelpers.h"

#include "lorvane/uLxJSONSerializer.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace lorvane;
using namespace lorvane::test;

namespace {

using TJson = rapidjson::Value;
using TAlloc = rapidjson::Document::AllocatorType;

/// A value in RapidJSON's own compact form: member order kept, strings escaped one way.
std::string Canonical(const TJson& AValue) {
  rapidjson::StringBuffer Buffer;
  rapidjson::Writer<rapidjson::StringBuffer> Writer(Buffer);
  AValue.Accept(Writer);
  return std::string(Buffer.GetString(), Buffer.GetSize());
}

/// Predicts the JSON value of each random graph.
class TJSONGraphMaker : public TGraphMaker {
public:
  TJSONGraphMaker(unsigned ASeed, TAlloc& AAlloc) : TGraphMaker(ASeed), FAlloc(AAlloc) {}

  TJson Object(const TGenNode* ANode, std::vector<const TGenNode*>& AInside) {
    static const char* const Tones[] = {"Soft", "Loud", "Sharp"};
    AInside.push_back(ANode);
    TJson Result = Head("TGenNode");
    Add(Result, "name", Text(ANode->Name));
    Add(Result, "count", TJson(ANode->Count));
    Add(Result, "ratio",
        ANode->Ratio == std::trunc(ANode->Ratio) ? TJson(static_cast<int>(ANode->Ratio))
                                                 : TJson(ANode->Ratio));
    Add(Result, "flag", TJson(ANode->Flag));
    // The enumeration's prefix hint cuts its name, and each name of a set of it.
    const int Tone = static_cast<int>(ANode->Tone);
    Add(Result, "tone", Ordinal("TGenTone", Tones[Tone], Tone));
    std::string ToneSet;
    int Mask = 0;
    for (int Bit = 0; Bit < 3; ++Bit)
      if (ANode->Tones.Contains(static_cast<TGenTone>(Bit))) {
        if (!ToneSet.empty())
          ToneSet += ',';
        ToneSet += Tones[Bit];
        Mask |= 1 << Bit;
      }
    Add(Result, "tones", Ordinal("TGenTones", "[" + ToneSet + "]", Mask));
    Word Year, Month, Day;
    DecodeDate(ANode->Day, Year, Month, Day);
    char DayText[32];
    std::snprintf(DayText, sizeof DayText, "%04u-%02u-%02u", unsigned(Year), unsigned(Month),
                  unsigned(Day));
    Add(Result, "day", TJson(DayText, FAlloc));
    if (!ANode->Child)
      Add(Result, "child", TJson(rapidjson::kObjectType));
    else if (std::find(AInside.begin(), AInside.end(), ANode->Child) == AInside.end())
      Add(Result, "child", Object(ANode->Child, AInside));
    Add(Result, "pt", Point(ANode->Pt));
    TJson Kids(rapidjson::kArrayType);
    for (const TGenNode* Kid : ANode->Kids)
      Kids.PushBack(Kid ? Object(Kid, AInside) : TJson(rapidjson::kObjectType), FAlloc);
    Add(Result, "kids", std::move(Kids));
    TJson Pts(rapidjson::kArrayType);
    for (const TGenPoint& Pt : ANode->Pts)
      Pts.PushBack(Point(Pt), FAlloc);
    Add(Result, "pts", std::move(Pts));
    TJson Nums(rapidjson::kArrayType);
    for (Integer Number : ANode->Nums)
      Nums.PushBack(TJson(Number), FAlloc);
    Add(Result, "nums", std::move(Nums));
    TJson Words(rapidjson::kArrayType);
    for (const UnicodeString& Word : ANode->Words)
      Words.PushBack(Text(Word), FAlloc);
    Add(Result, "words", std::move(Words));
    AInside.pop_back();
    return Result;
  }

private:
  TJson Text(const UnicodeString& AText) { return TJson(StringToUTF8(AText).c_str(), FAlloc); }
  void Add(TJson& AObject, const char* AName, TJson&& AValue) {
    AObject.AddMember(TJson(AName, FAlloc), AValue, FAlloc);
  }
  TJson Head(const char* AClassName) {
    TJson Result(rapidjson::kObjectType);
    Add(Result, "className", TJson(AClassName, FAlloc));
    return Result;
  }
  TJson Ordinal(const char* AClassName, const std::string& AText, int AValue) {
    TJson Result = Head(AClassName);
    Add(Result, "asString", TJson(AText.c_str(), FAlloc));
    Add(Result, "asInt", TJson(AValue));
    return Result;
  }
  TJson Point(const TGenPoint& APoint) {
    TJson Result = Head("TGenPoint");
    Add(Result, "x", TJson(APoint.X));
    Add(Result, "label", Text(APoint.Label));
    return Result;
  }

  TAlloc& FAlloc;
};

class JSONSerializerProperty : public LiveObjectsTest {
protected:
  // The descriptions (and their annotation objects) live for the process: made before counting.
  void SetUp() override {
    DescribeGenTypes();
    LiveObjectsTest::SetUp();
  }
};

TEST_F(JSONSerializerProperty, RandomGraphsGiveTheMembersTheWalkPromises) {
  constexpr unsigned cGraphs = LORVANE_PROPERTY_GRAPHS;
  for (unsigned Seed = 1; Seed <= cGraphs; ++Seed) {
    rapidjson::Document Expected;
    TJSONGraphMaker Maker(Seed, Expected.GetAllocator());
    std::vector<TGenNode*> Ancestors;
    TGenNode* Root = Maker.MakeNode(0, Ancestors);
    std::vector<const TGenNode*> Inside;
    const TJson Promised = Maker.Object(Root, Inside);
    const std::string Text = LxSerialize(ldsJSON, TValue::From(Root));
    rapidjson::Document Read;
    Read.Parse(Text.data(), Text.size());
    ASSERT_FALSE(Read.HasParseError())
        << "seed " << Seed << ": " << rapidjson::GetParseError_En(Read.GetParseError()) << " at "
        << Read.GetErrorOffset() << "\n"
        << Text;
    ASSERT_EQ(Canonical(Read), Canonical(Promised)) << "seed " << Seed << "\n" << Text;
  }
}

} // namespace
