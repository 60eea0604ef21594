// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "addon/project/Manifest.h"

namespace addon::project::detail {

/// Why a manifest is not TOML, in words for its author. `description` is that of the parser, which
/// gave up at `position` of `text`.
std::string tomlMessage(std::string_view description, std::string_view text, Position position);

}  // namespace addon::project::detail
