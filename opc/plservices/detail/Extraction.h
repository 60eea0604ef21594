// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "opc/interfaces/Background.h"
#include "opc/interfaces/Progress.h"
#include "opc/model/Package.h"
#include "opc/plservices/FileTree.h"
#include "opc/plservices/FolderCursor.h"
#include "opc/plservices/RestoreMode.h"
#include "opc/plservices/detail/DestinationFolder.h"
#include "opc/plservices/detail/ExtractionPlan.h"
#include "opc/plservices/detail/FreeSpace.h"
#include "opc/plservices/detail/ReadAhead.h"

namespace opc::plservices::detail {

/// Writes files and folders of a tree below a folder on disk; see FileSystemManager::extract.
/// For one use.
class Extraction {
 public:
  Extraction(model::Package& package, FileTree& tree, std::string destination, RestoreMode mode);

  /// Starts a second thread, which reads while this one writes. May be empty.
  void setBackground(interfaces::BackgroundStarter starter) { background_ = std::move(starter); }
  void setFreeSpaceQuery(FreeSpaceQuery query) { freeSpace_ = std::move(query); }

  /// Writes `chosen` with all that is below them. `progress` may be empty.
  void run(const std::vector<NodeId>& chosen, const interfaces::ProgressFunction& progress);

 private:
  void checkConflicts(int destination);
  void checkConflict(NodeId leaf, int folder);
  void checkFreeSpace(int destination) const;
  void writeAll(int destination);
  void writeLeaves(FolderCursor& cursor);
  /// Of these, which were made one after the other, those that nothing is in.
  void removeEmpty(const std::vector<NodeId>& folders, int destination) noexcept;
  std::vector<model::PartId> parts() const;
  void writeFile(NodeId file, ReadAhead& reader, int folder);
  void countFile();
  std::string contextOf(NodeId leaf) const;

  model::Package& package_;
  FileTree& tree_;
  std::string destination_;
  RestoreMode mode_;
  interfaces::BackgroundStarter background_;
  FreeSpaceQuery freeSpace_ = queryFreeSpace;

  ExtractionPlan plan_;
  bool replace_ = false;
  // On disk, of files that make way for others.
  std::uint64_t bytesToReplace_ = 0;
  std::uint64_t inodesToReplace_ = 0;
  interfaces::Progress done_;
  interfaces::ProgressFunction progress_;
};

}  // namespace opc::plservices::detail
