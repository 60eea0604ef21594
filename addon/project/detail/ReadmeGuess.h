// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::project::detail {

/// What a README, plain or Markdown, says about its add-on, without markup.
struct ReadmeFacts {
  /// The first heading of the first level, or another heading in front of all text. "" if there is
  /// none, or if it is too long for a name.
  std::string title;
  /// The first sentence of the first paragraph; without a paragraph, the first heading. Images,
  /// rules, code, tables and comments are skipped. A long sentence is cut after a word. Empty if
  /// the README has no text.
  std::string summary;
};

ReadmeFacts readmeFacts(std::string_view readme);

}  // namespace addon::project::detail
