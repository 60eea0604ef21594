// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "addon/gallery/Page.h"

namespace addon::gallery {

struct Box {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

/// Divides `frame` among `sizes` (from large to small, none negative), each box with an area in
/// proportion and as near to a square as goes. A size of 0 gets a box without area.
std::vector<Box> squarify(const std::vector<double>& sizes, const Box& frame);

/// One file, or the sum of many small ones.
struct TreemapCell {
  std::string path;  ///< "" for a sum
  std::uint64_t size = 0;
  std::uint64_t files = 1;
};

/// A folder at the top of the tree, the files beside those folders, or what is small of both.
struct TreemapGroup {
  enum class Kind { Folder, TopFiles, Others };

  Kind kind = Kind::Folder;
  std::string name;  ///< of a Folder
  std::uint64_t size = 0;
  std::uint64_t files = 0;
  std::uint64_t folders = 0;       ///< of Others
  bool hasTopFiles = false;        ///< of Others
  std::size_t color = 0;           ///< below kMostGroups, another one for each group
  std::vector<TreemapCell> cells;  ///< from large to small
};

/// What a page calls it: "filters/".
std::string titleOf(const TreemapGroup& group);

/// Where the bytes are: groups from large to small. However many files there are, no more than
/// kMostGroups groups, and kMostFiles cells apart from one sum a group. Files of no bytes count but
/// have no cell.
std::vector<TreemapGroup> groupBySize(const std::vector<PageFile>& files);

inline constexpr std::size_t kMostGroups = 10;
inline constexpr std::size_t kMostFiles = 160;

}  // namespace addon::gallery
