// SPDX-License-Identifier: MIT
#include "opc/plservices/FileTreePart.h"

#include <string>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/SchemaRoot.h"

namespace opc::plservices {
namespace {

model::PartName findName(model::Package& package) {
  const auto found = package.getRelationshipsByType(FileTreePart::relationshipType());
  if (found.empty()) return model::PartName(FileTreePart::kDefaultName);
  if (found.size() > 1) {
    throw FormatError("PN-13", "package has " + std::to_string(found.size()) +
                                   " relationships to a file tree, not one");
  }
  const model::Relationship& relationship = found.front();
  if (relationship.getTargetMode() != model::TargetMode::Internal) {
    throw FormatError("PN-13", "relationship '" + toUtf8ForDisplay(relationship.getId()) +
                                   "' to the file tree leads out of the package");
  }
  model::PartName name = relationship.targetName();
  if (!package.hasPart(name)) {
    throw FormatError("RL-11", "relationship '" + toUtf8ForDisplay(relationship.getId()) +
                                   "' points to '" + name.canonical() +
                                   "', which is not in the package");
  }
  return name;
}

}  // namespace

std::u16string FileTreePart::relationshipType() {
  return SchemaRoot + u"/korvan/addon/2014/relationships/fileTree";
}

FileTreePart::FileTreePart(model::Package& package)
    : package_(package), name_(findName(package)), exists_(package.hasPart(name_)) {}

FileTreeTable FileTreePart::read() {
  return FileTreeTable::read(*package_.getPart(name_)->getInputStream());
}

void FileTreePart::replace(std::unique_ptr<interfaces::IContentSource> source) {
  if (exists_) package_.deletePart(name_);
  exists_ = false;
  const model::StandardPartInfo info(interfaces::CompressionType::Normal, source->size());
  package_.createPart(name_, model::ContentType::fromAscii(kContentType), info, std::move(source));
  exists_ = replaced_ = true;
  if (package_.getRelationshipsByType(relationshipType()).empty()) {
    package_.createInternalRelationship(relationshipType(), model::URI(fromUtf8(name_.canonical())),
                                        u"");
  }
}

void FileTreePart::drop() {
  if (!exists_) return;
  package_.deletePart(name_);
  exists_ = replaced_ = false;
  for (const model::Relationship& relationship :
       package_.getRelationshipsByType(relationshipType())) {
    package_.deleteRelationship(relationship.getId());
  }
}

}  // namespace opc::plservices
