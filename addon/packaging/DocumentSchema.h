// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/RecordXml.h"

namespace addon::packaging {

/// How a document is found in a package, and what it consists of.
struct DocumentSchema {
  std::u16string partName;  ///< that it is given when it is made
  std::u16string contentType;
  std::u16string namespaceURI;
  std::u16string relationshipType;
  /// What may stand in it. Readers take less: they pass over what they do not know, and do without
  /// what is missing.
  Element root;
};

DocumentSchema schemaOf(const DocumentTable& table);

/// Every XML part that makes a package an add-on: the seven documents, the host's properties and
/// the table of the file tree.
std::vector<DocumentSchema> documentSchemas();

}  // namespace addon::packaging
