// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

#include "opc/Exception.h"
#include "opc/checks/Report.h"
#include "opc/zippackage/ZipFault.h"

// The only place that maps faults to findings.

namespace opc::checks::detail {

/// Adds the finding for a fault of a package: that of its rule, or `otherwise` if the rule has none
/// of its own. `rule` is for a fault that names no rule.
void addFault(Report& report, const Exception& fault, FindingId otherwise, std::string_view part,
              std::string_view rule = {});

/// The finding for a fault of the directory. Nothing for an empty name, which is reported later as
/// the name of a stray item.
std::optional<FindingId> findingOf(zippackage::ZipFaultKind kind);

}  // namespace opc::checks::detail
