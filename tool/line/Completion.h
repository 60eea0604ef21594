// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/line/Command.h"

namespace tool::line {

/// A word that may stand where the cursor is.
struct Candidate {
  std::string word;         ///< whole, up to the cursor and beyond
  std::string description;  ///< may be empty
};

/// What may stand at one place of a line.
struct Completion {
  std::string prefix;     ///< of the word, "--color=" say: the candidates come after it
  bool arePaths = false;  ///< of the disk or of a package; those of folders end in '/'
  std::vector<Candidate> candidates;
};

/// What may stand in the place of the last of `words`, which begin after the program's name and are
/// free of quotes. All that could stand there, or, of paths, all in the folder that the word names;
/// what the word begins with is left to the shell to compare. Never fails: what cannot be
/// read gives no candidates.
Completion complete(CommandList commands, std::vector<std::string> words);

/// The names of the shells that there are scripts for, and their scripts. Throws UsageError for any
/// other.
std::vector<std::string> completionShells();
std::string_view completionScript(std::string_view shell);

}  // namespace tool::line
