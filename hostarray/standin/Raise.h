// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace hostarray::standin {

/// Raises the host error "Korvan:`word`" with a sentence.
[[noreturn]] void raise(const char* word, const std::string& sentence);

}  // namespace hostarray::standin
