// First use of the registry from several threads at once: every thread gets the same
// TLxTypeInfo, whichever road (handle, class, name, undeclared array name) it comes by.
#include "lorvane/platform/Classes.h"
#include "lorvane/uLxTypes.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <latch>
#include <thread>
#include <vector>

using namespace lorvane;

// Used by this test only, so that the threads below are the first to ask for them.
namespace Fresh {
enum class TFreshKind { fkOne, fkTwo };
struct TFreshRecord {
  Integer X = 0;
};
class TFreshClass : public TPersistent {
  LX_CLASS(TFreshClass, TPersistent)
  TFreshClass() = default;

protected:
  ~TFreshClass() override = default;
};
class TFreshDescendant : public TFreshClass {
  LX_CLASS(TFreshDescendant, TFreshClass)
  TFreshDescendant() = default;

protected:
  ~TFreshDescendant() override = default;
};
/// Known to the registry by its registered class name only.
class TFreshNamed : public TPersistent {
  LX_CLASS(TFreshNamed, TPersistent)
  TFreshNamed() = default;

protected:
  ~TFreshNamed() override = default;
};
} // namespace Fresh

TEST(TypeRegistryThreads, FirstUseFromManyThreadsGivesOneTypeInfo) {
  using namespace Fresh;
  RegisterClass(TFreshNamed::StaticClass());
  using TLookUp = std::function<const void*()>;
  const std::vector<TLookUp> LookUps{
      [] { return TLxTypes::GetTypeInfo(TypeHandle<TFreshRecord>()); },
      [] { return TLxTypes::GetTypeInfo<TFreshKind>(); },
      [] { return TLxTypes::GetTypeInfo(TFreshClass::StaticClass()); },
      [] { return TLxTypes::GetTypeInfo<TFreshClass*>(); },
      [] { return TLxTypes::GetTypeInfo<TFreshDescendant*>(); },
      [] { return TLxTypes::GetTypeInfo(TFreshDescendant::StaticClass())->VirtualType(lsdArray); },
      [] { return TLxTypes::GetTypeInfo(u"tfreshnamed", ltnName); },
      [] { return TLxTypes::GetTypeInfo(u"ns:TFreshNamed", ltnSchema); },
      [] { return TLxTypes::GetTypeInfo(u"ArrayOfTFreshNamed", ltnSchema, false, lmkArray); },
      [] { return TLxTypes::GetTypeInfo<std::vector<TFreshRecord>>(); },
      [] {
        return TLxTypes::GetTypeInfo(TFreshDescendant::StaticClass())->GetDescription()->BaseType();
      },
  };
  constexpr std::size_t Threads = 8;
  std::vector<std::vector<const void*>> Seen(Threads, std::vector<const void*>(LookUps.size()));
  std::latch Start(Threads);
  {
    std::vector<std::jthread> Workers;
    for (std::size_t T = 0; T < Threads; ++T)
      Workers.emplace_back([&, T] {
        Start.arrive_and_wait();
        // Each thread starts at another look-up, so that each road is somebody's first use.
        for (std::size_t I = 0; I < LookUps.size(); ++I) {
          const std::size_t Which = (I + T) % LookUps.size();
          Seen[T][Which] = LookUps[Which]();
        }
      });
  }
  for (std::size_t I = 0; I < LookUps.size(); ++I) {
    SCOPED_TRACE("look-up " + std::to_string(I));
    EXPECT_NE(Seen[0][I], nullptr);
    for (std::size_t T = 1; T < Threads; ++T)
      EXPECT_EQ(Seen[T][I], Seen[0][I]) << "thread " << T;
    EXPECT_EQ(LookUps[I](), Seen[0][I]);
  }
  // The roads to one type meet.
  EXPECT_EQ(Seen[0][2], Seen[0][3]);
  EXPECT_EQ(Seen[0][6], Seen[0][7]);
  EXPECT_EQ(Seen[0][10], Seen[0][3]);
  EXPECT_EQ(Seen[0][6], TLxTypes::GetTypeInfo<TFreshNamed*>());
}
