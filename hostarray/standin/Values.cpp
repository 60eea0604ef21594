// SPDX-License-Identifier: MIT
// Arrays of plain values: text and numbers.
#include <array>
#include <cstring>
#include <string>

#include "hostarray/standin/Array.h"
#include "hostarray/standin/Raise.h"

using hostarray::standin::allocate;
using hostarray::standin::create;
using hostarray::standin::raise;
using hostarray::standin::require;
using hostarray::standin::toSizes;
using hostarray::standin::TreePointer;

kxArray* kxCreateString_UTF16(const char16_t* text) {
  if (text == nullptr) raise("badArgument", "The text of a char array is missing.");
  const std::size_t length = std::char_traits<char16_t>::length(text);
  return create([&] {
    const std::array<std::size_t, 2> sizes{1, length};
    TreePointer array = allocate(kxCHAR_CLASS, sizes);
    std::memcpy(array->memory.get(), text, length * sizeof(char16_t));
    return array;
  });
}

kxArray* kxCreateCharArray(std::size_t dimensions, const std::size_t* sizes) {
  return create([&] { return allocate(kxCHAR_CLASS, toSizes(dimensions, sizes)); });
}

char16_t* kxGetChars(kxArray* array) {
  return static_cast<char16_t*>(require(array, kxCHAR_CLASS).memory.get());
}

const char16_t* kxGetConstChars(const kxArray* array) {
  return static_cast<const char16_t*>(require(array, kxCHAR_CLASS).memory.get());
}

kxArray* kxCreateDoubleScalar(double value) {
  return create([&] {
    const std::array<std::size_t, 2> sizes{1, 1};
    TreePointer array = allocate(kxDOUBLE_CLASS, sizes);
    *static_cast<double*>(array->memory.get()) = value;
    return array;
  });
}

kxArray* kxCreateDoubleArray(std::size_t dimensions, const std::size_t* sizes) {
  return create([&] { return allocate(kxDOUBLE_CLASS, toSizes(dimensions, sizes)); });
}

double* kxGetDoubles(kxArray* array) {
  return static_cast<double*>(require(array, kxDOUBLE_CLASS).memory.get());
}

const double* kxGetConstDoubles(const kxArray* array) {
  return static_cast<const double*>(require(array, kxDOUBLE_CLASS).memory.get());
}
