// SPDX-License-Identifier: MIT
#include "tool/process/Errors.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace tool::process {

std::string sentence(std::string_view what, std::string_view which, std::string_view why) {
  return fmt::format("{} '{}': {}", what, which, why);
}

Failure::Failure(std::string message, std::string hint)
    : message_(std::move(message)), hint_(std::move(hint)) {}

Failure systemFailure(std::string_view what, std::string_view which, int number) {
  // Where a path is asked for: an unset variable of a script is behind it as a rule.
  if (which.empty() && number == ENOENT) return Failure(sentence(what, which, "the path is empty"));
  return Failure(sentence(what, which, std::generic_category().message(number)));
}

}  // namespace tool::process
