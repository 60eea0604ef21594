// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "tool/DocumentShape.h"

namespace tool {

/// A metadata document as the command line sees it.
struct DocumentKind {
  DocumentShape shape;
  /// The relationship by which the package points at the document's part.
  std::u16string (*relationshipType)();
  /// The host struct array of what the package holds.
  HostArrayPointer (*load)(addon::packaging::AddonPackage& package);
  void (*store)(addon::packaging::AddonPackage& package, const kxArray* document);
  /// False when the package holds none.
  bool (*remove)(addon::packaging::AddonPackage& package);
};

/// All seven.
std::span<const DocumentKind> documentKinds();

/// Throws UsageError, with the nearest name, for an unknown document.
const DocumentKind& findDocument(std::string_view name);

/// Whether the package holds it, found by its relationship.
bool isPresent(const DocumentKind& kind, addon::packaging::AddonPackage& package);

/// A document that the package holds, found by its relationship.
struct PresentDocument {
  std::string_view name;
  std::string partName;  ///< "/metadata/license.xml"
};

/// Those that are there, all seven kinds looked for. One with several relationships counts as
/// absent, as it does for the host.
std::vector<PresentDocument> presentDocuments(addon::packaging::AddonPackage& package);

/// The part name of the primary screenshot, or "".
std::string screenshotPart(addon::packaging::AddonPackage& package);

}  // namespace tool
