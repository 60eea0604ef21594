// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "addon/catalogue/Record.h"
#include "addon/checks/PackageVerdict.h"
#include "opc/checks/SignatureDemands.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/Progress.h"

namespace addon::catalogue {

/// An add-on, or one version of it.
struct VersionName {
  std::string guid;
  std::string version;  ///< "" for all
};

/// "GUID@VERSION" or "GUID".
VersionName parseVersionName(const std::string& text);
std::string textOf(const VersionName& name);

struct UpdateRequest {
  std::string site;                   ///< a folder that prepareSite() has prepared
  std::vector<std::string> packages;  ///< files and folders
  std::vector<VersionName> removals = {};
  std::vector<VersionName> yanks = {};
  std::vector<VersionName> unyanks = {};
  bool isLinking = false;     ///< hard links instead of copies, where that is possible
  bool isRebuilding = false;  ///< rebuild everything from the packages of the site
  bool isCollecting = false;  ///< remove files that no root refers to any more
  std::string time;           ///< of the new root: "2026-02-01T10:00:00Z"
  opc::checks::SignatureDemands demands = {};
  opc::interfaces::ProgressFunction progress = nullptr;
  opc::interfaces::StopFunction stop = nullptr;
  opc::interfaces::BackgroundStarter starter = nullptr;
  /// Called when the new root is in place; may be empty.
  std::function<void()> onCommitted = nullptr;
};

/// A package that did not get into the site.
struct Refusal {
  std::string reason;
  checks::PackageVerdict verdict;  ///< with its file, and what is wrong with it
};

/// Records that are kept in a file and not in memory.
class RecordLines {
 public:
  virtual ~RecordLines() = default;
  virtual void visit(const std::function<void(const Record&)>& visitor) const = 0;
};

struct UpdateResult {
  std::uint64_t sequence = 0;  ///< of the site now
  bool isChanged = false;
  std::uint64_t addons = 0;
  std::uint64_t versions = 0;
  std::unique_ptr<RecordLines> added;  ///< by key and version
  std::vector<Refusal> refused;        ///< by file
  std::vector<VersionName> removed;
  std::vector<VersionName> yanked;
  std::vector<VersionName> unyanked;
  std::vector<std::string> lost;  ///< messages about what could not be read of the old site
  std::uint64_t collected = 0;    ///< files removed
};

/// Makes the folder of a site unless it exists. Throws opc::Exception if it is a folder with other
/// things.
void prepareSite(const std::string& folder);

/// Changes a site. The caller must have locked its root against other changes. A reader sees either
/// the old site or the new one: files that the old root refers to do not change until the new root
/// is in place. Files that are derived from the root, such as pages and the database, are updated
/// after that; if this fails, the next call does it. Throws BrokenSite for a site that cannot be
/// read, and opc::Exception. The site is then unchanged, unless onCommitted() was called.
UpdateResult updateSite(const UpdateRequest& request);

}  // namespace addon::catalogue
