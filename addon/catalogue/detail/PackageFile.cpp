// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/PackageFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>

#include "addon/catalogue/Limits.h"
#include "addon/catalogue/SitePaths.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/Exception.h"
#include "opc/FileIdentity.h"
#include "opc/FileIo.h"
#include "opc/SystemCall.h"
#include "text/ByteCount.h"
#include "text/Sha256.h"

namespace addon::catalogue::detail {

using opc::uninterrupted;

namespace {

constexpr std::size_t kPiece = 256u << 10;

[[noreturn]] void fail(std::string_view what, const std::string& path, int number) {
  throw opc::SystemError(fmt::format("{} '{}'", what, path), number);
}

void requireSmall(std::uint64_t size, const std::string& path) {
  if (size <= kMaxPackageSize) return;
  throw opc::Exception(opc::ErrorCode::TooLarge,
                       opc::sentence("cannot add", path,
                                     fmt::format("a package may have at most {}",
                                                 text::describeBytes(kMaxPackageSize))));
}

/// Passes all bytes of a file to `take`.
template <typename Take>
void readAll(int file, const std::string& path, const opc::interfaces::StopFunction& stop,
             const Take& take) {
  // Not zeroed: most packages take a small part of it.
  const auto piece = std::make_unique_for_overwrite<char[]>(kPiece);
  std::uint64_t done = 0;
  while (true) {
    if (stop) stop();
    const ssize_t count =
        uninterrupted([&] { return ::pread(file, piece.get(), kPiece, static_cast<off_t>(done)); });
    if (count < 0) fail("cannot read", path, errno);
    if (count == 0) return;
    take(std::string_view(piece.get(), static_cast<std::size_t>(count)));
    done += static_cast<std::uint64_t>(count);
    requireSmall(done, path);
  }
}

}  // namespace

PackageFile::PackageFile(SiteFiles& files, const std::string& path,
                         const opc::interfaces::StopFunction& stop)
    : files_(files), source_(path), stop_(stop) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  file_.reset(uninterrupted([&] { return ::open(path.c_str(), kFlags); }));
  struct stat status {};
  if (!file_ || ::fstat(file_.get(), &status) != 0) fail("cannot open package", path, errno);
  if (!S_ISREG(status.st_mode)) {
    throw opc::Exception(opc::ErrorCode::InvalidArgument,
                         opc::sentence("cannot open package", path, "it is not a file"));
  }
  requireSmall(static_cast<std::uint64_t>(status.st_size), path);
  text::Sha256 hash;
  readAll(file_.get(), path, stop_, [&](std::string_view piece) { hash.update(piece); });
  sha256_ = hash.finish();
  place_ = hashedPath(kPackageFolder, sha256_, packaging::kPackageExtension);
}

PackageFile::~PackageFile() {
  if (!linked_.empty()) ::unlinkat(files_.descriptor(), linked_.c_str(), 0);
}

void PackageFile::bring(bool isLinking) {
  // One that a power failure cut short, or somebody damaged, is replaced.
  isStored_ = files_.hashOf(place_) == sha256_;
  if (isStored_) return;
  files_.makeFolder(std::string(kPackageFolder));
  if (!isLinking || !link()) copy();
}

void PackageFile::copy() {
  if (!copy_.create(files_.descriptor(), place_, 0666)) {
    fail("cannot write", files_.onDisk(place_), errno);
  }
  const std::string what = fmt::format("cannot write '{}'", files_.onDisk(place_));
  text::Sha256 hash;
  readAll(file_.get(), source_, stop_, [&](std::string_view piece) {
    hash.update(piece);
    opc::writeFully(copy_.descriptor(), piece.data(), piece.size(), what);
  });
  if (hash.finish() != sha256_) {
    throw opc::Exception(opc::ErrorCode::ChangedOnDisk,
                         opc::sentence("cannot add", source_, "it changed while it was read"));
  }
}

// Returns false where there are no links, or none to that file.
bool PackageFile::link() {
  const std::string name = fmt::format("{}/{}", kPackageFolder, opc::temporaryName(sha256_));
  const auto make = [&] {
    return ::linkat(AT_FDCWD, source_.c_str(), files_.descriptor(), name.c_str(),
                    AT_SYMLINK_FOLLOW);
  };
  if (uninterrupted(make) != 0) return false;
  linked_ = name;
  struct stat ours {};
  struct stat theirs {};
  if (::fstat(file_.get(), &theirs) == 0 &&
      ::fstatat(files_.descriptor(), name.c_str(), &ours, 0) == 0 &&
      opc::FileIdentity(ours) == opc::FileIdentity(theirs)) {
    return true;
  }
  throw opc::Exception(opc::ErrorCode::ChangedOnDisk,
                       opc::sentence("cannot add", source_, "it changed while it was read"));
}

std::string PackageFile::path() const {
  if (isStored_) return files_.onDisk(place_);
  if (!linked_.empty()) return files_.onDisk(linked_);
  return copy_.name().empty() ? copy_.pathOfNameless() : files_.onDisk(copy_.name());
}

void PackageFile::putInPlace() {
  if (isStored_) return;
  if (linked_.empty()) {
    files_.putInPlace(copy_, place_);
  } else {
    files_.flushFile(file_.get(), place_);
    files_.rename(linked_, place_);
    linked_.clear();
  }
  isStored_ = true;
}

}  // namespace addon::catalogue::detail
