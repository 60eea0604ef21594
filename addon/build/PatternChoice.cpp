// SPDX-License-Identifier: MIT
#include "addon/build/PatternChoice.h"

#include <algorithm>

namespace addon::build {

PatternChoice::PatternChoice(const std::vector<std::string>& patterns)
    : patterns_(patterns.begin(), patterns.end()), isUsed_(patterns.size(), false) {}

bool PatternChoice::chooses(std::string_view path, bool isFolder) {
  const std::size_t slash = path.rfind('/');
  const Number ofFolder = slash == path.npos ? 0 : decidingOfFolder(path.substr(0, slash));
  const Number deciding = lastToSpeak(path, isFolder, ofFolder);
  return deciding != 0 && !patterns_[deciding - 1].isNegated();
}

const std::string* PatternChoice::unused() const {
  for (std::size_t i = 0; i < patterns_.size(); ++i) {
    if (!isUsed_[i] && !patterns_[i].isNegated()) return &patterns_[i].text();
  }
  return nullptr;
}

PatternChoice::Number PatternChoice::decidingOfFolder(std::string_view folder) {
  leaveLevels(folder);
  Number deciding = levels_.empty() ? 0 : levels_.back().deciding;
  std::size_t end = levels_.empty() ? 0 : levels_.back().end;
  while (end < folder.size()) {
    end = std::min(folder.find('/', end + 1), folder.size());
    deciding = lastToSpeak(folder.substr(0, end), true, deciding);
    levels_.push_back({end, deciding});
  }
  return deciding;
}

/// Keeps the levels that `folder` shares with the one looked at last.
void PatternChoice::leaveLevels(std::string_view folder) {
  const auto differing =
      std::mismatch(folder.begin(), folder.end(), folder_.begin(), folder_.end()).first;
  const auto common = static_cast<std::size_t>(differing - folder.begin());
  const auto isShared = [&](std::size_t end) {
    return end <= common && (end == folder.size() || folder[end] == '/');
  };
  while (!levels_.empty() && !isShared(levels_.back().end)) levels_.pop_back();
  folder_ = folder;
}

PatternChoice::Number PatternChoice::lastToSpeak(std::string_view path, bool isFolder,
                                                 Number ofFolder) {
  Number deciding = ofFolder;
  for (Number number = patterns_.size(); number > 0; --number) {
    const std::size_t index = number - 1;
    // An earlier one changes nothing, but it may be the first time that it matches.
    if (number <= deciding && isUsed_[index]) continue;
    if (!patterns_[index].matches(path, isFolder)) continue;
    isUsed_[index] = true;
    deciding = std::max(deciding, number);
  }
  return deciding;
}

}  // namespace addon::build
