// SPDX-License-Identifier: MIT
#include "text/LineDifference.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

#include "opc/KeyedHash.h"
#include "text/ShortestEdit.h"

namespace text {

namespace {

// A second of work at most, and far more than texts need that have something to do with each other.
constexpr std::uint64_t kStepsPerLine = 2000;
constexpr std::uint64_t kFewestSteps = 1'000'000;
constexpr std::uint64_t kMaxSteps = 200'000'000;

using LineSpan = std::span<const std::string_view>;

struct LineHash {
  std::size_t operator()(std::string_view line) const noexcept { return opc::keyedHash(line); }
};

/// The lines of a text that stand in the other text too, as numbers: same line, same number.
struct Numbered {
  std::vector<std::uint32_t> numbers;
  std::vector<std::size_t> places;  ///< of each number, in the text
};

/// What stands on one side only has changed for certain, and would only keep the search busy.
class Numbering {
 public:
  Numbering(LineSpan a, LineSpan b) {
    for (const std::string_view line : a) {
      entries_.try_emplace(line, Entry{static_cast<std::uint32_t>(entries_.size())});
    }
    for (const std::string_view line : b) {
      const auto found = entries_.find(line);
      if (found != entries_.end()) found->second.isInBoth = true;
    }
  }

  Numbered shared(LineSpan lines) const {
    Numbered result;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const auto found = entries_.find(lines[i]);
      if (found == entries_.end() || !found->second.isInBoth) continue;
      result.numbers.push_back(found->second.number);
      result.places.push_back(i);
    }
    return result;
  }

 private:
  struct Entry {
    std::uint32_t number;
    bool isInBoth = false;
  };
  std::unordered_map<std::string_view, Entry, LineHash> entries_;
};

std::vector<std::size_t> keptPlaces(const Numbered& lines, const std::vector<bool>& isChanged) {
  std::vector<std::size_t> kept;
  for (std::size_t i = 0; i < lines.places.size(); ++i) {
    if (!isChanged[i]) kept.push_back(lines.places[i]);
  }
  return kept;
}

/// What lies between pairs of lines that were kept.
class BlockList {
 public:
  explicit BlockList(std::size_t begin) : aNext_(begin), bNext_(begin) {}

  void keep(std::size_t a, std::size_t b) {
    addUpTo(a, b);
    aNext_ = a + 1;
    bNext_ = b + 1;
  }
  void addUpTo(std::size_t a, std::size_t b) {
    if (aNext_ < a || bNext_ < b) blocks_.push_back({aNext_, a, bNext_, b});
  }
  std::vector<ChangedBlock> take() { return std::move(blocks_); }

 private:
  std::vector<ChangedBlock> blocks_;
  std::size_t aNext_;
  std::size_t bNext_;
};

std::size_t samePrefix(LineSpan a, LineSpan b) {
  return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first -
                                  a.begin());
}

std::size_t sameSuffix(LineSpan a, LineSpan b) {
  return static_cast<std::size_t>(std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend()).first -
                                  a.rbegin());
}

}  // namespace

Lines splitLines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::size_t size = end == std::string_view::npos ? text.size() : end + 1;
    lines.push_back(text.substr(0, size));
    text.remove_prefix(size);
  }
  return lines;
}

std::vector<ChangedBlock> compareLines(LineSpan a, LineSpan b) {
  const std::size_t prefix = samePrefix(a, b);
  const std::size_t suffix = sameSuffix(a.subspan(prefix), b.subspan(prefix));
  const LineSpan aMiddle = a.subspan(prefix, a.size() - prefix - suffix);
  const LineSpan bMiddle = b.subspan(prefix, b.size() - prefix - suffix);
  const Numbering numbering(aMiddle, bMiddle);
  const Numbered aShared = numbering.shared(aMiddle);
  const Numbered bShared = numbering.shared(bMiddle);
  const std::uint64_t steps =
      std::clamp(kStepsPerLine * (aMiddle.size() + bMiddle.size()), kFewestSteps, kMaxSteps);
  const Edit edit = findShortestEdit(aShared.numbers, bShared.numbers, steps);
  const std::vector<std::size_t> aKept = keptPlaces(aShared, edit.isRemoved);
  const std::vector<std::size_t> bKept = keptPlaces(bShared, edit.isAdded);
  BlockList blocks(prefix);
  for (std::size_t i = 0; i < aKept.size(); ++i) {
    blocks.keep(prefix + aKept[i], prefix + bKept[i]);
  }
  blocks.addUpTo(a.size() - suffix, b.size() - suffix);
  return blocks.take();
}

}  // namespace text
