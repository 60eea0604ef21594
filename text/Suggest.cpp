// SPDX-License-Identifier: MIT
#include "text/Suggest.h"

#include <algorithm>
#include <array>
#include <vector>

#include "opc/Text.h"

namespace text {

namespace {

// No word that is looked for is longer, and the table below grows with the product.
constexpr std::size_t kLongestWord = 64;

bool isNear(std::string_view word, std::string_view candidate, std::size_t distance) {
  return distance <= std::max<std::size_t>(1, std::max(word.size(), candidate.size()) / 3);
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
  if (word.empty() || word.size() > kLongestWord) return {};
  std::string_view best;
  std::size_t bestDistance = kLongestWord;
  for (const std::string_view candidate : candidates) {
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

std::string suggestion(std::string_view word, std::span<const std::string_view> candidates,
                       std::string_view otherwise) {
  const std::string_view best = nearest(word, candidates);
  return best.empty() ? std::string(otherwise) : "did you mean '" + std::string(best) + "'?";
}

}  // namespace text
