// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/TemporaryPackage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "opc/Exception.h"
#include "opc/FileIdentity.h"
#include "opc/FileRights.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"

namespace opc::zippackage::detail {
namespace {

/// Nothing when there is no file in the target's place.
std::optional<struct stat> statusOf(int folder, const std::string& name) {
  struct stat status {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return status;
  if (errno == ENOENT) return std::nullopt;
  throw SystemError("cannot look at '" + name + "'", errno);
}

FileDescriptor openFolder(const std::string& path, int access) {
  return FileDescriptor(
      uninterrupted([&] { return ::open(path.c_str(), access | O_DIRECTORY | O_CLOEXEC); }));
}

}  // namespace

TemporaryPackage::TemporaryPackage(PackageTarget target) : target_(std::move(target)) {
  folder_ = openFolder(target_.folder, O_RDONLY);
  if (!folder_ && errno == EACCES) {
    // Files can be made in a folder that must not be listed.
    isFolderReadable_ = false;
    folder_ = openFolder(target_.folder, O_PATH);
  }
  if (!folder_) throw SystemError("cannot open folder '" + target_.folder + "'", errno);
  const auto old = statusOf(folder_.get(), target_.name);
  create(old.has_value());
  if (!old) return;
  try {
    copyRights(target_.path(), *old, file_.get());
  } catch (...) {
    ::unlinkat(folder_.get(), name_.c_str(), 0);  // No destructor runs for a half-made object.
    throw;
  }
}

TemporaryPackage::~TemporaryPackage() {
  if (!name_.empty()) ::unlinkat(folder_.get(), name_.c_str(), 0);
}

// Private until it has the old file's mode: nobody may read the new bytes who could not read the
// old ones.
void TemporaryPackage::create(bool isPrivate) {
  name_ = target_.name;
  file_ = createTemporaryFile(folder_.get(), name_, O_RDWR, isPrivate ? 0600 : 0666);
  if (file_) return;
  const int number = errno;
  name_.clear();
  throw SystemError("cannot make a temporary file in '" + target_.folder + "'", number);
}

void TemporaryPackage::sync() {
  if (uninterrupted([&] { return ::fsync(file_.get()); }) != 0) {
    throw SystemError("cannot flush a temporary file to the disk", errno);
  }
}

void TemporaryPackage::moveInPlace(bool replaceExisting) {
  bool isMoved = rename(replaceExisting ? 0 : RENAME_NOREPLACE);
  // There are file systems that know no rename of that kind, and some of those know no links.
  if (!isMoved && !replaceExisting && (errno == EINVAL || errno == ENOSYS)) {
    isMoved = linkWithoutReplacing();
    if (!isMoved && errno != EEXIST) isMoved = claimWithoutReplacing();
  }
  if (isMoved) return name_.clear();
  if (errno == EEXIST) throw Exception(ErrorCode::AlreadyExists, "it already exists");
  throw SystemError("cannot give a temporary file its name '" + target_.name + "'", errno);
}

bool TemporaryPackage::rename(unsigned flags) {
  const int folder = folder_.get();
  const int result = uninterrupted(
      [&] { return ::renameat2(folder, name_.c_str(), folder, target_.name.c_str(), flags); });
  return result == 0 || isInPlace();
}

// A link refuses an existing name, too.
bool TemporaryPackage::linkWithoutReplacing() {
  const int folder = folder_.get();
  const int result = uninterrupted(
      [&] { return ::linkat(folder, name_.c_str(), folder, target_.name.c_str(), 0); });
  if (result != 0 && !isInPlace()) return false;
  uninterrupted([&] { return ::unlinkat(folder, name_.c_str(), 0); });
  return true;
}

// Making a file refuses an existing name; the empty one in between does no harm.
bool TemporaryPackage::claimWithoutReplacing() {
  const int folder = folder_.get();
  const char* name = target_.name.c_str();
  const FileDescriptor claim(uninterrupted(
      [&] { return ::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); }));
  if (!claim) return false;
  if (rename(0)) return true;
  const int number = errno;
  ::unlinkat(folder, name, 0);
  errno = number;
  return false;
}

// A call that was interrupted, or whose answer a network lost, may have done its work and fail only
// when it is made again.
bool TemporaryPackage::isInPlace() const {
  const int number = errno;
  struct stat named {};
  struct stat ours {};
  const bool isSame =
      ::fstatat(folder_.get(), target_.name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
      ::fstat(file_.get(), &ours) == 0 && FileIdentity(named) == FileIdentity(ours);
  errno = number;
  return isSame;
}

void TemporaryPackage::syncFolder() {
  const int result = isFolderReadable_ ? uninterrupted([&] { return ::fsync(folder_.get()); })
                                       : uninterrupted([&] { return ::syncfs(file_.get()); });
  // Some file systems have nothing to flush for a folder, and say so in this way.
  if (result == 0 || errno == EINVAL || errno == ENOTSUP) return;
  throw SystemError("new package '" + target_.path() +
                        "' is in place, but its folder could not be flushed to the disk",
                    errno);
}

}  // namespace opc::zippackage::detail
