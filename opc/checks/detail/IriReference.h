// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace opc::checks::detail {

/// Whether the text is written as RFC 3987 wants an IRI or a relative reference: its characters,
/// its escapes, and where brackets, colons and '#' may stand.
bool isIriReference(std::u16string_view text);

}  // namespace opc::checks::detail
