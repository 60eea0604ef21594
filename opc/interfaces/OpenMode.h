// SPDX-License-Identifier: MIT
#pragma once

namespace opc::interfaces {

/// What a package is opened for. The numbers are part of the host's contract.
enum class OpenMode {
  Read = 0,
  Create = 1,  ///< a new package; the disk is untouched until it is committed
  Modify = 2,
};

}  // namespace opc::interfaces
