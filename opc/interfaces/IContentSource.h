// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "opc/Streams.h"

namespace opc::interfaces {

/// Where the bytes of a new item come from. Read when the package is committed, or when the item
/// is asked for before that.
class IContentSource {
 public:
  virtual ~IContentSource() = default;

  /// A fresh stream over all bytes; the caller owns it, and it may outlive the source.
  /// Throws Exception, naming the source, when it cannot be read.
  virtual std::unique_ptr<InputStream> getInputStream() = 0;

  /// How many bytes to expect. The stream may turn out to hold more or fewer.
  virtual std::uint64_t size() const = 0;

  /// An item that would take fewer bytes in the container than this is stored unpacked.
  virtual std::uint64_t leastPackedSize() const { return 0; }

  /// For messages, UTF-8: the path of a file, say.
  virtual std::string description() const = 0;
};

}  // namespace opc::interfaces
