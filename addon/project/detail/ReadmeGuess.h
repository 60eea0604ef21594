// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::project::detail {

/// The first line of text in a README, plain or Markdown, without markup. Images, rules, code,
/// tables and comments are skipped, and so are headings if there is anything else. "" if there is
/// none. A long line is cut after its first sentence, or else after a word.
std::string summaryOf(std::string_view readme);

}  // namespace addon::project::detail
