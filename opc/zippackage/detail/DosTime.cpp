// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/DosTime.h"

#include <algorithm>
#include <chrono>

namespace opc::zippackage::detail {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

constexpr std::int64_t kLatest = 4354819198;  // 2107-12-31 23:59:58

}  // namespace

// Calendar arithmetic only: nothing here knows of time zones, or of the lock that guards them.
std::uint32_t DosTime::fromUnix(std::int64_t unixSeconds) {
  const sys_seconds time{seconds(std::clamp(unixSeconds, kEarliest, kLatest))};
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const auto ofDay = static_cast<std::uint32_t>((time - day).count());
  const auto year = static_cast<std::uint32_t>(static_cast<int>(date.year()) - 1980);
  const std::uint32_t datePart =
      (year << 9) | (static_cast<unsigned>(date.month()) << 5) | static_cast<unsigned>(date.day());
  const std::uint32_t timePart =
      ((ofDay / 3600) << 11) | ((ofDay / 60 % 60) << 5) | (ofDay % 60 / 2);
  return (datePart << 16) | timePart;
}

std::int64_t DosTime::toUnix(std::uint32_t dosTime) {
  const std::uint32_t datePart = dosTime >> 16;
  const std::uint32_t hour = (dosTime >> 11) & 31;
  const std::uint32_t minute = (dosTime >> 5) & 63;
  const std::uint32_t second = (dosTime & 31) * 2;
  const year_month_day date{std::chrono::year(static_cast<int>(datePart >> 9) + 1980),
                            std::chrono::month((datePart >> 5) & 15),
                            std::chrono::day(datePart & 31)};
  if (!date.ok() || hour > 23 || minute > 59 || second > 59) return kEarliest;
  return sys_seconds(sys_days(date)).time_since_epoch().count() +
         static_cast<std::int64_t>(hour * 3600 + minute * 60 + second);
}

}  // namespace opc::zippackage::detail
