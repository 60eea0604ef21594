// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/Documents.h"

namespace tool::json {

/// The names of all documents.
std::vector<std::string> documentNames();

/// For an unknown document, throws UsageError that suggests the nearest name.
const addon::packaging::DocumentTable& findDocument(std::string_view name);

}  // namespace tool::json
