// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "hostarray/kxarray.h"

/// What only tests of programs with the stand-in use.
namespace hostarray::standin {

/// Arrays alive in the process.
KX_API std::size_t liveArrays() noexcept;

/// Makes the `n`-th creation of this thread from now (1 is the next) fail with Korvan:outOfMemory;
/// 0 switches it off. Creations are those of the kxCreate... functions and kxSubscriptedReference.
KX_API void failCreation(std::size_t n) noexcept;

}  // namespace hostarray::standin
