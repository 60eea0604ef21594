// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "opc/model/Package.h"
#include "opc/plservices/FileSystemEntry.h"
#include "opc/plservices/FileTree.h"
#include "opc/plservices/FileTreePart.h"
#include "opc/plservices/FileTreeTable.h"

namespace opc::plservices {

/// Where the parts of files lie in a package: item names, ignoring ASCII case.
inline constexpr std::string_view kFilesFolder = "files/";
/// The same for files whose paths only the table of the tree can say.
inline constexpr std::string_view kMadeUpFilesFolder = "metadata/fileTree/";

inline constexpr std::uint64_t kFreeTableNodes = 1000;
inline constexpr std::uint64_t kMaxTableNodes = 2'000'000;
/// How many files and folders the table of a package of that many bytes may make. A table is packed
/// well, so that without a limit a small package would fill the memory, or a disk with folders.
std::uint64_t maxTableNodes(std::uint64_t packageSize);

/// The file tree of an open package, with what its table has to say.
struct LoadedFileTree {
  FileTree nodes;
  /// Part names of the files that only the table can place.
  std::unordered_map<NodeId, std::string> tableFiles;
  std::uint64_t nodesOfStoredTable = 0;    ///< how many the table on disk made
  std::size_t emptyFolders = 0;            ///< every one of them stands in the table
  std::uint64_t tableSize = 0;             ///< bytes of the table at most, markup of the root aside
  std::vector<UnreadableFile> unreadable;  ///< files without a path and no parts

  FileTreeTable table() const;
  /// How many files and folders the table makes, those above its entries included.
  std::uint64_t tableNodes() const;
};

/// Reads the tree of an open package: the names of its parts, and the table if there is one. Throws
/// Exception when the table is at odds with itself or with the package, since files would be lost
/// with it, and ErrorCode::TooLarge when it makes more than maxTableNodes.
LoadedFileTree loadFileTree(model::Package& package, FileTreePart& table);

}  // namespace opc::plservices
