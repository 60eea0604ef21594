// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::checks {

/// What two writings of one GUID have in common: without blanks and braces around it, in lower
/// case.
std::string plainGuid(std::u16string_view text);

/// Whether it is one: 8-4-4-4-12 hexadecimal digits, perhaps in braces.
bool isGuid(std::u16string_view text);

}  // namespace addon::checks
