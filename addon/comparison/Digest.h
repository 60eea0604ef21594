// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "addon/comparison/Contents.h"
#include "opc/interfaces/Progress.h"

namespace addon::comparison {

/// "sha256:" and a hash of everything that a package says: each file, each empty folder, each
/// document, the screenshot, the properties, and all other parts, items and relationships. The same
/// whatever the packing and the times.
/// `items` is the whole tree. `progress` is called for every file.
std::string contentDigest(addon::packaging::AddonPackage& package, const std::vector<Item>& items,
                          const opc::interfaces::ProgressFunction& progress);

/// Reads a file to its end and returns its SHA-256. Calls `onRead` with the size of each piece.
using FileHasher =
    std::function<std::string(const Item& file, const std::function<void(std::size_t)>& onRead)>;
/// The same for a caller that makes more of the bytes. `hashFile` is called once for each file, in
/// their order.
std::string contentDigest(addon::packaging::AddonPackage& package, const std::vector<Item>& items,
                          const opc::interfaces::ProgressFunction& progress,
                          const FileHasher& hashFile);

/// The SHA-256 of what the part of that name holds ("/metadata/license.xml").
std::string hashOfPart(addon::packaging::AddonPackage& package, const std::string& partName);

}  // namespace addon::comparison
