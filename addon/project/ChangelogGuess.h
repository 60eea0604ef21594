// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace addon::project {

/// A revision as a change log tells it.
struct GuessedRevision {
  std::string version;
  std::string date;         ///< as written; empty without one, or for one of no calendar
  std::string description;  ///< lines end with LF; may be empty
};

/// The revisions of a Markdown change log, in its order: headings `## [VERSION] - DATE`, also
/// without the brackets, with a "v", with the date in parentheses or without one, each with the
/// text below. Headings that name no version, such as "Unreleased", are passed over.
std::vector<GuessedRevision> revisionsOf(std::string_view changelog);

}  // namespace addon::project
