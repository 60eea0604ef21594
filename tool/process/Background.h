// SPDX-License-Identifier: MIT
#pragma once

#include "opc/interfaces/Background.h"

namespace tool::process {

/// A second thread for work that can be shared, if there is a processor for it. It blocks signals.
opc::interfaces::BackgroundStarter secondThread();

}  // namespace tool::process
