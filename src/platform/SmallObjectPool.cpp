// The small object pool: bounded free lists per size and thread, over blocks that go back to the
// general heap once all the memory cut from them has come back.
#include "platform/internal/SmallObjectPool.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define LORVANE_POOL_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LORVANE_POOL_POISONS 1
#endif
#endif
#if defined(LORVANE_POOL_POISONS)
#include <sanitizer/asan_interface.h>
#endif

namespace lorvane::smallpool {

namespace {

constexpr std::size_t Granule = 16;
constexpr std::size_t MaxPooled = 256;
constexpr std::size_t ClassCount = MaxPooled / Granule;
// The header keeps the block's count off the cache lines of its first chunks.
constexpr std::size_t HeaderSize = 64;
// Counts for the part of a block that is not cut yet, while a thread still cuts from it, so
// that the count can't reach zero before the block is given up.
constexpr std::int64_t Uncut = BlockSize;

constexpr std::size_t ClassOf(std::size_t ASize) noexcept { return (ASize - 1) / Granule; }
constexpr std::size_t ChunkSize(std::size_t AClass) noexcept { return (AClass + 1) * Granule; }

constexpr std::array<std::size_t, ClassCount> CacheLimits = [] {
  std::array<std::size_t, ClassCount> Limits{};
  for (std::size_t C = 0; C < ClassCount; ++C)
    Limits[C] = CacheBytesPerClass / ChunkSize(C);
  return Limits;
}();

// Memory on a free list, or not cut yet, is off limits to the program: the sanitizer build
// reports any access to it.
void Poison([[maybe_unused]] void* AMemory, [[maybe_unused]] std::size_t ASize) noexcept {
#if defined(LORVANE_POOL_POISONS)
  ASAN_POISON_MEMORY_REGION(AMemory, ASize);
#endif
}
void Unpoison([[maybe_unused]] void* AMemory, [[maybe_unused]] std::size_t ASize) noexcept {
#if defined(LORVANE_POOL_POISONS)
  ASAN_UNPOISON_MEMORY_REGION(AMemory, ASize);
#endif
}

struct TFreeChunk {
  TFreeChunk* Next;
};

// Each block starts with this header. Blocks are aligned to their size, so a chunk finds its
// block by masking its address.
struct TBlockHeader {
  // Bytes cut and not yet back, plus Uncut while a thread still cuts from the block.
  std::atomic<std::int64_t> Outstanding{Uncut};
};
static_assert(sizeof(TBlockHeader) <= HeaderSize);

std::atomic<std::size_t> BlockCount{0};

TBlockHeader* BlockOf(void* AChunk) noexcept {
  return reinterpret_cast<TBlockHeader*>(reinterpret_cast<std::uintptr_t>(AChunk) &
                                         ~static_cast<std::uintptr_t>(BlockSize - 1));
}

void FreeBlock(TBlockHeader* ABlock) noexcept {
  Unpoison(ABlock, BlockSize);
  ABlock->~TBlockHeader();
  ::operator delete(static_cast<void*>(ABlock), std::align_val_t(BlockSize));
  BlockCount.fetch_sub(1, std::memory_order_relaxed);
}

// The last bytes to come back free the block.
void GiveBack(TBlockHeader* ABlock, std::int64_t ABytes) noexcept {
  if (ABlock->Outstanding.fetch_sub(ABytes, std::memory_order_acq_rel) == ABytes)
    FreeBlock(ABlock);
}

void ReturnToBlock(void* AChunk, std::size_t ASize) noexcept {
  Poison(AChunk, ASize);
  GiveBack(BlockOf(AChunk), static_cast<std::int64_t>(ASize));
}

// Cuts chunks of any size from one block at a time.
struct TCutter {
  char* Next = nullptr;
  char* End = nullptr;

  void* Cut(std::size_t ASize) {
    if (static_cast<std::size_t>(End - Next) < ASize)
      NewBlock(); // the rest of the old block (less than this chunk) stays unused
    void* Result = Next;
    Next += ASize;
    Unpoison(Result, ASize);
    return Result;
  }

  // Gives up the block's uncut part: the block goes once the chunks cut from it are back.
  void Retire() noexcept {
    if (!End)
      return;
    auto* Block = BlockOf(End - 1);
    const std::int64_t CutBytes = Next - (reinterpret_cast<char*>(Block) + HeaderSize);
    Next = End = nullptr;
    GiveBack(Block, Uncut - CutBytes);
  }

  void NewBlock() {
    void* Memory = ::operator new(BlockSize, std::align_val_t(BlockSize));
    BlockCount.fetch_add(1, std::memory_order_relaxed);
    Retire();
    new (Memory) TBlockHeader;
    Next = static_cast<char*>(Memory) + HeaderSize;
    End = static_cast<char*>(Memory) + BlockSize;
    Poison(Next, BlockSize - HeaderSize);
  }
};

// Set when this thread's cache is gone: memory asked for or freed later in the thread's life (by
// other thread-local or static objects) is cut from a shared block or goes straight back. Per
// thread, like the cache itself: allocations come from any code on any thread, with no object in
// common that could carry the state.
thread_local bool CacheGone = false;

struct TShared {
  std::mutex Lock;
  TCutter Cutter;
};

TShared& Shared() {
  // Never destroyed: threads may still ask for memory while the process ends.
  static TShared* Instance = new TShared;
  return *Instance;
}

void* CutShared(std::size_t ASize) {
  TShared& S = Shared();
  const std::lock_guard<std::mutex> Guard(S.Lock);
  return S.Cutter.Cut(ASize);
}

struct TThreadCache {
  TFreeChunk* Free[ClassCount] = {};
  std::size_t Count[ClassCount] = {};
  TCutter Cutter;

  ~TThreadCache() {
    for (std::size_t C = 0; C < ClassCount; ++C)
      while (TFreeChunk* Chunk = Free[C]) {
        Unpoison(Chunk, ChunkSize(C));
        Free[C] = Chunk->Next;
        ReturnToBlock(Chunk, ChunkSize(C));
      }
    Cutter.Retire();
    CacheGone = true;
  }
};

// One cache per thread so that allocating and freeing take no lock; nothing explicit owns it,
// since the callers are values made anywhere in the library.
thread_local TThreadCache Cache;

} // namespace

void* Allocate(std::size_t ASize) {
  if (ASize - 1 >= MaxPooled) // 0 wraps around
    return ::operator new(ASize);
  const std::size_t C = ClassOf(ASize);
  if (CacheGone)
    return CutShared(ChunkSize(C));
  TThreadCache& T = Cache;
  if (TFreeChunk* Chunk = T.Free[C]) {
    Unpoison(Chunk, ChunkSize(C));
    // A freed tree leaves its chunks scattered: fetch the next one while this one is used.
    T.Free[C] = Chunk->Next;
    --T.Count[C];
    if (Chunk->Next)
      __builtin_prefetch(Chunk->Next, 1);
    return Chunk;
  }
  return T.Cutter.Cut(ChunkSize(C));
}

void Release(void* AMemory, std::size_t ASize) noexcept {
  if (ASize - 1 >= MaxPooled) {
    ::operator delete(AMemory);
    return;
  }
  if (!AMemory)
    return;
  const std::size_t C = ClassOf(ASize);
  if (!CacheGone) {
    TThreadCache& T = Cache;
    if (T.Count[C] < CacheLimits[C]) {
      auto* Chunk = static_cast<TFreeChunk*>(AMemory);
      Chunk->Next = T.Free[C];
      T.Free[C] = Chunk;
      ++T.Count[C];
      Poison(Chunk, ChunkSize(C));
      return;
    }
  }
  ReturnToBlock(AMemory, ChunkSize(C));
}

TPoolUsage Usage() noexcept {
  TPoolUsage Result{BlockCount.load(std::memory_order_relaxed), 0};
  if (!CacheGone)
    for (std::size_t C = 0; C < ClassCount; ++C)
      Result.CachedBytes += Cache.Count[C] * ChunkSize(C);
  return Result;
}

} // namespace lorvane::smallpool
