// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "opc/Exception.h"

namespace tool::process {

using opc::sentence;

/// The operation failed (exit code 1). All texts are UTF-8.
class Failure : public std::exception {
 public:
  /// `hint` suggests what to do, and may be empty.
  explicit Failure(std::string message, std::string hint = {});

  const char* what() const noexcept override { return message_.c_str(); }
  const std::string& hint() const noexcept { return hint_; }

 private:
  std::string message_;
  std::string hint_;
};

/// The command line is wrong (exit code 2); the usage is shown.
class UsageError : public Failure {
 public:
  using Failure::Failure;
};

/// A Failure with the system's message for `number`, an errno value. For an empty path that does
/// not exist, it says that the path is empty.
Failure systemFailure(std::string_view what, std::string_view which, int number);

}  // namespace tool::process
