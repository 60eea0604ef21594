// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "addon/gallery/PageFiles.h"

struct PageFile {
  std::string path;
  std::uint64_t size = 0;
  bool isFolder = false;
};

/// A tree of files without contents; folders above them are made.
class TreeOfFiles {
 public:
  explicit TreeOfFiles(const std::vector<PageFile>& files) {
    for (const PageFile& file : files) {
      if (file.isFolder) {
        tree_.reachFolder(file.path);
      } else {
        addFile(file);
      }
    }
  }

  /// For as long as this lives.
  addon::gallery::PageFiles files() {
    return {tree_, [this](opc::model::PartId part) { return sizes_[part]; }};
  }

 private:
  void addFile(const PageFile& file) {
    const std::string_view path = file.path;
    const std::size_t name = path.rfind('/') + 1;
    const auto folder = tree_.reachFolder(path.substr(0, name == 0 ? 0 : name - 1));
    tree_.addFile(folder, path.substr(name), sizes_.size());
    sizes_.push_back(file.size);
  }

  opc::plservices::FileTree tree_;
  std::vector<std::uint64_t> sizes_;
};
