// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/XMLPartType.h"
#include "hostarray/kxarray.h"

namespace addon::packaging {

/// A product or support package that an add-on needs; all free text.
class ProductDependency {
 public:
  std::u16string name;
  std::u16string version;
  std::u16string identifier;

  ProductDependency() = default;
  /// From element 0 of a host struct. Raises a host error for a missing field or one that is not
  /// text.
  explicit ProductDependency(const kxArray* element);
  /// From a "product" or "supportPackage" element; what is missing is empty.
  explicit ProductDependency(const xercesc::DOMElement* element);
  ProductDependency(const ProductDependency&) = default;
  ProductDependency& operator=(const ProductDependency&) = default;
  virtual ~ProductDependency() = default;

  /// A new host struct array with the fields of this record; the caller owns it.
  static kxArray* createStructArray(std::size_t count);
  /// Fills one element of such an array.
  void addRow(kxArray* array, std::size_t index) const;
  /// Writes the attributes; the element has no children.
  void populateXMLNode(xercesc::DOMElement* element, const std::u16string& namespaceURI) const;
};

/// What an add-on needs in order to run: the part "/metadata/systemRequirements.xml".
class AddonSystemRequirements : public XMLPartType {
 public:
  std::vector<ProductDependency> productDependencies;
  std::vector<ProductDependency> supportPackageDependencies;

  AddonSystemRequirements();
  /// From element 0 of a host struct, which must have one. A list that is missing, unset or empty
  /// has no entries. Raises a host error for no element, and what ProductDependency does.
  explicit AddonSystemRequirements(const kxArray* requirements);

  /// A new 1-by-1 host struct, in which a list without entries is unset; the caller owns it.
  kxArray* getStructArray();
  void buildDOM(
      std::unique_ptr<xercesc::DOMDocument, opc::model::XercesDeleter>& document) override;
  void populateFromDOM(xercesc::DOMDocument* document) override;
};

}  // namespace addon::packaging
