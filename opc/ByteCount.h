// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace opc {

/// "3.1 MB": three digits at most, in powers of 1000.
std::string describeBytes(std::uint64_t bytes);

}  // namespace opc
