// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "opc/Exception.h"

namespace addon::catalogue {

/// Something that the root of a site names, directly or not, is missing or is not what was written
/// there.
class BrokenSite : public opc::Exception {
 public:
  BrokenSite(std::string_view path, std::string_view why);
};

/// A file that is named by its hash, and must have it.
struct FileReference {
  std::string path;
  std::string sha256;
  std::uint64_t size = 0;

  bool operator==(const FileReference&) const = default;
};

struct ShardReference {
  FileReference file;
  std::uint64_t addons = 0;

  bool operator==(const ShardReference&) const = default;
};

/// `index/HASH.json`: names the shards, "00" to "ff", those that hold something.
struct ShardIndex {
  std::map<std::string, ShardReference> shards;

  std::string text() const;
  /// Throws BrokenSite; `path` is for messages.
  static ShardIndex parse(std::string_view text, std::string_view path);
};

/// `root.json`: names the index.
struct Root {
  std::uint64_t sequence = 0;  ///< grows with every change of the site
  std::string created;         ///< "2026-02-01T10:00:00Z"
  FileReference index;
  std::uint64_t addons = 0;
  std::uint64_t versions = 0;

  /// With the hashes of the shards, so that a client needs no index.
  std::string text(const ShardIndex& shards) const;
  /// Throws BrokenSite.
  static Root parse(std::string_view text);
};

}  // namespace addon::catalogue
