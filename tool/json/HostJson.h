// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string_view>

#include "hostarray/kxarray.h"
#include "text/JsonWriter.h"
#include "tool/json/JsonText.h"

namespace tool::json {

struct HostArrayDeleter {
  void operator()(kxArray* array) const { kxDestroyArray(array); }
};
using HostArrayPointer = std::unique_ptr<kxArray, HostArrayDeleter>;

/// A char array of one row.
HostArrayPointer toHostText(std::u16string_view text);

/// The host array that a JSON value stands for: a text, a number, true and false (as the word), an
/// object (a struct), an array of objects (a struct array), any other array (a cell array), or an
/// object with a "$class", which says class, size and elements outright.
/// Throws JsonError, which names the place in the value, and what the host raises.
HostArrayPointer toHostArray(const JsonValue& value);

/// The way back: the short form where it reads back the same, else the "$class" form. `array` is
/// not null. Throws JsonError for arrays more than kMaxJsonDepth deep in each other.
void writeHostArray(const kxArray* array, text::JsonWriter& writer);

}  // namespace tool::json
