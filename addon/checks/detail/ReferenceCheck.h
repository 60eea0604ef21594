// SPDX-License-Identifier: MIT
#pragma once

#include "addon/packaging/AddonPackage.h"
#include "opc/checks/Report.h"

namespace addon::checks::detail {

/// The findings 4xx.
void checkReferences(packaging::AddonPackage& package, opc::checks::Report& report);

// Its steps.

/// Screenshot and thumbnail, which are to be one image.
void checkThumbnail(packaging::AddonPackage& package, opc::checks::Report& report);
/// That the newest revision is the add-on's version.
void checkNewestRevision(packaging::AddonPackage& package, opc::checks::Report& report);
/// That the GUIDs of the add-on and its apps differ.
void checkGuids(packaging::AddonPackage& package, opc::checks::Report& report);

}  // namespace addon::checks::detail
