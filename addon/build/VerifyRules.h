// SPDX-License-Identifier: MIT
#pragma once

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

}  // namespace addon::build
