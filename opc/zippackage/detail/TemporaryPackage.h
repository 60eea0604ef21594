// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "opc/FileDescriptor.h"
#include "opc/PackageTarget.h"

namespace opc::zippackage::detail {

/// The new package while it is written: a file of its own beside the old one, gone with this unless
/// it was moved into the old one's place.
class TemporaryPackage {
 public:
  /// Makes the file. It gets the rights of the file that it is to replace (copyRights); without
  /// one, those of any new file in the folder. Throws SystemError.
  explicit TemporaryPackage(PackageTarget target);
  ~TemporaryPackage();
  TemporaryPackage(const TemporaryPackage&) = delete;
  TemporaryPackage& operator=(const TemporaryPackage&) = delete;

  int descriptor() const { return file_.get(); }
  std::string path() const { return target_.folder + "/" + name_; }

  /// Flushes the file to the disk. Throws SystemError.
  void sync();
  /// Gives the file its name, in one step. Throws ErrorCode::AlreadyExists when something has it
  /// already and must not be replaced, and SystemError; the file is as before then.
  void moveInPlace(bool replaceExisting);
  /// After that, flushes the folder. Throws SystemError; the new file stays in place all the same.
  void syncFolder();

 private:
  void create(bool isPrivate);
  bool rename(unsigned flags);
  bool linkWithoutReplacing();
  bool claimWithoutReplacing();
  bool isInPlace() const;

  PackageTarget target_;
  FileDescriptor folder_;
  bool isFolderReadable_ = true;
  std::string name_;  ///< empty once it is in place
  FileDescriptor file_;
};

}  // namespace opc::zippackage::detail
