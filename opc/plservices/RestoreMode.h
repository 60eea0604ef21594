// SPDX-License-Identifier: MIT
#pragma once

namespace opc::plservices {

/// What becomes of files that exist on disk when the tree is written there.
enum class RestoreMode {
  KeepExisting = 0,     ///< an existing file is an error, before anything is written
  ReplaceExisting = 1,  ///< the new file takes its place once it is whole
};

}  // namespace opc::plservices
