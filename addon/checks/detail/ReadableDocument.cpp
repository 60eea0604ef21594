// SPDX-License-Identifier: MIT
#include "addon/checks/detail/ReadableDocument.h"

#include <utility>

#include "addon/checks/detail/Destination.h"
#include "addon/checks/detail/Readable.h"

namespace addon::checks::detail {

ReadableDocument::ReadableDocument(packaging::AddonPackage& package,
                                   const packaging::DocumentTable& table)
    : schema_(schemaOf(table)) {
  Destination found = follow(package.logicalPackage(), schema_.relationshipType);
  if (found.kind != Destination::Kind::Part) return;
  part_ = std::move(found.name);
  isReadable([&] { text_.emplace(package.logicalPackage(), found.part->id()); });
}

}  // namespace addon::checks::detail
