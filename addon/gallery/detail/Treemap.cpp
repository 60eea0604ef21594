// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Treemap.h"

#include <algorithm>
#include <numeric>
#include <string_view>

namespace addon::gallery::detail {

using opc::plservices::FileTree;
using NodeId = PageFiles::NodeId;

namespace {

/// The worst aspect ratio of the boxes in a row, 1 being a square. The row lies along a side of
/// length `side`, has the area `sum`, and its boxes have areas from `smallest` to `largest`.
double worstRatio(double side, double sum, double smallest, double largest) {
  const double square = side * side;
  return std::max(square * largest / (sum * sum), sum * sum / (square * smallest));
}

/// The end of the row that begins with areas[first]. A box is added if the worst one does not get
/// worse.
std::size_t endOfRow(const std::vector<double>& areas, std::size_t first, double side) {
  double sum = areas[first];
  double ratio = worstRatio(side, sum, areas[first], areas[first]);
  std::size_t end = first + 1;
  for (; end < areas.size() && areas[end] > 0; ++end) {
    const double next = worstRatio(side, sum + areas[end], areas[end], areas[first]);
    if (next > ratio) break;
    sum += areas[end];
    ratio = next;
  }
  return end;
}

/// Takes a row of that total area from the left of the free space, or from the top if the space is
/// higher than wide.
class Row {
 public:
  Row(Box& space, double sum) : box_(space), isColumn_(space.width >= space.height) {
    if (isColumn_) {
      box_.width = space.height > 0 ? std::min(sum / space.height, space.width) : 0;
      space.x += box_.width;
      space.width -= box_.width;
    } else {
      box_.height = space.width > 0 ? std::min(sum / space.width, space.height) : 0;
      space.y += box_.height;
      space.height -= box_.height;
    }
  }

  /// The next box of the row, `share` of it.
  Box take(double share) {
    Box box = box_;
    (isColumn_ ? box.y : box.x) += taken_;
    (isColumn_ ? box.height : box.width) *= share;
    taken_ += isColumn_ ? box.height : box.width;
    return box;
  }

 private:
  Box box_;
  bool isColumn_;
  double taken_ = 0;
};

/// One group for each top-level folder and one for the top-level files, with totals but no cells.
std::vector<TreemapGroup> sumUp(const PageFiles& files) {
  auto& tree = files.tree();
  TreemapGroup topFiles;
  topFiles.kind = TreemapGroup::Kind::TopFiles;
  std::vector<TreemapGroup> groups;
  for (NodeId node = tree.firstChild(PageFiles::kRoot); node != FileTree::kNone;
       node = tree.nextSibling(node)) {
    const PageFiles::Totals& totals = files.totals(node);
    if (totals.files == 0) continue;
    if (!tree.isFile(node)) groups.emplace_back().name = tree.name(node);
    TreemapGroup& group = tree.isFile(node) ? topFiles : groups.back();
    group.size += totals.size;
    group.files += totals.files;
  }
  if (topFiles.files > 0) groups.push_back(std::move(topFiles));
  std::stable_sort(groups.begin(), groups.end(),
                   [](const TreemapGroup& a, const TreemapGroup& b) { return a.size > b.size; });
  for (std::size_t i = 0; i < groups.size(); ++i) groups[i].color = i;
  return groups;
}

/// After all groups that are at least as large.
template <typename Piece>
void insertBySize(std::vector<Piece>& pieces, Piece piece) {
  const auto place = std::find_if(pieces.begin(), pieces.end(),
                                  [&](const Piece& each) { return each.size < piece.size; });
  pieces.insert(place, std::move(piece));
}

/// Merges the smallest groups into one if there are too many.
void joinSmallGroups(std::vector<TreemapGroup>& groups) {
  if (groups.size() <= kMaxGroups) return;
  TreemapGroup others;
  others.kind = TreemapGroup::Kind::Others;
  for (std::size_t i = kMaxGroups - 1; i < groups.size(); ++i) {
    others.size += groups[i].size;
    others.files += groups[i].files;
    const bool isFolder = groups[i].kind == TreemapGroup::Kind::Folder;
    others.folders += isFolder ? 1 : 0;
    others.hasTopFiles = others.hasTopFiles || !isFolder;
  }
  others.color = kMaxGroups - 1;
  groups.resize(kMaxGroups - 1);
  insertBySize(groups, std::move(others));
}

/// The files that get their own cells, in descending order of size.
std::vector<NodeId> largestOf(const PageFiles& files) {
  const auto& tree = files.tree();
  std::vector<NodeId> largest;
  for (NodeId node = PageFiles::kRoot; node < files.endOfIds(); ++node) {
    if (tree.isFile(node) && files.totals(node).size > 0) largest.push_back(node);
  }
  const auto isBefore = [&](NodeId a, NodeId b) {
    const std::uint64_t sizeOfA = files.totals(a).size;
    const std::uint64_t sizeOfB = files.totals(b).size;
    return sizeOfA == sizeOfB ? tree.path(a) < tree.path(b) : sizeOfA > sizeOfB;
  };
  const std::size_t count = std::min(kMaxFiles, largest.size());
  std::partial_sort(largest.begin(), largest.begin() + static_cast<std::ptrdiff_t>(count),
                    largest.end(), isBefore);
  largest.resize(count);
  return largest;
}

/// The group of a file: that of its folder, or the merged one.
TreemapGroup& groupOf(NodeId file, const FileTree& tree, std::vector<TreemapGroup>& groups) {
  NodeId top = file;
  while (tree.parent(top) != PageFiles::kRoot) top = tree.parent(top);
  const bool isTopFile = top == file;
  const auto kind = isTopFile ? TreemapGroup::Kind::TopFiles : TreemapGroup::Kind::Folder;
  const std::string_view name = isTopFile ? std::string_view() : tree.name(top);
  const auto isIts = [&](const TreemapGroup& group) {
    return group.kind == kind && group.name == name;
  };
  const auto isOthers = [](const TreemapGroup& group) {
    return group.kind == TreemapGroup::Kind::Others;
  };
  const auto found = std::find_if(groups.begin(), groups.end(), isIts);
  return found == groups.end() ? *std::find_if(groups.begin(), groups.end(), isOthers) : *found;
}

/// Adds one cell for the files of a group that have none, in its place by size.
void addRest(TreemapGroup& group) {
  TreemapCell rest{{}, group.size, group.files};
  for (const TreemapCell& cell : group.cells) {
    rest.size -= cell.size;
    rest.files -= cell.files;
  }
  if (rest.size > 0) insertBySize(group.cells, std::move(rest));
}

}  // namespace

std::vector<Box> squarify(const std::vector<double>& sizes, const Box& frame) {
  const double total = std::accumulate(sizes.begin(), sizes.end(), 0.0);
  std::vector<Box> boxes;
  boxes.reserve(sizes.size());
  Box space = frame;
  if (total > 0) {
    std::vector<double> areas;
    areas.reserve(sizes.size());
    for (const double size : sizes) areas.push_back(size / total * frame.width * frame.height);
    while (boxes.size() < areas.size() && areas[boxes.size()] > 0) {
      const std::size_t first = boxes.size();
      const std::size_t end = endOfRow(areas, first, std::min(space.width, space.height));
      const auto begin = areas.begin() + static_cast<std::ptrdiff_t>(first);
      const auto stop = areas.begin() + static_cast<std::ptrdiff_t>(end);
      const double sum = std::accumulate(begin, stop, 0.0);
      Row row(space, sum);
      for (std::size_t i = first; i < end; ++i) boxes.push_back(row.take(areas[i] / sum));
    }
  }
  boxes.resize(sizes.size(), Box{space.x, space.y, 0, 0});
  return boxes;
}

std::vector<TreemapGroup> groupBySize(const PageFiles& files) {
  std::vector<TreemapGroup> groups = sumUp(files);
  joinSmallGroups(groups);
  const auto& tree = files.tree();
  for (const NodeId file : largestOf(files)) {
    groupOf(file, tree, groups).cells.push_back({tree.path(file), files.totals(file).size, 1});
  }
  for (TreemapGroup& group : groups) addRest(group);
  return groups;
}

}  // namespace addon::gallery::detail
