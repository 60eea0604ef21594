// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "opc/zippackage/ZipDirectory.h"

namespace opc::zippackage::detail {

/// How many bytes at the beginning of both are equal.
std::size_t commonLength(std::string_view a, std::string_view b);

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
  bool add(std::uint32_t entry, std::string_view name, std::size_t common);

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
    std::size_t size = 0;

    void add(std::uint32_t entry, std::string_view name);
  };
  static constexpr std::size_t kMostChains = 8;
  static constexpr std::size_t kFewOutside = 64;

  bool addToOther(std::uint32_t entry, std::string_view name);
  bool contains(const Chain& chain, std::string_view name) const;

  const ZipDirectory& directory_;
  std::size_t mostOutside_;  // names outside of the longest chain, for each of which it is searched
  std::vector<Chain> chains_;
  std::size_t current_ = 0;  // the chain of the entry before
};

}  // namespace opc::zippackage::detail
