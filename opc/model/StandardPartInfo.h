// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "opc/interfaces/CompressionType.h"

namespace opc::model {

/// How a new part is to be kept.
struct StandardPartInfo {
  /// `sizeHint` in bytes, 0 when unknown; nothing depends on it.
  StandardPartInfo(interfaces::CompressionType type, std::uint64_t hint)
      : compression(type), sizeHint(hint) {}

  interfaces::CompressionType compression;
  std::uint64_t sizeHint;
  std::optional<std::int64_t> modified = std::nullopt;  ///< seconds since 1970, UTC
  bool executable = false;
};

}  // namespace opc::model
