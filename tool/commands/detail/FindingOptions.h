// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>

#include "addon/checks/FindingRules.h"
#include "opc/Exception.h"
#include "tool/line/Arguments.h"
#include "tool/line/Command.h"
#include "tool/process/Errors.h"
#include "tool/report/FindingPrinter.h"

namespace tool::commands::detail {

/// An option that takes a rule about a finding.
constexpr line::OptionSpec ruleOption(const char* name, const char* help) {
  return {.longName = name,
          .valueName = "ID[:GLOB]",
          .help = help,
          .isRepeatable = true,
          .choices = addon::checks::findingIds};
}

// Options of the commands that report findings.
inline constexpr line::OptionSpec kIgnoreOption =
    ruleOption("ignore", "ignore a finding, everywhere or for paths that match");
inline constexpr line::OptionSpec kErrorOption =
    ruleOption("error", "treat a finding as an error, everywhere or for paths that match");
inline constexpr line::OptionSpec kWarnOption =
    ruleOption("warn", "treat a finding as a warning, everywhere or for paths that match");
inline constexpr line::OptionSpec kFormatOption{.longName = "format",
                                                .valueName = "FORMAT",
                                                .help = "the output format: text, github or sarif",
                                                .choices = report::findingFormats};

/// The result of `read` for an option. A value that it refuses is a usage error.
template <std::invocable Read>
decltype(auto) given(const Read& read) {
  try {
    return read();
  } catch (const opc::Exception& error) {
    throw process::UsageError(error.what());
  }
}

/// What --ignore, --error and --warn say. Throws UsageError for what is not a rule.
addon::checks::RuleLists ruleListsOf(const line::Invocation& invocation);

}  // namespace tool::commands::detail
