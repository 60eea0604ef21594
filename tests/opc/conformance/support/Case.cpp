// SPDX-License-Identifier: MIT
#include "tests/opc/conformance/support/Case.h"

#include <algorithm>

namespace test::conformance {

std::vector<Case> allCases() {
  std::vector<Case> all;
  for (auto* const family : {partNameCases, contentTypeCases, relationshipCases, corePropertyCases,
                             thumbnailAndSignatureCases, xmlCases, zipCases, interleavingCases,
                             robustnessCases, ambiguityCases}) {
    const std::vector<Case> cases = family();
    all.insert(all.end(), cases.begin(), cases.end());
  }
  return all;
}

std::string suiteOf(const std::string& prefix, const Case& one) {
  std::string rule = one.rule;
  rule.erase(std::remove(rule.begin(), rule.end(), '-'), rule.end());
  return prefix + rule;
}

}  // namespace test::conformance
