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

  /// Texts that the package does not hold are empty or absent; a package without the parts reads so
  /// altogether. Throws Exception when a part is there and breaks a rule. Of a package that is open
  /// for reading, short parts are read once.
  CoreProperties getCoreProperties();

  /// Stores `properties`. Standard properties that CoreProperties does not know (keywords,
  /// category, ...) keep their values.
  void setCoreProperties(const CoreProperties& properties);

 private:
  model::Package& package_;
  std::optional<CoreProperties> kept_;  // what was read when the package had been opened ...
  std::uint64_t keptAt_ = 0;            // ... so many times
};

}  // namespace opc::plservices
