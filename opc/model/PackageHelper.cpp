// SPDX-License-Identifier: MIT
#include "opc/model/PackageHelper.h"

#include "opc/model/FormatConstants.h"

namespace opc::model {

std::u16string PackageHelper::getThumbnailRelationshipType() {
  return std::u16string(kThumbnailRelationship);
}

}  // namespace opc::model
