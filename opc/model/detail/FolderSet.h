// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

#include "opc/model/HashIndex.h"

namespace opc::model::detail {

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
