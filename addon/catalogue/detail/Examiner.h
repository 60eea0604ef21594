// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "addon/catalogue/SiteUpdate.h"
#include "addon/catalogue/detail/PackageFile.h"
#include "addon/catalogue/detail/SiteFiles.h"
#include "addon/catalogue/detail/VersionKey.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/signatures/ItemDigests.h"

namespace addon::catalogue::detail {

/// A package that is to be looked at.
struct PackageSource {
  std::string path;       ///< "packages/HASH.kraddon" for one that the site has
  bool isStored = false;  ///< whether it is such a path
};

/// What a package is by itself, before it is compared with others.
struct Examination {
  std::string file;                                       ///< as messages name it
  bool isOfSite = false;                                  ///< the site has it already
  std::unique_ptr<PackageFile> stored = nullptr;          ///< what the site will have
  std::unique_ptr<packaging::AddonPackage> package = {};  ///< the same, open
  std::optional<Record> record = std::nullopt;    ///< none if it is refused, or if the site has it
  std::optional<Refusal> refusal = std::nullopt;  ///< why it is refused
  std::exception_ptr failure = nullptr;           ///< what is no fault of the package
};

/// Verifies packages and describes them. Threads may use it at the same time.
class Examiner {
 public:
  /// The SHA-256 of the package that the site has of a version; "" if it has none.
  using HashOf = std::function<std::string(const VersionKey&)>;

  /// All must outlive it. `starter`, which may be empty, is for a second thread within a package.
  Examiner(const UpdateRequest& request, SiteFiles& files, HashOf hashOf,
           opc::interfaces::BackgroundStarter starter)
      : request_(request),
        files_(files),
        hashOf_(std::move(hashOf)),
        starter_(std::move(starter)) {}

  /// Brings a package into the site, but not yet to its place.
  Examination examine(const PackageSource& source) const noexcept;

 private:
  void look(const PackageSource& source, Examination& result) const;
  void bring(const PackageSource& source, Examination& result) const;
  bool isUnchanged(const PackageFile& stored) const;
  void check(Examination& result) const;
  /// Returns false, after it has refused the package, unless it is good.
  bool verify(Examination& result, opc::signatures::ItemDigests& digests) const;

  const UpdateRequest& request_;
  SiteFiles& files_;
  HashOf hashOf_;
  opc::interfaces::BackgroundStarter starter_;
};

/// A refusal of a file, with as many findings as are kept.
Refusal refusalOf(const std::string& file, std::string reason, checks::PackageVerdict verdict = {});

}  // namespace addon::catalogue::detail
