// SPDX-License-Identifier: MIT
#include "tool/report/Output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "opc/FileDescriptor.h"
#include "opc/FileIdentity.h"
#include "opc/FilePermissions.h"
#include "opc/TemporaryFile.h"
#include "opc/Text.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"

namespace tool::report {

namespace {

constexpr std::size_t kBufferSize = 256u << 10;

/// Throws Failure if that is unknown: what is there must not be replaced for nothing then.
bool isThere(const std::string& path, struct stat& status) {
  if (::stat(path.c_str(), &status) == 0) return true;
  if (errno == ENOENT || errno == ENOTDIR) return false;
  throw process::systemFailure("cannot write", path, errno);
}

/// A new file that is to appear at `target`. Throws Failure, with `name` for the file.
class SideFile {
 public:
  /// `old` is the file that it replaces, or null.
  SideFile(const std::string& target, std::string name, const struct stat* old)
      : name_(std::move(name)) {
    if (!file_.create(AT_FDCWD, target, old == nullptr ? 0666 : 0600)) fail(errno);
    try {
      if (old != nullptr) opc::copyPermissions(target, *old, file_.descriptor());
    } catch (const opc::SystemError& error) {
      fail(error.number());
    }
  }

  int descriptor() const { return file_.descriptor(); }
  void putInPlace(bool replaces) {
    if (!file_.finishWriting() || !file_.putInPlace(replaces)) fail(errno);
  }

 private:
  [[noreturn]] void fail(int number) const {
    throw process::systemFailure("cannot write", name_, number);
  }

  std::string name_;
  opc::TemporaryFile file_;
};

void writeTo(int descriptor, const std::string& name, const Content& content) {
  Output output(descriptor, name);
  content(output);
  output.flush();
}

/// What a link stands for, so that the file behind it is replaced and not the link.
std::string behindLinks(const std::string& path) {
  std::error_code error;
  const std::filesystem::path resolved = std::filesystem::canonical(path, error);
  if (error) throw process::systemFailure("cannot write", path, error.value());
  return resolved.string();
}

}  // namespace

Output::Output() : Output(STDOUT_FILENO, "standard output") {}

Output::Output(int descriptor, std::string name)
    : descriptor_(descriptor), name_(std::move(name)), isTerminal_(::isatty(descriptor) == 1) {}

void Output::write(std::string_view text) {
  if (text.size() >= kBufferSize) {
    flush();
    writeThrough(text);
    return;
  }
  buffer_.append(text);
  if (buffer_.size() >= kBufferSize) flush();
}

void Output::write(std::span<const unsigned char> bytes) {
  write(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

void Output::flush() {
  writeThrough(buffer_);
  buffer_.clear();
}

void Output::writeThrough(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
      continue;
    }
    if (errno == EPIPE) throw process::Interrupted{SIGPIPE};
    if (errno != EINTR) throw process::systemFailure("cannot write", name_, errno);
    process::Interrupt::check();
  }
}

std::string Output::shown(std::string_view name) const {
  return isTerminal_ ? opc::printable(name) : std::string(name);
}

void writeOutputFile(const std::string& path, std::string_view content,
                     const std::string& package) {
  writeOutputFile(
      path, [&](Output& output) { output.write(content); }, package);
}

void writeOutputFile(const std::string& path, const Content& content, const std::string& package) {
  if (path == "-") {
    writeTo(STDOUT_FILENO, "standard output", content);
    return;
  }
  struct stat existing {};
  struct stat source {};
  const bool exists = isThere(path, existing);
  if (exists && isThere(package, source) &&
      opc::FileIdentity(existing) == opc::FileIdentity(source)) {
    throw process::Failure(process::sentence("cannot write", path, "it is the package itself"));
  }
  if (exists && !S_ISREG(existing.st_mode)) {
    // A device or a pipe is written to, not replaced.
    const opc::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!file) throw process::systemFailure("cannot write", path, errno);
    writeTo(file.get(), path, content);
    return;
  }
  if (exists) requireWritable(path);
  process::Interrupt::defer();
  SideFile file(exists ? behindLinks(path) : path, path, exists ? &existing : nullptr);
  writeTo(file.descriptor(), path, content);
  process::Interrupt::check();
  file.putInPlace(true);
}

void requireWritable(const std::string& path) {
  if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
    throw process::systemFailure("cannot replace", path, errno);
  }
}

void requireNothingAt(const std::string& path, const std::string& hint) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) return;
  // A link to nothing is replaced, too.
  const bool isReplaceable = !isThere(path, info) || S_ISREG(info.st_mode);
  throw process::Failure(
      process::sentence("cannot write", path,
                        S_ISDIR(info.st_mode) ? "it is a folder" : "it already exists"),
      isReplaceable ? hint : std::string());
}

void writeNewFile(const std::string& path, std::string_view content) {
  process::Interrupt::defer();
  SideFile file(path, path, nullptr);
  writeTo(file.descriptor(), path, [&](Output& output) { output.write(content); });
  process::Interrupt::check();
  file.putInPlace(false);
}

void writeOutputFile(const std::optional<std::string>& asked, const std::string& usual,
                     const Content& content, const std::string& package) {
  if (!asked) requireNothingAt(usual, fmt::format("-o {} replaces it", usual));
  writeOutputFile(asked.value_or(usual), content, package);
}

namespace {

bool isColored(const line::Settings& settings, bool isTerminal) {
  if (settings.color != line::ColorMode::Auto) return settings.color == line::ColorMode::Always;
  const char* noColor = std::getenv("NO_COLOR");
  if (noColor != nullptr && *noColor != '\0') return false;
  return isTerminal && !isTerminalDumb();
}

}  // namespace

bool wantsColor(const line::Settings& settings, const Output& output) {
  return isColored(settings, output.isTerminal());
}

bool wantsErrorColor(const line::Settings& settings) {
  return isColored(settings, ::isatty(STDERR_FILENO) == 1);
}

bool isTerminalDumb() {
  const char* type = std::getenv("TERM");
  return type != nullptr && std::string_view(type) == "dumb";
}

}  // namespace tool::report
