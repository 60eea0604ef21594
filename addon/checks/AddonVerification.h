// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/packaging/AddonPackage.h"
#include "opc/checks/Report.h"
#include "opc/interfaces/Progress.h"

namespace addon::checks {

/// Checks what verifyPackage() checks, as an add-on, and then what makes the package one:
/// documents, references and style. Throws as verifyPackage() does.
opc::checks::Report verifyAddon(const std::string& path,
                                const opc::interfaces::ProgressFunction& progress = nullptr);

/// The checks that only an add-on can fail: 3xx to 5xx. `package` is open, for reading. A part that
/// cannot be read causes no finding here, since the checks of the container report it.
void checkAddon(packaging::AddonPackage& package, opc::checks::Report& report);

}  // namespace addon::checks
