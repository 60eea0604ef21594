// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/packaging/XMLPartType.h"
#include "hostarray/kxarray.h"

namespace addon::packaging {

/// The license terms of an add-on: the part "/metadata/license.xml".
class AddonLicense : public XMLPartType {
 public:
  std::u16string type;  ///< a label, free text
  std::u16string text;  ///< the terms in full

  AddonLicense();
  /// From element 0 of a host struct. Raises a host error for a missing field or one that is not
  /// text.
  explicit AddonLicense(const kxArray* s);

  /// A new 1-by-1 host struct; the caller owns it.
  kxArray* getStructArray();
  void buildDOM(
      std::unique_ptr<xercesc::DOMDocument, opc::model::XercesDeleter>& document) override;
  void populateFromDOM(xercesc::DOMDocument* document) override;
};

}  // namespace addon::packaging
