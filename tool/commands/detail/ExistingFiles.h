// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "addon/comparison/Contents.h"
#include "tool/TreeWalk.h"

namespace tool::commands::detail {

/// What lies on the disk where a file of the tree would be written: another file, a link.
struct ExistingFile {
  std::size_t item;  ///< its place among the items
  FileIdentity identity;
};

/// For which files of `items` something is there below the folder `destination`, in their order.
/// None when the folder is missing, which then is all that the disk is asked. Follows no link below
/// it: throws opc::Exception, as extracting does, when a link or a file is in the place of a folder
/// that an item needs, or a folder in that of a file.
std::vector<ExistingFile> findExisting(const std::vector<addon::comparison::Item>& items,
                                       const std::string& destination);

}  // namespace tool::commands::detail
