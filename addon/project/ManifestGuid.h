// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::project {

/// The GUID of the packages that are built from a manifest: the one that it names or, without one,
/// the one that derives from its name. "" if it has neither. The manifest may have mistakes; if it
/// is not TOML, only a line `guid = "..."` is looked for.
std::string guidOfManifest(std::string_view text);

}  // namespace addon::project
