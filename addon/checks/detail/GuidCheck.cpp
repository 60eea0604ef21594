// SPDX-License-Identifier: MIT
#include <string>
#include <unordered_map>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/ReferenceCheck.h"
#include "addon/checks/detail/StyleCheck.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/project/Guid.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using packaging::AddonPackage;
using packaging::AddonProperties;

void checkDuplicateGuids(const AddonFacts& facts, Report& report) {
  std::unordered_map<std::string, std::string> owners;
  for (const OwnedGuid& one : facts.guids) {
    const std::string plain = project::plainGuid(one.guid);
    if (plain.empty()) continue;
    const auto [first, isNew] = owners.emplace(plain, one.owner);
    if (isNew) continue;
    report.add(
        kDuplicateGuid, one.part,
        one.owner + " has the GUID " + quoted(one.guid) + ", which " + first->second + " also has",
        one.line);
  }
}

void checkGuids(AddonPackage& package, const AddonFacts& facts, Report& report) {
  const std::u16string type = AddonProperties().relationshipType;
  if (follow(package.logicalPackage(), type).kind == Destination::Kind::Nowhere) {
    report.add(kNotGuid, "", "the add-on has no GUID");
  }
  for (const OwnedGuid& one : facts.guids) {
    if (project::isGuid(one.guid)) continue;
    report.add(kNotGuid, one.part, "the GUID of " + one.owner + " is " + quoted(one.guid),
               one.line);
  }
}

}  // namespace addon::checks::detail
