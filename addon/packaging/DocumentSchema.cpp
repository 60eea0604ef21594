// SPDX-License-Identifier: MIT
#include "addon/packaging/DocumentSchema.h"

#include "addon/packaging/Documents.h"
#include "opc/Text.h"
#include "opc/plservices/FileTreePart.h"
#include "opc/plservices/FileTreeTable.h"
#include "opc/plservices/HostPropertiesPart.h"

namespace addon::packaging {

using opc::plservices::FileTreePart;
using opc::plservices::FileTreeTable;
using opc::plservices::HostPropertiesPart;

namespace {

Element hostProperties() {
  return {.name = HostPropertiesPart::kRoot,
          .children = {{.name = HostPropertiesPart::kContentTypeElement},
                       {.name = HostPropertiesPart::kFriendlyNameElement},
                       {.name = HostPropertiesPart::kReleaseElement}}};
}

Element fileTree() {
  return {.name = FileTreeTable::kRoot,
          .children = {{.name = FileTreeTable::kFolder, .attributes = {{FileTreeTable::kPath}}},
                       {.name = FileTreeTable::kFile,
                        .attributes = {{FileTreeTable::kPath}, {FileTreeTable::kPart}}}}};
}

}  // namespace

DocumentSchema schemaOf(const DocumentTable& table) {
  return {table.partName(), table.contentType(), table.namespaceURI(), table.relationshipType(),
          elementOf(table)};
}

std::vector<DocumentSchema> documentSchemas() {
  std::vector<DocumentSchema> schemas;
  for (const DocumentTable* table : documents()) schemas.push_back(schemaOf(*table));
  schemas.push_back({HostPropertiesPart::kPartName, opc::fromUtf8(HostPropertiesPart::kContentType),
                     HostPropertiesPart::namespaceURI(), HostPropertiesPart::relationshipType(),
                     hostProperties()});
  schemas.push_back({FileTreePart::kDefaultName, opc::fromUtf8(FileTreePart::kContentType),
                     FileTreeTable::namespaceURI(), FileTreePart::relationshipType(), fileTree()});
  return schemas;
}

}  // namespace addon::packaging
