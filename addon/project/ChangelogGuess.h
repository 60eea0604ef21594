// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace addon::project {

/// A revision in a change log.
struct GuessedRevision {
  std::string version;
  std::string date;         ///< as written; empty if missing or not valid
  std::string description;  ///< lines end with LF; may be empty
};

/// The revisions in a Markdown change log, in its order. A revision is a heading
/// `## [VERSION] - DATE` with the text below it. The brackets and the date are optional, a "v" may
/// precede the version, and the date may be in parentheses. Headings without a version, such as
/// "Unreleased", are ignored.
std::vector<GuessedRevision> revisionsOf(std::string_view changelog);

}  // namespace addon::project
