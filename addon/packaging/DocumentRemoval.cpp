// SPDX-License-Identifier: MIT
#include "addon/packaging/DocumentRemoval.h"

#include <unordered_set>
#include <utility>
#include <vector>

#include "addon/packaging/Documents.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/NameKey.h"
#include "opc/model/PackageHelper.h"
#include "opc/plservices/LoadedFileTree.h"

namespace addon::packaging {

using opc::model::Package;
using opc::model::PackageHelper;
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

/// The keys of the parts that relationships lead to.
using Targets = std::unordered_set<std::string>;

Targets targetsOf(const std::vector<Relationship>& relationships) {
  Targets targets;
  for (const Relationship& one : relationships) {
    if (const auto target = targetOf(one)) targets.insert(target->key());
  }
  return targets;
}

/// Deletes the part, unless it is there for something else as well.
void dropPart(Package& package, const PartName& name, const Targets& others) {
  if (!package.hasPart(name) || isFileOfTree(name) || others.contains(name.key())) return;
  package.deletePart(name);
}

void drop(Package& package, const std::vector<Relationship>& relationships) {
  for (const Relationship& one : relationships) package.deleteRelationship(one.getId());
  const Targets others = targetsOf(package.getRelationships());
  for (const Relationship& one : relationships) {
    if (const auto target = targetOf(one)) dropPart(package, *target, others);
  }
}

std::vector<PartName> partsNamedLikeScreenshots(Package& package) {
  const std::string stem = opc::toUtf8(ScreenshotPart::kNameStem).substr(1);
  std::vector<PartName> names;
  package.visitParts(stem, [&](opc::model::PartId part) {
    names.push_back(PartName::fromItemName(package.itemNameOf(part)));
  });
  return names;
}

void giveAnotherId(Package& package, const Relationship& one) {
  package.deleteRelationship(one.getId());
  if (one.getTargetMode() == opc::model::TargetMode::Internal) {
    package.createInternalRelationship(one.getType(), one.getTargetURI(), u"");
  } else {
    package.createExternalRelationship(one.getType(), one.getTargetURI(), u"");
  }
}

}  // namespace

bool removeDocument(Package& package, const XMLPartType& document) {
  const PartName name(document.partName);
  const auto relationships = package.getRelationshipsByType(document.relationshipType);
  if (relationships.empty() && !package.hasPart(name)) return false;
  drop(package, relationships);
  dropPart(package, name, targetsOf(package.getRelationships()));
  return true;
}

std::string documentFault(Package& package, const XMLPartType& document) {
  const auto relationships = package.getRelationshipsByType(document.relationshipType);
  if (relationships.size() > 1) {
    return "the package has " + std::to_string(relationships.size()) +
           " relationships of its type, and only one is allowed";
  }
  if (relationships.empty()) {
    const bool hasPart = package.hasPart(PartName(document.partName));
    return hasPart ? "no relationship leads to its part" : "";
  }
  const auto target = targetOf(relationships.front());
  if (!target) return "its relationship leads out of the package";
  return package.hasPart(*target) ? "" : "its part '" + target->canonical() + "' is missing";
}

void replaceDocument(AddonPackage& package, XMLPartType& document) {
  Package& model = package.logicalPackage();
  const auto relationships = model.getRelationshipsByType(document.relationshipType);
  const bool isUsual =
      documentFault(model, document).empty() &&
      (relationships.empty() || targetOf(relationships.front()) == PartName(document.partName));
  if (!isUsual) removeDocument(model, document);
  storeDocument(package, document);
  // The part is then still there for something else.
  if (model.getRelationshipsByType(document.relationshipType).empty()) {
    model.createInternalRelationship(document.relationshipType, opc::model::URI(document.partName),
                                     u"");
  }
}

std::optional<Relationship> relationshipInTheWay(Package& package) {
  const std::pair<std::u16string, std::u16string> kIds[] = {
      {ScreenshotPart::kId, ScreenshotPart::relationshipType()},
      {ScreenshotPart::kThumbnailId, PackageHelper::getThumbnailRelationshipType()}};
  for (const auto& [id, type] : kIds) {
    if (!package.hasRelationship(id)) continue;
    Relationship found = package.getRelationship(id);
    if (found.getType() != type) return found;
  }
  return std::nullopt;
}

bool removeScreenshot(Package& package) {
  const auto shots = package.getRelationshipsByType(ScreenshotPart::relationshipType());
  const Targets images = targetsOf(shots);
  auto gone = shots;
  for (const Relationship& thumbnail :
       package.getRelationshipsByType(PackageHelper::getThumbnailRelationshipType())) {
    const auto target = targetOf(thumbnail);
    // The next screenshot needs the id, whatever it stands for now.
    const bool isOurs = thumbnail.getId() == ScreenshotPart::kThumbnailId;
    if (isOurs || (target && images.contains(target->key()))) gone.push_back(thumbnail);
  }
  drop(package, gone);
  bool isChanged = !gone.empty();
  const Targets others = targetsOf(package.getRelationships());
  for (const PartName& name : partsNamedLikeScreenshots(package)) {
    if (others.contains(name.key())) continue;
    package.deletePart(name);
    isChanged = true;
  }
  while (const auto other = relationshipInTheWay(package)) {
    giveAnotherId(package, *other);
    isChanged = true;
  }
  return isChanged;
}

}  // namespace addon::packaging
