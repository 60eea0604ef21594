// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "addon/catalogue/Root.h"
#include "opc/ByteBuffer.h"
#include "opc/FileDescriptor.h"
#include "opc/TemporaryFile.h"

namespace addon::catalogue::detail {

/// The files of a site. Paths are relative to it. All functions throw opc::SystemError that names
/// the file. Threads may read and make folders at the same time.
class SiteFiles {
 public:
  /// How what is written comes to the disk: each file by itself, or, for thousands, the whole file
  /// system at once.
  enum class Flushing { Each, Together };

  /// Opens the folder of the site, which must exist.
  explicit SiteFiles(std::string folder);

  /// Returns how it was done until now.
  Flushing setFlushing(Flushing flushing) { return std::exchange(flushing_, flushing); }

  const std::string& folder() const { return folder_; }
  int descriptor() const { return descriptor_.get(); }
  /// Where a file of the site is for anybody else.
  std::string onDisk(std::string_view path) const;

  bool exists(const std::string& path) const;
  /// The whole file; nothing if there is none. Throws BrokenSite if it is larger than any of ours.
  std::optional<std::string> read(const std::string& path) const;
  /// A file that must be what its name says. Throws BrokenSite.
  std::string read(const FileReference& file) const;
  /// Reads a derived file so that parts of it can be used again. Returns an empty buffer if the
  /// file does not exist or is too large to be kept in memory.
  opc::ByteBuffer readDerived(const std::string& path) const;
  /// At most `size` bytes from the beginning; "" if the file does not exist.
  std::string readStart(const std::string& path, std::size_t size) const;
  /// The SHA-256 of a file; "" if there is none.
  std::string hashOf(const std::string& path) const;

  /// Makes a folder and those above it, unless they exist.
  void makeFolder(const std::string& path);
  /// Writes a file that is named by its hash, unless it is there already.
  FileReference writeHashed(std::string_view folder, std::string_view extension,
                            std::string_view content);
  using Sink = std::function<void(std::string_view)>;
  /// Writes a file, which replaces an older one in one step.
  void replace(const std::string& path, const std::function<void(const Sink&)>& write);
  void replace(const std::string& path, std::string_view content);
  /// Puts a file in place that was made by `file`, whatever its content.
  void putInPlace(opc::TemporaryFile& file, const std::string& path);
  /// The same for one that has a temporary name in the site.
  void rename(const std::string& from, const std::string& to);
  void remove(const std::string& path);
  /// The time of its last change; nothing if it does not exist.
  std::optional<std::time_t> timeOf(const std::string& path) const;
  /// Sets its time of change to now. A file that only another user may change is replaced by a
  /// copy.
  void touch(const std::string& path);

  /// Brings an open file to the disk, unless that is done for all together.
  void flushFile(int file, std::string_view path) const;
  /// Brings all that was written so far to the disk, with the folders that name it.
  void flush();

 private:
  /// Opens a regular file; nothing if there is none. Sets its size.
  opc::FileDescriptor openFile(const std::string& path, std::uint64_t& size) const;
  /// Returns how many bytes there were.
  std::size_t readInto(int file, const std::string& path, char* text, std::size_t size) const;
  [[noreturn]] void fail(std::string_view what, std::string_view path, int number) const;
  void noteFolderOf(const std::string& path);
  void replaceByCopy(const std::string& path);

  std::string folder_;
  opc::FileDescriptor descriptor_;
  Flushing flushing_ = Flushing::Each;
  std::mutex mutex_;
  std::set<std::string> folders_;  // that name something new
};

}  // namespace addon::catalogue::detail
