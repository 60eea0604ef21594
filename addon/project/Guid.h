// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace addon::project {

/// A new random GUID, lower case.
std::string randomGuid();

/// The GUID that an add-on of that name always has: UUID version 5 of "kraddon:NAME" in the URL
/// namespace.
std::string guidOfName(std::string_view name);

/// UUID version 5 of a name in the namespace of another GUID; nothing if `space` is not a GUID.
std::optional<std::string> guidWithin(const std::string& space, std::string_view name);

/// A GUID in the form in which equal ones compare equal: without surrounding white space and
/// braces, in lower case. The text may be anything.
std::string plainGuid(std::u16string_view text);

/// Whether it is 8-4-4-4-12 hexadecimal digits, optionally in braces.
bool isGuid(std::u16string_view text);

}  // namespace addon::project
