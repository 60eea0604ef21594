// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace opc::interfaces {

/// The content of an item, as the headers of its container describe it.
struct PackedContent {
  std::uint64_t size = 0;
  std::uint64_t packedSize = 0;
  std::uint32_t crc = 0;
  std::uint16_t method = 0;

  bool operator==(const PackedContent&) const = default;
};

/// What a commit learns of the contents of new items, so that a check of the new file need not
/// unpack them again.
class PackedContents {
 public:
  /// Looks at the whole content of an item. Several threads may call it.
  using Test = std::function<bool(std::span<const unsigned char> content)>;

  /// `test` must not be empty.
  explicit PackedContents(Test test) : test_(std::move(test)) {}

  const Test& test() const { return test_; }

  /// A commit has packed this in memory for the item `number` of its directory.
  void add(std::size_t number, const PackedContent& content, bool hasPassed) {
    if (known_.size() <= number) known_.resize(number + 1);
    known_[number] = {content, true, hasPassed};
  }

  /// Whether the commit has packed just this for the item.
  bool has(std::size_t number, const PackedContent& content) const {
    return number < known_.size() && known_[number].isThere && known_[number].content == content;
  }
  /// Of an item that it has: what the test returned.
  bool hasPassed(std::size_t number) const { return known_[number].hasPassed; }

 private:
  struct Known {
    PackedContent content;
    bool isThere = false;
    bool hasPassed = false;
  };

  Test test_;
  std::vector<Known> known_;
};

}  // namespace opc::interfaces
