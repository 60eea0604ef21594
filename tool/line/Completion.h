// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/line/Command.h"

namespace tool::line {

/// A candidate for the word at the cursor.
struct Candidate {
  std::string word;         ///< the whole word, also after the cursor
  std::string description;  ///< may be empty
};

/// The candidates for one word of a line.
struct Completion {
  std::string prefix;     ///< the part of the word before the candidates, such as "--color="
  bool arePaths = false;  ///< on the disk or in a package; folders end with '/'
  std::vector<Candidate> candidates;
};

/// The candidates for the last of `words`, which begin after the program's name and are without
/// quotes. For paths, these are all entries of the folder that the word names. The shell compares
/// them with the beginning of the word. Never fails: what cannot be read gives no candidates.
Completion complete(CommandList commands, std::vector<std::string> words);

/// The shells that are supported, and the script for one. Throws UsageError for any other shell.
std::vector<std::string> completionShells();
std::string_view completionScript(std::string_view shell);

}  // namespace tool::line
