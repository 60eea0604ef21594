// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/Exception.h"

namespace addon::build {

/// A folder, file or project that cannot be packed.
class BuildError : public opc::Exception {
 public:
  /// `hint` says what to do about it, and may be empty. `number` is the errno value that says the
  /// same, or 0.
  explicit BuildError(const std::string& message, std::string hint = {}, int number = 0);

  const std::string& hint() const noexcept { return hint_; }
  int number() const noexcept { return number_; }

 private:
  std::string hint_;
  int number_;
};

/// A BuildError that ends with the system's own words for `number`, an errno value. For an empty
/// path that does not exist it says that the path is empty.
BuildError systemError(std::string_view what, std::string_view which, int number);

}  // namespace addon::build
