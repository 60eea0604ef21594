// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// The folders that the add-on puts on the host's search path, and its entries of the Java class
/// path: the part "/metadata/configuration.xml". Order, duplicates and empty texts are kept.
class AddonConfiguration : public TableDocument<AddonConfiguration> {
 public:
  static const DocumentTable kTable;

  std::vector<std::u16string> korvanPaths;
  std::vector<std::u16string> javaClassPaths;

  AddonConfiguration() = default;
  /// From element 0 of a host struct. A list that is missing, unset or empty has no entries; a cell
  /// array may have any shape. Raises a host error for a field that is not a cell array and for an
  /// element that is not text.
  explicit AddonConfiguration(const kxArray* s) { readStruct(s); }
};

}  // namespace addon::packaging
