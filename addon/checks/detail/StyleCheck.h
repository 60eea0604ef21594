// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>
#include <vector>

#include "addon/checks/detail/AddonFacts.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/checks/Report.h"
#include "opc/plservices/FileTree.h"

namespace addon::checks::detail {

/// The findings 5xx, without those of checkTexts(). `withoutSecrets`: see checkAddon().
void checkStyle(packaging::AddonPackage& package, opc::checks::Report& report,
                const std::vector<bool>& withoutSecrets);

// Its steps.

/// What every add-on should have: license, texts, author, screenshot, GUIDs, version.
void checkTexts(packaging::AddonPackage& package, const AddonFacts& facts,
                opc::checks::Report& report);
/// Whether the add-on and its apps have GUIDs.
void checkGuids(packaging::AddonPackage& package, const AddonFacts& facts,
                opc::checks::Report& report);
/// Names, sizes and kinds of the files, or only those that checkAddedFiles() looks at. The file
/// tree must be readable.
void checkFiles(packaging::AddonPackage& package, opc::checks::Report& report,
                const std::vector<bool>& withoutSecrets, opc::plservices::NodeId firstNew = 0);
/// Whether a file got other content since the package was opened.
bool isReplaced(const opc::model::PartInfo& file);
inline constexpr const char* kNoFilesMessage = "the add-on has no files";
/// Files with the same content. The file tree must be readable.
void checkCopies(packaging::AddonPackage& package, opc::checks::Report& report,
                 const std::vector<bool>& withoutSecrets);
/// The times of the entries.
void checkTimes(packaging::AddonPackage& package, opc::checks::Report& report);

/// Why some system cannot store a file or folder with this name; "" if all can.
std::string_view findPortabilityFault(std::string_view name);

}  // namespace addon::checks::detail
