// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "addon/project/Patterns.h"
#include "opc/checks/Report.h"

namespace addon::checks {

/// The ids of all findings.
std::vector<std::string> findingIds();

/// The finding that `word` names: "KR101", "kr101" or "101". Throws opc::Exception, with
/// the nearest id, when there is none.
const opc::checks::FindingInfo& findingNamed(std::string_view word);

/// What was asked to be passed over: each rule is "ID" or "ID:GLOB".
class IgnoreRules {
 public:
  /// Throws opc::Exception for an unknown id, and for a colon without a pattern.
  explicit IgnoreRules(const std::vector<std::string>& rules);

  /// Whether all findings of an id are ignored, wherever they are.
  bool ignores(opc::checks::FindingId id) const;
  /// The pattern is held against the part's name, and against the path of a file in the package.
  bool ignores(const opc::checks::Finding& finding) const;

 private:
  struct Rule {
    opc::checks::FindingId id;
    std::optional<project::Pattern> pattern;  // nothing for all
  };
  std::vector<Rule> rules_;
};

}  // namespace addon::checks
