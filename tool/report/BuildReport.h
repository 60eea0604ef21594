// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "addon/checks/PackageVerdict.h"
#include "addon/comparison/Contents.h"
#include "tool/report/Output.h"

namespace tool::report {

/// A file or an empty folder of the package.
struct BuildEntry {
  std::string path;
  std::optional<std::uint64_t> size;  ///< nothing for a folder
};

/// Why a build failed.
struct BuildFailure {
  std::string message;
  std::string hint;
  addon::checks::SourcePlace place;
};

/// The report about a package that was built, or would be.
struct BuildResult {
  std::string file = {};  ///< the path of the package; "" if it failed before that was known
  bool isWritten = false;
  std::optional<std::uint64_t> size = std::nullopt;  ///< of the package
  std::vector<BuildEntry> entries = {};
  addon::comparison::Totals totals = {};
  std::string digest = {};
  std::optional<addon::checks::PackageVerdict> verdict =
      std::nullopt;  ///< nothing if it was not checked
  std::optional<BuildFailure> failure = std::nullopt;
};

/// The result for a package with these files and empty folders, before it is written.
BuildResult resultFor(const std::string& file, const std::vector<addon::comparison::Item>& items);

void printBuildAsJson(const BuildResult& result, Output& output);

/// The name and the size of the package, and what is in it.
void printBuilt(const BuildResult& result, Output& output);

/// Each file with its size, and the total.
void printBuildPlan(const BuildResult& result, Output& output);

/// "3 files, 1 empty folder, 12.0 kB"
std::string describeContent(const addon::comparison::Totals& totals);

}  // namespace tool::report
