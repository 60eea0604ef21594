// SPDX-License-Identifier: MIT
#pragma once

#include "gateway/GatewayFrame.h"

namespace gateway {

/// The whole of a gateway that has its slot in the table but no work to do in this version: checks
/// the counts, then raises the host error Korvan:notAvailable, which names it.
[[noreturn]] void raiseNotAvailable(const char* gateway, Arity arity, int nlhs, int nrhs);

}  // namespace gateway
