// SPDX-License-Identifier: MIT
#pragma once

#include "opc/Exception.h"

namespace opc::zippackage {

/// Runs `body`, and puts what `context` returns in front of the text of what it throws. The text is
/// made only when it is needed.
template <typename Context, typename Body>
auto inContext(const Context& context, const Body& body) {
  try {
    return body();
  } catch (Exception& e) {
    e.addContext(context());
    throw;
  }
}

}  // namespace opc::zippackage
