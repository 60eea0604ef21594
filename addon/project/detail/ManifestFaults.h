// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "addon/project/Manifest.h"
#include "opc/Text.h"

namespace addon::project::detail {

/// Keeps the first error by position, since tables are sorted by key.
class Faults {
 public:
  bool isEarlier(Position position) const { return why_.empty() || position < position_; }
  void add(Position position, std::string why) {
    if (!isEarlier(position)) return;
    position_ = position;
    why_ = std::move(why);
  }
  void raise() const {
    if (!why_.empty()) throw ManifestError(position_, why_);
  }

 private:
  Position position_;
  std::string why_;
};

/// The manifest as it was written.
class Source {
 public:
  explicit Source(std::string_view text) : text_(text) {}

  /// The word at a position, up to the next blank or punctuation. Columns count characters.
  std::string_view wordAt(Position position) const {
    std::string_view rest = text_;
    for (std::uint32_t line = 1; line < position.line; ++line) {
      const std::size_t end = rest.find('\n');
      if (end == rest.npos) return {};
      rest.remove_prefix(end + 1);
    }
    for (std::uint32_t column = 1; column < position.column && !rest.empty(); ++column) {
      rest.remove_prefix(1);
      while (!rest.empty() && opc::isUtf8Continuation(rest.front())) rest.remove_prefix(1);
    }
    return rest.substr(0, rest.find_first_of(" \t\r\n,]}#"));
  }

 private:
  std::string_view text_;
};

}  // namespace addon::project::detail
