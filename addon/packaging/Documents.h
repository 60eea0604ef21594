// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// The documents of an add-on. All that is done with each of them is done by its table.
std::span<const DocumentTable* const> documents();

/// Fills a document from the package: the properties from the core properties as well, the others
/// from their parts alone. Throws what AddonPackage does.
void loadDocument(AddonPackage& package, XMLPartType& document);
/// Writes it likewise.
void storeDocument(AddonPackage& package, XMLPartType& document);

}  // namespace addon::packaging
