// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "opc/model/Package.h"
#include "opc/plservices/CoreProperties.h"

namespace opc::plservices {

/// Reads and writes the core properties of an open package as one value, kept in two parts: the
/// standard one (ISO/IEC 29500-2, 8), found by its relationship and first made as
/// "/metadata/coreProperties.xml", and "/metadata/hostProperties.xml" beside it for what the closed
/// schema of the standard one has no room for.
class CorePropertiesManager {
 public:
  explicit CorePropertiesManager(model::Package& package) : package_(package) {}

  /// Returns the properties; those that the package does not have are empty or absent. Throws
  /// Exception if a part exists and breaks a rule. While the package is open for reading only, the
  /// properties are read once, unless a part is larger than 64 KiB.
  CoreProperties getCoreProperties();

  /// Stores `properties`. Standard properties that CoreProperties does not know (keywords,
  /// category, ...) keep their values.
  void setCoreProperties(const CoreProperties& properties);

 private:
  model::Package& package_;
  std::optional<CoreProperties> kept_;  // the properties that were read last
  std::uint64_t keptAt_ = 0;            // Package::openCount() at that time
};

}  // namespace opc::plservices
