// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/AddonProperties.h"
#include "addon/project/Manifest.h"

namespace tool {

using addon::project::Manifest;
using addon::project::ManifestError;

/// A folder and its manifest.
struct Project {
  std::string folder;
  Manifest manifest;

  /// Where a path of the manifest lies, in the words of whoever named the folder.
  std::string onDisk(const std::string& path) const;
};

/// Throws Failure when the folder has no manifest that can be read, ManifestError for what is wrong
/// with it.
Project openProject(const std::string& folder);

/// The path of a folder's manifest.
std::string manifestPath(const std::string& folder);

/// The text of a key: what it says, or what is in the file that `file` names. `key` is the latter's
/// name. Throws ManifestError for a file that cannot be read or holds no text.
std::string textOf(const Project& project, const addon::project::Text& text,
                   const addon::project::Text& file, std::string_view key);

/// The GUID of the add-on and, in their order, those of its apps, as they are given or derived.
std::string guidOf(const Manifest& manifest);
/// Throws ManifestError for one that cannot be derived and for one that two apps share.
std::vector<std::string> appGuidsOf(const Manifest& manifest);

/// The properties of the package. A GUID that is not given derives from the name.
addon::packaging::AddonProperties propertiesOf(const Project& project);

}  // namespace tool
