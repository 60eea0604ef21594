// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "opc/model/NameKey.h"

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

}  // namespace opc::model::detail
