// SPDX-License-Identifier: MIT
#include "tool/commands/detail/Times.h"

#include <fmt/format.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <cstdlib>

#include "opc/plservices/W3cDateTime.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/process/Errors.h"

namespace tool::commands::detail {

namespace {

// The last second of the year 9999; later dates have no standard notation.
constexpr std::int64_t kLastSecond = 253402300799;

std::optional<std::int64_t> sourceDateEpoch() {
  const char* text = std::getenv("SOURCE_DATE_EPOCH");
  if (text == nullptr || *text == '\0') return std::nullopt;
  const std::optional<std::int64_t> seconds = line::toInteger(text);
  if (!seconds || *seconds < 0 || *seconds > kLastSecond) {
    throw process::Failure(
        process::sentence("bad value of SOURCE_DATE_EPOCH", text,
                          fmt::format("expected a whole number from 0 to {}", kLastSecond)));
  }
  return seconds;
}

boost::posix_time::ptime toTime(std::int64_t seconds) {
  return boost::posix_time::ptime(boost::gregorian::date(1970, 1, 1)) +
         boost::posix_time::seconds(seconds);
}

}  // namespace

std::optional<std::int64_t> timestampOf(const line::Invocation& invocation) {
  const auto given = invocation.number(kTimestampOption.longName, 0, kLastSecond);
  return given ? given : sourceDateEpoch();
}

std::string formatTime(std::int64_t seconds) {
  return formatTime(toTime(seconds));
}

std::string formatTime(const boost::posix_time::ptime& time) {
  if (time.is_special()) return {};
  return opc::plservices::formatTime(time);
}

}  // namespace tool::commands::detail
