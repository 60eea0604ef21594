// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "opc/LockFile.h"
#include "opc/PackageTarget.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/detail/OutputFile.h"

namespace opc::zippackage::detail {

/// Replaces a package file, or makes a new one, in one step.
///
/// If a commit fails, the old file is unchanged and the temporary file is removed. There is one
/// exception: if only flushing the folder fails, the new file is in place.
class ZipCommit {
 public:
  /// `path` is for messages, `target` where the file lies. `opened` is the file that the
  /// new one derives from, null for none.
  ZipCommit(std::string path, PackageTarget target, const PackageFile* opened)
      : path_(std::move(path)), target_(std::move(target)), opened_(opened) {}

  /// Has `write` write the new file and `inspect`, which may be empty, look at it by its path,
  /// flushes it, makes sure that the old one is the one that was opened, and swaps, with a lock
  /// that keeps other commits out. Waits ten seconds for that lock at most. `finished` is called as
  /// soon as the new file is in place, which is before the folder is flushed. Throws
  /// ErrorCode::ChangedOnDisk, ErrorCode::AlreadyExists, ErrorCode::FileSystem, and what `write`
  /// and `inspect` throw.
  void run(bool replaceExisting, const std::function<void(OutputFile&)>& write,
           const std::function<void(const std::string&)>& inspect,
           const std::function<void()>& finished);

 private:
  LockFile lockPlace() const;
  void requireUnchanged() const;

  std::string path_;
  PackageTarget target_;
  const PackageFile* opened_;
};

}  // namespace opc::zippackage::detail
