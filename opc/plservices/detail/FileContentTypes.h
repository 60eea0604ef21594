// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace opc::plservices::detail {

/// The media type of files with that extension (no dot, any case); "application/octet-stream" for
/// one that is not known.
std::string_view fileContentType(std::string_view extension);

}  // namespace opc::plservices::detail
