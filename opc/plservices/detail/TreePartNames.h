// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

#include "opc/model/Package.h"
#include "opc/model/PartName.h"

namespace opc::plservices::detail {

/// Finds names for the parts of new files.
class TreePartNames {
 public:
  struct Choice {
    model::PartName name;
    bool madeUp;  ///< says nothing of the path, which a table has to keep
  };

  /// "/files/PATH" where that is a part name that the package takes and a reader takes for PATH,
  /// else a made-up one. The path must be one of the file tree. Throws Exception, naming the path,
  /// when the package takes no name at all.
  Choice choose(model::Package& package, std::string_view path);

 private:
  model::PartName makeUp(model::Package& package, std::string_view path);

  std::uint64_t next_ = 1;
};

}  // namespace opc::plservices::detail
