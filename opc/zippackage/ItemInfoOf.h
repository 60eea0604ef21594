// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/zippackage/ZipDirectory.h"

namespace opc::zippackage {

/// What the directory says about an entry.
interfaces::ItemInfo itemInfoOf(const ZipDirectory& directory, std::size_t entry);
interfaces::ItemKind itemKindOf(const ZipDirectory& directory, std::size_t entry);

}  // namespace opc::zippackage
