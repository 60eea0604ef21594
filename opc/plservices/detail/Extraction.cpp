// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/Extraction.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <memory>
#include <optional>

#include "opc/Exception.h"
#include "opc/plservices/detail/NewFile.h"

namespace opc::plservices::detail {
namespace {

[[noreturn]] void refuseOccupied(int folder, const char* name, const char* wanted) {
  throw Exception(ErrorCode::AlreadyExists,
                  describeEntry(folder, name) + " is there, where " + wanted + " must be");
}

}  // namespace

Extraction::Extraction(model::Package& package, FileTree& tree, std::string destination,
                       RestoreMode mode)
    : package_(package), tree_(tree), destination_(std::move(destination)), mode_(mode) {}

void Extraction::run(const std::vector<NodeId>& chosen,
                     const interfaces::ProgressFunction& progress) {
  progress_ = progress;
  plan_ = planExtraction(package_, tree_, chosen);
  done_.itemsTotal = plan_.files;
  done_.bytesTotal = plan_.bytes;
  DestinationFolder folder(destination_);
  // In a folder that was empty nothing can be in the way but what this has written: two names that
  // are one to the file system. Replacing would lose the first.
  replace_ = mode_ == RestoreMode::ReplaceExisting && !folder.isFresh();
  try {
    if (!folder.isFresh()) checkConflicts(folder.descriptor());
    checkFreeSpace(folder.descriptor());
    writeAll(folder.descriptor());
  } catch (...) {
    folder.undo();
    throw;
  }
}

void Extraction::checkConflicts(int destination) {
  FolderCursor cursor(tree_, destination, FolderCursor::Missing::Report);
  for (const NodeId leaf : plan_.leaves) {
    try {
      const int folder = cursor.enter(tree_.parent(leaf));
      if (folder >= 0) checkConflict(leaf, folder);
    } catch (Exception& error) {
      error.addContext(contextOf(leaf));
      throw;
    }
  }
  plan_.folders -= std::min<std::uint64_t>(plan_.folders, cursor.opened());
}

void Extraction::checkConflict(NodeId leaf, int folder) {
  const char* name = tree_.name(leaf).data();
  struct stat status {};
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return;
    throw SystemError("cannot look at what is there", errno);
  }
  const bool isFolder = S_ISDIR(status.st_mode);
  if (!tree_.isFile(leaf)) {
    if (!isFolder) refuseOccupied(folder, name, "a folder");
    --plan_.folders;
    return;
  }
  if (isFolder) refuseOccupied(folder, name, "a file");
  if (mode_ == RestoreMode::KeepExisting) {
    throw Exception(ErrorCode::AlreadyExists, describeEntry(folder, name) + " is there already");
  }
  if (S_ISREG(status.st_mode) && status.st_nlink == 1) {
    bytesToReplace_ += static_cast<std::uint64_t>(status.st_blocks) * 512;
    ++inodesToReplace_;
  }
}

void Extraction::checkFreeSpace(int destination) const {
  const std::optional<FreeSpace> space = freeSpace_(destination);
  if (!space) return;
  const auto require = [this](std::uint64_t needed, std::uint64_t free, std::uint64_t freed,
                              const char* unit) {
    if (needed <= free || needed - free <= freed) return;
    throw Exception(ErrorCode::FileSystem,
                    "cannot extract to '" + destination_ + "': " + std::to_string(needed) + unit +
                        " are needed and " + std::to_string(free) + " are free");
  };
  require(plan_.bytesOnDisk(space->blockSize), space->bytes, bytesToReplace_, " bytes");
  if (!space->inodes) return;
  const std::uint64_t inodes = plan_.files + plan_.folders;
  require(inodes - inodesToReplace_, *space->inodes, 0, " inodes");
}

void Extraction::writeAll(int destination) {
  FolderCursor cursor(tree_, destination, FolderCursor::Missing::Make);
  try {
    writeLeaves(cursor);
  } catch (...) {
    removeEmpty(cursor.made(), destination);
    throw;
  }
}

void Extraction::removeEmpty(const std::vector<NodeId>& folders, int destination) noexcept {
  try {
    FolderCursor cursor(tree_, destination, FolderCursor::Missing::Report);
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
      const int parent = cursor.enter(tree_.parent(*folder));
      if (parent >= 0) ::unlinkat(parent, tree_.name(*folder).data(), AT_REMOVEDIR);
    }
  } catch (const std::exception&) {
    // What could not be removed stays; the failure that is on its way is the one to report.
  }
}

void Extraction::writeLeaves(FolderCursor& cursor) {
  ReadAhead reader(PartReader(package_, parts()), background_);
  for (const NodeId leaf : plan_.leaves) {
    try {
      if (tree_.isFile(leaf)) {
        writeFile(leaf, reader, cursor.enter(tree_.parent(leaf)));
      } else {
        cursor.enter(leaf);
      }
    } catch (Exception& error) {
      error.addContext(contextOf(leaf));
      throw;
    }
    if (tree_.isFile(leaf)) countFile();
  }
}

std::vector<model::PartId> Extraction::parts() const {
  std::vector<model::PartId> parts;
  parts.reserve(plan_.files);
  for (const NodeId leaf : plan_.leaves) {
    if (tree_.isFile(leaf)) parts.push_back(tree_.part(leaf));
  }
  return parts;
}

// Read before it is made: a small file that is damaged is never created.
void Extraction::writeFile(NodeId file, ReadAhead& reader, int folder) {
  PartBlock block = reader.read();
  NewFile target(
      folder, tree_.name(file).data(),
      {.executable = block.info.executable, .replaces = replace_, .isLarge = !block.isLast});
  for (;;) {
    target.write(block.data.data(), block.data.size());
    done_.bytesDone += block.data.size();
    if (block.isLast) break;
    if (progress_) progress_(done_);
    block = reader.read();
  }
  target.finish(block.info.modified);
}

void Extraction::countFile() {
  ++done_.itemsDone;
  if (progress_) progress_(done_);
}

std::string Extraction::contextOf(NodeId leaf) const {
  const std::string path = tree_.path(leaf);
  const char* slash = destination_.ends_with('/') ? "" : "/";
  return "cannot extract '" + path + "' to '" + destination_ + slash + path + "'";
}

}  // namespace opc::plservices::detail
