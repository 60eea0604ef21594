// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// One revision of an add-on. Date and version are free text, kept as they were given.
class AddonRevision : public TableRecord<AddonRevision> {
 public:
  static const RecordTable kTable;

  std::u16string date;
  std::u16string version;
  std::u16string description;  ///< what changed

  AddonRevision() = default;
  /// From one element of a host struct array. Raises a host error for a missing field or one that
  /// is not text.
  AddonRevision(const kxArray* array, std::size_t index) { readStruct(array, index); }
  /// From a "revision" element; what is missing is empty.
  explicit AddonRevision(const xercesc::DOMElement* element) { readElement(element); }
};

/// The releases of an add-on, in the order given: the part "/metadata/revisionHistory.xml".
class AddonRevisionHistory : public TableDocument<AddonRevisionHistory> {
 public:
  static const DocumentTable kTable;

  std::vector<AddonRevision> revisions;

  AddonRevisionHistory() = default;
  /// From a host struct array of any shape, one revision per element. Raises what AddonRevision
  /// does.
  explicit AddonRevisionHistory(const kxArray* s) { readStruct(s); }
};

/// Those that may be the newest. Revisions come in any order, and dates are free text: by date if
/// all dates sort, otherwise the first or the last one. `revisions` must not
/// be empty.
std::vector<const AddonRevision*> newestOf(const std::vector<AddonRevision>& revisions);

}  // namespace addon::packaging
