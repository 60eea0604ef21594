// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "addon/checks/PackageVerdict.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentTable.h"
#include "opc/checks/Finding.h"

namespace addon::checks {

/// Finds out what a change to an open package brings about: what checkAddon() finds afterwards, and
/// did not find before. Only added files are looked at, and not compared with others.
class ChangeReview {
 public:
  /// Looks at the package as it is. It must stay open.
  explicit ChangeReview(packaging::AddonPackage& package);
  /// For a package that is being created: every document is new. Files are not looked at, and what
  /// the package does not have yet (a license, a screenshot and so on) is not a finding.
  static ChangeReview ofNewPackage(packaging::AddonPackage& package);

  /// Everything that is found in this document afterwards counts as new.
  void replaces(const packaging::DocumentTable& document);

  /// The new findings, for the package that messages call `file`.
  PackageVerdict judge(std::string file) const;

 private:
  struct NewPackage {};
  ChangeReview(packaging::AddonPackage& package, NewPackage) : package_(package), isNew_(true) {}
  std::vector<opc::checks::Finding> findNow() const;
  void findInFiles(opc::checks::Report& report) const;

  packaging::AddonPackage& package_;
  bool isNew_ = false;
  opc::plservices::NodeId firstNew_ = 0;
  std::vector<opc::checks::Finding> before_;
};

}  // namespace addon::checks
