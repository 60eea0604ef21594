// SPDX-License-Identifier: MIT
#include "addon/checks/Catalogue.h"

namespace addon::checks {

std::span<const FindingInfo> addonFindings() {
  return {};
}

}  // namespace addon::checks
