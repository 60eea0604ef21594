// SPDX-License-Identifier: MIT
#pragma once

#include "opc/checks/Report.h"
#include "opc/checks/detail/CheckedContainer.h"

namespace opc::checks::detail {

/// Checks the packaging rules: names, content types, every relationships part, core properties.
/// Findings 201 to 228. Other parts are bytes to these rules, whatever their type. Throws
/// opc::SystemError.
void checkPackaging(CheckedContainer& container, Report& report);

}  // namespace opc::checks::detail
