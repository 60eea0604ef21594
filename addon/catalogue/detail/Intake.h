// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "addon/catalogue/SiteUpdate.h"
#include "addon/catalogue/detail/PackageFile.h"
#include "addon/catalogue/detail/RecordSpool.h"
#include "addon/catalogue/detail/SiteFiles.h"
#include "addon/catalogue/detail/SiteState.h"
#include "addon/packaging/AddonPackage.h"

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

/// Takes packages into the site: verifies the bytes that the site will have, and writes what only a
/// new root will name.
class Intake {
 public:
  /// A version that is to be added.
  struct Candidate {
    std::string file;
    std::string sha256;
    std::size_t line = 0;        ///< of its record in the spool
    bool isPageMissing = false;  ///< since the old root names that of another package
    bool isDoubtful = false;     ///< there is another one, so neither is taken
  };

  /// All must outlive it. `gone` are the versions that the old root names and the new one will not;
  /// `yanked` those that get into the site as such. `sequence` is that of the new root.
  Intake(const UpdateRequest& request, SiteFiles& files, const SiteState& old,
         std::uint64_t sequence);

  std::set<VersionKey> gone = {};
  std::set<VersionKey> yanked = {};

  /// Adds a package or refuses it. Throws for faults that are not those of the package.
  void add(const std::string& path);
  /// The same for one that the site has, "packages/HASH.kraddon".
  void addStored(const std::string& path);
  /// Takes back what is doubtful.
  void finish();

  const std::map<VersionKey, Candidate>& candidates() const { return candidates_; }
  const RecordSpool& spool() const { return spool_; }
  std::vector<Refusal> takeRefused() { return std::move(refused_); }

 private:
  void refuse(const std::string& path, std::string reason, checks::PackageVerdict verdict = {});
  void addPackage(const std::string& file, PackageFile& package);
  /// Returns nothing, after it has refused the package, unless it is good.
  std::optional<Record> examine(const std::string& file, const std::string& sha256,
                                packaging::AddonPackage& package, const std::string& path);
  bool verify(const std::string& file, const std::string& path);
  bool isUnchanged(const PackageFile& package) const;
  std::optional<Record> oldRecord(const VersionKey& name) const;
  /// Whether it is the only one of its version.
  bool isAlone(const std::string& file, const VersionKey& name, const Record& record);
  void take(const std::string& file, const VersionKey& name, Record& record,
            packaging::AddonPackage& package);

  const UpdateRequest& request_;
  SiteFiles& files_;
  const SiteState& old_;
  std::uint64_t sequence_;
  RecordSpool spool_;
  std::map<VersionKey, Candidate> candidates_;
  std::vector<Refusal> refused_;
};

}  // namespace addon::catalogue::detail
