// SPDX-License-Identifier: MIT
#include "opc/TemporaryFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <utility>

#include "opc/Exception.h"
#include "opc/FileIdentity.h"
#include "opc/FilePermissions.h"
#include "opc/OpenFolder.h"
#include "opc/Random.h"
#include "opc/SystemCall.h"
#include "opc/Text.h"

namespace opc {
namespace {

constexpr std::string_view kEnd = ".tmp";
constexpr std::size_t kLetters = 6;
constexpr std::size_t kAround = sizeof ".." - 1 + kLetters + kEnd.size();

std::string randomLetters() {
  constexpr std::string_view kAlphabet =
      "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  std::uint64_t random[1];
  fillRandom(random);
  std::string letters;
  for (std::size_t i = 0; i < kLetters; ++i, random[0] /= kAlphabet.size()) {
    letters += kAlphabet[random[0] % kAlphabet.size()];
  }
  return letters;
}

constexpr int kNameless = O_TMPFILE | O_RDWR | O_CLOEXEC;

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return path.substr(0, slash == 0 ? 1 : slash);
}

/// Passes temporary names for the file at `path` to `make` until it succeeds, and returns that one.
/// Returns nothing, with errno set, if it fails for another reason than that the name is taken.
template <typename Make>
std::string findName(const std::string& path, const Make& make) {
  constexpr int kAttempts = 100;
  const std::size_t start = path.rfind('/') + 1;  // npos + 1 is 0
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::string name = path.substr(0, start) + temporaryName(path.substr(start));
    if (make(name)) return name;
    if (errno != EEXIST) break;
  }
  return {};
}

std::string pathOfDescriptor(int file) {
  return "/proc/self/fd/" + std::to_string(file);
}

bool isLinkRefused(int number) {
  return number == EPERM || number == EACCES || number == ENOSYS || number == EOPNOTSUPP ||
         number == EINVAL || number == ENOENT;
}

void removeIfAbandoned(int folder, const char* name) {
  constexpr std::time_t kDay = 86400;
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const FileDescriptor file(uninterrupted([&] { return ::openat(folder, name, kFlags); }));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (status.st_mtim.tv_sec > std::time(nullptr) - kDay) return;
  if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return;
  ::unlinkat(folder, name, 0);
}

}  // namespace

std::string temporaryName(std::string_view name) {
  return temporaryName(name, randomLetters());
}

std::string temporaryName(std::string_view name, std::string_view letters) {
  constexpr std::size_t kMaxBytes = 255;
  std::string made = ".";
  made += clipUtf8(name, kMaxBytes - kAround);
  made += ".";
  made += letters;
  return made += kEnd;
}

bool isTemporaryName(std::string_view name) noexcept {
  return !lettersOfTemporaryName(name).empty();
}

std::string_view lettersOfTemporaryName(std::string_view name) noexcept {
  if (name.size() <= kAround || name[0] != '.' || !name.ends_with(kEnd)) return {};
  name.remove_suffix(kEnd.size());
  const std::string_view letters = name.substr(name.size() - kLetters);
  const bool isOurs = name[name.size() - kLetters - 1] == '.' &&
                      std::all_of(letters.begin(), letters.end(), isAsciiLetterOrDigit);
  return isOurs ? letters : std::string_view();
}

TemporaryFile::~TemporaryFile() {
  if (!name_.empty()) ::unlinkat(folder_, name_.c_str(), 0);
}

bool TemporaryFile::create(int folder, std::string path, mode_t mode) {
  folder_ = folder;
  path_ = std::move(path);
  const std::string beside = folderOf(path_);
  const auto open = [&] { return ::openat(folder_, beside.c_str(), kNameless, mode); };
  file_.reset(uninterrupted(open));
  // Without /proc it could not get a name.
  if (file_ && ::access(pathOfNameless().c_str(), F_OK) == 0) return true;
  return createNamed(mode);
}

bool TemporaryFile::createNamed(mode_t mode) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const auto open = [&](const std::string& name) {
    file_.reset(uninterrupted([&] { return ::openat(folder_, name.c_str(), kFlags, mode); }));
    return static_cast<bool>(file_);
  };
  name_ = findName(path_, open);
  if (!name_.empty()) ::flock(file_.get(), LOCK_EX | LOCK_NB);
  return !name_.empty();
}

std::string TemporaryFile::pathOfNameless() const {
  return pathOfDescriptor(file_.get());
}

bool TemporaryFile::finishWriting() {
  const int copy = ::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0);
  // An interrupted close has closed it.
  return copy >= 0 && (::close(copy) == 0 || errno == EINTR);
}

bool TemporaryFile::putInPlace(bool replaces) {
  if (name_.empty()) {
    if (!replaces && linkTo(path_)) return true;
    if (!replaces || !linkBeside()) {
      if (!isLinkRefused(errno) || !copyToNamed()) return false;
    }
  }
  bool isMoved = rename(replaces ? 0 : RENAME_NOREPLACE);
  // There are file systems that know no rename of that kind, and some of those know no links.
  if (!isMoved && !replaces && (errno == EINVAL || errno == ENOSYS)) {
    isMoved = linkWithoutReplacing();
    if (!isMoved && errno != EEXIST) isMoved = claimWithoutReplacing();
  }
  if (isMoved) name_.clear();
  return isMoved;
}

bool TemporaryFile::linkTo(const std::string& path) const {
  const std::string ours = pathOfNameless();
  const auto link = [&] {
    return ::linkat(AT_FDCWD, ours.c_str(), folder_, path.c_str(), AT_SYMLINK_FOLLOW);
  };
  return uninterrupted(link) == 0 || isInPlace(path);
}

// Nothing can be linked over an existing name, but it can be renamed over it.
bool TemporaryFile::linkBeside() {
  name_ = findName(path_, [&](const std::string& name) { return linkTo(name); });
  return !name_.empty();
}

// Some systems allow no links at all, which shows only now.
bool TemporaryFile::copyToNamed() {
  const FileDescriptor nameless = std::move(file_);
  const std::string from = pathOfDescriptor(nameless.get());
  struct stat status {};
  if (::fstat(nameless.get(), &status) != 0 || !createNamed(0600)) return false;
  try {
    copyPermissions(from, status, file_.get());
  } catch (const SystemError& error) {
    errno = error.number();
    return false;
  }
  off_t done = 0;
  while (done < status.st_size) {
    const auto left = static_cast<std::size_t>(status.st_size - done);
    const auto send = [&] { return ::sendfile(file_.get(), nameless.get(), &done, left); };
    if (uninterrupted(send) <= 0) return false;
  }
  return uninterrupted([&] { return ::fsync(file_.get()); }) == 0;
}

bool TemporaryFile::rename(unsigned flags) const {
  const int result = uninterrupted(
      [&] { return ::renameat2(folder_, name_.c_str(), folder_, path_.c_str(), flags); });
  return result == 0 || isInPlace(path_);
}

// A link refuses an existing name, too.
bool TemporaryFile::linkWithoutReplacing() {
  const int result =
      uninterrupted([&] { return ::linkat(folder_, name_.c_str(), folder_, path_.c_str(), 0); });
  if (result != 0 && !isInPlace(path_)) return false;
  uninterrupted([&] { return ::unlinkat(folder_, name_.c_str(), 0); });
  return true;
}

// Making a file refuses an existing name; the empty one in between does no harm.
bool TemporaryFile::claimWithoutReplacing() {
  const char* name = path_.c_str();
  const FileDescriptor claim(uninterrupted(
      [&] { return ::openat(folder_, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); }));
  if (!claim) return false;
  if (rename(0)) return true;
  const int number = errno;
  ::unlinkat(folder_, name, 0);
  errno = number;
  return false;
}

// A call that was interrupted, or whose answer a network lost, may have done its work and fail only
// when it is made again.
bool TemporaryFile::isInPlace(const std::string& path) const {
  const int number = errno;
  struct stat named {};
  struct stat ours {};
  const bool isSame = ::fstatat(folder_, path.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
                      ::fstat(file_.get(), &ours) == 0 && FileIdentity(named) == FileIdentity(ours);
  errno = number;
  return isSame;
}

FileDescriptor createNamelessFile(const std::string& folder) {
  FileDescriptor file(uninterrupted([&] { return ::open(folder.c_str(), kNameless, 0600); }));
  if (file) return file;
  // Not every file system supports it: the file has a name for a moment then.
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  findName(folder + "/kraddon", [&](const std::string& name) {
    file.reset(uninterrupted([&] { return ::open(name.c_str(), kFlags, 0600); }));
    if (file) ::unlink(name.c_str());
    return static_cast<bool>(file);
  });
  return file;
}

void removeAbandonedFiles(int folder, const std::string& path) {
  OpenFolder beside(folder, folderOf(path));
  if (!beside) return;
  const std::string name = path.substr(path.rfind('/') + 1);
  while (const dirent* entry = beside.next()) {
    const std::string_view letters = lettersOfTemporaryName(entry->d_name);
    if (letters.empty() || temporaryName(name, letters) != entry->d_name) continue;
    removeIfAbandoned(beside.descriptor(), entry->d_name);
  }
}

}  // namespace opc
