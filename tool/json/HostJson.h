// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string_view>

#include "hostarray/kxarray.h"
#include "text/JsonText.h"
#include "text/JsonWriter.h"

namespace tool::json {

using text::JsonError;
using text::JsonValue;

struct HostArrayDeleter {
  void operator()(kxArray* array) const { kxDestroyArray(array); }
};
using HostArrayPointer = std::unique_ptr<kxArray, HostArrayDeleter>;

/// The member of an object that names the class of an array.
inline constexpr std::string_view kClassKey = "$class";

/// A char array with one row.
HostArrayPointer toHostText(std::u16string_view text);

/// Converts a JSON value to a host array: a text, a number, true and false (as words), an object
/// (to a struct), an array of objects (to a struct array), any other array (to a cell array), or an
/// object with a "$class", which gives class, size and elements explicitly. Throws JsonError, which
/// names the place in the value, and errors of the host.
HostArrayPointer toHostArray(const JsonValue& value);

/// The inverse: the short form if it converts back to the same array, else the "$class" form.
/// `array` must not be null. Throws JsonError if arrays are nested deeper than text::kMaxJsonDepth.
void writeHostArray(const kxArray* array, text::JsonWriter& writer);

}  // namespace tool::json
