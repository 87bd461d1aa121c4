// Memory for small objects that are made and freed in great numbers (the values of JSON trees,
// the texts of Variants): handed out and taken back without the general heap.
#pragma once

#include <cstddef>

namespace lorvane::smallpool {

/// The free memory that one thread keeps for its next objects, per size class.
constexpr std::size_t CacheBytesPerClass = 256 * 1024;
/// The pool takes memory from the general heap in blocks of this size.
constexpr std::size_t BlockSize = 64 * 1024;

/// Memory for one object of ASize bytes. Such objects are many, small and of a few sizes, and a
/// tree frees them all at once: the general heap spends most of such a load and free on merging
/// free memory. Sizes up to 256 bytes are cut from 64 KiB blocks, in 16 size classes.
///
/// What the pool keeps: each thread keeps up to CacheBytesPerClass of freed memory per size
/// class on a free list, so that the next tree reuses it without touching a block; memory freed
/// beyond that goes back to its block, and a block whose memory has all come back returns to the
/// general heap. So after a large tree is freed, a thread holds at most 16 * CacheBytesPerClass
/// on its lists plus the blocks those chunks and the still-live objects lie in; a thread that
/// ends gives everything back. Larger sizes use the general heap.
///
/// In builds with the address sanitizer, the memory of freed objects, and the parts of blocks
/// not yet handed out, are poisoned: a use after free into pooled memory is reported.
void* Allocate(std::size_t ASize);
/// Takes back memory from Allocate with the same size; any thread may give it back.
void Release(void* AMemory, std::size_t ASize) noexcept;

/// What the pool holds at the moment, so that tests can check its bounds.
struct TPoolUsage {
  /// Blocks of the whole process that are not yet back in the general heap.
  std::size_t Blocks;
  /// Freed memory on the calling thread's lists.
  std::size_t CachedBytes;
};
TPoolUsage Usage() noexcept;

} // namespace lorvane::smallpool
