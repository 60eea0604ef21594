// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/catalogue/detail/SiteFiles.h"
#include "opc/FileDescriptor.h"
#include "opc/TemporaryFile.h"
#include "opc/interfaces/Progress.h"

namespace addon::catalogue::detail {

/// A package on its way into the site. What is verified is what the site will have, not what
/// somebody may change meanwhile. Throws opc::Exception.
class PackageFile {
 public:
  /// Opens and hashes a file on disk, a regular one that is not too large. `stop` may be empty.
  PackageFile(SiteFiles& files, const std::string& path, const opc::interfaces::StopFunction& stop);
  /// Removes what was not put in place.
  ~PackageFile();
  PackageFile(const PackageFile&) = delete;
  PackageFile& operator=(const PackageFile&) = delete;

  const std::string& sha256() const { return sha256_; }
  /// Its place in the site.
  const std::string& place() const { return place_; }
  /// Whether the site has it, so that there is nothing to put in place.
  bool isStored() const { return isStored_; }

  /// Copies it, or makes a hard link to it where that is possible.
  void bring(bool isLinking);
  /// A path at which it can be read.
  std::string path() const;
  void putInPlace();

 private:
  void copy();
  bool link();

  SiteFiles& files_;
  std::string source_;
  const opc::interfaces::StopFunction& stop_;
  opc::FileDescriptor file_;
  std::string sha256_;
  std::string place_;
  bool isStored_ = false;
  std::string linked_;  // the temporary name of a link
  opc::TemporaryFile copy_;
};

}  // namespace addon::catalogue::detail
