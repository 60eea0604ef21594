// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace opc::zippackage::detail {

/// Appends the UTF-8 for a name in code page 437, which names are in without the UTF-8 flag. Bytes
/// below 0x80 are ASCII, control characters too.
void appendFromCodePage437(std::string& to, std::string_view bytes);

}  // namespace opc::zippackage::detail
