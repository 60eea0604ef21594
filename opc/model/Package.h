// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/model/ContentType.h"
#include "opc/model/Part.h"
#include "opc/model/PartName.h"
#include "opc/model/RelationshipSource.h"

namespace opc::model {

/// What is known about a part without reading it.
struct PartInfo {
  std::string_view itemName;  ///< canonical or stored name without the slash; valid until close
  bool compressed = false;
  bool executable = false;
  std::uint32_t crc = 0;
  std::uint64_t size = 0;        ///< bytes, as declared
  std::uint64_t packedSize = 0;  ///< bytes in the container
  std::int64_t modified = 0;     ///< seconds since 1970, UTC
};

/// A relationships part, as a commit would leave it.
struct RelationshipsItem {
  std::string name;              ///< of the item, as stored
  std::optional<PartId> stored;  ///< nothing if it was changed since the package was opened
};

/// A package by the Open Packaging Conventions: parts, their content types, and relationships, over
/// a physical package. Opening reads the directory, the content types and the package's
/// relationships; a part costs nothing before it is asked for.
class Package final : public RelationshipSource {
 public:
  /// Neither opens nor reads anything. `physical` must outlive the package. It is opened with the
  /// package unless it is open already. With `closePhysical` closing the package closes it too;
  /// without, changes are brought to it and its owner commits or discards them.
  Package(interfaces::IPhysicalPackage& physical, bool closePhysical);
  /// Closes as close(true) does.
  ~Package() override;
  Package(const Package&) = delete;
  Package& operator=(const Package&) = delete;

  /// Throws Exception, with nothing left open, when the package breaks a rule that shows from its
  /// directory, its content types or its relationships; InvalidState when it is open already.
  void open(interfaces::OpenMode mode);
  bool isOpen() const noexcept;
  /// Whether it was opened for reading, so that nothing in it changes before it is closed. Throws
  /// ErrorCode::InvalidState if it is not open.
  bool isReadOnly() const;
  /// Increases with every open(), which shows that what was read before is stale.
  std::uint64_t openCount() const noexcept { return openCount_; }

  /// `discard` false: writes what was changed, as one transaction, and closes; when that fails it
  /// throws, the file is as it was and the package stays open. One failure comes later: when only
  /// flushing the folder to disk fails it throws too, but the new file is in place and everything
  /// is closed; isOpen() distinguishes the two. `discard` true: drops what was changed, closes,
  /// never throws. Closing what is not open does nothing.
  void close(bool discard);

  /// All of these throw ErrorCode::InvalidState if the package is not open.
  bool hasPart(const PartName& name);
  /// Throws ErrorCode::NotFound, naming the part and the package.
  std::shared_ptr<Part> getPart(const PartName& name);
  /// The part that a relationship of the package leads to. Throws as the other one does, and
  /// FormatError with rule RL-11 when the target is outside the package.
  std::shared_ptr<Part> getPart(const Relationship& relationship);
  /// Throws ErrorCode::AlreadyExists for a taken name (names that differ only in the case of ASCII
  /// letters are one), ErrorCode::InvalidName for a relationships name and for one that extends, or
  /// is extended by, another part's, ErrorCode::TooLarge for a type that could not be read back.
  std::shared_ptr<Part> createPart(const PartName& name, const ContentType& type,
                                   const StandardPartInfo& info);
  /// The same with the bytes that `source` has when the package is committed.
  PartId createPart(const PartName& name, const ContentType& type, const StandardPartInfo& info,
                    std::unique_ptr<interfaces::IContentSource> source);
  /// Whether createPart would take the name.
  bool canCreatePart(const PartName& name);
  /// Deletes the part, its relationships and its content type override; relationships that point at
  /// it stay. Throws ErrorCode::NotFound.
  void deletePart(const PartName& name);

  /// Calls `visit` for every part whose item name begins with `prefix` (ignoring ASCII case;
  /// "" for all), relationships parts left out, in the container's order; parts that it holds in
  /// pieces come last.
  void visitParts(std::string_view prefix, const std::function<void(PartId)>& visit);
  PartInfo partInfo(PartId part) const;
  /// The itemName of partInfo alone.
  std::string_view itemNameOf(PartId part) const;
  ContentType contentTypeOf(PartId part) const;
  std::unique_ptr<InputStream> openPart(PartId part);
  /// Reads a whole part. Throws ErrorCode::TooLarge when it declares more than `limit` bytes.
  void readPart(PartId part, ByteBuffer& into, std::uint64_t limit);

  /// The item that holds the part; nothing for a part in pieces.
  std::optional<interfaces::ItemIndex> itemOf(PartId part) const;
  /// A piece of the part's data as the container holds them: see IPhysicalPackage::packedBytes().
  /// Nothing for a part in pieces.
  std::span<const unsigned char> packedBytes(PartId part, std::uint64_t offset, std::size_t size);

  /// Names, as stored, of the items that are not parts and that a commit drops: without a part
  /// name, of another kind than a file, pieces that make nothing whole, relationships of a part
  /// that is not there. Entries of folders, which say nothing, are left out. None after a commit
  /// was tried.
  std::vector<std::string> strayItems() const;
  /// Names, as stored, of the items with a part name and without content type, which makes them no
  /// parts. A commit keeps them.
  std::vector<std::string> untypedItems() const;

  /// All relationships parts; those of a part that is not there are left out.
  std::vector<RelationshipsItem> relationshipsItems() const;
  /// A relationships part without content type has that of all relationships parts.
  ContentType typeOfRelationshipsItem(std::string_view itemName) const;
  /// The bytes that a commit would leave. Throws ErrorCode::NotFound.
  std::unique_ptr<InputStream> openRelationshipsItem(std::string_view itemName) const;

  interfaces::IPhysicalPackage& physical() { return physical_; }

 private:
  friend class Part;
  class State;

  RelationshipSet& relationships() override;
  void requireWritable() const override;
  void requirePlace() const override;
  void closeContainer(bool discard);
  State& state() const;

  interfaces::IPhysicalPackage& physical_;
  bool closePhysical_;
  std::uint64_t openCount_ = 0;
  std::unique_ptr<State> state_;  // while open
};

}  // namespace opc::model
