// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "opc/model/Package.h"
#include "opc/plservices/FileTree.h"

namespace opc::plservices::detail {

/// What an extraction has to write.
struct ExtractionPlan {
  /// Files and empty folders, each once, depth first.
  std::vector<NodeId> leaves;
  std::uint64_t files = 0;
  std::uint64_t folders = 0;  ///< that the leaves need or are, the root left out
  std::uint64_t bytes = 0;    ///< of all files, as declared

  /// Bytes of files and folders on a disk that hands out blocks of that size.
  std::uint64_t bytesOnDisk(std::uint64_t blockSize) const;

  std::vector<std::uint64_t> sizes;  ///< of the leaves, 0 for folders
};

/// Collects `chosen` with all that is below them; they may overlap. Throws Exception, naming the
/// path, for a name that no file system takes.
ExtractionPlan planExtraction(const model::Package& package, FileTree& tree,
                              const std::vector<NodeId>& chosen);

}  // namespace opc::plservices::detail
