// SPDX-License-Identifier: MIT
#include "hostarray/standin/Array.h"

#include <limits>
#include <new>
#include <string>
#include <utility>

#include "hostarray/standin/Raise.h"
#include "hostarray/standin/Registry.h"

namespace hostarray::standin {

std::atomic<std::size_t> liveArrayCount = 0;

namespace {

/// Beyond any memory that a machine of today has: refused before the system is asked.
constexpr std::size_t kMaxBytes = std::size_t{1} << 40;

[[noreturn]] void raiseOutOfMemory() {
  raise("outOfMemory", "There is not enough memory for an array of this size.");
}

std::size_t multiply(std::size_t a, std::size_t b) {
  std::size_t product = 0;
  if (__builtin_mul_overflow(a, b, &product)) raiseOutOfMemory();
  return product;
}

/// A zero anywhere makes the array empty, whatever the other sizes come to.
std::size_t countElements(const std::vector<std::size_t>& sizes) {
  std::size_t count = 1;
  for (const std::size_t size : sizes) {
    if (size == 0) return 0;
  }
  for (const std::size_t size : sizes) count = multiply(count, size);
  return count;
}

std::size_t slotSize(kxClass kind) {
  switch (kind) {
    case kxCHAR_CLASS:
      return sizeof(char16_t);
    case kxDOUBLE_CLASS:
      return sizeof(double);
    default:
      return sizeof(kxArray*);
  }
}

struct ClassName {
  const char* article;
  const char* error;
};

ClassName nameOf(kxClass kind) {
  switch (kind) {
    case kxSTRUCT_CLASS:
      return {"a struct", "notStruct"};
    case kxCELL_CLASS:
      return {"a cell array", "notCell"};
    case kxCHAR_CLASS:
      return {"text", "notText"};
    default:
      return {"a number", "notDouble"};
  }
}

/// A value without owner and without children can hold nothing, so that only a filled one is
/// looked for among the owners of the container.
bool holdsAnything(const kxArray& value) {
  for (const kxArray* child : value.children()) {
    if (child != nullptr) return true;
  }
  return false;
}

void requireStorable(const kxArray& container, const kxArray& value) {
  if (value.owner != nullptr) {
    raise("badArgument", "The array is already stored in another array.");
  }
  const kxArray* above = holdsAnything(value) ? &container : nullptr;
  for (; above != nullptr; above = above->owner) {
    if (above == &value) break;
  }
  if (above != nullptr || &value == &container) {
    raise("badArgument", "An array cannot be stored inside itself.");
  }
}

}  // namespace

void TreeDeleter::operator()(kxArray* root) const noexcept {
  // Arrays in a tree are in no list, so that their links can chain those that wait.
  root->next = nullptr;
  while (root != nullptr) {
    const std::unique_ptr<kxArray> dying(root);
    root = dying->next;
    for (kxArray* child : dying->children()) {
      if (child == nullptr) continue;
      child->next = root;
      root = child;
    }
  }
}

TreePointer allocate(kxClass kind, std::span<const std::size_t> sizes,
                     std::shared_ptr<const FieldNames> fields) {
  TreePointer array(std::make_unique<kxArray>(kind).release());
  if (sizes.size() == 1) array->sizes.push_back(1);
  array->sizes.insert(array->sizes.end(), sizes.begin(), sizes.end());
  array->count = countElements(array->sizes);
  const std::size_t slots = fields ? multiply(array->count, fields->size()) : array->count;
  // One slot more: text that ends with a zero, and memory even for an empty array.
  const std::size_t bytes = multiply(slots == SIZE_MAX ? slots : slots + 1, slotSize(kind));
  if (bytes > kMaxBytes) raiseOutOfMemory();
  // NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
  array->memory.reset(std::calloc(bytes, 1));
  if (!array->memory) raiseOutOfMemory();
  array->slots = slots;
  array->fields = std::move(fields);
  return array;
}

kxArray* create(TreePointer (*make)(const void*), const void* arguments, bool temporary) {
  if (Registry::isCreationToFail()) raiseOutOfMemory();
  try {
    kxArray* array = make(arguments).release();
    array->temporary = temporary;
    Registry::adopt(*array);
    return array;
  } catch (const std::bad_alloc&) {
    raiseOutOfMemory();
  }
}

std::span<const std::size_t> toSizes(std::size_t dimensions, const std::size_t* sizes) {
  if (dimensions == 0 || sizes == nullptr) {
    raise("badArgument", "An array needs at least one dimension.");
  }
  return {sizes, dimensions};
}

const kxArray& require(const kxArray* array) {
  if (array == nullptr) raise("missingValue", "A value is missing.");
  return *array;
}

const kxArray& require(const kxArray* array, kxClass kind) {
  if (require(array).klass == kind) return *array;
  const ClassName wanted = nameOf(kind);
  raise(wanted.error, std::string(nameOf(array->klass).article) + " was given where " +
                          wanted.article + " is needed.");
}

void requireElement(const kxArray& array, std::size_t index) {
  if (index < array.count) return;
  raise("indexOutOfRange", "Element " + std::to_string(index) + " does not exist in an array of " +
                               std::to_string(array.count) + ".");
}

void store(kxArray& container, std::size_t slot, kxArray* value) {
  kxArray*& place = container.children()[slot];
  if (place == value) return;
  if (value != nullptr) {
    requireStorable(container, *value);
    Registry::unlink(*value);
    value->owner = &container;
  }
  const TreePointer old(std::exchange(place, value));
}

}  // namespace hostarray::standin

using hostarray::standin::raise;
using hostarray::standin::Registry;
using hostarray::standin::require;

kxClass kxGetClass(const kxArray* array) {
  return require(array).klass;
}

bool kxIsStruct(const kxArray* array) {
  return require(array).klass == kxSTRUCT_CLASS;
}

bool kxIsCell(const kxArray* array) {
  return require(array).klass == kxCELL_CLASS;
}

bool kxIsChar(const kxArray* array) {
  return require(array).klass == kxCHAR_CLASS;
}

bool kxIsDouble(const kxArray* array) {
  return require(array).klass == kxDOUBLE_CLASS;
}

std::size_t kxGetNumberOfDimensions(const kxArray* array) {
  return require(array).sizes.size();
}

const std::size_t* kxGetDimensions(const kxArray* array) {
  return require(array).sizes.data();
}

std::size_t kxGetNumberOfElements(const kxArray* array) {
  return require(array).count;
}

bool kxIsEmpty(const kxArray* array) {
  return require(array).count == 0;
}

void kxDestroyArray(kxArray* array) {
  if (array == nullptr) return;
  if (array->owner != nullptr) {
    raise("badArgument", "An array that is stored in another array cannot be destroyed.");
  }
  Registry::unlink(*array);
  const hostarray::standin::TreePointer dying(array);
}
