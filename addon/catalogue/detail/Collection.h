// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "addon/catalogue/detail/SiteFiles.h"
#include "addon/catalogue/detail/SiteState.h"

namespace addon::catalogue::detail {

/// Removes files of ours that neither the root names nor a root that was the last one less than a
/// day ago, whose index has been touched since; and temporary files that killed processes left. The
/// caller has locked the site. Files of others stay. Returns how many were removed. Throws
/// BrokenSite and opc::SystemError; then files that are still needed are all there.
std::uint64_t collect(SiteFiles& files, const SiteState& state);

}  // namespace addon::catalogue::detail
