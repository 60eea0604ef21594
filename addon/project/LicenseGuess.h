// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace addon::project {

/// The SPDX identifier of the license that a text is or grants, by phrases that no other one has;
/// "Other" when it is none of the common ones, or more than one.
std::string_view licenseTypeOf(std::string_view text);

}  // namespace addon::project
