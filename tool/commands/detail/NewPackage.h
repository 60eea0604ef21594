// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tool/commands/detail/PackageAccess.h"
#include "tool/process/PackageLock.h"

namespace tool::commands::detail {

/// Which existing file a new package may replace. It must be writable in any case.
struct Replacing {
  bool any = false;       ///< every file
  std::string guid = {};  ///< a package of the add-on with this GUID; "" for none
};

/// A package file that is being created, until it is put in place. If two commands create the same
/// file, the second one waits for the first.
class NewPackage {
 public:
  /// Defers signals (Interrupt::defer). Throws Failure if something exists that must not be
  /// replaced.
  NewPackage(const std::string& path, const Replacing& replacing,
             const line::Invocation& invocation);

  /// The open package with the properties. Its times of creation and change are the given time, or
  /// else now.
  AddonPackage& open(addon::packaging::AddonProperties& properties,
                     std::optional<std::int64_t> time);

  /// Writes it, with a progress bar, and puts it in place.
  void commit(opc::zippackage::WriteOptions options, const line::Settings& settings);

 private:
  opc::SystemPath path_;
  bool replaces_ = false;
  process::PackageLock lock_;
  std::unique_ptr<AddonPackage> package_;
};

/// Throws Failure if nothing may be put there. Returns whether a file is to be replaced.
bool requireFreePlace(const std::string& path, const Replacing& replacing);

}  // namespace tool::commands::detail
