// What the fuzz targets of reading XML and JSON into objects share: an object graph of described
// types, read in place by each way of keeping the objects a run makes, into a new object of the
// class the text names, into a record and an array given as values, and (JSON) as a form post;
// only the documented failures of a read are expected, and nothing may be left alive.
#pragma once

#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/types/LxDescribe.h"
#include "lorvane/uLxJSONSerializer.h"
#include "lorvane/uLxSerializer.h"
#include "lorvane/uLxXMLSerializer.h"
#include "support/DocumentedFailures.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lorvane::fuzzread {

enum class TFzTone { ftLow, ftMid, ftHigh };
using TFzTones = TSet<TFzTone, 8>;

struct TFzPair {
  Integer A = 0;
  UnicodeString B;
  std::vector<Integer> C;
};

/// Whether nodes free what they point at; off while a caller's list owns every object a run makes.
inline bool GNodesOwnWhatTheyPointAt = true;

class TFzNode : public TPersistent {
  LX_CLASS(TFzNode, TPersistent)
  TFzNode() = default;
  Integer Id = 0;
  Int64 Big = 0;
  Double Ratio = 0;
  UnicodeString Text;
  UnicodeString Hidden;
  UnicodeString Body;
  UnicodeString Alias;
  bool Flag = false;
  WideChar Letter = 0;
  TFzTone Tone = TFzTone::ftLow;
  TFzTones Tones;
  TDate Day;
  TDateTime Stamp;
  Variant Any;
  TFzPair Pair;
  std::vector<Integer> Numbers;
  std::array<Integer, 2> Two{};
  std::vector<TFzPair> Pairs;
  std::vector<TFzNode*> Children;
  TFzNode* Next = nullptr;

protected:
  ~TFzNode() override {
    if (!GNodesOwnWhatTheyPointAt)
      return;
    lorvane::Free(Next);
    for (TFzNode* Child : Children)
      lorvane::Free(Child);
  }
};

/// Refers to a node without owning it: the run's list decides.
class TFzLink : public TPersistent {
  LX_CLASS(TFzLink, TPersistent)
  TFzLink() = default;
  TFzNode* Target = nullptr;
  std::vector<TFzNode*> Others;
  Integer Id = 0;

protected:
  ~TFzLink() override = default;
};

inline void Describe() {
  static const bool Described = [] {
    LxDescribeEnum<TFzTone>(u"Fz.TFzTone", {u"ftLow", u"ftMid", u"ftHigh"})
        .Hint(shoEnumPrefix, u"ft");
    LxDescribeSet<TFzTones>(u"Fz.TFzTones");
    LxDescribeRecord<TFzPair>(u"Fz.TFzPair")
        .Field(u"A", &TFzPair::A)
        .Field(u"B", &TFzPair::B)
        .Hint(shoName, u"bee")
        .Field(u"C", &TFzPair::C);
    LxDescribeClass<TFzNode>(u"Fz.TFzNode")
        .Property(u"Id", &TFzNode::Id)
        .Property(u"Text", &TFzNode::Text)
        .Property(u"Hidden", &TFzNode::Hidden)
        .Hint(shoDoNotSerialize)
        .Property(u"Body", &TFzNode::Body)
        .Hint(shoNodeType, u"NodeValue")
        .Property(u"Alias", &TFzNode::Alias)
        .Hint(shoName, u"nick")
        .Property(u"Tone", &TFzNode::Tone)
        .Property(u"Tones", &TFzNode::Tones)
        .Property(u"Any", &TFzNode::Any)
        .Property(u"Pair", &TFzNode::Pair)
        .Property(u"Children", &TFzNode::Children)
        .Property(u"Next", &TFzNode::Next)
        .Field(u"Big", &TFzNode::Big)
        .Field(u"Ratio", &TFzNode::Ratio)
        .Field(u"Flag", &TFzNode::Flag)
        .Field(u"Letter", &TFzNode::Letter)
        .Field(u"Day", &TFzNode::Day)
        .Field(u"Stamp", &TFzNode::Stamp)
        .Field(u"Numbers", &TFzNode::Numbers)
        .Field(u"Two", &TFzNode::Two)
        .Field(u"Pairs", &TFzNode::Pairs);
    LxDescribeClass<TFzLink>(u"Fz.TFzLink")
        .Property(u"Target", &TFzLink::Target)
        .Property(u"Others", &TFzLink::Others)
        .Property(u"Id", &TFzLink::Id);
    return true;
  }();
  (void)Described;
}

/// Reads AText in AFormat in the way AChoice picks; a documented failure of AEntry is expected,
/// anything else is a finding. JSON has one way more: a form post.
inline void ReadAll(TLxSerializeFormat AFormat, documented::TEntry AEntry, const std::string& AText,
                    uint8_t AChoice) {
  const auto Read = [AEntry](auto&& AAction) { documented::Guarded(AEntry, AAction); };
  switch (AChoice % (AFormat == ldsJSON ? 7 : 6)) {
  case 0: { // in place, the run frees what it makes
    TOwned<TFzNode> Node(New<TFzNode>());
    Read([&] { LxDeserialize(AFormat, TValue::From(Node.get()), AText); });
    break;
  }
  case 1: { // in place, the graph keeps what it makes
    TOwned<TFzNode> Node(New<TFzNode>());
    TObjectList* GraphKeeps = nullptr;
    Read([&] { LxDeserialize(AFormat, TValue::From(Node.get()), AText, &GraphKeeps); });
    break;
  }
  case 2: { // a link that owns nothing, into a list of the caller that owns every object made
    GNodesOwnWhatTheyPointAt = false;
    TOwned<TFzLink> Link(New<TFzLink>());
    TOwned<TObjectList> Mine(New<TObjectList>(true));
    TObjectList* List = Mine.get();
    Read([&] { LxDeserialize(AFormat, TValue::From(Link.get()), AText, &List); });
    Mine.reset();
    GNodesOwnWhatTheyPointAt = true;
    break;
  }
  case 3: { // a new object of the class the text names
    TObjectList* GraphKeeps = nullptr;
    const bool Keep = (AChoice >> 3) & 1;
    TObject* Made = nullptr;
    Read([&] { Made = LxCreateFrom(AFormat, AText, Keep ? &GraphKeeps : nullptr); });
    // A link doesn't own what it refers to: with the graph keeping them, they are freed here.
    if (Made && Keep && Made->ClassType() == TFzLink::StaticClass()) {
      auto* Link = static_cast<TFzLink*>(Made);
      lorvane::Free(Link->Target);
      for (TFzNode* Other : Link->Others)
        lorvane::Free(Other);
    }
    lorvane::Free(Made);
    break;
  }
  case 4: // a record given as a value
    Read([&] { LxDeserialize(AFormat, TValue::From(TFzPair{}), AText); });
    break;
  case 5: { // a form post, the graph keeping what it makes
    TOwned<TFzNode> Node(New<TFzNode>());
    TOwned<TObjectList> GraphKeeps(New<TObjectList>(false));
    TOwned<TLxDeserializer> Reader(LxCreateDeserializer(AFormat, TValue::From(Node.get())));
    Reader->SetParam(u"UrlEncoded", u"True");
    Reader->SetCreatedObjects(GraphKeeps.get());
    Read([&] { Reader->Deserialize(AText); });
    break;
  }
  default: // an array given as a value
    Read([&] { LxDeserialize(AFormat, TValue::From(std::vector<TFzPair>{}), AText); });
    break;
  }
}

/// One fuzz input: its first byte picks the way, the rest is the text.
inline int ReadInput(TLxSerializeFormat AFormat, documented::TEntry AEntry, const uint8_t* AData,
                     size_t ASize) {
  if (ASize == 0)
    return 0;
  Describe();
  const Int64 Live = TObject::LiveInstances();
  ReadAll(AFormat, AEntry, std::string(reinterpret_cast<const char*>(AData + 1), ASize - 1),
          AData[0]);
  // Whatever the text, a read leaves nothing alive behind it.
  if (TObject::LiveInstances() != Live)
    __builtin_trap();
  return 0;
}

} // namespace lorvane::fuzzread
