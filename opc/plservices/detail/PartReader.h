// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/Streams.h"
#include "opc/model/Package.h"

namespace opc::plservices::detail {

/// Some of a part's bytes.
struct PartBlock {
  model::PartInfo info;                 ///< of the part
  std::span<const unsigned char> data;  ///< valid until the next block
  bool isLast = false;                  ///< of its part
};

/// Reads parts one after the other. Up to 16 MiB a part comes whole, in one block, checked; beyond,
/// in blocks, of which the last is empty and comes only when the part proved sound.
class PartReader {
 public:
  PartReader(model::Package& package, std::vector<model::PartId> parts)
      : package_(package), parts_(std::move(parts)) {}

  bool isEnd() const { return next_ == parts_.size(); }
  /// Throws what reading the part throws.
  PartBlock read();

 private:
  PartBlock readStream();

  model::Package& package_;
  std::vector<model::PartId> parts_;
  std::size_t next_ = 0;
  model::PartInfo info_;
  std::unique_ptr<InputStream> stream_;  // of a large part that is being read
  ByteBuffer buffer_;
};

}  // namespace opc::plservices::detail
