// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/Documents.h"

namespace tool::json {

/// The names of all documents.
std::vector<std::string> documentNames();

/// Throws UsageError, with the nearest name, for an unknown document.
const addon::packaging::DocumentTable& findDocument(std::string_view name);

}  // namespace tool::json
