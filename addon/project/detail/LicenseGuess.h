// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace addon::project::detail {

/// The SPDX identifier of the license that a text contains or grants, recognised by phrases that
/// are unique to it. "Other" if it is not a common license, or more than one.
std::string_view licenseTypeOf(std::string_view text);

}  // namespace addon::project::detail
