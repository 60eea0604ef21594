// SPDX-License-Identifier: MIT
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "tool/line/Arguments.h"

namespace tool::commands::detail {

/// --timestamp or, without it, SOURCE_DATE_EPOCH.
std::optional<std::int64_t> timestampOf(const line::Invocation& invocation);

/// "2026-02-01T10:00:00Z"
std::string formatTime(std::int64_t seconds);
std::string formatTime(const boost::posix_time::ptime& time);

}  // namespace tool::commands::detail
