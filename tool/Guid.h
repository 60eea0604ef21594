// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// A fresh random GUID, lower case.
std::string randomGuid();

/// The GUID that an add-on of that name always has: UUID version 5 of "kraddon:NAME" in the URL
/// namespace.
std::string guidOfName(std::string_view name);

/// UUID version 5 of a name in the namespace of another GUID; nothing when that is none.
std::optional<std::string> guidWithin(const std::string& space, std::string_view name);

}  // namespace tool
