// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// One app of an add-on.
class AddonAppInstall : public TableRecord<AddonAppInstall> {
 public:
  static const RecordTable kTable;

  std::u16string name;          ///< for display
  std::u16string guid;          ///< free text
  std::u16string relativePath;  ///< of the app's file, as given
  bool installByDefault = false;

  AddonAppInstall() = default;
  /// From one element of a host struct array. Raises a host error for a missing field or one that
  /// is not text. The flag is set unless its text is exactly "false".
  AddonAppInstall(const kxArray* array, std::size_t index) { readStruct(array, index); }
  /// From an "application" element. What is missing is empty; the flag is set only if its text is
  /// exactly "true".
  explicit AddonAppInstall(const xercesc::DOMElement* element) { readElement(element); }
};

/// The apps that an add-on ships, in order: the part "/metadata/applications.xml".
class AddonAppInstallList : public TableDocument<AddonAppInstallList> {
 public:
  static const DocumentTable kTable;

  std::vector<AddonAppInstall> apps;

  AddonAppInstallList() = default;
  /// From a host struct array of any shape, one app per element. Raises what AddonAppInstall does.
  explicit AddonAppInstallList(const kxArray* s) { readStruct(s); }
};

}  // namespace addon::packaging
