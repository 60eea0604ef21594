// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "hostarray/matrix.h"

namespace test {

/// The identifier of the host error that `action` raises, or "" when it raises none.
template <typename Action>
std::string hostErrorOf(Action&& action) {
  try {
    action();
  } catch (const matrix::HostError& error) {
    return error.identifier();
  }
  return {};
}

}  // namespace test
