// SPDX-License-Identifier: MIT
#include "tool/Errors.h"

#include <fmt/format.h>

#include <system_error>
#include <utility>

namespace tool {

std::string sentence(std::string_view what, std::string_view which, std::string_view why) {
  return fmt::format("{} '{}': {}", what, which, why);
}

Failure::Failure(std::string message, std::string hint)
    : message_(std::move(message)), hint_(std::move(hint)) {}

Failure systemFailure(std::string_view what, std::string_view which, int number) {
  return Failure(sentence(what, which, std::generic_category().message(number)));
}

}  // namespace tool
