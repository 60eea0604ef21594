// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "opc/plservices/CoreProperties.h"

namespace addon::checks::detail {

/// The GUID of the add-on, or of one of its apps.
struct OwnedGuid {
  std::string owner;
  std::u16string guid;
  std::string part;
  std::size_t line;
};

/// What several checks need of the documents, which may be large: read once.
struct AddonFacts {
  /// Documents that cannot be read are left out. Throws opc::SystemError.
  explicit AddonFacts(packaging::AddonPackage& package);

  std::optional<opc::plservices::CoreProperties> core;
  std::vector<OwnedGuid> guids;
};

}  // namespace addon::checks::detail
