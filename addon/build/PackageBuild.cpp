// SPDX-License-Identifier: MIT
#include "addon/build/PackageBuild.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "addon/build/BuildError.h"
#include "addon/build/FindingPlaces.h"
#include "addon/build/FolderBuild.h"
#include "addon/build/NewPackage.h"
#include "addon/build/RealPath.h"
#include "addon/build/TrackedFiles.h"
#include "addon/build/VerifyRules.h"
#include "addon/checks/AddonFindings.h"
#include "addon/checks/AddonVerification.h"
#include "addon/comparison/Digest.h"
#include "addon/project/Guid.h"
#include "opc/FileIdentity.h"
#include "text/ByteCount.h"

namespace addon::build {

using checks::checkAddon;
using checks::FindingRules;
using checks::kSecret;
using checks::kUntracked;
using checks::PackageVerdict;
using comparison::contentDigest;
using comparison::Item;
using comparison::readTree;
using opc::sentence;
using opc::checks::Finding;
using opc::checks::Report;
using opc::checks::Severity;
using packaging::AddonPackage;
using packaging::AddonProperties;

namespace {

/// The checks refused the package.
struct Refused {};

bool isOfProject(const std::string& output, const Project& project) {
  const std::string path = realPath(output);
  return liesIn(path, realPath(project.folder)) ||
         liesIn(path, realPath(project.onDisk(project.manifest.files.root.value)));
}

/// Empty files, and what is not a regular file, are handled elsewhere.
bool mayBePackage(const std::string& path) {
  if (path.ends_with(packaging::kPackageExtension)) return true;
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return true;
  std::array<char, 2> begin{};
  std::ifstream file(path, std::ios::binary);
  file.read(begin.data(), begin.size());
  return begin == std::array{'P', 'K'} || (file.eof() && file.gcount() == 0);
}

/// They may be the only copy of the author's work; to force is intended for older packages.
void refuseSources(const std::string& output, const Project& project, bool isForced) {
  const std::optional<opc::FileIdentity> existing = opc::identityOf(output);
  if (existing && existing == opc::identityOf(manifestPath(project.folder))) {
    throw BuildError(sentence("cannot create", output, "it is the manifest of the project"));
  }
  if (existing && isForced && isOfProject(output, project) && !mayBePackage(output)) {
    throw BuildError(
        sentence("cannot create", output, "it is a file of the project, not a package"));
  }
}

void reportUntracked(const TrackedFiles& tracked, const BuildResult& result, Report& report) {
  for (const BuildEntry& entry : result.entries) {
    if (!entry.size || !tracked.lacks(entry.path)) continue;
    report.add(kUntracked, entry.path, "git does not track the file");
  }
}

/// What to do about what stops the build.
std::string hintOf(const PackageVerdict& verdict) {
  for (const Finding& finding : verdict.findings) {
    if (finding.id.number != kSecret.number || finding.id.severity != Severity::Error) continue;
    return fmt::format(
        "if the secret is meant to be public, ignore = [\"{}:{}\"] under [verify] in the manifest "
        "allows it",
        opc::checks::idOf(kSecret.number), finding.part);
  }
  return "'kraddon verify --explain ID' explains a finding";
}

}  // namespace

BuildResult resultFor(const std::string& file, const std::vector<Item>& items) {
  BuildResult result{file};
  for (const Item& item : items) {
    result.entries.push_back(
        {item.path, item.isFolder() ? std::nullopt : std::optional(item.info.size)});
  }
  result.totals = comparison::totalsOf(items);
  return result;
}

/// Everything that is determined before the work begins.
struct PackageBuild::Task {
  Project project;
  FindingRules rules;
  std::string output;
  opc::zippackage::WriteOptions options;
  bool isStrict;

  /// The add-on's own package, of an earlier build, may be replaced.
  Replacing replacing(bool isForced) const {
    return {.any = isForced, .guid = project::plainGuid(propertiesOf(project).GUID)};
  }
};

PackageBuild::Task PackageBuild::prepare() const {
  Project project = openProject(request_.folder);
  opc::zippackage::WriteOptions options = request_.options;
  options.level = request_.level.value_or(project.manifest.build.level.value);
  checks::RuleLists lists = request_.rules;
  lists.append(ruleListsOf(project.manifest.verify));
  // A published secret cannot be withdrawn.
  FindingRules rules(lists, {kSecret});
  std::string output = request_.output.value_or(project::outputPath(project.manifest));
  refuseSources(output, project, request_.isForced);
  const bool isStrict = request_.isStrict || project.manifest.verify.strict.value;
  return {std::move(project), std::move(rules), std::move(output), std::move(options), isStrict};
}

void PackageBuild::fill(const Task& task, AddonPackage& package) const {
  FileChoice choice;
  choice.excludes = request_.excludes;
  choice.followsOutside = request_.followsOutside;
  choice.leftOut = {task.output};
  choice.stop = request_.stop;
  choice.onLeftOut = request_.onLeftOut;
  fillPackage(task.project, choice, task.rules, package);
}

opc::interfaces::ProgressFunction PackageBuild::startProgress() const {
  auto progress = request_.startProgress ? request_.startProgress() : nullptr;
  if (progress) return progress;
  return [](const opc::interfaces::Progress&) {};
}

/// Keeps the findings with their places in the project.
void PackageBuild::judge(const Task& task, const Report& report) {
  result.verdict = checks::judge(task.output, report, task.rules);
  locateFindings(task.project, *result.verdict);
}

bool PackageBuild::isRefused(const Task& task) const {
  return result.verdict && !result.verdict->isGood(task.isStrict);
}

void PackageBuild::refuse(const Task& task) const {
  const PackageVerdict& verdict = *result.verdict;
  const std::string why =
      verdict.errors != 0
          ? "it has " + text::counted(verdict.errors, "error")
          : "it has " + text::counted(verdict.warnings, "warning") + ", and 'strict' is set";
  throw BuildError(sentence("cannot build", task.output, why), hintOf(verdict));
}

/// Checks the package before it is put in place.
void PackageBuild::inspect(const std::string& path, const Task& task,
                           const opc::interfaces::PackedContents& packed) {
  if (request_.stop) request_.stop();
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) throw systemError("cannot access", path, errno);
  result.size = static_cast<std::uint64_t>(info.st_size);
  const opc::interfaces::BackgroundStarter& background = task.options.background;
  if (request_.verifies) {
    Report report = checks::verifyWritten(path, packed, startProgress(), background);
    reportUntracked(TrackedFiles(task.project), result, report);
    judge(task, report);
    if (isRefused(task)) throw Refused();
  }
  if (request_.wantsDigest) {
    AddonPackage package(opc::SystemPath{path});
    package.logicalPackage().open(opc::interfaces::OpenMode::Read);
    result.digest = contentDigest(package, readTree(package), startProgress(), background);
  }
}

void PackageBuild::run() {
  Task task = prepare();
  AddonProperties properties = propertiesOf(task.project);
  const std::shared_ptr<void> lock = request_.lock ? request_.lock(task.output) : nullptr;
  NewPackage target(task.output, task.replacing(request_.isForced));
  AddonPackage& package = target.open(properties, task.options.timestamp);
  fill(task, package);
  result = resultFor(task.output, readTree(package));
  opc::zippackage::WriteOptions options = task.options;
  opc::interfaces::PackedContents packed = checks::contentsForCheck();
  if (request_.verifies) options.packed = &packed;
  options.progress = startProgress();
  options.inspect = [&](const std::string& path) {
    inspect(path, task, packed);
    if (!request_.onWritten) return;
    BuildResult written = result;
    written.isWritten = true;
    request_.onWritten(written);
  };
  try {
    target.commit(std::move(options));
    result.isWritten = true;
  } catch (const Refused&) {
    refuse(task);
  }
}

void PackageBuild::rehearse() {
  const Task task = prepare();
  try {
    requireFreePlace(task.output, task.replacing(request_.isForced));
  } catch (const BuildError& error) {
    if (request_.onObstacle) request_.onObstacle(error.what());
  }
  requireFreePlace(task.output, {.any = true});
  AddonProperties properties = propertiesOf(task.project);
  AddonPackage package(opc::SystemPath{task.output}, properties);
  fill(task, package);
  const std::vector<Item> items = readTree(package);
  result = resultFor(task.output, items);
  if (request_.verifies) {
    Report report;
    checkAddon(package, report);
    reportUntracked(TrackedFiles(task.project), result, report);
    judge(task, report);
  }
  if (request_.wantsDigest) {
    result.digest = contentDigest(package, items, startProgress(), task.options.background);
  }
  if (isRefused(task)) refuse(task);
}

}  // namespace addon::build
