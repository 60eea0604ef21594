// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "opc/checks/Report.h"

namespace opc::checks::detail {

/// Checks the name of an item of the container: findings 111 and 114. `stored` is the name's bytes
/// in the file. Returns whether the name is one that no part has, and a finding says so.
bool checkItemName(std::string_view name, std::string_view stored, Report& report);

}  // namespace opc::checks::detail
