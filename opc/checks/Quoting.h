// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace opc::checks {

/// Text from a package between quotes, fit for one line of a message: control characters escaped,
/// and cut when it is long, since a package may hold megabytes of it.
std::string quoted(std::string_view text);
std::string quoted(std::u16string_view text);

}  // namespace opc::checks
