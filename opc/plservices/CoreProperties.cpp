// SPDX-License-Identifier: MIT
#include "opc/plservices/CoreProperties.h"

#include <utility>

namespace opc::plservices {

CoreProperties::CoreProperties(std::u16string contentType, std::u16string contentTypeFriendlyName,
                               std::u16string korvanRelease)
    : contentType_(std::move(contentType)),
      contentTypeFriendlyName_(std::move(contentTypeFriendlyName)),
      korvanRelease_(std::move(korvanRelease)) {}

}  // namespace opc::plservices
