// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// The license terms of an add-on: the part "/metadata/license.xml".
class AddonLicense : public TableDocument<AddonLicense> {
 public:
  static const DocumentTable kTable;

  std::u16string type;  ///< a label, free text
  std::u16string text;  ///< the terms in full

  AddonLicense() = default;
  /// From element 0 of a host struct. Raises a host error for a missing field or one that is not
  /// text.
  explicit AddonLicense(const kxArray* s) { readStruct(s); }
};

}  // namespace addon::packaging
