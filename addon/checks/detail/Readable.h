// SPDX-License-Identifier: MIT
#pragma once

#include "opc/Exception.h"

namespace addon::checks::detail {

/// Runs what reads the package. False when its content is at fault, which is for other checks to
/// say. That the system refuses to read says nothing about the package, and goes through.
template <typename Action>
bool isReadable(const Action& action) {
  try {
    action();
    return true;
  } catch (const opc::SystemError&) {
    throw;
  } catch (const opc::Exception&) {
    return false;
  }
}

}  // namespace addon::checks::detail
