// SPDX-License-Identifier: MIT
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/PieceStream.h"
#include "opc/model/RelationshipTargets.h"
#include "opc/model/detail/PackageState.h"

namespace opc::model {

void Package::State::load() {
  loadContentTypes();
  index_.load(types_);
  loadPackageRelationships();
}

void Package::State::loadContentTypes() {
  contentTypesItems_ = PartIndex::findContentTypes(physical_);
  if (contentTypesItems_.empty()) {
    throw FormatError(
        "CT-1", "content types stream '" + std::string(kContentTypesItem) + "': it is not there");
  }
  try {
    PieceStream stream(physical_, contentTypesItems_);
    types_ = ContentTypes::read(stream);
  } catch (Exception& fault) {
    fault.addContext("content types stream");
    throw;
  }
}

void Package::State::loadPackageRelationships() {
  try {
    relationshipsOfPackage_.emplace(readRelationships({}));
  } catch (Exception& fault) {
    fault.addContext("part '/" + std::string(kPackageRelationshipsItem) + "'");
    throw;
  }
}

RelationshipSet Package::State::readRelationships(std::string_view sourceItemName) const {
  const std::optional<PartId> item = index_.find(relationshipsItemName(sourceItemName));
  if (!item) return RelationshipSet(std::string(sourceItemName));
  const std::unique_ptr<InputStream> stream = openRaw(*item);
  RelationshipSet set = RelationshipSet::read(std::string(sourceItemName), *stream);
  checkTargetTypes(index_, set, FaultSink::refusing());
  return set;
}

RelationshipSet& Package::State::relationshipsOf(PartId part) {
  requirePart(part);
  const auto known = relationships_.find(part);
  if (known != relationships_.end()) return known->second;
  try {
    return relationships_.emplace(part, readRelationships(name(part))).first->second;
  } catch (Exception& fault) {
    fault.addContext(readingContext(relationshipsItemName(name(part))));
    throw;
  }
}

}  // namespace opc::model
