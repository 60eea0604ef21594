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

  /// Where a path of the manifest lies, in the words of whoever named the folder.
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

/// The properties of the package. A GUID that is not given derives from the name.
addon::packaging::AddonProperties& propertiesOf(const Project& project);

/// Gives the apps the GUIDs that the manifest does not, once propertiesOf() has been called. Throws
/// ManifestError for one that cannot be derived and for one that two apps share.
void deriveAppGuids(const Manifest& manifest);

}  // namespace addon::build
