// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "addon/build/TreeWalk.h"
#include "addon/comparison/Contents.h"

namespace addon::build {

/// Something on the disk where a file of the tree would be written, such as a file or a link.
struct ExistingFile {
  std::size_t item;  ///< its index among the items
  opc::FileIdentity identity;
};

struct Existing {
  std::vector<ExistingFile> files;  ///< in the order of the items
  std::uint64_t newFolders = 0;     ///< that the items need or are, and that do not exist
};

/// Which of `items` and of the folders above them already exist below the folder `destination`;
/// none if it is missing. Follows no links below it: throws opc::Exception, as extracting does, if
/// a link or a file is in the place of a folder that an item needs, a folder in the place of a
/// file, or something that is not a folder in the place of `destination` or of a folder above it.
Existing findExisting(const std::vector<addon::comparison::Item>& items,
                      const std::string& destination);

/// Throws BuildError if one of the files would replace another.
void refuseExisting(const std::vector<ExistingFile>& existing,
                    const std::vector<addon::comparison::Item>& items,
                    const std::string& destination);

/// Throws BuildError if one of the files would replace `package`, which may contain a file with its
/// own path.
void refuseThePackageItself(const std::vector<ExistingFile>& existing,
                            const std::vector<addon::comparison::Item>& items,
                            const std::string& destination, const std::string& package);

}  // namespace addon::build
