// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>

#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/checks/detail/IriReference.h"
#include "opc/checks/detail/Packaging.h"
#include "opc/model/DomText.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/PartIndex.h"
#include "opc/model/PartName.h"
#include "opc/signatures/SignatureParts.h"

namespace opc::checks::detail {

using model::ItemRole;
using model::PartId;
using model::Relationship;
using model::RelationshipSet;
using model::TargetMode;

namespace {

bool isOfImage(const model::ContentType& type) {
  return toLowerAscii(type.ascii()).starts_with("image/");
}

/// The relationships of one part.
class RelationshipsCheck {
 public:
  RelationshipsCheck(Packaging& packaging, PartId part)
      : packaging_(packaging),
        part_(part),
        name_(packaging.partName(part)),
        source_(model::sourceOfRelationships(packaging.index.name(part))) {}

  void run() {
    packaging_.read(
        packaging_.itemsOf(part_), kBadRelationships, name_,
        [&](auto& stream, auto& faults) { check(RelationshipSet::read(source_, stream, faults)); });
  }

 private:
  void check(const RelationshipSet& set) {
    if (packaging_.areTypesKnown) {
      NamesSink sink(packaging_);
      checkTargetTypes(packaging_.index, set, sink);
    }
    for (const RelationshipSet::Entry& entry : set.entries()) {
      if (entry.relationship.getTargetMode() == TargetMode::External) {
        checkExternal(entry.relationship);
      } else {
        checkInternal(entry);
      }
      noteTarget(entry.relationship);
    }
  }

  void checkExternal(const Relationship& relationship) {
    const std::u16string target = relationship.getTargetURI().toString();
    const bool isEmpty = model::trimXmlSpace(target).empty();
    if (!isEmpty && isIriReference(target)) return;
    add(kBadExternalTarget, relationship,
        isEmpty ? "its external target is empty"
                : "its external target " + quoted(target) + " is not a valid IRI",
        "RL-10");
  }

  void checkInternal(const RelationshipSet::Entry& entry) {
    const Relationship& relationship = entry.relationship;
    const std::string target = quoted(relationship.getTargetURI().toString());
    if (entry.corrected) {
      add(kOddTarget, relationship, "its target is not written as the part name " + target, "RL-8");
    }
    const auto part = findTarget(packaging_.index, relationship);
    if (!part) {
      if (!isCore(relationship)) {
        add(kMissingTarget, relationship, "its target " + target + " is not in the package",
            "RL-11");
      }
      return;
    }
    const bool isThumbnail = relationship.getType() == model::kThumbnailRelationship;
    if (!isThumbnail || !packaging_.isPart(*part)) return;
    const model::ContentType* type = packaging_.types.find(packaging_.index.name(*part));
    if (isOfImage(*type)) return;
    add(kThumbnailNotImage, relationship,
        "the thumbnail " + target + " has the content type " + quoted(type->ascii()), "TH-1");
  }

  bool isCore(const Relationship& relationship) const {
    return source_.empty() && relationship.getType() == model::kCorePropertiesRelationship;
  }

  void noteTarget(const Relationship& relationship) {
    if (isCore(relationship)) packaging_.coreProperties = relationship;
    if (source_.empty() && relationship.getType() == signatures::kOriginRelationship) {
      packaging_.hasSignatureOrigin = true;
    }
  }

  void add(FindingId id, const Relationship& relationship, const std::string& why,
           const char* rule) {
    packaging_.report.addClipped(id, name_,
                                 "relationship " + quoted(relationship.getId()) + ": " + why, rule);
  }

  Packaging& packaging_;
  PartId part_;
  std::string name_;
  std::string source_;
};

// Readers ignore relationships of something that is not a part, or of relationships parts. The
// finding that reports this is enough.
bool hasSource(const Packaging& packaging, PartId part) {
  const std::string source = model::sourceOfRelationships(packaging.index.name(part));
  if (source.empty()) return true;
  if (model::isRelationshipsItemName(source)) return false;
  return packaging.index.find(source).has_value();
}

}  // namespace

void checkRelationships(Packaging& packaging) {
  packaging.index.forEach(ItemRole::Relationships, [&](PartId part) {
    if (hasSource(packaging, part)) RelationshipsCheck(packaging, part).run();
  });
}

}  // namespace opc::checks::detail
