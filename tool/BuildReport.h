// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tool/Contents.h"
#include "tool/Output.h"
#include "tool/PackageVerdict.h"

namespace tool {

/// What there is to say about a package that was built, or would be.
struct BuildResult {
  std::string file;  ///< where it goes
  bool isWritten = false;
  std::optional<std::uint64_t> size = std::nullopt;  ///< of the package
  std::vector<Item> items = {};                      ///< its files and empty folders
  std::string digest = {};
  std::optional<PackageVerdict> verdict = std::nullopt;  ///< nothing when it was not checked
};

void printBuildAsJson(const BuildResult& result, Output& output);

/// Each file with its size, and what it comes to.
void printBuildPlan(const BuildResult& result, Output& output);

/// "3 files, 1 empty folder, 12.0 kB"
std::string describeContent(const std::vector<Item>& items);

}  // namespace tool
