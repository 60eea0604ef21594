// SPDX-License-Identifier: MIT
#include "tool/commands/detail/FindingOptions.h"

namespace tool::commands::detail {

addon::checks::RuleLists ruleListsOf(const line::Invocation& invocation) {
  addon::checks::RuleLists lists{invocation.values(kIgnoreOption.longName),
                                 invocation.values(kErrorOption.longName),
                                 invocation.values(kWarnOption.longName)};
  given([&] { return addon::checks::FindingRules(lists); });  // refuses what is not a rule
  return lists;
}

}  // namespace tool::commands::detail
