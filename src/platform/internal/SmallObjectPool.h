// Memory for small objects that are made and freed in great numbers (the values of JSON trees,
// the texts of Variants): handed out and taken back without the general heap.
#pragma once

#include <cstddef>

namespace lorvane::smallpool {

/// Memory for one object of ASize bytes. Such objects are many, small and of a few sizes, and a
/// tree frees them all at once: the general heap spends most of such a load and free on merging
/// free memory. Sizes up to 256 bytes come from 64 KiB blocks, through a free list per size and per
/// thread; the memory of freed objects is kept for new objects of this process and is not given
/// back to the system. Larger sizes, and builds with the address sanitizer (which must see every
/// allocation), use the general heap.
void* Allocate(std::size_t ASize);
/// Takes back memory from Allocate with the same size; any thread may give it back.
void Release(void* AMemory, std::size_t ASize) noexcept;

} // namespace lorvane::smallpool
