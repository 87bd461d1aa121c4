// The small object pool: free lists per size and thread over blocks that live as long as the
// process.
#include "platform/internal/SmallObjectPool.h"

#include <mutex>
#include <new>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define LORVANE_POOL_BYPASS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LORVANE_POOL_BYPASS 1
#endif
#endif

namespace lorvane::smallpool {

#if defined(LORVANE_POOL_BYPASS)

void* Allocate(std::size_t ASize) { return ::operator new(ASize); }

void Release(void* AMemory, std::size_t) noexcept { ::operator delete(AMemory); }

#else

namespace {

constexpr std::size_t Granule = 16;
constexpr std::size_t MaxPooled = 256;
constexpr std::size_t ClassCount = MaxPooled / Granule;
constexpr std::size_t BlockSize = 64 * 1024;

struct TFreeChunk {
  TFreeChunk* Next;
};

constexpr std::size_t ClassOf(std::size_t ASize) noexcept { return (ASize - 1) / Granule; }
constexpr std::size_t ChunkSize(std::size_t AClass) noexcept { return (AClass + 1) * Granule; }

// Blocks are never freed; the free lists that a thread leaves behind when it ends wait here,
// whole, for the next thread that runs short.
struct TShared {
  std::mutex Lock;
  std::vector<void*> Blocks;
  std::vector<TFreeChunk*> Orphans[ClassCount];
};

TShared& Shared() {
  // Never destroyed: threads may still give memory back while the process ends.
  static TShared* Instance = new TShared;
  return *Instance;
}

// Set when this thread's cache is gone: values freed later in the thread's life (by other
// thread-local or static objects) go to the shared free lists.
thread_local bool CacheGone = false;

void Orphan(TFreeChunk* AChunk, std::size_t AClass) {
  TShared& S = Shared();
  const std::lock_guard<std::mutex> Guard(S.Lock);
  AChunk->Next = nullptr;
  S.Orphans[AClass].push_back(AChunk);
}

struct TThreadCache {
  TFreeChunk* Free[ClassCount] = {};
  char* BumpNext = nullptr;
  char* BumpEnd = nullptr;

  ~TThreadCache() {
    TShared& S = Shared();
    const std::lock_guard<std::mutex> Guard(S.Lock);
    for (std::size_t C = 0; C < ClassCount; ++C)
      if (Free[C])
        S.Orphans[C].push_back(Free[C]);
    CacheGone = true;
  }

  void* Refill(std::size_t AClass) {
    TShared& S = Shared();
    const std::lock_guard<std::mutex> Guard(S.Lock);
    if (!S.Orphans[AClass].empty()) {
      TFreeChunk* Adopted = S.Orphans[AClass].back();
      S.Orphans[AClass].pop_back();
      Free[AClass] = Adopted->Next;
      return Adopted;
    }
    const std::size_t Size = ChunkSize(AClass);
    if (static_cast<std::size_t>(BumpEnd - BumpNext) < Size) {
      // The rest of the old block (less than one value) stays unused.
      BumpNext = static_cast<char*>(::operator new(BlockSize));
      BumpEnd = BumpNext + BlockSize;
      S.Blocks.push_back(BumpNext);
    }
    void* Result = BumpNext;
    BumpNext += Size;
    return Result;
  }
};

thread_local TThreadCache Cache;

} // namespace

void* Allocate(std::size_t ASize) {
  if (ASize != 0 && ASize <= MaxPooled && !CacheGone) {
    const std::size_t C = ClassOf(ASize);
    if (TFreeChunk* Chunk = Cache.Free[C]) {
      // A freed tree leaves its chunks scattered: fetch the next one while this one is used.
      Cache.Free[C] = Chunk->Next;
      if (Chunk->Next)
        __builtin_prefetch(Chunk->Next, 1);
      return Chunk;
    }
    if (static_cast<std::size_t>(Cache.BumpEnd - Cache.BumpNext) >= ChunkSize(C)) {
      void* Result = Cache.BumpNext;
      Cache.BumpNext += ChunkSize(C);
      return Result;
    }
    return Cache.Refill(C);
  }
  // Past this thread's end, a value gets memory of the size its class would have in the pool,
  // since Release takes it back into a free list.
  return ::operator new(ASize <= MaxPooled && ASize != 0 ? ChunkSize(ClassOf(ASize)) : ASize);
}

void Release(void* AMemory, std::size_t ASize) noexcept {
  if (AMemory && ASize != 0 && ASize <= MaxPooled) {
    const std::size_t C = ClassOf(ASize);
    auto* Chunk = static_cast<TFreeChunk*>(AMemory);
    if (CacheGone) {
      Orphan(Chunk, C);
      return;
    }
    Chunk->Next = Cache.Free[C];
    Cache.Free[C] = Chunk;
    return;
  }
  ::operator delete(AMemory);
}

#endif

} // namespace lorvane::smallpool
