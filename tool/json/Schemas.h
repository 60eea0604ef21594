// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string_view>

namespace tool::json {

/// A JSON Schema (2020-12) of something that the program reads or prints.
struct Schema {
  std::string_view name;
  std::string_view text;
};

/// The manifest, the outputs of --json, and the documents.
std::span<const Schema> schemas();

}  // namespace tool::json
