// SPDX-License-Identifier: MIT
#include "tool/process/Errors.h"

#include <utility>

namespace tool::process {

Failure::Failure(std::string message, std::string hint)
    : message_(std::move(message)), hint_(std::move(hint)) {}

Failure systemFailure(std::string_view what, std::string_view which, int number) {
  return Failure(opc::systemSentence(what, which, number));
}

}  // namespace tool::process
