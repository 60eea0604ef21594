// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "opc/Streams.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/model/ContentType.h"
#include "opc/model/PartName.h"
#include "opc/model/RelationshipSource.h"

namespace opc::model {

class Package;

/// Names a part while its package is open, without building anything for it. It is the index of the
/// part's item in the container, or, for a part that the container holds in pieces, a number above
/// those. A part keeps it when its content is replaced.
using PartId = std::size_t;

/// How a new part is to be kept.
struct StandardPartInfo {
  /// `size`: the expected size in bytes, 0 if unknown. It is ignored.
  StandardPartInfo(interfaces::CompressionType type, std::uint64_t size)
      : compression(type), sizeHint(size) {}

  interfaces::CompressionType compression;
  std::uint64_t sizeHint;
  std::optional<std::int64_t> modified = std::nullopt;  ///< seconds since 1970, UTC
  bool executable = false;
};

/// A handle to one part of an open package. It must not be used after the package is closed or the
/// part is deleted (calls then throw ErrorCode::InvalidState).
class Part final : public RelationshipSource {
 public:
  Part(Package& package, PartId id, PartName name, ContentType type);

  const PartName& getName() const { return name_; }
  const ContentType& getContentType() const { return type_; }
  PartId id() const { return id_; }

  /// A fresh stream over the part's bytes. Reading it after the package was closed throws
  /// ErrorCode::InvalidState, as does writing to that of getOutputStream.
  std::unique_ptr<InputStream> getInputStream();
  /// A stream that replaces the part's content with what is written. Throws
  /// ErrorCode::InvalidState if the package was opened for reading.
  std::unique_ptr<OutputStream> getOutputStream();

 private:
  RelationshipSet& relationships() override;
  void requireWritable() const override;
  void requirePlace() const override;
  void requireCurrent() const;

  Package& package_;
  PartId id_;
  std::uint64_t openCount_;
  PartName name_;
  ContentType type_;
};

}  // namespace opc::model
