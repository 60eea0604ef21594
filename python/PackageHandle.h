// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_set>
#include <utility>

#include "addon/packaging/AddonPackage.h"
#include "opc/Streams.h"
#include "python/Failures.h"

namespace python {

/// How a package is written.
struct WriteSettings {
  std::optional<std::int64_t> timestamp = std::nullopt;
  int level = 6;
};

/// An open package. Calls of several threads come one after the other.
class PackageHandle : public std::enable_shared_from_this<PackageHandle> {
 public:
  /// A stream over a file of the package. Without effect once the package is closed.
  class Stream {
   public:
    Stream(std::shared_ptr<PackageHandle> package, std::string path);
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    /// Reads until the buffer is full or the end is reached.
    std::size_t read(unsigned char* buffer, std::size_t size);

   private:
    friend class PackageHandle;
    std::shared_ptr<PackageHandle> package_;
    std::string path_;
    std::unique_ptr<opc::InputStream> input_;
  };

  /// `mode` is one of Python's: 'r', 'a', 'x' or 'w'. Raises as the functions below do.
  static std::shared_ptr<PackageHandle> open(const std::string& path, char mode,
                                             WriteSettings settings);

  /// Commits what was changed, and closes. After a failure it is closed, too.
  void close();
  void discard();
  bool isClosed() const { return isClosed_; }
  bool isReadOnly() const { return isReadOnly_; }

  /// A stream over a file of the tree.
  std::shared_ptr<Stream> openFile(const std::string& path);
  /// The file or folder at a path of the tree. Throws ErrorCode::NotFound.
  static opc::plservices::FileSystemEntry requireEntry(addon::packaging::AddonPackage& package,
                                                       const std::string& path);

  const std::string& path() const { return path_; }
  /// Whether the package is made anew.
  bool isNew() const { return isNew_; }

  /// Runs `work` with the package and without the GIL, once other threads are done with it. Raises
  /// ValueError if the package is closed, RuntimeError inside another call of the same thread.
  template <typename Work>
  auto use(const std::string& part, const Work& work) {
    return use(Subject{path_, part}, work);
  }

  /// The same for work that changes `subject`.
  template <typename Work>
  auto use(const Subject& subject, const Work& work) {
    requireOutside();
    return withoutGil(subject, [&] {
      const Turn turn(*this);
      requireOpen();
      return work(*package_);
    });
  }

  /// The same for a change that is not undone when it fails: the package can then no longer be
  /// committed.
  template <typename Work>
  void change(const std::string& part, const Work& work) {
    use(part,
        [&](addon::packaging::AddonPackage& package) { changeForGood([&] { work(package); }); });
  }

  /// That change alone, for what use() runs, so that checks can come before it.
  template <typename Work>
  void changeForGood(const Work& work) {
    requireWritable();
    const bool before = std::exchange(isHalfChanged_, true);
    work();
    isHalfChanged_ = before;
  }

 private:
  /// The time in which one thread has the package. It begins once other threads are done with it,
  /// and at once within a turn of the same thread.
  class Turn {
   public:
    explicit Turn(PackageHandle& handle);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    PackageHandle& handle_;
    std::unique_lock<std::mutex> lock_;
  };

  PackageHandle(std::string path, WriteSettings settings)
      : path_(std::move(path)), settings_(settings) {}

  void openNew(bool replaces);
  void openExisting(bool isForChanging);
  bool isTurnOfThisThread() const { return owner_ == std::this_thread::get_id(); }
  /// Raises RuntimeError inside another call of this thread.
  void requireOutside() const;
  void requireOpen() const;
  void requireWritable() const;
  void commit();
  void drop();

  std::string path_;
  WriteSettings settings_;
  bool isNew_ = false;
  bool isReadOnly_ = false;
  bool isHalfChanged_ = false;
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_;
  std::atomic<bool> isClosed_ = false;
  std::unique_ptr<addon::packaging::AddonPackage> package_;
  std::unordered_set<Stream*> streams_;
};

}  // namespace python
