// SPDX-License-Identifier: MIT
// Indexing: array(k) and array(i, j, ...), and the copies that it makes.
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "hostarray/standin/Array.h"
#include "hostarray/standin/Raise.h"

namespace hostarray::standin {

namespace {

/// A container whose children are still to be copied.
struct Pending {
  const kxArray* from;
  kxArray* to;
};

/// Fills all slots of `to` from those of `from` that begin at slot `first`. Children come over
/// without what they hold; that is left in `pending`, so that no depth of nesting recurses.
void copySlots(const kxArray& from, std::size_t first, kxArray& to, std::vector<Pending>& pending) {
  if (!from.isContainer()) {
    const std::size_t size = from.klass == kxCHAR_CLASS ? sizeof(char16_t) : sizeof(double);
    const auto* begin = static_cast<const unsigned char*>(from.memory.get()) + first * size;
    std::memcpy(to.memory.get(), begin, to.slots * size);
    return;
  }
  for (std::size_t slot = 0; slot < to.slots; ++slot) {
    const kxArray* child = from.children()[first + slot];
    if (child == nullptr) continue;
    TreePointer copy = allocate(child->klass, child->sizes, child->fields);
    copy->owner = &to;
    pending.push_back({child, copy.get()});
    to.children()[slot] = copy.release();
  }
}

std::size_t toIndex(const kxArray* subscript, std::size_t extent) {
  const kxArray& number = require(subscript, kxDOUBLE_CLASS);
  if (number.count != 1) raise("badArgument", "A subscript must be a single number.");
  const double value = *kxGetConstDoubles(subscript);
  // Written so that NaN fails too. Whole numbers of an extent are exact in a double: no array has
  // more than 2^40 elements.
  if (!(value >= 1.0 && value <= static_cast<double>(extent)) || value != std::floor(value)) {
    raise("indexOutOfRange",
          "A subscript must be a whole number from 1 to " + std::to_string(extent) + ".");
  }
  return static_cast<std::size_t>(value) - 1;
}

/// The extent that subscript `position` of `count` runs over: the last one runs over all dimensions
/// that are left, and those beyond the dimensions can only be 1.
std::size_t extentAt(const kxArray& array, std::size_t position, std::size_t count) {
  if (position >= array.sizes.size()) return 1;
  if (position + 1 < count) return array.sizes[position];
  std::size_t extent = 1;
  for (std::size_t d = position; d < array.sizes.size(); ++d) extent *= array.sizes[d];
  return extent;
}

std::size_t toLinearIndex(const kxArray& array, std::size_t count, kxArray* const* subscripts) {
  if (count == 0 || subscripts == nullptr) raise("badArgument", "A subscript is missing.");
  std::size_t index = 0;
  std::size_t stride = 1;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t extent = array.count == 0 ? 0 : extentAt(array, i, count);
    index += toIndex(subscripts[i], extent) * stride;
    stride *= extent;
  }
  return index;
}

}  // namespace

TreePointer copyElement(const kxArray& from, std::size_t index) {
  const std::array<std::size_t, 2> sizes{1, 1};
  TreePointer result = allocate(from.klass, sizes, from.fields);
  std::vector<Pending> pending;
  copySlots(from, index * result->slots, *result, pending);
  while (!pending.empty()) {
    const Pending next = pending.back();
    pending.pop_back();
    copySlots(*next.from, 0, *next.to, pending);
  }
  return result;
}

}  // namespace hostarray::standin

kxArray* kxSubscriptedReference(const kxArray* array, std::size_t count,
                                kxArray* const* subscripts) {
  using hostarray::standin::copyElement;
  using hostarray::standin::create;
  const kxArray& from = hostarray::standin::require(array);
  const std::size_t index = hostarray::standin::toLinearIndex(from, count, subscripts);
  return create([&] { return copyElement(from, index); }, true);
}
