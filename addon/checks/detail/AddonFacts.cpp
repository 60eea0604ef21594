// SPDX-License-Identifier: MIT
#include "addon/checks/detail/AddonFacts.h"

#include "addon/checks/detail/ReadableDocument.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonProperties.h"
#include "opc/checks/Finding.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using packaging::AddonAppInstall;
using packaging::AddonAppInstallList;
using packaging::AddonPackage;
using packaging::AddonProperties;

namespace {

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

AddonFacts::AddonFacts(AddonPackage& package) : guids(guidsOf(package)) {
  isReadable([&] { core = package.coreProperties().getCoreProperties(); });
}

}  // namespace addon::checks::detail
