// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "addon/gallery/PageFiles.h"

namespace addon::gallery::detail {

struct Box {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

/// Divides `frame` into one box for each size. Areas are proportional to the sizes, and boxes as
/// close to squares as possible. Sizes must be in descending order and not negative; 0 gives an
/// empty box.
std::vector<Box> squarify(const std::vector<double>& sizes, const Box& frame);

/// One file, or many small files together.
struct TreemapCell {
  std::string path;  ///< "" for many files
  std::uint64_t size = 0;
  std::uint64_t files = 1;
};

/// A top-level folder, the top-level files, or the smallest of both together.
struct TreemapGroup {
  enum class Kind { Folder, TopFiles, Others };

  Kind kind = Kind::Folder;
  std::string name;  ///< of a Folder
  std::uint64_t size = 0;
  std::uint64_t files = 0;
  std::uint64_t folders = 0;       ///< of Others
  bool hasTopFiles = false;        ///< of Others
  std::size_t color = 0;           ///< less than kMaxGroups, different in each group
  std::vector<TreemapCell> cells;  ///< in descending order of size
};

/// The title on the page, such as "filters/".
std::string titleOf(const TreemapGroup& group);

/// Groups files in descending order of size, into at most kMaxGroups groups, with at most
/// kMaxFiles cells and one more in each group for the other files. Empty files are counted but
/// have no cell. There must be a file or a folder.
std::vector<TreemapGroup> groupBySize(const PageFiles& files);

inline constexpr std::size_t kMaxGroups = 10;
inline constexpr std::size_t kMaxFiles = 160;

}  // namespace addon::gallery::detail
