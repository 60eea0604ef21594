// SPDX-License-Identifier: MIT
#pragma once

#include "addon/checks/CheckedContainer.h"
#include "addon/checks/Report.h"

namespace addon::checks {

/// Checks the packaging rules: names, content types, every relationships part, core properties.
/// Findings 201 to 228. Other parts are bytes to these rules, whatever their type. Throws
/// opc::SystemError.
void checkPackaging(CheckedContainer& container, Report& report);

}  // namespace addon::checks
