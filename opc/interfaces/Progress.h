// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>

namespace opc::interfaces {

/// How far a long operation has come. Bytes are those of the unpacked data.
struct Progress {
  std::uint64_t itemsDone = 0;
  std::uint64_t itemsTotal = 0;
  std::uint64_t bytesDone = 0;
  std::uint64_t bytesTotal = 0;
};

/// Called often (after every item, and within a large one) by the thread that works. What it
/// throws ends the operation as a failure would: nothing half-written stays behind.
using ProgressFunction = std::function<void(const Progress&)>;

/// Called often during work that reports no progress. An exception that it throws ends the work in
/// the same way.
using StopFunction = std::function<void()>;

}  // namespace opc::interfaces
