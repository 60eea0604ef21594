// SPDX-License-Identifier: MIT
#include "opc/model/Part.h"

#include <utility>

#include "opc/Exception.h"
#include "opc/model/Package.h"
#include "opc/model/detail/PackageState.h"

namespace opc::model {

Part::Part(Package& package, PartId id, PartName name, ContentType type)
    : package_(package),
      id_(id),
      openCount_(package.openCount()),
      name_(std::move(name)),
      type_(std::move(type)) {}

void Part::requireCurrent() const {
  if (package_.isOpen() && package_.openCount() == openCount_) {
    package_.state().requirePart(id_);
    return;
  }
  throw Exception(ErrorCode::InvalidState,
                  "part '" + name_.canonical() + "': its package has been closed");
}

std::unique_ptr<InputStream> Part::getInputStream() {
  requireCurrent();
  return package_.state().openStream(id_);
}

std::unique_ptr<OutputStream> Part::getOutputStream() {
  requireWritable();
  return package_.state().openForWriting(id_);
}

RelationshipSet& Part::relationships() {
  requireCurrent();
  return package_.state().relationshipsOf(id_);
}

void Part::requireWritable() const {
  requireCurrent();
  package_.requireWritable();
}

void Part::requirePlace() const {
  package_.state().requireRelationshipsName(package_.state().name(id_));
}

}  // namespace opc::model
