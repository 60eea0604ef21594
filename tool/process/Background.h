// SPDX-License-Identifier: MIT
#pragma once

#include "opc/interfaces/Background.h"

namespace tool::process {

/// A second thread for work that can be shared, where there is a processor for it. Signals stay
/// with the first.
opc::interfaces::BackgroundStarter secondThread();

}  // namespace tool::process
