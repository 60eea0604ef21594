// SPDX-License-Identifier: MIT
#include "addon/packaging/Documents.h"

#include <array>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"

namespace addon::packaging {

std::span<const DocumentTable* const> documents() {
  static constexpr std::array kDocuments{
      &AddonProperties::kTable,         &AddonLicense::kTable,  &AddonConfiguration::kTable,
      &AddonAppInstallList::kTable,     &AddonExamples::kTable, &AddonRevisionHistory::kTable,
      &AddonSystemRequirements::kTable,
  };
  return kDocuments;
}

void loadDocument(AddonPackage& package, XMLPartType& document) {
  if (auto* properties = dynamic_cast<AddonProperties*>(&document)) {
    package.getAddonProperties(*properties);
  } else {
    package.getXMLPart(document);
  }
}

void storeDocument(AddonPackage& package, XMLPartType& document) {
  if (auto* properties = dynamic_cast<AddonProperties*>(&document)) {
    package.setAddonProperties(*properties);
  } else {
    package.addXMLPart(document);
  }
}

}  // namespace addon::packaging
