// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

#include "hostarray/kxarray.h"
#include "hostarray/standin/FieldNames.h"

namespace hostarray::standin {

struct MemoryDeleter {
  // calloc and free: the pages of a large array cost nothing before they are written to.
  // NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
  void operator()(void* memory) const noexcept { std::free(memory); }
};

extern std::atomic<std::size_t> liveArrayCount;

}  // namespace hostarray::standin

/// An array. Its slots are its elements, or for a struct the fields of all elements, element by
/// element. A slot holds a char16_t, a double, or an owned array or null.
struct kxArray {
  explicit kxArray(kxClass kind) : klass(kind) { ++hostarray::standin::liveArrayCount; }
  ~kxArray() { --hostarray::standin::liveArrayCount; }
  kxArray(const kxArray&) = delete;
  kxArray& operator=(const kxArray&) = delete;

  bool isContainer() const { return klass == kxSTRUCT_CLASS || klass == kxCELL_CLASS; }
  std::span<kxArray*> children() const {
    return {static_cast<kxArray**>(memory.get()), isContainer() ? slots : 0};
  }

  kxClass klass;
  bool temporary = false;          // made by kxSubscriptedReference
  std::vector<std::size_t> sizes;  // two or more
  std::size_t count = 0;           // elements
  std::size_t slots = 0;
  std::unique_ptr<void, hostarray::standin::MemoryDeleter> memory;
  std::shared_ptr<const hostarray::standin::FieldNames> fields;  // of a struct
  kxArray* owner = nullptr;                                      // the container it is stored in

  // Place in the list of the call scope that frees it; an array with an owner is in none.
  kxArray* next = nullptr;
  kxArray** link = nullptr;
};

namespace hostarray::standin {

/// Frees an array, which must be in no list, with all that it holds; not recursive.
struct TreeDeleter {
  void operator()(kxArray* root) const noexcept;
};
using TreePointer = std::unique_ptr<kxArray, TreeDeleter>;

/// A new array with all slots zero; `fields` is for structs. Raises Korvan:badArgument and
/// Korvan:outOfMemory.
TreePointer allocate(kxClass kind, std::span<const std::size_t> sizes,
                     std::shared_ptr<const FieldNames> fields = nullptr);

/// One creation as the host counts them: fails when it is due to, else hands the array that `make`
/// returns to the current call scope.
kxArray* create(TreePointer (*make)(const void* arguments), const void* arguments,
                bool temporary = false);

template <typename Make>
kxArray* create(const Make& make, bool temporary = false) {
  return create([](const void* f) { return (*static_cast<const Make*>(f))(); }, &make, temporary);
}

/// The caller's sizes as a list.
std::span<const std::size_t> toSizes(std::size_t dimensions, const std::size_t* sizes);

/// The array, or a host error: Korvan:missingValue for null; notStruct, notCell, notText or
/// notDouble for another class.
const kxArray& require(const kxArray* array);
const kxArray& require(const kxArray* array, kxClass kind);

/// Raises Korvan:indexOutOfRange unless the array has an element `index`.
void requireElement(const kxArray& array, std::size_t index);

/// Puts `value` (or null) into a slot of a container, whose old value is destroyed.
void store(kxArray& container, std::size_t slot, kxArray* value);

/// A 1-by-1 copy of one element, with all that it holds.
TreePointer copyElement(const kxArray& from, std::size_t index);

}  // namespace hostarray::standin
