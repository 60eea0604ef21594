// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace opc::checks::detail {

/// Whether the text has the syntax of an IRI or a relative reference in RFC 3987: its characters,
/// its escapes, and the places of brackets, colons and '#'.
bool isIriReference(std::u16string_view text);

}  // namespace opc::checks::detail
