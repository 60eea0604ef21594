// SPDX-License-Identifier: MIT
#include "addon/build/BuildError.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace addon::build {

BuildError::BuildError(const std::string& message, std::string hint, int number)
    : Exception(opc::ErrorCode::InvalidArgument, message),
      hint_(std::move(hint)),
      number_(number) {}

BuildError systemError(std::string_view what, std::string_view which, int number) {
  return BuildError(opc::systemSentence(what, which, number), {}, number);
}

}  // namespace addon::build
