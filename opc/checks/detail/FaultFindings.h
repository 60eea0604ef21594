// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

#include "opc/Exception.h"
#include "opc/checks/Report.h"
#include "opc/zippackage/ZipFault.h"

// The one place that says which finding a fault draws.

namespace opc::checks::detail {

/// Adds what a fault of a package draws: the finding of its rule, or `otherwise` when the rule has
/// none of its own or holds for any document. `rule` is for a fault that names none.
void addFault(Report& report, const Exception& fault, FindingId otherwise, std::string_view part,
              std::string_view rule = {});

/// The finding of a fault of the directory. Nothing for an empty name, which makes an item one that
/// no part has, and is reported as that.
std::optional<FindingId> findingOf(zippackage::ZipFaultKind kind);

}  // namespace opc::checks::detail
