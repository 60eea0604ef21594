// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "opc/zippackage/ZipDirectory.h"

namespace opc::zippackage::detail {

/// Finds out whether the names of a directory differ without a table of them, which takes most of
/// the time of a large one: nearly all directories are made of a few ascending sequences of names.
class NameChains {
 public:
  /// For `expected` entries of `directory`, which must outlive this.
  NameChains(const ZipDirectory& directory, std::size_t expected)
      : directory_(directory), mostOutside_(kFewOutside + expected / 16) {}

  /// Adds the next entry, whose name must stay where it is and has `common` bytes in common with
  /// that of the entry before. Returns false if the names are in no such order; then no more may be
  /// added.
  bool add(std::uint32_t entry, std::string_view name, std::size_t common) {
    if (chains_.empty() || !isBefore(chains_[current_].last, name, common)) {
      return addToOther(entry, name);
    }
    chains_[current_].last = name;
    chains_[current_].runs.back().end = entry + 1;
    return true;
  }

  /// Whether all names that were added are known to differ. If not, they may still.
  bool areDistinct() const;

 private:
  struct Run {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
  };
  struct Chain {
    std::string_view last;
    std::vector<Run> runs;  // of entries that follow each other

    std::size_t size() const;
  };
  static constexpr std::size_t kMaxChains = 8;
  static constexpr std::size_t kFewOutside = 64;

  // A slash comes first, as where folders are walked through in the order of their names.
  static unsigned rankOf(char c) { return c == '/' ? 0 : static_cast<unsigned char>(c) + 1u; }
  static bool isBefore(std::string_view a, std::string_view b, std::size_t common) {
    if (common == b.size()) return false;
    return common == a.size() || rankOf(a[common]) < rankOf(b[common]);
  }
  static bool isBefore(std::string_view a, std::string_view b);

  bool addToOther(std::uint32_t entry, std::string_view name);
  bool contains(const Chain& chain, std::string_view name) const;

  const ZipDirectory& directory_;
  std::size_t mostOutside_;  // names outside of the longest chain, for each of which it is searched
  std::vector<Chain> chains_;
  std::size_t current_ = 0;  // the chain of the entry before
};

}  // namespace opc::zippackage::detail
