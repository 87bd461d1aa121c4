// Round trips of random object graphs through XML and through JSON: a seeded generator builds
// graphs of described types, the serializer writes them, the deserializer reads them into new
// objects, and the new graph must write the same text and equal the old one member by member;
// the XML and the JSON of one graph read back into equal graphs.
#include "RoundTripGraphs.h"
#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxSerialization.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using namespace lorvane;
using namespace lorvane::test;

namespace {

class DeserializerRoundTrip : public test::LiveObjectsTest {
protected:
  // The descriptions' hints are objects that live as long as the registry.
  void SetUp() override {
    DescribeRoundTripTypes();
    test::LiveObjectsTest::SetUp();
  }
};

/// Graphs written in AFormat, read back, written again: the same text and an equal graph.
void RoundTrip(TLxSerializeFormat AFormat) {
  constexpr unsigned cGraphs = LORVANE_PROPERTY_GRAPHS;
  unsigned Failures = 0;
  const unsigned From = std::getenv("RT_SEED") ? unsigned(std::atoi(std::getenv("RT_SEED"))) : 1;
  for (unsigned Seed = From; Seed <= cGraphs && Failures < 5; ++Seed) {
    const Int64 Live = TObject::LiveInstances();
    TRtGraphMaker Maker(Seed);
    TOwned<TRtNode> Original(Maker.Node(0));
    const std::string First = LxSerialize(AFormat, TValue::From(Original.get()));
    TOwned<TRtNode> Copy;
    try {
      Copy.reset(ReadBack(AFormat, First, Seed % 2 == 0));
    } catch (const Exception& E) {
      ADD_FAILURE() << "seed " << Seed << ": " << typeid(E).name() << " "
                    << StringToUTF8(E.Message()) << "\n"
                    << First;
      return;
    }
    const std::string Second = LxSerialize(AFormat, TValue::From(Copy.get()));
    const std::vector<std::string> Differences =
        Compare(Original.get(), Copy.get(), AFormat == ldsJSON);
    if (Second != First || !Differences.empty()) {
      ++Failures;
      ADD_FAILURE() << "seed " << Seed << ": "
                    << (Differences.empty() ? std::string("texts differ") : Differences.front())
                    << "\nfirst:  " << First << "\nsecond: " << Second;
    }
    Original.reset();
    Copy.reset();
    if (TObject::LiveInstances() != Live) {
      ++Failures;
      ADD_FAILURE() << "seed " << Seed << " leaked " << First;
    }
  }
}

TEST_F(DeserializerRoundTrip, RandomGraphsReadBackEqualAndWriteTheSameText) { RoundTrip(ldsXML); }

TEST_F(DeserializerRoundTrip, RandomGraphsReadBackFromJSONEqualAndWriteTheSameText) {
  RoundTrip(ldsJSON);
}

// The same graph written as XML and as JSON reads back into equal graphs.
TEST_F(DeserializerRoundTrip, XMLAndJSONOfAGraphReadBackEqual) {
  for (unsigned Seed = 1; Seed <= LORVANE_PROPERTY_GRAPHS / 5; ++Seed) {
    TRtGraphMaker Maker(Seed);
    TOwned<TRtNode> Original(Maker.Node(0));
    TOwned<TRtNode> FromXML(
        ReadBack(ldsXML, LxSerialize(ldsXML, TValue::From(Original.get())), false));
    TOwned<TRtNode> FromJSON(
        ReadBack(ldsJSON, LxSerialize(ldsJSON, TValue::From(Original.get())), true));
    const std::vector<std::string> Differences = Compare(FromXML.get(), FromJSON.get(), true);
    ASSERT_TRUE(Differences.empty()) << "seed " << Seed << ": " << Differences.front();
  }
}

// The comparison walk must see a change in each kind of member, or the property test proves
// nothing.
TEST_F(DeserializerRoundTrip, TheComparisonWalkSeesEveryKindOfChange) {
  using TChange = void (*)(TRtNode&);
  const std::pair<const char*, TChange> Changes[] = {
      {"root.Id", [](TRtNode& N) { ++N.Id; }},
      {"root.Text", [](TRtNode& N) { N.Text += u"x"; }},
      {"root.Shapes", [](TRtNode& N) { N.Shapes.Include(TRtShape::Star); }},
      {"root.Any", [](TRtNode& N) { N.Any = Variant(UnicodeString(u"1")); }},
      {"root.Where.Label", [](TRtNode& N) { N.Where.Label = u"y"; }},
      {"root.Numbers.length", [](TRtNode& N) { N.Numbers.push_back(1); }},
      {"root.Children[0].Id", [](TRtNode& N) { ++N.Children[0]->Id; }},
      {"root.Left", [](TRtNode& N) { N.Left = New<TRtNode>(); }},
      {"root.Ratio", [](TRtNode& N) { N.Ratio += 0.5; }},
      {"root.Letter", [](TRtNode& N) { N.Letter = u'b'; }},
      {"root.Stamp", [](TRtNode& N) { N.Stamp = TDateTime(N.Stamp.Value + 0.002 / 86400); }},
      {"root.Segment.To.X", [](TRtNode& N) { ++N.Segment.To.X; }},
      {"root.Corners[1].Y", [](TRtNode& N) { N.Corners[1].Y = 3; }},
      {"root.Utf8", [](TRtNode& N) { N.Utf8 = "z"; }},
  };
  for (const auto& [Path, Change] : Changes) {
    TOwned<TRtNode> A(New<TRtNode>());
    TOwned<TRtNode> B(New<TRtNode>());
    A->Children.push_back(New<TRtNode>());
    B->Children.push_back(New<TRtNode>());
    EXPECT_TRUE(Compare(A.get(), B.get()).empty());
    Change(*B);
    const std::vector<std::string> Differences = Compare(A.get(), B.get());
    ASSERT_EQ(Differences.size(), 1u) << Path;
    EXPECT_EQ(Differences[0].substr(0, Differences[0].find(':')), Path);
  }
}

} // namespace

namespace lorvane {
namespace {

TEST_F(DeserializerRoundTrip, AFixedArrayTakesNoMoreElementsThanItHolds) {
  TOwned<TRtNode> Node(New<TRtNode>());
  try {
    LxDeserialize(ldsXML, TValue::From(Node.get()),
                  "<object><Triple><int>1</int><int>2</int><int>3</int><int>4</int></Triple>"
                  "</object>");
    ADD_FAILURE() << "no exception";
  } catch (const ELxSerializeException& E) {
    EXPECT_EQ(E.Message(), u"The array of type array[0..2] of System.Integer holds 3 elements, "
                           u"and the text has more!");
  }
  // An array is written back to its member when it ends, which a failed one never does.
  EXPECT_EQ(Node->Triple[2], 0);
}

} // namespace
} // namespace lorvane
