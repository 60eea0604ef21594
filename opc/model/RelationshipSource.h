// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/model/Relationship.h"

namespace opc::model {

class RelationshipSet;

/// What relationships start from: the package, or a part. The package must be open.
class RelationshipSource {
 public:
  virtual ~RelationshipSource() = default;

  /// In the order in which they are stored.
  std::vector<Relationship> getRelationships();
  /// The same without a copy. `visit` must not change them.
  void visitRelationships(const std::function<void(const Relationship&)>& visit);
  std::vector<Relationship> getRelationshipsByType(std::u16string_view type);

  bool hasRelationship(std::u16string_view id);
  /// Throws ErrorCode::NotFound for an unknown id.
  Relationship getRelationship(std::u16string_view id);

  /// Adds a relationship to a part of the package; `target` is resolved against this source and
  /// stored as an absolute part name. An empty `id` is replaced by a fresh one, never one of
  /// another relationship here and never "rId100" or "rId101". Throws for an empty type, an id that
  /// is not an xsd:ID or is taken, and a target that is not a part name or a relationships part;
  /// the target need not exist. Throws ErrorCode::TooLarge for what could not be read back: a
  /// value of more than 1 MiB, or more relationships than one document holds; FormatError when a
  /// part of the package has a name that the part with the relationships cannot stand beside.
  Relationship createInternalRelationship(std::u16string_view type, const URI& target,
                                          std::u16string_view id);
  /// Adds a relationship to anything outside; `target` is stored as it is.
  Relationship createExternalRelationship(std::u16string_view type, const URI& target,
                                          std::u16string_view id);

  /// Throws ErrorCode::NotFound for an unknown id.
  void deleteRelationship(std::u16string_view id);

 protected:
  /// Reads them on first use. Throws ErrorCode::InvalidState if the package is closed.
  virtual RelationshipSet& relationships() = 0;
  /// Before a change: throws ErrorCode::InvalidState unless the package may be changed.
  virtual void requireWritable() const = 0;
  /// Before one is added: throws FormatError when a part is in the way of where they are stored.
  virtual void requirePlace() const = 0;
};

}  // namespace opc::model
