// SPDX-License-Identifier: MIT
#include "addon/checks/Catalogue.h"

#include <algorithm>
#include <array>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/SignatureFindings.h"

namespace addon::checks {

using opc::checks::packageFindings;

std::span<const FindingInfo> catalogue() {
  static const std::vector<FindingInfo> kAll = [] {
    const auto package = packageFindings();
    const auto addon = addonFindings();
    std::vector<FindingInfo> all(package.begin(), package.end());
    all.insert(all.end(), addon.begin(), addon.end());
    const auto signature = opc::checks::signatureFindings();
    all.insert(all.end(), signature.begin(), signature.end());
    return all;
  }();
  return kAll;
}

const FindingInfo* findInfo(std::uint16_t number) {
  const auto all = catalogue();
  const auto found = std::lower_bound(
      all.begin(), all.end(), number,
      [](const FindingInfo& info, std::uint16_t wanted) { return info.id.number < wanted; });
  return found == all.end() || found->id.number != number ? nullptr : &*found;
}

std::string_view groupOf(FindingId id) {
  constexpr std::array<std::string_view, 6> kGroups{"container", "opc",   "document",
                                                    "reference", "style", "signature"};
  return kGroups.at(id.number / 100u - 1);
}

}  // namespace addon::checks
