// SPDX-License-Identifier: MIT
#include "text/ListAlignment.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace text {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// Gives each record a partner at most, rule by rule.
class Matching {
 public:
  Matching(const std::vector<RecordKeys>& a, const std::vector<RecordKeys>& b)
      : a_(a), b_(b), partnerOfA_(a.size(), kNone), isTaken_(b.size(), false) {}

  /// Pairs those left for which `keyOf` says the same, in order.
  template <typename KeyOf>
  void matchBy(KeyOf keyOf) {
    std::map<std::string_view, std::vector<std::size_t>> free;  // the last one is the first to go
    for (std::size_t i = b_.size(); i-- > 0;) {
      const std::string_view key = keyOf(b_[i]);
      if (!isTaken_[i] && !key.empty()) free[key].push_back(i);
    }
    for (std::size_t i = 0; i < a_.size(); ++i) {
      if (partnerOfA_[i] != kNone) continue;
      const auto found = free.find(keyOf(a_[i]));
      if (found == free.end() || found->second.empty()) continue;
      pair(i, found->second.back());
      found->second.pop_back();
    }
  }

  void matchPlaces() {
    for (std::size_t i = 0; i < std::min(a_.size(), b_.size()); ++i) {
      if (partnerOfA_[i] == kNone && !isTaken_[i]) pair(i, i);
    }
  }

  std::vector<RecordPair> pairs() const {
    std::vector<RecordPair> pairs;
    for (std::size_t i = 0; i < a_.size(); ++i) {
      if (partnerOfA_[i] != kNone) pairs.emplace_back(i, partnerOfA_[i]);
    }
    return pairs;
  }

 private:
  void pair(std::size_t a, std::size_t b) {
    partnerOfA_[a] = b;
    isTaken_[b] = true;
  }

  const std::vector<RecordKeys>& a_;
  const std::vector<RecordKeys>& b_;
  std::vector<std::size_t> partnerOfA_;
  std::vector<bool> isTaken_;
};

/// The longest choice of pairs whose second places rise too.
std::vector<RecordPair> inOrder(const std::vector<RecordPair>& pairs) {
  std::vector<std::size_t> ends;  // of the best choices of length 1, 2, ...: their last pairs
  std::vector<std::size_t> before(pairs.size(), kNone);
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const auto at = std::lower_bound(
        ends.begin(), ends.end(), pairs[i].second,
        [&](std::size_t end, std::size_t place) { return pairs[end].second < place; });
    if (at != ends.begin()) before[i] = *(at - 1);
    if (at == ends.end()) {
      ends.push_back(i);
    } else {
      *at = i;
    }
  }
  std::vector<RecordPair> chosen;
  for (std::size_t i = ends.empty() ? kNone : ends.back(); i != kNone; i = before[i]) {
    chosen.push_back(pairs[i]);
  }
  std::reverse(chosen.begin(), chosen.end());
  return chosen;
}

std::size_t mostKeys(const std::vector<RecordKeys>& records) {
  std::size_t most = 0;
  for (const RecordKeys& record : records) most = std::max(most, record.keys.size());
  return most;
}

}  // namespace

std::vector<RecordPair> alignRecords(const std::vector<RecordKeys>& a,
                                     const std::vector<RecordKeys>& b) {
  Matching matching(a, b);
  matching.matchBy([](const RecordKeys& record) -> std::string_view { return record.whole; });
  for (std::size_t i = 0; i < mostKeys(b); ++i) {
    matching.matchBy([i](const RecordKeys& record) -> std::string_view {
      return i < record.keys.size() ? std::string_view(record.keys[i]) : std::string_view();
    });
  }
  matching.matchPlaces();
  return inOrder(matching.pairs());
}

}  // namespace text
