// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "opc/Exception.h"
#include "opc/model/ContentTypes.h"
#include "opc/model/Package.h"
#include "opc/model/PartIndex.h"
#include "opc/model/RelationshipSet.h"
#include "opc/model/XercesHelper.h"
#include "opc/model/detail/PartStream.h"

namespace opc::model {

/// What a package knows while it is open.
class Package::State {
 public:
  /// `physical` is open.
  State(interfaces::IPhysicalPackage& physical, interfaces::OpenMode mode);

  /// Reads the directory, the content types and the package's relationships.
  void load();

  bool isWritable() const { return mode_ != interfaces::OpenMode::Read; }
  bool isPart(PartId part) const { return index_.role(part) == ItemRole::Part; }
  /// Throws ErrorCode::InvalidState unless this is a part of the package.
  void requirePart(PartId part) const;
  std::optional<PartId> findPart(std::string_view itemName) const;
  const PartIndex& index() const { return index_; }
  std::string_view name(PartId part) const { return index_.name(part); }
  const ContentType& typeOf(PartId part) const;
  PartInfo infoOf(PartId part) const;
  /// See Package.
  std::vector<std::string> strayItems() const;
  std::vector<std::string> untypedItems() const;
  std::vector<RelationshipsItem> relationshipsItems() const;
  ContentType typeOfRelationshipsItem(std::string_view itemName) const;
  std::unique_ptr<InputStream> openRelationshipsItem(std::string_view itemName) const;

  /// Throws as Package::createPart does; `source` may be null.
  PartId create(const PartName& name, const ContentType& type, const StandardPartInfo& info,
                std::unique_ptr<interfaces::IContentSource> source);
  /// Why createPart would not take the name, if it would not.
  std::optional<FormatError> newNameFault(const PartName& name) const;
  void erase(PartId part);

  std::unique_ptr<InputStream> openStream(PartId part) const;
  void read(PartId part, ByteBuffer& into, std::uint64_t limit) const;
  std::span<const unsigned char> packedBytes(PartId part, std::uint64_t offset,
                                             std::size_t size) const;
  std::unique_ptr<OutputStream> openForWriting(PartId part);

  RelationshipSet& packageRelationships() { return *relationshipsOfPackage_; }
  /// Throws FormatError when a part is in the way of the part that the source's relationships are
  /// stored in.
  void requireRelationshipsName(std::string_view sourceItemName) const;
  /// The relationships of a part, which are read on first use.
  RelationshipSet& relationshipsOf(PartId part);

  /// Applies all changes to the physical package. May be called again after its commit failed:
  /// nothing is added twice.
  void stage();

  /// "cannot read part '/x' of 'PATH'".
  std::string readingContext(std::string_view itemName) const;
  std::string writingContext(std::string_view itemName) const;

 private:
  void loadContentTypes();
  void loadPackageRelationships();
  RelationshipSet readRelationships(std::string_view sourceItemName) const;
  std::unique_ptr<InputStream> openRaw(PartId part) const;
  void readPieces(PartId part, ByteBuffer& into, std::uint64_t limit) const;
  void removeRelationshipsItem(std::string_view sourceItemName);
  void appendItemNames(PartId part, std::vector<std::string>& names) const;
  PartId takeIn(interfaces::ItemIndex added, const PartName& name, const ContentType& type);

  const RelationshipSet* changedSet(std::string_view sourceItemName) const;
  bool isChanged() const;
  void requireRelationshipsNames() const;
  void settleRelationshipsItem(std::string_view sourceItemName, const RelationshipSet& set);
  void stageRelationships(std::string_view sourceItemName, RelationshipSet& set, bool atFront);
  void stageFront();
  interfaces::ItemIndex addText(std::string_view itemName, std::string text, bool atFront);

  interfaces::IPhysicalPackage& physical_;
  interfaces::OpenMode mode_;
  PartIndex index_;
  ContentTypes types_;
  std::vector<interfaces::ItemIndex> contentTypesItems_;
  std::optional<RelationshipSet> relationshipsOfPackage_;
  std::map<PartId, RelationshipSet> relationships_;
  detail::OpenToken open_ = std::make_shared<int>(0);
  std::unordered_set<PartId> written_;  // parts whose items were added and can be written to
  bool changed_ = false;                // parts were created, deleted or written
  bool relationshipsStaged_ = false;    // those of the package were added at the front
};

}  // namespace opc::model
