// SPDX-License-Identifier: MIT
#include "opc/xmlsignatures/SignatureTime.h"

#include <array>
#include <chrono>
#include <ctime>

namespace opc::xmlsignatures {

namespace {

/// Takes a text apart from its front. After a failure everything fails.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  bool isGood() const { return isGood_; }
  bool isEnd() const { return rest_.empty(); }

  bool skip(char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }

  unsigned number(std::size_t digits, unsigned least, unsigned most) {
    unsigned value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      if (rest_.empty() || rest_.front() < '0' || rest_.front() > '9') return fail();
      value = value * 10 + static_cast<unsigned>(rest_.front() - '0');
      rest_.remove_prefix(1);
    }
    return value < least || value > most ? fail() : value;
  }

  void skipDigits() {
    if (rest_.empty() || rest_.front() < '0' || rest_.front() > '9') fail();
    while (!rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9') rest_.remove_prefix(1);
  }

  unsigned fail() {
    isGood_ = false;
    rest_ = {};
    return 1;
  }

 private:
  std::string_view rest_;
  bool isGood_ = true;
};

/// The rest, from the hours on, in seconds.
std::int64_t timeOfDay(Scanner& scanner) {
  std::int64_t seconds = scanner.number(2, 0, 23) * std::int64_t{3600};
  if (!scanner.skip(':')) scanner.fail();
  seconds += scanner.number(2, 0, 59) * std::int64_t{60};
  if (scanner.skip(':')) {
    seconds += scanner.number(2, 0, 59);
    if (scanner.skip('.')) scanner.skipDigits();
  }
  if (scanner.skip('Z')) return seconds;
  const bool isEast = scanner.skip('+');
  if (!isEast && !scanner.skip('-')) scanner.fail();
  std::int64_t shift = scanner.number(2, 0, 14) * std::int64_t{3600};
  if (!scanner.skip(':')) scanner.fail();
  shift += scanner.number(2, 0, 59) * std::int64_t{60};
  return isEast ? seconds - shift : seconds + shift;
}

}  // namespace

std::optional<std::int64_t> parseTime(std::string_view text) {
  namespace chrono = std::chrono;
  Scanner scanner(text);
  const unsigned year = scanner.number(4, 1, 9999);
  unsigned month = 1;
  unsigned day = 1;
  std::int64_t seconds = 0;
  if (scanner.skip('-')) {
    month = scanner.number(2, 1, 12);
    if (scanner.skip('-')) {
      day = scanner.number(2, 1, 31);
      if (scanner.skip('T')) seconds = timeOfDay(scanner);
    }
  }
  const chrono::year_month_day date{chrono::year(static_cast<int>(year)), chrono::month(month),
                                    chrono::day(day)};
  if (!scanner.isGood() || !scanner.isEnd() || !date.ok()) return std::nullopt;
  return chrono::sys_days(date).time_since_epoch().count() * std::int64_t{86400} + seconds;
}

std::string formatTime(std::int64_t seconds) {
  const std::time_t time = seconds;
  std::tm parts{};
  ::gmtime_r(&time, &parts);
  std::array<char, 32> text{};
  const std::size_t size = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return {text.data(), size};
}

}  // namespace opc::xmlsignatures
