// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "opc/interfaces/IContentSource.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/zippackage/detail/PendingContent.h"

namespace opc::zippackage::detail {

/// An item that was added since the package was opened.
struct AddedItem {
  interfaces::NewItem properties;
  std::unique_ptr<interfaces::IContentSource> content;
  PendingContent* pending = nullptr;  ///< `content`, when it is written through streams
  bool isRemoved = false;
};

}  // namespace opc::zippackage::detail
