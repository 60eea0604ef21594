// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Sources.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Database.h"
#include "addon/catalogue/detail/DatabaseFile.h"
#include "addon/catalogue/detail/Pages.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/Exception.h"
#include "opc/FileDescriptor.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"

namespace addon::catalogue::detail {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& what, const std::string& path, int number) {
  throw opc::SystemError(what + " '" + path + "'", number);
}

bool isPackageName(const std::string& name) {
  return name.ends_with(packaging::kPackageExtension) && !opc::isTemporaryName(name);
}

bool isSame(const fs::path& folder, const std::string& other) {
  std::error_code error;
  return fs::equivalent(folder, other, error);
}

void addFrom(const std::string& folder, const std::string& site,
             std::vector<std::string>& packages) {
  if (isSame(folder, site)) return;
  std::error_code error;
  std::string reading = folder;
  fs::recursive_directory_iterator each(folder, error);
  while (!error && each != fs::recursive_directory_iterator()) {
    const fs::path path = each->path();
    std::error_code ofLink;  // A link to nothing fails, by its name, when it is opened.
    const bool isFolder = each->is_directory(ofLink);
    if (!isFolder && isPackageName(path.filename().string())) packages.push_back(path.string());
    // Links to folders are not followed.
    const bool isNext = isFolder && !each->is_symlink(ofLink) && !isSame(path, site);
    if (!isNext) each.disable_recursion_pending();
    reading = (isNext ? path : path.parent_path()).string();
    each.increment(error);
  }
  if (error) fail("cannot read folder", reading, error.value());
}

/// Brings the name of a new folder to the disk.
void flushNameOf(const std::string& folder) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const std::string parent = folder + "/..";
  const opc::FileDescriptor file(
      opc::uninterrupted([&] { return ::open(parent.c_str(), kFlags); }));
  // One that may be written to but not read cannot be flushed.
  if (!file && errno == EACCES) return;
  if (!file || opc::uninterrupted([&] { return ::fsync(file.get()); }) != 0) {
    fail("cannot make site", folder, errno);
  }
}

bool isOfSite(const std::string& name) {
  constexpr std::array kNames{kIndexFolder, kShardFolder, kPackageFolder, kPageFolder,
                              kFrontPage,   kTerms,       kDatabase,      kRecordLines};
  return opc::isTemporaryName(name) || isDatabaseJournal(name) ||
         std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

}  // namespace

std::vector<std::string> packagesIn(const std::vector<std::string>& given,
                                    const std::string& site) {
  std::vector<std::string> packages;
  for (const std::string& path : given) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
      addFrom(path, site, packages);
    } else {
      packages.push_back(path);
    }
  }
  std::sort(packages.begin(), packages.end());
  packages.erase(std::unique(packages.begin(), packages.end()), packages.end());
  return packages;
}

std::vector<std::string> storedPackages(const SiteFiles& files) {
  std::vector<std::string> packages;
  std::error_code error;
  for (fs::directory_iterator each(files.onDisk(kPackageFolder), error), end; !error && each != end;
       each.increment(error)) {
    const fs::path& path = each->path();
    if (path.extension() == packaging::kPackageExtension && isHash(path.stem().string())) {
      packages.push_back(
          hashedPath(kPackageFolder, path.stem().string(), packaging::kPackageExtension));
    }
  }
  if (error && error.value() != ENOENT) {
    fail("cannot read folder", files.onDisk(kPackageFolder), error.value());
  }
  std::sort(packages.begin(), packages.end());
  return packages;
}

std::uint64_t lastSequence(const SiteFiles& files) {
  return std::max({sequenceAtStart(files, std::string(kFrontPage)),
                   sequenceAtStart(files, std::string(kTerms)),
                   sequenceAtStart(files, std::string(kRecordLines)),
                   sequenceOfDatabase(files.onDisk(kDatabase))});
}

void prepareFolder(const std::string& folder) {
  if (::mkdir(folder.c_str(), 0777) == 0) return flushNameOf(folder);
  if (errno != EEXIST) fail("cannot make site", folder, errno);
  std::error_code error;
  bool hasRoot = false;
  std::string other;
  for (fs::directory_iterator each(folder, error), end; !error && each != end;
       each.increment(error)) {
    const std::string name = each->path().filename().string();
    if (name == kRootFile) hasRoot = true;
    if (!isOfSite(name) && (other.empty() || name < other)) other = name;
  }
  if (error) fail("cannot open site", folder, error.value());
  if (hasRoot || other.empty()) return;
  throw opc::Exception(
      opc::ErrorCode::InvalidArgument,
      opc::sentence("cannot make site", folder, "it has other things, such as '" + other + "'"));
}

}  // namespace addon::catalogue::detail
