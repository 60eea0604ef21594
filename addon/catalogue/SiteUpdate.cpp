// SPDX-License-Identifier: MIT
#include "addon/catalogue/SiteUpdate.h"

#include <algorithm>
#include <set>
#include <utility>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Collection.h"
#include "addon/catalogue/detail/DerivedFiles.h"
#include "addon/catalogue/detail/Intake.h"
#include "addon/catalogue/detail/Pages.h"
#include "addon/catalogue/detail/Sources.h"
#include "opc/Exception.h"
#include "opc/model/XercesHelper.h"

namespace addon::catalogue {

using detail::Intake;
using detail::SiteFiles;
using detail::SiteState;
using detail::VersionKey;

namespace {

/// More files than that are flushed together.
constexpr std::size_t kMaxFlushedAlone = 20;

VersionKey toKey(const VersionName& name) {
  return {keyOf(name.guid), name.version};
}

/// The records that were added, in a file.
class AddedRecords final : public RecordLines {
 public:
  explicit AddedRecords(std::unique_ptr<Intake> intake) : intake_(std::move(intake)) {}

  void visit(const std::function<void(const Record&)>& visitor) const override {
    for (const auto& [name, candidate] : intake_->candidates()) {
      visitor(parseRecord(intake_->spool().line(candidate.line)));
    }
  }

 private:
  std::unique_ptr<Intake> intake_;
};

/// One call of updateSite().
class SiteUpdate {
 public:
  explicit SiteUpdate(const UpdateRequest& request) : request_(request), files_(request.site) {}

  UpdateResult run() {
    readOld();
    if (request_.isRebuilding) lookAtOldPackages();
    const bool wereComplete = !old_.isNew() && derived_.areOf(old_);
    planRemovals();
    planYanks();
    // A rebuild compares with nothing: parts of the old site may be unreadable.
    const SiteState& known = request_.isRebuilding ? none_ : old_;
    intake_ = std::make_unique<Intake>(request_, files_, known, base_ + 1, std::move(gone_),
                                       std::move(yanked_));
    takePackages();
    if (request_.isRebuilding) refuseMissing();
    if (intake_->hasRefused()) keepWhatIsNotReplaced();
    commit();
    finishDerivedFiles(wereComplete && !request_.isRebuilding);
    if (request_.isCollecting && !now_->isNew()) result_.collected = collect(files_, *now_);
    result_.sequence = now_->sequence();
    if (now_->root()) {
      result_.addons = now_->root()->addons;
      result_.versions = now_->root()->versions;
    }
    result_.refused = intake_->takeRefused();
    result_.added = std::make_unique<AddedRecords>(std::move(intake_));
    return std::move(result_);
  }

 private:
  void readOld() {
    try {
      old_ = SiteState::read(files_);
      base_ = old_.sequence();
    } catch (const BrokenSite& error) {
      if (!request_.isRebuilding) throw;
      result_.lost.emplace_back(error.what());
      base_ = detail::lastSequence(files_);
    }
  }

  /// What the old site says of its packages, as far as it can be read.
  void lookAtOldPackages() {
    for (const auto& [name, reference] : old_.index().shards) {
      try {
        const Shard shard = old_.readShard(name);
        for (const auto& [key, lines] : shard.addons()) noteOld(key, shard.records(key));
      } catch (const BrokenSite& error) {
        result_.lost.emplace_back(error.what());
      }
    }
  }

  void noteOld(const std::string& key, const std::vector<Record>& records) {
    for (const Record& record : records) {
      named_.insert(record.package);
      gone_.insert({key, record.version});
      if (record.isYanked) yanked_.insert({key, record.version});
    }
  }

  std::vector<Record> recordsOf(const std::string& guid, const std::string& version) const {
    std::vector<Record> records = old_.records(keyOf(guid));
    if (!version.empty()) {
      std::erase_if(records, [&](const Record& each) { return each.version != version; });
    }
    return records;
  }

  /// The records of an add-on that must be there. GUIDs and versions may contain the character that
  /// separates them.
  std::vector<Record> oldRecords(const VersionName& name, bool needsVersion) const {
    const std::string text = textOf(name);
    for (std::size_t at = text.rfind('@'); at != std::string::npos && at != 0;
         at = text.rfind('@', at - 1)) {
      std::vector<Record> records = recordsOf(text.substr(0, at), text.substr(at + 1));
      if (!records.empty()) return records;
    }
    std::vector<Record> records;
    if (!needsVersion) records = recordsOf(text, {});
    if (!records.empty()) return records;
    throw opc::Exception(opc::ErrorCode::NotFound,
                         opc::sentence("unknown add-on", text, "the site does not have it"));
  }

  void planRemovals() {
    for (const VersionName& name : request_.removals) {
      for (const Record& record : oldRecords(name, false)) {
        if (gone_.insert(toKey({record.guid, record.version})).second) {
          result_.removed.push_back({record.guid, record.version});
        }
      }
    }
  }

  void planYanks() {
    const auto plan = [&](const std::vector<VersionName>& names, bool isYanked,
                          std::vector<VersionName>& done) {
      for (const VersionName& name : names) {
        for (const Record& record : oldRecords(name, true)) {
          if (record.isYanked == isYanked) continue;
          if (!marks_.emplace(toKey({record.guid, record.version}), isYanked).second) continue;
          done.push_back({record.guid, record.version});
        }
      }
    };
    plan(request_.yanks, true, result_.yanked);
    plan(request_.unyanks, false, result_.unyanked);
  }

  void takePackages() {
    std::vector<std::string> stored;
    if (request_.isRebuilding) {
      // With everything readable, those that were removed do not come back.
      const bool knowsAll = result_.lost.empty() && !old_.isNew();
      stored = detail::storedPackages(files_);
      if (knowsAll) std::erase_if(stored, [&](const auto& path) { return !named_.contains(path); });
    }
    std::vector<std::string> given = detail::packagesIn(request_.packages, request_.site);
    std::vector<detail::PackageSource> sources;
    sources.reserve(stored.size() + given.size());
    for (std::string& path : stored) sources.push_back({std::move(path), true});
    for (std::string& path : given) sources.push_back({std::move(path), false});
    const std::size_t total = sources.size();
    if (total > kMaxFlushedAlone) files_.setFlushing(SiteFiles::Flushing::Together);
    std::size_t done = 0;
    intake_->add(sources, [&] {
      if (request_.stop) request_.stop();
      if (request_.progress) request_.progress({done++, total, 0, 0});
    });
  }

  /// Packages that the old root names and that are neither in the site nor given.
  void refuseMissing() {
    for (const std::string& path : named_) {
      if (!files_.exists(path)) intake_->refuse(files_.onDisk(path), "it is missing");
    }
  }

  /// Whoever replaces a version must not lose it because the new package is refused.
  void keepWhatIsNotReplaced() {
    std::erase_if(result_.removed, [&](const VersionName& name) {
      if (intake_->candidates().contains(toKey(name))) return false;
      intake_->keep(toKey(name));
      intake_->refuse(textOf(name),
                      "it is not removed, since a package of the same run is refused");
      return true;
    });
  }

  /// The keys of all add-ons that may change, by shard.
  std::map<std::string, std::set<std::string>> changedShards() const {
    std::map<std::string, std::set<std::string>> shards;
    const auto note = [&](const VersionKey& name) { shards[shardOf(name.key)].insert(name.key); };
    for (const auto& [name, candidate] : intake_->candidates()) note(name);
    for (const auto& [name, isYanked] : marks_) note(name);
    for (const VersionKey& name : intake_->gone()) note(name);
    return shards;
  }

  std::vector<Record> newRecords(const Shard& old, const std::string& key) const {
    std::vector<Record> records = request_.isRebuilding ? std::vector<Record>() : old.records(key);
    std::erase_if(records, [&](const Record& record) {
      return intake_->gone().contains({key, record.version});
    });
    for (Record& record : records) {
      const auto mark = marks_.find({key, record.version});
      if (mark != marks_.end()) record.isYanked = mark->second;
    }
    const auto& candidates = intake_->candidates();
    for (auto each = candidates.lower_bound({key, {}});
         each != candidates.end() && each->first.key == key; ++each) {
      records.push_back(parseRecord(intake_->spool().line(each->second.line)));
    }
    return records;
  }

  void commit() {
    ShardIndex index = request_.isRebuilding ? ShardIndex() : old_.index();
    std::uint64_t versions = 0;
    if (old_.root() && !request_.isRebuilding) versions = old_.root()->versions;
    for (const auto& [name, keys] : changedShards()) {
      Shard shard = request_.isRebuilding ? Shard() : old_.shard(name);
      versions -= shard.versions();
      for (const std::string& key : keys) {
        shard.setRecords(key, newRecords(shard, key));
        changed_.insert(key);
      }
      versions += shard.versions();
      index.shards.erase(name);
      if (shard.isEmpty()) continue;
      files_.makeFolder(std::string(kShardFolder));
      index.shards[name] = {files_.writeHashed(kShardFolder, kJsonExtension, shard.text()),
                            shard.addons().size()};
    }
    const bool isSame = !old_.isNew() && index.shards == old_.index().shards;
    const bool isNothing = old_.isNew() && index.shards.empty() && base_ == 0;
    if (!isSame && !isNothing) putInPlace(index, versions);
    now_.emplace(SiteState::read(files_));
  }

  void putInPlace(const ShardIndex& index, std::uint64_t versions) {
    Root root;
    root.sequence = base_ + 1;
    root.created = request_.time;
    files_.makeFolder(std::string(kIndexFolder));
    root.index = files_.writeHashed(kIndexFolder, kJsonExtension, index.text());
    root.versions = versions;
    for (const auto& [name, shard] : index.shards) root.addons += shard.addons;
    // From now on its day counts.
    if (old_.root()) files_.touch(old_.root()->index.path);
    files_.flush();
    if (request_.stop) request_.stop();
    // Its own bytes have to be on the disk before its name.
    const SiteFiles::Flushing usual = files_.setFlushing(SiteFiles::Flushing::Each);
    files_.replace(std::string(kRootFile), root.text(index));
    if (request_.onCommitted) request_.onCommitted();
    files_.flush();
    files_.setFlushing(usual);
    result_.isChanged = true;
  }

  void finishDerivedFiles(bool wereComplete) {
    if (now_->isNew()) return;
    for (const auto& [name, candidate] : intake_->candidates()) {
      if (!candidate.isPageMissing) continue;
      const Record record = parseRecord(intake_->spool().line(candidate.line));
      detail::writePage(files_, record, now_->sequence());
    }
    if (!result_.isChanged && wereComplete) return;
    derived_.write({*now_, old_, changed_, wereComplete});
  }

  const UpdateRequest& request_;
  SiteFiles files_;
  detail::DerivedFiles derived_{files_, request_.stop, request_.starter};
  SiteState old_{files_};
  const SiteState none_{files_};
  std::optional<SiteState> now_;
  std::uint64_t base_ = 0;  // the last sequence
  std::set<std::string> named_;
  Intake::Versions gone_;  // until the intake takes them
  Intake::Versions yanked_;
  std::map<VersionKey, bool> marks_;
  std::set<std::string> changed_;
  std::unique_ptr<Intake> intake_;
  UpdateResult result_;
};

}  // namespace

VersionName parseVersionName(const std::string& text) {
  const std::size_t at = text.rfind('@');
  if (at == std::string::npos) return {text, {}};
  return {text.substr(0, at), text.substr(at + 1)};
}

std::string textOf(const VersionName& name) {
  return name.version.empty() ? name.guid : name.guid + '@' + name.version;
}

void prepareSite(const std::string& folder) {
  detail::prepareFolder(folder);
}

UpdateResult updateSite(const UpdateRequest& request) {
  const opc::model::XercesGuard guard;
  return SiteUpdate(request).run();
}

}  // namespace addon::catalogue
