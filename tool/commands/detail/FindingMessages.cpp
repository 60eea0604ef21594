// SPDX-License-Identifier: MIT
#include "tool/commands/detail/FindingMessages.h"

#include "text/ByteCount.h"
#include "tool/process/Errors.h"
#include "tool/report/FindingPrinter.h"
#include "tool/report/Messages.h"

namespace tool::commands::detail {

using addon::checks::PackageVerdict;

std::string describeFindings(const PackageVerdict& verdict, const line::Invocation& invocation) {
  if (invocation.settings().isQuiet) return {};
  return report::describeFindings(verdict, report::wantsErrorColor(invocation.settings()));
}

void refuseErrors(std::string_view what, const PackageVerdict& verdict, std::string_view hint,
                  const line::Invocation& invocation) {
  if (verdict.errors == 0) return;
  report::printToStandardError(
      report::describeFindings(verdict, report::wantsErrorColor(invocation.settings())));
  const std::string why = "it would have " + text::counted(verdict.errors, "new error");
  throw process::Failure(process::sentence(what, verdict.file, why), std::string(hint));
}

}  // namespace tool::commands::detail
