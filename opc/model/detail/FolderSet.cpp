// SPDX-License-Identifier: MIT
#include "opc/model/detail/FolderSet.h"

#include "opc/model/NameKey.h"

namespace opc::model::detail {
namespace {

auto isFolder(std::string_view path) {
  return [path](const FolderSet::Folder& folder) { return equalKeys(folder.path(), path); };
}

}  // namespace

void FolderSet::add(std::string_view itemName) {
  const FolderPath path(itemName);
  for (auto step = path.steps().rbegin(); step != path.steps().rend(); ++step) {
    if (addTo(step->hash, itemName.substr(0, step->length), 1)) return;
    folders_.insert(step->hash, {itemName.data(), static_cast<std::uint32_t>(step->length),
                                 static_cast<std::uint32_t>(itemName.size()), 1});
  }
}

bool FolderSet::addTo(std::uint64_t hash, std::string_view path, std::uint64_t count) {
  Folder* folder = folders_.find(hash, isFolder(path));
  if (folder != nullptr) folder->children += count;
  return folder != nullptr;
}

void FolderSet::remove(std::string_view itemName) {
  const FolderPath path(itemName);
  for (auto step = path.steps().rbegin(); step != path.steps().rend(); ++step) {
    const auto same = isFolder(itemName.substr(0, step->length));
    Folder* folder = folders_.find(step->hash, same);
    if (folder == nullptr || --folder->children != 0) return;
    folders_.erase(step->hash, same);
  }
}

const FolderSet::Folder* FolderSet::find(std::uint64_t hash, std::string_view path) const {
  return folders_.find(hash, isFolder(path));
}

}  // namespace opc::model::detail
