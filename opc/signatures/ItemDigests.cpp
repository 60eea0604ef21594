// SPDX-License-Identifier: MIT
#include "opc/signatures/ItemDigests.h"

#include <algorithm>

namespace opc::signatures {

using interfaces::ItemIndex;

void ItemDigests::begin(std::size_t count) {
  values_.assign(count, std::nullopt);
}

void ItemDigests::set(ItemIndex item, const std::string& digest) {
  std::copy(digest.begin(), digest.end(), values_.at(item).emplace().begin());
}

std::optional<std::string> ItemDigests::find(ItemIndex item) const {
  if (item >= values_.size() || !values_[item]) return std::nullopt;
  return std::string(values_[item]->begin(), values_[item]->end());
}

}  // namespace opc::signatures
