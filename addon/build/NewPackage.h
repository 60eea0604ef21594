// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "addon/packaging/AddonPackage.h"

namespace addon::build {

/// Which existing file a new package may replace. It must be writable in any case.
struct Replacing {
  bool any = false;       ///< every file
  std::string guid = {};  ///< a package of the add-on with this GUID; "" for none
};

/// A package file that is being created, until it is put in place.
class NewPackage {
 public:
  /// Throws BuildError if something exists that must not be replaced. The caller has locked the
  /// path, if others may create the same file.
  NewPackage(const std::string& path, const Replacing& replacing);

  /// The open package with the properties. Its times of creation and change are the given time, or
  /// else now.
  packaging::AddonPackage& open(packaging::AddonProperties& properties,
                                std::optional<std::int64_t> time);

  /// Writes it and puts it in place.
  void commit(opc::zippackage::WriteOptions options);

  /// Hands over the open package, which its new owner commits.
  std::unique_ptr<packaging::AddonPackage> release() { return std::move(package_); }

 private:
  opc::SystemPath path_;
  bool replaces_ = false;
  std::unique_ptr<packaging::AddonPackage> package_;
};

/// Throws BuildError if nothing may be put there. Returns whether a file is to be replaced.
bool requireFreePlace(const std::string& path, const Replacing& replacing);

}  // namespace addon::build
