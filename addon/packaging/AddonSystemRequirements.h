// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// A product or support package that an add-on needs; all free text.
class ProductDependency : public TableRecord<ProductDependency> {
 public:
  static const RecordTable kTable;

  std::u16string name;
  std::u16string version;
  std::u16string identifier;

  ProductDependency() = default;
  /// From element 0 of a host struct. Raises a host error for a missing field or one that is not
  /// text.
  explicit ProductDependency(const kxArray* element) { readStruct(element, 0); }
  /// From a "product" or "supportPackage" element; what is missing is empty.
  explicit ProductDependency(const xercesc::DOMElement* element) { readElement(element); }
};

/// What an add-on needs in order to run: the part "/metadata/systemRequirements.xml".
class AddonSystemRequirements : public TableDocument<AddonSystemRequirements> {
 public:
  static const DocumentTable kTable;

  std::vector<ProductDependency> productDependencies;
  std::vector<ProductDependency> supportPackageDependencies;

  AddonSystemRequirements() = default;
  /// From element 0 of a host struct, which must have one. A list that is missing, unset or empty
  /// has no entries. Raises a host error for no element, and what ProductDependency does.
  explicit AddonSystemRequirements(const kxArray* requirements) { readStruct(requirements); }
};

}  // namespace addon::packaging
