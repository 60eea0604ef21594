// SPDX-License-Identifier: MIT
#include "tool/report/Progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cmath>
#include <utility>

#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"

namespace tool::report {

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

std::string describeProgress(const opc::interfaces::Progress& progress, double seconds,
                             std::size_t width) {
  std::string text = progress.itemsTotal == 0
                         ? std::string()
                         : fmt::format("{} of {} files, ", progress.itemsDone, progress.itemsTotal);
  text += fmt::format("{} of {}", describeBytes(progress.bytesDone),
                      describeBytes(progress.bytesTotal));
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

ProgressBar::ProgressBar(const line::Settings& settings)
    : isEnabled_(!settings.isQuiet && ::isatty(STDERR_FILENO) == 1 && !isTerminalDumb()) {}

ProgressBar::~ProgressBar() {
  hide();
}

void ProgressBar::show(const std::string& text) {
  if (!isShown_ && !process::Interrupt::isDeferred()) {
    process::Interrupt::defer();
    isDeferring_ = true;
  }
  printToStandardError("\r" + text + "\x1b[K");
  isShown_ = true;
}

void ProgressBar::hide() {
  if (isShown_) printToStandardError("\r\x1b[K");
  isShown_ = false;
  if (std::exchange(isDeferring_, false)) process::Interrupt::release();
}

void ProgressBar::update(const opc::interfaces::Progress& progress) {
  if (!isEnabled_) return;
  // What may follow looks for no interrupts.
  const bool isThrough =
      progress.itemsDone == progress.itemsTotal && progress.bytesDone >= progress.bytesTotal;
  if (isThrough) return hide();
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(100);
  const double seconds = std::chrono::duration<double>(now - start_).count();
  show(describeProgress(progress, seconds, terminalWidth()));
}

opc::interfaces::ProgressFunction ProgressBar::function() {
  return [this](const opc::interfaces::Progress& progress) {
    process::Interrupt::check();
    update(progress);
  };
}

}  // namespace tool::report
