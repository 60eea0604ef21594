// SPDX-License-Identifier: MIT
#include "opc/model/RelationshipSource.h"

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/RelationshipSet.h"

namespace opc::model {

std::vector<Relationship> RelationshipSource::getRelationships() {
  std::vector<Relationship> result;
  visitRelationships([&](const Relationship& relationship) { result.push_back(relationship); });
  return result;
}

void RelationshipSource::visitRelationships(const std::function<void(const Relationship&)>& visit) {
  for (const RelationshipSet::Entry& entry : relationships().entries()) visit(entry.relationship);
}

std::vector<Relationship> RelationshipSource::getRelationshipsByType(std::u16string_view type) {
  return relationships().ofType(type);
}

bool RelationshipSource::hasRelationship(std::u16string_view id) {
  return relationships().find(id) != nullptr;
}

Relationship RelationshipSource::getRelationship(std::u16string_view id) {
  return relationships().get(id);
}

Relationship RelationshipSource::createInternalRelationship(std::u16string_view type,
                                                            const URI& target,
                                                            std::u16string_view id) {
  requireWritable();
  requirePlace();
  return relationships().addInternal(type, target, id);
}

Relationship RelationshipSource::createExternalRelationship(std::u16string_view type,
                                                            const URI& target,
                                                            std::u16string_view id) {
  requireWritable();
  requirePlace();
  return relationships().addExternal(type, target, id);
}

void RelationshipSource::deleteRelationship(std::u16string_view id) {
  requireWritable();
  relationships().remove(id);
}

}  // namespace opc::model
