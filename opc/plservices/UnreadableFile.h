// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace opc::plservices {

/// Something where the files of a package lie that is no file of the tree.
struct UnreadableFile {
  std::string name;  ///< of the part or item, with a leading slash
  std::string why;   ///< without control characters
  std::string line;  ///< both, for people
};

}  // namespace opc::plservices
