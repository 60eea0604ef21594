// SPDX-License-Identifier: MIT
#pragma once

#include "addon/checks/detail/AddonFacts.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/checks/Report.h"

namespace addon::checks::detail {

/// The findings 4xx.
void checkReferences(packaging::AddonPackage& package, const AddonFacts& facts,
                     opc::checks::Report& report);

/// Checks that the GUIDs of the add-on and its apps differ.
void checkDuplicateGuids(const AddonFacts& facts, opc::checks::Report& report);

/// Checks that other ZIP programs unpack the files of the tree, and no others, among them.
void checkTreeItems(packaging::AddonPackage& package, opc::checks::Report& report);

}  // namespace addon::checks::detail
