// SPDX-License-Identifier: MIT
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <new>

namespace opc {

/// Blocks of at least this size get their memory in advance; see prefault().
inline constexpr std::size_t kLargeBlock = std::size_t{1} << 18;

/// The size and alignment of a huge page, if the system supports them.
inline constexpr std::size_t kLargePage = std::size_t{2} << 20;

/// The alignment of a block of `size` bytes. Blocks of at least kLargePage can use huge pages.
constexpr std::align_val_t blockAlignment(std::size_t size) {
  return std::align_val_t{size >= kLargePage ? kLargePage : alignof(std::max_align_t)};
}

/// Tells the kernel with madvise() that the whole block is about to be written. If the kernel
/// supports this, it provides the memory at once and in huge pages, which takes a fraction of the
/// time of separate page faults. Does nothing for blocks smaller than kLargeBlock.
inline void prefault(void* block, std::size_t size) noexcept {
  if (size < kLargeBlock) return;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t skipped = (page - reinterpret_cast<std::uintptr_t>(block) % page) % page;
  const std::size_t whole = (size - skipped) / page * page;
  char* const begin = static_cast<char*>(block) + skipped;
#ifdef MADV_HUGEPAGE
  ::madvise(begin, whole, MADV_HUGEPAGE);
#endif
#ifdef MADV_POPULATE_WRITE
  ::madvise(begin, whole, MADV_POPULATE_WRITE);
#endif
}

/// Allocates memory that the caller is about to write completely, and releases with freeBlock().
/// Throws std::bad_alloc.
inline void* allocateBlock(std::size_t size) {
  void* const block = ::operator new(size, blockAlignment(size));
  prefault(block, size);
  return block;
}
inline void freeBlock(void* block, std::size_t size) noexcept {
  ::operator delete(block, blockAlignment(size));
}

/// An allocator for vectors that are filled as soon as their memory is allocated.
template <typename T>
struct LargeBlockAllocator {
  using value_type = T;

  LargeBlockAllocator() = default;
  template <typename U>
  // Allocators convert by nature. NOLINTNEXTLINE(google-explicit-constructor)
  LargeBlockAllocator(const LargeBlockAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) {
    if (count > SIZE_MAX / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(allocateBlock(count * sizeof(T)));
  }
  void deallocate(T* block, std::size_t count) noexcept { freeBlock(block, count * sizeof(T)); }

  template <typename U>
  bool operator==(const LargeBlockAllocator<U>&) const noexcept {
    return true;
  }
};

}  // namespace opc
