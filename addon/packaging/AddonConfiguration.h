// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/XMLPartType.h"
#include "hostarray/kxarray.h"

namespace addon::packaging {

/// The folders that the add-on puts on the host's search path, and its entries of the Java class
/// path: the part "/metadata/configuration.xml". Order, doubles and empty texts are kept.
class AddonConfiguration : public XMLPartType {
 public:
  std::vector<std::u16string> korvanPaths;
  std::vector<std::u16string> javaClassPaths;

  AddonConfiguration();
  /// From element 0 of a host struct. A list that is missing, unset or empty has no entries; a cell
  /// array may have any shape. Raises a host error for a field that is no cell array and for an
  /// element that is not text.
  explicit AddonConfiguration(const kxArray* s);

  /// A new 1-by-1 host struct of two 1-by-N cell arrays; the caller owns it.
  kxArray* getStructArray();
  void buildDOM(
      std::unique_ptr<xercesc::DOMDocument, opc::model::XercesDeleter>& document) override;
  void populateFromDOM(xercesc::DOMDocument* document) override;
};

}  // namespace addon::packaging
