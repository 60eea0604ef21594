// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "opc/interfaces/Background.h"

namespace tool::process {

/// A second thread for work that can be shared. It blocks signals. Empty if the process may use one
/// processor only.
opc::interfaces::BackgroundStarter secondThread();

/// Runs `work`, which must not throw, with a stack that is large enough for every input. If the
/// limit of the process is lower than usual, that is a thread, which then gets all signals. Throws
/// Failure if the limit is too low even for that.
void withEnoughStack(const std::function<void()>& work);

}  // namespace tool::process
