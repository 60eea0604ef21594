// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "opc/checks/Report.h"

namespace opc::checks {

/// Adds a finding about an item or part of a package that may be hostile: names and texts are cut
/// to what a person reads, so that a report stays small whatever the package holds.
void addFinding(Report& report, FindingId id, std::string_view part, std::string_view message,
                std::string_view rule, std::size_t line = 0);

/// What breaking a packaging rule draws. `otherwise` is for rules that hold within any document of
/// the package: what a document of the kind at hand draws when it is malformed.
FindingId findingOfRule(std::string_view rule, FindingId otherwise);

}  // namespace opc::checks
