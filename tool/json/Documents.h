// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/Documents.h"

namespace tool::json {

/// The names of all documents.
std::vector<std::string> documentNames();

/// Throws UsageError, with the nearest name, for an unknown document.
const addon::packaging::DocumentTable& findDocument(std::string_view name);

/// What the package holds of a document.
addon::packaging::OwnedDocument load(const addon::packaging::DocumentTable& table,
                                     addon::packaging::AddonPackage& package);

/// Whether the package holds it, found by its relationship.
bool isPresent(const addon::packaging::DocumentTable& table,
               addon::packaging::AddonPackage& package);

/// A document that the package holds, found by its relationship.
struct PresentDocument {
  std::string_view name;
  std::string partName;  ///< "/metadata/license.xml"
};

/// Those that are there, all kinds looked for. One with several relationships counts as absent, as
/// it does for the host.
std::vector<PresentDocument> presentDocuments(addon::packaging::AddonPackage& package);

/// The part name of the primary screenshot, or "".
std::string screenshotPart(addon::packaging::AddonPackage& package);

}  // namespace tool::json
