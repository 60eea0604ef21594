// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ZipCommit.h"

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <optional>

#include "opc/Exception.h"
#include "opc/zippackage/detail/TemporaryPackage.h"

namespace opc::zippackage::detail {
namespace {

// It is held for a few system calls.
constexpr std::chrono::seconds kMaxWait{10};

}  // namespace

void ZipCommit::run(bool replaceExisting, const std::function<void(OutputFile&)>& write,
                    const std::function<void(const std::string&)>& inspect,
                    const std::function<void()>& finished) {
  std::optional<TemporaryPackage> package;
  const auto context = [this] { return "cannot write package '" + path_ + "'"; };
  inContext(context, [&] {
    package.emplace(target_);
    OutputFile out(package->descriptor());
    write(out);
    out.flush();
    if (inspect) inspect(package->path());
    package->sync();
    const LockFile lock = lockPlace();
    requireUnchanged();
    package->moveInPlace(replaceExisting);
  });
  finished();
  package->syncFolder();
}

// Nobody who uses this class replaces the file between a look at it and the rename.
LockFile ZipCommit::lockPlace() const {
  LockFile lock;
  lock.take(target_.path(), LockFile::Kind::Commit, kMaxWait, {});
  switch (lock.state()) {
    case LockFile::State::Busy:
      throw Exception(ErrorCode::FileSystem, "another program has been replacing it for " +
                                                 std::to_string(kMaxWait.count()) + " seconds");
    case LockFile::State::Inaccessible:
      throw SystemError("cannot open lock file '" + lock.path() + "'", lock.number());
    case LockFile::State::CannotCreate:
      throw SystemError("cannot create lock file '" + lock.path() + "'", lock.number());
    default:
      return lock;
  }
}

void ZipCommit::requireUnchanged() const {
  if (opened_ == nullptr) return;
  struct stat named {};
  if (::stat(target_.named.c_str(), &named) != 0) {
    if (errno != ENOENT && errno != ENOTDIR) throw SystemError("cannot look at it", errno);
    throw Exception(ErrorCode::ChangedOnDisk, "it was removed since it was opened");
  }
  const FileVersion now = FileVersion::of(named);
  const FileVersion& then = opened_->version();
  if (now == then) return;
  throw Exception(ErrorCode::ChangedOnDisk, now.file == then.file
                                                ? "it was changed since it was opened"
                                                : "it was replaced since it was opened");
}

}  // namespace opc::zippackage::detail
