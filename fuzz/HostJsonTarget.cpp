// SPDX-License-Identifier: MIT
// The JSON of host arrays: what is read as an array is written, and reads back as the same array.
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

#include "fuzz/Require.h"
#include "hostarray/matrix.h"
#include "hostarray/standin/CallScope.h"
#include "hostarray/standin/testing.h"
#include "tool/json/HostJson.h"

namespace {

using fuzz::require;

bool isSame(const kxArray* a, const kxArray* b);

bool haveSameShape(const kxArray* a, const kxArray* b) {
  const std::size_t dimensions = kxGetNumberOfDimensions(a);
  return dimensions == kxGetNumberOfDimensions(b) &&
         std::equal(kxGetDimensions(a), kxGetDimensions(a) + dimensions, kxGetDimensions(b));
}

bool haveSameNumbers(const kxArray* a, const kxArray* b) {
  for (std::size_t i = 0; i < kxGetNumberOfElements(a); ++i) {
    const double x = kxGetConstDoubles(a)[i];
    const double y = kxGetConstDoubles(b)[i];
    if (std::isnan(x) ? !std::isnan(y) : std::memcmp(&x, &y, sizeof x) != 0) return false;
  }
  return true;
}

bool haveSameFields(const kxArray* a, const kxArray* b) {
  if (kxGetNumberOfFields(a) != kxGetNumberOfFields(b)) return false;
  for (std::size_t field = 0; field < kxGetNumberOfFields(a); ++field) {
    const char* name = kxGetFieldName(a, field);
    if (std::strcmp(name, kxGetFieldName(b, field)) != 0) return false;
    for (std::size_t i = 0; i < kxGetNumberOfElements(a); ++i) {
      if (!isSame(kxGetField(a, i, name), kxGetField(b, i, name))) return false;
    }
  }
  return true;
}

bool haveSameCells(const kxArray* a, const kxArray* b) {
  for (std::size_t i = 0; i < kxGetNumberOfElements(a); ++i) {
    if (!isSame(kxGetCell(a, i), kxGetCell(b, i))) return false;
  }
  return true;
}

// As deep as the arrays; the reader limits their levels.
bool isSame(const kxArray* a, const kxArray* b) {
  if (a == nullptr || b == nullptr) return a == b;
  if (kxGetClass(a) != kxGetClass(b) || !haveSameShape(a, b)) return false;
  const std::size_t count = kxGetNumberOfElements(a);
  switch (kxGetClass(a)) {
    case kxSTRUCT_CLASS:
      return haveSameFields(a, b);
    case kxCELL_CLASS:
      return haveSameCells(a, b);
    case kxDOUBLE_CLASS:
      return haveSameNumbers(a, b);
    case kxCHAR_CLASS:
      return std::equal(kxGetConstChars(a), kxGetConstChars(a) + count, kxGetConstChars(b));
  }
  return false;
}

// Null if the reader or the host refuses the input.
tool::json::HostArrayPointer read(std::string_view text) {
  tool::json::HostArrayPointer array;
  try {
    fuzz::isAccepted([&] { array = tool::json::toHostArray(text::parseJson(text)); });
  } catch (const text::JsonError& refusal) {
    require(*refusal.what() != '\0', "a refusal says why");
  } catch (const matrix::HostError& refusal) {
    require(refusal.identifier().starts_with("Korvan:"), "the host's errors have a name");
  }
  return array;
}

std::string write(const kxArray* array, text::JsonWriter::Layout layout) {
  std::string text;
  text::JsonWriter writer(text, layout);
  tool::json::writeHostArray(array, writer);
  return text;
}

void checkRoundTrip(const kxArray* array) {
  using Layout = text::JsonWriter::Layout;
  const std::string text = write(array, Layout::Compact);
  const tool::json::HostArrayPointer again = read(text);
  require(isSame(again.get(), array), "an array reads back the same");
  require(write(again.get(), Layout::Compact) == text, "equal arrays give equal text");
  const tool::json::HostArrayPointer other = read(write(array, Layout::Indented));
  require(isSame(other.get(), array), "blanks mean nothing");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  {
    const hostarray::standin::CallScope scope;
    const tool::json::HostArrayPointer array = read(fuzz::textOf(data, size));
    if (array) checkRoundTrip(array.get());
    require(scope.unowned() == (array ? 1 : 0), "no array is left behind");
  }
  require(hostarray::standin::liveArrays() == 0, "all arrays are gone");
  return 0;
}
