// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Collection.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/DatabaseFile.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/Exception.h"
#include "opc/LockFile.h"
#include "opc/OpenFolder.h"
#include "opc/TemporaryFile.h"

namespace addon::catalogue::detail {

namespace {

using Names = std::set<std::string>;

/// The names in a folder of the site, in order; none if it is missing, or is a link.
std::vector<std::string> namesIn(const SiteFiles& files, const std::string& folder) {
  const auto fail = [&](int number) {
    throw opc::SystemError(fmt::format("cannot read folder '{}'", files.onDisk(folder)), number);
  };
  std::vector<std::string> names;
  opc::OpenFolder listing(files.descriptor(), folder, O_NOFOLLOW);
  if (!listing) {
    if (errno != ENOENT && errno != ENOTDIR) fail(errno);
    return names;
  }
  while (const dirent* entry = listing.next()) names.emplace_back(entry->d_name);
  if (errno != 0) fail(errno);
  std::sort(names.begin(), names.end());
  return names;
}

/// The hash that a name consists of but for its extension; "" if there is none.
std::string_view hashIn(std::string_view name, std::string_view extension) {
  if (!name.ends_with(extension)) return {};
  name.remove_suffix(extension.size());
  return isHash(name) ? name : std::string_view();
}

bool isHidden(std::string_view name) {
  return name.starts_with('.');
}

/// Whether it is what a killed process left: nobody else makes files while the site is locked.
bool isLeftBehind(std::string_view name) {
  return (opc::isTemporaryName(name) && !opc::isLockName(name)) || isDatabaseJournal(name);
}

std::string inFolder(const std::string& folder, const std::string& name) {
  std::string path = folder;
  path += '/';
  return path += name;
}

class Collector {
 public:
  Collector(SiteFiles& files, const SiteState& state) : files_(files) {
    if (state.root()) named_.insert(state.root()->index.path);
    for (const auto& [name, shard] : state.index().shards) nameShard(shard);
    nameRecent();
  }

  std::uint64_t run() {
    for (const std::string& name : namesIn(files_, ".")) {
      if (isLeftBehind(name)) remove(name);
    }
    for (const std::string_view folder : {kIndexFolder, kShardFolder}) {
      removeHashed(std::string(folder), kJsonExtension);
    }
    removeHashed(std::string(kPackageFolder), packaging::kPackageExtension);
    const std::string pages(kPageFolder);
    for (const std::string& addon : namesIn(files_, pages)) {
      if (!isHidden(addon)) removePages(inFolder(pages, addon));
    }
    return removed_;
  }

 private:
  void nameShard(const ShardReference& shard) {
    if (!named_.insert(shard.file.path).second) return;
    const std::string path = files_.onDisk(shard.file.path);
    catalogue::visitLines(files_.read(shard.file), path, [&](std::string_view line) {
      const Record record = catalogue::recordOf(line, path);
      named_.insert(record.package);
      named_.insert(record.page);
      if (!record.screenshot.empty()) named_.insert(record.screenshot);
    });
  }

  /// What the last roots named is still being fetched.
  void nameRecent() {
    constexpr std::time_t kDay = 86400;
    const std::string folder(kIndexFolder);
    // The folder itself may be a link, which readers follow.
    for (const std::string& name : namesIn(files_, inFolder(folder, "."))) {
      const std::string path = inFolder(folder, name);
      if (hashIn(name, kJsonExtension).empty() || named_.contains(path)) continue;
      const std::optional<std::time_t> time = files_.timeOf(path);
      if (!time || *time <= std::time(nullptr) - kDay) continue;
      named_.insert(path);
      nameAllOf(path);
    }
  }

  /// What cannot be read, readers of this old root cannot follow, either.
  void nameAllOf(const std::string& path) {
    for (const auto& [name, shard] : readIndex(path).shards) {
      try {
        nameShard(shard);
      } catch (const BrokenSite&) {
        continue;  // The others can be followed.
      }
    }
  }

  ShardIndex readIndex(const std::string& path) const {
    try {
      return ShardIndex::parse(files_.read(path).value_or(""), path);
    } catch (const BrokenSite&) {
      return {};
    }
  }

  void remove(const std::string& path) {
    if (named_.contains(path)) return;
    files_.remove(path);
    ++removed_;
  }

  void removeHashed(const std::string& folder, std::string_view extension) {
    for (const std::string& name : namesIn(files_, folder)) {
      if (!hashIn(name, extension).empty() || isLeftBehind(name)) remove(inFolder(folder, name));
    }
  }

  void removePages(const std::string& addon) {
    for (const std::string& version : namesIn(files_, addon)) {
      if (isHidden(version)) continue;
      const std::string folder = inFolder(addon, version);
      for (const std::string& name : namesIn(files_, folder)) {
        const std::size_t dot = std::min(name.rfind('.'), name.size());
        const bool isOurs = name == kFrontPage || isLeftBehind(name) ||
                            isHash(std::string_view(name).substr(0, dot));
        if (isOurs) remove(inFolder(folder, name));
      }
      // Folders that are not empty stay.
      ::unlinkat(files_.descriptor(), folder.c_str(), AT_REMOVEDIR);
    }
    ::unlinkat(files_.descriptor(), addon.c_str(), AT_REMOVEDIR);
  }

  SiteFiles& files_;
  Names named_;
  std::uint64_t removed_ = 0;
};

}  // namespace

std::uint64_t collect(SiteFiles& files, const SiteState& state) {
  return Collector(files, state).run();
}

}  // namespace addon::catalogue::detail
