// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"

namespace addon::comparison {

/// One line of a listing: a file or an empty folder of the tree, or any part.
struct Item {
  std::string path;  ///< UTF-8; of a part its name, with the '/' in front
  opc::model::PartInfo info;
  std::optional<opc::plservices::FileSystemEntry> entry;  ///< in the tree
  std::optional<opc::model::PartId> part;                 ///< of what is not a folder of the tree
  std::optional<opc::interfaces::ItemIndex> item = {};    ///< of what is neither

  bool isFolder() const { return entry && !entry->isFile(); }
};

struct Totals {
  std::uint64_t files = 0;
  std::uint64_t folders = 0;  ///< empty ones
  std::uint64_t bytes = 0;
  std::uint64_t packed = 0;

  void add(const Item& item);
};

/// The files and empty folders of the tree, in the order of the host's file list.
std::vector<Item> readTree(addon::packaging::AddonPackage& package);

/// A folder or file and all below it, the root left out; folders, empty or not, come before what is
/// in them.
std::vector<Item> readSubtree(addon::packaging::AddonPackage& package,
                              const opc::plservices::FileSystemEntry& top);

Item partItem(addon::packaging::AddonPackage& package, opc::model::PartId part);

/// All parts but those of relationships, in order of their names' bytes.
std::vector<Item> readParts(addon::packaging::AddonPackage& package);

Totals totalsOf(const std::vector<Item>& items);

/// The item of the container that holds a file or part; nothing for a part in pieces.
std::optional<opc::interfaces::ItemIndex> containerItem(addon::packaging::AddonPackage& package,
                                                        const Item& item);

/// A fresh stream over what a file or part holds; it must not outlive the open package.
std::unique_ptr<opc::InputStream> openItem(addon::packaging::AddonPackage& package,
                                           const Item& item);

/// A piece of it as the container holds it: see IPhysicalPackage::packedBytes().
std::span<const unsigned char> packedBytes(addon::packaging::AddonPackage& package,
                                           const Item& item, std::uint64_t offset,
                                           std::size_t size);

}  // namespace addon::comparison
