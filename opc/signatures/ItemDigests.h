// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/signatures/Digests.h"

namespace opc::signatures {

/// SHA-256 of the items of a container, from something else that reads all of them.
class ItemDigests {
 public:
  /// For items with indexes below `count`. Forgets what there was.
  void begin(std::size_t count);
  /// `digest` is in bytes.
  void set(interfaces::ItemIndex item, const std::string& digest);
  /// Nothing if the item was not read.
  std::optional<std::string> find(interfaces::ItemIndex item) const;

 private:
  using Value = std::array<char, SHA256_DIGEST_LENGTH>;

  std::vector<std::optional<Value>> values_;
};

}  // namespace opc::signatures
