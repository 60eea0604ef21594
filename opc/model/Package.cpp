// SPDX-License-Identifier: MIT
#include "opc/model/Package.h"

#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/NameKey.h"
#include "opc/model/detail/PackageState.h"

namespace opc::model {
namespace {

// Closes a physical package unless it is dismissed, after everything went well.
class ClosingGuard {
 public:
  explicit ClosingGuard(interfaces::IPhysicalPackage* physical) : physical_(physical) {}
  ~ClosingGuard() {
    if (physical_ != nullptr) physical_->close(true);
  }
  ClosingGuard(const ClosingGuard&) = delete;
  ClosingGuard& operator=(const ClosingGuard&) = delete;

  void dismiss() { physical_ = nullptr; }

 private:
  interfaces::IPhysicalPackage* physical_;
};

Exception missingPart(const char* verb, const PartName& name,
                      const interfaces::IPhysicalPackage& physical) {
  return {ErrorCode::NotFound, std::string("cannot ") + verb + " part '" + name.canonical() +
                                   "' of '" + physical.description() +
                                   "': the package has no such part"};
}

}  // namespace

Package::Package(interfaces::IPhysicalPackage& physical, bool closePhysical)
    : physical_(physical), closePhysical_(closePhysical) {}

Package::~Package() {
  close(true);
}

void Package::open(interfaces::OpenMode mode) {
  if (isOpen()) {
    throw Exception(ErrorCode::InvalidState,
                    "cannot open package '" + physical_.description() + "': it is open already");
  }
  const bool wasOpen = physical_.isOpen();
  if (!wasOpen) physical_.open(mode);
  ClosingGuard guard(wasOpen && !closePhysical_ ? nullptr : &physical_);
  inContext([this] { return "cannot open package '" + physical_.description() + "'"; },
            [&] {
              auto state = std::make_unique<State>(physical_, mode);
              if (mode != interfaces::OpenMode::Create) state->load();
              state_ = std::move(state);
            });
  guard.dismiss();
  ++openCount_;
}

bool Package::isOpen() const noexcept {
  return state_ != nullptr;
}

bool Package::isReadOnly() const {
  return !state().isWritable();
}

void Package::close(bool discard) {
  if (!isOpen()) return;
  if (!discard) state_->stage();
  if (closePhysical_) closeContainer(discard);
  state_.reset();
}

void Package::closeContainer(bool discard) {
  try {
    physical_.close(discard);
  } catch (...) {
    // It may have thrown after the commit, and closed all the same.
    if (!physical_.isOpen()) state_.reset();
    throw;
  }
}

Package::State& Package::state() const {
  if (isOpen()) return *state_;
  throw Exception(ErrorCode::InvalidState,
                  "package '" + physical_.description() + "': it is not open");
}

void Package::requireWritable() const {
  if (state().isWritable()) return;
  throw Exception(ErrorCode::InvalidState, "cannot change package '" + physical_.description() +
                                               "': it was opened for reading");
}

void Package::requirePlace() const {
  state().requireRelationshipsName({});
}

RelationshipSet& Package::relationships() {
  return state().packageRelationships();
}

bool Package::hasPart(const PartName& name) {
  return state().findPart(name.itemName()).has_value();
}

std::shared_ptr<Part> Package::getPart(const PartName& name) {
  const std::optional<PartId> part = state().findPart(name.itemName());
  if (!part) throw missingPart("get", name, physical_);
  return std::make_shared<Part>(*this, *part, PartName::fromItemName(state_->name(*part)),
                                state_->typeOf(*part));
}

std::shared_ptr<Part> Package::getPart(const Relationship& relationship) {
  if (relationship.getTargetMode() == TargetMode::External) {
    throw FormatError("RL-11", "cannot get the part that relationship '" +
                                   toUtf8ForDisplay(relationship.getId()) + "' of '" +
                                   physical_.description() +
                                   "' leads to: it is outside the package");
  }
  return getPart(relationship.targetName());
}

std::shared_ptr<Part> Package::createPart(const PartName& name, const ContentType& type,
                                          const StandardPartInfo& info) {
  requireWritable();
  const PartId part = state().create(name, type, info, nullptr);
  return std::make_shared<Part>(*this, part, name, type);
}

PartId Package::createPart(const PartName& name, const ContentType& type,
                           const StandardPartInfo& info,
                           std::unique_ptr<interfaces::IContentSource> source) {
  requireWritable();
  return state().create(name, type, info, std::move(source));
}

bool Package::canCreatePart(const PartName& name) {
  return !state().newNameFault(name);
}

void Package::deletePart(const PartName& name) {
  requireWritable();
  const std::optional<PartId> part = state().findPart(name.itemName());
  if (!part) throw missingPart("delete", name, physical_);
  state_->erase(*part);
}

void Package::visitParts(std::string_view prefix, const std::function<void(PartId)>& visit) {
  State& opened = state();
  opened.index().forEach(ItemRole::Part, [&](PartId part) {
    if (prefix.empty() || keyStartsWith(opened.name(part), prefix)) visit(part);
  });
}

PartInfo Package::partInfo(PartId part) const {
  return state().infoOf(part);
}

std::vector<std::string> Package::strayItems() const {
  return state().strayItems();
}

std::vector<std::string> Package::untypedItems() const {
  return state().untypedItems();
}

std::vector<RelationshipsItem> Package::relationshipsItems() const {
  return state().relationshipsItems();
}

ContentType Package::typeOfRelationshipsItem(std::string_view itemName) const {
  return state().typeOfRelationshipsItem(itemName);
}

std::unique_ptr<InputStream> Package::openRelationshipsItem(std::string_view itemName) const {
  return state().openRelationshipsItem(itemName);
}

std::string_view Package::itemNameOf(PartId part) const {
  return state().name(part);
}

ContentType Package::contentTypeOf(PartId part) const {
  return state().typeOf(part);
}

std::unique_ptr<InputStream> Package::openPart(PartId part) {
  return state().openStream(part);
}

void Package::readPart(PartId part, ByteBuffer& into, std::uint64_t limit) {
  state().read(part, into, limit);
}

std::optional<interfaces::ItemIndex> Package::itemOf(PartId part) const {
  state().requirePart(part);
  const PartIndex& index = state().index();
  if (index.isInPieces(part)) return std::nullopt;
  return index.item(part);
}

std::span<const unsigned char> Package::packedBytes(PartId part, std::uint64_t offset,
                                                    std::size_t size) {
  return state().packedBytes(part, offset, size);
}

}  // namespace opc::model
