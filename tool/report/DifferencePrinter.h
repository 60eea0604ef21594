// SPDX-License-Identifier: MIT
#pragma once

#include "addon/comparison/PackageComparison.h"
#include "text/JsonWriter.h"
#include "tool/report/Output.h"

namespace tool::report {

/// The packages that were compared, and the result.
struct ComparisonReport {
  const addon::comparison::ComparedPackage& a;
  const addon::comparison::ComparedPackage& b;
  const addon::comparison::PackageDifferences& differences;
  bool isOfPathsOnly;  ///< only the chosen files were compared
};

/// The one JSON value of --json. Needs the hashes of the files.
void writeDifferencesAsJson(const ComparisonReport& report, const Sink& sink);

/// The number of differences of each kind.
void printDifferenceCounts(const ComparisonReport& report, Output& output);

/// A line for everything that differs and, with `withLines`, the changed lines of text files, as
/// input for `patch -p1`.
void printDifferences(const ComparisonReport& report, bool withLines, bool isColored,
                      Output& output);

/// A value as JSON.
void writeValue(const addon::comparison::DocumentValue& value, text::JsonWriter& json);

/// "1.2 kB -> 1.3 kB", in bytes if both would look the same, or one size if they are equal.
std::string describeSizeChange(std::uint64_t a, std::uint64_t b);

}  // namespace tool::report
