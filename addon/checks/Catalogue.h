// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "addon/checks/Finding.h"

namespace addon::checks {

/// The halves of the catalogue, by number: what any package can draw, and what an add-on can.
std::span<const FindingInfo> packageFindings();  // 1xx and 2xx
std::span<const FindingInfo> addonFindings();    // 3xx, 4xx and 5xx

}  // namespace addon::checks
