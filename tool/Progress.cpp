// SPDX-License-Identifier: MIT
#include "tool/Progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cmath>

#include "tool/Interrupt.h"
#include "tool/Messages.h"

namespace tool {

namespace {

std::size_t terminalWidth() {
  struct winsize size {};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

std::string describeSeconds(double seconds) {
  const auto whole = static_cast<std::uint64_t>(std::min(std::ceil(seconds), 360000.0));
  if (whole < 60) return fmt::format("{} s", whole);
  return fmt::format("{}:{:02} min", whole / 60, whole % 60);
}

}  // namespace

std::string describeBytes(std::uint64_t bytes) {
  static constexpr std::array<const char*, 7> kUnits{"B", "kB", "MB", "GB", "TB", "PB", "EB"};
  if (bytes < 1000) return fmt::format("{} B", bytes);
  auto value = static_cast<double>(bytes);
  std::size_t unit = 0;
  while (value >= 999.5 && unit + 1 < kUnits.size()) {
    value /= 1000;
    ++unit;
  }
  return value < 9.95 ? fmt::format("{:.1f} {}", value, kUnits[unit])
                      : fmt::format("{:.0f} {}", value, kUnits[unit]);
}

std::string describeProgress(const opc::interfaces::Progress& progress, double seconds,
                             std::size_t width) {
  std::string text =
      fmt::format("{} of {} files, {} of {}", progress.itemsDone, progress.itemsTotal,
                  describeBytes(progress.bytesDone), describeBytes(progress.bytesTotal));
  if (seconds > 0 && progress.bytesDone > 0) {
    const double rate = static_cast<double>(progress.bytesDone) / seconds;
    const std::uint64_t left =
        progress.bytesTotal > progress.bytesDone ? progress.bytesTotal - progress.bytesDone : 0;
    text += fmt::format(", {}/s, {} left", describeBytes(static_cast<std::uint64_t>(rate)),
                        describeSeconds(static_cast<double>(left) / rate));
  }
  if (text.size() >= width) text.resize(width > 0 ? width - 1 : 0);
  return text;
}

ProgressBar::ProgressBar(const Settings& settings)
    : isEnabled_(!settings.isQuiet && ::isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
  if (isShown_) printToStandardError("\r\x1b[K");
}

void ProgressBar::update(const opc::interfaces::Progress& progress) {
  if (!isEnabled_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(100);
  const double seconds = std::chrono::duration<double>(now - start_).count();
  printToStandardError("\r" + describeProgress(progress, seconds, terminalWidth()) + "\x1b[K");
  isShown_ = true;
}

opc::interfaces::ProgressFunction ProgressBar::function() {
  return [this](const opc::interfaces::Progress& progress) {
    Interrupt::check();
    update(progress);
  };
}

}  // namespace tool
