// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "addon/build/TreeWalk.h"
#include "addon/comparison/Contents.h"

namespace tool::commands::detail {

/// Something on the disk where a file of the tree would be written, such as a file or a link.
struct ExistingFile {
  std::size_t item;  ///< its index among the items
  opc::FileIdentity identity;
};

/// The files of `items` whose paths already exist below the folder `destination`, in their order.
/// Empty if the folder is missing. Follows no links below it: throws opc::Exception, as extracting
/// does, if a link or a file is in the place of a folder that an item needs, or a folder in the
/// place of a file.
std::vector<ExistingFile> findExisting(const std::vector<addon::comparison::Item>& items,
                                       const std::string& destination);

}  // namespace tool::commands::detail
