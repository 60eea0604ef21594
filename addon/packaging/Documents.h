// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// The documents of an add-on. All that is done with each of them is done by its table.
std::span<const DocumentTable* const> documents();

/// Fills a document from the package: the properties from the core properties as well, the others
/// from their parts alone. Throws what AddonPackage does.
void loadDocument(AddonPackage& package, XMLPartType& document);
/// Writes it in the same way.
void storeDocument(AddonPackage& package, XMLPartType& document);
/// The same for a document of its own.
OwnedDocument loadDocument(AddonPackage& package, const DocumentTable& table);

/// A document that a package holds, found by its relationship.
struct PresentDocument {
  std::string_view name;
  std::string partName;  ///< "/metadata/license.xml"
};

/// Those that are there. One with several relationships counts as absent, as it does for the host.
std::vector<PresentDocument> presentDocuments(AddonPackage& package);

/// Whether `table`'s document is among them.
bool isPresent(const DocumentTable& table, AddonPackage& package);

/// The part name of the primary screenshot, or "".
std::string screenshotPart(AddonPackage& package);

}  // namespace addon::packaging
