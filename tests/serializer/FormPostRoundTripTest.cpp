// Random object graphs written as JSON and as a form post (name=value pairs with bracket names)
// read into equal objects: the JSON deserializer takes a form through its "UrlEncoded" option.
#include "RoundTripGraphs.h"
#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxDeserializer.h"
#include "lorvane/serializer/LxSerialization.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

using namespace lorvane;
using namespace lorvane::test;

namespace {

using TJson = rapidjson::Value;

/// Thrown for a JSON shape that no form post spells.
struct ENoFormSpelling : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Writes a JSON value as the pairs of a form post, the way a browser encodes a form: bytes
/// outside the unreserved set as %XX of their UTF-8, blanks in values as "+".
class TFormWriter {
public:
  static std::string Form(const std::string& AJSON) {
    rapidjson::Document Doc;
    // Numbers keep their text: the form hands the deserializer the digits JSON had.
    Doc.Parse<rapidjson::kParseNumbersAsStringsFlag>(AJSON.data(), AJSON.size());
    if (Doc.HasParseError() || !Doc.IsObject())
      throw ENoFormSpelling("not a JSON object");
    TFormWriter Writer;
    Writer.Members(Doc, "");
    return Writer.FText;
  }

private:
  /// Whether AValue is, or holds, a list of objects.
  static bool HoldsObjectList(const TJson& AValue) {
    if (AValue.IsArray())
      return !AValue.Empty() && AValue[0].IsObject();
    if (AValue.IsObject())
      for (const auto& Member : AValue.GetObject())
        if (HoldsObjectList(Member.value))
          return true;
    return false;
  }

  /// The reader closes a list of objects with one call fewer than it opened when the pair behind
  /// it stays inside the same member of the root, so below the root such a list, and each object
  /// around it, goes last; one of them per object at most.
  void Members(const TJson& AObject, const std::string& APath) {
    const TJson* Last = nullptr;
    std::string LastKey;
    for (const auto& Member : AObject.GetObject()) {
      const std::string Key = Encode(Member.name.GetString(), Member.name.GetStringLength(), true);
      if (!APath.empty() && HoldsObjectList(Member.value)) {
        if (Last)
          throw ENoFormSpelling(APath + ": two lists of objects");
        Last = &Member.value;
        LastKey = Key;
        continue;
      }
      Pairs(Member.value, APath.empty() ? Key : APath + "[" + Key + "]");
    }
    if (Last)
      Pairs(*Last, APath + "[" + LastKey + "]");
  }

  void Pairs(const TJson& AValue, const std::string& APath) {
    switch (AValue.GetType()) {
    case rapidjson::kObjectType:
      // An empty object (a nil member) has no pair; leaving it out leaves the member nil.
      Members(AValue, APath);
      return;
    case rapidjson::kArrayType:
      // An empty array has no pair either; leaving it out leaves the member empty.
      for (rapidjson::SizeType I = 0; I < AValue.Size(); ++I) {
        const TJson& Item = AValue[I];
        if (Item.IsObject()) {
          // An item without members would leave a gap in the indexes, and the reader takes an
          // index that doesn't follow the one before as the end of the array.
          if (Item.MemberCount() == 0)
            throw ENoFormSpelling(APath + ": an empty object in an array");
          if (HoldsObjectList(Item))
            throw ENoFormSpelling(APath + ": a list of objects in an array");
          Members(Item, APath + "[" + std::to_string(I) + "]");
        } else if (Item.IsArray() || Item.IsNull()) {
          throw ENoFormSpelling(APath + ": an array or null in an array");
        } else {
          Pair(APath + "[]", Item);
        }
      }
      return;
    case rapidjson::kNullType:
      throw ENoFormSpelling(APath + ": null");
    default:
      Pair(APath, AValue);
    }
  }

  void Pair(const std::string& AName, const TJson& AValue) {
    if (!FText.empty())
      FText += '&';
    FText += AName;
    FText += '=';
    if (AValue.IsBool())
      FText += AValue.GetBool() ? "true" : "false";
    else
      FText += Encode(AValue.GetString(), AValue.GetStringLength(), false);
  }

  /// In names the reader takes "%5B" and "%5D" for brackets and decodes other groups, so a
  /// bracket that is part of a name goes out in lower-case hex; "+" is a blank in values only.
  static std::string Encode(const char* AText, std::size_t ALength, bool AName) {
    static const char Upper[] = "0123456789ABCDEF";
    static const char Lower[] = "0123456789abcdef";
    const char* Hex = AName ? Lower : Upper;
    std::string Result;
    for (std::size_t I = 0; I < ALength; ++I) {
      const unsigned char C = static_cast<unsigned char>(AText[I]);
      if ((C >= 'A' && C <= 'Z') || (C >= 'a' && C <= 'z') || (C >= '0' && C <= '9') || C == '-' ||
          C == '.' || C == '_' || C == '~') {
        Result += static_cast<char>(C);
      } else if (C == ' ' && !AName) {
        Result += '+';
      } else {
        Result += '%';
        Result += Hex[C >> 4];
        Result += Hex[C & 15];
      }
    }
    return Result;
  }

  std::string FText;
};

/// AText read as a form post into a new node; the node's graph keeps what the run makes.
TRtNode* ReadForm(const std::string& AText) {
  TOwned<TRtNode> Target(New<TRtNode>());
  TOwned<TObjectList> GraphKeeps(New<TObjectList>(false));
  TOwned<TLxDeserializer> Reader(LxCreateDeserializer(ldsJSON, TValue::From(Target.get())));
  Reader->SetParam(u"UrlEncoded", u"true");
  Reader->SetCreatedObjects(GraphKeeps.get());
  Reader->Deserialize(AText);
  return Target.release();
}

/// What a form post can spell, which the graphs keep to:
/// - Children: no list of objects of a class. The reader starts an item's object only behind
///   the pair that names its class, so the deserializer finds no class name and makes no object.
/// - Points and Colors below the root: a node below the root holds one list of objects at most,
///   the fixed Corners, which the form writer puts last (see TFormWriter::Members).
/// - No control characters in texts: the reader drops them.
/// - No backslash in a text that starts with "[" or "{": the reader hands such a value on as it
///   is, not as JSON string text, and the deserializer decodes its escapes all the same.
/// - No item of a list of texts that starts with "[" or is only blanks and brackets: the JSON
///   reader itself takes such an item for the list written as a string, or starts no item.
/// - Variants hold texts only: every form value is a string, and a Variant keeps the type of the
///   JSON value it is read from.
/// Empty lists and nil members stay: they have no pairs, which reads as what a new object holds.
/// Characters that the form's syntax uses come in texts more often than the round trips of the
/// other formats make them.
TRtShapeLimits FormShapes() {
  TRtShapeLimits Limits;
  Limits.ChildLists = false;
  Limits.NestedObjectLists = false;
  Limits.ControlCharacters = false;
  Limits.TypedVariants = false;
  Limits.BracketedBackslashes = false;
  Limits.BracketedWords = false;
  Limits.MorePieces = {u"+", u"[",   u"]",    u"[x]", u"{",  u"}", u"\\", u"%5B",
                       u"_", u"a=b", u"&c=d", u"#",   u"?/", u";", u"%2", u"%%"};
  return Limits;
}

class FormPostRoundTrip : public test::LiveObjectsTest {
protected:
  // The descriptions' hints are objects that live as long as the registry.
  void SetUp() override {
    DescribeRoundTripTypes();
    test::LiveObjectsTest::SetUp();
  }
};

TEST_F(FormPostRoundTrip, TheFormWriterSpellsEachShape) {
  EXPECT_EQ(TFormWriter::Form(R"({"a":"x y+&=%[]\u00e9\uD83D\uDE00","b":{"c":1.5,"d":{"e":true}},)"
                              R"("f":[1,2],"g":[{"h":"i"},{"h":"j"}],"k[l]":"","m":{},"n":[]})"),
            "a=x+y%2B%26%3D%25%5B%5D%C3%A9%F0%9F%98%80&b[c]=1.5&b[d][e]=true&f[]=1&f[]=2"
            "&g[0][h]=i&g[1][h]=j&k%5bl%5d=");
  // Below the root a list of objects, and the object around it, go last.
  EXPECT_EQ(TFormWriter::Form(R"({"a":{"l":[{"x":1}],"b":2},"c":[{"y":3}],"d":4})"),
            "a[b]=2&a[l][0][x]=1&c[0][y]=3&d=4");
  EXPECT_EQ(TFormWriter::Form(R"({"a":{"o":{"l":[{"x":1}]},"b":2}})"), "a[b]=2&a[o][l][0][x]=1");
  for (const char* Unspelled : {R"({"a":null})", R"({"a":[[1]]})", R"({"a":[{},{"b":1}]})",
                                R"({"a":{"l":[{"x":1}],"m":[{"x":2}]}})"})
    EXPECT_THROW(TFormWriter::Form(Unspelled), ENoFormSpelling) << Unspelled;
}

TEST_F(FormPostRoundTrip, AGraphReadFromItsFormEqualsTheGraphReadFromItsJSON) {
  constexpr unsigned cGraphs = LORVANE_PROPERTY_GRAPHS;
  const TRtShapeLimits Limits = FormShapes();
  const unsigned From = std::getenv("FP_SEED") ? unsigned(std::atoi(std::getenv("FP_SEED"))) : 1;
  unsigned Failures = 0;
  for (unsigned Seed = From; Seed < From + cGraphs && Failures < 5; ++Seed) {
    const Int64 Live = TObject::LiveInstances();
    TRtGraphMaker Maker(Seed, Limits);
    TOwned<TRtNode> Original(Maker.Node(0));
    const std::string JSON = LxSerialize(ldsJSON, TValue::From(Original.get()));
    std::string Form;
    TOwned<TRtNode> FromJSON, FromForm;
    try {
      Form = TFormWriter::Form(JSON);
      FromJSON.reset(ReadBack(ldsJSON, JSON, /*AByClassName=*/false));
      FromForm.reset(ReadForm(Form));
    } catch (const Exception& E) {
      ++Failures;
      ADD_FAILURE() << "seed " << Seed << ": " << typeid(E).name() << " "
                    << StringToUTF8(E.Message()) << "\njson: " << JSON << "\nform: " << Form;
      continue;
    } catch (const ENoFormSpelling& E) {
      ++Failures;
      ADD_FAILURE() << "seed " << Seed << ": " << E.what() << "\njson: " << JSON;
      continue;
    }
    // The JSON's graph is held to the original too, so that two reads that lose the same
    // members can't pass.
    for (const auto& [What, Differences] :
         {std::pair{"form", Compare(FromJSON.get(), FromForm.get(), /*AVariantFamilies=*/false)},
          std::pair{"json", Compare(Original.get(), FromJSON.get(), /*AVariantFamilies=*/false)}})
      if (!Differences.empty()) {
        ++Failures;
        ADD_FAILURE() << "seed " << Seed << ", " << What << ": " << Differences.size()
                      << " differences, the first: " << Differences.front() << "\njson: " << JSON
                      << "\nform: " << Form;
      }
    Original.reset();
    FromJSON.reset();
    FromForm.reset();
    if (TObject::LiveInstances() != Live) {
      ++Failures;
      ADD_FAILURE() << "seed " << Seed << " leaked\nform: " << Form;
    }
  }
}

} // namespace
