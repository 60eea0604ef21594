// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "addon/comparison/Contents.h"
#include "opc/interfaces/Progress.h"

namespace addon::comparison {

enum class Change { Added, Removed, Changed, Moved };

/// A file tree, or what is to be compared of it. The items are brought in order of their paths.
struct FileSet {
  addon::packaging::AddonPackage& package;
  std::vector<Item>& items;
};

/// A file or an empty folder that is not the same in both trees.
struct FileDifference {
  std::string path;  ///< a folder's ends with '/'
  Change change;
  std::string from;        ///< the old path of what has moved
  const Item* a;           ///< null when it was added
  const Item* b;           ///< null when it was removed
  std::string aHash = {};  ///< SHA-256 of a file, when it was asked for
  std::string bHash = {};

  /// One that is there: the new one if there is any.
  const Item& item() const { return b != nullptr ? *b : *a; }
};

struct FileDifferences {
  std::vector<FileDifference> list;  ///< in order of the paths' bytes
  std::uint64_t same = 0;            ///< how many files and folders are the same
};

/// Compares by content, byte by byte where sizes and checksums agree: a checksum proves nothing.
/// What is packed alike is not unpacked, so that damage that both have is not noticed. A file that
/// went from one path to another with the same content has moved; of several with that content
/// those of one name belong together, and else the first ones. The result points into the items.
FileDifferences compareFiles(FileSet a, FileSet b, bool wantsHashes,
                             const opc::interfaces::ProgressFunction& progress);

}  // namespace addon::comparison
