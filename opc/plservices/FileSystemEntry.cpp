// SPDX-License-Identifier: MIT
#include "opc/plservices/FileSystemEntry.h"

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/FileTree.h"

namespace opc::plservices {

const FileTree& FileSystemEntry::tree() const {
  if (node_ < tree_->size() && !tree_->isRemoved(node_)) return *tree_;
  throw Exception(ErrorCode::InvalidState,
                  "file system entry is used after it was removed or its "
                  "package was closed");
}

bool FileSystemEntry::isFile() const {
  return tree().isFile(node_);
}

std::u16string FileSystemEntry::getPathName() const {
  return fromUtf8(path());
}

std::string FileSystemEntry::path() const {
  return tree().path(node_);
}

std::string FileSystemEntry::name() const {
  return std::string(tree().name(node_));
}

model::PartInfo FileSystemEntry::info() const {
  if (!isFile()) return {};
  return package_->partInfo(tree_->part(node_));
}

}  // namespace opc::plservices
