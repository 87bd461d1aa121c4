// The person of the serializers' worked example, shared by the XML and the JSON shape tests
// (a type is described once per process).
#pragma once

#include "lorvane/types/LxDescribe.h"
#include "lorvane/uLxSerializer.h"

#include <vector>

namespace lorvane::test {

enum class TPersonKind { pkA, pkB, pkC };
enum class TFlag { fA, fB, fC };
using TFlags = TSet<TFlag>;
struct TPos {
  Integer X = 0;
  Integer Y = 0;
};

class TPerson : public TPersistent {
  LX_CLASS(TPerson, TPersistent)
  TPerson() = default;
  Integer Id = 0;
  UnicodeString Name;
  TDate Born;
  TPersonKind Kind = TPersonKind::pkA;
  TFlags Flags;
  TPerson* Friend = nullptr;
  TPerson* Boss = nullptr;
  TPos Pos;
  std::vector<Integer> Scores;

protected:
  ~TPerson() override { lorvane::Free(Friend); }
};

inline void DescribePerson() {
  static const bool Described = [] {
    LxDescribeEnum<TPersonKind>(u"Test.TPersonKind", {u"pkA", u"pkB", u"pkC"});
    LxDescribeEnum<TFlag>(u"Test.TFlag", {u"fA", u"fB", u"fC"});
    LxDescribeSet<TFlags>(u"Test.TFlags");
    LxDescribeRecord<TPos>(u"Test.TPos").Field(u"X", &TPos::X).Field(u"Y", &TPos::Y);
    LxDescribeClass<TPerson>(u"Test.TPerson")
        .Alias(u"Person")
        .Property(u"Id", &TPerson::Id)
        .Property(u"Name", &TPerson::Name)
        .Property(u"Born", &TPerson::Born)
        .Property(u"Kind", &TPerson::Kind)
        .Property(u"Flags", &TPerson::Flags)
        .Property(u"Friend", &TPerson::Friend)
        .Property(u"Boss", &TPerson::Boss)
        .Property(u"Pos", &TPerson::Pos)
        .Property(u"Scores", &TPerson::Scores);
    return true;
  }();
  (void)Described;
}

} // namespace lorvane::test
