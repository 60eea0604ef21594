// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace addon::catalogue::detail {

/// A version, as it is compared.
struct VersionKey {
  std::string key;
  std::string version;

  bool operator==(const VersionKey&) const = default;
  bool operator<(const VersionKey& other) const {
    return key != other.key ? key < other.key : version < other.version;
  }
};

}  // namespace addon::catalogue::detail
