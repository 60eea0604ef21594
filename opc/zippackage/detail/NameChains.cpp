// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/NameChains.h"

#include <algorithm>

#include "opc/CommonLength.h"

namespace opc::zippackage::detail {
std::size_t NameChains::Chain::size() const {
  std::size_t size = 0;
  for (const Run& run : runs) size += run.end - run.first;
  return size;
}

bool NameChains::isBefore(std::string_view a, std::string_view b) {
  return isBefore(a, b, commonLength(a, b));
}

bool NameChains::addToOther(std::uint32_t entry, std::string_view name) {
  const auto chain = std::find_if(chains_.begin(), chains_.end(), [name](const Chain& other) {
    return isBefore(other.last, name);
  });
  if (chain == chains_.end() && chains_.size() == kMaxChains) return false;
  current_ = static_cast<std::size_t>(chain - chains_.begin());
  if (chain == chains_.end()) chains_.emplace_back();
  chains_[current_].last = name;
  chains_[current_].runs.push_back({entry, entry + 1});
  return true;
}

bool NameChains::areDistinct() const {
  const auto longest =
      std::max_element(chains_.begin(), chains_.end(),
                       [](const Chain& a, const Chain& b) { return a.size() < b.size(); });
  std::vector<std::string_view> outside;
  for (auto chain = chains_.begin(); chain != chains_.end(); ++chain) {
    if (chain == longest) continue;
    if (chain->size() > mostOutside_ - outside.size()) return false;
    for (const Run& run : chain->runs) {
      for (std::uint32_t entry = run.first; entry < run.end; ++entry) {
        outside.push_back(directory_.name(entry));
      }
    }
  }
  std::sort(outside.begin(), outside.end());
  return std::adjacent_find(outside.begin(), outside.end()) == outside.end() &&
         std::none_of(outside.begin(), outside.end(),
                      [&](std::string_view name) { return contains(*longest, name); });
}

bool NameChains::contains(const Chain& chain, std::string_view name) const {
  const auto endsBefore = [this](const Run& run, std::string_view wanted) {
    return isBefore(directory_.name(run.end - 1), wanted);
  };
  const auto run = std::lower_bound(chain.runs.begin(), chain.runs.end(), name, endsBefore);
  if (run == chain.runs.end()) return false;
  std::uint32_t first = run->first;
  std::uint32_t last = run->end - 1;
  while (first < last) {
    const std::uint32_t middle = first + (last - first) / 2;
    if (isBefore(directory_.name(middle), name)) {
      first = middle + 1;
    } else {
      last = middle;
    }
  }
  return directory_.name(first) == name;
}

}  // namespace opc::zippackage::detail
