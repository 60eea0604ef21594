// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace opc::xmlsignatures {

/// Reads "2014", "2014-05", "2014-05-06", "2014-05-06T07:08Z" and "2014-05-06T07:08:09.5+02:00" as
/// seconds since 1970; what is not given is the earliest. Nothing for anything else.
std::optional<std::int64_t> parseTime(std::string_view text);

/// "2014-05-06T07:08:09Z"
std::string formatTime(std::int64_t seconds);

}  // namespace opc::xmlsignatures
