// SPDX-License-Identifier: MIT
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <new>

namespace opc {

/// Tells the system that all of a block is about to be written. Where it knows how to, it then
/// provides the memory at once, which takes a fraction of the time that it takes page by page.
inline void announceWriting(void* block, std::size_t size) noexcept {
#ifdef MADV_POPULATE_WRITE
  constexpr std::size_t kWorthIt = std::size_t{1} << 20;
  if (size < kWorthIt) return;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t skipped = (page - reinterpret_cast<std::uintptr_t>(block) % page) % page;
  const std::size_t whole = (size - skipped) / page * page;
  ::madvise(static_cast<char*>(block) + skipped, whole, MADV_POPULATE_WRITE);
#else
  static_cast<void>(block);
  static_cast<void>(size);
#endif
}

/// For vectors that are filled as soon as they have their memory.
template <typename T>
struct LargeBlockAllocator {
  using value_type = T;

  LargeBlockAllocator() = default;
  template <typename U>
  // Allocators convert by nature. NOLINTNEXTLINE(google-explicit-constructor)
  LargeBlockAllocator(const LargeBlockAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) {
    if (count > SIZE_MAX / sizeof(T)) throw std::bad_array_new_length();
    void* block = ::operator new(count * sizeof(T));
    announceWriting(block, count * sizeof(T));
    return static_cast<T*>(block);
  }
  void deallocate(T* block, std::size_t) noexcept { ::operator delete(block); }

  template <typename U>
  bool operator==(const LargeBlockAllocator<U>&) const noexcept {
    return true;
  }
};

}  // namespace opc
