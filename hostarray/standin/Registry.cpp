// SPDX-License-Identifier: MIT
#include "hostarray/standin/Registry.h"

#include "hostarray/standin/Array.h"
#include "hostarray/standin/Raise.h"
#include "hostarray/standin/testing.h"

namespace hostarray::standin {

constinit thread_local CallScope* Registry::innermost = nullptr;
constinit thread_local std::size_t Registry::untilFailure = 0;

void Registry::adopt(kxArray& array) noexcept {
  if (innermost == nullptr) return;
  kxArray*& first = innermost->arrays_;
  array.next = first;
  array.link = &first;
  if (first != nullptr) first->link = &array.next;
  first = &array;
}

void Registry::unlink(kxArray& array) noexcept {
  if (array.link == nullptr) return;
  *array.link = array.next;
  if (array.next != nullptr) array.next->link = array.link;
  array.next = nullptr;
  array.link = nullptr;
}

bool Registry::isCreationToFail() noexcept {
  if (untilFailure == 0) return false;
  return --untilFailure == 0;
}

void Registry::clear(CallScope& scope) noexcept {
  while (scope.arrays_ != nullptr) {
    kxArray* array = scope.arrays_;
    unlink(*array);
    const TreePointer dying(array);
  }
}

void Registry::remove(const CallScope& scope) noexcept {
  // Scopes normally end innermost first; one that does not must leave no dangling pointer.
  CallScope** place = &innermost;
  while (*place != nullptr && *place != &scope) place = &(*place)->outer_;
  if (*place != nullptr) *place = scope.outer_;
}

CallScope::CallScope() : outer_(Registry::innermost) {
  Registry::innermost = this;
}

CallScope::~CallScope() {
  Registry::clear(*this);
  Registry::remove(*this);
}

kxArray* CallScope::keep(kxArray* array) {
  if (array == nullptr) return nullptr;
  if (array->owner != nullptr) {
    raise("badArgument", "An array that is stored in another array belongs to that one.");
  }
  Registry::unlink(*array);
  array->temporary = false;
  return array;
}

std::size_t CallScope::unowned() const {
  std::size_t count = 0;
  for (const kxArray* array = arrays_; array != nullptr; array = array->next) {
    if (!array->temporary) ++count;
  }
  return count;
}

std::size_t liveArrays() noexcept {
  return liveArrayCount;
}

void failCreation(std::size_t n) noexcept {
  Registry::untilFailure = n;
}

}  // namespace hostarray::standin
