// SPDX-License-Identifier: MIT
#include "tool/process/PackageLock.h"

#include <fmt/format.h>

#include "opc/Exception.h"
#include "opc/PackageTarget.h"
#include "tool/process/Errors.h"

namespace tool::process {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 1s;

/// Returns an empty path if the folder does not exist.
std::string placeOf(const std::string& path) {
  try {
    return opc::PackageTarget::resolve(path).path();
  } catch (const opc::Exception&) {
    return {};
  }
}

}  // namespace

PackageLock::PackageLock(const std::string& path, const Subject& subject,
                         std::chrono::seconds limit, const std::function<void()>& notify,
                         const opc::interfaces::StopFunction& check) {
  const std::string place = path.empty() ? std::string() : placeOf(path);
  if (place.empty()) return;
  bool isNotified = false;
  const auto waiting = [&](opc::LockFile::Clock::duration waited) {
    check();
    if (isNotified || waited < kPatience) return;
    isNotified = true;
    notify();
  };
  lock_.take(place, opc::LockFile::Kind::Change, limit, waiting);
  switch (lock_.state()) {
    case opc::LockFile::State::Busy:
      throw Failure(sentence("cannot lock " + subject.kind, subject.name,
                             fmt::format("another command is still changing it after {} {}",
                                         limit.count(), limit == 1s ? "second" : "seconds")),
                    "--lock-timeout SECONDS waits longer");
    case opc::LockFile::State::Inaccessible: {
      Failure failure = systemFailure("cannot open lock file", lock_.path(), lock_.number());
      throw Failure(failure.what(),
                    "remove it if no other command is changing the " + subject.kind);
    }
    default:
      break;
  }
}

}  // namespace tool::process
