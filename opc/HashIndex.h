// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "opc/LargeBlocks.h"

namespace opc {

/// Values by hashes, in one block of memory, with linear probing. Equality is the caller's, so that
/// what is looked up need not be built in the form in which it was stored. Only 32 bits of a hash
/// are kept, which makes a slot of a number 8 bytes: with many values, memory is what takes time.
template <typename Value>
class HashIndex {
 public:
  /// Makes room for `count` values.
  void reserve(std::size_t count) {
    if (count <= slots_.size() / 4 * 3) return;
    std::size_t slots = 16;
    while (slots / 4 * 3 < count) slots *= 2;
    rehash(slots);
  }

  std::size_t size() const { return size_; }

  /// Loads the memory that `find` and `insert` will read into the cache. (GCC drops calls of a
  /// function that only does this, unless it inlines them first.)
  [[gnu::always_inline]] void prefetch(std::uint64_t hash) const {
    if (!slots_.empty()) __builtin_prefetch(&slots_[fold(hash) & (slots_.size() - 1)]);
  }

  /// The value stored under `hash` for which `equals` holds, or null. Valid until the next change.
  template <typename Equals>
  Value* find(std::uint64_t hash, const Equals& equals) {
    const std::size_t at = locate(fold(hash), equals);
    return at == kNone ? nullptr : &slots_[at].value;
  }
  template <typename Equals>
  const Value* find(std::uint64_t hash, const Equals& equals) const {
    const std::size_t at = locate(fold(hash), equals);
    return at == kNone ? nullptr : &slots_[at].value;
  }

  /// Adds a value that is not there yet.
  Value& insert(std::uint64_t hash, Value value) {
    reserve(size_ + 1);
    const std::size_t at = place(fold(hash), std::move(value));
    ++size_;
    return slots_[at].value;
  }

  /// The value stored under `hash` for which `equals` holds, or null once `value` has been added.
  template <typename Equals>
  const Value* findOrInsert(std::uint64_t hash, Value value, const Equals& equals) {
    reserve(size_ + 1);
    const std::uint32_t folded = fold(hash);
    std::size_t at = folded & (slots_.size() - 1);
    for (; slots_[at].hash != 0; at = next(at)) {
      if (slots_[at].hash == folded && equals(slots_[at].value)) return &slots_[at].value;
    }
    slots_[at].hash = folded;
    slots_[at].value = std::move(value);
    ++size_;
    return nullptr;
  }

  template <typename Equals>
  void erase(std::uint64_t hash, const Equals& equals) {
    std::size_t hole = locate(fold(hash), equals);
    if (hole == kNone) return;
    --size_;
    // Whatever was pushed past the hole moves back, so that no probe ends too early.
    for (std::size_t at = next(hole); slots_[at].hash != 0; at = next(at)) {
      const std::size_t home = slots_[at].hash & (slots_.size() - 1);
      const std::size_t fromHome = (at - home) & (slots_.size() - 1);
      const std::size_t fromHole = (at - hole) & (slots_.size() - 1);
      if (fromHome < fromHole) continue;
      slots_[hole] = std::move(slots_[at]);
      hole = at;
    }
    slots_[hole] = Slot();
  }

  /// Calls `visit` with a hash that finds the value, and the value.
  template <typename Visit>
  void forEach(const Visit& visit) const {
    for (const Slot& slot : slots_) {
      if (slot.hash != 0) visit(slot.hash, slot.value);
    }
  }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  struct Slot {
    std::uint32_t hash = 0;  // 0: free
    Value value{};
  };

  using Slots = std::vector<Slot, LargeBlockAllocator<Slot>>;

  // Never 0. What was folded once stays as it is.
  static std::uint32_t fold(std::uint64_t hash) {
    const auto folded = static_cast<std::uint32_t>(hash ^ (hash >> 32));
    return folded == 0 ? 1 : folded;
  }
  std::size_t next(std::size_t at) const { return (at + 1) & (slots_.size() - 1); }

  template <typename Equals>
  std::size_t locate(std::uint32_t hash, const Equals& equals) const {
    if (slots_.empty()) return kNone;
    for (std::size_t at = hash & (slots_.size() - 1); slots_[at].hash != 0; at = next(at)) {
      if (slots_[at].hash == hash && equals(slots_[at].value)) return at;
    }
    return kNone;
  }

  std::size_t place(std::uint32_t hash, Value value) {
    std::size_t at = hash & (slots_.size() - 1);
    while (slots_[at].hash != 0) at = next(at);
    slots_[at].hash = hash;
    slots_[at].value = std::move(value);
    return at;
  }

  void rehash(std::size_t slots) {
    Slots old(slots);
    old.swap(slots_);
    for (Slot& slot : old) {
      if (slot.hash != 0) place(slot.hash, std::move(slot.value));
    }
  }

  Slots slots_;
  std::size_t size_ = 0;
};

}  // namespace opc
