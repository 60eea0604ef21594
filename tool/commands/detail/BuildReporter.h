// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "tool/line/Arguments.h"
#include "tool/report/BuildReport.h"

namespace tool::commands::detail {

/// Prints the outcome of a build, once: findings, the result and why it failed, as --format, --json
/// and --dry-run say.
class BuildReporter {
 public:
  /// `folder` is the project. Throws UsageError for options that exclude each other.
  BuildReporter(const line::Invocation& invocation, std::string folder);

  report::BuildResult result;

  void print();

  /// Calls `build`, and prints the result of a build that failed before it was printed. Throws what
  /// `build` throws, with the path of the manifest in its faults.
  void run(const std::function<void()>& build);

 private:
  void fail(const report::BuildFailure& failure);
  void printFindings(report::Output& output) const;

  const line::Invocation& invocation_;
  std::string folder_;
  std::string format_;
  bool isPrinted_ = false;
};

}  // namespace tool::commands::detail
