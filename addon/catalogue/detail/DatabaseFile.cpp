// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/DatabaseFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>

#include "addon/catalogue/SitePaths.h"
#include "opc/FileIo.h"
#include "opc/OpenFolder.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"

namespace addon::catalogue::detail {

using opc::FileDescriptor;
using opc::uninterrupted;

namespace {

/// Only a run that had the lock of the site, as the caller has now, used them.
void removeJournals(int folder) {
  opc::OpenFolder site(folder, "");
  if (!site) return;
  while (const dirent* entry = site.next()) {
    if (isDatabaseJournal(entry->d_name)) ::unlinkat(folder, entry->d_name, 0);
  }
}

}  // namespace

bool isDatabaseJournal(std::string_view name) {
  constexpr std::string_view kEnd = "-journal";
  if (!name.ends_with(kEnd)) return false;
  name.remove_suffix(kEnd.size());
  const std::string_view letters = opc::lettersOfTemporaryName(name);
  return !letters.empty() && opc::temporaryName(kDatabase, letters) == name;
}

DatabaseFile::DatabaseFile(SiteFiles& files)
    : files_(files), name_(opc::temporaryName(kDatabase)), path_(files.onDisk(name_)) {
  opc::removeAbandonedFiles(files_.descriptor(), std::string(kDatabase));
  removeJournals(files_.descriptor());
}

DatabaseFile::~DatabaseFile() {
  if (!name_.empty()) ::unlinkat(files_.descriptor(), name_.c_str(), 0);
}

FileDescriptor DatabaseFile::create() const {
  constexpr int kFlags = O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
  FileDescriptor file(
      uninterrupted([&] { return ::openat(files_.descriptor(), name_.c_str(), kFlags, 0666); }));
  if (!file) throw opc::SystemError(what(), errno);
  return file;
}

bool DatabaseFile::copy() const {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  const FileDescriptor from(uninterrupted(
      [&] { return ::openat(files_.descriptor(), std::string(kDatabase).c_str(), kFlags); }));
  struct stat status {};
  if (!from || ::fstat(from.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  const FileDescriptor to = create();
  // Where the file system can, the copy shares the blocks.
  if (::ioctl(to.get(), FICLONE, from.get()) == 0) return true;
  std::string piece(256u << 10, '\0');
  std::uint64_t done = 0;
  while (true) {
    const ssize_t count = uninterrupted(
        [&] { return ::pread(from.get(), piece.data(), piece.size(), static_cast<off_t>(done)); });
    if (count <= 0) return count == 0;
    const auto size = static_cast<std::size_t>(count);
    opc::writeFully(to.get(), done, piece.data(), size, what());
    done += size;
  }
}

bool DatabaseFile::tryCopy() const noexcept {
  try {
    return copy();
  } catch (const opc::SystemError&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void DatabaseFile::putInPlace() {
  const FileDescriptor file(uninterrupted(
      [&] { return ::openat(files_.descriptor(), name_.c_str(), O_RDONLY | O_CLOEXEC); }));
  if (!file) throw opc::SystemError(what(), errno);
  files_.flushFile(file.get(), name_);
  files_.rename(name_, std::string(kDatabase));
  name_.clear();
}

std::string DatabaseFile::what() const {
  return fmt::format("cannot write '{}'", files_.onDisk(kDatabase));
}

}  // namespace addon::catalogue::detail
