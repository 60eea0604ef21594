// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "opc/checks/Finding.h"

namespace addon::checks {

using opc::checks::FindingId;
using opc::checks::FindingInfo;

/// All findings, in the order of their numbers: the source of `--explain` and of docs/findings.md.
std::span<const FindingInfo> catalogue();
/// Null if there is no such finding.
const FindingInfo* findInfo(std::uint16_t number);
/// What a finding is about: "container", "opc", "document", "reference", "style" or
/// "signature".
std::string_view groupOf(FindingId id);

/// The page of the manual that lists every finding, as Markdown.
std::string findingsTable();

}  // namespace addon::checks
