// SPDX-License-Identifier: MIT
#include "opc/zippackage/TemporaryPackage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "opc/Exception.h"
#include "opc/zippackage/FileWriting.h"

namespace opc::zippackage {
namespace {

constexpr int kFolderFlags = O_DIRECTORY | O_CLOEXEC;

std::string temporaryName(const std::string& name) {
  constexpr std::size_t kMostBytes = 255;
  constexpr std::size_t kChance = 6;
  const std::string end = "." + chanceLetters(kChance) + ".tmp";
  return "." + name.substr(0, kMostBytes - 1 - end.size()) + end;
}

/// Nothing when there is no file in the target's place.
std::optional<struct stat> statusOf(int folder, const std::string& name) {
  struct stat status {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return status;
  if (errno == ENOENT) return std::nullopt;
  throw SystemError("cannot look at '" + name + "'", errno);
}

template <typename Call>
int repeated(const Call& call) {
  int result = 0;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  return result;
}

}  // namespace

TemporaryPackage::TemporaryPackage(PackageTarget target) : target_(std::move(target)) {
  folder_.reset(::open(target_.folder.c_str(), O_RDONLY | kFolderFlags));
  if (!folder_ && errno == EACCES) {
    // Files can be made in a folder that must not be listed.
    isFolderReadable_ = false;
    folder_.reset(::open(target_.folder.c_str(), O_PATH | kFolderFlags));
  }
  if (!folder_) throw SystemError("cannot open folder '" + target_.folder + "'", errno);
  const auto old = statusOf(folder_.get(), target_.name);
  create(old.has_value());
  if (!old) return;
  try {
    adopt(*old);
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
  constexpr int kAttempts = 100;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    name_ = temporaryName(target_.name);
    file_.reset(repeated([&] {
      return ::openat(folder_.get(), name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC,
                      isPrivate ? 0600 : 0666);
    }));
    if (file_) return;
    if (errno != EEXIST) break;
  }
  const int number = errno;
  name_.clear();
  throw SystemError("cannot make a temporary file in '" + target_.folder + "'", number);
}

void TemporaryPackage::adopt(const struct stat& old) {
  mode_t mode = old.st_mode & 07777;
  const bool isOurs = old.st_uid == ::geteuid() && old.st_gid == ::getegid();
  if (!isOurs && ::fchown(file_.get(), old.st_uid, old.st_gid) != 0) {
    // Best effort: the group at least. What acts in another's name must not change whose it is.
    if (::fchown(file_.get(), static_cast<uid_t>(-1), old.st_gid) != 0) mode &= 0777;
    mode &= ~static_cast<mode_t>(S_ISUID);
  }
  if (::fchmod(file_.get(), mode) != 0) {
    throw SystemError("cannot set the mode of a temporary file", errno);
  }
}

void TemporaryPackage::sync() {
  if (repeated([&] { return ::fsync(file_.get()); }) != 0) {
    throw SystemError("cannot flush a temporary file to the disk", errno);
  }
}

void TemporaryPackage::moveInPlace(bool replaceExisting) {
  const int folder = folder_.get();
  const unsigned flags = replaceExisting ? 0 : RENAME_NOREPLACE;
  const char* to = target_.name.c_str();
  const bool isMoved =
      ::renameat2(folder, name_.c_str(), folder, to, flags) == 0 ||
      (!replaceExisting && (errno == EINVAL || errno == ENOSYS) && linkWithoutReplacing());
  if (isMoved) return name_.clear();
  if (errno == EEXIST) throw Exception(ErrorCode::AlreadyExists, "it exists already");
  throw SystemError("cannot give a temporary file its name '" + target_.name + "'", errno);
}

// For file systems that know no rename of that kind: a link refuses an existing name, too.
bool TemporaryPackage::linkWithoutReplacing() {
  const int folder = folder_.get();
  if (::linkat(folder, name_.c_str(), folder, target_.name.c_str(), 0) != 0) return false;
  ::unlinkat(folder, name_.c_str(), 0);
  return true;
}

void TemporaryPackage::syncFolder() {
  const int result = isFolderReadable_ ? repeated([&] { return ::fsync(folder_.get()); })
                                       : repeated([&] { return ::syncfs(file_.get()); });
  // Some file systems have nothing to flush for a folder, and say so in this way.
  if (result == 0 || errno == EINVAL || errno == ENOTSUP) return;
  throw SystemError("new package '" + target_.path() +
                        "' is in place, but its folder could not be flushed to the disk",
                    errno);
}

}  // namespace opc::zippackage
