// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "opc/checks/Report.h"
#include "opc/checks/SignatureDemands.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/PackedContents.h"
#include "opc/interfaces/Progress.h"
#include "opc/plservices/FileTree.h"

namespace addon::checks {

/// Checks what verifyPackage() checks, as an add-on, and then what makes the package one:
/// documents, references and style. Throws as verifyPackage() does.
opc::checks::Report verifyAddon(const std::string& path,
                                const opc::interfaces::ProgressFunction& progress = nullptr,
                                const opc::checks::SignatureDemands& demands = {},
                                const opc::interfaces::BackgroundStarter& starter = nullptr);

/// The same with `package`, which is the file at `path` and is open for reading or closed. It is
/// open afterwards if that is possible.
opc::checks::Report verifyOpened(packaging::AddonPackage& package, const std::string& path,
                                 const opc::interfaces::ProgressFunction& progress,
                                 const opc::checks::SignatureDemands& demands,
                                 const opc::interfaces::BackgroundStarter& starter);

/// The same for a package that was just written with these contents, which are not unpacked again.
opc::checks::Report verifyWritten(const std::string& path,
                                  const opc::interfaces::PackedContents& packed,
                                  const opc::interfaces::ProgressFunction& progress,
                                  const opc::interfaces::BackgroundStarter& starter);
/// For verifyWritten(), with the test that it needs.
opc::interfaces::PackedContents contentsForCheck();

/// The checks that only an add-on can fail: 3xx to 5xx. `package` is open. A part that cannot be
/// read causes no finding here, since the checks of the container report it. `withoutSecrets` says
/// of items that no secrets need to be searched in them.
void checkAddon(packaging::AddonPackage& package, opc::checks::Report& report,
                const std::vector<bool>& withoutSecrets = {});

// Parts of it, for packages that are being changed.

/// The documents but for the table of the file tree, their references, and the texts of the
/// properties.
void checkDescriptions(packaging::AddonPackage& package, opc::checks::Report& report);
/// The names and the content of added files and folders, those whose nodes are `firstNew` and
/// later ones, and the content of files that got another one.
void checkAddedFiles(packaging::AddonPackage& package, opc::plservices::NodeId firstNew,
                     opc::checks::Report& report);

}  // namespace addon::checks
