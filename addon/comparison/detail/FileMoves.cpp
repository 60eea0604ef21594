// SPDX-License-Identifier: MIT
#include "addon/comparison/detail/FileMoves.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace addon::comparison::detail {

namespace {

/// Files that might have moved, in the order of their paths.
struct Candidates {
  std::vector<FileDifference*> removed;
  std::vector<FileDifference*> added;
};

/// Those that agree in size and checksum, so that of all others nothing needs to be read.
using CandidatesBySum = std::map<std::pair<std::uint64_t, std::uint32_t>, Candidates>;

CandidatesBySum collectCandidates(std::vector<FileDifference>& differences) {
  CandidatesBySum all;
  for (FileDifference& difference : differences) {
    const Item& item = difference.item();
    if (difference.change == Change::Changed || item.isFolder()) continue;
    Candidates& candidates = all[{item.info.size, item.info.crc}];
    const bool isRemoved = difference.change == Change::Removed;
    (isRemoved ? candidates.removed : candidates.added).push_back(&difference);
  }
  return all;
}

std::string contentKey(const FileDifference& difference, bool withName) {
  const std::string& hash = difference.a != nullptr ? difference.aHash : difference.bHash;
  return withName ? hash + difference.path.substr(difference.path.rfind('/') + 1) : hash;
}

bool isGone(const FileDifference& difference) {
  return difference.a == nullptr && difference.b == nullptr;
}

/// The added one takes over what the removed one was, of which nothing is left.
void join(FileDifference& removed, FileDifference& added) {
  added.change = Change::Moved;
  added.from = removed.path;
  added.a = std::exchange(removed.a, nullptr);
  added.aHash = std::move(removed.aHash);
}

void joinThose(const Candidates& candidates, bool keepsName) {
  std::map<std::string, std::vector<FileDifference*>> free;  // the last one is the first to go
  for (auto at = candidates.removed.rbegin(); at != candidates.removed.rend(); ++at) {
    if (!isGone(**at)) free[contentKey(**at, keepsName)].push_back(*at);
  }
  for (FileDifference* added : candidates.added) {
    if (added->change == Change::Moved) continue;
    const auto found = free.find(contentKey(*added, keepsName));
    if (found == free.end() || found->second.empty()) continue;
    join(*found->second.back(), *added);
    found->second.pop_back();
  }
}

}  // namespace

void joinMoved(std::vector<FileDifference>& differences,
               const std::function<void(FileDifference&)>& hash) {
  for (const auto& [sum, candidates] : collectCandidates(differences)) {
    if (candidates.removed.empty() || candidates.added.empty()) continue;
    for (FileDifference* removed : candidates.removed) hash(*removed);
    for (FileDifference* added : candidates.added) hash(*added);
    joinThose(candidates, true);          // those that kept their name belong together
    const bool isEmpty = sum.first == 0;  // an empty file is like any other
    if (!isEmpty) joinThose(candidates, false);
  }
  std::erase_if(differences, isGone);
}

}  // namespace addon::comparison::detail
