// SPDX-License-Identifier: MIT
#include "opc/model/detail/PackageState.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/interfaces/MemoryContentSource.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/PieceStream.h"
#include "opc/model/detail/DocumentSize.h"

namespace opc::model {

using interfaces::ItemIndex;

namespace {

const ContentType& relationshipsType() {
  static const ContentType kType = ContentType::fromAscii(kRelationshipsType);
  return kType;
}

}  // namespace

Package::State::State(interfaces::IPhysicalPackage& physical, interfaces::OpenMode mode)
    : physical_(physical), mode_(mode), index_(physical) {
  relationshipsOfPackage_.emplace(std::string());
}

std::string Package::State::readingContext(std::string_view itemName) const {
  return "cannot read part '/" + std::string(itemName) + "' of '" + physical_.description() + "'";
}

std::string Package::State::writingContext(std::string_view itemName) const {
  return "cannot write part '/" + std::string(itemName) + "' of '" + physical_.description() + "'";
}

void Package::State::requirePart(PartId part) const {
  if (isPart(part)) return;
  throw Exception(ErrorCode::InvalidState,
                  "a part of '" + physical_.description() + "': it is not there any more");
}

std::optional<PartId> Package::State::findPart(std::string_view itemName) const {
  const std::optional<PartId> part = index_.find(itemName);
  return part && isPart(*part) ? part : std::nullopt;
}

const ContentType& Package::State::typeOf(PartId part) const {
  requirePart(part);
  return *types_.find(name(part));
}

PartInfo Package::State::infoOf(PartId part) const {
  requirePart(part);
  PartInfo info;
  info.itemName = name(part);
  if (!index_.isInPieces(part)) {
    const interfaces::ItemInfo item = physical_.itemInfo(index_.item(part));
    return {info.itemName, item.compressed, item.executable, item.crc,
            item.size,     item.packedSize, item.modified};
  }
  const auto add = [](std::uint64_t a, std::uint64_t b) {
    const auto most = std::numeric_limits<std::uint64_t>::max();
    return b > most - a ? most : a + b;
  };
  for (const ItemIndex piece : index_.pieces(part)) {
    const interfaces::ItemInfo item = physical_.itemInfo(piece);
    info.compressed = info.compressed || item.compressed;
    info.executable = info.executable || item.executable;
    info.size = add(info.size, item.size);
    info.packedSize = add(info.packedSize, item.packedSize);
    info.modified = item.modified;
  }
  return info;
}

void Package::State::appendItemNames(PartId part, std::vector<std::string>& names) const {
  if (!index_.isInPieces(part)) {
    names.emplace_back(physical_.itemName(index_.item(part)));
    return;
  }
  for (const ItemIndex piece : index_.pieces(part)) {
    names.emplace_back(physical_.itemName(piece));
  }
}

std::vector<std::string> Package::State::strayItems() const {
  std::vector<std::string> names;
  index_.forEach(ItemRole::Stray, [&](PartId item) {
    const interfaces::ItemInfo info = physical_.itemInfo(item);
    if (info.kind != interfaces::ItemKind::Folder) names.emplace_back(info.name);
  });
  for (const PartId orphan : index_.orphans()) appendItemNames(orphan, names);
  return names;
}

std::vector<std::string> Package::State::untypedItems() const {
  std::vector<std::string> names;
  index_.forEach(ItemRole::Untyped, [&](PartId item) { appendItemNames(item, names); });
  return names;
}

std::optional<FormatError> Package::State::newNameFault(const PartName& name) const {
  const auto fault = [&](ErrorCode code, const char* rule, const std::string& why) {
    return FormatError(rule,
                       "cannot create part '" + name.canonical() + "' in '" +
                           physical_.description() + "': " + why,
                       code);
  };
  if (name.isRelationshipsPartName()) {
    return fault(ErrorCode::InvalidName, "PN-10", "the name is kept for relationships");
  }
  if (const std::optional<PartId> taken = findPart(name.itemName())) {
    return fault(ErrorCode::AlreadyExists, "PN-8",
                 "part '/" + std::string(index_.name(*taken)) + "' has that name");
  }
  const std::string_view above = index_.partAbove(name.itemName());
  if (!above.empty()) {
    return fault(ErrorCode::InvalidName, "PN-9",
                 "the name extends that of part '/" + std::string(above) + "'");
  }
  if (index_.hasPartBelow(name.itemName())) {
    return fault(ErrorCode::InvalidName, "PN-9", "the name of another part extends it");
  }
  return std::nullopt;
}

void Package::State::requireRelationshipsName(std::string_view sourceItemName) const {
  const std::string itemName = relationshipsItemName(sourceItemName);
  const std::string_view above = index_.partAbove(itemName);
  if (above.empty() && !index_.hasPartBelow(itemName)) return;
  const std::string source =
      sourceItemName.empty() ? "the package" : "part '/" + std::string(sourceItemName) + "'";
  throw FormatError(
      "PN-9",
      "cannot create a relationship of " + source + " in '" + physical_.description() + "': " +
          (above.empty()
               ? "the name of a part extends '/" + itemName + "'"
               : "'/" + itemName + "' extends the name of part '/" + std::string(above) + "'") +
          ", in which it would be stored",
      ErrorCode::InvalidName);
}

PartId Package::State::create(const PartName& name, const ContentType& type,
                              const StandardPartInfo& info,
                              std::unique_ptr<interfaces::IContentSource> source) {
  if (const std::optional<FormatError> fault = newNameFault(name)) throw FormatError(*fault);
  interfaces::NewItem item;
  item.name = name.itemName();
  item.compression = info.compression;
  item.executable = info.executable;
  item.modified = info.modified;

  const bool takesStreams = source == nullptr;
  const ItemIndex added =
      takesStreams ? physical_.addItem(item) : physical_.addItem(item, std::move(source));
  const PartId part = takeIn(added, name, type);
  if (takesStreams) written_.insert(part);
  return part;
}

PartId Package::State::takeIn(ItemIndex added, const PartName& name, const ContentType& type) {
  try {
    types_.assign(name.itemName(), type, !index_.isUntypedExtension(name.getExtension()));
    changed_ = true;
    // Something that is not a part may lie in the place, or relationships without a source.
    if (const auto occupant = index_.find(name.itemName())) index_.remove(*occupant);
    removeRelationshipsItem(name.itemName());
    return index_.add(added, ItemRole::Part);
  } catch (...) {
    physical_.removeItem(added);
    throw;
  }
}

void Package::State::erase(PartId part) {
  const std::string itemName(name(part));
  changed_ = true;
  relationships_.erase(part);
  written_.erase(part);
  removeRelationshipsItem(itemName);
  index_.remove(part);
  types_.removeOverride(itemName);
}

void Package::State::removeRelationshipsItem(std::string_view sourceItemName) {
  const std::string itemName = relationshipsItemName(sourceItemName);
  const std::optional<PartId> item = index_.find(itemName);
  if (!item) return;
  index_.remove(*item);
  types_.removeOverride(itemName);
}

std::unique_ptr<InputStream> Package::State::openRaw(PartId part) const {
  if (index_.isInPieces(part)) {
    return std::make_unique<PieceStream>(physical_, index_.pieces(part));
  }
  return physical_.openItem(index_.item(part));
}

std::unique_ptr<InputStream> Package::State::openStream(PartId part) const {
  requirePart(part);
  return inContext([&] { return readingContext(name(part)); },
                   [&] {
                     return std::make_unique<detail::PartInputStream>(
                         openRaw(part), detail::PartAccess(open_, readingContext(name(part))));
                   });
}

void Package::State::read(PartId part, ByteBuffer& into, std::uint64_t limit) const {
  requirePart(part);
  inContext([&] { return readingContext(name(part)); },
            [&] {
              if (index_.isInPieces(part)) return readPieces(part, into, limit);
              physical_.readItem(index_.item(part), into, limit);
            });
}

std::span<const unsigned char> Package::State::packedBytes(PartId part, std::uint64_t offset,
                                                           std::size_t size) const {
  requirePart(part);
  if (index_.isInPieces(part)) return {};
  return inContext([&] { return readingContext(name(part)); },
                   [&] { return physical_.packedBytes(index_.item(part), offset, size); });
}

void Package::State::readPieces(PartId part, ByteBuffer& into, std::uint64_t limit) const {
  const std::uint64_t size = infoOf(part).size;
  if (size > limit) {
    throw Exception(ErrorCode::TooLarge, "it has " + std::to_string(size) +
                                             " bytes, more than the " + std::to_string(limit) +
                                             " that are read at once");
  }
  std::vector<unsigned char> bytes;
  for (const ItemIndex piece : index_.pieces(part)) {
    physical_.readItem(piece, into, limit);
    bytes.insert(bytes.end(), into.data(), into.data() + into.size());
  }
  into.resizeForOverwrite(bytes.size());
  if (!bytes.empty()) std::memcpy(into.data(), bytes.data(), bytes.size());
}

std::unique_ptr<OutputStream> Package::State::openForWriting(PartId part) {
  requirePart(part);
  changed_ = true;
  if (!written_.contains(part)) {
    const PartInfo info = infoOf(part);
    interfaces::NewItem item;
    item.name = canonicalItemName(info.itemName);
    item.executable = info.executable;
    index_.replaceItem(part, physical_.addItem(item));
    written_.insert(part);
  }
  const ItemIndex item = index_.isInPieces(part) ? index_.pieces(part).front() : index_.item(part);
  return std::make_unique<detail::PartOutputStream>(
      physical_.openForWriting(item), detail::PartAccess(open_, writingContext(name(part))));
}

void Package::State::load() {
  loadContentTypes();
  index_.load(types_);
  loadPackageRelationships();
}

void Package::State::loadContentTypes() {
  contentTypesItems_ = findContentTypes(physical_);
  if (contentTypesItems_.empty()) {
    throw FormatError("CT-1", std::string(kNoContentTypes));
  }
  inContext([] { return "content types stream"; },
            [this] {
              PieceStream stream(physical_, contentTypesItems_);
              types_ = ContentTypes::read(stream);
            });
}

void Package::State::loadPackageRelationships() {
  inContext([] { return "part '/" + std::string(kPackageRelationshipsItem) + "'"; },
            [this] { relationshipsOfPackage_.emplace(readRelationships({})); });
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
  RelationshipSet read =
      inContext([&] { return readingContext(relationshipsItemName(name(part))); },
                [&] { return readRelationships(name(part)); });
  return relationships_.emplace(part, std::move(read)).first->second;
}

bool Package::State::isChanged() const {
  return changed_ || mode_ == interfaces::OpenMode::Create || types_.isChanged() ||
         relationshipsOfPackage_->isChanged() ||
         std::any_of(relationships_.begin(), relationships_.end(),
                     [](const auto& entry) { return entry.second.isChanged(); });
}

void Package::State::stage() {
  if (!isChanged()) return;
  for (const PartId orphan : index_.orphans()) types_.removeOverride(index_.name(orphan));
  index_.removeNonParts();
  requireRelationshipsNames();
  // A default would make parts of items that have that extension and no type.
  if (types_.findDefault(kRelationshipsExtension) == nullptr &&
      !index_.isUntypedExtension(kRelationshipsExtension)) {
    types_.addDefault(kRelationshipsExtension, relationshipsType());
  }
  for (auto& [part, set] : relationships_) {
    if (!set.isChanged()) continue;
    settleRelationshipsItem(name(part), set);
    stageRelationships(name(part), set, false);
  }
  stageFront();
}

// A part may have come since the relationship did.
void Package::State::requireRelationshipsNames() const {
  const auto check = [this](std::string_view source, const RelationshipSet& set) {
    if (set.isChanged() && !set.entries().empty()) requireRelationshipsName(source);
  };
  check({}, *relationshipsOfPackage_);
  for (const auto& [part, set] : relationships_) check(name(part), set);
}

// What a reader wants first stands first: the content types, then the package's relationships.
void Package::State::stageFront() {
  if (relationshipsOfPackage_->isChanged()) settleRelationshipsItem({}, *relationshipsOfPackage_);
  const bool newTypes = types_.isChanged() || contentTypesItems_.empty();
  if (newTypes) {
    const ItemIndex added = addText(kContentTypesItem, types_.toXml(), true);
    for (const ItemIndex old : std::exchange(contentTypesItems_, {added})) {
      physical_.removeItem(old);
    }
    types_.setUnchanged();
  }
  if (relationshipsOfPackage_->isChanged() || (newTypes && relationshipsStaged_)) {
    stageRelationships({}, *relationshipsOfPackage_, true);
    relationshipsStaged_ = true;
  }
}

// Whether there is an item decides on its content type, so this comes before those are written.
void Package::State::settleRelationshipsItem(std::string_view sourceItemName,
                                             const RelationshipSet& set) {
  if (set.entries().empty()) return removeRelationshipsItem(sourceItemName);
  const std::string itemName = relationshipsItemName(sourceItemName);
  const ContentType* type = types_.find(itemName);
  if (type == nullptr || !(*type == relationshipsType())) {
    types_.assign(itemName, relationshipsType(), false);
  }
}

void Package::State::stageRelationships(std::string_view sourceItemName, RelationshipSet& set,
                                        bool atFront) {
  if (!set.entries().empty()) {
    const std::string itemName = relationshipsItemName(sourceItemName);
    const ItemIndex added = addText(itemName, set.toXml(), atFront);
    if (const std::optional<PartId> old = index_.find(itemName)) {
      index_.replaceItem(*old, added);
    } else {
      index_.add(added, ItemRole::Relationships);
    }
  }
  set.setUnchanged();
}

ItemIndex Package::State::addText(std::string_view itemName, std::string text, bool atFront) {
  interfaces::NewItem item;
  item.name = canonicalItemName(itemName);
  item.atFront = atFront;
  detail::requireReadableDocument(
      text, "cannot write '/" + item.name + "' of '" + physical_.description() + "'");
  return physical_.addItem(
      item, std::make_unique<interfaces::MemoryContentSource>(std::move(text), "/" + item.name));
}

}  // namespace opc::model
