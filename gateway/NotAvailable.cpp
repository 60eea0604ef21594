// SPDX-License-Identifier: MIT
#include "gateway/NotAvailable.h"

#include <string>

namespace gateway {

void raiseNotAvailable(const char* gateway, Arity arity, int nlhs, int nrhs) {
  checkCounts(arity, nlhs, nrhs);
  throw matrix::HostError("Korvan:notAvailable",
                          std::string(gateway) + " is not available in this version.");
}

}  // namespace gateway
