// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/SiteState.h"

#include "addon/catalogue/SitePaths.h"

namespace addon::catalogue::detail {

namespace {

/// Bytes of shards that are kept.
constexpr std::uint64_t kMaxKept = std::uint64_t{32} << 20;

}  // namespace

SiteState SiteState::read(const SiteFiles& files) {
  SiteState state(files);
  const std::string path(kRootFile);
  const std::optional<std::string> text = files.read(path);
  if (!text) {
    // These are derived from a root, so there was one. All folders are there before the first root.
    for (const std::string_view derived : {kFrontPage, kTerms, kDatabase, kRecordLines}) {
      if (files.exists(std::string(derived))) {
        throw BrokenSite(files.onDisk(path), "it is missing");
      }
    }
    return state;
  }
  try {
    state.root_ = Root::parse(*text);
    const FileReference& index = state.root_->index;
    state.index_ = ShardIndex::parse(files.read(index), index.path);
  } catch (BrokenSite& error) {
    error.addContext(files.folder());
    throw;
  }
  return state;
}

const Shard& SiteState::shard(const std::string& name) const {
  static const Shard kEmpty;
  const auto kept = shards_.find(name);
  if (kept != shards_.end()) return kept->second;
  const auto found = index_.shards.find(name);
  if (found == index_.shards.end()) return kEmpty;
  const FileReference& file = found->second.file;
  if (read_ + file.size > kMaxKept) {
    shards_.clear();
    read_ = 0;
  }
  read_ += file.size;
  return shards_[name] = Shard::parse(files_->read(file), files_->onDisk(file.path));
}

Shard SiteState::readShard(const std::string& name) const {
  const FileReference& file = index_.shards.at(name).file;
  return Shard::parse(files_->read(file), files_->onDisk(file.path));
}

std::vector<Record> SiteState::records(const std::string& key) const {
  return shard(shardOf(key)).records(key);
}

void SiteState::visitLines(const std::function<void(std::string_view)>& visit) const {
  for (const auto& [name, shard] : index_.shards) {
    catalogue::visitLines(files_->read(shard.file), files_->onDisk(shard.file.path), visit);
  }
}

void SiteState::visitRecords(const std::function<void(const Record&)>& visit) const {
  for (const auto& [name, shard] : index_.shards) {
    const std::string path = files_->onDisk(shard.file.path);
    catalogue::visitLines(files_->read(shard.file), path,
                          [&](std::string_view line) { visit(catalogue::recordOf(line, path)); });
  }
}

}  // namespace addon::catalogue::detail
