// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/TemporaryPackage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "opc/Exception.h"
#include "opc/FilePermissions.h"
#include "opc/SystemCall.h"

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
  // Private until it has the old file's mode: only those may read the new bytes who could read the
  // old ones.
  if (!file_.create(folder_.get(), target_.name, old ? 0600 : 0666)) {
    throw SystemError("cannot make a temporary file in '" + target_.folder + "'", errno);
  }
  if (!file_.name().empty()) removeAbandonedFiles(folder_.get(), target_.name);
  if (old) copyPermissions(target_.path(), *old, file_.descriptor());
}

std::string TemporaryPackage::path() const {
  return file_.name().empty() ? file_.pathOfNameless() : target_.folder + "/" + file_.name();
}

void TemporaryPackage::sync() {
  if (uninterrupted([&] { return ::fsync(file_.descriptor()); }) != 0) {
    throw SystemError("cannot flush a temporary file to the disk", errno);
  }
}

void TemporaryPackage::moveInPlace(bool replaceExisting) {
  if (file_.putInPlace(replaceExisting)) return;
  if (errno == EEXIST) throw Exception(ErrorCode::AlreadyExists, "it already exists");
  throw SystemError("cannot give a temporary file its name '" + target_.name + "'", errno);
}

void TemporaryPackage::syncFolder() {
  const int result = isFolderReadable_
                         ? uninterrupted([&] { return ::fsync(folder_.get()); })
                         : uninterrupted([&] { return ::syncfs(file_.descriptor()); });
  // Some file systems have nothing to flush for a folder, and say so in this way.
  if (result == 0 || errno == EINVAL || errno == ENOTSUP) return;
  throw SystemError("new package '" + target_.path() +
                        "' is in place, but its folder could not be flushed to the disk",
                    errno);
}

}  // namespace opc::zippackage::detail
