// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Collection.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "addon/catalogue/SitePaths.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/SystemCall.h"

namespace addon::catalogue::detail {

namespace {

using Names = std::set<std::string>;

/// The names in a folder of the site, in order; none if it is missing.
std::vector<std::string> namesIn(const SiteFiles& files, const std::string& folder) {
  std::vector<std::string> names;
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  opc::FileDescriptor opened(
      opc::uninterrupted([&] { return ::openat(files.descriptor(), folder.c_str(), kFlags); }));
  if (!opened) return names;
  struct Close {
    void operator()(DIR* listing) const { ::closedir(listing); }
  };
  const std::unique_ptr<DIR, Close> listing(::fdopendir(opened.get()));
  if (!listing) return names;
  opened.release();
  while (const dirent* entry = ::readdir(listing.get())) {
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// The hash that a name consists of but for its extension; "" if there is none.
std::string_view hashIn(std::string_view name, std::string_view extension) {
  if (!name.ends_with(extension)) return {};
  name.remove_suffix(extension.size());
  return isHash(name) ? name : std::string_view();
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
    nameAll(state.index());
    nameRecent();
  }

  std::uint64_t run() {
    for (const std::string_view folder : {kIndexFolder, kShardFolder}) {
      removeHashed(std::string(folder), kJsonExtension);
    }
    removeHashed(std::string(kPackageFolder), packaging::kPackageExtension);
    const std::string pages(kPageFolder);
    for (const std::string& addon : namesIn(files_, pages)) removePages(inFolder(pages, addon));
    return removed_;
  }

 private:
  void nameAll(const ShardIndex& index) {
    for (const auto& [name, shard] : index.shards) {
      if (!named_.insert(shard.file.path).second) continue;
      catalogue::visitLines(files_.read(shard.file), shard.file.path, [&](std::string_view line) {
        const Record record = parseRecord(line);
        named_.insert(record.package);
        named_.insert(record.page);
        if (!record.screenshot.empty()) named_.insert(record.screenshot);
      });
    }
  }

  /// What the last roots named is still being fetched.
  void nameRecent() {
    constexpr std::time_t kDay = 86400;
    const std::string folder(kIndexFolder);
    for (const std::string& name : namesIn(files_, folder)) {
      const std::string path = inFolder(folder, name);
      struct stat status {};
      if (hashIn(name, kJsonExtension).empty() || named_.contains(path) ||
          ::fstatat(files_.descriptor(), path.c_str(), &status, 0) != 0 ||
          status.st_mtim.tv_sec <= std::time(nullptr) - kDay) {
        continue;
      }
      named_.insert(path);
      try {
        nameAll(ShardIndex::parse(files_.read(path).value_or(""), path));
      } catch (const BrokenSite&) {
        // What this old root names cannot be read, either.
      }
    }
  }

  void remove(const std::string& path) {
    if (named_.contains(path)) return;
    files_.remove(path);
    ++removed_;
  }

  void removeHashed(const std::string& folder, std::string_view extension) {
    for (const std::string& name : namesIn(files_, folder)) {
      if (!hashIn(name, extension).empty()) remove(inFolder(folder, name));
    }
  }

  void removePages(const std::string& addon) {
    for (const std::string& version : namesIn(files_, addon)) {
      const std::string folder = inFolder(addon, version);
      for (const std::string& name : namesIn(files_, folder)) {
        const std::size_t dot = std::min(name.rfind('.'), name.size());
        const bool isOurs = name == kFrontPage || isHash(std::string_view(name).substr(0, dot));
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
