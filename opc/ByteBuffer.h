// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <span>

#include "opc/LargeBlocks.h"

namespace opc {

/// A reusable block of bytes that, unlike a vector, does not clear what is about to be overwritten.
class ByteBuffer {
 public:
  ByteBuffer() = default;
  /// Begins with memory of the caller's, which must outlive it; what needs more gets other memory.
  explicit ByteBuffer(std::span<unsigned char> lent) noexcept
      : bytes_(lent.data(), Free{lent.size(), true}), capacity_(lent.size()) {}

  unsigned char* data() noexcept { return bytes_.get(); }
  const unsigned char* data() const noexcept { return bytes_.get(); }
  std::size_t size() const noexcept { return size_; }
  std::span<const unsigned char> bytes() const noexcept { return {bytes_.get(), size_}; }

  /// Makes it `size` bytes of unspecified content. Memory is kept for the next use.
  void resizeForOverwrite(std::size_t size) {
    if (size > capacity_) {
      clear();  // the old block need not live beside the new one
      bytes_ = Block(static_cast<unsigned char*>(::operator new(size, blockAlignment(size))),
                     Free{size, false});
      capacity_ = size;
    }
    size_ = size;
  }

  /// Gives the memory back.
  void clear() noexcept {
    bytes_.reset();
    size_ = capacity_ = 0;
  }

 private:
  struct Free {
    std::size_t size;
    bool isLent;
    void operator()(unsigned char* block) const noexcept {
      if (!isLent) freeBlock(block, size);
    }
  };
  using Block = std::unique_ptr<unsigned char[], Free>;

  Block bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace opc
