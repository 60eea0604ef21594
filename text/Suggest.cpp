// SPDX-License-Identifier: MIT
#include "text/Suggest.h"

#include <algorithm>
#include <array>
#include <unordered_set>
#include <vector>

#include "opc/Text.h"
#include "text/Lines.h"

namespace text {

namespace {

// No word that is looked for is longer, and the table below grows with the product.
constexpr std::size_t kMaxWordLength = 64;
// Of more paths, only the first are compared letter by letter.
constexpr std::size_t kMaxPaths = 20000;

bool isNear(std::string_view word, std::string_view candidate, std::size_t distance) {
  return distance <= std::max<std::size_t>(1, std::max(word.size(), candidate.size()) / 3);
}

/// The paths and the folders above them, each once.
std::vector<std::string_view> withFolders(const std::vector<std::string_view>& paths) {
  std::unordered_set<std::string_view> known;
  std::vector<std::string_view> all;
  for (const std::string_view path : paths) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
      if (known.insert(path.substr(0, end)).second) all.push_back(path.substr(0, end));
      if (end == path.npos) break;
    }
  }
  return all;
}

}  // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
  const std::string x = opc::toLowerAscii(a);
  const std::string y = opc::toLowerAscii(b);
  std::array<std::vector<std::size_t>, 3> rows;
  for (auto& row : rows) row.resize(y.size() + 1);
  for (std::size_t j = 0; j <= y.size(); ++j) rows[0][j] = j;
  for (std::size_t i = 1; i <= x.size(); ++i) {
    auto& now = rows[i % 3];
    const auto& before = rows[(i - 1) % 3];
    now[0] = i;
    for (std::size_t j = 1; j <= y.size(); ++j) {
      const std::size_t change = before[j - 1] + (x[i - 1] == y[j - 1] ? 0 : 1);
      now[j] = std::min({before[j] + 1, now[j - 1] + 1, change});
      const bool swapped = i > 1 && j > 1 && x[i - 1] == y[j - 2] && x[i - 2] == y[j - 1];
      if (swapped) now[j] = std::min(now[j], rows[(i - 2) % 3][j - 2] + 1);
    }
  }
  return rows[x.size() % 3][y.size()];
}

std::string_view nearest(std::string_view word, std::span<const std::string_view> candidates) {
  if (word.empty() || word.size() > kMaxWordLength) return {};
  std::string_view best;
  std::size_t bestDistance = kMaxWordLength;
  for (const std::string_view candidate : candidates) {
    const auto [shorter, longer] = std::minmax({word.size(), candidate.size()});
    if (!isNear(word, candidate, longer - shorter)) continue;
    const std::size_t distance = editDistance(word, candidate);
    if (distance >= bestDistance || !isNear(word, candidate, distance)) continue;
    best = candidate;
    bestDistance = distance;
  }
  if (!best.empty()) return best;
  // Half a word is not near by letters, and clear all the same.
  for (const std::string_view candidate : candidates) {
    if (word.size() >= 2 && candidate.starts_with(word)) return candidate;
  }
  return {};
}

std::string nearestPath(std::string_view word, const std::vector<std::string_view>& paths) {
  std::string plain(word);
  std::replace(plain.begin(), plain.end(), '\\', '/');
  plain = std::string(trimSlashes(plain.starts_with("./") ? plain.substr(2) : plain));
  const std::vector<std::string_view> all = withFolders(paths);
  const auto find = [&](const auto& isMeant) {
    const auto found = std::find_if(all.begin(), all.end(), isMeant);
    return found == all.end() ? std::string() : std::string(*found);
  };
  const std::string lower = opc::toLowerAscii(plain);
  std::string best = find([&](std::string_view path) { return path == plain; });
  if (!best.empty()) return best;
  best = find([&](std::string_view path) { return opc::toLowerAscii(path) == lower; });
  if (!best.empty()) return best;
  const std::string name = lower.substr(lower.rfind('/') + 1);
  best = find([&](std::string_view path) {
    return opc::toLowerAscii(path.substr(path.rfind('/') + 1)) == name;
  });
  if (!best.empty()) return best;
  return std::string(nearest(plain, std::span(all).first(std::min(all.size(), kMaxPaths))));
}

std::string suggestion(std::string_view word, std::span<const std::string_view> candidates,
                       std::string_view otherwise) {
  const std::string_view best = nearest(word, candidates);
  return best.empty() ? std::string(otherwise) : "did you mean '" + std::string(best) + "'?";
}

}  // namespace text
