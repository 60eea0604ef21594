// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>
#include "opc/model/NameKey.h"

#include "opc/HashIndex.h"

namespace opc::model::detail {

/// The folders above an item, outermost first, each with its hash.
class FolderPath {
 public:
  struct Step {
    std::uint64_t hash;
    std::size_t length;  ///< of the folder's path within the item's name
  };

  explicit FolderPath(std::string_view itemName) {
    std::uint64_t hash = rootHash();
    std::size_t start = 0;
    for (std::size_t slash = itemName.find('/'); slash != std::string_view::npos;
         slash = itemName.find('/', start)) {
      hash = extendHash(hash, itemName.substr(start, slash - start));
      steps_.push_back({hash, slash});
      start = slash + 1;
    }
  }

  const std::vector<Step>& steps() const { return steps_; }

 private:
  std::vector<Step> steps_;
};

/// The folders that part names lie in: "a" and "a/b" for "a/b/c". No folder may be a part's name.
///
/// Every folder counts the parts and folders right in it, so adding or removing a name touches the
/// folders that come or go with it and one more.
class FolderSet {
 public:
  struct Folder {
    const char* name = nullptr;  ///< of an item in it, whose first `length` bytes are the folder
    std::uint32_t length = 0;
    std::uint32_t itemLength = 0;
    std::uint64_t children = 0;

    std::string_view path() const { return {name, length}; }
    std::string_view item() const { return {name, itemLength}; }
  };

  /// Adds an item. `itemName` must stay where it is as long as the set lives.
  void add(std::string_view itemName);
  /// Adds `count` more items to a folder that has one. Returns false when there is none such.
  bool addTo(std::uint64_t hash, std::string_view path, std::uint64_t count);
  void remove(std::string_view itemName);

  /// The folder of this name, or null.
  const Folder* find(std::uint64_t hash, std::string_view path) const;

  template <typename Visit>
  void forEach(const Visit& visit) const {
    folders_.forEach(visit);
  }

 private:
  HashIndex<Folder> folders_;
};

}  // namespace opc::model::detail
