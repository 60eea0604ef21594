// SPDX-License-Identifier: MIT
#include "opc/plservices/FolderCursor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "opc/Exception.h"
#include "opc/SystemCall.h"

namespace opc::plservices {
namespace {

// Far below what a process may open, and many enough that parking is rare.
constexpr std::size_t kMaxOpenFolders = 32;
// Descriptors to go on from need no permission to list.
constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

int openFolder(int parent, const char* name) {
  return uninterrupted([&] { return ::openat(parent, name, kFolderFlags); });
}

struct stat statusOf(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) throw SystemError("cannot look at a folder", errno);
  return status;
}

}  // namespace

std::string describeEntry(int folder, const char* name) {
  struct stat status {};
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return "something";
  if (S_ISLNK(status.st_mode)) return "a symbolic link";
  if (S_ISDIR(status.st_mode)) return "a folder";
  if (S_ISREG(status.st_mode)) return "a file";
  return "a special file";
}

FolderCursor::FolderCursor(const FileTree& tree, int destination, Missing missing)
    : tree_(tree), destination_(destination), missing_(missing), onPath_(tree.size()) {
  levels_.push_back({FileTree::kRoot, FileDescriptor()});
  onPath_[FileTree::kRoot] = true;
}

int FolderCursor::descriptorOf(std::size_t level) const {
  return level == 0 ? destination_ : levels_[level].descriptor.get();
}

int FolderCursor::enter(NodeId folder) {
  chain_.clear();
  NodeId node = folder;
  for (; !onPath_[node]; node = tree_.parent(node)) chain_.push_back(node);
  while (levels_.back().node != node) leaveLast();
  for (auto next = chain_.rbegin(); next != chain_.rend(); ++next) push(*next);
  return descriptorOf(levels_.size() - 1);
}

void FolderCursor::leaveLast() {
  const std::size_t below = levels_.size() - 2;
  const bool parked = below > 0 && below < firstOpen_;
  if (parked) reopenFromBelow(below);
  onPath_[levels_.back().node] = false;
  levels_.pop_back();
}

void FolderCursor::push(NodeId node) {
  const std::size_t above = levels_.size() - 1;
  Level level{node, FileDescriptor()};
  if (levels_[above].missing) {
    level.missing = true;
  } else {
    if (levels_.size() - firstOpen_ >= kMaxOpenFolders) parkShallowest();
    level.descriptor = open(descriptorOf(above), node);
    level.missing = !level.descriptor;
    if (!level.missing) ++opened_;
  }
  levels_.push_back(std::move(level));
  onPath_[node] = true;
}

FileDescriptor FolderCursor::open(int parent, NodeId node) {
  const char* name = tree_.name(node).data();
  if (missing_ == Missing::Make) makeFolder(parent, node);
  FileDescriptor folder(openFolder(parent, name));
  if (folder) return folder;
  const int number = errno;
  if (number == ENOENT && missing_ == Missing::Report) return folder;
  if (number == ENOTDIR || number == ELOOP) {
    throw Exception(ErrorCode::AlreadyExists, "folder '" + tree_.path(node) + "' cannot be made: " +
                                                  describeEntry(parent, name) + " is in its place");
  }
  throw SystemError("cannot open folder '" + tree_.path(node) + "'", number);
}

void FolderCursor::makeFolder(int parent, NodeId node) {
  const char* name = tree_.name(node).data();
  made_.push_back(node);
  if (uninterrupted([&] { return ::mkdirat(parent, name, 0777); }) == 0) return;
  made_.pop_back();
  if (errno == EEXIST) return;
  throw SystemError("cannot make folder '" + tree_.path(node) + "'", errno);
}

void FolderCursor::parkShallowest() {
  Level& level = levels_[firstOpen_];
  const struct stat status = statusOf(level.descriptor.get());
  level.device = status.st_dev;
  level.inode = status.st_ino;
  level.descriptor.reset();
  ++firstOpen_;
}

// Going up by ".." takes one step per level, where walking down again from the destination would
// make deep trees take time that grows with the square of the depth. ".." of a folder that somebody
// has moved leads elsewhere, hence the check.
void FolderCursor::reopenFromBelow(std::size_t level) {
  Level& parked = levels_[level];
  FileDescriptor folder(openFolder(levels_[level + 1].descriptor.get(), ".."));
  if (!folder) {
    throw SystemError("cannot go back to folder '" + tree_.path(parked.node) + "'", errno);
  }
  const struct stat status = statusOf(folder.get());
  if (status.st_dev != parked.device || status.st_ino != parked.inode) {
    throw Exception(ErrorCode::FileSystem,
                    "folder '" + tree_.path(parked.node) + "' was moved meanwhile");
  }
  parked.descriptor = std::move(folder);
  firstOpen_ = level;
}

}  // namespace opc::plservices
