// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tool/line/Arguments.h"

namespace tool::report {

/// Takes text piece by piece.
using Sink = std::function<void(std::string_view)>;

/// Standard output or a file, with a buffer. Throws Failure if something cannot be written, and
/// Interrupted for a closed pipe, which ends the command as SIGPIPE would.
class Output {
 public:
  /// Standard output.
  Output();
  /// An open descriptor, which the caller owns. `name` is for messages.
  Output(int descriptor, std::string name);
  /// Does not flush: buffered output is lost.
  ~Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void write(std::string_view text);
  void write(std::span<const unsigned char> bytes);
  void flush();

  Sink sink() {
    return [this](std::string_view text) { write(text); };
  }

  bool isTerminal() const { return isTerminal_; }
  /// A name from a package, with control characters replaced if the output is a terminal.
  std::string shown(std::string_view name) const;

 private:
  void writeThrough(std::string_view bytes);

  int descriptor_;
  std::string name_;
  bool isTerminal_;
  std::string buffer_;
};

/// Writes the whole content.
using Content = std::function<void(Output&)>;

/// Writes `content` to the file at `path` ("-" is standard output). A regular file is replaced in
/// one step or stays as it was. Throws Failure, also if the file is not writable or is `package`.
void writeOutputFile(const std::string& path, const Content& content, const std::string& package);
void writeOutputFile(const std::string& path, std::string_view content, const std::string& package);
/// The same for the requested file or, if none was, for `usual`, which must not exist.
void writeOutputFile(const std::optional<std::string>& asked, const std::string& usual,
                     const Content& content, const std::string& package);

/// Throws Failure if there is anything at `path`; with `hint`, which says how to replace it, if
/// that is possible: for a regular file or a link to nothing, but not for a folder or a device.
void requireNothingAt(const std::string& path, const std::string& hint);

/// Throws Failure if the file at `path` is write-protected: it should not be replaced either,
/// although a rename could do that.
void requireWritable(const std::string& path);

/// Writes `content` to a new file. Throws Failure if the name exists by then.
void writeNewFile(const std::string& path, std::string_view content);

/// Whether results should be coloured.
bool wantsColor(const line::Settings& settings, const Output& output);
/// The same of messages on standard error.
bool wantsErrorColor(const line::Settings& settings);

/// Whether the terminal only shows plain text, as TERM says.
bool isTerminalDumb();

}  // namespace tool::report
