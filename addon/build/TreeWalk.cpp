// SPDX-License-Identifier: MIT
#include "addon/build/TreeWalk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "addon/build/BuildError.h"
#include "addon/build/RealPath.h"
#include "opc/FileDescriptor.h"
#include "opc/LockFile.h"
#include "opc/OpenFolder.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"
#include "opc/Text.h"

namespace addon::build {

namespace {

constexpr std::size_t kNoFolder = static_cast<std::size_t>(-1);

enum class Kind { File, Folder, Link, Other };

Kind toKind(mode_t mode) {
  if (S_ISREG(mode)) return Kind::File;
  if (S_ISDIR(mode)) return Kind::Folder;
  return S_ISLNK(mode) ? Kind::Link : Kind::Other;
}

class TreeWalk {
 public:
  TreeWalk(const std::string& folder, const TreeWalkOptions& options)
      : folder_(folder), options_(options) {
    root_.reset(opc::uninterrupted(
        [&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!root_) throw systemError("cannot read the folder", folder, errno);
  }

  std::vector<WalkedEntry> run() {
    readFolder("", kNoFolder, false);
    while (!pending_.empty()) {
      if (options_.stop) options_.stop();
      const Pending next = std::move(pending_.back());
      pending_.pop_back();
      if (next.isFolder) {
        readFolder(next.path, next.parent, next.isLink);
      } else {
        result_.push_back({next.path, false, next.facts});
      }
    }
    return std::move(result_);
  }

 private:
  struct Pending {
    std::string path;
    std::size_t parent;  // index in folders_
    bool isFolder;
    bool isLink;
    std::optional<opc::plservices::FileFacts> facts;
  };
  /// What a folder says of an entry.
  struct Listed {
    std::string name;
    unsigned char type;  // DT_REG and so on
  };
  /// A folder that was read, for the way up from those below it.
  struct Folder {
    opc::FileIdentity identity;
    std::size_t parent;
  };

  std::string onDisk(const std::string& path) const { return addon::build::onDisk(folder_, path); }

  void readFolder(const std::string& path, std::size_t parent, bool isLink) {
    opc::OpenFolder folder(root_.get(), path, isLink ? 0 : O_NOFOLLOW);
    struct stat info {};
    if (!folder || ::fstat(folder.descriptor(), &info) != 0) {
      throw systemError("cannot read the folder", onDisk(path), errno);
    }
    if (isLink) refuseCircle(path, opc::FileIdentity(info), parent);
    folders_.push_back({opc::FileIdentity(info), parent});
    addEntries(path, folder, isLeftOut(info));
  }

  void refuseCircle(const std::string& path, opc::FileIdentity target, std::size_t parent) const {
    for (std::size_t i = parent; i != kNoFolder; i = folders_[i].parent) {
      if (folders_[i].identity == target) {
        throw BuildError(opc::sentence("cannot follow the link", onDisk(path),
                                       "it leads to a folder that contains it"));
      }
    }
  }

  void addEntries(const std::string& path, opc::OpenFolder& folder, bool staysOut) {
    const std::size_t self = folders_.size() - 1;
    const std::size_t first = pending_.size();
    const std::vector<Listed> entries = sortedEntries(path, folder);
    for (const Listed& entry : entries) addEntry(path, entry, folder.descriptor(), self);
    const bool isEmpty = entries.empty() && !path.empty();
    if (isEmpty && staysOut) {
      reportLeftOut(path, true);
    } else if (isEmpty && isIncluded(path, true)) {
      result_.push_back({path, true});
    }
    // The last one is taken first.
    std::reverse(pending_.begin() + static_cast<std::ptrdiff_t>(first), pending_.end());
  }

  /// In the order of the file tree, so that nothing that is said or written depends on that of the
  /// disk.
  std::vector<Listed> sortedEntries(const std::string& path, opc::OpenFolder& folder) const {
    std::vector<Listed> entries;
    while (const dirent* entry = folder.next()) {
      // Lock files come and go, and are never content.
      if (!opc::isLockName(entry->d_name)) entries.push_back({entry->d_name, entry->d_type});
    }
    if (errno != 0) throw systemError("cannot read the folder", onDisk(path), errno);
    std::sort(entries.begin(), entries.end(), [](const Listed& a, const Listed& b) {
      return opc::compareByCodeUnits(a.name, b.name) < 0;
    });
    return entries;
  }

  void addEntry(const std::string& folder, const Listed& entry, int descriptor, std::size_t self) {
    std::string path = folder.empty() ? entry.name : folder + "/" + entry.name;
    const Kind kind = kindOf(entry, descriptor, path);
    const bool isLink = kind == Kind::Link;
    struct stat target {};
    const bool hasTarget = isLink && ::fstatat(descriptor, entry.name.c_str(), &target, 0) == 0;
    const int linkError = isLink && !hasTarget ? errno : 0;
    const Kind finalKind = hasTarget ? toKind(target.st_mode) : kind;
    if (isExcluded(path, finalKind == Kind::Folder,
                   kind == Kind::File && opc::isTemporaryName(entry.name))) {
      return;
    }
    if (finalKind != Kind::Folder && !isIncluded(path, false)) return;
    if (isLink) checkLink(path, linkError);
    std::optional<opc::plservices::FileFacts> facts;
    if (finalKind == Kind::File && (isLink || look(descriptor, entry.name, target))) {
      if (isLeftOut(target)) return reportLeftOut(path, false);
      facts.emplace(target);
    }
    if (finalKind == Kind::Other) {
      throw BuildError(
          opc::sentence("cannot pack", onDisk(path), "it is neither a file nor a folder"));
    }
    if (!opc::isUtf8(entry.name)) {
      throw BuildError(opc::sentence("cannot pack", onDisk(path), "the name is not UTF-8"));
    }
    pending_.push_back({std::move(path), self, finalKind == Kind::Folder, isLink, facts});
  }

  std::string inPackage(const std::string& path) const {
    return options_.place.empty() ? path : options_.place + "/" + path;
  }

  bool isIncluded(const std::string& path, bool isFolder) const {
    return !options_.includes || options_.includes(inPackage(path), isFolder);
  }

  bool isExcluded(const std::string& path, bool isFolder, bool isSurelyOut) const {
    const std::string place = inPackage(path);
    if (!isSurelyOut && !options_.excludes.excludes(place, isFolder)) return false;
    if (options_.onExcluded) options_.onExcluded(place, isFolder);
    return true;
  }

  void reportLeftOut(const std::string& path, bool isFolder) const {
    if (options_.onLeftOut) options_.onLeftOut(inPackage(path), isFolder);
  }

  Kind kindOf(const Listed& entry, int descriptor, const std::string& path) const {
    if (entry.type == DT_REG) return Kind::File;
    if (entry.type == DT_DIR) return Kind::Folder;
    if (entry.type == DT_LNK) return Kind::Link;
    struct stat info {};
    if (::fstatat(descriptor, entry.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
      throw systemError("cannot access", onDisk(path), errno);
    }
    return toKind(info.st_mode);
  }

  void checkLink(const std::string& path, int error) {
    if (error != 0) throw systemError("cannot follow the link", onDisk(path), error);
    if (options_.followsOutside) return;
    const std::string target = realPath(onDisk(path));
    if (liesIn(target, realRoot())) return;
    if (!options_.project.empty() && liesIn(target, realProject())) return;
    throw BuildError(
        opc::sentence("cannot follow the link", onDisk(path), "it leads out of the folder"),
        "--follow follows it");
  }

  const std::string& realRoot() {
    if (realRoot_.empty()) realRoot_ = realPath(folder_);
    return realRoot_;
  }

  const std::string& realProject() {
    if (realProject_.empty()) realProject_ = realPath(options_.project);
    return realProject_;
  }

  // Not by d_ino: some file systems give another number there.
  bool look(int descriptor, const std::string& name, struct stat& file) const {
    return !options_.leftOut.empty() &&
           ::fstatat(descriptor, name.c_str(), &file, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(file.st_mode);
  }

  bool isLeftOut(const struct stat& info) const {
    return std::find(options_.leftOut.begin(), options_.leftOut.end(), opc::FileIdentity(info)) !=
           options_.leftOut.end();
  }

  std::string folder_;
  const TreeWalkOptions& options_;
  opc::FileDescriptor root_;
  std::string realRoot_;
  std::string realProject_;
  std::vector<Folder> folders_;
  std::vector<Pending> pending_;
  std::vector<WalkedEntry> result_;
};

}  // namespace

std::string onDisk(const std::string& folder, const std::string& path) {
  if (path.empty()) return folder;
  if (folder == ".") return path;
  return folder + (folder.ends_with('/') ? "" : "/") + path;
}

std::vector<opc::FileIdentity> withFolders(const std::vector<std::string>& files) {
  std::vector<opc::FileIdentity> identities;
  for (const std::string& file : files) {
    const std::size_t slash = file.find_last_of('/');
    const std::string folder = slash == file.npos ? "." : file.substr(0, slash + 1);
    for (const std::string& path : {file, folder}) {
      if (const auto identity = opc::identityOf(path)) identities.push_back(*identity);
    }
  }
  return identities;
}

std::vector<WalkedEntry> walkTree(const std::string& folder, const TreeWalkOptions& options) {
  return TreeWalk(folder, options).run();
}

}  // namespace addon::build
