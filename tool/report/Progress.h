// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

#include "opc/interfaces/Progress.h"
#include "text/ByteCount.h"
#include "tool/line/Arguments.h"

namespace tool::report {

/// A progress line on standard error. It appears after half a second, on a terminal only, and is
/// removed at the end, also after an interrupt.
class ProgressBar {
 public:
  explicit ProgressBar(const line::Settings& settings);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void update(const opc::interfaces::Progress& progress);

  /// A callback for the library that updates the bar, and throws Interrupted after a signal. The
  /// bar must outlive it.
  opc::interfaces::ProgressFunction function();

 private:
  using Clock = std::chrono::steady_clock;

  void show(const std::string& text);
  void hide();

  bool isEnabled_;
  bool isShown_ = false;
  bool isDeferring_ = false;  // interrupts, which would leave the line on the terminal
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::milliseconds(500);
};

/// "12 of 40 files, 3.1 of 9.0 MB, 6.2 MB/s, 1 s left" within `width` columns.
std::string describeProgress(const opc::interfaces::Progress& progress, double seconds,
                             std::size_t width);

using text::describeBytes;

}  // namespace tool::report
