// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace addon::project {

/// What git knows of a folder; "" for what it does not, or when there is no git.
struct GitFacts {
  std::string version;      ///< of the newest tag, without its "v"
  std::string tag;          ///< that tag
  bool isBelowTop = false;  ///< the repository belongs to a folder above
  std::string userName;
  std::string userEmail;
};

/// Asks the git program, which sees neither the terminal nor what the environment tells of another
/// repository. Whatever fails is as if git were not there.
GitFacts readGitFacts(const std::string& folder);

/// The newest of tags `[v]N.N[.N]` by their numbers, whatever the others are; "" when none is one.
std::string newestVersionTag(const std::vector<std::string_view>& tags);

}  // namespace addon::project
