// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace addon::project {

/// What git knows about a folder. Texts are "" if unknown, or if git is not installed.
struct GitFacts {
  std::string version;      ///< of the newest tag, without its "v"
  std::string tag;          ///< that tag
  bool isBelowTop = false;  ///< whether the repository is that of a parent folder
  std::string userName;
  std::string userEmail;
};

/// Runs git, without access to the terminal and without environment variables that select another
/// repository. Failures are ignored, as if git were not installed.
GitFacts readGitFacts(const std::string& folder);

/// The files below the folder that git tracks, those of submodules too, by their paths from the
/// folder. A link to a folder is one of them, and what lies behind it is not. Empty if there are
/// none, or if git fails.
std::unordered_set<std::string> trackedFiles(const std::string& folder);

/// The tag `[v]N.N[.N]` with the highest numbers, or "". Other tags are ignored.
std::string newestVersionTag(const std::vector<std::string_view>& tags);

}  // namespace addon::project
