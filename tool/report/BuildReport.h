// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "addon/build/PackageBuild.h"
#include "addon/comparison/Contents.h"
#include "tool/report/Output.h"

namespace tool::report {

using addon::build::BuildResult;

void writeBuildAsJson(const BuildResult& result, const Sink& sink);

/// The name and the size of the package, and what is in it.
void printBuilt(const BuildResult& result, Output& output);

/// Each file with its size, and the total.
void printBuildPlan(const BuildResult& result, Output& output);

/// "3 files, 1 empty folder, 12.0 kB"
std::string describeContent(const addon::comparison::Totals& totals);

}  // namespace tool::report
