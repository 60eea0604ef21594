// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gateway/FunctionTable.h"

namespace tool::commands::detail {

/// A gateway. The host's table has slots only; the names are ours.
struct Gateway {
  std::string_view name;
  int outputs;  ///< the maximum number
};

/// The slot of a gateway. For an unknown name, throws UsageError that suggests the nearest one.
std::size_t gatewaySlot(std::string_view name);
const Gateway& gatewayAt(std::size_t slot);

/// All names, in slot order.
std::vector<std::string> gatewayNames();

/// Loads the shared library as the host does and takes its table, which lives until the program
/// ends. An empty `file` names the library that belongs to this program. Throws Failure.
const HostFunctionTable& loadFunctionTable(const std::string& file);

}  // namespace tool::commands::detail
