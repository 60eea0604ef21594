// SPDX-License-Identifier: MIT
#include "opc/Exception.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "opc/Text.h"

namespace opc {

Exception::Exception(ErrorCode code, const std::string& message)
    : code_(code), message_(printable(message)) {}

void Exception::addContext(std::string_view context) {
  message_ = printable(context) + ": " + message_;
}

FormatError::FormatError(std::string rule, const std::string& message, ErrorCode code)
    : Exception(code, message), rule_(std::move(rule)) {}

SystemError::SystemError(std::string_view message, int number)
    : Exception(ErrorCode::FileSystem,
                std::string(message) + ": " + std::generic_category().message(number)),
      number_(number) {}

std::string sentence(std::string_view what, std::string_view which, std::string_view why) {
  return std::string(what).append(" '").append(which).append("': ").append(why);
}

std::string systemSentence(std::string_view what, std::string_view which, int number) {
  if (which.empty() && number == ENOENT) return sentence(what, which, "the path is empty");
  return sentence(what, which, std::generic_category().message(number));
}

}  // namespace opc
