// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "addon/build/Project.h"
#include "addon/checks/FindingRules.h"

namespace addon::build {

using addon::project::VerifySection;

/// The rules of a table [verify]. Throws ManifestError for one that is not written as its schema
/// says, among them unknown ids.
addon::checks::RuleLists ruleListsOf(const VerifySection& section);

/// Reads the policy at `path`. Throws BuildError if it cannot be read, ManifestError for what is
/// wrong with it.
VerifySection openPolicy(const std::string& path);

/// Where the rules of a check come from.
struct RuleSources {
  addon::checks::RuleLists lists = {};
  bool isStrict = false;
  std::optional<std::string> manifestFolder = std::nullopt;  ///< with a manifest that adds to them
  std::optional<std::string> policy = std::nullopt;          ///< a file that does
};

/// How findings are judged.
struct Rules {
  addon::checks::FindingRules rules;
  bool isStrict;
};

/// Throws BuildError for a manifest or policy that cannot be read.
Rules rulesOf(const RuleSources& sources);

}  // namespace addon::build
