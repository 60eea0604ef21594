// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tool/commands/detail/PackageAccess.h"
#include "tool/process/PackageLock.h"

namespace tool::commands::detail {

/// A package file in the making, from the look at its place to the moment when it is there. Of two
/// commands that make the same one, the second waits for the first.
class NewPackage {
 public:
  /// From here on signals are only noted (Interrupt::defer). Throws Failure for what must not be
  /// replaced: with `replaces` anything but a file that may be written, without it anything.
  NewPackage(const std::string& path, bool replaces);

  /// The open package, which holds the properties and, when a time is given, was made and changed
  /// then, else now.
  AddonPackage& open(addon::packaging::AddonProperties& properties,
                     std::optional<std::int64_t> time);

  /// Writes it, with a progress bar, and puts it in place.
  void commit(opc::zippackage::WriteOptions options, const line::Settings& settings);

 private:
  std::u16string path_;
  bool replaces_;
  process::PackageLock lock_;
  std::unique_ptr<AddonPackage> package_;
};

/// Throws Failure when nothing can be put there, or only by replacing a file and `replaces` is not
/// set.
void requireFreePlace(const std::string& path, bool replaces);

}  // namespace tool::commands::detail
