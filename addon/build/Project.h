// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/packaging/AddonProperties.h"
#include "addon/project/Manifest.h"

namespace addon::build {

using addon::project::Manifest;
using addon::project::ManifestError;

/// A folder and its manifest.
struct Project {
  std::string folder;
  Manifest manifest;

  /// The path on disk of a path in the manifest, with the folder as the caller spelled it.
  std::string onDisk(const std::string& path) const;
};

/// Throws BuildError when the folder has no manifest that can be read, ManifestError for what is
/// wrong with it.
Project openProject(const std::string& folder);

/// The path of a folder's manifest.
std::string manifestPath(const std::string& folder);

/// Puts the texts of the files that keys such as "license.file" name into a document of the
/// manifest. Throws ManifestError for a file that cannot be read or holds no text.
void readTextFiles(const Project& project, const addon::packaging::OwnedDocument& document);

/// Returns the properties of the package, with the texts of files that the manifest names. If the
/// manifest has no GUID, it is derived from the name. Throws as readTextFiles() does.
addon::packaging::AddonProperties& propertiesOf(const Project& project);

/// Sets the GUIDs of the apps for which the manifest has none. propertiesOf() must have been called
/// before. Throws ManifestError for a GUID that cannot be derived, and for one that two apps share.
void deriveAppGuids(const Manifest& manifest);

}  // namespace addon::build
