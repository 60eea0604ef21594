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
#include "opc/Text.h"

namespace addon::packaging {

namespace {

std::u16string text(const char* before, const char* stem, const char* after = "") {
  return opc::fromUtf8(std::string(before) + stem + after);
}

}  // namespace

std::u16string DocumentTable::partName() const {
  return text("/metadata/", xml, ".xml");
}

std::u16string DocumentTable::contentType() const {
  return text("application/vnd.pellandry.korvan.addon.", contentTypeStem, "+xml");
}

std::u16string DocumentTable::namespaceURI() const {
  return SchemaRoot + text("/korvan/addon/2014/", xml);
}

std::u16string DocumentTable::relationshipType() const {
  return SchemaRoot + text("/korvan/addon/2014/relationships/", xml);
}

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
