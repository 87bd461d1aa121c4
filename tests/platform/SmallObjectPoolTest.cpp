// The small object pool: freed memory serves the next objects, what a thread keeps stays within
// its bound, blocks go back once empty, and the sanitizer build reports use after free.
#include "platform/internal/SmallObjectPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace lorvane {
namespace {

using smallpool::BlockSize;
using smallpool::CacheBytesPerClass;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool SanitizedBuild = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool SanitizedBuild = true;
#else
constexpr bool SanitizedBuild = false;
#endif
#else
constexpr bool SanitizedBuild = false;
#endif

// A "tree" of ACount objects of ASize bytes, each filled so that overlapping memory shows.
std::vector<void*> AllocateMany(std::size_t ACount, std::size_t ASize) {
  std::vector<void*> Chunks;
  Chunks.reserve(ACount);
  for (std::size_t I = 0; I < ACount; ++I) {
    void* Chunk = smallpool::Allocate(ASize);
    std::memset(Chunk, static_cast<int>(I & 0xFF), ASize);
    Chunks.push_back(Chunk);
  }
  return Chunks;
}

void ReleaseAll(const std::vector<void*>& AChunks, std::size_t ASize) {
  for (void* Chunk : AChunks)
    smallpool::Release(Chunk, ASize);
}

// Each thread starts from a cache of its own: the other tests of this program have left
// memory on the main thread's lists.
template <class F> void OnFreshThread(F&& AAction) { std::thread(std::forward<F>(AAction)).join(); }

TEST(SmallObjectPool, ChunksDontOverlapAndKeepTheirContents) {
  OnFreshThread([] {
    for (const std::size_t Size : {1u, 16u, 17u, 40u, 255u, 256u}) {
      SCOPED_TRACE(testing::Message() << "size " << Size);
      const std::vector<void*> Chunks = AllocateMany(5000, Size);
      for (std::size_t I = 0; I < Chunks.size(); ++I) {
        const auto* Bytes = static_cast<const unsigned char*>(Chunks[I]);
        ASSERT_EQ(Bytes[0], I & 0xFF);
        ASSERT_EQ(Bytes[Size - 1], I & 0xFF);
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(Chunks[I]) % 16, 0u);
      }
      ReleaseAll(Chunks, Size);
    }
  });
}

TEST(SmallObjectPool, AFreedTreeServesTheNextOne) {
  OnFreshThread([] {
    constexpr std::size_t Size = 48, Count = 2000; // within one thread's cache
    const std::vector<void*> First = AllocateMany(Count, Size);
    const std::size_t BlocksWithTree = smallpool::Usage().Blocks;
    ReleaseAll(First, Size);
    EXPECT_EQ(smallpool::Usage().CachedBytes, Count * Size);

    const std::vector<void*> Second = AllocateMany(Count, Size);
    const std::set<void*> Freed(First.begin(), First.end());
    for (void* Chunk : Second)
      EXPECT_TRUE(Freed.count(Chunk)) << "a new block was cut while freed memory was waiting";
    EXPECT_EQ(smallpool::Usage().Blocks, BlocksWithTree);
    EXPECT_EQ(smallpool::Usage().CachedBytes, 0u);
    ReleaseAll(Second, Size);
  });
}

TEST(SmallObjectPool, ALargeFreedTreeLeavesOnlyTheBoundBehind) {
  struct TCase {
    std::size_t Size;
    bool FreeInReverse;
  };
  for (const TCase Case : {TCase{32, false}, TCase{32, true}, TCase{208, false}}) {
    OnFreshThread([Case] {
      SCOPED_TRACE(testing::Message() << Case.Size << (Case.FreeInReverse ? " reverse" : ""));
      const std::size_t Before = smallpool::Usage().Blocks;
      // Forty times what the cache keeps: a tree the pool must not hold on to.
      const std::size_t Count = 40 * CacheBytesPerClass / Case.Size;
      std::vector<void*> Tree = AllocateMany(Count, Case.Size);
      const std::size_t Grown = smallpool::Usage().Blocks - Before;
      EXPECT_GE(Grown, Count * Case.Size / BlockSize);
      if (Case.FreeInReverse)
        std::reverse(Tree.begin(), Tree.end());
      ReleaseAll(Tree, Case.Size);

      const smallpool::TPoolUsage After = smallpool::Usage();
      EXPECT_LE(After.CachedBytes, CacheBytesPerClass);
      EXPECT_GT(After.CachedBytes, CacheBytesPerClass - Case.Size) << "the cache fills first";
      // The cached chunks were cut one after the other, so they lie in the fewest blocks that
      // hold them (a block header takes 64 bytes); one more is the block still being cut from.
      const std::size_t CacheBlocks = CacheBytesPerClass / (BlockSize - 64) + 2;
      EXPECT_LE(After.Blocks, Before + CacheBlocks) << Grown << " blocks had been taken";
    });
  }
}

TEST(SmallObjectPool, AThreadThatEndsGivesEverythingBack) {
  const std::size_t Before = smallpool::Usage().Blocks;
  std::vector<void*> Kept;
  OnFreshThread([&Kept] {
    const std::vector<void*> Chunks = AllocateMany(20000, 64);
    // Half goes back on this thread, half lives on past its end.
    ReleaseAll(std::vector<void*>(Chunks.begin(), Chunks.begin() + 10000), 64);
    Kept.assign(Chunks.begin() + 10000, Chunks.end());
  });
  EXPECT_GT(smallpool::Usage().Blocks, Before) << "the live half keeps its blocks";
  // Freed on another thread, past the cache of this one: these go back to their blocks.
  OnFreshThread([&Kept] { ReleaseAll(Kept, 64); });
  EXPECT_EQ(smallpool::Usage().Blocks, Before);
}

TEST(SmallObjectPool, SizesBeyondThePoolUseTheGeneralHeap) {
  OnFreshThread([] {
    const std::size_t Before = smallpool::Usage().Blocks;
    for (const std::size_t Size : {0u, 257u, 4096u}) {
      void* Memory = smallpool::Allocate(Size);
      ASSERT_NE(Memory, nullptr);
      std::memset(Memory, 0x5A, Size);
      smallpool::Release(Memory, Size);
    }
    EXPECT_EQ(smallpool::Usage().Blocks, Before);
    EXPECT_EQ(smallpool::Usage().CachedBytes, 0u);
    smallpool::Release(nullptr, 32); // like delete, nil is nothing to do
  });
}

TEST(SmallObjectPoolDeathTest, WritingToAFreedChunkIsReported) {
  if (!SanitizedBuild)
    GTEST_SKIP() << "only the address sanitizer sees into the pool's blocks";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // On a thread of their own, so that each chunk is cut from a block no other test has used.
  EXPECT_DEATH(OnFreshThread([] {
                 void* Chunk = smallpool::Allocate(40);
                 smallpool::Release(Chunk, 40);
                 static_cast<volatile char*>(Chunk)[8] = 1;
               }),
               "use-after-poison");
  EXPECT_DEATH(OnFreshThread([] {
                 // Memory past the last chunk cut from a block isn't handed out yet either.
                 auto* Chunk = static_cast<volatile char*>(smallpool::Allocate(32));
                 Chunk[32 + 16 * 3] = 1;
               }),
               "use-after-poison");
  // Memory handed out again is the program's own once more.
  OnFreshThread([] {
    void* Chunk = smallpool::Allocate(40);
    smallpool::Release(Chunk, 40);
    void* Again = smallpool::Allocate(40);
    ASSERT_EQ(Again, Chunk);
    static_cast<volatile char*>(Again)[8] = 1;
    smallpool::Release(Again, 40);
  });
}

} // namespace
} // namespace lorvane
