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

/// Rules about findings. Each is "ID" or "ID:GLOB"; the pattern is held against the part's name,
/// and against the path of a file in the package.
struct RuleLists {
  std::vector<std::string> ignore = {};
  std::vector<std::string> error = {};  ///< what counts as an error
  std::vector<std::string> warn = {};   ///< what counts as a warning

  void append(const RuleLists& others);
};

/// What becomes of findings. Rules to ignore go before the others, those for errors before those
/// for warnings.
class FindingRules {
 public:
  /// `errors` count as errors unless a rule says otherwise. Throws opc::Exception for an unknown
  /// id, and for a colon without a pattern.
  explicit FindingRules(const RuleLists& lists = {},
                        const std::vector<opc::checks::FindingId>& errors = {});

  /// The severity of a finding; nothing if it is ignored.
  std::optional<opc::checks::Severity> severityOf(const opc::checks::Finding& finding) const;
  /// The same by the rules without a pattern.
  std::optional<opc::checks::Severity> severityOf(opc::checks::FindingId id) const;

 private:
  using Outcome = std::optional<opc::checks::Severity>;  // nothing: it is ignored
  struct Rule {
    opc::checks::FindingId id;
    std::optional<project::Pattern> pattern;  // nothing for all
    Outcome outcome;

    bool appliesTo(const opc::checks::Finding& finding) const;
  };

  void add(const std::vector<std::string>& rules, Outcome outcome);

  std::vector<Rule> rules_;  // the first that applies decides
};

}  // namespace addon::checks
