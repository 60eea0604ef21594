// SPDX-License-Identifier: MIT
#include <optional>
#include <string>
#include <vector>

#include "opc/checks/Finding.h"
#include "opc/checks/detail/Packaging.h"
#include "opc/model/PartIndex.h"
#include "opc/plservices/CorePropertiesPart.h"

namespace opc::checks::detail {

using model::ContentType;
using model::ItemRole;
using model::PartId;
using model::Relationship;
using plservices::CorePropertiesPart;

namespace {

constexpr const char* kPackageRelationships = "/_rels/.rels";

bool isOfCoreType(const Packaging& packaging, PartId part) {
  static const ContentType kType = ContentType::fromAscii(CorePropertiesPart::kContentType);
  const ContentType* type = packaging.types.find(packaging.index.name(part));
  return type != nullptr && *type == kType;
}

// The part that the relationship leads to, if it can be examined.
std::optional<PartId> findPart(Packaging& packaging, const Relationship& relationship) {
  const std::string which = "relationship " + quoted(relationship.getId());
  if (relationship.getTargetMode() == model::TargetMode::External) {
    packaging.report.addClipped(kBadCoreProperties, kPackageRelationships,
                                which + ": it leads to core properties outside the package",
                                "CP-2");
    return std::nullopt;
  }
  const std::optional<PartId> part = findTarget(packaging.index, relationship);
  if (!part) {
    packaging.report.addClipped(kBadCoreProperties, kPackageRelationships,
                                which + ": it leads to core properties " +
                                    quoted(relationship.getTargetURI().toString()) +
                                    ", which are not in the package",
                                "CP-2");
    return std::nullopt;
  }
  // Without a content type it is not a part, which has been reported.
  if (!packaging.areTypesKnown || !packaging.isPart(*part)) return std::nullopt;
  if (isOfCoreType(packaging, *part)) return part;
  packaging.add(kBadCoreProperties, *part,
                "the core properties have the content type " +
                    quoted(packaging.types.find(packaging.index.name(*part))->ascii()),
                "CP-2");
  return std::nullopt;
}

void checkContent(Packaging& packaging, PartId part) {
  const std::string name = packaging.partName(part);
  packaging.read(
      packaging.itemsOf(part), kBadCoreProperties, name, [&](auto& stream, auto& faults) {
        const CorePropertiesPart content = CorePropertiesPart::read(stream, faults);
        for (const auto& warning : content.warnings()) {
          packaging.report.addClipped(kOddCoreProperties, name, warning.text, warning.rule);
        }
      });
}

// Reports all but the related one, or all but the first if none is related.
void checkOthers(Packaging& packaging, const std::optional<PartId>& related) {
  std::vector<PartId> found;
  packaging.index.forEach(ItemRole::Part, [&](PartId part) {
    if (isOfCoreType(packaging, part)) found.push_back(part);
  });
  if (found.size() < 2) return;
  const PartId kept = related.value_or(found.front());
  for (const PartId part : found) {
    if (part == kept) continue;
    packaging.add(kSeveralCoreParts, part,
                  "it has the content type of core properties, like " +
                      quoted(packaging.partName(kept)) + " has",
                  "CP-3");
  }
}

}  // namespace

void checkCoreProperties(Packaging& packaging) {
  std::optional<PartId> related;
  if (packaging.coreProperties) related = findPart(packaging, *packaging.coreProperties);
  if (related) checkContent(packaging, *related);
  checkOthers(packaging, related);
}

}  // namespace opc::checks::detail
