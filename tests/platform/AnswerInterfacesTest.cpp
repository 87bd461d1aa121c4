// The QueryInterface helpers: which interfaces they answer, where other questions go, and how
// many references an answer takes.
#include "lorvane/platform/System.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace lorvane {
namespace {

class IFirst : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x1A2B3C4D, 0x0001, 0x4000, {0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01}};
  virtual int First() = 0;

protected:
  ~IFirst() = default;
};

class ISecond : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x1A2B3C4D, 0x0002, 0x4000, {0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02}};
  virtual int Second() = 0;

protected:
  ~ISecond() = default;
};

// Extends IFirst, the way the tree's interfaces extend each other.
class IThird : public virtual IFirst {
public:
  static constexpr TGUID IID{
      0x1A2B3C4D, 0x0003, 0x4000, {0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x03}};
  virtual int Third() = 0;

protected:
  ~IThird() = default;
};

constexpr TGUID Unknown{
    0x1A2B3C4D, 0x00FF, 0x4000, {0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF}};

// The root of a small family: it counts its references, answers IInterface and refuses the
// rest, as the library's counted base does.
class TRoot : public virtual IInterface {
public:
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override {
    ++RootQuestions;
    return AnswerInterfaces<IInterface>(this, AIID, AObj, [AObj] { return RefuseInterface(AObj); });
  }
  Integer _AddRef() override { return ++Refs; }
  Integer _Release() override { return --Refs; }

  Integer Refs = 0;
  int RootQuestions = 0;
  // Keeps the interfaces of a descendant away from the start of the object.
  long Padding[3] = {};

protected:
  ~TRoot() = default;
};

// Answers its own interfaces through the helper (counted or not) and passes the rest to TRoot.
template <bool Counted> class TThing final : public TRoot, public ISecond, public IThird {
public:
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override {
    auto Others = [&] { return TRoot::QueryInterface(AIID, AObj); };
    if constexpr (Counted)
      return AnswerInterfaces<IThird, ISecond, IFirst>(this, AIID, AObj, Others);
    else
      return AnswerUncountedInterfaces<IThird, ISecond, IFirst>(this, AIID, AObj, Others);
  }
  Integer _AddRef() override { return TRoot::_AddRef(); }
  Integer _Release() override { return TRoot::_Release(); }
  int First() override { return 1; }
  int Second() override { return 2; }
  int Third() override { return 3; }
};

// A pointer that QueryInterface must overwrite whatever its answer.
void* const Garbage = reinterpret_cast<void*>(std::uintptr_t{0xDEAD});

template <bool Counted> void CheckAnswers() {
  TThing<Counted> Thing;
  const Integer Step = Counted ? 1 : 0;
  void* Obj = Garbage;

  ASSERT_EQ(Thing.QueryInterface(ISecond::IID, &Obj), S_OK);
  // Each interface sits at its own offset: the answer is the cast, not the object's address.
  EXPECT_EQ(Obj, static_cast<ISecond*>(&Thing));
  EXPECT_NE(Obj, static_cast<void*>(&Thing));
  EXPECT_EQ(static_cast<ISecond*>(Obj)->Second(), 2);
  EXPECT_EQ(Thing.Refs, Step);

  Obj = Garbage;
  ASSERT_EQ(Thing.QueryInterface(IFirst::IID, &Obj), S_OK);
  EXPECT_EQ(Obj, static_cast<IFirst*>(&Thing));
  EXPECT_EQ(static_cast<IFirst*>(Obj)->First(), 1);
  EXPECT_EQ(Thing.Refs, 2 * Step);

  Obj = Garbage;
  ASSERT_EQ(Thing.QueryInterface(IThird::IID, &Obj), S_OK);
  EXPECT_EQ(Obj, static_cast<IThird*>(&Thing));
  EXPECT_EQ(static_cast<IThird*>(Obj)->Third(), 3);
  EXPECT_EQ(Thing.Refs, 3 * Step);

  EXPECT_EQ(Thing.RootQuestions, 0) << "an answered question went on to the root";
}

TEST(AnswerInterfaces, AnswersEachListedInterfaceWithOneReference) { CheckAnswers<true>(); }

TEST(AnswerInterfaces, UncountedFormTakesNoReference) { CheckAnswers<false>(); }

TEST(AnswerInterfaces, PassesOtherQuestionsOnOnce) {
  TThing<true> Thing;
  void* Obj = Garbage;
  // The root answers IInterface: its answer and its reference come back unchanged.
  ASSERT_EQ(Thing.QueryInterface(IInterface::IID, &Obj), S_OK);
  EXPECT_EQ(Obj, static_cast<IInterface*>(&Thing));
  EXPECT_EQ(Thing.RootQuestions, 1);
  EXPECT_EQ(Thing.Refs, 1);

  Obj = Garbage;
  EXPECT_EQ(Thing.QueryInterface(Unknown, &Obj), E_NOINTERFACE);
  EXPECT_EQ(Obj, nullptr) << "a refusal leaves the result nil";
  EXPECT_EQ(Thing.RootQuestions, 2);
  EXPECT_EQ(Thing.Refs, 1) << "a refusal takes no reference";
}

TEST(AnswerInterfaces, RefusalAtTheRootClearsTheResult) {
  void* Obj = Garbage;
  EXPECT_EQ(RefuseInterface(&Obj), E_NOINTERFACE);
  EXPECT_EQ(Obj, nullptr);
}

TEST(AnswerInterfaces, CountedAnswersBalanceWithInterfacePointers) {
  TThing<true> Thing;
  {
    IPtr<ISecond> Second = IPtr<ISecond>::From(static_cast<IFirst*>(&Thing));
    ASSERT_TRUE(Second);
    EXPECT_EQ(Second->Second(), 2);
    EXPECT_EQ(Thing.Refs, 1) << "the pointer adopts the answer's reference";
    EXPECT_TRUE(IPtr<IFirst>::From(Second.Get()));
    EXPECT_EQ(Thing.Refs, 1) << "a temporary pointer releases what it took";
  }
  EXPECT_EQ(Thing.Refs, 0);
}

TEST(Supports, ReleasesTheAnswerThroughItsOwnInterface) {
  // ISecond's IInterface sits at another offset than the answer's address: a release through the
  // untyped answer would call into the wrong table.
  TThing<true> Thing;
  EXPECT_TRUE(Supports<ISecond>(static_cast<IFirst*>(&Thing)));
  EXPECT_TRUE(Supports<IThird>(static_cast<IFirst*>(&Thing)));
  EXPECT_EQ(Thing.Refs, 0);

  void* Obj = Garbage;
  EXPECT_TRUE(Supports(static_cast<IFirst*>(&Thing), ISecond::IID, &Obj));
  EXPECT_EQ(Obj, static_cast<ISecond*>(&Thing));
  EXPECT_EQ(Thing.Refs, 1) << "the caller holds the answer";
  static_cast<ISecond*>(Obj)->_Release();

  Obj = Garbage;
  EXPECT_FALSE(Supports(nullptr, ISecond::IID, &Obj));
  EXPECT_EQ(Obj, nullptr);
}

} // namespace
} // namespace lorvane
