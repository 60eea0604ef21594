// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "addon/build/Project.h"
#include "addon/checks/FindingRules.h"
#include "addon/checks/PackageVerdict.h"
#include "addon/comparison/Contents.h"
#include "opc/interfaces/Progress.h"
#include "opc/zippackage/ZipPhysicalPackage.h"

namespace addon::build {

/// A file or an empty folder of the package.
struct BuildEntry {
  std::string path;
  std::optional<std::uint64_t> size;  ///< nothing for a folder
};

/// Why a build failed.
struct BuildFailure {
  std::string message;
  std::string hint;
  checks::SourcePlace place;
};

/// A package that was built, or would be.
struct BuildResult {
  std::string file = {};  ///< the path of the package; "" if it failed before that was known
  bool isWritten = false;
  std::optional<std::uint64_t> size = std::nullopt;  ///< of the package
  std::vector<BuildEntry> entries = {};
  comparison::Totals totals = {};
  std::string digest = {};
  std::optional<checks::PackageVerdict> verdict = std::nullopt;  ///< nothing if it was not checked
  std::optional<BuildFailure> failure = std::nullopt;
};

/// The result for a package with these files and empty folders, before it is written.
BuildResult resultFor(const std::string& file, const std::vector<comparison::Item>& items);

/// What is asked of a build beside what the manifest says.
struct BuildRequest {
  std::string folder = ".";
  std::optional<std::string> output = std::nullopt;  ///< else the manifest names it
  bool isForced = false;        ///< replaces any existing file, not only this add-on's package
  bool followsOutside = false;  ///< links that lead out of the folder
  bool isStrict = false;        ///< warnings count as errors
  bool verifies = true;         ///< checks the package
  bool wantsDigest = false;
  std::vector<std::string> excludes = {};
  checks::RuleLists rules = {};
  std::optional<int> level = std::nullopt;  ///< else the manifest names it
  opc::zippackage::WriteOptions options = {};

  /// Told of each file or folder that stays out, and why; may be empty.
  std::function<void(const std::string& path, const std::string& why)> onLeftOut = nullptr;
  opc::interfaces::StopFunction stop = nullptr;  ///< called often; may be empty
  /// Called at the start of each pass over the content: packing, checking, the digest. May be
  /// empty, and so may what it returns.
  std::function<opc::interfaces::ProgressFunction()> startProgress = nullptr;
  /// Locks the path of the package for as long as what it returns exists; may be empty.
  std::function<std::shared_ptr<void>(const std::string& path)> lock = nullptr;
  /// Told why run() could not put the package in place, in a rehearsal; may be empty.
  std::function<void(const std::string& why)> onObstacle = nullptr;
  /// Told of the result before the package is put in place, so that the old one stays if that
  /// fails; may be empty.
  std::function<void(const BuildResult&)> onWritten = nullptr;
};

/// The build of one package from a project.
class PackageBuild {
 public:
  explicit PackageBuild(BuildRequest request) : request_(std::move(request)) {}

  /// What is known so far, also after a failure.
  BuildResult result;

  /// Builds the package. Throws ManifestError, BuildError and opc::Exception; a package that the
  /// checks refuse is a BuildError.
  void run();
  /// Checks what can be checked without a file, so not the container, and writes nothing. Throws as
  /// run() does.
  void rehearse();

 private:
  struct Task;

  Task prepare() const;
  void fill(const Task& task, packaging::AddonPackage& package) const;
  void inspect(const std::string& path, const Task& task,
               const opc::interfaces::PackedContents& packed);
  void judge(const Task& task, const opc::checks::Report& report);
  bool isRefused(const Task& task) const;
  [[noreturn]] void refuse(const Task& task) const;
  opc::interfaces::ProgressFunction startProgress() const;

  BuildRequest request_;
};

}  // namespace addon::build
