// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tool/line/Arguments.h"

namespace tool::report {

/// Standard output, or a file, through one buffer. Everything is checked: what cannot be written is
/// a Failure, and a closed pipe ends the command as SIGPIPE would (Interrupted).
class Output {
 public:
  /// Standard output.
  Output();
  /// An open descriptor, which stays the caller's. `name` is for messages.
  Output(int descriptor, std::string name);
  /// Writes nothing more: what was not flushed is lost.
  ~Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void write(std::string_view text);
  void write(std::span<const unsigned char> bytes);
  void flush();

  bool isTerminal() const { return isTerminal_; }
  /// A name from a package: as it is, but with control characters replaced on a terminal.
  std::string shown(std::string_view name) const;

 private:
  void writeThrough(std::string_view bytes);

  int descriptor_;
  std::string name_;
  bool isTerminal_;
  std::string buffer_;
};

/// Writes all that there is to write.
using Content = std::function<void(Output&)>;

/// Puts `content` into the file at `path` ("-" is standard output). A regular file is replaced in
/// one step, or stays as it was; one that may not be written stays. Throws Failure; `package` is a
/// file that must not be replaced.
void writeOutputFile(const std::string& path, const Content& content, const std::string& package);
void writeOutputFile(const std::string& path, std::string_view content, const std::string& package);
/// The same into the file that was asked for or, when none was, into `usual`: a file that nobody
/// named, which must not exist.
void writeOutputFile(const std::optional<std::string>& asked, const std::string& usual,
                     const Content& content, const std::string& package);

/// Throws Failure when nobody may write to the file at `path`: whoever protected it does not want
/// it replaced either, which a rename could do.
void requireWritable(const std::string& path);

/// Puts `content` into a new file. Throws Failure when there is something of that name by then.
void writeNewFile(const std::string& path, std::string_view content);

/// Whether results are to be coloured.
bool wantsColor(const line::Settings& settings, const Output& output);

}  // namespace tool::report
