// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace tool::process {

/// Bytes that must not stay in memory: they are overwritten at the end. Messages never show them.
class Secret {
 public:
  Secret() = default;
  ~Secret();
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;

  /// Reads a file or a pipe. An interrupt ends the wait for it. Throws Failure if it cannot be read
  /// or holds more than 1 MiB.
  void readFile(const std::string& path);
  /// Takes an environment variable, and overwrites its value. Returns false if it is not set.
  bool takeEnvironment(const char* name);
  /// Leaves out everything from the first line end on.
  void keepFirstLine();

  const std::string& text() const { return text_; }
  std::span<const unsigned char> bytes() const {
    return {reinterpret_cast<const unsigned char*>(text_.data()), text_.size()};
  }
  /// Whether users other than the owner may read the file that was read.
  bool isExposed() const { return isExposed_; }

 private:
  std::string text_;  // never grows, which would leave a copy behind
  bool isExposed_ = false;
};

}  // namespace tool::process
