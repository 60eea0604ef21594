// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "opc/Streams.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/Progress.h"
#include "opc/model/Package.h"
#include "opc/plservices/FileSystemEntry.h"
#include "opc/plservices/FileSystemEntryAlreadyExists.h"
#include "opc/plservices/FileTree.h"
#include "opc/plservices/RestoreMode.h"

namespace opc::plservices {

class FileContentSource;

/// The files and folders that a package carries, as a tree.
///
/// A file at "a/b.m" is the part "/files/a/b.m", percent-encoded. What a part name cannot say
/// (empty folders; names that differ only in case, end in a dot, hold a backslash or a control
/// character, look like relationships) is kept in "/metadata/fileTree.xml", so every path comes
/// back as it went in. Paths in the package use '/'; a leading one is dropped; empty components,
/// ".", ".." and NUL are refused. Children come in the order of their names' UTF-16 code units.
/// The package must be open; the tree is read when it is first asked for.
class FileSystemManager {
 public:
  explicit FileSystemManager(model::Package& package);
  ~FileSystemManager();
  FileSystemManager(const FileSystemManager&) = delete;
  FileSystemManager& operator=(const FileSystemManager&) = delete;

  FileSystemEntry getRoot();
  /// The whole tree, valid until it is changed or read again; and an entry for a node of it.
  FileTree& nodes();
  FileSystemEntry entryOf(NodeId node);
  /// None for a file.
  std::vector<FileSystemEntry> getChildren(const FileSystemEntry& folder);
  /// Calls `visit` for all files and empty folders with their paths (UTF-8), depth first in the
  /// order of children. `visit` must not change the tree.
  void visitFiles(
      const std::function<void(std::string_view path, const FileSystemEntry& entry)>& visit);
  /// The entry at a path (UTF-8), or null.
  std::unique_ptr<FileSystemEntry> find(std::string_view path);

  /// Adds the file `diskPath` as `packagePath`. Missing folders above it are made. The file must be
  /// there and readable now; it is read when the package is committed. Throws
  /// FileSystemEntryAlreadyExists when the path is taken, Exception otherwise; the tree is then
  /// unchanged.
  std::shared_ptr<FileSystemEntry> addFile(const std::u16string& diskPath,
                                           const std::u16string& packagePath);
  /// The same for a disk file of any name, with a path in UTF-8.
  std::shared_ptr<FileSystemEntry> addFile(std::unique_ptr<FileContentSource> source,
                                           std::string_view packagePath);
  /// The same for any content, which `info` describes.
  std::shared_ptr<FileSystemEntry> addFile(std::unique_ptr<interfaces::IContentSource> source,
                                           const model::StandardPartInfo& info,
                                           std::string_view packagePath);
  /// Adds a folder, and those above it. Throws FileSystemEntryAlreadyExists when the path is taken.
  std::shared_ptr<FileSystemEntry> createFolder(const std::u16string& packagePath);

  /// Gives a file the content, time and executable bit of another on disk; its part name and its
  /// content type stay. Throws ErrorCode::InvalidArgument for a folder.
  void replaceFile(const FileSystemEntry& file, std::unique_ptr<FileContentSource> source);
  /// The same for any content, which `info` describes.
  void replaceFile(const FileSystemEntry& file, std::unique_ptr<interfaces::IContentSource> source,
                   const model::StandardPartInfo& info);
  /// Gives a file, or a folder with all below it, another path. Content, time and executable bit
  /// stay; the folder above the old path stays too. Missing folders above the new one are made.
  /// Throws FileSystemEntryAlreadyExists for a path that is taken, ErrorCode::InvalidArgument for
  /// the root and for a path below the entry itself. After any other failure, such as damaged
  /// content, only some files are moved, and the package must not be committed.
  void move(const FileSystemEntry& entry, std::string_view packagePath);
  /// Throws what move() would throw before it changes anything.
  void checkMove(const FileSystemEntry& entry, std::string_view packagePath);
  /// Removes a file, or a folder with everything below it; their entries become invalid. The
  /// folder above stays, even when nothing is left in it. Throws ErrorCode::InvalidArgument for the
  /// root.
  void remove(const FileSystemEntry& entry);

  /// Writes the whole tree below `destination`, which is made if it is missing.
  void extractAll(const std::u16string& destination, RestoreMode mode);
  /// Writes the chosen entries, folders with all that is below them, under their full paths below
  /// `destination` (UTF-8). Checks everything that it can (names, existing files, free space and
  /// inodes) before the first byte. Follows no link below the destination, never leaves it. Files
  /// keep their times and the executable bit under the umask. A file that fails is removed and
  /// named in the error; those before it stay. Of the folders that were made, those that are then
  /// empty are removed. `progress` may be empty.
  void extract(const std::vector<FileSystemEntry>& entries, std::string_view destination,
               RestoreMode mode, const interfaces::ProgressFunction& progress);
  /// Writes parts in the same way, each under its name as the package spells it.
  void extractParts(const std::vector<model::PartId>& parts, std::string_view destination,
                    RestoreMode mode, const interfaces::ProgressFunction& progress);
  /// Starts a second thread for extracting, which reads while the caller's writes. Only that thread
  /// uses the package meanwhile. May be empty.
  void setBackground(interfaces::BackgroundStarter starter) { background_ = std::move(starter); }

  /// A fresh stream over a file's bytes; it must not outlive the open package.
  std::unique_ptr<InputStream> openFile(const FileSystemEntry& file);
  /// The part that holds a file. Throws ErrorCode::InvalidArgument for a folder.
  model::PartId partOf(const FileSystemEntry& file);

  /// Files of the package that have no path (a name that decodes to a control character or to no
  /// UTF-8, say) or that are not parts (no part name, no content type), each with the reason. They
  /// are not in the tree.
  const std::vector<UnreadableFile>& unreadable();

 private:
  class State;

  /// Reads the tree when the package has been opened since the last time.
  State& state();
  /// The entry's node, if it is one of this tree; throws InvalidArgument otherwise.
  std::uint32_t nodeOf(const FileSystemEntry& entry);

  model::Package& package_;
  interfaces::BackgroundStarter background_;
  std::unique_ptr<State> state_;
};

}  // namespace opc::plservices
