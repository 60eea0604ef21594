// SPDX-License-Identifier: MIT
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

namespace test {

/// A copy of a text whose last byte is the last of a page, and the page behind cannot be read: what
/// reads beyond the text ends the program. It has no terminator.
class TextBeforeNothing {
 public:
  explicit TextBeforeNothing(std::string_view text) : size_(text.size()) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t readable = (size_ + page - 1) / page * page;
    mapped_ = readable + page;
    void* memory =
        ::mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    memory_ = static_cast<char*>(memory);
    text_ = memory_ + (readable - size_);
    if (!text.empty()) std::memcpy(text_, text.data(), size_);
    if (::mprotect(memory_ + readable, page, PROT_NONE) == 0) return;
    ::munmap(memory_, mapped_);
    throw std::bad_alloc();
  }
  ~TextBeforeNothing() { ::munmap(memory_, mapped_); }
  TextBeforeNothing(const TextBeforeNothing&) = delete;
  TextBeforeNothing& operator=(const TextBeforeNothing&) = delete;

  std::string_view view() const { return {text_, size_}; }

 private:
  std::size_t size_;
  std::size_t mapped_ = 0;
  char* memory_ = nullptr;
  char* text_ = nullptr;
};

}  // namespace test
