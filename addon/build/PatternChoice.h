// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "addon/project/Patterns.h"

namespace addon::build {

/// Patterns that choose paths. A pattern applies to the paths that it matches and to everything
/// below them. The last pattern that applies to a path decides: the path is chosen unless the
/// pattern begins with '!'. A path to which no pattern applies is not chosen.
class PatternChoice {
 public:
  explicit PatternChoice(const std::vector<std::string>& patterns);

  /// Paths as Pattern::matches takes them, best in the order of a tree: what is said of a folder is
  /// then found out once for all in it.
  bool chooses(std::string_view path, bool isFolder);

  /// The first pattern that has matched nothing so far, or null. One that takes back may match
  /// nothing.
  const std::string* unused() const;

 private:
  /// Of patterns by number: 1 is the first, 0 stands for none.
  using Number = std::size_t;

  struct Level {
    std::size_t end;  ///< of the folder's path in folder_
    Number deciding;
  };

  Number decidingOfFolder(std::string_view folder);
  Number lastToSpeak(std::string_view path, bool isFolder, Number ofFolder);
  void leaveLevels(std::string_view folder);

  std::vector<addon::project::Pattern> patterns_;
  std::vector<bool> isUsed_;
  std::string folder_;         ///< the one looked at last
  std::vector<Level> levels_;  ///< it and those above, from the top down
};

}  // namespace addon::build
