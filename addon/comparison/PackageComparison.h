// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "addon/comparison/DocumentComparison.h"
#include "addon/comparison/FileComparison.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::comparison {

/// One of two packages that are compared, open for reading.
struct ComparedPackage {
  std::string name;  ///< as it was given
  std::unique_ptr<addon::packaging::AddonPackage> package = {};
  std::vector<Item> items = {};  ///< its files and empty folders
};

/// A document, the screenshot, the content types of the other parts ("parts") or the relationships
/// that the format does not make itself ("relationships"), if they are not the same in both.
struct DocumentDifference {
  std::string_view name;
  Change change;
  /// Of what changed. None when the part is another one but says the same.
  std::vector<FieldDifference> fields;
};

struct PackageDifferences {
  std::vector<addon::packaging::OwnedDocument> read;  ///< those that the differences refer to
  std::vector<FieldDifference> properties;            ///< paths are names of fields
  std::vector<DocumentDifference> documents;
  FileDifferences files;

  bool isSame() const { return properties.empty() && documents.empty() && files.list.empty(); }
};

/// The properties, documents and screenshots, as far as the digest of the content sees them: not
/// the times of a package.
void compareDescriptions(ComparedPackage& a, ComparedPackage& b, PackageDifferences& differences);

/// The content types and relationships of what the format does not know. Appends those parts and
/// items to the items of both packages, so that comparing the files compares them, too.
void compareOtherContent(ComparedPackage& a, ComparedPackage& b, PackageDifferences& differences);

}  // namespace addon::comparison
