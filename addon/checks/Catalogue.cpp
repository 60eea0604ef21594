// SPDX-License-Identifier: MIT
#include "addon/checks/Catalogue.h"

#include <algorithm>
#include <vector>

namespace addon::checks {

std::span<const FindingInfo> catalogue() {
  static const std::vector<FindingInfo> kAll = [] {
    const auto package = packageFindings();
    const auto addon = addonFindings();
    std::vector<FindingInfo> all(package.begin(), package.end());
    all.insert(all.end(), addon.begin(), addon.end());
    return all;
  }();
  return kAll;
}

const FindingInfo* findInfo(std::uint16_t number) {
  const auto all = catalogue();
  const auto found = std::lower_bound(
      all.begin(), all.end(), number,
      [](const FindingInfo& info, std::uint16_t wanted) { return info.number < wanted; });
  return found == all.end() || found->number != number ? nullptr : &*found;
}

Group groupOf(std::uint16_t number) {
  return static_cast<Group>(number / 100);
}

std::string_view nameOf(Group group) {
  switch (group) {
    case Group::Container:
      return "container";
    case Group::Opc:
      return "opc";
    case Group::Document:
      return "document";
    case Group::Reference:
      return "reference";
    case Group::Style:
      return "style";
  }
  return "";
}

std::string idOf(std::uint16_t number) {
  return "KR" + std::to_string(number);
}

}  // namespace addon::checks
