// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "addon/build/PackageBuild.h"
#include "tool/line/Arguments.h"
#include "tool/report/BuildReport.h"

namespace tool::commands::detail {

/// Prints the outcome of a build, once: findings, the result and why it failed, as --format, --json
/// and --dry-run say.
class BuildReporter {
 public:
  /// `folder` is the project. Throws UsageError for options that exclude each other.
  BuildReporter(const line::Invocation& invocation, std::string folder);

  void print(const addon::build::BuildResult& result);

  /// Builds what `request` returns, or rehearses it with --dry-run, and prints the result of a
  /// build that failed before it was printed. Throws what the build throws, with the path of the
  /// manifest in its faults.
  void run(const std::function<addon::build::BuildRequest()>& request);

 private:
  void build(const std::function<addon::build::BuildRequest()>& request,
             addon::build::BuildResult& result);
  void fail(addon::build::BuildResult& result, const addon::build::BuildFailure& failure);
  void printFindings(const addon::build::BuildResult& result, report::Output& output) const;

  const line::Invocation& invocation_;
  std::string folder_;
  std::string format_;
  bool isPrinted_ = false;
};

}  // namespace tool::commands::detail
