// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/project/Guesses.h"

namespace addon::project {

/// The address of the manifest's JSON Schema, for editors: where packages install it.
inline constexpr const char* kManifestSchemaId = "file:///usr/share/kraddon/manifest.schema.json";

/// An initial manifest: the guesses, each below a comment that names its source, and the other keys
/// as comments.
std::string manifestText(const Guesses& guesses);

}  // namespace addon::project
