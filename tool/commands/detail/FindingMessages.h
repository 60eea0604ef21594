// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "addon/checks/PackageVerdict.h"
#include "tool/line/Arguments.h"

namespace tool::commands::detail {

/// The findings as text for standard error; nothing if --quiet is set.
std::string describeFindings(const addon::checks::PackageVerdict& verdict,
                             const line::Invocation& invocation);

/// If there is an error among the findings, prints them and throws Failure. `what`, such as "cannot
/// change", is the beginning of its message.
void refuseErrors(std::string_view what, const addon::checks::PackageVerdict& verdict,
                  std::string_view hint, const line::Invocation& invocation);

}  // namespace tool::commands::detail
