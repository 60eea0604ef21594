// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "addon/catalogue/SiteUpdate.h"
#include "addon/catalogue/detail/Examiner.h"
#include "addon/catalogue/detail/RecordSpool.h"
#include "addon/catalogue/detail/SiteFiles.h"
#include "addon/catalogue/detail/SiteState.h"
#include "addon/catalogue/detail/VersionKey.h"

namespace addon::catalogue::detail {

/// Takes packages into the site, as they were examined, and writes what only a new root will name.
class Intake {
 public:
  /// A version that is to be added.
  struct Candidate {
    std::string file;
    std::string sha256;
    std::string modified;        ///< the time in its record
    bool isOfSite = false;       ///< whether the site had its package before
    std::size_t line = 0;        ///< of its record in the spool
    bool isPageMissing = false;  ///< since the old root names that of another package
    bool isDoubtful = false;     ///< there is another one, so neither is taken
  };

  using Versions = std::set<VersionKey>;

  /// All references must outlive it. `gone` are the versions that the old root names and the new
  /// one will not; `yanked` those that get into the site as such. `sequence` is that of the new
  /// root.
  Intake(const UpdateRequest& request, SiteFiles& files, const SiteState& old,
         std::uint64_t sequence, Versions gone, Versions yanked);

  /// Adds these packages or refuses them, one after the other, while a second thread may examine
  /// the next ones. `onEach`, which may throw, is called before each of them. Throws for faults
  /// that are not those of a package.
  void add(const std::vector<PackageSource>& sources, const std::function<void()>& onEach);

  /// Packages of the site that a rebuild misses are refused like this, too.
  void refuse(const std::string& file, std::string reason);
  bool hasRefused() const { return !refused_.empty(); }
  const Versions& gone() const { return gone_; }
  /// Keeps a version that was to be gone.
  void keep(const VersionKey& name) { gone_.erase(name); }
  const std::map<VersionKey, Candidate>& candidates() const { return candidates_; }
  const RecordSpool& spool() const { return spool_; }
  /// What was refused, by file.
  std::vector<Refusal> takeRefused();

 private:
  void addExamined(Examination& examined);
  std::string hashOf(const VersionKey& name);
  /// Whether it is the only one of its version.
  bool isAlone(const Examination& examined, const VersionKey& name);
  /// Whether it is to be taken instead of the candidate; refuses one of the two, or both.
  bool isBetter(const Examination& examined, Candidate& other);
  void take(Examination& examined, const VersionKey& name);
  /// Takes back what is doubtful.
  void finish();

  const UpdateRequest& request_;
  SiteFiles& files_;
  const SiteState& old_;  // under the mutex
  std::mutex mutex_;
  const std::uint64_t sequence_;
  Versions gone_;
  const Versions yanked_;
  RecordSpool spool_;
  std::map<VersionKey, Candidate> candidates_;
  std::vector<Refusal> refused_;
};

}  // namespace addon::catalogue::detail
