// Memory for the values of JSON trees: small blocks handed out and taken back without the
// general heap.
#pragma once

#include <cstddef>

namespace lorvane::jsonpool {

/// Memory for one value of ASize bytes. Values are many, small and of a few sizes, and a tree
/// frees them all at once: the general heap spends most of such a load and free on merging free
/// memory. Sizes up to 256 bytes come from 64 KiB blocks, through a free list per size and per
/// thread; the memory of freed values is kept for new values of this process and is not given
/// back to the system. Larger sizes, and builds with the address sanitizer (which must see every
/// allocation), use the general heap.
void* Allocate(std::size_t ASize);
/// Takes back memory from Allocate with the same size; any thread may give it back.
void Release(void* AMemory, std::size_t ASize) noexcept;

} // namespace lorvane::jsonpool
