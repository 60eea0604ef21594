// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::project {

/// The first line of text of a README, plain or Markdown, without marks, links and tags: pictures,
/// rules, code and comments are passed over, and headings too as long as there is anything else.
/// "" when there is none. A long line is cut after its first sentence, or else after a word.
std::string summaryOf(std::string_view readme);

}  // namespace addon::project
