// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <vector>

namespace addon::packaging {

/// What may stand in an element of a document. Readers take less: they pass over what they do not
/// know, and do without what is missing.
struct ElementSchema {
  const char16_t* name;
  std::span<const char16_t* const> attributes = {};
  std::span<const ElementSchema* const> children = {};
  bool isRequired = false;  ///< in the element that it belongs into
};

/// How a document is found in a package, and what it consists of.
struct DocumentSchema {
  std::u16string partName;  ///< that it is given when it is made
  std::u16string contentType;
  std::u16string namespaceURI;
  std::u16string relationshipType;
  const ElementSchema* root;
};

/// Every XML part that makes a package an add-on: the seven documents, the host's properties and
/// the table of the file tree.
std::vector<DocumentSchema> documentSchemas();

}  // namespace addon::packaging
