// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace opc::model::detail {

/// What the small documents of the package itself begin with.
inline constexpr std::string_view kXmlDeclaration =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>";

/// Appends ` name="value"`, escaped so that every character, line ends too, comes back. `value` is
/// UTF-8 that XML can carry.
void appendAttribute(std::string& out, std::string_view name, std::string_view value);

}  // namespace opc::model::detail
