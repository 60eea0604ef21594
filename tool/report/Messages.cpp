// SPDX-License-Identifier: MIT
#include "tool/report/Messages.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

#include "opc/Text.h"
#include "tool/line/Arguments.h"

namespace tool::report {

namespace {

std::string line(std::string_view command, std::string_view message) {
  const std::string text = opc::printable(message);
  if (command.empty()) return fmt::format("kraddon: {}\n", text);
  return fmt::format("kraddon: {}: {}\n", command, text);
}

}  // namespace

void printToStandardError(std::string_view text) noexcept {
  while (!text.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

void printError(std::string_view command, std::string_view message, std::string_view hint) {
  std::string text = line(command, message);
  if (!hint.empty()) text += fmt::format("hint: {}\n", opc::printable(hint));
  printToStandardError(text);
}

void printLackOfMemory(std::string_view command) noexcept {
  constexpr std::string_view kWhy = "out of memory\n";
  constexpr std::size_t kMaxNameLength = 64;
  std::array<char, kMaxNameLength + 64> text{};
  const auto end = command.empty() ? fmt::format_to(text.begin(), "kraddon: {}", kWhy)
                                   : fmt::format_to(text.begin(), "kraddon: {}: {}",
                                                    command.substr(0, kMaxNameLength), kWhy);
  printToStandardError({text.data(), static_cast<std::size_t>(end - text.begin())});
}

void printWarning(const line::Invocation& invocation, std::string_view message) {
  printToStandardError(describeWarning(invocation, message));
}

std::string describeWarning(const line::Invocation& invocation, std::string_view message) {
  if (invocation.settings().isQuiet) return {};
  return line(invocation.command().name, fmt::format("warning: {}", message));
}

std::string describeDone(const line::Invocation& invocation, std::string_view verb,
                         const std::vector<std::string>& names) {
  if (!invocation.settings().isVerbose) return {};
  std::string text;
  for (const std::string& name : names) {
    text += fmt::format("{}: {}\n", verb, opc::printable(name));
  }
  return text;
}

void printNotice(const line::Invocation& invocation, std::string_view message) {
  if (invocation.settings().isQuiet) return;
  printToStandardError(line(invocation.command().name, message));
}

}  // namespace tool::report
