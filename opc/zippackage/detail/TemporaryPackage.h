// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/FileDescriptor.h"
#include "opc/PackageTarget.h"
#include "opc/TemporaryFile.h"

namespace opc::zippackage::detail {

/// The new package while it is written: a file of its own beside the old one, gone with this unless
/// it was moved into the old one's place.
class TemporaryPackage {
 public:
  /// Makes the file. It gets the permissions of the file that it is to replace (copyPermissions);
  /// without one, those of any new file in the folder. Throws SystemError.
  explicit TemporaryPackage(PackageTarget target);

  int descriptor() const { return file_.descriptor(); }
  /// A path at which it can be opened until it is in place.
  std::string path() const;

  /// Flushes the file to the disk. Throws SystemError.
  void sync();
  /// Gives the file its name, in one step. Throws ErrorCode::AlreadyExists when something has it
  /// already and must not be replaced, and SystemError; the file is as before then.
  void moveInPlace(bool replaceExisting);
  /// After that, flushes the folder. Throws SystemError; the new file stays in place all the same.
  void syncFolder();

 private:
  PackageTarget target_;
  FileDescriptor folder_;
  bool isFolderReadable_ = true;
  TemporaryFile file_;
};

}  // namespace opc::zippackage::detail
