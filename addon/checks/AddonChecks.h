// SPDX-License-Identifier: MIT
#pragma once

#include "addon/checks/Report.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::checks {

/// The checks that only an add-on can fail. `package` is open, for reading; its container and
/// packaging rules have been checked. A part that cannot be read draws no finding here: who checks
/// the container has said so.
void checkDocuments(packaging::AddonPackage& package, Report& report);   // 3xx
void checkReferences(packaging::AddonPackage& package, Report& report);  // 4xx
void checkStyle(packaging::AddonPackage& package, Report& report);       // 5xx

}  // namespace addon::checks
