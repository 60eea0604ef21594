// SPDX-License-Identifier: MIT
#include "opc/plservices/W3cDateTime.h"

#include <array>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "opc/Exception.h"
#include "opc/Text.h"

namespace opc::plservices {
namespace {

namespace gregorian = boost::gregorian;
namespace posix_time = boost::posix_time;

// What boost's calendar holds.
constexpr int kFirstYear = 1400;
constexpr int kLastYear = 9999;

constexpr int kSecondsPerDay = 86400;

class Reader {
 public:
  explicit Reader(std::u16string_view text) : text_(text), rest_(text) {}

  W3cDateTime read() {
    readDay();
    W3cDateTime result;
    if (take(u'T')) {
      result.hasTime = true;
      result.hasSeconds = readTime();
      result.hasZone = readZone();
    }
    if (!rest_.empty()) fail();
    result.time = toUtc();
    return result;
  }

 private:
  // A time needs the whole day before it.
  void readDay() {
    const int year = number(4);
    int month = 1;
    int day = 1;
    if (!rest_.empty()) {
      require(u'-');
      month = number(2);
    }
    if (!rest_.empty()) {
      require(u'-');
      day = number(2);
    }
    day_ = std::chrono::year{year} / month / day;
    if (!day_.ok()) fail("the calendar has no such day");
  }

  // Whether it has seconds.
  bool readTime() {
    hour_ = number(2);
    require(u':');
    minute_ = number(2);
    const bool hasSeconds = take(u':');
    if (hasSeconds) {
      second_ = number(2);
      if (take(u'.')) skipDigits();
    }
    if (hour_ > 23 || minute_ > 59 || second_ > 59) fail("the day has no such time");
    return hasSeconds;
  }

  bool readZone() {
    if (rest_.empty() || take(u'Z')) return text_.back() == u'Z';
    const bool isBehind = take(u'-');
    if (!isBehind) require(u'+');
    const int hours = number(2);
    require(u':');
    const int minutes = number(2);
    if (hours > 14 || minutes > 59 || (hours == 14 && minutes != 0)) {
      fail("there is no such time zone");
    }
    const int offset = hours * 3600 + minutes * 60;
    offset_ = isBehind ? -offset : offset;
    return true;
  }

  // Counted by hand: boost wraps around at the ends of its calendar.
  posix_time::ptime toUtc() const {
    std::int64_t days = std::chrono::sys_days{day_}.time_since_epoch().count();
    std::int64_t seconds = hour_ * 3600 + minute_ * 60 + second_ - offset_;
    if (seconds < 0) {
      --days;
      seconds += kSecondsPerDay;
    } else if (seconds >= kSecondsPerDay) {
      ++days;
      seconds -= kSecondsPerDay;
    }
    const std::chrono::year_month_day utc{std::chrono::sys_days{std::chrono::days{days}}};
    const int year = static_cast<int>(utc.year());
    if (year < kFirstYear || year > kLastYear) return posix_time::not_a_date_time;
    const gregorian::date date(static_cast<unsigned short>(year),
                               static_cast<unsigned short>(static_cast<unsigned>(utc.month())),
                               static_cast<unsigned short>(static_cast<unsigned>(utc.day())));
    return {date, posix_time::seconds(seconds)};
  }

  int number(std::size_t digits) {
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      if (rest_.empty() || rest_.front() < u'0' || rest_.front() > u'9') fail();
      value = value * 10 + (rest_.front() - u'0');
      rest_.remove_prefix(1);
    }
    return value;
  }

  void skipDigits() {
    number(1);
    while (!rest_.empty() && rest_.front() >= u'0' && rest_.front() <= u'9') {
      rest_.remove_prefix(1);
    }
  }

  bool take(char16_t expected) {
    if (rest_.empty() || rest_.front() != expected) return false;
    rest_.remove_prefix(1);
    return true;
  }

  void require(char16_t expected) {
    if (!take(expected)) fail();
  }

  [[noreturn]] void fail(
      const std::string& why = "dates are written as in 2014-05-06T07:08:09Z") const {
    constexpr std::size_t kShown = 60;
    throw FormatError("CP-12",
                      "invalid date '" + toUtf8ForDisplay(text_.substr(0, kShown)) + "': " + why);
  }

  std::u16string_view text_;
  std::u16string_view rest_;
  std::chrono::year_month_day day_{};
  int hour_ = 0;
  int minute_ = 0;
  int second_ = 0;
  int offset_ = 0;  // in seconds, east of UTC
};

}  // namespace

W3cDateTime parseW3cDateTime(std::u16string_view text) {
  return Reader(text).read();
}

std::string formatTime(const boost::posix_time::ptime& time) {
  if (time.is_special()) {
    throw Exception(ErrorCode::InvalidArgument, "cannot write a date: it is not a point in time");
  }
  const gregorian::greg_year_month_day day = time.date().year_month_day();
  const posix_time::time_duration clock = time.time_of_day();
  std::array<char, 80> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02dZ",
                static_cast<int>(day.year), static_cast<int>(day.month), static_cast<int>(day.day),
                static_cast<int>(clock.hours()), static_cast<int>(clock.minutes()),
                static_cast<int>(clock.seconds()));
  return text.data();
}

std::u16string formatW3cDateTime(const boost::posix_time::ptime& time) {
  return fromUtf8(formatTime(time));
}

boost::posix_time::ptime inWholeSeconds(const boost::posix_time::ptime& time) {
  if (time.is_special()) return time;
  return {time.date(), posix_time::seconds(time.time_of_day().total_seconds())};
}

}  // namespace opc::plservices
