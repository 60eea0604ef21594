// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "addon/checks/FindingRules.h"
#include "opc/checks/Report.h"

namespace addon::checks {

/// A place in the files that a package is made from.
struct SourcePlace {
  std::string file;        ///< "" if unknown
  std::size_t line = 0;    ///< from 1; 0 if unknown
  std::size_t column = 0;  ///< the same, in characters
};

/// What verify has to say about one file.
struct PackageVerdict {
  std::string file;
  std::string failure;  ///< why it could not be read; "" when it could
  SourcePlace failurePlace;
  std::vector<opc::checks::Finding> findings;
  /// Of each finding; empty if the files that the package was made from are not known.
  std::vector<SourcePlace> places;
  std::map<opc::checks::FindingId, std::size_t> unlisted;  ///< how many more there were
  std::size_t errors = 0;
  std::size_t warnings = 0;
  std::size_t ignored = 0;

  /// Null if it is not known.
  const SourcePlace* placeOf(std::size_t finding) const {
    if (places.empty() || places[finding].file.empty()) return nullptr;
    return &places[finding];
  }

  bool isGood(bool isStrict) const {
    return failure.empty() && errors == 0 && (!isStrict || warnings == 0);
  }
};

/// The report as `rules` have it: without what they ignore, the other findings with the severities
/// that they give. Findings that the report only counted cannot be held against a pattern.
PackageVerdict judge(std::string file, const opc::checks::Report& report,
                     const FindingRules& rules);

}  // namespace addon::checks
