// SPDX-License-Identifier: MIT
#include "addon/build/ExistingFiles.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <string_view>

#include "addon/build/BuildError.h"
#include "opc/Exception.h"
#include "opc/FileDescriptor.h"
#include "opc/SystemCall.h"
#include "opc/plservices/FileTree.h"
#include "opc/plservices/FolderCursor.h"

namespace addon::build {

using addon::comparison::Item;

namespace {

using opc::FileDescriptor;
using opc::plservices::FileTree;
using opc::plservices::FolderCursor;
using opc::plservices::NodeId;

std::string_view folderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

/// The folder of each item, or the item if it is one, as a node of `tree`, to which all of them are
/// added.
std::vector<NodeId> foldersOf(const std::vector<Item>& items, FileTree& tree) {
  std::vector<NodeId> folders;
  folders.reserve(items.size());
  std::string_view last;
  NodeId node = FileTree::kRoot;
  for (const Item& item : items) {
    const std::string_view folder = item.isFolder() ? item.path : folderOf(item.path);
    if (folder != last) node = tree.reachFolder(folder);
    last = folder;
    folders.push_back(node);
  }
  return folders;
}

bool isFolder(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

/// Whether a new folder could not get that path, even if a link there leads nowhere.
bool isTaken(const std::string& path) {
  struct stat info {};
  return ::lstat(path.substr(0, path.find_last_not_of('/') + 1).c_str(), &info) == 0;
}

/// Throws if the folder `path`, which could not be opened for the reason `number`, cannot be made
/// either, since something that is not a folder has its path or that of a folder above it.
void requireRoomFor(const std::string& path, int number) {
  if (path.empty()) throw systemError("cannot make folder", path, number);
  if (isTaken(path)) throw systemError("cannot open folder", path, number);
  for (auto slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string above = path.substr(0, slash);
    if (isFolder(above)) continue;
    if (!isTaken(above)) return;
    throw systemError("cannot make folder", path.substr(0, path.find('/', slash + 1)), number);
  }
}

/// None if the folder is missing and can be made.
FileDescriptor openDestination(const std::string& path) {
  FileDescriptor folder(
      opc::uninterrupted([&] { return ::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
  const int number = errno;
  if (folder) return folder;
  if (number != ENOENT && number != ENOTDIR) {
    throw systemError("cannot open folder", path, number);
  }
  requireRoomFor(path, number);
  return folder;
}

std::optional<opc::FileIdentity> identityIn(int folder, const std::string& name) {
  struct stat info {};
  const auto look = [&] { return ::fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW); };
  if (opc::uninterrupted(look) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throw opc::SystemError("cannot access", errno);
  }
  if (S_ISDIR(info.st_mode)) {
    throw opc::Exception(opc::ErrorCode::AlreadyExists, "a folder is in the way");
  }
  return opc::FileIdentity(info);
}

std::optional<opc::FileIdentity> identityBelow(const Item& item, NodeId node,
                                               FolderCursor& cursor) {
  const int folder = cursor.enter(node);
  if (folder < 0 || item.isFolder()) return std::nullopt;
  return identityIn(folder, item.path.substr(item.path.rfind('/') + 1));
}

std::string contextOf(const std::string& path, const std::string& destination) {
  return fmt::format("cannot extract '{}' to '{}'", path, onDisk(destination, path));
}

}  // namespace

Existing findExisting(const std::vector<Item>& items, const std::string& destination) {
  FileTree tree;
  const std::vector<NodeId> folders = foldersOf(items, tree);
  Existing found{{}, tree.size() - 1};
  const FileDescriptor root = openDestination(destination);
  if (!root) return found;
  FolderCursor cursor(tree, root.get(), FolderCursor::Missing::Report);
  for (std::size_t i = 0; i < items.size(); ++i) {
    try {
      const auto identity = identityBelow(items[i], folders[i], cursor);
      if (identity) found.files.push_back({i, *identity});
    } catch (opc::Exception& error) {
      error.addContext(contextOf(items[i].path, destination));
      throw;
    }
  }
  found.newFolders -= cursor.opened();
  return found;
}

void refuseExisting(const std::vector<ExistingFile>& existing, const std::vector<Item>& items,
                    const std::string& destination) {
  if (existing.empty()) return;
  const std::string first = onDisk(destination, items[existing.front().item].path);
  throw BuildError(opc::sentence("cannot extract", first, "it already exists"),
                   "--force replaces files, --skip-existing leaves them", EEXIST);
}

void refuseThePackageItself(const std::vector<ExistingFile>& existing,
                            const std::vector<Item>& items, const std::string& destination,
                            const std::string& package) {
  const std::optional<opc::FileIdentity> self = opc::identityOf(package);
  for (const ExistingFile& file : existing) {
    if (file.identity != self) continue;
    throw BuildError(opc::sentence("cannot extract", onDisk(destination, items[file.item].path),
                                   "it is the package itself"));
  }
}

}  // namespace addon::build
