// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/comparison/FileHashes.h"

namespace addon::comparison {

/// "sha256:" and a hash of everything that a package says: each file, each empty folder, each
/// document, the screenshot, the properties, and all other parts, items and relationships. The same
/// whatever the packing and the times.
/// `items` is the whole tree; for the rest see hashFiles().
std::string contentDigest(addon::packaging::AddonPackage& package, const std::vector<Item>& items,
                          const opc::interfaces::ProgressFunction& progress,
                          const opc::interfaces::BackgroundStarter& starter = nullptr);
/// The same with the hashes of the items, as hashFiles() returns them.
std::string contentDigest(addon::packaging::AddonPackage& package, const std::vector<Item>& items,
                          const std::vector<std::string>& hashes);

/// The SHA-256 of what the part of that name holds ("/metadata/license.xml").
std::string hashOfPart(addon::packaging::AddonPackage& package, const std::string& partName);

}  // namespace addon::comparison
