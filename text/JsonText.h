// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace text {

using JsonValue = nlohmann::ordered_json;

/// Text that is not JSON, or JSON that is not accepted. The message says where and why.
class JsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// How deep arrays and objects may be nested.
inline constexpr std::size_t kMaxJsonDepth = 256;

/// Parses a text with one JSON value; members keep their order. Throws JsonError for anything else,
/// for a member given twice (".a[2].b: it is given twice"), for values nested too deep, and for a
/// number out of the range of double.
JsonValue parseJson(std::string_view text);

/// The same, but returns nothing if the text is not JSON.
std::optional<JsonValue> parseJsonIfAny(std::string_view text);

/// The number of a value that was parsed; nothing if it is not a whole number from 0 to 2^64 - 1.
std::optional<std::uint64_t> wholeNumber(const JsonValue& value);

}  // namespace text
