// SPDX-License-Identifier: MIT
#pragma once

#include "addon/comparison/PackageComparison.h"
#include "text/JsonWriter.h"
#include "tool/report/Output.h"

namespace tool::report {

/// What was compared, and what came out of it.
struct ComparisonReport {
  const addon::comparison::ComparedPackage& a;
  const addon::comparison::ComparedPackage& b;
  const addon::comparison::PackageDifferences& differences;
  bool isOfPathsOnly;  ///< only files were compared, those that were chosen
};

/// The one JSON value of --json. Needs the hashes of the files.
void printDifferencesAsJson(const ComparisonReport& report, Output& output);

/// How many of each kind differ.
void printDifferenceCounts(const ComparisonReport& report, Output& output);

/// A line for everything that differs and, with `withLines`, the lines in which text files differ,
/// as `patch -p1` takes them.
void printDifferences(const ComparisonReport& report, bool withLines, bool isColored,
                      Output& output);

/// A value as JSON.
void writeValue(const addon::comparison::DocumentValue& value, text::JsonWriter& json);

/// "1.2 kB -> 1.3 kB", in bytes where that would show no change, one size when there is none.
std::string describeSizeChange(std::uint64_t a, std::uint64_t b);

}  // namespace tool::report
