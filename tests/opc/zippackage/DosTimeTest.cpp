// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/DosTime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace opc::zippackage {
namespace {

using detail::DosTime;

constexpr std::int64_t kLeapDay = 1709209830;  // 2024-02-29 12:30:30
constexpr std::uint32_t kLeapDayDos = ((44u << 9 | 2 << 5 | 29) << 16) | (12 << 11 | 30 << 5 | 15);

std::uint32_t dos(unsigned year, unsigned month, unsigned day, unsigned time = 0) {
  return ((year - 1980) << 9 | month << 5 | day) << 16 | time;
}

TEST(DosTime, SaysTheDateAndTheTimeInUtc) {
  EXPECT_EQ(DosTime::fromUnix(kLeapDay), kLeapDayDos);
  EXPECT_EQ(DosTime::toUnix(kLeapDayDos), kLeapDay);
}

TEST(DosTime, RoundsOddSecondsDown) {
  EXPECT_EQ(DosTime::fromUnix(kLeapDay + 1), kLeapDayDos);
  EXPECT_EQ(DosTime::fromUnix(kLeapDay + 2), kLeapDayDos + 1);
}

TEST(DosTime, IsClampedToWhatCanBeSaid) {
  EXPECT_EQ(DosTime::fromUnix(0), dos(1980, 1, 1));
  EXPECT_EQ(DosTime::fromUnix(-1), dos(1980, 1, 1));
  EXPECT_EQ(DosTime::fromUnix(INT64_MIN), dos(1980, 1, 1));
  EXPECT_EQ(DosTime::fromUnix(315532799), dos(1980, 1, 1));
  EXPECT_EQ(DosTime::fromUnix(4354819199), dos(2107, 12, 31, 23 << 11 | 59 << 5 | 29));
  EXPECT_EQ(DosTime::fromUnix(INT64_MAX), dos(2107, 12, 31, 23 << 11 | 59 << 5 | 29));
  EXPECT_EQ(DosTime::toUnix(DosTime::fromUnix(INT64_MAX)), 4354819198);
}

TEST(DosTime, AnInvalidValueIsTheEarliestTime) {
  EXPECT_EQ(DosTime::toUnix(0), 315532800);
  EXPECT_EQ(DosTime::toUnix(0xFFFFFFFF), 315532800);
  EXPECT_EQ(DosTime::toUnix(dos(2023, 2, 29)), 315532800);
  EXPECT_EQ(DosTime::toUnix(dos(2023, 13, 1)), 315532800);
  EXPECT_EQ(DosTime::toUnix(dos(2023, 1, 0)), 315532800);
  EXPECT_EQ(DosTime::toUnix(dos(2023, 1, 1, 24 << 11)), 315532800);
  EXPECT_EQ(DosTime::toUnix(dos(2023, 1, 1, 60 << 5)), 315532800);
  EXPECT_EQ(DosTime::toUnix(dos(2023, 1, 1, 30)), 315532800);
}

TEST(DosTime, DoesNotDependOnTheTimeZone) {
  const char* zones[] = {"UTC", "Asia/Kathmandu", "America/Los_Angeles", "XYZ-13:45"};
  for (const char* zone : zones) {
    ::setenv("TZ", zone, 1);
    ::tzset();

    EXPECT_EQ(DosTime::fromUnix(kLeapDay), kLeapDayDos) << zone;
    EXPECT_EQ(DosTime::toUnix(kLeapDayDos), kLeapDay) << zone;
  }
  ::unsetenv("TZ");
  ::tzset();
}

TEST(DosTime, AgreesWithTheCalendarOfTheSystemForEveryDay) {
  for (std::int64_t day = 3652; day < 50403; ++day) {
    const std::time_t time = day * 86400 + day % 43200 * 2;
    std::tm parts{};
    ::gmtime_r(&time, &parts);
    const auto expected =
        dos(static_cast<unsigned>(parts.tm_year) + 1900, static_cast<unsigned>(parts.tm_mon) + 1,
            static_cast<unsigned>(parts.tm_mday),
            static_cast<unsigned>(parts.tm_hour << 11 | parts.tm_min << 5 | parts.tm_sec / 2));

    ASSERT_EQ(DosTime::fromUnix(time), expected) << day;
    ASSERT_EQ(DosTime::toUnix(expected), time) << day;
  }
}

}  // namespace
}  // namespace opc::zippackage
