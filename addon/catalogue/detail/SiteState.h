// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "addon/catalogue/Root.h"
#include "addon/catalogue/Shard.h"
#include "addon/catalogue/detail/SiteFiles.h"

namespace addon::catalogue::detail {

/// What the root of a site names. Shards are read when they are needed. All functions throw
/// BrokenSite and opc::SystemError.
class SiteState {
 public:
  /// `files` must outlive it. A site without root is an empty one.
  explicit SiteState(const SiteFiles& files) : files_(&files) {}
  /// Reads root and index.
  static SiteState read(const SiteFiles& files);

  bool isNew() const { return !root_; }
  /// That of a new site is 0.
  std::uint64_t sequence() const { return root_ ? root_->sequence : 0; }
  const std::optional<Root>& root() const { return root_; }
  const ShardIndex& index() const { return index_; }

  /// The shard "00" to "ff"; an empty one if it is not there. Valid until the next call.
  const Shard& shard(const std::string& name) const;
  std::vector<Record> records(const std::string& key) const;
  /// The same as shard(), for one look at all of them: it is not kept.
  Shard readShard(const std::string& name) const;

  /// Passes all records, shard by shard, as lines; from memory that is used again.
  void visitLines(const std::function<void(std::string_view)>& visit) const;
  void visitRecords(const std::function<void(const Record&)>& visit) const;

 private:
  const SiteFiles* files_;
  std::optional<Root> root_;
  ShardIndex index_;
  mutable std::map<std::string, Shard> shards_;  // the last ones that were read
  mutable std::uint64_t read_ = 0;               // bytes of them
};

}  // namespace addon::catalogue::detail
