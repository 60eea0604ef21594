// SPDX-License-Identifier: MIT
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/optional.hpp>
#include <string>

#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// Who and what an add-on is. Kept in two places: type, name, version, summary, release and the
/// author's name in the package's core properties; GUID, description and the author, whose name
/// counts here, in the part "/metadata/addonProperties.xml".
class AddonProperties : public TableDocument<AddonProperties> {
 public:
  static const DocumentTable kTable;

  std::u16string type;  ///< "Korvan Toolbox", the only one known
  std::u16string name;
  std::u16string version;
  std::u16string KorvanRelease;  ///< the host release that the package was made for
  std::u16string summary;        ///< one line
  std::u16string description;    ///< at length
  std::u16string authorName;
  std::u16string authorContact;
  std::u16string authorOrganization;
  std::u16string GUID;
  /// From the core properties only; not part of the host struct.
  boost::optional<boost::posix_time::ptime> lastModifiedTime;

  AddonProperties() = default;
  /// From element 0 of a host struct. Raises a host error for a missing field or one that is not
  /// text.
  explicit AddonProperties(const kxArray* properties) { readStruct(properties); }
};

}  // namespace addon::packaging
