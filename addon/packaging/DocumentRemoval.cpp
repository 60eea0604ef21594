// SPDX-License-Identifier: MIT
#include "addon/packaging/DocumentRemoval.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "addon/packaging/ScreenshotPart.h"
#include "opc/Exception.h"
#include "opc/model/NameKey.h"
#include "opc/model/PackageHelper.h"
#include "opc/plservices/LoadedFileTree.h"

namespace addon::packaging {

using opc::model::Package;
using opc::model::PartName;
using opc::model::Relationship;

namespace {

/// Where a relationship leads to in the package, or nothing.
std::optional<PartName> targetOf(const Relationship& relationship) {
  if (relationship.getTargetMode() != opc::model::TargetMode::Internal) return std::nullopt;
  try {
    return relationship.targetName();
  } catch (const opc::FormatError&) {
    return std::nullopt;
  }
}

bool isFileOfTree(const PartName& name) {
  return opc::model::keyStartsWith(name.itemName(), opc::plservices::kFilesFolder) ||
         opc::model::keyStartsWith(name.itemName(), opc::plservices::kMadeUpFilesFolder);
}

bool isTarget(const PartName& name, const std::vector<Relationship>& relationships) {
  return std::any_of(relationships.begin(), relationships.end(),
                     [&](const Relationship& one) { return targetOf(one) == name; });
}

/// Deletes the part, unless it is there for something else as well.
void dropPart(Package& package, const PartName& name) {
  if (!package.hasPart(name) || isFileOfTree(name)) return;
  if (!isTarget(name, package.getRelationships())) package.deletePart(name);
}

void drop(Package& package, const std::vector<Relationship>& relationships) {
  for (const Relationship& one : relationships) package.deleteRelationship(one.getId());
  for (const Relationship& one : relationships) {
    if (const auto target = targetOf(one)) dropPart(package, *target);
  }
}

}  // namespace

bool removeDocument(Package& package, const XMLPartType& document) {
  const PartName name(document.partName);
  const auto relationships = package.getRelationshipsByType(document.relationshipType);
  if (relationships.empty() && !package.hasPart(name)) return false;
  drop(package, relationships);
  dropPart(package, name);
  return true;
}

bool removeScreenshot(Package& package) {
  const auto shots = package.getRelationshipsByType(ScreenshotPart::relationshipType());
  if (shots.empty()) return false;
  auto gone = shots;
  for (const Relationship& thumbnail :
       package.getRelationshipsByType(opc::model::PackageHelper::getThumbnailRelationshipType())) {
    const auto target = targetOf(thumbnail);
    // The next screenshot needs the id, whatever it stands for now.
    const bool isOurs = thumbnail.getId() == ScreenshotPart::kThumbnailId;
    if (isOurs || (target && isTarget(*target, shots))) gone.push_back(thumbnail);
  }
  drop(package, gone);
  return true;
}

}  // namespace addon::packaging
