// SPDX-License-Identifier: MIT
#pragma once

#include "opc/interfaces/IXmlSignatures.h"

namespace opc::signatures {
class ItemDigests;
}

namespace opc::checks {

/// What the signatures of a package have to be, besides valid.
struct SignatureDemands {
  const interfaces::ITrustAnchors* anchors = nullptr;  ///< null: anybody may have signed
  bool isRequired = false;                             ///< whether there has to be one
  /// Gets the digests of all items; null if they are of no further use.
  signatures::ItemDigests* digests = nullptr;
};

}  // namespace opc::checks
