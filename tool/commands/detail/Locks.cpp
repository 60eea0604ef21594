// SPDX-License-Identifier: MIT
#include "tool/commands/detail/Locks.h"

#include <chrono>
#include <cstdint>

#include "tool/commands/detail/SharedOptions.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"

namespace tool::commands::detail {

namespace {

process::PackageLock lock(const std::string& path, const process::PackageLock::Subject& subject,
                          const line::Invocation& invocation) {
  constexpr std::int64_t kUsual = 60;
  constexpr std::int64_t kMaxTimeout = 1'000'000;
  const std::chrono::seconds limit(
      invocation.number(kLockTimeoutOption.longName, 0, kMaxTimeout).value_or(kUsual));
  if (!process::Interrupt::isDeferred()) process::Interrupt::defer();
  return {path, subject, limit, [&] {
            report::printNotice(invocation,
                                process::sentence("waiting for " + subject.kind, subject.name,
                                                  "another command is changing it"));
          }};
}

}  // namespace

process::PackageLock lockPackage(const std::string& path, const line::Invocation& invocation) {
  return lock(path, {"package", path}, invocation);
}

process::PackageLock lockSite(const std::string& folder, const line::Invocation& invocation) {
  return lock(folder + (folder.ends_with('/') ? "root.json" : "/root.json"), {"site", folder},
              invocation);
}

}  // namespace tool::commands::detail
