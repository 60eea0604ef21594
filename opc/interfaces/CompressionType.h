// SPDX-License-Identifier: MIT
#pragma once

namespace opc::interfaces {

/// How hard to pack an item. Whatever does not get smaller is stored.
enum class CompressionType { None = 0, Normal = 1, Maximum = 2, Fast = 3 };

}  // namespace opc::interfaces
