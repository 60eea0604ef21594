// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace tool::json {

using JsonValue = nlohmann::ordered_json;

/// Text that is no JSON, or JSON that is not taken; says where and why.
class JsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// How deep arrays and objects may lie in each other.
inline constexpr std::size_t kMaxJsonDepth = 256;

/// The one JSON value that `text` is, members in the order written. Throws JsonError for anything
/// else, for a member given twice (".a[2].b: it is there twice"), for values too deep in each other
/// and for a number beyond what a double holds.
JsonValue parseJson(std::string_view text);

/// The same, but nothing for text that is no JSON at all.
std::optional<JsonValue> parseJsonIfAny(std::string_view text);

}  // namespace tool::json
