// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace tool {

/// A fresh random GUID, lower case.
std::string randomGuid();

/// The GUID that an add-on of that name always has: UUID version 5 of "kraddon:NAME" in the URL
/// namespace.
std::string guidOfName(std::string_view name);

}  // namespace tool
