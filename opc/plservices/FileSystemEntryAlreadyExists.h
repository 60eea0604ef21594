// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/Exception.h"

namespace opc::plservices {

/// A path of the tree that is taken.
class FileSystemEntryAlreadyExists : public Exception {
 public:
  explicit FileSystemEntryAlreadyExists(std::string_view path)
      : Exception(ErrorCode::AlreadyExists,
                  "path '" + std::string(path) + "' already exists in the package") {}
};

}  // namespace opc::plservices
