// SPDX-License-Identifier: MIT
#include "addon/comparison/Contents.h"

#include <algorithm>
#include <utility>

namespace addon::comparison {

namespace {

using addon::packaging::AddonPackage;
using opc::plservices::FileSystemEntry;

opc::model::PartId partOf(AddonPackage& package, const Item& item) {
  return item.part ? *item.part : package.fileSystem().partOf(*item.entry);
}

}  // namespace

std::vector<Item> readTree(AddonPackage& package) {
  std::vector<Item> items;
  items.reserve(package.fileSystem().nodes().size());
  package.fileSystem().visitFiles([&](std::string_view path, const FileSystemEntry& entry) {
    items.push_back({std::string(path), entry.info(), entry, std::nullopt});
  });
  return items;
}

std::vector<Item> readSubtree(AddonPackage& package, const FileSystemEntry& top) {
  std::vector<Item> items;
  std::vector<FileSystemEntry> waiting{top};
  while (!waiting.empty()) {
    const FileSystemEntry entry = waiting.back();
    waiting.pop_back();
    std::string path = entry.path();
    if (!path.empty()) items.push_back({std::move(path), entry.info(), entry, std::nullopt});
    const auto children = package.fileSystem().getChildren(entry);
    waiting.insert(waiting.end(), children.rbegin(), children.rend());
  }
  return items;
}

Item partItem(AddonPackage& package, opc::model::PartId part) {
  const opc::model::PartInfo info = package.logicalPackage().partInfo(part);
  return {"/" + std::string(info.itemName), info, std::nullopt, part};
}

std::vector<Item> readParts(AddonPackage& package) {
  std::vector<Item> items;
  package.logicalPackage().visitParts(
      "", [&](opc::model::PartId part) { items.push_back(partItem(package, part)); });
  std::sort(items.begin(), items.end(),
            [](const Item& a, const Item& b) { return a.path < b.path; });
  return items;
}

void Totals::add(const Item& item) {
  ++(item.isFolder() ? folders : files);
  bytes += item.info.size;
  packed += item.info.packedSize;
}

Totals totalsOf(const std::vector<Item>& items) {
  Totals totals;
  for (const Item& item : items) totals.add(item);
  return totals;
}

std::optional<opc::interfaces::ItemIndex> containerItem(AddonPackage& package, const Item& item) {
  if (item.item) return item.item;
  return package.logicalPackage().itemOf(partOf(package, item));
}

std::unique_ptr<opc::InputStream> openItem(AddonPackage& package, const Item& item) {
  if (item.item) return package.physicalPackage().openItem(*item.item);
  return package.logicalPackage().openPart(partOf(package, item));
}

std::span<const unsigned char> packedBytes(AddonPackage& package, const Item& item,
                                           std::uint64_t offset, std::size_t size) {
  if (item.item) return package.physicalPackage().packedBytes(*item.item, offset, size);
  return package.logicalPackage().packedBytes(partOf(package, item), offset, size);
}

}  // namespace addon::comparison
