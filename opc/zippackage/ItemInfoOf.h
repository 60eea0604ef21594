// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/zippackage/ZipDirectory.h"

namespace opc::zippackage {

/// What the directory says about an entry.
interfaces::ItemInfo itemInfoOf(const ZipDirectory& directory, std::size_t entry);

/// What an entry of that name and header is.
interfaces::ItemKind itemKindOf(std::string_view name, const CentralHeader& header);

}  // namespace opc::zippackage
