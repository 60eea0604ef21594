// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"

namespace addon::packaging {

/// A path in a document that was changed.
struct RenamedReference {
  std::string place;  ///< "apps[0].relativePath"
  std::string from;
  std::string to;
};

/// In all documents, changes the paths of `from` and of what is below it to those of `to`, and
/// stores the documents that contain some. Both are paths of the file tree. Throws what
/// AddonPackage does, also for a document that cannot be read.
std::vector<RenamedReference> renameReferences(AddonPackage& package, const std::string& from,
                                               const std::string& to);

}  // namespace addon::packaging
