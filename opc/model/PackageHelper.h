// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace opc::model {

struct PackageHelper {
  /// The relationship type of thumbnails (ISO/IEC 29500-2, annex F).
  static std::u16string getThumbnailRelationshipType();
};

}  // namespace opc::model
