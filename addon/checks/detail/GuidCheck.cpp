// SPDX-License-Identifier: MIT
#include <string>
#include <unordered_map>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/ReferenceCheck.h"
#include "addon/checks/detail/StyleCheck.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/project/Guid.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using packaging::AddonAppInstall;
using packaging::AddonAppInstallList;
using packaging::AddonPackage;
using packaging::AddonProperties;

namespace {

struct OwnedGuid {
  std::string owner;
  std::u16string guid;
  std::string part;
  std::size_t line;
};

// The GUIDs of the add-on and its apps. A missing element is reported as a fault of the document.
std::vector<OwnedGuid> guidsOf(AddonPackage& package) {
  std::vector<OwnedGuid> found;
  ReadableDocument properties(package, AddonProperties::kTable);
  if (DocumentText* text = properties.text()) {
    for (const auto* element : properties.elementsOf<&AddonProperties::GUID>()) {
      std::u16string guid;
      opc::model::XercesHelper::getElementText(element, guid);
      found.push_back({"the add-on", guid, properties.part(), text->lineOf(element)});
    }
  }
  ReadableDocument apps(package, AddonAppInstallList::kTable);
  if (DocumentText* text = apps.text()) {
    for (const auto* element : apps.elementsOf<&AddonAppInstallList::apps>()) {
      const AddonAppInstall app(element);
      found.push_back(
          {"the app " + quoted(app.name), app.guid, apps.part(), text->lineOf(element)});
    }
  }
  return found;
}

}  // namespace

void checkDuplicateGuids(AddonPackage& package, Report& report) {
  std::unordered_map<std::string, std::string> owners;
  for (const OwnedGuid& one : guidsOf(package)) {
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

void checkGuids(AddonPackage& package, Report& report) {
  const std::u16string type = AddonProperties().relationshipType;
  if (follow(package.logicalPackage(), type).kind == Destination::Kind::Nowhere) {
    report.add(kNotGuid, "", "the add-on has no GUID");
  }
  for (const OwnedGuid& one : guidsOf(package)) {
    if (project::isGuid(one.guid)) continue;
    report.add(kNotGuid, one.part, "the GUID of " + one.owner + " is " + quoted(one.guid),
               one.line);
  }
}

}  // namespace addon::checks::detail
