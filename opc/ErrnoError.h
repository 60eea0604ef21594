// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/Exception.h"

namespace opc {

/// A failure with a text of its own and the errno value that describes it as well, or 0.
class ErrnoError : public Exception {
 public:
  ErrnoError(ErrorCode code, const std::string& message, int number)
      : Exception(code, message), number_(number) {}

  int number() const noexcept { return number_; }

 private:
  int number_;
};

}  // namespace opc
